// Loading a plug-in module and finding its instructions by name.
#if defined(_WIN32)
#include <windows.h>
#else
#include <dlfcn.h>
#endif

#include <cstdlib>
#include <filesystem>
#include <stdexcept>

#include "zet/ZetHost.h"

namespace zet::host {

namespace {

// The system's dynamic loader: LoadLibrary on Windows, dlopen elsewhere.
#if defined(_WIN32)
void* Open(const std::string& path, std::string* error) {
  // The plug-in's own folder is searched for the DLLs it needs (the platform, the
  // compiler's runtime), as the folder of an executable is.
  HMODULE h = LoadLibraryExA(path.c_str(), nullptr, LOAD_WITH_ALTERED_SEARCH_PATH);
  if (!h) {
    const DWORD code = GetLastError();
    char* text = nullptr;
    FormatMessageA(FORMAT_MESSAGE_ALLOCATE_BUFFER | FORMAT_MESSAGE_FROM_SYSTEM |
                       FORMAT_MESSAGE_IGNORE_INSERTS,
                   nullptr, code, 0, reinterpret_cast<LPSTR>(&text), 0, nullptr);
    *error = text ? text : "error " + std::to_string(code);
    if (text) LocalFree(text);
    while (!error->empty() && (error->back() == '\n' || error->back() == '\r')) error->pop_back();
  }
  return reinterpret_cast<void*>(h);
}
void* Symbol(void* handle, const char* name) {
  return reinterpret_cast<void*>(GetProcAddress(static_cast<HMODULE>(handle), name));
}
void Close(void* handle) { FreeLibrary(static_cast<HMODULE>(handle)); }
#else
void* Open(const std::string& path, std::string* error) {
  void* h = dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
  if (!h) {
    const char* err = dlerror();
    *error = err ? err : "unknown error";
  }
  return h;
}
void* Symbol(void* handle, const char* name) { return dlsym(handle, name); }
void Close(void* handle) { dlclose(handle); }
#endif

}  // namespace

CZetPluginModule::CZetPluginModule(const std::string& path, bool init) {
  std::string err;
  m_handle = Open(path, &err);
  if (!m_handle) throw std::runtime_error("cannot load plug-in '" + path + "': " + err);
  auto get = reinterpret_cast<ZetPluginLibGetFn>(Symbol(m_handle, ZET_PLUGIN_ENTRY));
  if (!get || !(m_lib = get())) {
    Close(m_handle);
    throw std::runtime_error("'" + path + "' is not a formula plug-in (no " ZET_PLUGIN_ENTRY ")");
  }
  if (init) m_lib->InitAll();
}

CZetPluginModule::~CZetPluginModule() {
  TermAll();
  Close(m_handle);
}

void CZetPluginModule::TermAll() {
  if (m_terminated) return;
  m_lib->TermAll();
  m_terminated = true;
}

int CZetPluginModule::Find(const std::string& name, std::string* error) const {
  const int n = Count();
  // A number is a 1-based position.
  if (!name.empty() && name.find_first_not_of("0123456789") == std::string::npos) {
    const long pos = std::strtol(name.c_str(), nullptr, 10);
    if (pos >= 1 && pos <= n) return static_cast<int>(pos - 1);
    if (error) *error = "no instruction at position " + name;
    return -1;
  }
  std::vector<int> exact, trimmed;
  for (int i = 0; i < n; ++i) {
    const SInstrInfo* info = At(i)->GetInfo();
    if (info->ident && name == info->ident) return i;
    if (!info->name) continue;
    const std::string display = info->name;
    if (display == name) {
      exact.push_back(i);
    } else if (!display.empty() && display.back() == ' ' &&
               display.substr(0, display.size() - 1) == name) {
      trimmed.push_back(i);
    }
  }
  const std::vector<int>& hits = exact.empty() ? trimmed : exact;
  if (hits.size() == 1) return hits[0];
  if (error) {
    if (hits.empty()) {
      *error = "unknown instruction '" + name + "'";
    } else {
      *error = "ambiguous instruction '" + name + "': ";
      for (size_t k = 0; k < hits.size(); ++k) {
        if (k) *error += ", ";
        *error += At(hits[k])->GetInfo()->ident;
      }
    }
  }
  return -1;
}

std::string CZetPluginModule::DefaultPath() {
  namespace fs = std::filesystem;
  if (const char* env = std::getenv("ZET_PLUGIN"); env && *env) return env;
  std::error_code ec;
#if defined(_WIN32)
  // Installed on Windows, the plug-in lies beside zet.exe.
  const char* kFile = "ZetFormulaLib.dll";
  char exePath[MAX_PATH];
  const DWORD n = GetModuleFileNameA(nullptr, exePath, MAX_PATH);
  if (n > 0 && n < MAX_PATH) {
    const fs::path p = fs::path(exePath).parent_path() / kFile;
    if (fs::exists(p, ec)) return p.string();
  }
#else
  const char* kFile = "ZetFormulaLib.so";
  const fs::path exe = fs::read_symlink("/proc/self/exe", ec);
  if (!ec) {
    const fs::path dir = exe.parent_path();
    for (const fs::path& p : {dir / kFile, dir / ZET_INSTALL_PLUGIN_RELDIR / kFile})
      if (fs::exists(p, ec)) return p.lexically_normal().string();
  }
#endif
  return kFile;
}

}  // namespace zet::host
