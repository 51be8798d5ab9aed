#!/usr/bin/env bash
# Installs an already built tree (default build/test) into a fresh prefix
# under /tmp and builds and runs the consumer both ways a user would: through
# the CMake package and through pkg-config. Both run with no LD_LIBRARY_PATH,
# so the installed libraries must find each other by themselves.
#   scripts/check-install.sh [BUILD_DIR]
set -euo pipefail
cd "$(dirname "$0")/.."
build="${1:-build/test}"
prefix=$(mktemp -d /tmp/qvcl3-prefix.XXXXXX)
work=$(mktemp -d /tmp/qvcl3-consumer.XXXXXX)
trap 'rm -rf "$prefix" "$work"' EXIT

cmake --install "$build" --prefix "$prefix" >/dev/null
cmake -S tests/consumer -B "$work/cmake" -DCMAKE_PREFIX_PATH="$prefix" >/dev/null
cmake --build "$work/cmake" -j2 >/dev/null
echo "-- CMake consumer:"
env -u LD_LIBRARY_PATH "$work/cmake/consumer"

g++ -o "$work/consumer-pc" tests/consumer/main.cpp \
    $(PKG_CONFIG_PATH="$prefix/lib/pkgconfig" pkg-config --cflags --libs qvcl3)
echo "-- pkg-config consumer:"
env -u LD_LIBRARY_PATH "$work/consumer-pc"

echo "-- installed qvcl:"
env -u LD_LIBRARY_PATH "$prefix/bin/qvcl" encodings | head -3
printf 'abc' | env -u LD_LIBRARY_PATH "$prefix/bin/qvcl" md5sum
env -u LD_LIBRARY_PATH "$prefix/bin/qvcl3-regsvr" 2>/dev/null || [ $? -eq 1 ]
test -f "$prefix/share/man/man1/qvcl.1" && test -f "$prefix/share/bash-completion/completions/qvcl"
echo "qvcl, qvcl3-regsvr, manual page and completion installed"
