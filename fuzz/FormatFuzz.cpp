// Fuzzing the formatter of user formats (CStdStr::FormatDoubles, behind PrintfNum,
// PrintfNumInf and NumToString). The first byte gives the number of doubles (0 to
// 17, as many as the input holds), the next 8 bytes each one double, and the rest
// is the format. The result never exceeds the output limit.
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>

#include "zet/ZetTypes.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (size == 0) return 0;
  double args[17];
  const size_t count = std::min<size_t>(data[0] % 18, (size - 1) / 8);
  std::memcpy(args, data + 1, count * sizeof(double));
  const size_t used = 1 + count * sizeof(double);
  const std::string format(reinterpret_cast<const char*>(data + used), size - used);
  const CStdStr out = CStdStr::FormatDoubles(format.c_str(), args, static_cast<int>(count));
  if (out.size() > CStdStr::kFormatLimit) std::abort();
  return 0;
}
