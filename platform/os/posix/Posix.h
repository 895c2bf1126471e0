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

// What crosses to the system by name (file and folder names, environment names and
// values) is UTF-8 there, whatever the locale says: it is how names are stored on
// Linux and what other programs write. Windows-1252 to UTF-8 fails only for the five
// bytes Windows-1252 leaves undefined; UTF-8 to Windows-1252 writes '?' for what
// Windows-1252 cannot hold (and for broken UTF-8) and then returns false.
bool Cp1252ToSystem(std::string_view text, std::string* out);
bool SystemToCp1252(std::string_view text, std::string* out);

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
