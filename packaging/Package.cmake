# How the packages are made: `./dev package`, or the target `package`. One Debian package a component.

set(SVO_MAINTAINER "Kelvo Sign-in Maintainers <maintainers@example.com>")

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_CONTACT "${SVO_MAINTAINER}")
set(CPACK_STRIP_FILES ON)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ
                                                WORLD_EXECUTE)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_COMPONENTS_ALL signin)

set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_COMPRESSION_TYPE xz)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(CPACK_DEBIAN_PACKAGE_SECTION net)

# The libraries' needs are read from the program. What it loads while it runs stands here: TLS, and whom to trust.
# Without a drawer of SVG images the toolkit's symbols, such as those in a title bar of its own, are missing.
set(CPACK_DEBIAN_SIGNIN_PACKAGE_NAME svo-signin)
set(CPACK_DEBIAN_SIGNIN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_SIGNIN_PACKAGE_DEPENDS "ca-certificates, glib-networking")
set(CPACK_DEBIAN_SIGNIN_PACKAGE_RECOMMENDS "librsvg2-common")
set(CPACK_DEBIAN_SIGNIN_PACKAGE_SUGGESTS "www-browser")
set(CPACK_COMPONENT_SIGNIN_DESCRIPTION
    "sign-in window for installers and launchers\nA small window in which a person signs in to a web service on behalf of an\ninstaller or launcher. It is started with six options and answers through a\nnamed pipe: with the address at which the sign-in ended, or with a number that\nsays why it did not.\n.\nThe window never reads a page, and keeps nothing once it has closed.")

include(CPack)
