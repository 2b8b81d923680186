# svo::gnustep-base and svo::gnustep-gui: a free implementation of Foundation and AppKit, for the tests of the
# Objective-C++ sources. Their headers are system headers.

if(NOT CMAKE_OBJCXX_COMPILER)
  set(CMAKE_OBJCXX_COMPILER "${CMAKE_CXX_COMPILER}")
endif()
enable_language(OBJCXX)

find_program(SVO_GNUSTEP_CONFIG gnustep-config REQUIRED)
find_path(SVO_GNUSTEP_HEADERS Foundation/Foundation.h PATH_SUFFIXES GNUstep REQUIRED)

function(svo_gnustep_library name)
  execute_process(COMMAND "${SVO_GNUSTEP_CONFIG}" --objc-flags OUTPUT_VARIABLE compile COMMAND_ERROR_IS_FATAL ANY)
  execute_process(COMMAND "${SVO_GNUSTEP_CONFIG}" --${name}-libs OUTPUT_VARIABLE link COMMAND_ERROR_IS_FATAL ANY)
  separate_arguments(compile UNIX_COMMAND "${compile}")
  separate_arguments(link UNIX_COMMAND "${link}")

  # Drop the options for warnings, optimization and dependency files.
  list(FILTER compile INCLUDE REGEX "^-(D|f|pthread)")
  list(FILTER compile EXCLUDE REGEX "^-fPIC$")
  list(FILTER link INCLUDE REGEX "^-l")

  # clang++ must be told the runtime and the folder of its headers.
  execute_process(COMMAND gcc -print-file-name=include OUTPUT_VARIABLE runtime OUTPUT_STRIP_TRAILING_WHITESPACE)
  set(clang -fobjc-runtime=gcc "SHELL:-idirafter ${runtime}")

  add_library(svo-gnustep-${name} INTERFACE)
  add_library(svo::gnustep-${name} ALIAS svo-gnustep-${name})
  target_include_directories(svo-gnustep-${name} SYSTEM INTERFACE "${SVO_GNUSTEP_HEADERS}")
  target_compile_options(svo-gnustep-${name} INTERFACE
    "$<$<COMPILE_LANGUAGE:OBJCXX>:${compile}>" "$<$<COMPILE_LANG_AND_ID:OBJCXX,Clang>:${clang}>")
  target_link_libraries(svo-gnustep-${name} INTERFACE ${link})
endfunction()

svo_gnustep_library(base)
svo_gnustep_library(gui)
