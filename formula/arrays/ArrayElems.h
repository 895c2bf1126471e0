// The five element types of the typed arrays: what each one is (descriptor codes,
// vector, category, the default of a value input, how a value input is read, an order
// for the difference) and the deliberate differences between the families, one named
// flag each. The shared operations (ArrayOps.h) are written once over these traits;
// a flag is read in exactly one place, so each difference is one visible line there.
#pragma once

#include <cmath>

#include "frame/Instr.h"

namespace zet {

// The rule most families follow; a trait overrides the flags that differ.
struct SArrayRules {
  // Index comparisons take the index as unsigned, so every negative index counts as
  // too large. Only EraseRange shows it: there a negative start is rejected.
  static constexpr bool kUnsignedIndex = false;
  // Insert rejects a negative index (it makes no test against the size).
  static constexpr bool kInsertTestsIndex = true;
  // AppendRep reads its count as unsigned: only 0 appends nothing, and a negative
  // count is a huge one, which the vector refuses at its cap.
  static constexpr bool kAppendRepUnsignedCount = false;
  // GetRange accepts index == size and gives an empty range.
  static constexpr bool kGetRangeAcceptsEnd = false;
  // SetAt reads its index through the value's own integer conversion instead of
  // truncating the number.
  static constexpr bool kSetAtOwnInt = true;
  // The name of GetRange's array input.
  static constexpr const char* kGetRangeArrayName = "array";
};

// Elements that can equal another element are ordered by `<` on their fields, an
// order whose equivalence is exactly the element's equality; an element with a NaN
// field equals nothing, itself included, and is left out of that order.
struct NumberElem : SArrayRules {
  using Vec = CZetNumberVector;
  static constexpr int kType = kTypeNumber;
  static constexpr int kArrayType = kTypeNumberArray;
  static CDefault ValDefault() { return 0.0; }
  static double Read(const CArgs& a, int i) { return a.Number(i); }
  static bool Comparable(double v) { return !std::isnan(v); }
  static bool Less(double x, double y) { return x < y; }
  // Deliberate: only the number GetRange takes index == size (an empty range).
  static constexpr bool kGetRangeAcceptsEnd = true;
};

struct BooleanElem : SArrayRules {
  using Vec = CZetBoolVector;
  static constexpr int kType = kTypeBool;
  static constexpr int kArrayType = kTypeBoolArray;
  static CDefault ValDefault() { return false; }
  static CZetBool Read(const CArgs& a, int i) { return a.Bool(i); }
  // Boolean arrays have no difference instruction, so no order.
};

struct StringElem : SArrayRules {
  using Vec = CZetStringVector;
  static constexpr int kType = kTypeString;
  static constexpr int kArrayType = kTypeStringArray;
  static CDefault ValDefault() { return kEmptyText; }
  // The whole text, embedded zero bytes included; a value of another kind reads as
  // the empty string.
  static CZetString Read(const CArgs& a, int i) { return CZetString(a.String(i)); }
  static bool Comparable(const CZetString&) { return true; }
  static bool Less(const CZetString& x, const CZetString& y) { return x.Str() < y.Str(); }
};

// Point and line value inputs default to the zero value of their kind, as elsewhere
// in the library.
struct PointElem : SArrayRules {
  using Vec = CZetPointVector;
  static constexpr int kType = kTypePoint;
  static constexpr int kArrayType = kTypePointArray;
  static CDefault ValDefault() { return CZetPoint(0.0, 0.0); }
  static CZetPoint Read(const CArgs& a, int i) { return a.Point(i); }
  static bool Comparable(const CZetPoint& p) { return !std::isnan(p.x) && !std::isnan(p.y); }
  static bool Less(const CZetPoint& p, const CZetPoint& q) {
    return p.x < q.x || (p.x == q.x && p.y < q.y);
  }
  // Deliberate, as point arrays always behaved: unsigned index comparisons, no index
  // test in Insert, an unsigned AppendRep count, and SetAt truncating its index.
  static constexpr bool kUnsignedIndex = true;
  static constexpr bool kInsertTestsIndex = false;
  static constexpr bool kAppendRepUnsignedCount = true;
  static constexpr bool kSetAtOwnInt = false;
};

struct LineElem : SArrayRules {
  using Vec = CZetLineVector;
  static constexpr int kType = kTypeLine;
  static constexpr int kArrayType = kTypeLineArray;
  static CDefault ValDefault() { return CZetLine(0.0, 0.0); }
  static CZetLine Read(const CArgs& a, int i) { return a.Line(i); }
  static bool Comparable(const CZetLine& l) { return !std::isnan(l.a) && !std::isnan(l.d); }
  static bool Less(const CZetLine& l, const CZetLine& m) {
    return l.a < m.a || (l.a == m.a && l.d < m.d);
  }
  // Deliberate: SetAt truncates its index, and GetRange calls its array "first".
  static constexpr bool kSetAtOwnInt = false;
  static constexpr const char* kGetRangeArrayName = "first";
};

}  // namespace zet
