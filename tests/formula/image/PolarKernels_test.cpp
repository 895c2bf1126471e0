// The vector kernels against the scalar definition, on every compiled instruction
// set: random and structured frames of odd sizes (so every vector tail runs). The
// exhaustive sweep of the whole input domain is in PolarKernels_exhaustive.cpp;
// known values are met through the instruction's own tests.
#include <random>

#include "PolarFrames.h"

namespace zet::test {
namespace {

// Frames that reach the corners of the domain: noise, extremes, flat areas, pure
// polarisation along each axis (S2 = 0 with S1 of either sign: the exact angles 0
// and pi), and smooth gradients that cross many truncation boundaries.
struct SFrameKind {
  const char* name;
  uint8_t (*pixel)(int x, int y, std::mt19937& rng);
};
constexpr SFrameKind kFrameKinds[] = {
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

TEST(PolarKernels, MatchTheDefinitionOnEveryTarget) {
  // Odd widths: the widest vector takes 16 blocks of 32-bit lanes or 32 of 16-bit. The
  // last size puts the colour types above the parallel threshold (rows on several threads).
  const int sizes[][2] = {{1, 1}, {2, 2}, {3, 5}, {15, 3}, {33, 4}, {67, 9}, {131, 6},
                          {259, 3}, {301, 77}};
  ForEachTarget([&](const char* target) {
    unsigned seed = 1;
    for (const SFrameKind& kind : kFrameKinds)
      for (const auto& [w, h] : sizes) {
        std::mt19937 rng(seed++);
        SBuffer raw(w, h, 1, 0x5A);
        for (int y = 0; y < h; ++y)
          for (int x = 0; x < w; ++x) raw.Row(y)[x] = kind.pixel(x, y, rng);
        for (int type = polar::kTypeI0; type <= polar::kTypeNone; ++type)
          EXPECT_EQ(FastVsScalar(type, raw), "")
              << target << " " << kind.name << " " << w << "x" << h << " type " << type;
      }
  });
}

// The (S1, S2) whose exact angle lies within twice the kernels' margin of a
// truncation boundary: the kernels' single-precision angle may fall on either side,
// and the definition's own roundings decide. Every reachable S0h of each is tried.
TEST(PolarKernels, AnglesAtTruncationBoundaries) {
  std::vector<std::pair<int, int>> marked;
  for (int s1 = -255; s1 <= 255; ++s1)
    for (int s2 = -255; s2 <= 255; ++s2) {
      const double v = (std::atan2(s2, s1) * 0.5 + polar::kPi / 2) / polar::kPi * 255.0;
      if (s2 != 0 && std::fabs(v - std::nearbyint(v)) < 2 * polar::kAopMargin)
        marked.emplace_back(s1, s2);
    }
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
    for (int type : {polar::kTypeAop, polar::kTypeHue, polar::kTypeHueValue})
      EXPECT_EQ(FastVsScalar(type, raw), "") << target << " type " << type;
  });
}

// The HSV-to-RGB step of the definition: bad arguments write nothing; saturation 0 is
// grey whatever the hue, and the fourth byte is left alone.
TEST(PolarKernels, HsvToRgbArgumentsAndGrey) {
  uint8_t px[4] = {9, 0, 77, 5};
  EXPECT_EQ(polar::ScalarHsvToRgb(nullptr, 4, 1, 1), polar::kHsvNullImage);
  EXPECT_EQ(polar::ScalarHsvToRgb(px, 4, 0, 1), polar::kHsvBadSize);
  EXPECT_EQ(polar::ScalarHsvToRgb(px, 4, 1, -1), polar::kHsvBadSize);
  EXPECT_EQ(polar::ScalarHsvToRgb(px, 4, 1, 1), polar::kHsvOk);
  EXPECT_EQ(std::vector<int>(px, px + 4), (std::vector<int>{77, 77, 77, 5}));
}

}  // namespace
}  // namespace zet::test
