// Files and folders with std::filesystem and the POSIX calls it lacks (a rename that
// never replaces), with the error codes of the Windows calls they stand for.
//
// Nothing is lost on failure: a copy is written beside its destination under a
// temporary name and put in place only when complete, and a move across file
// systems deletes its source only after the copy is in place (and removes the copy
// again if the source cannot be deleted).
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cctype>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <string>
#include <system_error>

#include "os/posix/Posix.h"
#include "zet/ZetOs.h"

namespace fs = std::filesystem;

namespace {

using zet::os::Fail;

bool Succeed() {
  CZetOsError::SetLastError(CZetOsError::kSuccess, 0);
  return true;
}

bool TooLong(const char* path) { return std::strlen(path) > CZetOs::kMaxPath; }

// A missing name is "file not found" in a folder that exists, "path not found"
// otherwise.
int MissingCode(const fs::path& path) {
  fs::path parent = path.parent_path();
  if (parent.empty()) parent = ".";
  struct stat st {};
  if (stat(parent.c_str(), &st) == 0 && S_ISDIR(st.st_mode)) return CZetOsError::kFileNotFound;
  return CZetOsError::kPathNotFound;
}

bool FailErrno(int err, const fs::path& path) {
  if (err == ENOENT) return Fail(MissingCode(path), err);
  return Fail(zet::os::CodeOfErrno(err), err);
}

// rename(2) that fails with EEXIST instead of replacing the destination. Returns 0 or
// the errno.
int RenameNoReplace(const char* from, const char* to) {
  if (renameat2(AT_FDCWD, from, AT_FDCWD, to, RENAME_NOREPLACE) == 0) return 0;
  if (errno != EINVAL && errno != ENOSYS && errno != ENOTSUP) return errno;
  // A file system without the flag: look first (only a racing writer can slip in).
  struct stat st {};
  if (lstat(to, &st) == 0) return EEXIST;
  return rename(from, to) == 0 ? 0 : errno;
}

// Copies the regular file `source` into a new temporary file in the destination's
// folder, with the source's permissions and modification time. Returns 0 and the
// temporary name, or the errno (nothing is left behind).
int CopyBeside(const fs::path& source, const fs::path& destination, fs::path* temp) {
  fs::path folder = destination.parent_path();
  if (folder.empty()) folder = ".";
  std::string name = (folder / ".zet-copy-XXXXXX").string();
  const int fd = mkostemp(name.data(), O_CLOEXEC);
  if (fd < 0) return errno;
  close(fd);
  std::error_code ec;
  fs::copy_file(source, name, fs::copy_options::overwrite_existing, ec);
  if (!ec) fs::last_write_time(name, fs::last_write_time(source, ec), ec);
  if (ec) {
    unlink(name.c_str());
    return ec.value();
  }
  *temp = name;
  return 0;
}

// A file or symbolic link moved to another file system: the copy is put in place
// (never replacing anything), then the source deleted.
bool MoveAcross(const char* source, const char* destination, const struct stat& st) {
  int err = 0;
  if (S_ISLNK(st.st_mode)) {
    std::error_code ec;
    const fs::path target = fs::read_symlink(source, ec);
    if (ec) return FailErrno(ec.value(), source);
    if (symlink(target.c_str(), destination) != 0) err = errno;
  } else if (S_ISREG(st.st_mode)) {
    fs::path temp;
    err = CopyBeside(source, destination, &temp);
    if (err == 0 && (err = RenameNoReplace(temp.c_str(), destination)) != 0) unlink(temp.c_str());
  } else {
    return Fail(CZetOsError::kNotSupported, ENOTSUP);
  }
  if (err == EEXIST) return Fail(CZetOsError::kAlreadyExists, EEXIST);
  if (err != 0) return FailErrno(err, destination);
  if (unlink(source) != 0) {
    err = errno;
    unlink(destination);
    return FailErrno(err, source);
  }
  return Succeed();
}

bool IsDriveName(const std::string& p) {
  return (p.size() == 2 || (p.size() == 3 && (p[2] == '\\' || p[2] == '/'))) &&
         std::isalpha(static_cast<unsigned char>(p[0])) && p[1] == ':';
}

// The path as its text reads, "." and ".." resolved and without a trailing '/'.
fs::path Normal(const char* path) {
  fs::path p = fs::path(path).lexically_normal();
  if (!p.has_filename() && p.has_relative_path()) p = p.parent_path();
  return p;
}

}  // namespace

bool CZetOs::FileExists(const char* path) {
  if (!path || !*path || TooLong(path)) return false;
  struct stat st {};
  return stat(path, &st) == 0 && !S_ISDIR(st.st_mode);
}

bool CZetOs::FileDelete(const char* path) {
  if (!path || !*path) return Fail(CZetOsError::kPathNotFound, ENOENT);
  if (TooLong(path)) return Fail(CZetOsError::kFilenameTooLong, ENAMETOOLONG);
  if (unlink(path) == 0) return Succeed();
  const int err = errno;
  struct stat st {};
  if (err == EISDIR || (err == EPERM && lstat(path, &st) == 0 && S_ISDIR(st.st_mode)))
    return Fail(CZetOsError::kAccessDenied, EISDIR);
  return FailErrno(err, path);
}

