// Windows-1252 <-> UTF-8. The five bytes Windows-1252 leaves undefined (0x81, 0x8D,
// 0x8F, 0x90, 0x9D) map to the C1 controls of the same value, as Windows itself
// does, so every byte has a character and the round trip is exact.
#include <cstdint>

#include "zet/ZetHost.h"

namespace zet::host {
namespace {

// Code points of bytes 0x80..0x9F.
constexpr uint16_t kHigh[32] = {
    0x20AC, 0x0081, 0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021, 0x02C6, 0x2030, 0x0160,
    0x2039, 0x0152, 0x008D, 0x017D, 0x008F, 0x0090, 0x2018, 0x2019, 0x201C, 0x201D, 0x2022,
    0x2013, 0x2014, 0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0x009D, 0x017E, 0x0178};

uint32_t CodePoint(uint8_t b) { return (b >= 0x80 && b < 0xA0) ? kHigh[b - 0x80] : b; }

void AppendUtf8(std::string& out, uint32_t cp) {
  if (cp < 0x80) {
    out += static_cast<char>(cp);
  } else if (cp < 0x800) {
    out += static_cast<char>(0xC0 | (cp >> 6));
    out += static_cast<char>(0x80 | (cp & 0x3F));
  } else {
    out += static_cast<char>(0xE0 | (cp >> 12));
    out += static_cast<char>(0x80 | ((cp >> 6) & 0x3F));
    out += static_cast<char>(0x80 | (cp & 0x3F));
  }
}

bool ByteFor(uint32_t cp, uint8_t* b) {
  if (cp < 0x80 || (cp >= 0xA0 && cp <= 0xFF)) {
    *b = static_cast<uint8_t>(cp);
    return true;
  }
  for (int i = 0; i < 32; ++i) {
    if (kHigh[i] == cp) {
      *b = static_cast<uint8_t>(0x80 + i);
      return true;
    }
  }
  return false;
}

}  // namespace

std::string Cp1252ToUtf8(const std::string& text) {
  std::string out;
  out.reserve(text.size());
  for (char c : text) AppendUtf8(out, CodePoint(static_cast<uint8_t>(c)));
  return out;
}

bool Utf8ToCp1252(const std::string& utf8, std::string* out) {
  out->clear();
  out->reserve(utf8.size());
  for (size_t i = 0; i < utf8.size();) {
    const uint8_t c = static_cast<uint8_t>(utf8[i]);
    uint32_t cp;
    size_t len;
    if (c < 0x80) {
      cp = c;
      len = 1;
    } else if ((c & 0xE0) == 0xC0) {
      cp = c & 0x1F;
      len = 2;
    } else if ((c & 0xF0) == 0xE0) {
      cp = c & 0x0F;
      len = 3;
    } else if ((c & 0xF8) == 0xF0) {
      cp = c & 0x07;
      len = 4;
    } else {
      return false;
    }
    if (i + len > utf8.size()) return false;
    for (size_t k = 1; k < len; ++k) {
      const uint8_t cc = static_cast<uint8_t>(utf8[i + k]);
      if ((cc & 0xC0) != 0x80) return false;
      cp = (cp << 6) | (cc & 0x3F);
    }
    uint8_t b;
    if (!ByteFor(cp, &b)) return false;
    *out += static_cast<char>(b);
    i += len;
  }
  return true;
}

}  // namespace zet::host
