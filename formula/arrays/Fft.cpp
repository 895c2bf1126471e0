// The radix-2 transform of Fft.h: bit-reversal, then log2(n) butterfly stages.
#include "arrays/Fft.h"

#include <algorithm>
#include <cmath>
#include <utility>
#include <vector>

namespace zet {
namespace {

constexpr double kTwoPi = 6.283185307179586476925;
constexpr size_t kLowBits = 10;  // the low table's size is 2^kLowBits

SComplex Mul(SComplex a, SComplex b) {
  return {a.re * b.re - a.im * b.im, a.re * b.im + a.im * b.re};
}

// w(j) = exp(-2 pi i j / n) for j < n / 2, as a product of two table entries.
class CTwiddles {
 public:
  explicit CTwiddles(size_t n) : m_n(n) {
    const size_t low = std::min<size_t>(n / 2, size_t{1} << kLowBits);
    m_low.resize(low);
    for (size_t j = 0; j < low; ++j) m_low[j] = Unit(j);
    for (size_t j = 0; j < n / 2; j += size_t{1} << kLowBits) m_high.push_back(Unit(j));
  }
  SComplex operator()(size_t j) const {
    const size_t low = j & ((size_t{1} << kLowBits) - 1);
    return low == j ? m_low[j] : Mul(m_high[j >> kLowBits], m_low[low]);
  }

 private:
  SComplex Unit(size_t j) const {
    const double angle = kTwoPi * (static_cast<double>(j) / static_cast<double>(m_n));
    return {std::cos(angle), -std::sin(angle)};
  }
  size_t m_n;
  std::vector<SComplex> m_low, m_high;
};

void Butterfly(SComplex& x, SComplex& y, SComplex w) {
  const SComplex t = Mul(w, y);
  y = {x.re - t.re, x.im - t.im};
  x = {x.re + t.re, x.im + t.im};
}

// Twiddles are made for this many butterflies of a stage at a time.
constexpr size_t kChunk = size_t{1} << 10;

}  // namespace

void ForwardFft(SComplex* a, size_t n) {
  if (n < 2) return;
  for (size_t i = 1, j = 0; i < n; ++i) {
    size_t bit = n >> 1;
    for (; j & bit; bit >>= 1) j ^= bit;
    j ^= bit;
    if (i < j) std::swap(a[i], a[j]);
  }
  const CTwiddles twiddle(n);
  std::vector<SComplex> table(std::min(n / 2, kChunk));
  for (size_t h = 1; h < n; h <<= 1) {
    // Butterflies j0 .. j0 + chunk - 1 of every block, so that a long stage streams
    // through memory with its twiddles at hand.
    const size_t stride = n / (2 * h), chunk = std::min(h, kChunk);
    for (size_t j0 = 0; j0 < h; j0 += chunk) {
      for (size_t j = 0; j < chunk; ++j) table[j] = twiddle((j0 + j) * stride);
      for (size_t b = j0; b < n; b += 2 * h)
        for (size_t j = 0; j < chunk; ++j) Butterfly(a[b + j], a[b + j + h], table[j]);
    }
  }
}

}  // namespace zet