bool CZetOs::FileCopy(const char* source, const char* destination, bool failIfExists) {
  if (!source || !destination) return Fail(CZetOsError::kInvalidParameter, EINVAL);
  if (TooLong(source) || TooLong(destination))
    return Fail(CZetOsError::kFilenameTooLong, ENAMETOOLONG);
  struct stat src {};
  if (stat(source, &src) != 0) return FailErrno(errno, source);
  if (S_ISDIR(src.st_mode)) return Fail(CZetOsError::kAccessDenied, EISDIR);
  if (!S_ISREG(src.st_mode)) return Fail(CZetOsError::kNotSupported, ENOTSUP);
  struct stat dst {};
  if (lstat(destination, &dst) == 0) {
    if (failIfExists) return Fail(CZetOsError::kFileExists, EEXIST);
    if (stat(destination, &dst) == 0) {
      if (S_ISDIR(dst.st_mode)) return Fail(CZetOsError::kAccessDenied, EISDIR);
      if (dst.st_dev == src.st_dev && dst.st_ino == src.st_ino)
        return Fail(CZetOsError::kFileExists, EEXIST);  // the source itself
      if (access(destination, W_OK) != 0) return FailErrno(errno, destination);
    }
  }
  fs::path temp;
  int err = CopyBeside(source, destination, &temp);
  if (err == 0) {
    err = failIfExists ? RenameNoReplace(temp.c_str(), destination)
                       : (rename(temp.c_str(), destination) == 0 ? 0 : errno);
    if (err != 0) unlink(temp.c_str());
  }
  return err == 0 ? Succeed() : FailErrno(err, destination);
}

bool CZetOs::FileMove(const char* source, const char* destination) {
  if (!source || !destination) return Fail(CZetOsError::kInvalidParameter, EINVAL);
  if (TooLong(source) || TooLong(destination))
    return Fail(CZetOsError::kFilenameTooLong, ENAMETOOLONG);
  struct stat src {};
  if (lstat(source, &src) != 0) return FailErrno(errno, source);
  struct stat dst {};
  if (lstat(destination, &dst) == 0) return Fail(CZetOsError::kAlreadyExists, EEXIST);
  const int err = RenameNoReplace(source, destination);
  if (err == 0) return Succeed();
  if (err == EEXIST) return Fail(CZetOsError::kAlreadyExists, EEXIST);
  if (err != EXDEV) return FailErrno(err, destination);
  if (S_ISDIR(src.st_mode)) return Fail(CZetOsError::kNotSameDevice, EXDEV);
  return MoveAcross(source, destination, src);
}

int CZetOs::CreateFolder(const char* path) {
  const auto result = [](int code, int err) {
    CZetOsError::SetLastError(code, err);
    return code;
  };
  const std::string p = path ? path : "";
  if (p.empty() || p[0] != '/') return result(CZetOsError::kBadPathName, EINVAL);
  if (p.size() > kMaxPath) return result(CZetOsError::kFilenameTooLong, ENAMETOOLONG);
  const fs::path target = Normal(p.c_str());
  struct stat st {};
  if (stat(target.c_str(), &st) == 0)
    return result(S_ISDIR(st.st_mode) ? CZetOsError::kAlreadyExists : CZetOsError::kFileExists,
                  EEXIST);
  std::error_code ec;
  fs::create_directories(target, ec);
  if (!ec) return result(CZetOsError::kSuccess, 0);
  const int err = ec.value();
  // ENOTDIR or EEXIST: a file stands where a folder of the path should be.
  const bool pathBroken = err == ENOENT || err == ENOTDIR || err == EEXIST;
  return result(pathBroken ? CZetOsError::kPathNotFound : zet::os::CodeOfErrno(err), err);
}

bool CZetOs::DeleteTree(const char* path) {
  if (!path || !*path) return Fail(CZetOsError::kPathNotFound, ENOENT);
  if (TooLong(path)) return Fail(CZetOsError::kFilenameTooLong, ENAMETOOLONG);
  const fs::path target = Normal(path);
  if (target == target.root_path() || target == "." || target.filename() == "..")
    return Fail(CZetOsError::kAccessDenied, EINVAL);
  struct stat st {};
  if (lstat(target.c_str(), &st) != 0) return FailErrno(errno, target);
  // "name/" names a folder only.
  if (path[std::strlen(path) - 1] == '/' && !S_ISDIR(st.st_mode) &&
      (stat(target.c_str(), &st) != 0 || !S_ISDIR(st.st_mode)))
    return Fail(CZetOsError::kPathNotFound, ENOTDIR);
  std::error_code ec;
  fs::remove_all(target, ec);
  return ec ? FailErrno(ec.value(), target) : Succeed();
}

bool CZetOs::GetDiskSpace(const char* path, uint64_t* freeToCaller, uint64_t* total,
                          uint64_t* totalFree) {
  const std::string name = path ? path : "";
  const fs::path p = IsDriveName(name) ? fs::path("/") : name.empty() ? fs::path(".") : fs::path(name);
  if (TooLong(p.c_str())) return Fail(CZetOsError::kFilenameTooLong, ENAMETOOLONG);
  std::error_code ec;
  const fs::space_info space = fs::space(p, ec);
  if (ec) return FailErrno(ec.value(), p);
  *freeToCaller = space.available;
  *total = space.capacity;
  *totalFree = space.free;
  return Succeed();
}
