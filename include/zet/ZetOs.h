// ZetOs: the operating-system layer. Everything the instructions need from the
// system (the clock, local time and its texts, the environment, files and folders,
// message boxes, sounds, the keyboard, the random generator) goes through CZetOs, so
// no instruction calls a system API itself.
//
// The contract is the one of the Windows calls the instructions were written
// against; this header states it once, and the POSIX implementation
// (platform/os/posix/) carries it onto Linux with real components. Failures of the
// file functions leave a Windows-numbered code (CZetOsError) in the calling thread's
// last error, beside the system's own error number that gives its text.
//
// The desktop parts (X11 for the keyboard, a dialog program for message boxes,
// libcanberra for sounds) are found at run time: without them every other function
// works, the keyboard reads "no key down", a message box answers 0 at once and a
// sound is not played.
#pragma once

#include <bitset>
#include <cstddef>
#include <cstdint>

#include "zet/ZetExport.h"
#include "zet/ZetTypes.h"

// A local date and time, as the calendar shows it.
struct SZetLocalTime {
  int year = 1601;
  int month = 1;      // 1 to 12
  int dayOfWeek = 1;  // 0 Sunday to 6 Saturday
  int day = 1;        // 1 to 31
  int hour = 0;       // 0 to 23
  int minute = 0;
  int second = 0;
  int milliseconds = 0;
};

// The calling thread's last error of the file functions. Codes are numbered as the
// Windows system error codes the instructions decide on; the texts are the system's.
class ZET_PLATFORM_API CZetOsError {
 public:
  enum : int {
    kSuccess = 0,
    kFileNotFound = 2,       // the name is missing in a folder that exists
    kPathNotFound = 3,       // a folder of the path is missing, or is a file
    kAccessDenied = 5,       // also: a folder where a file is expected
    kNotEnoughMemory = 8,
    kNotSameDevice = 17,     // a folder cannot be moved to another file system
    kWriteProtect = 19,      // a read-only file system
    kGenFailure = 31,        // any other input/output error
    kSharingViolation = 32,  // busy
    kNotSupported = 50,      // not a regular file (a device, a pipe, a socket)
    kFileExists = 80,
    kInvalidParameter = 87,
    kDiskFull = 112,
    kInvalidName = 123,      // a name the system's encoding cannot represent
    kDirNotEmpty = 145,
    kBadPathName = 161,      // a relative path where an absolute one is required
    kAlreadyExists = 183,
    kFilenameTooLong = 206,  // longer than kMaxPath characters
    kCancelled = 1223,
  };

  // The last error of the calling thread (kSuccess after a function that succeeded).
  static int GetLastError();
  // The system's error number behind the last error (errno on POSIX), 0 if none.
  static int GetLastSystemError();
  static void SetLastError(int code, int systemError);

  // The system's text for a code, in Windows-1252. For the calling thread's last
  // error it is the text of the failure itself (strerror of the errno behind it);
  // for another code, the text of the system error that the code stands for.
  static CStdStr GetErrorMsg(int code);
};

class ZET_PLATFORM_API CZetOs {
 public:
  // Longest path the file functions accept: a path with more characters fails with
  // kFilenameTooLong, as the Windows ANSI calls do beyond MAX_PATH.
  static constexpr size_t kMaxPath = 259;

  // ---- clock, memory, random ----

  // Milliseconds of a monotonic clock (only differences are meaningful), with the
  // fraction of a millisecond; never 0.
  static double GetMSecTime();
  // Suspends the calling thread: 0 gives up the rest of the time slice and
  // 0xFFFFFFFF waits for ever, as the Windows Sleep does.
  static void Sleep(uint32_t milliseconds);
  static void Memset(void* dst, int value, size_t bytes);
  static void Memcpy(void* dst, const void* src, size_t bytes);
  // The Windows C runtime's generator, bit for bit, with one state per thread
  // (initially 1): state = state * 214013 + 2531011, result (state >> 16) & 0x7FFF.
  static int Rand();
  static void Srand(unsigned seed);

  // ---- local time ----

