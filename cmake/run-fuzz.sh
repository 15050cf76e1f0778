#!/usr/bin/env bash
# Runs each fuzz target for a bounded time on a copy of its seed corpus (the repository's
# corpus is never written). Any crash, leak, sanitizer report, timeout or out-of-memory stops
# the target with a non-zero status, which fails this script; the input that did it is kept
# in <work dir>/artifacts.
# Usage: run-fuzz.sh <fuzz build dir> <seconds per target> <work dir> [target ...]
set -euo pipefail
build=$1 seconds=$2 work=$3
shift 3
src=$(cd "$(dirname "$0")/.." && pwd)
targets=("$@")
if [ ${#targets[@]} -eq 0 ]; then
  for dir in "$src"/fuzz/corpus/*/; do targets+=("$(basename "$dir")"); done
fi
mkdir -p "$work/artifacts"
work=$(cd "$work" && pwd)
failed=()
for t in "${targets[@]}"; do
  corpus=$work/corpus/$t
  rm -rf "$corpus" && mkdir -p "$corpus"
  cp "$src/fuzz/corpus/$t"/* "$corpus"/
  start=$(date +%s)
  if "$build/fuzz/fuzz_$t" "$corpus" -max_total_time="$seconds" -timeout=10 -rss_limit_mb=2048 \
       -malloc_limit_mb=1024 -print_final_stats=1 -artifact_prefix="$work/artifacts/$t-" \
       >"$work/$t.log" 2>&1; then
    runs=$(grep -m1 -o 'stat::number_of_executed_units: *[0-9]*' "$work/$t.log" | grep -o '[0-9]*$' || echo "?")
    echo "fuzz_$t: clean, $runs runs in $(( $(date +%s) - start )) s, corpus $(ls "$corpus" | wc -l) inputs"
  else
    echo "fuzz_$t: FAILED (log $work/$t.log)" >&2
    grep -m20 -E 'ERROR|SUMMARY|runtime error|#[0-9]+ 0x.* in ' "$work/$t.log" >&2 || tail -20 "$work/$t.log" >&2
    failed+=("$t")
  fi
done
if [ ${#failed[@]} -gt 0 ]; then
  echo "run-fuzz: findings in ${failed[*]}" >&2
  exit 1
fi
