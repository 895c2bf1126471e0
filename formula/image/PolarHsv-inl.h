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
// 0 1 1 2 2 0, p at 2 2 0 0 1 1, x in the byte left over (the shifts come from
// byte tables indexed by the sector). Two steps of the definition fall away exactly:
// S = 0 gives sv = 0, so p, q and t are V already; and p, q and t stay within
// [-0.0001, 255.0001] (p >= V - V * single(255 * single(1/255)); t and q <= V up to
// one rounding), so rounding to nearest lands in 0 .. 255 unsaturated. Rounding and
// truncating to integers use the low mantissa bits of a sum with 1.5 * 2^23 (exact
// for these ranges, ties to even as the definition rounds).
//
// kFullSaturation: S is 255, where single(255 * single(1/255)) is 1, so sv = V and
// p = 0 (the byte of p is 0 and needs no shift).
template <bool kFullSaturation = false, class D32>
HWY_INLINE hn::Vec<D32> HsvToRgbLanes(D32 d, hn::Vec<D32> hue, hn::Vec<D32> sat,
                                      hn::Vec<D32> val) {
  static_assert(kSixtieth > 0 && 255.0f * kInv255 == 1.0f);  // kFullSaturation's premise
  const hn::Rebind<float, D32> df;
  const hn::Repartition<uint8_t, D32> d8;
  const auto magic = hn::Set(df, 12582912.0f);  // 1.5 * 2^23
  const auto low = hn::Set(d, 0xFF);
  // The integer in [0, 2^22) that an integral or rounded float holds, via the magic sum.
  const auto integer = [&](auto x) { return hn::And(hn::BitCast(d, hn::Add(x, magic)), low); };
  const auto hz = hn::IfThenZeroElse(hn::Eq(hue, low), hue);
  const auto h = hn::Mul(hn::Mul(hn::ConvertTo(df, hz), hn::Set(df, kSixtieth)),
                         hn::Set(df, kHueDegrees));
  const auto whole = hn::Floor(h);  // h in [0, 6): the sector
  const auto f = hn::Sub(h, whole);
  const auto i = integer(whole);
  const auto v = hn::ConvertTo(df, val);
  const auto sv = kFullSaturation
                      ? v
                      : hn::Mul(hn::Mul(hn::ConvertTo(df, sat), hn::Set(df, kInv255)), v);
  const auto fsv = hn::Mul(f, sv);
  const auto odd = hn::RebindMask(df, hn::TestBit(i, hn::Set(d, 1)));
  // Byte shifts by sector, in the low byte of each lane (the index bytes above it are
  // 0x80, which look up 0).
  alignas(16) static constexpr uint8_t kShiftV[16] = {0, 8, 8, 16, 16, 0};
  alignas(16) static constexpr uint8_t kShiftP[16] = {16, 16, 0, 0, 8, 8};
  alignas(16) static constexpr uint8_t kShiftX[16] = {8, 0, 16, 8, 0, 16};
  const auto index = hn::BitCast(d8, hn::Or(i, hn::Set(d, static_cast<int32_t>(0x80808000u))));
  const auto shift = [&](const uint8_t* table) {
    return hn::BitCast(d, hn::TableLookupBytesOr0(hn::LoadDup128(d8, table), index));
  };
  if constexpr (kFullSaturation) {
    const auto x = hn::IfThenElse(odd, hn::Sub(v, fsv), fsv);
    return hn::Or(hn::Shl(val, shift(kShiftV)), hn::Shl(integer(x), shift(kShiftX)));
  } else {
    const auto p = hn::Sub(v, sv);
    const auto x = hn::IfThenElse(odd, hn::Sub(v, fsv), hn::Add(p, fsv));
    return hn::Or(hn::Shl(val, shift(kShiftV)),
                  hn::Or(hn::Shl(integer(p), shift(kShiftP)), hn::Shl(integer(x), shift(kShiftX))));
  }
}

#endif  // HWY_TARGET != HWY_SCALAR

}  // namespace HWY_NAMESPACE
}  // namespace zet::polar
HWY_AFTER_NAMESPACE();

#endif  // ZET_POLAR_HSV_INL_H_
