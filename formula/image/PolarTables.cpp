// The lookup tables of the polarization vector kernels (see PolarTables.h), filled
// from the scalar definition. Building them takes a few milliseconds, once.
#include "image/PolarTables.h"

#include <cmath>
#include <vector>

#include "image/PolarKernels.h"

namespace zet::polar {
namespace {

constexpr size_t kPairEntries = size_t{511} << kPairShift;
constexpr size_t kGatherPad = 3;

// The AoP byte of (S1, S2) from the exact angle, or kAopRecompute near a boundary.
uint8_t AopEntry(int s1, int s2) {
  if (s2 == 0) return s1 < 0 ? 255 : 127;
  const double v = (std::atan2(s2, s1) * 0.5 + kPi / 2) / kPi * 255.0;
  if (std::fabs(v - std::nearbyint(v)) < kAopMargin) return kAopRecompute;
  return static_cast<uint8_t>(v);
}

}  // namespace

const uint8_t* AopTable() {
  static const std::vector<uint8_t> table = [] {
    std::vector<uint8_t> t(kPairEntries + kGatherPad);
    for (int s1 = -255; s1 <= 255; ++s1)
      for (int s2 = -255; s2 <= 255; ++s2)
        t[static_cast<size_t>(s1 + 255) << kPairShift | (s2 + 255)] = AopEntry(s1, s2);
    return t;
  }();
  return table.data();
}

const int32_t* HueRgbTable() {
  static const std::vector<int32_t> table = [] {
    std::vector<int32_t> t(256 * 256);
    for (int v = 0; v < 256; ++v)
      for (int h = 0; h < 256; ++h) {
        uint8_t px[4] = {static_cast<uint8_t>(h), 255, static_cast<uint8_t>(v), 0};
        HsvToRgbPixel(px);
        t[v << 8 | h] = px[0] | px[1] << 8 | px[2] << 16;
      }
    return t;
  }();
  return table.data();
}

const int32_t* HueColourTable() {
  static const std::vector<int32_t> table = [] {
    const uint8_t* aop = AopTable();
    const int32_t* rgb = HueRgbTable();
    std::vector<int32_t> t(kPairEntries);
    for (int s1 = -255; s1 <= 255; ++s1)
      for (int s2 = -255; s2 <= 255; ++s2) {
        const size_t i = static_cast<size_t>(s1 + 255) << kPairShift | (s2 + 255);
        t[i] = aop[i] == kAopRecompute && s2 != 0 ? -1 : rgb[255 << 8 | aop[i]];
      }
    return t;
  }();
  return table.data();
}

}  // namespace zet::polar
