# Finds the libraries of this system.

if(VELEXTRACTA_STATIC)
    set(CMAKE_FIND_LIBRARY_SUFFIXES .a)
    set(Boost_USE_STATIC_LIBS ON)
    # Position-independent: at an address that differs from run to run, as with a loader.
    set(CMAKE_POSITION_INDEPENDENT_CODE ON)
    add_link_options(-static-pie)
endif()

find_package(Boost 1.81 REQUIRED CONFIG COMPONENTS filesystem date_time thread)
find_package(ZLIB REQUIRED)
find_package(PkgConfig REQUIRED)
pkg_check_modules(LIBDEFLATE REQUIRED IMPORTED_TARGET libdeflate)
# Debian's shared library deflates a sixth slower than its static one, because its innermost loop
# keeps its position in memory, not in a register.
find_library(VELEXTRACTA_STATIC_LIBDEFLATE libdeflate.a HINTS ${LIBDEFLATE_LIBRARY_DIRS})
if(VELEXTRACTA_STATIC_LIBDEFLATE)
    set_property(TARGET PkgConfig::LIBDEFLATE
        PROPERTY INTERFACE_LINK_LIBRARIES ${VELEXTRACTA_STATIC_LIBDEFLATE})
endif()

if(VELEXTRACTA_STATIC)
    # The system's library loads extensions, which a static program cannot do.
    set(portable_libraries ${CMAKE_SOURCE_DIR}/build/portable-libraries CACHE PATH
        "Where scripts/build-portable-libraries has put SQLite")
    if(NOT EXISTS ${portable_libraries}/lib/libsqlite3.a)
        message(FATAL_ERROR "No SQLite without extensions in ${portable_libraries}: "
            "run scripts/build-portable-libraries first")
    endif()
    add_library(PkgConfig::SQLITE3 STATIC IMPORTED)
    set_target_properties(PkgConfig::SQLITE3 PROPERTIES
        IMPORTED_LOCATION ${portable_libraries}/lib/libsqlite3.a
        INTERFACE_INCLUDE_DIRECTORIES ${portable_libraries}/include)
    target_link_libraries(PkgConfig::SQLITE3 INTERFACE Threads::Threads m)
else()
    pkg_check_modules(SQLITE3 REQUIRED IMPORTED_TARGET sqlite3)
endif()

if(VELEXTRACTA_TESTS)
    find_package(GTest REQUIRED)
    pkg_check_modules(LIBARCHIVE REQUIRED IMPORTED_TARGET libarchive)
endif()
