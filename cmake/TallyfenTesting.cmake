# tallyfen_add_test(<name> SOURCES <files...> [LIBS <targets...>] [GUI])
# One executable per tested class. The environment that keeps tests away from the
# operator's own settings, keychain and store is set up by scripts/test.sh around CTest;
# these properties only add what every test needs on top of it.
function(tallyfen_add_test name)
    cmake_parse_arguments(ARG "GUI" "TIMEOUT" "SOURCES;LIBS" ${ARGN})
    add_executable(${name} ${ARG_SOURCES})
    target_link_libraries(${name} PRIVATE tallyfen_strict_tests Qt6::Test tallyfen_core ${ARG_LIBS})
    target_include_directories(${name} PRIVATE ${PROJECT_SOURCE_DIR}/tests)
    if(ARG_GUI)
        target_link_libraries(${name} PRIVATE tallyfen_ui)
    endif()
    add_test(NAME ${name} COMMAND ${name})
    if(NOT ARG_TIMEOUT)
        set(ARG_TIMEOUT 120)
    endif()
    set_tests_properties(${name} PROPERTIES
        TIMEOUT ${ARG_TIMEOUT}
        ENVIRONMENT "QT_QPA_PLATFORM=offscreen;LANG=en_US.UTF-8;TZ=Europe/Berlin;TALLYFEN_TEST_SOURCE_DIR=${PROJECT_SOURCE_DIR}")
endfunction()
