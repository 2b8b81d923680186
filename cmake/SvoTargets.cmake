# What every target of the project shares: warnings, include root, sanitizers.

if(SVO_PLATFORM STREQUAL "linux")
  find_package(PkgConfig REQUIRED)
endif()

function(svo_configure target)
  target_include_directories(${target} PUBLIC "$<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}>")
  target_compile_options(${target} PRIVATE -Wall -Wextra -Wpedantic -Wconversion -Werror)
  if(SVO_PLATFORM STREQUAL "macos")
    # Objects are given back by hand, which the interfaces of that time ask for.
    target_compile_options(${target} PRIVATE "$<$<COMPILE_LANGUAGE:OBJCXX>:-fno-objc-arc>")
  endif()
  if(SVO_SANITIZE STREQUAL "address")
    target_compile_options(${target} PUBLIC -fsanitize=address,undefined -fno-sanitize-recover=undefined
                                            -fno-omit-frame-pointer)
    target_link_options(${target} PUBLIC -fsanitize=address,undefined)
  elseif(SVO_SANITIZE STREQUAL "fuzzer")
    target_compile_options(${target} PUBLIC -fsanitize=fuzzer-no-link,address,undefined
                                            -fno-sanitize-recover=undefined -fno-omit-frame-pointer)
    target_link_options(${target} PUBLIC -fsanitize=address,undefined)
  elseif(SVO_SANITIZE STREQUAL "thread")
    target_compile_options(${target} PUBLIC -fsanitize=thread -fno-omit-frame-pointer)
    target_link_options(${target} PUBLIC -fsanitize=thread)
  endif()
endfunction()

# svo_library(NAME SOURCES ... [LINK ...] [PRIVATE_LINK ...]): a static library `svo-NAME`, used as svo::NAME.
function(svo_library name)
  cmake_parse_arguments(ARG "" "" "SOURCES;LINK;PRIVATE_LINK" ${ARGN})
  add_library(svo-${name} STATIC ${ARG_SOURCES})
  add_library(svo::${name} ALIAS svo-${name})
  set_target_properties(svo-${name} PROPERTIES POSITION_INDEPENDENT_CODE ON)
  target_link_libraries(svo-${name} PUBLIC ${ARG_LINK} PRIVATE ${ARG_PRIVATE_LINK})
  # Names that are unique in a whole process could not be kept within the one object that strangers link.
  target_compile_options(svo-${name} PRIVATE $<$<COMPILE_LANG_AND_ID:CXX,GNU>:-fno-gnu-unique>)
  svo_configure(svo-${name})
endfunction()

# svo_program(NAME SOURCES ... [LINK ...]): a program in build/bin.
function(svo_program name)
  cmake_parse_arguments(ARG "" "" "SOURCES;LINK" ${ARGN})
  add_executable(${name} ${ARG_SOURCES})
  target_link_libraries(${name} PRIVATE ${ARG_LINK})
  svo_configure(${name})
endfunction()
