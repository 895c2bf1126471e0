// The zet binary as tools outside the project use it: golden JSON-Lines sessions,
// the catalogue kept in sync with docs/, and the command-line exit codes.
#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>

namespace {

namespace fs = std::filesystem;

struct SResult {
  int rc;
  std::string out;
};

SResult Shell(const std::string& cmd) {
  SResult r{-1, ""};
  FILE* p = popen(cmd.c_str(), "r");
  if (!p) return r;
  char buf[65536];
  size_t n;
  while ((n = fread(buf, 1, sizeof buf, p)) > 0) r.out.append(buf, n);
  const int status = pclose(p);
  r.rc = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
  return r;
}

std::string Zet(const std::string& args) {
  return std::string(ZET_TEST_ZET) + " --plugin " + ZET_TEST_PLUGIN + " " + args;
}

std::string ReadFile(const fs::path& p) {
  std::ifstream in(p, std::ios::binary);
  std::stringstream ss;
  ss << in.rdbuf();
  return ss.str();
}

// Each sessions/NAME.in.jsonl is fed to `zet exec`; the answer must equal
// NAME.out.jsonl byte for byte. ZET_UPDATE_GOLDEN=1 rewrites the answers.
TEST(ZetCli, GoldenSessions) {
  const fs::path dir = fs::path(ZET_TEST_SOURCE_DIR) / "tests/host/sessions";
  int sessions = 0;
  for (const auto& entry : fs::directory_iterator(dir)) {
    const std::string name = entry.path().filename().string();
    if (name.size() < 9 || name.substr(name.size() - 9) != ".in.jsonl") continue;
    ++sessions;
    SCOPED_TRACE(name);
    const fs::path expected = dir / (name.substr(0, name.size() - 9) + ".out.jsonl");
    // Run inside the session folder so that relative image paths resolve there.
    const SResult r = Shell("cd '" + dir.string() + "' && " + Zet("exec") + " < '" +
                            entry.path().string() + "'");
    EXPECT_EQ(r.rc, 0);
    if (std::getenv("ZET_UPDATE_GOLDEN")) {
      std::ofstream(expected, std::ios::binary) << r.out;
      continue;
    }
    std::istringstream got(r.out), want(ReadFile(expected));
    std::string g, w;
    int line = 0;
    while (std::getline(want, w)) {
      ++line;
      ASSERT_TRUE(std::getline(got, g)) << "missing response " << line;
      EXPECT_EQ(g, w) << "response " << line;
    }
    EXPECT_FALSE(std::getline(got, g)) << "extra response: " << g;
  }
  EXPECT_GT(sessions, 0);
}

TEST(ZetCli, CatalogueDocIsInSync) {
  const SResult r = Shell(Zet("catalog --format markdown"));
  ASSERT_EQ(r.rc, 0);
  const fs::path doc = fs::path(ZET_TEST_SOURCE_DIR) / "docs/catalogue.md";
  if (std::getenv("ZET_UPDATE_GOLDEN")) std::ofstream(doc, std::ios::binary) << r.out;
  EXPECT_EQ(ReadFile(doc), r.out)
      << "docs/catalogue.md is stale: regenerate it with zet catalog --format markdown";
}

TEST(ZetCli, CommandsAndExitCodes) {
  struct {
    const char* args;
    int rc;
    const char* contains;
  } cases[] = {
      {"list", 0, "1\t460109\t_Zet_Numeric_Set_\tNumeric\tSetNumber\n"},
      {"describe Divide", 0, "_Zet_Numeric_DivideNumbers_"},
      {"describe 7", 0, "`Divide`"},
      {"describe NoSuch", 2, ""},
      {"catalog", 0, "\"info\": \"Formula Library\\nThis is the very first version of it\""},
      {"bogus", 2, ""},
      {"", 2, ""},
      {"--angle-unit grads list", 2, ""},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.args);
    const SResult r = Shell(Zet(c.args) + " 2>/dev/null");
    EXPECT_EQ(r.rc, c.rc);
    EXPECT_NE(r.out.find(c.contains), std::string::npos) << r.out.substr(0, 300);
  }
  const SResult bad = Shell(std::string(ZET_TEST_ZET) + " --plugin /nonexistent.so list 2>&1");
  EXPECT_NE(bad.rc, 0);
  EXPECT_NE(bad.out.find("cannot load plug-in"), std::string::npos);
}

}  // namespace
