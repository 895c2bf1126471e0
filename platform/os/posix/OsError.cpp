// The last error of the file functions, per thread: a Windows-numbered code for the
// instructions' decisions and the errno behind it for the text.
#include <cerrno>
#include <cstring>

#include "os/posix/Posix.h"
#include "zet/ZetOs.h"

namespace {

struct SLastError {
  int code = 0;
  int err = 0;
};
thread_local SLastError t_last;

struct SErrnoCode {
  int err;
  int code;
};
// errno -> code. The first row of a code is also the errno whose text that code
// shows when it is not the thread's last error.
constexpr SErrnoCode kCodes[] = {
    {ENOENT, CZetOsError::kFileNotFound},
    {ENOENT, CZetOsError::kPathNotFound},
    {ENOTDIR, CZetOsError::kPathNotFound},
    {EACCES, CZetOsError::kAccessDenied},
    {EPERM, CZetOsError::kAccessDenied},
    {EISDIR, CZetOsError::kAccessDenied},
    {ENOMEM, CZetOsError::kNotEnoughMemory},
    {EXDEV, CZetOsError::kNotSameDevice},
    {EROFS, CZetOsError::kWriteProtect},
    {EIO, CZetOsError::kGenFailure},
    {EBUSY, CZetOsError::kSharingViolation},
    {ETXTBSY, CZetOsError::kSharingViolation},
    {ENOTSUP, CZetOsError::kNotSupported},
    {EEXIST, CZetOsError::kFileExists},
    {EINVAL, CZetOsError::kInvalidParameter},
    {ENOSPC, CZetOsError::kDiskFull},
    {EDQUOT, CZetOsError::kDiskFull},
    {ENOTEMPTY, CZetOsError::kDirNotEmpty},
    {EEXIST, CZetOsError::kAlreadyExists},
    {ENAMETOOLONG, CZetOsError::kFilenameTooLong},
    {ECANCELED, CZetOsError::kCancelled},
    {EILSEQ, CZetOsError::kInvalidName},
};

CStdStr ErrnoText(int err) {
  char buf[256];
  // The GNU strerror_r returns its text, which need not be in buf.
  const char* text = strerror_r(err, buf, sizeof buf);
  return zet::os::LocaleToCp1252(text);
}

}  // namespace

namespace zet::os {

bool Fail(int code, int err) {
  CZetOsError::SetLastError(code, err);
  return false;
}

int CodeOfErrno(int err) {
  for (const SErrnoCode& row : kCodes)
    if (row.err == err) return row.code;
  return CZetOsError::kGenFailure;
}

}  // namespace zet::os

int CZetOsError::GetLastError() { return t_last.code; }
int CZetOsError::GetLastSystemError() { return t_last.err; }

void CZetOsError::SetLastError(int code, int systemError) {
  t_last.code = code;
  t_last.err = systemError;
}

CStdStr CZetOsError::GetErrorMsg(int code) {
  if (code == t_last.code && t_last.err != 0) return ErrnoText(t_last.err);
  if (code == kSuccess) return ErrnoText(0);
  for (const SErrnoCode& row : kCodes)
    if (row.code == code) return ErrnoText(row.err);
  CStdStr s;
  s.Format("System error code %d", code);
  return s;
}
