// Lookup tables of the polarization vector kernels. Each is built from the scalar
// definition on first use (thread-safe) and kept for the life of the process; each
// is padded by 3 bytes so that a 32-bit gather may read any byte entry.
#pragma once

#include <cstdint>

namespace zet::polar {

// The AoP table is indexed by two small integers as (first << 9) | second.
inline constexpr int kPairShift = 9;

// Types 5, 9 and 10: the AoP byte for (S1 + 255, S2 + 255). (A table folded into
// the first octant, 33 KB, measured slower: the reflection costs more than the
// misses it saves, and so did scalar loads instead of the vector gather.) The definition's byte
// depends on S0h only through roundings that move its value before truncation by
// less than 1e-5; where the exact angle lies closer than kAopMargin to a truncation
// boundary the entry is kAopRecompute and the kernel recomputes that block with the
// definition. For S2 != 0 the definition never reaches 255 (its angle stays below
// pi), so 255 is free to serve as the marker; for S2 = 0 the angle is exactly 0 or
// single(pi) whatever S0h is, and the entries 127 and 255 are the bytes themselves.
inline constexpr uint8_t kAopRecompute = 255;
inline constexpr double kAopMargin = 1.0 / 8192;
const uint8_t* AopTable();

// Type 9 (the table below and its recomputed blocks): R | G << 8 | B << 16 of hue H
// at saturation 255 and value V, indexed by V << 8 | H.
const int32_t* HueRgbTable();

// Type 9: R | G << 8 | B << 16 of (AoP byte, 255, 255) for (S1 + 255, S2 + 255),
// indexed like the AoP table; negative where the AoP entry is the marker.
const int32_t* HueColourTable();

// What a row kernel reads besides its pixels: the DoLP factor and the tables of its
// type (null when the type does not use them).
struct SRowArgs {
  float dolpFactor = 0.0f;
  const uint8_t* aop = nullptr;
  const int32_t* hueRgb = nullptr;
  const int32_t* hueColour = nullptr;
};

}  // namespace zet::polar
