#!/usr/bin/env bash
# Checks that a clang-built libvxcorem.so exports what the GCC-built one does, for every
# template instantiation the public headers declare: the members, vtables and typeinfo of
# each `VX_Class<...>` (member templates and lambdas left out, since each compiler instantiates
# those as its optimiser decides). Then builds the out-of-tree consumer with clang against the
# clang library and runs it, so a hidden instantiation shows as the link failure a user sees.
# Usage: check-exports.sh <gcc libvxcorem.so> <clang libvxcorem.so> <work dir>
set -euo pipefail
gcc_lib=$1 clang_lib=$2 work=$3
src=$(cd "$(dirname "$0")/.." && pwd)
mkdir -p "$work"
work=$(cd "$work" && pwd)

instances() {
  nm -D --defined-only "$1" | awk '{print $3}' | c++filt |
    grep -E '^((vtable|typeinfo|typeinfo name) for |non-virtual thunk to )?VX_[A-Za-z_]+<' |
    grep -vE '>::[A-Za-z_][A-Za-z_0-9]*<|\{lambda' | sort -u
}
instances "$gcc_lib" >"$work/gcc.syms"
instances "$clang_lib" >"$work/clang.syms"
missing=$(comm -23 "$work/gcc.syms" "$work/clang.syms")
if [ -n "$missing" ]; then
  echo "check-exports: the clang library does not export these instantiation symbols:" >&2
  echo "$missing" | head -40 >&2
  exit 1
fi
echo "check-exports: $(wc -l <"$work/gcc.syms") instantiation symbols of the GCC build are all exported by the clang build"

clang_dir=$(cd "$(dirname "$clang_lib")" && pwd)
clang++-14 -std=c++17 -O0 -fvisibility=hidden -I"$src/vxcore/include" "$src/tests/consumer/consumer.cpp" \
  -L"$clang_dir" -lvxcorem -Wl,-rpath,"$clang_dir" -o "$work/consumer"
"$work/consumer" "$work"
