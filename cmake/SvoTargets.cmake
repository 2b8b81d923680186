# Functions that create targets with the common settings.

if(SVO_PLATFORM STREQUAL "linux")
  find_package(PkgConfig REQUIRED)
endif()

# svo_configure(TARGET): the include root, C++17, the warnings and the sanitizers.
function(svo_configure target)
  target_compile_features(${target} PUBLIC cxx_std_17)
  set_target_properties(${target} PROPERTIES
    CXX_EXTENSIONS OFF
    OBJCXX_STANDARD 17
    OBJCXX_STANDARD_REQUIRED ON
    OBJCXX_EXTENSIONS OFF)
  target_include_directories(${target} PUBLIC "$<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}>")
  target_compile_options(${target} PRIVATE -Wall -Wextra -Wpedantic -Wconversion $<$<BOOL:${SVO_WERROR}>:-Werror>)
  if(SVO_PLATFORM STREQUAL "macos")
    # The sources use manual reference counting.
    target_compile_options(${target} PRIVATE "$<$<COMPILE_LANGUAGE:OBJCXX>:-fno-objc-arc>")
  endif()
  if(SVO_SANITIZE STREQUAL "address")
    # Without "vptr": libraries use the program's copy of std::shared_ptr's functions, on objects without type information.
    target_compile_options(${target} PUBLIC -fsanitize=address,undefined -fno-sanitize-recover=undefined
                                            -fno-sanitize=vptr -fno-omit-frame-pointer)
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

# svo_library(NAME SOURCES ... [LINK ...] [PRIVATE_LINK ...]): a static library svo-NAME with the alias svo::NAME.
function(svo_library name)
  cmake_parse_arguments(ARG "" "" "SOURCES;LINK;PRIVATE_LINK" ${ARGN})
  add_library(svo-${name} STATIC ${ARG_SOURCES})
  add_library(svo::${name} ALIAS svo-${name})
  set_target_properties(svo-${name} PROPERTIES POSITION_INDEPENDENT_CODE ON)
  target_link_libraries(svo-${name} PUBLIC ${ARG_LINK} PRIVATE ${ARG_PRIVATE_LINK})
  # objcopy cannot make symbols of the type GNU_UNIQUE local, as nativeutils/one-object requires.
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
