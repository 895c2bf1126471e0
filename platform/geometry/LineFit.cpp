// The best-fit line: total least squares (the line minimising the sum of squared
// orthogonal distances, through the centroid along the principal axis of the points'
// scatter), with the outlier trimming of FitCommon.h; and the helpers the fits share.
#include <cmath>
#include <cstring>

#include "FitBracket.h"
#include "FitCommon.h"

namespace zet::geometry {

bool AnyNonFinite(const CZetPoint* points, size_t n) {
  for (size_t i = 0; i < n; ++i)
    if (!std::isfinite(points[i].x) || !std::isfinite(points[i].y)) return true;
  return false;
}

void SplitPoints(const CZetPoint* points, size_t n, const SKept* kept, CZetPointVector* used,
                 CZetPointVector* outliers) {
  const size_t m = kept ? kept->Count(n) : 0;
  if (used) used->Resize(static_cast<unsigned>(m));
  if (outliers) outliers->Resize(kept ? static_cast<unsigned>(n - m) : 0u);
  if (!kept) return;
  if (kept->all) {
    if (used) std::copy(points, points + n, used->GetStorage());
    return;
  }
  // One pass over the input hands each point to its list.
  CZetPoint* const u = used ? used->GetStorage() : nullptr;
  CZetPoint* const o = outliers ? outliers->GetStorage() : nullptr;
  const uint32_t* const idx = kept->idx.data();
  size_t j = 0;
  for (size_t i = 0; i < n; ++i) {
    if (j < m && idx[j] == i) {
      if (u) u[j] = points[i];
      ++j;
    } else if (o) {
      o[i - j] = points[i];
    }
  }
}

double KthSmallest(const double* values, size_t n, size_t k, std::vector<double>& work) {
  // Grown, never shrunk: resizing up again would clear the memory each time.
  if (work.size() < n) work.resize(n);
  double* const w = work.data();
  if (n < kNarrowFrom) return WholeKth(values, n, k, w);
  double lo = 0, hi = 0;
  SampleBracket(n, k, [values](size_t i) { return values[i]; }, w, &lo, &hi);
  size_t below = 0;
  const size_t m = Bracket(values, n, lo, hi, w, &below);
  return BracketKth(values, n, k, w, below, m);
}

double Median(const std::vector<double>& values) {
  return KthSmallest(values.data(), values.size(), values.size() / 2, FitScratch().work);
}

size_t SFitScratch::Bytes() const {
  return (dist.capacity() + work.capacity() + first.capacity() + second.capacity() +
          frameX.capacity() + frameY.capacity()) *
             sizeof(double) +
         (subset.capacity() + near.capacity() + next.capacity()) * sizeof(uint32_t);
}

SFitScratch& FitScratch() {
  thread_local SFitScratch scratch;
  return scratch;
}

void FinishFit(SKept* kept) {
  SFitScratch& scratch = FitScratch();
  if (kept->idx.capacity() > scratch.subset.capacity()) scratch.subset.swap(kept->idx);
  if (scratch.Bytes() > kScratchKeepBytes) scratch = SFitScratch();
}

namespace {

// The k-th smallest (KthSmallest's k) of values exact(0 .. n - 1) from approximations
// rough[i] within kRoughAngle of them: with q the k-th smallest rough value, the exact
// one lies within kRoughAngle of q, every value whose rough one is below q - 2
// kRoughAngle is below it and every one above q + 2 kRoughAngle above it, so it is
// the (k - those below)-th of the exact values of the rest, which are few.
// kRoughAngle: far beyond the few units of 2^-53 that the doubled-angle components
// (in [-1, 1]) of hypot's and of sqrt's length differ by.
constexpr double kRoughAngle = 0x1p-36;

template <class Exact>
double ExactKth(const double* rough, size_t n, size_t k, Exact exact, SFitScratch& scratch) {
  const double q = KthSmallest(rough, n, k, scratch.work);
  const double lo = q - 2 * kRoughAngle, hi = q + 2 * kRoughAngle;
  if (scratch.near.size() < n) scratch.near.resize(n);
  size_t below = 0;
  const size_t m = BracketIndexes(rough, n, lo, hi, scratch.near.data(), &below);
  std::vector<double> near(m);
  for (size_t j = 0; j < m; ++j) near[j] = exact(scratch.near[j]);
  std::nth_element(near.begin(), near.begin() + static_cast<ptrdiff_t>(k - below), near.end());
  return near[k - below];
}

struct SLineModel {
  static constexpr size_t kMinPoints = 2;
  CZetLine line;
  double nx = 0, ny = 1;

