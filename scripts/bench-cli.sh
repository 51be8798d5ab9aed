#!/usr/bin/env bash
# Times the qvcl tool against the programs users know, whole process, on
# 256 MiB files (made in a temporary directory and removed afterwards):
#   qvcl iconv -f UTF-8 -t UTF-16LE  against glibc iconv and ICU's uconv
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

# Text: the system's licences (English) and random text in many scripts,
# repeated up to 256 MiB. Binary: random bytes.
size=$((256 * 1024 * 1024))
python3 - "$work/seed.txt" <<'PY'
import random, sys, glob
random.seed(1)
ranges = [(0x20, 0x7E), (0xA0, 0xFF), (0x391, 0x3C9), (0x410, 0x44F), (0x4E00, 0x9FA5), (0x1F600, 0x1F64F)]
parts = [open(f, encoding="utf-8", errors="replace").read() for f in sorted(glob.glob("/usr/share/common-licenses/*"))]
chars = []
for _ in range(200000):
    lo, hi = ranges[0] if random.random() < 0.7 else random.choice(ranges)
    chars.append(chr(random.randint(lo, hi)))
parts.append("".join(chars))
open(sys.argv[1], "w", encoding="utf-8").write("\n".join(parts))
PY
while [ "$(stat -c %s "$work/seed.txt")" -lt "$size" ]; do
  cat "$work/seed.txt" "$work/seed.txt" > "$work/grow.txt" && mv "$work/grow.txt" "$work/seed.txt"
done
# Cut at a line end so the text stays valid UTF-8.
head -c "$size" "$work/seed.txt" | head -n -1 > "$work/text.txt"
rm "$work/seed.txt"
head -c "$size" /dev/urandom > "$work/random.bin"

run() { hyperfine --warmup 1 --runs "${RUNS:-5}" --style basic --export-markdown "$work/table.md" "$@" >/dev/null; cat "$work/table.md"; echo; }
echo "text: $(stat -c %s "$work/text.txt") bytes of UTF-8; binary: $(stat -c %s "$work/random.bin") random bytes"
echo
run -n "qvcl iconv" "$qvcl iconv -f UTF-8 -t UTF-16LE $work/text.txt > /dev/null" \
    -n "glibc iconv" "iconv -f UTF-8 -t UTF-16LE $work/text.txt > /dev/null" \
    -n "ICU uconv" "uconv -f UTF-8 -t UTF-16LE $work/text.txt > /dev/null"
run -n "qvcl md5sum" "$qvcl md5sum $work/random.bin > /dev/null" \
    -n "coreutils md5sum" "md5sum $work/random.bin > /dev/null"
run -n "qvcl alnum" "$qvcl alnum $work/random.bin > /dev/null" \
    -n "coreutils base32" "base32 $work/random.bin > /dev/null"
run -n "qvcl sha256sum" "$qvcl sha256sum $work/random.bin > /dev/null" \
    -n "coreutils sha256sum" "sha256sum $work/random.bin > /dev/null"
