// The fit instructions: what they do around the platform's fits (output hints, cleared
// outputs, the percentage's truncation, preprocessing, the tolerance message, the
// circle's box, statistics and drawing, the variadic forms), the distances to a line,
// and a million points.
#include <cfloat>
#include <cmath>
#include <string>

#include "GeometryTest.h"
#include "zet/ZetGeometry.h"

namespace zet::test {
namespace {

constexpr double kPi = CZetGeometry::Pi;
const double kNaN = std::numeric_limits<double>::quiet_NaN();

// n points on the line y = 0.5 x + 2, x = 0, 1, 2 ...
CZetObject LinePoints(int n, std::vector<CZetPoint>* list = nullptr) {
  CZetObject o(ZET_OBJ_POINT_ARRAY);
  for (int i = 0; i < n; ++i) o.Ref<CZetPointVector>().PushBack(CZetPoint(i, 0.5 * i + 2));
  if (list) *list = o.Ref<CZetPointVector>().Std();
  return o;
}

CZetObject CirclePoints(double cx, double cy, double r, int n) {
  CZetObject o(ZET_OBJ_POINT_ARRAY);
  for (int i = 0; i < n; ++i)
    o.Ref<CZetPointVector>().PushBack(
        CZetPoint(cx + r * std::cos(2 * kPi * i / n), cy + r * std::sin(2 * kPi * i / n)));
  return o;
}

// The fitted y = 0.5 x + 2 in (a, d) form.
const CZetLine kLine(std::atan(0.5), 2 * std::cos(std::atan(0.5)));

TEST_F(Geometric, LineFitOutputsHintAndPercent) {
  const struct {
    const char* what;
    double percent;
    int status;
    double included;
  } cases[] = {
      {"none", 0, 0, 100},     {"9.99 is 9", 9.99, 0, 91}, {"12.9 is 12", 12.9, 0, 88},
      {"100", 100, 3, 0},      {"101", 101, 3, 0},         {"-1 wraps around", -1, 3, 0},
      {"1e300", 1e300, 3, 0},  {"NaN", kNaN, 3, 0},        {"-0.5 is 0", -0.5, 0, 100},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.what);
    const CRun r = Exec("PtsToBestLine", {V(c.percent), LinePoints(100)});
    EXPECT_EQ(r.status, c.status);
    EXPECT_TRUE(r.reports.empty());  // a refused percentage has no message of its own
    EXPECT_EQ(r.Out(0).AsDouble(), c.included);
    EXPECT_EQ(Pts(r.Out(3)).size(), static_cast<size_t>(c.included));
    if (c.status == 0) {
      EXPECT_EQ(Pts(r.Out(2)).size(), 100 - static_cast<size_t>(c.included));
      EXPECT_NEAR(Ln(r.Out(1)).a, kLine.a, 1e-14);
      EXPECT_NEAR(Ln(r.Out(1)).d, kLine.d, 1e-12);
    } else {
      EXPECT_EQ(Ln(r.Out(1)), CZetLine(0, 0));
    }
  }
  // The hint comes first, on the outliers output.
  const struct {
    const char* instr;
    int output;
  } hints[] = {{"PtsToBestLine", 2}, {"PtsToBestLnInf", 2}, {"PtsToBestLnMaxOut", 6},
               {"RakeLineFit", 2}};
  for (const auto& h : hints) {
    host::CZetExecContext ctx;
    ctx.Reset(InfoOf(h.instr));
    ctx.Run(Module().At(IndexOf(h.instr)));
    ASSERT_EQ(ctx.OutputHints().size(), 1u) << h.instr;
    EXPECT_EQ(ctx.OutputHints()[0], std::make_pair(h.output, 0xFFFF)) << h.instr;
  }
}

TEST_F(Geometric, LineFitEdgesAndTolerance) {
  const std::vector<CZetObject> stale = {V(5.0), V(CZetLine(1, 1)), PtArr({{1, 1}}),
                                         PtArr({{2, 2}})};
  const CZetObject none = PtArr({});
  const struct {
    const char* instr;
    std::vector<CZetObject> in;
    int status;
    const char* source;  // of the negative tolerance message, or null
    bool cleared;
  } cases[] = {
      {"PtsToBestLine", {V(0.0), none}, 0, nullptr, true},
      {"PtsToBestLine", {V(0.0), none, V(true), V(-1.0)}, 3, "PtsToBestLine", true},
      {"PtsToBestLine", {V(0.0), LinePoints(5), V(false), V(-1.0)}, 0, nullptr, false},
      {"PtsToBestLine", {V(0.0), PtArr({{1, 1}})}, 3, nullptr, true},  // one point
      {"PtsToBestLine", {V(0.0), PtArr({{1, kNaN}, {2, 2}})}, 3, nullptr, true},
      // The variadic form tests for no points first: a bad tolerance passes silently.
      {"PtsToBestLnInf", {V(0.0), V(true), V(-1.0)}, 0, nullptr, true},
      {"PtsToBestLnInf", {V(0.0), V(true), V(-1.0), V(CZetPoint(1, 1))}, 3, "PtsToBestLnInf", true},
      {"RakeLineFit", {V(0.0), LinePoints(5), V(1.0), V(-0.1)}, 3, "RakeLineFit", true},
      {"RakeLineFit", {V(0.0), none}, 0, nullptr, true},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(std::string(c.instr) + " #" + std::to_string(&c - cases));
    const CRun r = Exec(c.instr, c.in, WithOutputs(stale));
    EXPECT_EQ(r.status, c.status);
    ASSERT_EQ(r.reports.size(), c.source ? 1u : 0u);
    if (c.source) {
      EXPECT_EQ(r.Report(0).level, 2);
      EXPECT_EQ(r.Report(0).source, c.source);
      EXPECT_EQ(r.Report(0).text, "Negative tolerance is not a valid input.");
    }
    if (c.cleared) {
      EXPECT_EQ(r.Out(0).AsDouble(), 0);
      EXPECT_EQ(Ln(r.Out(1)), CZetLine(0, 0));
      EXPECT_TRUE(Pts(r.Out(2)).empty() && Pts(r.Out(3)).empty());
    }
  }
  // Variadic points fit as the array does.
  std::vector<CZetPoint> list;
  const CRun array = Exec("PtsToBestLine", {V(0.0), LinePoints(7, &list)});
  std::vector<CZetObject> in = {V(0.0), V(false), V(1.0)};
  for (const CZetPoint& p : list) in.push_back(V(p));
  const CRun inf = Exec("PtsToBestLnInf", in);
  EXPECT_EQ(Ln(inf.Out(1)), Ln(array.Out(1)));
  EXPECT_EQ(inf.Out(0).AsDouble(), 7);
}

// Evenly spaced points with one far off: the far point and its two sequence neighbours
// get larger keys, fall into other clusters and are not fitted.
TEST_F(Geometric, PreprocessingDropsIsolatedPoints) {
  std::vector<CZetPoint> list;
  CZetObject pts = LinePoints(12, &list);
  pts.Ref<CZetPointVector>()[6] = CZetPoint(6, 300);
  for (const char* instr : {"PtsToBestLine", "PtsToBestCircle"}) {
    SCOPED_TRACE(instr);
    const bool line = std::string(instr) == "PtsToBestLine";
    const CRun off = Exec(instr, {V(0.0), pts, V(false), V(0.5)});
    EXPECT_EQ(off.Out(line ? 0 : 1).AsDouble(), 12);
    if (!line) continue;  // the line's points are collinear: no circle
    const CRun on = Exec(instr, {V(0.0), pts, V(true), V(0.5)});
    ASSERT_EQ(on.status, 0);
    EXPECT_EQ(on.Out(0).AsDouble(), 9);
    std::vector<CZetPoint> want = list;
    want.erase(want.begin() + 5, want.begin() + 8);
    EXPECT_EQ(Pts(on.Out(3)), want);
    EXPECT_NEAR(Ln(on.Out(1)).a, kLine.a, 1e-14);
    EXPECT_TRUE(Pts(on.Out(2)).empty());  // points dropped by preprocessing are not outliers
  }
}

TEST_F(Geometric, ExtremesOnEitherSide) {
  // Fitted line y = 0; (5, -1) lies above it (negative), (5, 1) below (positive).
  const CRun r = Exec("PtsToBestLnMaxOut", {PtArr({{0, 0}, {10, 0}, {5, 1}, {5, -1}}), V(0.0)});
  ASSERT_EQ(r.status, 0);
  EXPECT_EQ(r.Out(0).AsDouble(), 4);
  EXPECT_NEAR(r.Out(1).AsDouble(), -1, 1e-14);
  EXPECT_NEAR(r.Out(2).AsDouble(), 1, 1e-14);
  EXPECT_EQ(Pt(r.Out(3)), CZetPoint(5, -1));
  EXPECT_EQ(Pt(r.Out(4)), CZetPoint(5, 1));
  EXPECT_NEAR(Ln(r.Out(5)).a, 0, 1e-15);
  EXPECT_TRUE(Pts(r.Out(6)).empty());
  const CRun bad = Exec("PtsToBestLnMaxOut", {PtArr({}), V(0.0)});
  EXPECT_EQ(bad.status, 3);
  EXPECT_EQ(bad.Out(0).AsDouble(), 0);
}

TEST_F(Geometric, DistancesToALine) {
  // Signed distances -3, 2, -3 from y = 5: unsigned out, first of equal extremes kept.
  const CZetLine y5(0, 5);
  const CRun r = Exec("PtsToLnDist", {PtArr({{0, 2}, {1, 7}, {2, 2}}), V(y5)});
  EXPECT_EQ(Nums(r.Out(0)), (std::vector<double>{3, 2, 3}));
  EXPECT_EQ(r.Out(1).AsDouble(), 2);
  EXPECT_EQ(r.Out(2).AsDouble(), 3);
  EXPECT_EQ(r.Out(3).AsDouble(), 1);
  EXPECT_EQ(r.Out(4).AsDouble(), 0);
  const CRun inf = Exec("PtsToLnDistInf", {V(y5), V(CZetPoint(0, 2)), V(CZetPoint(1, 7))});
  EXPECT_EQ(Nums(inf.Out(0)), (std::vector<double>{3, 2}));
  for (const CRun& empty : {Exec("PtsToLnDist", {PtArr({}), V(y5)}), Exec("PtsToLnDistInf", {V(y5)})}) {
    EXPECT_TRUE(Nums(empty.Out(0)).empty());
    EXPECT_EQ(empty.Out(1).AsDouble(), DBL_MAX);
    EXPECT_EQ(empty.Out(2).AsDouble(), -DBL_MAX);
    EXPECT_EQ(empty.Out(3).AsDouble(), -1);
    EXPECT_EQ(empty.Out(4).AsDouble(), -1);
  }
}

TEST_F(Geometric, CircleFitOutputsStatisticsAndDrawing) {
  CZetSetting::Inst().SetDefaultAnnotationColor(0x123456);
  // An ellipse-like set: radii 9 and 11 alternate around (50, 40).
  CZetObject oval(ZET_OBJ_POINT_ARRAY);
  for (int i = 0; i < 8; ++i) {
    const double r = i % 2 ? 11 : 9, t = 2 * kPi * i / 8;
    oval.Ref<CZetPointVector>().PushBack(CZetPoint(50 + r * std::cos(t), 40 + r * std::sin(t)));
  }
  const struct {
    const char* what;
    CZetObject pts;
    double color;
    int drawnColor;  // -1: nothing drawn
    double diameter, minDiameter, maxDiameter, circularity, ovality, std;
  } cases[] = {
      {"exact, default colour", CirclePoints(50, 40, 10, 12), 0, 0x123456, 20, 20, 20, 100, 0, 0},
      {"own colour", CirclePoints(50, 40, 10, 12), 255.9, 255, 20, 20, 20, 100, 0, 0},
      {"not drawn", CirclePoints(50, 40, 10, 12), -1, -1, 20, 20, 20, 100, 0, 0},
      {"-2 is a colour", CirclePoints(50, 40, 10, 12), -2, -2, 20, 20, 20, 100, 0, 0},
      {"oval", oval, 0, 0x123456, 20, 18, 22, 9.0 / 11 * 100, 2.0 * 100 / 20, 1},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.what);
    const CRun r = Exec("PtsToBestCircle", {V(0.0), c.pts, V(false), V(1.0), V(c.color)});
    ASSERT_EQ(r.status, 0);
    const double R = r.Out(0).AsDouble() / 2;
    const CZetPoint ctr = Pt(r.Out(3));
    EXPECT_NEAR(2 * R, c.diameter, 1e-9);
    EXPECT_NEAR(ctr.x, 50, 1e-9);
    EXPECT_NEAR(ctr.y, 40, 1e-9);
    EXPECT_EQ(Pt(r.Out(4)), CZetPoint(ctr.x - R, ctr.y - R));  // top left
    EXPECT_EQ(Pt(r.Out(5)), CZetPoint(ctr.x + R, ctr.y - R));
    EXPECT_EQ(Pt(r.Out(6)), CZetPoint(ctr.x + R, ctr.y + R));  // bottom right, then left
    EXPECT_EQ(Pt(r.Out(7)), CZetPoint(ctr.x - R, ctr.y + R));
    EXPECT_NEAR(r.Out(12).AsDouble(), c.circularity, 1e-9);
    EXPECT_NEAR(r.Out(13).AsDouble(), c.ovality, 1e-9);
    EXPECT_NEAR(r.Out(14).AsDouble(), c.std, 1e-9);
    EXPECT_NEAR(r.Out(10).AsDouble(), c.minDiameter, 1e-9);
    EXPECT_NEAR(r.Out(11).AsDouble(), c.maxDiameter, 1e-9);
    ASSERT_EQ(r.annotations.size(), c.drawnColor == -1 ? 0u : 1u);
    if (c.drawnColor == -1) continue;
    const host::SAnnotationRecord& a = r.annotations[0];
    EXPECT_EQ(a.op, "AddCircle");
    EXPECT_EQ(Field(a, "color").AsDouble(), c.drawnColor);
    EXPECT_EQ(*Field(a, "circle").Get<CZetCircle>(), CZetCircle(ctr.x, ctr.y, R));
    EXPECT_FALSE(Field(a, "fill").AsBool());
  }
  CZetSetting::Inst().SetDefaultAnnotationColor(0x00FF00);
}

