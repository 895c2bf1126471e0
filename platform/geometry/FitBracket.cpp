// The pass of KthSmallest over the whole set, in vectors (Highway, compiled once per
// instruction set and chosen by the processor): it counts the values below a bracket
// and packs those within it, in input order. With AVX-512 the packing is one
// compressing store per vector; the scalar loop spent most of a fit's time here.
#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "geometry/FitBracket.cpp"
#include <hwy/foreach_target.h>  // IWYU pragma: keep

#include <hwy/highway.h>

#include "geometry/FitBracket.h"

HWY_BEFORE_NAMESPACE();
namespace zet::geometry {
namespace HWY_NAMESPACE {
namespace hn = hwy::HWY_NAMESPACE;

size_t BracketImpl(const double* values, size_t n, double lo, double hi, double* inside,
                   size_t* below) {
  size_t i = 0, m = 0, under = 0;
#if HWY_TARGET != HWY_SCALAR
  const hn::ScalableTag<double> d;
  const size_t lanes = hn::Lanes(d);
  const auto vlo = hn::Set(d, lo), vhi = hn::Set(d, hi);
  // CompressStore may write a whole vector from inside + m; m <= i keeps that within
  // the n values the caller provides room for.
  for (; i + lanes <= n; i += lanes) {
    const auto v = hn::LoadU(d, values + i);
    under += hn::CountTrue(d, hn::Lt(v, vlo));
    m += hn::CompressStore(v, hn::And(hn::Ge(v, vlo), hn::Le(v, vhi)), d, inside + m);
  }
#endif
  for (; i < n; ++i) {
    const double v = values[i];
    under += v < lo;
    inside[m] = v;
    m += (v >= lo) & (v <= hi);
  }
  *below = under;
  return m;
}

}  // namespace HWY_NAMESPACE
}  // namespace zet::geometry
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace zet::geometry {

HWY_EXPORT(BracketImpl);

size_t Bracket(const double* values, size_t n, double lo, double hi, double* inside,
               size_t* below) {
  return HWY_DYNAMIC_DISPATCH(BracketImpl)(values, n, lo, hi, inside, below);
}

}  // namespace zet::geometry
#endif  // HWY_ONCE
