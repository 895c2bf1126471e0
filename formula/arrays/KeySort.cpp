// The key sorts of KeySort.h over Highway's vqsort (libhwy_contrib), which picks the
// widest instruction set of the processor at run time.
#include "arrays/KeySort.h"

#include <hwy/contrib/sort/vqsort.h>

#include <bit>

namespace zet {
namespace {

constexpr uint64_t kSign = uint64_t{1} << 63;

// The unsigned key whose order is the order of the (non-NaN) numbers.
inline uint64_t OrderedBits(double x) {
  const uint64_t b = std::bit_cast<uint64_t>(x);
  return (b & kSign) ? ~b : (b | kSign);
}

inline double FromOrderedBits(uint64_t k) {
  return std::bit_cast<double>((k & kSign) ? (k & ~kSign) : ~k);
}

}  // namespace

void SortNumbers(double* values, size_t n, EOrder order) {
  double* const mid = std::partition(values, values + n, [](double x) { return !std::isnan(x); });
  const size_t m = static_cast<size_t>(mid - values);
  if (m < 2) return;
  // The keys take the numbers' place; a uint64_t array over the same bytes.
  std::vector<uint64_t> keys(m);
  for (size_t i = 0; i < m; ++i) keys[i] = OrderedBits(values[i]);
  const hwy::Sorter sorter;
  if (order == EOrder::kAscending)
    sorter(keys.data(), m, hwy::SortAscending());
  else
    sorter(keys.data(), m, hwy::SortDescending());
  for (size_t i = 0; i < m; ++i) values[i] = FromOrderedBits(keys[i]);
}

void SortPositionsByKey(const double* keys, uint32_t* positions, size_t n, EOrder order) {
  uint32_t* const mid = std::partition(positions, positions + n,
                                       [keys](uint32_t p) { return !std::isnan(keys[p]); });
  const size_t m = static_cast<size_t>(mid - positions);
  if (m < 2) return;
  // One 64-bit word per element: the key's top bits above the position's bits, so
  // that one integer sort orders by key prefix, then by position. Elements whose
  // prefixes tie (keys equal, or equal in their top 64 - b bits) are then put in the
  // order of their whole keys, stably; for measured data such runs are short.
  const int b = static_cast<int>(std::bit_width(n - 1));  // positions run to n - 1 (n >= 2)
  const uint64_t flip = order == EOrder::kAscending ? 0 : ~uint64_t{0};
  const uint64_t low = (uint64_t{1} << b) - 1;
  std::vector<uint64_t> words(m);
  for (size_t i = 0; i < m; ++i) {
    const uint64_t key = OrderedBits(keys[positions[i]]) ^ flip;
    words[i] = (key & ~low) | positions[i];
  }
  const hwy::Sorter sorter;
  sorter(words.data(), m, hwy::SortAscending());
  for (size_t i = 0; i < m; ++i) positions[i] = static_cast<uint32_t>(words[i] & low);
  const auto whole = [&](uint32_t p) { return OrderedBits(keys[p]) ^ flip; };
  for (size_t i = 0; i + 1 < m;) {
    size_t end = i + 1;
    while (end < m && (words[end] & ~low) == (words[i] & ~low)) ++end;
    if (end - i > 1)
      std::stable_sort(positions + i, positions + end,
                       [&](uint32_t x, uint32_t y) { return whole(x) < whole(y); });
    i = end;
  }
}

}  // namespace zet
