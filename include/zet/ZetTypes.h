// ZetTypes: the platform's text type CStdStr and the containers built over it.
//
// CStdStr is a std::string with the printf-style Format of the platform and the
// MFC-like helpers (Left, Right, Mid, Replace) the instructions use. Texts are single
// bytes (Windows-1252); nothing here interprets them as UTF-8.
#pragma once

#include <cstdarg>
#include <map>
#include <string>
#include <vector>

#include "zet/ZetExport.h"

class ZET_PLATFORM_API CStdStr : public std::string {
 public:
  using std::string::string;
  CStdStr() = default;
  CStdStr(const std::string& s) : std::string(s) {}  // NOLINT: implicit on purpose
  CStdStr(std::string&& s) : std::string(std::move(s)) {}  // NOLINT

  // printf-style formatting through the C runtime's bounded formatter. The scratch
  // buffer starts at 2048 characters and grows through 6144, 12288, 20480, 30720 and
  // 43008 while the runtime reports overflow; after the sixth attempt whatever fits
  // (kFormatLimit characters) is kept. Only for formats written by this code base:
  // user formats go through FormatDoubles.
  void Format(const char* fmt, ...) __attribute__((format(printf, 2, 3)));
  void FormatV(const char* fmt, va_list args);

  // Formats user-supplied `fmt` with `count` doubles as its only possible arguments.
  // The format is parsed, never handed to the runtime whole, so no conversion can read
  // an argument that is not one of the doubles. A conversion is '%', flags among
  // - + space # 0 ' (each may repeat), a width (digits or `*`), a precision ('.' and
  // digits or `*`), length modifiers (hh h l ll L q j z Z t, all ignored) and a letter:
  //  - a A e E f F g G: the next double, printed as ISO C's printf prints it with
  //    those flags, width and precision (so %Lf and %lf are %f), by the C runtime;
  //    %#g and %#G are handed on as the %e or %f (%E, %F) conversion they stand for,
  //    since runtimes differ where rounding carries into a new decimal exponent;
  //  - d i o u x X: the next double truncated toward zero to a 64-bit integer (NaN
  //    gives 0, out-of-range values saturate), printed as %lld, or as %llo %llu %llx
  //    %llX of its two's complement (so %X of -1 is sixteen F);
  //  - c: the byte whose code is the low 8 bits of the next double truncated toward
  //    zero (a code of 0 puts a zero byte in the result); the precision is dropped;
  //  - %: one percent sign, whatever flags, width or precision stand between, as the
  //    C runtime prints it;
  //  - `*` as width or precision (with any of the letters above): takes the next
  //    double first, truncated by ZetTruncInt32 as printf's int argument would be; a
  //    negative width means left-justify, a negative precision is as if omitted;
  //  - s, p, n, any other letter, a positional "%1$f", a flag outside the list above,
  //    and a format ending inside a conversion: the conversion's text is copied
  //    literally and takes no double.
  // Doubles are taken in format order; a conversion with no double left uses 0.0, and
  // doubles left over are ignored. The result holds at most kFormatLimit characters,
  // as with Format (what fits is kept). Widths and precisions are clamped far above
  // that limit before the runtime sees them, so a huge one ("%999999999f",
  // "%.99999999f") costs bounded time and memory and yields the same kept text as
  // the unclamped conversion would. A null `fmt` gives the empty text.
  static CStdStr FormatDoubles(const char* fmt, const double* args, int count);

  CStdStr Left(int n) const;
  CStdStr Right(int n) const;
  CStdStr Mid(int first, int count) const;
  CStdStr Mid(int first) const;
  // Replaces every non-overlapping occurrence of `what`, scanning on after each
  // inserted replacement; returns the number of replacements. An empty `what` does
  // nothing.
  int Replace(const std::string& what, const std::string& with);

  static constexpr int kFormatLimit = 43008 - 1;
};

using CStdStrVector = std::vector<CStdStr>;
using CIntStrMap = std::map<int, CStdStr>;
