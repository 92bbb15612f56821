#!/usr/bin/env bash
# The SDK as a plug-in author uses it (the sdk_samples test of the windows preset):
#
#   tools/sdk-test.sh BUILD_DIR        BUILD_DIR: a built windows tree (build/windows)
#
#  1. installs BUILD_DIR into a temporary folder outside the source tree and checks the
#     layout;
#  2. configures and builds every sample of the installed samples/ out of tree, with the
#     installed toolchain file and package alone, and checks that nothing of its build
#     names the source tree;
#  3. takes the installed sample modules out of the SDK's bin/ and installs the ones just
#     built there instead (the sample's own install rule), beside the installed demo host;
#  4. runs the demo host's scripted session with them.
# The temporary folder is removed when everything passed and kept (and named) otherwise.
set -uo pipefail

if [ $# -ne 1 ] || [ ! -f "$1/CMakeCache.txt" ]; then
    echo "usage: $0 BUILD_DIR (a configured and built windows tree)" >&2
    exit 2
fi
build=$(cd "$1" && pwd)
root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)

work=$(mktemp -d "${TMPDIR:-/tmp}/curvectl-sdk-test.XXXXXX")
sdk=$work/sdk
failed=0
fail() {
    echo "FAILED: $*"
    failed=1
}
step() {
    echo
    echo "== $*"
}
finish() {
    if [ $failed -eq 0 ]; then
        rm -rf "$work"
        echo
        echo "SDK test passed"
        exit 0
    fi
    echo
    echo "SDK test failed; its files are kept in $work"
    exit 1
}

step "install $build into $sdk"
if ! cmake --install "$build" --prefix "$sdk" >"$work/install.log" 2>&1; then
    cat "$work/install.log"
    fail "cmake --install"
    finish
fi

step "the SDK's layout"
for f in include/curvectl/icurvectl.h include/curvectl/icurve.h include/curvectl/client.h \
    include/curvectl/version.h include/host/animatable.h include/host/view_effect.h \
    lib/libhostcore.dll.a bin/curvectl.dll bin/hostcore.dll bin/demo_host.exe \
    lib/cmake/curvectl/curvectlConfig.cmake lib/cmake/curvectl/curvectlConfigVersion.cmake \
    lib/cmake/curvectl/curvectlTargets.cmake lib/cmake/curvectl/mingw-w64-x86_64.cmake \
    share/doc/curvectl/README.md share/doc/curvectl/guide.md share/doc/curvectl/CHANGELOG.md \
    share/doc/curvectl/api/index.html; do
    [ -f "$sdk/$f" ] || fail "missing $f"
done
# A client never links the module: no import library of it.
if compgen -G "$sdk/lib/*curvectl*.a" >/dev/null; then
    fail "the SDK holds an import library of the module: $(ls "$sdk"/lib/*curvectl*.a)"
fi
samples=()
for list in "$sdk"/samples/*/CMakeLists.txt; do
    [ -f "$list" ] && samples+=("$(basename "$(dirname "$list")")")
done
if [ ${#samples[@]} -eq 0 ]; then
    fail "no sample in $sdk/samples"
    finish
fi
echo "samples: ${samples[*]}"

# The installed sample modules: every DLL of bin/ but the module and the host library.
installed=()
for dll in "$sdk"/bin/*.dll; do
    case $(basename "$dll") in
    curvectl.dll | hostcore.dll) ;;
    *) installed+=("$(basename "$dll")") ;;
    esac
done
echo "installed sample modules: ${installed[*]}"
[ $failed -eq 0 ] || finish

for name in "${samples[@]}"; do
    out=$work/build/$name
    step "sample $name: configure and build against the installed SDK alone"
    if ! cmake -S "$sdk/samples/$name" -B "$out" -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo \
        -DCMAKE_TOOLCHAIN_FILE="$sdk/lib/cmake/curvectl/mingw-w64-x86_64.cmake" \
        -DCMAKE_PREFIX_PATH="$sdk" >"$work/$name.configure.log" 2>&1; then
        cat "$work/$name.configure.log"
        fail "$name: configure"
        continue
    fi
    grep -E '^curvectl_(DIR|VERSION)' "$out/CMakeCache.txt" || true
    if ! cmake --build "$out" -j2 >"$work/$name.build.log" 2>&1; then
        tail -n 60 "$work/$name.build.log"
        fail "$name: build"
        continue
    fi
    # Nothing of the sample's build may reach into the source tree.
    if grep -l -F "$root/" "$out/build.ninja" "$out/CMakeCache.txt" \
        "$out"/CMakeFiles/*.dir/*.rsp 2>/dev/null; then
        fail "$name: its build names the source tree $root"
    fi
done
[ $failed -eq 0 ] || finish

step "the built samples beside the installed demo host"
for dll in "${installed[@]}"; do
    rm -f "$sdk/bin/$dll"
done
for name in "${samples[@]}"; do
    if ! cmake --install "$work/build/$name" --prefix "$sdk" >"$work/$name.install.log" 2>&1; then
        cat "$work/$name.install.log"
        fail "$name: install"
    fi
done
for dll in "${installed[@]}"; do
    [ -f "$sdk/bin/$dll" ] || fail "the built samples do not give $dll"
done
ls -l "$sdk/bin"
[ $failed -eq 0 ] || finish

step "the demo host's scripted session with the built samples"
if ! "$root/tools/wine-run.sh" "$sdk/bin/demo_host.exe" --script "$work/session"; then
    fail "the scripted session"
fi
finish
