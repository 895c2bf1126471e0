// The line, circle and rake fits: exact data, statuses on bad input, the trimming of
// outliers (counts, order, robustness to gross outliers), the signed extremes, and
// large and far-off point sets.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <random>
#include <string>
#include <vector>

#include "zet/ZetGeometry.h"

namespace {

using G = CZetGeometry;
using Pts = std::vector<CZetPoint>;
constexpr double kPi = G::Pi;
const double kNaN = std::numeric_limits<double>::quiet_NaN();
const double kInf = std::numeric_limits<double>::infinity();

struct SLine {
  unsigned status = 99, included = 99;
  CZetLine line{-7, -7};
  CZetPointVector outliers, used;
};
SLine FitLine(const Pts& p, unsigned percent) {
  SLine r;
  r.status = G::Points2BestLine(p.data(), p.size(), percent, &r.included, &r.line, &r.outliers,
                                &r.used);
  return r;
}

struct SCircle {
  unsigned status = 99, included = 99;
  double diameter = -7, error = -7;
  CZetPoint centre{-7, -7};
  CZetPointVector outliers, used;
};
SCircle FitCircle(const Pts& p, unsigned percent) {
  SCircle r;
  r.status = G::Points2BestCircle(p.data(), p.size(), percent, &r.diameter, &r.included,
                                  &r.error, &r.centre, &r.outliers, &r.used);
  return r;
}

Pts OnLine(double a, double d, int n, double step = 1.0, double t0 = -10) {
  Pts p;
  for (int i = 0; i < n; ++i) {
    const double t = t0 + i * step;
    p.emplace_back(-std::sin(a) * d + t * std::cos(a), std::cos(a) * d + t * std::sin(a));
  }
  return p;
}

Pts OnCircle(double cx, double cy, double r, int n, double from = 0, double span = 2 * kPi) {
  Pts p;
  for (int i = 0; i < n; ++i) {
    const double t = from + span * i / (span >= 2 * kPi ? n : n - 1);
    p.emplace_back(cx + r * std::cos(t), cy + r * std::sin(t));
  }
  return p;
}

TEST(Fits, StatusOnBadInput) {
  const Pts line = OnLine(0.3, 5, 10), circle = OnCircle(0, 0, 10, 10);
  Pts equal(6, CZetPoint(3, 3)), nanPt = line, infPt = circle;
  nanPt[4].y = kNaN;
  infPt[2].x = -kInf;
  const struct {
    const char* what;
    const Pts* pts;
    unsigned percent, lineStatus, circleStatus;
  } cases[] = {
      {"percent 101", &line, 101, G::kFitBadPercent, G::kFitBadPercent},
      {"percent -1", &circle, static_cast<unsigned>(-1), G::kFitBadPercent, G::kFitBadPercent},
      {"percent 100", &line, 100, G::kFitTooFewPoints, G::kFitTooFewPoints},
      {"percent 80 of 10", &circle, 80, G::kFitOk, G::kFitTooFewPoints},  // 2 left
      {"percent 90 of 10", &circle, 90, G::kFitTooFewPoints, G::kFitTooFewPoints},
      {"all points equal", &equal, 0, G::kFitDegenerate, G::kFitDegenerate},
      {"collinear", &line, 0, G::kFitOk, G::kFitDegenerate},
      {"NaN", &nanPt, 0, G::kFitNonFinite, G::kFitNonFinite},
      {"infinity", &infPt, 30, G::kFitNonFinite, G::kFitNonFinite},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.what);
    const SLine l = FitLine(*c.pts, c.percent);
    EXPECT_EQ(l.status, c.lineStatus);
    const SCircle k = FitCircle(*c.pts, c.percent);
    EXPECT_EQ(k.status, c.circleStatus);
    if (l.status != G::kFitOk) {  // counts 0, vectors empty, the rest untouched
      EXPECT_EQ(l.included, 0u);
      EXPECT_EQ(l.used.Size() + l.outliers.Size(), 0u);
      EXPECT_EQ(l.line, CZetLine(-7, -7));
    }
    if (k.status != G::kFitOk) {
      EXPECT_EQ(k.included, 0u);
      EXPECT_EQ(k.used.Size() + k.outliers.Size(), 0u);
      EXPECT_EQ(k.diameter, -7);
    }
  }
  for (size_t n : {0, 1}) EXPECT_EQ(FitLine(Pts(n, CZetPoint(1, 2)), 0).status, G::kFitTooFewPoints);
  EXPECT_EQ(FitCircle({{0, 0}, {1, 1}}, 0).status, G::kFitTooFewPoints);
  EXPECT_EQ(FitCircle({{0, 0}, {1, 1}, {0, 0}}, 0).status, G::kFitDegenerate);
}

