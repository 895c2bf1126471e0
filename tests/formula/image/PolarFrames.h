// Test frames for the polarization kernels: raw frames with padded rows, the
// super-pixel that realises given (S1, S2, sum), and a runner that compares the
// vector kernels against the scalar definition on every compiled instruction set.
#pragma once

#include <gtest/gtest.h>
#include <hwy/targets.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <string>
#include <vector>

#include "image/PolarKernels.h"

namespace zet::test {

// A raw frame or an output image held in a plain buffer with a padded pitch, so that
// a write past the row end shows in the padding.
struct SBuffer {
  int width = 0, height = 0, bpp = 1;
  long pitch = 0;
  std::vector<uint8_t> bytes;

  SBuffer(int w, int h, int bytesPerPixel, uint8_t fill = 0)
      : width(w), height(h), bpp(bytesPerPixel), pitch(w * bytesPerPixel + 13),
        bytes(static_cast<size_t>(pitch) * (h > 0 ? h : 0) + 1, fill) {}
  uint8_t* Row(int y) { return bytes.data() + y * pitch; }
  const uint8_t* Row(int y) const { return bytes.data() + y * pitch; }
};

// The four directions whose Stokes values are (S1, S2) and whose sum is `sum`
// (which must be reachable: |S1| + |S2| <= sum <= 1020 - |S1| - |S2|, same parity
// as S1 + S2). Returns {P90, P45, P135, P0}, the block's bytes in memory order.
inline std::array<uint8_t, 4> BlockFor(int s1, int s2, int sum) {
  const int u = std::max(std::abs(s1), sum - 510 + std::abs(s2));  // P0 + P90
  const int v = sum - u;                                           // P45 + P135
  return {static_cast<uint8_t>((u - s1) / 2), static_cast<uint8_t>((v + s2) / 2),
          static_cast<uint8_t>((v - s2) / 2), static_cast<uint8_t>((u + s1) / 2)};
}

inline void PutBlock(SBuffer& frame, int col, int row, const std::array<uint8_t, 4>& b) {
  frame.Row(2 * row)[2 * col] = b[0];
  frame.Row(2 * row)[2 * col + 1] = b[1];
  frame.Row(2 * row + 1)[2 * col] = b[2];
  frame.Row(2 * row + 1)[2 * col + 1] = b[3];
}

// Runs `type` over the whole raw frame with `process`; returns the output buffer.
inline SBuffer RunKernel(void (*process)(int, const polar::SPolarFrame&), int type,
                         const SBuffer& raw) {
  SBuffer out(raw.width / 2, raw.height / 2, polar::IsColourType(type) ? 4 : 1, 0xA5);
  process(type, {raw.bytes.data(), raw.pitch, out.bytes.data(), out.pitch, out.width, out.height});
  return out;
}

// Every compiled instruction set this processor has, each forced in turn.
inline void ForEachTarget(const std::function<void(const char*)>& body) {
  for (const int64_t target : hwy::SupportedAndGeneratedTargets()) {
    hwy::SetSupportedTargetsForTest(target);
    body(hwy::TargetName(target));
  }
  hwy::SetSupportedTargetsForTest(0);
}

// The first differing pixel of two outputs, or "" when equal (padding included).
inline std::string FirstDifference(const SBuffer& want, const SBuffer& got) {
  for (int y = 0; y < want.height; ++y)
    for (long i = 0; i < want.pitch; ++i)
      if (want.Row(y)[i] != got.Row(y)[i])
        return "row " + std::to_string(y) + " byte " + std::to_string(i) + ": want " +
               std::to_string(want.Row(y)[i]) + ", got " + std::to_string(got.Row(y)[i]);
  return "";
}

// The first difference of the vector kernels from the definition for `type` over `raw`.
inline std::string FastVsScalar(int type, const SBuffer& raw) {
  return FirstDifference(RunKernel(polar::ScalarProcess, type, raw),
                         RunKernel(polar::FastProcess, type, raw));
}

}  // namespace zet::test
