// Vector kernels of the polarization instruction, compiled once per instruction set
// (Highway's foreach_target) and chosen once per process by the processor's
// capabilities. Each gives the bytes of the scalar definition in PolarScalar.cpp:
//
// - Channels and S0 are integer work on 16-bit lanes.
// - S1, S2 and DoLP divide and take the square root in single precision (the
//   definition's double operation rounded to single is the same number: double has
//   more than twice the bits), then truncate the product by 255 or 127 exactly in
//   single precision (TruncTimesPow2Minus1).
// - AoP computes the angle in single precision, close enough to the exact one that
//   its truncation is the definition's wherever the value is not within a hair of an
//   integer; those few blocks are recomputed by the definition (Hue below).
// - Types 9 and 10 compute the AoP byte so, then the colour of (hue, 255, value) in
//   the definition's single-precision operations (PolarHsv-inl.h).
// The rows of 32-bit lanes end with a vector over their last columns, overlapping the
// one before; rows shorter than a vector take the definition, as do the last columns
// of the 16-bit rows (channels, S0), which cost little.
// The exhaustive test checks every reachable (S1, S2, sum).
#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "image/PolarKernels.cpp"
#include <hwy/foreach_target.h>  // IWYU pragma: keep

#include <hwy/highway.h>

#include "image/PolarHsv-inl.h"
#include "image/PolarKernels.h"

