# Windows builds: the DLLs of the compiler's runtime that the programs and the plug-in
# need (libstdc++, libgcc, libwinpthread, libgomp) are copied beside them in the build
# tree, so they run there under Wine or on Windows, and installed with them, so the zip
# that CPack makes holds everything a Windows machine needs.
set(ZET_RUNTIME_DLL_NAMES libstdc++-6.dll libwinpthread-1.dll libgomp-1.dll)
if(CMAKE_SIZEOF_VOID_P EQUAL 4)
  list(APPEND ZET_RUNTIME_DLL_NAMES libgcc_s_dw2-1.dll)
else()
  list(APPEND ZET_RUNTIME_DLL_NAMES libgcc_s_seh-1.dll)
endif()
set(ZET_RUNTIME_DLLS)
foreach(name ${ZET_RUNTIME_DLL_NAMES})
  execute_process(COMMAND ${CMAKE_CXX_COMPILER} -print-file-name=${name}
    OUTPUT_VARIABLE dll OUTPUT_STRIP_TRAILING_WHITESPACE)
  if(NOT IS_ABSOLUTE "${dll}" OR NOT EXISTS "${dll}")
    # libwinpthread lives in the toolchain's sysroot, not in gcc's own folder.
    find_file(dll_${name} ${name} PATHS /usr/${ZET_MINGW_TRIPLE}/lib /usr/${ZET_MINGW_TRIPLE}/bin
      NO_DEFAULT_PATH NO_CMAKE_FIND_ROOT_PATH)
    set(dll ${dll_${name}})
  endif()
  if(NOT EXISTS "${dll}")
    message(FATAL_ERROR "The toolchain's ${name} was not found")
  endif()
  list(APPEND ZET_RUNTIME_DLLS ${dll})
endforeach()
file(MAKE_DIRECTORY ${CMAKE_RUNTIME_OUTPUT_DIRECTORY})
file(COPY ${ZET_RUNTIME_DLLS} DESTINATION ${CMAKE_RUNTIME_OUTPUT_DIRECTORY})
if(ZET_INSTALL)
  install(FILES ${ZET_RUNTIME_DLLS} DESTINATION ${CMAKE_INSTALL_BINDIR})
endif()
