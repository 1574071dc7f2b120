# Debian packages by `cpack`, split as Debian does, one per component of Install.cmake. scripts/package.sh makes them.
set(package_of_runtime libvelmarinkormelinsegmentation${PROJECT_VERSION_MAJOR})
set(package_of_development libvelmarinkormelinsegmentation-dev)
set(package_of_python python3-kormelin)
set(package_of_tools kormelin-segment)
set(package_components runtime development python)
if(TARGET kormelin-segment)
    list(APPEND package_components tools)
endif()

# Each package brings its licence and its changes.
find_program(GZIP gzip REQUIRED)
add_custom_command(OUTPUT "${PROJECT_BINARY_DIR}/changelog.gz"
    COMMAND "${GZIP}" -9 -n -c "${PROJECT_SOURCE_DIR}/packaging/changelog" > "${PROJECT_BINARY_DIR}/changelog.gz"
    DEPENDS "${PROJECT_SOURCE_DIR}/packaging/changelog" VERBATIM)
add_custom_target(package_changelog ALL DEPENDS "${PROJECT_BINARY_DIR}/changelog.gz")
foreach(component IN LISTS package_components)
    install(FILES "${PROJECT_SOURCE_DIR}/packaging/copyright" "${PROJECT_BINARY_DIR}/changelog.gz"
        DESTINATION "${CMAKE_INSTALL_DATADIR}/doc/${package_of_${component}}" COMPONENT ${component})
endforeach()

# Debian's manual pages are compressed.
foreach(pages IN ITEMS "development man3/*.3" "tools man1/*.1")
    separate_arguments(pages)
    list(GET pages 0 component)
    list(GET pages 1 pattern)
    install(CODE "
        file(GLOB pages \"\$ENV{DESTDIR}\${CMAKE_INSTALL_PREFIX}/${CMAKE_INSTALL_MANDIR}/${pattern}\")
        if(pages)
            execute_process(COMMAND \"${GZIP}\" -9 -n -f \${pages} COMMAND_ERROR_IS_FATAL ANY)
        endif()" COMPONENT ${component})
endforeach()

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME velmarin-kormelin-segmentation)
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGE_CONTACT "The Velmarin Kormelin Segmentation developers <maintainers@velmarin.example>")
set(CPACK_PACKAGING_INSTALL_PREFIX "${CMAKE_INSTALL_PREFIX}")
set(CPACK_STRIP_FILES ON)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
    OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
set(CPACK_COMPONENTS_ALL ${package_components})
set(CPACK_COMPONENTS_GROUPING IGNORE)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(CPACK_DEBIAN_ENABLE_COMPONENT_DEPENDS OFF)

set(about "Velmarin Kormelin Segmentation cuts slap images, several fingers pressed on a
scanner at the same time, into single fingers: for each a rectangle in the
input and a picture of that finger alone.")
set(same_version "(= ${PROJECT_VERSION})")
# CPack's own files for a shared library would run ldconfig by scripts.
file(WRITE "${PROJECT_BINARY_DIR}/control/shlibs"
    "libVelmarinKormelinSegmentation ${PROJECT_VERSION_MAJOR} ${package_of_runtime} (>= ${PROJECT_VERSION})\n")
file(WRITE "${PROJECT_BINARY_DIR}/control/triggers" "activate-noawait ldconfig\n")
set(CPACK_DEBIAN_RUNTIME_PACKAGE_CONTROL_EXTRA
    "${PROJECT_BINARY_DIR}/control/shlibs;${PROJECT_BINARY_DIR}/control/triggers")
set(CPACK_DEBIAN_RUNTIME_PACKAGE_NAME ${package_of_runtime})
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SECTION libs)
set(CPACK_DEBIAN_RUNTIME_DESCRIPTION "cuts slap images into single fingers - shared library
${about}

This package holds the shared library.")
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_NAME ${package_of_development})
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_DEPENDS "${package_of_runtime} ${same_version}")
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SUGGESTS "libboost-dev, pkg-config")
set(CPACK_DEBIAN_DEVELOPMENT_DESCRIPTION "cuts slap images into single fingers - development files
${about}

This package holds the headers in C and C++, the files for CMake and
pkg-config, the static core with its headers (they need Boost's) and examples.")
set(CPACK_DEBIAN_PYTHON_PACKAGE_NAME ${package_of_python})
set(CPACK_DEBIAN_PYTHON_PACKAGE_SECTION python)
set(CPACK_DEBIAN_PYTHON_PACKAGE_CONTROL_EXTRA
    "${PROJECT_SOURCE_DIR}/packaging/python/postinst;${PROJECT_SOURCE_DIR}/packaging/python/prerm")
set(CPACK_DEBIAN_PYTHON_PACKAGE_ARCHITECTURE all)
set(CPACK_DEBIAN_PYTHON_PACKAGE_SHLIBDEPS OFF)
set(CPACK_DEBIAN_PYTHON_PACKAGE_DEPENDS "python3, python3-numpy, ${package_of_runtime} (>= ${PROJECT_VERSION})")
set(CPACK_DEBIAN_PYTHON_DESCRIPTION "cuts slap images into single fingers - Python module
${about}

This package holds the Python module kormelin, which works on numpy arrays.")
set(CPACK_DEBIAN_TOOLS_PACKAGE_NAME ${package_of_tools})
set(CPACK_DEBIAN_TOOLS_PACKAGE_SECTION graphics)
set(CPACK_DEBIAN_TOOLS_DESCRIPTION "cuts slap images into single fingers - program
${about}

This package holds the program kormelin-segment, for single pictures and for
archives of them.")
include(CPack)
