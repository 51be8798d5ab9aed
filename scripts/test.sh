#!/usr/bin/env bash
# Builds the library with its tests and runs the whole suite.
#   scripts/test.sh                     plain build (build/test)
#   scripts/test.sh address,undefined   with sanitizers (build/test-address-undefined)
#   scripts/test.sh thread [REGEX]      with ThreadSanitizer, only tests matching REGEX
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/install-deps.sh openssl curl iproute2 locales libxml2-utils rsyslog
# The locale tests format numbers and dates in these two locales.
for wanted in de_DE en_US; do
  if ! locale -a 2>/dev/null | grep -qix "$wanted.utf8"; then
    sudo_cmd=""; [ "$(id -u)" -ne 0 ] && sudo_cmd="sudo"
    grep -q "^$wanted.UTF-8 UTF-8" /etc/locale.gen 2>/dev/null ||
      echo "$wanted.UTF-8 UTF-8" | $sudo_cmd tee -a /etc/locale.gen >/dev/null
    $sudo_cmd locale-gen >/dev/null
  fi
done
sanitize="${1:-}"
filter="${2:-}"
dir=build/test
[ -n "$sanitize" ] && dir="build/test-${sanitize//,/-}"
cmake -S . -B "$dir" -DCMAKE_BUILD_TYPE=RelWithDebInfo -DQVCL3_FAULT_INJECTION=ON \
      -DQVCL3_SANITIZE="$sanitize" -DQVCL3_BUILD_EXAMPLES=ON
cmake --build "$dir" -j2
export ASAN_OPTIONS=detect_leaks=1:abort_on_error=1:strict_string_checks=1
export UBSAN_OPTIONS=print_stacktrace=1:halt_on_error=1
export TSAN_OPTIONS=halt_on_error=1:second_deadlock_stack=1
args=(--test-dir "$dir" --output-on-failure -j2)
[ -n "$filter" ] && args+=(-R "$filter")
ctest "${args[@]}"