TEST(Fits, ExactDataGivesTheShapeBack) {
  for (double a : {0.0, 0.7, kPi / 2, -1.2, 2.5}) {
    SCOPED_TRACE(a);
    const SLine l = FitLine(OnLine(a, 12, 30), 0);
    ASSERT_EQ(l.status, G::kFitOk);
    CZetLine want(a, 12);
    G::NormalizeLine(&want);
    EXPECT_NEAR(l.line.a, want.a, 1e-13);
    EXPECT_NEAR(l.line.d, want.d, 1e-11);
    EXPECT_EQ(l.included, 30u);
    EXPECT_EQ(l.used.Std(), OnLine(a, 12, 30));
  }
  const struct {
    double cx, cy, r, from, span;
  } circles[] = {{0, 0, 1, 0, 2 * kPi},           {512, 384, 100, 0, 2 * kPi},
                 {-3e6, 4e6, 250, 1, kPi / 3},   {10, 10, 1e-6, 0, 2 * kPi},
                 {0, 0, 1e5, 0.2, 0.01}};
  for (const auto& c : circles) {
    SCOPED_TRACE(c.r);
    const SCircle k = FitCircle(OnCircle(c.cx, c.cy, c.r, 40, c.from, c.span), 0);
    ASSERT_EQ(k.status, G::kFitOk);
    const double tol = 1e-9 * (c.r + std::hypot(c.cx, c.cy));
    EXPECT_NEAR(k.diameter, 2 * c.r, tol);
    EXPECT_NEAR(k.centre.x, c.cx, tol);
    EXPECT_NEAR(k.centre.y, c.cy, tol);
    EXPECT_NEAR(k.error, 0, tol);
  }
  // Three points make one circle; coordinates near the largest doubles are scaled.
  const SCircle three = FitCircle({{0, 0}, {2, 0}, {1, 1}}, 0);
  EXPECT_NEAR(three.centre.x, 1, 1e-14);
  EXPECT_NEAR(three.centre.y, 0, 1e-14);
  EXPECT_NEAR(three.diameter, 2, 1e-14);
  const SLine huge = FitLine({{-1.5e308, 1e308}, {0, 1e308}, {1.5e308, 1e308}}, 0);
  ASSERT_EQ(huge.status, G::kFitOk);
  EXPECT_EQ(huge.line, CZetLine(0, 1e308));
}

TEST(Fits, TrimmingCountsOrderAndReproduction) {
  std::mt19937_64 rng(5);
  std::normal_distribution<> noise(0, 0.5);
  Pts p = OnLine(0.2, 40, 200, 2.0);
  for (CZetPoint& q : p) q.y += noise(rng);
  const struct {
    unsigned percent;
    unsigned kept;
  } cases[] = {{0, 200}, {1, 198}, {9, 182}, {33, 134}, {50, 100}, {99, 2}};
  for (const auto& c : cases) {
    SCOPED_TRACE(c.percent);
    const SLine l = FitLine(p, c.percent);
    ASSERT_EQ(l.status, G::kFitOk);
    EXPECT_EQ(l.included, c.kept);
    ASSERT_EQ(l.used.Size(), c.kept);
    ASSERT_EQ(l.outliers.Size(), 200 - c.kept);
    // Used and outliers each keep the input order and together are the input.
    size_t u = 0, o = 0;
    for (const CZetPoint& q : p) {
      if (u < l.used.Size() && l.used[static_cast<unsigned>(u)] == q)
        ++u;
      else
        ASSERT_EQ(l.outliers[static_cast<unsigned>(o++)], q);
    }
    EXPECT_EQ(u + o, p.size());
    // The line is the plain fit of the points used, bit for bit.
    const SLine again = FitLine(l.used.Std(), 0);
    EXPECT_EQ(again.line, l.line);
    // The kept points are the nearest to a fit close to the final one: only a few
    // at the boundary may lie farther from the line than the nearest discarded one.
    double outMin = INFINITY, d = 0;
    for (const CZetPoint& q : l.outliers.Std())
      G::PointArray2LineDist(&q, 1, l.line, &d), outMin = std::fmin(outMin, std::fabs(d));
    int beyond = 0;
    for (const CZetPoint& q : l.used.Std())
      G::PointArray2LineDist(&q, 1, l.line, &d), beyond += std::fabs(d) > outMin;
    EXPECT_LE(beyond, 3);
  }
}

