// Trigonometry in the user's angle unit: sine, cosine and tangent take an angle in
// that unit, the inverse functions give one, both converted at this boundary through
// the platform's angle translator. The two fixed converters between degrees and
// radians and the three constants ignore the preference.
#include <cmath>

#include "frame/Instr.h"
#include "zet/ZetGeometry.h"
#include "zet/ZetSetting.h"

namespace zet {
namespace {

CDescriber& Unary(CDescriber& d, const char* name, const char* input, const char* output,
                  const char* description) {
  return d.Head(name, description).Input(kTypeNumber, input, 0.0).Output(kTypeNumber, output);
}

CDescriber& Constant(CDescriber& d, const char* name, const char* output, const char* description) {
  return d.Head(name, description).Output(kTypeNumber, output);
}

class CSin final : public TInstr<CSin> {
 public:
  static void Describe(CDescriber& d) { Unary(d, "Sin", "angle", "sin", "Calculates the sine"); }
  int Execute(IXInstrContext* ctx) override {
    CArgs a(ctx);
    a.Out(0) = std::sin(CZetAngleTr::ToRad(a.Number(0)));
    return kOk;
  }
};

class CCos final : public TInstr<CCos> {
 public:
  static void Describe(CDescriber& d) { Unary(d, "Cos", "angle", "cos", "Calculates the cosine"); }
  int Execute(IXInstrContext* ctx) override {
    CArgs a(ctx);
    a.Out(0) = std::cos(CZetAngleTr::ToRad(a.Number(0)));
    return kOk;
  }
};

class CTan final : public TInstr<CTan> {
 public:
  static void Describe(CDescriber& d) { Unary(d, "Tan", "angle", "tan", "Calculates the tangent"); }
  int Execute(IXInstrContext* ctx) override {
    CArgs a(ctx);
    a.Out(0) = std::tan(CZetAngleTr::ToRad(a.Number(0)));
    return kOk;
  }
};

// Out of [-1, 1] asin and acos give NaN, written as it comes; not a failure.
class CArcSin final : public TInstr<CArcSin> {
 public:
  static void Describe(CDescriber& d) {
    Unary(d, "ArcSin", "sin", "angle", "Calculates the arcsine");
  }
  int Execute(IXInstrContext* ctx) override {
    CArgs a(ctx);
    a.Out(0) = CZetAngleTr::ToPrefs(std::asin(a.Number(0)), true);
    return kOk;
  }
};

class CArcCos final : public TInstr<CArcCos> {
 public:
  static void Describe(CDescriber& d) {
    Unary(d, "ArcCos", "cos", "angle", "Calculates the arccosine");
  }
  int Execute(IXInstrContext* ctx) override {
    CArgs a(ctx);
    a.Out(0) = CZetAngleTr::ToPrefs(std::acos(a.Number(0)), true);
    return kOk;
  }
};

class CArcTan final : public TInstr<CArcTan> {
 public:
  static void Describe(CDescriber& d) {
    Unary(d, "ArcTan", "tan", "angle", "Calculates the arctangent");
  }
  int Execute(IXInstrContext* ctx) override {
    CArgs a(ctx);
    a.Out(0) = CZetAngleTr::ToPrefs(std::atan(a.Number(0)), true);
    return kOk;
  }
};

// Multiplied first, then divided, so that 180 degrees gives Pi exactly.
class CDeg2Rad final : public TInstr<CDeg2Rad> {
 public:
  static void Describe(CDescriber& d) {
    Unary(d, "DegToRad", "angle", "radians", "Converts degrees input value to radians");
  }
  int Execute(IXInstrContext* ctx) override {
    CArgs a(ctx);
    a.Out(0) = (a.Number(0) * CZetGeometry::Pi) / 180.0;
    return kOk;
  }
};

class CRad2Deg final : public TInstr<CRad2Deg> {
 public:
  static void Describe(CDescriber& d) {
    Unary(d, "RadToDeg", "angle", "degrees", "Converts radians input value to degrees.");
  }
  int Execute(IXInstrContext* ctx) override {
    CArgs a(ctx);
    a.Out(0) = (a.Number(0) * 180.0) / CZetGeometry::Pi;
    return kOk;
  }
};

class CGetPi final : public TInstr<CGetPi> {
 public:
  static void Describe(CDescriber& d) {
    Constant(d, "GetPi", "Pi",
             "Retrieves the value of Pi (as used internally by the application.)");
  }
  int Execute(IXInstrContext* ctx) override {
    CArgs a(ctx);
    a.Out(0) = CZetGeometry::Pi;
    return kOk;
  }
};

class CGetPiDiv2 final : public TInstr<CGetPiDiv2> {
 public:
  static void Describe(CDescriber& d) {
    Constant(d, "GetPiDiv2", "PiDiv2",
             "Retrieves the value of Pi divided by two (as used internally by the "
             "application).");
  }
  int Execute(IXInstrContext* ctx) override {
    CArgs a(ctx);
    a.Out(0) = CZetGeometry::PiDiv2;
    return kOk;
  }
};

class CGetPiDiv4 final : public TInstr<CGetPiDiv4> {
 public:
  static void Describe(CDescriber& d) {
    Constant(d, "GetPiDiv4", "PiDiv4",
             "Retrieves the value of Pi divided by four (as used internally by the "
             "application).");
  }
  int Execute(IXInstrContext* ctx) override {
    CArgs a(ctx);
    a.Out(0) = CZetGeometry::PiDiv4;
    return kOk;
  }
};

}  // namespace
}  // namespace zet

#define ZET_FAMILY_Trigonometric ZET_THIS_FAMILY
#include "frame/Factories.def"
