# The layers that Android loads into an application, each one file with everything in it: the library, the scene, the
# companion with its commands from a property, and String8. With an NDK, or with a tree that offers what one does.
# Khronos's headers of OpenGL and of Vulkan's layers, which an NDK lacks, and glm serve every processor, but lie among headers that do not: a
# folder of links shows the compiler these alone.
set(neutral_headers ${PROJECT_BINARY_DIR}/neutral-headers)
file(MAKE_DIRECTORY ${neutral_headers}/GL)
find_path(KORDANIX_GLM glm/glm.hpp PATHS ${KORDANIX_ANDROID_HEADERS} /usr/local/include /usr/include
  NO_DEFAULT_PATH NO_CMAKE_FIND_ROOT_PATH REQUIRED)
find_path(KORDANIX_GL GL/glcorearb.h PATHS ${KORDANIX_ANDROID_HEADERS} /usr/local/include /usr/include
  NO_DEFAULT_PATH NO_CMAKE_FIND_ROOT_PATH REQUIRED)
find_path(KORDANIX_VULKAN vulkan/vk_layer.h PATHS ${KORDANIX_ANDROID_HEADERS} /usr/local/include /usr/include
  NO_DEFAULT_PATH NO_CMAKE_FIND_ROOT_PATH REQUIRED)
find_program(KORDANIX_GLSLANG glslangValidator REQUIRED)
file(CREATE_LINK ${KORDANIX_GLM}/glm ${neutral_headers}/glm SYMBOLIC)
file(CREATE_LINK ${KORDANIX_VULKAN}/vulkan ${neutral_headers}/vulkan SYMBOLIC)
file(CREATE_LINK ${KORDANIX_VULKAN}/vk_video ${neutral_headers}/vk_video SYMBOLIC)
file(CREATE_LINK ${KORDANIX_GL}/GL/glcorearb.h ${neutral_headers}/GL/glcorearb.h SYMBOLIC)

set(layers ${PROJECT_SOURCE_DIR}/layers)
set(platform ${PROJECT_SOURCE_DIR}/platform)
file(GLOB parts CONFIGURE_DEPENDS
  ${layers}/raster/*.cpp ${layers}/figures/*.cpp ${layers}/figures/sources/*.cpp
  ${layers}/figures/sources/android/*.cpp ${layers}/scene/*.cpp
  ${layers}/drawlist/*.cpp ${layers}/entry/*.cpp
  ${platform}/io/*.cpp ${platform}/strings/*.cpp ${platform}/runs/android/*.cpp ${platform}/application/*.cpp
  ${platform}/ostra/*.cpp ${platform}/ostra/android/*.cpp)
include(${platform}/ostra/HostSources.cmake)
list(FILTER parts EXCLUDE REGEX ${ostra_host_sources})
add_library(application_parts OBJECT ${parts} ${PROJECT_SOURCE_DIR}/src/core/HWcounterAdreno.cpp)
# An application has little room: what runs once or twice a second is built for size, and the rest without -O3's copies.
list(FILTER parts INCLUDE REGEX "/(platform|figures)/")
set_source_files_properties(${parts} PROPERTIES COMPILE_OPTIONS $<$<CONFIG:Release>:-Os>)

file(GLOB gles_sources CONFIGURE_DEPENDS
  ${layers}/opengl/gl/*.cpp ${layers}/opengl/draw/*.cpp ${layers}/opengl/passes/*.cpp ${layers}/opengl/entry/*.cpp
  ${layers}/gles/*.cpp)
add_library(KordanixGles MODULE ${gles_sources} ${layers}/opengl/shim/OverlaidSurfaces.cpp
  $<TARGET_OBJECTS:application_parts> $<TARGET_OBJECTS:kordanix_core_objects>)

file(GLOB vulkan_sources CONFIGURE_DEPENDS
  ${layers}/vulkan/api/*.cpp ${layers}/vulkan/draw/*.cpp ${layers}/vulkan/timing/*.cpp ${layers}/vulkan/entry/*.cpp
  ${layers}/vulkan/android/*.cpp)
list(FILTER vulkan_sources EXCLUDE REGEX "/entry/(Negotiation|ProgramProfiles|ProgramRun)\\.cpp$")  # the desktop's
include(${layers}/vulkan/shaders/Shaders.cmake)
add_library(VkLayer_Kordanix MODULE ${vulkan_sources} ${vulkan_shaders}
  $<TARGET_OBJECTS:application_parts> $<TARGET_OBJECTS:kordanix_core_objects>)
target_include_directories(VkLayer_Kordanix PRIVATE ${vulkan_shaders_folder})
target_compile_definitions(VkLayer_Kordanix PRIVATE VK_NO_PROTOTYPES)

# What the layers themselves include, and after that the links.
foreach(target application_parts KordanixGles VkLayer_Kordanix)
  target_include_directories(${target} PRIVATE ${layers} ${platform})
  target_compile_definitions(${target} PRIVATE _FILE_OFFSET_BITS=64)
  target_link_libraries(${target} PRIVATE kordanix_options kordanix_headers)
  target_compile_options(${target} PRIVATE -ffunction-sections -fdata-sections $<$<CONFIG:Release>:-O2>)
  set_target_properties(${target} PROPERTIES CXX_VISIBILITY_PRESET hidden VISIBILITY_INLINES_HIDDEN ON)
endforeach()
target_include_directories(kordanix_platform_headers SYSTEM INTERFACE ${neutral_headers})
target_include_directories(kordanix_platform_headers INTERFACE ${platform}/application)
# Nobody closes them, for their threads live as long as the process; devices have pages of up to 16 KB.
foreach(layer KordanixGles:gles VkLayer_Kordanix:vulkan/android)
  string(REPLACE ":" ";" parts ${layer})
  list(GET parts 0 target)
  list(GET parts 1 folder)
  set(exports ${layers}/${folder}/Layer.map)
  target_link_options(${target} PRIVATE
    -Wl,--version-script=${exports} -Wl,--exclude-libs,ALL -Wl,-z,nodelete -Wl,-z,defs -Wl,-z,max-page-size=16384
    -Wl,--hash-style=gnu -Wl,--gc-sections)
  target_link_libraries(${target} PRIVATE log ${CMAKE_DL_LIBS} m)
  set_target_properties(${target} PROPERTIES LINK_DEPENDS ${exports})
endforeach()
