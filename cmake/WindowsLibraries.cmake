# Finds the libraries for Windows under the names that they have on other systems.
# scripts/build-windows-libraries has built them.

set(windows_libraries ${CMAKE_SOURCE_DIR}/build/windows-libraries CACHE PATH
    "Where scripts/build-windows-libraries has put the libraries")
if(NOT EXISTS ${windows_libraries}/lib/libarchive.a)
    message(FATAL_ERROR "No libraries for Windows in ${windows_libraries}: "
        "run scripts/build-windows-libraries first")
endif()

set(ZLIB_USE_STATIC_LIBS ON)
find_package(ZLIB REQUIRED)  # comes with the compiler

add_library(windows_headers INTERFACE)
target_include_directories(windows_headers SYSTEM INTERFACE ${windows_libraries}/include)
target_compile_definitions(windows_headers INTERFACE BOOST_ALL_NO_LIB BOOST_FILESYSTEM_STATIC_LINK
    BOOST_THREAD_USE_LIB)
add_library(Boost::headers ALIAS windows_headers)
add_library(Boost::date_time ALIAS windows_headers)

function(velextracta_windows_library name file)
    add_library(${name} STATIC IMPORTED)
    set_target_properties(${name} PROPERTIES
        IMPORTED_LOCATION ${windows_libraries}/lib/lib${file}.a)
    target_link_libraries(${name} INTERFACE windows_headers ${ARGN})
endfunction()

velextracta_windows_library(Boost::filesystem boost_filesystem)
velextracta_windows_library(Boost::thread boost_thread)
velextracta_windows_library(PkgConfig::LIBDEFLATE deflate)
velextracta_windows_library(PkgConfig::SQLITE3 sqlite3)

# Only for the tests.
velextracta_windows_library(PkgConfig::LIBARCHIVE archive ZLIB::ZLIB)
target_compile_definitions(PkgConfig::LIBARCHIVE INTERFACE LIBARCHIVE_STATIC)
velextracta_windows_library(GTest::gtest gtest)
velextracta_windows_library(GTest::gmock gmock GTest::gtest)
velextracta_windows_library(GTest::gtest_main gtest_main GTest::gtest)
