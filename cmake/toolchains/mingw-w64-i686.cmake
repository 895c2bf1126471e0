# Cross-compiling for 32-bit Windows (the host process the library is loaded into) with
# Debian's mingw-w64 toolchain (posix threads). See mingw-w64-common.cmake.
set(ZET_MINGW_TRIPLE i686-w64-mingw32)
set(CMAKE_SYSTEM_PROCESSOR X86)
include(${CMAKE_CURRENT_LIST_DIR}/mingw-w64-common.cmake)
