// Number/text conversions: the formatters over user formats, NumToString's
// parameters, the scanner and the character-code converters.
#include <cmath>
#include <cstring>
#include <limits>

#include "Harness.h"

namespace zet::test {
namespace {

const double kNaN = std::numeric_limits<double>::quiet_NaN();

// Deliberate: the apostrophe in these descriptions is the single byte 0x92, not UTF-8.
TEST(Formatting, DescriptionsCarryTheSingleByteApostrophe) {
  for (const char* instr : {"PrintfNum", "PrintfNumInf"})
    EXPECT_TRUE(std::strstr(InfoOf(instr).description, "\"sprintf\"\x92s float")) << instr;
}

TEST(Formatting, PrintfNum) {
  const struct {
    const char* fmt;
    double x;
    std::string want;
  } cases[] = {
      {"%f", 3.14159, "3.141590"},
      {"%08.2f", -3.14159, "-0003.14"},
      {"T=%.3e s", 12345.678, "T=1.235e+04 s"},
      {"%g|%G", 1e-10, "1e-10|0"},  // the second conversion has no number left
      {"%5.1f%%", 99.44, " 99.4%"},
      // Nothing reads an argument that is not the number.
      {"%s|%n|%p", 1, "%s|%n|%p"},
      {"%d|%x|%c", 65.9, "65|0|"},  // %x and %c get 0.0: the number is used up
      {"a%cb", 0, "a"},             // the output is a zero-terminated text
      {"%999999999.99999999f", 1, std::string(CStdStr::kFormatLimit, ' ')},  // what fits
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.fmt);
    EXPECT_EQ(Exec("PrintfNum", {V(c.fmt), V(c.x)}).Out(0).AsString(), c.want);
  }
}

// Deliberate: 17 numbers are formatted; an 18th turns the whole output into "0" with a
// warning.
TEST(Formatting, PrintfNumInf) {
  std::string fmt;
  std::vector<CZetObject> in(1);
  for (int i = 1; i <= 17; ++i) {
    fmt += "%g,";
    in.push_back(V(static_cast<double>(i)));
  }
  in[0] = V(fmt + "%g,");
  CRun r = Exec("PrintfNumInf", in);
  EXPECT_EQ(r.Out(0).AsString(), "1,2,3,4,5,6,7,8,9,10,11,12,13,14,15,16,17,0,");
  EXPECT_TRUE(r.reports.empty());
  in.push_back(V(18.0));
  r = Exec("PrintfNumInf", in);
  EXPECT_EQ(r.status, 0);
  EXPECT_EQ(r.Out(0).AsString(), "0");
  ASSERT_EQ(r.reports.size(), 1u);
  EXPECT_EQ(r.Report(0).level, 1);
  EXPECT_EQ(r.Report(0).source, "PrintfNumInf");
  EXPECT_EQ(r.Report(0).text, "Too many number arguments");
  EXPECT_EQ(Exec("PrintfNumInf", {V("%g %g %g"), V(5.0)}).Out(0).AsString(), "5 0 0");
  EXPECT_EQ(Exec("PrintfNumInf", {V("%g %s")}).Out(0).AsString(), "0 %s");
}

TEST(Formatting, NumToString) {
  const struct {
    bool sign;
    int digits, padding, decimals;
    double x;
    std::string want;
  } cases[] = {
      {false, 8, 0, 3, -2.5, "-2.500"},
      {true, 8, 0, 3, 2.5, "+2.500"},
      {false, 8, 1, 3, 3.14159, "0003.142"},  // the width counts the whole field
      {true, 8, 1, 3, 3.14159, "+003.142"},
      {false, 8, 2, 3, 1.5, "   1.500"},
      {false, 8, 0, 0, 2.5, "2"},             // the runtime rounds half to even
      {false, 2, 1, 3, 123.0, "123.000"},
      {false, 30, 3, 1, 1.0, "1.0"},          // an unknown padding ignores the digits
      {false, -6, 1, 1, 1.0, "1.0   "},       // "%0-6.1f": out of range, still printf's
      {false, 8, 0, 5000, 1.0, "1." + std::string(5000, '0')},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.want.substr(0, 20));
    SRunOptions opt;
    opt.params = {V(c.sign), V(c.digits), V(c.padding), V(c.decimals)};
    EXPECT_EQ(Exec("NumToString", {V(c.x)}, opt).Out(0).AsString(), c.want);
  }
  SRunOptions wide;
  wide.params = {V(false), V(INT32_MAX), V(1), V(INT32_MAX)};
  // The width never exceeds the text, so nothing is padded: 1. and zeros, to the limit.
  EXPECT_EQ(Exec("NumToString", {V(1.0)}, wide).Out(0).AsString(),
            "1." + std::string(CStdStr::kFormatLimit - 2, '0'));
}

// Deliberate: a "0x" anywhere in the text makes it scan as hexadecimal.
TEST(Formatting, StringToNum) {
  const struct {
    const char* text;
    double value;
    bool ok;
  } cases[] = {
      {"0x1F", 31, true},      {"abc", 0, false},         {"   -4.5e2", -450, true},
      {"10 (0x)", 16, true},   {"12abc", 12, true},       {"0xFFFFFFFF", -1, true},
      {"0X7fffffff", 2147483647, true},                   {"", 0, false},
      {"zz0x", 0, false},      {"1.5 0x2", 1, true},     {"\t\n7", 7, true},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.text);
    const CRun r = Exec("StringToNum", {V(c.text)});
    EXPECT_EQ(r.Out(0).AsDouble(), c.value);
    EXPECT_EQ(r.Out(1).AsBool(), c.ok);
  }
}

TEST(Formatting, CharToNumAndBack) {
  EXPECT_EQ(Exec("CharToNum", {V("")}).Out(0).Get<CZetNumberVector>()->Size(), 0u);
  EXPECT_EQ(Exec("CharToNum", {V("A\xE9")}).Out(0).Get<CZetNumberVector>()->Std(),
            (std::vector<double>{65, -23}));
  const struct {
    double count;
    CZetObject chars;
    const char* want;
  } cases[] = {
      {3, NumArr({72, 105}), "Hi"},     {1, NumArr({72, 105}), "H"},
      {0, NumArr({72, 105}), ""},       {kNaN, NumArr({72, 105}), "Hi"},
      {3, NumArr({}), ""},              {3, V("not an array"), ""},
      {2, NumArr({321.9, -191, kNaN}), "AA"},  // low 8 bits of the truncated value
      // Deliberate: a negative count is a huge unsigned one; a zero element ends the text.
      {-1, NumArr({72, 105}), "Hi"},    {3, NumArr({65, 0, 66}), "A"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.want);
    EXPECT_EQ(Exec("NumToChar", {V(c.count), c.chars}).Out(0).AsString(), c.want);
  }
}

TEST(Formatting, CreateStrInf) {
  EXPECT_EQ(Exec("CreateStrInf", {V("ab"), V(""), V("c"), V(std::string("d\0e", 3))})
                .Out(0).AsString(),
            "abcd");
  EXPECT_EQ(Exec("CreateStrInf", {}).Out(0).AsString(), "");
}

}  // namespace
}  // namespace zet::test
