# Compiler settings of every target. Results are bit for bit the same in every build, so nothing here
# may let the compiler contract, reorder or widen floating-point operations.
set(CMAKE_CXX_STANDARD 17)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_C_STANDARD 99)
set(CMAKE_C_STANDARD_REQUIRED ON)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)
# `cmake --compile-no-warning-as-error` lets other compilers' warnings pass.
set(CMAKE_COMPILE_WARNING_AS_ERROR ON)

if(NOT CMAKE_BUILD_TYPE AND NOT CMAKE_CONFIGURATION_TYPES)
  set(CMAKE_BUILD_TYPE Release)
endif()

add_library(segcore_options INTERFACE)
target_compile_options(segcore_options INTERFACE
  -ffp-contract=off -fno-fast-math
  -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wdouble-promotion -Wfloat-conversion
  $<$<COMPILE_LANGUAGE:CXX>:-Wnon-virtual-dtor -Woverloaded-virtual>)

# NEON of 32-bit ARM takes subnormal numbers for zero. g++ and clang's loop vectoriser keep away from
# it for that reason; clang's other vectoriser does not.
if(CMAKE_CXX_COMPILER_ID MATCHES "Clang" AND CMAKE_SYSTEM_PROCESSOR MATCHES "^arm")
  target_compile_options(segcore_options INTERFACE -fno-slp-vectorize)
endif()

set(SEGCORE_SANITIZE "" CACHE STRING "Sanitizers to build everything with, e.g. address,undefined or thread")
if(SEGCORE_SANITIZE)
  add_compile_options(-fsanitize=${SEGCORE_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
  add_link_options(-fsanitize=${SEGCORE_SANITIZE})
  # Reports uninitialised reads in instrumented standard headers, of which g++'s manual warns.
  add_compile_options($<$<CXX_COMPILER_ID:GNU>:-Wno-maybe-uninitialized>)
endif()

# Installed programs find the library next to them wherever the prefix lies. Libraries outside the
# system's directories (the log library) are found where they were linked from.
file(RELATIVE_PATH segcore_bin_to_lib
  "${CMAKE_INSTALL_FULL_BINDIR}" "${CMAKE_INSTALL_FULL_LIBDIR}")
set(CMAKE_INSTALL_RPATH "$ORIGIN/${segcore_bin_to_lib}")
set(CMAKE_INSTALL_RPATH_USE_LINK_PATH ON)
# What programs load while they run lies in a folder of its own.
set(SEGCORE_INSTALL_MODULEDIR "${CMAKE_INSTALL_LIBDIR}/segcore")
set(CMAKE_BUILD_RPATH "${PROJECT_BINARY_DIR}/hosts/pictures")
