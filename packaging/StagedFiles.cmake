# Prepares the files before CPack puts them into packages.

set(staged ${CPACK_TEMPORARY_INSTALL_DIRECTORY})
if(CPACK_GENERATOR STREQUAL RPM)
    file(GLOB of_debian ${staged}/*/usr/share/lintian ${staged}/*/usr/share/doc/*/changelog.Debian.gz)
    file(REMOVE_RECURSE ${of_debian})
endif()
# Folders have the mode that the packager's umask gives. In the package all users may enter them.
file(CHMOD_RECURSE ${staged} DIRECTORY_PERMISSIONS
    OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
# The time of a build would make each package differ.
if(DEFINED ENV{SOURCE_DATE_EPOCH})
    execute_process(COMMAND find ${staged} -exec touch -hd @$ENV{SOURCE_DATE_EPOCH} {} +
        COMMAND_ERROR_IS_FATAL ANY)
endif()
