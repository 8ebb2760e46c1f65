# kordanix_versioned(TARGET): a shared library of the host that others link. Before 1.0 a minor version may change
# everything, so it is part of the library's name. Android's loader wants names without a version.
function(kordanix_versioned target)
  if(KORDANIX_PLATFORM STREQUAL host)
    set_target_properties(${target} PROPERTIES
      VERSION ${PROJECT_VERSION} SOVERSION ${PROJECT_VERSION_MAJOR}.${PROJECT_VERSION_MINOR})
  endif()
endfunction()

# kordanix_add_core(TARGET COUNTER_SOURCE): the library with the given GPU counter source in it.
# Everything else of the library is compiled once and shared by all such targets.
function(kordanix_add_core target counter_source)
  add_library(${target} SHARED ${counter_source} $<TARGET_OBJECTS:kordanix_core_objects>)
  target_link_libraries(${target} PRIVATE kordanix_options PUBLIC kordanix_headers kordanix_platform_libs)
  set_target_properties(${target} PROPERTIES
    CXX_VISIBILITY_PRESET hidden
    VISIBILITY_INLINES_HIDDEN ON)
  # The watcher thread lives as long as the process, so its code must never be unmapped.
  target_link_options(${target} PRIVATE -Wl,-z,nodelete -Wl,-z,defs)
  set(exports ${PROJECT_SOURCE_DIR}/src/KordanixCore.map)
  target_link_options(${target} PRIVATE -Wl,--version-script=${exports} -Wl,--hash-style=gnu)
  set_target_properties(${target} PROPERTIES LINK_DEPENDS ${exports})
endfunction()

# Compiler options for what uses CLI11: optimising its templates takes longer than compiling the rest of a program that
# parses once.
set(KORDANIX_PARSER_OPTIONS $<IF:$<CONFIG:Debug>,-O0,-O1>)

# kordanix_add_test(NAME SOURCES... [LABEL LABEL]): a GoogleTest executable whose cases CTest knows one by one. The
# label `outruns` is for tests that kill or outrun other processes, which a busy machine may upset: scripts/test.sh
# asks them once more when they fail. `slow` is for what takes seconds. The quick run leaves out both.
function(kordanix_add_test name)
  cmake_parse_arguments(test "" LABEL "" ${ARGN})
  add_executable(${name} ${test_UNPARSED_ARGUMENTS})
  target_link_libraries(${name} PRIVATE kordanix_options TestSupport GTest::gmock_main)
  target_include_directories(${name} PRIVATE ${PROJECT_SOURCE_DIR}/tests)
  target_precompile_headers(${name} REUSE_FROM test_headers)
  gtest_discover_tests(${name} NO_PRETTY_VALUES DISCOVERY_TIMEOUT 60 PROPERTIES TIMEOUT 120 LABELS "${test_LABEL}")
endfunction()
