# What `cmake --install` puts where, in three components:
#   runtime       the shared library
#   development   public headers, CMake package, pkg-config file, the core as a static library with its headers, examples
#   python        the Python module over the shared library
#   tools         programs for people
include(GNUInstallDirs)
include(CMakePackageConfigHelpers)

set(package_folder "${CMAKE_INSTALL_LIBDIR}/cmake/VelmarinKormelinSegmentation")
set(core_headers_folder "${CMAKE_INSTALL_INCLUDEDIR}/kormelin")

# An application links the shared library and sees the public headers; who holds the objects links the core.
target_include_directories(VelmarinKormelinSegmentation INTERFACE "$<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}>")
target_include_directories(kormelin_core INTERFACE
    "$<INSTALL_INTERFACE:${core_headers_folder}>" "$<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}>")
set_target_properties(kormelin_core PROPERTIES EXPORT_NAME core)
install(TARGETS VelmarinKormelinSegmentation EXPORT VelmarinKormelinSegmentationTargets
    LIBRARY DESTINATION "${CMAKE_INSTALL_LIBDIR}" COMPONENT runtime NAMELINK_COMPONENT development)
install(TARGETS kormelin_core EXPORT VelmarinKormelinSegmentationCoreTargets
    ARCHIVE DESTINATION "${CMAKE_INSTALL_LIBDIR}" COMPONENT development)

install(DIRECTORY "${PROJECT_SOURCE_DIR}/include/" DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}" COMPONENT development)
install(DIRECTORY "${PROJECT_SOURCE_DIR}/src/" DESTINATION "${core_headers_folder}" COMPONENT development
    FILES_MATCHING PATTERN "*.hpp")
install(DIRECTORY "${PROJECT_SOURCE_DIR}/examples/" COMPONENT development
    DESTINATION "${CMAKE_INSTALL_DATADIR}/doc/libvelmarinkormelinsegmentation-dev/examples")

foreach(targets IN ITEMS VelmarinKormelinSegmentationTargets VelmarinKormelinSegmentationCoreTargets)
    install(EXPORT ${targets} NAMESPACE VelmarinKormelinSegmentation::
        DESTINATION "${package_folder}" COMPONENT development)
endforeach()
configure_package_config_file("${PROJECT_SOURCE_DIR}/cmake/VelmarinKormelinSegmentationConfig.cmake.in"
    "${PROJECT_BINARY_DIR}/VelmarinKormelinSegmentationConfig.cmake" INSTALL_DESTINATION "${package_folder}")
write_basic_package_version_file("${PROJECT_BINARY_DIR}/VelmarinKormelinSegmentationConfigVersion.cmake"
    COMPATIBILITY SameMajorVersion)
install(FILES
    "${PROJECT_BINARY_DIR}/VelmarinKormelinSegmentationConfig.cmake"
    "${PROJECT_BINARY_DIR}/VelmarinKormelinSegmentationConfigVersion.cmake"
    DESTINATION "${package_folder}" COMPONENT development)

# The file asks pkg-config where it lies, so that an installed tree may be moved.
file(RELATIVE_PATH prefix_from_pc "/prefix/${CMAKE_INSTALL_LIBDIR}/pkgconfig" "/prefix")
configure_file("${PROJECT_SOURCE_DIR}/cmake/velmarin-kormelin-segmentation.pc.in"
    "${PROJECT_BINARY_DIR}/velmarin-kormelin-segmentation.pc" @ONLY)
install(FILES "${PROJECT_BINARY_DIR}/velmarin-kormelin-segmentation.pc"
    DESTINATION "${CMAKE_INSTALL_LIBDIR}/pkgconfig" COMPONENT development)

# A prefix of its own keeps Python's modules where Python looks for them if it is told; Debian's interpreter looks in
# dist-packages.
set(KORMELIN_PYTHON_FOLDER "lib/python3/dist-packages" CACHE STRING "Where Python modules go, below the prefix")
install(DIRECTORY "${PROJECT_SOURCE_DIR}/python/kormelin" DESTINATION "${KORMELIN_PYTHON_FOLDER}" COMPONENT python
    FILES_MATCHING PATTERN "*.py")

if(TARGET kormelin-segment)
    install(TARGETS kormelin-segment RUNTIME DESTINATION "${CMAKE_INSTALL_BINDIR}" COMPONENT tools)
    install(FILES "${PROJECT_SOURCE_DIR}/tools/segment/completion/kormelin-segment"
        DESTINATION "${CMAKE_INSTALL_DATADIR}/bash-completion/completions" COMPONENT tools)
    install(FILES "${PROJECT_SOURCE_DIR}/docs/kormelin-segment.schema.json" "${PROJECT_SOURCE_DIR}/docs/scale.md"
        DESTINATION "${CMAKE_INSTALL_DATADIR}/doc/kormelin-segment" COMPONENT tools)
    install(DIRECTORY "${PROJECT_SOURCE_DIR}/contrib" USE_SOURCE_PERMISSIONS
        DESTINATION "${CMAKE_INSTALL_DATADIR}/doc/kormelin-segment" COMPONENT tools)
endif()
include(cmake/ManPages.cmake)
