// Values: the conversion table, in-place typing, inline storage and vectors.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "zet/ZetObject.h"

namespace {

// An object assigned `v`, as an instruction assigns its outputs.
template <typename T>
CZetObject Of(const T& v) {
  CZetObject o;
  o = v;
  return o;
}

TEST(ZetObject, ScalarConversionTable) {
  const double kNaN = std::numeric_limits<double>::quiet_NaN();
  struct {
    const char* what;
    CZetObject value;
    ZET_OBJ_TYPE type;
    double asDouble;
    bool asBool;
    int asInt;
    const char* asText;
  } cases[] = {
      {"untyped", CZetObject(), ZET_OBJ_UNTYPED, 0.0, false, 0, ""},
      {"true", Of(true), ZET_OBJ_BOOL, 1.0, true, 1, ""},
      {"int", Of(-7), ZET_OBJ_INT, -7.0, true, -7, ""},
      {"number", Of(-2.75), ZET_OBJ_DOUBLE, -2.75, true, -2, ""},
      {"NaN", Of(kNaN), ZET_OBJ_DOUBLE, kNaN, true, INT32_MIN, ""},
      {"1e10", Of(1e10), ZET_OBJ_DOUBLE, 1e10, true, INT32_MIN, ""},
      {"text", Of(" 12.5abc"), ZET_OBJ_STRING, 12.5, true, 12, " 12.5abc"},
      {"word", Of("abc"), ZET_OBJ_STRING, 0.0, false, 0, "abc"},
      {"point", Of(CZetPoint(1, 2)), ZET_OBJ_POINT, 0.0, false, 0, ""},
      {"array", CZetObject(ZET_OBJ_NUMBER_ARRAY), ZET_OBJ_NUMBER_ARRAY, 0.0, false, 0, ""},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.what);
    EXPECT_EQ(c.value.GetType(), c.type);
    const double d = c.value.AsDouble();
    EXPECT_TRUE(d == c.asDouble || (std::isnan(d) && std::isnan(c.asDouble))) << d;
    EXPECT_EQ(c.value.AsBool(), c.asBool);
    EXPECT_EQ(c.value.AsInt(), c.asInt);
    EXPECT_STREQ(c.value.AsText(), c.asText);
  }
}

TEST(ZetObject, ProcessorIntConversions) {
  struct {
    double v;
    int trunc, round;
  } cases[] = {{0.5, 0, 0},           {1.5, 1, 2},
               {2.5, 2, 2},           {-2.5, -2, -2},
               {-0.0, 0, 0},          {2147483647.0, INT32_MAX, INT32_MAX},
               {2147483647.9, INT32_MAX, INT32_MIN}, {2147483648.0, INT32_MIN, INT32_MIN},
               {-2147483648.9, INT32_MIN, INT32_MIN}, {-2147483649.0, INT32_MIN, INT32_MIN},
               {HUGE_VAL, INT32_MIN, INT32_MIN},      {std::nan(""), INT32_MIN, INT32_MIN}};
  for (const auto& c : cases) {
    SCOPED_TRACE(c.v);
    EXPECT_EQ(ZetTruncInt32(c.v), c.trunc);
    EXPECT_EQ(ZetRoundInt32(c.v), c.round);
  }
}

// A reference to a scalar kind converts in place; to another kind the object gets an
// empty value of that kind (how an untyped output becomes an array).
TEST(ZetObject, ReferenceConversions) {
  CZetObject o = Of(7);
  CZetDouble& d = o;
  EXPECT_EQ(static_cast<double>(d), 7.0);
  EXPECT_EQ(o.GetType(), ZET_OBJ_DOUBLE);
  o = "text";
  CZetBoolVector& b = o;
  EXPECT_EQ(o.GetType(), ZET_OBJ_BOOL_ARRAY);
  EXPECT_EQ(b.Size(), 0u);
  EXPECT_TRUE(b.PushBack(true));
  EXPECT_TRUE(b[0]);
}

