#!/usr/bin/env bash
# Builds the Windows module and runs the demo host with it under Wine.
#   bash tools/main-job.sh [demo arguments...]
set -euo pipefail

cd "$(dirname "${BASH_SOURCE[0]}")/.."

bash tools/setup-deps.sh
cmake --preset windows
cmake --build --preset windows -j2

demo=build/windows/bin/demo_host.exe
if [ ! -f "$demo" ]; then
    echo "main-job: $demo was not built (no demo/ sources yet)"
    exit 0
fi
exec tools/wine-run.sh "$demo" "$@"
