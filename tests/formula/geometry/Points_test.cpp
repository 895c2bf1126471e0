// Points, lines and conversions: a table of results in both angle units, the mean
// point's failure and its variadic twin's deliberate NaN, and the point-to-line
// distance with its drawing.
#include <limits>

#include "GeometryTest.h"
#include "zet/ZetGeometry.h"

namespace zet::test {
namespace {

constexpr double kPi = CZetGeometry::Pi;
const double kNaN = std::numeric_limits<double>::quiet_NaN();

TEST_F(Geometric, PointsAndLinesTable) {
  const CZetPoint o(0, 0);
  ExpectTable({
      {kRad, "PtSet", {V(CZetPoint(1, -2))}, {V(CZetPoint(1, -2))}},
      {kRad, "LnSet", {V(CZetLine(7, 3))}, {V(CZetLine(7, 3))}},  // not normalised
      {kRad, "PtToPtDist", {V(CZetPoint(1, 1)), V(CZetPoint(4, 5))}, {V(5.0), V(3.0), V(4.0)}},
      {kRad, "PtToPtDist", {V(CZetPoint(4, 5)), V(CZetPoint(1, 1))}, {V(5.0), V(-3.0), V(-4.0)}},
      {kRad, "PtToXY", {V(CZetPoint(2.5, -1))}, {V(2.5), V(-1.0)}},
      {kRad, "XYToPt", {V(2.5), V(kNaN)}, {V(CZetPoint(2.5, kNaN))}},
      {kRad, "PtMiddle", {V(CZetPoint(1, 1)), V(CZetPoint(4, 6))}, {V(CZetPoint(2.5, 3.5))}},
      {kRad, "PtAverage", {PtArr({{0, 0}, {3, 0}, {3, 6}})}, {V(CZetPoint(2, 2))}},
      {kRad, "PtAverageInf", {V(CZetPoint(1, 1)), V(CZetPoint(3, 5))}, {V(CZetPoint(2, 3))}},
      {kRad, "PtAverageInf", {}, {V(CZetPoint(kNaN, kNaN))}},  // deliberate: 0 / 0
      // y grows downward: from (0, 0) to (0, 1) points down, +90°, clockwise.
      {kDeg, "PtToPtAngleDist", {V(o), V(CZetPoint(0, 2))}, {V(90.0), V(2.0)}},
      {kRad, "PtToPtAngleDist", {V(o), V(CZetPoint(-1, 0))}, {V(kPi), V(1.0)}},
      {kDeg, "PtRotate", {V(CZetPoint(1, 0)), V(90.0), V(o)}, {V(CZetPoint(0, 1))}},
      {kRad, "PtRotate", {V(CZetPoint(3, 2)), V(-kPi / 2), V(CZetPoint(1, 2))}, {V(CZetPoint(1, 0))}},
      {kDeg, "PtRotate", {V(CZetPoint(3, 7)), V(360.0), V(CZetPoint(1, 2))}, {V(CZetPoint(3, 7))}},
      {kDeg, "AngleNormalize", {V(135.0)}, {V(-45.0)}},
      {kDeg, "AngleNormalize", {V(-90.0)}, {V(90.0)}},
      {kDeg, "AngleNormalize", {V(90.0)}, {V(90.0)}},
      {kRad, "AngleNormalize", {V(-kPi / 2)}, {V(kPi / 2)}},
      {kDeg, "LnToLnAngle", {V(CZetLine(kPi, 0)), V(CZetLine(kPi / 4, 0))}, {V(-45.0)}},
      {kRad, "LnToLnAngle", {V(CZetLine(0.5, 0)), V(CZetLine(0.2, 9))}, {V(0.3)}},
      {kDeg, "LnToAD", {V(CZetLine(kPi / 2, -3))}, {V(90.0), V(-3.0)}},
      {kDeg, "ADToLn", {V(90.0), V(-3.0)}, {V(CZetLine(kPi / 2, -3))}},
      {kDeg, "ADToLn", {V(270.0), V(4.0)}, {V(CZetLine(3 * kPi / 2, 4))}},  // kept as given
      {kRad, "LnNormalize", {V(CZetLine(3 * kPi / 2, 4))}, {V(CZetLine(kPi / 2, -4))}},
      {kRad, "TwoPtsToLn", {V(CZetPoint(5, 9)), V(CZetPoint(5, 1))}, {V(CZetLine(kPi / 2, -5))}},
      {kRad, "TwoPtsToLn", {V(CZetPoint(0, 3)), V(CZetPoint(4, 3))}, {V(CZetLine(0, 3))}},
      // The user's angle is counter-clockwise: the inverted sign, whichever point first.
      {kDeg, "PtsToBestAngle", {V(o), V(CZetPoint(1, 1))}, {V(-45.0)}},
      {kDeg, "PtsToBestAngle", {V(CZetPoint(1, 1)), V(o)}, {V(-45.0)}},
      {kDeg, "PtsToBestAngle", {V(o), V(CZetPoint(0, -3))}, {V(90.0)}},
      {kRad, "PtsToBestAngle", {V(CZetPoint(2, 0)), V(CZetPoint(0, 1))}, {V(std::atan(0.5))}},
  });
}

TEST_F(Geometric, LineToNumbersAndBackInEitherUnit) {
  for (EZetAngleUnit u : {kRad, kDeg}) {
    Unit(u);
    for (const CZetLine& l : {CZetLine(0.3, -7), CZetLine(-2.9, 1e6), CZetLine(kPi / 2, 0)}) {
      const CRun ad = Exec("LnToAD", {V(l)});
      const CRun back = Exec("ADToLn", {ad.Out(0), ad.Out(1)});
      EXPECT_NEAR(Ln(back.Out(0)).a, l.a, 1e-15);
      EXPECT_EQ(Ln(back.Out(0)).d, l.d);
    }
  }
}

TEST_F(Geometric, PointArrayDistances) {
  const CRun one = Exec("PtToPtsDist", {V(CZetPoint(1, 1)), PtArr({{4, 5}, {1, 1}, {1, -2}})});
  EXPECT_EQ(Nums(one.Out(0)), (std::vector<double>{5, 0, 3}));
  EXPECT_EQ(Nums(one.Out(1)), (std::vector<double>{3, 0, 0}));
  EXPECT_EQ(Nums(one.Out(2)), (std::vector<double>{4, 0, -3}));
  // The surplus of the longer array is dropped without a message; pts1 minus pts0.
  const CRun two = Exec("PtsToPtsDist", {PtArr({{0, 0}, {1, 1}, {2, 2}}),
                                          PtArr({{3, 4}, {1, 1}, {2, 0}, {9, 9}, {8, 8}})});
  ASSERT_EQ(two.status, 0);
  EXPECT_TRUE(two.reports.empty());
  EXPECT_EQ(Nums(two.Out(0)), (std::vector<double>{5, 0, 2}));
  EXPECT_EQ(Nums(two.Out(2)), (std::vector<double>{4, 0, -2}));
  const CRun none = Exec("PtToPtsDist", {V(CZetPoint(1, 1)), PtArr({})});
  for (int i = 0; i < 3; ++i) EXPECT_TRUE(Nums(none.Out(i)).empty());
}

TEST_F(Geometric, MeanOfNoPoints) {
  const CRun r = Exec("PtAverage", {PtArr({})}, WithOutputs({V(CZetPoint(7, 7))}));
  EXPECT_EQ(r.status, 3);
  ASSERT_EQ(r.reports.size(), 1u);
  EXPECT_EQ(r.Report(0).level, 2);
  EXPECT_EQ(r.Report(0).source, "MeanPt");
  EXPECT_EQ(r.Report(0).text, "Algorithm needs at least one point.");
  EXPECT_EQ(Pt(r.Out(0)), CZetPoint(7, 7));
}

TEST_F(Geometric, PointToLineDistanceAndItsDrawing) {
  const struct {
    CZetPoint pt;
    CZetLine ln;
    bool display;
    double dist;
    CZetPoint foot;
  } cases[] = {
      {{3, 9}, CZetLine(0, 5), true, 4, {3, 5}},
      {{3, 1}, CZetLine(0, 5), false, 4, {3, 5}},  // never negative
      {{0, 0}, CZetLine(kPi / 4, std::sqrt(2.0)), true, std::sqrt(2.0), {-1, 1}},  // y = x + 2
      {{2, 2}, CZetLine(kNaN, 1), true, 0, {0, 0}},  // a line nothing crosses
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(&c - cases);
    const CRun r = Exec("PtToLnDist", {V(c.pt), V(c.ln)}, WithParams({V(c.display)}));
    ASSERT_EQ(r.status, 0);
    EXPECT_NEAR(r.Out(0).AsDouble(), c.dist, 1e-12);
    EXPECT_NEAR(Pt(r.Out(1)).x, c.foot.x, 1e-12);
    EXPECT_NEAR(Pt(r.Out(1)).y, c.foot.y, 1e-12);
    if (std::isfinite(c.ln.a)) {  // the measurement line is the perpendicular through pt
      double d = 1;
      CZetGeometry::PointArray2LineDist(&c.pt, 1, Ln(r.Out(2)), &d);
      EXPECT_NEAR(d, 0, 1e-12);
    }
    ASSERT_EQ(r.annotations.size(), c.display ? 1u : 0u);
    if (!c.display) continue;
    const host::SAnnotationRecord& a = r.annotations[0];
    EXPECT_EQ(a.op, "AddSegment");
    EXPECT_TRUE(Field(a, "label").IsEmpty());  // a null label
    EXPECT_EQ(Pt(Field(a, "start")), c.pt);
    EXPECT_EQ(Pt(Field(a, "end")), Pt(r.Out(1)));
    EXPECT_EQ(Field(a, "color").AsDouble(), 0);
    EXPECT_EQ(a.trailing[0], 1);
    EXPECT_EQ(a.trailing[1], 1);
  }
}

}  // namespace
}  // namespace zet::test