  static SZetLocalTime GetLocalTime();
  // Formats a date or a time with a Windows picture (dates: d dd ddd dddd M MM MMM
  // MMMM y yy yyyy g gg; times: h hh H HH m mm s ss t tt; text in single quotes is
  // copied, '' is one quote; any other character is copied). Day and month names and
  // the AM/PM markers come from the calling thread's locale (LC_TIME), in
  // Windows-1252. The picture is interpreted here, never handed to a system
  // formatter. False (and `out` unchanged) when the text cannot be made.
  static bool FormatDate(const char* picture, const SZetLocalTime& t, CStdStr* out);
  static bool FormatTime(const char* picture, const SZetLocalTime& t, CStdStr* out);

  // ---- environment (reads and writes are serialized) ----

  // Every entry of the process environment, "NAME=value", in table order.
  static CStdStrVector GetEnvironment();
  // The value of a variable; false when it is not set.
  static bool GetEnv(const char* name, CStdStr* value);
  // The C runtime's _putenv: "NAME=value" split at the first '='; an empty value
  // removes the variable (removing an absent one succeeds); false for an empty
  // name or when the system refuses. Names are case-sensitive.
  static bool PutEnv(const char* assignment);

  // ---- files and folders (std::filesystem; errors in CZetOsError) ----

  // True when the path names an existing entry that is not a folder (symbolic links
  // followed).
  static bool FileExists(const char* path);
  // Deletes a file (a symbolic link itself, never its target). A missing name in an
  // existing folder fails with kFileNotFound, a missing folder with kPathNotFound, a
  // folder with kAccessDenied.
  static bool FileDelete(const char* path);
  // Copies a regular file with its permissions and modification time. The copy is
  // written beside the destination under a temporary name and put in place at the
  // end, so a failure never leaves a partial destination or spoils an existing one.
  // Fails for a folder (kAccessDenied), an existing destination when failIfExists
  // (kFileExists), a read-only destination, and a source that is the destination.
  static bool FileCopy(const char* source, const char* destination, bool failIfExists);
  // Moves (renames) a file or a folder. An existing destination fails
  // (kAlreadyExists). Across file systems a file is copied and then the source
  // deleted; if the deletion fails the copy is removed again, so the file is always
  // in exactly one place. A folder cannot leave its file system (kNotSameDevice).
  static bool FileMove(const char* source, const char* destination);
  // Creates a folder with every missing folder above it (SHCreateDirectoryEx).
  // Returns 0 or the error code: kBadPathName for a relative path (one that does not
  // start with '/'), kAlreadyExists for an existing folder, kFileExists for an
  // existing file, kPathNotFound when a file stands in the path, kFilenameTooLong.
  // "." and ".." are resolved in the text first, so no folder outside the result is
  // created.
  static int CreateFolder(const char* path);
  // Deletes a folder and everything in it, or a file (a symbolic link is removed, not
  // followed). Names are literal (no wildcards). A missing path fails; so do the root,
  // "." and paths ending in "..", which are never deleted, and every path with a ".."
  // component, which would climb out of the folder it names on the way to it
  // ("DIR/sub/../../DIR", "../x"): all of these fail with kAccessDenied before
  // anything is touched.
  static bool DeleteTree(const char* path);
  // Space of the file system holding `path` (any existing path; empty: the current
  // folder; a Windows drive name such as "C:\" or "D:": the root file system), in
  // bytes: free to the caller, total, and free in all.
  static bool GetDiskSpace(const char* path, uint64_t* freeToCaller, uint64_t* total,
                           uint64_t* totalFree);

  // ---- desktop ----

  // MessageBoxA: `style` is a Windows message-box style (buttons | icon | default
  // button). Blocks until the user answers and returns the button's id (1 OK,
  // 2 Cancel, 3 Abort, 4 Retry, 5 Ignore, 6 Yes, 7 No, 10 Try Again, 11 Continue), or
  // 0 when the box cannot be shown (no display, no dialog program, an unknown button
  // set) or is closed without an answer in a set that has no Cancel. Texts are
  // Windows-1252.
  static int ShowMessageBox(const char* text, const char* caption, unsigned style);
  // MessageBeep: plays the desktop sound theme's event for a Windows sound type
  // (0xFFFFFFFF the simple beep) without waiting for it; false when it cannot be
  // queued. Without a sound device nothing is heard.
  static bool PlayMessageBeep(unsigned type);
  // GetAsyncKeyState: the virtual keys (1 to 255) held down now. False, and no key
  // down, when there is no display.
  static bool GetKeyboardState(std::bitset<256>* down);
  static bool IsKeyDown(int virtualKey);
};
