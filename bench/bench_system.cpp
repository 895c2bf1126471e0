// The OS layer's date pictures and random numbers beside the C library doing the same
// work: a long date picture against strftime of the same fields, and the 15-bit
// per-thread generator against rand_r.
#include <benchmark/benchmark.h>

#include <cstdlib>
#include <ctime>

#include "zet/ZetOs.h"

namespace {

SZetLocalTime Sample() {
  SZetLocalTime t;
  t.year = 2026;
  t.month = 11;
  t.day = 23;
  t.dayOfWeek = 1;
  t.hour = 14;
  t.minute = 5;
  t.second = 9;
  return t;
}

void BM_DatePicture(benchmark::State& state) {
  const SZetLocalTime t = Sample();
  CStdStr out;
  for (auto _ : state) {
    benchmark::DoNotOptimize(CZetOs::FormatDate("dddd, d MMMM yyyy", t, &out));
    benchmark::DoNotOptimize(out.c_str());
  }
}
BENCHMARK(BM_DatePicture);

void BM_DateStrftime(benchmark::State& state) {
  std::tm tm{};
  tm.tm_year = 126;
  tm.tm_mon = 10;
  tm.tm_mday = 23;
  tm.tm_wday = 1;
  char buf[64];
  for (auto _ : state) {
    benchmark::DoNotOptimize(std::strftime(buf, sizeof buf, "%A, %e %B %Y", &tm));
    benchmark::DoNotOptimize(buf);
  }
}
BENCHMARK(BM_DateStrftime);

void BM_TimePicture(benchmark::State& state) {
  const SZetLocalTime t = Sample();
  CStdStr out;
  for (auto _ : state) {
    benchmark::DoNotOptimize(CZetOs::FormatTime("HH:mm:ss", t, &out));
    benchmark::DoNotOptimize(out.c_str());
  }
}
BENCHMARK(BM_TimePicture);

void BM_TimeStrftime(benchmark::State& state) {
  std::tm tm{};
  tm.tm_hour = 14;
  tm.tm_min = 5;
  tm.tm_sec = 9;
  char buf[64];
  for (auto _ : state) {
    benchmark::DoNotOptimize(std::strftime(buf, sizeof buf, "%H:%M:%S", &tm));
    benchmark::DoNotOptimize(buf);
  }
}
BENCHMARK(BM_TimeStrftime);

void BM_Rand(benchmark::State& state) {
  CZetOs::Srand(1);
  for (auto _ : state) benchmark::DoNotOptimize(CZetOs::Rand());
}
BENCHMARK(BM_Rand);

void BM_RandR(benchmark::State& state) {
  unsigned seed = 1;
  for (auto _ : state) benchmark::DoNotOptimize(rand_r(&seed));
}
BENCHMARK(BM_RandR);

}  // namespace

BENCHMARK_MAIN();
