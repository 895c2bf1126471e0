// The vector kernels against the scalar definition, on every compiled instruction
// set: random and structured frames of odd sizes (so every vector tail runs), and
// the stand-alone HSV-to-RGB conversion. The exhaustive sweep of the whole input
// domain is in PolarKernels_exhaustive.cpp.
#include <random>

#include "PolarFrames.h"
#include "image/PolarTables.h"

namespace zet::test {
namespace {

using polar::FastProcess;
using polar::ScalarProcess;

struct SFrameKind {
  const char* name;
  std::function<uint8_t(int x, int y, std::mt19937& rng)> pixel;
};

// Frames that reach the corners of the domain: noise, extremes, flat areas, pure
// polarisation along each axis (S2 = 0 with S1 of either sign: the exact angles 0
// and pi), and smooth gradients that cross many truncation boundaries.
const std::vector<SFrameKind>& FrameKinds() {
  static const std::vector<SFrameKind> kinds = {
      {"random", [](int, int, std::mt19937& r) { return static_cast<uint8_t>(r()); }},
      {"extremes", [](int, int, std::mt19937& r) { return static_cast<uint8_t>(r() & 1 ? 255 : 0); }},
      {"small", [](int, int, std::mt19937& r) { return static_cast<uint8_t>(r() % 3); }},
      {"flat", [](int, int, std::mt19937&) { return uint8_t{100}; }},
      {"black", [](int, int, std::mt19937&) { return uint8_t{0}; }},
      {"horizontal", [](int x, int y, std::mt19937&) {  // P0 bright, others dark: S2 = 0
         return static_cast<uint8_t>((x & 1) && (y & 1) ? 255 : (x & 1) != (y & 1) ? 40 : 0);
       }},
      {"vertical", [](int x, int y, std::mt19937&) {  // P90 bright: S2 = 0, S1 < 0
         return static_cast<uint8_t>(!(x & 1) && !(y & 1) ? 200 : (x & 1) != (y & 1) ? 7 : 0);
       }},
      {"gradient", [](int x, int y, std::mt19937&) {
         return static_cast<uint8_t>((x * 7 + y * 3 + (x & 1) * y) & 255);
       }},
  };
  return kinds;
}

SBuffer MakeFrame(const SFrameKind& kind, int w, int h, unsigned seed) {
  std::mt19937 rng(seed);
  SBuffer raw(w, h, 1, 0x5A);
  for (int y = 0; y < h; ++y)
    for (int x = 0; x < w; ++x) raw.Row(y)[x] = kind.pixel(x, y, rng);
  return raw;
}

TEST(PolarKernels, MatchTheDefinitionOnEveryTarget) {
  // Odd widths: the widest vector takes 16 blocks of 32-bit lanes or 32 of 16-bit.
  const int sizes[][2] = {{1, 1}, {2, 2}, {3, 5}, {15, 3}, {33, 4}, {67, 9}, {131, 6}, {259, 3}};
  ForEachTarget([&](const char* target) {
    unsigned seed = 1;
    for (const SFrameKind& kind : FrameKinds())
      for (const auto& size : sizes) {
        const SBuffer raw = MakeFrame(kind, size[0], size[1], seed++);
        for (int type = polar::kTypeI0; type <= polar::kTypeNone; ++type) {
          SCOPED_TRACE(std::string(target) + " " + kind.name + " " + std::to_string(size[0]) +
                       "x" + std::to_string(size[1]) + " type " + std::to_string(type));
          EXPECT_EQ(FirstDifference(RunKernel(ScalarProcess, type, raw),
                                    RunKernel(FastProcess, type, raw)),
                    "");
        }
      }
  });
}

// Colour types above the parallel threshold run their rows on several threads.
TEST(PolarKernels, LargeColourFramesMatch) {
  const SBuffer raw = MakeFrame(FrameKinds()[0], 301, 77, 99);
  for (int type : {polar::kTypeHue, polar::kTypeHueValue}) {
    SCOPED_TRACE(type);
    EXPECT_EQ(FirstDifference(RunKernel(ScalarProcess, type, raw), RunKernel(FastProcess, type, raw)),
              "");
  }
}

// The AoP table marks the few (S1, S2) whose angle lies within a hair of a
// truncation boundary; blocks with those values are recomputed by the definition.
TEST(PolarKernels, MarkedAnglesTakeTheDefinition) {
  std::vector<std::pair<int, int>> marked;
  for (int s1 = -255; s1 <= 255; ++s1)
    for (int s2 = -255; s2 <= 255; ++s2)
      if (s2 != 0 && polar::AopTable()[(s1 + 255) << polar::kPairShift | (s2 + 255)] ==
                         polar::kAopRecompute)
        marked.emplace_back(s1, s2);
  ASSERT_GT(marked.size(), 10u);
  ASSERT_LT(marked.size(), 1000u);
  // A row pair per marked (S1, S2), its blocks spread over the reachable sums.
  const int cols = 45;
  SBuffer raw(2 * cols, 2 * static_cast<int>(marked.size()), 1);
  for (size_t r = 0; r < marked.size(); ++r) {
    const auto [s1, s2] = marked[r];
    const int edge = std::abs(s1) + std::abs(s2), sums = (1020 - 2 * edge) / 2 + 1;
    for (int c = 0; c < cols; ++c)
      PutBlock(raw, c, static_cast<int>(r), BlockFor(s1, s2, edge + 2 * (c * 7919 % sums)));
  }
  ForEachTarget([&](const char* target) {
    for (int type : {polar::kTypeAop, polar::kTypeHue, polar::kTypeHueValue}) {
      SCOPED_TRACE(std::string(target) + " type " + std::to_string(type));
      EXPECT_EQ(FirstDifference(RunKernel(ScalarProcess, type, raw), RunKernel(FastProcess, type, raw)),
                "");
    }
  });
}

TEST(PolarKernels, HsvToRgbMatchesAndKeepsTheFourthByte) {
  std::mt19937 rng(7);
  SBuffer hsv(97, 50, 4);  // 4850 pixels: above the parallel threshold
  for (auto& b : hsv.bytes) b = static_cast<uint8_t>(rng());
  for (int y = 0; y < 3; ++y) hsv.Row(y)[1 + 4 * y] = 0;  // grey pixels
  SBuffer want = hsv;
  ASSERT_EQ(polar::ScalarHsvToRgb(want.bytes.data(), want.pitch, want.width, want.height), 0);
  for (int y = 0; y < want.height; ++y)
    for (int x = 0; x < want.width; ++x) ASSERT_EQ(want.Row(y)[4 * x + 3], hsv.Row(y)[4 * x + 3]);
  ForEachTarget([&](const char* target) {
    SCOPED_TRACE(target);
    for (const int w : {want.width, 13, 1}) {
      SBuffer got = hsv;
      ASSERT_EQ(polar::FastHsvToRgb(got.bytes.data(), got.pitch, w, got.height), 0);
      SBuffer ref = hsv;
      polar::ScalarHsvToRgb(ref.bytes.data(), ref.pitch, w, ref.height);
      EXPECT_EQ(FirstDifference(ref, got), "") << "width " << w;
    }
  });
}

TEST(PolarKernels, HsvToRgbStatuses) {
  uint8_t px[4] = {1, 2, 3, 4};
  for (auto* convert : {polar::ScalarHsvToRgb, polar::FastHsvToRgb}) {
    EXPECT_EQ(convert(nullptr, 4, 1, 1), polar::kHsvNullImage);
    EXPECT_EQ(convert(px, 4, 0, 1), polar::kHsvBadSize);
    EXPECT_EQ(convert(px, 4, 1, -1), polar::kHsvBadSize);
    EXPECT_EQ(px[0], 1);
  }
}

// Hand-worked values of the definition's formulas not already met through the
// instruction's own tests.
TEST(PolarKernels, DefinitionValues) {
  EXPECT_EQ(polar::DolpFactor(), 127.0f);
  const struct {
    const char* what;
    int got, want;
  } cases[] = {
      {"S1 fully polarised: 510, low byte", polar::StokesRatioPixel(255, 255), 254},
      {"AoP -45 degrees", polar::AopPixel(255, -255, 255), 95},
      {"value byte of S0h 0", polar::HalfIntensityPixel(0), 0},
      {"value byte of S0h 201", polar::HalfIntensityPixel(201), 100},
  };
  for (const auto& c : cases) EXPECT_EQ(c.got, c.want) << c.what;

  // HSV: grey, pure hues at the sector starts, and H = 255 taken as 0.
  const struct {
    uint8_t in[4];
    uint8_t out[4];
  } hsv[] = {
      {{9, 0, 77, 5}, {77, 77, 77, 5}},
      {{0, 255, 255, 0}, {255, 0, 0, 0}},
      {{255, 255, 255, 0}, {255, 0, 0, 0}},
      {{85, 255, 255, 0}, {0, 255, 0, 0}},
      {{170, 255, 200, 9}, {0, 0, 200, 9}},
      {{127, 255, 255, 0}, {0, 255, 252, 0}},
  };
  for (const auto& c : hsv) {
    uint8_t px[4];
    std::memcpy(px, c.in, 4);
    polar::HsvToRgbPixel(px);
    EXPECT_EQ(std::vector<int>(px, px + 4), std::vector<int>(c.out, c.out + 4))
        << "H " << int(c.in[0]) << " S " << int(c.in[1]) << " V " << int(c.in[2]);
  }
}

}  // namespace
}  // namespace zet::test
