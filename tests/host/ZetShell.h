// Running the zet binary from host tests. Run and RunZet start a program with an argument
// list, no shell in between on either system: a working folder, a file as standard input
// and standard output captured (standard error joined to it or dropped), then the exit
// status. Shell and Zet are the older POSIX-shell form, for tests about Linux itself.
#pragma once

#if defined(_WIN32)
#ifndef NOMINMAX
#define NOMINMAX
#endif
#include <windows.h>
#else
#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#endif

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <utility>
#include <vector>

#include "TempDir.h"  // ReadFile, WriteFile, CTempDir

#if !defined(_WIN32)
extern char** environ;
#endif

namespace zet::test {

struct SRunOptions {
  std::filesystem::path cwd;    // empty: the test's own working folder
  std::filesystem::path input;  // standard input; empty: none (an empty input)
  bool withErrors = false;      // standard error joins the output; else it is dropped

  SRunOptions& In(const std::filesystem::path& folder) { cwd = folder; return *this; }
  SRunOptions& From(const std::filesystem::path& file) { input = file; return *this; }
  SRunOptions& WithErrors() { withErrors = true; return *this; }
};

#if defined(_WIN32)
// One argument as the C runtime's command-line parser reads it back: quoted, with the
// backslashes before a quote (and before the closing quote) doubled.
inline void AppendQuotedArg(std::string& line, const std::string& arg) {
  line += '"';
  size_t slashes = 0;
  for (char c : arg) {
    if (c == '\\') {
      ++slashes;
      continue;
    }
    line.append(c == '"' ? 2 * slashes + 1 : slashes, '\\');
    slashes = 0;
    line += c;
  }
  line.append(2 * slashes, '\\');
  line += '"';
}
#endif

// The exit status (-1 when the program could not start, or was killed by a signal on
// Linux; a crash on Windows is its exception code) and the captured output.
inline std::pair<int, std::string> Run(const std::string& program,
                                       const std::vector<std::string>& args,
                                       const SRunOptions& opt = {}) {
  std::string out;
#if defined(_WIN32)
  std::string line;
  AppendQuotedArg(line, program);
  for (const std::string& a : args) {
    line += ' ';
    AppendQuotedArg(line, a);
  }
  SECURITY_ATTRIBUTES inherit{sizeof inherit, nullptr, TRUE};
  HANDLE readEnd = nullptr, writeEnd = nullptr;
  if (!CreatePipe(&readEnd, &writeEnd, &inherit, 0)) return {-1, out};
  SetHandleInformation(readEnd, HANDLE_FLAG_INHERIT, 0);
  const std::string input = opt.input.empty() ? "NUL" : opt.input.string();
  HANDLE in = CreateFileA(input.c_str(), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE,
                          &inherit, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
  HANDLE err = opt.withErrors ? writeEnd
                              : CreateFileA("NUL", GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE,
                                            &inherit, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
  STARTUPINFOA si{};
  si.cb = sizeof si;
  si.dwFlags = STARTF_USESTDHANDLES;
  si.hStdInput = in;
  si.hStdOutput = writeEnd;
  si.hStdError = err;
  PROCESS_INFORMATION pi{};
  const std::string cwd = opt.cwd.string();
  const bool started = in != INVALID_HANDLE_VALUE && err != INVALID_HANDLE_VALUE &&
                       CreateProcessA(program.c_str(), line.data(), nullptr, nullptr, TRUE, 0,
                                      nullptr, cwd.empty() ? nullptr : cwd.c_str(), &si, &pi);
  // Only the child holds the pipe's write end now: reading ends when it exits.
  CloseHandle(writeEnd);
  if (in != INVALID_HANDLE_VALUE) CloseHandle(in);
  if (err != writeEnd && err != INVALID_HANDLE_VALUE) CloseHandle(err);
  DWORD code = static_cast<DWORD>(-1);
  if (started) {
    char buf[65536];
    for (DWORD n; ::ReadFile(readEnd, buf, sizeof buf, &n, nullptr) && n > 0;) out.append(buf, n);
    WaitForSingleObject(pi.hProcess, INFINITE);
    GetExitCodeProcess(pi.hProcess, &code);
    CloseHandle(pi.hThread);
    CloseHandle(pi.hProcess);
  }
  CloseHandle(readEnd);
  return {static_cast<int>(code), out};
#else
  std::vector<std::string> argStore{program};
  argStore.insert(argStore.end(), args.begin(), args.end());
  std::vector<char*> argv;
  for (std::string& a : argStore) argv.push_back(a.data());
  argv.push_back(nullptr);
  int pipeFds[2];
  if (pipe2(pipeFds, O_CLOEXEC) != 0) return {-1, out};
  // Standard input is opened before the change of folder: a relative name is the test's.
  const std::string input = opt.input.empty() ? "/dev/null" : opt.input.string();
  const std::string cwd = opt.cwd.string();
  posix_spawn_file_actions_t fa;
  posix_spawn_file_actions_init(&fa);
  posix_spawn_file_actions_addopen(&fa, 0, input.c_str(), O_RDONLY, 0);
  posix_spawn_file_actions_adddup2(&fa, pipeFds[1], 1);
  if (opt.withErrors)
    posix_spawn_file_actions_adddup2(&fa, pipeFds[1], 2);
  else
    posix_spawn_file_actions_addopen(&fa, 2, "/dev/null", O_WRONLY, 0);
  if (!cwd.empty()) posix_spawn_file_actions_addchdir_np(&fa, cwd.c_str());
  pid_t pid = -1;
  const int spawned = posix_spawn(&pid, program.c_str(), &fa, nullptr, argv.data(), environ);
  posix_spawn_file_actions_destroy(&fa);
  close(pipeFds[1]);
  int status = -1;
  if (spawned == 0) {
    char buf[65536];
    for (ssize_t n; (n = read(pipeFds[0], buf, sizeof buf)) != 0;) {
      if (n > 0)
        out.append(buf, static_cast<size_t>(n));
      else if (errno != EINTR)
        break;
    }
    while (waitpid(pid, &status, 0) < 0 && errno == EINTR) {
    }
  }
  close(pipeFds[0]);
  // A child that could not open its input or folder ends with 127.
  return {spawned == 0 && WIFEXITED(status) ? WEXITSTATUS(status) : -1, out};
#endif
}

// zet with the plug-in of this build, then `args`.
inline std::pair<int, std::string> RunZet(const std::vector<std::string>& args,
                                          const SRunOptions& opt = {}) {
  std::vector<std::string> all{"--plugin", ZET_TEST_PLUGIN};
  all.insert(all.end(), args.begin(), args.end());
  return Run(ZET_TEST_ZET, all, opt);
}

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
