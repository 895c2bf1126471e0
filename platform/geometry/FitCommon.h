// What the line and circle fits share (the platform's own header, not part of the
// SDK): the centred moments of a point set, and the outlier trimming. A model fits a
// subset of the points and measures the distance of any point from its fit:
//
//   struct SModel {
//     static constexpr size_t kMinPoints = 2;
//     // Fits points[idx[0 .. m - 1]], or points[0 .. m - 1] when idx is null.
//     unsigned Fit(const CZetPoint* points, const uint32_t* idx, size_t m);
//     // A rough fit of points[0 .. n - 1] that a minority of gross outliers cannot
//     // drag (medians of fits to a few points each); false when there is none. On
//     // success scratch.first holds n values v with Distance(points[i]) exactly
//     // |v[i] - StartShift()|, NaN taken as infinite.
//     bool RobustStart(const CZetPoint* points, size_t n, SFitScratch& scratch);
//     double StartShift() const;
//     double Distance(const CZetPoint& p) const;   // >= 0, NaN taken as infinite
//     // Distance of points[0 .. n - 1] into out[0 .. n - 1].
//     void Distances(const CZetPoint* points, size_t n, double* out) const;
//   };
//
// TrimmedFit discards k = floor(n * percent / 100) points as ZetGeometry.h describes
// and leaves the model fitted to the kept points, listed in `kept` in input order (or
// marked `all` when k is 0).
#pragma once

#include <algorithm>
#include <cfloat>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>
#include <vector>

#include "FitBracket.h"
#include "zet/ZetGeometry.h"

