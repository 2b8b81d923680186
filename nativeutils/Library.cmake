# The library that installer programs link: this room and all beneath it in one file, shared and static, of which only
# what the public headers declare is meant to be used. Installed as the components `nativeutils` and `nativeutils-dev`.

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
  # Stays loaded: a thread of its own may sleep until a started program ends.
  target_link_options(nativeutils PRIVATE "LINKER:--version-script=${CMAKE_CURRENT_SOURCE_DIR}/exports.map"
                                          LINKER:--as-needed LINKER:--no-undefined LINKER:-z,nodelete)
  set_property(TARGET nativeutils PROPERTY LINK_DEPENDS "${CMAKE_CURRENT_SOURCE_DIR}/exports.map")
else()
  target_link_options(nativeutils PRIVATE
    "LINKER:-exported_symbols_list,${CMAKE_CURRENT_SOURCE_DIR}/exports.macos" LINKER:-dead_strip_dylibs)
  set_property(TARGET nativeutils PROPERTY LINK_DEPENDS "${CMAKE_CURRENT_SOURCE_DIR}/exports.macos")
endif()

# The static library is one object, whose inner names are its own: a program that has a class Logger too keeps it.
set(rooms nativeutils applog logging platform)
list(TRANSFORM rooms REPLACE "(.+)" "$<TARGET_OBJECTS:svo-\\1>" OUTPUT_VARIABLE objects)
if(SVO_PLATFORM STREQUAL "linux")
  set(whole "${CMAKE_CURRENT_BINARY_DIR}/nativeutils.o")
  add_custom_command(
    OUTPUT "${whole}"
    COMMAND "${CMAKE_CURRENT_SOURCE_DIR}/one-object" "${CMAKE_CXX_COMPILER}" "${CMAKE_NM}" "${CMAKE_OBJCOPY}"
            "$<TARGET_FILE:nativeutils>" "${whole}" "${objects}"
    DEPENDS one-object nativeutils "${objects}"
    COMMAND_EXPAND_LISTS VERBATIM)
  set_source_files_properties("${whole}" PROPERTIES EXTERNAL_OBJECT TRUE GENERATED TRUE)
  set(objects "${whole}")
endif()
add_library(nativeutils-static STATIC ${objects})
set_target_properties(nativeutils-static PROPERTIES
  LINKER_LANGUAGE CXX
  OUTPUT_NAME nativeutils
  EXPORT_NAME nativeutils_static)

# Plain names of system libraries: whoever links the shared library needs none of their development files.
set(system_libraries)
if(SVO_PLATFORM_MODULES)
  pkg_check_modules(NATIVEUTILS_SYSTEM REQUIRED ${SVO_PLATFORM_MODULES})
  set(system_libraries ${NATIVEUTILS_SYSTEM_LIBRARIES})
endif()
list(TRANSFORM SVO_PLATFORM_FRAMEWORKS PREPEND "-framework " OUTPUT_VARIABLE frameworks)
target_link_libraries(nativeutils-static INTERFACE ${system_libraries} ${frameworks})

foreach(library IN ITEMS nativeutils nativeutils-static)
  svo_configure(${library})
  target_include_directories(${library} INTERFACE "$<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}>")
  target_compile_features(${library} INTERFACE cxx_std_17)
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

# The prefix is found from where the file lies, so that an installed tree may be moved.
file(RELATIVE_PATH prefix_from_pc "/${CMAKE_INSTALL_LIBDIR}/pkgconfig" "/")
string(REGEX REPLACE "/$" "" prefix_from_pc "${prefix_from_pc}")
list(TRANSFORM system_libraries PREPEND "-l" OUTPUT_VARIABLE private_libraries)
list(JOIN private_libraries " " private_libraries)
if(frameworks)
  list(JOIN frameworks " " private_libraries)
endif()
configure_file(nativeutils.pc.in nativeutils.pc @ONLY)
install(FILES "${CMAKE_CURRENT_BINARY_DIR}/nativeutils.pc" DESTINATION "${CMAKE_INSTALL_LIBDIR}/pkgconfig"
        COMPONENT nativeutils-dev)
