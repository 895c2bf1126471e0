// Vector kernels of the polarization instruction, compiled once per instruction set
// (Highway's foreach_target) and chosen once per process by the processor's
// capabilities. Each gives the bytes of the scalar definition in PolarScalar.cpp:
//
// - Channels and S0 are integer work on 16-bit lanes.
// - S1, S2 and DoLP divide and take the square root in single precision (the
//   definition's double operation rounded to single is the same number: double has
//   more than twice the bits), then truncate the product by 255 or 127 exactly in
//   single precision (TruncTimesPow2Minus1).
// - AoP takes its byte from a table over (S1, S2) built from the exact angle
//   (PolarTables.h); the few entries within a hair of a truncation boundary are
//   marked, and their blocks are recomputed by the definition.
// - Type 9 looks its colour up in a table over (S1, S2) of the AoP byte's colour at
//   full saturation and value; type 10 looks the AoP byte up, then computes the
//   colour of (hue, 255, value) in the definition's single-precision operations
//   (PolarHsv-inl.h).
// Every kernel ends with a scalar tail over the last columns, using the definition.
// The exhaustive test checks every reachable (S1, S2, sum).
#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "image/PolarKernels.cpp"
#include <hwy/foreach_target.h>  // IWYU pragma: keep

#include <hwy/highway.h>

#include "image/PolarHsv-inl.h"
#include "image/PolarKernels.h"
#include "image/PolarTables.h"

