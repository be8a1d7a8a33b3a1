# The workbench for Windows, run under Wine by the same tests as on Linux, as far as time allows, and by some of its own.
find_program(QXBC_PYTHON NAMES python3 HINTS /usr/bin REQUIRED NO_CMAKE_FIND_ROOT_PATH)
find_program(QXBC_DLLTOOL NAMES x86_64-w64-mingw32-dlltool REQUIRED NO_CMAKE_FIND_ROOT_PATH)

# The second host, for Windows as well. It is linked with the library by the list of its exports.
set(import_library "${CMAKE_CURRENT_BINARY_DIR}/libQX_BACKGROUNDCORRECTION.dll.a")
set(exports "${PROJECT_SOURCE_DIR}/src/boundary/QX_BACKGROUNDCORRECTION.def")
add_custom_command(OUTPUT "${import_library}"
  COMMAND "${QXBC_DLLTOOL}" -m i386:x86-64 -d "${exports}" -D QX_BACKGROUNDCORRECTION.dll -l "${import_library}"
  DEPENDS "${exports}"
  VERBATIM)
add_executable(tool_test_host ToolTestHost.cpp "${import_library}")
target_include_directories(tool_test_host PRIVATE "${PROJECT_SOURCE_DIR}/include")
target_link_libraries(tool_test_host PRIVATE qxbc_options "${import_library}")

add_executable(tool_test_companion WindowsCompanion.cpp)
target_link_libraries(tool_test_companion PRIVATE qxbc_options)
target_link_options(tool_test_companion PRIVATE -municode)

add_executable(tool_test_console WindowsConsole.cpp)
target_link_libraries(tool_test_console PRIVATE qxbc_options)
target_link_options(tool_test_console PRIVATE -municode)

add_library(tool_test_throwing_library MODULE ThrowingLibrary.cpp)
set_target_properties(tool_test_throwing_library PROPERTIES PREFIX "")
target_link_libraries(tool_test_throwing_library PRIVATE qxbc_options)
target_link_options(tool_test_throwing_library PRIVATE -static)

# Programs that the tests can start as they start those of Linux.
foreach(program IN ITEMS qxbackground tool_test_host tool_test_companion tool_test_console)
  file(GENERATE OUTPUT "${CMAKE_CURRENT_BINARY_DIR}/${program}"
    CONTENT "#!/bin/sh\nexec \"${CMAKE_CROSSCOMPILING_EMULATOR}\" \"$<TARGET_FILE:${program}>\" \"$@\"\n"
    FILE_PERMISSIONS OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
endforeach()

# NAME and, where not all of it is worth its time here, the tests: each command takes some 0.2 s to start.
function(qxbc_tool_test_under_wine name)
  add_test(NAME "tool.${name}" COMMAND ${QXBC_PYTHON} -B "${CMAKE_CURRENT_SOURCE_DIR}/test_${name}.py" ${ARGN})
  set_tests_properties("tool.${name}" PROPERTIES
    SKIP_RETURN_CODE 77
    TIMEOUT 600
    ENVIRONMENT "LC_ALL=C.UTF-8;QX_UNDER_WINE=1;QXBACKGROUND=${CMAKE_CURRENT_BINARY_DIR}/qxbackground;QX_TEST_HOST=${CMAKE_CURRENT_BINARY_DIR}/tool_test_host;QX_COMPANION=${CMAKE_CURRENT_BINARY_DIR}/tool_test_companion;QX_CONSOLE=${CMAKE_CURRENT_BINARY_DIR}/tool_test_console;QX_WORKBENCH=$<TARGET_FILE:qxbackground>;QX_THROWING_LIBRARY=$<TARGET_FILE:tool_test_throwing_library>;QX_LIBRARY=$<TARGET_FILE_DIR:qxbackground>/QX_BACKGROUNDCORRECTION.dll;QX_NATIVE_WORKBENCH=${PROJECT_SOURCE_DIR}/build/linux/bin/qxbackground;QX_POOR_FOLDER_LIBRARY=none;QX_SOURCE_DIR=${PROJECT_SOURCE_DIR}")
endfunction()
qxbc_tool_test_under_wine(windows)
qxbc_tool_test_under_wine(correct CorrectedPixels Refusals)
qxbc_tool_test_under_wine(files Contents Safety)
qxbc_tool_test_under_wine(store Groups Copy Refusals)
qxbc_tool_test_under_wine(store_verbs Show.test_tells_of_a_store_what_it_tells_of_a_file
  Export.test_the_files_of_another_store_stay_out Rename.test_into_another_group
  NewGroups.test_one_file_system_may_have_one_name_for_both NewGroups.test_nothing_leads_out_of_the_folder
  NewGroups.test_names_that_windows_does_not_have)
qxbc_tool_test_under_wine(check Check.test_whole_files_of_both_versions Check.test_departures_carry_their_offsets)
qxbc_tool_test_under_wine(salvage
  Salvage.test_a_group_file Salvage.test_into_a_file_that_has_some Salvage.test_keys_that_are_there_twice)
qxbc_tool_test_under_wine(provenance Recorded.test_everything_that_a_correction_was_built_from
  Recorded.test_names_hold_when_a_tree_of_folders_is_moved InStep.test_import_takes_along_what_is_known
  Stores.test_import_and_copy Harmless.test_what_cannot_be_recorded_is_said_and_stops_nothing)
qxbc_tool_test_under_wine(simulate Determinism Refusals)
qxbc_tool_test_under_wine(paths Crossed.test_the_scenes_are_good Crossed.test_existing_files_stay_without_overwrite)
qxbc_tool_test_under_wine(formats Pixels.test_dark_frames_of_any_format_are_the_same_dark_frames
  Raw.test_frames_behind_an_offset Video.test_the_flag_counts_as_programs_write_it NotRead.test_other_kinds_of_png)
qxbc_tool_test_under_wine(outputs Tiff.test_compressed_is_deflate_with_the_horizontal_predictor
  Fits.test_keeps_every_card_that_still_holds Fits.test_compressed_is_rice_tiles)
# Where it says nothing of paths: those it makes itself have the system's separator.
qxbc_tool_test_under_wine(batch Names.test_a_folder_that_is_there_needs_no_separator
  Names.test_the_pattern_of_names_is_filled_in Names.test_the_ending_follows_the_format
  Names.test_a_correction_of_a_file_and_of_a_store_do_the_same Inputs.test_patterns_are_expanded_in_natural_order
  Inputs.test_dark_frames_and_one_output_for_all_take_them_too Failures.test_the_others_are_done
  Failures.test_a_page_that_breaks_late_leaves_no_output)
qxbc_tool_test_under_wine(help Help.test_version Help.test_of_the_program Vocabulary.test_older_names_are_still_understood
  Json.test_figures Json.test_of_a_store)
qxbc_tool_test_under_wine(completion Asked.test_values Asked.test_keys_that_the_file_has
  Asked.test_the_scripts_are_printed)
qxbc_tool_test_under_wine(color Color.test_not_in_files_and_pipes)
