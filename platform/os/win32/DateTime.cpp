// Date and time pictures through the system's own formatters, GetDateFormatA and
// GetTimeFormatA: locale 0 (the user's), flags 0, the size asked for first, then the
// text written into a buffer of that size.
#include <windows.h>

#include <vector>

#include "zet/ZetOs.h"

namespace {

SYSTEMTIME SystemTimeOf(const SZetLocalTime& t) {
  SYSTEMTIME st{};
  st.wYear = static_cast<WORD>(t.year);
  st.wMonth = static_cast<WORD>(t.month);
  st.wDayOfWeek = static_cast<WORD>(t.dayOfWeek);
  st.wDay = static_cast<WORD>(t.day);
  st.wHour = static_cast<WORD>(t.hour);
  st.wMinute = static_cast<WORD>(t.minute);
  st.wSecond = static_cast<WORD>(t.second);
  st.wMilliseconds = static_cast<WORD>(t.milliseconds);
  return st;
}

using FormatFn = int(WINAPI*)(LCID, DWORD, const SYSTEMTIME*, LPCSTR, LPSTR, int);

bool Format(FormatFn fn, const char* picture, const SZetLocalTime& t, CStdStr* out) {
  const SYSTEMTIME st = SystemTimeOf(t);
  const int size = fn(0, 0, &st, picture, nullptr, 0);
  if (size <= 0) return false;
  std::vector<char> buffer(static_cast<size_t>(size));
  if (fn(0, 0, &st, picture, buffer.data(), size) <= 0) return false;
  *out = buffer.data();
  return true;
}

}  // namespace

bool CZetOs::FormatDate(const char* picture, const SZetLocalTime& t, CStdStr* out) {
  return Format(GetDateFormatA, picture, t, out);
}

bool CZetOs::FormatTime(const char* picture, const SZetLocalTime& t, CStdStr* out) {
  return Format(GetTimeFormatA, picture, t, out);
}
