# Debian packages, made in the build directory with
#
#   cpack -G DEB        (or: cmake --build . --target package)
#
# one per install component: libqvmovie0 (the shared library), libqvmovie-dev
# (headers, the link name, CMake and pkg-config files) and qvmovie-tools (the
# tools, their manual pages, the examples and the documentation; with the
# engine of the web pages of qvmovie-render --html when scripts/web.sh has
# built it beside the build). Each
# package's dependencies on system libraries come from dpkg-shlibdeps
# (package dpkg-dev); the dev and tools packages depend on libqvmovie0 of the
# same version.

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME qvmovie)
set(CPACK_PACKAGE_VENDOR "QvMovie")
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGE_CONTACT "QvMovie developers <qvmovie@localhost>")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_PACKAGE_DIRECTORY ${PROJECT_BINARY_DIR}/packages)
set(CPACK_STRIP_FILES OFF)

set(CPACK_COMPONENTS_ALL library dev)
if(TARGET qvmovie-render)
  list(APPEND CPACK_COMPONENTS_ALL tools)
endif()
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
# The tools need the library of this build, which belongs to no installed
# package yet: dpkg-shlibdeps finds it here, and the dependency on it is
# written from the components' dependencies.
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${PROJECT_BINARY_DIR})
set(CPACK_DEBIAN_ENABLE_COMPONENT_DEPENDS ON)

set(CPACK_DEBIAN_LIBRARY_PACKAGE_NAME libqvmovie0)
set(CPACK_DEBIAN_LIBRARY_PACKAGE_SECTION libs)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS_POLICY ">=")
string(CONCAT CPACK_COMPONENT_LIBRARY_DESCRIPTION
  "The shared library. The animation engine of an 8-bit indexed-colour paint\n"
  "program: cast members with frame and colour animations, placed in time on\n"
  "layers and drawn into 8-bit pixel maps.")

set(CPACK_DEBIAN_DEV_PACKAGE_NAME libqvmovie-dev)
set(CPACK_DEBIAN_DEV_PACKAGE_SECTION libdevel)
set(CPACK_COMPONENT_DEV_DEPENDS library)
string(CONCAT CPACK_COMPONENT_DEV_DESCRIPTION
  "Development files: headers, the link name, the CMake package\n"
  "(find_package(QvMovie)) and the pkg-config file (qvmovie).")

set(CPACK_DEBIAN_TOOLS_PACKAGE_NAME qvmovie-tools)
set(CPACK_DEBIAN_TOOLS_PACKAGE_SECTION graphics)
set(CPACK_COMPONENT_TOOLS_DEPENDS library)
string(CONCAT CPACK_COMPONENT_TOOLS_DESCRIPTION
  "Tools and examples: qvmovie-render draws a scene file into an animated\n"
  "GIF or PNG pictures; qvmovie-play plays it in a window. With the example\n"
  "scenes, their pictures and the scene format's description.")

include(CPack)
