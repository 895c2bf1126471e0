// Helpers of the geometric instruction tests: reading outputs as geometry, the angle
// unit of a test, and the fields of an annotation record.
#pragma once

#include <cmath>
#include <string>
#include <vector>

#include "Harness.h"
#include "zet/ZetSetting.h"

namespace zet::test {

inline CZetPoint Pt(const CZetObject& o) {
  const CZetPoint* p = o.Get<CZetPoint>();
  return p ? *p : CZetPoint(-999, -999);
}
inline CZetLine Ln(const CZetObject& o) {
  const CZetLine* l = o.Get<CZetLine>();
  return l ? *l : CZetLine(-999, -999);
}
inline std::vector<CZetPoint> Pts(const CZetObject& o) {
  const CZetPointVector* v = o.Get<CZetPointVector>();
  return v ? v->Std() : std::vector<CZetPoint>{CZetPoint(-999, -999)};
}
inline std::vector<double> Nums(const CZetObject& o) {
  const CZetNumberVector* v = o.Get<CZetNumberVector>();
  return v ? v->Std() : std::vector<double>{-999};
}

// Whether a number, point or line output is the wanted one within tol (NaN matches NaN).
inline bool Near(double got, double want, double tol) {
  return (std::isnan(got) && std::isnan(want)) || std::fabs(got - want) <= tol;
}
inline testing::AssertionResult Near(const CZetObject& got, const CZetObject& want, double tol) {
  bool same = got.GetType() == want.GetType();
  if (same && want.GetType() == ZET_OBJ_DOUBLE) same = Near(got.AsDouble(), want.AsDouble(), tol);
  if (same && want.GetType() == ZET_OBJ_POINT)
    same = Near(Pt(got).x, Pt(want).x, tol) && Near(Pt(got).y, Pt(want).y, tol);
  if (same && want.GetType() == ZET_OBJ_LINE)
    same = Near(Ln(got).a, Ln(want).a, tol) && Near(Ln(got).d, Ln(want).d, tol);
  if (same && want.GetType() == ZET_OBJ_POINT_ARRAY) same = Pts(got) == Pts(want);
  if (same && want.GetType() == ZET_OBJ_NUMBER_ARRAY) same = Nums(got) == Nums(want);
  if (same) return testing::AssertionSuccess();
  return testing::AssertionFailure() << "got " << (got.GetValue() ? got.GetValue()->Format(12).c_str() : "untyped")
                                     << ", want " << want.GetValue()->Format(12).c_str();
}

// The value of an annotation record's field, untyped when there is none.
inline CZetObject Field(const host::SAnnotationRecord& r, const std::string& name) {
  for (const auto& [key, value] : r.fields)
    if (key == name) return value;
  return CZetObject();
}

inline SRunOptions WithParams(std::vector<CZetObject> params) {
  SRunOptions o;
  o.params = std::move(params);
  return o;
}
inline SRunOptions WithOutputs(std::vector<CZetObject> outputs) {
  SRunOptions o;
  o.outputs = std::move(outputs);
  return o;
}

inline constexpr EZetAngleUnit kDeg = EZetAngleUnit::kDegrees, kRad = EZetAngleUnit::kRadians;

// Every test starts and ends with the angle unit in radians.
class Geometric : public testing::Test {
 protected:
  void SetUp() override { Unit(EZetAngleUnit::kRadians); }
  void TearDown() override { Unit(EZetAngleUnit::kRadians); }
  static void Unit(EZetAngleUnit u) { CZetSetting::Inst().SetAngleUnit(u); }

  // One row of a table: an instruction run in an angle unit, and the outputs it must give.
  struct SCase {
    EZetAngleUnit unit;
    const char* instr;
    std::vector<CZetObject> in;
    std::vector<CZetObject> out;
  };
  static void ExpectTable(const std::vector<SCase>& cases) {
    for (const SCase& c : cases) {
      SCOPED_TRACE(std::string(c.instr) + " #" + std::to_string(&c - cases.data()));
      Unit(c.unit);
      const CRun r = Exec(c.instr, c.in);
      ASSERT_EQ(r.status, 0);
      EXPECT_TRUE(r.reports.empty());
      for (size_t i = 0; i < c.out.size(); ++i)
        EXPECT_TRUE(Near(r.Out(static_cast<int>(i)), c.out[i], 1e-12)) << "output " << i;
    }
  }
};

}  // namespace zet::test
