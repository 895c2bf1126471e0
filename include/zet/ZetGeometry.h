// ZetGeometry: the platform's plane-geometry routines and its constants.
//
// Conventions shared by every routine below
// -----------------------------------------
//
// Image coordinates: x grows to the right, y grows DOWN. An angle is measured from the
// +x axis toward +y, so a positive angle turns CLOCKWISE as seen on the screen.
//
//        O ──────────────────────────────────────► x    a > 0 turns from +x toward +y:
//        │╲                              ·               clockwise on the screen
//        │ ╲ n = (-sin a, cos a)      ·
//        │  ╲ (its length is d)    ·     u = (cos a, sin a), the line's direction;
//        │   ╲                  ·        here a ≈ -30° (going right and up)
//        │    ╲              ·
//        │     ╲          ·
//        │      ╲      ·      the line (a, d): every p with
//        │       ╲  ·            -sin(a) * p.x + cos(a) * p.y = d
//        │        ●
//        │     ·     n is u turned a quarter turn clockwise, d the signed
//        ▼ y ·       distance of the line from O along n
//
// Lines. A CZetLine holds (a, d) as drawn: `a` the angle of the line's direction in
// radians, `d` the signed distance of the line from the origin along the normal
// n = (-sin a, cos a). (a, d) and (a + π, -d) are the same line. The canonical form
// (NormalizeLine, and every line a routine constructs) has a in (-π/2, π/2], so the
// direction points to the right (x increasing), or straight down for a vertical line
// (a = π/2); no negative zeros. For a = 0 the line is y = d; for a = π/2 it is x = -d.
//
// Signed point-to-line distance: n·p - d. It is positive on the side n points to:
// below a canonical non-vertical line, left of a canonical vertical one (the right-hand
// side of the direction, as seen on the screen).
//
// Angles of directions: Points2Angle(p1, p2) is the angle of p1→p2 in (-π, π] (0 for
// coincident points); Point2PointDistPitch gives the same angle. RotatePointClockwise
// with a positive angle turns clockwise on the screen, so it adds its angle to every
// direction. Undirected angles (of lines) are brought into (-π/2, π/2] by
// NormalizeAngleMinusPiBy2ToPiBy2.
//
// Constructions: LineBisect gives the bisector of the acute angle between its lines
// (for lines at a right angle, the one turned clockwise from the first by π/4; for
// parallel lines the line midway between them). CircleLineIntersection orders its two
// points along the canonical direction of the line (the left one first; the upper one
// for a vertical line). Line2LineDist is signed along the canonical direction of the
// third line: positive when its crossing with the second line lies further along that
// direction than its crossing with the first.
//
// Fits. "percent" outliers are discarded as a count, k = floor(n * percent / 100):
// the points farthest from the current fit, in steps (half of k, three quarters, seven
// eighths, all), refitting after each, then refitting on the n - k points nearest the
// latest fit until that set no longer changes (at most four more times). Ties of
// distance keep the earlier point. So that gross outliers cannot decide the trimming
// by dragging the first fit, a robust start (medians of exact fits through two points,
// or three for a circle, spread over the set) competes with the plain first fit: when
// the n - k points nearest to it lie closer to it than those nearest the plain fit lie
// to that, trimming starts from it instead and keeps the nearest n - k at once. The
// kept ("used") and the discarded ("outliers") points are given in input order. Lines
// are fitted by total least squares (orthogonal distances); circles by geometric least
// squares (an algebraic Hyper fit as the start, then Levenberg-Marquardt on the
// orthogonal distances). Points2BestLineMaxOutliers reports the smallest (most
// negative) and the largest signed distance of the kept points, with the sign
// convention above: min on the side opposite the normal (above a non-vertical line),
// max on the normal's side (below it).
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

  // Status of the fits: 0 is success.
  static constexpr unsigned kFitOk = 0;
  static constexpr unsigned kFitBadPercent = 1;    // percent outliers above 100
  static constexpr unsigned kFitTooFewPoints = 2;  // fewer kept points than the model needs
  static constexpr unsigned kFitNonFinite = 3;     // a NaN or infinite coordinate or result
  static constexpr unsigned kFitDegenerate = 4;    // all points equal; collinear for a circle

  // Euclidean distance, without overflow or underflow in the squares.
  static double Point2PointDist(const CZetPoint& p1, const CZetPoint& p2);

  // The spacing key of every point of a sequence, as the outlier removal and the
  // best-fit preprocessing cluster them: key[0] is the distance from point 0 to point
  // 1, key[n - 1] the distance from point n - 2 to n - 1, and an inner point's key is
  // the larger of the distances to its two sequence neighbours (the distance to the
  // previous point when they are equal or either is NaN). A single point gets 0.
  static void NeighbourSpacing(const CZetPoint* points, size_t n, double* keys);

  // ---- angles, points, lines (Lines.cpp) ----

  // The angle of the direction p1→p2 in (-π, π]; 0 when the points coincide.
  static double Points2Angle(const CZetPoint& p1, const CZetPoint& p2);
  // Not a line but a pair: a = Points2Angle(p1, p2), d = the distance p1 to p2.
  static void Point2PointDistPitch(const CZetPoint& p1, const CZetPoint& p2, CZetLine* out);
  // The canonical line through both points; coincident points give the horizontal
  // line through them.
  static void PointPointToLine(const CZetPoint& p1, const CZetPoint& p2, CZetLine* out);
  static void MiddlePoint(const CZetPoint& p1, const CZetPoint& p2, CZetPoint* out);
  static void NormalizeLine(CZetLine* line);
  // Into (-π/2, π/2] by whole multiples of π (exactly: the remainder is exact).
  static void NormalizeAngleMinusPiBy2ToPiBy2(double* angle);
  static void RotatePointClockwise(double angle, const CZetPoint& center, CZetPoint* point);
  // The canonical line through (x, y), perpendicular / parallel to a line of angle a.
  static void LinePerpendicular(double a, double x, double y, double* outA, double* outD);
  static void LinePerpendicular(double a, const CZetPoint& p, CZetLine* out);
  static void LineParallel(double a, const CZetPoint& p, CZetLine* out);
  // False, and `out` untouched, for lines within 1e-12 rad of parallel (identical
  // lines included) or with a non-finite crossing.
  static bool LineIntersection(const CZetLine& l1, const CZetLine& l2, CZetPoint* out);
  // The bisector through p2 of the angle p1-p2-p3 (the one not above π). False, and
  // `out` untouched, when p1 or p3 coincides with p2 or a coordinate is not finite.
  static bool AngleBisect(const CZetPoint& p1, const CZetPoint& p2, const CZetPoint& p3,
                          CZetLine* out);
  static void LineBisect(const CZetLine& l1, const CZetLine& l2, CZetLine* out);
  // False, and `out` untouched, when l3 does not cross l1 or l2.
  static bool Line2LineDist(const CZetLine& l1, const CZetLine& l2, const CZetLine& l3,
                            double* out);
  // 0, 1 (a tangent, or a zero radius on the line) or 2 points; a negative or NaN
  // radius meets nothing. Points past the count are left untouched.
  static void CircleLineIntersection(const CZetPoint& center, double radius, const CZetLine& l,
                                     CZetPoint out[2], int* count);
  // The inscribed circle. Collinear points give diameter 0 at the weighted centre and
  // return false; coincident or non-finite points return false and write nothing.
  static bool CircleInTriangle(const CZetPoint& p1, const CZetPoint& p2, const CZetPoint& p3,
                               double* diameter, CZetPoint* center);
  // Signed distances (see above) of count points into out[0 .. count - 1].
  static void PointArray2LineDist(const CZetPoint* points, size_t count, const CZetLine& line,
                                  double* out);

  // ---- fits (LineFit.cpp, CircleFit.cpp, RakeFit.cpp) ----
  //
  // On a non-zero status the counts are 0, the point vectors empty, and every other
  // output is left as the caller had it. The vectors may be null.

  static unsigned Points2BestLine(const CZetPoint* points, size_t count, unsigned percent,
                                  unsigned* included, CZetLine* out, CZetPointVector* outliers,
                                  CZetPointVector* used);
  static unsigned Points2BestLineMaxOutliers(const CZetPoint* points, size_t count,
                                             unsigned percent, unsigned* included,
                                             double* minDist, double* maxDist,
                                             CZetPoint* minPoint, CZetPoint* maxPoint,
                                             CZetLine* out, CZetPointVector* outliers);
  // Writes the diameter, the kept count, the mean orthogonal distance of the kept
  // points from the circle, and the centre.
  static unsigned Points2BestCircle(const CZetPoint* points, size_t count, unsigned percent,
                                    double* diameter, unsigned* included, double* avgError,
                                    CZetPoint* center, CZetPointVector* outliers,
                                    CZetPointVector* used);
  // The line of a rake's points (ordered along the rake), after keeping the longest
  // chain of points whose steps agree with the rake's pitch (within linearTol; 0 turns
  // the test off) and direction (within angularTol radians; 0 turns it off). The
  // outliers are every input point not used. Design in RakeFit.cpp.
  static unsigned RakePoints2BestLine(const CZetPoint* points, size_t count, unsigned percent,
                                      double linearTol, double angularTol, unsigned* included,
                                      CZetLine* out, CZetPointVector* outliers,
                                      CZetPointVector* used);
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
