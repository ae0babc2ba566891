# `cpack` in a build folder makes one Debian package of each component, and an RPM too where rpmbuild is there.
set(CPACK_GENERATOR DEB)
find_program(RPMBUILD_PROGRAM rpmbuild)
if(RPMBUILD_PROGRAM)
  list(APPEND CPACK_GENERATOR RPM)
endif()
set(CPACK_PACKAGE_NAME tallyroom)
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "") # each has its own
set(CPACK_PACKAGE_VENDOR "The Tallyroom developers")
set(CPACK_PACKAGE_DIRECTORY ${PROJECT_BINARY_DIR}/packages)
set(CPACK_STRIP_FILES ON)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
  OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
set(CPACK_COMPONENTS_ALL cli)
if(TALLYROOM_APP)
  list(APPEND CPACK_COMPONENTS_ALL application)
endif()

set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(CPACK_DEBIAN_PACKAGE_MAINTAINER "The Tallyroom developers <developers@tallyroom.org>")
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SOURCE tallyroom)

set(CPACK_DEBIAN_CLI_PACKAGE_NAME tallyroom-cli)
set(CPACK_DEBIAN_CLI_PACKAGE_SECTION utils)
set(CPACK_DEBIAN_CLI_DESCRIPTION
"show on a terminal what fills your disks
Lists a folder by the space it takes, the largest files of a tree, files of
the same content, kinds of files, and folders that development tools can make
again, as a table, as CSV or as JSON. It only reads.

The program speaks French.")

set(CPACK_DEBIAN_APPLICATION_PACKAGE_NAME tallyroom)
set(CPACK_DEBIAN_APPLICATION_PACKAGE_SECTION utils)
# The toolkit's own words in French; a window on Wayland; dialogs like the desktop's.
set(CPACK_DEBIAN_APPLICATION_PACKAGE_DEPENDS "qt6-translations-l10n")
set(CPACK_DEBIAN_APPLICATION_PACKAGE_RECOMMENDS "qt6-wayland, qt6-gtk-platformtheme, xdg-utils")
set(CPACK_DEBIAN_APPLICATION_PACKAGE_SUGGESTS "tallyroom-cli")
set(CPACK_DEBIAN_APPLICATION_DESCRIPTION
"see what fills your disks and reclaim the space
Measures a folder level by level, as a table or as a map of tiles, and finds
the largest files, node_modules folders, build caches and heavy Git
histories. What is selected goes to the trash, and can be put back, or is
deleted for good after a confirmation.

The window speaks French.")

# The same for systems with RPM. What a program links to, rpmbuild finds out by itself; the folders below are the
# system's own.
set(CPACK_PRE_BUILD_SCRIPTS ${CMAKE_CURRENT_SOURCE_DIR}/places.cmake)
set(CPACK_RPM_COMPONENT_INSTALL ON)
set(CPACK_RPM_FILE_NAME RPM-DEFAULT)
set(CPACK_RPM_PACKAGE_LICENSE "MIT")
set(CPACK_RPM_PACKAGE_GROUP Applications/File)
# Programs are stripped and manuals compressed by now.
set(CPACK_RPM_SPEC_MORE_DEFINE "%define _build_id_links none\n%define __os_install_post %{nil}")
set(CPACK_PACKAGE_RELOCATABLE OFF)
foreach(folder IN ITEMS "" /bin /share /share/doc /share/applications /share/metainfo /share/man /share/man/man1 /share/zsh
    /share/zsh/site-functions /share/fish /share/fish/vendor_completions.d /share/bash-completion
    /share/bash-completion/completions /share/icons /share/icons/hicolor)
  list(APPEND CPACK_RPM_EXCLUDE_FROM_AUTO_FILELIST_ADDITION /usr${folder})
endforeach()
foreach(size IN ITEMS 16x16 22x22 24x24 32x32 48x48 64x64 128x128 256x256 512x512 scalable)
  list(APPEND CPACK_RPM_EXCLUDE_FROM_AUTO_FILELIST_ADDITION
    /usr/share/icons/hicolor/${size} /usr/share/icons/hicolor/${size}/apps)
endforeach()
foreach(component IN ITEMS CLI APPLICATION)
  set(CPACK_RPM_${component}_PACKAGE_NAME ${CPACK_DEBIAN_${component}_PACKAGE_NAME})
  set(description "${CPACK_DEBIAN_${component}_DESCRIPTION}")
  string(FIND "${description}" "\n" end)
  string(SUBSTRING "${description}" 0 ${end} CPACK_RPM_${component}_PACKAGE_SUMMARY)
  math(EXPR end "${end} + 1")
  string(SUBSTRING "${description}" ${end} -1 CPACK_RPM_${component}_PACKAGE_DESCRIPTION)
endforeach()

# What no package is to be made with, though a plain installation may be.
file(STRINGS changelog newest LIMIT_COUNT 1)
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS changelog)
set(obstacle "")
if(NOT newest MATCHES "^tallyroom \\(${PROJECT_VERSION}\\) ")
  set(obstacle "packaging/changelog does not begin with version ${PROJECT_VERSION}")
elseif(NOT CMAKE_BUILD_TYPE STREQUAL "Release")
  set(obstacle "packages are made of a release")
elseif(TALLYROOM_APP AND NOT RSVG_CONVERT_PROGRAM)
  set(obstacle "rsvg-convert (librsvg2-bin) must draw the icons")
endif()
set(CPACK_PROJECT_CONFIG_FILE ${CMAKE_CURRENT_BINARY_DIR}/obstacle.cmake)
file(WRITE ${CPACK_PROJECT_CONFIG_FILE} "")
if(obstacle)
  file(WRITE ${CPACK_PROJECT_CONFIG_FILE} "message(FATAL_ERROR \"${obstacle}\")\n")
endif()

include(CPack)
