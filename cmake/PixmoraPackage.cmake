# Debian packages, one per install component: libpixmora1 (the library and the
# desktop stand-ins of the platform libraries), libpixmora-dev (headers,
# pkg-config file, CMake package) and pixmora-tools (the command-line tool).
# Build them with `cpack -G DEB` in a build directory, or scripts/package.sh.
set(CPACK_PACKAGE_NAME pixmora)
set(CPACK_PACKAGE_VENDOR "Pixmora developers")
set(CPACK_PACKAGE_CONTACT "Pixmora developers <pixmora@localhost>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "GPU image filters for photographs and video frames")
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)

set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_COMPONENTS_ALL runtime development tools)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION libs)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
set(CPACK_DEBIAN_PACKAGE_RELEASE 1)
# Runtime dependencies come from the binaries' own needs; the private
# directory holds the stand-ins libpixmora links to.
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS
  ${CMAKE_BINARY_DIR}/platform ${CMAKE_BINARY_DIR})
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)

set(PIXMORA_DEB_EXACT "(= ${PROJECT_VERSION}-${CPACK_DEBIAN_PACKAGE_RELEASE})")

set(CPACK_DEBIAN_RUNTIME_PACKAGE_NAME libpixmora1)
set(CPACK_COMPONENT_RUNTIME_DESCRIPTION
  "GPU image filters for photographs and video frames (shared library)\n\
Ten photo effects and a still and video background blur, drawn with OpenGL ES 3\n\
through EGL. Includes desktop stand-ins of the device's platform libraries.")
# Mesa's drivers give EGL a renderer on a machine without a GPU driver of its own.
set(CPACK_DEBIAN_RUNTIME_PACKAGE_DEPENDS "libegl-mesa0 | libegl-vendor, libgl1-mesa-dri")

set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_NAME libpixmora-dev)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SECTION libdevel)
set(CPACK_COMPONENT_DEVELOPMENT_DESCRIPTION
  "GPU image filters for photographs and video frames (development files)\n\
C API and C++ layer headers, pkg-config file and CMake package.")
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_DEPENDS
  "libpixmora1 ${PIXMORA_DEB_EXACT}, libegl-dev, libgles-dev, libglm-dev, pkg-config")
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SHLIBDEPS OFF)

set(CPACK_DEBIAN_TOOLS_PACKAGE_NAME pixmora-tools)
set(CPACK_DEBIAN_TOOLS_PACKAGE_SECTION graphics)
set(CPACK_COMPONENT_TOOLS_DESCRIPTION
  "GPU image filters for photographs and video frames (command-line tool)\n\
The pixmora program: photo effects, blur, colour look-up and galleries on image files.")
set(CPACK_DEBIAN_TOOLS_PACKAGE_DEPENDS "libpixmora1 ${PIXMORA_DEB_EXACT}")

include(CPack)
