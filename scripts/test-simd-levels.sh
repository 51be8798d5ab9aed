#!/usr/bin/env bash
# Runs the charset tests, and the UTF-8 fuzz target over its seeds, once at
# every instruction-set level of the UTF-8 converters, forced through
# QV_CHARSET_SIMD. A level the processor lacks runs at the best it has; the
# differential tests (CharsetSimdLevels) compare every level it has anyway.
#   scripts/test-simd-levels.sh [BUILD_DIR [SANITIZERS]]
#     BUILD_DIR   default build/test
#     SANITIZERS  e.g. address,undefined (a separate BUILD_DIR, then)
# The fuzz target is built with clang in build/fuzz, as scripts/fuzz.sh does,
# when clang++ is there.
set -euo pipefail
cd "$(dirname "$0")/.."
dir="${1:-build/test}"
sanitize="${2:-}"
if [ ! -f "$dir/CMakeCache.txt" ]; then
  cmake -S . -B "$dir" -DCMAKE_BUILD_TYPE=RelWithDebInfo -DQVCL3_FAULT_INJECTION=ON -DQVCL3_BUILD_EXAMPLES=OFF \
        -DQVCL3_SANITIZE="$sanitize"
fi
cmake --build "$dir" -j2 --target qvcl3_test_charset
fuzzer=""
if command -v clang++ >/dev/null; then
  cmake -S . -B build/fuzz -DCMAKE_C_COMPILER=clang -DCMAKE_CXX_COMPILER=clang++ -DCMAKE_BUILD_TYPE=RelWithDebInfo \
        -DQVCL3_BUILD_FUZZ=ON -DQVCL3_BUILD_TESTS=OFF -DQVCL3_BUILD_EXAMPLES=OFF -DQVCL3_SANITIZE=address,undefined >/dev/null
  cmake --build build/fuzz -j2 --target fuzz_utf8
  fuzzer=build/fuzz/fuzz/fuzz_utf8
fi
export ASAN_OPTIONS=detect_leaks=1:abort_on_error=1
export UBSAN_OPTIONS=print_stacktrace=1:halt_on_error=1
for level in scalar sse2 avx2 avx512; do
  echo "== QV_CHARSET_SIMD=$level"
  QV_CHARSET_SIMD=$level ctest --test-dir "$dir" --output-on-failure -j2 -R '^charset\.'
  if [ -n "$fuzzer" ]; then
    # Files rather than a folder: each seed runs once, nothing is mutated.
    QV_CHARSET_SIMD=$level "$fuzzer" fuzz/seeds/fuzz_utf8/*
  fi
done
