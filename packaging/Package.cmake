# How the packages are made: `./dev package`, or the target `package`. One Debian package a component.

set(SVO_MAINTAINER "Kelvo Sign-in Maintainers <maintainers@example.com>")

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_CONTACT "${SVO_MAINTAINER}")
set(CPACK_PACKAGE_VERSION "${PROJECT_VERSION}")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "")  # the first line of a component's description is its summary
set(CPACK_STRIP_FILES ON)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_COMPONENTS_ALL signin)

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

include(CPack)
