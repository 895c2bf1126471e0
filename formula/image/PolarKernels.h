// Pixel kernels of the polarization-camera instruction: the plain scalar definition
// of every output type (PolarScalar.cpp) and the vector kernels that must give the
// same bytes (PolarKernels.cpp, compiled once per instruction set and chosen at run
// time).
//
// The raw frame holds one super-pixel per 2 x 2 block: row 0 holds 90 and 45 degrees,
// row 1 holds 135 and 0 degrees. Every output type makes one pixel per block.
#pragma once

#include <cstdint>

namespace zet::polar {

// Output types, the values of the instruction's parameter. kTypeNone passes the
// parameter guard but writes no pixels.
enum : int {
  kTypeI0 = 0,
  kTypeI45 = 1,
  kTypeI90 = 2,
  kTypeI135 = 3,
  kTypeDolp = 4,
  kTypeAop = 5,
  kTypeS0 = 6,
  kTypeS1 = 7,
  kTypeS2 = 8,
  kTypeHue = 9,
  kTypeHueValue = 10,
  kTypeNone = 11,
};

inline bool IsColourType(int type) { return type == kTypeHue || type == kTypeHueValue; }

// The HSV-to-RGB step runs its rows in parallel above this many pixels.
inline constexpr long kParallelPixels = 4096;

// Constants of the definition, for the scalar code and every vector copy of it.
inline constexpr double kPi = 3.14159265358979323846;
// HSV to RGB works in single precision with these factors.
inline constexpr float kSixtieth = 0.016666668f;  // 1/60
inline constexpr float kHueDegrees = 1.4117647f;  // 360/255
inline constexpr float kInv255 = 0.003921569f;    // 1/255
static_assert(kSixtieth == 1.0f / 60.0f && kHueDegrees == 360.0f / 255.0f &&
              kInv255 == 1.0f / 255.0f);

// Statuses of the HSV-to-RGB conversion (the instruction ignores them).
enum : int { kHsvOk = 0, kHsvBadSize = -6, kHsvNullImage = -8 };

// One run over a frame: `cols` x `rows` output pixels, from input rows 2r and 2r+1.
struct SPolarFrame {
  const uint8_t* src = nullptr;
  long srcPitch = 0;
  uint8_t* dst = nullptr;
  long dstPitch = 0;
  int cols = 0;
  int rows = 0;
};

// ---- The scalar definition ----

// The DoLP factor 255 / (sqrt(65025) / 127) in single precision (127.0), computed on
// first use and kept for the life of the process.
float DolpFactor();

// One super-pixel's results from its derived integers: s1 = P0 - P90,
// s2 = P45 - P135, s0h = (P0 + P45 + P90 + P135) / 2.
uint8_t StokesRatioPixel(int s, int s0h);  // types 7 (s = s1) and 8 (s = s2)
uint8_t DolpPixel(int s1, int s2, int s0h, float k);
uint8_t AopPixel(int s1, int s2, int s0h);
// Type 10's value byte: the mean intensity of the four directions.
uint8_t HalfIntensityPixel(int s0h);
// HSV to RGB of one 4-byte pixel in place; byte 3 is left alone.
void HsvToRgbPixel(uint8_t* px);

// One output row of `type` (0..10) from the input rows 2r (row0) and 2r+1 (row1).
// Types 9 and 10 write hue, saturation, value and 0 here, before the conversion.
void ScalarRow(int type, const uint8_t* row0, const uint8_t* row1, uint8_t* dst, int cols,
               float k);
// HSV to RGB in place over width x height 4-byte pixels, rows in parallel above
// kParallelPixels. Returns kHsvNullImage, kHsvBadSize or kHsvOk.
int ScalarHsvToRgb(uint8_t* pixels, long pitch, int width, int height);
// The whole pixel step of one run, as defined: the loop of `type`, then for types
// 9 and 10 the HSV-to-RGB conversion of the written area. kTypeNone does nothing.
void ScalarProcess(int type, const SPolarFrame& frame);

// ---- The vector kernels (same bytes as the definition) ----

// The AoP kernels compute the angle in single precision; a block whose byte value lies
// within this distance of an integer takes the definition instead.
inline constexpr float kAopMargin = 1.0f / 8192;

// The whole pixel step; types 9 and 10 compute hue and colour in one pass per row.
void FastProcess(int type, const SPolarFrame& frame);

}  // namespace zet::polar
