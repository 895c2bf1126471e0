// The vector pass of the fits' selection (FitBracket.cpp).
#pragma once

#include <cstddef>

namespace zet::geometry {

// Counts the values[0 .. n - 1] below lo into *below and packs those in [lo, hi]
// into inside[0 .. returned count - 1], in input order. `inside` has room for n
// values and does not overlap `values`; no value is NaN.
size_t Bracket(const double* values, size_t n, double lo, double hi, double* inside,
               size_t* below);

}  // namespace zet::geometry
