# What `cpack -G DEB` in a build folder makes: one Debian package for each component of the installation. What is only
# for Debian's packages is added by KordanixDebian.cmake.
set(CPACK_PACKAGE_NAME kordanix)
set(CPACK_PACKAGE_VENDOR "Kordanix developers")
# As Debian's own tools name who makes a package. An address of nobody stands in.
set(packager "Kordanix developers <kordanix@example.org>")
if(DEFINED ENV{DEBFULLNAME} AND DEFINED ENV{DEBEMAIL})
  set(packager "$ENV{DEBFULLNAME} <$ENV{DEBEMAIL}>")
endif()
set(KORDANIX_PACKAGER "${packager}" CACHE STRING "Name and address of who makes the packages")
set(CPACK_PACKAGE_CONTACT "${KORDANIX_PACKAGER}")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_PACKAGE_DIRECTORY ${PROJECT_BINARY_DIR}/packages)
set(CPACK_STRIP_FILES ON)
set(CPACK_COMPONENTS_ALL overlay library development)
# Also for archives: an installation's manifest names what `cmake --install` did, never a package's files.
set(CPACK_ARCHIVE_COMPONENT_INSTALL ON)

set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_RELEASE 1)
set(package_version ${PROJECT_VERSION}-${CPACK_DEBIAN_PACKAGE_RELEASE})
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${CMAKE_LIBRARY_OUTPUT_DIRECTORY})
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
# What other packages that link the libraries depend on; before 1.0, on the very minor version.
set(shlibs "")
set(abi ${PROJECT_VERSION_MAJOR}.${PROJECT_VERSION_MINOR})
foreach(library KordanixCore kordanix_platform ostra)
  string(APPEND shlibs "lib${library} ${abi} libkordanixcore (>= ${package_version})\n")
endforeach()
file(WRITE ${PROJECT_BINARY_DIR}/debian/shlibs "${shlibs}")
file(WRITE ${PROJECT_BINARY_DIR}/debian/triggers "activate-noawait ldconfig\n")
set(CPACK_PRE_BUILD_SCRIPTS ${PROJECT_SOURCE_DIR}/cmake/KordanixDebian.cmake)

set(about "It measures the frame rate, the processor, the GPU and the memory of a
program and shows them over its picture.")

set(CPACK_DEBIAN_OVERLAY_PACKAGE_NAME kordanix)
set(CPACK_DEBIAN_OVERLAY_PACKAGE_SECTION graphics)
set(CPACK_DEBIAN_OVERLAY_PACKAGE_DEPENDS "libkordanixcore (= ${package_version})")
# Loaded when they are there.
set(CPACK_DEBIAN_OVERLAY_PACKAGE_RECOMMENDS "libx11-6, libxi6, libxrandr2, libxres1")
set(CPACK_DEBIAN_OVERLAY_PACKAGE_SUGGESTS "mesa-utils, vulkan-tools")
set(CPACK_DEBIAN_OVERLAY_DESCRIPTION "performance overlay over OpenGL and Vulkan programs
${about}
.
kordanixctl starts programs with it, changes what it shows while they run,
saves pictures and explains what cannot be measured. Vulkan programs also
have it when they start with KORDANIX=1 in their environment.")

set(CPACK_DEBIAN_LIBRARY_PACKAGE_NAME libkordanixcore)
set(CPACK_DEBIAN_LIBRARY_PACKAGE_SECTION libs)
set(CPACK_DEBIAN_LIBRARY_PACKAGE_CONTROL_EXTRA
  ${PROJECT_BINARY_DIR}/debian/shlibs ${PROJECT_BINARY_DIR}/debian/triggers)
set(CPACK_DEBIAN_LIBRARY_DESCRIPTION "core of a performance overlay (shared libraries)
${about}
.
These are the libraries that the layers of single graphics APIs link.")

set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_NAME libkordanixcore-dev)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_DEPENDS "libkordanixcore (= ${package_version}), libglm-dev")
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SUGGESTS "kordanix")
set(CPACK_DEBIAN_DEVELOPMENT_DESCRIPTION "core of a performance overlay (for writing layers)
${about}
.
Headers, the ready-made widgets as a static library, the smallest layer as
an example, and kordanix-demo, which shows the overlay on simulated devices.")
include(CPack)
