// An in-place radix-2 discrete Fourier transform, for the circular correlation of
// long number arrays. The twiddle factors are computed directly (never by recurrence)
// from two small tables, so the error of a transform grows with log2(n) only.
#pragma once

#include <cstddef>

namespace zet {

struct SComplex {
  double re = 0.0;
  double im = 0.0;
};

// Replaces a[0 .. n - 1] (n a power of two) by sum_j a[j] exp(-2 pi i j k / n).
void ForwardFft(SComplex* a, size_t n);

}  // namespace zet