// One far point drags a plain fit; discarding one point (5 % of 21) takes exactly it
// out. A clump of outliers drags the first fit more; the steps and refits still find it.
TEST(Fits, GrossOutliersDoNotDecideTheTrimming) {
  Pts line = OnLine(0, 100, 20);
  line.insert(line.begin() + 7, CZetPoint(0, 5000));
  const SLine l = FitLine(line, 5);  // floor(21 * 5 / 100) = 1
  ASSERT_EQ(l.status, G::kFitOk);
  EXPECT_EQ(l.outliers.Std(), Pts{CZetPoint(0, 5000)});
  EXPECT_NEAR(l.line.a, 0, 1e-14);
  EXPECT_NEAR(l.line.d, 100, 1e-12);

  // A tenth of the points in a tight clump far off the circle, a fifth discarded.
  std::mt19937_64 rng(9);
  std::normal_distribution<> noise(0, 0.5);
  Pts c = OnCircle(300, 200, 80, 90, 0.3, kPi / 3);
  for (CZetPoint& q : c) q.x += noise(rng), q.y += noise(rng);
  for (int i = 0; i < 10; ++i) c.insert(c.begin() + 9 * i, CZetPoint(150 + i, 50 + i % 3));
  const SCircle k = FitCircle(c, 20);
  ASSERT_EQ(k.status, G::kFitOk);
  EXPECT_EQ(k.included, 80u);
  EXPECT_NEAR(k.centre.x, 300, 3);
  EXPECT_NEAR(k.centre.y, 200, 3);
  EXPECT_NEAR(k.diameter, 160, 6);
  int clump = 0;  // all ten among the twenty discarded
  for (const CZetPoint& q : k.outliers.Std()) clump += q.x >= 150 && q.x < 160;
  EXPECT_EQ(clump, 10);
}

// Large sets go through the sampled selection and its vector pass: every fifth point
// an outlier (a period the sample must not follow), sizes that leave each remainder
// of the vector width (multiples of 5), and a share discarded equal to the outliers'
// own, so that the kept set is exactly the points on the shape.
TEST(Fits, PeriodicOutliersInLargeSets) {
  struct SCase {
    bool circle;
    int n;
  } const cases[] = {{false, 2050}, {false, 2055}, {false, 2060}, {false, 10005},
                     {true, 2065},  {true, 4100},  {false, 100005}};
  for (const SCase& c : cases) {
    SCOPED_TRACE(testing::Message() << (c.circle ? "circle " : "line ") << c.n);
    std::mt19937_64 rng(static_cast<uint64_t>(c.n));
    std::uniform_real_distribution<> off(30, 90), small(-0.25, 0.25);
    Pts p = c.circle ? OnCircle(400, 300, 150, c.n) : OnLine(0.4, 60, c.n, 0.01);
    Pts outliers;
    for (int i = 0; i < c.n; ++i) {
      const double e = small(rng);
      p[i].x += e * 0.5, p[i].y -= e * 0.5;  // noise well inside the outliers' gap
      if (i % 5 == 0) {  // off the shape across it: along y, or along the radius
        const double by = (i % 10 == 0 ? 1 : -1) * off(rng), grow = 1 + by / 150;
        if (c.circle)
          p[i] = CZetPoint(400 + (p[i].x - 400) * grow, 300 + (p[i].y - 300) * grow);
        else
          p[i].y += by;
        outliers.push_back(p[i]);
      }
    }
    const unsigned percent = 20;  // floor(n / 5) points, which are the outliers
    ASSERT_EQ(outliers.size(), static_cast<size_t>(c.n) * percent / 100);
    if (c.circle) {
      const SCircle k = FitCircle(p, percent);
      ASSERT_EQ(k.status, G::kFitOk);
      EXPECT_EQ(k.outliers.Std(), outliers);
    } else {
      const SLine l = FitLine(p, percent);
      ASSERT_EQ(l.status, G::kFitOk);
      EXPECT_EQ(l.outliers.Std(), outliers);
    }
  }
}

