// Angles, points and lines in the conventions of ZetGeometry.h: normalisation, the
// line through two points, perpendiculars and parallels, intersections, bisectors,
// circle-line crossings, the inscribed circle and point-to-line distances.
#include <cmath>

#include "zet/ZetGeometry.h"

namespace {

constexpr double kPi = CZetGeometry::Pi;
// Lines closer to parallel than this (the sine of their angle) do not cross.
constexpr double kParallelSine = 1e-12;

// a reduced into (-π/2, π/2]; `flipped` tells whether an odd number of half turns was
// taken off (the line's d then changes sign).
double HalfTurnRemainder(double a, bool* flipped) {
  int quo = 0;
  double r = std::remquo(a, kPi, &quo);  // exact, in [-π/2, π/2]
  bool odd = (quo & 1) != 0;
  if (r <= -CZetGeometry::PiDiv2) {
    r += kPi;  // exact: -π/2 + π is π/2
    odd = !odd;
  }
  if (flipped) *flipped = odd;
  return r + 0.0;  // no negative zero
}

// The canonical line through p with the direction (ux, uy) (not necessarily unit).
void LineThrough(double ux, double uy, const CZetPoint& p, CZetLine* out) {
  if (ux < 0 || (ux == 0 && uy < 0)) {
    ux = -ux;
    uy = -uy;
  }
  const double len = std::hypot(ux, uy);
  if (len == 0) {
    ux = 1;
    uy = 0;
  } else {
    ux /= len;
    uy /= len;
  }
  // ux >= 0, so atan2 stays within [-π/2, π/2]; -π/2 itself would need ux = 0, uy < 0.
  out->a = std::atan2(uy, ux) + 0.0;
  out->d = -uy * p.x + ux * p.y + 0.0;
}

// The canonical line of angle a through p (a reduced exactly, so that a whole number
// of half turns gives the same line bit for bit).
void LineAt(double a, const CZetPoint& p, CZetLine* out) {
  const double r = HalfTurnRemainder(a, nullptr);
  out->a = r;
  out->d = -std::sin(r) * p.x + std::cos(r) * p.y + 0.0;
}

// The unit normal and offset of a line in any (a, d) form.
struct SNormal {
  double nx, ny, d;
  explicit SNormal(const CZetLine& l) : nx(-std::sin(l.a)), ny(std::cos(l.a)), d(l.d) {}
  double Signed(const CZetPoint& p) const { return nx * p.x + ny * p.y - d; }
};

}  // namespace

double CZetGeometry::Points2Angle(const CZetPoint& p1, const CZetPoint& p2) {
  const double dx = p2.x - p1.x, dy = p2.y - p1.y;
  if (dx == 0 && dy == 0) return 0.0;
  const double a = std::atan2(dy, dx);
  return a == -kPi ? kPi : a + 0.0;
}

void CZetGeometry::Point2PointDistPitch(const CZetPoint& p1, const CZetPoint& p2, CZetLine* out) {
  out->a = Points2Angle(p1, p2);
  out->d = Point2PointDist(p1, p2);
}

void CZetGeometry::PointPointToLine(const CZetPoint& p1, const CZetPoint& p2, CZetLine* out) {
  CZetPoint mid;
  MiddlePoint(p1, p2, &mid);
  LineThrough(p2.x - p1.x, p2.y - p1.y, mid, out);
}

void CZetGeometry::MiddlePoint(const CZetPoint& p1, const CZetPoint& p2, CZetPoint* out) {
  // Halves first: no overflow near the largest doubles.
  out->x = p1.x * 0.5 + p2.x * 0.5;
  out->y = p1.y * 0.5 + p2.y * 0.5;
}

void CZetGeometry::NormalizeLine(CZetLine* line) {
  bool flipped = false;
  line->a = HalfTurnRemainder(line->a, &flipped);
  line->d = (flipped ? -line->d : line->d) + 0.0;
}

void CZetGeometry::NormalizeAngleMinusPiBy2ToPiBy2(double* angle) {
  *angle = HalfTurnRemainder(*angle, nullptr);
}

void CZetGeometry::RotatePointClockwise(double angle, const CZetPoint& center, CZetPoint* point) {
  // Whole quarter turns are exact (sin and cos of π/2 in doubles are not).
  const double r = std::remainder(angle, 2 * kPi);
  double c, s;
  if (r == 0) {
    return;  // not even the rounding of center + (point - center)
  } else if (r == PiDiv2) {
    c = 0, s = 1;
  } else if (r == -PiDiv2) {
    c = 0, s = -1;
  } else if (r == kPi || r == -kPi) {
    c = -1, s = 0;
  } else {
    c = std::cos(r), s = std::sin(r);
  }
  const double dx = point->x - center.x, dy = point->y - center.y;
  point->x = center.x + (c * dx - s * dy);
  point->y = center.y + (s * dx + c * dy);
}

void CZetGeometry::LinePerpendicular(double a, double x, double y, double* outA, double* outD) {
  CZetLine l;
  LinePerpendicular(a, CZetPoint(x, y), &l);
  *outA = l.a;
  *outD = l.d;
}

void CZetGeometry::LinePerpendicular(double a, const CZetPoint& p, CZetLine* out) {
  LineAt(a + PiDiv2, p, out);
}

