# Toolchain of `./dev darwin-check`: LLVM on Debian compiles for macOS. Nothing that it makes can run.
#
# SVO_DARWIN is the folder that tests/macos/darwin-check prepares, SVO_DARWIN_PROCESSOR is arm64 or x86_64.
# - The C library's headers are Darwin's, the C++ library is libc++.
# - The frameworks are those of the tests: GNUstep's headers and tests/macos/sdk.
# - A library is enough for CMake's compiler checks: there is nothing to link a program with.

set(CMAKE_SYSTEM_NAME Darwin)
set(CMAKE_SYSTEM_PROCESSOR "${SVO_DARWIN_PROCESSOR}")
set(CMAKE_TRY_COMPILE_TARGET_TYPE STATIC_LIBRARY)
set(CMAKE_TRY_COMPILE_PLATFORM_VARIABLES SVO_DARWIN SVO_DARWIN_PROCESSOR)

find_program(SVO_CLANG clang++-19 REQUIRED)
find_program(CMAKE_AR llvm-ar-19 REQUIRED)
find_program(CMAKE_RANLIB llvm-ranlib-19 REQUIRED)
find_program(CMAKE_INSTALL_NAME_TOOL llvm-install-name-tool-19 REQUIRED)

set(library -D_LIBCPP_ABI_VERSION=1 -D_LIBCPP_ABI_NAMESPACE=__1 -D_LIBCPP_PSTL_CPU_BACKEND_SERIAL)
# GNUstep has its own NSObject.
set(gnustep -DGNUSTEP -DGNUSTEP_BASE_LIBRARY=1 -DGNU_GUI_LIBRARY=1 -DGNU_RUNTIME=1 -D_NATIVE_OBJC_EXCEPTIONS
            -D_OBJC_NSOBJECT_H_ -DOS_OBJECT_USE_OBJC=0)
set(CXX_options ${library})
set(OBJCXX_options ${library} ${gnustep} -fobjc-runtime=macosx)
set(CXX_headers libcxx/include libcxxabi/include tests sdk libc/include/any-macos-any)
set(OBJCXX_headers libcxx/include libcxxabi/include sdk gnustep libc/include/any-macos-any)

foreach(language IN ITEMS CXX OBJCXX)
  set(CMAKE_${language}_COMPILER "${SVO_CLANG}")
  set(CMAKE_${language}_COMPILER_TARGET "${SVO_DARWIN_PROCESSOR}-apple-macos10.15")
  list(TRANSFORM ${language}_headers PREPEND "-isystem ${SVO_DARWIN}/")
  list(JOIN ${language}_options " " options)
  list(JOIN ${language}_headers " " headers)
  set(CMAKE_${language}_FLAGS_INIT "-nostdinc++ -nostdlibinc ${headers} ${options}")
endforeach()
