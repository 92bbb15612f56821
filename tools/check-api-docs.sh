#!/usr/bin/env bash
# Checks the API reference that the build made, and the version the documents name:
#   tools/check-api-docs.sh DOCS_DIR VERSION
# Fails when Doxygen warned (DOCS_DIR/doxygen-warnings.log not empty: an undocumented
# public declaration, a broken reference, a bad command), when the reference is missing,
# or when README.md or CHANGELOG.md do not name VERSION as the current version.
set -uo pipefail

if [ $# -ne 2 ]; then
    echo "usage: $0 DOCS_DIR VERSION" >&2
    exit 2
fi
docs=$1
version=$2
cd "$(dirname "${BASH_SOURCE[0]}")/.."
failed=0

if [ ! -f "$docs/html/index.html" ]; then
    echo "no API reference: $docs/html/index.html is missing (build the api_docs target)"
    failed=1
fi
log=$docs/doxygen-warnings.log
if [ ! -f "$log" ]; then
    echo "no Doxygen log at $log"
    failed=1
elif grep -q '[^[:space:]]' "$log"; then
    echo "Doxygen warned ($log):"
    cat "$log"
    failed=1
else
    echo "API reference: $(ls "$docs/html" | wc -l) files, no Doxygen warning"
fi

# README: "curvectl VERSION" in its first lines; CHANGELOG: its first version heading.
if ! head -n 12 README.md | grep -q "curvectl $version\b"; then
    echo "README.md does not name version $version near its top"
    failed=1
fi
first=$(grep -m1 -E '^## [0-9]+\.[0-9]+\.[0-9]+' CHANGELOG.md | sed -E 's/^## ([0-9.]+).*/\1/')
if [ "$first" != "$version" ]; then
    echo "CHANGELOG.md's newest version is '$first', the project's is $version"
    failed=1
fi
if [ $failed -eq 0 ]; then
    echo "README.md and CHANGELOG.md name version $version"
fi
exit $failed
