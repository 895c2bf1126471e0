// Statistics over repeated number inputs and over one number array: minimum and
// maximum with the index of the first extreme, mean, variance, sum, and the process
// capability indices Cp and Cpk against a high and a low tolerance limit.
//
// Every failure (too few samples) returns kFail at once, with no report and no output
// written. A spread below kMinVariance is not a failure: the index is kNoSpread.
#include <cmath>

#include "frame/Instr.h"

namespace zet {
namespace {

constexpr double kMinVariance = 1e-7;
constexpr double kNoSpread = 999.0;

// The sum S and the sum of squares Q of samples, accumulated in index order.
struct SSums {
  double s = 0.0;
  double q = 0.0;
  void Add(double x) {
    s += x;
    q += x * x;
  }
};

// Sample variance (divided by k - 1) of k >= 2 samples.
double SampleVariance(const SSums& m, double k) { return (k * m.q - m.s * m.s) / k / (k - 1); }

double Cp(double hi, double lo, const SSums& m, double k) {
  const double v = SampleVariance(m, k);
  if (v < kMinVariance) return kNoSpread;
  return (hi - lo) / (6.0 * std::sqrt(v));
}

double Cpk(double hi, double lo, const SSums& m, double k) {
  const double v = SampleVariance(m, k);
  if (v < kMinVariance) return kNoSpread;
  const double mu = m.s / k;
  const double below = mu - lo, above = hi - mu;
  return (below < above ? below : above) / (3.0 * std::sqrt(v));
}

// The samples of the variadic forms start at input `first`.
SSums SumInputs(const CArgs& a, int first) {
  SSums m;
  for (int i = first; i < a.Count(); ++i) m.Add(a.Number(i));
  return m;
}

SSums SumArray(const CZetNumberVector& v) {
  SSums m;
  for (unsigned i = 0; i < v.Size(); ++i) m.Add(v[i]);
  return m;
}

// The first extreme of x(0) .. x(n - 1), written to outputs 0 (value) and 1 (its
// index, as an int): x(i) replaces the current extreme m only when replaces(m, x(i)),
// so the first of equal extremes wins. x(0) is read even when n is 0.
template <class Get, class Replaces>
void WriteFirstExtreme(const CArgs& a, int n, Get x, Replaces replaces) {
  double m = x(0);
  int idx = 0;
  for (int i = 1; i < n; ++i) {
    const double xi = x(i);
    if (replaces(m, xi)) {
      m = xi;
      idx = i;
    }
  }
  a.Out(0) = m;
  a.Out(1) = idx;
}

bool Lower(double m, double x) { return m > x; }
bool Higher(double m, double x) { return m < x; }

// ---- Repeated number inputs ----

CDescriber& Variadic(CDescriber& d, const char* name, const char* description) {
  return d.Head(name, description).Input(kTypeNumber, "number", 0.0).Variadic();
}

// Limits first, then the repeated samples.
CDescriber& VariadicCapability(CDescriber& d, const char* name, const char* description) {
  return d.Head(name, description)
      .Input(kTypeNumber, "HiLim", 0.0)
      .Input(kTypeNumber, "LoLim", 0.0)
      .Input(kTypeNumber, "number", 0.0)
      .Variadic();
}

// Input 0 is read whatever the count is; the first of equal minima wins.
class CMin final : public TInstr<CMin> {
 public:
  static void Describe(CDescriber& d) {
    Variadic(d, "Min", "Returns the minimum of all numbers received as arguments.")
        .Output(kTypeNumber, "min")
        .Output(kTypeNumber, "idx");
  }
  int Execute(IXInstrContext* ctx) override {
    CArgs a(ctx);
    WriteFirstExtreme(a, a.Count(), [&](int i) { return a.Number(i); }, Lower);
    return kOk;
  }
};

class CMax final : public TInstr<CMax> {
 public:
  static void Describe(CDescriber& d) {
    Variadic(d, "Max", "Returns the maximum of all numbers received as arguments.")
        .Output(kTypeNumber, "max")
        .Output(kTypeNumber, "idx");
  }
  int Execute(IXInstrContext* ctx) override {
    CArgs a(ctx);
    WriteFirstExtreme(a, a.Count(), [&](int i) { return a.Number(i); }, Higher);
    return kOk;
  }
};

class CMean final : public TInstr<CMean> {
 public:
  static void Describe(CDescriber& d) {
    Variadic(d, "Mean", "Returns the average of all numbers received as arguments.")
        .Output(kTypeNumber, "avg");
  }
  int Execute(IXInstrContext* ctx) override {
    CArgs a(ctx);
    const int n = a.Count();
    if (n < 1) return kFail;
    a.Out(0) = SumInputs(a, 0).s / n;
    return kOk;
  }
};

// The population variance (divided by n); VarianceArr is the sample variance. The two
// differ on purpose.
class CVariance final : public TInstr<CVariance> {
 public:
  static void Describe(CDescriber& d) {
    Variadic(d, "Variance",
             "Returns the variance (square of standard deviation) of all the numbers received "
             "as arguments.")
        .Output(kTypeNumber, "variance");
  }
  int Execute(IXInstrContext* ctx) override {
    CArgs a(ctx);
    const int n = a.Count();
    if (n < 2) return kFail;
    const SSums m = SumInputs(a, 0);
    a.Out(0) = (m.q - m.s * m.s / n) / n;
    return kOk;
  }
};

class CCp final : public TInstr<CCp> {
 public:
  static void Describe(CDescriber& d) {
    VariadicCapability(d, "Cp", "Returns the process capability index Cp")
        .Output(kTypeNumber, "Cp");
  }
  int Execute(IXInstrContext* ctx) override {
    CArgs a(ctx);
    const int k = a.Count() - 2;
    if (k < 2) return kFail;
    a.Out(0) = Cp(a.Number(0), a.Number(1), SumInputs(a, 2), k);
    return kOk;
  }
};

class CCpk final : public TInstr<CCpk> {
 public:
  static void Describe(CDescriber& d) {
    VariadicCapability(d, "Cpk",
                       "Returns the process capability index Cpk (2 sided specification "
                       "limits).")
        .Output(kTypeNumber, "Cpk");
  }
  int Execute(IXInstrContext* ctx) override {
    CArgs a(ctx);
    const int k = a.Count() - 2;
    if (k < 2) return kFail;
    a.Out(0) = Cpk(a.Number(0), a.Number(1), SumInputs(a, 2), k);
    return kOk;
  }
};

// ---- One number array ----

CDescriber& Array(CDescriber& d, const char* name, const char* description) {
  return d.Head(name, description).Input(kTypeNumberArray, "numbers");
}

CDescriber& ArrayCapability(CDescriber& d, const char* name, const char* description) {
  return d.Head(name, description)
      .Input(kTypeNumber, "HiLim", 0.0)
      .Input(kTypeNumber, "LoLim", 0.0)
      .Input(kTypeNumberArray, "numbers");
}

class CSumArr final : public TInstr<CSumArr> {
 public:
  static void Describe(CDescriber& d) {
    Array(d, "SumArr", "Returns the sum of the values in its array argument.")
        .Output(kTypeNumber, "sum");
  }
  int Execute(IXInstrContext* ctx) override {
    CArgs a(ctx);
    a.Out(0) = SumArray(a.Get<CZetNumberVector>(0)).s;
    return kOk;
  }
};

class CMinArr final : public TInstr<CMinArr> {
 public:
  static void Describe(CDescriber& d) {
    Array(d, "MinArr", "Returns the minimum of all the values in the array argument.")
        .Output(kTypeNumber, "min")
        .Output(kTypeNumber, "idx");
  }
  int Execute(IXInstrContext* ctx) override {
    CArgs a(ctx);
    const CZetNumberVector& v = a.Get<CZetNumberVector>(0);
    if (v.Size() == 0) return kFail;
    WriteFirstExtreme(a, static_cast<int>(v.Size()), [&](int i) { return v[i]; }, Lower);
    return kOk;
  }
};

class CMaxArr final : public TInstr<CMaxArr> {
 public:
  static void Describe(CDescriber& d) {
    Array(d, "MaxArr", "Returns the maximum of all the values in the array argument.")
        .Output(kTypeNumber, "max")
        .Output(kTypeNumber, "idx");
  }
  int Execute(IXInstrContext* ctx) override {
    CArgs a(ctx);
    const CZetNumberVector& v = a.Get<CZetNumberVector>(0);
    if (v.Size() == 0) return kFail;
    WriteFirstExtreme(a, static_cast<int>(v.Size()), [&](int i) { return v[i]; }, Higher);
    return kOk;
  }
};

class CMeanArr final : public TInstr<CMeanArr> {
 public:
  static void Describe(CDescriber& d) {
    Array(d, "MeanArr", "Returns the average of all the values in the array argument.")
        .Output(kTypeNumber, "avg");
  }
  int Execute(IXInstrContext* ctx) override {
    CArgs a(ctx);
    const CZetNumberVector& v = a.Get<CZetNumberVector>(0);
    if (v.Size() == 0) return kFail;
    a.Out(0) = SumArray(v).s / v.Size();
    return kOk;
  }
};

// The sample variance (divided by n - 1), unlike Variance.
class CVarianceArr final : public TInstr<CVarianceArr> {
 public:
  static void Describe(CDescriber& d) {
    Array(d, "VarianceArr",
          "Returns the variance (square of standard deviation) of all the values in the array "
          "argument.")
        .Output(kTypeNumber, "variance");
  }
  int Execute(IXInstrContext* ctx) override {
    CArgs a(ctx);
    const CZetNumberVector& v = a.Get<CZetNumberVector>(0);
    if (v.Size() < 2) return kFail;
    a.Out(0) = SampleVariance(SumArray(v), v.Size());
    return kOk;
  }
};

class CCpArr final : public TInstr<CCpArr> {
 public:
  static void Describe(CDescriber& d) {
    ArrayCapability(d, "CpArr",
                    "Returns the process capability index Cp for all the values in the array "
                    "argument.")
        .Output(kTypeNumber, "Cp");
  }
  int Execute(IXInstrContext* ctx) override {
    CArgs a(ctx);
    const CZetNumberVector& v = a.Get<CZetNumberVector>(2);
    if (v.Size() < 2) return kFail;
    a.Out(0) = Cp(a.Number(0), a.Number(1), SumArray(v), v.Size());
    return kOk;
  }
};

class CCpkArr final : public TInstr<CCpkArr> {
 public:
  static void Describe(CDescriber& d) {
    ArrayCapability(d, "CpkArr",
                    "Returns the process capability index Cpk2 sided specification limits) for "
                    "all the valuesin the array argument.")
        .Output(kTypeNumber, "Cpk");
  }
  int Execute(IXInstrContext* ctx) override {
    CArgs a(ctx);
    const CZetNumberVector& v = a.Get<CZetNumberVector>(2);
    if (v.Size() < 2) return kFail;
    a.Out(0) = Cpk(a.Number(0), a.Number(1), SumArray(v), v.Size());
    return kOk;
  }
};

}  // namespace
}  // namespace zet

#define ZET_FAMILY_Statistics ZET_THIS_FAMILY
#include "frame/Factories.def"
