// The construction instructions: what each writes around its platform routine (the
// zero defaults when the routine constructs nothing, the angle unit at the boundary,
// the double-size bounding box, the always-drawn incircle) and the point grid with its
// truncating sort, its step and its two messages.
#include <cmath>
#include <limits>
#include <string>

#include "GeometryTest.h"
#include "zet/ZetGeometry.h"

namespace zet::test {
namespace {

constexpr double kPi = CZetGeometry::Pi;
const double kNaN = std::numeric_limits<double>::quiet_NaN();

TEST_F(Geometric, ConstructionsTable) {
  const CZetPoint o(0, 0);
  ExpectTable({
      {kRad, "CircleBoundingBox", {V(10.0), V(CZetPoint(50, 50))},
       {V(CZetPoint(40, 40)), V(CZetPoint(60, 40)), V(CZetPoint(40, 60)), V(CZetPoint(60, 60))}},
      // The angle is the user's: 90 degrees, and +y is down the screen.
      {kDeg, "MakeAnchor", {V(o), V(90.0), V(5.0)},
       {V(CZetPoint(0, 5)), V(CZetPoint(0, -5))}},
      {kRad, "MakeAnchor", {V(CZetPoint(1, 1)), V(kPi), V(2.0)},
       {V(CZetPoint(-1, 1)), V(CZetPoint(3, 1))}},
      {kRad, "LnsIntersection", {V(CZetLine(0, 5)), V(CZetLine(kPi / 2, -3))},
       {V(CZetPoint(3, 5))}},
      // Parallel, identical and NaN lines leave the zero point.
      {kRad, "LnsIntersection", {V(CZetLine(0.3, 5)), V(CZetLine(0.3 + kPi, 2))},
       {V(o)}},
      {kRad, "LnsIntersection", {V(CZetLine(0.3, 5)), V(CZetLine(0.3, 5))},
       {V(o)}},
      {kRad, "LnsIntersection", {V(CZetLine(kNaN, 5)), V(CZetLine(0.3, 5))},
       {V(o)}},
      // Two points in order along the line's direction (left to right), a tangent, a miss.
      {kRad, "CircleLineIntersect", {V(CZetPoint(0, 0)), V(5.0), V(CZetLine(kPi, -3))},
       {V(2.0), V(CZetPoint(-4, 3)), V(CZetPoint(4, 3))}},
      {kRad, "CircleLineIntersect", {V(CZetPoint(0, 0)), V(5.0), V(CZetLine(0, 5))},
       {V(1.0), V(CZetPoint(0, 5)), V(o)}},
      {kRad, "CircleLineIntersect", {V(CZetPoint(0, 0)), V(5.0), V(CZetLine(0, 6))},
       {V(0.0), V(o), V(o)}},
      {kRad, "CircleLineIntersect", {V(CZetPoint(0, 0)), V(-5.0), V(CZetLine(0, 0))},
       {V(0.0), V(o), V(o)}},
      // Bisector through the corner (0, 0) of the right angle between +x and +y.
      {kRad, "AngleBisect", {V(CZetPoint(4, 0)), V(o), V(CZetPoint(0, 9))},
       {V(CZetLine(kPi / 4, 0))}},
      {kRad, "AngleBisect", {V(o), V(o), V(CZetPoint(0, 9))}, {V(CZetLine(0, 0))}},
      // Parallel lines: the line midway between them.
      {kRad, "LnsBisect", {V(CZetLine(0, 2)), V(CZetLine(kPi, -6))},
       {V(CZetLine(0, 4))}},
      {kRad, "LnsBisect", {V(CZetLine(0.2, 0)), V(CZetLine(0.6, 0))},
       {V(CZetLine(0.4, 0))}},
      // Along x = 1 (pointing down) from y = 2 to y = 7: +5; the other way round -5.
      {kRad, "LnToLnDist",
       {V(CZetLine(0, 2)), V(CZetLine(0, 7)), V(CZetLine(kPi / 2, -1))}, {V(5.0)}},
      {kRad, "LnToLnDist",
       {V(CZetLine(0, 7)), V(CZetLine(0, 2)), V(CZetLine(-kPi / 2, 1))}, {V(-5.0)}},
      {kRad, "LnToLnDist",
       {V(CZetLine(0, 7)), V(CZetLine(0, 2)), V(CZetLine(0, 1))}, {V(0.0)}},  // never crosses
      // The line's own angle decides, whatever unit the user works in.
      {kDeg, "LnPerpendicular", {V(CZetLine(0, 5)), V(CZetPoint(3, 1))},
       {V(CZetLine(kPi / 2, -3))}},
      {kDeg, "LnParallel", {V(CZetLine(kPi, 5)), V(CZetPoint(3, 1))},
       {V(CZetLine(0, 1))}},
  });
}

// Drawn on every run, collinear and coincident corners included, with the label empty.
TEST_F(Geometric, IncircleIsAlwaysDrawn) {
  const struct {
    CZetPoint p1, p2, p3;
    CZetPoint center;
    double diam;
  } cases[] = {
      {{0, 0}, {6, 0}, {0, 8}, {2, 2}, 4},   // the 6-8-10 triangle: r = 2
      {{0, 0}, {0, 0}, {0, 0}, {0, 0}, 0},   // nothing constructed: the zeros
      {{0, 0}, {kNaN, 1}, {3, 3}, {0, 0}, 0},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(&c - cases);
    const CRun r = Exec("CircleInTriangle", {V(c.p1), V(c.p2), V(c.p3)});
    ASSERT_EQ(r.status, 0);
    EXPECT_TRUE(Near(r.Out(0), V(c.center), 1e-12));
    EXPECT_NEAR(r.Out(1).AsDouble(), c.diam, 1e-12);
    ASSERT_EQ(r.annotations.size(), 1u);
    const host::SAnnotationRecord& a = r.annotations[0];
    EXPECT_EQ(a.op, "AddCircle");
    EXPECT_EQ(Field(a, "label").AsString(), "");
    EXPECT_EQ(*Field(a, "circle").Get<CZetCircle>(),
              CZetCircle(c.center.x, c.center.y, c.diam / 2));
  }
}

std::vector<CZetPoint> Grid(std::initializer_list<std::pair<double, double>> xy) {
  std::vector<CZetPoint> v;
  for (const auto& [x, y] : xy) v.emplace_back(x, y);
  return v;
}

TEST_F(Geometric, GridOfPoints) {
  const CZetObject rect = PtArr({{0, 0}, {10, 0}, {10, 20}, {0, 20}});
  const struct {
    const char* what;
    CZetObject corners;
    double nx, ny;
    std::vector<CZetPoint> grid;
  } cases[] = {
      {"3 x 3", rect, 3, 3,
       Grid({{0, 0}, {5, 0}, {10, 0}, {0, 10}, {5, 10}, {10, 10}, {0, 20}, {5, 20}, {10, 20}})},
      // The vertical step divides by nx - 1: rows at 0, 20 and 40, past the boundary.
      {"2 x 3", rect, 2, 3, Grid({{0, 0}, {10, 0}, {0, 20}, {10, 20}, {0, 40}, {10, 40}})},
      // A value the sort moves down loses its fraction; one already in place keeps it.
      {"x moved down", PtArr({{10, 0}, {0.5, 0}, {10, 20}, {0.5, 20}}), 2, 2,
       Grid({{0, 0}, {10, 0}, {0, 20}, {10, 20}})},
      {"x in place", PtArr({{0.5, 0}, {10, 0}, {0.5, 20}, {10, 20}}), 2, 2,
       Grid({{0.5, 0}, {10, 0}, {0.5, 20}, {10, 20}})},
      // The sizes are read by the value's integer conversion.
      {"2.9 x 2", rect, 2.9, 2, Grid({{0, 0}, {10, 0}, {0, 20}, {10, 20}})},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.what);
    const CRun r = Exec("PtsToGrid", {c.corners, V(c.nx), V(c.ny)});
    ASSERT_EQ(r.status, 0);
    EXPECT_TRUE(r.reports.empty());
    EXPECT_EQ(Pts(r.Out(0)), c.grid);
  }
}

TEST_F(Geometric, GridMessagesReturnZeroAndKeepTheOutput) {
  const CZetObject rect = PtArr({{0, 0}, {10, 0}, {10, 20}, {0, 20}});
  const struct {
    const char* what;
    CZetObject corners;
    double nx, ny;
    const char* text;
  } cases[] = {
      {"3 corners", PtArr({{0, 0}, {10, 0}, {10, 20}}), 3, 3, "Boundaries array size must be 4."},
      {"5 corners", PtArr({{0, 0}, {10, 0}, {10, 20}, {0, 20}, {1, 1}}), 3, 3,
       "Boundaries array size must be 4."},
      {"nx 1", rect, 1, 3, "Grid sizes must be greater than 1."},
      {"ny -5", rect, 3, -5, "Grid sizes must be greater than 1."},
      {"NaN", rect, kNaN, 3, "Grid sizes must be greater than 1."},
      {"size first", PtArr({}), 1, 1, "Boundaries array size must be 4."},
      {"too many points", rect, 1e9, 1e9, "Grid sizes are too large."},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.what);
    const CRun r = Exec("PtsToGrid", {c.corners, V(c.nx), V(c.ny)},
                        WithOutputs({PtArr({{7, 7}})}));
    EXPECT_EQ(r.status, 0);
    ASSERT_EQ(r.reports.size(), 1u);
    EXPECT_EQ(r.Report(0).level, 2);
    EXPECT_EQ(r.Report(0).source, "PtsToGrid");
    EXPECT_EQ(r.Report(0).text, c.text);
    EXPECT_EQ(Pts(r.Out(0)), Grid({{7, 7}}));
  }
}

}  // namespace
}  // namespace zet::test
