// The millisecond clock, Sleep, the memory helpers, the C runtime's own random
// generator (rand/srand, whose state the runtime keeps per thread) and the local time.
#include <windows.h>

#include <cstdlib>
#include <cstring>

#include "zet/ZetOs.h"

double CZetOs::GetMSecTime() {
  static const double kTicksPerMs = [] {
    LARGE_INTEGER f;
    QueryPerformanceFrequency(&f);
    return static_cast<double>(f.QuadPart) / 1000.0;
  }();
  LARGE_INTEGER now;
  QueryPerformanceCounter(&now);
  // Shifted by one second so that no reading is 0, which the stopwatches use for
  // "not running".
  return static_cast<double>(now.QuadPart) / kTicksPerMs + 1000.0;
}

void CZetOs::Sleep(uint32_t milliseconds) { ::Sleep(milliseconds); }

void CZetOs::Memset(void* dst, int value, size_t bytes) { std::memset(dst, value, bytes); }
void CZetOs::Memcpy(void* dst, const void* src, size_t bytes) { std::memcpy(dst, src, bytes); }

int CZetOs::Rand() { return std::rand(); }
void CZetOs::Srand(unsigned seed) { std::srand(seed); }

SZetLocalTime CZetOs::GetLocalTime() {
  SYSTEMTIME st;
  ::GetLocalTime(&st);
  SZetLocalTime t;
  t.year = st.wYear;
  t.month = st.wMonth;
  t.dayOfWeek = st.wDayOfWeek;
  t.day = st.wDay;
  t.hour = st.wHour;
  t.minute = st.wMinute;
  t.second = st.wSecond;
  t.milliseconds = st.wMilliseconds;
  return t;
}
