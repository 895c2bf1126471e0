// CStdStr: the printf-style Format with its growing scratch buffer, and the
// substring helpers.
#include <cstdio>
#include <memory>

#include "zet/ZetTypes.h"

namespace {

// The scratch sizes the formatter tries in turn.
constexpr int kBufferSizes[] = {2048, 6144, 12288, 20480, 30720, 43008};

}  // namespace

void CStdStr::Format(const char* fmt, ...) {
  va_list args;
  va_start(args, fmt);
  FormatV(fmt, args);
  va_end(args);
}

void CStdStr::FormatV(const char* fmt, va_list args) {
  for (int size : kBufferSizes) {
    std::unique_ptr<char[]> buf(new char[size]);
    va_list copy;
    va_copy(copy, args);
    const int n = std::vsnprintf(buf.get(), size, fmt, copy);
    va_end(copy);
    if (n < 0) {
      clear();
      return;
    }
    if (n < size || size == kBufferSizes[std::size(kBufferSizes) - 1]) {
      // Fits, or the last attempt: keep what fits (size - 1 characters).
      assign(buf.get(), n < size ? n : size - 1);
      return;
    }
  }
}

CStdStr CStdStr::Left(int n) const {
  if (n <= 0) return CStdStr();
  return CStdStr(substr(0, static_cast<size_t>(n)));
}

CStdStr CStdStr::Right(int n) const {
  if (n <= 0) return CStdStr();
  const size_t k = std::min(size(), static_cast<size_t>(n));
  return CStdStr(substr(size() - k));
}

CStdStr CStdStr::Mid(int first, int count) const {
  if (first < 0) first = 0;
  if (count <= 0 || static_cast<size_t>(first) >= size()) return CStdStr();
  return CStdStr(substr(static_cast<size_t>(first), static_cast<size_t>(count)));
}

CStdStr CStdStr::Mid(int first) const {
  if (first < 0) first = 0;
  if (static_cast<size_t>(first) >= size()) return CStdStr();
  return CStdStr(substr(static_cast<size_t>(first)));
}

int CStdStr::Replace(const std::string& what, const std::string& with) {
  if (what.empty()) return 0;
  std::string out;
  int count = 0;
  size_t from = 0;
  for (size_t pos; (pos = find(what, from)) != npos; from = pos + what.size()) {
    out.append(*this, from, pos - from);
    out += with;
    ++count;
  }
  if (count == 0) return 0;
  out.append(*this, from, npos);
  assign(std::move(out));
  return count;
}
