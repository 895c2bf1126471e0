// Number arrays rearranged: copying and inserting parts (CopyArray, InsertArray),
// filling a range with optional wrap-around, reversing, sorting, and the permutation
// that sorts (IndexArray). None fails; a bad index copies nothing or changes nothing,
// as each says.
#include <cstdint>
#include <numeric>
#include <vector>

#include "arrays/ArrayCommon.h"

namespace zet {
namespace {

// A bad index or a nothing-to-copy is not an error here: the output is emptied.
class CNArrCopyArray final : public TInstr<CNArrCopyArray> {
 public:
  static void Describe(CDescriber& d) {
    d.Head("CopyArray", "Copy all or part of an input array to the output array")
        .Input(kTypeNumberArray, "array", {}, "Input array")
        .Input(kTypeNumber, "index", 0.0, "Copy input starting at this array index")
        .Input(kTypeNumber, "number", 0.0, "Number of input array values to copy. -1 to copy all")
        .Output(kTypeNumberArray, "new array", "Copy of all or part of 'array'");
  }
  int Execute(IXInstrContext* ctx) override {
    CArgs a(ctx);
    const std::vector<double>& in = a.Get<CZetNumberVector>(0).Std();
    const int64_t n = static_cast<int64_t>(in.size());
    const int64_t index = a.TruncInt(1);
    int64_t number = a.TruncInt(2);
    if (number < 0) number = n;  // any negative number, not only -1
    const int64_t remaining = n - index;
    const int64_t m = remaining <= 0 || index < 0 ? 0 : std::min(number, remaining);
    std::vector<double>& out = a.OutRef<CZetNumberVector>(0).Std();
    const auto first = in.begin() + (m ? index : 0);
    if (&out != &in) {
      out.assign(first, first + m);  // one pass: no zero-filling resize before the copy
    } else {  // the output is the input: move the range to the front, then cut
      std::copy(first, first + m, out.begin());
      out.resize(static_cast<size_t>(m));
    }
    return kOk;
  }
};

// The index is clamped into 0 .. size(into), so a large one appends.
class CNArrInsertArray final : public TInstr<CNArrInsertArray> {
 public:
  static void Describe(CDescriber& d) {
    d.Head("InsertArray", "Insert one array into another and output the resulting array")
        .Input(kTypeNumberArray, "insert array", {}, "Array to insert")
        .Input(kTypeNumberArray, "into array", {}, "Input array to insert into")
        .Input(kTypeNumber, "at index", 0.0, "Start inserting values at this 'into array' index")
        .Output(kTypeNumberArray, "new array", "'into array' with 'insert array' inserted into it");
  }
  int Execute(IXInstrContext* ctx) override {
    CArgs a(ctx);
    const std::vector<double>& insert = a.Get<CZetNumberVector>(0).Std();
    const std::vector<double>& into = a.Get<CZetNumberVector>(1).Std();
    if (insert.size() + into.size() > CZetNumberVector::kMaxSize) return kFail;  // the cap
    const size_t at = static_cast<size_t>(
        std::clamp<int64_t>(a.TruncInt(2), 0, static_cast<int64_t>(into.size())));
    double* out = SizedOut(a, 0, into.size() + insert.size());
    out = std::copy_n(into.begin(), at, out);
    out = std::copy(insert.begin(), insert.end(), out);
    std::copy(into.begin() + at, into.end(), out);
    return kOk;
  }
};

// With wrap around the range continues from element 0; without it the excess is
// dropped. An index past the end changes nothing (the end itself wraps to 0).
class CNArrSetRange final : public TInstr<CNArrSetRange> {
 public:
  static void Describe(CDescriber& d) {
    d.Head("SetRange", "Set range of elements in array to a constant value")
        .Input(kTypeNumberArray, "array")
        .Input(kTypeNumber, "index", 0.0, "Starting index of elements to change")
        .Input(kTypeNumber, "number", 1.0, "Number of array elements to change (range)")
        .Input(kTypeNumber, "value", 0.0,
               "New value for 'count' array elements starting at 'index'")
        .Input(kTypeBool, "wrap around", false,
               "If true, the range can go off the end of array and wrap around to the start of "
               "the array")
        .Output(kTypeNumberArray, "array with range set");
  }
  int Execute(IXInstrContext* ctx) override {
    CArgs a(ctx);
    const std::vector<double>& in = a.Get<CZetNumberVector>(0).Std();
    const int64_t n = static_cast<int64_t>(in.size());
    const int64_t index = a.TruncInt(1), number = a.TruncInt(2);
    const double value = a.Number(3);
    const bool wrap = a.Bool(4);
    double* out = SizedOut(a, 0, in.size());
    std::copy(in.begin(), in.end(), out);
    if (index < 0 || number <= 0 || index > n) return kOk;
    if (wrap && number >= n) {
      std::fill_n(out, n, value);
      return kOk;
    }
    const int64_t end = std::min(index + number, n);
    std::fill(out + index, out + end, value);
    if (wrap && index + number > n) std::fill_n(out, number - (n - index), value);
    return kOk;
  }
};

class CNArrReverse final : public TInstr<CNArrReverse> {
 public:
  static void Describe(CDescriber& d) {
    d.Head("Reverse", "Reverse values in array")
        .Input(kTypeNumberArray, "input array", {}, "Input array")
        .Output(kTypeNumberArray, "reversed array");
  }
  int Execute(IXInstrContext* ctx) override {
    CArgs a(ctx);
    const std::vector<double>& in = a.Get<CZetNumberVector>(0).Std();
    std::reverse_copy(in.begin(), in.end(), SizedOut(a, 0, in.size()));
    return kOk;
  }
};

class CNArrSort final : public TInstr<CNArrSort> {
 public:
  static void Describe(CDescriber& d) {
    d.Head("Sort", "Sorts the number array ascending(default) or descending.")
        .Input(kTypeNumberArray, "arr", {}, "input array")
        .Input(kTypeBool, "descending", false, "Sorts descending when true")
        .Output(kTypeNumberArray, "new array");
  }
  int Execute(IXInstrContext* ctx) override {
    CArgs a(ctx);
    const std::vector<double>& in = a.Get<CZetNumberVector>(0).Std();
    const bool descending = a.Bool(1);
    double* out = SizedOut(a, 0, in.size());
    std::copy(in.begin(), in.end(), out);
    SortNumbers(out, in.size(), descending ? EOrder::kDescending : EOrder::kAscending);
    return kOk;
  }
};

// The method is a parameter. The sort reads the input through a pointer local to
// the run, so an object keeps no state and may run on several threads. Indexes of
// equal values come out in ascending order (KeySort.h).
class CNArrMathIndexArray final : public TInstr<CNArrMathIndexArray> {
 public:
  static void Describe(CDescriber& d) {
    d.Head("IndexArray", "Index an input array using an index method")
        .ParamChoice(
            "Parameters", "index method", "Method to use for indexing input array", 1, 0, 2,
            {{0, "none"}, {1, "descending - largest first"}, {2, "ascending - smallest first"}}, 10)
        .Input(kTypeNumberArray, "input array", {}, "Input array of numbers to be indexed")
        .Output(kTypeNumberArray, "index array");
  }
  int Execute(IXInstrContext* ctx) override {
    CArgs a(ctx);
    const std::vector<double>& in = a.Get<CZetNumberVector>(0).Std();
    const int method = a.Param(0).AsInt();
    std::vector<uint32_t> order(in.size());
    std::iota(order.begin(), order.end(), 0u);
    if (method == 1)
      SortPositionsByKey(in.data(), order.data(), order.size(), EOrder::kDescending);
    else if (method == 2)
      SortPositionsByKey(in.data(), order.data(), order.size(), EOrder::kAscending);
    std::copy(order.begin(), order.end(), SizedOut(a, 0, in.size()));
    return kOk;
  }
};

}  // namespace
}  // namespace zet

#define ZET_FAMILY_NumberEdit ZET_THIS_FAMILY
#include "frame/Factories.def"
