# The shared and the static library for installer programs. Each contains this module and the modules below it, and exports
# only what the public headers declare. Installed as the components `nativeutils` and `nativeutils-dev`.

include(GNUInstallDirs)
include(CMakePackageConfigHelpers)

set(public_headers Backup.h Base64.h Files.h Log.h NativeUtils.h Processes.h Strings.h System.h UserFolder.h)

add_library(nativeutils SHARED $<TARGET_OBJECTS:svo-nativeutils>)
target_link_libraries(nativeutils PRIVATE svo::applog svo::platform)
set_target_properties(nativeutils PROPERTIES
  LINKER_LANGUAGE CXX
  VERSION ${PROJECT_VERSION}
  SOVERSION ${PROJECT_VERSION_MAJOR})
if(SVO_PLATFORM STREQUAL "linux")
  # nodelete: a thread of the library may still wait for the end of a started program.
  target_link_options(nativeutils PRIVATE "LINKER:--version-script=${CMAKE_CURRENT_SOURCE_DIR}/exports.map"
                                          LINKER:--as-needed LINKER:--no-undefined LINKER:-z,nodelete)
  set_property(TARGET nativeutils PROPERTY LINK_DEPENDS "${CMAKE_CURRENT_SOURCE_DIR}/exports.map")
else()
  target_link_options(nativeutils PRIVATE
    "LINKER:-exported_symbols_list,${CMAKE_CURRENT_SOURCE_DIR}/exports.macos" LINKER:-dead_strip_dylibs)
  set_property(TARGET nativeutils PROPERTY LINK_DEPENDS "${CMAKE_CURRENT_SOURCE_DIR}/exports.macos")
endif()

# The static library is a single object with local symbols, so that a program may have a class Logger too.
set(modules nativeutils applog logging platform)
list(TRANSFORM modules REPLACE "(.+)" "$<TARGET_OBJECTS:svo-\\1>" OUTPUT_VARIABLE objects)
if(SVO_PLATFORM STREQUAL "linux")
  set(object "${CMAKE_CURRENT_BINARY_DIR}/nativeutils.o")
  if(CMAKE_INTERPROCEDURAL_OPTIMIZATION AND CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
    # Machine code instead of GCC's intermediate code, which other compilers cannot link.
    set(output -flinker-output=nolto-rel)
  endif()
  add_custom_command(
    OUTPUT "${object}"
    COMMAND "${CMAKE_CURRENT_SOURCE_DIR}/one-object" "${CMAKE_CXX_COMPILER}" "${CMAKE_NM}" "${CMAKE_OBJCOPY}"
            "$<TARGET_FILE:nativeutils>" "${object}" ${output} "${objects}"
    DEPENDS one-object nativeutils "${objects}"
    COMMAND_EXPAND_LISTS VERBATIM)
  set_source_files_properties("${object}" PROPERTIES EXTERNAL_OBJECT TRUE GENERATED TRUE)
  set(objects "${object}")
endif()
add_library(nativeutils-static STATIC ${objects})
set_target_properties(nativeutils-static PROPERTIES
  LINKER_LANGUAGE CXX
  OUTPUT_NAME nativeutils
  EXPORT_NAME nativeutils_static)

# Linker options instead of targets: programs that link the shared library do not need the development files.
get_target_property(system_libraries svo-platform SVO_SYSTEM_LIBRARIES)
target_link_libraries(nativeutils-static INTERFACE ${system_libraries})

# The names of the installed package, for projects that add this one with add_subdirectory.
add_library(nativeutils::nativeutils ALIAS nativeutils)
add_library(nativeutils::nativeutils_static ALIAS nativeutils-static)

foreach(library IN ITEMS nativeutils nativeutils-static)
  svo_configure(${library})
  target_include_directories(${library} INTERFACE "$<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}>")
endforeach()

install(TARGETS nativeutils nativeutils-static EXPORT nativeutils
  LIBRARY DESTINATION "${CMAKE_INSTALL_LIBDIR}" COMPONENT nativeutils NAMELINK_COMPONENT nativeutils-dev
  ARCHIVE DESTINATION "${CMAKE_INSTALL_LIBDIR}" COMPONENT nativeutils-dev)
install(FILES ${public_headers} DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}/nativeutils" COMPONENT nativeutils-dev)

set(package_folder "${CMAKE_INSTALL_LIBDIR}/cmake/nativeutils")
install(EXPORT nativeutils NAMESPACE nativeutils:: FILE nativeutils-config.cmake DESTINATION "${package_folder}"
        COMPONENT nativeutils-dev)
write_basic_package_version_file(nativeutils-config-version.cmake COMPATIBILITY SameMajorVersion)
install(FILES "${CMAKE_CURRENT_BINARY_DIR}/nativeutils-config-version.cmake" DESTINATION "${package_folder}"
        COMPONENT nativeutils-dev)

# The prefix is relative to the folder of the file, so that an installed tree may be moved.
file(RELATIVE_PATH prefix_from_pc "/${CMAKE_INSTALL_LIBDIR}/pkgconfig" "/")
string(REGEX REPLACE "/$" "" prefix_from_pc "${prefix_from_pc}")
list(JOIN system_libraries " " private_libraries)
configure_file(nativeutils.pc.in nativeutils.pc @ONLY)
install(FILES "${CMAKE_CURRENT_BINARY_DIR}/nativeutils.pc" DESTINATION "${CMAKE_INSTALL_LIBDIR}/pkgconfig"
        COMPONENT nativeutils-dev)
