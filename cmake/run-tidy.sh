#!/usr/bin/env bash
# Runs clang-tidy (the checks in .clang-tidy) over the library, the tools and the examples, using
# the compile database of a configured build. Any finding fails the run.
# Usage: cmake/run-tidy.sh <build dir with compile_commands.json>
set -euo pipefail
cd "$(dirname "$0")/.."
build=${1:?usage: cmake/run-tidy.sh <build dir>}
[ -f "$build/compile_commands.json" ] || { echo "no $build/compile_commands.json: configure with the dev preset" >&2; exit 2; }
tidy=$(command -v clang-tidy-14 || command -v clang-tidy) || { echo "clang-tidy not found" >&2; exit 2; }
runner=$(command -v run-clang-tidy-14 || command -v run-clang-tidy) || { echo "run-clang-tidy not found" >&2; exit 2; }
log=$(mktemp)
trap 'rm -f "$log"' EXIT
status=0
"$runner" -clang-tidy-binary "$tidy" -p "$build" -j "${TIDY_JOBS:-2}" -quiet \
  "$PWD/(vxcore/src|tools|examples)/[^/]*\.cpp$" 2>&1 | sed 's/\x1b\[[0-9;]*m//g' >"$log" || status=$?
# A finding in a header is reported once per source that includes it: count each once.
findings=$(grep -E '^[^ ]+:[0-9]+:[0-9]+: (warning|error):' "$log" | sort -u || true)
if [ -n "$findings" ] || [ $status -ne 0 ]; then
  grep -v -E '^([^ ]*clang-tidy[^ ]* |[0-9]+ warnings? generated|Suppressed|Use -header-filter|Enabled checks:)' "$log" >&2 || true
  echo "clang-tidy: $(printf '%s' "$findings" | grep -c . || true) finding(s)" >&2
  exit 1
fi
echo "clang-tidy: no findings"
