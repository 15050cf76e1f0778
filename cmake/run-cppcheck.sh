#!/usr/bin/env bash
# cppcheck (warning, performance and portability checks) over the library, the tools and the
# examples. The findings that are right as written are listed, each with its reason, in
# .cppcheck-suppressions; any other finding fails this script.
# Usage: run-cppcheck.sh [jobs]
set -euo pipefail
cd "$(dirname "$0")/.."
jobs=${1:-2}
out=$(mktemp)
trap 'rm -f "$out"' EXIT
cppcheck --enable=warning,performance,portability --std=c++17 --language=c++ --inline-suppr \
  --suppressions-list=.cppcheck-suppressions --error-exitcode=1 -q -j "$jobs" \
  --template='{file}:{line}: {severity} {id}: {message}' \
  -Ivxcore/include -Ivxcore/src -Itools vxcore/src tools examples 2>"$out" || status=$?
if [ -s "$out" ]; then
  cat "$out" >&2
  echo "cppcheck: $(wc -l <"$out") finding(s)" >&2
  exit 1
fi
exit "${status:-0}"
