# Android on 64-bit ARM.
set(ANDROID_ABI arm64-v8a)
include("${CMAKE_CURRENT_LIST_DIR}/android-ndk.cmake")
