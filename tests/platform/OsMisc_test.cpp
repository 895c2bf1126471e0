// The OS layer's random generator, environment, log, and what the platform library
// links: nothing of the desktop, which is loaded only when used.
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <thread>
#include <vector>

#include "TempDir.h"
#include "zet/ZetLog.h"
#include "zet/ZetOs.h"
#include "zet/ZetSetting.h"

namespace zet::test {
namespace {

std::vector<int> Draw(int n) {
  std::vector<int> v;
  for (int i = 0; i < n; ++i) v.push_back(CZetOs::Rand());
  return v;
}

TEST(OsRandom, TheWindowsRuntimeSequencePerThread) {
  const std::vector<int> fromOne = {41, 18467, 6334, 26500, 19169, 15724, 11478, 29358};
  CZetOs::Srand(1);
  EXPECT_EQ(Draw(8), fromOne);
  CZetOs::Srand(5);
  const std::vector<int> fromFive = Draw(4);
  CZetOs::Srand(5);
  EXPECT_EQ(Draw(4), fromFive);
  EXPECT_NE(fromFive, std::vector<int>(fromOne.begin(), fromOne.begin() + 4));
  // A new thread starts from state 1 whatever this one did.
  std::vector<int> other;
  std::thread([&] { other = Draw(8); }).join();
  EXPECT_EQ(other, fromOne);
}

TEST(OsEnvironment, PutEnvFollowsTheRuntimeRules) {
  const struct {
    const char* assignment;
    bool ok;
    const char* name;
    const char* value;  // null: not set afterwards
  } cases[] = {
      {"ZET_OS_T1=abc", true, "ZET_OS_T1", "abc"},
      {"zet_os_t1=low", true, "ZET_OS_T1", "abc"},  // names are case-sensitive
      {"ZET_OS_T1=", true, "ZET_OS_T1", nullptr},   // an empty value removes
      {"ZET_OS_T1=", true, "ZET_OS_T1", nullptr},   // removing an absent one succeeds
      {"ZET_OS_T2=a=b", true, "ZET_OS_T2", "a=b"},  // split at the first '='
      {"=x", false, "", nullptr},
      {"", false, "", nullptr},
      {"NOEQUALS", false, "NOEQUALS", nullptr},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.assignment);
    EXPECT_EQ(CZetOs::PutEnv(c.assignment), c.ok);
    CStdStr value;
    EXPECT_EQ(CZetOs::GetEnv(c.name, &value), c.value != nullptr);
    if (c.value) {
      EXPECT_EQ(value, c.value);
    }
  }
  const CStdStrVector all = CZetOs::GetEnvironment();
  EXPECT_NE(std::find(all.begin(), all.end(), "ZET_OS_T2=a=b"), all.end());
  EXPECT_NE(std::find(all.begin(), all.end(), "zet_os_t1=low"), all.end());
  unsetenv("ZET_OS_T2");
  unsetenv("zet_os_t1");
}

class OsLog : public testing::Test {
 protected:
  void SetUp() override {
    CZetSetting& s = CZetSetting::Inst();
    s.SetLogFile(dir / "sub/app.log");
    CZetLog::Instance().Close();
  }
  void TearDown() override {
    CZetSetting& s = CZetSetting::Inst();
    s.SetLogFile("");
    s.SetLogLevel(CZetLog::kDebug);
    s.SetLogMaxBytes(5u << 20);
    s.SetLogMaxFiles(3);
    CZetLog::Instance().Close();
  }
  CTempDir dir;
};

TEST_F(OsLog, MessagesAreDataAndLevelsFilter) {
  CZetLog& log = CZetLog::Instance();
  EXPECT_EQ(log.FilePath(), dir / "sub/app.log");
  log.Log(CZetLog::kInfo, "hello {} %s %n {0:>99999}");
  log.Log(CZetLog::kDebug, "details");
  log.Log(99, "odd level");
  CZetSetting::Inst().SetLogLevel(CZetLog::kInfo);
  log.Log(CZetLog::kDebug, "hidden");
  const std::string text = ReadFile(dir / "sub/app.log");
  EXPECT_NE(text.find("[info] [" + std::to_string(getpid())), std::string::npos) << text;
  EXPECT_NE(text.find("] hello {} %s %n {0:>99999}\n"), std::string::npos) << text;
  EXPECT_NE(text.find("[debug] "), std::string::npos);
  EXPECT_NE(text.find("odd level"), std::string::npos);
  EXPECT_EQ(text.find("hidden"), std::string::npos);
}

TEST_F(OsLog, RotatesAtTheSettingsSize) {
  CZetSetting::Inst().SetLogMaxBytes(300);
  CZetSetting::Inst().SetLogMaxFiles(1);
  for (int i = 0; i < 20; ++i) CZetLog::Instance().Log(CZetLog::kInfo, "a line of some length");
  EXPECT_TRUE(std::filesystem::exists(dir / "sub/app.1.log"));
  EXPECT_FALSE(std::filesystem::exists(dir / "sub/app.2.log"));
  EXPECT_LE(std::filesystem::file_size(dir / "sub/app.log"), 300u);
}

TEST_F(OsLog, AFileThatCannotBeOpenedLosesTheLineOnly) {
  CZetSetting::Inst().SetLogFile("/proc/zet/cannot/exist.log");
  CZetLog::Instance().Close();
  CZetLog::Instance().Log(CZetLog::kInfo, "lost");
  SUCCEED();
}

// The desktop libraries are opened when first used, never linked: the platform (and
// so the plug-in) loads on a server that has none of them.
TEST(OsDesktop, NotLinked) {
  FILE* p = popen((std::string("readelf -d ") + ZET_TEST_PLATFORM_LIB).c_str(), "r");
  ASSERT_NE(p, nullptr);
  std::string needed;
  for (char line[512]; fgets(line, sizeof line, p);)
    if (std::strstr(line, "(NEEDED)")) needed += line;
  EXPECT_EQ(pclose(p), 0);
  EXPECT_NE(needed.find("libc.so"), std::string::npos) << "readelf gave nothing";
  for (const char* lib : {"libX11", "libcanberra", "libgtk", "libpulse"})
    EXPECT_EQ(needed.find(lib), std::string::npos) << lib;
}

}  // namespace
}  // namespace zet::test
