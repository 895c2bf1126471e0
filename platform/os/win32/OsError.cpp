// The last error is the thread's own Windows last error; its texts are the system's
// (FormatMessageA, without the line break the system ends them with).
#include <windows.h>

#include "zet/ZetOs.h"

int CZetOsError::GetLastError() { return static_cast<int>(::GetLastError()); }
int CZetOsError::GetLastSystemError() { return static_cast<int>(::GetLastError()); }

void CZetOsError::SetLastError(int code, int /*systemError*/) {
  ::SetLastError(static_cast<DWORD>(code));
}

CStdStr CZetOsError::GetErrorMsg(int code) {
  const DWORD saved = ::GetLastError();
  char* text = nullptr;
  const DWORD n = FormatMessageA(
      FORMAT_MESSAGE_ALLOCATE_BUFFER | FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS,
      nullptr, static_cast<DWORD>(code), 0, reinterpret_cast<LPSTR>(&text), 0, nullptr);
  CStdStr s;
  if (n > 0 && text) {
    s = text;
    while (!s.empty() && (s.back() == '\n' || s.back() == '\r')) s.pop_back();
  } else {
    s.Format("System error code %d", code);
  }
  if (text) LocalFree(text);
  ::SetLastError(saved);
  return s;
}
