# Says what the package for Debian and its relatives is like; scripts/package makes it.

set(maintainer "Tavrel maintainers <tavrel@users.noreply.github.com>")

# Of the package alone: an installation by hand is no Debian's.
set(debian_files ${CMAKE_CURRENT_BINARY_DIR}/debian)
set(debian_changelog ${CMAKE_CURRENT_BINARY_DIR}/debian.changelog)
set(debian_doc ${debian_files}/share/doc/tavrel)
file(MAKE_DIRECTORY ${debian_doc})
add_custom_command(OUTPUT ${debian_changelog}
  COMMAND sh -c "exec \"$0\" \"$1\" \"$2\" \"$3\" >\"$4\""
    ${CMAKE_CURRENT_SOURCE_DIR}/debian_changelog.py ${changelog} ${PROJECT_VERSION}
    ${maintainer} ${debian_changelog}
  DEPENDS debian_changelog.py ${changelog}
  VERBATIM)
pack(${debian_changelog} ${debian_doc}/changelog.Debian.gz)
add_custom_target(tavrel-debian-files ALL DEPENDS ${debian_doc}/changelog.Debian.gz)

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME tavrel)
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_DEBIAN_PACKAGE_RELEASE 1)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
# So that the files which name their place are told it, and not where the package is made.
set(CPACK_SET_DESTDIR ON)
set(CPACK_INSTALL_PREFIX /usr)
set(CPACK_INSTALLED_DIRECTORIES "${debian_files};/usr")
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
  OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
set(CPACK_STRIP_FILES ON)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)

set(CPACK_DEBIAN_PACKAGE_MAINTAINER "${maintainer}")
set(CPACK_DEBIAN_PACKAGE_HOMEPAGE ${PROJECT_HOMEPAGE_URL})
set(CPACK_DEBIAN_PACKAGE_SECTION utils)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
set(CPACK_DEBIAN_PACKAGE_DESCRIPTION
  "switch displays off and on without losing the last one
Tavrel lists the displays, takes any one of them out of the desktop layout and
brings it back as it was. One button, one menu command and one hot key wake
them all.

It refuses to switch off the last usable display, restores a usable one when
all are lost for another reason, and switches everything on again when it
ends, also when it is killed.")

set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
# The toolkit loads its ways to the window server at run time, so nothing links them.
set(CPACK_DEBIAN_PACKAGE_DEPENDS "qt6-qpa-plugins, qt6-wayland")
set(CPACK_DEBIAN_PACKAGE_RECOMMENDS
  "default-dbus-session-bus | dbus-session-bus, fonts-inter, fonts-quicksand, libglib2.0-bin")
include(CPack)
