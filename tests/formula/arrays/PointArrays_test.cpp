// The instructions of point arrays alone: Extrema with its empty-array extremes, Sort
// by its six criteria, and Remove Isolated Outliers (the clusterer itself is tested
// in the platform's tests; here its use: spacings, the winner, the outputs, failures).
#include <cfloat>
#include <cmath>
#include <limits>

#include "Harness.h"

namespace zet::test {
namespace {

const double kNaN = std::numeric_limits<double>::quiet_NaN();

std::vector<CZetPoint> Points(const CZetObject& o) {
  const CZetPointVector* v = o.Get<CZetPointVector>();
  if (!v) ADD_FAILURE() << "not a point array: type " << o.GetType();
  return v ? v->Std() : std::vector<CZetPoint>{};
}

CZetObject Arr(const std::vector<CZetPoint>& v) {
  CZetObject o(ZET_OBJ_POINT_ARRAY);
  o.Ref<CZetPointVector>().Std() = v;
  return o;
}

TEST(PointArrays, ExtremaScanFromTheLargestDoubles) {
  const struct {
    std::vector<CZetPoint> in;
    double left, right, top, bottom;
  } cases[] = {
      {{{1, 5}, {3, 2}, {2, 9}}, 1, 3, 2, 9},
      {{}, DBL_MAX, -DBL_MAX, DBL_MAX, -DBL_MAX},
      {{{kNaN, 4}, {2, kNaN}}, 2, 2, 4, 4},
      {{{-7, -7}}, -7, -7, -7, -7},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.in.size());
    const CRun r = Exec("_Zet_Array_CPArrExtrema_", {Arr(c.in)});
    EXPECT_EQ(r.status, 0);
    EXPECT_EQ(r.Out(0).AsDouble(), c.left);
    EXPECT_EQ(r.Out(1).AsDouble(), c.right);
    EXPECT_EQ(r.Out(2).AsDouble(), c.top);
    EXPECT_EQ(r.Out(3).AsDouble(), c.bottom);
  }
}

TEST(PointArrays, SortBySixCriteria) {
  const CZetObject in = Arr({{2, 1}, {1, 3}, {3, 0}});
  const struct {
    int criterion;
    std::vector<CZetPoint> want;
  } cases[] = {
      {0, {{1, 3}, {2, 1}, {3, 0}}}, {1, {{3, 0}, {2, 1}, {1, 3}}},  {2, {{3, 0}, {2, 1}, {1, 3}}},
      {3, {{1, 3}, {2, 1}, {3, 0}}}, {4, {{2, 1}, {3, 0}, {1, 3}}},  {5, {{1, 3}, {3, 0}, {2, 1}}},
      {6, {{1, 3}, {2, 1}, {3, 0}}}, {-1, {{1, 3}, {2, 1}, {3, 0}}},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.criterion);
    SRunOptions opt;
    opt.params = {V(c.criterion)};
    const CRun r = Exec("_Zet_Array_CPArrSort_", {in}, opt);
    EXPECT_EQ(r.status, 0);
    EXPECT_EQ(Points(r.Out(0)), c.want);
  }
  EXPECT_TRUE(Points(Exec("_Zet_Array_CPArrSort_", {Arr({})}).Out(0)).empty());
}

std::vector<CZetPoint> OnX(std::initializer_list<double> xs) {
  std::vector<CZetPoint> p;
  for (double x : xs) p.emplace_back(x, 0);
  return p;
}

TEST(PointArrays, RemoveIsolatedOutliersKeepsTheLargestCluster) {
  // A regular row with one point lifted off it: the point and both neighbours get
  // large spacings (a neighbour takes the larger of its two distances).
  std::vector<CZetPoint> lifted = OnX({0, 10, 20, 30, 40, 50, 60});
  lifted[3].y = 50;
  const struct {
    const char* what;
    std::vector<CZetPoint> in;
    double tolerance;
    std::vector<CZetPoint> good, bad;
    double percent;
  } cases[] = {
      {"a closing gap", OnX({0, 10, 20, 30, 37, 40}), 1, OnX({0, 10, 20, 30}), OnX({37, 40}), 66},
      {"one lifted", lifted, 1, OnX({0, 10, 50, 60}), {{20, 0}, {30, 50}, {40, 0}}, 57},
      {"tolerance 0", OnX({0, 1, 2, 3}), 0, OnX({0}), OnX({1, 2, 3}), 25},
      // Spacings 1, 2, 2: joined at a difference of 1, all three would be one cluster.
      {"a difference equal to the tolerance does not join", OnX({0, 1, 3}), 1, OnX({1, 3}),
       OnX({0}), 66},
      {"the earlier of equal clusters", OnX({0, 1, 2, 5}), 0.5, OnX({0, 1}), OnX({2, 5}), 50},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.what);
    const CRun r = Exec("Remove Isolated Outliers", {Arr(c.in), V(c.tolerance)});
    EXPECT_EQ(r.status, 0);
    EXPECT_TRUE(r.reports.empty());
    EXPECT_EQ(Points(r.Out(0)), c.good);
    EXPECT_EQ(Points(r.Out(1)), c.bad);
    EXPECT_EQ(r.Out(2).AsDouble(), c.percent);
  }
}

TEST(PointArrays, RemoveIsolatedOutliersFailsEmptied) {
  const struct {
    std::vector<CZetPoint> in;
    double tolerance;
    bool reported;
  } cases[] = {{OnX({0, 1}), 1, false},
               {{}, 1, false},
               {OnX({0, 1, 2}), -1, true},
               {OnX({0, 1}), -1, false}};
  for (const auto& c : cases) {
    SCOPED_TRACE(testing::Message() << c.in.size() << " points, tolerance " << c.tolerance);
    SRunOptions opt;
    opt.outputs = {Arr(OnX({9})), Arr(OnX({9})), V(50.0)};
    const CRun r = Exec("Remove Isolated Outliers", {Arr(c.in), V(c.tolerance)}, opt);
    EXPECT_EQ(r.status, 3);
    EXPECT_TRUE(Points(r.Out(0)).empty());
    EXPECT_TRUE(Points(r.Out(1)).empty());
    EXPECT_EQ(r.Out(2).AsDouble(), 0.0);
    ASSERT_EQ(r.reports.size(), c.reported ? 1u : 0u);
    if (c.reported) {
      EXPECT_EQ(r.Report(0).level, 2);
      EXPECT_EQ(r.Report(0).source, "Remove Isolated Outliers");
      EXPECT_EQ(r.Report(0).text, "Negative tolerance is not a valid input.");
    }
  }
}

}  // namespace
}  // namespace zet::test
