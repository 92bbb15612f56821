#!/usr/bin/env bash
# Checks that every C++ file in the repository is formatted as the root .clang-format says.
# Prints the files that are not and exits non-zero if there are any. To fix them:
#   git ls-files '*.cpp' '*.h' '*.inc' | xargs clang-format-14 -i
set -uo pipefail

cd "$(dirname "${BASH_SOURCE[0]}")/.."
bad=()
while IFS= read -r file; do
    if ! clang-format-14 --dry-run -Werror "$file" >/dev/null 2>&1; then
        bad+=("$file")
    fi
done < <(git ls-files '*.cpp' '*.h' '*.inc')

if [ ${#bad[@]} -ne 0 ]; then
    echo "not formatted (clang-format-14):"
    printf '  %s\n' "${bad[@]}"
    exit 1
fi
echo "format: every file as .clang-format says"
