// The conventions of ZetGeometry.h as properties: points built on a line lie on it,
// canonical forms, the clockwise image convention, constructions whose results lie on
// the shapes they come from, and the documented orders and signs.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <random>
#include <string>

#include "zet/ZetGeometry.h"

namespace {

using G = CZetGeometry;
constexpr double kPi = G::Pi;
const double kNaN = std::numeric_limits<double>::quiet_NaN();
const double kInf = std::numeric_limits<double>::infinity();

double Dist(const CZetLine& l, const CZetPoint& p) {
  double d = 0;
  G::PointArray2LineDist(&p, 1, l, &d);
  return d;
}

// The point at parameter t along a line: d along the normal, t along the direction.
CZetPoint On(const CZetLine& l, double t) {
  return CZetPoint(-std::sin(l.a) * l.d + t * std::cos(l.a), std::cos(l.a) * l.d + t * std::sin(l.a));
}

bool Canonical(const CZetLine& l) {
  return l.a > -G::PiDiv2 && l.a <= G::PiDiv2 && !std::signbit(l.a == 0 ? l.a : 1.0) &&
         !(l.d == 0 && std::signbit(l.d));
}

class Random : public testing::Test {
 protected:
  std::mt19937_64 rng{2024};
  double U(double lo, double hi) { return std::uniform_real_distribution<>(lo, hi)(rng); }
  CZetLine AnyLine() { return CZetLine(U(-10, 10), U(-500, 500)); }
  CZetPoint AnyPoint() { return CZetPoint(U(-500, 500), U(-500, 500)); }
};

TEST(Conventions, AnglesGrowClockwiseOnTheScreen) {
  const struct {
    CZetPoint to;
    double angle;
  } cases[] = {
      {{1, 0}, 0},         {{1, 1}, kPi / 4},  // down and right: clockwise from +x
      {{0, 1}, kPi / 2},   {{-1, 0}, kPi},     // the half turn is +π, never -π
      {{0, -1}, -kPi / 2}, {{0, 0}, 0},        // coincident points
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(std::to_string(c.to.x) + "," + std::to_string(c.to.y));
    EXPECT_DOUBLE_EQ(G::Points2Angle({0, 0}, c.to), c.angle);
    CZetLine pair;
    G::Point2PointDistPitch({0, 0}, c.to, &pair);
    EXPECT_DOUBLE_EQ(pair.a, c.angle);
    EXPECT_DOUBLE_EQ(pair.d, std::hypot(c.to.x, c.to.y));
  }
  EXPECT_DOUBLE_EQ(G::Points2Angle({0, 0}, {-1, -0.0}), kPi);
  // A quarter turn clockwise takes the point right of the centre to below it, exactly.
  CZetPoint p(3, 2);
  G::RotatePointClockwise(kPi / 2, {1, 2}, &p);
  EXPECT_EQ(p, CZetPoint(1, 4));
  G::RotatePointClockwise(-kPi, {1, 2}, &p);
  EXPECT_EQ(p, CZetPoint(1, 0));
}

TEST(Conventions, LineFormAndSignedDistance) {
  // a = 0: the line y = d, positive below it; a = π/2: x = -d, positive left of it.
  EXPECT_EQ(Dist(CZetLine(0, 5), {7, 8}), 3);
  EXPECT_EQ(Dist(CZetLine(0, 5), {7, 1}), -4);
  EXPECT_NEAR(Dist(CZetLine(kPi / 2, -5), {2, 9}), 3, 1e-15);
  CZetLine l;
  G::PointPointToLine({0, 3}, {4, 3}, &l);
  EXPECT_EQ(l, CZetLine(0, 3));
  G::PointPointToLine({5, 9}, {5, 1}, &l);  // vertical: pointing down
  EXPECT_EQ(l.a, kPi / 2);
  EXPECT_NEAR(l.d, -5, 1e-15);
  G::PointPointToLine({2, 7}, {2, 7}, &l);  // coincident: the horizontal line
  EXPECT_EQ(l, CZetLine(0, 7));
}

TEST_F(Random, PointsBuiltOnALineLieOnIt) {
  for (int i = 0; i < 1000; ++i) {
    const CZetLine l = AnyLine();
    const CZetPoint p = On(l, U(-1000, 1000)), q = On(l, U(-1000, 1000));
    ASSERT_NEAR(Dist(l, p), 0, 1e-10);
    CZetLine through;
    G::PointPointToLine(p, q, &through);
    ASSERT_TRUE(Canonical(through)) << through.a;
    ASSERT_NEAR(Dist(through, p), 0, 1e-9);
    ASSERT_NEAR(Dist(through, q), 0, 1e-9);
    CZetLine swapped;
    G::PointPointToLine(q, p, &swapped);
    ASSERT_EQ(swapped, through);  // the same line whichever point comes first
  }
}

TEST_F(Random, NormalizeKeepsTheLineAndIsCanonical) {
  for (double a : {0.0, -0.0, kPi / 2, -kPi / 2, kPi, -kPi, 3 * kPi / 2, 1e6, -1e6, 7.5}) {
    SCOPED_TRACE(a);
    CZetLine l(a, 12.5), n = l;
    G::NormalizeLine(&n);
    EXPECT_TRUE(Canonical(n)) << n.a;
    // Whole multiples of the constant Pi come off, exactly: the line turns by
    // k (π - Pi), about |a| 4e-17 rad, a trace only for very large angles.
    for (double t : {-50.0, 0.0, 80.0})
      EXPECT_NEAR(Dist(n, On(l, t)), 0, 1e-9 + 1e-14 * std::fabs(a));
    CZetLine twice = n;
    G::NormalizeLine(&twice);
    EXPECT_EQ(twice, n);
  }
  CZetLine v(-kPi / 2, 4);  // the vertical line x = 4, pointing up: turned to point down
  G::NormalizeLine(&v);
  EXPECT_EQ(v, CZetLine(kPi / 2, -4));
  for (double bad : {kNaN, kInf}) {
    CZetLine b(bad, 1);
    G::NormalizeLine(&b);
    EXPECT_TRUE(std::isnan(b.a));
  }
  // Angles: whole half turns off, into (-π/2, π/2].
  const double cases[][2] = {{kPi, 0}, {-kPi / 2, kPi / 2}, {kPi / 2, kPi / 2},
                             {3 * kPi / 4, -kPi / 4}, {-0.0, 0}, {1e300, std::remainder(1e300, kPi)}};
  for (const auto& c : cases) {
    double v2 = c[0];
    G::NormalizeAngleMinusPiBy2ToPiBy2(&v2);
    EXPECT_DOUBLE_EQ(v2, c[1]) << c[0];
    EXPECT_FALSE(std::signbit(v2) && v2 == 0);
  }
}

TEST_F(Random, RotationsCompose) {
  for (int i = 0; i < 500; ++i) {
    const CZetPoint c = AnyPoint(), p0 = AnyPoint();
    const double a = U(-10, 10);
    CZetPoint p = p0;
    G::RotatePointClockwise(a, c, &p);
    ASSERT_NEAR(G::Point2PointDist(c, p), G::Point2PointDist(c, p0), 1e-9);
    if (G::Point2PointDist(c, p0) > 1) {
      ASSERT_NEAR(std::remainder(G::Points2Angle(c, p) - G::Points2Angle(c, p0) - a, 2 * kPi), 0,
                  1e-9);
    }
    G::RotatePointClockwise(-a, c, &p);
    ASSERT_NEAR(p.x, p0.x, 1e-9);
    ASSERT_NEAR(p.y, p0.y, 1e-9);
    p = p0;
    G::RotatePointClockwise(2 * kPi, c, &p);  // a whole turn is exactly the identity
    ASSERT_EQ(p, p0);
  }
}

TEST_F(Random, IntersectionsLieOnBothShapes) {
  for (int i = 0; i < 1000; ++i) {
    const CZetLine l1 = AnyLine(), l2 = AnyLine(), l3 = AnyLine();
    CZetPoint x;
    if (G::LineIntersection(l1, l2, &x)) {
      const double tol = 1e-9 * (1 + std::hypot(x.x, x.y));
      ASSERT_NEAR(Dist(l1, x), 0, tol);
      ASSERT_NEAR(Dist(l2, x), 0, tol);
    }
    // Line2LineDist: signed along l3's canonical direction, from l1's crossing to l2's.
    double along = 0;
    CZetPoint p1, p2;
    if (G::Line2LineDist(l1, l2, l3, &along) && G::LineIntersection(l1, l3, &p1) &&
        G::LineIntersection(l2, l3, &p2)) {
      CZetLine c3 = l3;
      G::NormalizeLine(&c3);
      ASSERT_NEAR(std::fabs(along), G::Point2PointDist(p1, p2), 1e-9 * (1 + std::fabs(along)));
      const double t1 = p1.x * std::cos(c3.a) + p1.y * std::sin(c3.a);
      const double t2 = p2.x * std::cos(c3.a) + p2.y * std::sin(c3.a);
      if (std::fabs(t2 - t1) > 1e-6) {
        ASSERT_EQ(along > 0, t2 > t1);
      }
    }
    // Circle and line: both points on both, in the line's canonical direction.
    const CZetPoint c = AnyPoint();
    const double r = U(0, 800);
    CZetPoint pts[2] = {{-1, -1}, {-1, -1}};
    int count = -1;
    G::CircleLineIntersection(c, r, l1, pts, &count);
    ASSERT_EQ(count == 0, std::fabs(Dist(l1, c)) > r);
    for (int k = 0; k < count; ++k) {
      ASSERT_NEAR(G::Point2PointDist(c, pts[k]), r, 1e-9 * (1 + r));
      ASSERT_NEAR(Dist(l1, pts[k]), 0, 1e-9 * (1 + r));
    }
    if (count == 2) {
      CZetLine cl = l1;
      G::NormalizeLine(&cl);
      ASSERT_GT((pts[1].x - pts[0].x) * std::cos(cl.a) + (pts[1].y - pts[0].y) * std::sin(cl.a), 0);
    }
  }
}

TEST(Constructions, DegenerateCases) {
  CZetPoint x(7, 7);
  // Parallel and identical lines do not cross; the output stays as it was.
  EXPECT_FALSE(G::LineIntersection(CZetLine(0.3, 1), CZetLine(0.3, 5), &x));
  EXPECT_FALSE(G::LineIntersection(CZetLine(0.3, 1), CZetLine(0.3 + kPi, -1), &x));
  EXPECT_FALSE(G::LineIntersection(CZetLine(kNaN, 1), CZetLine(0, 1), &x));
  EXPECT_EQ(x, CZetPoint(7, 7));
  double d = 42;
  EXPECT_FALSE(G::Line2LineDist(CZetLine(0, 1), CZetLine(1, 1), CZetLine(0, 3), &d));
  EXPECT_EQ(d, 42);

  // Circle and line: tangent, zero radius on and off the line, negative and NaN radius.
  const struct {
    double r;
    CZetLine l;
    int count;
    CZetPoint first, second;
  } cc[] = {
      {5, CZetLine(0, 5), 1, {0, 5}, {-1, -1}},
      {5, CZetLine(0, 3), 2, {-4, 3}, {4, 3}},          // left one first
      {5, CZetLine(kPi / 2, 0), 2, {0, -5}, {0, 5}},    // vertical: upper one first
      {5, CZetLine(-kPi / 2, 0), 2, {0, -5}, {0, 5}},   // whatever the line's form
      {0, CZetLine(0, 0), 1, {0, 0}, {-1, -1}},
      {0, CZetLine(0, 1), 0, {-1, -1}, {-1, -1}},
      {-5, CZetLine(0, 0), 0, {-1, -1}, {-1, -1}},
      {kNaN, CZetLine(0, 0), 0, {-1, -1}, {-1, -1}},
      {5, CZetLine(0, 6), 0, {-1, -1}, {-1, -1}},
  };
  for (const auto& c : cc) {
    SCOPED_TRACE(&c - cc);
    CZetPoint out[2] = {{-1, -1}, {-1, -1}};
    int count = -1;
    G::CircleLineIntersection({0, 0}, c.r, c.l, out, &count);
    EXPECT_EQ(count, c.count);
    EXPECT_NEAR(out[0].x, c.first.x, 1e-12);
    EXPECT_NEAR(out[0].y, c.first.y, 1e-12);
    EXPECT_NEAR(out[1].x, c.second.x, 1e-12);
    EXPECT_NEAR(out[1].y, c.second.y, 1e-12);
  }
}

TEST(Constructions, Bisectors) {
  // LineBisect: the acute angle's bisector through the crossing.
  const struct {
    CZetLine l1, l2, bisector;
  } lb[] = {
      {CZetLine(0, 0), CZetLine(kPi / 3, 0), CZetLine(kPi / 6, 0)},
      {CZetLine(0, 0), CZetLine(kPi / 3 + kPi, 0), CZetLine(kPi / 6, 0)},  // either form
      {CZetLine(0, 0), CZetLine(2 * kPi / 3, 0), CZetLine(-kPi / 6, 0)},   // the acute one
      {CZetLine(0, 0), CZetLine(kPi / 2, 0), CZetLine(kPi / 4, 0)},        // right angle
      {CZetLine(0, 2), CZetLine(0, 8), CZetLine(0, 5)},                    // parallel: midway
      {CZetLine(0, 2), CZetLine(kPi, 8), CZetLine(0, -3)},                 // y = 2 and y = -8
      {CZetLine(0.4, 3), CZetLine(0.4, 3), CZetLine(0.4, 3)},              // identical
  };
  for (const auto& c : lb) {
    SCOPED_TRACE(&c - lb);
    CZetLine b;
    G::LineBisect(c.l1, c.l2, &b);
    EXPECT_NEAR(b.a, c.bisector.a, 1e-14);
    EXPECT_NEAR(b.d, c.bisector.d, 1e-14);
    EXPECT_TRUE(Canonical(b));
  }
  // AngleBisect: through the vertex, equally far from both rays' lines.
  const struct {
    CZetPoint p1, p2, p3;
    double a;
  } ab[] = {
      {{10, 0}, {0, 0}, {0, 10}, kPi / 4},
      {{10, 0}, {0, 0}, {-10, 0}, kPi / 2},       // straight angle: the perpendicular
      {{10, 0}, {0, 0}, {20, 0}, 0},              // both rays the same way
      {{10, 1e-9}, {0, 0}, {-10, 1e-9}, kPi / 2},  // nearly straight, still accurate
  };
  for (const auto& c : ab) {
    SCOPED_TRACE(&c - ab);
    CZetLine b;
    ASSERT_TRUE(G::AngleBisect(c.p1, c.p2, c.p3, &b));
    EXPECT_NEAR(b.a, c.a, 1e-12);
    EXPECT_NEAR(Dist(b, c.p2), 0, 1e-12);
  }
  CZetLine untouched(1, 2);
  EXPECT_FALSE(G::AngleBisect({0, 0}, {0, 0}, {1, 1}, &untouched));
  EXPECT_FALSE(G::AngleBisect({0, 0}, {kNaN, 0}, {1, 1}, &untouched));
  EXPECT_EQ(untouched, CZetLine(1, 2));
}

TEST(Constructions, PerpendicularParallelMiddleIncircle) {
  CZetLine l;
  G::LinePerpendicular(0, CZetPoint(3, 4), &l);
  EXPECT_EQ(l.a, kPi / 2);
  EXPECT_NEAR(Dist(l, {3, 100}), 0, 1e-12);
  G::LineParallel(kPi, CZetPoint(3, 4), &l);
  EXPECT_EQ(l, CZetLine(0, 4));
  double a = 0, d = 0;
  G::LinePerpendicular(kPi / 4, 1, 1, &a, &d);
  EXPECT_DOUBLE_EQ(a, -kPi / 4);
  EXPECT_NEAR(d, std::sqrt(2.0), 1e-15);

  CZetPoint m;
  G::MiddlePoint({1e308, -1e308}, {1.6e308, -1.6e308}, &m);  // no overflow
  EXPECT_EQ(m, CZetPoint(1.3e308, -1.3e308));

  double diam = -1;
  CZetPoint c(-1, -1);
  EXPECT_TRUE(G::CircleInTriangle({0, 0}, {4, 0}, {0, 3}, &diam, &c));  // 3-4-5: r = 1
  EXPECT_DOUBLE_EQ(diam, 2);
  EXPECT_DOUBLE_EQ(c.x, 1);
  EXPECT_DOUBLE_EQ(c.y, 1);
  EXPECT_FALSE(G::CircleInTriangle({0, 0}, {1, 0}, {2, 0}, &diam, &c));  // collinear
  EXPECT_EQ(diam, 0);
  EXPECT_EQ(c, CZetPoint(1, 0));
  diam = -1;
  EXPECT_FALSE(G::CircleInTriangle({2, 2}, {2, 2}, {2, 2}, &diam, &c));  // nothing written
  EXPECT_FALSE(G::CircleInTriangle({kInf, 2}, {2, 2}, {0, 0}, &diam, &c));
  EXPECT_EQ(diam, -1);
}

}  // namespace
