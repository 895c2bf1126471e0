// The process environment, read and written under one lock, with the C runtime's
// _putenv rules for assignments. Names and values are UTF-8 in the environment and
// Windows-1252 in the library (Posix.h): an entry read with a character Windows-1252
// cannot hold shows it as '?'; a name or value that UTF-8 cannot represent is neither
// looked up nor set.
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
  std::string text;
  for (char** e = environ; e && *e; ++e) {
    zet::os::SystemToCp1252(*e, &text);
    entries.emplace_back(text);
  }
  return entries;
}

bool CZetOs::GetEnv(const char* name, CStdStr* value) {
  std::string sysName, text;
  if (!zet::os::Cp1252ToSystem(name ? name : "", &sysName)) return false;
  std::lock_guard<std::mutex> hold(zet::os::EnvironmentLock());
  const char* v = std::getenv(sysName.c_str());
  if (!v) return false;
  zet::os::SystemToCp1252(v, &text);
  *value = text;
  return true;
}

bool CZetOs::PutEnv(const char* assignment) {
  std::string s;
  if (!zet::os::Cp1252ToSystem(assignment ? assignment : "", &s)) return false;
  const size_t eq = s.find('=');
  if (eq == std::string::npos || eq == 0) return false;
  const std::string name = s.substr(0, eq);
  std::lock_guard<std::mutex> hold(zet::os::EnvironmentLock());
  if (eq + 1 == s.size()) return unsetenv(name.c_str()) == 0;
  return setenv(name.c_str(), s.c_str() + eq + 1, 1) == 0;
}
