# The SDK that `cmake --install build/windows --prefix DIR` lays out:
#
#   bin/                   curvectl.dll, hostcore.dll, demo_host.exe, the sample clients
#   include/curvectl/      the client headers, version.h among them
#   include/host/          the host headers (the host SDK's stand-in)
#   lib/                   libhostcore.dll.a, the host library's import library
#   lib/cmake/curvectl/    the CMake package (curvectl::client, curvectl::host), its version
#                          file and the MinGW-w64 toolchain file
#   samples/<name>/        each sample's sources with its own CMakeLists.txt
#   share/doc/curvectl/    README.md, guide.md, CHANGELOG.md, api/ (the API reference)
#
# The sdk_samples test installs the SDK into a temporary folder and builds every sample
# from it alone (tools/sdk-test.sh).
include(CMakePackageConfigHelpers)

set(CURVECTL_PACKAGE_DIR lib/cmake/curvectl)

# The host library: DLL and import library; its headers; the module (no import library:
# clients never link it); the demo host.
install(TARGETS hostcore curvectl_client EXPORT curvectlTargets
        RUNTIME DESTINATION bin
        ARCHIVE DESTINATION lib
        LIBRARY DESTINATION lib)
if(TARGET curvectl)
    install(TARGETS curvectl RUNTIME DESTINATION bin)
endif()
if(TARGET demo_host)
    install(TARGETS demo_host RUNTIME DESTINATION bin)
endif()
install(DIRECTORY ${CURVECTL_ROOT}/include/curvectl DESTINATION include
        FILES_MATCHING PATTERN "*.h")
install(FILES ${CURVECTL_GENERATED_INCLUDE}/curvectl/version.h DESTINATION include/curvectl)
install(DIRECTORY ${CURVECTL_ROOT}/host/include/host DESTINATION include
        FILES_MATCHING PATTERN "*.h")

# The package.
install(EXPORT curvectlTargets NAMESPACE curvectl:: DESTINATION ${CURVECTL_PACKAGE_DIR})
configure_file(${CURVECTL_ROOT}/cmake/curvectlConfig.cmake.in
               ${CMAKE_BINARY_DIR}/package/curvectlConfig.cmake @ONLY)
# Same major version: 1.x clients build against any later 1.y SDK. The size check of the
# version file also turns away a 32-bit build.
write_basic_package_version_file(${CMAKE_BINARY_DIR}/package/curvectlConfigVersion.cmake
                                 VERSION ${PROJECT_VERSION} COMPATIBILITY SameMajorVersion)
install(FILES ${CMAKE_BINARY_DIR}/package/curvectlConfig.cmake
              ${CMAKE_BINARY_DIR}/package/curvectlConfigVersion.cmake
              ${CURVECTL_ROOT}/cmake/mingw-w64-x86_64.cmake
        DESTINATION ${CURVECTL_PACKAGE_DIR})

# The samples, as folders of sources that build on their own (their CMakeLists.txt installs
# their module into bin/ above, as it does for an author).
foreach(dir IN LISTS CURVECTL_SAMPLE_DIRS)
    get_filename_component(name ${dir} NAME)
    install(DIRECTORY ${dir}/ DESTINATION samples/${name})
endforeach()

# The documents, with the pictures the README shows.
install(FILES ${CURVECTL_ROOT}/README.md ${CURVECTL_ROOT}/CHANGELOG.md
              ${CURVECTL_ROOT}/docs/guide.md
        DESTINATION share/doc/curvectl)
install(DIRECTORY ${CURVECTL_ROOT}/docs/ DESTINATION share/doc/curvectl/docs
        FILES_MATCHING PATTERN "*.png")
if(CURVECTL_BUILD_DOCS)
    install(DIRECTORY ${CURVECTL_DOCS_DIR}/html/ DESTINATION share/doc/curvectl/api)
endif()

# The test of the SDK as an author uses it: install, build every sample out of tree against
# the installed package alone, run the demo host's scripted session with the built sample.
if(CURVECTL_BUILD_TESTS AND TARGET demo_host)
    add_test(NAME sdk_samples
             COMMAND bash ${CURVECTL_ROOT}/tools/sdk-test.sh ${CMAKE_BINARY_DIR})
    # Alone, like demo_session: its session moves the real mouse and reads the screen.
    set_tests_properties(sdk_samples PROPERTIES RUN_SERIAL TRUE TIMEOUT 600
        ENVIRONMENT "CURVECTL_WINEPREFIX=${CMAKE_BINARY_DIR}/wineprefix")
endif()
