#!/usr/bin/env bash
# Runs a Windows program under Wine and forwards its exit code.
#
#   tools/wine-run.sh build/windows/bin/core_tests.exe [args...]
#
# CTest uses this script as the cross-compiling emulator of the windows build.
#
# Wine prefix: $CURVECTL_WINEPREFIX when set, otherwise a "wineprefix" folder in the build
# tree the program belongs to (<build>/wineprefix for <build>/bin/prog.exe). The prefix is
# created on first use (about 12 s), once, even when several tests start together.
#
# Display: when $DISPLAY is empty the program runs under its own Xvfb (xvfb-run). Those
# runs are serialised per prefix, so prefer one X server for a whole test run:
#   xvfb-run -a ctest --preset windows
#
# WINEDEBUG is -all unless $CURVECTL_WINEDEBUG says otherwise (e.g. CURVECTL_WINEDEBUG=+seh).
set -u

if [ $# -lt 1 ]; then
    echo "usage: $0 PROGRAM.exe [ARGS...]" >&2
    exit 2
fi

script_dir=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
prog=$1

if [ -n "${CURVECTL_WINEPREFIX:-}" ]; then
    prefix=$CURVECTL_WINEPREFIX
elif [ -e "$prog" ]; then
    prog_dir=$(cd "$(dirname "$prog")" && pwd)
    if [ "$(basename "$prog_dir")" = bin ]; then
        prefix=$(dirname "$prog_dir")/wineprefix
    else
        prefix=$prog_dir/wineprefix
    fi
else
    # A program Wine finds by itself (cmd, regedit, ...).
    prefix=$script_dir/../build/wineprefix
fi
mkdir -p "$(dirname "$prefix")"
prefix=$(cd "$(dirname "$prefix")" && pwd)/$(basename "$prefix")

export WINEPREFIX=$prefix
export WINEDEBUG=${CURVECTL_WINEDEBUG:--all}
# No Mono or Gecko: nothing here needs them and their installers would prompt.
export WINEDLLOVERRIDES=${WINEDLLOVERRIDES:-mscoree,mshtml=}

if ! command -v wine >/dev/null 2>&1; then
    echo "wine-run.sh: wine is not installed (run tools/setup-deps.sh)" >&2
    exit 127
fi

# Create and configure the prefix once; concurrent callers wait on the lock.
ready=$WINEPREFIX/.curvectl-ready
if [ ! -f "$ready" ]; then
    exec 9>"$WINEPREFIX.lock"
    flock 9
    if [ ! -f "$ready" ]; then
        wineboot --init >/dev/null 2>&1
        # A crash prints winedbg's backtrace and ends the program instead of opening a
        # crash dialog that would wait forever.
        wine reg add 'HKCU\Software\Wine\WineDbg' /v ShowCrashDialog /t REG_DWORD /d 0 /f \
            >/dev/null 2>&1
        # One virtual desktop for all windows. Without a window manager on the X server,
        # Wine waits 2 s for the manager's answer every time it hides or destroys a
        # top-level window with a caption; inside a virtual desktop it waits for nothing.
        wine reg add 'HKCU\Software\Wine\Explorer' /v Desktop /t REG_SZ /d Default /f \
            >/dev/null 2>&1
        wine reg add 'HKCU\Software\Wine\Explorer\Desktops' /v Default /t REG_SZ \
            /d 1280x1024 /f >/dev/null 2>&1
        wineserver -w
        touch "$ready"
    fi
    flock -u 9
    exec 9>&-
fi

if [ -n "${DISPLAY:-}" ]; then
    wine "$@"
    exit $?
fi

if ! command -v xvfb-run >/dev/null 2>&1; then
    echo "wine-run.sh: no DISPLAY and xvfb-run is not installed" >&2
    exit 127
fi

# One private X server for this program. Wait for the wineserver to go away before the X
# server does, so the next program starts with a fresh desktop on its own display.
exec flock "$WINEPREFIX.xlock" \
    xvfb-run -a -s "-screen 0 1280x1024x24 -nolisten tcp" \
    bash -c 'wine "$@"; rc=$?; wineserver -w; exit $rc' wine-run "$@"
