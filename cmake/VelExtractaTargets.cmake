# The compiler settings of all targets, and this project's three kinds of targets.

add_library(velextracta_settings INTERFACE)
target_compile_options(velextracta_settings INTERFACE
    -Wall -Wextra -Wpedantic -Wshadow -Wnon-virtual-dtor -Woverloaded-virtual -Wcast-qual
    # Reported for correct string concatenations by the compiler of Debian 12.
    $<$<CXX_COMPILER_ID:GNU>:-Wno-restrict>
    # Reported by clang 19 inside the standard library of Debian 12, for a stable sort.
    $<$<CXX_COMPILER_ID:Clang>:-Wno-deprecated-declarations>)
if(VELEXTRACTA_SANITIZE)
    target_compile_options(velextracta_settings INTERFACE
        -fsanitize=${VELEXTRACTA_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer
        # Reported inside the standard library once its code is instrumented.
        $<$<CXX_COMPILER_ID:GNU>:-Wno-maybe-uninitialized>)
    target_link_options(velextracta_settings INTERFACE -fsanitize=${VELEXTRACTA_SANITIZE})
endif()

if(WIN32)
    # Reported inside the standard library by the compiler for Windows.
    target_compile_options(velextracta_settings INTERFACE -Wno-maybe-uninitialized)
endif()

if(VELEXTRACTA_FUZZ)
    # Measure coverage in all of our code. Only a fuzzer links the engine.
    target_compile_options(velextracta_settings INTERFACE -fsanitize=fuzzer-no-link)
endif()

# PAIRS names pairs of X.posix.cpp and X.windows.cpp by X. Each target takes the one for this system.
if(WIN32)
    set(velextracta_pair_end .windows.cpp)
else()
    set(velextracta_pair_end .posix.cpp)
endif()

# A folder of the product: one static library, its headers named from the root ("views/ViewType.h").
# POSIX and WINDOWS name sources for one of these systems alone.
function(velextracta_library name)
    cmake_parse_arguments(ARG "" "" "SOURCES;POSIX;WINDOWS;PAIRS;LIBRARIES" ${ARGN})
    if(WIN32)
        set(ARG_POSIX)
    else()
        set(ARG_WINDOWS)
    endif()
    list(TRANSFORM ARG_PAIRS APPEND ${velextracta_pair_end})
    add_library(${name} STATIC ${ARG_SOURCES} ${ARG_POSIX} ${ARG_WINDOWS} ${ARG_PAIRS})
    target_include_directories(${name} PUBLIC ${CMAKE_SOURCE_DIR})
    target_link_libraries(${name} PUBLIC velextracta_settings ${ARG_LIBRARIES})
endfunction()

function(velextracta_program name)
    cmake_parse_arguments(ARG "" "DESCRIPTION" "SOURCES;PAIRS;LIBRARIES" ${ARGN})
    list(TRANSFORM ARG_PAIRS APPEND ${velextracta_pair_end})
    add_executable(${name} ${ARG_SOURCES} ${ARG_PAIRS})
    target_link_libraries(${name} PRIVATE velextracta_settings ${ARG_LIBRARIES})
    if(WIN32)
        velextracta_resources(${name} "${ARG_DESCRIPTION}")
    endif()
endfunction()

# A program's manifest and version for Windows.
function(velextracta_resources program description)
    foreach(kind manifest rc)
        configure_file(${CMAKE_SOURCE_DIR}/packaging/windows/program.${kind} ${program}.${kind} @ONLY)
    endforeach()
    set(script ${CMAKE_CURRENT_BINARY_DIR}/${program}.rc)
    # Without this the resource compiler does not search the script's folder.
    set_source_files_properties(${script} PROPERTIES
        COMPILE_OPTIONS "-I${CMAKE_CURRENT_BINARY_DIR}"
        OBJECT_DEPENDS ${CMAKE_CURRENT_BINARY_DIR}/${program}.manifest)
    target_sources(${program} PRIVATE ${script})
endfunction()

# A GoogleTest program; each of its cases is a CTest test. POSIX and WINDOWS name sources for one of
# these systems alone; FILTER selects cases, in GoogleTest's form.
function(velextracta_test name)
    cmake_parse_arguments(ARG "" "FILTER" "SOURCES;POSIX;WINDOWS;LIBRARIES;DEFINITIONS" ${ARGN})
    set(timeout 300)
    if(WIN32)
        list(APPEND ARG_SOURCES ${ARG_WINDOWS})
        set(timeout 1200)  # wine's own programs may keep the output of a test open for minutes
    else()
        list(APPEND ARG_SOURCES ${ARG_POSIX})
    endif()
    velextracta_program(${name}
        DESCRIPTION "Tests"
        SOURCES ${ARG_SOURCES}
        LIBRARIES test_support ${ARG_LIBRARIES} GTest::gtest GTest::gmock GTest::gtest_main)
    target_compile_definitions(${name} PRIVATE ${ARG_DEFINITIONS})
    gtest_discover_tests(${name}
        DISCOVERY_MODE PRE_TEST
        TEST_FILTER "${ARG_FILTER}"
        PROPERTIES TIMEOUT ${timeout})
endfunction()
