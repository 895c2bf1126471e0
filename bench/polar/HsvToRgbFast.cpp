// The vector HSV-to-RGB conversion of bench_polar (see HsvToRgbFast.h), compiled once
// per instruction set: the lanes conversion of image/PolarHsv-inl.h over whole rows.
#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "polar/HsvToRgbFast.cpp"
#include <hwy/foreach_target.h>  // IWYU pragma: keep

#include <hwy/highway.h>

#include "image/PolarHsv-inl.h"
#include "image/PolarKernels.h"
#include "polar/HsvToRgbFast.h"

HWY_BEFORE_NAMESPACE();
namespace zet::bench {
namespace HWY_NAMESPACE {
namespace hn = hwy::HWY_NAMESPACE;

using polar::HsvToRgbPixel;

#if HWY_TARGET == HWY_SCALAR

void HsvRowImpl(uint8_t* px, int width) {
  for (int x = 0; x < width; ++x) HsvToRgbPixel(px + 4 * x);
}

#else

using D32 = hn::ScalableTag<int32_t>;
using DF = hn::Rebind<float, D32>;
using V32 = hn::Vec<D32>;
using VF = hn::Vec<DF>;

void HsvRowImpl(uint8_t* px, int width) {
  const D32 d;
  const int n = static_cast<int>(hn::Lanes(d));
  const V32 lo = hn::Set(d, 0xFF);
  const V32 fourth = hn::Set(d, static_cast<int32_t>(0xFF000000u));
  int x = 0;
  for (; x + n <= width; x += n) {
    int32_t* p = reinterpret_cast<int32_t*>(px + 4 * x);
    const V32 w = hn::LoadU(d, p);
    const V32 rgb = polar::HWY_NAMESPACE::HsvToRgbLanes(d, hn::And(w, lo), hn::And(hn::ShiftRight<8>(w), lo),
                                  hn::And(hn::ShiftRight<16>(w), lo));
    hn::StoreU(hn::Or(rgb, hn::And(w, fourth)), d, p);
  }
  for (; x < width; ++x) HsvToRgbPixel(px + 4 * x);
}

#endif  // HWY_TARGET == HWY_SCALAR

}  // namespace HWY_NAMESPACE
}  // namespace zet::bench
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace zet::bench {

HWY_EXPORT(HsvRowImpl);

int FastHsvToRgb(uint8_t* pixels, long pitch, int width, int height) {
  if (!pixels) return polar::kHsvNullImage;
  if (width <= 0 || height <= 0) return polar::kHsvBadSize;
#pragma omp parallel for schedule(static) if (static_cast<long>(width) * height > polar::kParallelPixels)
  for (int y = 0; y < height; ++y) HWY_DYNAMIC_DISPATCH(HsvRowImpl)(pixels + y * pitch, width);
  return polar::kHsvOk;
}

}  // namespace zet::bench
#endif  // HWY_ONCE