void CZetGeometry::LineParallel(double a, const CZetPoint& p, CZetLine* out) {
  LineAt(a, p, out);
}

bool CZetGeometry::LineIntersection(const CZetLine& l1, const CZetLine& l2, CZetPoint* out) {
  const SNormal n1(l1), n2(l2);
  const double det = n1.nx * n2.ny - n1.ny * n2.nx;  // sin(a2 - a1)
  if (!(std::fabs(det) > kParallelSine)) return false;
  const double x = (n1.d * n2.ny - n2.d * n1.ny) / det;
  const double y = (n2.d * n1.nx - n1.d * n2.nx) / det;
  if (!std::isfinite(x) || !std::isfinite(y)) return false;
  out->x = x;
  out->y = y;
  return true;
}

bool CZetGeometry::AngleBisect(const CZetPoint& p1, const CZetPoint& p2, const CZetPoint& p3,
                               CZetLine* out) {
  const double l1 = Point2PointDist(p2, p1), l3 = Point2PointDist(p2, p3);
  if (!(l1 > 0) || !(l3 > 0) || !std::isfinite(l1) || !std::isfinite(l3) ||
      !std::isfinite(p2.x) || !std::isfinite(p2.y))
    return false;
  const double ax = (p1.x - p2.x) / l1, ay = (p1.y - p2.y) / l1;
  const double bx = (p3.x - p2.x) / l3, by = (p3.y - p2.y) / l3;
  // The sum of the unit rays is the bisector; near a straight angle it cancels, and
  // the difference turned a quarter turn (the same direction) is the accurate one.
  if (ax * bx + ay * by >= 0)
    LineThrough(ax + bx, ay + by, p2, out);
  else
    LineThrough(-(by - ay), bx - ax, p2, out);
  return true;
}

void CZetGeometry::LineBisect(const CZetLine& l1, const CZetLine& l2, CZetLine* out) {
  // Turn l2's direction to within a quarter turn of l1's: the bisector's direction is
  // halfway, and its points are equally far from both lines on opposite sides, so its
  // offset is (d1 + d2') / (2 cos(diff / 2)), where cos(diff / 2) >= cos(π/4).
  bool flipped = false;
  const double diff = HalfTurnRemainder(l2.a - l1.a, &flipped);
  const double d2 = flipped ? -l2.d : l2.d;
  CZetLine b(l1.a + diff / 2, (l1.d + d2) / (2 * std::cos(diff / 2)));
  NormalizeLine(&b);
  *out = b;
}

bool CZetGeometry::Line2LineDist(const CZetLine& l1, const CZetLine& l2, const CZetLine& l3,
                                 double* out) {
  CZetPoint p1, p2;
  if (!LineIntersection(l1, l3, &p1) || !LineIntersection(l2, l3, &p2)) return false;
  CZetLine l = l3;
  NormalizeLine(&l);
  *out = (p2.x - p1.x) * std::cos(l.a) + (p2.y - p1.y) * std::sin(l.a);
  return true;
}

void CZetGeometry::CircleLineIntersection(const CZetPoint& center, double radius,
                                          const CZetLine& l, CZetPoint out[2], int* count) {
  *count = 0;
  CZetLine line = l;
  NormalizeLine(&line);
  const SNormal n(line);
  const double dist = std::fabs(n.Signed(center));
  if (!(radius >= 0) || !(dist <= radius)) return;  // NaN anywhere meets nothing
  const CZetPoint foot(center.x - n.nx * n.Signed(center), center.y - n.ny * n.Signed(center));
  const double half = std::sqrt((radius - dist) * (radius + dist));
  if (half == 0) {
    out[0] = foot;
    *count = 1;
    return;
  }
  const double ux = n.ny, uy = -n.nx;  // the canonical direction
  out[0] = CZetPoint(foot.x - half * ux, foot.y - half * uy);
  out[1] = CZetPoint(foot.x + half * ux, foot.y + half * uy);
  *count = 2;
}

bool CZetGeometry::CircleInTriangle(const CZetPoint& p1, const CZetPoint& p2,
                                    const CZetPoint& p3, double* diameter, CZetPoint* center) {
  // Each vertex weighs by the length of the side opposite it.
  const double a = Point2PointDist(p2, p3), b = Point2PointDist(p3, p1),
               c = Point2PointDist(p1, p2);
  const double perimeter = a + b + c;
  if (!(perimeter > 0) || !std::isfinite(perimeter)) return false;
  const CZetPoint in((a * p1.x + b * p2.x + c * p3.x) / perimeter,
                     (a * p1.y + b * p2.y + c * p3.y) / perimeter);
  if (!std::isfinite(in.x) || !std::isfinite(in.y)) return false;
  const double cross = (p2.x - p1.x) * (p3.y - p1.y) - (p2.y - p1.y) * (p3.x - p1.x);
  *center = in;
  *diameter = 2 * std::fabs(cross) / perimeter;  // 4 * area / perimeter
  return cross != 0;
}

void CZetGeometry::PointArray2LineDist(const CZetPoint* points, size_t count,
                                       const CZetLine& line, double* out) {
  const SNormal n(line);
  for (size_t i = 0; i < count; ++i) out[i] = n.Signed(points[i]);
}
