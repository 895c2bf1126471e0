// The desktop parts on a real X server: a private Xvfb started for this suite, keys
// pressed with xdotool (through XTEST, as a keyboard would) and message boxes answered
// with xdotool's keys. Without Xvfb, xdotool or zenity the tests are skipped.
#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <spawn.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <future>
#include <string>
#include <thread>
#include <vector>

#include "Harness.h"
#include "system/Options.h"
#include "zet/ZetSetting.h"

extern char** environ;

namespace zet::test {
namespace {

// Starts `args` (looked up in PATH, no shell) with its standard output on a pipe
// when `out` is given; returns the pid or -1.
pid_t Spawn(const std::vector<std::string>& args, int* out) {
  int fds[2] = {-1, -1};
  if (out && pipe2(fds, O_CLOEXEC) != 0) return -1;
  std::vector<char*> argv;
  for (const std::string& a : args) argv.push_back(const_cast<char*>(a.c_str()));
  argv.push_back(nullptr);
  posix_spawn_file_actions_t fa;
  posix_spawn_file_actions_init(&fa);
  posix_spawn_file_actions_addopen(&fa, 0, "/dev/null", O_RDONLY, 0);
  posix_spawn_file_actions_addopen(&fa, 2, "/dev/null", O_WRONLY, 0);
  if (out) posix_spawn_file_actions_adddup2(&fa, fds[1], 1);
  pid_t pid = -1;
  const int rc = posix_spawnp(&pid, argv[0], &fa, nullptr, argv.data(), environ);
  posix_spawn_file_actions_destroy(&fa);
  if (out) {
    close(fds[1]);
    *out = fds[0];
  }
  if (rc != 0) {
    if (out) close(fds[0]);
    return -1;
  }
  return pid;
}

// Starts the X server with `ready` as its fd 3. The server is bound to this process's
// life: a test run killed mid-way takes its server with it instead of leaving it behind.
pid_t SpawnServer(const std::vector<std::string>& args, int ready) {
  std::vector<char*> argv;
  for (const std::string& a : args) argv.push_back(const_cast<char*>(a.c_str()));
  argv.push_back(nullptr);
  const pid_t parent = getpid();
  const pid_t pid = fork();
  if (pid != 0) return pid;
  // The child runs only async-signal-safe calls up to exec.
  if (prctl(PR_SET_PDEATHSIG, SIGTERM) != 0 || getppid() != parent) _exit(127);
  const int null = open("/dev/null", O_RDWR);
  if (null < 0 || dup2(null, 0) < 0 || dup2(null, 1) < 0 || dup2(null, 2) < 0) _exit(127);
  // dup2 onto itself would keep close-on-exec.
  if (ready == 3 ? fcntl(3, F_SETFD, 0) < 0 : dup2(ready, 3) < 0) _exit(127);
  execvp(argv[0], argv.data());
  _exit(127);
}

// Runs a program to its end: its exit status (-1 when it could not run) and output.
int RunProgram(const std::vector<std::string>& args, std::string* text = nullptr) {
  int fd = -1;
  const pid_t pid = Spawn(args, &fd);
  if (pid < 0) return -1;
  char buf[256];
  for (ssize_t n; (n = read(fd, buf, sizeof buf)) != 0;) {
    if (n < 0 && errno == EINTR) continue;
    if (n < 0) break;
    if (text) text->append(buf, static_cast<size_t>(n));
  }
  close(fd);
  int status = 0;
  while (waitpid(pid, &status, 0) < 0 && errno == EINTR) {
  }
  return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

bool Installed(const char* program) {
  return RunProgram({"sh", "-c", "command -v \"$0\"", program}) == 0; }

class Desktop : public testing::Test {
 protected:
  // One Xvfb for the suite; it tells its display number on fd 3 when it is ready. A
  // server resets when its last client leaves and refuses connections meanwhile: a
  // desktop always has clients, so this one is told not to.
  static void SetUpTestSuite() {
    if (!Installed("Xvfb") || !Installed("xdotool")) return;
    int ready[2];
    if (pipe2(ready, O_CLOEXEC) != 0) return;
    s_server = SpawnServer({"Xvfb", "-displayfd", "3", "-noreset", "-nolisten", "tcp", "-screen",
                            "0", "800x600x24"},
                           ready[1]);
    close(ready[1]);
    std::string number;
    pollfd p{ready[0], POLLIN, 0};
    char buf[32];
    ssize_t n;
    while (s_server > 0 && poll(&p, 1, 15000) > 0 && (n = read(ready[0], buf, sizeof buf)) > 0) {
      number.append(buf, static_cast<size_t>(n));
      if (number.back() == '\n') break;
    }
    close(ready[0]);
    if (!number.empty() && number.back() == '\n') s_display = ":" + number.substr(0, number.size() - 1);
  }
  static void TearDownTestSuite() {
    if (s_server > 0) {
      kill(s_server, SIGTERM);
      waitpid(s_server, nullptr, 0);
    }
    s_server = -1;
    s_display.clear();
  }

  void SetUp() override {
    if (s_display.empty()) GTEST_SKIP() << "no Xvfb or xdotool";
    if (const char* d = std::getenv("DISPLAY")) m_saved = d;
    setenv("DISPLAY", s_display.c_str(), 1);
  }
  void TearDown() override {
    if (s_display.empty()) return;
    if (m_saved.empty()) {
      unsetenv("DISPLAY");
    } else {
      setenv("DISPLAY", m_saved.c_str(), 1);
    }
  }

  static inline pid_t s_server = -1;
  static inline std::string s_display;
  std::string m_saved;
};

struct SKeys {
  bool one;  // Test one key (number) of the code asked
  bool oneText;
  bool any;
  double anyCode;
};

SKeys Query(int code) {
  const CRun any = Exec("Test any key", {});
  return {Exec("Test one key (number)", {V(static_cast<double>(code))}).Out(0).AsBool(),
          Exec("Test one key (string)", {V(std::to_string(code))}).Out(0).AsBool(),
          any.Out(0).AsBool(), any.Out(1).AsDouble()};
}

// Keys pressed with xdotool for the life of the object, then released.
class CHeldKeys {
 public:
  explicit CHeldKeys(const std::vector<std::string>& keys) : m_keys(keys) { Send("keydown"); }
  ~CHeldKeys() { Send("keyup"); }
  CHeldKeys(const CHeldKeys&) = delete;
  CHeldKeys& operator=(const CHeldKeys&) = delete;

 private:
  void Send(const char* action) {
    if (m_keys.empty()) return;
    std::vector<std::string> args = {"xdotool", action};
    args.insert(args.end(), m_keys.begin(), m_keys.end());
    EXPECT_EQ(RunProgram(args), 0) << action;
  }
  std::vector<std::string> m_keys;
};

TEST_F(Desktop, KeysHeldDown) {
  const struct {
    std::vector<std::string> held;  // xdotool's key names
    int code;                       // asked of the single-key tests
    SKeys expected;
  } cases[] = {
      {{}, 65, {false, false, false, 0}},
      {{"a"}, 65, {true, true, true, 65}},
      {{"a"}, 66, {false, false, true, 65}},
      {{"shift", "a"}, 65, {true, true, true, 16}},  // the lowest code wins
      {{"shift"}, 160, {true, true, true, 16}},      // the left shift by its own code too
      {{"shift"}, 161, {false, false, true, 16}},
      {{"ctrl", "z"}, 162, {true, true, true, 17}},
      {{"5"}, 0x35, {true, true, true, 0x35}},       // digits are their characters
      {{"F1"}, 0x70, {true, true, true, 0x70}},
      {{"space"}, 32, {true, true, true, 32}},
      {{"Return"}, 13, {true, true, true, 13}},
  };
  for (const auto& c : cases) {
    std::string trace = "ask " + std::to_string(c.code) + " holding";
    for (const std::string& k : c.held) trace += " " + k;
    SCOPED_TRACE(trace);
    CHeldKeys hold(c.held);
    const SKeys k = Query(c.code);
    EXPECT_EQ(k.one, c.expected.one);
    EXPECT_EQ(k.oneText, c.expected.oneText);
    EXPECT_EQ(k.any, c.expected.any);
    EXPECT_EQ(k.anyCode, c.expected.anyCode);
  }
}

// The box is found by its caption (the prefix and the title), given the keyboard
// focus and answered with a key: Return presses the default button, Escape closes it.
TEST_F(Desktop, MessageBoxesAnswerWithTheButtonPressed) {
  if (!Installed("zenity")) GTEST_SKIP() << "no zenity";
  unsetenv("WAYLAND_DISPLAY");
  setenv("XDG_CURRENT_DESKTOP", "GNOME", 1);  // zenity even where kdialog is installed
  CZetSetting& settings = CZetSetting::Inst();
  const int savedTimeout = settings.GetMessageBoxTimeout();
  settings.SetMessageBoxTimeout(60000);  // a lost box must not hang the suite
  const struct {
    int buttons, icon, defaultButton;
    const char* key;
    double answer;
  } cases[] = {
      {0, 64, 0, "Return", 1},      // OK
      {4, 32, 0, "Return", 6},      // Yes / No, Question: Yes
      {4, 32, 256, "Return", 7},    // Yes / No, the second button as default: No
      {2, 16, 512, "Return", 5},    // Abort / Retry / Ignore: Ignore
      {1, 64, 0, "Escape", 2},      // OK / Cancel closed: Cancel
      {4, 32, 0, "Escape", 0},      // Yes / No cannot be closed without an answer
  };
  int n = 0;
  for (const auto& c : cases) {
    const std::string title = "Desktop box " + std::to_string(++n);
    SCOPED_TRACE(title);
    auto answer = std::async(std::launch::async, [&] {
      return Exec("Message Box ", {V(title), V("Line one\nline <b>two</b> & 100%s")},
                  Params({V(c.buttons), V(c.icon), V(c.defaultButton)}));
    });
    // Found by its caption; a box that ended by itself is shown by its answer.
    std::string window;
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(30);
    while (window.empty() && std::chrono::steady_clock::now() < deadline &&
           answer.wait_for(std::chrono::milliseconds(100)) != std::future_status::ready) {
      if (RunProgram({"xdotool", "search", "--onlyvisible", "--name", "^Quorvix - " + title + "$"},
                     &window) != 0)
        window.clear();
    }
    if (window.empty()) {
      ADD_FAILURE() << "the box did not appear";
      if (answer.wait_for(std::chrono::seconds(35)) == std::future_status::ready)
        ADD_FAILURE() << "it answered " << answer.get().Out(0).AsDouble();
      continue;
    }
    window = window.substr(0, window.find('\n'));
    // A key that reaches the box before it is ready for it is pressed again.
    for (int tries = 0; tries < 4; ++tries) {
      std::this_thread::sleep_for(std::chrono::milliseconds(300));
      RunProgram({"xdotool", "windowfocus", "--sync", window, "key", c.key});
      if (answer.wait_for(std::chrono::seconds(10)) == std::future_status::ready) break;
    }
    const CRun r = answer.get();
    EXPECT_EQ(r.status, kOk);
    EXPECT_EQ(r.Out(0).AsDouble(), c.answer);
  }
  settings.SetMessageBoxTimeout(savedTimeout);
}

}  // namespace
}  // namespace zet::test
