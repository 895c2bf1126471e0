// What the system and keyboard instructions share.
#pragma once

#include <cstdint>

#include "frame/Instr.h"

namespace zet {

// The milliseconds Sleep passes on: the number truncated toward zero to a 64-bit
// integer (NaN and values beyond its range give INT64_MIN, the processor's "integer
// indefinite"), of which the low 32 bits are kept. So 0.9 sleeps 0 ms and -1 becomes
// 0xFFFFFFFF, the wait for ever.
inline uint32_t SleepMilliseconds(double ms) {
  const int64_t whole = ms > -9223372036854775808.0 && ms < 9223372036854775808.0
                            ? static_cast<int64_t>(ms)
                            : INT64_MIN;
  return static_cast<uint32_t>(static_cast<uint64_t>(whole));
}

}  // namespace zet
