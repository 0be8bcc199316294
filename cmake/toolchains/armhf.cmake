# 32-bit ARM Linux with hardware floating point, by Debian's cross compiler against a tree of Debian's
# armhf packages; scripts/test-armhf.sh makes one. Programs run under qemu's user emulation.
#   SEGCORE_ARMHF_SYSROOT  the tree
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR armv7l)
list(APPEND CMAKE_TRY_COMPILE_PLATFORM_VARIABLES SEGCORE_ARMHF_SYSROOT)

set(CMAKE_C_COMPILER arm-linux-gnueabihf-gcc)
set(CMAKE_CXX_COMPILER arm-linux-gnueabihf-g++)
set(CMAKE_SYSROOT "${SEGCORE_ARMHF_SYSROOT}")
set(CMAKE_LIBRARY_ARCHITECTURE arm-linux-gnueabihf)
set(CMAKE_CROSSCOMPILING_EMULATOR qemu-arm -L "${SEGCORE_ARMHF_SYSROOT}")

# pkg-config knows of the tree's packages alone.
set(ENV{PKG_CONFIG_SYSROOT_DIR} "${SEGCORE_ARMHF_SYSROOT}")
set(ENV{PKG_CONFIG_LIBDIR}
  "${SEGCORE_ARMHF_SYSROOT}/usr/lib/arm-linux-gnueabihf/pkgconfig:${SEGCORE_ARMHF_SYSROOT}/usr/share/pkgconfig")

set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)
