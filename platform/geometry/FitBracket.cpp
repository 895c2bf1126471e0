// The fits' passes over every point, in vectors (Highway, compiled once per instruction
// set and chosen by the processor): the pass of KthSmallest, which counts the values
// below a bracket and packs those within it, in input order (with AVX-512 one
// compressing store per vector; the scalar loop spent most of a fit's time here); the
// distances of the points from a line or circle, element by element the same
// operations as the scalar ones (no fused multiply-adds, a correctly rounded square
// root), so the same values; the trimmed cost's sum of squares; and the circle's
// Levenberg-Marquardt sums, whose terms (a square root and two divisions a point) are
// worked out in lanes and added in input order.
#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "geometry/FitBracket.cpp"
#include <hwy/foreach_target.h>  // IWYU pragma: keep

#include <hwy/highway.h>

#include <algorithm>

#include "geometry/FitBracket.h"

HWY_BEFORE_NAMESPACE();
namespace zet::geometry {
namespace HWY_NAMESPACE {
namespace hn = hwy::HWY_NAMESPACE;

size_t BracketImpl(const double* values, size_t n, double lo, double hi, double* inside,
                   size_t* below) {
  size_t i = 0, m = 0, under = 0;
#if HWY_TARGET != HWY_SCALAR
  const hn::ScalableTag<double> d;
  const size_t lanes = hn::Lanes(d);
  const auto vlo = hn::Set(d, lo), vhi = hn::Set(d, hi);
  // CompressStore may write a whole vector from inside + m; m <= i keeps that within
  // the n values the caller provides room for.
  for (; i + lanes <= n; i += lanes) {
    const auto v = hn::LoadU(d, values + i);
    under += hn::CountTrue(d, hn::Lt(v, vlo));
    m += hn::CompressStore(v, hn::And(hn::Ge(v, vlo), hn::Le(v, vhi)), d, inside + m);
  }
#endif
  for (; i < n; ++i) {
    const double v = values[i];
    under += v < lo;
    inside[m] = v;
    m += (v >= lo) & (v <= hi);
  }
  *below = under;
  return m;
}

size_t BracketIndexesImpl(const double* values, size_t n, double lo, double hi,
                          uint32_t* inside, size_t* below) {
  size_t i = 0, m = 0, under = 0;
  const auto scalar = [&](size_t j) {
    const double v = values[j];
    under += v < lo;
    inside[m] = static_cast<uint32_t>(j);
    m += (v >= lo) & (v <= hi);
  };
#if HWY_TARGET != HWY_SCALAR
  const hn::ScalableTag<double> d;
  const size_t lanes = hn::Lanes(d);
  const auto vlo = hn::Set(d, lo), vhi = hn::Set(d, hi);
  for (; i + lanes <= n; i += lanes) {
    const auto v = hn::LoadU(d, values + i);
    const auto in = hn::And(hn::Ge(v, vlo), hn::Le(v, vhi));
    if (hn::AllFalse(d, in)) {
      under += hn::CountTrue(d, hn::Lt(v, vlo));
    } else {
      for (size_t j = i; j < i + lanes; ++j) scalar(j);
    }
  }
#endif
  for (; i < n; ++i) scalar(i);
  *below = under;
  return m;
}

// What a distance pass keeps beside the distances when it brackets them: the count and
// the sum of squares of those below lo, and those within [lo, hi] packed into inside.
struct STally {
  double lo, hi;
  double* inside;
  size_t m = 0, under = 0;
  double sum = 0;

