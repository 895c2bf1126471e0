// What the Windows files of the OS layer share: the lock of the environment.
//
// Texts: the library's texts are Windows-1252 and are handed to the Windows "A"
// functions as they are, in the process's ANSI code page. That is 1252 on the systems
// the library is made for; on a system with another ANSI code page the bytes are read
// as that code page's characters (the library does not transcode there, as the host
// it runs in does not either).
#pragma once

#include <mutex>

namespace zet::os {

// Serializes every read and write of the C runtime's environment inside the library.
std::mutex& EnvironmentLock();

}  // namespace zet::os
