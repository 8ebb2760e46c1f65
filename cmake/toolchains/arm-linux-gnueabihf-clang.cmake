# 32-bit ARM Linux with clang and the C and C++ libraries of Debian's g++-arm-linux-gnueabihf. clang finds them
# and the cross linker by the name of the target.
include(${CMAKE_CURRENT_LIST_DIR}/arm-linux-gnueabihf.cmake)
set(CMAKE_C_COMPILER clang)
set(CMAKE_CXX_COMPILER clang++)
set(CMAKE_C_COMPILER_TARGET ${kordanix_triplet})
set(CMAKE_CXX_COMPILER_TARGET ${kordanix_triplet})
# Debian's GCC and Android's clang choose Thumb instructions themselves.
set(CMAKE_C_FLAGS_INIT -mthumb)
set(CMAKE_CXX_FLAGS_INIT -mthumb)
