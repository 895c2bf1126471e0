// The instructions of number arrays alone: CopyArray and InsertArray, the signal math
// (element-wise arithmetic, ConstMulAdd and its shortcuts, Smooth, Correlate), the
// thresholds and clips, SetRange, Sort and IndexArray, and the statistics. Each table
// row is one behaviour a host's program can see.
#include <cmath>
#include <cstring>
#include <limits>
#include <optional>

#include "Harness.h"

namespace zet::test {
namespace {

const double kNaN = std::numeric_limits<double>::quiet_NaN();
const double kInf = std::numeric_limits<double>::infinity();
// Two of the smallest subnormals: where Smooth's passes come to rest on a peak between
// zero ends (3/4 of it rounds back to it).
const double kTiny2 = 2 * std::numeric_limits<double>::denorm_min();

std::vector<double> Nums(const CZetObject& o) {
  const CZetNumberVector* v = o.Get<CZetNumberVector>();
  if (!v) ADD_FAILURE() << "not a number array: type " << o.GetType();
  return v ? v->Std() : std::vector<double>{};
}

CZetObject Arr(const std::vector<double>& v) {
  CZetObject o(ZET_OBJ_NUMBER_ARRAY);
  o.Ref<CZetNumberVector>().Std() = v;
  return o;
}

// Element-wise equality where NaN equals NaN and -0 differs from 0.
bool SameBits(const std::vector<double>& a, const std::vector<double>& b) {
  if (a.size() != b.size()) return false;
  for (size_t i = 0; i < a.size(); ++i)
    if (!(std::isnan(a[i]) && std::isnan(b[i])) &&
        !(a[i] == b[i] && std::signbit(a[i]) == std::signbit(b[i])))
      return false;
  return true;
}

struct SArrayCase {
  const char* ident;
  std::vector<CZetObject> in;
  std::vector<double> want;
};

void ExpectArrays(const std::vector<SArrayCase>& cases) {
  for (const SArrayCase& c : cases) {
    SCOPED_TRACE(c.ident);
    const CRun r = Exec(c.ident, c.in);
    EXPECT_EQ(r.status, 0);
    EXPECT_TRUE(r.reports.empty());
    EXPECT_TRUE(SameBits(Nums(r.Out(0)), c.want))
        << testing::PrintToString(Nums(r.Out(0))) << " want " << testing::PrintToString(c.want);
  }
}

TEST(NumberArrays, CopyAndInsertArrayClampInsteadOfFailing) {
  const CZetObject abc = NumArr({1, 2, 3});
  ExpectArrays({
      {"_CNArrCopyArray_", {abc, V(1.0), V(-5.0)}, {2, 3}},
      {"_CNArrCopyArray_", {abc, V(0.0), V(2.0)}, {1, 2}},
      {"_CNArrCopyArray_", {abc, V(1.0), V(0.0)}, {}},
      {"_CNArrCopyArray_", {abc, V(3.0), V(1.0)}, {}},
      {"_CNArrCopyArray_", {abc, V(-1.0), V(1.0)}, {}},
      {"_CNArrCopyArray_", {abc, V(kNaN), V(1.0)}, {}},
      {"_CNArrInsertArray_", {NumArr({8, 9}), abc, V(1.0)}, {1, 8, 9, 2, 3}},
      {"_CNArrInsertArray_", {NumArr({8}), abc, V(-3.0)}, {8, 1, 2, 3}},
      {"_CNArrInsertArray_", {NumArr({8}), abc, V(1000.0)}, {1, 2, 3, 8}},
      {"_CNArrInsertArray_", {NumArr({8}), abc, V(kNaN)}, {8, 1, 2, 3}},
      {"_CNArrInsertArray_", {NumArr({}), NumArr({}), V(0.0)}, {}},
  });
}

TEST(NumberArrays, ElementWiseArithmeticKeepsTheCommonLength) {
  const CZetObject three = NumArr({1, -2, 3}), five = NumArr({10, 20, 30, 40, 50});
  ExpectArrays({
      {"_Zet_Array_CNArrMathAdd_", {three, five}, {11, 18, 33}},
      {"_Zet_Array_CNArrMathSubtract_", {five, three}, {9, 22, 27}},
      {"_Zet_Array_CNArrMathMultiply_", {three, five}, {10, -40, 90}},
      {"_Zet_Array_CNArrMathAdd_", {three, NumArr({})}, {}},
      {"_Zet_Array_CNArrMathAbsolute_", {NumArr({-0.0, -kInf, 2})}, {0.0, kInf, 2}},
  });
  // The absolute value clears the sign bit only: a NaN keeps its payload.
  const double payload = -std::nan("0x123");
  const CRun r = Exec("_Zet_Array_CNArrMathAbsolute_", {Arr({payload})});
  uint64_t got, want;
  const double clean = std::fabs(payload);
  std::memcpy(&got, &Nums(r.Out(0))[0], 8);
  std::memcpy(&want, &clean, 8);
  EXPECT_EQ(got, want);
}

TEST(NumberArrays, ConstMulAddShortcutsFromSixteenElements) {
  const auto with = [](size_t n, double special) {
    std::vector<double> v(n, 2.0);
    v[1] = special;
    return Arr(v);
  };
  const auto want = [](size_t n, double first, double special) {
    std::vector<double> v(n, first);
    v[1] = special;
    return v;
  };
  const char* cma = "_Zet_Array_CNArrMathConstMulAdd_";
  ExpectArrays({
      // Below 16 elements the expression runs for every element.
      {cma, {with(10, kNaN), V(0.0), V(5.0)}, want(10, 5, kNaN)},
      {cma, {with(15, kInf), V(0.0), V(0.0)}, want(15, 0, kNaN)},
      {cma, {with(10, -0.0), V(1.0), V(0.0)}, want(10, 2, 0.0)},
      // From 16 on the constants decide first.
      {cma, {with(20, kNaN), V(0.0), V(5.0)}, want(20, 5, 5)},
      {cma, {with(16, kInf), V(0.0), V(0.0)}, want(16, 0, 0)},
      {cma, {with(16, -0.0), V(1.0), V(0.0)}, want(16, 2, -0.0)},
      {cma, {with(16, -0.0), V(1.0), V(1.0)}, want(16, 3, 1)},
      {cma, {with(16, -0.0), V(3.0), V(0.0)}, want(16, 6, -0.0)},
      {cma, {with(16, 1.0), V(3.0), V(-1.0)}, want(16, 5, 2)},
  });
}

TEST(NumberArrays, SmoothPassesEndsAndCircle) {
  const struct {
    std::vector<double> in;
    double passes;
    bool circular, duplicateEnds;
    std::vector<double> want;
  } cases[] = {
      {{0, 0, 4, 0, 0}, 1, false, false, {0, 1, 2, 1, 0}},
      {{0, 0, 4, 0, 0}, 1, true, false, {0, 1, 2, 1, 0}},
      {{4, 0, 0, 0}, 1, true, false, {2, 1, 0, 1}},
      {{0, 0, 4, 0, 0}, 2, false, false, {0, 1, 1.5, 1, 0}},
      {{0, 0, 4, 0, 0}, 1, false, true, {1, 1, 2, 1, 1}},
      {{4, 0, 0, 8}, 1.9, false, false, {4, 1, 2, 8}},
      // 2^31 - 1 passes: done when a pass changes nothing any more.
      {{0, 0, 4, 0, 0}, 2147483647, false, false, {0, kTiny2, kTiny2, kTiny2, 0}},
      {{1, kNaN, 2, 3, 4}, 2147483647, false, false, {1, kNaN, kNaN, kNaN, 4}},
      // Nothing to do: circular output keeps its two extra zeros.
      {{1, 2, 3}, 0, true, false, {1, 2, 3, 0, 0}},
      {{1, 2}, 3, true, true, {1, 2, 0, 0}},
      {{1, 2}, 3, false, false, {1, 2}},
      {{1, 2, 3}, -1, false, true, {1, 2, 3}},
      {{}, 1, true, false, {0, 0}},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(testing::Message()
                 << testing::PrintToString(c.in) << " passes " << c.passes
                 << (c.circular ? " circular" : "") << (c.duplicateEnds ? " duplicate ends" : ""));
    const CRun r = Exec("_Zet_Array_CNArrMathSmooth_",
                        {Arr(c.in), V(c.passes), V(c.circular), V(c.duplicateEnds)});
    EXPECT_EQ(r.status, 0);
    EXPECT_TRUE(SameBits(Nums(r.Out(0)), c.want)) << testing::PrintToString(Nums(r.Out(0)));
  }
}

TEST(NumberArrays, CorrelateStatusesAndReports) {
  const struct {
    std::vector<double> a1, a2;
    CZetObject shift;
    double value, status, used;
    const char* report;  // nullptr: none
  } cases[] = {
      {{1, 2, 3}, {2, 4, 6}, V(0.0), 1, 0, 3, nullptr},
      {{1, 2, 3}, {3, 2, 1}, V(0.0), -1, 0, 3, nullptr},
      {{1, 1, 1}, {1, 2, 3}, V(0.0), 0, 2, 3, "Constant array(s)!"},
      {{1, 2, 3}, {0, 1, 2, 3}, V(1.0), 1, 0, 3, nullptr},
      {{0, 1, 2, 3}, {1, 2, 3}, V(-1.9), 1, 0, 3, nullptr},
      {{1, 2, 3}, {1, 2, 3}, V(3.0), 0, 1, 0, "No array values to correlate!"},
      {{1, 2, 3}, {1, 2, 3}, V(-3.0), 0, 1, 0, "No array values to correlate!"},
      {{}, {1, 2}, V(0.0), 0, 1, 0, "No array values to correlate!"},
      {{1, 2, 3}, {1, 5, 3, 4}, V(-2147483648.0), 0, 1, 0, "No array values to correlate!"},
      {{1, kNaN, 3}, {1, 2, 3}, V(0.0), kNaN, 0, 3, nullptr},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(testing::Message()
                 << testing::PrintToString(c.a1) << " " << testing::PrintToString(c.a2) << " shift "
                 << c.shift.AsDouble());
    const CRun r = Exec("_Zet_Array_CNArrMathCorrelate_", {Arr(c.a1), Arr(c.a2), c.shift});
    EXPECT_EQ(r.status, 0);
    if (std::isnan(c.value))
      EXPECT_TRUE(std::isnan(r.Out(0).AsDouble()));
    else
      EXPECT_NEAR(r.Out(0).AsDouble(), c.value, 1e-15);
    EXPECT_EQ(r.Out(1).AsDouble(), c.status);
    EXPECT_EQ(r.Out(2).AsDouble(), c.used);
    ASSERT_EQ(r.reports.size(), c.report ? 1u : 0u);
    if (c.report) {
      EXPECT_EQ(r.Report(0).level, 1);
      EXPECT_EQ(r.Report(0).source, "Correlate");
      EXPECT_EQ(r.Report(0).text, c.report);
    }
  }
}

TEST(NumberArrays, ThresholdsAndClips) {
  const CZetObject abc = NumArr({1, 2, 3}), withNaN = Arr({kNaN, 2});
  ExpectArrays({
      {"_Zet_Array_CNArrMathThreshold_", {abc, V(2.0), V(1.0), V(0.0)}, {0, 1, 1}},
      {"_Zet_Array_CNArrMathThreshold_", {withNaN, V(0.0), V(1.0), V(-1.0)}, {-1, 1}},
      {"_Zet_Array_CNArrMathThresholdBand_",
       {NumArr({0, 5, 10}), V(8.0), V(2.0), V(1.0), V(0.5), V(0.0)},
       {0, 0.5, 1}},
      {"_Zet_Array_CNArrMathThresholdBand_",
       {NumArr({0, 5, 10}), V(2.0), V(8.0), V(1.0), V(0.5), V(0.0)},
       {0, 0, 1}},
      {"_Zet_Array_CNArrMathThresholdBand_",
       {withNaN, V(8.0), V(2.0), V(1.0), V(0.5), V(0.0)},
       {0.5, 0.5}},
      {"_Zet_Array_CNArrMathClipLow_", {abc, V(2.0), V(0.0)}, {0, 2, 3}},
      {"_Zet_Array_CNArrMathClipLow_", {withNaN, V(5.0), V(0.0)}, {kNaN, 0}},
      {"_Zet_Array_CNArrMathClipHigh_", {abc, V(2.0), V(9.0)}, {1, 9, 9}},
      {"_Zet_Array_CNArrMathClipHigh_", {withNaN, V(0.0), V(9.0)}, {kNaN, 9}},
  });
}

TEST(NumberArrays, SetRangeWrapsOnlyWhenAsked) {
  const CZetObject five = NumArr({0, 0, 0, 0, 0});
  const auto set = [&](double index, double number, bool wrap) {
    return std::vector<CZetObject>{five, V(index), V(number), V(7.0), V(wrap)};
  };
  ExpectArrays({
      {"_Zet_Array_CNArrSetRange_", set(3, 4, false), {0, 0, 0, 7, 7}},
      {"_Zet_Array_CNArrSetRange_", set(3, 4, true), {7, 7, 0, 7, 7}},
      {"_Zet_Array_CNArrSetRange_", set(0, 5, true), {7, 7, 7, 7, 7}},
      {"_Zet_Array_CNArrSetRange_", set(2, 1e9, true), {7, 7, 7, 7, 7}},
      {"_Zet_Array_CNArrSetRange_", set(1, 2.9, false), {0, 7, 7, 0, 0}},
      {"_Zet_Array_CNArrSetRange_", set(-1, 2, true), {0, 0, 0, 0, 0}},
      {"_Zet_Array_CNArrSetRange_", set(1, 0, true), {0, 0, 0, 0, 0}},
      {"_Zet_Array_CNArrSetRange_", set(5, 2, true), {7, 7, 0, 0, 0}},  // the end wraps to 0
      {"_Zet_Array_CNArrSetRange_", set(9, 2, false), {0, 0, 0, 0, 0}},
      {"_Zet_Array_CNArrSetRange_", set(kNaN, 2, true), {0, 0, 0, 0, 0}},
      {"_Zet_Array_CNArrSetRange_", {NumArr({}), V(0.0), V(3.0), V(7.0), V(true)}, {}},
  });
}

TEST(NumberArrays, ReverseSortAndIndexArray) {
  const CZetObject a = NumArr({3, 1, 2});
  ExpectArrays({
      {"_Zet_Array_CNArrReverse_", {a}, {2, 1, 3}},
      {"_Zet_Array_CNArrSort_", {a, V(false)}, {1, 2, 3}},
      {"_Zet_Array_CNArrSort_", {a, V(true)}, {3, 2, 1}},
      {"_Zet_Array_CNArrSort_", {NumArr({})}, {}},
  });
  const struct {
    CZetObject in;
    int method;
    std::vector<double> want;
  } cases[] = {{a, 1, {0, 2, 1}},
               {a, 2, {1, 2, 0}},
               {a, 0, {0, 1, 2}},
               {a, 7, {0, 1, 2}},
               {NumArr({5}), 2, {0}},
               {NumArr({}), 1, {}},
               {NumArr({4, -1, 9, 0}), 1, {2, 0, 3, 1}}};
  for (const auto& c : cases) {
    SCOPED_TRACE(c.method);
    SRunOptions opt;
    opt.params = {V(c.method)};
    const CRun r = Exec("_Zet_Array_CNArrMathIndexArray_", {c.in}, opt);
    EXPECT_EQ(r.status, 0);
    EXPECT_EQ(Nums(r.Out(0)), c.want);
  }
}

TEST(NumberArrays, ExtremaTakeTheFirstOfEqualsAndSkipNaN) {
  const struct {
    std::vector<double> in;
    double max, maxAt, min, minAt;
  } cases[] = {
      {{2, 5, 5}, 5, 1, 2, 0},
      {{}, 0, 0, 0, 0},
      {{3, kNaN, 7, -1, -1}, 7, 2, -1, 3},
      {{kNaN, 1, 2}, kNaN, 0, kNaN, 0},
      {{-kInf, kInf}, kInf, 1, -kInf, 0},
  };
  const auto same = [](double got, double want) {
    return std::isnan(want) ? std::isnan(got) : got == want;
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(testing::PrintToString(c.in));
    const CRun ext = Exec("_Zet_Array_CNArrMathExtrema_", {Arr(c.in)});
    const CRun max = Exec("_Zet_Array_CNArrMathMaximum_", {Arr(c.in)});
    const CRun min = Exec("_Zet_Array_CNArrMathMinimum_", {Arr(c.in)});
    EXPECT_TRUE(same(ext.Out(0).AsDouble(), c.max) && same(max.Out(0).AsDouble(), c.max));
    EXPECT_TRUE(ext.Out(1).AsDouble() == c.maxAt && max.Out(1).AsDouble() == c.maxAt);
    EXPECT_TRUE(same(ext.Out(2).AsDouble(), c.min) && same(min.Out(0).AsDouble(), c.min));
    EXPECT_TRUE(ext.Out(3).AsDouble() == c.minAt && min.Out(1).AsDouble() == c.minAt);
  }
}

TEST(NumberArrays, MeanAndVarianceByRawMoments) {
  const CRun r = Exec("_Zet_Array_CNMeanAndVar_", {NumArr({1, 2, 3, 4})});
  EXPECT_EQ(r.Out(0).AsDouble(), 2.5);
  EXPECT_EQ(r.Out(1).AsDouble(), 1.25);
  EXPECT_DOUBLE_EQ(r.Out(2).AsDouble(), std::sqrt(1.25));
  EXPECT_EQ(r.Out(3).AsDouble(), 4.0);
  const CRun e = Exec("_Zet_Array_CNMeanAndVar_", {NumArr({})});
  for (int i = 0; i < 4; ++i) EXPECT_EQ(e.Out(i).AsDouble(), 0.0);
  // Nearly constant data: the raw-moment variance as computed, whatever its sign.
  const std::vector<double> near(3, 0.1);
  double sum = 0, sumsq = 0;
  for (double x : near) sum += x, sumsq += x * x;
  const double mean = sum / 3, variance = sumsq / 3 - mean * mean;
  const CRun n = Exec("_Zet_Array_CNMeanAndVar_", {Arr(near)});
  EXPECT_EQ(n.Out(1).AsDouble(), variance);
  EXPECT_EQ(std::isnan(n.Out(2).AsDouble()), variance < 0);
}

}  // namespace
}  // namespace zet::test
