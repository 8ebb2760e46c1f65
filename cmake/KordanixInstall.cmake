# What `cmake --install` puts where. Nothing of it names a folder of the machine that built it or the prefix, so that
# the prefix may be another one at the installation, and the whole may be moved: programs, libraries and manifests
# find each other from where they lie. The components are the packages that packagers make (docs/packaging.md).
#
# overlay: what shows the overlay over programs
#   bin                          kordanixctl
#   lib/kordanix                 the shim and the layers, and the Vulkan manifest for programs that kordanixctl starts
#   share/vulkan                 the Vulkan layer's manifest for everybody else
#   share/doc/kordanix           README.md and what it points to
# library: the libraries that layers link, with those that answer for the platform on the host
#   lib                          under their versioned names
# development: for those who write a layer
#   include/kordanix             the library's and the scene's headers, the include root of both
#   include/kordanix/platform    on the host, the headers of the platform's interfaces
#   lib                          the libraries' names for the linker, the scene
#   lib/cmake/KordanixCore       find_package(KordanixCore): Kordanix::KordanixCore and, on the host, Kordanix::scene
#   lib/pkgconfig                kordanix-core, kordanix-scene
#   bin, share/kordanix          kordanix-demo and its simulated devices
#   share/doc/kordanix/examples  the smallest layer
#
# Where the dynamic linker's $LIB is another folder than lib, there is a link to lib/kordanix (overlay). A build of what
# goes into 32-bit programs installs the libraries, lib/kordanix and a manifest: in the $LIB of those for lib.
#
# On Android the library and its headers alone: a layer there is built by the NDK's or the platform's own rules.
# Takes away what the last `cmake --install` of this build folder, or of each component, has put in place.
add_custom_target(uninstall
  COMMAND ${CMAKE_COMMAND} -DFOLDER=${PROJECT_BINARY_DIR} -P ${PROJECT_SOURCE_DIR}/cmake/KordanixUninstall.cmake
  VERBATIM)

if(KORDANIX_LINKERS_LIB)
  include(KordanixLinkersFolder)
endif()
foreach(module kordanix_opengl kordanix_vulkan KordanixCoreSimulated)
  if(TARGET ${module})
    set_target_properties(${module} PROPERTIES INSTALL_RPATH "$ORIGIN/..")
  endif()
endforeach()
if(KORDANIX_PLATFORM STREQUAL host)
  set_target_properties(KordanixCore kordanix_platform ostra PROPERTIES INSTALL_RPATH "$ORIGIN")
endif()
if(KORDANIX_LAYERS_BESIDE)
  install(TARGETS KordanixCore kordanix_platform ostra
    LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT library NAMELINK_SKIP)
  return()
endif()

set(kordanix_headers_folder ${CMAKE_INSTALL_INCLUDEDIR}/kordanix)
install(DIRECTORY src/core src/gui src/drawers src/utils DESTINATION ${kordanix_headers_folder}
  COMPONENT development FILES_MATCHING PATTERN "*.h")

if(KORDANIX_PLATFORM STREQUAL android)
  install(DIRECTORY platform/android/ DESTINATION ${kordanix_headers_folder}/platform
    COMPONENT development FILES_MATCHING PATTERN "*.h")
  install(TARGETS KordanixCore LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT library)
  return()
endif()

install(DIRECTORY platform/include/ DESTINATION ${kordanix_headers_folder}/platform
  COMPONENT development FILES_MATCHING PATTERN "*.h")
# Folders without a header would be installed empty, and stay when the rest is uninstalled.
install(DIRECTORY layers/figures layers/scene DESTINATION ${kordanix_headers_folder}
  COMPONENT development FILES_MATCHING PATTERN "*.h" PATTERN android EXCLUDE PATTERN host EXCLUDE)

# The libraries. The modules beside them are installed where they are made.
target_include_directories(kordanix_headers INTERFACE $<INSTALL_INTERFACE:${kordanix_headers_folder}>)
target_link_libraries(kordanix_headers INTERFACE $<INSTALL_INTERFACE:glm::glm>)
target_include_directories(kordanix_platform_headers INTERFACE $<INSTALL_INTERFACE:${kordanix_headers_folder}/platform>)
set_target_properties(scene PROPERTIES OUTPUT_NAME kordanix_scene)
install(TARGETS KordanixCore kordanix_platform ostra scene
  kordanix_headers kordanix_platform_headers kordanix_platform_libs
  EXPORT KordanixCore
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT library NAMELINK_COMPONENT development
  ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT development)

