// The five array element types as the array tests see them: how to build an array and
// a value of each, three distinct sample elements and the default element, and the
// identifiers of an operation's instruction (the irregular ones included).
#pragma once

#include <string>
#include <vector>

#include "Harness.h"

namespace zet::test {

template <class Vec, char Letter>
struct TArrayType {
  using Item = typename Vec::value_type;
  static constexpr char kLetter = Letter;
  static CZetObject Arr(const std::vector<Item>& items) {
    CZetObject o(Vec::kType);
    o.Ref<Vec>().Std() = items;
    return o;
  }
  // The elements of an output that must hold this array kind.
  static std::vector<Item> Elements(const CZetObject& o) {
    const Vec* v = o.Get<Vec>();
    if (!v) ADD_FAILURE() << "not an array of this kind: type " << o.GetType();
    return v ? v->Std() : std::vector<Item>{};
  }
  // The element count of an output of this array kind, -1 for any other kind.
  static long Count(const CZetObject& o) {
    const Vec* v = o.Get<Vec>();
    return v ? static_cast<long>(v->Size()) : -1;
  }
  static CZetObject Val(const Item& v) {
    CZetObject o;
    o = v;
    return o;
  }
  // The identifier of this type's instruction for an operation.
  static std::string Ident(const std::string& op) {
    const std::string cls = std::string("C") + Letter + "Arr" + op;
    if (op == "Size") return "_Zet_System_" + cls + "_";
    if (cls == "CPArrConcatArr") return "_Zet_Array_CArrConcatArr_";
    return "_Zet_Array_" + cls + "_";
  }
};

struct NumberT : TArrayType<CZetNumberVector, 'N'> {
  static std::vector<Item> Abc() { return {1.5, -2.0, 7.0}; }
  static Item X() { return 42.0; }
  static Item Y() { return -0.25; }
};
struct BooleanT : TArrayType<CZetBoolVector, 'B'> {
  static std::vector<Item> Abc() { return {true, false, false}; }
  static Item X() { return true; }
  static Item Y() { return true; }
};
struct StringT : TArrayType<CZetStringVector, 'S'> {
  static std::vector<Item> Abc() { return {"alpha", "", std::string("a\0b", 3)}; }
  static Item X() { return "x"; }
  static Item Y() { return "why"; }
};
struct PointT : TArrayType<CZetPointVector, 'P'> {
  static std::vector<Item> Abc() { return {{1, 2}, {-3, 0.5}, {7, 7}}; }
  static Item X() { return {42, -42}; }
  static Item Y() { return {0.5, 0.25}; }
};
struct LineT : TArrayType<CZetLineVector, 'L'> {
  static std::vector<Item> Abc() { return {{0.5, 10}, {-1, 2}, {3, 0}}; }
  static Item X() { return {1.25, 42}; }
  static Item Y() { return {0, -1}; }
};

using AllArrayTypes = testing::Types<NumberT, BooleanT, StringT, PointT, LineT>;
using ArrayTypesWithDiff = testing::Types<NumberT, StringT, PointT, LineT>;

}  // namespace zet::test
