// Number arithmetic: set, the variadic sum, difference and product, increment and
// decrement, the two dividers, min and max of two, power, integer division and
// remainder, and the one-input functions.
#include <cmath>
#include <stdexcept>

#include "frame/Instr.h"

namespace zet {
namespace {

// One number in, one number out; the input is called "number" with default 0.
CDescriber& Unary(CDescriber& d, const char* name, const char* description, const char* output,
                  const char* input = "number") {
  return d.Head(name, description).Input(kTypeNumber, input, 0.0).Output(kTypeNumber, output);
}

class CNumericSet final : public TInstr<CNumericSet> {
 public:
  static void Describe(CDescriber& d) {
    Unary(d, "SetNumber", "Set the output to the specified number value.", "output");
  }
  int Execute(IXInstrContext* ctx) override {
    CArgs a(ctx);
    a.Out(0) = a.In(0);  // the whole value, not a conversion to double
    return kOk;
  }
};

class CAdd final : public TInstr<CAdd> {
 public:
  static void Describe(CDescriber& d) {
    d.Head("Add", "Add numbers.")
        .Input(kTypeNumber, "number", 0.0)
        .Variadic()
        .Output(kTypeNumber, "sum");
  }
  int Execute(IXInstrContext* ctx) override {
    CArgs a(ctx);
    const int n = a.Count();
    double s = 0.0;
    for (int i = 0; i < n; ++i) s = s + a.Number(i);
    a.Out(0) = s;
    return kOk;
  }
};

class CIncrement final : public TInstr<CIncrement> {
 public:
  static void Describe(CDescriber& d) {
    Unary(d, "Increment", "Add 1 to a number to increment it.", "incremented");
  }
  int Execute(IXInstrContext* ctx) override {
    CArgs a(ctx);
    a.Out(0) = a.Number(0) + 1.0;
    return kOk;
  }
};

class CSubtract final : public TInstr<CSubtract> {
 public:
  static void Describe(CDescriber& d) {
    d.Head("Subtract", "Subtract numbers.")
        .Input(kTypeNumber, "number", 0.0)
        .Variadic()
        .Output(kTypeNumber, "difference");
  }
  int Execute(IXInstrContext* ctx) override {
    CArgs a(ctx);
    const int n = a.Count();
    double d = a.Number(0);  // read whatever the count is
    for (int i = 1; i < n; ++i) d = d - a.Number(i);
    a.Out(0) = d;
    return kOk;
  }
};

class CDecrement final : public TInstr<CDecrement> {
 public:
  static void Describe(CDescriber& d) {
    Unary(d, "Decrement", "Subtract 1 from a number to decrement it.", "decremented");
  }
  int Execute(IXInstrContext* ctx) override {
    CArgs a(ctx);
    a.Out(0) = a.Number(0) - 1.0;
    return kOk;
  }
};

class CMultiply final : public TInstr<CMultiply> {
 public:
  static void Describe(CDescriber& d) {
    d.Head("Multiply", "Multiply numbers.")
        .Input(kTypeNumber, "number", 1.0)
        .Variadic()
        .Output(kTypeNumber, "product");
  }
  int Execute(IXInstrContext* ctx) override {
    CArgs a(ctx);
    const int n = a.Count();
    double p = 1.0;
    for (int i = 0; i < n; ++i) p = p * a.Number(i);
    a.Out(0) = p;
    return kOk;
  }
};

class CDivide final : public TInstr<CDivide> {
 public:
  static void Describe(CDescriber& d) {
    d.Head("Divide", "Divide two numbers.")
        .Input(kTypeNumber, "numerator", 0.0)
        .Input(kTypeNumber, "denominator", 1.0)
        .Output(kTypeNumber, "quotient");
  }
  int Execute(IXInstrContext* ctx) override {
    CArgs a(ctx);
    const double den = a.Number(1);
    if (den == 0.0) return a.Fail(kReportError, "Numeric: Divide", "Division by zero");
    a.Out(0) = a.Number(0) / den;
    return kOk;
  }
};

// Both keep input 1 on a tie or a NaN.
class CMax2 final : public TInstr<CMax2> {
 public:
  static void Describe(CDescriber& d) {
    d.Head("Max2", "Output maximum of two numbers.")
        .Input(kTypeNumber, "number", 0.0)
        .Input(kTypeNumber, "number", 0.0)
        .Output(kTypeNumber, "maximum");
  }
  int Execute(IXInstrContext* ctx) override {
    CArgs a(ctx);
    const double x0 = a.Number(0), x1 = a.Number(1);
    a.Out(0) = x0 > x1 ? x0 : x1;
    return kOk;
  }
};

class CMin2 final : public TInstr<CMin2> {
 public:
  static void Describe(CDescriber& d) {
    d.Head("Min2", "Output minimum of two numbers.")
        .Input(kTypeNumber, "number", 0.0)
        .Input(kTypeNumber, "number", 0.0)
        .Output(kTypeNumber, "minimum");
  }
  int Execute(IXInstrContext* ctx) override {
    CArgs a(ctx);
    const double x0 = a.Number(0), x1 = a.Number(1);
    a.Out(0) = x1 > x0 ? x0 : x1;
    return kOk;
  }
};

class CPow final : public TInstr<CPow> {
 public:
  static void Describe(CDescriber& d) {
    d.Head("Pow", "Power function.")
        .Input(kTypeNumber, "number", 0.0)
        .Input(kTypeNumber, "exponent", 1.0)
        .Output(kTypeNumber, "raised");
  }
  int Execute(IXInstrContext* ctx) override {
    CArgs a(ctx);
    a.Out(0) = std::pow(a.Number(0), a.Number(1));
    return kOk;
  }
};

class CIntegerDivide final : public TInstr<CIntegerDivide> {
 public:
  static void Describe(CDescriber& d) {
    d.Head("Integer Divide", "Divide two integer numbers.")
        .Input(kTypeNumber, "numerator", 0.0)
        .Input(kTypeNumber, "denominator", 1.0)
        .Output(kTypeNumber, "quotient");
  }
  int Execute(IXInstrContext* ctx) override {
    CArgs a(ctx);
    const int b = a.OwnInt(1);
    if (b == 0) return a.Fail(kReportError, "Numeric: Integer Divide", "Division by zero");
    const int n = a.OwnInt(0);
    // INT_MIN / -1 overflows: it gives INT_MIN, the two's-complement wrap, rather
    // than the processor's overflow trap.
    a.Out(0) = (b == -1) ? static_cast<int>(0u - static_cast<unsigned>(n)) : n / b;
    return kOk;
  }
};

// Deliberately unguarded: a zero denominator is an integer division by zero, one of
// the two faults that leave Execute as a C++ exception for the host to catch.
class CRemainder final : public TInstr<CRemainder> {
 public:
  static void Describe(CDescriber& d) {
    d.Head("Remainder", "Integer remainder function.")
        .Input(kTypeNumber, "numerator", 0.0)
        .Input(kTypeNumber, "denominator", 1.0)
        .Output(kTypeNumber, "remainder");
  }
  int Execute(IXInstrContext* ctx) override {
    CArgs a(ctx);
    const int b = a.OwnInt(1);
    const int n = a.OwnInt(0);
    if (b == 0) throw std::domain_error("integer division by zero");
    a.Out(0) = (b == -1) ? 0 : n % b;  // INT_MIN % -1 is 0, not a trap
    return kOk;
  }
};

class CAbs final : public TInstr<CAbs> {
 public:
  static void Describe(CDescriber& d) {
    Unary(d, "Abs", "Returns the absolute value of the input number.", "abs(number)");
  }
  int Execute(IXInstrContext* ctx) override {
    CArgs a(ctx);
    a.Out(0) = std::fabs(a.Number(0));
    return kOk;
  }
};

class CNegate final : public TInstr<CNegate> {
 public:
  static void Describe(CDescriber& d) {
    Unary(d, "Negate", "Returns the negated value of the number.", "negated number");
  }
  int Execute(IXInstrContext* ctx) override {
    CArgs a(ctx);
    a.Out(0) = -a.Number(0);
    return kOk;
  }
};

class CCopy final : public TInstr<CCopy> {
 public:
  static void Describe(CDescriber& d) {
    Unary(d, "Copy", "Returns a copy of the input number.", "copy of number");
  }
  int Execute(IXInstrContext* ctx) override {
    CArgs a(ctx);
    a.Out(0) = a.Number(0);  // converted to a number, unlike SetNumber
    return kOk;
  }
};

class CRound final : public TInstr<CRound> {
 public:
  static void Describe(CDescriber& d) {
    Unary(d, "Round", "Returns the number rounded to the nearest integer.", "rounded number");
  }
  int Execute(IXInstrContext* ctx) override {
    CArgs a(ctx);
    a.Out(0) = static_cast<int>(ZetRoundInt32(a.Number(0)));
    return kOk;
  }
};

class CSquare final : public TInstr<CSquare> {
 public:
  static void Describe(CDescriber& d) { Unary(d, "Square", "Returns n*n.", "n squared", "n"); }
  int Execute(IXInstrContext* ctx) override {
    CArgs a(ctx);
    a.Out(0) = a.Number(0) * a.Number(0);
    return kOk;
  }
};

class CSqrt final : public TInstr<CSqrt> {
 public:
  static void Describe(CDescriber& d) {
    Unary(d, "Sqrt", "Returns the square root of n.", "sqrt of n", "n");
  }
  int Execute(IXInstrContext* ctx) override {
    CArgs a(ctx);
    const double x = a.Number(0);
    if (x < 0) return kFail;  // silently; -0.0 and NaN go on to the root
    a.Out(0) = std::sqrt(x);
    return kOk;
  }
};

class CTruncate final : public TInstr<CTruncate> {
 public:
  static void Describe(CDescriber& d) {
    Unary(d, "Truncate", "Returns the integer part of a number.", "integer part of number");
  }
  int Execute(IXInstrContext* ctx) override {
    CArgs a(ctx);
    a.Out(0) = static_cast<int>(ZetTruncInt32(a.Number(0)));
    return kOk;
  }
};

// For |x| >= 2^31 the conversion gives INT32_MIN and the output is x + 2^31; kept.
class CFractional final : public TInstr<CFractional> {
 public:
  static void Describe(CDescriber& d) {
    Unary(d, "Fractional", "Returns the fractional part of a number.", "fractional part of number");
  }
  int Execute(IXInstrContext* ctx) override {
    CArgs a(ctx);
    const double x = a.Number(0);
    a.Out(0) = x - static_cast<double>(ZetTruncInt32(x));
    return kOk;
  }
};

}  // namespace
}  // namespace zet

#define ZET_FAMILY_Arithmetic ZET_THIS_FAMILY
#include "frame/Factories.def"
