# Compiles the shaders into headers, named in vulkan_shaders, below vulkan_shaders_folder.
set(vulkan_shaders)
set(vulkan_shaders_folder ${CMAKE_CURRENT_BINARY_DIR})
foreach(stage vert frag)
  set(source ${CMAKE_CURRENT_LIST_DIR}/overlay.${stage})
  set(header ${vulkan_shaders_folder}/vulkan/shaders/overlay.${stage}.h)
  add_custom_command(OUTPUT ${header}
    COMMAND ${CMAKE_COMMAND} -E make_directory ${vulkan_shaders_folder}/vulkan/shaders
    COMMAND ${KORDANIX_GLSLANG} -V --quiet --target-env vulkan1.0 --vn overlay_${stage} -o ${header} ${source}
    DEPENDS ${source})
  list(APPEND vulkan_shaders ${header})
endforeach()
