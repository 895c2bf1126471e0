// What the POSIX files of the OS layer share: text conversions between the system's
// encodings and the library's Windows-1252, the last-error bookkeeping, the lock of
// the environment and the X11 display probe.
#pragma once

#include <mutex>
#include <string>
#include <string_view>

namespace zet::os {

// Text of the calling thread's locale (its LC_CTYPE codeset: names, system messages)
// as Windows-1252; a character Windows-1252 cannot hold becomes '?'.
std::string LocaleToCp1252(std::string_view text);
// Windows-1252 as UTF-8 (what desktop programs read from their arguments); the five
// bytes Windows-1252 leaves undefined become U+FFFD.
std::string Cp1252ToUtf8(std::string_view text);

// Records a failure for CZetOsError: the Windows-numbered code and the errno behind it.
bool Fail(int code, int err);
// The Windows-numbered code of an errno, for the file functions.
int CodeOfErrno(int err);

// Serializes every read and write of the process environment inside the library
// (a child process is started under it too, since it reads the environment).
std::mutex& EnvironmentLock();
// The environment variable, read under the lock; "" when not set.
std::string GetEnvString(const char* name);

// True when an X11 display named by DISPLAY accepts a connection (libX11 is loaded at
// run time; false without it).
bool X11DisplayAvailable();

}  // namespace zet::os
