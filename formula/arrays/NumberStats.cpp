// Number arrays classified and summarised: two- and three-level thresholds, the two
// clips, maximum and minimum with the index of the first extreme, and the population
// mean and variance. Every one succeeds and reports nothing.
#include <cmath>
#include <vector>

#include "arrays/ArrayCommon.h"

namespace zet {
namespace {

// out[i] = f(in[i]) for the array input 0 into the number-array output 0.
template <class F>
void MapArray(const CArgs& a, F f) {
  const std::vector<double>& in = a.Get<CZetNumberVector>(0).Std();
  double* out = SizedOut(a, 0, in.size());
  for (size_t i = 0; i < in.size(); ++i) out[i] = f(in[i]);
}

class CNArrMathThreshold final : public TInstr<CNArrMathThreshold> {
 public:
  static void Describe(CDescriber& d) {
    d.Head("Threshold", "Set array values at or above 'threshold' to 'above', otherwise to 'below'")
        .Input(kTypeNumberArray, "array")
        .Input(kTypeNumber, "threshold", 0.0, "Threshold value")
        .Input(kTypeNumber, "above", 1.0, "Set numbers at or above the threshold to this value")
        .Input(kTypeNumber, "below", 0.0, "Set numbers below the threshold to this value")
        .Output(kTypeNumberArray, "output array");
  }
  int Execute(IXInstrContext* ctx) override {
    CArgs a(ctx);
    const double t = a.Number(1), above = a.Number(2), below = a.Number(3);
    MapArray(a, [=](double x) { return x >= t ? above : below; });  // NaN: below
    return kOk;
  }
};

// A low threshold above the high one raises the high one to it: the band is empty.
class CNArrMathThresholdBand final : public TInstr<CNArrMathThresholdBand> {
 public:
  static void Describe(CDescriber& d) {
    d.Head("ThresholdBand",
           "Set array values at or above 'high threshold' to 'above', values below 'low "
           "threshold' to 'below', otherwise to 'between'")
        .Input(kTypeNumberArray, "array")
        .Input(kTypeNumber, "high threshold", 1.0, "High (larger) threshold value")
        .Input(kTypeNumber, "low threshold", 0.0, "Low (smaller) threshold value")
        .Input(kTypeNumber, "above", 1.0, "Set numbers at or above 'high threshold' to this value")
        .Input(kTypeNumber, "between", 0.5,
               "Set numbers below 'high' and at or above 'low threshold' to this value")
        .Input(kTypeNumber, "below", 0.0, "Set numbers below the 'low threshold' to this value")
        .Output(kTypeNumberArray, "output array");
  }
  int Execute(IXInstrContext* ctx) override {
    CArgs a(ctx);
    double high = a.Number(1);
    const double low = a.Number(2), above = a.Number(3), between = a.Number(4),
                 below = a.Number(5);
    if (low > high) high = low;
    MapArray(a, [=](double x) { return x >= high ? above : x < low ? below : between; });
    return kOk;
  }
};

// The two clips are asymmetric on purpose: ClipLow replaces values strictly below
// the threshold, ClipHigh values at or above it. NaN keeps its value in both.
class CNArrMathClipLow final : public TInstr<CNArrMathClipLow> {
 public:
  static void Describe(CDescriber& d) {
    d.Head("ClipLow", "Set array values below 'threshold' to 'below' value")
        .Input(kTypeNumberArray, "array")
        .Input(kTypeNumber, "threshold", 0.0)
        .Input(kTypeNumber, "below", 0.0)
        .Output(kTypeNumberArray, "output array");
  }
  int Execute(IXInstrContext* ctx) override {
    CArgs a(ctx);
    const double t = a.Number(1), below = a.Number(2);
    MapArray(a, [=](double x) { return x < t ? below : x; });
    return kOk;
  }
};

class CNArrMathClipHigh final : public TInstr<CNArrMathClipHigh> {
 public:
  static void Describe(CDescriber& d) {
    d.Head("ClipHigh", "Set array values at or above 'threshold' to 'above' value")
        .Input(kTypeNumberArray, "array")
        .Input(kTypeNumber, "threshold", 0.0)
        .Input(kTypeNumber, "above", 0.0)
        .Output(kTypeNumberArray, "output array");
  }
  int Execute(IXInstrContext* ctx) override {
    CArgs a(ctx);
    const double t = a.Number(1), above = a.Number(2);
    MapArray(a, [=](double x) { return x >= t ? above : x; });
    return kOk;
  }
};

// The first maximum and minimum of an array with their indexes, all 0 for an empty
// one. Only a strictly greater (smaller) value replaces the extreme, so NaN elements
// are skipped unless element 0 is NaN.
struct SExtrema {
  double max = 0.0, min = 0.0;
  double maxIndex = 0.0, minIndex = 0.0;
};

SExtrema ScanExtrema(const std::vector<double>& v) {
  SExtrema e;
  if (v.empty()) return e;
  e.max = e.min = v[0];
  for (size_t i = 1; i < v.size(); ++i) {
    if (v[i] > e.max) {
      e.max = v[i];
      e.maxIndex = static_cast<double>(i);
    }
    if (v[i] < e.min) {
      e.min = v[i];
      e.minIndex = static_cast<double>(i);
    }
  }
  return e;
}

CDescriber& ExtremaHead(CDescriber& d, const char* name, const char* description) {
  return d.Head(name, description).Input(kTypeNumberArray, "array", {}, "Input array");
}

class CNArrMathMaximum final : public TInstr<CNArrMathMaximum> {
 public:
  static void Describe(CDescriber& d) {
    ExtremaHead(d, "Maximum", "Return input array's maximum value and element index")
        .Output(kTypeNumber, "maximum value")
        .Output(kTypeNumber, "maximum index");
  }
  int Execute(IXInstrContext* ctx) override {
    CArgs a(ctx);
    const SExtrema e = ScanExtrema(a.Get<CZetNumberVector>(0).Std());
    a.Out(0) = e.max;
    a.Out(1) = e.maxIndex;
    return kOk;
  }
};

class CNArrMathMinimum final : public TInstr<CNArrMathMinimum> {
 public:
  static void Describe(CDescriber& d) {
    ExtremaHead(d, "Minimum", "Return input array's minimum value and element index")
        .Output(kTypeNumber, "minimum value")
        .Output(kTypeNumber, "minimum index");
  }
  int Execute(IXInstrContext* ctx) override {
    CArgs a(ctx);
    const SExtrema e = ScanExtrema(a.Get<CZetNumberVector>(0).Std());
    a.Out(0) = e.min;
    a.Out(1) = e.minIndex;
    return kOk;
  }
};

class CNArrMathExtrema final : public TInstr<CNArrMathExtrema> {
 public:
  static void Describe(CDescriber& d) {
    ExtremaHead(d, "Extrema", "Return input array's maximum and minimum values and element indexes")
        .Output(kTypeNumber, "maximum value")
        .Output(kTypeNumber, "maximum index")
        .Output(kTypeNumber, "minimum value")
        .Output(kTypeNumber, "minimum index");
  }
  int Execute(IXInstrContext* ctx) override {
    CArgs a(ctx);
    const SExtrema e = ScanExtrema(a.Get<CZetNumberVector>(0).Std());
    a.Out(0) = e.max;
    a.Out(1) = e.maxIndex;
    a.Out(2) = e.min;
    a.Out(3) = e.minIndex;
    return kOk;
  }
};

// Population statistics by the raw moments in one pass: rounding can make the
// variance of nearly constant data slightly negative, and it is written as computed
// (the standard deviation is then NaN).
class CNArrMeanAndVar final : public TInstr<CNArrMeanAndVar> {
 public:
  static void Describe(CDescriber& d) {
    d.Head("MeanAndVariance",
           "Return mean, variance, standard deviation, and number (count) of array values")
        .Input(kTypeNumberArray, "array", {}, "Input array")
        .Output(kTypeNumber, "mean")
        .Output(kTypeNumber, "variance")
        .Output(kTypeNumber, "standard deviation")
        .Output(kTypeNumber, "number (count)");
  }
  int Execute(IXInstrContext* ctx) override {
    CArgs a(ctx);
    const std::vector<double>& v = a.Get<CZetNumberVector>(0).Std();
    double mean = 0.0, variance = 0.0, sd = 0.0;
    if (!v.empty()) {
      double sum = 0.0, sumSq = 0.0;
      for (double x : v) {
        sum += x;
        sumSq += x * x;
      }
      const double n = static_cast<double>(v.size());
      mean = sum / n;
      variance = sumSq / n - mean * mean;
      sd = std::sqrt(variance);
    }
    a.Out(0) = mean;
    a.Out(1) = variance;
    a.Out(2) = sd;
    a.Out(3) = static_cast<double>(v.size());
    return kOk;
  }
};

}  // namespace
}  // namespace zet

#define ZET_FAMILY_NumberStats ZET_THIS_FAMILY
#include "frame/Factories.def"
