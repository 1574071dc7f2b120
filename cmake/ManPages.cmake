# Manual pages are made, not typed: of the functions from the comments of the public header, of the program from its help.
# Where the makers are not installed, there are none.
find_package(Python3 QUIET COMPONENTS Interpreter)
find_program(HELP2MAN help2man)
set(man_folder "${PROJECT_BINARY_DIR}/man")

if(Python3_FOUND)
    set(public_header "${PROJECT_SOURCE_DIR}/include/VelmarinKormelinSegmentation.h")
    set(maker "${PROJECT_SOURCE_DIR}/scripts/manpages.py")
    add_custom_command(OUTPUT "${man_folder}/KSInitialize.3"
        COMMAND "${Python3_EXECUTABLE}" "${maker}" "${public_header}" "${PROJECT_VERSION}" "${man_folder}"
        DEPENDS "${maker}" "${public_header}" VERBATIM)
    add_custom_target(man_of_functions ALL DEPENDS "${man_folder}/KSInitialize.3")
    install(DIRECTORY "${man_folder}/" DESTINATION "${CMAKE_INSTALL_MANDIR}/man3" COMPONENT development
        FILES_MATCHING PATTERN "*.3")
endif()

if(TARGET kormelin-segment AND HELP2MAN AND NOT KORMELIN_SANITIZE)
    # Each example on a line of its own.
    add_custom_command(OUTPUT "${man_folder}/kormelin-segment.1"
        COMMAND "${CMAKE_COMMAND}" -E make_directory "${man_folder}"
        COMMAND "${HELP2MAN}" --no-info --name "cuts slap pictures into single fingers" --manual "User Commands"
                --source "Velmarin Kormelin Segmentation ${PROJECT_VERSION}" --output "${man_folder}/kormelin-segment.1"
                $<TARGET_FILE:kormelin-segment>
        COMMAND sed -i "s/^kormelin..segment /.br\\n&/" "${man_folder}/kormelin-segment.1"
        DEPENDS kormelin-segment VERBATIM)
    add_custom_target(man_of_program ALL DEPENDS "${man_folder}/kormelin-segment.1")
    install(FILES "${man_folder}/kormelin-segment.1" DESTINATION "${CMAKE_INSTALL_MANDIR}/man1" COMPONENT tools)
endif()
