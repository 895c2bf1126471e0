// Helpers of the hand-written number and point array instructions.
#pragma once

#include <algorithm>
#include <cmath>

#include "frame/Instr.h"

namespace zet {

// The standard unstable sort of [first, last) by `before(key(x), key(y))`. Elements
// whose key is NaN would break the sort's ordering contract (the definition leaves
// their place unspecified), so they are moved behind the others first.
template <class It, class Key, class Before>
void SortByKey(It first, It last, Key key, Before before) {
  const It mid = std::partition(first, last, [&](const auto& x) { return !std::isnan(key(x)); });
  std::sort(first, mid, [&](const auto& x, const auto& y) { return before(key(x), key(y)); });
}

// The number-array output i, sized n (its elements are then overwritten).
inline double* SizedOut(const CArgs& a, int i, size_t n) {
  CZetNumberVector& out = a.OutRef<CZetNumberVector>(i);
  out.Std().resize(n);
  return out.GetStorage();
}

}  // namespace zet