// Copies of one far point are the farthest points at one distance; when the cut falls
// among them the earliest copies stay. Sets large enough for the sampled selection and
// the vector passes, of sizes that leave every remainder of the vector width.
TEST(Fits, TiesAtTheCutKeepTheEarliest) {
  struct SCase {
    bool circle;
    int n, copies;
    unsigned percent;  // n * percent / 100 of the copies go
  } const cases[] = {{false, 3001, 40, 1}, {false, 10007, 130, 1}, {true, 3003, 40, 1},
                     {true, 10005, 130, 1}, {false, 2053, 30, 1}};
  for (const SCase& c : cases) {
    SCOPED_TRACE(testing::Message() << (c.circle ? "circle " : "line ") << c.n);
    Pts p = c.circle ? OnCircle(300, 200, 80, c.n) : OnLine(0.3, 20, c.n, 0.05);
    for (int i = 0; i < c.n; ++i) p[i].x += (i % 7 - 3) * 0.02;  // a little noise
    const CZetPoint far = c.circle ? CZetPoint(300, 200 + 160) : CZetPoint(-30, 90);
    const int every = c.n / c.copies;
    for (int j = 0; j < c.copies; ++j) p[static_cast<size_t>(j * every + 3)] = far;
    const size_t k = static_cast<size_t>(c.n) * c.percent / 100;
    ASSERT_LT(k, static_cast<size_t>(c.copies));
    // The copies after the first copies - k go, the rest stay in order.
    Pts used, outliers;
    int seen = 0;
    for (const CZetPoint& q : p) {
      const bool copy = q == far;
      seen += copy;
      (copy && seen > c.copies - static_cast<int>(k) ? outliers : used).push_back(q);
    }
    if (c.circle) {
      const SCircle r = FitCircle(p, c.percent);
      ASSERT_EQ(r.status, G::kFitOk);
      EXPECT_EQ(r.used.Std(), used);
      EXPECT_EQ(r.outliers.Std(), outliers);
    } else {
      const SLine r = FitLine(p, c.percent);
      ASSERT_EQ(r.status, G::kFitOk);
      EXPECT_EQ(r.used.Std(), used);
      EXPECT_EQ(r.outliers.Std(), outliers);
    }
  }
}

// The line's robust start measures the steps between points half the set apart: steps
// of length 0 (repeated points), exactly equal directions (points on a grid row) and
// tiny steps take other ways than plain data, and each must still find the outliers.
TEST(Fits, LineStartFromRepeatedAlignedAndTinySteps) {
  enum EKind { kAllRepeated, kSomeRepeated, kGridRow, kTiny };
  for (const EKind kind : {kAllRepeated, kSomeRepeated, kGridRow, kTiny}) {
    SCOPED_TRACE(static_cast<int>(kind));
    const int n = 4000;
    const double scale = kind == kTiny ? 1e-160 : 1.0;
    Pts p;
    for (int i = 0; i < n; ++i) {
      const int j = kind == kAllRepeated || (kind == kSomeRepeated && i >= n / 2 && i % 3 == 0)
                        ? i % (n / 2)
                        : i;
      const double noise = kind == kGridRow ? 0 : (j % 5 - 2) * 0.01;
      p.emplace_back(j * scale, (5 + noise) * scale);
    }
    Pts outliers;
    for (int i = 0; i < n; i += 5) {  // 20 % gross outliers, either side
      p[i].y = (i % 10 == 0 ? 45 : -35) * scale;
      outliers.push_back(p[i]);
    }
    const SLine r = FitLine(p, 20);
    ASSERT_EQ(r.status, G::kFitOk);
    EXPECT_EQ(r.outliers.Std(), outliers);
    EXPECT_NEAR(r.line.a, 0, 1e-3);
    EXPECT_NEAR(r.line.d / scale, 5, 0.02);
  }
}