  unsigned Fit(const CZetPoint* points, const uint32_t* idx, size_t m) {
    return WithIndex(idx, [&](auto at) {
      SFrame f;
      const unsigned status = CentredMoments(points, m, at, &f);
      if (status != CZetGeometry::kFitOk) return status;
      double a = 0.5 * std::atan2(2 * f.cxy, f.cxx - f.cyy);  // principal axis, [-π/2, π/2]
      if (a <= -CZetGeometry::PiDiv2) a = CZetGeometry::PiDiv2;
      nx = -std::sin(a), ny = std::cos(a);
      const CZetPoint mean = f.FromFrame(f.mx, f.my);
      line = CZetLine(a + 0.0, nx * mean.x + ny * mean.y + 0.0);
      return std::isfinite(line.d) ? CZetGeometry::kFitOk : CZetGeometry::kFitNonFinite;
    });
  }
  // The direction: the median, component by component, of the doubled-angle unit
  // vectors of the steps between points half the set apart (no wrap at ±π/2); the
  // offset: the median of the points' offsets along the normal.
  bool RobustStart(const CZetPoint* points, size_t n, SFitScratch& scratch) {
    const size_t half = n / 2;
    std::vector<double>& c2 = scratch.first;
    std::vector<double>& s2 = scratch.second;
    if (c2.size() < n) c2.resize(n);  // grown, never shrunk: resizing clears
    if (s2.size() < half) s2.resize(half);
    const double* base = PointsAsDoubles(points);
    const auto step = [points, half](size_t i, double* c, double* s) {
      return DoubledAngle(points[i + half].x - points[i].x, points[i + half].y - points[i].y, c,
                          s);
    };
    double mc = 0, ms = 0;
    if (base && half > 0 && RoughDoubledAngles(base, half, c2.data(), s2.data()) == 0) {
      // Every step has a direction, within a few units in the last place of the exact
      // one (of hypot's length): the medians of those narrow down which steps' exact
      // values decide.
      const auto c = [&](size_t i) {
        double ci = 0, si = 0;
        step(i, &ci, &si);
        return ci;
      };
      const auto s = [&](size_t i) {
        double ci = 0, si = 0;
        step(i, &ci, &si);
        return si;
      };
      ms = ExactKth(s2.data(), half, half / 2, s, scratch);
      mc = ExactKth(c2.data(), half, half / 2, c, scratch);
    } else {
      size_t m = 0;
      for (size_t i = 0; i < half; ++i) m += step(i, &c2[m], &s2[m]);
      if (m == 0) return false;
      ms = KthSmallest(s2.data(), m, m / 2, scratch.work);
      mc = KthSmallest(c2.data(), m, m / 2, scratch.work);
    }
    const double a = 0.5 * std::atan2(ms, mc);
    CZetLine l(a, 0);
    CZetGeometry::NormalizeLine(&l);
    nx = -std::sin(l.a), ny = std::cos(l.a);
    std::vector<double>& offsets = scratch.first;
    if (base) {
      if (!LineOffsets(base, n, nx, ny, offsets.data())) return false;
    } else {
      for (size_t i = 0; i < n; ++i) {
        offsets[i] = nx * points[i].x + ny * points[i].y;
        if (std::isnan(offsets[i])) return false;
      }
    }
    line = CZetLine(l.a, KthSmallest(offsets.data(), n, n / 2, scratch.work) + 0.0);
    return std::isfinite(line.d);
  }
  double StartShift() const { return line.d; }  // the offsets left in scratch.first
  double Signed(const CZetPoint& p) const { return nx * p.x + ny * p.y - line.d; }
  double Distance(const CZetPoint& p) const { return LineDistance(p.x, p.y, nx, ny, line.d); }
  void Distances(const CZetPoint* points, size_t n, double* out) const {
    if (const double* base = PointsAsDoubles(points))
      return LineDistances(base, n, nx, ny, line.d, out);
    for (size_t i = 0; i < n; ++i) out[i] = Distance(points[i]);
  }
  size_t DistancesBracket(const CZetPoint* points, size_t n, double* out, double lo, double hi,
                          double* inside, size_t* below, double* squares) const {
    if (const double* base = PointsAsDoubles(points))
      return LineDistancesBracket(base, n, nx, ny, line.d, out, lo, hi, inside, below, squares);
    Distances(points, n, out);
    *squares = 0;
    for (size_t i = 0; i < n; ++i) *squares += out[i] < lo ? out[i] * out[i] : 0.0;
    return Bracket(out, n, lo, hi, inside, below);
  }
};

}  // namespace

unsigned FitLine(const CZetPoint* points, size_t n, unsigned percent, CZetLine* out,
                 SKept* kept) {
  SLineModel model;
  const unsigned status = TrimmedFit(points, n, percent, model, kept);
  if (status == CZetGeometry::kFitOk) *out = model.line;
  return status;
}

}  // namespace zet::geometry

