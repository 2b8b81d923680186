# How the packages are made: `./dev package`, or the target `package`. One Debian package a component.

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

# The linked libraries are read from the program. It also starts the sandbox's two programs, and loads TLS and those
# whom to trust while it runs. Icon themes whose images are SVG need somebody to draw them.
set(CPACK_DEBIAN_SIGNIN_PACKAGE_NAME svo-signin)
set(CPACK_DEBIAN_SIGNIN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_SIGNIN_PACKAGE_DEPENDS "bubblewrap, ca-certificates, glib-networking, xdg-dbus-proxy")
set(CPACK_DEBIAN_SIGNIN_PACKAGE_RECOMMENDS librsvg2-common)
set(CPACK_DEBIAN_SIGNIN_PACKAGE_SUGGESTS www-browser)
set(CPACK_DEBIAN_SIGNIN_DESCRIPTION [[
sign-in window for installers and launchers
A small window in which a person signs in to a web service on behalf of an
installer or launcher. It is started with six options and answers through a
named pipe: with the address at which the sign-in ended, or with a number that
says why it did not.
.
The window never reads a page, and keeps nothing once it has closed.]])

# CPack calls ldconfig from scripts of its own making; Debian's way is a trigger. Both do no harm.
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
What installer programs share: folders put aside and back, files written whole
or not at all, Base64, programs started and waited for, questions about the
user, the machine and its volumes, with a log that all of them write into.]])

set(CPACK_DEBIAN_NATIVEUTILS-DEV_PACKAGE_NAME libnativeutils-dev)
set(CPACK_DEBIAN_NATIVEUTILS-DEV_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_NATIVEUTILS-DEV_PACKAGE_MULTIARCH same)
set(CPACK_DEBIAN_NATIVEUTILS-DEV_PACKAGE_DEPENDS "libnativeutils${PROJECT_VERSION_MAJOR} (= ${PROJECT_VERSION})")
# Only the static library wants them.
set(CPACK_DEBIAN_NATIVEUTILS-DEV_PACKAGE_RECOMMENDS "libglib2.0-dev, libsystemd-dev, libxcb1-dev")
set(CPACK_DEBIAN_NATIVEUTILS-DEV_DESCRIPTION [[
files, backups, processes, system queries (development)
Headers, the static library, and what CMake and pkg-config want to know to
build an installer program with libnativeutils.]])

include(CPack)
