// The point arrays' own instructions: the bounding extremes, a sort by one of six
// criteria, and "Remove Isolated Outliers", which keeps the largest group of points
// whose spacing to their sequence neighbours agrees within a tolerance (the spacing
// and the one-dimensional clusterer are the platform's, shared with the best fits).
#include <cfloat>
#include <cstdint>
#include <vector>

#include "arrays/ArrayCommon.h"
#include "zet/ZetGeometry.h"

namespace zet {
namespace {

// An empty array gives left = top = DBL_MAX and right = bottom = -DBL_MAX, without a
// report: the required result.
class CPArrExtrema final : public TInstr<CPArrExtrema> {
 public:
  static void Describe(CDescriber& d) {
    d.Head("Extrema", "Finds min/max in x/y")
        .Input(kTypePointArray, "arr")
        .Output(kTypeNumber, "left")
        .Output(kTypeNumber, "right")
        .Output(kTypeNumber, "top")
        .Output(kTypeNumber, "bottom");
  }
  int Execute(IXInstrContext* ctx) override {
    CArgs a(ctx);
    double left = DBL_MAX, top = DBL_MAX, right = -DBL_MAX, bottom = -DBL_MAX;
    for (const CZetPoint& p : a.Get<CZetPointVector>(0).Std()) {
      if (p.x < left) left = p.x;  // strictly beyond: NaN never replaces
      if (p.x > right) right = p.x;
      if (p.y < top) top = p.y;
      if (p.y > bottom) bottom = p.y;
    }
    a.Out(0) = left;
    a.Out(1) = right;
    a.Out(2) = top;
    a.Out(3) = bottom;
    return kOk;
  }
};

// One key per criterion, no second key: points with equal keys come out in no
// specified order. A criterion outside 0 .. 5 sorts as 0.
class CPArrSort final : public TInstr<CPArrSort> {
 public:
  static void Describe(CDescriber& d) {
    d.Head("Sort ", "Sorts an array of points according to the user criteria")
        .ParamChoice("Parameters", "sorting criteria", nullptr, 0, 0, 5,
                     {{0, "increasing x"},
                      {1, "decreasing x"},
                      {2, "increasing y"},
                      {3, "decreasing y"},
                      {4, "increasing dist x*x+y*y"},
                      {5, "decreasing dist x*x+y*y"}})
        .Input(kTypePointArray, "arr")
        .Output(kTypePointArray, "sorted");
  }
  int Execute(IXInstrContext* ctx) override {
    CArgs a(ctx);
    const std::vector<CZetPoint>& in = a.Get<CZetPointVector>(0).Std();
    int criterion = a.Param(0).AsInt();
    if (criterion < 0 || criterion > 5) criterion = 0;
    std::vector<CZetPoint> work(in);
    constexpr EOrder increasing = EOrder::kAscending, decreasing = EOrder::kDescending;
    const auto byX = [](const CZetPoint& p) { return p.x; };
    const auto byY = [](const CZetPoint& p) { return p.y; };
    const auto byDist = [](const CZetPoint& p) { return p.x * p.x + p.y * p.y; };
    switch (criterion) {
      case 0: SortByKey(work.begin(), work.end(), byX, increasing); break;
      case 1: SortByKey(work.begin(), work.end(), byX, decreasing); break;
      case 2: SortByKey(work.begin(), work.end(), byY, increasing); break;
      case 3: SortByKey(work.begin(), work.end(), byY, decreasing); break;
      case 4: SortByKey(work.begin(), work.end(), byDist, increasing); break;
      default: SortByKey(work.begin(), work.end(), byDist, decreasing); break;
    }
    a.OutRef<CZetPointVector>(0).Std() = std::move(work);
    return kOk;
  }
};

constexpr const char* kOutliersSource = "Remove Isolated Outliers";

// Every point gets its neighbour spacing as a key; the keys are clustered in index
// order and the most populous cluster (the earliest on a tie) gives the good points.
// Reports, unlike the other array instructions, with level 2 and a fixed source.
class CPArrCluster1D final : public TInstr<CPArrCluster1D> {
 public:
  static void Describe(CDescriber& d) {
    d.Head(kOutliersSource,
           "Outputs one cluster containing the most \"similar\" points as another array.\n"
           "Consecutive points are expected to be equidistant within "
           " the value of the tolerance parameter. Otherwise the points are dismissed.")
        .Input(kTypePointArray, "points")
        .Input(kTypeNumber, "tolerance", 1.0,
               "Max distance between the ideal point and the worst acceptable point")
        .Output(kTypePointArray, "good points")
        .Output(kTypePointArray, "bad points")
        .Output(kTypeNumber, "percent good");
  }
  int Execute(IXInstrContext* ctx) override {
    CArgs a(ctx);
    const std::vector<CZetPoint>& points = a.Get<CZetPointVector>(0).Std();
    const double tolerance = a.Number(1);
    const size_t n = points.size();
    std::vector<CZetPoint>& good = a.OutRef<CZetPointVector>(0).Std();
    std::vector<CZetPoint>& bad = a.OutRef<CZetPointVector>(1).Std();
    good.clear();
    bad.clear();
    a.Out(2) = 0.0;
    if (n < 3) return kFail;
    if (tolerance < 0)
      return a.Fail(kReportError, kOutliersSource, "Negative tolerance is not a valid input.");

    std::vector<double> spacing(n);
    CZetGeometry::NeighbourSpacing(points.data(), n, spacing.data());
    CZetCluster1D clusters;
    clusters.Run(spacing.data(), n, tolerance);
    const std::vector<size_t>& members = clusters.Largest()->members;  // ascending indexes

    good.reserve(members.size());
    bad.reserve(n - members.size());
    size_t next = 0;
    for (size_t i = 0; i < n; ++i) {
      if (next < members.size() && members[next] == i) {
        good.push_back(points[i]);
        ++next;
      } else {
        bad.push_back(points[i]);
      }
    }
    // In unsigned integer arithmetic, as always: 2 of 3 points is 66.
    a.Out(2) = static_cast<double>(static_cast<uint32_t>(100u * members.size() / n));
    return kOk;
  }
};

}  // namespace
}  // namespace zet

#define ZET_FAMILY_PointArrays ZET_THIS_FAMILY
#include "frame/Factories.def"
