// ZetGeometry: the platform's plane-geometry routines and its constants.
#pragma once

#include <cstddef>
#include <vector>

#include "zet/ZetExport.h"
#include "zet/ZetObject.h"

class ZET_PLATFORM_API CZetGeometry {
 public:
  static constexpr double Pi = 3.14159265358979323846;
  static constexpr double PiDiv2 = 1.57079632679489661923;
  static constexpr double PiDiv4 = 0.78539816339744830962;

  // Euclidean distance, without overflow or underflow in the squares.
  static double Point2PointDist(const CZetPoint& p1, const CZetPoint& p2);

  // The spacing key of every point of a sequence, as the outlier removal and the
  // best-fit preprocessing cluster them: key[0] is the distance from point 0 to point
  // 1, key[n - 1] the distance from point n - 2 to n - 1, and an inner point's key is
  // the larger of the distances to its two sequence neighbours (the distance to the
  // previous point when they are equal or either is NaN). A single point gets 0.
  static void NeighbourSpacing(const CZetPoint* points, size_t n, double* keys);
};

// One-dimensional clustering of values in index order.
//
// Each value joins the existing cluster whose centre c is nearest to it, provided
// |c - value| < tolerance (strictly); on equal distances the earlier cluster wins.
// Otherwise the value opens a new cluster at the end of the list. A cluster's centre
// is the mean of its members' values, updated as each member joins. So a tolerance of
// 0 (or below, or NaN) gives every value its own cluster, and a NaN or infinite value
// never joins nor is joined.
//
// Runs in O(n log k) for k clusters: a linear scan while there are few clusters, an
// ordered index of the centres beyond that, with the same result either way.
class ZET_PLATFORM_API CZetCluster1D {
 public:
  struct SCluster {
    double centre = 0.0;
    double sum = 0.0;
    std::vector<size_t> members;  // value indexes, ascending
  };

  CZetCluster1D();
  ~CZetCluster1D();
  CZetCluster1D(const CZetCluster1D&) = delete;
  CZetCluster1D& operator=(const CZetCluster1D&) = delete;

  // Clusters values[0 .. n - 1]; earlier results are dropped.
  void Run(const double* values, size_t n, double tolerance);
  const std::vector<SCluster>& Clusters() const { return m_clusters; }
  // The cluster with the most members, the earliest created on a tie; null when
  // there were no values.
  const SCluster* Largest() const;

 private:
  struct SIndex;
  std::vector<SCluster> m_clusters;
  SIndex* m_index;
};
