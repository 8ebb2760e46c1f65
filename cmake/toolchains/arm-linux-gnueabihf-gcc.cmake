# 32-bit ARM Linux with GCC (Debian: g++-arm-linux-gnueabihf, qemu-user).
include(${CMAKE_CURRENT_LIST_DIR}/arm-linux-gnueabihf.cmake)
set(CMAKE_C_COMPILER ${kordanix_triplet}-gcc)
set(CMAKE_CXX_COMPILER ${kordanix_triplet}-g++)
# Without the notes that GCC 7 changed how some types are passed: everything here is built with one compiler.
set(CMAKE_CXX_FLAGS_INIT -Wno-psabi)
