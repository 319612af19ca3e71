# SQLite for static programs, from the source in SOURCES.

add_library(sqlite3 STATIC ${SOURCES}/sqlite3/sqlite3.c)
# Extensions are libraries that a program loads while it runs.
target_compile_definitions(sqlite3 PRIVATE SQLITE_OMIT_LOAD_EXTENSION)
install(TARGETS sqlite3 ARCHIVE DESTINATION lib)
install(FILES ${SOURCES}/sqlite3/sqlite3.h DESTINATION include)
