// Number arithmetic: results, the kept quirks and the failure reports.
#include <cmath>
#include <limits>
#include <stdexcept>

#include "Harness.h"

namespace zet::test {
namespace {

// The same number, NaN matching NaN and the sign of a zero counting.
bool Same(double got, double want) {
  if (std::isnan(want)) return std::isnan(got);
  return got == want && std::signbit(got) == std::signbit(want);
}

TEST(Arithmetic, Table) {
  const double kNaN = std::numeric_limits<double>::quiet_NaN();
  const struct {
    const char* instr;
    std::vector<double> in;
    double out;
  } cases[] = {
      {"_Zet_Numeric_AddNumbers_", {1, 2, 3}, 6},            {"_Zet_Numeric_AddNumbers_", {}, 0},
      {"_Zet_Numeric_SubtractNumbers_", {10, 3, 2}, 5},      {"_Zet_Numeric_SubtractNumbers_", {4}, 4},
      {"_Zet_Numeric_MultiplyNumbers_", {2, 3, 4}, 24},      {"_Zet_Numeric_MultiplyNumbers_", {}, 1},
      {"Increment", {1.5}, 2.5},        {"Decrement", {1.5}, 0.5},
      {"Divide", {1, 4}, 0.25},         {"Divide", {1, kNaN}, kNaN},  // a NaN divides
      {"Max2", {1, 2}, 2},              {"Min2", {3, 2}, 2},
      // Deliberate: on a tie or a NaN, Max2 and Min2 both keep input 1.
      {"Max2", {0.0, -0.0}, -0.0},      {"Min2", {-0.0, 0.0}, 0.0},
      {"Max2", {kNaN, 7}, 7},           {"Max2", {7, kNaN}, kNaN},
      {"Min2", {kNaN, 7}, 7},           {"Min2", {7, kNaN}, kNaN},
      {"Pow", {2, 10}, 1024},           {"Pow", {-8, 1.0 / 3}, kNaN},
      {"Integer Divide", {7, -2}, -3},  {"Integer Divide", {-7, 2}, -3},
      {"Integer Divide", {-2147483648.0, -1}, -2147483648.0},  // wraps, no trap
      {"Remainder", {7, -2}, 1},        {"Remainder", {-7, 3}, -1},
      {"Remainder", {-2147483648.0, -1}, 0},
      {"Abs", {-2.5}, 2.5},             {"Negate", {2.5}, -2.5},
      {"Copy", {2.5}, 2.5},             {"Square", {-3}, 9},
      {"Sqrt", {-0.0}, -0.0},           {"Sqrt", {kNaN}, kNaN},  // neither is below zero
      // Deliberate: Round goes half to even, and out of the 32-bit range it gives INT_MIN.
      {"Round", {0.5}, 0},              {"Round", {1.5}, 2},
      {"Round", {2.5}, 2},              {"Round", {-2.5}, -2},
      {"Round", {3e9}, -2147483648.0},  {"Round", {kNaN}, -2147483648.0},
      {"Truncate", {-2.75}, -2},        {"Truncate", {1e10}, -2147483648.0},
      {"Fractional", {-0.25}, -0.25},   {"Fractional", {-2.75}, -0.75},
      // Deliberate: beyond 2^31 the integer part overflows and Fractional adds 2^31.
      {"Fractional", {4294967296.5}, 4294967296.5 + 2147483648.0},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(std::string(c.instr) + " #" + std::to_string(&c - cases));
    std::vector<CZetObject> in;
    for (double d : c.in) in.push_back(V(d));
    const CRun r = Exec(c.instr, in);
    ASSERT_EQ(r.status, 0);
    ASSERT_FALSE(r.threw);
    EXPECT_TRUE(Same(r.Out(0).AsDouble(), c.out)) << r.Out(0).AsDouble();
  }
}

// Failures leave the output as it was. The dividers report a zero divisor (-0.0 is one
// too, deliberately, rather than dividing to -inf); Sqrt of a negative is silent.
TEST(Arithmetic, FailuresKeepTheOutput) {
  const struct {
    const char* instr;
    double a, b;
    bool reports;  // "Division by zero" from "Numeric: <instr>"
  } cases[] = {{"Divide", 1, 0.0, true},
               {"Divide", 1, -0.0, true},
               {"Integer Divide", 1, 0.0, true},
               {"Integer Divide", 1, 0.4, true},  // the divisor truncates to 0
               {"Sqrt", -1, 0, false}};  // b unused
  for (const auto& c : cases) {
    SCOPED_TRACE(std::string(c.instr) + " #" + std::to_string(&c - cases));
    SRunOptions opt;
    opt.outputs = {V(42.0)};
    const CRun r = Exec(c.instr, {V(c.a), V(c.b)}, opt);
    EXPECT_EQ(r.status, 3);
    EXPECT_EQ(r.Out(0).AsDouble(), 42.0);
    ASSERT_EQ(r.reports.size(), c.reports ? 1u : 0u);
    if (!c.reports) continue;
    EXPECT_EQ(r.Report(0).level, 2);
    EXPECT_EQ(r.Report(0).source, "Numeric: " + std::string(c.instr));
    EXPECT_EQ(r.Report(0).text, "Division by zero");
  }
}

// Deliberate: unlike Integer Divide, the remainder by zero is unguarded and leaves
// Execute as a std::domain_error.
TEST(Arithmetic, RemainderByZeroThrows) {
  const CRun r = Exec("Remainder", {V(7.0), V(0.0)});
  EXPECT_TRUE(r.Threw<std::domain_error>());
  EXPECT_EQ(r.exception, "integer division by zero");  // our text, documented
  EXPECT_TRUE(r.reports.empty());
}

TEST(Arithmetic, SetNumberCopiesTheWholeValueCopyConverts) {
  EXPECT_EQ(Exec("SetNumber", {V("text")}).Out(0).GetType(), ZET_OBJ_STRING);
  EXPECT_EQ(Exec("Copy", {V("2.5")}).Out(0).GetType(), ZET_OBJ_DOUBLE);
}

}  // namespace
}  // namespace zet::test
