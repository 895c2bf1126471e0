// Number arrays as signals: element-wise arithmetic, scale and offset, the 1-2-1
// smoothing, and the normalized correlation of two arrays at a shift (the circular
// correlation is in CorrelateCircular.cpp). Every one returns 0; empty and constant
// data are reported (level 1, the display name as source) and counted in outputs.
#include <bit>
#include <cmath>
#include <cstdint>
#include <vector>

#include "arrays/ArrayCommon.h"

namespace zet {
namespace {

constexpr const char* kNoValues = "No array values to correlate!";
constexpr const char* kConstant = "Constant array(s)!";

// out[i] = f(array_1[i], array_2[i]) over the common length; the longer array's
// excess is dropped without a report.
template <class F>
void ZipArrays(const CArgs& a, F f) {
  const std::vector<double>& x = a.Get<CZetNumberVector>(0).Std();
  const std::vector<double>& y = a.Get<CZetNumberVector>(1).Std();
  const size_t n = std::min(x.size(), y.size());
  double* out = SizedOut(a, 0, n);
  for (size_t i = 0; i < n; ++i) out[i] = f(x[i], y[i]);
}

// Clears the sign bit, so -0 becomes 0 and a NaN keeps its payload.
class CNArrMathAbsolute final : public TInstr<CNArrMathAbsolute> {
 public:
  static void Describe(CDescriber& d) {
    d.Head("AbsoluteValue", "Output array = |array|")
        .Input(kTypeNumberArray, "array", {}, "Input array")
        .Output(kTypeNumberArray, "|array|");
  }
  int Execute(IXInstrContext* ctx) override {
    CArgs a(ctx);
    const std::vector<double>& in = a.Get<CZetNumberVector>(0).Std();
    double* out = SizedOut(a, 0, in.size());
    for (size_t i = 0; i < in.size(); ++i) out[i] = std::fabs(in[i]);
    return kOk;
  }
};

class CNArrMathSubtract final : public TInstr<CNArrMathSubtract> {
 public:
  static void Describe(CDescriber& d) {
    d.Head("Subtract", "Output array = array_1 - array_2")
        .Input(kTypeNumberArray, "array_1", {}, "Input array to subtract from")
        .Input(kTypeNumberArray, "array_2", {}, "Input array to subtract")
        .Output(kTypeNumberArray, "array_1 - array_2");
  }
  int Execute(IXInstrContext* ctx) override {
    ZipArrays(CArgs(ctx), [](double x, double y) { return x - y; });
    return kOk;
  }
};

class CNArrMathAdd final : public TInstr<CNArrMathAdd> {
 public:
  static void Describe(CDescriber& d) {
    d.Head("Add", "New output array = array_1 + array_2")
        .Input(kTypeNumberArray, "array_1", {}, "first input array")
        .Input(kTypeNumberArray, "array_2", {}, "second input array")
        .Output(kTypeNumberArray, "new array");
  }
  int Execute(IXInstrContext* ctx) override {
    ZipArrays(CArgs(ctx), [](double x, double y) { return x + y; });
    return kOk;
  }
};

class CNArrMathMultiply final : public TInstr<CNArrMathMultiply> {
 public:
  static void Describe(CDescriber& d) {
    d.Head("Multiply", "Output array = array_1 * array_2")
        .Input(kTypeNumberArray, "array_1", {}, "first input array")
        .Input(kTypeNumberArray, "array_2", {}, "second input array")
        .Output(kTypeNumberArray, "array_1 * array_2");
  }
  int Execute(IXInstrContext* ctx) override {
    ZipArrays(CArgs(ctx), [](double x, double y) { return x * y; });
    return kOk;
  }
};

// From 16 elements on, the constants are looked at first and the needless multiply
// or add skipped. The shortcuts show for non-finite inputs (a zero factor gives
// addConst even for NaN or infinity; a factor of 1 keeps -0) and are kept so.
class CNArrMathConstMulAdd final : public TInstr<CNArrMathConstMulAdd> {
 public:
  static void Describe(CDescriber& d) {
    d.Head("ConstMulAdd", "Output array = input_array*mulConst + addConst")
        .Input(kTypeNumberArray, "input array")
        .Input(kTypeNumber, "mulConst", 1.0, "multiplication constant")
        .Input(kTypeNumber, "addConst", 0.0, "add constant")
        .Output(kTypeNumberArray, "output array");
  }
  int Execute(IXInstrContext* ctx) override {
    CArgs a(ctx);
    const std::vector<double>& in = a.Get<CZetNumberVector>(0).Std();
    const double mul = a.Number(1), add = a.Number(2);
    const size_t n = in.size();
    double* out = SizedOut(a, 0, n);
    if (n < kShortcutsFrom) {
      for (size_t i = 0; i < n; ++i) out[i] = in[i] * mul + add;
    } else if (mul == 0.0) {
      std::fill_n(out, n, add == 0.0 ? 0.0 : add);
    } else if (mul == 1.0) {
      if (add == 0.0)
        std::copy(in.begin(), in.end(), out);
      else
        for (size_t i = 0; i < n; ++i) out[i] = in[i] + add;
    } else if (add == 0.0) {
      for (size_t i = 0; i < n; ++i) out[i] = in[i] * mul;
    } else {
      for (size_t i = 0; i < n; ++i) out[i] = in[i] * mul + add;
    }
    return kOk;
  }

