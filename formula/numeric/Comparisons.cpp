// Comparisons of two numbers into a Boolean: greater, greater-or-equal, less,
// less-or-equal, and equality within the double epsilon and its negation.
#include <cfloat>
#include <cmath>

#include "frame/Instr.h"

namespace zet {
namespace {

// Inputs "n1" and "n2" (numbers, default 0), one Boolean output.
void Compare(CDescriber& d, const char* name, const char* output, const char* description) {
  d.Head(name, description)
      .Input(kTypeNumber, "n1", 0.0)
      .Input(kTypeNumber, "n2", 0.0)
      .Output(kTypeBool, output);
}

class CGreater final : public TInstr<CGreater> {
 public:
  static void Describe(CDescriber& d) {
    Compare(d, "Greater", "n1 > n2", "Returns true if n1 > n2, false otherwise.");
  }
  int Execute(IXInstrContext* ctx) override {
    CArgs a(ctx);
    a.Out(0) = a.Number(0) > a.Number(1);
    return kOk;
  }
};

class CGreaterOrEqual final : public TInstr<CGreaterOrEqual> {
 public:
  static void Describe(CDescriber& d) {
    Compare(d, "GreaterOrEq", "n1 >= n2", "Returns true if n1 >= n2, false otherwise.");
  }
  int Execute(IXInstrContext* ctx) override {
    CArgs a(ctx);
    a.Out(0) = a.Number(0) >= a.Number(1);
    return kOk;
  }
};

class CLess final : public TInstr<CLess> {
 public:
  static void Describe(CDescriber& d) {
    Compare(d, "Less", "n1 < n2", "Returns true if n1 < n2, false otherwise.");
  }
  int Execute(IXInstrContext* ctx) override {
    CArgs a(ctx);
    a.Out(0) = a.Number(1) > a.Number(0);
    return kOk;
  }
};

class CLessOrEqual final : public TInstr<CLessOrEqual> {
 public:
  static void Describe(CDescriber& d) {
    Compare(d, "LessOrEq", "n1 <= n2", "Returns true if n1 <= n2, false otherwise.");
  }
  int Execute(IXInstrContext* ctx) override {
    CArgs a(ctx);
    a.Out(0) = a.Number(1) >= a.Number(0);
    return kOk;
  }
};

// Equality is an absolute tolerance of one machine epsilon whatever the magnitude:
// 1e20 and 1e20 + 1e5 differ, 1e-17 and 2e-17 are equal. A NaN makes both Eq and
// NotEq false.
class CEqual final : public TInstr<CEqual> {
 public:
  static void Describe(CDescriber& d) {
    Compare(d, "Eq", "n1 == n2", "Returns true if n1 == n2, false otherwise.");
  }
  int Execute(IXInstrContext* ctx) override {
    CArgs a(ctx);
    a.Out(0) = std::fabs(a.Number(0) - a.Number(1)) <= DBL_EPSILON;
    return kOk;
  }
};

class CNotEqual final : public TInstr<CNotEqual> {
 public:
  static void Describe(CDescriber& d) {
    Compare(d, "NotEq", "n1 != n2", "Returns true if n1 != n2, false otherwise.");
  }
  int Execute(IXInstrContext* ctx) override {
    CArgs a(ctx);
    a.Out(0) = std::fabs(a.Number(0) - a.Number(1)) > DBL_EPSILON;
    return kOk;
  }
};

}  // namespace
}  // namespace zet

#define ZET_FAMILY_Comparisons ZET_THIS_FAMILY
#include "frame/Factories.def"
