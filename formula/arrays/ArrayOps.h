// The operations shared by the five typed-array families, each written once
// over an element trait E (ArrayElems.h) and a row R of Registry.def
// (R::kDescription, one of the variants named in the operation's texts below).
// ArrayFamilies.cpp makes one class of each row.
//
// An operation reads its input arrays in place and builds a changed array aside
// before it writes the output, so a size the vector refuses (beyond its cap;
// see TZetVector) returns kFail with the output as it was. Positions and counts
// that an operation does not test are passed on to the vector's Insert and
// Erase, which clamp them as a growable array would. Append, whose only refusal
// is known before it starts, writes into the output directly.
#pragma once

#include <algorithm>
#include <cstdint>
#include <utility>
#include <vector>

#include "arrays/ArrayElems.h"

namespace zet {

// Whether idx addresses an element of an array of n. Signed and unsigned comparisons
// agree here; they differ only for the start of EraseRange.
inline bool Addresses(int idx, unsigned n) { return idx >= 0 && static_cast<unsigned>(idx) < n; }

// The output array made `r` (an output of another kind becomes an array first).
template <class V>
int PutArray(const CArgs& a, int i, V&& r) {
  a.OutRef<std::decay_t<V>>(i) = std::forward<V>(r);
  return kOk;
}

// A copy of `in` with room reserved for `extra` more elements when they fit under
// the cap (when they do not, the vector refuses them later).
template <class V>
V CopyWithRoom(const V& in, uint64_t extra) {
  V r;
  const uint64_t n = in.Std().size();
  r.Std().reserve(n + extra <= V::kMaxSize ? n + extra : n);
  r.Std().assign(in.Std().begin(), in.Std().end());
  return r;
}

template <class E, class R>
class TArrGetAt final : public TInstr<TArrGetAt<E, R>> {
 public:
  static void Describe(CDescriber& d) {
    d.Head("GetAt", R::kDescription)
        .Input(E::kArrayType, "arr")
        .Input(kTypeNumber, "idx", 0.0)
        .Output(E::kType, "val");
  }
  int Execute(IXInstrContext* ctx) override {
    CArgs a(ctx);
    const auto& arr = a.Get<typename E::Vec>(0);
    const int idx = a.TruncInt(1);
    if (!Addresses(idx, arr.Size())) return kFail;
    a.Out(0) = arr.Std()[idx];
    return kOk;
  }
};
struct SGetAtTexts {
  static constexpr const char* kText = "Get the value of the element at index idx.";
};

template <class E, class R>
class TArrSetAt final : public TInstr<TArrSetAt<E, R>> {
 public:
  static void Describe(CDescriber& d) {
    d.Head("SetAt", R::kDescription)
        .Input(E::kArrayType, "arr")
        .Input(kTypeNumber, "idx", 0.0)
        .Input(E::kType, "val", E::ValDefault())
        .Output(E::kArrayType, "new array");
  }
  int Execute(IXInstrContext* ctx) override {
    CArgs a(ctx);
    const auto& arr = a.Get<typename E::Vec>(0);
    const int idx = E::kSetAtOwnInt ? a.OwnInt(1) : a.TruncInt(1);
    if (!Addresses(idx, arr.Size())) return kFail;
    typename E::Vec r = arr;
    r.Std()[idx] = E::Read(a, 2);
    return PutArray(a, 0, std::move(r));
  }
};
struct SSetAtTexts {
  static constexpr const char* kText = "Set the elem at idx to the specified value.";
};

template <class E, class R>
class TArrErase final : public TInstr<TArrErase<E, R>> {
 public:
  static void Describe(CDescriber& d) {
    d.Head("Erase", R::kDescription)
        .Input(E::kArrayType, "arr")
        .Input(kTypeNumber, "idx", 0.0)
        .Output(E::kArrayType, "new array");
  }
  int Execute(IXInstrContext* ctx) override {
    CArgs a(ctx);
    const auto& in = a.Get<typename E::Vec>(0).Std();
    const int idx = a.TruncInt(1);
    if (!Addresses(idx, static_cast<unsigned>(in.size()))) return kFail;
    typename E::Vec r;
    r.Std().reserve(in.size() - 1);
    r.Std().insert(r.Std().end(), in.begin(), in.begin() + idx);
    r.Std().insert(r.Std().end(), in.begin() + idx + 1, in.end());
    return PutArray(a, 0, std::move(r));
  }
};
struct SEraseTexts {
  static constexpr const char* kText = "Eliminates the element at idx.";
};

template <class E, class R>
class TArrEraseRange final : public TInstr<TArrEraseRange<E, R>> {
 public:
  static void Describe(CDescriber& d) {
    d.Head("EraseRange", R::kDescription)
        .Input(E::kArrayType, "arr")
        .Input(kTypeNumber, "idxStart", 0.0)
        .Input(kTypeNumber, "idxEnd", 0.0)
        .Output(E::kArrayType, "new array");
  }
  int Execute(IXInstrContext* ctx) override {
    CArgs a(ctx);
    const auto& arr = a.Get<typename E::Vec>(0);
    const int64_t n = arr.Size();
    const int start = a.TruncInt(1), end = a.TruncInt(2);
    // A negative start passes these tests unless indexes are unsigned; the
    // vector's range erase then clips it, erasing from the first element up to
    // idxEnd.
    const bool startTooLarge =
        E::kUnsignedIndex ? static_cast<unsigned>(start) >= n : start >= n;
    if (startTooLarge || end < 0 || end >= n || start > end) return kFail;
    typename E::Vec r = arr;
    r.Erase(start, int64_t{end} - start + 1);
    return PutArray(a, 0, std::move(r));
  }
};
struct SEraseRangeTexts {
  static constexpr const char* kText =
      "Erases the elements starting at idxStart up to and including idxEnd.";
};

template <class E, class R>
class TArrSize final : public TInstr<TArrSize<E, R>> {
 public:
  static void Describe(CDescriber& d) {
    d.Head("Size", R::kDescription).Input(E::kArrayType, "arr").Output(kTypeNumber, "size");
  }
  int Execute(IXInstrContext* ctx) override {
    CArgs a(ctx);
    a.Out(0) = static_cast<double>(a.Get<typename E::Vec>(0).Size());
    return kOk;
  }
};
struct SSizeTexts {
  static constexpr const char* kText = "Returns the size of the array.";
};

template <class E, class R>
class TArrResize final : public TInstr<TArrResize<E, R>> {
 public:
  static void Describe(CDescriber& d) {
    d.Head("Resize", R::kDescription)
        .Input(E::kArrayType, "arr")
        .Input(kTypeNumber, "new size", 0.0)
        .Output(E::kArrayType, "new array");
  }
  int Execute(IXInstrContext* ctx) override {
    CArgs a(ctx);
    const auto& in = a.Get<typename E::Vec>(0).Std();
    const int size = a.TruncInt(1);
    if (size < 0) return kFail;
    typename E::Vec r;
    if (!r.Resize(static_cast<unsigned>(size))) return kFail;
    std::copy_n(in.begin(), std::min<size_t>(in.size(), size), r.Std().begin());
    return PutArray(a, 0, std::move(r));
  }
};
struct SResizeTexts {
  static constexpr const char* kText =
      "Resizes the array to the specified size, erasing/adding elements if needed.";
};

// Variadic: the values are inputs 2 .. Count() - 1.
template <class E, class R>
class TArrInsert final : public TInstr<TArrInsert<E, R>> {
 public:
  static void Describe(CDescriber& d) {
    d.Head("Insert", R::kDescription)
        .Input(E::kArrayType, "arr")
        .Input(kTypeNumber, "idx", 0.0)
        .Input(E::kType, "val", E::ValDefault())
        .Variadic()
        .Output(E::kArrayType, "new array");
  }
  int Execute(IXInstrContext* ctx) override {
    CArgs a(ctx);
    const auto& arr = a.Get<typename E::Vec>(0);
    const int idx = a.TruncInt(1);
    const int k = std::max(0, a.Count() - 2);
    // No test against the size: the vector appends at a position past the end
    // (and inserts at the front for the point Insert's negative idx).
    if (E::kInsertTestsIndex && idx < 0) return kFail;
    if (k == 0) return PutArray(a, 0, typename E::Vec(arr));
    typename E::Vec r = CopyWithRoom(arr, k);
    const size_t at = r.InsertionPoint(idx);
    if (!r.Insert(idx, k, {})) return kFail;
    for (int j = 0; j < k; ++j) r.Std()[at + j] = E::Read(a, 2 + j);
    return PutArray(a, 0, std::move(r));
  }
};
struct SInsertTexts {
  static constexpr const char* kIdx =
      "Inserts values starting at the specified index (idx), moving back all elements after idx.";
  static constexpr const char* kSetOfValues =
      "Inserts a set of values starting at the specified index moving back all the elements "
      "after idx.";
};

// The count is not tested: for a negative one the vector inserts nothing.
template <class E, class R>
class TArrInsertRep final : public TInstr<TArrInsertRep<E, R>> {
 public:
  static void Describe(CDescriber& d) {
    d.Head("InsertRep", R::kDescription)
        .Input(E::kArrayType, "arr")
        .Input(kTypeNumber, "idx", 0.0)
        .Input(kTypeNumber, "elem count", 0.0)
        .Input(E::kType, "val", E::ValDefault())
        .Output(E::kArrayType, "new array");
  }
  int Execute(IXInstrContext* ctx) override {
    CArgs a(ctx);
    const auto& arr = a.Get<typename E::Vec>(0);
    const int idx = a.TruncInt(1);
    const int count = a.TruncInt(2);
    // So InsertRep cannot insert at the end, nor into an empty array.
    if (!Addresses(idx, arr.Size())) return kFail;
    typename E::Vec r = CopyWithRoom(arr, std::max(count, 0));
    if (!r.Insert(idx, count, E::Read(a, 3))) return kFail;
    return PutArray(a, 0, std::move(r));
  }
};
struct SInsertRepTexts {
  static constexpr const char* kText =
      "Inserts n elements starting at idx; all will have the specified value.";
};

// Variadic: the values are inputs 1 .. Count() - 1.
template <class E, class R>
class TArrAppend final : public TInstr<TArrAppend<E, R>> {
 public:
  static void Describe(CDescriber& d) {
    d.Head("Append", R::kDescription)
        .Input(E::kArrayType, "arr")
        .Input(E::kType, "val", E::ValDefault())
        .Variadic()
        .Output(E::kArrayType, "new array");
  }
  int Execute(IXInstrContext* ctx) override {
    using V = typename E::Vec;
    CArgs a(ctx);
    const auto& in = a.Get<V>(0).Std();
    const int k = std::max(0, a.Count() - 1);
    if (in.size() + k > V::kMaxSize) return kFail;  // refused before the output is touched
    if constexpr (std::is_same_v<V, CZetStringVector>) {  // the cap counts texts too
      size_t bytes = a.Get<V>(0).CapBytes() + k * sizeof(typename V::value_type);
      for (int j = 0; j < k; ++j) bytes += a.String(1 + j).size();  // counted, not copied
      if (bytes > kZetMaxVectorBytes) return kFail;
    }
    // Written in place, so that an output holding an array from the last run keeps its
    // buffer: appending to a long array then costs one copy and no allocation.
    auto& out = a.OutRef<V>(0).Std();
    if (&out != &in) {
      out.reserve(in.size() + k);
      out.assign(in.begin(), in.end());
    }
    for (int j = 0; j < k; ++j) out.push_back(E::Read(a, 1 + j));
    return kOk;
  }
};
struct SAppendTexts {
  static constexpr const char* kText = "Appends the specified elements to the end of the array.";
};

template <class E, class R>
class TArrAppendRep final : public TInstr<TArrAppendRep<E, R>> {
 public:
  static void Describe(CDescriber& d) {
    d.Head("AppendRep", R::kDescription)
        .Input(E::kArrayType, "arr")
        .Input(kTypeNumber, "elem count", 0.0)
        .Input(E::kType, "val", E::ValDefault())
        .Output(E::kArrayType, "new array");
  }
  int Execute(IXInstrContext* ctx) override {
    CArgs a(ctx);
    const auto& arr = a.Get<typename E::Vec>(0);
    const int count = a.TruncInt(1);
    const bool appendsNothing = E::kAppendRepUnsignedCount ? count == 0 : count < 1;
    if (appendsNothing) return PutArray(a, 0, typename E::Vec(arr));
    typename E::Vec r = CopyWithRoom(arr, static_cast<unsigned>(count));
    if (!r.Insert(r.Size(), static_cast<unsigned>(count), E::Read(a, 2))) return kFail;
    return PutArray(a, 0, std::move(r));
  }
};
struct SAppendRepTexts {
  static constexpr const char* kText =
      "Appends n times the specified value at the end of the array.";
};

template <class E, class R>
class TArrCreate final : public TInstr<TArrCreate<E, R>> {
 public:
  static void Describe(CDescriber& d) {
    d.Head("Create", R::kDescription)
        .Input(kTypeNumber, "elem count", 0.0)
        .Output(E::kArrayType, "new array");
  }
  int Execute(IXInstrContext* ctx) override {
    using V = typename E::Vec;
    CArgs a(ctx);
    const int count = a.TruncInt(0);
    if (count < 0) return kFail;
    // Create resizes the array the output holds without emptying it first (a host's
    // fresh output is empty), so elements it held are kept up to the count.
    CZetObject& out = a.Out(0);
    if (out.GetType() == V::kType) return out.Ref<V>().Resize(count) ? kOk : kFail;
    V r;
    if (!r.Resize(static_cast<unsigned>(count))) return kFail;
    return PutArray(a, 0, std::move(r));
  }
};
struct SCreateTexts {
  static constexpr const char* kZero = "Makes a new array with n elements initialized to zero.";
  static constexpr const char* kFalse = "Makes a new array with n elements initialized to false.";
  static constexpr const char* kEmptyString =
      "Makes a new array with n elements initialized to empty string.";
  static constexpr const char* kDefaultPoint =
      "Makes a new array with n elements initialized to the default point(0, 0).";
  static constexpr const char* kDefaultLine =
      "Makes a new array with n elements initialized to the default line(0, 0).";
};

// Variadic: every counted input is a value.
template <class E, class R>
class TArrCreateInf final : public TInstr<TArrCreateInf<E, R>> {
 public:
  static void Describe(CDescriber& d) {
    d.Head("CreateInf", R::kDescription)
        .Input(E::kType, "val", E::ValDefault())
        .Variadic()
        .Output(E::kArrayType, "new array");
  }
  int Execute(IXInstrContext* ctx) override {
    CArgs a(ctx);
    typename E::Vec r;
    r.Std().reserve(std::max(0, a.Count()));
    for (int j = 0; j < a.Count(); ++j)
      if (!r.PushBack(E::Read(a, j))) return kFail;
    return PutArray(a, 0, std::move(r));
  }
};
struct SCreateInfTexts {
  static constexpr const char* kText = "Creates a new array from the values passed in.";
};

// The count is not tested: for a negative one the vector inserts nothing.
template <class E, class R>
class TArrCreateRep final : public TInstr<TArrCreateRep<E, R>> {
 public:
  static void Describe(CDescriber& d) {
    d.Head("CreateRep", R::kDescription)
        .Input(kTypeNumber, "elem count", 0.0)
        .Input(E::kType, "val", E::ValDefault())
        .Output(E::kArrayType, "new array");
  }
  int Execute(IXInstrContext* ctx) override {
    CArgs a(ctx);
    // The count is not tested: for a negative one the vector inserts nothing.
    typename E::Vec r;
    if (!r.Insert(0, a.TruncInt(0), E::Read(a, 1))) return kFail;
    return PutArray(a, 0, std::move(r));
  }
};
struct SCreateRepTexts {
  static constexpr const char* kText =
      "Creates a new array of n elements, all initialized  to the specified value.";
};

template <class E, class R>
class TArrConcatArr final : public TInstr<TArrConcatArr<E, R>> {
 public:
  static void Describe(CDescriber& d) {
    d.Head("Concatenate ", R::kDescription)
        .Input(E::kArrayType, "first arr")
        .Input(E::kArrayType, "second arr")
        .Output(E::kArrayType, "new array");
  }
  int Execute(IXInstrContext* ctx) override {
    using V = typename E::Vec;
    CArgs a(ctx);
    const auto& first = a.Get<V>(0).Std();
    const auto& second = a.Get<V>(1).Std();
    if (first.size() + second.size() > V::kMaxSize) return kFail;  // beyond the cap
    const size_t firstBytes = a.Get<V>(0).CapBytes(), secondBytes = a.Get<V>(1).CapBytes();
    if (firstBytes > kZetMaxVectorBytes || secondBytes > kZetMaxVectorBytes - firstBytes)
      return kFail;
    V r;
    r.Std().reserve(first.size() + second.size());
    r.Std().insert(r.Std().end(), first.begin(), first.end());
    r.Std().insert(r.Std().end(), second.begin(), second.end());
    return PutArray(a, 0, std::move(r));
  }
};
struct SConcatArrTexts {
  static constexpr const char* kText =
      "Appends the second array argument at the end of the first array argument";
};

// The elements of first, in order and with repetitions, equal to no element of
// second (the element's own exact equality: a NaN is never equal, -0 equals 0). A
// long second is searched through an ordered copy of pointers to its elements, which
// gives the same result as a scan from its start.
template <class E, class R>
class TArrDiff final : public TInstr<TArrDiff<E, R>> {
 public:
  static void Describe(CDescriber& d) {
    d.Head("Difference ", R::kDescription)
        .Input(E::kArrayType, "first")
        .Input(E::kArrayType, "second")
        .Output(E::kArrayType, "diff");
  }
  int Execute(IXInstrContext* ctx) override {
    using Item = typename E::Vec::value_type;
    CArgs a(ctx);
    const auto& first = a.Get<typename E::Vec>(0).Std();
    const auto& second = a.Get<typename E::Vec>(1).Std();
    typename E::Vec r;
    if (second.size() <= kScanUpTo) {
      for (const Item& x : first)
        if (std::find(second.begin(), second.end(), x) == second.end()) r.Std().push_back(x);
      return PutArray(a, 0, std::move(r));
    }
    std::vector<const Item*> order;
    order.reserve(second.size());
    for (const Item& y : second)
      if (E::Comparable(y)) order.push_back(&y);
    const auto less = [](const Item* p, const Item* q) { return E::Less(*p, *q); };
    std::sort(order.begin(), order.end(), less);
    for (const Item& x : first) {
      const bool found =
          E::Comparable(x) && std::binary_search(order.begin(), order.end(), &x, less);
      if (!found) r.Std().push_back(x);
    }
    return PutArray(a, 0, std::move(r));
  }

