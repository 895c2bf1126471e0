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

struct SCase {
  EZetAngleUnit unit;
  const char* instr;
  double in;
  double out;
  bool exact;
};

TEST_F(Trigonometric, BothUnits) {
  const EZetAngleUnit kDeg = EZetAngleUnit::kDegrees, kRad = EZetAngleUnit::kRadians;
  const SCase cases[] = {
      {kDeg, "Sin", 90, 1, false},         {kRad, "Sin", kPi / 2, 1, false},
      {kDeg, "Cos", 180, -1, false},       {kRad, "Cos", kPi, -1, false},
      {kDeg, "Tan", 45, 1, false},         {kRad, "Tan", kPi / 4, 1, false},
      {kDeg, "Sin", 30, 0.5, false},
      {kDeg, "ArcSin", 1, 90, false},      {kRad, "ArcSin", 1, kPi / 2, false},
      {kDeg, "ArcCos", 0, 90, false},      {kRad, "ArcCos", -1, kPi, false},
      {kDeg, "ArcTan", 1, 45, false},      {kRad, "ArcTan", 1, kPi / 4, false},
      // The fixed converters ignore the preference.
      {kDeg, "DegToRad", 180, kPi, true},  {kRad, "DegToRad", 180, kPi, true},
      {kDeg, "RadToDeg", kPi, 180, true},  {kRad, "RadToDeg", kPi, 180, true},
      {kDeg, "DegToRad", 90, kPi / 2, true},
      {kDeg, "GetPi", 0, CZetGeometry::Pi, true},
      {kDeg, "GetPiDiv2", 0, CZetGeometry::PiDiv2, true},
      {kRad, "GetPiDiv4", 0, CZetGeometry::PiDiv4, true},
  };
  for (const SCase& c : cases) {
    SCOPED_TRACE(std::string(c.instr) + " #" + std::to_string(&c - cases));
    CZetSetting::Inst().SetAngleUnit(c.unit);
    const bool hasInput = !InfoOf(c.instr).inputs.empty();
    const CRun r = Exec(c.instr, hasInput ? std::vector<CZetObject>{V(c.in)}
                                          : std::vector<CZetObject>{});
    ASSERT_EQ(r.status, 0);
    if (c.exact)
      EXPECT_EQ(r.Out(0).AsDouble(), c.out);
    else
      EXPECT_NEAR(r.Out(0).AsDouble(), c.out, 1e-12);
  }
}

// Out of [-1, 1] the inverse functions write NaN and still succeed.
TEST_F(Trigonometric, InverseOutOfDomainWritesNaN) {
  for (EZetAngleUnit unit : {EZetAngleUnit::kDegrees, EZetAngleUnit::kRadians}) {
    CZetSetting::Inst().SetAngleUnit(unit);
    for (const char* instr : {"ArcSin", "ArcCos"}) {
      SCOPED_TRACE(instr);
      const CRun r = Exec(instr, {V(2.0)});
      EXPECT_EQ(r.status, 0);
      EXPECT_TRUE(r.reports.empty());
      EXPECT_TRUE(std::isnan(r.Out(0).AsDouble()));
    }
  }
}

}  // namespace
}  // namespace zet::test
