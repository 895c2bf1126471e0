// CStdStr::FormatDoubles: printf-style formatting of formats that come from users,
// with doubles as the only arguments.
//
// The format is never handed to the C runtime whole. It is parsed one conversion at a
// time; each conversion the engine accepts is rebuilt (its flags, a bounded width and
// precision, no length modifier, the conversion letter) and given to snprintf with
// exactly one argument of the type that rebuilt conversion reads. What each kind of
// conversion prints is documented with the declaration in ZetTypes.h.
//
// The output is what ISO C's printf prints, also where a C runtime is wrong: glibc
// prints %#g wrong when rounding carries into a new decimal exponent (999999.5 gives
// "1.e+06", not "1.00000e+06"), so the alternative form of g and G never reaches it
// as such (see AlternativeG).
#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>

#include "zet/ZetObject.h"
#include "zet/ZetTypes.h"

namespace {

constexpr size_t kLimit = CStdStr::kFormatLimit;

// Width and precision are clamped to these before the runtime sees them, which keeps
// its time and scratch bounded and changes nothing in the kept output:
//  - a double's exact decimal expansion ends within 1074 decimals (767 significant
//    digits, 13 hexadecimal ones), so past kMaxPrecision a longer precision only adds
//    zeros beyond the output limit (and %g, which drops them, prints the same text);
//  - kMaxWidth exceeds the output limit plus the longest converted value at
//    kMaxPrecision, so a wider field differs only in padding past the limit.
constexpr int64_t kMaxPrecision = static_cast<int64_t>(kLimit) + 64;
constexpr int64_t kMaxWidth = kMaxPrecision + static_cast<int64_t>(kLimit) + 512;

enum class EKind { kFloating, kInteger, kChar, kPercent, kLiteral };

// One conversion of the format, from its '%' to its letter.
struct SConversion {
  bool flag[6] = {};  // kFlags, in order; repeated flags count once
  bool hasWidth = false, widthStar = false;
  int64_t width = 0;
  bool hasPrecision = false, precisionStar = false;
  int64_t precision = 0;
  char conv = 0;
  size_t end = 0;  // one past the conversion's last character
};

// The flags passed through: the ISO C five and POSIX's thousands grouping. Others
// (glibc's I) end the parse, so the conversion is copied as literal text.
constexpr char kFlags[] = {'-', '+', ' ', '#', '0', '\''};

int FlagIndex(char c) {
  for (int k = 0; k < 6; ++k)
    if (kFlags[k] == c) return k;
  return -1;
}

bool IsDigit(char c) { return c >= '0' && c <= '9'; }

// Reads decimal digits at f[j..n), saturating far above any bound used.
int64_t ReadNumber(const char* f, size_t n, size_t& j) {
  int64_t v = 0;
  for (; j < n && IsDigit(f[j]); ++j) v = std::min<int64_t>(v * 10 + (f[j] - '0'), INT64_C(1) << 40);
  return v;
}

// Parses the conversion that starts with the '%' at f[i].
SConversion Parse(const char* f, size_t n, size_t i) {
  SConversion s;
  size_t j = i + 1;
  for (int k; j < n && (k = FlagIndex(f[j])) >= 0; ++j) s.flag[k] = true;
  if (j < n && f[j] == '*') {
    s.hasWidth = s.widthStar = true;
    ++j;
  } else if (j < n && IsDigit(f[j])) {
    s.hasWidth = true;
    s.width = ReadNumber(f, n, j);
  }
  if (j < n && f[j] == '.') {
    s.hasPrecision = true;
    ++j;
    if (j < n && f[j] == '*') {
      s.precisionStar = true;
      ++j;
    } else {
      s.precision = ReadNumber(f, n, j);  // "." alone means 0, as in printf
    }
  }
  while (j < n && std::strchr("hlLqjzZt", f[j]) != nullptr) ++j;  // length modifiers
  if (j < n) {
    s.conv = f[j];
    s.end = j + 1;
  } else {
    s.end = n;  // the format ends inside the conversion
  }
  return s;
}

EKind KindOf(char conv) {
  switch (conv) {
    case 'a': case 'A': case 'e': case 'E': case 'f': case 'F': case 'g': case 'G':
      return EKind::kFloating;
    case 'd': case 'i': case 'o': case 'u': case 'x': case 'X':
      return EKind::kInteger;
    case 'c':
      return EKind::kChar;
    case '%':
      return EKind::kPercent;
    default:
      return EKind::kLiteral;  // s, p, n, m, b, C, S, '$' of a positional conversion, end...
  }
}

// The decimal exponent X of `v` rounded to `p` significant digits, as %e prints it.
// A double's exact expansion has at most 767 significant digits, so asking for more
// than 800 changes nothing but the time.
int DecimalExponent(double v, int64_t p) {
  char buf[1024];
  std::snprintf(buf, sizeof buf, "%.*e", static_cast<int>(std::min<int64_t>(p - 1, 800)), v);
  const char* e = std::strrchr(buf, 'e');
  return e ? std::atoi(e + 1) : 0;
}

// %#g and %#G of a finite value as the conversion ISO C defines them to be: with P
// the precision (6 if omitted, 1 if zero) and X the exponent of the value rounded to
// P digits, the f style with precision P - 1 - X when P > X >= -4, else the e style
// with precision P - 1; the alternative form keeps the trailing zeros, so nothing is
// left to remove. Sets `conv` and `precision` to that conversion.
void AlternativeG(double v, bool hasPrecision, char& conv, int64_t& precision) {
  const int64_t p = !hasPrecision ? 6 : precision == 0 ? 1 : precision;
  const int x = DecimalExponent(v, p);
  const bool fixed = p > x && x >= -4;
  const bool upper = conv == 'G';
  conv = fixed ? (upper ? 'F' : 'f') : (upper ? 'E' : 'e');
  precision = fixed ? p - 1 - x : p - 1;
}

// The double truncated toward zero to a 64-bit integer; NaN gives 0 and values out of
// range saturate.
long long ToInt64(double v) {
  if (std::isnan(v)) return 0;
  if (v >= 9223372036854775807.0) return INT64_MAX;
  if (v <= -9223372036854775808.0) return INT64_MIN;
  return static_cast<long long>(v);
}

class CFormatter {
 public:
  CFormatter(const double* args, int count) : m_args(args), m_count(args ? count : 0) {}

