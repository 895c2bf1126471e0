// Windows-1252 to and from UTF-8 (see zet/ZetCp1252.h): the one table of the library's encoding,
// and a UTF-8 reader that takes only well-formed text.
#include <cstdint>

#include "zet/ZetCp1252.h"

namespace zet::cp1252 {
namespace {

// The characters of bytes 0x80..0x9F; the five undefined ones hold the C1 control of the same
// value, which only EUndefined::kC1Control gives out.
constexpr uint16_t kHigh[32] = {0x20AC, 0x0081, 0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021,
                                0x02C6, 0x2030, 0x0160, 0x2039, 0x0152, 0x008D, 0x017D, 0x008F,
                                0x0090, 0x2018, 0x2019, 0x201C, 0x201D, 0x2022, 0x2013, 0x2014,
                                0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0x009D, 0x017E, 0x0178};

bool IsUndefined(unsigned char b) {
  return b == 0x81 || b == 0x8D || b == 0x8F || b == 0x90 || b == 0x9D;
}

void AppendUtf8(std::string& out, long cp) {
  if (cp < 0x80) {
    out += static_cast<char>(cp);
  } else if (cp < 0x800) {
    out += static_cast<char>(0xC0 | (cp >> 6));
    out += static_cast<char>(0x80 | (cp & 0x3F));
  } else {  // every character of the table is in the basic plane
    out += static_cast<char>(0xE0 | (cp >> 12));
    out += static_cast<char>(0x80 | ((cp >> 6) & 0x3F));
    out += static_cast<char>(0x80 | (cp & 0x3F));
  }
}

// The next character of UTF-8 text at `pos`, or -1 for a broken sequence (one byte is then
// consumed). Overlong forms and surrogates count as broken.
long NextUtf8(std::string_view s, size_t& pos) {
  const auto c = static_cast<unsigned char>(s[pos++]);
  if (c < 0x80) return c;
  int more = c >= 0xF0 && c < 0xF5 ? 3 : c >= 0xE0 && c < 0xF0 ? 2 : c >= 0xC2 && c < 0xE0 ? 1 : -1;
  if (more < 0) return -1;
  long u = c & (0x3F >> more);
  const size_t start = pos;
  for (; more > 0; --more, ++pos) {
    if (pos >= s.size() || (static_cast<unsigned char>(s[pos]) & 0xC0) != 0x80) {
      pos = start;
      return -1;
    }
    u = u << 6 | (static_cast<unsigned char>(s[pos]) & 0x3F);
  }
  const size_t len = pos - start + 1;
  if ((len == 3 && u < 0x800) || (len == 4 && (u < 0x10000 || u > 0x10FFFF)) ||
      (u >= 0xD800 && u <= 0xDFFF)) {
    pos = start;
    return -1;
  }
  return u;
}

}  // namespace

long CodePoint(unsigned char byte, EUndefined undefined) {
  if (byte < 0x80 || byte >= 0xA0) return byte;
  if (undefined == EUndefined::kRefuse && IsUndefined(byte)) return -1;
  return kHigh[byte - 0x80];
}

int ByteOf(long cp, EUndefined undefined) {
  if (cp < 0x80 || (cp >= 0xA0 && cp <= 0xFF)) return cp < 0 ? -1 : static_cast<int>(cp);
  for (int i = 0; i < 32; ++i)
    if (kHigh[i] == cp) {
      const auto b = static_cast<unsigned char>(0x80 + i);
      return undefined == EUndefined::kRefuse && IsUndefined(b) ? -1 : b;
    }
  return -1;
}

bool ToUtf8(std::string_view text, std::string* out, EUndefined undefined) {
  out->clear();
  out->reserve(text.size());
  bool exact = true;
  for (const char c : text) {
    const long cp = CodePoint(static_cast<unsigned char>(c), undefined);
    exact = exact && cp >= 0;
    AppendUtf8(*out, cp >= 0 ? cp : 0xFFFD);
  }
  return exact;
}

bool FromUtf8(std::string_view utf8, std::string* out, EUndefined undefined) {
  out->clear();
  out->reserve(utf8.size());
  bool exact = true;
  for (size_t pos = 0; pos < utf8.size();) {
    const long cp = NextUtf8(utf8, pos);
    const int b = cp < 0 ? -1 : ByteOf(cp, undefined);
    exact = exact && b >= 0;
    *out += b >= 0 ? static_cast<char>(b) : '?';
  }
  return exact;
}

}  // namespace zet::cp1252
