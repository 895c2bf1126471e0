// The polarization kernels on a 2448 x 2048 raw frame (a common 5-megapixel
// polarization sensor), every output type on one thread and on all threads, beside
// the baselines of the same run: memcpy of the raw frame, the scalar definition of
// each type, and for the HSV-to-RGB step OpenCV's HSV2RGB_FULL over the same number
// of pixels (when OpenCV was found at configure time).
//
//   bench_polar --benchmark_counters_tabular=true
//   ZET_BENCH_TARGET=AVX2 bench_polar      (force one compiled instruction set)
//
// Names: Fast/<type>/<threads>, Scalar/<type>/<threads>, Memcpy, HsvToRgb*/<threads>.
// Only the colour types (9, 10) and the HSV step use more than one thread.
#include <benchmark/benchmark.h>
#include <hwy/targets.h>
#include <omp.h>

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <random>
#include <vector>

#include "image/PolarKernels.h"
#include "polar/HsvToRgbFast.h"

#ifdef ZET_BENCH_OPENCV
#include <opencv2/core.hpp>
#include <opencv2/imgproc.hpp>
#endif

namespace {

using zet::polar::SPolarFrame;

constexpr int kWidth = 2448, kHeight = 2048;
constexpr int kOutWidth = kWidth / 2, kOutHeight = kHeight / 2;
constexpr long kRawBytes = static_cast<long>(kWidth) * kHeight;

// 64-byte aligned rows like the platform's images.
struct SPlane {
  long pitch;
  std::vector<uint8_t> bytes;
  SPlane(int width, int height, int bpp)
      : pitch((static_cast<long>(width) * bpp + 63) / 64 * 64),
        bytes(static_cast<size_t>(pitch) * height + 64) {}
  uint8_t* Data() {  // first row on a 64-byte boundary
    const auto p = reinterpret_cast<uintptr_t>(bytes.data());
    return bytes.data() + ((64 - p % 64) % 64);
  }
  const uint8_t* Data() const { return const_cast<SPlane*>(this)->Data(); }
};

// A plausible frame: smooth intensity, degree and angle fields plus sensor noise,
// so every direction, degree and angle occurs.
const SPlane& RawFrame() {
  static const SPlane raw = [] {
    SPlane p(kWidth, kHeight, 1);
    std::mt19937 rng(2448);
    std::normal_distribution<double> noise(0.0, 2.0);
    const double dirs[2][2] = {{1.5707963, 0.7853982}, {2.3561945, 0.0}};
    for (int y = 0; y < kHeight; ++y)
      for (int x = 0; x < kWidth; ++x) {
        const double bx = x / 2 * 2 + 1.0, by = y / 2 * 2 + 1.0;
        const double i = 40 + 200.0 * bx / kWidth;
        const double deg = 0.5 + 0.5 * std::sin(by / 97.0);
        const double phi = std::atan2(by - kHeight / 2, bx - kWidth / 2) / 2;
        const double v = i / 2 * (1 + deg * std::cos(2 * (dirs[y & 1][x & 1] - phi))) + noise(rng);
        p.Data()[y * p.pitch + x] = static_cast<uint8_t>(std::fmin(255, std::fmax(0, std::lround(v))));
      }
    return p;
  }();
  return raw;
}

void SetThreads(benchmark::State& state, int arg) {
  static const int kAll = omp_get_max_threads();
  const int threads = state.range(arg) == 0 ? kAll : static_cast<int>(state.range(arg));
  omp_set_num_threads(threads);
  state.counters["threads"] = threads;
}

void RunType(benchmark::State& state, void (*process)(int, const SPolarFrame&)) {
  const int type = static_cast<int>(state.range(0));
  SetThreads(state, 1);
  SPlane out(kOutWidth, kOutHeight, zet::polar::IsColourType(type) ? 4 : 1);
  SPolarFrame f;
  f.src = RawFrame().Data();
  f.srcPitch = RawFrame().pitch;
  f.dst = out.Data();
  f.dstPitch = out.pitch;
  f.cols = kOutWidth;
  f.rows = kOutHeight;
  for (auto _ : state) {
    process(type, f);
    benchmark::DoNotOptimize(f.dst);
    benchmark::ClobberMemory();
  }
  state.SetBytesProcessed(state.iterations() * kRawBytes);
}

void Fast(benchmark::State& state) { RunType(state, zet::polar::FastProcess); }
void Scalar(benchmark::State& state) { RunType(state, zet::polar::ScalarProcess); }

void Memcpy(benchmark::State& state) {
  SPlane copy(kWidth, kHeight, 1);
  const uint8_t* src = RawFrame().Data();
  for (auto _ : state) {
    std::memcpy(copy.Data(), src, static_cast<size_t>(kRawBytes));
    benchmark::DoNotOptimize(copy.Data());
    benchmark::ClobberMemory();
  }
  state.SetBytesProcessed(state.iterations() * kRawBytes);
}

// An HSV image of the output's size with every hue, saturation and value.
SPlane HsvImage(int bpp) {
  SPlane p(kOutWidth, kOutHeight, bpp);
  std::mt19937 rng(9);
  for (int y = 0; y < kOutHeight; ++y)
    for (int x = 0; x < kOutWidth * bpp; ++x) p.Data()[y * p.pitch + x] = static_cast<uint8_t>(rng());
  return p;
}

// In place, as the instruction runs it; the conversion's cost does not depend on
// the pixel values, so converting already converted pixels measures the same work.
void HsvToRgbLoop(benchmark::State& state, int (*convert)(uint8_t*, long, int, int)) {
  SetThreads(state, 0);
  SPlane img = HsvImage(4);
  for (auto _ : state) {
    convert(img.Data(), img.pitch, kOutWidth, kOutHeight);
    benchmark::ClobberMemory();
  }
  state.SetItemsProcessed(state.iterations() * kOutWidth * kOutHeight);
}

// The vector conversion lives here, not in the plug-in: it must give the definition's
// bytes for every (H, S, V) before its time means anything (checked once per process,
// on a 4096 x 4096 image of all of them).
bool FastHsvIsExact() {
  static const bool exact = [] {
    constexpr int kSide = 4096;
    SPlane want(kSide, kSide, 4), got(kSide, kSide, 4);
    for (int y = 0; y < kSide; ++y)
      for (int x = 0; x < kSide; ++x) {
        const uint32_t hsv = static_cast<uint32_t>(y) * kSide + static_cast<uint32_t>(x);
        const uint8_t px[4] = {static_cast<uint8_t>(hsv), static_cast<uint8_t>(hsv >> 8),
                               static_cast<uint8_t>(hsv >> 16), static_cast<uint8_t>(x * 7)};
        std::memcpy(want.Data() + y * want.pitch + 4 * x, px, 4);
        std::memcpy(got.Data() + y * got.pitch + 4 * x, px, 4);
      }
    zet::polar::ScalarHsvToRgb(want.Data(), want.pitch, kSide, kSide);
    zet::bench::FastHsvToRgb(got.Data(), got.pitch, kSide, kSide);
    for (int y = 0; y < kSide; ++y)
      if (std::memcmp(want.Data() + y * want.pitch, got.Data() + y * got.pitch, 4 * kSide) != 0)
        return false;
    return true;
  }();
  return exact;
}

void HsvToRgbFast(benchmark::State& state) {
  if (!FastHsvIsExact()) {
    state.SkipWithError("the vector conversion differs from the definition");
    return;
  }
  HsvToRgbLoop(state, zet::bench::FastHsvToRgb);
}
void HsvToRgbScalar(benchmark::State& state) { HsvToRgbLoop(state, zet::polar::ScalarHsvToRgb); }

#ifdef ZET_BENCH_OPENCV
void HsvToRgbOpenCV(benchmark::State& state) {
  SetThreads(state, 0);
  cv::setNumThreads(static_cast<int>(state.counters["threads"]));
  SPlane src = HsvImage(3);
  const cv::Mat hsv(kOutHeight, kOutWidth, CV_8UC3, src.Data(), static_cast<size_t>(src.pitch));
  cv::Mat rgb(kOutHeight, kOutWidth, CV_8UC3);
  for (auto _ : state) {
    cv::cvtColor(hsv, rgb, cv::COLOR_HSV2RGB_FULL);
    benchmark::DoNotOptimize(rgb.data);
    benchmark::ClobberMemory();
  }
  state.SetItemsProcessed(state.iterations() * kOutWidth * kOutHeight);
}
#endif

void TypesAndThreads(benchmark::internal::Benchmark* b) {
  for (int type = 0; type <= 10; ++type) {
    b->Args({type, 1});
    if (zet::polar::IsColourType(type)) b->Args({type, 0});  // 0: all threads
  }
}

}  // namespace

