// The line and circle fits: speed on 100, 10 000 and 1 000 000 points with 0 % and
// 20 % gross outliers (the same percentage discarded), beside OpenCV's fitLine with
// DIST_L2 and DIST_HUBER in the same run when OpenCV was found at configure time; and,
// printed before the timings, the accuracy on synthetic data of known truth.
//
//   bench_geometry                       (accuracy table, timings, ratio table)
//   bench_geometry --benchmark_filter=Line
//
// Names: ZetLine/<n>/<outlier %>, CvLineL2/..., CvLineHuber/..., ZetCircle/...
//
// Accuracy: Gaussian noise of sigma 0.5 px on both coordinates, 10 % of the points
// replaced by gross outliers (10 to 60 px off the shape, either side); 20 % discarded,
// and 10 % (the outliers' own share) to tell the trimming from the points it costs.
// Lines: angle and offset errors (the offset measured at the middle of the points)
// against fitLine DIST_HUBER and DIST_L2. Circles, full and on 60-degree arcs: centre
// and radius errors against the geometric least-squares optimum on the inliers alone
// (Gauss-Newton from the true circle, so it shares nothing with the fit measured) and
// the simple algebraic fit on the inliers, biased on short arcs. RMS over the trials.
#include <benchmark/benchmark.h>

#include <cmath>
#include <cstdio>
#include <map>
#include <random>
#include <string>
#include <tuple>
#include <vector>

#include "zet/ZetGeometry.h"

#ifdef ZET_BENCH_OPENCV
#include <opencv2/core.hpp>
#include <opencv2/imgproc.hpp>
#endif

