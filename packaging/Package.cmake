# The Debian packages, one per component: `./dev package` or the target `package`.

set(SVO_MAINTAINER "Kelvo Sign-in Maintainers <maintainers@example.com>")

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_CONTACT "${SVO_MAINTAINER}")
set(CPACK_PACKAGE_VERSION "${PROJECT_VERSION}")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "")  # the first line of a component's description is its summary
set(CPACK_STRIP_FILES ON)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_COMPONENTS_ALL signin nativeutils nativeutils-dev)

set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_COMPRESSION_TYPE xz)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(CPACK_DEBIAN_PACKAGE_SECTION net)

# The linked libraries are found by dpkg-shlibdeps. At run time the program also starts the two programs of the sandbox and
# loads the TLS module and the trusted certificates. Icon themes with SVG images need librsvg. OpenSC is the module of most
# smart cards.
set(CPACK_DEBIAN_SIGNIN_PACKAGE_NAME svo-signin)
set(CPACK_DEBIAN_SIGNIN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_SIGNIN_PACKAGE_DEPENDS "bubblewrap, ca-certificates, glib-networking, xdg-dbus-proxy")
set(CPACK_DEBIAN_SIGNIN_PACKAGE_RECOMMENDS librsvg2-common)
set(CPACK_DEBIAN_SIGNIN_PACKAGE_SUGGESTS "opensc-pkcs11, www-browser")
set(CPACK_DEBIAN_SIGNIN_DESCRIPTION [[
sign-in window for installers and launchers
A small window in which a user signs in to a web service on behalf of an
installer or launcher. It is started with six options and sends one message
through a named pipe: the address at which the sign-in ended, or an error
number. For launchers in any language, the program svo-signin-ask creates the
pipe, starts the window and prints the address.
.
The window never reads a page, and stores nothing on disk except its log.]])

# Debian runs ldconfig by a trigger. CPack adds scripts that run it too, which is harmless.
set(library_control "${CMAKE_CURRENT_BINARY_DIR}/libnativeutils")
file(WRITE "${library_control}/shlibs"
     "libnativeutils ${PROJECT_VERSION_MAJOR} libnativeutils${PROJECT_VERSION_MAJOR} (>= ${PROJECT_VERSION})\n")
file(WRITE "${library_control}/triggers" "activate-noawait ldconfig\n")
set(CPACK_DEBIAN_NATIVEUTILS_PACKAGE_CONTROL_EXTRA "${library_control}/shlibs" "${library_control}/triggers")
set(CPACK_DEBIAN_NATIVEUTILS_PACKAGE_NAME "libnativeutils${PROJECT_VERSION_MAJOR}")
set(CPACK_DEBIAN_NATIVEUTILS_PACKAGE_SECTION libs)
set(CPACK_DEBIAN_NATIVEUTILS_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_NATIVEUTILS_PACKAGE_MULTIARCH same)
set(CPACK_DEBIAN_NATIVEUTILS_DESCRIPTION [[
files, backups, processes and system queries for installers
Functions for installer programs: backup and restore of folders, atomic file
writing, Base64, starting and waiting for programs, and queries about the
user, the machine and its volumes. All functions write to a common log.]])

set(CPACK_DEBIAN_NATIVEUTILS-DEV_PACKAGE_NAME libnativeutils-dev)
set(CPACK_DEBIAN_NATIVEUTILS-DEV_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_NATIVEUTILS-DEV_PACKAGE_MULTIARCH same)
set(CPACK_DEBIAN_NATIVEUTILS-DEV_PACKAGE_DEPENDS "libnativeutils${PROJECT_VERSION_MAJOR} (= ${PROJECT_VERSION})")
# Only needed for the static library.
set(CPACK_DEBIAN_NATIVEUTILS-DEV_PACKAGE_RECOMMENDS "libglib2.0-dev, libsystemd-dev, libxcb1-dev")
set(CPACK_DEBIAN_NATIVEUTILS-DEV_DESCRIPTION [[
files, backups, processes, system queries (development)
Headers, the static library, and the files with which CMake and pkg-config
find libnativeutils.]])

if(PROJECT_IS_TOP_LEVEL)
  include(CPack)
endif()
