# 32-bit programs of this 64-bit machine, with its own compiler (Debian: lib32stdc++-12-dev, libc6-dev-i386) or with
# another one that makes such programs (i686-linux-gnu-g++).
#
# SSE2, which every 64-bit processor has: numbers are then rounded as in 64-bit programs. Old programs call us with a
# stack that is not aligned for it. Times and sizes of files have 64 bits, as in 64-bit programs.
set(CMAKE_CXX_FLAGS_INIT
  "-m32 -msse2 -mfpmath=sse -mstackrealign -D_FILE_OFFSET_BITS=64 -D_TIME_BITS=64")

# The kernel's headers are the same for both, but Debian links them to where the compiler looks only in a package that
# excludes compilers for other processors.
if(NOT EXISTS /usr/include/asm)
  if(NOT CMAKE_CXX_COMPILER)
    set(CMAKE_CXX_COMPILER g++)
  endif()
  execute_process(COMMAND ${CMAKE_CXX_COMPILER} -print-multiarch OUTPUT_VARIABLE kordanix_machine
    OUTPUT_STRIP_TRAILING_WHITESPACE ERROR_QUIET)
  if(EXISTS /usr/include/${kordanix_machine}/asm)
    string(APPEND CMAKE_CXX_FLAGS_INIT " -idirafter /usr/include/${kordanix_machine}")
  endif()
endif()
