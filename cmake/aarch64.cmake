# Toolchain for 64-bit ARM on a Debian machine of another kind:
#
#   cmake --preset default -B build/aarch64 --toolchain cmake/aarch64.cmake
#
# - Needs g++-aarch64-linux-gnu, qemu-user-binfmt, and the libraries of the architecture arm64, for the tests libnss-wrapper
#   of both architectures. The kernel starts qemu for every ARM program: those that run during the build, the tests, and
#   what the tests start.
# - On Debian 12 libwebkit2gtk-4.1-dev:arm64 depends on gobject-introspection:arm64, which cannot be installed beside the
#   machine's own Python. The build does not use it: an empty package of that name, made with equivs, is enough.
# - qemu does not report that posix_spawn() failed: tests of programs that cannot be started fail under it.

set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR aarch64)
set(CMAKE_CXX_COMPILER aarch64-linux-gnu-g++)
set(ENV{PKG_CONFIG_LIBDIR} /usr/lib/aarch64-linux-gnu/pkgconfig:/usr/share/pkgconfig)
