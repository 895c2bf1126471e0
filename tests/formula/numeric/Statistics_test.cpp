// Statistics: results of both forms, the population/sample variance split, the 999
// sentinel, and the silent failures that leave the outputs untouched.
#include <cmath>
#include <limits>

#include "Harness.h"

namespace zet::test {
namespace {

std::vector<CZetObject> Nums(std::initializer_list<double> v) {
  std::vector<CZetObject> in;
  for (double d : v) in.push_back(V(d));
  return in;
}

struct SCase {
  const char* instr;
  std::vector<CZetObject> in;
  double out;
  int idx = -1;  // checked when >= 0
};

TEST(Statistics, Table) {
  const double kNaN = std::numeric_limits<double>::quiet_NaN();
  const SCase cases[] = {
      {"_Zet_Numeric_CMin_", Nums({3, 1, 1}), 1, 1},  // the first of equal minima
      {"_Zet_Numeric_CMax_", Nums({1, 3, 3}), 3, 1},
      {"_Zet_Numeric_CMin_", Nums({5}), 5, 0},
      {"_Zet_Numeric_CMax_", Nums({kNaN, 1}), kNaN, 0},  // NaN never compares
      {"_Zet_Numeric_CMean_", Nums({1, 2, 3, 4}), 2.5},
      {"_Zet_Numeric_CVariance_", Nums({1, 2, 3, 4}), 1.25},  // divided by n
      {"_Zet_Numeric-Stat_CCp_", Nums({10, 0, 4, 6}), 1.178511301977579},
      {"_Zet_Numeric-Stat_CCp_", Nums({10, 2, 7, 8, 9}), 8.0 / 6},
      {"_Zet_Numeric-Stat_CCpk_", Nums({10, 0, 4, 6}), 5 / (3 * std::sqrt(2.0))},
      {"_Zet_Numeric-Stat_CCpk_", Nums({10, 2, 7, 8, 9}), 2.0 / 3},  // the nearer limit
      {"_Zet_Numeric-Stat_CCpk_", Nums({10, 2, 3, 4, 5}), 2.0 / 3},
      {"_Zet_Numeric-Stat_CCpk_", Nums({10, 0, 5, 5, 5}), 999},  // no spread: the sentinel
      {"_Zet_Numeric-Stat_CCp_", Nums({10, 0, 5, 5 + 1e-5}), 999},
      {"_Zet_Numeric_CSumArr_", {NumArr({1, 2, 3.5})}, 6.5},
      {"_Zet_Numeric_CSumArr_", {NumArr({})}, 0},
      {"_Zet_Numeric_CMinArr_", {NumArr({3, 1, 1})}, 1, 1},
      {"_Zet_Numeric_CMaxArr_", {NumArr({1, 3, 3})}, 3, 1},
      {"_Zet_Numeric_CMaxArr_", {NumArr({7})}, 7, 0},
      {"_Zet_Numeric_CMeanArr_", {NumArr({1, 2})}, 1.5},
      {"_Zet_Numeric_CVarianceArr_", {NumArr({1, 2, 3, 4})}, 1.6666666666666667},  // by n - 1
      {"_Zet_Default_CCpArr_", {V(10.0), V(0.0), NumArr({4, 6})}, 1.178511301977579},
      {"_Zet_Number-Stat_CCpkArr_", {V(10.0), V(2.0), NumArr({7, 8, 9})}, 2.0 / 3},
      {"_Zet_Number-Stat_CCpkArr_", {V(10.0), V(0.0), NumArr({5, 5})}, 999},
  };
  for (const SCase& c : cases) {
    SCOPED_TRACE(std::string(c.instr) + " #" + std::to_string(&c - cases));
    const CRun r = Exec(c.instr, c.in);
    ASSERT_EQ(r.status, 0);
    const double got = r.Out(0).AsDouble();
    if (std::isnan(c.out))
      EXPECT_TRUE(std::isnan(got)) << got;
    else
      EXPECT_DOUBLE_EQ(got, c.out);
    if (c.idx >= 0) {
      EXPECT_EQ(r.Out(1).GetType(), ZET_OBJ_INT);
      EXPECT_EQ(r.Out(1).AsInt(), c.idx);
    }
  }
}

// Min and Max read input 0 even when the host counts no input.
TEST(Statistics, MinMaxReadFirstInputWhateverTheCount) {
  SRunOptions opt;
  opt.inputCount = 0;
  for (const char* instr : {"_Zet_Numeric_CMin_", "_Zet_Numeric_CMax_"}) {
    const CRun r = Exec(instr, {V(7.0), V(-1.0)}, opt);
    EXPECT_EQ(r.status, 0) << instr;
    EXPECT_EQ(r.Out(0).AsDouble(), 7.0) << instr;
    EXPECT_EQ(r.Out(1).AsInt(), 0) << instr;
  }
}

TEST(Statistics, TooFewSamplesFailSilentlyAndWriteNothing) {
  const SCase cases[] = {
      {"_Zet_Numeric_CMean_", {}, 0},
      {"_Zet_Numeric_CVariance_", Nums({1}), 0},
      {"_Zet_Numeric-Stat_CCp_", Nums({10, 0, 5}), 0},
      {"_Zet_Numeric-Stat_CCpk_", Nums({10, 0, 5}), 0},
      {"_Zet_Numeric_CMinArr_", {NumArr({})}, 0},
      {"_Zet_Numeric_CMaxArr_", {NumArr({})}, 0},
      {"_Zet_Numeric_CMeanArr_", {NumArr({})}, 0},
      {"_Zet_Numeric_CVarianceArr_", {NumArr({1})}, 0},
      {"_Zet_Default_CCpArr_", {V(10.0), V(0.0), NumArr({5})}, 0},
      {"_Zet_Number-Stat_CCpkArr_", {V(10.0), V(0.0), NumArr({})}, 0},
  };
  for (const SCase& c : cases) {
    SCOPED_TRACE(std::string(c.instr) + " #" + std::to_string(&c - cases));
    SRunOptions opt;
    opt.outputs = {V(42.0), V(43.0)};
    const CRun r = Exec(c.instr, c.in, opt);
    EXPECT_EQ(r.status, 3);
    EXPECT_TRUE(r.reports.empty());
    EXPECT_EQ(r.Out(0).AsDouble(), 42.0);
    if (r.outputs.size() > 1) {
      EXPECT_EQ(r.Out(1).AsDouble(), 43.0);
    }
  }
}

}  // namespace
}  // namespace zet::test
