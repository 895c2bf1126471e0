// Windows-1252 <-> UTF-8 for the host's JSON texts: the platform's codec, with the five bytes
// Windows-1252 leaves undefined (0x81, 0x8D, 0x8F, 0x90, 0x9D) as the C1 controls of the same
// value, as Windows itself does, so every byte has a character and the round trip is exact.
#include "zet/ZetCp1252.h"
#include "zet/ZetHost.h"

namespace zet::host {

std::string Cp1252ToUtf8(const std::string& text) {
  std::string out;
  cp1252::ToUtf8(text, &out, cp1252::EUndefined::kC1Control);
  return out;
}

bool Utf8ToCp1252(const std::string& utf8, std::string* out) {
  return cp1252::FromUtf8(utf8, out, cp1252::EUndefined::kC1Control);
}

}  // namespace zet::host
