// Loading a plug-in module and finding its instructions by name.
#include <dlfcn.h>

#include <cstdlib>
#include <filesystem>
#include <stdexcept>

#include "zet/ZetHost.h"

namespace zet::host {

CZetPluginModule::CZetPluginModule(const std::string& path, bool init) {
  m_handle = dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
  if (!m_handle) {
    const char* err = dlerror();
    throw std::runtime_error("cannot load plug-in '" + path + "': " + (err ? err : "unknown error"));
  }
  auto get = reinterpret_cast<ZetPluginLibGetFn>(dlsym(m_handle, ZET_PLUGIN_ENTRY));
  if (!get || !(m_lib = get())) {
    dlclose(m_handle);
    throw std::runtime_error("'" + path + "' is not a formula plug-in (no " ZET_PLUGIN_ENTRY ")");
  }
  if (init) m_lib->InitAll();
}

CZetPluginModule::~CZetPluginModule() {
  TermAll();
  dlclose(m_handle);
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
  const fs::path exe = fs::read_symlink("/proc/self/exe", ec);
  if (!ec) {
    const fs::path dir = exe.parent_path();
    for (const fs::path& p : {dir / "ZetFormulaLib.so", dir / ZET_INSTALL_PLUGIN_RELDIR / "ZetFormulaLib.so"})
      if (fs::exists(p, ec)) return p.lexically_normal().string();
  }
  return "ZetFormulaLib.so";
}

}  // namespace zet::host