TEST(Fits, SignedExtremesEitherSide) {
  // The fitted line is y = 0 by symmetry: the point above it (y < 0) is the minimum.
  const Pts p = {{0, 0}, {10, 0}, {5, 1}, {5, -1}, {5, 0.5}};
  unsigned included = 0;
  double lo = 0, hi = 0;
  CZetPoint plo, phi;
  CZetLine line;
  CZetPointVector outliers;
  ASSERT_EQ(G::Points2BestLineMaxOutliers(p.data(), 4, 0, &included, &lo, &hi, &plo, &phi,
                                          &line, &outliers),
            G::kFitOk);
  EXPECT_NEAR(line.a, 0, 1e-15);
  EXPECT_NEAR(lo, -1, 1e-15);
  EXPECT_NEAR(hi, 1, 1e-15);
  EXPECT_EQ(plo, CZetPoint(5, -1));
  EXPECT_EQ(phi, CZetPoint(5, 1));
  // 20 % of 5 is one point: the furthest goes, the extremes are of the rest.
  ASSERT_EQ(G::Points2BestLineMaxOutliers(p.data(), 5, 20, &included, &lo, &hi, &plo, &phi,
                                          &line, &outliers),
            G::kFitOk);
  EXPECT_EQ(included, 4u);
  EXPECT_EQ(outliers.Size(), 1u);
  EXPECT_LE(hi - lo, 1.5 + 1e-12);
  EXPECT_EQ(G::Points2BestLineMaxOutliers(p.data(), 5, 400, &included, &lo, &hi, &plo, &phi,
                                          &line, &outliers),
            G::kFitBadPercent);
}

// Finite points near 1e300 (squares and spreads beyond the double range) give finite
// fits of the right shape, with and without trimming.
TEST(Fits, CoordinatesNear1e300GiveFiniteResults) {
  const double s = 1e299;
  for (const unsigned percent : {0u, 20u}) {
    SCOPED_TRACE(percent);
    Pts c = OnCircle(3 * s, -5 * s, 2 * s, 40);
    c[7] = CZetPoint(3 * s, -5 * s);  // the centre itself: an outlier
    const SCircle k = FitCircle(c, percent);
    ASSERT_EQ(k.status, G::kFitOk);
    EXPECT_TRUE(std::isfinite(k.error));
    if (percent > 0) {
      EXPECT_NEAR(k.diameter / s, 4, 1e-9);
      EXPECT_NEAR(k.centre.x / s, 3, 1e-9);
      EXPECT_NEAR(k.centre.y / s, -5, 1e-9);
      EXPECT_NEAR(k.error / s, 0, 1e-9);
    } else {
      EXPECT_TRUE(std::isfinite(k.diameter) && std::isfinite(k.centre.x) && std::isfinite(k.centre.y));
    }
    Pts l = OnLine(0.7, 8 * s, 30, s / 10, -s);
    l[3].x += s;
    const SLine f = FitLine(l, percent);
    ASSERT_EQ(f.status, G::kFitOk);
    EXPECT_TRUE(std::isfinite(f.line.a) && std::isfinite(f.line.d));
    if (percent > 0) {
      EXPECT_NEAR(f.line.a, 0.7, 1e-9);
      EXPECT_NEAR(f.line.d / s, 8, 1e-9);
    }
    unsigned included = 0;
    double lo = 0, hi = 0;
    CZetPoint plo, phi;
    CZetLine line;
    ASSERT_EQ(G::Points2BestLineMaxOutliers(l.data(), l.size(), percent, &included, &lo, &hi, &plo,
                                            &phi, &line, nullptr),
              G::kFitOk);
    EXPECT_TRUE(std::isfinite(lo) && std::isfinite(hi));
  }
}

