#!/usr/bin/env bash
# Installs the Debian 12 packages the build and the tests need. Installs only what is
# missing, so a second run does nothing. Needs root (or sudo) when something is missing.
set -euo pipefail

packages=(
    cmake
    ninja-build
    g++
    clang
    libclang-rt-14-dev          # clang's sanitizer and libFuzzer runtimes
    clang-format-14
    g++-mingw-w64-x86-64-posix
    mingw-w64-tools
    wine64
    wine
    xvfb
    xauth
    doctest-dev
    libstb-dev                  # stb_image_write.h: the PNG files of screenshots
    doxygen                     # the API reference (windows preset), checked for warnings
)

missing=()
for p in "${packages[@]}"; do
    if ! dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q '^install ok installed$'; then
        missing+=("$p")
    fi
done

if [ ${#missing[@]} -eq 0 ]; then
    exit 0
fi

sudo=()
if [ "$(id -u)" -ne 0 ]; then
    sudo=(sudo)
fi

echo "setup-deps: installing ${missing[*]}"
export DEBIAN_FRONTEND=noninteractive
"${sudo[@]}" apt-get update -qq
"${sudo[@]}" apt-get install -y -qq --no-install-recommends "${missing[@]}" >/dev/null
