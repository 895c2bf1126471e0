// What the line and circle fits share (the platform's own header, not part of the
// SDK): the centred moments of a point set, and the outlier trimming. A model fits a
// subset of the points and measures the distance of any point from its fit:
//
//   struct SModel {
//     static constexpr size_t kMinPoints = 2;
//     // Fits points[idx[0 .. m - 1]], or points[0 .. m - 1] when idx is null.
//     unsigned Fit(const CZetPoint* points, const uint32_t* idx, size_t m);
//     // A rough fit of points[0 .. n - 1] that a minority of gross outliers cannot
//     // drag (medians of fits to a few points each); false when there is none.
//     bool RobustStart(const CZetPoint* points, size_t n);
//     double Distance(const CZetPoint& p) const;   // >= 0
//   };
//
// TrimmedFit discards k = floor(n * percent / 100) points as ZetGeometry.h describes
// and leaves the model fitted to the kept points, listed in `kept` in input order (or
// marked `all` when k is 0).
#pragma once

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <vector>

#include "zet/ZetGeometry.h"

namespace zet::geometry {

struct SKept {
  bool all = false;
  std::vector<uint32_t> idx;  // input order; empty when `all`
  size_t Count(size_t n) const { return all ? n : idx.size(); }
};

// Whether a coordinate of points[0 .. n - 1] is NaN or infinite.
bool AnyNonFinite(const CZetPoint* points, size_t n);

// The fits' shared outputs: the kept and the discarded points in input order.
// `kept` null: a failed fit, both emptied.
void SplitPoints(const CZetPoint* points, size_t n, const SKept* kept, CZetPointVector* used,
                 CZetPointVector* outliers);

// The centroid and scatter of points[at(0 .. m - 1)] in a frame q = (p - origin) *
// invScale: about the first point (which keeps the variances accurate), or, when the
// coordinates are too large for that, about the centre of their box scaled into
// [-1, 1]. mx, my: the mean of q; cxx, cyy, cxy: the sums of the centred products.
struct SFrame {
  CZetPoint origin;
  double invScale = 1.0;
  double mx = 0, my = 0, cxx = 0, cyy = 0, cxy = 0;
  CZetPoint ToFrame(const CZetPoint& p) const {
    return CZetPoint((p.x - origin.x) * invScale, (p.y - origin.y) * invScale);
  }
  CZetPoint FromFrame(double qx, double qy) const {
    return CZetPoint(origin.x + qx / invScale, origin.y + qy / invScale);
  }
};

struct SMoments {
  double sx = 0, sy = 0, sxx = 0, syy = 0, sxy = 0;
  bool Finite() const {
    return std::isfinite(sx) && std::isfinite(sy) && std::isfinite(sxx) && std::isfinite(syy) &&
           std::isfinite(sxy);
  }
};

// Sums in two interleaved sets, so that the additions do not wait on one another.
template <class At>
SMoments Accumulate(const CZetPoint* points, size_t m, At at, const SFrame& f) {
  SMoments a, b;
  size_t i = 0;
  for (; i + 1 < m; i += 2) {
    const CZetPoint p = f.ToFrame(points[at(i)]), q = f.ToFrame(points[at(i + 1)]);
    a.sx += p.x, a.sy += p.y, a.sxx += p.x * p.x, a.syy += p.y * p.y, a.sxy += p.x * p.y;
    b.sx += q.x, b.sy += q.y, b.sxx += q.x * q.x, b.syy += q.y * q.y, b.sxy += q.x * q.y;
  }
  if (i < m) {
    const CZetPoint p = f.ToFrame(points[at(i)]);
    a.sx += p.x, a.sy += p.y, a.sxx += p.x * p.x, a.syy += p.y * p.y, a.sxy += p.x * p.y;
  }
  return {a.sx + b.sx, a.sy + b.sy, a.sxx + b.sxx, a.syy + b.syy, a.sxy + b.sxy};
}

// kFitOk, kFitNonFinite for a NaN or infinite coordinate, or kFitDegenerate when all
// points are equal. m >= 1.
template <class At>
unsigned CentredMoments(const CZetPoint* points, size_t m, At at, SFrame* f) {
  f->origin = points[at(0)];
  f->invScale = 1.0;
  SMoments s = Accumulate(points, m, at, *f);
  if (!s.Finite()) {
    double x0 = INFINITY, x1 = -INFINITY, y0 = INFINITY, y1 = -INFINITY;
    for (size_t i = 0; i < m; ++i) {
      const CZetPoint& p = points[at(i)];
      if (!std::isfinite(p.x) || !std::isfinite(p.y)) return CZetGeometry::kFitNonFinite;
      x0 = std::fmin(x0, p.x), x1 = std::fmax(x1, p.x);
      y0 = std::fmin(y0, p.y), y1 = std::fmax(y1, p.y);
    }
    // Only an overflow gets here, so the half extent is large and its inverse normal.
    f->origin = CZetPoint(x0 * 0.5 + x1 * 0.5, y0 * 0.5 + y1 * 0.5);
    f->invScale = 1.0 / std::fmax(x1 * 0.5 - x0 * 0.5, y1 * 0.5 - y0 * 0.5);
    s = Accumulate(points, m, at, *f);
  }
  const double dm = static_cast<double>(m);
  f->mx = s.sx / dm, f->my = s.sy / dm;
  f->cxx = s.sxx - s.sx * f->mx, f->cyy = s.syy - s.sy * f->my, f->cxy = s.sxy - s.sx * f->my;
  return f->cxx + f->cyy > 0 ? CZetGeometry::kFitOk : CZetGeometry::kFitDegenerate;
}

// Calls fit(at) with the index map of idx, or the identity when idx is null.
template <class Fit>
unsigned WithIndex(const uint32_t* idx, Fit fit) {
  if (idx) return fit([idx](size_t i) { return static_cast<size_t>(idx[i]); });
  return fit([](size_t i) { return i; });
}

// The trimmed line fit of Points2BestLine, with the kept points' indexes.
unsigned FitLine(const CZetPoint* points, size_t n, unsigned percent, CZetLine* out,
                 SKept* kept);

// The median of values[0 .. n - 1] (the upper one for even n), reordering them; the
// values must not be NaN.
double MedianInPlace(std::vector<double>& values);

inline constexpr int kTrimSteps = 4;           // k/2, 3k/4, 7k/8, k
inline constexpr int kConcentrationSteps = 4;  // refits on the nearest n - k at most

// One trimming run from a fitted model, with its working memory.
template <class Model>
class TTrimmer {
 public:
  TTrimmer(const CZetPoint* points, size_t n, size_t k)
      : m_points(points), m_n(n), m_k(k), m_order(n), m_in(n), m_before(n) {}

