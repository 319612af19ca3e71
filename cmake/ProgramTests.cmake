# Tests of built programs, started as a user starts them. The tests run on this system and start
# programs for Windows through an emulator. The build tree of those programs builds the tests a second
# time, for this system.

set(VELEXTRACTA_PROGRAMS "" CACHE PATH
    "Folder of programs for Windows that are to be tested instead of those of this build")
set(VELEXTRACTA_EMULATOR "" CACHE FILEPATH "What runs programs for Windows here")

set(tested_programs VelExtracta extracta-standin make-design scripted-program)

# WINDOWS names sources for the programs of Windows alone, NOT_ON_WINDOWS tests that leave those out.
function(velextracta_program_test name)
    if(WIN32)
        return()
    endif()
    cmake_parse_arguments(ARG "" "" "SOURCES;WINDOWS;NOT_ON_WINDOWS;LIBRARIES" ${ARGN})
    set(filter "")
    if(VELEXTRACTA_PROGRAMS)
        list(APPEND ARG_SOURCES ${ARG_WINDOWS})
        list(JOIN ARG_NOT_ON_WINDOWS : filter)
        string(PREPEND filter -)
    endif()
    set(definitions SYSTEM_CALLS="$<TARGET_FILE:system_calls>")
    foreach(program IN LISTS tested_programs)
        string(MAKE_C_IDENTIFIER ${program} definition)
        string(TOUPPER ${definition} definition)
        set(native $<TARGET_FILE:${program}>)
        set(tested ${native})
        if(VELEXTRACTA_PROGRAMS)
            set(tested ${VELEXTRACTA_PROGRAMS}/${program}.exe)
        endif()
        # The programs of this build serve for comparison.
        list(APPEND definitions ${definition}="${tested}" NATIVE_${definition}="${native}")
    endforeach()
    velextracta_test(${name}
        SOURCES ${ARG_SOURCES}
        FILTER "${filter}"
        LIBRARIES ${ARG_LIBRARIES}
        DEFINITIONS ${definitions})
    add_dependencies(${name} ${tested_programs} system_calls)
endfunction()

if(WIN32)
    include(ExternalProject)
    set(tree ${CMAKE_BINARY_DIR}/program-tests)
    ExternalProject_Add(program_tests
        SOURCE_DIR ${CMAKE_SOURCE_DIR}
        BINARY_DIR ${tree}
        CMAKE_ARGS
            -DCMAKE_BUILD_TYPE=${CMAKE_BUILD_TYPE}
            -DCMAKE_COMPILE_WARNING_AS_ERROR=${CMAKE_COMPILE_WARNING_AS_ERROR}
            -DCMAKE_CXX_COMPILER_LAUNCHER=${CMAKE_CXX_COMPILER_LAUNCHER}
            -DVELEXTRACTA_TESTS=ON
            -DVELEXTRACTA_PROGRAMS=${CMAKE_RUNTIME_OUTPUT_DIRECTORY}
            -DVELEXTRACTA_EMULATOR=${CMAKE_CROSSCOMPILING_EMULATOR}
        BUILD_COMMAND ${CMAKE_COMMAND} --build <BINARY_DIR>
            --target endtoend_tests standin_program_tests
        BUILD_ALWAYS TRUE
        INSTALL_COMMAND "")
    set(tests_there ${CMAKE_CURRENT_BINARY_DIR}/ProgramTests.cmake)
    file(CONFIGURE OUTPUT ${tests_there}
        CONTENT "subdirs(\"${tree}/tests/endtoend\" \"${tree}/tests/standin\")\n")
    set_property(DIRECTORY APPEND PROPERTY TEST_INCLUDE_FILES ${tests_there})
endif()