HWY_BEFORE_NAMESPACE();
namespace zet::polar {
namespace HWY_NAMESPACE {
namespace hn = hwy::HWY_NAMESPACE;

#if HWY_TARGET == HWY_SCALAR

// Without vectors the definition is the kernel.
void RowImpl(int type, const uint8_t* row0, const uint8_t* row1, uint8_t* dst, int cols,
             const SRowArgs* args) {
  ScalarRow(type, row0, row1, dst, cols, args->dolpFactor);
  if (IsColourType(type))
    for (int c = 0; c < cols; ++c) HsvToRgbPixel(dst + 4 * c);
}

#else

using D32 = hn::ScalableTag<int32_t>;
using DF = hn::Rebind<float, D32>;
using V32 = hn::Vec<D32>;
using VF = hn::Vec<DF>;

// The derived integers of N super-pixels from column c on.
struct SBlocks {
  V32 sum, s1, s2;
};

HWY_INLINE SBlocks LoadBlocks(const uint8_t* row0, const uint8_t* row1, int c) {
  const D32 d;
  const hn::Rebind<uint16_t, D32> d16;
  // Little-endian 16-bit lanes: the left pixel of a block is the low byte.
  const V32 w0 = hn::PromoteTo(d, hn::LoadU(d16, reinterpret_cast<const uint16_t*>(row0 + 2 * c)));
  const V32 w1 = hn::PromoteTo(d, hn::LoadU(d16, reinterpret_cast<const uint16_t*>(row1 + 2 * c)));
  const V32 lo = hn::Set(d, 0xFF);
  const V32 p90 = hn::And(w0, lo), p45 = hn::ShiftRight<8>(w0);
  const V32 p135 = hn::And(w1, lo), p0 = hn::ShiftRight<8>(w1);
  return {hn::Add(hn::Add(p90, p45), hn::Add(p135, p0)), hn::Sub(p0, p90), hn::Sub(p45, p135)};
}

// Stores the low byte of each lane (the results wrap, they are not clamped).
HWY_INLINE void StoreLow8(V32 v, uint8_t* dst) {
  const hn::Rebind<uint32_t, D32> du;
  const hn::Rebind<uint8_t, D32> d8;
  hn::StoreU(hn::TruncateTo(d8, hn::BitCast(du, v)), d8, dst);
}

// trunc(double(q) * c) per lane, for c a single-precision value: the product of two
// singles is exact in double.
HWY_INLINE V32 TruncTimes(VF q, double c) {
  const hn::Half<DF> dh;
  const hn::Rebind<double, decltype(dh)> dd;
  const hn::Rebind<int32_t, decltype(dd)> di;
  const auto cc = hn::Set(dd, c);
  const auto lo = hn::DemoteTo(di, hn::Mul(hn::PromoteTo(dd, hn::LowerHalf(dh, q)), cc));
  const auto hi = hn::DemoteTo(di, hn::Mul(hn::PromoteTo(dd, hn::UpperHalf(dh, q)), cc));
  return hn::Combine(D32(), hi, lo);
}

// The low byte of an integer-valued float in [0, 2^22): adding 1.5 * 2^23 puts the
// integer in the low mantissa bits, whose low byte it then is.
HWY_INLINE V32 LowByteOfIntegral(VF t) {
  return hn::BitCast(D32(), hn::Add(t, hn::Set(DF(), 12582912.0f)));
}

// trunc(q * (2^j - 1)) for 0 <= q * 2^j < 2^22, exactly, in single precision: the
// product is q * 2^j - q = p + e, where p is the rounded difference and e its
// rounding error, which Fast2Sum gives exactly (q * 2^j is at least q). The
// truncation of p + e is floor(p), less 1 when p is an integer and e < 0.
template <int kPow2>
HWY_INLINE V32 TruncTimesPow2Minus1(VF q) {
  const DF df;
  const VF a = hn::Mul(q, hn::Set(df, static_cast<float>(kPow2)));  // exact
  const VF p = hn::Sub(a, q);
  const VF z = hn::Sub(p, a);                    // exact; e = -q - z
  const VF whole = hn::Floor(p);
  const auto below = hn::And(hn::Eq(whole, p), hn::Gt(z, hn::Neg(q)));  // p integral, e < 0
  return LowByteOfIntegral(hn::Sub(whole, hn::IfThenElseZero(below, hn::Set(df, 1.0f))));
}

// The S0h divisor: S0h, or 1 when it is 0.
HWY_INLINE VF Divisor(V32 sum) {
  return hn::ConvertTo(DF(), hn::Max(hn::ShiftRight<1>(sum), hn::Set(D32(), 1)));
}

HWY_INLINE V32 Dolp(const SBlocks& b, float k) {
  const DF df;
  const VF f1 = hn::ConvertTo(df, b.s1), f2 = hn::ConvertTo(df, b.s2);
  // S1^2 + S2^2 <= 130050 is exact in single precision.
  const VF m = hn::Sqrt(hn::Add(hn::Mul(f1, f1), hn::Mul(f2, f2)));
  const VF r = hn::Div(m, Divisor(b.sum));
  // k is 127 (= 2^7 - 1) wherever single precision is IEEE; any other value takes the
  // general product in double.
  return k == 127.0f ? TruncTimesPow2Minus1<128>(r) : TruncTimes(r, static_cast<double>(k));
}

HWY_INLINE V32 StokesRatio(V32 s, V32 sum) {
  const DF df;
  const VF q = hn::Div(hn::ConvertTo(df, hn::Add(s, hn::Set(D32(), 255))), Divisor(sum));
  return TruncTimesPow2Minus1<256>(q);
}

// The index of each block's (S1, S2) entry in the pair tables.
HWY_INLINE V32 PairIndex(const SBlocks& b) {
  const D32 d;
  const V32 bias = hn::Set(d, (255 << kPairShift) + 255);
  return hn::Add(hn::ShiftLeft<kPairShift>(b.s1), hn::Add(b.s2, bias));
}

// Lanes of `got` where `redo` is set are replaced by fix(s1, s2, s0h) of the block.
template <class Fix>
HWY_NOINLINE V32 Redo(V32 got, hn::Mask<D32> redo, const SBlocks& b, Fix fix) {
  const D32 d;
  constexpr size_t kMax = HWY_MAX_BYTES / sizeof(int32_t);
  alignas(HWY_MAX_BYTES) int32_t h[kMax], s1[kMax], s2[kMax], sum[kMax], again[kMax];
  hn::Store(got, d, h);
  hn::Store(b.s1, d, s1);
  hn::Store(b.s2, d, s2);
  hn::Store(b.sum, d, sum);
  hn::Store(hn::VecFromMask(d, redo), d, again);
  for (size_t i = 0; i < hn::Lanes(d); ++i)
    if (again[i]) h[i] = fix(s1[i], s2[i], sum[i] / 2);
  return hn::Load(d, h);
}

// The AoP byte of each block, from the table of (S1, S2); a block whose entry is
// the marker is recomputed by the definition.
HWY_INLINE V32 Hue(const uint8_t* table, const SBlocks& b) {
  const D32 d;
  const V32 hue = hn::And(hn::GatherOffset(d, reinterpret_cast<const int32_t*>(table), PairIndex(b)),
                          hn::Set(d, 0xFF));
  const auto redo = hn::AndNot(hn::Eq(b.s2, hn::Zero(d)), hn::Eq(hue, hn::Set(d, kAopRecompute)));
  if (HWY_LIKELY(hn::AllFalse(d, redo))) return hue;
  return Redo(hue, redo, b, [](int s1, int s2, int s0h) { return AopPixel(s1, s2, s0h); });
}

// One channel pixel per block: the left pixel of `row`.
void ChannelRow(const uint8_t* row, uint8_t* dst, int cols) {
  const hn::ScalableTag<uint16_t> d16;
  const hn::RebindToSigned<decltype(d16)> di16;
  const hn::Rebind<uint8_t, decltype(d16)> d8;
  const int n = static_cast<int>(hn::Lanes(d16));
  const auto lo = hn::Set(d16, 0xFF);
  int c = 0;
  for (; c + n <= cols; c += n) {
    const auto w = hn::LoadU(d16, reinterpret_cast<const uint16_t*>(row + 2 * c));
    hn::StoreU(hn::DemoteTo(d8, hn::BitCast(di16, hn::And(w, lo))), d8, dst + c);
  }
  for (; c < cols; ++c) dst[c] = row[2 * c];
}

void StokesS0Row(const uint8_t* row0, const uint8_t* row1, uint8_t* dst, int cols) {
  const hn::ScalableTag<uint16_t> d16;
  const hn::RebindToSigned<decltype(d16)> di16;
  const hn::Rebind<uint8_t, decltype(d16)> d8;
  const int n = static_cast<int>(hn::Lanes(d16));
  const auto lo = hn::Set(d16, 0xFF);
  int c = 0;
  for (; c + n <= cols; c += n) {
    const auto a = hn::LoadU(d16, reinterpret_cast<const uint16_t*>(row0 + 2 * c));
    const auto b = hn::LoadU(d16, reinterpret_cast<const uint16_t*>(row1 + 2 * c));
    const auto sum = hn::Add(hn::Add(hn::And(a, lo), hn::ShiftRight<8>(a)),
                             hn::Add(hn::And(b, lo), hn::ShiftRight<8>(b)));
    hn::StoreU(hn::DemoteTo(d8, hn::BitCast(di16, hn::ShiftRight<2>(sum))), d8, dst + c);
  }
  if (c < cols) ScalarRow(kTypeS0, row0 + 2 * c, row1 + 2 * c, dst + c, cols - c, 0.0f);
}

// The loop over one row of a type computed on 32-bit lanes: `lanes(blocks)` gives
// the output bytes; the definition finishes the last columns.
template <class Lanes>
HWY_INLINE void BlockRow(int type, const uint8_t* row0, const uint8_t* row1, uint8_t* dst,
                         int cols, float k, Lanes lanes) {
  const int n = static_cast<int>(hn::Lanes(D32()));
  int c = 0;
  for (; c + n <= cols; c += n) StoreLow8(lanes(LoadBlocks(row0, row1, c)), dst + c);
  if (c < cols) ScalarRow(type, row0 + 2 * c, row1 + 2 * c, dst + c, cols - c, k);
}

// Types 9 and 10: the AoP byte as hue at full saturation, and the fourth byte 0.
// Type 9's colour (value 255) comes straight from the table over (S1, S2); type
// 10's is computed from (hue, 255, value).
void ColourRow(int type, const uint8_t* row0, const uint8_t* row1, uint8_t* dst, int cols,
               const SRowArgs& args) {
  const D32 d;
  const int n = static_cast<int>(hn::Lanes(d));
  int c = 0;
  for (; c + n <= cols; c += n) {
    const SBlocks b = LoadBlocks(row0, row1, c);
    V32 rgb;
    if (type == kTypeHue) {
      rgb = hn::GatherIndex(d, args.hueColour, PairIndex(b));
      const auto redo = hn::Lt(rgb, hn::Zero(d));  // the marker
      if (HWY_UNLIKELY(!hn::AllFalse(d, redo)))
        rgb = Redo(rgb, redo, b, [&args](int s1, int s2, int s0h) {
          return args.hueRgb[255 << 8 | AopPixel(s1, s2, s0h)];
        });
    } else {
      // The value is trunc(S0h / 2) = sum / 4; the colour computed, not looked up:
      // a gather from the 256 KB table of (hue, value) costs more.
      rgb = HsvToRgbLanes(d, Hue(args.aop, b), hn::Set(d, 255), hn::ShiftRight<2>(b.sum));
    }
    hn::StoreU(rgb, d, reinterpret_cast<int32_t*>(dst + 4 * c));
  }
  if (c < cols) {
    ScalarRow(type, row0 + 2 * c, row1 + 2 * c, dst + 4 * c, cols - c, 0.0f);
    for (; c < cols; ++c) HsvToRgbPixel(dst + 4 * c);
  }
}

void RowImpl(int type, const uint8_t* row0, const uint8_t* row1, uint8_t* dst, int cols,
             const SRowArgs* args) {
  const SRowArgs& a = *args;
  const float k = a.dolpFactor;
  switch (type) {
    case kTypeI0:
    case kTypeI135: ChannelRow(row1, dst, cols); break;
    case kTypeI45:
    case kTypeI90: ChannelRow(row0, dst, cols); break;
    case kTypeS0: StokesS0Row(row0, row1, dst, cols); break;
    case kTypeDolp:
      BlockRow(type, row0, row1, dst, cols, k, [k](const SBlocks& b) { return Dolp(b, k); });
      break;
    case kTypeAop:
      BlockRow(type, row0, row1, dst, cols, k, [&a](const SBlocks& b) { return Hue(a.aop, b); });
      break;
    case kTypeS1:
      BlockRow(type, row0, row1, dst, cols, k,
               [](const SBlocks& b) { return StokesRatio(b.s1, b.sum); });
      break;
    case kTypeS2:
      BlockRow(type, row0, row1, dst, cols, k,
               [](const SBlocks& b) { return StokesRatio(b.s2, b.sum); });
      break;
    case kTypeHue:
    case kTypeHueValue: ColourRow(type, row0, row1, dst, cols, a); break;
    default: break;
  }
}

#endif  // HWY_TARGET == HWY_SCALAR

}  // namespace HWY_NAMESPACE
}  // namespace zet::polar
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace zet::polar {

HWY_EXPORT(RowImpl);

void FastProcess(int type, const SPolarFrame& f) {
  if (type < kTypeI0 || type > kTypeHueValue) return;
  SRowArgs args;
  if (type == kTypeDolp) args.dolpFactor = DolpFactor();
  if (type == kTypeAop || type == kTypeHueValue) args.aop = AopTable();
  if (type == kTypeHue) args.hueRgb = HueRgbTable();
  if (type == kTypeHue) args.hueColour = HueColourTable();
  auto row = [&](int r) {
    HWY_DYNAMIC_DISPATCH(RowImpl)(type, f.src + 2 * r * f.srcPitch,
                                  f.src + (2 * r + 1) * f.srcPitch, f.dst + r * f.dstPitch,
                                  f.cols, &args);
  };
  if (IsColourType(type)) {
    // Hue and colour in one pass; rows in parallel as the HSV-to-RGB step runs them.
#pragma omp parallel for schedule(static) if (static_cast<long>(f.cols) * f.rows > kParallelPixels)
    for (int r = 0; r < f.rows; ++r) row(r);
  } else {
    for (int r = 0; r < f.rows; ++r) row(r);
  }
}

}  // namespace zet::polar
#endif  // HWY_ONCE
