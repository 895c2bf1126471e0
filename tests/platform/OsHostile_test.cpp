// The OS layer against hostile names and files: ".." that would climb out of the
// folder a deletion names, names in Windows-1252 against UTF-8 on the disk and in the
// environment, and files whose size says nothing about their contents.
#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <string>

#include "TempDir.h"
#include "zet/ZetOs.h"

namespace zet::test {
namespace {

namespace fs = std::filesystem;

// Every path but the last reaches its folder through "..": none is deleted, and the
// file DIR/keep survives them all.
TEST(OsHostile, DeleteTreeRefusesDotDotThatClimbsOut) {
  CTempDir dir;
  fs::create_directories(dir.Path() / "DIR/sub");
  WriteFile(dir.Path() / "DIR/keep", "k");
  WriteFile(dir.Path() / "DIR/sub/keep", "s");
  const std::string d = dir / "DIR";
  const struct {
    std::string path;
    bool deletes;
  } cases[] = {
      {d + "/sub/..", false},        {d + "/sub/../", false}, {d + "/sub/../.", false},
      {d + "/sub/../../DIR", false}, {d + "/sub/../sub", false}, {"/..", false},
      {"../x", false},               {"a/../../x", false},    {d + "/./sub/.", true},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.path);
    EXPECT_EQ(CZetOs::DeleteTree(c.path.c_str()), c.deletes);
    if (!c.deletes) {
      EXPECT_EQ(CZetOsError::GetLastError(), CZetOsError::kAccessDenied);
    }
    EXPECT_EQ(ReadFile(dir.Path() / "DIR/keep"), "k");
  }
  EXPECT_FALSE(fs::exists(dir.Path() / "DIR/sub"));  // the one path without ".."
}

// Windows-1252 inside, UTF-8 on the disk: "Größe €" is the bytes F6 DF 80 in the
// library and their UTF-8 sequences in the folder's name.
TEST(OsHostile, NamesAreUtf8OnTheDisk) {
  CTempDir dir;
  const std::string cp = dir / "Gr\xF6\xDF" "e \x80";
  const fs::path utf8 = dir.Path() / "Gr\xC3\xB6\xC3\x9F" "e \xE2\x82\xAC";
  EXPECT_EQ(CZetOs::CreateFolder(cp.c_str()), CZetOsError::kSuccess);
  EXPECT_TRUE(fs::is_directory(utf8));

  // A file another program made with a UTF-8 name is reachable by its Windows-1252 one.
  WriteFile(dir.Path() / "caf\xC3\xA9.txt", "coffee");
  const std::string cafe = dir / "caf\xE9.txt", copy = dir / "copy \xE9.txt";
  EXPECT_TRUE(CZetOs::FileExists(cafe.c_str()));
  EXPECT_TRUE(CZetOs::FileCopy(cafe.c_str(), copy.c_str(), true));
  EXPECT_EQ(ReadFile(dir.Path() / "copy \xC3\xA9.txt"), "coffee");
  EXPECT_TRUE(CZetOs::FileDelete(cafe.c_str()));
  EXPECT_FALSE(fs::exists(dir.Path() / "caf\xC3\xA9.txt"));

  // A byte Windows-1252 leaves undefined has no character: refused, nothing touched.
  const std::string undefined = dir / "x\x81y";
  EXPECT_FALSE(CZetOs::FileDelete(undefined.c_str()));
  EXPECT_EQ(CZetOsError::GetLastError(), CZetOsError::kInvalidName);
  EXPECT_EQ(CZetOs::CreateFolder(undefined.c_str()), CZetOsError::kInvalidName);
  EXPECT_FALSE(CZetOs::FileCopy(copy.c_str(), undefined.c_str(), false));
  EXPECT_EQ(CZetOsError::GetLastError(), CZetOsError::kInvalidName);
  EXPECT_EQ(std::distance(fs::directory_iterator(dir.Path()), fs::directory_iterator()), 2);
}

TEST(OsHostile, EnvironmentIsUtf8OutsideTheLibrary) {
  ASSERT_TRUE(CZetOs::PutEnv("ZET_T\xC9ST=\x80 \xE9"));
  const char* raw = std::getenv("ZET_T\xC3\x89ST");
  ASSERT_NE(raw, nullptr);
  EXPECT_STREQ(raw, "\xE2\x82\xAC \xC3\xA9");
  CStdStr value;
  ASSERT_TRUE(CZetOs::GetEnv("ZET_T\xC9ST", &value));
  EXPECT_EQ(value, "\x80 \xE9");
  bool listed = false;
  for (const CStdStr& e : CZetOs::GetEnvironment()) listed = listed || e == "ZET_T\xC9ST=\x80 \xE9";
  EXPECT_TRUE(listed);
  // A character Windows-1252 cannot hold reads as '?'.
  setenv("ZET_OMEGA", "\xCE\xA9", 1);
  ASSERT_TRUE(CZetOs::GetEnv("ZET_OMEGA", &value));
  EXPECT_EQ(value, "?");
  EXPECT_FALSE(CZetOs::PutEnv("ZET_BAD=\x81"));
  EXPECT_TRUE(CZetOs::PutEnv("ZET_T\xC9ST="));
  EXPECT_EQ(std::getenv("ZET_T\xC3\x89ST"), nullptr);
  unsetenv("ZET_OMEGA");
}

// /proc files claim a size of 0 and have contents; a FIFO must not be waited on.
TEST(OsHostile, CopyReadsToTheEndAndRefusesWhatIsNotAFile) {
  CTempDir dir;
  const std::string status = dir / "status", fifo = dir / "fifo";
  ASSERT_TRUE(CZetOs::FileCopy("/proc/self/status", status.c_str(), true));
  EXPECT_NE(ReadFile(status).find("Pid:"), std::string::npos);
  ASSERT_EQ(mkfifo(fifo.c_str(), 0600), 0);
  EXPECT_FALSE(CZetOs::FileCopy(fifo.c_str(), (dir / "out").c_str(), false));
  EXPECT_EQ(CZetOsError::GetLastError(), CZetOsError::kNotSupported);
}

}  // namespace
}  // namespace zet::test