// Points near 1e300, on circles whose squared radii overflow: every output finite,
// the oval's statistics those of the small one scaled up.
TEST_F(Geometric, CircleFitOfHugeCoordinatesStaysFinite) {
  const double scale = 1e298;
  CZetObject oval(ZET_OBJ_POINT_ARRAY);
  for (int i = 0; i < 8; ++i) {
    const double r = (i % 2 ? 11 : 9) * scale, t = 2 * kPi * i / 8;
    oval.Ref<CZetPointVector>().PushBack(
        CZetPoint(50 * scale + r * std::cos(t), -40 * scale + r * std::sin(t)));
  }
  for (const double percent : {0.0, 25.0}) {
    SCOPED_TRACE(percent);
    const CRun r = Exec("PtsToBestCircle", {V(percent), oval, V(false), V(1.0), V(-1.0)});
    ASSERT_EQ(r.status, 0);
    for (int out : {0, 2, 10, 11, 12, 13, 14}) EXPECT_TRUE(std::isfinite(r.Out(out).AsDouble())) << out;
    EXPECT_TRUE(std::isfinite(Pt(r.Out(3)).x) && std::isfinite(Pt(r.Out(3)).y));
    if (percent == 0) {
      EXPECT_NEAR(r.Out(0).AsDouble() / scale, 20, 1e-9);
      EXPECT_NEAR(r.Out(2).AsDouble() / scale, 1, 1e-9);   // avg fit error
      EXPECT_NEAR(r.Out(14).AsDouble() / scale, 1, 1e-9);  // std deviation
      EXPECT_NEAR(r.Out(13).AsDouble(), 10, 1e-9);
    }
  }
}

