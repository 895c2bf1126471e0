# What both mingw-w64 toolchain files share. ZET_MINGW_TRIPLE names the target.
#
# Libraries are looked for in the toolchain's own tree and in the prefix that
# scripts/windeps.sh fills (build/windeps/<arch>/prefix, or ZET_WINDEPS_PREFIX), never
# among the build machine's libraries.
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_C_COMPILER ${ZET_MINGW_TRIPLE}-gcc-posix)
set(CMAKE_CXX_COMPILER ${ZET_MINGW_TRIPLE}-g++-posix)
set(CMAKE_RC_COMPILER ${ZET_MINGW_TRIPLE}-windres)
set(CMAKE_FIND_ROOT_PATH /usr/${ZET_MINGW_TRIPLE})
if(NOT ZET_WINDEPS_PREFIX)
  string(REGEX REPLACE "-w64-mingw32$" "" _zet_arch "${ZET_MINGW_TRIPLE}")
  if(DEFINED ENV{ZET_WINDEPS_PREFIX})
    set(ZET_WINDEPS_PREFIX $ENV{ZET_WINDEPS_PREFIX})
  else()
    get_filename_component(_zet_src ${CMAKE_CURRENT_LIST_DIR}/../.. ABSOLUTE)
    set(ZET_WINDEPS_PREFIX ${_zet_src}/build/windeps/${_zet_arch}/prefix)
  endif()
endif()
list(APPEND CMAKE_FIND_ROOT_PATH ${ZET_WINDEPS_PREFIX})
# The header-only libraries are the build machine's own packages, used as they are:
# Eigen through its package (it names only /usr/include/eigen3), nlohmann-json and
# CLI11 through the small packages windeps.sh writes into the prefix.
set(Eigen3_DIR /usr/share/eigen3/cmake CACHE PATH "")
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)
# GCC for Windows cannot align the stack beyond 16 bytes, so a spill of a 32- or
# 64-byte vector (AVX2, AVX-512 code of the runtime-dispatched kernels) with an
# aligned move can fault. The assembler turns every aligned vector move into its
# unaligned form, which costs nothing on aligned data.
set(CMAKE_C_FLAGS_INIT "-Wa,-muse-unaligned-vector-move")
set(CMAKE_CXX_FLAGS_INIT "-Wa,-muse-unaligned-vector-move")
# Test programs and anything else the build runs for the target run under Wine.
get_filename_component(_zet_root ${CMAKE_CURRENT_LIST_DIR}/../.. ABSOLUTE)
set(CMAKE_CROSSCOMPILING_EMULATOR ${_zet_root}/scripts/wine-run.sh)
