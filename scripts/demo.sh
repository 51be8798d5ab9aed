#!/usr/bin/env bash
# Builds the library and runs the demonstration program.
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/install-deps.sh
cmake -S . -B build/release -DCMAKE_BUILD_TYPE=Release -DQVCL3_BUILD_TESTS=OFF
cmake --build build/release -j2 --target qvcl3_demo
./build/release/examples/qvcl3_demo
