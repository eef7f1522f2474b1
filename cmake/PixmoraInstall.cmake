# Install rules: the shared library, its public headers, a pkg-config file and
# a relocatable CMake package, the tool, and the desktop stand-ins of the
# platform libraries in a private directory beside the library.
include(CMakePackageConfigHelpers)

set(PIXMORA_CMAKE_DIR ${CMAKE_INSTALL_LIBDIR}/cmake/Pixmora)

install(TARGETS pixmora EXPORT PixmoraTargets
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
    COMPONENT runtime NAMELINK_COMPONENT development
  INCLUDES DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})

install(DIRECTORY ${CMAKE_CURRENT_SOURCE_DIR}/include/pixmora
  DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} COMPONENT development
  FILES_MATCHING PATTERN "*.h")

# Found only through libpixmora's RUNPATH ($ORIGIN/pixmora), so they never
# shadow a system's own dlog, tbm or apputil; no development links.
if(NOT PIXMORA_DEVICE_PLATFORM)
  install(TARGETS dlog tbm apputil
    LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}/pixmora
      COMPONENT runtime NAMELINK_SKIP)
endif()

if(TARGET pixmora_cli)
  set_target_properties(pixmora_cli PROPERTIES
    INSTALL_RPATH "$ORIGIN/../${CMAKE_INSTALL_LIBDIR}")
  install(TARGETS pixmora_cli RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT tools)
endif()

# pkg-config: the prefix is found from the file's own place, so the same
# file serves any install prefix and the Debian package.
file(RELATIVE_PATH PIXMORA_PC_PREFIX_FROM_PCDIR
  ${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig ${CMAKE_INSTALL_PREFIX})
string(REGEX REPLACE "/$" "" PIXMORA_PC_PREFIX_FROM_PCDIR "${PIXMORA_PC_PREFIX_FROM_PCDIR}")
configure_file(${CMAKE_CURRENT_LIST_DIR}/pixmora.pc.in
  ${CMAKE_CURRENT_BINARY_DIR}/pixmora.pc @ONLY)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/pixmora.pc
  DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig COMPONENT development)

install(EXPORT PixmoraTargets NAMESPACE Pixmora::
  DESTINATION ${PIXMORA_CMAKE_DIR} COMPONENT development)
configure_package_config_file(${CMAKE_CURRENT_LIST_DIR}/PixmoraConfig.cmake.in
  ${CMAKE_CURRENT_BINARY_DIR}/PixmoraConfig.cmake
  INSTALL_DESTINATION ${PIXMORA_CMAKE_DIR})
write_basic_package_version_file(${CMAKE_CURRENT_BINARY_DIR}/PixmoraConfigVersion.cmake
  VERSION ${PROJECT_VERSION} COMPATIBILITY SameMajorVersion)
install(FILES
  ${CMAKE_CURRENT_BINARY_DIR}/PixmoraConfig.cmake
  ${CMAKE_CURRENT_BINARY_DIR}/PixmoraConfigVersion.cmake
  DESTINATION ${PIXMORA_CMAKE_DIR} COMPONENT development)
