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

// Every run starts with the outputs at kKept; a case expecting kKept expects a silent
// failure that writes nothing.
constexpr double kKept = 42;

TEST(Statistics, Table) {
  const double kNaN = std::numeric_limits<double>::quiet_NaN();
  const struct {
    const char* instr;
    std::vector<CZetObject> in;
    double out;
    int idx = 0;     // output 1 of Min, Max, MinArr and MaxArr
    int count = -2;  // what the host counts; -2: the list size
  } cases[] = {
      // The index is the first extreme's; a NaN never compares.
      {"Min", Nums({3, 1, 1}), 1, 1},     {"Max", Nums({1, 3, 3}), 3, 1},
      {"Min", Nums({5}), 5, 0},           {"Max", Nums({kNaN, 1}), kNaN, 0},
      {"MinArr", {NumArr({3, 1, 1})}, 1, 1}, {"MaxArr", {NumArr({1, 3, 3})}, 3, 1},
      {"MaxArr", {NumArr({7})}, 7, 0},
      {"MinArr", {NumArr({})}, kKept},    {"MaxArr", {NumArr({})}, kKept},
      {"Mean", Nums({1, 2, 3, 4}), 2.5},  {"MeanArr", {NumArr({1, 2})}, 1.5},
      {"Mean", {}, kKept},                {"MeanArr", {NumArr({})}, kKept},
      {"SumArr", {NumArr({1, 2, 3.5})}, 6.5}, {"SumArr", {NumArr({})}, 0},
      // Min and Max read input 0 even when the host counts no input.
      {"Min", Nums({7, -1}), 7, 0, 0},    {"Max", Nums({7, 9}), 7, 0, 0},
      // Deliberate: Variance divides by n, VarianceArr by n - 1.
      {"Variance", Nums({1, 2, 3, 4}), 1.25},
      {"VarianceArr", {NumArr({1, 2, 3, 4})}, 1.6666666666666667},
      {"Variance", Nums({1}), kKept},     {"VarianceArr", {NumArr({1})}, kKept},
      // Inputs HiLim, LoLim, then the samples; Cpk takes the nearer limit.
      {"Cp", Nums({10, 0, 4, 6}), 1.178511301977579},
      {"Cp", Nums({10, 2, 7, 8, 9}), 8.0 / 6},
      {"Cpk", Nums({10, 0, 4, 6}), 5 / (3 * std::sqrt(2.0))},
      {"Cpk", Nums({10, 2, 7, 8, 9}), 2.0 / 3},
      {"Cpk", Nums({10, 2, 3, 4, 5}), 2.0 / 3},
      {"CpArr", {V(10.0), V(0.0), NumArr({4, 6})}, 1.178511301977579},
      {"CpkArr", {V(10.0), V(2.0), NumArr({7, 8, 9})}, 2.0 / 3},
      // Deliberate: with no or a negligible spread the capability is the sentinel 999;
      // fewer than two samples fail.
      {"Cpk", Nums({10, 0, 5, 5, 5}), 999},
      {"Cp", Nums({10, 0, 5, 5 + 1e-5}), 999},
      {"CpkArr", {V(10.0), V(0.0), NumArr({5, 5})}, 999},
      {"Cp", Nums({10, 0, 5}), kKept},    {"Cpk", Nums({10, 0, 5}), kKept},
      {"CpArr", {V(10.0), V(0.0), NumArr({5})}, kKept},
      {"CpkArr", {V(10.0), V(0.0), NumArr({})}, kKept},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(std::string(c.instr) + " #" + std::to_string(&c - cases));
    SRunOptions opt;
    opt.outputs = {V(kKept), V(kKept)};
    opt.inputCount = c.count;
    const CRun r = Exec(c.instr, c.in, opt);
    EXPECT_EQ(r.status, c.out == kKept ? 3 : 0);
    EXPECT_TRUE(r.reports.empty());
    const double got = r.Out(0).AsDouble();
    if (std::isnan(c.out))
      EXPECT_TRUE(std::isnan(got)) << got;
    else
      EXPECT_DOUBLE_EQ(got, c.out);
    if (r.outputs.size() > 1) {
      EXPECT_EQ(r.Out(1).GetType(), c.out == kKept ? ZET_OBJ_DOUBLE : ZET_OBJ_INT);
      EXPECT_EQ(r.Out(1).AsDouble(), c.out == kKept ? kKept : c.idx);
    }
  }
}

}  // namespace
}  // namespace zet::test
