// Date and time pictures: the Windows picture codes interpreted here, with day
// and month names and AM/PM markers from the calling thread's locale.
//
// A picture is read left to right. A run of one code letter is one field, its
// length choosing the form; every other character is copied. Quoting is
// Windows': a single quote opens literal text, inside it two quotes are one
// quote and the next single quote closes it, so '' outside literal text is an
// empty literal (nothing), and
// ''''yy is a quote and the year. Where Windows' documentation is silent we
// decided: an unclosed quote runs to the end of the picture; a code letter of
// the other kind (a time code in a date picture and the reverse) is copied like
// any other text; a run longer than the longest documented form takes that form
// (ddddd = dddd). Dates know d M y g, times h H m s t; a letter of the other
// kind is copied.
//   d 1 dd 01 ddd Mon dddd+ Monday      M 1 MM 01 MMM Jan MMMM+ January
//   y 6 yy 06 yyy+ 2006                 g+ the locale's era, or "A.D."
//   h 1 hh+ 01 (12-hour clock)  H HH+ (24-hour)  m mm+  s ss+  t A  tt+ AM
// A month name written with a day number (d or dd) in the same picture takes
// the genitive form where the language has one (Polish "1 marca" but "marzec").
#include <langinfo.h>

#include <string>
#include <string_view>

#include "os/posix/Posix.h"
#include "zet/ZetOs.h"

namespace {

enum class EKind { kDate, kTime };

std::string Name(nl_item item) { return zet::os::LocaleToCp1252(nl_langinfo(item)); }

// The era of the locale (the name field of its first ERA entry), if it has one.
std::string EraName() {
  // ERA entries read "direction:offset:start:end:name:format".
  const std::string_view era = nl_langinfo(ERA);
  size_t pos = 0;
  for (int field = 0; field < 4; ++field) {
    pos = era.find(':', pos);
    if (pos == std::string_view::npos) return "A.D.";
    ++pos;
  }
  const size_t end = era.find(':', pos);
  if (end == std::string_view::npos || end == pos) return "A.D.";
  return zet::os::LocaleToCp1252(era.substr(pos, end - pos));
}

void AppendNumber(std::string& out, int value, bool twoDigits) {
  if (twoDigits && value >= 0 && value < 10) out += '0';
  out += std::to_string(value);
}

bool IsCode(EKind kind, char c) {
  if (kind == EKind::kDate) return c == 'd' || c == 'M' || c == 'y' || c == 'g';
  return c == 'h' || c == 'H' || c == 'm' || c == 's' || c == 't';
}

// Splits a picture into literal text and code fields, calling literal(char) for
// each character copied and field(code, run) for each run of a code letter.
template <class Literal, class Field>
void Scan(EKind kind, std::string_view picture, Literal literal, Field field) {
  for (size_t i = 0; i < picture.size();) {
    const char c = picture[i];
    if (c == '\'') {
      // Literal text up to the closing quote; '' inside it is one quote.
      for (++i; i < picture.size(); ++i) {
        if (picture[i] != '\'') {
          literal(picture[i]);
        } else if (i + 1 < picture.size() && picture[i + 1] == '\'') {
          literal('\'');
          ++i;
        } else {
          ++i;
          break;
        }
      }
      continue;
    }
    size_t n = 1;
    while (i + n < picture.size() && picture[i + n] == c) ++n;
    if (IsCode(kind, c))
      field(c, n);
    else
      for (size_t k = 0; k < n; ++k) literal(c);
    i += n;
  }
}

bool HasDayNumber(std::string_view picture) {
  bool found = false;
  Scan(
      EKind::kDate, picture, [](char) {},
      [&](char code, size_t n) {
        if (code == 'd' && n <= 2) found = true;
      });
  return found;
}

void DateField(std::string& out, char code, size_t n, const SZetLocalTime& t, bool genitive) {
  const int month = t.month >= 1 && t.month <= 12 ? t.month - 1 : 0;
  const int weekday = t.dayOfWeek >= 0 && t.dayOfWeek <= 6 ? t.dayOfWeek : 0;
  switch (code) {
    case 'd':
      if (n <= 2)
        AppendNumber(out, t.day, n == 2);
      else
        out += Name(static_cast<nl_item>((n == 3 ? ABDAY_1 : DAY_1) + weekday));
      break;
    case 'M':
      if (n <= 2)
        AppendNumber(out, t.month, n == 2);
      else if (n == 3)
        out += Name(static_cast<nl_item>((genitive ? ABMON_1 : _NL_ABALTMON_1) + month));
      else
        out += Name(static_cast<nl_item>((genitive ? MON_1 : ALTMON_1) + month));
      break;
    case 'y':
      if (n <= 2)
        AppendNumber(out, t.year % 100, n == 2);
      else
        out += std::to_string(t.year);
      break;
    case 'g': out += EraName(); break;
  }
}

void TimeField(std::string& out, char code, size_t n, const SZetLocalTime& t) {
  switch (code) {
    case 'h': AppendNumber(out, t.hour % 12 == 0 ? 12 : t.hour % 12, n >= 2); break;
    case 'H': AppendNumber(out, t.hour, n >= 2); break;
    case 'm': AppendNumber(out, t.minute, n >= 2); break;
    case 's': AppendNumber(out, t.second, n >= 2); break;
    case 't': {
      const std::string marker = Name(t.hour < 12 ? AM_STR : PM_STR);
      out += n == 1 ? marker.substr(0, 1) : marker;
      break;
    }
  }
}

std::string Interpret(EKind kind, std::string_view picture, const SZetLocalTime& t) {
  const bool genitive = kind == EKind::kDate && HasDayNumber(picture);
  std::string out;
  out.reserve(picture.size() + 16);
  Scan(
      kind, picture, [&](char c) { out += c; },
      [&](char code, size_t n) {
        if (kind == EKind::kDate)
          DateField(out, code, n, t, genitive);
        else
          TimeField(out, code, n, t);
      });
  return out;
}

}  // namespace

bool CZetOs::FormatDate(const char* picture, const SZetLocalTime& t, CStdStr* out) {
  *out = Interpret(EKind::kDate, picture ? picture : "", t);
  return true;
}

bool CZetOs::FormatTime(const char* picture, const SZetLocalTime& t, CStdStr* out) {
  *out = Interpret(EKind::kTime, picture ? picture : "", t);
  return true;
}
