// Point distance, the neighbour spacing of a point sequence and the one-dimensional
// clusterer (see ZetGeometry.h).
#include <cmath>
#include <map>

#include "zet/ZetGeometry.h"

double CZetGeometry::Point2PointDist(const CZetPoint& p1, const CZetPoint& p2) {
  return std::hypot(p2.x - p1.x, p2.y - p1.y);
}

void CZetGeometry::NeighbourSpacing(const CZetPoint* points, size_t n, double* keys) {
  if (n == 0) return;
  if (n == 1) {
    keys[0] = 0.0;
    return;
  }
  double prev = Point2PointDist(points[0], points[1]);
  keys[0] = prev;
  for (size_t i = 1; i + 1 < n; ++i) {
    const double next = Point2PointDist(points[i], points[i + 1]);
    keys[i] = next > prev ? next : prev;  // NaN or a tie: the previous distance
    prev = next;
  }
  keys[n - 1] = prev;
}

namespace {

// Below this many clusters a linear scan is faster than keeping the index.
constexpr size_t kIndexFrom = 24;

}  // namespace

// The centres of the clusters that can still take members (finite centres), in
// ascending order, each with its cluster's position in the list.
struct CZetCluster1D::SIndex {
  std::multimap<double, size_t> byCentre;
  std::vector<std::multimap<double, size_t>::iterator> where;  // per cluster
  std::vector<bool> indexed;
};

CZetCluster1D::CZetCluster1D() : m_index(new SIndex) {}
CZetCluster1D::~CZetCluster1D() { delete m_index; }

void CZetCluster1D::Run(const double* values, size_t n, double tolerance) {
  m_clusters.clear();
  SIndex& ix = *m_index;
  ix.byCentre.clear();
  ix.where.clear();
  ix.indexed.clear();
  bool useIndex = false;

  const auto addToIndex = [&](size_t c) {
    if (std::isfinite(m_clusters[c].centre)) {
      ix.where[c] = ix.byCentre.emplace(m_clusters[c].centre, c);
      ix.indexed[c] = true;
    } else {
      ix.indexed[c] = false;  // an infinite or NaN centre is never within the tolerance
    }
  };

  for (size_t i = 0; i < n; ++i) {
    const double v = values[i];
    size_t best = m_clusters.size();
    double bestDist = 0.0;
    // A candidate c wins over the current best when strictly nearer, or equally near
    // and created earlier (the scan order of the definition).
    const auto consider = [&](size_t c) {
      const double dist = std::fabs(m_clusters[c].centre - v);
      if (!(dist < tolerance)) return false;
      if (best == m_clusters.size() || dist < bestDist || (dist == bestDist && c < best)) {
        best = c;
        bestDist = dist;
      }
      return true;
    };
    if (!useIndex) {
      for (size_t c = 0; c < m_clusters.size(); ++c) consider(c);
    } else if (std::isfinite(v)) {
      // |c - v| grows monotonically away from v on either side, so the centres within
      // the tolerance are one run of the ordered index around v.
      const auto mid = ix.byCentre.lower_bound(v);
      for (auto it = mid; it != ix.byCentre.end() && consider(it->second); ++it) {
      }
      for (auto it = mid; it != ix.byCentre.begin();) {
        --it;
        if (!consider(it->second)) break;
      }
    }

    if (best == m_clusters.size()) {
      SCluster& c = m_clusters.emplace_back();
      c.centre = v;
      c.sum = v;
      c.members.push_back(i);
      if (useIndex) {
        ix.where.emplace_back();
        ix.indexed.push_back(false);
        addToIndex(best);
      } else if (m_clusters.size() >= kIndexFrom) {
        useIndex = true;
        ix.where.resize(m_clusters.size());
        ix.indexed.assign(m_clusters.size(), false);
        for (size_t k = 0; k < m_clusters.size(); ++k) addToIndex(k);
      }
      continue;
    }
    SCluster& c = m_clusters[best];
    c.members.push_back(i);
    c.sum += v;
    c.centre = c.sum / static_cast<double>(c.members.size());
    if (useIndex) {
      if (ix.indexed[best]) ix.byCentre.erase(ix.where[best]);
      addToIndex(best);
    }
  }
}

const CZetCluster1D::SCluster* CZetCluster1D::Largest() const {
  const SCluster* best = nullptr;
  for (const SCluster& c : m_clusters)
    if (!best || c.members.size() > best->members.size()) best = &c;
  return best;
}
