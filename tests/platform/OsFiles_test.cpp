// The file functions of the OS layer on the real file system, in a temporary folder:
// the error codes the instructions decide on, and that nothing is lost or left over.
#include <fcntl.h>
#include <linux/fs.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <functional>

#include "TempDir.h"
#include "zet/ZetOs.h"

namespace zet::test {
namespace {

namespace fs = std::filesystem;

class OsFiles : public testing::Test {
 protected:
  void SetUp() override {
    WriteFile(dir.Path() / "file", "abc");
    fs::create_directory(dir.Path() / "dir");
    WriteFile(dir.Path() / "dir/inner", "inner");
  }
  // Entries of a folder, to see that no temporary copy was left behind.
  static int Entries(const fs::path& p) {
    int n = 0;
    for (auto it = fs::directory_iterator(p); it != fs::directory_iterator(); ++it) ++n;
    return n;
  }
  CTempDir dir;
};

TEST_F(OsFiles, FailuresGiveTheWindowsCodes) {
  const std::string file = dir / "file", folder = dir / "dir", inner = dir / "dir/inner",
                    missing = dir / "missing", noFolder = dir / "nofolder/x",
                    underFile = dir / "file/x", tooLong = "/" + std::string(259, 'x');
  const struct {
    const char* what;
    std::function<bool()> call;
    int code;
  } cases[] = {
      {"delete a missing file", [&] { return CZetOs::FileDelete(missing.c_str()); }, 2},
      {"delete in a missing folder", [&] { return CZetOs::FileDelete(noFolder.c_str()); }, 3},
      {"delete under a file", [&] { return CZetOs::FileDelete(underFile.c_str()); }, 3},
      {"delete a folder", [&] { return CZetOs::FileDelete(folder.c_str()); }, 5},
      {"delete the empty name", [&] { return CZetOs::FileDelete(""); }, 3},
      {"delete a long path", [&] { return CZetOs::FileDelete(tooLong.c_str()); }, 206},
      {"copy a folder", [&] { return CZetOs::FileCopy(folder.c_str(), missing.c_str(), false); }, 5},
      {"copy a missing file",
       [&] { return CZetOs::FileCopy(missing.c_str(), file.c_str(), false); }, 2},
      {"copy onto a folder", [&] { return CZetOs::FileCopy(file.c_str(), folder.c_str(), false); }, 5},
      {"copy into a missing folder",
       [&] { return CZetOs::FileCopy(file.c_str(), noFolder.c_str(), false); }, 3},
      {"copy onto itself", [&] { return CZetOs::FileCopy(file.c_str(), file.c_str(), false); }, 80},
      {"copy over a file, failIfExists",
       [&] { return CZetOs::FileCopy(file.c_str(), inner.c_str(), true); }, 80},
      {"copy a device", [&] { return CZetOs::FileCopy("/dev/zero", missing.c_str(), false); }, 50},
      {"move over a file", [&] { return CZetOs::FileMove(file.c_str(), inner.c_str()); }, 183},
      {"move a missing file", [&] { return CZetOs::FileMove(missing.c_str(), inner.c_str()); }, 2},
      {"move into a missing folder",
       [&] { return CZetOs::FileMove(file.c_str(), noFolder.c_str()); }, 3},
      {"delete a missing tree", [&] { return CZetOs::DeleteTree(missing.c_str()); }, 2},
      {"delete a tree in a missing folder", [&] { return CZetOs::DeleteTree(noFolder.c_str()); }, 3},
      {"space of a missing path",
       [&] {
         uint64_t a, b, c;
         return CZetOs::GetDiskSpace(missing.c_str(), &a, &b, &c);
       },
       2},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.what);
    EXPECT_FALSE(c.call());
    EXPECT_EQ(CZetOsError::GetLastError(), c.code);
  }
  EXPECT_EQ(ReadFile(dir.Path() / "file"), "abc");
  EXPECT_EQ(ReadFile(dir.Path() / "dir/inner"), "inner");
  EXPECT_EQ(Entries(dir.Path()), 2);
}

TEST_F(OsFiles, CreateFolderCodes) {
  const struct {
    std::string path;
    int code;
  } cases[] = {
      {"relative/path", 161},          {"", 161},
      {dir / "dir", 183},              {dir / "dir/", 183},
      {dir / "file", 80},              {dir / "file/sub", 3},
      {"/" + std::string(259, 'x'), 206}, {dir / "new/deeper/deepest", 0},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.path);
    EXPECT_EQ(CZetOs::CreateFolder(c.path.c_str()), c.code);
    EXPECT_EQ(CZetOsError::GetLastError(), c.code);
  }
  EXPECT_TRUE(fs::is_directory(dir.Path() / "new/deeper/deepest"));
  // The text is resolved first: "x/.." creates no x.
  EXPECT_EQ(CZetOs::CreateFolder((dir / "x/../y").c_str()), 0);
  EXPECT_TRUE(fs::is_directory(dir.Path() / "y"));
  EXPECT_FALSE(fs::exists(dir.Path() / "x"));
}

