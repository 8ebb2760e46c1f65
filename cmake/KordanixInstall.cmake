# What `cmake --install` puts where. Nothing of it names a folder of the machine that built it, so that the
# whole may be moved: programs and libraries find each other from where they lie.
#
#   include/kordanix             the library's and the scene's headers, the include root of both
#   include/kordanix/platform    on the host, the headers of the platform's interfaces
#   lib                          the libraries, with those that answer for the platform on the host
#   lib/cmake/KordanixCore       find_package(KordanixCore): Kordanix::KordanixCore and, on the host, Kordanix::scene
#   lib/pkgconfig                kordanix-core
#   share/vulkan                 the Vulkan layer's manifest; lib/kordanix has the one for programs that kordanixctl starts
#   bin, share/kordanix          kordanixctl, which finds the layers in lib; kordanix-demo and its simulated devices
#
# On Android the library and its headers alone: a layer there is built by the NDK's or the platform's own rules.
set(kordanix_headers_folder ${CMAKE_INSTALL_INCLUDEDIR}/kordanix)
install(DIRECTORY src/core src/gui src/drawers src/utils DESTINATION ${kordanix_headers_folder}
  FILES_MATCHING PATTERN "*.h")

if(KORDANIX_PLATFORM STREQUAL android)
  install(DIRECTORY platform/android/ DESTINATION ${kordanix_headers_folder}/platform FILES_MATCHING PATTERN "*.h")
  install(TARGETS KordanixCore LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR})
  return()
endif()

install(DIRECTORY platform/include/ DESTINATION ${kordanix_headers_folder}/platform FILES_MATCHING PATTERN "*.h")
install(DIRECTORY layers/figures layers/scene DESTINATION ${kordanix_headers_folder} FILES_MATCHING PATTERN "*.h")

# The libraries. The OpenGL layer's shim looks for the layer beside itself and needs no other.
target_include_directories(kordanix_headers INTERFACE $<INSTALL_INTERFACE:${kordanix_headers_folder}>)
target_link_libraries(kordanix_headers INTERFACE $<INSTALL_INTERFACE:glm::glm>)
target_include_directories(kordanix_platform_headers INTERFACE $<INSTALL_INTERFACE:${kordanix_headers_folder}/platform>)
set_target_properties(scene PROPERTIES OUTPUT_NAME kordanix_scene)
install(TARGETS KordanixCore kordanix_platform ostra scene
  kordanix_headers kordanix_platform_headers kordanix_platform_libs
  EXPORT KordanixCore
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
  ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR})
set(kordanix_libraries KordanixCore kordanix_platform ostra)
if(TARGET kordanix_opengl)
  install(TARGETS kordanix_opengl kordanix_preload LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR})
  list(APPEND kordanix_libraries kordanix_opengl)
endif()

# The programs.
file(RELATIVE_PATH bin_to_lib ${CMAKE_INSTALL_FULL_BINDIR} ${CMAKE_INSTALL_FULL_LIBDIR})
set(kordanix_programs kordanixctl)
if(TARGET kordanix-demo)
  list(APPEND kordanix_programs kordanix-demo)
  list(APPEND kordanix_libraries KordanixCoreSimulated)
  install(TARGETS KordanixCoreSimulated LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR})
  install(DIRECTORY platform/devices/ DESTINATION ${CMAKE_INSTALL_DATADIR}/kordanix/devices PATTERN README.md EXCLUDE)
endif()
install(TARGETS ${kordanix_programs} RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})

set_target_properties(${kordanix_libraries} PROPERTIES INSTALL_RPATH "$ORIGIN")
set_target_properties(${kordanix_programs} PROPERTIES INSTALL_RPATH "$ORIGIN/${bin_to_lib}")

# What other builds find them by.
include(CMakePackageConfigHelpers)
set(package_folder ${CMAKE_INSTALL_LIBDIR}/cmake/KordanixCore)
install(EXPORT KordanixCore NAMESPACE Kordanix:: FILE KordanixCoreTargets.cmake DESTINATION ${package_folder})
configure_package_config_file(cmake/KordanixCoreConfig.cmake.in KordanixCoreConfig.cmake
  INSTALL_DESTINATION ${package_folder} NO_SET_AND_CHECK_MACRO)
write_basic_package_version_file(KordanixCoreConfigVersion.cmake COMPATIBILITY SameMinorVersion)
install(FILES ${PROJECT_BINARY_DIR}/KordanixCoreConfig.cmake ${PROJECT_BINARY_DIR}/KordanixCoreConfigVersion.cmake
  DESTINATION ${package_folder})

file(RELATIVE_PATH pkgconfig_to_prefix ${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig ${CMAKE_INSTALL_PREFIX})
configure_file(cmake/kordanix-core.pc.in kordanix-core.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/kordanix-core.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