namespace zet::geometry {

struct SKept {
  bool all = false;
  std::vector<uint32_t> idx;  // input order; empty when `all`
  size_t Count(size_t n) const { return all ? n : idx.size(); }
};

// The working memory of the fits, kept per thread from one fit to the next: a fit of
// 10^6 points needs some 40 MB (a line) to 55 MB (a circle), and touching fresh pages
// costs more than the fit itself on a virtual machine (three times the fit at 10^6
// points when the memory went back after each). FinishFit hands a fit's kept list back
// and releases the memory when it outgrew kScratchKeepBytes, so that one huge fit
// (beyond some 1.2 million points) does not hold its memory for the life of the
// thread; up to that a thread keeps what its largest fit needed.
struct SFitScratch {
  std::vector<double> dist, work, first, second;
  std::vector<double> frameX, frameY;  // a model's points in the frame its fit works in
  std::vector<uint32_t> subset, near, next;
  size_t Bytes() const;
};
inline constexpr size_t kScratchKeepBytes = size_t{64} << 20;
SFitScratch& FitScratch();
void FinishFit(SKept* kept);

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

// Sums in two interleaved sets, so that the additions do not wait on one another. The
// frame's coordinates are those of SFrame::ToFrame, in plain doubles: a point object
// made and destroyed per point cost as much as the sums.
template <class At>
SMoments Accumulate(const CZetPoint* points, size_t m, At at, const SFrame& f) {
  SMoments a, b;
  const double ox = f.origin.x, oy = f.origin.y, s = f.invScale;
  const auto add = [&](SMoments& t, const CZetPoint& p) {
    const double x = (p.x - ox) * s, y = (p.y - oy) * s;
    t.sx += x, t.sy += y, t.sxx += x * x, t.syy += y * y, t.sxy += x * y;
  };
  size_t i = 0;
  for (; i + 1 < m; i += 2) {
    add(a, points[at(i)]);
    add(b, points[at(i + 1)]);
  }
  if (i < m) add(a, points[at(i)]);
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

// The value std::nth_element would leave at position k of values[0 .. n - 1], k < n:
// the (k + 1)-th smallest. The values must not be NaN. Large sets are narrowed first to
// the values between two ranks of a sample that bracket k, so that the full selection
// runs on a few per cent of them; `work` is scratch.
double KthSmallest(const double* values, size_t n, size_t k, std::vector<double>& work);

// The parts of KthSmallest. Below kNarrowFrom values, or when the sample's bracket
// misses k, the whole set (WholeKth, into w).
inline constexpr size_t kNarrowFrom = 2048;
inline double WholeKth(const double* values, size_t n, size_t k, double* w) {
  std::copy(values, values + n, w);
  std::nth_element(w, w + k, w + n);
  return w[k];
}
// A sample of s = (2n)^(2/3) values, one from each run of `every` at a position within
// it that a fixed pseudo-random sequence picks, so that data with a period (every fifth
// point an outlier) cannot bias it; s balances the selection in the sample against the
// one in the bracket. The sample ranks k s / n -/+ three standard deviations of the
// sample rank (sqrt(s) / 2 at most) bracket the k-th value: [*lo, *hi]. value(i) is
// the i-th value; w has room for n.
template <class Value>
void SampleBracket(size_t n, size_t k, Value value, double* w, double* lo, double* hi) {
  const size_t every = std::max<size_t>(2, static_cast<size_t>(std::cbrt(n / 4.0)));
  const size_t s = n / every;
  uint32_t state = 0x9E3779B9u;
  for (size_t j = 0; j < s; ++j) {
    state = state * 1664525u + 1013904223u;  // the multiplier and increment of a full-period LCG
    w[j] = value(j * every + ((state >> 16) * every >> 16));
  }
  const size_t centre = std::min(s - 1, k / every);
  const size_t spread = static_cast<size_t>(1.5 * std::sqrt(static_cast<double>(s))) + 8;
  const size_t rlo = centre > spread ? centre - spread : 0, rhi = std::min(s - 1, centre + spread);
  std::nth_element(w, w + rhi, w + s);
  *hi = rhi == s - 1 ? INFINITY : w[rhi];
  std::nth_element(w, w + rlo, w + rhi);
  *lo = rlo == 0 ? -INFINITY : w[rlo];
}
// From Bracket's count below the bracket and its m values packed in w.
inline double BracketKth(const double* values, size_t n, size_t k, double* w, size_t below,
                         size_t m) {
  if (k < below || k >= below + m) return WholeKth(values, n, k, w);
  std::nth_element(w, w + (k - below), w + m);
  return w[k - below];
}

// The median of values[0 .. n - 1] (the upper one for even n); the values must not
// be NaN. Uses the scratch's `work`.
double Median(const std::vector<double>& values);

// The points as the doubles the vector passes read (FitBracket.h), or null where a
// point is laid out otherwise.
inline const double* PointsAsDoubles(const CZetPoint* points) {
  const double* base = reinterpret_cast<const double*>(points);
  const bool layout = sizeof(CZetPoint) == kPointStride * sizeof(double) &&
                      &points->x == base + 1 && &points->y == base + 2;
  return layout ? base : nullptr;
}

// |distance| of every point from the model's fit, NaN taken as infinite, so that the
// order has no NaN.
template <class Model>
void Distances(const Model& model, const CZetPoint* points, size_t n, std::vector<double>& out) {
  out.resize(n);
  model.Distances(points, n, out.data());
}

// Distances, and the k-th smallest of them as KthSmallest gives it; in large sets
// the sample's distances are measured first, so that one pass over the points also
// brackets the k-th.
// With `squares`, also the sum of the squares e = v² of the distances v with e below
// the k-th's square (some that equal it may be among them), in lanes, and how many.
struct SSquares {
  double sum = 0;
  size_t count = 0;
};
// The body of DistancesKth: distance(i) measures one, all(out) every one, and
// bracket(out, lo, hi, inside, &below, &squares) every one with Bracket's pass.
template <class One, class All, class WithBracket>
double MeasureKth(size_t n, size_t k, std::vector<double>& dist, std::vector<double>& work,
                  SSquares* squares, One distance, All all, WithBracket bracket) {
  const auto sumAll = [&](double kth) {
    if (squares) squares->sum = SumSquaresBelow(dist.data(), n, kth * kth, &squares->count);
    return kth;
  };
  if (n < kNarrowFrom) {
    all(dist.data());
    return sumAll(KthSmallest(dist.data(), n, k, work));
  }
  if (work.size() < n) work.resize(n);
  double* const w = work.data();
  double lo = 0, hi = 0;
  SampleBracket(n, k, distance, w, &lo, &hi);
  size_t below = 0;
  double low = 0;  // the squares below lo: below the k-th's square, or equal to it
  const size_t m = bracket(dist.data(), lo, hi, w, &below, &low);
  if (k < below || k >= below + m) return sumAll(WholeKth(dist.data(), n, k, w));
  const double kth = BracketKth(dist.data(), n, k, w, below, m);
  if (squares) {
    const double cut = kth * kth;
    squares->sum = low, squares->count = below;
    for (size_t j = 0; j < m; ++j) {
      const double e = w[j] * w[j];
      if (e < cut) squares->sum += e, ++squares->count;
    }
  }
  return kth;
}

template <class Model>
double DistancesKth(const Model& model, const CZetPoint* points, size_t n, size_t k,
                    std::vector<double>& dist, std::vector<double>& work,
                    SSquares* squares = nullptr) {
  dist.resize(n);
  return MeasureKth(
      n, k, dist, work, squares, [&](size_t i) { return model.Distance(points[i]); },
      [&](double* out) { model.Distances(points, n, out); },
      [&](double* out, double lo, double hi, double* inside, size_t* below, double* low) {
        return model.DistancesBracket(points, n, out, lo, hi, inside, below, low);
      });
}

// DistancesKth of a robust start from the values its RobustStart left in `values`,
// whose distances are |values[i] - shift| (NaN taken as infinite), measured in place:
// a pass over those instead of the points.
inline double ShiftedKth(double shift, size_t n, size_t k, std::vector<double>& values,
                         std::vector<double>& work, SSquares* squares) {
  const double* v = values.data();
  return MeasureKth(
      n, k, values, work, squares, [&](size_t i) { return ShiftedDistance(v[i], shift); },
      [&](double* out) { ShiftedDistances(v, n, shift, out, 0, 0, nullptr, nullptr, nullptr); },
      [&](double* out, double lo, double hi, double* inside, size_t* below, double* low) {
        return ShiftedDistances(v, n, shift, out, lo, hi, inside, below, low);
      });
}

inline constexpr int kTrimSteps = 4;           // k/2, 3k/4, 7k/8, k
inline constexpr int kConcentrationSteps = 4;  // refits on the nearest n - k at most
inline constexpr double kReweightCut = 2.5;     // robust standard deviations

// One trimming run from a fitted model, with its working memory.
template <class Model>
class TTrimmer {
 public:
  TTrimmer(const CZetPoint* points, size_t n, size_t k, SFitScratch& scratch)
      : m_points(points), m_n(n), m_k(k), m_subset(scratch.subset), m_near(scratch.near),
        m_next(scratch.next), m_dist(scratch.dist), m_work(scratch.work) {}

  // The distances of the model's current fit and their (n - k)-th smallest, when the
  // caller measured them already: the first step takes them instead of measuring again.
  void KnownDistances(std::vector<double>& dist, double cut) {
    m_dist.swap(dist);
    m_cut = cut;
    m_fresh = m_cutKnown = true;
  }

  // From the model's current fit: the steps toward k when `inSteps`, then refits on
  // the nearest n - k until that set stays. On success the model fits `kept`.
  unsigned Run(Model& model, bool inSteps, SKept* kept) {
    m_fitted = false;
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
    Reselect(model);
    kept->all = false;
    kept->idx.swap(m_subset);
    return CZetGeometry::kFitOk;
  }

 private:
  // The set the trimming settles on fits itself: its fit decides which points are
  // nearest. On Gaussian noise that costs half the efficiency of a least-squares fit
  // of the true inliers (the set follows the noise of the fit), so the kept set is
  // chosen once more from a fit that does not: the least-squares fit of every point
  // within kReweightCut robust standard deviations (1.4826 times the median distance)
  // of the trimmed fit. The n - k points nearest to that fit are kept, and fitted.
  // When a step fails, the trimmed fit stands.
  void Reselect(Model& model) {
    std::vector<double>& dist = m_dist;
    const double median = m_fresh ? KthSmallest(dist.data(), m_n, m_n / 2, m_work)
                                  : DistancesKth(model, m_points, m_n, m_n / 2, dist, m_work);
    m_fresh = false;
    const double cut = kReweightCut * 1.4826 * median;
    if (!(cut > 0) || !std::isfinite(cut)) return;  // an exact fit, or no scale
    std::vector<uint32_t>& near = m_near;
    near.resize(m_n);
    size_t m = 0;
    for (size_t i = 0; i < m_n; ++i) {
      near[m] = static_cast<uint32_t>(i);
      m += dist[i] <= cut;
    }
    near.resize(m);
    Model wide = model;
    if (near.size() < Model::kMinPoints ||
        wide.Fit(m_points, near.data(), near.size()) != CZetGeometry::kFitOk)
      return;
    m_near.assign(m_subset.begin(), m_subset.end());  // the trimmed set
    bool changed = false;
    if (Step(wide, m_k, &changed) != CZetGeometry::kFitOk) {
      m_subset.swap(m_near);
      return;
    }
    if (changed) model = wide;  // else the trimmed fit is the fit of the same set
  }

  // Keeps the n - t points nearest to the current fit (ties: the earlier point) and
  // refits on them in input order, unless they are the set the fit came from. The
  // kept set is that of (distance, index) order: every point nearer than the
  // (n - t)-th distance, then the earliest of those at that distance.
  // The distances stay in m_dist; without a refit they are still those of the
  // model's fit, for the next step or Reselect.
  unsigned Step(Model& model, size_t t, bool* changed) {
    const size_t keep = m_n - t;
    double cut = 0;
    if (!m_fresh)
      cut = DistancesKth(model, m_points, m_n, keep - 1, m_dist, m_work);
    else
      cut = m_cutKnown && t == m_k ? m_cut : KthSmallest(m_dist.data(), m_n, keep - 1, m_work);
    const double* dist = m_dist.data();
    m_fresh = true;
    m_cutKnown = false;
    // Every point at or below the cut: the set, unless more lie at the cut than the set
    // has room for; then the earliest of those.
    if (m_next.size() < m_n) m_next.resize(m_n);
    uint32_t* next = m_next.data();
    size_t m = 0;
    for (size_t i = 0; i < m_n; ++i) {
      next[m] = static_cast<uint32_t>(i);
      m += dist[i] <= cut;
    }
    if (m > keep) {
      size_t below = 0;
      for (size_t i = 0; i < m_n; ++i) below += dist[i] < cut;
      size_t ties = keep - below;
      m = 0;
      for (size_t i = 0; i < m_n; ++i) {
        const bool tie = dist[i] == cut && ties > 0;
        ties -= tie;
        next[m] = static_cast<uint32_t>(i);
        m += dist[i] < cut || tie;
      }
    }
    *changed = !m_fitted || m_subset.size() != m ||
               std::memcmp(m_subset.data(), next, m * sizeof(uint32_t)) != 0;
    if (!*changed) return CZetGeometry::kFitOk;
    m_fresh = false;
    m_fitted = true;
    m_subset.swap(m_next);
    m_subset.resize(m);
    return model.Fit(m_points, m_subset.data(), m_subset.size());
  }

  const CZetPoint* m_points;
  size_t m_n, m_k;
  std::vector<uint32_t>& m_subset;  // the set of the model's fit, once m_fitted
  std::vector<uint32_t>& m_near;
  std::vector<uint32_t>& m_next;
  std::vector<double>& m_dist;
  std::vector<double>& m_work;
  double m_cut = 0;
  bool m_fitted = false;     // a step of this run fitted the model to m_subset
  bool m_fresh = false;      // m_dist holds the distances of the model's current fit
  bool m_cutKnown = false;   // and m_cut their (n - k)-th smallest
};

// The sum of the n - k smallest squared distances from the model's fit: how well a
// start fits the points that trimming would keep. Summed in input order: those below
// the (n - k)-th, then that one as often as it is needed. Leaves the distances in
// `dist` and the (n - k)-th of them in *distCut (squaring keeps their order, so the
// (n - k)-th square is the square of the (n - k)-th distance), for the first
// trimming step.
inline double TrimmedCostInOrder(const double* dist, size_t n, size_t k, double distCut) {
  const double cut = distCut * distCut;
  double sum = 0;
  size_t counted = 0;
  for (size_t i = 0; i < n; ++i) {
    const double e = dist[i] * dist[i];
    const bool in = e < cut;
    sum += in ? e : 0.0;
    counted += in;
  }
  return sum + static_cast<double>(n - k - counted) * cut;
}

// The same cost summed in vector lanes, which round otherwise: QuickCostBelow decides
// from it where it can.
// A robust start (fromStart) measures from the values RobustStart left in `dist`.
template <class Model>
double QuickTrimmedCost(const CZetPoint* points, size_t n, size_t k, const Model& model,
                        bool fromStart, std::vector<double>& dist, std::vector<double>& work,
                        double* distCut) {
  SSquares squares;
  *distCut = fromStart ? ShiftedKth(model.StartShift(), n, n - k - 1, dist, work, &squares)
                       : DistancesKth(model, points, n, n - k - 1, dist, work, &squares);
  const double cut = *distCut * *distCut;
  return squares.sum + static_cast<double>(n - k - squares.count) * cut;
}

// Whether cost a < cost b, both sums of the same n + 1 non-negative terms as
// TrimmedCostInOrder adds them, from the quick sums qa and qb of those terms: any order
// of adding m non-negative terms lands within m u of their exact sum (u = 2^-53, and
// m times the least subnormal where they underflow), so where qa and qb lie further
// apart than four times that, the sums in input order are ordered as they are. Else
// 0 or 1 from the sums in input order, and -1 when undecided here.
inline int QuickCostBelow(double qa, double qb, size_t n) {
  if (!std::isfinite(qa) || !std::isfinite(qb)) return -1;
  const double m = static_cast<double>(n) + 2;
  const double margin = 4 * m * (DBL_EPSILON / 2) * (qa + qb) +
                        4 * m * std::numeric_limits<double>::denorm_min();
  if (qb - qa > margin) return 1;
  if (qa - qb > margin) return 0;
  return -1;
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
  SFitScratch& scratch = FitScratch();
  Model robust;
  double robustCut = 0, plainCut = 0;
  // The robust start's distances stay in `first` for its first step.
  bool fromRobust = robust.RobustStart(points, n, scratch);
  if (fromRobust) {
    const double qr =
        QuickTrimmedCost(points, n, k, robust, true, scratch.first, scratch.work, &robustCut);
    const double qp =
        QuickTrimmedCost(points, n, k, model, false, scratch.dist, scratch.work, &plainCut);
    const int below = QuickCostBelow(qr, qp, n);
    fromRobust = below >= 0 ? below == 1
                            : TrimmedCostInOrder(scratch.first.data(), n, k, robustCut) <
                                  TrimmedCostInOrder(scratch.dist.data(), n, k, plainCut);
  }
  if (fromRobust) {
    TTrimmer<Model> trimmer(points, n, k, scratch);
    trimmer.KnownDistances(scratch.first, robustCut);
    model = robust;
    return trimmer.Run(model, false, kept);
  }
  TTrimmer<Model> trimmer(points, n, k, scratch);
  return trimmer.Run(model, true, kept);
}

}  // namespace zet::geometry
