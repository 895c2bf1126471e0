// The scalar definition of every polarization output type and of the HSV-to-RGB
// step. These loops are the reference the vector kernels are tested against; they
// are written for clarity, one loop per type, each rounding spelled out.
//
// Notation used below: F(x) rounds x to single precision. Divisions of values that
// are already single are carried out in double and then rounded to single; that is
// the same as a single-precision division (double rounding is harmless when the
// wider format has more than twice the bits), which the vector kernels rely on.
#include <cmath>

#include "image/PolarKernels.h"

namespace zet::polar {
namespace {

float F(double x) { return static_cast<float>(x); }

// The low 8 bits of a truncated result (no clamping).
uint8_t Low8(int v) { return static_cast<uint8_t>(v); }

// S0h as the divisor of types 4, 5, 10: single(S0h), or 1 when that is 0.
float Divisor(int s0h) { return s0h == 0 ? 1.0f : F(s0h); }

// Round to nearest, ties to even, then saturate to a byte.
uint8_t RoundSaturate(float x) {
  const float r = std::nearbyint(x);
  return r <= 0.0f ? 0 : r >= 255.0f ? 255 : static_cast<uint8_t>(r);
}

}  // namespace

float DolpFactor() {
  static const float k = F(255.0 / F(F(std::sqrt(65025.0)) / 127.0));
  return k;
}

// out = trunc( F( F(S + 255) / F(d) ) * 255.0 ), product in double, low 8 bits;
// d = S0h, or 1 when S0h is 0.
uint8_t StokesRatioPixel(int s, int s0h) {
  const int d = s0h == 0 ? 1 : s0h;
  const float q = F(static_cast<double>(F(s + 255)) / static_cast<double>(F(d)));
  return Low8(static_cast<int>(static_cast<double>(q) * 255.0));
}

// m = F(sqrt(F(S1^2 + S2^2))), out = trunc( F(m / s) * k ), low 8 bits. The product
// is not rounded to single: it is formed in double, where it is exact.
uint8_t DolpPixel(int s1, int s2, int s0h, float k) {
  const float s = Divisor(s0h);
  const float m = F(std::sqrt(static_cast<double>(F(s1 * s1 + s2 * s2))));
  const float r = F(static_cast<double>(m) / static_cast<double>(s));
  return Low8(static_cast<int>(static_cast<double>(r) * static_cast<double>(k)));
}

// a = F(S2 / s), b = F(S1 / s), theta = F(atan2(a, b)),
// out = trunc( (theta * 0.5 + pi/2) / pi * 255 ), low 8 bits.
uint8_t AopPixel(int s1, int s2, int s0h) {
  const double s = Divisor(s0h);
  const float a = F(s2 / s);
  const float b = F(s1 / s);
  const float theta = F(std::atan2(static_cast<double>(a), static_cast<double>(b)));
  const double v = (static_cast<double>(theta) * 0.5 + kPi / 2) / kPi * 255.0;
  return Low8(static_cast<int>(v));  // the conversion truncates
}

uint8_t HalfIntensityPixel(int s0h) {
  return Low8(static_cast<int>(static_cast<double>(Divisor(s0h)) * 0.5));
}

void HsvToRgbPixel(uint8_t* px) {
  const int hue = px[0], sat = px[1], val = px[2];
  if (sat == 0) {
    px[0] = px[1] = px[2] = static_cast<uint8_t>(val);
    return;
  }
  const float h = static_cast<float>(hue == 255 ? 0 : hue) * kSixtieth * kHueDegrees;
  const int i = static_cast<int>(h);
  const float f = h - static_cast<float>(i);
  const float v = static_cast<float>(val);
  const float sv = static_cast<float>(sat) * kInv255 * v;
  const float p = v - sv;
  const float q = v - f * sv;
  const float t = p + f * sv;
  float r, g, b;
  switch (i) {
    case 0: r = v, g = t, b = p; break;
    case 1: r = q, g = v, b = p; break;
    case 2: r = p, g = v, b = t; break;
    case 3: r = p, g = q, b = v; break;
    case 4: r = t, g = p, b = v; break;
    default: r = v, g = p, b = q; break;  // 5; h stays below 6
  }
  px[0] = RoundSaturate(r);
  px[1] = RoundSaturate(g);
  px[2] = RoundSaturate(b);
}

void ScalarRow(int type, const uint8_t* row0, const uint8_t* row1, uint8_t* dst, int cols,
               float k) {
  // Per block at column 2c: row0 holds P90, P45; row1 holds P135, P0.
  auto sum = [&](int c) { return row0[2 * c] + row0[2 * c + 1] + row1[2 * c] + row1[2 * c + 1]; };
  auto s1 = [&](int c) { return row1[2 * c + 1] - row0[2 * c]; };
  auto s2 = [&](int c) { return row0[2 * c + 1] - row1[2 * c]; };
  switch (type) {
    case kTypeI0:
    case kTypeI135:  // both take the lower-left pixel, 135 degrees
      for (int c = 0; c < cols; ++c) dst[c] = row1[2 * c];
      break;
    case kTypeI45:
    case kTypeI90:  // both take the upper-left pixel, 90 degrees
      for (int c = 0; c < cols; ++c) dst[c] = row0[2 * c];
      break;
    case kTypeDolp:
      for (int c = 0; c < cols; ++c) dst[c] = DolpPixel(s1(c), s2(c), sum(c) / 2, k);
      break;
    case kTypeAop:
      for (int c = 0; c < cols; ++c) dst[c] = AopPixel(s1(c), s2(c), sum(c) / 2);
      break;
    case kTypeS0:
      for (int c = 0; c < cols; ++c) dst[c] = Low8(sum(c) / 4);
      break;
    case kTypeS1:
      for (int c = 0; c < cols; ++c) dst[c] = StokesRatioPixel(s1(c), sum(c) / 2);
      break;
    case kTypeS2:
      for (int c = 0; c < cols; ++c) dst[c] = StokesRatioPixel(s2(c), sum(c) / 2);
      break;
    case kTypeHue:
    case kTypeHueValue:
      for (int c = 0; c < cols; ++c) {
        uint8_t* px = dst + 4 * c;
        px[0] = AopPixel(s1(c), s2(c), sum(c) / 2);
        px[1] = 255;
        px[2] = type == kTypeHue ? 255 : HalfIntensityPixel(sum(c) / 2);
        px[3] = 0;
      }
      break;
    default: break;
  }
}

int ScalarHsvToRgb(uint8_t* pixels, long pitch, int width, int height) {
  if (!pixels) return kHsvNullImage;
  if (width <= 0 || height <= 0) return kHsvBadSize;
#pragma omp parallel for schedule(static) if (static_cast<long>(width) * height > kParallelPixels)
  for (int y = 0; y < height; ++y) {
    uint8_t* row = pixels + y * pitch;
    for (int x = 0; x < width; ++x) HsvToRgbPixel(row + 4 * x);
  }
  return kHsvOk;
}

void ScalarProcess(int type, const SPolarFrame& f) {
  if (type < kTypeI0 || type > kTypeHueValue) return;
  const float k = type == kTypeDolp ? DolpFactor() : 0.0f;
  for (int r = 0; r < f.rows; ++r)
    ScalarRow(type, f.src + 2 * r * f.srcPitch, f.src + (2 * r + 1) * f.srcPitch,
              f.dst + r * f.dstPitch, f.cols, k);
  if (IsColourType(type)) ScalarHsvToRgb(f.dst, f.dstPitch, f.cols, f.rows);
}

}  // namespace zet::polar