TEST_F(OsFiles, PathsUpTo259Characters) {
  std::string path = dir / "";
  path += std::string(CZetOs::kMaxPath - path.size(), 'n');
  ASSERT_EQ(path.size(), 259u);
  EXPECT_FALSE(CZetOs::FileDelete(path.c_str()));
  EXPECT_EQ(CZetOsError::GetLastError(), 2);  // tried: too long for one name, not for a path
  path += 'n';
  EXPECT_FALSE(CZetOs::FileDelete(path.c_str()));
  EXPECT_EQ(CZetOsError::GetLastError(), 206);
  EXPECT_FALSE(CZetOs::FileExists(path.c_str()));
}

TEST_F(OsFiles, ExistsDeleteAndErrorTexts) {
  EXPECT_TRUE(CZetOs::FileExists((dir / "file").c_str()));
  EXPECT_FALSE(CZetOs::FileExists((dir / "dir").c_str()));
  EXPECT_FALSE(CZetOs::FileExists(""));
  EXPECT_TRUE(CZetOs::FileExists("/dev/null"));
  EXPECT_TRUE(CZetOs::FileDelete((dir / "file").c_str()));
  EXPECT_EQ(CZetOsError::GetLastError(), 0);
  EXPECT_FALSE(fs::exists(dir.Path() / "file"));
  // A folder where a file is expected: the code is Windows', the text the system's.
  EXPECT_FALSE(CZetOs::FileDelete((dir / "dir").c_str()));
  EXPECT_EQ(CZetOsError::GetErrorMsg(CZetOsError::GetLastError()), "Is a directory");
  EXPECT_EQ(CZetOsError::GetErrorMsg(CZetOsError::kPathNotFound), "No such file or directory");
  EXPECT_EQ(CZetOsError::GetErrorMsg(12345), "System error code 12345");
}

TEST_F(OsFiles, CopyKeepsContentModeAndTimeAndLeavesNoTemporary) {
  const fs::path src = dir.Path() / "file", dst = dir.Path() / "copy";
  fs::permissions(src, fs::perms::owner_read | fs::perms::owner_write | fs::perms::group_read);
  const auto old = fs::file_time_type::clock::now() - std::chrono::hours(48);
  fs::last_write_time(src, old);
  ASSERT_TRUE(CZetOs::FileCopy(src.c_str(), dst.c_str(), true));
  EXPECT_EQ(ReadFile(dst), "abc");
  EXPECT_EQ(fs::status(dst).permissions(), fs::status(src).permissions());
  EXPECT_EQ(fs::last_write_time(dst), old);
  // Over an existing file unless told not to.
  WriteFile(src, "new content");
  EXPECT_FALSE(CZetOs::FileCopy(src.c_str(), dst.c_str(), true));
  EXPECT_EQ(ReadFile(dst), "abc");
  EXPECT_TRUE(CZetOs::FileCopy(src.c_str(), dst.c_str(), false));
  EXPECT_EQ(ReadFile(dst), "new content");
  EXPECT_EQ(Entries(dir.Path()), 3);
}

TEST_F(OsFiles, MoveRenamesFilesAndFolders) {
  EXPECT_TRUE(CZetOs::FileMove((dir / "file").c_str(), (dir / "moved").c_str()));
  EXPECT_EQ(ReadFile(dir.Path() / "moved"), "abc");
  EXPECT_FALSE(fs::exists(dir.Path() / "file"));
  EXPECT_TRUE(CZetOs::FileMove((dir / "dir").c_str(), (dir / "folder").c_str()));
  EXPECT_EQ(ReadFile(dir.Path() / "folder/inner"), "inner");
}

// Makes entries of a folder impossible to delete, even for root (append-only folder),
// or says why it cannot.
std::string MakeUndeletable(const fs::path& folder, bool on) {
  if (geteuid() != 0) {
    fs::permissions(folder, on ? fs::perms::owner_read | fs::perms::owner_exec : fs::perms::owner_all);
    return "";
  }
  const int fd = open(folder.c_str(), O_RDONLY | O_DIRECTORY);
  int flags = 0;
  if (fd < 0 || ioctl(fd, FS_IOC_GETFLAGS, &flags) != 0) return "no file attributes here";
  flags = on ? flags | FS_APPEND_FL : flags & ~FS_APPEND_FL;
  const int r = ioctl(fd, FS_IOC_SETFLAGS, &flags);
  close(fd);
  return r == 0 ? "" : "cannot make a folder append-only here";
}

