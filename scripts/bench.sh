#!/usr/bin/env bash
# Builds the benchmarks in Release mode and runs them (all, or those named).
#   scripts/bench.sh [NAME...] [-- benchmark options]
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/install-deps.sh libbenchmark-dev libicu-dev libgmp-dev libpoco-dev libssl-dev libinih-dev libboost-dev libspdlog-dev libsimdjson-dev
cmake -S . -B build/bench -DCMAKE_BUILD_TYPE=Release -DQVCL3_BUILD_TESTS=OFF -DQVCL3_BUILD_BENCH=ON
cmake --build build/bench -j2
names=()
while [ $# -gt 0 ] && [ "$1" != "--" ]; do names+=("$1"); shift; done
[ "${1:-}" = "--" ] && shift
if [ ${#names[@]} -eq 0 ]; then
  for f in bench/*.cpp; do names+=("$(basename "${f%.cpp}")"); done
fi
for name in "${names[@]}"; do
  echo "== $name"
  "./build/bench/bench/$name" --benchmark_repetitions=3 --benchmark_report_aggregates_only=true "$@"
done
