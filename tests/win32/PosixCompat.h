// The few POSIX calls the tests use, on the Windows C runtime and kernel: force-included
// into the test programs of the Windows builds, so the tests read the same on both.
#pragma once

#include <process.h>
#include <stdlib.h>
#ifndef NOMINMAX
#define NOMINMAX  // std::min and std::max, not the macros
#endif
#include <windows.h>
// Old segment keywords the Windows headers define as macros; tests use the words.
#undef near
#undef far

inline int setenv(const char* name, const char* value, int overwrite) {
  if (!overwrite && getenv(name)) return 0;
  return _putenv_s(name, value) == 0 ? 0 : -1;  // an empty value removes the variable
}
inline int unsetenv(const char* name) { return _putenv_s(name, "") == 0 ? 0 : -1; }
#define getpid _getpid

#define RTLD_NOW 2
#define RTLD_LAZY 1
#define RTLD_LOCAL 0
inline void* dlopen(const char* path, int) { return reinterpret_cast<void*>(LoadLibraryA(path)); }
inline void* dlsym(void* module, const char* name) {
  return reinterpret_cast<void*>(GetProcAddress(static_cast<HMODULE>(module), name));
}
inline int dlclose(void* module) { return FreeLibrary(static_cast<HMODULE>(module)) ? 0 : -1; }
inline const char* dlerror() { return "LoadLibrary failed"; }