  CStdStr Run(const char* f) {
    const size_t n = std::strlen(f);
    size_t i = 0;
    while (i < n && m_out.size() < kLimit) {
      if (f[i] != '%') {
        const char* pct = static_cast<const char*>(std::memchr(f + i, '%', n - i));
        const size_t run = (pct ? static_cast<size_t>(pct - f) : n) - i;
        Append(f + i, run);
        i += run;
        continue;
      }
      SConversion s = Parse(f, n, i);
      const EKind kind = KindOf(s.conv);
      if (kind == EKind::kLiteral) {
        Append(f + i, s.end - i);
      } else {
        Convert(s, kind);
      }
      i = s.end;
    }
    return std::move(m_out);
  }

 private:
  // The next double, or 0.0 once they are used up.
  double Take() { return m_next < m_count ? m_args[m_next++] : 0.0; }

  void Append(const char* p, size_t len) { m_out.append(p, std::min(len, kLimit - m_out.size())); }

  void Convert(SConversion& s, EKind kind) {
    // Stars take their doubles first, in order, as printf's int arguments would be.
    if (s.widthStar) {
      const int64_t w = ZetTruncInt32(Take());
      if (w < 0) s.flag[0] = true;  // a negative width left-justifies
      s.width = w < 0 ? -w : w;
    }
    if (s.precisionStar) {
      const int64_t p = ZetTruncInt32(Take());
      if (p < 0) s.hasPrecision = false;  // a negative precision is as if omitted
      s.precision = p;
    }
    if (kind == EKind::kPercent) {  // glibc prints one '%' whatever the flags say
      Append("%", 1);
      return;
    }
    const double v = Take();
    char cFormat[48];
    char* p = cFormat;
    *p++ = '%';
    for (int k = 0; k < 6; ++k)
      if (s.flag[k]) *p++ = kFlags[k];
    // Past kMaxPrecision a conversion's text grows by one character (a zero) per unit
    // of precision, except %g without '#', which drops those zeros. The padding is what
    // the width leaves after the text, so the precision cut off is cut off the width
    // too; a width then left at zero or below pads nothing.
    int64_t width = s.width;
    const bool dropsZeros = (s.conv == 'g' || s.conv == 'G') && !s.flag[3];
    if (s.hasPrecision && s.precision > kMaxPrecision && !dropsZeros && kind != EKind::kChar)
      width -= s.precision - kMaxPrecision;
    if (s.hasWidth && width > 0)
      p = std::to_chars(p, cFormat + sizeof cFormat, std::min(width, kMaxWidth)).ptr;
    char conv = s.conv;
    bool hasPrecision = s.hasPrecision && kind != EKind::kChar;
    int64_t precision = std::min(s.precision, kMaxPrecision);
    if ((conv == 'g' || conv == 'G') && s.flag[3] && std::isfinite(v)) {
      AlternativeG(v, hasPrecision, conv, precision);
      hasPrecision = true;
    }
    if (hasPrecision) {
      *p++ = '.';
      p = std::to_chars(p, cFormat + sizeof cFormat, precision).ptr;
    }
    if (kind == EKind::kInteger) {
      *p++ = 'l';
      *p++ = 'l';
    }
    *p++ = conv;
    *p = '\0';
    switch (kind) {
      case EKind::kFloating:
        Emit(cFormat, v);
        break;
      case EKind::kChar:
        Emit(cFormat, static_cast<int>(static_cast<unsigned char>(ZetTruncInt32(v) & 0xFF)));
        break;
      default:
        if (s.conv == 'd' || s.conv == 'i')
          Emit(cFormat, ToInt64(v));
        else
          Emit(cFormat, static_cast<unsigned long long>(ToInt64(v)));  // two's complement
        break;
    }
  }

  // One runtime call with one argument of the type `cFormat` reads; keeps what fits.
  template <class T>
  void Emit(const char* cFormat, T value) {
    const size_t room = kLimit - m_out.size();
    char small[512];
    const int n = std::snprintf(small, sizeof small, cFormat, value);
    if (n < 0) return;
    const size_t take = std::min(static_cast<size_t>(n), room);
    if (static_cast<size_t>(n) < sizeof small) {
      m_out.append(small, take);
      return;
    }
    std::unique_ptr<char[]> big(new char[take + 1]);
    std::snprintf(big.get(), take + 1, cFormat, value);
    m_out.append(big.get(), take);
  }

  const double* m_args;
  int m_count;
  int m_next = 0;
  CStdStr m_out;
};

}  // namespace

CStdStr CStdStr::FormatDoubles(const char* fmt, const double* args, int count) {
  if (fmt == nullptr) return CStdStr();
  return CFormatter(args, count).Run(fmt);
}
