#!/usr/bin/env bash
# Lists the sources that clang-format (.clang-format at the root) would
# change and exits non-zero if there is any.
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/install-deps.sh clang-format
dirs=()
for d in include src tests bench fuzz examples tools; do
    [ -d "$d" ] && dirs+=("$d")
done
mapfile -t files < <(find "${dirs[@]}" -type f \( -name '*.h' -o -name '*.hpp' -o -name '*.cpp' -o -name '*.c' \) | sort)
bad=()
for f in "${files[@]}"; do
    if ! clang-format --dry-run -Werror "$f" >/dev/null 2>&1; then
        bad+=("$f")
    fi
done
if [ "${#bad[@]}" -ne 0 ]; then
    echo "clang-format would change ${#bad[@]} file(s):"
    printf '  %s\n' "${bad[@]}"
    echo "fix with: clang-format -i <file>"
    exit 1
fi
echo "clang-format: ${#files[@]} files clean"