TEST_F(OsFiles, MoveAcrossFileSystemsCopiesThenDeletes) {
  struct stat a {}, b {};
  if (stat(dir.Path().c_str(), &a) != 0 || stat("/dev/shm", &b) != 0 || a.st_dev == b.st_dev)
    GTEST_SKIP() << "needs /dev/shm on another file system than " << dir.Path();
  CTempDir other("/dev/shm");
  const fs::path src = dir.Path() / "file";
  const auto old = fs::file_time_type::clock::now() - std::chrono::hours(5);
  fs::last_write_time(src, old);
  ASSERT_TRUE(CZetOs::FileMove(src.c_str(), (other / "file").c_str()));
  EXPECT_EQ(ReadFile(other.Path() / "file"), "abc");
  EXPECT_EQ(fs::last_write_time(other.Path() / "file"), old);
  EXPECT_FALSE(fs::exists(src));
  // A symbolic link stays a link.
  fs::create_symlink("dir/inner", dir.Path() / "link");
  ASSERT_TRUE(CZetOs::FileMove((dir / "link").c_str(), (other / "link").c_str()));
  EXPECT_EQ(fs::read_symlink(other.Path() / "link"), "dir/inner");
  // A folder does not leave its file system.
  EXPECT_FALSE(CZetOs::FileMove((dir / "dir").c_str(), (other / "dir").c_str()));
  EXPECT_EQ(CZetOsError::GetLastError(), CZetOsError::kNotSameDevice);
  EXPECT_TRUE(fs::exists(dir.Path() / "dir/inner"));
  EXPECT_FALSE(fs::exists(other.Path() / "dir"));
  // A source that cannot be deleted: the copy is taken back, the source stays.
  const std::string why = MakeUndeletable(dir.Path() / "dir", true);
  if (!why.empty()) GTEST_SKIP() << why;
  const bool moved = CZetOs::FileMove((dir / "dir/inner").c_str(), (other / "inner").c_str());
  const int code = CZetOsError::GetLastError();
  MakeUndeletable(dir.Path() / "dir", false);
  EXPECT_FALSE(moved);
  EXPECT_EQ(code, CZetOsError::kAccessDenied);
  EXPECT_EQ(ReadFile(dir.Path() / "dir/inner"), "inner");
  EXPECT_FALSE(fs::exists(other.Path() / "inner"));
}

TEST_F(OsFiles, DeleteTreeIsRecursiveAndNeverTakesTheCurrentFolder) {
  fs::create_directories(dir.Path() / "dir/a/b");
  WriteFile(dir.Path() / "dir/a/b/c", "c");
  fs::create_directory_symlink(dir.Path() / "dir", dir.Path() / "link");
  EXPECT_TRUE(CZetOs::DeleteTree((dir / "link").c_str()));  // the link, not its target
  EXPECT_TRUE(fs::exists(dir.Path() / "dir/a/b/c"));
  EXPECT_TRUE(CZetOs::DeleteTree((dir / "dir/").c_str()));
  EXPECT_FALSE(fs::exists(dir.Path() / "dir"));
  EXPECT_TRUE(CZetOs::DeleteTree((dir / "file").c_str()));  // a file too, as the shell does

  fs::create_directories(dir.Path() / "cwd/inside");
  WriteFile(dir.Path() / "cwd/inside/keep", "k");
  const fs::path before = fs::current_path();
  fs::current_path(dir.Path() / "cwd/inside");
  for (const char* p : {".", "./", "..", "x/..", "../inside/.."}) {
    SCOPED_TRACE(p);
    EXPECT_FALSE(CZetOs::DeleteTree(p));
  }
  fs::current_path(before);
  EXPECT_EQ(ReadFile(dir.Path() / "cwd/inside/keep"), "k");
}

TEST(OsDiskSpace, DriveNamesMeanTheRootAndEmptyTheCurrentFolder) {
  uint64_t rootFree, rootTotal, rootAll, free, total, all;
  ASSERT_TRUE(CZetOs::GetDiskSpace("/", &rootFree, &rootTotal, &rootAll));
  EXPECT_GT(rootTotal, 0u);
  EXPECT_LE(rootFree, rootAll);
  EXPECT_LE(rootAll, rootTotal);
  for (const char* drive : {"C:\\", "c:", "D:/"}) {
    SCOPED_TRACE(drive);
    ASSERT_TRUE(CZetOs::GetDiskSpace(drive, &free, &total, &all));
    EXPECT_EQ(total, rootTotal);
  }
  uint64_t dotTotal;
  ASSERT_TRUE(CZetOs::GetDiskSpace(".", &free, &dotTotal, &all));
  ASSERT_TRUE(CZetOs::GetDiskSpace("", &free, &total, &all));
  EXPECT_EQ(total, dotTotal);
  EXPECT_FALSE(CZetOs::GetDiskSpace("C:\\Windows", &free, &total, &all));
}

}  // namespace
}  // namespace zet::test
