// Files and folders through the kernel and the shell: GetFileAttributesA, DeleteFileA,
// CopyFileA, MoveFileA, SHCreateDirectoryExA, SHFileOperationA, GetDiskFreeSpaceExA.
// Their failures are the thread's Windows last error, as the system leaves it.
#include <windows.h>
#include <shlobj.h>
#include <shellapi.h>

#include <string>
#include <vector>

#include "zet/ZetOs.h"

bool CZetOs::FileExists(const char* path) {
  const DWORD a = GetFileAttributesA(path ? path : "");
  return a != INVALID_FILE_ATTRIBUTES && !(a & FILE_ATTRIBUTE_DIRECTORY);
}

bool CZetOs::FileDelete(const char* path) { return DeleteFileA(path ? path : "") != 0; }

bool CZetOs::FileCopy(const char* source, const char* destination, bool failIfExists) {
  return CopyFileA(source ? source : "", destination ? destination : "", failIfExists) != 0;
}

bool CZetOs::FileMove(const char* source, const char* destination) {
  return MoveFileA(source ? source : "", destination ? destination : "") != 0;
}

int CZetOs::CreateFolder(const char* path) {
  const int code = SHCreateDirectoryExA(nullptr, path ? path : "", nullptr);
  ::SetLastError(static_cast<DWORD>(code));
  return code;
}

namespace {

bool IsSeparator(char c) { return c == '/' || c == '\\'; }

// Names the recursive delete refuses before the shell sees them, as the Linux layer
// does: the shell would take a pattern ("*", "?") as every name it matches, and a root,
// the working folder (".") or a ".." anywhere as the folder above, all deleted for good.
// A name ending in a separator names a folder only.
DWORD RefusedForDelete(const std::string& p) {
  if (p.find_first_of("*?") != std::string::npos) return ERROR_ACCESS_DENIED;
  // Read as text (no std::filesystem: its conversion of Windows-1252 bytes may throw).
  size_t from = p.size() >= 2 && p[1] == ':' ? 2 : 0;  // past a drive
  const bool unc = from == 0 && p.size() >= 2 && IsSeparator(p[0]) && IsSeparator(p[1]);
  int skip = unc ? 2 : 0;  // a share's server and share name are its root
  bool named = false;
  for (size_t i = from; i <= p.size(); ++i) {
    if (i < p.size() && !IsSeparator(p[i])) continue;
    const std::string part = p.substr(from, i - from);
    from = i + 1;
    if (part.empty()) continue;
    if (part == "..") return ERROR_ACCESS_DENIED;
    if (skip > 0) {
      --skip;
      continue;
    }
    named = named || part != ".";
  }
  if (!named) return ERROR_ACCESS_DENIED;
  if (IsSeparator(p.back())) {
    const DWORD a = GetFileAttributesA(p.c_str());
    if (a == INVALID_FILE_ATTRIBUTES || !(a & FILE_ATTRIBUTE_DIRECTORY)) return ERROR_PATH_NOT_FOUND;
  }
  return ERROR_SUCCESS;
}

}  // namespace

// The shell's delete: the path as a list of one (ended by two zero bytes), no
// confirmation, no progress, no error dialog, no recycle bin.
bool CZetOs::DeleteTree(const char* path) {
  const std::string p = path ? path : "";
  if (p.size() > kMaxPath - 1) {
    ::SetLastError(ERROR_FILENAME_EXCED_RANGE);
    return false;
  }
  if (const DWORD refused = p.empty() ? ERROR_PATH_NOT_FOUND : RefusedForDelete(p)) {
    ::SetLastError(refused);
    return false;
  }
  std::vector<char> list(p.begin(), p.end());
  list.push_back('\0');
  list.push_back('\0');
  SHFILEOPSTRUCTA op{};
  op.wFunc = FO_DELETE;
  op.pFrom = list.data();
  op.fFlags = FOF_NOCONFIRMATION | FOF_SILENT | FOF_NOERRORUI;
  const int code = SHFileOperationA(&op);
  if (code == 0 && !op.fAnyOperationsAborted) {
    ::SetLastError(ERROR_SUCCESS);
    return true;
  }
  ::SetLastError(code ? static_cast<DWORD>(code) : ERROR_CANCELLED);
  return false;
}

bool CZetOs::GetDiskSpace(const char* path, uint64_t* freeToCaller, uint64_t* total,
                          uint64_t* totalFree) {
  ULARGE_INTEGER avail{}, all{}, free{};
  if (!GetDiskFreeSpaceExA(path && *path ? path : nullptr, &avail, &all, &free)) return false;
  *freeToCaller = avail.QuadPart;
  *total = all.QuadPart;
  *totalFree = free.QuadPart;
  return true;
}
