# The one toolchain: everything of this system is a 32-bit program for Linux on x86, built by Debian's g++.
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR i686)

if(NOT CMAKE_C_COMPILER)
  set(CMAKE_C_COMPILER gcc)
endif()
if(NOT CMAKE_CXX_COMPILER)
  set(CMAKE_CXX_COMPILER g++)
endif()

# 64-bit file offsets and times: a 32-bit program meets large files and disks like any other.
set(machine_flags "-m32 -msse2 -mfpmath=sse -D_FILE_OFFSET_BITS=64 -D_TIME_BITS=64")
set(CMAKE_C_FLAGS_INIT "${machine_flags}")
set(CMAKE_CXX_FLAGS_INIT "${machine_flags}")
set(CMAKE_EXE_LINKER_FLAGS_INIT "-m32")
set(CMAKE_SHARED_LINKER_FLAGS_INIT "-m32")
set(CMAKE_MODULE_LINKER_FLAGS_INIT "-m32")
