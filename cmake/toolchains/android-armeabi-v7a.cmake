# Android on 32-bit ARM, API level 29, with the NDK whose folder ANDROID_NDK names, as a CMake variable or in the
# environment. See docs/android.md.
if(NOT ANDROID_NDK)
  set(ANDROID_NDK "$ENV{ANDROID_NDK}")
endif()
if(NOT EXISTS "${ANDROID_NDK}/build/cmake/android.toolchain.cmake")
  message(FATAL_ERROR "ANDROID_NDK must name the folder of an Android NDK, it is '${ANDROID_NDK}'")
endif()
# CMake's trial compilations read this file anew.
list(APPEND CMAKE_TRY_COMPILE_PLATFORM_VARIABLES ANDROID_NDK)

set(ANDROID_ABI armeabi-v7a)
set(ANDROID_PLATFORM android-29)
# The companion library takes standard containers, so all three have to share one C++ library.
set(ANDROID_STL c++_shared)
include("${ANDROID_NDK}/build/cmake/android.toolchain.cmake")
