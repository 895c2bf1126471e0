// Comparisons: the operators with NaN, and the absolute-epsilon equality.
#include <cfloat>
#include <cmath>
#include <limits>

#include "Harness.h"

namespace zet::test {
namespace {

TEST(Comparisons, Table) {
  const double kNaN = std::numeric_limits<double>::quiet_NaN();
  const double kInf = std::numeric_limits<double>::infinity();
  const struct {
    const char* instr;
    double a, b;
    bool out;
  } cases[] = {
      {"Greater", 2, 1, true},       {"Greater", 1, 1, false},     {"Greater", 1, 2, false},
      {"GreaterOrEq", 1, 1, true},   {"GreaterOrEq", 1, 2, false}, {"Less", 1, 2, true},
      {"Less", 1, 1, false},         {"Less", 2, 1, false},        {"LessOrEq", 1, 1, true},
      {"LessOrEq", 2, 1, false},
      // Any NaN makes every comparison false, NotEq included.
      {"Greater", kNaN, 1, false},   {"GreaterOrEq", 1, kNaN, false},
      {"Less", kNaN, 1, false},      {"LessOrEq", 1, kNaN, false},
      {"Eq", kNaN, kNaN, false},     {"NotEq", kNaN, 1, false},
      {"Eq", kInf, kInf, false},     {"NotEq", kInf, kInf, false},  // inf - inf is NaN
      // Deliberate: one machine epsilon, absolute, whatever the magnitude.
      {"Eq", 0.1 + 0.2, 0.3, true},  {"Eq", 1e-17, 2e-17, true},   {"Eq", -0.0, 0.0, true},
      {"Eq", 1, 1 + DBL_EPSILON, true}, {"Eq", 1, 1 + 2 * DBL_EPSILON, false},
      {"Eq", 1, 1 + 1e-15, false},   {"NotEq", 1, 1 + 1e-15, true},
      {"Eq", 1e20, 1e20 + 1e5, false}, {"NotEq", 1e20, 1e20 + 1e5, true},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(std::string(c.instr) + " #" + std::to_string(&c - cases));
    const CRun r = Exec(c.instr, {V(c.a), V(c.b)});
    ASSERT_EQ(r.status, 0);
    ASSERT_EQ(r.Out(0).GetType(), ZET_OBJ_BOOL);
    EXPECT_EQ(r.Out(0).AsBool(), c.out);
  }
}

}  // namespace
}  // namespace zet::test
