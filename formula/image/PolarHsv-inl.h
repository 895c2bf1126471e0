// HSV to RGB of 32-bit lanes holding byte values, in the definition's single-precision
// operations (HsvToRgbPixel in PolarScalar.cpp), for the kernels of every instruction
// set: type 10 of the plug-in and the stand-alone conversion of bench_polar. Included
// inside HWY_NAMESPACE once per target (Highway's -inl.h convention). The build turns
// off fused multiply-add contraction, which would change the roundings.
#if defined(ZET_POLAR_HSV_INL_H_) == defined(HWY_TARGET_TOGGLE)
#ifdef ZET_POLAR_HSV_INL_H_
#undef ZET_POLAR_HSV_INL_H_
#else
#define ZET_POLAR_HSV_INL_H_
#endif

#include <hwy/highway.h>

#include "image/PolarKernels.h"

HWY_BEFORE_NAMESPACE();
namespace zet::polar {
namespace HWY_NAMESPACE {
namespace hn = hwy::HWY_NAMESPACE;

#if HWY_TARGET != HWY_SCALAR

// Returns R | G << 8 | B << 16. By sector i the channels are a permutation of
// (V, p, x), x = t in even and q in odd sectors: R, G, B = (V, t, p), (q, V, p),
// (p, V, t), (p, q, V), (t, p, V), (V, p, q). So only p and x are rounded (V is an
// integer already), and each lands in its byte by a shift of the sector: V at byte
// 0 1 1 2 2 0, p at 2 2 0 0 1 1, x in the byte left over. Two steps of the definition
// fall away exactly: S = 0 gives sv = 0, so p, q and t are V already; and p, q and t
// stay within [-0.0001, 255.0001] (p >= V - V * single(255 * single(1/255)); t and q
// <= V up to one rounding), so rounding to nearest lands in 0 .. 255 unsaturated.
template <class D32>
HWY_INLINE hn::Vec<D32> HsvToRgbLanes(D32 d, hn::Vec<D32> hue, hn::Vec<D32> sat,
                                      hn::Vec<D32> val) {
  const hn::Rebind<float, D32> df;
  const auto hz = hn::IfThenZeroElse(hn::Eq(hue, hn::Set(d, 255)), hue);
  const auto h = hn::Mul(hn::Mul(hn::ConvertTo(df, hz), hn::Set(df, kSixtieth)),
                         hn::Set(df, kHueDegrees));
  const auto i = hn::ConvertTo(d, h);
  const auto f = hn::Sub(h, hn::ConvertTo(df, i));
  const auto v = hn::ConvertTo(df, val);
  const auto sv = hn::Mul(hn::Mul(hn::ConvertTo(df, sat), hn::Set(df, kInv255)), v);
  const auto p = hn::Sub(v, sv);
  const auto fsv = hn::Mul(f, sv);
  const auto odd = hn::RebindMask(df, hn::TestBit(i, hn::Set(d, 1)));
  const auto x = hn::IfThenElse(odd, hn::Sub(v, fsv), hn::Add(p, fsv));
  // Byte positions of V and p by sector: two bits per sector, from bit 2i.
  const auto twoI = hn::Add(i, i), three = hn::Set(d, 3);
  const auto shiftV = hn::ShiftLeft<3>(hn::And(hn::Shr(hn::Set(d, 0x294), twoI), three));
  const auto shiftP = hn::ShiftLeft<3>(hn::And(hn::Shr(hn::Set(d, 0x50A), twoI), three));
  const auto shiftX = hn::Sub(hn::Sub(hn::Set(d, 24), shiftV), shiftP);
  return hn::Or(hn::Shl(val, shiftV),
                hn::Or(hn::Shl(hn::NearestInt(p), shiftP), hn::Shl(hn::NearestInt(x), shiftX)));
}

#endif  // HWY_TARGET != HWY_SCALAR

}  // namespace HWY_NAMESPACE
}  // namespace zet::polar
HWY_AFTER_NAMESPACE();

#endif  // ZET_POLAR_HSV_INL_H_
