// The vector passes of the fits (FitBracket.cpp): the selection's bracket, the
// models' distances of every point, the trimmed cost's sum of squares, and the sums
// of the circle's Levenberg-Marquardt steps.
#pragma once

#include <cmath>
#include <cstddef>
#include <cstdint>

namespace zet::geometry {

// Counts the values[0 .. n - 1] below lo into *below and packs those in [lo, hi]
// into inside[0 .. returned count - 1], in input order. `inside` has room for n
// values and does not overlap `values`; no value is NaN.
size_t Bracket(const double* values, size_t n, double lo, double hi, double* inside,
               size_t* below);

// Bracket's count, with the indexes of the values in [lo, hi] (for brackets that
// hold few) packed into inside[0 .. returned count - 1]; `inside` has room for n.
size_t BracketIndexes(const double* values, size_t n, double lo, double hi, uint32_t* inside,
                      size_t* below);

// The point layout the distance passes read: each point three doubles apart, its x one
// double and its y two doubles from its start (the first is the object's own header,
// loaded with the coordinates but never used). PointsAsDoubles checks it.
inline constexpr size_t kPointStride = 3;

// The distance of a point from a line with unit normal (nx, ny) and offset d, and from
// a circle; NaN taken as infinite, so that the distances have an order. The passes
// below give exactly these values.
inline double LineDistance(double x, double y, double nx, double ny, double d) {
  const double e = std::fabs(nx * x + ny * y - d);
  return e >= 0 ? e : INFINITY;
}
// sqrt(dx² + dy²), or where the squares overflow (lengths beyond 1e154) the same
// length without them.
inline double Length(double dx, double dy) {
  const double s = dx * dx + dy * dy;
  return std::isfinite(s) ? std::sqrt(s) : std::hypot(dx, dy);
}
inline double CircleDistance(double x, double y, double cx, double cy, double r) {
  const double e = std::fabs(Length(x - cx, y - cy) - r);
  return e >= 0 ? e : INFINITY;
}

// out[i] = LineDistance / CircleDistance of point i, whose x is base[i * kPointStride
// + 1] and y base[i * kPointStride + 2].
void LineDistances(const double* base, size_t n, double nx, double ny, double d, double* out);
void CircleDistances(const double* base, size_t n, double cx, double cy, double r,
                     double* out);
// The same with Bracket's pass over out in the same pass over the points, and the sum
// of the squares of the values below lo in *squares (in lanes); returns the bracket's
// count.
size_t LineDistancesBracket(const double* base, size_t n, double nx, double ny, double d,
                            double* out, double lo, double hi, double* inside, size_t* below,
                            double* squares);
size_t CircleDistancesBracket(const double* base, size_t n, double cx, double cy, double r,
                              double* out, double lo, double hi, double* inside,
                              size_t* below, double* squares);

// |value - shift|, NaN taken as infinite; and its pass over values[0 .. n - 1] into
// out (which may be values), with Bracket's pass and the squares below lo when
// `inside` is not null (the count is then returned).
inline double ShiftedDistance(double value, double shift) {
  const double e = std::fabs(value - shift);
  return e >= 0 ? e : INFINITY;
}
size_t ShiftedDistances(const double* values, size_t n, double shift, double* out, double lo,
                        double hi, double* inside, size_t* below, double* squares);

// The sum of the squares e = v² of values[0 .. n - 1] with e < cut, in vector lanes
// (so not rounded as a sum in input order would be), and their count in *counted.
double SumSquaresBelow(const double* values, size_t n, double cut, size_t* counted);

// The line's rough start: the doubled-angle unit vector (cos 2a, sin 2a) of the step
// (dx, dy), false where it has none; and, for the steps between points i and i + t,
// i < t, the same with sqrt(dx² + dy²) for the length (so within a few units in the
// last place of it), for every i. Returns how many steps lie outside the range where
// that holds (a squared length beyond 2^±960, NaN); their entries are not meaningful.
inline bool DoubledAngle(double dx, double dy, double* c2, double* s2) {
  const double len = std::hypot(dx, dy);
  const double ux = dx / len, uy = dy / len;
  if (!(len > 0) || !std::isfinite(ux) || !std::isfinite(uy)) return false;
  *c2 = ux * ux - uy * uy;
  *s2 = 2 * ux * uy;
  return true;
}
size_t RoughDoubledAngles(const double* base, size_t t, double* c2, double* s2);

// offsets[i] = nx x + ny y of point i; whether none is NaN.
bool LineOffsets(const double* base, size_t n, double nx, double ny, double* offsets);

// The circle's rough start: for i < t, the centre of the circle through points i,
// i + t and i + 2t (as CircleCentre computes it), packed into xs and ys in input order
// where both coordinates are finite; returns their count. xs and ys have room for t.
inline bool CircleCentre(double ax, double ay, double bx, double by, double qx, double qy,
                         double* cx, double* cy) {
  bx -= ax, by -= ay, qx -= ax, qy -= ay;
  const double det = 2 * (bx * qy - by * qx);
  const double b2 = bx * bx + by * by, q2 = qx * qx + qy * qy;
  const double ux = (qy * b2 - by * q2) / det, uy = (bx * q2 - qx * b2) / det;
  *cx = ax + ux, *cy = ay + uy;
  return std::isfinite(ux) && std::isfinite(uy);  // else collinear, or too far
}
size_t CircleCentres(const double* base, size_t t, double* xs, double* ys);

// The sums of a Levenberg-Marquardt step of the circle (cx, cy, r) over the points
// (x[i], y[i]), i < m: with d = |p - c|, e = d - r and u = (p - c) / d (0 where d is
// 0), s[0 .. 8] = the sums of ux², ux uy, ux, uy², uy, -ux e, -uy e, -e and e², each
// added point by point in input order (the terms are worked out in vector lanes, the
// sums stay in order, so they come out as a plain loop's do).
void CircleStepSums(const double* x, const double* y, size_t m, double cx, double cy, double r,
                    double s[9]);

}  // namespace zet::geometry