  // From the model's current fit: the steps toward k when `inSteps`, then refits on
  // the nearest n - k until that set stays. On success the model fits `kept`.
  unsigned Run(Model& model, bool inSteps, SKept* kept) {
    std::fill(m_in.begin(), m_in.end(), 0);
    bool changed = true;
    size_t last = 0;
    for (int s = 1; inSteps && s <= kTrimSteps; ++s) {
      const size_t t = s == kTrimSteps ? m_k : m_k - (m_k >> s);
      if (t == last) continue;
      last = t;
      if (const unsigned status = Step(model, t, &changed)) return status;
    }
    for (int s = 0; s < kConcentrationSteps + (inSteps ? 0 : 1); ++s) {
      if (const unsigned status = Step(model, m_k, &changed)) return status;
      if (!changed) break;
    }
    kept->all = false;
    kept->idx = m_subset;
    return CZetGeometry::kFitOk;
  }

 private:
  // Keeps the n - t points nearest to the current fit (ties: the earlier point) and
  // refits on them in input order, unless they are the set the fit came from.
  unsigned Step(Model& model, size_t t, bool* changed) {
    for (size_t i = 0; i < m_n; ++i) {
      const double e = model.Distance(m_points[i]);
      m_order[i] = {e >= 0 ? e : INFINITY, static_cast<uint32_t>(i)};  // no NaN in the order
    }
    const size_t keep = m_n - t;
    std::nth_element(m_order.begin(), m_order.begin() + static_cast<ptrdiff_t>(keep),
                     m_order.end(), [](const SRanked& a, const SRanked& b) {
                       return a.dist < b.dist || (a.dist == b.dist && a.index < b.index);
                     });
    m_before.swap(m_in);
    std::fill(m_in.begin(), m_in.end(), 0);
    for (size_t j = 0; j < keep; ++j) m_in[m_order[j].index] = 1;
    *changed = m_in != m_before;
    if (!*changed) return CZetGeometry::kFitOk;
    m_subset.clear();
    for (size_t i = 0; i < m_n; ++i)
      if (m_in[i]) m_subset.push_back(static_cast<uint32_t>(i));
    return model.Fit(m_points, m_subset.data(), m_subset.size());
  }

  struct SRanked {
    double dist;
    uint32_t index;
  };
  const CZetPoint* m_points;
  size_t m_n, m_k;
  std::vector<SRanked> m_order;
  std::vector<uint32_t> m_subset;
  std::vector<uint8_t> m_in, m_before;
};

// The sum of the n - k smallest squared distances from the model's fit: how well a
// start fits the points that trimming would keep.
template <class Model>
double TrimmedCost(const CZetPoint* points, size_t n, size_t k, const Model& model,
                   std::vector<double>& work) {
  work.resize(n);
  for (size_t i = 0; i < n; ++i) {
    const double e = model.Distance(points[i]);
    work[i] = e >= 0 ? e * e : INFINITY;
  }
  std::nth_element(work.begin(), work.begin() + static_cast<ptrdiff_t>(n - k - 1), work.end());
  double sum = 0;
  for (size_t i = 0; i < n - k; ++i) sum += work[i];
  return sum;
}

// The fit after discarding k = floor(n * percent / 100) points. Trimming starts from
// the plain fit of all points and goes in steps; but where the model's robust start
// (Model::RobustStart) fits the n - k points nearest to it better than the plain fit
// fits those nearest to it, gross outliers have dragged the plain fit so far that its
// farthest points may be good ones, and the trimming starts from the robust fit
// instead, keeping the nearest n - k at once.
template <class Model>
unsigned TrimmedFit(const CZetPoint* points, size_t n, unsigned percent, Model& model,
                    SKept* kept) {
  if (percent > 100) return CZetGeometry::kFitBadPercent;
  const size_t k = static_cast<size_t>(static_cast<uint64_t>(n) * percent / 100);
  if (n - k < Model::kMinPoints || n > UINT32_MAX) return CZetGeometry::kFitTooFewPoints;
  const unsigned status = model.Fit(points, nullptr, n);
  if (status != CZetGeometry::kFitOk || k == 0) {
    kept->all = true;
    kept->idx.clear();
    return status;
  }
  TTrimmer<Model> trimmer(points, n, k);
  std::vector<double> work;
  Model robust;
  if (robust.RobustStart(points, n) &&
      TrimmedCost(points, n, k, robust, work) < TrimmedCost(points, n, k, model, work)) {
    model = robust;
    return trimmer.Run(model, false, kept);
  }
  return trimmer.Run(model, true, kept);
}

}  // namespace zet::geometry