namespace {

using G = CZetGeometry;
using Pts = std::vector<CZetPoint>;

constexpr double kSigma = 0.5;
const CZetLine kTrueLine(0.3, 40);
constexpr double kCx = 500, kCy = 400, kR = 100;

// Points along the true line (t in [-half, half]) or on the true circle (angles from 0
// over `span`), noisy; `outlierPercent` of them (every k-th) moved 10 to 60 px off.
// `inlier`, when given, marks the points left in place.
Pts Synthetic(bool circle, size_t n, int outlierPercent, double span, uint64_t seed,
              std::vector<bool>* inlier = nullptr) {
  std::mt19937_64 rng(seed);
  std::normal_distribution<double> noise(0, kSigma);
  std::uniform_real_distribution<double> u(0, 1);
  Pts p(n);
  if (inlier) inlier->assign(n, true);
  const double half = 200;
  const double nx = -std::sin(kTrueLine.a), ny = std::cos(kTrueLine.a);
  for (size_t i = 0; i < n; ++i) {
    const bool out = outlierPercent > 0 && i % (100 / outlierPercent) == 0;
    const double off = out ? (u(rng) < 0.5 ? -1 : 1) * (10 + 50 * u(rng)) : 0;
    if (circle) {
      const double t = span * u(rng), r = kR + off;
      p[i] = CZetPoint(kCx + r * std::cos(t), kCy + r * std::sin(t));
    } else {
      const double t = -half + 2 * half * u(rng), d = kTrueLine.d + off;
      p[i] = CZetPoint(nx * d + t * std::cos(kTrueLine.a), ny * d + t * std::sin(kTrueLine.a));
    }
    p[i].x += noise(rng), p[i].y += noise(rng);
    if (inlier && out) (*inlier)[i] = false;
  }
  return p;
}

// ---- accuracy ----

struct SRms {
  double sum = 0;
  int n = 0;
  void Add(double e) { sum += e * e, ++n; }
  double Value() const { return n ? std::sqrt(sum / n) : NAN; }
};

// The angle error in degrees (lines are undirected) and the distance of the true
// line's point at the middle of the data from the fitted line.
void LineErrors(const CZetLine& fit, SRms* angle, SRms* offset) {
  double da = std::remainder(fit.a - kTrueLine.a, G::Pi);
  angle->Add(da * 180 / G::Pi);
  const CZetPoint mid(-std::sin(kTrueLine.a) * kTrueLine.d, std::cos(kTrueLine.a) * kTrueLine.d);
  double dist = 0;
  G::PointArray2LineDist(&mid, 1, fit, &dist);
  offset->Add(dist);
}

#ifdef ZET_BENCH_OPENCV
CZetLine CvFit(const Pts& p, int distType) {
  std::vector<cv::Point2f> cvp(p.size());
  for (size_t i = 0; i < p.size(); ++i)
    cvp[i] = cv::Point2f(static_cast<float>(p[i].x), static_cast<float>(p[i].y));
  cv::Vec4f l;
  cv::fitLine(cvp, l, distType, 0, 0.01, 0.01);
  CZetLine out;
  G::PointPointToLine(CZetPoint(l[2], l[3]), CZetPoint(l[2] + l[0], l[3] + l[1]), &out);
  return out;
}
#endif

struct SCircle {
  double cx, cy, r;
};

// Gauss-Newton on the orthogonal distances from the true circle: the geometric
// least-squares optimum.
SCircle GeometricOptimum(const Pts& p) {
  SCircle c{kCx, kCy, kR};
  for (int it = 0; it < 50; ++it) {
    double jtj[3][3] = {}, jtr[3] = {};
    for (const CZetPoint& q : p) {
      const double dx = q.x - c.cx, dy = q.y - c.cy, rho = std::hypot(dx, dy);
      const double j[3] = {-dx / rho, -dy / rho, -1}, res = rho - c.r;
      for (int a = 0; a < 3; ++a) {
        jtr[a] += j[a] * res;
        for (int b = 0; b < 3; ++b) jtj[a][b] += j[a] * j[b];
      }
    }
    // Solve jtj * step = -jtr by Cramer's rule (3 x 3, well conditioned here).
    auto det = [](const double m[3][3]) {
      return m[0][0] * (m[1][1] * m[2][2] - m[1][2] * m[2][1]) -
             m[0][1] * (m[1][0] * m[2][2] - m[1][2] * m[2][0]) +
             m[0][2] * (m[1][0] * m[2][1] - m[1][1] * m[2][0]);
    };
    const double d = det(jtj);
    double step[3];
    for (int col = 0; col < 3; ++col) {
      double m[3][3];
      for (int a = 0; a < 3; ++a)
        for (int b = 0; b < 3; ++b) m[a][b] = b == col ? -jtr[a] : jtj[a][b];
      step[col] = det(m) / d;
    }
    c.cx += step[0], c.cy += step[1], c.r += step[2];
    if (std::fabs(step[0]) + std::fabs(step[1]) + std::fabs(step[2]) < 1e-12 * kR) break;
  }
  return c;
}

// The simple algebraic fit: least squares of x² + y² + D x + E y + F = 0.
SCircle Algebraic(const Pts& p) {
  double a[3][4] = {};
  for (const CZetPoint& q : p) {
    const double x = q.x - kCx, y = q.y - kCy, row[4] = {x, y, 1, -(x * x + y * y)};
    for (int i = 0; i < 3; ++i)
      for (int j = 0; j < 4; ++j) a[i][j] += row[i] * row[j];
  }
  for (int i = 0; i < 3; ++i)  // Gauss-Jordan, the normal matrix is positive definite
    for (int k = 0; k < 3; ++k) {
      if (k == i) continue;
      const double f = a[k][i] / a[i][i];
      for (int j = 0; j < 4; ++j) a[k][j] -= f * a[i][j];
    }
  const double D = a[0][3] / a[0][0], E = a[1][3] / a[1][1], F = a[2][3] / a[2][2];
  return {kCx - D / 2, kCy - E / 2, std::sqrt(D * D / 4 + E * E / 4 - F)};
}

void CircleErrors(const SCircle& c, SRms* centre, SRms* radius) {
  centre->Add(std::hypot(c.cx - kCx, c.cy - kCy));
  radius->Add(c.r - kR);
}

void PrintAccuracy() {
  constexpr int kTrials = 200;
  constexpr size_t kLinePoints = 1000, kCirclePoints = 200;
  std::printf("Accuracy, %d trials, sigma %.1f px, 10 %% gross outliers (RMS errors)\n",
              kTrials, kSigma);
  std::printf("%-34s %14s %14s\n", "line fit (1000 points)", "angle (deg)", "offset (px)");
  std::map<std::string, SRms[2]> line;
  for (int t = 0; t < kTrials; ++t) {
    const Pts p = Synthetic(false, kLinePoints, 10, 0, 1000 + t);
    for (const unsigned percent : {20u, 10u}) {
      unsigned included = 0;
      CZetLine fit;
      SRms* e = line[percent == 20 ? "ours, 20 % discarded" : "ours, 10 % discarded"];
      if (G::Points2BestLine(p.data(), p.size(), percent, &included, &fit, nullptr, nullptr) == 0)
        LineErrors(fit, &e[0], &e[1]);
    }
#ifdef ZET_BENCH_OPENCV
    LineErrors(CvFit(p, cv::DIST_HUBER), &line["fitLine DIST_HUBER"][0],
               &line["fitLine DIST_HUBER"][1]);
    LineErrors(CvFit(p, cv::DIST_L2), &line["fitLine DIST_L2"][0], &line["fitLine DIST_L2"][1]);
#endif
  }
  for (const char* name : {"ours, 20 % discarded", "ours, 10 % discarded", "fitLine DIST_HUBER",
                           "fitLine DIST_L2"})
    if (line.count(name))
      std::printf("%-34s %14.5f %14.4f\n", name, line[name][0].Value(), line[name][1].Value());

  for (const double span : {2 * G::Pi, G::Pi / 3}) {
    std::printf("%-34s %14s %14s\n",
                span > 6 ? "full circle (200 points)" : "60-degree arc (200 points)",
                "centre (px)", "radius (px)");
    SRms ours[2][2], optimum[2], algebraic[2];
    for (int t = 0; t < kTrials; ++t) {
      std::vector<bool> inlier;
      const Pts p = Synthetic(true, kCirclePoints, 10, span, 5000 + t, &inlier);
      Pts in;
      for (size_t i = 0; i < p.size(); ++i)
        if (inlier[i]) in.push_back(p[i]);
      for (const unsigned percent : {20u, 10u}) {
        double diameter = 0, error = 0;
        unsigned included = 0;
        CZetPoint c;
        SRms* e = ours[percent == 20 ? 0 : 1];
        if (G::Points2BestCircle(p.data(), p.size(), percent, &diameter, &included, &error, &c,
                                 nullptr, nullptr) == 0)
          CircleErrors({c.x, c.y, diameter / 2}, &e[0], &e[1]);
      }
      CircleErrors(GeometricOptimum(in), &optimum[0], &optimum[1]);
      CircleErrors(Algebraic(in), &algebraic[0], &algebraic[1]);
    }
    std::printf("%-34s %14.4f %14.4f\n", "ours, 20 % discarded", ours[0][0].Value(),
                ours[0][1].Value());
    std::printf("%-34s %14.4f %14.4f\n", "ours, 10 % discarded", ours[1][0].Value(),
                ours[1][1].Value());
    std::printf("%-34s %14.4f %14.4f\n", "geometric optimum on the inliers", optimum[0].Value(),
                optimum[1].Value());
    std::printf("%-34s %14.4f %14.4f\n", "algebraic fit on the inliers", algebraic[0].Value(),
                algebraic[1].Value());
  }
  std::printf("\n");
}

// ---- speed ----

const Pts& Data(bool circle, size_t n, int outlierPercent) {
  static std::map<std::tuple<bool, size_t, int>, Pts> cache;
  Pts& p = cache[{circle, n, outlierPercent}];
  if (p.empty()) p = Synthetic(circle, n, outlierPercent, 2 * G::Pi, 77);
  return p;
}

// ZetLine: the fit alone, as fitLine; ZetLineSplit also copies out the points used
// and the outliers, as the instructions ask.
template <bool kSplit>
void ZetLineFit(benchmark::State& state) {
  const int percent = static_cast<int>(state.range(1));
  const Pts& p = Data(false, static_cast<size_t>(state.range(0)), percent);
  CZetPointVector outliers, used;
  for (auto _ : state) {
    unsigned included = 0;
    CZetLine l;
    benchmark::DoNotOptimize(G::Points2BestLine(p.data(), p.size(), static_cast<unsigned>(percent),
                                                &included, &l, kSplit ? &outliers : nullptr,
                                                kSplit ? &used : nullptr));
    benchmark::DoNotOptimize(l);
  }
  state.SetItemsProcessed(state.iterations() * state.range(0));
}
void ZetLine(benchmark::State& s) { ZetLineFit<false>(s); }
void ZetLineSplit(benchmark::State& s) { ZetLineFit<true>(s); }

void ZetCircle(benchmark::State& state) {
  const int percent = static_cast<int>(state.range(1));
  const Pts& p = Data(true, static_cast<size_t>(state.range(0)), percent);
  CZetPointVector outliers, used;
  for (auto _ : state) {
    double diameter = 0, error = 0;
    unsigned included = 0;
    CZetPoint c;
    benchmark::DoNotOptimize(G::Points2BestCircle(p.data(), p.size(),
                                                  static_cast<unsigned>(percent), &diameter,
                                                  &included, &error, &c, &outliers, &used));
    benchmark::DoNotOptimize(c);
  }
  state.SetItemsProcessed(state.iterations() * state.range(0));
}

void Sizes(benchmark::internal::Benchmark* b) {
  for (int64_t n : {100, 10000, 1000000})
    for (int64_t percent : {0, 20}) b->Args({n, percent});
  b->Unit(benchmark::kMicrosecond);
}
BENCHMARK(ZetLine)->Apply(Sizes);
BENCHMARK(ZetLineSplit)->Apply(Sizes);

#ifdef ZET_BENCH_OPENCV
// OpenCV fits float points; the conversion is not timed.
template <int kDist>
void CvLine(benchmark::State& state) {
  const Pts& p = Data(false, static_cast<size_t>(state.range(0)), static_cast<int>(state.range(1)));
  std::vector<cv::Point2f> cvp(p.size());
  for (size_t i = 0; i < p.size(); ++i)
    cvp[i] = cv::Point2f(static_cast<float>(p[i].x), static_cast<float>(p[i].y));
  for (auto _ : state) {
    cv::Vec4f l;
    cv::fitLine(cvp, l, kDist, 0, 0.01, 0.01);
    benchmark::DoNotOptimize(l);
  }
  state.SetItemsProcessed(state.iterations() * state.range(0));
}
void CvLineL2(benchmark::State& s) { CvLine<cv::DIST_L2>(s); }
void CvLineHuber(benchmark::State& s) { CvLine<cv::DIST_HUBER>(s); }
BENCHMARK(CvLineL2)->Apply(Sizes);
BENCHMARK(CvLineHuber)->Apply(Sizes);
#endif

BENCHMARK(ZetCircle)->Apply(Sizes);

// Keeps every run's CPU time (the least of its repetitions: the machines are shared,
// and waiting for a core is not the fit's time) for the ratios printed at the end.
class CRatioReporter : public benchmark::ConsoleReporter {
 public:
  void ReportRuns(const std::vector<Run>& runs) override {
    for (const Run& r : runs) {
      if (r.error_occurred || r.run_type != Run::RT_Iteration) continue;
      const std::string name = r.run_name.function_name + "/" + r.run_name.args;
      const double t = r.GetAdjustedCPUTime();
      times[name] = times.count(name) ? std::fmin(times[name], t) : t;
    }
    ConsoleReporter::ReportRuns(runs);
  }
  std::map<std::string, double> times;
};

void PrintRatios(const std::map<std::string, double>& t) {
  std::printf("\nCPU time, least of the repetitions, microseconds\n");
  std::printf("%-16s %10s %10s %10s %10s %8s %8s %8s %10s\n", "points / outl. %", "ZetLine",
              "+split", "CvLineL2", "CvHuber", "Zet/L2", "+spl/L2", "Zet/Hub", "ZetCircle");
  for (const char* size : {"100", "10000", "1000000"})
    for (const char* percent : {"0", "20"}) {
      const std::string key = std::string("/") + size + "/" + percent;
      auto get = [&](const char* name) {
        auto it = t.find(name + key);
        return it == t.end() ? NAN : it->second;
      };
      const double zet = get("ZetLine"), split = get("ZetLineSplit"), l2 = get("CvLineL2"),
                   huber = get("CvLineHuber");
      const std::string label = std::string(size) + " / " + percent;
      std::printf("%-16s %10.1f %10.1f %10.1f %10.1f %8.2f %8.2f %8.2f %10.1f\n", label.c_str(),
                  zet, split, l2, huber, zet / l2, split / l2, zet / huber, get("ZetCircle"));
    }
}

}  // namespace

int main(int argc, char** argv) {
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
  PrintAccuracy();
  CRatioReporter reporter;
  benchmark::RunSpecifiedBenchmarks(&reporter);
  PrintRatios(reporter.times);
  benchmark::Shutdown();
  return 0;
}
