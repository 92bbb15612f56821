# The API reference: Doxygen builds HTML from the public client headers (and the client
# guide, its front page) into ${CURVECTL_DOCS_DIR}/html. The api_reference test fails on any
# Doxygen warning, so no public operation goes undocumented; it also checks that README.md
# and CHANGELOG.md name the project's version.
#
# The reference covers include/curvectl/ and curvectl/version.h. The host headers
# (include/host/) stand in for the host application's own SDK, which documents itself;
# their declarations appear in the reference by name only.
if(NOT CURVECTL_BUILD_DOCS)
    return()
endif()

find_program(CURVECTL_DOXYGEN doxygen)
if(NOT CURVECTL_DOXYGEN)
    message(FATAL_ERROR "doxygen not found (install it: tools/setup-deps.sh), or configure "
                        "with -DCURVECTL_BUILD_DOCS=OFF")
endif()

curvectl_glob(CURVECTL_PUBLIC_HEADERS include/curvectl/*.h)
set(CURVECTL_DOXYFILE ${CMAKE_BINARY_DIR}/Doxyfile)
set(CURVECTL_DOXYGEN_LOG ${CURVECTL_DOCS_DIR}/doxygen-warnings.log)
configure_file(${CURVECTL_ROOT}/docs/Doxyfile.in ${CURVECTL_DOXYFILE} @ONLY)

set(index ${CURVECTL_DOCS_DIR}/html/index.html)
add_custom_command(
    OUTPUT ${index}
    # A fresh folder, so that no page of a removed declaration survives.
    COMMAND ${CMAKE_COMMAND} -E rm -rf ${CURVECTL_DOCS_DIR}/html
    COMMAND ${CMAKE_COMMAND} -E make_directory ${CURVECTL_DOCS_DIR}
    COMMAND ${CURVECTL_DOXYGEN} ${CURVECTL_DOXYFILE}
    DEPENDS ${CURVECTL_PUBLIC_HEADERS} ${CURVECTL_GENERATED_INCLUDE}/curvectl/version.h
            ${CURVECTL_ROOT}/docs/guide.md ${CURVECTL_DOXYFILE}
    COMMENT "API reference (Doxygen) into ${CURVECTL_DOCS_DIR}/html"
    VERBATIM)
add_custom_target(api_docs ALL DEPENDS ${index})

if(CURVECTL_BUILD_TESTS)
    add_test(NAME api_reference
             COMMAND bash ${CURVECTL_ROOT}/tools/check-api-docs.sh ${CURVECTL_DOCS_DIR}
                     ${PROJECT_VERSION})
endif()