TEST_F(Geometric, CircleFitFailuresAndVariadicPoints) {
  const struct {
    const char* what;
    std::vector<CZetObject> in;
    const char* source;
  } cases[] = {
      {"collinear", {V(0.0), LinePoints(6)}, nullptr},
      {"no points", {V(0.0), PtArr({})}, nullptr},
      {"percent -1", {V(-1.0), CirclePoints(0, 0, 5, 8)}, nullptr},
      {"negative tolerance", {V(0.0), CirclePoints(0, 0, 5, 8), V(true), V(-2.0)}, "PtsToBestCircle"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.what);
    const CRun r = Exec("PtsToBestCircle", c.in);
    EXPECT_EQ(r.status, 3);
    EXPECT_TRUE(r.annotations.empty());
    ASSERT_EQ(r.reports.size(), c.source ? 1u : 0u);
    if (c.source) {
      EXPECT_EQ(r.Report(0).source, c.source);
    } else {
      EXPECT_EQ(r.Out(0).AsDouble(), 0);
    }
  }
  std::vector<CZetObject> in = {V(0.0), V(false), V(1.0), V(-1.0)};
  for (const CZetPoint& p : Pts(CirclePoints(3, 4, 5, 7))) in.push_back(V(p));
  const CRun inf = Exec("PtsToBestCircleInf", in);
  ASSERT_EQ(inf.status, 0);
  EXPECT_EQ(inf.Out(1).AsDouble(), 7);
  EXPECT_NEAR(inf.Out(0).AsDouble(), 10, 1e-12);
  in.resize(6);  // two points
  EXPECT_EQ(Exec("PtsToBestCircleInf", in).status, 3);
}

TEST_F(Geometric, RakeLineFitInDegrees) {
  // Teeth every 4 px along y = 10; tooth 3 missing, tooth 6 found a stray edge.
  CZetObject pts(ZET_OBJ_POINT_ARRAY);
  for (int i = 0; i < 12; ++i)
    if (i != 3) pts.Ref<CZetPointVector>().PushBack(CZetPoint(4 * i, i == 6 ? 16 : 10));
  Unit(EZetAngleUnit::kDegrees);
  const CRun r = Exec("RakeLineFit", {V(0.0), pts, V(0.5), V(5.0)});
  ASSERT_EQ(r.status, 0);
  EXPECT_EQ(r.Out(0).AsDouble(), 10);
  EXPECT_EQ(Ln(r.Out(1)), CZetLine(0, 10));
  EXPECT_EQ(Pts(r.Out(2)), std::vector<CZetPoint>{CZetPoint(24, 16)});
  // 5 radians would let the stray in.
  Unit(EZetAngleUnit::kRadians);
  EXPECT_EQ(Exec("RakeLineFit", {V(0.0), pts, V(0.0), V(5.0)}).Out(0).AsDouble(), 11);
}

}  // namespace
}  // namespace zet::test
