# API level 29, with the NDK whose folder ANDROID_NDK names, as a CMake variable or in the environment. For the toolchain
# files of the ABIs, which set ANDROID_ABI. See docs/android.md.
if(NOT ANDROID_NDK)
  set(ANDROID_NDK "$ENV{ANDROID_NDK}")
endif()
if(NOT EXISTS "${ANDROID_NDK}/build/cmake/android.toolchain.cmake")
  message(FATAL_ERROR "ANDROID_NDK must name the folder of an Android NDK, it is '${ANDROID_NDK}'")
endif()
# CMake's trial compilations read this file anew.
list(APPEND CMAKE_TRY_COMPILE_PLATFORM_VARIABLES ANDROID_NDK)

set(ANDROID_PLATFORM android-29)
if(NOT ANDROID_STL)
  # The companion library takes standard containers, so all three have to share one C++ library.
  set(ANDROID_STL c++_shared)
endif()
include("${ANDROID_NDK}/build/cmake/android.toolchain.cmake")
