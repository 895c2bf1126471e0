# Cross-compiling for 64-bit Windows with Debian's mingw-w64 toolchain (posix threads,
# so std::thread and OpenMP's libgomp work). See mingw-w64-common.cmake.
set(ZET_MINGW_TRIPLE x86_64-w64-mingw32)
set(CMAKE_SYSTEM_PROCESSOR AMD64)
include(${CMAKE_CURRENT_LIST_DIR}/mingw-w64-common.cmake)
