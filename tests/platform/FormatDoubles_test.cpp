// CStdStr::FormatDoubles: floating conversions against the C runtime where it is
// right, against ISO C where it is not (%#g when rounding carries), and the formats
// that must not reach it as they stand.
#include <gtest/gtest.h>

#include <cfloat>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <limits>
#include <string>
#include <vector>

#include "zet/ZetTypes.h"

namespace {

constexpr size_t kLimit = CStdStr::kFormatLimit;
const double kInf = std::numeric_limits<double>::infinity();
const double kNaN = std::numeric_limits<double>::quiet_NaN();

std::string Runtime(const char* fmt, double v) {
  std::string s(static_cast<size_t>(std::snprintf(nullptr, 0, fmt, v)), '\0');
  std::snprintf(s.data(), s.size() + 1, fmt, v);  // the terminator lands on s's own
  return s;
}

std::string Fmt(const char* fmt, std::vector<double> args = {}) {
  return CStdStr::FormatDoubles(fmt, args.data(), static_cast<int>(args.size()));
}

TEST(FormatDoubles, FloatingConversionsMatchTheRuntime) {
  const char* flags[] = {"",   "-",  "+",  " ",  "#",  "0",  "-+",
                         "+0", " 0", "#0", "-#", "+ ", "-0", "'"};
  const char* widths[] = {"", "0", "1", "12", "40"};
  const char* precisions[] = {"", ".", ".0", ".1", ".3", ".17", ".60"};
  const char convs[] = "aAeEfFgG";
  const double values[] = {0.0, -0.0, 1.0, -1.5, 3.14159265358979, 0.5, 2.5, 123456789.0,
                           1e-300, 1e300, DBL_MAX, DBL_MIN, 4.9e-324, kInf, -kInf, kNaN, -kNaN};
  int mismatches = 0;
  for (const char* fl : flags)
    for (const char* w : widths)
      for (const char* p : precisions)
        for (const char* c = convs; *c; ++c) {
          const std::string f = std::string("<%") + fl + w + p + *c + ">";
          for (double v : values) {
            const std::string want = Runtime(f.c_str(), v), got = Fmt(f.c_str(), {v});
            if (got != want && ++mismatches <= 20)
              ADD_FAILURE() << f << " of " << v << ": got " << got << ", want " << want;
          }
        }
  EXPECT_EQ(mismatches, 0);
}

// With '#', %g keeps its trailing zeros: P significant digits, in the e style when the
// exponent of the rounded value is below -4 or at least P. Some runtimes lose the
// digits when rounding carries into the next power of ten (999999.5 -> "1.e+06").
TEST(FormatDoubles, AlternativeGKeepsItsDigitsWhenRoundingCarries) {
  const struct {
    const char* fmt;
    double v;
    const char* want;
  } cases[] = {
      {"%#g", 999999.5, "1.00000e+06"},
      {"%#g", -999999.5, "-1.00000e+06"},
      {"%#012g", -999999.5, "-1.00000e+06"},  // twelve characters already
      {"%#013g", -999999.5, "-01.00000e+06"},
      {"%#-14G|", 999999.5, "1.00000E+06   |"},
      {"%#+.2g", 99.5, "+1.0e+02"},
      {"%#.3g", 99.95, "100."},  // X = 2 < P: the f style
      {"%#.0g", 9.5, "1.e+01"},  // P = 1
      {"%#.1g", 0.99, "1."},
      {"%#g", 9.9999995, "10.0000"},
      {"%#g", 0.000099999996, "0.000100000"},  // X = -4 after rounding
      {"%#G", 0.0000099999996, "1.00000E-05"},
      {"%#.17g", 0.1, "0.10000000000000001"},
      {"%#g", 0.0, "0.00000"},
      {"%# g", -0.0, "-0.00000"},
      {"%#g", kInf, "inf"},
      {"%#08G", -kInf, "    -INF"},
      {"%#g", kNaN, "nan"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(std::string(c.fmt) + " of " + std::to_string(c.v));
    EXPECT_EQ(Fmt(c.fmt, {c.v}), c.want);
  }
}

// Every precision of values on either side of a power of ten: %#.Pg has exactly P
// significant digits and the value of the correctly rounded %.(P-1)e, and %e, %f and
// %g (without '#') give the text of std::to_chars, an implementation of their own.
TEST(FormatDoubles, RoundingSweepAgainstAnIndependentFormatter) {
  std::vector<double> values;
  for (int k = -7; k <= 17; ++k) {
    const double p10 = std::pow(10.0, k);
    for (double f : {0.95, 0.995, 0.9995, 0.99995, 0.999995, 0.9999995, 0.99999995, 1.05, 0.5})
      values.insert(values.end(), {f * p10, -f * p10});
  }
  auto significant = [](const std::string& text) {
    int digits = 0;
    bool leading = true;
    for (char c : text) {
      if (c == 'e' || c == 'E') break;
      if (c < '0' || c > '9') continue;
      if (c != '0') leading = false;
      if (!leading) ++digits;
    }
    return digits;
  };
  auto toChars = [](double v, std::chars_format form, int precision) {
    char buf[512];
    return std::string(buf, std::to_chars(buf, buf + sizeof buf, v, form, precision).ptr);
  };
  for (double v : values) {
    for (int p = 1; p <= 17; ++p) {
      char alt[16], e[16], f[16], g[16];
      std::snprintf(alt, sizeof alt, "%%#.%dg", p);
      std::snprintf(e, sizeof e, "%%.%de", p);
      std::snprintf(f, sizeof f, "%%.%df", p);
      std::snprintf(g, sizeof g, "%%.%dg", p);
      SCOPED_TRACE(toChars(v, std::chars_format::scientific, 20) + " with " + alt);
      const std::string text = Fmt(alt, {v});
      ASSERT_EQ(significant(text), p) << text;
      const std::string rounded = toChars(v, std::chars_format::scientific, p - 1);
      EXPECT_EQ(std::strtod(text.c_str(), nullptr), std::strtod(rounded.c_str(), nullptr)) << text;
      EXPECT_EQ(Fmt(e, {v}), toChars(v, std::chars_format::scientific, p));
      EXPECT_EQ(Fmt(f, {v}), toChars(v, std::chars_format::fixed, p));
      EXPECT_EQ(Fmt(g, {v}), toChars(v, std::chars_format::general, p));
    }
  }
}

TEST(FormatDoubles, ArgumentsAndConversions) {
  const struct {
    const char* fmt;
    std::vector<double> args;
    std::string want;
  } cases[] = {
      // Doubles are taken in order; missing ones are 0.0, extra ones ignored.
      {"%g|%.2f|%e", {1.5, 2.0, 3.0}, "1.5|2.00|3.000000e+00"},
      {"%g %g %g", {5}, "5 0 0"},
      {"%g", {1, 2, 3}, "1"},
      {"no conversion", {1}, "no conversion"},
      {"%f", {}, "0.000000"},
      // Length modifiers are ignored: %Lf reads no long double.
      {"%lf %Lf %hf", {1, 2, 3}, "1.000000 2.000000 3.000000"},
      // Percent signs as the runtime prints them.
      {"100%%", {}, "100%"},
      {"%5%|%-05.3%|%l%", {}, "%|%|%"},
      // Stars take a double each, before the value.
      {"[%*.*f]", {8, 3, 3.14159}, "[   3.142]"},
      {"[%*f]", {-10, 1.5}, "[1.500000  ]"},
      {"[%.*f]", {-1, 1.5}, "[1.500000]"},
      {"[%*%]%g", {7, 9}, "[%]9"},
      // Integers: the double truncated toward zero to 64 bits.
      {"%d %i %d", {3.9, -3.9, kNaN}, "3 -3 0"},
      {"%d %d", {1e300, -kInf}, "9223372036854775807 -9223372036854775808"},
      {"%05d|%+d|%-4d|", {42, 7, 1}, "00042|+7|1   |"},
      {"%x %X %#o %u", {255, 255, 8, 12}, "ff FF 010 12"},
      {"%X", {-1}, "FFFFFFFFFFFFFFFF"},
      {"%hhd %ld %lld", {300, 1e12, -5}, "300 1000000000000 -5"},
      // %c: low 8 bits of the truncated value.
      {"%c%c%c", {72, 105.7, 256 + 33}, "Hi!"},
      {"[%-3c][%3c]", {65, 66}, "[A  ][  B]"},
      {"a%cb", {0}, std::string("a\0b", 3)},
      // Text that takes no double: copied literally.
      {"%s|%5.2s|%p|%n|%m|%b %f", {1.5}, "%s|%5.2s|%p|%n|%m|%b 1.500000"},
      {"%1$f %I5f %g", {2}, "%1$f %I5f 2"},
      {"%y%", {}, "%y%"},
      {"end %-5", {1}, "end %-5"},
      {"%", {}, "%"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.fmt);
    EXPECT_EQ(Fmt(c.fmt, c.args), c.want);
  }
  // No format, no arguments.
  EXPECT_EQ(CStdStr::FormatDoubles(nullptr, nullptr, 3), "");
  EXPECT_EQ(CStdStr::FormatDoubles("%g", nullptr, 3), "0");
  const double one = 1;
  EXPECT_EQ(CStdStr::FormatDoubles("%g %g", &one, -4), "0 0");
}

// Output stops at the limit. Huge widths and precisions are clamped; the kept text is
// what the runtime would keep of the full field.
TEST(FormatDoubles, OutputStopsAtTheLimit) {
  const struct {
    const char* huge;
    const char* runtime;  // a field long enough to show the same first kLimit bytes
    double v;
  } cases[] = {
      {"%999999999f", "%100000f", 1.0},
      {"%-999999999f|", "%-100000f|", 1.0},
      {"%0999999999f", "%0100000f", -1.0},
      {"%+099999999999999999999e", "%+0100000e", 2.5},
      {"%.99999999f", "%.100000f", 1.0 / 3},
      {"%.99999999e", "%.100000e", 1e-300},
      {"%#.99999999g", "%#.100000g", 0.1},
      {"%.99999999g", "%.100000g", 0.1},  // all 55 digits of 0.1, no trailing zeros
      {"%.99999999a", "%.100000a", 0.1},
      {"%999999999.99999999f", "%200000.100000f", -DBL_MAX},
      {"%-999999999.99999999f", "%-200000.100000f", -DBL_MAX},
      {"x%.2147483648f", "x%.100000f", 0.7},
      // A width below the value's full length pads nothing, however both are clamped.
      {"%0999999999.999999999f", "%0100000.100000f", 1.0},
      {"%#99999999.99999999g", "%#100000.100000g", 2.5},
      {"%99999999.999999999x", "%100000.100000x", 255},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.huge);
    EXPECT_EQ(Fmt(c.huge, {c.v}), Runtime(c.runtime, c.v).substr(0, kLimit));
  }
  // An integer's precision: zeros up to the limit.
  EXPECT_EQ(Fmt("%.99999999d", {5}), std::string(kLimit, '0'));
  // A NaN star width is INT32_MIN: left-justified and clamped.
  const std::string star = Fmt("%*g", {kNaN, 7});
  EXPECT_EQ(star.size(), kLimit);
  EXPECT_EQ(star.substr(0, 2), "7 ");
  // Literal text and many conversions stop at the limit too.
  const std::string text(50000, 'x');
  EXPECT_EQ(Fmt(text.c_str()), std::string(kLimit, 'x'));
  std::string many;
  for (int i = 0; i < 10000; ++i) many += "%f";
  const std::string got = Fmt(many.c_str(), {1});
  EXPECT_EQ(got.size(), kLimit);
  EXPECT_EQ(got.substr(0, 16), "1.0000000.000000");
  // Repeated flags count once.
  const std::string flags = "%" + std::string(100000, '-') + "6g|";
  EXPECT_EQ(Fmt(flags.c_str(), {1}), "1     |");
}

}  // namespace
