set(CPACK_RPM_COMPONENT_INSTALL ON)
set(CPACK_RPM_PACKAGE_RELEASE 1)
set(CPACK_RPM_PACKAGE_GROUP Applications/Engineering)
# The owner has not chosen the program's licence yet. The other licences are those of what is linked
# in.
set(CPACK_RPM_PACKAGE_LICENSE "LicenseRef-VelExtracta AND BSL-1.0 AND MIT AND Zlib AND \
LGPL-2.1-or-later AND GPL-3.0-or-later WITH GCC-exception-3.1")
# The rpm of the oldest systems can read it, too.
set(CPACK_RPM_COMPRESSION_TYPE xz)
# The packages need nothing. Otherwise rpm would require python3, from the first line of
# velextracta-draw-run.
set(CPACK_RPM_PACKAGE_AUTOREQPROV " no")
# Files stay as they were built. The package's build time and host are the same for every build.
set(CPACK_RPM_SPEC_MORE_DEFINE "%define _build_id_links none
%define __os_install_post %{nil}
%define _buildhost velextracta
%define packager ${CPACK_PACKAGE_CONTACT}
%define use_source_date_epoch_as_buildtime 1
%define clamp_mtime_to_source_date_epoch 1")
foreach(component program standin)
    string(TOUPPER ${component} key)
    string(REPLACE "\n.\n" "\n\n" description "${${component}_description}")
    set(CPACK_RPM_${key}_PACKAGE_NAME ${${component}_package})
    set(CPACK_RPM_${key}_FILE_NAME RPM-DEFAULT)
    # In this format a summary begins with a capital letter.
    string(SUBSTRING "${${component}_summary}" 0 1 initial)
    string(SUBSTRING "${${component}_summary}" 1 -1 rest)
    string(TOUPPER ${initial} initial)
    set(CPACK_RPM_${key}_PACKAGE_SUMMARY "${initial}${rest}")
    set(CPACK_RPM_${key}_PACKAGE_DESCRIPTION ${description})
endforeach()
# These folders belong to the system, not to the packages.
set(share /usr/share)
set(CPACK_RPM_EXCLUDE_FROM_AUTO_FILELIST_ADDITION
    ${share}/bash-completion ${share}/bash-completion/completions ${share}/man ${share}/man/man1)
