// The zet binary as tools outside the project use it: golden JSON-Lines sessions,
// the catalogue kept in sync with docs/, and the command-line exit codes.
#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "ZetShell.h"

namespace {

namespace fs = std::filesystem;
using zet::test::ReadFile;
using zet::test::RunZet;
using zet::test::SRunOptions;

// Each sessions/NAME.in.jsonl is fed to `zet exec` (on standard input, then as FILE);
// the answer must equal NAME.out.jsonl byte for byte. ZET_UPDATE_GOLDEN=1 rewrites the
// answers.
TEST(ZetCli, GoldenSessions) {
  const fs::path dir = fs::path(ZET_TEST_SOURCE_DIR) / "tests/host/sessions";
  int sessions = 0;
  for (const auto& entry : fs::directory_iterator(dir)) {
    const std::string name = entry.path().filename().string();
    if (!name.ends_with(".in.jsonl")) continue;
    ++sessions;
    SCOPED_TRACE(name);
    const fs::path expected = dir / (name.substr(0, name.size() - 9) + ".out.jsonl");
    // Run inside the session folder so that relative image paths resolve there.
    const auto [rc, out] = RunZet({"exec"}, SRunOptions().In(dir).From(entry.path()));
    EXPECT_EQ(rc, 0);
    if (std::getenv("ZET_UPDATE_GOLDEN")) std::ofstream(expected, std::ios::binary) << out;
    EXPECT_EQ(out, ReadFile(expected));  // a multi-line mismatch prints as a diff
    // The same requests from a file named on the command line.
    const auto [fileRc, fromFile] = RunZet({"exec", entry.path().string()}, SRunOptions().In(dir));
    EXPECT_EQ(fileRc, 0);
    EXPECT_EQ(fromFile, out);
  }
  EXPECT_GT(sessions, 0);
}

TEST(ZetCli, CatalogueDocIsInSync) {
  const auto [rc, out] = RunZet({"catalog", "--format", "markdown"});
  ASSERT_EQ(rc, 0);
  const fs::path doc = fs::path(ZET_TEST_SOURCE_DIR) / "docs/catalogue.md";
  if (std::getenv("ZET_UPDATE_GOLDEN")) std::ofstream(doc, std::ios::binary) << out;
  EXPECT_EQ(ReadFile(doc), out)
      << "docs/catalogue.md is stale: regenerate it with zet catalog --format markdown";
}

TEST(ZetCli, CommandsAndExitCodes) {
  struct {
    std::vector<std::string> args;
    int rc;
    const char* contains;
  } cases[] = {
      {{"list"}, 0, "1\t460109\t_Zet_Numeric_Set_\tNumeric\tSetNumber\n"},
      {{"describe", "Divide"}, 0, "_Zet_Numeric_DivideNumbers_"},
      {{"describe", "7"}, 0, "`Divide`"},
      {{"describe", "NoSuch"}, 2, ""},
      {{"catalog"}, 0, "\"info\": \"Formula Library\\nThis is the very first version of it\""},
      {{"bogus"}, 2, ""},
      {{}, 2, ""},
      {{"--angle-unit", "grads", "list"}, 2, ""},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(testing::PrintToString(c.args));
    const auto [rc, out] = RunZet(c.args);
    EXPECT_EQ(rc, c.rc);
    EXPECT_NE(out.find(c.contains), std::string::npos) << out.substr(0, 300);
  }
  const auto [badRc, badOut] =
      zet::test::Run(ZET_TEST_ZET, {"--plugin", "/nonexistent.so", "list"}, SRunOptions().WithErrors());
  EXPECT_NE(badRc, 0);
  EXPECT_NE(badOut.find("cannot load plug-in"), std::string::npos);
}

// The colour types spread rows over OpenMP workers, which are still parked when zet
// unloads the plug-in on its way out: the process must end cleanly, every time.
TEST(ZetCli, ParallelColourTypesExitCleanly) {
  const fs::path dir = fs::path(::testing::TempDir()) / ("zet_parallel_" + std::to_string(getpid()));
  fs::create_directories(dir);
  std::string pgm = "P5\n200 160\n255\n";  // 100 x 80 output pixels, above 4096
  for (int i = 0; i < 200 * 160; ++i) pgm += static_cast<char>(i * 7 % 251);
  std::ofstream(dir / "frame.pgm", std::ios::binary) << pgm;
  std::ofstream requests(dir / "requests.jsonl");
  for (int type : {9, 10})
    requests << R"({"instr": "ProcessPolarizedImage", "params": [)" << type
             << R"(], "inputs": [{"file": "frame.pgm"}]})" << '\n';
  requests.close();
  // Fewer runs on Windows: every start costs about half a second under Wine.
#if defined(_WIN32)
  constexpr int kRuns = 5;
#else
  constexpr int kRuns = 20;
#endif
  for (int run = 0; run < kRuns; ++run) {
    const auto [rc, out] = RunZet({"exec"}, SRunOptions().In(dir).From(dir / "requests.jsonl"));
    ASSERT_EQ(rc, 0) << "run " << run << ": " << out;
    const std::string ok = R"({"status":0,"outputs":[{"width":100,"height":80,"attr":32)";
    ASSERT_EQ(out.find(ok), 0u) << out;
    ASSERT_NE(out.find('\n' + ok), std::string::npos) << out;
  }
  fs::remove_all(dir);
}

}  // namespace