HWY_BEFORE_NAMESPACE();
namespace zet::polar {
namespace HWY_NAMESPACE {
namespace hn = hwy::HWY_NAMESPACE;

#if HWY_TARGET == HWY_SCALAR

// Without vectors the definition is the kernel.
void RowImpl(int type, const uint8_t* row0, const uint8_t* row1, uint8_t* dst, int cols,
             float k) {
  ScalarRow(type, row0, row1, dst, cols, k);
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
#if HWY_TARGET <= HWY_AVX3
  // One narrowing move (Highway 1.0's TruncateTo takes two shuffles here).
  _mm_storeu_si128(reinterpret_cast<__m128i*>(dst), _mm512_cvtepi32_epi8(v.raw));
#else
  const hn::Rebind<uint32_t, D32> du;
  const hn::Rebind<uint8_t, D32> d8;
  hn::StoreU(hn::TruncateTo(d8, hn::BitCast(du, v)), d8, dst);
#endif
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

// trunc(q * (2^j - 1)), exactly, as TruncTimesPow2Minus1. Where fused multiply-add is
// native the rounded product's floor is at most one too high, and the exact residual
// q * m - floor tells when: its sign survives the one rounding.
template <int kPow2>
HWY_INLINE V32 TruncTimesLow(VF q) {
#if HWY_NATIVE_FMA
  const DF df;
  const VF m = hn::Set(df, static_cast<float>(kPow2 - 1));
  const VF whole = hn::Floor(hn::Mul(q, m));
  const auto over = hn::Lt(hn::MulSub(q, m, whole), hn::Zero(df));
  return LowByteOfIntegral(hn::Sub(whole, hn::IfThenElseZero(over, hn::Set(df, 1.0f))));
#else
  return TruncTimesPow2Minus1<kPow2>(q);
#endif
}

// The S0h divisor: S0h, or 1 when it is 0.
HWY_INLINE VF Divisor(V32 sum) {
  return hn::ConvertTo(DF(), hn::Max(hn::ShiftRight<1>(sum), hn::Set(D32(), 1)));
}

HWY_INLINE V32 Dolp(const SBlocks& b, float k) {
  const DF df;
  const VF f1 = hn::ConvertTo(df, b.s1), f2 = hn::ConvertTo(df, b.s2);
  // S1^2 + S2^2 <= 130050 is exact in single precision.
  const VF m = hn::Sqrt(hn::MulAdd(f1, f1, hn::Mul(f2, f2)));
  const VF r = hn::Div(m, Divisor(b.sum));
  // k is 127 (= 2^7 - 1) wherever single precision is IEEE; any other value takes the
  // general product in double.
  return k == 127.0f ? TruncTimesLow<128>(r) : TruncTimes(r, static_cast<double>(k));
}

HWY_INLINE V32 StokesRatio(V32 s, V32 sum) {
  const DF df;
  const VF q = hn::Div(hn::ConvertTo(df, hn::Add(s, hn::Set(D32(), 255))), Divisor(sum));
  return TruncTimesLow<256>(q);
}

// Lanes of `hue` where `redo` is set take the definition's AoP byte of their block,
// the block of column c + lane. (The blocks are read again from the rows, so that the
// common path keeps its derived integers in registers.)
HWY_NOINLINE V32 RedoHue(V32 hue, hn::Mask<D32> redo, const uint8_t* row0, const uint8_t* row1,
                         int c) {
  const D32 d;
  constexpr size_t kMax = HWY_MAX_BYTES / sizeof(int32_t);
  alignas(HWY_MAX_BYTES) int32_t h[kMax], again[kMax];
  hn::Store(hue, d, h);
  hn::Store(hn::VecFromMask(d, redo), d, again);
  for (size_t i = 0; i < hn::Lanes(d); ++i) {
    if (!again[i]) continue;
    const uint8_t* a = row0 + 2 * (c + i);
    const uint8_t* b = row1 + 2 * (c + i);  // a: P90, P45; b: P135, P0
    h[i] = AopPixel(b[1] - a[0], a[1] - b[0], (a[0] + a[1] + b[0] + b[1]) / 2);
  }
  return hn::Load(d, h);
}

// The AoP byte of each block, computed: v = 127.5 + 255 / (2 pi) * atan2(S2, S1) in
// single precision, to within 5e-5 of the exact angle's v, which the definition's
// roundings move by less than 1e-5 before they truncate it. Blocks whose v lies within
// kAopMargin (1.2e-4) of an integer are recomputed by the definition; elsewhere
// trunc(v) is the definition's byte.
//
// - The octant's angle atan(lo / hi), lo = min(|S1|, |S2|), hi = max(...), is pi/8 plus
//   the angle of t = (lo - c hi) / (hi + c lo), c = tan(pi/8): one division, and t lies
//   in [-tan(pi/8), tan(pi/8)] where a degree-9 odd polynomial has an error below 2e-7
//   radians. The factor to bytes is folded into its coefficients.
// - The octant's reflections subtract from 63.75 and 127.5 bytes.
// - The budget, in bytes: polynomial 8e-6, division and the rotation's fused sums 2e-6,
//   the polynomial's roundings 4e-6, the reflections' 1.2e-5, kWest 1.5e-5: 4.1e-5.
// - trunc(v) = round(v - 0.5) away from integers: adding 1.5 * 2^23 + 127 to the signed
//   half-turn rounds it into the low mantissa bits, whose low byte is the result; the
//   difference from the rounded value is how far v lies from an integer.
// - S2 = 0 is exact in the definition (atan2 gives 0 or single(pi) whatever S0h is), and
//   so here: 127 for S1 >= 0, 255 for S1 < 0 (see kWest); those blocks are never redone.
// Returns the bytes in the low 8 bits of each lane (the bits above are not cleared).
constexpr double kBytesPerRadian = 127.5 / kPi;
constexpr float kTanEighth = 0.41421356f;  // tan(pi/8) + 5.6e-9
// atan(kTanEighth) in bytes: 15.9375 (pi/8) + 1.9e-7, which the error budget takes.
constexpr float kAtanTanEighth = 15.9375f;
// The half-turn for S1 < 0, 2^-16 over 127.5: S2 = 0 there (the angle single(pi), the
// byte 255) then rounds up to 255 where 127.5 would tie to the even 254; elsewhere the
// error budget takes the 1.5e-5.
constexpr float kWest = 127.5f + 1.0f / 65536;
constexpr float k(double coefficient) { return static_cast<float>(coefficient * kBytesPerRadian); }

HWY_INLINE V32 Hue(const SBlocks& b, const uint8_t* row0, const uint8_t* row1, int c) {
  const D32 d;
  const DF df;
  const V32 ax = hn::Abs(b.s1), ay = hn::Abs(b.s2);
  const VF lo = hn::ConvertTo(df, hn::Min(ax, ay));
  const VF hi = hn::ConvertTo(df, hn::Max(hn::Max(ax, ay), hn::Set(d, 1)));
  // atan(lo / hi) = atan(c) + atan((lo - c hi) / (hi + c lo)) for c = tan(pi/8): the
  // second argument lies in [-tan(pi/8), tan(pi/8)] for every octant tangent.
  const VF eighth = hn::Set(df, kTanEighth);
  const VF t = hn::Div(hn::NegMulAdd(eighth, hi, lo), hn::MulAdd(eighth, lo, hi));
  const VF z = hn::Mul(t, t);
  VF p = hn::MulAdd(hn::Set(df, k(8.05374449538e-2)), z, hn::Set(df, k(-1.38776856032e-1)));
  p = hn::MulAdd(p, z, hn::Set(df, k(1.99777106478e-1)));
  p = hn::MulAdd(p, z, hn::Set(df, k(-3.33329491539e-1)));
  p = hn::MulAdd(p, z, hn::Set(df, k(1.0)));
  VF a = hn::MulAdd(t, p, hn::Set(df, kAtanTanEighth));  // the octant's angle in bytes
  a = hn::IfThenElse(hn::RebindMask(df, hn::Gt(ay, ax)), hn::Sub(hn::Set(df, 63.75f), a), a);
  a = hn::IfThenElse(hn::RebindMask(df, hn::Lt(b.s1, hn::Zero(d))), hn::Sub(hn::Set(df, kWest), a), a);
  const VF half = hn::CopySignToAbs(a, hn::BitCast(df, b.s2));  // v - 127.5
  const VF bias = hn::Set(df, 12583039.0f);  // 1.5 * 2^23 + 127
  const VF q = hn::Add(half, bias);
  const VF off = hn::Sub(half, hn::Sub(q, bias));  // v - 0.5 - round(v - 0.5), exact
  const auto near = hn::Gt(hn::Abs(off), hn::Set(df, 0.5f - kAopMargin));
  const auto redo = hn::AndNot(hn::Eq(b.s2, hn::Zero(d)), hn::RebindMask(d, near));
  const V32 hue = hn::BitCast(d, q);
  if (HWY_LIKELY(hn::AllFalse(d, redo))) return hue;
  return RedoHue(hue, redo, row0, row1, c);
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

// The loop over one row of a type computed on 32-bit lanes: `lanes(blocks, c)` gives
// the output bytes. A row of at least one vector ends with a vector over its last
// columns, overlapping the one before (it writes the same bytes again); a shorter row
// takes the definition.
template <class Lanes>
HWY_INLINE void BlockRow(int type, const uint8_t* row0, const uint8_t* row1, uint8_t* dst,
                         int cols, float k, Lanes lanes) {
  const int n = static_cast<int>(hn::Lanes(D32()));
  if (cols < n) return ScalarRow(type, row0, row1, dst, cols, k);
  for (int c = 0;; c += n) {
    if (c > cols - n) c = cols - n;
    StoreLow8(lanes(LoadBlocks(row0, row1, c), c), dst + c);
    if (c == cols - n) break;
  }
}

// Types 9 and 10: the AoP byte as hue at full saturation, value 255 (type 9) or the
// mean intensity (type 10: trunc(S0h / 2) = sum / 4), and the fourth byte 0. The
// colour is computed, not looked up: gathers from tables of (S1, S2) or of (hue,
// value) cost more. Rows end as in BlockRow.
void ColourRow(int type, const uint8_t* row0, const uint8_t* row1, uint8_t* dst, int cols) {
  const D32 d;
  const int n = static_cast<int>(hn::Lanes(d));
  if (cols < n) {
    ScalarRow(type, row0, row1, dst, cols, 0.0f);
    for (int c = 0; c < cols; ++c) HsvToRgbPixel(dst + 4 * c);
    return;
  }
  for (int c = 0;; c += n) {
    if (c > cols - n) c = cols - n;
    const SBlocks b = LoadBlocks(row0, row1, c);
    const V32 hue = hn::And(Hue(b, row0, row1, c), hn::Set(d, 0xFF));
    const V32 val = type == kTypeHue ? hn::Set(d, 255) : hn::ShiftRight<2>(b.sum);
    const V32 rgb = HsvToRgbLanes<true>(d, hue, hn::Set(d, 255), val);
    hn::StoreU(rgb, d, reinterpret_cast<int32_t*>(dst + 4 * c));
    if (c == cols - n) break;
  }
}

void RowImpl(int type, const uint8_t* row0, const uint8_t* row1, uint8_t* dst, int cols,
             float k) {
  switch (type) {
    case kTypeI0:
    case kTypeI135: ChannelRow(row1, dst, cols); break;
    case kTypeI45:
    case kTypeI90: ChannelRow(row0, dst, cols); break;
    case kTypeS0: StokesS0Row(row0, row1, dst, cols); break;
    case kTypeDolp:
      BlockRow(type, row0, row1, dst, cols, k, [k](const SBlocks& b, int) { return Dolp(b, k); });
      break;
    case kTypeAop:
      BlockRow(type, row0, row1, dst, cols, k, [=](const SBlocks& b, int c) { return Hue(b, row0, row1, c); });
      break;
    case kTypeS1:
      BlockRow(type, row0, row1, dst, cols, k,
               [](const SBlocks& b, int) { return StokesRatio(b.s1, b.sum); });
      break;
    case kTypeS2:
      BlockRow(type, row0, row1, dst, cols, k,
               [](const SBlocks& b, int) { return StokesRatio(b.s2, b.sum); });
      break;
    case kTypeHue:
    case kTypeHueValue: ColourRow(type, row0, row1, dst, cols); break;
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
  const float k = type == kTypeDolp ? DolpFactor() : 0.0f;
  auto row = [&](int r) {
    HWY_DYNAMIC_DISPATCH(RowImpl)(type, f.src + 2 * r * f.srcPitch,
                                  f.src + (2 * r + 1) * f.srcPitch, f.dst + r * f.dstPitch,
                                  f.cols, k);
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
