#!/usr/bin/env bash
# Fails, listing the files, when a C++ source differs from what .clang-format
# makes of it. Run scripts/check-format.sh --fix to rewrite them in place.
set -euo pipefail
cd "$(dirname "$0")/.."
mapfile -t files < <(git ls-files -co --exclude-standard -- 'src/*.h' 'src/*.cpp' 'tests/*.h' 'tests/*.cpp' \
    'bench/*.cpp' 'fuzz/*.cpp' | while read -r f; do [ -f "$f" ] && echo "$f"; done)
if [ "${1:-}" = "--fix" ]; then
    clang-format -i "${files[@]}"
    exit 0
fi
bad=()
for f in "${files[@]}"; do
    clang-format --dry-run -Werror "$f" >/dev/null 2>&1 || bad+=("$f")
done
if [ ${#bad[@]} -gt 0 ]; then
    echo "These files differ from .clang-format (scripts/check-format.sh --fix rewrites them):" >&2
    printf '  %s\n' "${bad[@]}" >&2
    exit 1
fi
echo "Format check: ${#files[@]} files follow .clang-format"
