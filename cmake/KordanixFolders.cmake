# Where things go, in a build folder's lib and below an installation's prefix.
set(KORDANIX_LAYERS_BESIDE "" CACHE PATH
  "Another build folder: make only what goes into programs, of another word size, for the kordanixctl that is made there")

# kordanixctl preloads PREFIX/$LIB/kordanix/libkordanix-preload.so. What $LIB stands for only the dynamic linker knows: that
# of 64-bit programs has another one than that of 32-bit programs, so each loads what was made for its own.
if(NOT DEFINED KORDANIX_LINKERS_LIB AND CMAKE_SYSTEM_PROCESSOR STREQUAL x86_64 AND NOT CMAKE_CROSSCOMPILING)
  if(CMAKE_SIZEOF_VOID_P EQUAL 8)
    set(linker /lib64/ld-linux-x86-64.so.2)
    set(unknown "")
  else()
    set(linker /lib/ld-linux.so.2)
    set(unknown lib32)
  endif()
  set(told "")
  if(EXISTS ${linker})
    execute_process(COMMAND ${linker} --list-diagnostics OUTPUT_VARIABLE told ERROR_QUIET)
  endif()
  string(REGEX MATCH "dl_dst_lib=\"([^\"]*)\"" told "${told}")
  if(NOT told)
    set(CMAKE_MATCH_1 "${unknown}")
  endif()
  set(KORDANIX_LINKERS_LIB "${CMAKE_MATCH_1}" CACHE STRING "What the dynamic linker puts in place of $LIB in a path")
endif()
if(KORDANIX_LAYERS_BESIDE AND KORDANIX_LINKERS_LIB)
  set(CMAKE_INSTALL_LIBDIR ${KORDANIX_LINKERS_LIB} CACHE PATH "Object code libraries")
endif()
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
