# Cross-builds for 32-bit Linux with Debian's compiler and the Qt that "scripts/setup --i386" provides; programs
# run as they are, with the libraries from there.
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR i686)
set(CMAKE_C_COMPILER i686-linux-gnu-gcc)
set(CMAKE_CXX_COMPILER i686-linux-gnu-g++)

set(CMAKE_SYSROOT /opt/hxcommon-i386)
set(CMAKE_LIBRARY_ARCHITECTURE i386-linux-gnu)
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)

set(directories ${CMAKE_SYSROOT}/lib/i386-linux-gnu:${CMAKE_SYSROOT}/usr/lib/i386-linux-gnu)
set(CMAKE_EXE_LINKER_FLAGS_INIT
  "-Wl,--dynamic-linker,${CMAKE_SYSROOT}/lib/ld-linux.so.2 -Wl,--disable-new-dtags,-rpath,${directories}")
