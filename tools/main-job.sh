#!/usr/bin/env bash
# Builds the Windows module, the demo host and its sample client, and runs the demo host
# under Wine:
#   - with a display (DISPLAY set): the host, for you to work in; close it when done;
#   - without one: the scripted session under Xvfb. It opens the editor, edits with the
#     mouse, undoes and redoes, saves, reopens the scene and closes, checking the picture
#     and the curves on the way; it prints what it did and leaves its screenshots and the
#     saved scene in build/windows/demo-session/. It exits non-zero when a check failed.
#
#   bash tools/main-job.sh                    as above
#   bash tools/main-job.sh --script FOLDER    the scripted session, even with a display
set -euo pipefail

cd "$(dirname "${BASH_SOURCE[0]}")/.."

bash tools/setup-deps.sh
cmake --preset windows
cmake --build --preset windows -j2 --target curvectl sample_client demo_host

demo=build/windows/bin/demo_host.exe
if [ $# -gt 0 ]; then
    exec tools/wine-run.sh "$demo" "$@"
fi
if [ -n "${DISPLAY:-}" ]; then
    exec tools/wine-run.sh "$demo"
fi
session=$PWD/build/windows/demo-session
echo "main-job: no DISPLAY, so the scripted session runs under Xvfb"
exec tools/wine-run.sh "$demo" --script "$session"
