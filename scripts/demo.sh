#!/usr/bin/env bash
# Builds the library and runs the demonstration program, then a few lines of
# the qvcl tool.
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/install-deps.sh
cmake -S . -B build/release -DCMAKE_BUILD_TYPE=Release -DQVCL3_BUILD_TESTS=OFF
cmake --build build/release -j2 --target qvcl3_demo qvcl
./build/release/examples/qvcl3_demo

qvcl=./build/release/tools/qvcl/qvcl
echo
echo "== the qvcl tool"
set -x
printf 'Gr\xc3\xbc\xc3\x9fe, \xe2\x82\xac 5\n' | "$qvcl" iconv -f UTF-8 -t CP1252 | od -An -tx1
printf 'hello, world' | "$qvcl" alnum
printf 'hello, world' | "$qvcl" alnum | "$qvcl" alnum -d; echo
printf 'abc' | "$qvcl" sha256sum
"$qvcl" sockerr 10061
