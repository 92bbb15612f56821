# Cross toolchain: 64-bit Windows with MinGW-w64 (posix thread model), tests run under Wine.
#
#   cmake -S . -B build/windows -G Ninja -DCMAKE_TOOLCHAIN_FILE=cmake/mingw-w64-x86_64.cmake
#
# The posix variants of the compilers provide std::thread, std::mutex and friends. The SDK
# installs this file beside its CMake package (lib/cmake/curvectl/), for clients to build
# with the same compilers.

set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR x86_64)

set(CURVECTL_MINGW_TRIPLE x86_64-w64-mingw32)

set(CMAKE_C_COMPILER ${CURVECTL_MINGW_TRIPLE}-gcc-posix)
set(CMAKE_CXX_COMPILER ${CURVECTL_MINGW_TRIPLE}-g++-posix)
set(CMAKE_RC_COMPILER ${CURVECTL_MINGW_TRIPLE}-windres)
set(CMAKE_AR ${CURVECTL_MINGW_TRIPLE}-gcc-ar-posix CACHE FILEPATH "Archiver")
set(CMAKE_RANLIB ${CURVECTL_MINGW_TRIPLE}-gcc-ranlib-posix CACHE FILEPATH "Ranlib")

set(CMAKE_FIND_ROOT_PATH /usr/${CURVECTL_MINGW_TRIPLE})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
# Packages also outside the MinGW root: an installed curvectl SDK is found through
# CMAKE_PREFIX_PATH wherever it lies.
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE BOTH)

# add_test() and try_run() prepend this to every Windows program they start.
# CMAKE_CURRENT_LIST_DIR is used rather than CMAKE_SOURCE_DIR because this file is
# also read by try_compile() projects, whose source dir is a scratch folder. The copy in an
# installed SDK has no tools/ beside it and sets no emulator.
get_filename_component(_curvectl_root "${CMAKE_CURRENT_LIST_DIR}/.." ABSOLUTE)
if(EXISTS "${_curvectl_root}/tools/wine-run.sh")
    set(CMAKE_CROSSCOMPILING_EMULATOR "${_curvectl_root}/tools/wine-run.sh")
endif()
unset(_curvectl_root)
