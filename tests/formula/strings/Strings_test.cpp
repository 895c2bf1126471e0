// String manipulation: a table over the edge cases and the kept quirks (every run
// starts with the output "prev", so "prev" means the output was left unchanged), and
// hostile sizes.
#include <cmath>
#include <cstring>
#include <limits>
#include <stdexcept>

#include "Harness.h"

namespace zet::test {
namespace {

const double kNaN = std::numeric_limits<double>::quiet_NaN();
const double kInf = std::numeric_limits<double>::infinity();
const double k2p31 = 2147483648.0;

TEST(Strings, Table) {
  const struct {
    const char* instr;
    std::vector<CZetObject> in;
    CZetObject want;  // a text or a number
  } cases[] = {
      {"LeftStr", {V("abc"), V(5.0)}, V("abc")},
      {"LeftStr", {V("abc"), V(1.9)}, V("a")},
      {"LeftStr", {V("abc"), V(-0.5)}, V("")},  // truncates to 0, not negative
      {"LeftStr", {V("abc"), V(-1.0)}, V("prev")},
      {"LeftStr", {V("abc"), V(kNaN)}, V("prev")},
      {"LeftStr", {V("abc"), V(k2p31)}, V("prev")},
      {"LeftStr", {V("abc"), V(k2p31 - 1)}, V("abc")},
      {"RightStr", {V("abc"), V(2.0)}, V("bc")},
      {"RightStr", {V("abc"), V(-kInf)}, V("prev")},
      {"MidStr", {V("abcdef"), V(2.0), V(10.0)}, V("cdef")},
      {"MidStr", {V("abc"), V(4.0), V(1.0)}, V("")},
      {"MidStr", {V("abc"), V(3.0), V(1.0)}, V("")},
      {"MidStr", {V("abc"), V(-1.0), V(1.0)}, V("prev")},
      {"MidStr", {V("abc"), V(1.0), V(kNaN)}, V("prev")},
      {"TrimStr", {V("abcdef"), V(1.0), V(2.0)}, V("bcd")},
      {"TrimStr", {V("abc"), V(2.0), V(2.0)}, V("")},
      {"TrimStr", {V("abc"), V(5.0), V(0.0)}, V("")},
      {"TrimStr", {V("abc"), V(k2p31 - 1), V(k2p31 - 1)}, V("")},
      {"TrimStr", {V("abc"), V(0.0), V(-1.0)}, V("prev")},
      {"AddStr", {V("ab"), V("cd")}, V("abcd")},
      {"CopyStr", {V(std::string("a\0b", 3))}, V("a")},  // a zero byte ends a text
      {"LenStr", {V(std::string("a\0b", 3))}, V(1.0)},
      {"LenStr", {V("\xE9t\xE9")}, V(3.0)},
      {"PackStr", {StrArr({"a", "", "bc"})}, V("abc")},
      {"PackStr", {StrArr({})}, V("")},
      {"PackStr", {V("not an array")}, V("")},
      {"SetString", {V(2.5)}, V(2.5)},  // the whole value, type included
      {"CompStr", {V("abc"), V("ABD"), V(false)}, V(-1.0)},
      {"CompStr", {V("abc"), V("ABC"), V(false)}, V(0.0)},
      {"CompStr", {V("abc"), V("ABC"), V(true)}, V(1.0)},
      {"CompStr", {V("abc"), V("abcd"), V(true)}, V(-1.0)},
      {"CompStr", {V("zz"), V("a")}, V(1.0)},  // case sensitive by default
      // Deliberate: bytes 128 to 255 order before ASCII without case sensitivity (signed
      // bytes) and after it with (unsigned), so a prefix can come out greater.
      {"CompStr", {V("\xE9"), V("a"), V(true)}, V(1.0)},
      {"CompStr", {V("\xE9"), V("a"), V(false)}, V(-1.0)},
      {"CompStr", {V("abc"), V("abc\xE9"), V(false)}, V(1.0)},
      {"CompStr", {V("abc"), V("abc\xE9"), V(true)}, V(-1.0)},
      {"FindStr", {V("abcabc"), V("bc")}, V(1.0)},
      {"FindStr", {V("abc"), V("")}, V(0.0)},
      {"FindStr", {V(""), V("x")}, V(-1.0)},
      {"FindStrReverse", {V("abcabc"), V("bc")}, V(4.0)},
      {"FindStrReverse", {V("abc"), V("")}, V(3.0)},
      {"FindStrReverse", {V("abc"), V("x")}, V(-1.0)},
      {"FindStrNth", {V("abcabcx"), V("abc"), V(2.0)}, V(3.0)},
      {"FindStrNth", {V("abcabcx"), V("abc"), V(3.0)}, V(-1.0)},
      {"FindStrNth", {V("abcabcx"), V("abc"), V(0.0)}, V(0.0)},  // below 1 counts as 1
      {"FindStrNth", {V("abcabcx"), V("abc"), V(kNaN)}, V(0.0)},
      {"FindStrNth", {V("aaaaa"), V("aa"), V(2.0)}, V(2.0)},  // no overlap
      {"FindStrNth", {V("abc"), V(""), V(1.0)}, V(-1.0)},
      {"FindStrNth", {V(""), V("a"), V(1.0)}, V(-1.0)},
      // Deliberate: an occurrence that ends exactly at the end of the source is never
      // reported, even when it is the one asked for.
      {"FindStrNth", {V("xxabc"), V("abc"), V(1.0)}, V(-1.0)},
      {"FindStrNth", {V("abcabc"), V("abc"), V(2.0)}, V(-1.0)},
      {"FindStrNth", {V("abc"), V("abc"), V(1.0)}, V(-1.0)},
      {"ReplaceStr", {V("aaa"), V("a"), V("aa")}, V("aaaaaa")},  // deliberate: goes on after
      {"ReplaceStr", {V("aaa"), V("aa"), V("b")}, V("ba")},
      {"ReplaceStr", {V("abcabc"), V("b"), V("")}, V("acac")},
      {"ReplaceStr", {V("abc"), V(""), V("x")}, V("abc")},
      {"_Zet_String_CGetAt_", {V("abc"), V(0.0)}, V(97.0)},
      {"_Zet_String_CGetAt_", {V("abc"), V(2.9)}, V(99.0)},
      {"_Zet_String_CGetAt_", {V("\xE9"), V(0.0)}, V(-23.0)},
      {"_Zet_String_CGetAt_", {V("abc"), V(4.0)}, V(-1.0)},
      {"_Zet_String_CGetAt_", {V("abc"), V(-1.0)}, V("prev")},
      {"SetAtStr", {V("abc"), V(1.0), V(88.0)}, V("aXc")},
      {"SetAtStr", {V("abc"), V(1.0), V(256 + 88.0)}, V("aXc")},
      {"SetAtStr", {V("abc"), V(1.0), V(0.0)}, V("a")},  // the text ends at a zero byte
      {"SetAtStr", {V("abc"), V(3.0), V(88.0)}, V("prev")},
      {"SetAtStr", {V("abc"), V(-1.0), V(88.0)}, V("prev")},
      {"SetAtStr", {V("abc"), V(1.0), V(-1.0)}, V("prev")},
      {"InsertAtStr", {V("abc"), V(0.0), V("x")}, V("xabc")},
      {"InsertAtStr", {V("abc"), V(2.0), V("XY")}, V("abXYc")},
      // Deliberate: inserting at the end, or into nothing, is refused with "***Empty***".
      {"InsertAtStr", {V("abc"), V(3.0), V("d")}, V("***Empty***")},
      {"InsertAtStr", {V("abc"), V(-1.0), V("x")}, V("***Empty***")},
      {"InsertAtStr", {V(""), V(0.0), V("x")}, V("***Empty***")},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(std::string(c.instr) + " #" + std::to_string(&c - cases));
    SRunOptions opt;
    opt.outputs = {V("prev")};
    const CRun r = Exec(c.instr, c.in, opt);
    EXPECT_EQ(r.status, 0);
    EXPECT_FALSE(r.threw) << r.exception;
    EXPECT_EQ(r.Out(0).GetType(), c.want.GetType());
    if (c.want.GetType() == ZET_OBJ_STRING)
      EXPECT_EQ(r.Out(0).AsString(), c.want.AsString());
    else
      EXPECT_EQ(r.Out(0).AsDouble(), c.want.AsDouble()) << r.Out(0).AsString();
  }
}

// Deliberate: words are split on ASCII white space only; 0xA0 and 0xE9 are word bytes.
TEST(Strings, WordLength) {
  const struct {
    const char* text;
    double min, max, count;
  } cases[] = {
      {"  abc \t hello  ", 3, 5, 2}, {"", 0, 0, 0},        {" \t\n\v\f\r", 0, 0, 0},
      {"one", 3, 3, 1},             {"a\nbb\vccc", 1, 3, 3}, {"a\xA0\xE9 b", 1, 3, 2},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.text);
    const CRun r = Exec("GetWordLength", {V(c.text)});
    EXPECT_EQ(r.Out(0).AsDouble(), c.min);
    EXPECT_EQ(r.Out(1).AsDouble(), c.max);
    EXPECT_EQ(r.Out(2).AsDouble(), c.count);
  }
}

// Deliberate: the position just past the end is not answered with -1; the string's
// bounds check throws out of Execute, and the host catches it.
TEST(Strings, GetAtAtTheLengthThrows) {
  for (const char* text : {"abc", ""}) {
    SCOPED_TRACE(text);
    const CRun r = Exec("_Zet_String_CGetAt_", {V(text), V(static_cast<double>(std::strlen(text)))});
    EXPECT_TRUE(r.Threw<std::out_of_range>()) << r.exception;
  }
}

TEST(Strings, PackOfAHundredThousandStrings) {
  CZetObject arr(ZET_OBJ_STRING_ARRAY);
  std::string want;
  for (int i = 0; i < 100000; ++i) {
    const std::string s = std::to_string(i % 1000) + (i % 7 ? "," : "");
    arr.Ref<CZetStringVector>().PushBack(CZetString(s));
    want += s;
  }
  EXPECT_EQ(Exec("PackStr", {arr}).Out(0).AsString(), want);
}

}  // namespace
}  // namespace zet::test
