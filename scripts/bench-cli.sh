#!/usr/bin/env bash
# Times the qvcl tool against the programs users know, whole process, on
# 256 MiB files (made in a temporary directory and removed afterwards):
#   qvcl iconv -f UTF-8 -t UTF-16LE  against glibc iconv and ICU's uconv (two texts)
#   qvcl md5sum                      against coreutils md5sum
#   qvcl alnum                       against coreutils base32
# Prints hyperfine's tables (Markdown) for docs/cli.md.
#   scripts/bench-cli.sh [BUILD_DIR]   default: a Release build in build/bench-cli
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/install-deps.sh hyperfine icu-devtools
build="${1:-}"
if [ -z "$build" ]; then
  build=build/bench-cli
  cmake -S . -B "$build" -DCMAKE_BUILD_TYPE=Release -DQVCL3_BUILD_TESTS=OFF -DQVCL3_BUILD_EXAMPLES=OFF >/dev/null
  cmake --build "$build" -j2 --target qvcl >/dev/null
fi
qvcl="$(pwd)/$build/tools/qvcl/qvcl"
work=$(mktemp -d /tmp/qvcl-bench.XXXXXX)
trap 'rm -rf "$work"' EXIT

# Two texts, each repeated up to 256 MiB: the system's own (licences and
# decompressed manual pages: English, mostly ASCII), and random characters
# from six scripts (70% ASCII), which switches script every few characters
# and so defeats the decoders' block loops. Binary: random bytes.
size=$((256 * 1024 * 1024))
grow() {
  while [ "$(stat -c %s "$1")" -lt "$size" ]; do
    cat "$1" "$1" > "$work/grow" && mv "$work/grow" "$1"
  done
  # Cut at a line end so the text stays valid UTF-8.
  head -c "$size" "$1" | head -n -1 > "$2"
  rm "$1"
}
{ cat /usr/share/common-licenses/*; for f in $(ls /usr/share/man/man1/*.1.gz 2>/dev/null | head -50); do zcat "$f"; done; } > "$work/seed"
grow "$work/seed" "$work/system.txt"
python3 - "$work/seed" <<'PY'
import random, sys
random.seed(1)
ranges = [(0x20, 0x7E), (0xA0, 0xFF), (0x391, 0x3C9), (0x410, 0x44F), (0x4E00, 0x9FA5), (0x1F600, 0x1F64F)]
chars = []
for i in range(1000000):
    lo, hi = ranges[0] if random.random() < 0.7 else random.choice(ranges)
    chars.append(chr(random.randint(lo, hi)))
    if i % 70 == 69:
        chars.append("\n")
open(sys.argv[1], "w", encoding="utf-8").write("".join(chars))
PY
grow "$work/seed" "$work/mixed.txt"
head -c "$size" /dev/urandom > "$work/random.bin"

run() { hyperfine --warmup 1 --runs "${RUNS:-10}" --style basic --export-markdown "$work/table.md" "$@" >/dev/null; cat "$work/table.md"; echo; }
echo "system text: $(stat -c %s "$work/system.txt") bytes; mixed scripts: $(stat -c %s "$work/mixed.txt") bytes; binary: $(stat -c %s "$work/random.bin") random bytes"
echo
for text in system mixed; do
  echo "UTF-8 to UTF-16LE, $text text:"
  run -n "qvcl iconv" "$qvcl iconv -f UTF-8 -t UTF-16LE $work/$text.txt > /dev/null" \
      -n "glibc iconv" "iconv -f UTF-8 -t UTF-16LE $work/$text.txt > /dev/null" \
      -n "ICU uconv" "uconv -f UTF-8 -t UTF-16LE $work/$text.txt > /dev/null"
done
run -n "qvcl md5sum" "$qvcl md5sum $work/random.bin > /dev/null" \
    -n "coreutils md5sum" "md5sum $work/random.bin > /dev/null"
run -n "qvcl alnum" "$qvcl alnum $work/random.bin > /dev/null" \
    -n "coreutils base32" "base32 $work/random.bin > /dev/null"
run -n "qvcl sha256sum" "$qvcl sha256sum $work/random.bin > /dev/null" \
    -n "coreutils sha256sum" "sha256sum $work/random.bin > /dev/null"