# The programs.
file(RELATIVE_PATH bin_to_lib ${CMAKE_INSTALL_FULL_BINDIR} ${CMAKE_INSTALL_FULL_LIBDIR})
install(TARGETS kordanixctl RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT overlay)
if(TARGET kordanix-serve)
  install(TARGETS kordanix-serve RUNTIME DESTINATION ${CMAKE_INSTALL_LIBEXECDIR}/kordanix COMPONENT overlay)
  file(RELATIVE_PATH serve_to_lib ${CMAKE_INSTALL_FULL_LIBEXECDIR}/kordanix ${CMAKE_INSTALL_FULL_LIBDIR})
  set_target_properties(kordanix-serve PROPERTIES INSTALL_RPATH "$ORIGIN/${serve_to_lib}")
endif()
if(TARGET kordanix-demo)
  install(TARGETS kordanix-demo RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT development)
  # Nobody else links it.
  install(TARGETS KordanixCoreSimulated
    LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}/${KORDANIX_MODULES_FOLDER} COMPONENT development)
  install(DIRECTORY platform/devices/ DESTINATION ${CMAKE_INSTALL_DATADIR}/kordanix/devices
    COMPONENT development PATTERN README.md EXCLUDE)
endif()

set_target_properties(kordanixctl PROPERTIES INSTALL_RPATH "$ORIGIN/${bin_to_lib}")
if(TARGET kordanix-demo)
  set_target_properties(kordanix-demo PROPERTIES
    INSTALL_RPATH "$ORIGIN/${bin_to_lib}/${KORDANIX_MODULES_FOLDER};$ORIGIN/${bin_to_lib}")
endif()

# What other builds find them by.
include(CMakePackageConfigHelpers)
set(package_folder ${CMAKE_INSTALL_LIBDIR}/cmake/KordanixCore)
install(EXPORT KordanixCore NAMESPACE Kordanix:: FILE KordanixCoreTargets.cmake DESTINATION ${package_folder}
  COMPONENT development)
configure_package_config_file(cmake/KordanixCoreConfig.cmake.in KordanixCoreConfig.cmake
  INSTALL_DESTINATION ${package_folder} NO_SET_AND_CHECK_MACRO)
write_basic_package_version_file(KordanixCoreConfigVersion.cmake COMPATIBILITY SameMinorVersion)
install(FILES ${PROJECT_BINARY_DIR}/KordanixCoreConfig.cmake ${PROJECT_BINARY_DIR}/KordanixCoreConfigVersion.cmake
  DESTINATION ${package_folder} COMPONENT development)

file(RELATIVE_PATH pkgconfig_to_prefix ${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig ${CMAKE_INSTALL_PREFIX})
# From the prefix, also where they are given as absolute paths.
file(RELATIVE_PATH prefix_to_lib ${CMAKE_INSTALL_PREFIX} ${CMAKE_INSTALL_FULL_LIBDIR})
file(RELATIVE_PATH prefix_to_include ${CMAKE_INSTALL_PREFIX} ${CMAKE_INSTALL_FULL_INCLUDEDIR})
list(TRANSFORM CMAKE_DL_LIBS PREPEND -l OUTPUT_VARIABLE scene_libraries)
foreach(name kordanix-core kordanix-scene)
  configure_file(cmake/${name}.pc.in ${name}.pc @ONLY)
  install(FILES ${PROJECT_BINARY_DIR}/${name}.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig COMPONENT development)
endforeach()

# What to read: README.md, and what it and docs/ point to.
install(FILES README.md CHANGELOG.md CONTRIBUTING.md DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT overlay)
foreach(layer gles opengl vulkan)
  install(FILES layers/${layer}/README.md DESTINATION ${CMAKE_INSTALL_DOCDIR}/layers/${layer} COMPONENT overlay)
endforeach()
install(DIRECTORY docs DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT overlay)
install(DIRECTORY examples DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT development)