TEST(Fits, MillionPoints) {
  std::mt19937_64 rng(3);
  std::normal_distribution<> noise(0, 0.5);
  Pts p = OnLine(-0.4, 250, 1000000, 0.001);
  for (CZetPoint& q : p) q.x += noise(rng), q.y += noise(rng);
  for (size_t i = 0; i < p.size(); i += 10) p[i].y += 400;
  const SLine l = FitLine(p, 20);
  ASSERT_EQ(l.status, G::kFitOk);
  EXPECT_EQ(l.included, 800000u);
  EXPECT_NEAR(l.line.a, -0.4, 1e-4);
  EXPECT_NEAR(l.line.d, 250, 0.05);
  Pts c = OnCircle(1000, 1000, 300, 1000000);
  for (CZetPoint& q : c) q.x += noise(rng), q.y += noise(rng);
  const SCircle k = FitCircle(c, 10);
  ASSERT_EQ(k.status, G::kFitOk);
  EXPECT_NEAR(k.diameter, 600, 0.01);
}

// Accuracy on noisy data of known truth: sigma 0.5 px, every tenth point moved 10 to
// 60 px off the shape. Discarding exactly the outliers' share gives the fit of the
// inliers alone, trial by trial; discarding twice as many costs some accuracy (the
// fit has fewer points, and the farthest good ones among those dropped) but stays
// near that fit, on lines, full circles and 60-degree arcs alike.
TEST(Fits, AccuracyAgainstTheFitOfTheInliers) {
  std::mt19937_64 rng(11);
  std::normal_distribution<> noise(0, 0.5);
  std::uniform_real_distribution<> u(0, 1);
  // Outliers move along the shape's normal at the point: (nx, ny) = normal(q).
  const auto contaminate = [&](Pts* p, Pts* inliers, auto normal) {
    for (size_t i = 0; i < p->size(); ++i) {
      CZetPoint& q = (*p)[i];
      if (i % 10 == 3) {
        const double off = (u(rng) < 0.5 ? -1 : 1) * (10 + 50 * u(rng));
        const CZetPoint n = normal(q);
        q.x += off * n.x, q.y += off * n.y;
      }
      q.x += noise(rng), q.y += noise(rng);
      if (i % 10 != 3) {
        inliers->push_back(q);
      }
    }
  };
  constexpr int kTrials = 40;
  const double a = 0.3, d = 40;
  double line20 = 0, lineInliers = 0;
  for (int t = 0; t < kTrials; ++t) {
    Pts p = OnLine(a, d, 500, 0.8, -200), in;
    contaminate(&p, &in, [&](const CZetPoint&) { return CZetPoint(-std::sin(a), std::cos(a)); });
    const SLine ten = FitLine(p, 10), twenty = FitLine(p, 20), ref = FitLine(in, 0);
    ASSERT_EQ(twenty.status, G::kFitOk);
    EXPECT_NEAR(ten.line.a, ref.line.a, 1e-12);
    EXPECT_NEAR(ten.line.d, ref.line.d, 1e-9);
    line20 += std::pow(twenty.line.a - a, 2);
    lineInliers += std::pow(ref.line.a - a, 2);
  }
  EXPECT_LT(std::sqrt(line20 / lineInliers), 1.3);
  for (const double span : {2 * kPi, kPi / 3}) {
    SCOPED_TRACE(span);
    double centre20 = 0, centreInliers = 0, radius20 = 0, radiusInliers = 0;
    for (int t = 0; t < kTrials; ++t) {
      Pts p = OnCircle(500, 400, 100, 200, 0.4, span), in;
      contaminate(&p, &in, [](const CZetPoint& q) {
        return CZetPoint((q.x - 500) / 100, (q.y - 400) / 100);
      });
      const SCircle ten = FitCircle(p, 10), twenty = FitCircle(p, 20), ref = FitCircle(in, 0);
      ASSERT_EQ(twenty.status, G::kFitOk);
      EXPECT_NEAR(ten.centre.x, ref.centre.x, 1e-5);  // LM's stop, from other starts
      EXPECT_NEAR(ten.centre.y, ref.centre.y, 1e-5);
      EXPECT_NEAR(ten.diameter, ref.diameter, 1e-5);
      centre20 += std::pow(std::hypot(twenty.centre.x - 500, twenty.centre.y - 400), 2);
      centreInliers += std::pow(std::hypot(ref.centre.x - 500, ref.centre.y - 400), 2);
      radius20 += std::pow(twenty.diameter / 2 - 100, 2);
      radiusInliers += std::pow(ref.diameter / 2 - 100, 2);
    }
    EXPECT_LT(std::sqrt(centre20 / centreInliers), 1.35);
    EXPECT_LT(std::sqrt(radius20 / radiusInliers), 1.35);
  }
}

