// A vector HSV-to-RGB conversion for bench_polar: the definition's single-precision
// operations (zet::polar::HsvToRgbPixel) on whole vectors, to measure what the
// stand-alone step would cost against the scalar definition and OpenCV. The plug-in
// computes its colours in one pass with the hue (type 9 by table, type 10 with the
// same lanes conversion).
#pragma once

#include <cstdint>

namespace zet::bench {

// HSV to RGB in place over width x height 4-byte pixels, rows in parallel above
// kParallelPixels; the same statuses and bytes as zet::polar::ScalarHsvToRgb.
int FastHsvToRgb(uint8_t* pixels, long pitch, int width, int height);

}  // namespace zet::bench
