// Trigonometry in both angle units, the fixed converters and the constants.
#include <cmath>

#include "Harness.h"
#include "zet/ZetGeometry.h"
#include "zet/ZetSetting.h"

namespace zet::test {
namespace {

// Every test leaves the process-wide preference in radians.
class Trigonometric : public testing::Test {
 protected:
  void TearDown() override { CZetSetting::Inst().SetAngleUnit(EZetAngleUnit::kRadians); }
};

constexpr double kPi = CZetGeometry::Pi;

// Deliberate: the functions follow the process-wide angle unit; the converters do not.
TEST_F(Trigonometric, BothUnits) {
  const EZetAngleUnit kDeg = EZetAngleUnit::kDegrees, kRad = EZetAngleUnit::kRadians;
  const double kNaN = std::nan("");
  const struct {
    EZetAngleUnit unit;
    const char* instr;
    double in, out;
    bool exact;
  } cases[] = {
      {kDeg, "Sin", 90, 1, false},         {kRad, "Sin", kPi / 2, 1, false},
      {kDeg, "Cos", 180, -1, false},       {kRad, "Cos", kPi, -1, false},
      {kDeg, "Tan", 45, 1, false},         {kRad, "Tan", kPi / 4, 1, false},
      {kDeg, "ArcSin", 1, 90, false},      {kRad, "ArcSin", 1, kPi / 2, false},
      {kDeg, "ArcCos", 0, 90, false},      {kRad, "ArcCos", -1, kPi, false},
      {kDeg, "ArcTan", 1, 45, false},      {kRad, "ArcTan", 1, kPi / 4, false},
      // Out of [-1, 1] the inverse functions write NaN and still succeed.
      {kDeg, "ArcSin", 2, kNaN, false},    {kRad, "ArcSin", 2, kNaN, false},
      {kDeg, "ArcCos", 2, kNaN, false},    {kRad, "ArcCos", 2, kNaN, false},
      {kDeg, "DegToRad", 180, kPi, true},  {kRad, "DegToRad", 180, kPi, true},
      {kDeg, "RadToDeg", kPi, 180, true},  {kRad, "RadToDeg", kPi, 180, true},
      {kDeg, "GetPi", 0, CZetGeometry::Pi, true},
      {kDeg, "GetPiDiv2", 0, CZetGeometry::PiDiv2, true},
      {kRad, "GetPiDiv4", 0, CZetGeometry::PiDiv4, true},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(std::string(c.instr) + " #" + std::to_string(&c - cases));
    CZetSetting::Inst().SetAngleUnit(c.unit);
    const CRun r = Exec(c.instr, {V(c.in)});  // the constants ignore the extra input
    ASSERT_EQ(r.status, 0);
    EXPECT_TRUE(r.reports.empty());
    const double got = r.Out(0).AsDouble();
    if (std::isnan(c.out))
      EXPECT_TRUE(std::isnan(got)) << got;
    else
      EXPECT_NEAR(got, c.out, c.exact ? 0 : 1e-12);
  }
}

}  // namespace
}  // namespace zet::test
