// Text conversions of the OS layer through the C library's iconv: system texts in the
// locale's encoding to Windows-1252, and Windows-1252 to UTF-8 for desktop programs.
#include <iconv.h>
#include <langinfo.h>

#include <cerrno>
#include <cstring>

#include "os/posix/Posix.h"

namespace zet::os {
namespace {

bool IsAscii(std::string_view s) {
  for (unsigned char c : s)
    if (c >= 0x80) return false;
  return true;
}

// Converts `text` from one encoding to another; a character that cannot be converted
// (or an invalid byte) is skipped and `replacement` written in its place. The text
// is returned unchanged when the system does not know the conversion.
std::string Convert(const char* from, const char* to, std::string_view text,
                    std::string_view replacement) {
  iconv_t cd = iconv_open(to, from);
  if (cd == reinterpret_cast<iconv_t>(-1)) return std::string(text);
  std::string out;
  out.reserve(text.size() + text.size() / 2);
  char* in = const_cast<char*>(text.data());
  size_t inLeft = text.size();
  const bool utf8 = std::strcmp(from, "UTF-8") == 0;
  char buf[1024];
  while (inLeft > 0) {
    char* o = buf;
    size_t oLeft = sizeof buf;
    const size_t r = iconv(cd, &in, &inLeft, &o, &oLeft);
    out.append(buf, o);
    if (r == static_cast<size_t>(-1) && errno != E2BIG) {
      // EILSEQ or EINVAL: a character the target cannot hold, or a broken sequence.
      out.append(replacement);
      do {  // the whole character: a UTF-8 lead byte and its continuation bytes
        ++in;
        --inLeft;
      } while (utf8 && inLeft > 0 && (static_cast<unsigned char>(*in) & 0xC0) == 0x80);
      iconv(cd, nullptr, nullptr, nullptr, nullptr);
    }
  }
  iconv_close(cd);
  return out;
}

// Windows-1252's bytes 0x80..0x9F as Unicode; 0 marks the five it leaves undefined.
constexpr char16_t kHigh[32] = {
    0x20AC, 0,      0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021, 0x02C6, 0x2030, 0x0160,
    0x2039, 0x0152, 0,      0x017D, 0,      0,      0x2018, 0x2019, 0x201C, 0x201D, 0x2022,
    0x2013, 0x2014, 0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0,      0x017E, 0x0178};

char32_t Unicode(unsigned char c) { return c >= 0x80 && c < 0xA0 ? kHigh[c - 0x80] : c; }

void AppendUtf8(std::string& out, char32_t u) {
  if (u < 0x80) {
    out += static_cast<char>(u);
  } else if (u < 0x800) {
    out += static_cast<char>(0xC0 | (u >> 6));
    out += static_cast<char>(0x80 | (u & 0x3F));
  } else {
    out += static_cast<char>(0xE0 | (u >> 12));
    out += static_cast<char>(0x80 | ((u >> 6) & 0x3F));
    out += static_cast<char>(0x80 | (u & 0x3F));
  }
}

// The Windows-1252 byte of a character, or -1.
int Cp1252Byte(char32_t u) {
  if (u < 0x80 || (u >= 0xA0 && u <= 0xFF)) return static_cast<int>(u);
  for (int i = 0; i < 32; ++i)
    if (kHigh[i] != 0 && kHigh[i] == u) return 0x80 + i;
  return -1;
}

// The next character of UTF-8 text at `pos`, or -1 for a broken sequence (one byte
// is then consumed). Overlong forms and surrogates count as broken.
long NextUtf8(std::string_view s, size_t& pos) {
  const auto c = static_cast<unsigned char>(s[pos++]);
  if (c < 0x80) return c;
  int more = c >= 0xF0 && c < 0xF5 ? 3 : c >= 0xE0 ? 2 : c >= 0xC2 && c < 0xE0 ? 1 : -1;
  if (c >= 0xF5 || more < 0) return -1;
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

bool Cp1252ToSystem(std::string_view text, std::string* out) {
  out->clear();
  out->reserve(text.size());
  for (unsigned char c : text) {
    const char32_t u = Unicode(c);
    if (u == 0) return false;
    AppendUtf8(*out, u);
  }
  return true;
}

bool SystemToCp1252(std::string_view text, std::string* out) {
  out->clear();
  out->reserve(text.size());
  bool exact = true;
  for (size_t pos = 0; pos < text.size();) {
    const long u = NextUtf8(text, pos);
    const int b = u < 0 ? -1 : Cp1252Byte(static_cast<char32_t>(u));
    exact = exact && b >= 0;
    *out += b >= 0 ? static_cast<char>(b) : '?';
  }
  return exact;
}

std::string LocaleToCp1252(std::string_view text) {
  if (IsAscii(text)) return std::string(text);
  const char* codeset = nl_langinfo(CODESET);
  if (std::strcmp(codeset, "CP1252") == 0) return std::string(text);
  // Transliteration gives the nearest character, as Windows' best-fit mapping does.
  return Convert(codeset, "CP1252//TRANSLIT", text, "?");
}

std::string Cp1252ToUtf8(std::string_view text) {
  if (IsAscii(text)) return std::string(text);
  return Convert("CP1252", "UTF-8", text, "\xEF\xBF\xBD");
}

}  // namespace zet::os
