# Run by CPack when the files of all packages are in place and not yet packed: adds what Debian's policy asks of every
# package, and moves to Debian's places what lies elsewhere otherwise.
if(NOT CPACK_GENERATOR STREQUAL DEB)
  return()
endif()
find_program(gzip gzip REQUIRED)

# SOURCE_DATE_EPOCH, if set, is the time.
string(TIMESTAMP time "%a, %d %b %Y %H:%M:%S +0000" UTC)
set(version ${CPACK_PACKAGE_VERSION}-${CPACK_DEBIAN_PACKAGE_RELEASE})

foreach(component IN LISTS CPACK_COMPONENTS_ALL)
  string(TOUPPER ${component} upper)
  set(name ${CPACK_DEBIAN_${upper}_PACKAGE_NAME})
  set(share ${CPACK_TEMPORARY_DIRECTORY}/${component}${CPACK_PACKAGING_INSTALL_PREFIX}/share)

  file(COPY ${CMAKE_CURRENT_LIST_DIR}/debian/copyright DESTINATION ${share}/doc/${name})
  set(changes ${share}/doc/${name}/changelog.Debian)
  file(WRITE ${changes} "kordanix (${version}) unstable; urgency=medium

  * Packages of version ${CPACK_PACKAGE_VERSION}, made by its own build.

 -- ${CPACK_PACKAGE_CONTACT}  ${time}
")
  file(GLOB pages ${share}/man/man*/*)
  execute_process(COMMAND ${gzip} -9nf ${changes} ${pages} COMMAND_ERROR_IS_FATAL ANY)

  set(overrides ${CMAKE_CURRENT_LIST_DIR}/debian/${name}.lintian-overrides)
  if(EXISTS ${overrides})
    file(COPY ${overrides} DESTINATION ${share}/lintian/overrides)
    file(RENAME ${share}/lintian/overrides/${name}.lintian-overrides ${share}/lintian/overrides/${name})
  endif()

  if(EXISTS ${share}/zsh/site-functions)
    file(RENAME ${share}/zsh/site-functions ${share}/zsh/vendor-completions)
  endif()
endforeach()
