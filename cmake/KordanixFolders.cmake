# Where things go, in a build folder's lib and below an installation's prefix.
include(GNUInstallDirs)
if(CMAKE_INSTALL_DOCDIR STREQUAL "${CMAKE_INSTALL_DATAROOTDIR}/doc/${PROJECT_NAME}")
  set(CMAKE_INSTALL_DOCDIR ${CMAKE_INSTALL_DATAROOTDIR}/doc/kordanix)
endif()

# Below the libraries: what is loaded by its path and never linked, the shim and the layers.
set(KORDANIX_MODULES_FOLDER kordanix)

# kordanix_module(TARGET): puts such a module there.
function(kordanix_module target)
  set_target_properties(${target} PROPERTIES
    LIBRARY_OUTPUT_DIRECTORY ${CMAKE_LIBRARY_OUTPUT_DIRECTORY}/${KORDANIX_MODULES_FOLDER})
  install(TARGETS ${target} LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}/${KORDANIX_MODULES_FOLDER} COMPONENT overlay)
endfunction()