using zet::geometry::SKept;
using zet::geometry::SLineModel;
using zet::geometry::SplitPoints;
using zet::geometry::TrimmedFit;

unsigned CZetGeometry::Points2BestLine(const CZetPoint* points, size_t count, unsigned percent,
                                       unsigned* included, CZetLine* out,
                                       CZetPointVector* outliers, CZetPointVector* used) {
  SKept kept;
  const unsigned status = zet::geometry::FitLine(points, count, percent, out, &kept);
  *included = status == kFitOk ? static_cast<unsigned>(kept.Count(count)) : 0u;
  SplitPoints(points, count, status == kFitOk ? &kept : nullptr, used, outliers);
  zet::geometry::FinishFit(&kept);
  return status;
}

unsigned CZetGeometry::Points2BestLineMaxOutliers(const CZetPoint* points, size_t count,
                                                  unsigned percent, unsigned* included,
                                                  double* minDist, double* maxDist,
                                                  CZetPoint* minPoint, CZetPoint* maxPoint,
                                                  CZetLine* out, CZetPointVector* outliers) {
  SLineModel model;
  SKept kept;
  const unsigned status = TrimmedFit(points, count, percent, model, &kept);
  *included = status == kFitOk ? static_cast<unsigned>(kept.Count(count)) : 0u;
  SplitPoints(points, count, status == kFitOk ? &kept : nullptr, nullptr, outliers);
  if (status != kFitOk) {
    zet::geometry::FinishFit(&kept);
    return status;
  }
  // The furthest kept points on either side; ties keep the earlier point.
  const size_t m = kept.Count(count);
  size_t lo = 0, hi = 0;
  double dlo = 0, dhi = 0;
  for (size_t j = 0; j < m; ++j) {
    const size_t i = kept.all ? j : kept.idx[j];
    const double s = model.Signed(points[i]);
    if (j == 0 || s < dlo) dlo = s, lo = i;
    if (j == 0 || s > dhi) dhi = s, hi = i;
  }
  *minDist = dlo;
  *maxDist = dhi;
  *minPoint = points[lo];
  *maxPoint = points[hi];
  *out = model.line;
  zet::geometry::FinishFit(&kept);
  return status;
}
