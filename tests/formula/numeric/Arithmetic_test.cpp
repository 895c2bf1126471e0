// Number arithmetic: results, the kept quirks and the failure reports.
#include <cmath>
#include <limits>

#include "Harness.h"

namespace zet::test {
namespace {

struct SCase {
  const char* instr;
  std::vector<double> in;
  double out;
};

TEST(Arithmetic, Table) {
  const double kNaN = std::numeric_limits<double>::quiet_NaN();
  const SCase cases[] = {
      {"Add", {1, 2, 3}, 6},
      {"Add", {5}, 5},
      {"Add", {}, 0},
      {"Subtract", {10, 3, 2}, 5},
      {"Subtract", {4}, 4},
      {"Multiply", {2, 3, 4}, 24},
      {"Multiply", {7}, 7},
      {"Multiply", {}, 1},
      {"Increment", {1.5}, 2.5},
      {"Decrement", {1.5}, 0.5},
      {"Divide", {1, 4}, 0.25},
      {"Divide", {1, kNaN}, kNaN},  // a NaN denominator divides
      {"Max2", {1, 2}, 2},
      {"Max2", {3, 2}, 3},
      {"Min2", {1, 2}, 1},
      {"Min2", {3, 2}, 2},
      {"Pow", {2, 10}, 1024},
      {"Pow", {-8, 1.0 / 3}, kNaN},
      {"Integer Divide", {7, -2}, -3},
      {"Integer Divide", {-7, 2}, -3},
      {"Integer Divide", {-2147483648.0, -1}, -2147483648.0},  // wraps, no trap
      {"Remainder", {7, -2}, 1},
      {"Remainder", {-7, 3}, -1},
      {"Remainder", {-2147483648.0, -1}, 0},
      {"Abs", {-2.5}, 2.5},
      {"Negate", {2.5}, -2.5},
      {"Copy", {2.5}, 2.5},
      {"Round", {0.5}, 0},
      {"Round", {1.5}, 2},
      {"Round", {2.5}, 2},
      {"Round", {3.5}, 4},
      {"Round", {-2.5}, -2},
      {"Round", {3e9}, -2147483648.0},
      {"Round", {kNaN}, -2147483648.0},
      {"Square", {-3}, 9},
      {"Sqrt", {0}, 0},
      {"Sqrt", {kNaN}, kNaN},
      {"Truncate", {-2.75}, -2},
      {"Truncate", {2.75}, 2},
      {"Truncate", {1e10}, -2147483648.0},
      {"Fractional", {3.0}, 0.0},
      {"Fractional", {-0.25}, -0.25},
      {"Fractional", {-2.75}, -0.75},
      {"Fractional", {4294967296.5}, 4294967296.5 + 2147483648.0},  // kept overflow
  };
  for (const SCase& c : cases) {
    SCOPED_TRACE(std::string(c.instr) + " #" + std::to_string(&c - cases));
    std::vector<CZetObject> in;
    for (double d : c.in) in.push_back(V(d));
    const CRun r = Exec(c.instr, in);
    ASSERT_EQ(r.status, 0);
    ASSERT_FALSE(r.threw);
    const double got = r.Out(0).AsDouble();
    if (std::isnan(c.out))
      EXPECT_TRUE(std::isnan(got)) << got;
    else
      EXPECT_EQ(got, c.out);
  }
}

// Ties and NaNs keep input 1 in both Max2 and Min2; deliberate.
TEST(Arithmetic, MinMaxTieAndNaNKeepSecondInput) {
  const double kNaN = std::numeric_limits<double>::quiet_NaN();
  for (const char* instr : {"Max2", "Min2"}) {
    EXPECT_EQ(Exec(instr, {V(kNaN), V(7.0)}).Out(0).AsDouble(), 7.0) << instr;
    EXPECT_TRUE(std::isnan(Exec(instr, {V(7.0), V(kNaN)}).Out(0).AsDouble())) << instr;
  }
}

TEST(Arithmetic, DividersReportZeroAndKeepOutput) {
  struct {
    const char* instr;
    double den;
    const char* source;
  } cases[] = {{"Divide", 0.0, "Numeric: Divide"},
               {"Divide", -0.0, "Numeric: Divide"},
               {"Integer Divide", 0.0, "Numeric: Integer Divide"},
               {"Integer Divide", 0.4, "Numeric: Integer Divide"}};
  for (const auto& c : cases) {
    SCOPED_TRACE(c.instr);
    SRunOptions opt;
    opt.outputs = {V(42.0)};
    const CRun r = Exec(c.instr, {V(1.0), V(c.den)}, opt);
    EXPECT_EQ(r.status, 3);
    ASSERT_EQ(r.reports.size(), 1u);
    EXPECT_EQ(r.Report(0).level, 2);
    EXPECT_EQ(r.Report(0).source, c.source);
    EXPECT_EQ(r.Report(0).text, "Division by zero");
    EXPECT_EQ(r.Out(0).AsDouble(), 42.0);
  }
}

// The remainder by zero is unguarded on purpose: it leaves Execute as an exception.
TEST(Arithmetic, RemainderByZeroThrows) {
  const CRun r = Exec("Remainder", {V(7.0), V(0.0)});
  EXPECT_TRUE(r.threw);
  EXPECT_EQ(r.exception, "integer division by zero");
  EXPECT_TRUE(r.reports.empty());
}

TEST(Arithmetic, SqrtOfNegativeFailsSilently) {
  SRunOptions opt;
  opt.outputs = {V(5.0)};
  const CRun r = Exec("Sqrt", {V(-1.0)}, opt);
  EXPECT_EQ(r.status, 3);
  EXPECT_TRUE(r.reports.empty());
  EXPECT_EQ(r.Out(0).AsDouble(), 5.0);
  EXPECT_TRUE(std::signbit(Exec("Sqrt", {V(-0.0)}).Out(0).AsDouble()));
}

TEST(Arithmetic, SetNumberCopiesTheWholeValueCopyConverts) {
  EXPECT_EQ(Exec("SetNumber", {V("text")}).Out(0).GetType(), ZET_OBJ_STRING);
  EXPECT_EQ(Exec("Copy", {V("2.5")}).Out(0).GetType(), ZET_OBJ_DOUBLE);
}

}  // namespace
}  // namespace zet::test
