# Toolchain for 64-bit ARM on a Debian machine of another kind:
#
#   cmake --preset default -B build/aarch64 --toolchain cmake/aarch64.cmake
#
# - Needs g++-aarch64-linux-gnu, qemu-user-binfmt, and the libraries of the architecture arm64.
# - The kernel starts qemu for every ARM program: those that run during the build, the tests, and what the tests start.

set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR aarch64)
set(CMAKE_CXX_COMPILER aarch64-linux-gnu-g++)
set(ENV{PKG_CONFIG_LIBDIR} /usr/lib/aarch64-linux-gnu/pkgconfig:/usr/share/pkgconfig)
