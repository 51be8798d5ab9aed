#!/usr/bin/env bash
# Builds the libFuzzer targets with clang under AddressSanitizer and
# UndefinedBehaviorSanitizer and runs each for a bounded time.
#   scripts/fuzz.sh [SECONDS_PER_TARGET]   (default 20)
# Fails on any crash, sanitizer report, timeout or contract breach.
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/install-deps.sh clang libclang-rt-14-dev
seconds="${1:-20}"
dir=build/fuzz
cmake -S . -B "$dir" -DCMAKE_C_COMPILER=clang -DCMAKE_CXX_COMPILER=clang++ -DCMAKE_BUILD_TYPE=RelWithDebInfo \
      -DQVCL3_BUILD_FUZZ=ON -DQVCL3_BUILD_TESTS=OFF -DQVCL3_BUILD_EXAMPLES=OFF -DQVCL3_SANITIZE=address,undefined
targets=()
for source in fuzz/fuzz_*.cpp; do
  targets+=("$(basename "$source" .cpp)")
done
cmake --build "$dir" -j2 --target "${targets[@]}"
export ASAN_OPTIONS=detect_leaks=1:abort_on_error=1
export UBSAN_OPTIONS=print_stacktrace=1:halt_on_error=1
for target in "${targets[@]}"; do
  corpus="$dir/corpus/$target"
  mkdir -p "$corpus"
  # Seeds (fuzz/seeds/<target>/) are read but never written; new finds go to
  # the build folder's corpus.
  options=() seeds=()
  [ -f "fuzz/dict/$target.dict" ] && options+=(-dict="fuzz/dict/$target.dict")
  [ -d "fuzz/seeds/$target" ] && seeds+=("fuzz/seeds/$target")
  echo "== $target for $seconds s"
  "$dir/fuzz/$target" -max_total_time="$seconds" -timeout=10 -rss_limit_mb=2048 -max_len=4096 \
      -print_final_stats=1 -artifact_prefix="$dir/$target-" "${options[@]}" "$corpus" "${seeds[@]}" 2>&1 | tee "$dir/$target.log" | grep -E "^(Done|stat::number_of_executed_units)" || true
  if ! grep -q "^Done " "$dir/$target.log"; then
    tail -n 40 "$dir/$target.log"
    echo "$target failed" >&2
    exit 1
  fi
done
