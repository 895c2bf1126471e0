// What the geometric families share: the descriptor header of the category, the
// host's annotation service, and the inputs of the fits (the outlier percentage, the
// optional preprocessing of the points, the points of variadic inputs).
#pragma once

#include <algorithm>
#include <vector>

#include "frame/Instr.h"
#include "zet/ZetGeometry.h"

namespace zet::geometry {

// The overlay service (4100); null when the host has none.
inline IXInstrAnnotations* Annotations(const CArgs& a) {
  return static_cast<IXInstrAnnotations*>(a.Context()->GetService(kServiceAnnotations));
}

// "percent outliers" as the fits take it: truncated toward zero to an unsigned integer
// the way the processor converts (a negative number wraps to a huge value; NaN and
// numbers beyond the int range give 2^31), so that the platform refuses everything
// that is not a percentage.
inline unsigned PercentArg(double v) { return static_cast<unsigned>(ZetTruncInt32(v)); }

inline constexpr const char* kNegativeTolerance = "Negative tolerance is not a valid input.";
inline constexpr const char* kPreprocessDescription =
    "Use clustering for input points preprocessing";
inline constexpr const char* kToleranceDescription =
    "Clustering tolerance; used only if preprocessing is enabled";

// The points a fit works on. With preprocessing, every point gets the spacing key of
// CZetGeometry::NeighbourSpacing, the keys are clustered (CZetCluster1D, the same
// clusterer as "Remove Isolated Outliers") with the tolerance, and the points of the
// largest cluster are kept in index order; otherwise all points, not copied.
class CFitPoints {
 public:
  CFitPoints(const CZetPoint* points, size_t n, bool preprocess, double tolerance)
      : m_data(points), m_size(n) {
    if (!preprocess || n == 0) return;
    std::vector<double> keys(n);
    CZetGeometry::NeighbourSpacing(points, n, keys.data());
    CZetCluster1D clusters;
    clusters.Run(keys.data(), n, tolerance);
    for (size_t i : clusters.Largest()->members) m_kept.push_back(points[i]);
    m_data = m_kept.data();
    m_size = m_kept.size();
  }
  const CZetPoint* Data() const { return m_data; }
  size_t Size() const { return m_size; }

 private:
  std::vector<CZetPoint> m_kept;
  const CZetPoint* m_data;
  size_t m_size;
};

// The variadic point inputs from `first` on, in input order.
inline std::vector<CZetPoint> VariadicPoints(const CArgs& a, int first) {
  std::vector<CZetPoint> points;
  for (int i = first; i < a.Count(); ++i) points.push_back(a.Point(i));
  return points;
}

}  // namespace zet::geometry
