// The millisecond clock, Sleep, the memory helpers, the C runtime's random generator
// and the local time.
#include <sched.h>
#include <time.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "zet/ZetOs.h"

namespace {
thread_local uint32_t t_randState = 1;
}

double CZetOs::GetMSecTime() {
  timespec ts{};
  clock_gettime(CLOCK_MONOTONIC, &ts);
  // Shifted by one second so that no reading is 0, which the stopwatches use for
  // "not running".
  return (static_cast<double>(ts.tv_sec) + 1.0) * 1000.0 + static_cast<double>(ts.tv_nsec) / 1e6;
}

void CZetOs::Sleep(uint32_t milliseconds) {
  if (milliseconds == 0) {
    sched_yield();
    return;
  }
  if (milliseconds == 0xFFFFFFFFu) {
    for (;;) pause();  // INFINITE: signals are handled, the wait goes on
  }
  timespec left{static_cast<time_t>(milliseconds / 1000),
                static_cast<long>(milliseconds % 1000) * 1000000L};
  while (nanosleep(&left, &left) == -1 && errno == EINTR) {
  }
}

void CZetOs::Memset(void* dst, int value, size_t bytes) { std::memset(dst, value, bytes); }
void CZetOs::Memcpy(void* dst, const void* src, size_t bytes) { std::memcpy(dst, src, bytes); }

int CZetOs::Rand() {
  t_randState = t_randState * 214013u + 2531011u;
  return static_cast<int>((t_randState >> 16) & 0x7FFF);
}

void CZetOs::Srand(unsigned seed) { t_randState = seed; }

SZetLocalTime CZetOs::GetLocalTime() {
  timespec ts{};
  clock_gettime(CLOCK_REALTIME, &ts);
  tm local{};
  localtime_r(&ts.tv_sec, &local);
  SZetLocalTime t;
  t.year = local.tm_year + 1900;
  t.month = local.tm_mon + 1;
  t.dayOfWeek = local.tm_wday;
  t.day = local.tm_mday;
  t.hour = local.tm_hour;
  t.minute = local.tm_min;
  t.second = local.tm_sec;
  t.milliseconds = static_cast<int>(ts.tv_nsec / 1000000);
  return t;
}
