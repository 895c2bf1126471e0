// The one-dimensional clusterer against its plain definition (a scan of every cluster
// for each value), on data that crosses from the scan to the ordered index, and the
// neighbour spacing of point sequences.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <random>
#include <vector>

#include "zet/ZetGeometry.h"

namespace {

struct SRef {
  double centre, sum;
  std::vector<size_t> members;
};

std::vector<SRef> Definition(const std::vector<double>& v, double tol) {
  std::vector<SRef> cs;
  for (size_t i = 0; i < v.size(); ++i) {
    size_t best = cs.size();
    double bestDist = 0;
    for (size_t c = 0; c < cs.size(); ++c) {
      const double d = std::fabs(cs[c].centre - v[i]);
      if (d < tol && (best == cs.size() || d < bestDist)) {
        best = c;
        bestDist = d;
      }
    }
    if (best == cs.size()) {
      cs.push_back({v[i], v[i], {i}});
    } else {
      cs[best].members.push_back(i);
      cs[best].sum += v[i];
      cs[best].centre = cs[best].sum / static_cast<double>(cs[best].members.size());
    }
  }
  return cs;
}

void ExpectSame(const std::vector<double>& v, double tol) {
  CZetCluster1D fast;
  fast.Run(v.data(), v.size(), tol);
  const std::vector<SRef> ref = Definition(v, tol);
  ASSERT_EQ(fast.Clusters().size(), ref.size()) << "tolerance " << tol;
  for (size_t c = 0; c < ref.size(); ++c) {
    ASSERT_EQ(fast.Clusters()[c].members, ref[c].members) << "cluster " << c;
    const double a = fast.Clusters()[c].centre, b = ref[c].centre;
    ASSERT_TRUE(a == b || (std::isnan(a) && std::isnan(b))) << a << " " << b;
  }
}

TEST(Cluster1D, SameAsTheDefinition) {
  std::mt19937_64 rng(7);
  const double inf = std::numeric_limits<double>::infinity();
  const double nan = std::numeric_limits<double>::quiet_NaN();
  for (double tol : {-1.0, 0.0, 0.05, 0.3, 1.0, 2.5, 40.0, inf, nan}) {
    SCOPED_TRACE(tol);
    // Values on a coarse grid give exact ties of distance between two centres.
    std::vector<double> v(3000);
    for (double& x : v) x = std::floor(std::uniform_real_distribution<>(0, 50)(rng) * 4) / 4;
    ExpectSame(v, tol);
    std::uniform_real_distribution<> u(-1e3, 1e3);
    for (double& x : v) x = u(rng);
    v[17] = nan;
    v[400] = inf;
    v[401] = -inf;
    v[900] = 1e308;
    v[901] = 1e308;  // the sum of a cluster overflows
    ExpectSame(v, tol);
  }
}

TEST(Cluster1D, LargestIsTheEarliestOfTheBiggest) {
  const std::vector<double> v = {1, 5, 5.1, 1.2, 9};
  CZetCluster1D c;
  c.Run(v.data(), v.size(), 0.5);
  ASSERT_EQ(c.Clusters().size(), 3u);
  EXPECT_EQ(c.Largest()->members, (std::vector<size_t>{0, 3}));
  c.Run(v.data(), 0, 0.5);
  EXPECT_EQ(c.Largest(), nullptr);
}

// 200 000 values that never join (tolerance 0) finish: the index keeps the scan
// from being quadratic.
TEST(Cluster1D, ManyClustersStayFast) {
  std::vector<double> v(200000);
  for (size_t i = 0; i < v.size(); ++i) v[i] = static_cast<double>(i % 1000) + 0.25 * (i / 1000 % 3);
  CZetCluster1D c;
  c.Run(v.data(), v.size(), 0.0);
  EXPECT_EQ(c.Clusters().size(), v.size());
  c.Run(v.data(), v.size(), 0.2);
  EXPECT_EQ(c.Clusters().size(), 3000u);  // 1000 grid values x 3 offsets
}

TEST(NeighbourSpacing, KeysOfASequence) {
  const double nan = std::numeric_limits<double>::quiet_NaN();
  const struct {
    std::vector<CZetPoint> pts;
    std::vector<double> keys;
  } cases[] = {
      {{}, {}},
      {{{3, 4}}, {0}},
      {{{0, 0}, {3, 4}}, {5, 5}},
      {{{0, 0}, {10, 0}, {20, 0}, {30, 0}, {37, 0}, {40, 0}}, {10, 10, 10, 10, 7, 3}},
      {{{0, 0}, {1, 0}, {1, 50}, {3, 0}}, {1, 50, 50.039984012787215, 50.039984012787215}},
      {{{0, 0}, {nan, 0}, {2, 0}}, {nan, nan, nan}},
  };
  for (const auto& c : cases) {
    std::vector<double> keys(c.pts.size(), -1);
    CZetGeometry::NeighbourSpacing(c.pts.data(), c.pts.size(), keys.data());
    for (size_t i = 0; i < keys.size(); ++i)
      EXPECT_TRUE(keys[i] == c.keys[i] || (std::isnan(keys[i]) && std::isnan(c.keys[i])))
          << i << ": " << keys[i];
  }
}

}  // namespace
