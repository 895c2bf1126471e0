// Files and folders with std::filesystem and the POSIX calls it lacks (a rename that
// never replaces), with the error codes of the Windows calls they stand for.
//
// Names arrive in Windows-1252 and reach the system as UTF-8 (Posix.h); a name with a
// byte that has no character fails with kInvalidName before anything is touched, so
// it can never address another file. Length limits apply to the name as given.
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
#include <memory>
#include <new>
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

// Reads `source` to its end into `fd`, whatever size the file claims (files of /proc
// and /sys say 0), with the source's permissions. Returns 0 or the errno.
int CopyBytes(const fs::path& source, int fd) {
  const int in = open(source.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
  if (in < 0) return errno;
  struct stat st {};
  int err = fstat(in, &st) != 0 ? errno : !S_ISREG(st.st_mode) ? ENOTSUP : 0;
  if (err == 0 && fchmod(fd, st.st_mode & 07777) != 0) err = errno;
  static constexpr size_t kChunk = 1 << 16;
  std::unique_ptr<char[]> buf(err == 0 ? new (std::nothrow) char[kChunk] : nullptr);
  if (err == 0 && !buf) err = ENOMEM;
  while (err == 0) {
    const ssize_t n = read(in, buf.get(), kChunk);
    if (n == 0) break;
    if (n < 0) {
      if (errno != EINTR) err = errno;
      continue;
    }
    for (ssize_t done = 0; done < n && err == 0;) {
      const ssize_t w = write(fd, buf.get() + done, static_cast<size_t>(n - done));
      if (w < 0 && errno != EINTR) err = errno;
      if (w > 0) done += w;
    }
  }
  close(in);
  return err;
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
  int err = CopyBytes(source, fd);
  if (close(fd) != 0 && err == 0) err = errno;
  std::error_code ec;
  if (err == 0) fs::last_write_time(name, fs::last_write_time(source, ec), ec);
  if (err == 0 && ec) err = ec.value();
  if (err != 0) {
    unlink(name.c_str());
    return err;
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

// True when a component of the path is "..". A ".." either ends the path (and names
// a folder above the one written before it: "DIR/sub/.." is DIR) or climbs out of the
// folder the path finally names on the way to it ("DIR/sub/../../DIR", "../x"); a
// deletion never goes by either.
bool HasDotDot(const char* path) {
  for (const fs::path& part : fs::path(path))
    if (part == "..") return true;
  return false;
}

// The name as the system holds it; fails (kInvalidName) for one it cannot represent.
bool SystemName(const char* path, std::string* out) {
  return zet::os::Cp1252ToSystem(path, out) || Fail(CZetOsError::kInvalidName, EILSEQ);
}

}  // namespace

bool CZetOs::FileExists(const char* path) {
  std::string name;
  if (!path || !*path || TooLong(path) || !zet::os::Cp1252ToSystem(path, &name)) return false;
  struct stat st {};
  return stat(name.c_str(), &st) == 0 && !S_ISDIR(st.st_mode);
}

bool CZetOs::FileDelete(const char* path) {
  if (!path || !*path) return Fail(CZetOsError::kPathNotFound, ENOENT);
  if (TooLong(path)) return Fail(CZetOsError::kFilenameTooLong, ENAMETOOLONG);
  std::string sys;
  if (!SystemName(path, &sys)) return false;
  path = sys.c_str();
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
  std::string sysSource, sysDestination;
  if (!SystemName(source, &sysSource) || !SystemName(destination, &sysDestination)) return false;
  source = sysSource.c_str();
  destination = sysDestination.c_str();
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
  std::string sysSource, sysDestination;
  if (!SystemName(source, &sysSource) || !SystemName(destination, &sysDestination)) return false;
  source = sysSource.c_str();
  destination = sysDestination.c_str();
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
  std::string sys;
  if (!zet::os::Cp1252ToSystem(p, &sys)) return result(CZetOsError::kInvalidName, EILSEQ);
  const fs::path target = Normal(sys.c_str());
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
  // Decided on the text as given, before "." and ".." are resolved: "DIR/sub/.."
  // would otherwise name DIR itself.
  if (HasDotDot(path)) return Fail(CZetOsError::kAccessDenied, EINVAL);
  std::string sys;
  if (!SystemName(path, &sys)) return false;
  path = sys.c_str();
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
  if (path && TooLong(path)) return Fail(CZetOsError::kFilenameTooLong, ENAMETOOLONG);
  std::string name;
  if (!SystemName(path ? path : "", &name)) return false;
  const fs::path p = IsDriveName(name) ? fs::path("/") : name.empty() ? fs::path(".") : fs::path(name);
  std::error_code ec;
  const fs::space_info space = fs::space(p, ec);
  if (ec) return FailErrno(ec.value(), p);
  *freeToCaller = space.available;
  *total = space.capacity;
  *totalFree = space.free;
  return Succeed();
}
