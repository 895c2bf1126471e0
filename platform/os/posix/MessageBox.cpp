// Message boxes shown by the desktop's dialog program (zenity, or kdialog on a KDE
// desktop), started as a child process with an argument vector (never a shell) and
// waited for, as MessageBoxA waits.
//
// Decisions where the programs differ from the Windows box:
// - Labels are the English ones of the Windows box, with the same access keys.
// - zenity gives the keyboard focus to its first button, so the default button is
//   shown first and the others follow in their Windows order.
// - Closing the box without a button (Escape, the window's close button) answers
//   Cancel in a set that has one and OK in the OK box; Yes/No and Abort/Retry/Ignore,
//   which Windows does not let close, then answer 0 (no answer).
// - kdialog has fixed button kinds: its labels are set, but its default button and the
//   answer to closing are its own.
// - The box is not modal to the host's windows, whose handles the library never has.
// - With no display, no dialog program, an unknown button set, or no answer within the
//   settings' message box timeout (the program is then ended), the answer is 0.
#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <spawn.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <string>
#include <vector>

#include "os/posix/Posix.h"
#include "zet/ZetOs.h"
#include "zet/ZetSetting.h"

extern char** environ;

namespace {

enum : int {
  kIdOk = 1, kIdCancel = 2, kIdAbort = 3, kIdRetry = 4, kIdIgnore = 5, kIdYes = 6, kIdNo = 7,
  kIdTryAgain = 10, kIdContinue = 11,
};

struct SButton {
  const char* label;  // '_' marks the access key
  int id;
};

// What a box shows, decoded from its Windows style.
struct SBox {
  std::vector<SButton> buttons;  // in Windows order
  size_t defaultButton = 0;
  int closedAnswer = 0;
  unsigned icon = 0;  // 16 error, 32 question, 48 warning, 64 information
  std::string title, text;  // UTF-8
};

bool Decode(unsigned style, SBox* box) {
  const SButton ok{"OK", kIdOk}, cancel{"Cancel", kIdCancel}, abort{"_Abort", kIdAbort},
      retry{"_Retry", kIdRetry}, ignore{"_Ignore", kIdIgnore}, yes{"_Yes", kIdYes},
      no{"_No", kIdNo}, tryAgain{"_Try Again", kIdTryAgain}, cont{"_Continue", kIdContinue};
  switch (style & 0xF) {
    case 0: box->buttons = {ok}; break;
    case 1: box->buttons = {ok, cancel}; break;
    case 2: box->buttons = {abort, retry, ignore}; break;
    case 3: box->buttons = {yes, no, cancel}; break;
    case 4: box->buttons = {yes, no}; break;
    case 5: box->buttons = {retry, cancel}; break;
    case 6: box->buttons = {cancel, tryAgain, cont}; break;
    default: return false;
  }
  box->defaultButton = (style >> 8) & 0xF;
  if (box->defaultButton >= box->buttons.size()) box->defaultButton = 0;
  box->closedAnswer = (style & 0xF) == 0 ? kIdOk : 0;
  for (const SButton& b : box->buttons)
    if (b.id == kIdCancel) box->closedAnswer = kIdCancel;
  box->icon = style & 0xF0;
  return true;
}

const char* IconName(unsigned icon) {
  switch (icon) {
    case 16: return "dialog-error";
    case 32: return "dialog-question";
    case 48: return "dialog-warning";
    case 64: return "dialog-information";
    default: return "";
  }
}

// ---- zenity: a question box with its own buttons only (--switch) ----

std::vector<std::string> ZenityArgs(const SBox& box) {
  std::vector<std::string> args = {"zenity", "--question", "--switch", "--no-markup",
                                   "--title=" + box.title, "--text=" + box.text,
                                   std::string("--icon-name=") + IconName(box.icon)};
  args.push_back(std::string("--extra-button=") + box.buttons[box.defaultButton].label);
  for (size_t i = 0; i < box.buttons.size(); ++i)
    if (i != box.defaultButton) args.push_back(std::string("--extra-button=") + box.buttons[i].label);
  return args;
}

// zenity prints the label of the button pressed and exits with 1; closed, it prints
// nothing and exits with 1.
int ZenityAnswer(const SBox& box, int status, const std::string& out) {
  if (status != 1) return 0;
  std::string label = out;
  while (!label.empty() && (label.back() == '\n' || label.back() == '\r')) label.pop_back();
  if (label.empty()) return box.closedAnswer;
  for (const SButton& b : box.buttons)
    if (label == b.label) return b.id;
  return 0;
}

// ---- kdialog: its message boxes with our labels ----

std::string Plain(const char* label) {
  std::string s;
  for (const char* p = label; *p; ++p)
    if (*p != '_') s += *p;
  return s;
}

// Qt shows the text as rich text when it looks like markup: give it escaped rich text.
std::string RichText(const std::string& text) {
  std::string s = "<qt>";
  for (char c : text) {
    switch (c) {
      case '<': s += "&lt;"; break;
      case '>': s += "&gt;"; break;
      case '&': s += "&amp;"; break;
      case '\n': s += "<br>"; break;
      default: s += c;
    }
  }
  return s + "</qt>";
}

std::vector<std::string> KdialogArgs(const SBox& box) {
  const bool warn = box.icon == 16 || box.icon == 48;
  const std::vector<SButton>& b = box.buttons;
  std::vector<std::string> args = {"kdialog", "--title", box.title};
  if (b.size() == 1) {
    args.push_back(box.icon == 16 ? "--error" : warn ? "--sorry" : "--msgbox");
    args.push_back(RichText(box.text));
    return args;
  }
  if (b.size() == 2 && b[1].id == kIdCancel) {
    args.insert(args.end(), {"--warningcontinuecancel", RichText(box.text), "--continue-label",
                             Plain(b[0].label), "--cancel-label", Plain(b[1].label)});
    return args;
  }
  args.push_back(b.size() == 2 ? (warn ? "--warningyesno" : "--yesno")
                               : (warn ? "--warningyesnocancel" : "--yesnocancel"));
  args.insert(args.end(), {RichText(box.text), "--yes-label", Plain(b[0].label), "--no-label",
                           Plain(b[1].label)});
  if (b.size() == 3) args.insert(args.end(), {"--cancel-label", Plain(b[2].label)});
  return args;
}

// kdialog exits with 0 for its first button, 1 for its second and 2 for the third
// (its cancel); the continue/cancel box with 0 and 2.
int KdialogAnswer(const SBox& box, int status, const std::string&) {
  const std::vector<SButton>& b = box.buttons;
  if (b.size() == 1) return status >= 0 && status <= 2 ? b[0].id : 0;
  if (b.size() == 2 && b[1].id == kIdCancel) return status == 0 ? b[0].id : status == 2 ? b[1].id : 0;
  if (status >= 0 && static_cast<size_t>(status) < b.size()) return b[static_cast<size_t>(status)].id;
  return 0;
}

// ---- the child process ----

std::string FindProgram(const char* name) {
  const std::string path = zet::os::GetEnvString("PATH");
  size_t start = 0;
  while (start <= path.size()) {
    size_t end = path.find(':', start);
    if (end == std::string::npos) end = path.size();
    const std::string dir = end > start ? path.substr(start, end - start) : ".";
    const std::string candidate = dir + "/" + name;
    struct stat st {};
    if (stat(candidate.c_str(), &st) == 0 && S_ISREG(st.st_mode) &&
        access(candidate.c_str(), X_OK) == 0)
      return candidate;
    start = end + 1;
  }
  return "";
}

// Runs `program` with `args` (args[0] its name), standard output collected, standard
// input and error on /dev/null. Returns the exit status, or -1 when it could not run,
// was killed, or outlived `timeoutMs` (> 0), after which it is ended.
int Run(const std::string& program, const std::vector<std::string>& args, int timeoutMs,
        std::string* out) {
  int fds[2];
  if (pipe2(fds, O_CLOEXEC) != 0) return -1;
  std::vector<char*> argv;
  for (const std::string& a : args) argv.push_back(const_cast<char*>(a.c_str()));
  argv.push_back(nullptr);
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_addopen(&actions, 0, "/dev/null", O_RDONLY, 0);
  posix_spawn_file_actions_adddup2(&actions, fds[1], 1);
  posix_spawn_file_actions_addopen(&actions, 2, "/dev/null", O_WRONLY, 0);
  posix_spawn_file_actions_addclosefrom_np(&actions, 3);
  posix_spawnattr_t attr;
  posix_spawnattr_init(&attr);
  sigset_t none, all;
  sigemptyset(&none);
  sigfillset(&all);
  posix_spawnattr_setsigmask(&attr, &none);
  posix_spawnattr_setsigdefault(&attr, &all);
  posix_spawnattr_setflags(&attr, POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF);
  pid_t pid = -1;
  int spawned;
  {
    std::lock_guard<std::mutex> hold(zet::os::EnvironmentLock());
    spawned = posix_spawn(&pid, program.c_str(), &actions, &attr, argv.data(), environ);
  }
  posix_spawn_file_actions_destroy(&actions);
  posix_spawnattr_destroy(&attr);
  close(fds[1]);
  if (spawned != 0) {
    close(fds[0]);
    return -1;
  }
  using Clock = std::chrono::steady_clock;
  const Clock::time_point deadline = Clock::now() + std::chrono::milliseconds(timeoutMs);
  bool timedOut = false;
  for (;;) {
    int wait = -1;
    if (timeoutMs > 0) {
      const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(deadline - Clock::now());
      if (left.count() <= 0) {
        timedOut = true;
        break;
      }
      wait = static_cast<int>(left.count());
    }
    pollfd p{fds[0], POLLIN, 0};
    const int r = poll(&p, 1, wait);
    if (r < 0 && errno == EINTR) continue;
    if (r <= 0) continue;  // the deadline is checked above
    char buf[256];
    const ssize_t n = read(fds[0], buf, sizeof buf);
    if (n < 0 && errno == EINTR) continue;
    if (n <= 0) break;  // end of output: the program is ending
    if (out->size() < 4096) out->append(buf, static_cast<size_t>(n));
  }
  close(fds[0]);
  if (timedOut) kill(pid, SIGKILL);
  int status = 0;
  while (waitpid(pid, &status, 0) < 0 && errno == EINTR) {
  }
  if (timedOut || !WIFEXITED(status)) return -1;
  return WEXITSTATUS(status);
}

bool KdeDesktop() {
  return zet::os::GetEnvString("XDG_CURRENT_DESKTOP").find("KDE") != std::string::npos;
}

bool HaveDisplay() {
  if (!zet::os::GetEnvString("WAYLAND_DISPLAY").empty()) return true;
  return !zet::os::GetEnvString("DISPLAY").empty() && zet::os::X11DisplayAvailable();
}

}  // namespace

int CZetOs::ShowMessageBox(const char* text, const char* caption, unsigned style) {
  SBox box;
  if (!Decode(style, &box) || !HaveDisplay()) return 0;
  box.title = zet::os::Cp1252ToUtf8(caption ? caption : "");
  box.text = zet::os::Cp1252ToUtf8(text ? text : "");
  std::string zenity = FindProgram("zenity"), kdialog = FindProgram("kdialog");
  const bool useKdialog = !kdialog.empty() && (zenity.empty() || KdeDesktop());
  if (!useKdialog && zenity.empty()) return 0;
  const int timeout = CZetSetting::Inst().GetMessageBoxTimeout();
  std::string out;
  if (useKdialog) return KdialogAnswer(box, Run(kdialog, KdialogArgs(box), timeout, &out), out);
  return ZenityAnswer(box, Run(zenity, ZenityArgs(box), timeout, &out), out);
}