  void Take(double v) {
    under += v < lo;
    sum += v < lo ? v * v : 0.0;
    inside[m] = v;
    m += (v >= lo) & (v <= hi);
  }
};

#if HWY_TARGET != HWY_SCALAR
// Stores a vector of distances at out (NaN as +inf) and, given a tally, takes them as
// STally::Take does, their squares added into vsum. CompressStore may write a whole
// vector from inside + m; m <= the position keeps that within the caller's n.
template <class D, class V = hn::Vec<D>>
HWY_INLINE void StoreTaken(D d, V e, double* out, STally* tally, V& vsum) {
  e = hn::IfThenElse(hn::Ge(e, hn::Zero(d)), e, hn::Set(d, INFINITY));
  hn::StoreU(e, d, out);
  if (!tally) return;
  const auto vlo = hn::Set(d, tally->lo);
  const auto low = hn::Lt(e, vlo);
  tally->under += hn::CountTrue(d, low);
  vsum = hn::Add(vsum, hn::IfThenElseZero(low, hn::Mul(e, e)));
  tally->m += hn::CompressStore(e, hn::And(hn::Ge(e, vlo), hn::Le(e, hn::Set(d, tally->hi))), d,
                                tally->inside + tally->m);
}
#endif

// Ends a pass: the tally's results to the caller's, and its packed count.
size_t Report(const STally& tally, bool taken, size_t* below, double* squares) {
  if (taken) *below = tally.under, *squares = tally.sum;
  return tally.m;
}

// The distances of the points from a line (kCircle false: a = nx, b = ny, c = the
// offset) or a circle (a, b = the centre, c = the radius) into out; with kBracket,
// also Bracket's count and packing of them, and the squares below the bracket summed.
template <bool kCircle, bool kBracket>
size_t DistancesPass(const double* base, size_t n, double a, double b, double c, double* out,
                     double lo, double hi, double* inside, size_t* below, double* squares) {
  size_t i = 0;
  STally tally{lo, hi, inside};
  const auto scalar = [&](size_t j) {
    const double* p = base + j * kPointStride;
    const double v =
        kCircle ? CircleDistance(p[1], p[2], a, b, c) : LineDistance(p[1], p[2], a, b, c);
    out[j] = v;
    if (kBracket) tally.Take(v);
  };
#if HWY_TARGET != HWY_SCALAR
  const hn::ScalableTag<double> d;
  const size_t lanes = hn::Lanes(d);
  const auto va = hn::Set(d, a), vb = hn::Set(d, b), vc = hn::Set(d, c);
  auto vsum = hn::Zero(d);
  for (; i + lanes <= n; i += lanes) {
    hn::Vec<decltype(d)> head, x, y, e;
    hn::LoadInterleaved3(d, base + i * kPointStride, head, x, y);
    if (kCircle) {
      const auto dx = hn::Sub(x, va), dy = hn::Sub(y, vb);
      const auto sq = hn::Add(hn::Mul(dx, dx), hn::Mul(dy, dy));
      if (!hn::AllTrue(d, hn::IsFinite(sq))) {  // overflowing squares: Length's other way
        for (size_t j = i; j < i + lanes; ++j) scalar(j);
        continue;
      }
      e = hn::Abs(hn::Sub(hn::Sqrt(sq), vc));
    } else {
      e = hn::Abs(hn::Sub(hn::Add(hn::Mul(va, x), hn::Mul(vb, y)), vc));
    }
    StoreTaken(d, e, out + i, kBracket ? &tally : nullptr, vsum);
  }
  tally.sum += hn::GetLane(hn::SumOfLanes(d, vsum));
#endif
  for (; i < n; ++i) scalar(i);
  return Report(tally, kBracket, below, squares);
}

size_t ShiftedDistancesImpl(const double* values, size_t n, double shift, double* out, double lo,
                            double hi, double* inside, size_t* below, double* squares) {
  size_t i = 0;
  STally tally{lo, hi, inside};
  const bool pack = inside != nullptr;
  const auto scalar = [&](size_t j) {
    const double v = ShiftedDistance(values[j], shift);
    out[j] = v;
    if (pack) tally.Take(v);
  };
#if HWY_TARGET != HWY_SCALAR
  const hn::ScalableTag<double> d;
  const size_t lanes = hn::Lanes(d);
  const auto vc = hn::Set(d, shift);
  auto vsum = hn::Zero(d);
  for (; i + lanes <= n; i += lanes)
    StoreTaken(d, hn::Abs(hn::Sub(hn::LoadU(d, values + i), vc)), out + i,
               pack ? &tally : nullptr, vsum);
  tally.sum += hn::GetLane(hn::SumOfLanes(d, vsum));
#endif
  for (; i < n; ++i) scalar(i);
  return Report(tally, pack, below, squares);
}

void LineDistancesImpl(const double* base, size_t n, double nx, double ny, double off,
                       double* out) {
  DistancesPass<false, false>(base, n, nx, ny, off, out, 0, 0, nullptr, nullptr, nullptr);
}

void CircleDistancesImpl(const double* base, size_t n, double cx, double cy, double r,
                         double* out) {
  DistancesPass<true, false>(base, n, cx, cy, r, out, 0, 0, nullptr, nullptr, nullptr);
}

size_t LineDistancesBracketImpl(const double* base, size_t n, double nx, double ny, double off,
                                double* out, double lo, double hi, double* inside,
                                size_t* below, double* squares) {
  return DistancesPass<false, true>(base, n, nx, ny, off, out, lo, hi, inside, below, squares);
}

size_t CircleDistancesBracketImpl(const double* base, size_t n, double cx, double cy, double r,
                                  double* out, double lo, double hi, double* inside,
                                  size_t* below, double* squares) {
  return DistancesPass<true, true>(base, n, cx, cy, r, out, lo, hi, inside, below, squares);
}

double SumSquaresBelowImpl(const double* values, size_t n, double cut, size_t* counted) {
  size_t i = 0, count = 0;
  double sum = 0;
#if HWY_TARGET != HWY_SCALAR
  const hn::ScalableTag<double> d;
  const size_t lanes = hn::Lanes(d);
  const auto vcut = hn::Set(d, cut);
  auto a = hn::Zero(d), b = hn::Zero(d);
  for (; i + 2 * lanes <= n; i += 2 * lanes) {
    const auto u = hn::LoadU(d, values + i), v = hn::LoadU(d, values + i + lanes);
    const auto eu = hn::Mul(u, u), ev = hn::Mul(v, v);
    const auto mu = hn::Lt(eu, vcut), mv = hn::Lt(ev, vcut);
    a = hn::Add(a, hn::IfThenElseZero(mu, eu));
    b = hn::Add(b, hn::IfThenElseZero(mv, ev));
    count += hn::CountTrue(d, mu) + hn::CountTrue(d, mv);
  }
  sum = hn::GetLane(hn::SumOfLanes(d, hn::Add(a, b)));
#endif
  for (; i < n; ++i) {
    const double e = values[i] * values[i];
    const bool in = e < cut;
    sum += in ? e : 0.0;
    count += in;
  }
  *counted = count;
  return sum;
}

size_t RoughDoubledAnglesImpl(const double* base, size_t t, double* c2, double* s2) {
  size_t i = 0, unsafe = 0;
  constexpr double kLow = 0x1p-960, kHigh = 0x1p960;
  const double* const pb = base + t * kPointStride;
#if HWY_TARGET != HWY_SCALAR
  const hn::ScalableTag<double> d;
  const size_t lanes = hn::Lanes(d);
  const auto two = hn::Set(d, 2.0), low = hn::Set(d, kLow), high = hn::Set(d, kHigh);
  for (; i + lanes <= t; i += lanes) {
    hn::Vec<decltype(d)> h, ax, ay, bx, by;
    hn::LoadInterleaved3(d, base + i * kPointStride, h, ax, ay);
    hn::LoadInterleaved3(d, pb + i * kPointStride, h, bx, by);
    const auto dx = hn::Sub(bx, ax), dy = hn::Sub(by, ay);
    const auto sq = hn::Add(hn::Mul(dx, dx), hn::Mul(dy, dy));
    unsafe += lanes - hn::CountTrue(d, hn::And(hn::Ge(sq, low), hn::Le(sq, high)));
    const auto len = hn::Sqrt(sq);
    const auto ux = hn::Div(dx, len), uy = hn::Div(dy, len);
    hn::StoreU(hn::Sub(hn::Mul(ux, ux), hn::Mul(uy, uy)), d, c2 + i);
    hn::StoreU(hn::Mul(hn::Mul(two, ux), uy), d, s2 + i);
  }
#endif
  for (; i < t; ++i) {
    const double* a = base + i * kPointStride;
    const double* b = pb + i * kPointStride;
    const double dx = b[1] - a[1], dy = b[2] - a[2];
    const double sq = dx * dx + dy * dy;
    unsafe += !(sq >= kLow && sq <= kHigh);
    const double len = std::sqrt(sq), ux = dx / len, uy = dy / len;
    c2[i] = ux * ux - uy * uy;
    s2[i] = 2 * ux * uy;
  }
  return unsafe;
}

bool LineOffsetsImpl(const double* base, size_t n, double nx, double ny, double* offsets) {
  size_t i = 0;
  bool nan = false;
#if HWY_TARGET != HWY_SCALAR
  const hn::ScalableTag<double> d;
  const size_t lanes = hn::Lanes(d);
  const auto vnx = hn::Set(d, nx), vny = hn::Set(d, ny);
  size_t bad = 0;
  for (; i + lanes <= n; i += lanes) {
    hn::Vec<decltype(d)> h, x, y;
    hn::LoadInterleaved3(d, base + i * kPointStride, h, x, y);
    const auto o = hn::Add(hn::Mul(vnx, x), hn::Mul(vny, y));
    bad += hn::CountTrue(d, hn::Ne(o, o));
    hn::StoreU(o, d, offsets + i);
  }
  nan = bad > 0;
#endif
  for (; i < n; ++i) {
    const double* p = base + i * kPointStride;
    offsets[i] = nx * p[1] + ny * p[2];
    nan |= std::isnan(offsets[i]);
  }
  return !nan;
}

size_t CircleCentresImpl(const double* base, size_t t, double* xs, double* ys) {
  size_t i = 0, m = 0;
  const double* const pb = base + t * kPointStride;
  const double* const pq = base + 2 * t * kPointStride;
#if HWY_TARGET != HWY_SCALAR
  const hn::ScalableTag<double> d;
  const size_t lanes = hn::Lanes(d);
  const auto two = hn::Set(d, 2.0);
  // CompressStore may write a whole vector from xs + m; m <= i keeps it within t.
  for (; i + lanes <= t; i += lanes) {
    hn::Vec<decltype(d)> h, ax, ay, bx, by, qx, qy;
    hn::LoadInterleaved3(d, base + i * kPointStride, h, ax, ay);
    hn::LoadInterleaved3(d, pb + i * kPointStride, h, bx, by);
    hn::LoadInterleaved3(d, pq + i * kPointStride, h, qx, qy);
    bx = hn::Sub(bx, ax), by = hn::Sub(by, ay), qx = hn::Sub(qx, ax), qy = hn::Sub(qy, ay);
    const auto det = hn::Mul(two, hn::Sub(hn::Mul(bx, qy), hn::Mul(by, qx)));
    const auto b2 = hn::Add(hn::Mul(bx, bx), hn::Mul(by, by));
    const auto q2 = hn::Add(hn::Mul(qx, qx), hn::Mul(qy, qy));
    const auto ux = hn::Div(hn::Sub(hn::Mul(qy, b2), hn::Mul(by, q2)), det);
    const auto uy = hn::Div(hn::Sub(hn::Mul(bx, q2), hn::Mul(qx, b2)), det);
    const auto ok = hn::And(hn::IsFinite(ux), hn::IsFinite(uy));
    hn::CompressStore(hn::Add(ax, ux), ok, d, xs + m);
    m += hn::CompressStore(hn::Add(ay, uy), ok, d, ys + m);
  }
#endif
  for (; i < t; ++i) {
    const double* a = base + i * kPointStride;
    const double* b = pb + i * kPointStride;
    const double* q = pq + i * kPointStride;
    m += CircleCentre(a[1], a[2], b[1], b[2], q[1], q[2], xs + m, ys + m);
  }
  return m;
}

void CircleStepSumsImpl(const double* x, const double* y, size_t m, double cx, double cy,
                        double r, double s[9]) {
  // The terms of a block of points, then their sums in input order.
  constexpr size_t kBlock = 64;
  HWY_ALIGN double t[9][kBlock];
  double s00 = 0, s01 = 0, s02 = 0, s11 = 0, s12 = 0, s0 = 0, s1 = 0, s2 = 0, cost = 0;
  const hn::ScalableTag<double> d;
  const size_t lanes = hn::Lanes(d);
  const auto vcx = hn::Set(d, cx), vcy = hn::Set(d, cy), vr = hn::Set(d, r);
  const auto zero = hn::Zero(d);
  for (size_t b = 0; b < m; b += kBlock) {
    const size_t len = std::min(kBlock, m - b);
    size_t j = 0;
    for (; j + lanes <= len; j += lanes) {
      const auto dx = hn::Sub(hn::LoadU(d, x + b + j), vcx);
      const auto dy = hn::Sub(hn::LoadU(d, y + b + j), vcy);
      const auto dist = hn::Sqrt(hn::Add(hn::Mul(dx, dx), hn::Mul(dy, dy)));
      const auto res = hn::Sub(dist, vr);
      const auto pos = hn::Gt(dist, zero);
      const auto ux = hn::IfThenElseZero(pos, hn::Div(dx, dist));
      const auto uy = hn::IfThenElseZero(pos, hn::Div(dy, dist));
      hn::Store(hn::Mul(ux, ux), d, t[0] + j);
      hn::Store(hn::Mul(ux, uy), d, t[1] + j);
      hn::Store(ux, d, t[2] + j);
      hn::Store(hn::Mul(uy, uy), d, t[3] + j);
      hn::Store(uy, d, t[4] + j);
      hn::Store(hn::Mul(ux, res), d, t[5] + j);
      hn::Store(hn::Mul(uy, res), d, t[6] + j);
      hn::Store(res, d, t[7] + j);
      hn::Store(hn::Mul(res, res), d, t[8] + j);
    }
    for (; j < len; ++j) {
      const double dx = x[b + j] - cx, dy = y[b + j] - cy;
      const double dist = std::sqrt(dx * dx + dy * dy);
      const double res = dist - r;
      const double ux = dist > 0 ? dx / dist : 0.0, uy = dist > 0 ? dy / dist : 0.0;
      t[0][j] = ux * ux, t[1][j] = ux * uy, t[2][j] = ux, t[3][j] = uy * uy, t[4][j] = uy;
      t[5][j] = ux * res, t[6][j] = uy * res, t[7][j] = res, t[8][j] = res * res;
    }
    for (j = 0; j < len; ++j) {
      s00 += t[0][j], s01 += t[1][j], s02 += t[2][j], s11 += t[3][j], s12 += t[4][j];
      s0 -= t[5][j], s1 -= t[6][j], s2 -= t[7][j];
      cost += t[8][j];
    }
  }
  s[0] = s00, s[1] = s01, s[2] = s02, s[3] = s11, s[4] = s12;
  s[5] = s0, s[6] = s1, s[7] = s2, s[8] = cost;
}

}  // namespace HWY_NAMESPACE
}  // namespace zet::geometry
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace zet::geometry {

HWY_EXPORT(BracketImpl);
HWY_EXPORT(BracketIndexesImpl);
HWY_EXPORT(LineDistancesImpl);
HWY_EXPORT(ShiftedDistancesImpl);
HWY_EXPORT(CircleDistancesImpl);
HWY_EXPORT(LineDistancesBracketImpl);
HWY_EXPORT(CircleDistancesBracketImpl);
HWY_EXPORT(SumSquaresBelowImpl);
HWY_EXPORT(CircleStepSumsImpl);
HWY_EXPORT(CircleCentresImpl);
HWY_EXPORT(RoughDoubledAnglesImpl);
HWY_EXPORT(LineOffsetsImpl);

size_t Bracket(const double* values, size_t n, double lo, double hi, double* inside,
               size_t* below) {
  return HWY_DYNAMIC_DISPATCH(BracketImpl)(values, n, lo, hi, inside, below);
}

size_t BracketIndexes(const double* values, size_t n, double lo, double hi, uint32_t* inside,
                      size_t* below) {
  return HWY_DYNAMIC_DISPATCH(BracketIndexesImpl)(values, n, lo, hi, inside, below);
}

size_t ShiftedDistances(const double* values, size_t n, double shift, double* out, double lo,
                        double hi, double* inside, size_t* below, double* squares) {
  return HWY_DYNAMIC_DISPATCH(ShiftedDistancesImpl)(values, n, shift, out, lo, hi, inside, below,
                                                    squares);
}

void LineDistances(const double* base, size_t n, double nx, double ny, double d, double* out) {
  HWY_DYNAMIC_DISPATCH(LineDistancesImpl)(base, n, nx, ny, d, out);
}

void CircleDistances(const double* base, size_t n, double cx, double cy, double r,
                     double* out) {
  HWY_DYNAMIC_DISPATCH(CircleDistancesImpl)(base, n, cx, cy, r, out);
}

size_t LineDistancesBracket(const double* base, size_t n, double nx, double ny, double d,
                            double* out, double lo, double hi, double* inside, size_t* below,
                            double* squares) {
  return HWY_DYNAMIC_DISPATCH(LineDistancesBracketImpl)(base, n, nx, ny, d, out, lo, hi, inside,
                                                        below, squares);
}

size_t CircleDistancesBracket(const double* base, size_t n, double cx, double cy, double r,
                              double* out, double lo, double hi, double* inside,
                              size_t* below, double* squares) {
  return HWY_DYNAMIC_DISPATCH(CircleDistancesBracketImpl)(base, n, cx, cy, r, out, lo, hi,
                                                          inside, below, squares);
}

double SumSquaresBelow(const double* values, size_t n, double cut, size_t* counted) {
  return HWY_DYNAMIC_DISPATCH(SumSquaresBelowImpl)(values, n, cut, counted);
}

size_t RoughDoubledAngles(const double* base, size_t t, double* c2, double* s2) {
  return HWY_DYNAMIC_DISPATCH(RoughDoubledAnglesImpl)(base, t, c2, s2);
}

bool LineOffsets(const double* base, size_t n, double nx, double ny, double* offsets) {
  return HWY_DYNAMIC_DISPATCH(LineOffsetsImpl)(base, n, nx, ny, offsets);
}

size_t CircleCentres(const double* base, size_t t, double* xs, double* ys) {
  return HWY_DYNAMIC_DISPATCH(CircleCentresImpl)(base, t, xs, ys);
}

void CircleStepSums(const double* x, const double* y, size_t m, double cx, double cy, double r,
                    double s[9]) {
  HWY_DYNAMIC_DISPATCH(CircleStepSumsImpl)(x, y, m, cx, cy, r, s);
}

}  // namespace zet::geometry
#endif  // HWY_ONCE
