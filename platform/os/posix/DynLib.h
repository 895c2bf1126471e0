// A shared library of the desktop (libX11, libcanberra) loaded at run time, so that
// the platform loads and works where it is not installed. Loaded once and kept for
// the life of the process: these libraries start threads and register exit handlers.
#pragma once

#include <dlfcn.h>

#include <initializer_list>

namespace zet::os {

class CDynLib {
 public:
  // Loads the first of `sonames` that the dynamic loader finds.
  explicit CDynLib(std::initializer_list<const char*> sonames) {
    for (const char* name : sonames)
      if ((m_handle = dlopen(name, RTLD_NOW | RTLD_LOCAL)) != nullptr) break;
  }
  bool Loaded() const { return m_handle != nullptr; }
  // Resolves `symbol` into `fn`; false (and fn null) when missing.
  template <class F>
  bool Get(const char* symbol, F* fn) const {
    *fn = m_handle ? reinterpret_cast<F>(dlsym(m_handle, symbol)) : nullptr;
    return *fn != nullptr;
  }

 private:
  void* m_handle = nullptr;
};

}  // namespace zet::os
