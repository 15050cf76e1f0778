#!/usr/bin/env bash
# Installs a configured build into a fresh prefix and uses it as a user would: the consumer is
# built once through find_package(vxcorem 1) and once through pkg-config, both are run, and an
# installed tool is run to show that it finds the library beside it.
# Usage: check-install.sh <build dir> <work dir>
set -euo pipefail
build=$1 work=$2
src=$(cd "$(dirname "$0")/.." && pwd)
rm -rf "$work" && mkdir -p "$work"
work=$(cd "$work" && pwd)  # the consumer project is configured elsewhere
prefix=$work/prefix
cmake --install "$build" --prefix "$prefix" >"$work/install.log"

cmake -S "$src/tests/consumer" -B "$work/cmake-consumer" -DCMAKE_PREFIX_PATH="$prefix" \
  -DCMAKE_BUILD_RPATH="$prefix/lib" >"$work/consumer-configure.log"
cmake --build "$work/cmake-consumer" >"$work/consumer-build.log"
"$work/cmake-consumer/consumer" "$work"

pcdir=$(dirname "$(find "$prefix" -name vxcorem.pc)")
flags=$(PKG_CONFIG_PATH=$pcdir pkg-config --cflags --libs vxcorem)
libdir=$(PKG_CONFIG_PATH=$pcdir pkg-config --variable=libdir vxcorem)
# shellcheck disable=SC2086
g++ -std=c++17 "$src/tests/consumer/consumer.cpp" $flags -Wl,-rpath,"$libdir" -o "$work/pc-consumer"
"$work/pc-consumer" "$work"

status=0
"$prefix/bin/vxrecdump" >/dev/null 2>&1 || status=$?
if [ "$status" -ne 2 ]; then
  echo "check-install: vxrecdump without arguments exited $status, expected 2" >&2
  exit 1
fi
echo "check-install: find_package and pkg-config consumers ran; installed vxrecdump runs (exit 2 without arguments)"
