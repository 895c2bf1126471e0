// The vector HSV-to-RGB conversion of bench_polar (see HsvToRgbFast.h), compiled once
// per instruction set. It repeats the definition's single-precision operations in
// the same order (the build turns off fused multiply-add contraction), selecting the
// sector formulas with masks.
#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "polar/HsvToRgbFast.cpp"
#include <hwy/foreach_target.h>  // IWYU pragma: keep

#include <hwy/highway.h>

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

// HSV to RGB of byte lanes; returns R | G << 8 | B << 16.
HWY_INLINE V32 HsvToRgbLanes(V32 hue, V32 sat, V32 val) {
  const D32 d;
  const DF df;
  const V32 hz = hn::IfThenZeroElse(hn::Eq(hue, hn::Set(d, 255)), hue);
  const VF h = hn::Mul(hn::Mul(hn::ConvertTo(df, hz), hn::Set(df, polar::kSixtieth)),
                       hn::Set(df, polar::kHueDegrees));
  const V32 i = hn::ConvertTo(d, h);
  const VF f = hn::Sub(h, hn::ConvertTo(df, i));
  const VF v = hn::ConvertTo(df, val);
  const VF sv = hn::Mul(hn::Mul(hn::ConvertTo(df, sat), hn::Set(df, polar::kInv255)), v);
  const VF p = hn::Sub(v, sv);
  const VF fsv = hn::Mul(f, sv);
  const VF q = hn::Sub(v, fsv);
  const VF t = hn::Add(p, fsv);
  auto is = [&](int k) { return hn::RebindMask(df, hn::Eq(i, hn::Set(d, k))); };
  const auto m0 = is(0), m1 = is(1), m2 = is(2), m3 = is(3), m4 = is(4);
  // Sectors 0..5: R = V q p p t V, G = t V V q p p, B = p p t V V q.
  VF r = hn::IfThenElse(m1, q, hn::IfThenElse(hn::Or(m2, m3), p, hn::IfThenElse(m4, t, v)));
  VF g = hn::IfThenElse(m0, t, hn::IfThenElse(hn::Or(m1, m2), v, hn::IfThenElse(m3, q, p)));
  VF bl = hn::IfThenElse(hn::Or(m0, m1), p,
                         hn::IfThenElse(m2, t, hn::IfThenElse(hn::Or(m3, m4), v, q)));
  const auto grey = hn::RebindMask(df, hn::Eq(sat, hn::Zero(d)));
  r = hn::IfThenElse(grey, v, r);
  g = hn::IfThenElse(grey, v, g);
  bl = hn::IfThenElse(grey, v, bl);
  const V32 zero = hn::Zero(d), top = hn::Set(d, 255);
  auto byte = [&](VF x) { return hn::Min(hn::Max(hn::NearestInt(x), zero), top); };
  return hn::Or(byte(r), hn::Or(hn::ShiftLeft<8>(byte(g)), hn::ShiftLeft<16>(byte(bl))));
}

void HsvRowImpl(uint8_t* px, int width) {
  const D32 d;
  const int n = static_cast<int>(hn::Lanes(d));
  const V32 lo = hn::Set(d, 0xFF);
  const V32 fourth = hn::Set(d, static_cast<int32_t>(0xFF000000u));
  int x = 0;
  for (; x + n <= width; x += n) {
    int32_t* p = reinterpret_cast<int32_t*>(px + 4 * x);
    const V32 w = hn::LoadU(d, p);
    const V32 rgb = HsvToRgbLanes(hn::And(w, lo), hn::And(hn::ShiftRight<8>(w), lo),
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
