# What a build for another processor under an emulator needs beside its toolchain file. Debian's packages of
# header-only libraries (glm, nlohmann-json, CLI11) serve every processor, but they lie among headers that do
# not; a folder of links shows the compiler these alone. Libraries that would have to be compiled (libpng,
# FreeType, Google Benchmark) are not found, so what needs them is left out.
set(kordanix_neutral_headers ${PROJECT_BINARY_DIR}/neutral-headers)
foreach(header glm/glm.hpp nlohmann/json.hpp CLI/CLI.hpp)
  get_filename_component(folder ${header} DIRECTORY)
  find_path(KORDANIX_${folder}_PARENT ${header} PATHS /usr/local/include /usr/include
    NO_DEFAULT_PATH NO_CMAKE_FIND_ROOT_PATH REQUIRED)
  file(MAKE_DIRECTORY ${kordanix_neutral_headers})
  file(CREATE_LINK ${KORDANIX_${folder}_PARENT}/${folder} ${kordanix_neutral_headers}/${folder} SYMBOLIC)
endforeach()
include_directories(SYSTEM ${kordanix_neutral_headers})

# The packages' own CMake files name the folder that must not be searched; these two name nothing.
foreach(package nlohmann_json CLI11)
  set(${package}_DIR ${PROJECT_BINARY_DIR}/neutral-packages CACHE PATH "" FORCE)
  file(WRITE ${${package}_DIR}/${package}Config.cmake
    "if(NOT TARGET ${package}::${package})\n  add_library(${package}::${package} INTERFACE IMPORTED)\nendif()\n")
endforeach()
