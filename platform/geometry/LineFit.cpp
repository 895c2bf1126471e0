// The best-fit line: total least squares (the line minimising the sum of squared
// orthogonal distances, through the centroid along the principal axis of the points'
// scatter), with the outlier trimming of FitCommon.h; and the helpers the fits share.
#include <cmath>
#include <cstring>

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
  if (used) {
    used->Resize(static_cast<unsigned>(m));
    if (kept && kept->all) {
      std::copy(points, points + n, used->GetStorage());
    } else {
      for (size_t j = 0; j < m; ++j) (*used)[static_cast<unsigned>(j)] = points[kept->idx[j]];
    }
  }
  if (outliers) {
    outliers->Resize(kept ? static_cast<unsigned>(n - m) : 0u);
    if (kept && !kept->all) {
      size_t j = 0, o = 0;
      for (size_t i = 0; i < n; ++i) {
        if (j < m && kept->idx[j] == i)
          ++j;
        else
          (*outliers)[static_cast<unsigned>(o++)] = points[i];
      }
    }
  }
}

double MedianInPlace(std::vector<double>& values) {
  const auto mid = values.begin() + static_cast<ptrdiff_t>(values.size() / 2);
  std::nth_element(values.begin(), mid, values.end());
  return *mid;
}

namespace {

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
  bool RobustStart(const CZetPoint* points, size_t n) {
    const size_t half = n / 2;
    std::vector<double> c2, s2;
    c2.reserve(half), s2.reserve(half);
    for (size_t i = 0; i < half; ++i) {
      const double dx = points[i + half].x - points[i].x, dy = points[i + half].y - points[i].y;
      const double len = std::hypot(dx, dy);
      const double ux = dx / len, uy = dy / len;
      if (!(len > 0) || !std::isfinite(ux) || !std::isfinite(uy)) continue;
      c2.push_back(ux * ux - uy * uy);
      s2.push_back(2 * ux * uy);
    }
    if (c2.empty()) return false;
    const double a = 0.5 * std::atan2(MedianInPlace(s2), MedianInPlace(c2));
    CZetLine l(a, 0);
    CZetGeometry::NormalizeLine(&l);
    nx = -std::sin(l.a), ny = std::cos(l.a);
    std::vector<double> offsets(n);
    for (size_t i = 0; i < n; ++i) {
      offsets[i] = nx * points[i].x + ny * points[i].y;
      if (std::isnan(offsets[i])) return false;
    }
    line = CZetLine(l.a, MedianInPlace(offsets) + 0.0);
    return std::isfinite(line.d);
  }
  double Signed(const CZetPoint& p) const { return nx * p.x + ny * p.y - line.d; }
  double Distance(const CZetPoint& p) const { return std::fabs(Signed(p)); }
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
  if (status != kFitOk) return status;
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
  return status;
}
