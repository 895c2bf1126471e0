// Values: the conversion table, in-place typing, inline storage and vectors.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "zet/ZetObject.h"

namespace {

TEST(ZetObject, ScalarConversionTable) {
  const double kNaN = std::numeric_limits<double>::quiet_NaN();
  struct {
    const char* what;
    CZetObject value;
    double asDouble;
    bool asBool;
    int asInt;
    const char* asText;
  } cases[] = {
      {"untyped", CZetObject(), 0.0, false, 0, ""},
      {"true", [] { CZetObject o; o = true; return o; }(), 1.0, true, 1, ""},
      {"int", [] { CZetObject o; o = -7; return o; }(), -7.0, true, -7, ""},
      {"number", [] { CZetObject o; o = -2.75; return o; }(), -2.75, true, -2, ""},
      {"NaN", [kNaN] { CZetObject o; o = kNaN; return o; }(), kNaN, true, INT32_MIN, ""},
      {"1e10", [] { CZetObject o; o = 1e10; return o; }(), 1e10, true, INT32_MIN, ""},
      {"text", [] { CZetObject o; o = " 12.5abc"; return o; }(), 12.5, true, 12, " 12.5abc"},
      {"word", [] { CZetObject o; o = "abc"; return o; }(), 0.0, false, 0, "abc"},
      {"point", [] { CZetObject o; o = CZetPoint(1, 2); return o; }(), 0.0, false, 0, ""},
      {"array", CZetObject(ZET_OBJ_NUMBER_ARRAY), 0.0, false, 0, ""},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.what);
    if (std::isnan(c.asDouble))
      EXPECT_TRUE(std::isnan(c.value.AsDouble()));
    else
      EXPECT_EQ(c.value.AsDouble(), c.asDouble);
    EXPECT_EQ(c.value.AsBool(), c.asBool);
    EXPECT_EQ(c.value.AsInt(), c.asInt);
    EXPECT_STREQ(c.value.AsText(), c.asText);
    // The conversion operators are the same reads.
    EXPECT_EQ(static_cast<int>(c.value), c.asInt);
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

TEST(ZetObject, AssignmentRetypesAndClear) {
  CZetObject o(ZET_OBJ_UNTYPED);
  o = 0.0;
  EXPECT_EQ(o.GetType(), ZET_OBJ_DOUBLE);
  EXPECT_EQ(o.AsDouble(), 0.0);
  o.Clear();
  EXPECT_TRUE(o.IsEmpty());
  o = "x";
  EXPECT_EQ(o.GetType(), ZET_OBJ_STRING);
  o = std::string("a\0b", 3);
  EXPECT_EQ(o.AsString().size(), 3u);
  EXPECT_STREQ(o.AsText(), "a");
  o = CZetLine(0.5, 10);
  EXPECT_EQ(o.GetType(), ZET_OBJ_LINE);
  EXPECT_EQ(o.Get<CZetLine>()->a, 0.5);
  EXPECT_EQ(o.Get<CZetLine>()->d, 10.0);
}

// A reference to a scalar kind converts in place; to another kind the object gets an
// empty value of that kind (how an untyped output becomes an array).
TEST(ZetObject, ReferenceConversions) {
  CZetObject o;
  o = 7;
  CZetDouble& d = o;
  EXPECT_EQ(static_cast<double>(d), 7.0);
  EXPECT_EQ(o.GetType(), ZET_OBJ_DOUBLE);
  o = "text";
  CZetNumberVector& v = o;
  EXPECT_EQ(v.Size(), 0u);
  EXPECT_EQ(o.GetType(), ZET_OBJ_NUMBER_ARRAY);
  CZetObject s;
  s.SetType(ZET_OBJ_NUMBER_ARRAY);
  EXPECT_EQ(s.Ref<CZetNumberVector>().Size(), 0u);
  CZetBoolVector& b = s;  // replaces the number array
  EXPECT_EQ(s.GetType(), ZET_OBJ_BOOL_ARRAY);
  EXPECT_TRUE(b.PushBack(true));
  EXPECT_TRUE(b[0]);
  EXPECT_TRUE(b.GetStorage()[0].m_v);
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
}

TEST(ZetObject, VectorInsertAndCap) {
  CZetNumberVector v;
  EXPECT_TRUE(v.Insert(0, 0, 1.0));
  EXPECT_EQ(v.Size(), 0u);
  EXPECT_TRUE(v.Insert(v.Size(), 3, 2.0));
  EXPECT_TRUE(v.Insert(1, 1, 5.0));
  ASSERT_EQ(v.Size(), 4u);
  EXPECT_EQ(v[1], 5.0);
  EXPECT_FALSE(v.Insert(9, 1, 0.0));  // past the end
  EXPECT_FALSE(v.Resize(0xFFFFFFFFu));
  EXPECT_FALSE(v.Insert(0, 0xFFFFFFFFu, 0.0));
  EXPECT_EQ(v.Size(), 4u);
  v.Erase(1, 100);
  EXPECT_EQ(v.Size(), 1u);
}

TEST(ZetObject, TextForms) {
  EXPECT_EQ(CZetPoint(1.25, -2).Format(2), "(1.25, -2.00)");
  EXPECT_EQ(CZetLine(0.5, 10).Format(1), "(0.5, 10.0)");
}

}  // namespace
