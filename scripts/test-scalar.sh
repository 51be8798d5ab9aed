#!/usr/bin/env bash
# Builds the library with the converters' portable (non-SIMD) path and runs
# the charset tests, oracle included, against it. On x86-64 the default build
# never compiles that path.
set -euo pipefail
cd "$(dirname "$0")/.."
dir=build/test-scalar
cmake -S . -B "$dir" -DCMAKE_BUILD_TYPE=RelWithDebInfo -DQVCL3_BUILD_EXAMPLES=OFF \
      -DCMAKE_CXX_FLAGS=-DQVCL3_CHARSET_NO_SIMD
cmake --build "$dir" -j2 --target qvcl3_test_charset

ctest --test-dir "$dir" --output-on-failure -j2 -R '^charset\.'