 private:
  static constexpr size_t kShortcutsFrom = 16;
};

// The 1-2-1 kernel in place on the output, one pass after another, with three running
// values so that a pass always sees unsmoothed neighbours. A circular array is
// extended by its first two values instead of indexing modulo n. With no pass to do
// (passes <= 0, or fewer than 3 elements) a circular output keeps its two extra
// zeros: kept as it always was.
class CNArrMathSmooth final : public TInstr<CNArrMathSmooth> {
 public:
  static void Describe(CDescriber& d) {
    d.Head("Smooth", "Smoothed input array values with an 1,2,1 approximation to a Gaussian")
        .Input(kTypeNumberArray, "array", {}, "Input array")
        .Input(kTypeNumber, "passes", 1.0, "Number of smoothing passes")
        .Input(kTypeBool, "circular", false, "If true, 'array' is circular")
        .Input(kTypeBool, "duplicate ends", false,
               "If true, duplicate array value 1 to 0 and last-1 to last")
        .Output(kTypeNumberArray, "Smoothed array");
  }
  int Execute(IXInstrContext* ctx) override {
    CArgs a(ctx);
    const std::vector<double>& in = a.Get<CZetNumberVector>(0).Std();
    const int passes = a.TruncInt(1);
    const bool circular = a.Bool(2), duplicateEnds = a.Bool(3);
    const size_t n = in.size();
    CZetNumberVector& out = a.OutRef<CZetNumberVector>(0);
    out.Std().assign(in.begin(), in.end());
    if (circular) out.Std().resize(n + 2, 0.0);
    if (passes <= 0 || n < 3) return kOk;
    double* b = out.GetStorage();
    const size_t last = circular ? n : n - 2;  // the last position a pass writes
    // A pass is a function of b[0 .. n - 1] alone, so once one leaves every bit of it
    // as it was, so would all the passes left: they are skipped. This ends a count of
    // 2^31 passes on a short array at its fixed point instead of minutes later.
    const auto put = [](double& slot, double v, bool& changed) {
      changed |= std::bit_cast<uint64_t>(slot) != std::bit_cast<uint64_t>(v);
      slot = v;
    };
    bool changed = true;
    for (int p = 0; p < passes && changed; ++p) {
      changed = false;
      double prev = b[0], mid = b[1], next = b[2];
      if (circular) {
        b[n] = prev;
        b[n + 1] = mid;
      }
      for (size_t i = 1; i < last; ++i) {
        put(b[i], ((mid * 2 + prev) + next) * 0.25, changed);
        prev = mid;
        mid = next;
        next = b[i + 2];
      }
      if (circular) {
        b[last] = ((mid * 2 + prev) + next) * 0.25;
        put(b[0], b[n], changed);
      } else {
        put(b[last], ((mid * 2 + prev) + next) * 0.25, changed);
      }
    }
    if (duplicateEnds) {
      b[0] = b[1];
      b[n - 1] = b[n - 2];
    }
    if (circular) out.Std().resize(n);
    return kOk;
  }
};

// Pairs array_1[i + o1] with array_2[i + o2]; the shift goes through the value's own
// integer conversion.
class CNArrMathCorrelate final : public TInstr<CNArrMathCorrelate> {
 public:
  static void Describe(CDescriber& d) {
    d.Head("Correlate", "Output = normalized_correlation(array_1, array_2)")
        .Input(kTypeNumberArray, "array_1", {}, "First input array")
        .Input(kTypeNumberArray, "array_2", {}, "Second input array")
        .Input(kTypeNumber, "shift", 0.0, "Amount to shift array_1 relative to array_2")
        .Output(kTypeNumber, "correlation value")
        .Output(kTypeNumber, "status")
        .Output(kTypeNumber, "number of values used");
  }
  int Execute(IXInstrContext* ctx) override {
    CArgs a(ctx);
    const std::vector<double>& x = a.Get<CZetNumberVector>(0).Std();
    const std::vector<double>& y = a.Get<CZetNumberVector>(1).Std();
    const int64_t len1 = static_cast<int64_t>(x.size()), len2 = static_cast<int64_t>(y.size());
    const int64_t shift = a.OwnInt(2);
    int64_t o1 = 0, o2 = 0, count = std::min(len1, len2);
    if (shift > 0) {
      o2 = shift;
      count = std::min(len1, len2 - shift);
    } else if (shift < 0) {
      o1 = -shift;
      count = std::min(len2, len1 + shift);
    }
    if (count <= 0) return Write(a, 0.0, 1, 0, kNoValues);
    const double* px = x.data() + o1;
    const double* py = y.data() + o2;
    double sum1 = 0.0, sum2 = 0.0;
    for (int64_t i = 0; i < count; ++i) sum1 += px[i];
    for (int64_t i = 0; i < count; ++i) sum2 += py[i];
    const double mean1 = sum1 / static_cast<double>(count);
    const double mean2 = sum2 / static_cast<double>(count);
    double sxy = 0.0, sxx = 0.0, syy = 0.0;
    for (int64_t i = 0; i < count; ++i) {
      const double dx = px[i] - mean1, dy = py[i] - mean2;
      sxy += dx * dy;
      sxx += dx * dx;
      syy += dy * dy;
    }
    const double den = std::sqrt(syy) * std::sqrt(sxx);
    if (den == 0.0) return Write(a, 0.0, 2, count, kConstant);
    return Write(a, sxy / den, 0, count, nullptr);  // a NaN denominator gives NaN, status 0
  }

 private:
  static int Write(const CArgs& a, double value, int status, int64_t used, const char* report) {
    a.Out(0) = value;
    a.Out(1) = static_cast<double>(status);
    a.Out(2) = static_cast<double>(used);
    if (report) a.Report(kReportWarning, "Correlate", report);
    return kOk;
  }
};

}  // namespace
}  // namespace zet

#define ZET_FAMILY_SignalMath ZET_THIS_FAMILY
#include "frame/Factories.def"
