// The sorts of the number and point array instructions: the standard unstable sort's
// result, computed by Highway's vectorised quicksort on integer keys.
//
// A double maps to an unsigned 64-bit key whose order is the numbers' order (the
// sign bit flipped for positives, every bit for negatives), so -0 sorts just before
// +0 where the comparison finds them equal. Elements whose key is NaN would break a
// comparison sort's ordering contract; they are first moved behind the others by the
// same std::partition as always, so their places do not change. An indirect sort
// (IndexArray, the point sort) sorts 64-bit words of key prefix and position, then
// orders runs of equal prefixes by their whole keys: equal keys come out in
// ascending position, which the unstable sort's contract allows and which
// makes the result the same on every run and instruction set.
#pragma once

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace zet {

enum class EOrder { kAscending, kDescending };

// Sorts values[0 .. n - 1]; NaNs end up behind the numbers.
void SortNumbers(double* values, size_t n, EOrder order);

// positions[0 .. n - 1] (any permutation of 0 .. n - 1) ordered by keys[positions[j]];
// the positions of NaN keys are moved behind the others first.
void SortPositionsByKey(const double* keys, uint32_t* positions, size_t n, EOrder order);

// Sorts [first, last) by key(x) with the order above; random-access iterators.
template <class It, class Key>
void SortByKey(It first, It last, Key key, EOrder order) {
  using T = typename std::iterator_traits<It>::value_type;
  const It mid = std::partition(first, last, [&](const T& x) { return !std::isnan(key(x)); });
  const size_t n = static_cast<size_t>(mid - first);
  if (n < 2) return;
  std::vector<double> keys(n);
  std::vector<uint32_t> positions(n);
  for (size_t i = 0; i < n; ++i) {
    keys[i] = key(first[static_cast<ptrdiff_t>(i)]);
    positions[i] = static_cast<uint32_t>(i);
  }
  SortPositionsByKey(keys.data(), positions.data(), n, order);
  std::vector<T> sorted(n);
  for (size_t j = 0; j < n; ++j) sorted[j] = std::move(first[positions[j]]);
  std::move(sorted.begin(), sorted.end(), first);
}

}  // namespace zet