// Forces the instruction set named by ZET_BENCH_TARGET (AVX3, AVX2, SSE4, ...).
const bool kTargetForced = [] {
  const char* want = std::getenv("ZET_BENCH_TARGET");
  if (!want) return false;
  for (const int64_t t : hwy::SupportedAndGeneratedTargets())
    if (std::strcmp(hwy::TargetName(t), want) == 0) {
      hwy::SetSupportedTargetsForTest(t);
      return true;
    }
  std::fprintf(stderr, "ZET_BENCH_TARGET=%s is not available here\n", want);
  std::exit(2);
}();

BENCHMARK(Memcpy)->Unit(benchmark::kMicrosecond);
BENCHMARK(Fast)->Apply(TypesAndThreads)->Unit(benchmark::kMicrosecond);
BENCHMARK(Scalar)->Apply(TypesAndThreads)->Unit(benchmark::kMicrosecond);
BENCHMARK(HsvToRgbFast)->Arg(1)->Arg(0)->Unit(benchmark::kMicrosecond);
BENCHMARK(HsvToRgbScalar)->Arg(1)->Arg(0)->Unit(benchmark::kMicrosecond);
#ifdef ZET_BENCH_OPENCV
BENCHMARK(HsvToRgbOpenCV)->Arg(1)->Arg(0)->Unit(benchmark::kMicrosecond);
#endif
BENCHMARK_MAIN();
