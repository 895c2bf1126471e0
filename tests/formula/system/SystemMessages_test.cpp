// Random numbers, program events, the log, sounds, and the message box where there is
// no display. (Dialogs and keys on a display: Desktop_test.cpp.)
#include <cmath>
#include <cstdlib>
#include <thread>

#include "Harness.h"
#include "system/Options.h"
#include "TempDir.h"
#include "zet/ZetLog.h"
#include "zet/ZetSetting.h"

namespace zet::test {
namespace {

double Random() { return Exec("Random", {}).Out(0).AsDouble(); }
void Seed(int seed) { EXPECT_EQ(Exec("Random Seed", {}, Params({V(seed)})).status, kOk); }

TEST(SystemRandom, TheRuntimeSequenceOnAGridOf32768) {
  Seed(1);
  for (int value : {41, 18467, 6334, 26500, 19169}) EXPECT_EQ(Random(), value / 32768.0);
  Seed(5);
  const double a = Random(), b = Random();
  Seed(5);
  EXPECT_EQ(Random(), a);
  Seed(0);  // ignored: the sequence goes on
  EXPECT_EQ(Random(), b);
  for (int i = 0; i < 1000; ++i) {
    const double r = Random();
    ASSERT_TRUE(r >= 0.0 && r < 1.0 && r * 32768.0 == std::floor(r * 32768.0)) << r;
  }
}

TEST(SystemRandom, SeedsBelongToTheirThread) {
  Seed(1);
  std::thread([] { Seed(5); }).join();
  EXPECT_EQ(Random(), 41 / 32768.0);
  double first = 0;
  std::thread([&] { first = Random(); }).join();  // a new thread starts as after seed 1
  EXPECT_EQ(first, 41 / 32768.0);
}

TEST(SystemEvents, PostEvent45WithTheId) {
  for (int id : {0, 77, -1, INT32_MAX, INT32_MIN}) {
    const CRun r = Exec("Generate Engine Control Event ", {}, Params({V(id)}));
    ASSERT_EQ(r.events.size(), 1u);
    EXPECT_EQ(r.events[0].code, 45);
    EXPECT_EQ(r.events[0].value, id);
  }
}

// The log's file in a temporary folder; messages are written as they stand.
TEST(SystemLog, MessagesReachTheLogFile) {
  CTempDir dir;
  CZetSetting::Inst().SetLogFile(dir / "test.log");
  CZetLog::Instance().Close();
  const std::string long_(50000, 'a');
  const struct {
    int level;
    std::string message;
    const char* line;  // what the line holds after the time and process
  } cases[] = {
      {2, "plain", "[info] "},  {1, "%s%n{}{:>999999}", "[debug] "},
      {7, long_, "[info] "},    {-5, std::string("cut\0here", 8), "[info] "},
  };
  for (const auto& c : cases) EXPECT_EQ(Exec("Log ", {V(c.message)}, Params({V(c.level)})).status, kOk);
  CZetSetting::Inst().SetLogFile("");
  CZetLog::Instance().Close();
  const std::string text = ReadFile(dir / "test.log");
  for (const auto& c : cases) {
    const std::string message = c.message.c_str();  // the text ends at a zero byte
    EXPECT_NE(text.find(std::string(c.line) + "[" + std::to_string(getpid())), std::string::npos);
    EXPECT_NE(text.find("] " + message + "\n"), std::string::npos) << message.substr(0, 40);
  }
  EXPECT_EQ(text.find("here"), std::string::npos);
}

// Without a sound device (or without libcanberra) the sounds are not heard; the
// instructions return at once whatever the system does, even when called in a burst.
TEST(SystemSound, BeepsReturn) {
  for (int i = 0; i < 50; ++i) EXPECT_EQ(Exec("Beep", {}).status, kOk);
  for (int type : {0, 16, 32, 48, 64, 128, -1, 12345})
    EXPECT_EQ(Exec("Message Beep ", {}, Params({V(type)})).status, kOk) << type;
}

// With no display a box cannot be shown: 0 at once.
TEST(SystemMessageBox, NoDisplayAnswersZero) {
  const char* display = std::getenv("DISPLAY");
  const std::string saved = display ? display : "";
  unsetenv("WAYLAND_DISPLAY");
  for (const char* value : {"", ":59999"}) {  // none, and one nobody serves
    setenv("DISPLAY", value, 1);
    for (int buttons : {0, 4, 15}) {
      const CRun r = Exec("Message Box ", {}, Params({V(buttons), V(32), V(256)}));
      EXPECT_EQ(r.status, kOk);
      EXPECT_EQ(r.Out(0).AsDouble(), 0.0) << value << " " << buttons;
    }
  }
  if (display) {
    setenv("DISPLAY", saved.c_str(), 1);
  } else {
    unsetenv("DISPLAY");
  }
}

}  // namespace
}  // namespace zet::test
