// Sort, IndexArray and the point Sort against their definition (NaN keys moved to
// the back by std::partition, then std::sort with the plain comparison), on arrays
// full of ties, signed zeros, infinities and NaNs. Where the definition leaves the
// order open (equal keys), the vector sort's fixed choice is checked: -0 before +0
// ascending, indexes and points of equal keys in ascending position.
#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>
#include <numeric>
#include <random>

#include "Harness.h"

namespace zet::test {
namespace {

const double kNaN = std::numeric_limits<double>::quiet_NaN();
const double kInf = std::numeric_limits<double>::infinity();

// Values drawn from a small set, so that ties are common; NaNs of two payloads.
std::vector<double> Draw(size_t n, uint64_t seed) {
  const double pool[] = {0.0, -0.0, 1.5, -1.5, 2.0, 1e300, -1e-300, kInf, -kInf,
                         kNaN, -std::nan("7"), 3.25, 7.0, -7.0, 1e-310};
  std::mt19937_64 rng(seed);
  std::uniform_int_distribution<size_t> pick(0, std::size(pool) - 1);
  std::uniform_real_distribution<double> any(-1e6, 1e6);
  std::vector<double> v(n);
  for (double& x : v) x = rng() % 3 ? pool[pick(rng)] : any(rng);
  return v;
}

uint64_t Bits(double x) {
  uint64_t b;
  std::memcpy(&b, &x, sizeof b);
  return b;
}

CZetObject Arr(const std::vector<double>& v) {
  CZetObject o(ZET_OBJ_NUMBER_ARRAY);
  o.Ref<CZetNumberVector>().Std() = v;
  return o;
}

const size_t kSizes[] = {0, 1, 2, 3, 17, 1000, 100000};

TEST(Sorts, NumberSortMatchesTheDefinition) {
  for (const size_t n : kSizes)
    for (const bool descending : {false, true}) {
      SCOPED_TRACE(testing::Message() << n << (descending ? " descending" : " ascending"));
      const std::vector<double> in = Draw(n, n + 11);
      std::vector<double> want = in;
      const auto mid = std::partition(want.begin(), want.end(), [](double x) { return !std::isnan(x); });
      std::sort(want.begin(), mid, [descending](double a, double b) { return descending ? a > b : a < b; });
      const CRun r = Exec("_Zet_Array_CNArrSort_", {Arr(in), V(descending)});
      ASSERT_EQ(r.status, 0);
      const std::vector<double>& got = r.Out(0).Get<CZetNumberVector>()->Std();
      ASSERT_EQ(got.size(), n);
      const size_t numbers = static_cast<size_t>(mid - want.begin());
      for (size_t i = 0; i < n; ++i) {
        if (i >= numbers) {  // the NaNs keep the partition's places, payloads and all
          ASSERT_EQ(Bits(got[i]), Bits(want[i])) << i;
          continue;
        }
        ASSERT_EQ(got[i], want[i]) << i;
        if (i > 0 && got[i] == 0 && got[i - 1] == 0) {  // -0 before +0, ascending
          ASSERT_LE(std::signbit(got[i]) != descending, std::signbit(got[i - 1]) != descending) << i;
        }
      }
    }
}

TEST(Sorts, IndexArrayMatchesTheDefinition) {
  for (const size_t n : kSizes)
    for (const int method : {1, 2}) {
      SCOPED_TRACE(testing::Message() << n << " method " << method);
      const std::vector<double> in = Draw(n, 3 * n + 1);
      std::vector<unsigned> want(n);
      std::iota(want.begin(), want.end(), 0u);
      const auto mid = std::partition(want.begin(), want.end(), [&](unsigned i) { return !std::isnan(in[i]); });
      std::sort(want.begin(), mid,
                [&](unsigned a, unsigned b) { return method == 1 ? in[a] > in[b] : in[a] < in[b]; });
      SRunOptions opt;
      opt.params = {V(method)};
      const CRun r = Exec("_Zet_Array_CNArrMathIndexArray_", {Arr(in)}, opt);
      ASSERT_EQ(r.status, 0);
      const std::vector<double>& got = r.Out(0).Get<CZetNumberVector>()->Std();
      ASSERT_EQ(got.size(), n);
      const size_t numbers = static_cast<size_t>(mid - want.begin());
      for (size_t j = 0; j < n; ++j) {
        const unsigned g = static_cast<unsigned>(got[j]);
        ASSERT_EQ(static_cast<double>(g), got[j]);
        if (j >= numbers) {
          ASSERT_EQ(g, want[j]) << j;
          continue;
        }
        ASSERT_EQ(in[g], in[want[j]]) << j;  // the same key as the definition's
        if (j > 0) {
          const unsigned p = static_cast<unsigned>(got[j - 1]);
          const bool tie = in[p] == in[g] && std::signbit(in[p]) == std::signbit(in[g]);
          if (tie) {
            ASSERT_LT(p, g) << j;
          }
        }
      }
      std::vector<double> sorted = got;
      std::sort(sorted.begin(), sorted.end());
      for (size_t j = 0; j < n; ++j) ASSERT_EQ(sorted[j], static_cast<double>(j));
    }
}

TEST(Sorts, PointSortMatchesTheDefinition) {
  const size_t n = 20000;
  const std::vector<double> xs = Draw(n, 5), ys = Draw(n, 6);
  std::vector<CZetPoint> in(n);
  for (size_t i = 0; i < n; ++i) in[i] = CZetPoint(xs[i], ys[i]);
  CZetObject arr(ZET_OBJ_POINT_ARRAY);
  arr.Ref<CZetPointVector>().Std() = in;
  const auto key = [](int criterion, const CZetPoint& p) {
    return criterion < 2 ? p.x : criterion < 4 ? p.y : p.x * p.x + p.y * p.y;
  };
  for (int criterion = 0; criterion <= 5; ++criterion) {
    SCOPED_TRACE(criterion);
    const bool descending = criterion % 2 == 1;
    std::vector<size_t> want(n);
    std::iota(want.begin(), want.end(), size_t{0});
    const auto mid = std::partition(want.begin(), want.end(),
                                    [&](size_t i) { return !std::isnan(key(criterion, in[i])); });
    std::sort(want.begin(), mid, [&](size_t a, size_t b) {
      const double ka = key(criterion, in[a]), kb = key(criterion, in[b]);
      return descending ? ka > kb : ka < kb;
    });
    SRunOptions opt;
    opt.params = {V(criterion)};
    const CRun r = Exec("_Zet_Array_CPArrSort_", {arr}, opt);
    ASSERT_EQ(r.status, 0);
    const std::vector<CZetPoint>& got = r.Out(0).Get<CZetPointVector>()->Std();
    ASSERT_EQ(got.size(), n);
    const size_t numbers = static_cast<size_t>(mid - want.begin());
    for (size_t j = 0; j < n; ++j) {
      const CZetPoint& w = in[want[j]];
      if (j >= numbers) {  // NaN keys: the partition's points, in its order
        ASSERT_EQ(Bits(got[j].x), Bits(w.x)) << j;
        ASSERT_EQ(Bits(got[j].y), Bits(w.y)) << j;
      } else {
        ASSERT_EQ(key(criterion, got[j]), key(criterion, w)) << j;
      }
    }
  }
}

}  // namespace
}  // namespace zet::test
