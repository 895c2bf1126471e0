// The process environment, read and written under one lock, with the C runtime's
// _putenv rules for assignments.
#include <cstdlib>
#include <cstring>
#include <string>

#include "os/posix/Posix.h"
#include "zet/ZetOs.h"

extern char** environ;

namespace zet::os {

std::mutex& EnvironmentLock() {
  static std::mutex lock;
  return lock;
}

std::string GetEnvString(const char* name) {
  std::lock_guard<std::mutex> hold(EnvironmentLock());
  const char* v = std::getenv(name);
  return v ? v : "";
}

}  // namespace zet::os

CStdStrVector CZetOs::GetEnvironment() {
  std::lock_guard<std::mutex> hold(zet::os::EnvironmentLock());
  CStdStrVector entries;
  for (char** e = environ; e && *e; ++e) entries.emplace_back(*e);
  return entries;
}

bool CZetOs::GetEnv(const char* name, CStdStr* value) {
  std::lock_guard<std::mutex> hold(zet::os::EnvironmentLock());
  const char* v = std::getenv(name ? name : "");
  if (!v) return false;
  *value = v;
  return true;
}

bool CZetOs::PutEnv(const char* assignment) {
  const std::string s = assignment ? assignment : "";
  const size_t eq = s.find('=');
  if (eq == std::string::npos || eq == 0) return false;
  const std::string name = s.substr(0, eq);
  std::lock_guard<std::mutex> hold(zet::os::EnvironmentLock());
  if (eq + 1 == s.size()) return unsetenv(name.c_str()) == 0;
  return setenv(name.c_str(), s.c_str() + eq + 1, 1) == 0;
}
