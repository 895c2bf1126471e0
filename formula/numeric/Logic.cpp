// Boolean logic: set, NOT, and the variadic AND, OR and XOR.
#include "frame/Instr.h"

namespace zet {
namespace {

// Every instruction here has one Boolean input "bool"; its default when unwired is
// false.
CDescriber& Logic(CDescriber& d, const char* name, const char* description) {
  return d.Head(name, description).Input(kTypeBool, "bool", false);
}

class CBooleanSet final : public TInstr<CBooleanSet> {
 public:
  static void Describe(CDescriber& d) {
    Logic(d, "SetBoolean", "Sets a boolean to the specified value").Output(kTypeBool, "output");
  }
  int Execute(IXInstrContext* ctx) override { return ExecuteCopy(ctx); }
};

class CNot final : public TInstr<CNot> {
 public:
  static void Describe(CDescriber& d) {
    Logic(d, "NOT", "Boolean NOT").Output(kTypeBool, "negated input");
  }
  int Execute(IXInstrContext* ctx) override {
    CArgs a(ctx);
    a.Out(0) = !a.Bool(0);
    return kOk;
  }
};

// Input 0 is read whatever the count is. Once the result is false the remaining
// inputs are not read at all; OR and XOR read every input.
class CAnd final : public TInstr<CAnd> {
 public:
  static void Describe(CDescriber& d) {
    Logic(d, "AND", "Boolean AND; true if all inputs are true")
        .Variadic()
        .Output(kTypeBool, "and result");
  }
  int Execute(IXInstrContext* ctx) override {
    CArgs a(ctx);
    const int n = a.Count();
    bool r = a.Bool(0);
    for (int i = 1; i < n && r; ++i) r = a.Bool(i);
    a.Out(0) = r;
    return kOk;
  }
};

class COr final : public TInstr<COr> {
 public:
  static void Describe(CDescriber& d) {
    Logic(d, "OR", "Boolean OR; true if any input is true")
        .Variadic()
        .Output(kTypeBool, "or result");
  }
  int Execute(IXInstrContext* ctx) override {
    CArgs a(ctx);
    const int n = a.Count();
    bool r = a.Bool(0);
    for (int i = 1; i < n; ++i) r = a.Bool(i) || r;
    a.Out(0) = r;
    return kOk;
  }
};

class CXor final : public TInstr<CXor> {
 public:
  static void Describe(CDescriber& d) {
    Logic(d, "XOR", "Boolean XOR; true if an odd number of inputs is true")
        .Variadic()
        .Output(kTypeBool, "xor result");
  }
  int Execute(IXInstrContext* ctx) override {
    CArgs a(ctx);
    const int n = a.Count();
    bool r = a.Bool(0);
    for (int i = 1; i < n; ++i) r = r != a.Bool(i);
    a.Out(0) = r;
    return kOk;
  }
};

}  // namespace
}  // namespace zet

#define ZET_FAMILY_Logic ZET_THIS_FAMILY
#include "frame/Factories.def"
