# 32-bit ARM Linux with Debian's cross tools, run under QEMU: what the two compilers' toolchain files share.
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR arm)

set(kordanix_triplet arm-linux-gnueabihf)
set(kordanix_sysroot /usr/${kordanix_triplet})

# Libraries, headers and packages of this machine's own processor must not be found; its programs may.
set(CMAKE_FIND_ROOT_PATH ${kordanix_sysroot})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)

# The environment is for programs that start another of ours: they have to name the emulator themselves, by its path,
# since some tests take PATH away.
find_program(KORDANIX_QEMU qemu-arm REQUIRED)
set(CMAKE_CROSSCOMPILING_EMULATOR
  ${KORDANIX_QEMU} -L ${kordanix_sysroot} -E QEMU_LD_PREFIX=${kordanix_sysroot} -E KORDANIX_EMULATOR=${KORDANIX_QEMU})
