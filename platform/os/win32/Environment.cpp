// The C runtime's process environment: the _environ table, getenv and _putenv, read
// and written under one lock inside the library.
#include <cstdlib>
#include <string>

#include "os/win32/Win32.h"
#include "zet/ZetOs.h"

namespace zet::os {

std::mutex& EnvironmentLock() {
  static std::mutex lock;
  return lock;
}

}  // namespace zet::os

CStdStrVector CZetOs::GetEnvironment() {
  std::lock_guard<std::mutex> hold(zet::os::EnvironmentLock());
  CStdStrVector entries;
  for (char** e = _environ; e && *e; ++e) entries.emplace_back(*e);
  return entries;
}

bool CZetOs::GetEnv(const char* name, CStdStr* value) {
  std::lock_guard<std::mutex> hold(zet::os::EnvironmentLock());
  const char* v = std::getenv(name ? name : "");
  if (!v) return false;
  *value = v;
  return true;
}

// The runtime's own rules: "NAME=" removes NAME, a missing '=' or an empty name is
// refused.
bool CZetOs::PutEnv(const char* assignment) {
  std::lock_guard<std::mutex> hold(zet::os::EnvironmentLock());
  return _putenv(assignment ? assignment : "") == 0;
}
