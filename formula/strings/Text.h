// What the string instructions share: how they read texts and positions.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <utility>

#include "frame/Instr.h"

namespace zet {

// A text input through the value's const char* conversion: an embedded zero byte
// ends the text, as it does for every string instruction.
inline std::string_view TextArg(const CArgs& a, int i) { return a.Text(i); }

// A position, count or character code: the number truncated toward zero. NaN,
// infinities and values beyond the int range give INT32_MIN, so they fall under each
// instruction's rule for negative values.
inline int32_t IntArg(const CArgs& a, int i) { return ZetTruncInt32(a.Number(i)); }

// Text outputs are written into the output's string in place (an output of another
// kind becomes a string).
inline void SetText(CZetObject& out, std::string_view s) { out.Ref<CZetString>().Str().assign(s); }
inline void MoveText(CZetObject& out, std::string&& s) { out.Ref<CZetString>().Str() = std::move(s); }

}  // namespace zet