 private:
  static constexpr size_t kScanUpTo = 16;
};
struct SDiffTexts {
  static constexpr const char* kText =
      "Outputs the difference between the first and second arrays as another array";
};

// The output is emptied first, so a rejected index or count leaves it empty.
template <class E, class R>
class TArrGetRange final : public TInstr<TArrGetRange<E, R>> {
 public:
  static void Describe(CDescriber& d) {
    d.Head("GetRange ", R::kDescription)
        .Input(E::kArrayType, E::kGetRangeArrayName)
        .Input(kTypeNumber, "index", 0.0, "starting index")
        .Input(kTypeNumber, "count", 0.0, "element count")
        .Output(E::kArrayType, "range");
  }
  int Execute(IXInstrContext* ctx) override {
    CArgs a(ctx);
    const auto& in = a.Get<typename E::Vec>(0).Std();
    const unsigned n = static_cast<unsigned>(in.size());
    const int index = a.TruncInt(1), count = a.TruncInt(2);
    // Taken as unsigned, every negative index is too large.
    const unsigned at = static_cast<unsigned>(index);
    const bool badIndex = E::kGetRangeAcceptsEnd ? at > n : at >= n;
    typename E::Vec r;
    int status = kFail;
    if (!badIndex && count >= 0) {
      const size_t m = std::min<size_t>(n - at, static_cast<size_t>(count));
      r.Std().assign(in.begin() + at, in.begin() + at + m);
      status = kOk;
    }
    PutArray(a, 0, std::move(r));
    return status;
  }
};
struct SGetRangeTexts {
  static constexpr const char* kSignaling =
      "Outputs a subset of the first array starting at index and having count elements as "
      "another array. If too many elements are requested then only the available number is "
      "returned without signaling an error. The element at index is included.";
  static constexpr const char* kSignalling =
      "Outputs a subset of the first array starting at index and having count elements as "
      "another array. If too many elements are requested then only the available number is "
      "returned without signalling an error. The element at index is included.";
};

}  // namespace zet
