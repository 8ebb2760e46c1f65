# Android on 32-bit ARM.
set(ANDROID_ABI armeabi-v7a)
include("${CMAKE_CURRENT_LIST_DIR}/android-ndk.cmake")
