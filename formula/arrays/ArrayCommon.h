// Helpers of the hand-written number and point array instructions.
#pragma once

#include <algorithm>
#include <cmath>

#include "arrays/KeySort.h"
#include "frame/Instr.h"

namespace zet {

// The number-array output i, sized n (its elements are then overwritten).
inline double* SizedOut(const CArgs& a, int i, size_t n) {
  CZetNumberVector& out = a.OutRef<CZetNumberVector>(i);
  out.Std().resize(n);
  return out.GetStorage();
}

}  // namespace zet