TEST(ZetObject, CopiesAreDeepAndEqualityFollowsValues) {
  CZetObject a(ZET_OBJ_STRING_ARRAY);
  a.Ref<CZetStringVector>().PushBack(CZetString("one"));
  CZetObject b = a;
  b.Ref<CZetStringVector>()[0] = "two";
  EXPECT_STREQ(a.Ref<CZetStringVector>()[0], "one");
  EXPECT_FALSE(a == b);
  b = a;
  EXPECT_TRUE(a == b);
  CZetObject moved = std::move(b);
  EXPECT_TRUE(moved == a);
  EXPECT_TRUE(b.IsEmpty());
  // Values are held whole: text with zero bytes, both members of a line.
  EXPECT_EQ(Of(std::string("a\0b", 3)).AsString(), std::string("a\0b", 3));
  const CZetObject line = Of(CZetLine(0.5, 10));
  ASSERT_NE(line.Get<CZetLine>(), nullptr);
  EXPECT_TRUE(*line.Get<CZetLine>() == CZetLine(0.5, 10));
}

// The cap counts the texts of a string vector: 300 000 copies of 5 000 characters
// (1.5 GB of text in 12 MB of elements) are refused before anything is allocated.
TEST(ZetObject, StringVectorCapCountsTheTexts) {
  const CZetString text(std::string(5000, 'x'));
  CZetStringVector v;
  EXPECT_FALSE(v.Insert(0, 300000, text));
  EXPECT_EQ(v.Size(), 0u);
  ASSERT_TRUE(v.Insert(0, 1000, text));
  EXPECT_FALSE(v.Insert(1000, 214000, text));  // 1000 + 214000 texts pass 2^30 bytes
  EXPECT_EQ(v.Size(), 1000u);
  EXPECT_TRUE(v.Insert(0, 1000000, CZetString("")));  // empty texts count as elements only
  EXPECT_TRUE(v.PushBack(text));
  EXPECT_EQ(v.Size(), 1001001u);
}

TEST(ZetObject, VectorInsertAndCap) {
  CZetNumberVector v;
  EXPECT_TRUE(v.Insert(0, 0, 1.0));
  EXPECT_EQ(v.Size(), 0u);
  EXPECT_TRUE(v.Insert(v.Size(), 3, 2.0));
  EXPECT_TRUE(v.Insert(1, 1, 5.0));
  ASSERT_EQ(v.Size(), 4u);
  EXPECT_EQ(v[1], 5.0);
  EXPECT_FALSE(v.Resize(0xFFFFFFFFu));
  EXPECT_FALSE(v.Insert(0, 0xFFFFFFFFu, 0.0));  // beyond the cap: the only refusal
  EXPECT_EQ(v.Size(), 4u);
}

// Positions and counts out of range behave as a growable array's: clamped,
// never refused.
TEST(ZetObject, VectorInsertAndEraseClampAsAGrowableArray) {
  const auto Vec = [](std::vector<double> items) {
    CZetNumberVector v;
    v.Std() = std::move(items);
    return v;
  };
  const struct {
    const char* what;
    int64_t pos, count;
    std::vector<double> want;
  } inserts[] = {
      {"past the end appends", 9, 2, {1, 2, 3, 0, 0}},
      {"negative position at the front", -4, 1, {0, 1, 2, 3}},
      {"negative count nothing", 1, -3, {1, 2, 3}},
      {"most negative count nothing", 0, INT32_MIN, {1, 2, 3}},
  };
  for (const auto& c : inserts) {
    CZetNumberVector v = Vec({1, 2, 3});
    EXPECT_TRUE(v.Insert(c.pos, c.count, 0.0)) << c.what;
    EXPECT_EQ(v.Std(), c.want) << c.what;
  }
  EXPECT_EQ(Vec({1, 2, 3}).InsertionPoint(-1), 0u);
  EXPECT_EQ(Vec({1, 2, 3}).InsertionPoint(7), 3u);
  const struct {
    const char* what;
    int64_t pos, count;
    std::vector<double> want;
  } erases[] = {
      {"negative start from the first", -2, 3, {2, 3}},
      {"negative start, range before the array", -5, 2, {1, 2, 3}},
      {"past the end nothing", 5, 1, {1, 2, 3}},
      {"at the end nothing", 3, 2, {1, 2, 3}},
      {"clipped at the end", 1, 100, {1}},
      {"negative count nothing", 0, -1, {1, 2, 3}},
      {"whole range of int32", INT32_MIN, int64_t{INT32_MAX} - INT32_MIN + 1, {}},
  };
  for (const auto& c : erases) {
    CZetNumberVector v = Vec({1, 2, 3});
    EXPECT_TRUE(v.Erase(c.pos, c.count)) << c.what;
    EXPECT_EQ(v.Std(), c.want) << c.what;
  }
}

}  // namespace
