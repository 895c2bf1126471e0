// Files and folders: exists, delete, copy and move a file, create and delete a folder,
// and the space of a disk. A failure is a false "result" and one message (level 1,
// source the display name without its blank); Execute still succeeds.
#include <string>

#include "system/System.h"
#include "zet/ZetOs.h"

namespace zet {
namespace {

// Sets "result" and reports `text` when it is a failure.
void Result(const CArgs& a, const char* source, const CStdStr* failure) {
  a.Out(0) = failure == nullptr;
  if (failure) a.Report(kReportWarning, source, failure->c_str());
}

class CFileExists final : public TInstr<CFileExists> {
 public:
  static void Describe(CDescriber& d) {
    d.Head("FileExists", "Returns true if the specified file exists, false otherwise.")
        .Input(kTypeString, "filename", "")
        .Output(kTypeBool, "file exists");
  }
  int Execute(IXInstrContext* ctx) override {
    CArgs a(ctx);
    a.Out(0) = CZetOs::FileExists(a.Text(0));
    return kOk;
  }
};

// A missing file (not a missing folder) counts as deleted.
class CFileDelete final : public TInstr<CFileDelete> {
 public:
  static void Describe(CDescriber& d) {
    d.Head("FileDelete ",
           "Deletes the specified file. It will succeed even if the file doesn't "
           "exist.")
        .Input(kTypeString, "filename", "")
        .Output(kTypeBool, "result");
  }
  int Execute(IXInstrContext* ctx) override {
    CArgs a(ctx);
    const char* name = a.Text(0);
    if (CZetOs::FileDelete(name) || CZetOsError::GetLastError() == CZetOsError::kFileNotFound) {
      Result(a, "FileDelete", nullptr);
      return kOk;
    }
    const int code = CZetOsError::GetLastError();
    CStdStr text;
    text.Format("Failed to delete \"%s\". %s", name, CZetOsError::GetErrorMsg(code).c_str());
    Result(a, "FileDelete", &text);
    return kOk;
  }
};

// The texts of the folder creation's own codes; other codes are shown by number.
const char* CreateFolderText(int code) {
  switch (code) {
    case CZetOsError::kPathNotFound:
      return "The system cannot find the path pointed to by pszPath. The path may contain "
             "an invalid entry.";
    case CZetOsError::kFileExists:
      return "The directory exists.";
    case CZetOsError::kBadPathName:
      return "The pszPath parameter was set to a relative path.";
    case CZetOsError::kAlreadyExists:
      return "The directory exists.";
    case CZetOsError::kFilenameTooLong:
      return "The path pointed to by pszPath is too long.";
    case CZetOsError::kCancelled:
      return "The user canceled the operation.";
    default:
      return nullptr;
  }
}

class CFolderCreate final : public TInstr<CFolderCreate> {
 public:
  static void Describe(CDescriber& d) {
    d.Head("FolderCreate ", "Creates a folder with the specified name.")
        .Input(kTypeString, "name", "")
        .Output(kTypeBool, "result");
  }
  int Execute(IXInstrContext* ctx) override {
    CArgs a(ctx);
    const char* name = a.Text(0);
    const int code = CZetOs::CreateFolder(name);
    if (code == 0) {
      Result(a, "FolderCreate", nullptr);
      return kOk;
    }
    CStdStr text;
    if (const char* why = CreateFolderText(code))
      text.Format("Failed to create folder \"%s\". %s", name, why);
    else
      text.Format("Failed to create folder \"%s\". System error code %d", name, code);
    Result(a, "FolderCreate", &text);
    return kOk;
  }
};

// Recursive and permanent. Paths of CZetOs::kMaxPath characters or more are
// refused first (one character fewer than the other file functions accept).
class CFolderDelete final : public TInstr<CFolderDelete> {
 public:
  static void Describe(CDescriber& d) {
    d.Head("FolderDelete ", "Deletes a folder with the specified name.")
        .Input(kTypeString, "name", "", "Acts recursively on all files and folders")
        .Output(kTypeBool, "result");
  }
  int Execute(IXInstrContext* ctx) override {
    CArgs a(ctx);
    const std::string name = a.Text(0);
    CStdStr text;
    if (name.size() >= CZetOs::kMaxPath)
      text.Format("Filename too long: %s", name.c_str());
    else if (!CZetOs::DeleteTree(name.c_str()))
      text.Format("Failed to delete folder \"%s\"", name.c_str());
    Result(a, "FolderDelete", text.empty() ? nullptr : &text);
    return kOk;
  }
};

// Copy and move: the result of `ok`, and on failure the message naming both files
// with the system's text for the last error.
int Transfer(const CArgs& a, const char* source, const char* verb, bool ok) {
  CStdStr text;
  if (!ok)
    text.Format("Failed to %s \"%s\" to \"%s\". %s", verb, a.Text(0), a.Text(1),
                CZetOsError::GetErrorMsg(CZetOsError::GetLastError()).c_str());
  Result(a, source, ok ? nullptr : &text);
  return kOk;
}

class CFileCopy final : public TInstr<CFileCopy> {
 public:
  static void Describe(CDescriber& d) {
    d.Head("FileCopy ", "Copies the source file to the destination file")
        .Input(kTypeString, "source", "")
        .Input(kTypeString, "destination", "")
        .Input(kTypeBool, "failIfExists", false,
               "The call fails if the destination file already exists.")
        .Output(kTypeBool, "result");
  }
  int Execute(IXInstrContext* ctx) override {
    CArgs a(ctx);
    return Transfer(a, "FileCopy", "copy", CZetOs::FileCopy(a.Text(0), a.Text(1), a.Bool(2)));
  }
};

class CFileMove final : public TInstr<CFileMove> {
 public:
  static void Describe(CDescriber& d) {
    d.Head("FileMove ", "Moves the source file to the specified destination.")
        .Input(kTypeString, "source", "")
        .Input(kTypeString, "destination", "")
        .Output(kTypeBool, "result");
  }
  int Execute(IXInstrContext* ctx) override {
    CArgs a(ctx);
    return Transfer(a, "FileMove", "move", CZetOs::FileMove(a.Text(0), a.Text(1)));
  }
};

// Free space (to the caller) and total in the chosen unit; all three 0 on failure.
// A file system reporting no size at all (a pseudo file system) gives 0 % free.
class CDiskSpace final : public TInstr<CDiskSpace> {
 public:
  static void Describe(CDescriber& d) {
    d.Head("DiskSpace", "Returns the amount of free and total space on specified disk drive")
        .ParamChoice("Parameters", "size units", "Select units to report sizes in", 0, 0, 3,
                     {{0, "Bytes"}, {1, "Kilobytes"}, {2, "Megabytes"}, {3, "Gigabytes"}})
        .Input(kTypeString, "disk name", "C:\\", "Report free space on this disk, e.g. C:\\")
        .Output(kTypeNumber, "free disk space")
        .Output(kTypeNumber, "total disk space")
        .Output(kTypeNumber, "percent free");
  }
  int Execute(IXInstrContext* ctx) override {
    CArgs a(ctx);
    double unit = 1.0;
    switch (a.Param(0).AsInt()) {
      case 1: unit = 1024.0; break;
      case 2: unit = 1048576.0; break;
      case 3: unit = 1073741824.0; break;
    }
    uint64_t freeToCaller = 0, total = 0, totalFree = 0;
    if (!CZetOs::GetDiskSpace(a.Text(0), &freeToCaller, &total, &totalFree)) {
      a.Out(0) = 0.0;
      a.Out(1) = 0.0;
      a.Out(2) = 0.0;
      return kOk;
    }
    const double free = static_cast<double>(freeToCaller) / unit;
    const double size = static_cast<double>(total) / unit;
    a.Out(0) = free;
    a.Out(1) = size;
    a.Out(2) = size > 0.0 ? free / size * 100.0 : 0.0;
    return kOk;
  }
};

}  // namespace
}  // namespace zet

#define ZET_FAMILY_Files ZET_THIS_FAMILY
#include "frame/Factories.def"
