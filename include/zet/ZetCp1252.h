// Windows-1252, the encoding of every text inside the library, to and from UTF-8. One table serves
// the OS layer (names and texts that cross to the system) and the host (JSON texts); they differ
// only in what becomes of the five bytes Windows-1252 leaves undefined, which the caller chooses.
#pragma once

#include <string>
#include <string_view>

#include "zet/ZetExport.h"

namespace zet::cp1252 {

// The five bytes without a character in Windows-1252: 0x81, 0x8D, 0x8F, 0x90, 0x9D.
enum class EUndefined {
  // They have no character: converting one fails. Used where a text names something outside the
  // library (a file, an environment variable), so that an unreadable byte never reaches another
  // name.
  kRefuse,
  // They are the C1 controls of the same value (U+0081 ...), as Windows maps them: every byte has a
  // character and the round trip is exact. Used for the host's JSON texts, which must carry any
  // text an instruction makes.
  kC1Control,
};

// The character of a byte, or -1 for an undefined byte under kRefuse.
ZET_PLATFORM_API long CodePoint(unsigned char byte, EUndefined undefined);
// The byte of a character, or -1 when Windows-1252 has none for it.
ZET_PLATFORM_API int ByteOf(long codePoint, EUndefined undefined);

// Windows-1252 to UTF-8 into `out`. An undefined byte under kRefuse becomes U+FFFD and the result
// is false; otherwise true.
ZET_PLATFORM_API bool ToUtf8(std::string_view text, std::string* out, EUndefined undefined);
// UTF-8 to Windows-1252 into `out`. A character Windows-1252 cannot hold, and a broken UTF-8
// sequence (a stray or missing continuation byte, an overlong form, a surrogate), becomes '?' and
// the result is false; otherwise true.
ZET_PLATFORM_API bool FromUtf8(std::string_view utf8, std::string* out, EUndefined undefined);

}  // namespace zet::cp1252
