# The path functions against the free implementation of Cocoa, which is made for GNU's Objective-C++ and its runtime,
# whatever compiles the rest.

find_program(SVO_GOBJCXX NAMES g++ REQUIRED)
set(CMAKE_OBJCXX_COMPILER "${SVO_GOBJCXX}" CACHE FILEPATH "")
enable_language(OBJCXX)

find_program(SVO_GNUSTEP_CONFIG gnustep-config REQUIRED)
execute_process(COMMAND "${SVO_GNUSTEP_CONFIG}" --objc-flags
                OUTPUT_VARIABLE flags OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
execute_process(COMMAND "${SVO_GNUSTEP_CONFIG}" --base-libs
                OUTPUT_VARIABLE libraries OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
separate_arguments(flags UNIX_COMMAND "${flags}")
separate_arguments(libraries UNIX_COMMAND "${libraries}")
# How it is optimised, what it warns of and where its dependencies go is CMake's affair.
list(FILTER flags EXCLUDE REGEX "^-(M|W|O|g$|I)")
list(FILTER libraries INCLUDE REGEX "^-l")
find_path(SVO_GNUSTEP_HEADERS Foundation/Foundation.h PATH_SUFFIXES GNUstep REQUIRED)

add_library(cocoa-paths STATIC CocoaPaths.mm)
target_include_directories(cocoa-paths SYSTEM PRIVATE "${SVO_GNUSTEP_HEADERS}")
target_compile_options(cocoa-paths PRIVATE ${flags})
target_link_libraries(cocoa-paths PUBLIC ${libraries})
svo_configure(cocoa-paths)

svo_test(cocoa-paths-test
  SOURCES CocoaPathsTest.cpp
  LINK cocoa-paths svo::nativeutils svo::platform
  LABELS platform)
