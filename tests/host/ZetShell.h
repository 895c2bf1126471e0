// Running the zet binary from host tests: a shell command's exit code and output, the
// zet command line with the plug-in of this build (whole files: TempDir.h).
#pragma once

#if !defined(_WIN32)
#include <sys/wait.h>
#endif

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <utility>

#include "TempDir.h"  // ReadFile, WriteFile, CTempDir

namespace zet::test {

// The exit code (-1 when killed by a signal) and standard output of a shell command.
inline std::pair<int, std::string> Shell(const std::string& cmd) {
  std::string out;
#if defined(_WIN32)
  // cmd.exe: the exit code is the status itself; the output is read as bytes.
  FILE* p = _popen(cmd.c_str(), "rb");
  if (!p) return {-1, out};
  char buf[65536];
  for (size_t n; (n = fread(buf, 1, sizeof buf, p)) > 0;) out.append(buf, n);
  return {_pclose(p), out};
#else
  FILE* p = popen(cmd.c_str(), "r");
  if (!p) return {-1, out};
  char buf[65536];
  for (size_t n; (n = fread(buf, 1, sizeof buf, p)) > 0;) out.append(buf, n);
  const int status = pclose(p);
  return {WIFEXITED(status) ? WEXITSTATUS(status) : -1, out};
#endif
}

inline std::string Zet(const std::string& args) {
  return std::string(ZET_TEST_ZET) + " --plugin " + ZET_TEST_PLUGIN + " " + args;
}

}  // namespace zet::test
