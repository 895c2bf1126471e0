// CorrelateCircular against its plain definition, written out here as a loop over
// every window: on random signals (short templates take the direct product, longer
// ones the FFT) and on data built to break a fast formulation (constant windows whose
// rounded mean is not their value, huge offsets with tiny noise, huge and tiny
// magnitudes, non-finite values). Scores agree to 1e-12; the invalid count, the zero
// scores of invalid windows and every non-finite score are the definition's exactly.
#include <cmath>
#include <limits>
#include <random>

#include "CircularDefinition.h"
#include "Harness.h"

namespace zet::test {
namespace {

CZetObject Arr(const std::vector<double>& v) {
  CZetObject o(ZET_OBJ_NUMBER_ARRAY);
  o.Ref<CZetNumberVector>().Std() = v;
  return o;
}

// Runs the instruction on (a1, a2) and compares it with the definition.
void ExpectDefinition(const std::vector<double>& a1, const std::vector<double>& a2,
                      bool align = true) {
  const SCircular want = CircularDefinition(a1, a2, align);
  const CRun r = Exec("CorrelateCircular", {Arr(a1), Arr(a2), V(align)});
  ASSERT_EQ(r.status, 0);
  const std::vector<double>& got = r.Out(0).Get<CZetNumberVector>()->Std();
  ASSERT_EQ(got.size(), want.scores.size());
  EXPECT_EQ(r.Out(1).AsDouble(), want.templateSize);
  EXPECT_EQ(r.Out(2).AsDouble(), want.invalid);
  size_t worst = 0;
  double worstDiff = 0;
  for (size_t k = 0; k < got.size(); ++k) {
    const double g = got[k], w = want.scores[k];
    if (!std::isfinite(w) || want.invalidAt[k]) {
      ASSERT_TRUE(g == w || (std::isnan(g) && std::isnan(w)))
          << "at " << k << ": " << g << " " << w;
    } else if (!(std::fabs(g - w) <= worstDiff)) {
      worstDiff = std::fabs(g - w);
      worst = k;
    }
  }
  EXPECT_LE(worstDiff, 1e-12) << "at " << worst << " of " << got.size();
}

std::vector<double> Noise(size_t n, double offset, double spread, uint64_t seed) {
  std::mt19937_64 rng(seed);
  std::normal_distribution<double> nd(0.0, spread);
  std::vector<double> v(n);
  for (double& x : v) x = offset + nd(rng);
  return v;
}

TEST(CorrelateCircular, RandomSignalsMatchTheDefinition) {
  const struct {
    size_t s, t;
    double offset, spread;
  } cases[] = {
      {50, 7, 0, 1},         {50, 50, 5, 1},       {64, 32, 0, 1},        {64, 33, 0, 1},
      {1000, 360, 100, 5},   {997, 101, -3, 1e-3}, {3600, 3600, 50, 2},   {3600, 360, 1e6, 1},
      {2000, 40, 1e4, 1e-2}, {513, 2, 1, 1},       {300, 299, 0, 1e-150}, {300, 100, 0, 1e150},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(testing::Message()
                 << c.s << " x " << c.t << ", offset " << c.offset << ", spread " << c.spread);
    const std::vector<double> s = Noise(c.s, c.offset, c.spread, c.s);
    const std::vector<double> t = Noise(c.t, c.offset, c.spread, c.t + 1);
    ExpectDefinition(t, s);
    ExpectDefinition(s, t, false);
  }
}

// A profile with a template cut out of it, as an angular search finds a part.
TEST(CorrelateCircular, TemplateCutFromTheProfileScoresOneAtItsPlace) {
  std::vector<double> profile(360);
  for (size_t i = 0; i < profile.size(); ++i)
    profile[i] = 10 + std::sin(i * 0.05) + 0.3 * std::cos(i * 0.31);
  const std::vector<double> tmpl(profile.begin() + 100, profile.begin() + 140);
  const CRun r = Exec("CorrelateCircular", {Arr(tmpl), Arr(profile), V(true)});
  const std::vector<double>& scores = r.Out(0).Get<CZetNumberVector>()->Std();
  EXPECT_NEAR(scores[120], 1.0, 1e-12);  // window 100, moved to the template's centre
  ExpectDefinition(tmpl, profile);
}

TEST(CorrelateCircular, AdversarialDataMatchesTheDefinition) {
  const double inf = std::numeric_limits<double>::infinity();
  const double nan = std::numeric_limits<double>::quiet_NaN();
  std::vector<std::pair<const char*, std::pair<std::vector<double>, std::vector<double>>>> cases;
  const auto add = [&](const char* name, std::vector<double> s, std::vector<double> t) {
    cases.push_back({name, {std::move(s), std::move(t)}});
  };
  // Constant windows whose sequential sum is not t times their value: the definition's
  // mean misses the value, Sww is not 0 and the window gets a score, not invalid.
  add("constant 0.1", std::vector<double>(500, 0.1), Noise(100, 0, 1, 1));
  add("constant 0", std::vector<double>(500, 0.0), Noise(100, 0, 1, 2));
  add("constant template", Noise(400, 3, 1, 3), std::vector<double>(100, 0.7));
  add("constant both", std::vector<double>(40, 2.5), std::vector<double>(40, 2.5));
  std::vector<double> steps = Noise(2000, 0, 1, 4);
  for (size_t i = 300; i < 900; ++i) steps[i] = 0.3;  // long constant run among noise
  for (size_t i = 1200; i < 1400; ++i) steps[i] = 1e9 + 1e-6 * (i % 3);
  add("steps", steps, Noise(200, 0, 1, 5));
  add("short template over steps", steps, Noise(20, 0, 1, 6));
  add("huge offset, tiny noise", Noise(1000, 1e9, 1e-3, 7), Noise(300, 1e9, 1e-3, 8));
  add("huge offset, tiny noise, short", Noise(1000, 1e9, 1e-3, 9), Noise(30, 1e9, 1e-3, 10));
  std::vector<double> spike = Noise(800, 0, 1, 11);
  spike[400] = 1e250;
  add("one huge value", spike, Noise(100, 0, 1, 12));
  add("huge template", Noise(300, 0, 1, 13), Noise(50, 0, 1e250, 14));
  add("tiny values", Noise(300, 0, 1e-200, 15), Noise(60, 0, 1e-200, 16));
  add("subnormal template", Noise(300, 0, 1, 17), Noise(60, 0, 1e-310, 18));
  std::vector<double> holes = Noise(600, 5, 1, 19);
  holes[10] = nan;
  holes[300] = inf;
  holes[301] = -inf;
  add("non-finite values", holes, Noise(70, 5, 1, 20));
  std::vector<double> badTemplate = Noise(70, 5, 1, 21);
  badTemplate[3] = inf;
  add("non-finite template", Noise(600, 5, 1, 22), badTemplate);
  add("overflowing sums", std::vector<double>(100, 1e308), Noise(40, 0, 1, 23));
  add("equal lengths, t = 1", {3.0}, {4.0});
  add("a template of 2", Noise(9, 0, 1, 24), {1.0, 2.0});
  for (const auto& [name, data] : cases) {
    SCOPED_TRACE(name);
    ExpectDefinition(data.first, data.second);
    ExpectDefinition(data.second, data.first, false);
  }
}

TEST(CorrelateCircular, EmptyArrayIsReportedAndEmptiesTheScores) {
  for (const auto& [a1, a2] : {std::pair{NumArr({}), NumArr({1, 2})}, {NumArr({1}), NumArr({})}}) {
    SRunOptions opt;
    opt.outputs = {NumArr({9}), V(9.0), V(9.0)};
    const CRun r = Exec("CorrelateCircular", {a1, a2}, opt);
    EXPECT_EQ(r.status, 0);
    EXPECT_EQ(r.Out(0).Get<CZetNumberVector>()->Size(), 0u);
    EXPECT_EQ(r.Out(1).AsDouble(), 0.0);
    EXPECT_EQ(r.Out(2).AsDouble(), 0.0);
    ASSERT_EQ(r.reports.size(), 1u);
    EXPECT_EQ(r.Report(0).level, 1);
    EXPECT_EQ(r.Report(0).source, "CorrelateCircular");
    EXPECT_EQ(r.Report(0).text, "No array values to correlate!");
  }
}

}  // namespace
}  // namespace zet::test
