// The rake fit: a line through the edge points that the teeth of a rake found.
//
// Design. A rake is a row of parallel search lines ("teeth") at a fixed pitch across
// an edge; each tooth yields at most one point, in tooth order. On a good edge the
// points are evenly spaced along a line. Two things go wrong: a tooth finds nothing (a
// missing tooth: the gap to the next point is a whole multiple of the pitch), and a
// tooth finds the wrong thing (a stray point, off the line, which breaks the spacing
// and the direction of the steps to and from it). So:
//
//  1. Pitch (linear tolerance, off when not above 0): the lengths of the steps between
//     consecutive points (steps of length 0, repeated points, left out) are clustered
//     one-dimensionally with the tolerance (CZetCluster1D); the pitch P is the centre of
//     the largest cluster: the most common spacing.
//  2. Direction (angular tolerance in radians, off when not above 0): the directions of
//     the same steps, taken relative to the mean of their unit vectors (so the cluster
//     of a rake's direction never straddles ±π), are clustered with the tolerance; the
//     rake's direction is that of the largest cluster.
//  3. A step from point i to a later point j is consistent when its length L is a whole
//     multiple k of the pitch (k = L / P rounded, 1 <= k <= kMaxStride, |L - kP| below
//     the linear tolerance: up to kMaxStride - 1 missing teeth in a row are allowed, and
//     a far stray point cannot pass for a long stride), and its direction lies within
//     the angular tolerance of the rake's direction. Each point links to the first of the
//     next kLookAhead points with a consistent step from it, so a chain steps over
//     stray points. The longest chain (the earliest on a tie) is the rake's edge.
//  4. The chain's points are fitted as Points2BestLine does, with the percentage of
//     outliers; the outliers reported are every input point the fit did not use.
//
// With both tolerances off the chain is every point, and the fit is Points2BestLine's.
// Cost: O(n) for the steps, O(n log k) for the clustering, O(n · kLookAhead) for the
// chains, then the line fit.
#include <cmath>

#include "FitCommon.h"

namespace {

constexpr size_t kLookAhead = 8;  // stray points in a row that a chain steps over
constexpr double kMaxStride = 8;  // pitches in one step: seven missing teeth in a row

struct SRake {
  bool usePitch, useDirection;
  double pitch = 0, linearTol, direction = 0, angularTol;

  bool Consistent(const CZetPoint& a, const CZetPoint& b) const {
    if (usePitch) {
      const double len = CZetGeometry::Point2PointDist(a, b);
      const double k = std::floor(len / pitch + 0.5);
      if (!(k >= 1 && k <= kMaxStride) || !(std::fabs(len - k * pitch) < linearTol)) return false;
    } else if (a.x == b.x && a.y == b.y) {
      return false;  // a repeated point is never a step along the rake
    }
    if (useDirection) {
      const double off =
          std::remainder(CZetGeometry::Points2Angle(a, b) - direction, 2 * CZetGeometry::Pi);
      if (!(std::fabs(off) < angularTol)) return false;
    }
    return true;
  }
};

// The centre of the largest cluster of values[0 .. n - 1].
double Mode(const std::vector<double>& values, double tolerance) {
  CZetCluster1D clusters;
  clusters.Run(values.data(), values.size(), tolerance);
  const CZetCluster1D::SCluster* best = clusters.Largest();
  return best ? best->centre : 0.0;
}

}  // namespace

unsigned CZetGeometry::RakePoints2BestLine(const CZetPoint* points, size_t count,
                                           unsigned percent, double linearTol,
                                           double angularTol, unsigned* included, CZetLine* out,
                                           CZetPointVector* outliers, CZetPointVector* used) {
  using zet::geometry::SKept;
  const auto fail = [&](unsigned status) {
    *included = 0;
    zet::geometry::SplitPoints(points, count, nullptr, used, outliers);
    return status;
  };
  if (percent > 100) return fail(kFitBadPercent);
  if (count < 2 || count > UINT32_MAX) return fail(kFitTooFewPoints);
  if (zet::geometry::AnyNonFinite(points, count)) return fail(kFitNonFinite);

  SRake rake{linearTol > 0, angularTol > 0, 0.0, linearTol, 0.0, angularTol};
  std::vector<size_t> chain;
  if (rake.usePitch || rake.useDirection) {
    std::vector<double> lengths, angles;
    double ux = 0, uy = 0;
    for (size_t i = 0; i + 1 < count; ++i) {
      const double len = Point2PointDist(points[i], points[i + 1]);
      if (!(len > 0)) continue;
      lengths.push_back(len);
      ux += (points[i + 1].x - points[i].x) / len;
      uy += (points[i + 1].y - points[i].y) / len;
    }
    if (lengths.empty()) return fail(kFitDegenerate);  // every point the same
    if (rake.usePitch) rake.pitch = Mode(lengths, linearTol);
    if (rake.useDirection) {
      const double reference = std::atan2(uy, ux);
      for (size_t i = 0; i + 1 < count; ++i)
        if (points[i].x != points[i + 1].x || points[i].y != points[i + 1].y)
          angles.push_back(
              std::remainder(Points2Angle(points[i], points[i + 1]) - reference, 2 * Pi));
      rake.direction = reference + Mode(angles, angularTol);
    }

    // next[i]: the point a chain goes to from i (count: none); len[i]: the chain's
    // length from i on.
    std::vector<size_t> next(count, count), len(count, 1);
    for (size_t i = count; i-- > 0;) {
      for (size_t j = i + 1; j < count && j <= i + kLookAhead; ++j) {
        if (rake.Consistent(points[i], points[j])) {
          next[i] = j;
          len[i] = 1 + len[j];
          break;
        }
      }
    }
    size_t start = 0;
    for (size_t i = 1; i < count; ++i)
      if (len[i] > len[start]) start = i;
    for (size_t i = start; i < count; i = next[i]) chain.push_back(i);
  } else {
    chain.resize(count);
    for (size_t i = 0; i < count; ++i) chain[i] = i;
  }

  std::vector<CZetPoint> chainPoints(chain.size());
  for (size_t j = 0; j < chain.size(); ++j) chainPoints[j] = points[chain[j]];
  SKept fitted;
  CZetLine line;
  const unsigned status =
      zet::geometry::FitLine(chainPoints.data(), chainPoints.size(), percent, &line, &fitted);
  if (status != kFitOk) return fail(status);
  // Back to input indexes, still ascending.
  SKept kept;
  const size_t m = fitted.Count(chain.size());
  kept.idx.resize(m);
  for (size_t j = 0; j < m; ++j)
    kept.idx[j] = static_cast<uint32_t>(chain[fitted.all ? j : fitted.idx[j]]);
  *included = static_cast<unsigned>(m);
  *out = line;
  zet::geometry::SplitPoints(points, count, &kept, used, outliers);
  zet::geometry::FinishFit(&fitted);
  return kFitOk;
}
