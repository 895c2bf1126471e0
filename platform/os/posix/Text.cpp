// Text conversions of the OS layer: names to and from the system (UTF-8, through the
// library's Windows-1252 codec), and through the C library's iconv, system texts in
// the locale's encoding to Windows-1252 and Windows-1252 to UTF-8 for desktop programs.
#include <iconv.h>
#include <langinfo.h>

#include <cerrno>
#include <cstring>

#include "os/posix/Posix.h"
#include "zet/ZetCp1252.h"

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

}  // namespace

// Names stay out of reach rather than turn into other names: the five undefined bytes
// have no character here.
bool Cp1252ToSystem(std::string_view text, std::string* out) {
  return cp1252::ToUtf8(text, out, cp1252::EUndefined::kRefuse);
}

bool SystemToCp1252(std::string_view text, std::string* out) {
  return cp1252::FromUtf8(text, out, cp1252::EUndefined::kRefuse);
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