// Rakes: teeth every 5 px along a line; some teeth find nothing, some find stray edges.
struct SRakeFit {
  unsigned status, included;
  CZetLine line;
  CZetPointVector outliers, used;
};
SRakeFit Rake(const Pts& p, unsigned percent, double lin, double ang) {
  SRakeFit r{99, 99, {-7, -7}, {}, {}};
  r.status = G::RakePoints2BestLine(p.data(), p.size(), percent, lin, ang, &r.included, &r.line,
                                    &r.outliers, &r.used);
  return r;
}

TEST(RakeFit, MissingTeethAndStrayPoints) {
  const double a = 0.25;
  const auto tooth = [&](int i, double off = 0) {
    return CZetPoint(10 + 5 * i * std::cos(a) - off * std::sin(a),
                     20 + 5 * i * std::sin(a) + off * std::cos(a));
  };
  std::mt19937_64 rng(11);
  std::normal_distribution<> noise(0, 0.05);
  Pts pts, strays;
  for (int i = 0; i < 40; ++i) {
    if (i == 6 || i == 7 || i == 21) continue;  // missing teeth
    if (i == 12 || i == 30 || i == 31) {        // stray edges, 4 to 9 px off the line
      strays.push_back(tooth(i, 4 + i % 6));
      pts.push_back(strays.back());
      continue;
    }
    pts.push_back(tooth(i, noise(rng)));
  }
  pts.insert(pts.begin(), CZetPoint(400, -300));  // a stray before the first tooth
  strays.insert(strays.begin(), pts.front());

  CZetLine truth(a, 20 * std::cos(a) - 10 * std::sin(a));
  const struct {
    const char* what;
    double lin, ang;
    bool strayFree;
  } cases[] = {
      {"both steps", 1.0, 0.15, true},
      {"pitch only", 1.0, 0, true},  // strays also break the spacing here
      {"direction only", 0, 0.15, true},
      {"neither: a plain fit", 0, 0, false},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.what);
    const SRakeFit r = Rake(pts, 0, c.lin, c.ang);
    ASSERT_EQ(r.status, G::kFitOk);
    EXPECT_EQ(r.used.Size() + r.outliers.Size(), pts.size());
    if (!c.strayFree) {
      EXPECT_EQ(r.included, pts.size());
      continue;
    }
    EXPECT_EQ(r.outliers.Std(), strays);
    EXPECT_EQ(r.included, pts.size() - strays.size());
    EXPECT_NEAR(r.line.a, truth.a, 2e-3);
    EXPECT_NEAR(r.line.d, truth.d, 0.1);
  }
  // The percentage then trims the chain; outliers are every point not used.
  const SRakeFit trimmed = Rake(pts, 10, 1.0, 0.15);
  ASSERT_EQ(trimmed.status, G::kFitOk);
  EXPECT_EQ(trimmed.included, 31u);  // 34 in the chain, floor(3.4) trimmed
  EXPECT_EQ(trimmed.outliers.Size(), pts.size() - 31);

  EXPECT_EQ(Rake(pts, 101, 1, 1).status, G::kFitBadPercent);
  EXPECT_EQ(Rake({{1, 1}}, 0, 1, 1).status, G::kFitTooFewPoints);
  EXPECT_EQ(Rake(Pts(5, CZetPoint(2, 2)), 0, 1, 1).status, G::kFitDegenerate);
  Pts bad = pts;
  bad[3].x = kNaN;
  const SRakeFit nan = Rake(bad, 0, 1, 1);
  EXPECT_EQ(nan.status, G::kFitNonFinite);
  EXPECT_EQ(nan.included, 0u);
  EXPECT_EQ(nan.used.Size() + nan.outliers.Size(), 0u);
}

}  // namespace
