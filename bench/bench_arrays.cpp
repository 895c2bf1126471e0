// Array instructions through the host's context, each beside the plain loop of its
// definition over std::vector<double> in the same run: CorrelateCircular (3600 x 3600
// and 3600 x 360, against the direct s * t loop), Smooth of 10^6 values with 10
// passes, Sort and IndexArray of 10^6 numbers, the point Sort of 10^6 points, Remove Isolated Outliers of 10^5
// points, and Append and GetAt on a 10^6-element array (neither may copy what it only
// reads).
#include <benchmark/benchmark.h>

#include <algorithm>
#include <cmath>
#include <numeric>
#include <random>
#include <vector>

#include "../tests/formula/arrays/CircularDefinition.h"
#include "zet/ZetGeometry.h"
#include "zet/ZetHost.h"

namespace {

using zet::host::CZetExecContext;
using zet::host::CZetPluginModule;

CZetPluginModule& Module() {
  static CZetPluginModule module(ZET_BENCH_PLUGIN);
  return module;
}

std::vector<double> Profile(size_t n, uint64_t seed) {
  std::mt19937_64 rng(seed);
  std::normal_distribution<double> noise(0.0, 0.05);
  std::vector<double> v(n);
  for (size_t i = 0; i < n; ++i)
    v[i] = 25.0 + std::sin(i * 6.283185307179586 / 3600.0 * 7) + noise(rng);  // 0.1 degree steps
  return v;
}

CZetObject NumberArray(const std::vector<double>& v) {
  CZetObject o(ZET_OBJ_NUMBER_ARRAY);
  o.Ref<CZetNumberVector>().Std() = v;
  return o;
}

// One instruction on a context prepared once; the benchmark times Execute alone.
class CRunner {
 public:
  CRunner(const char* ident, std::vector<CZetObject> inputs, int count = -1) {
    m_instr = Module().At(Module().Find(ident));
    m_ctx.Reset(*m_instr->GetInfo(), count);
    for (size_t i = 0; i < inputs.size(); ++i) m_ctx.Input(static_cast<int>(i)) = inputs[i];
  }
  int Run() { return m_instr->Execute(&m_ctx); }
  CZetExecContext& Context() { return m_ctx; }

 private:
  IXInstrPlugin* m_instr;
  CZetExecContext m_ctx;
};

// ---- CorrelateCircular ----

void BM_CorrelateCircularDefinition(benchmark::State& state) {
  const std::vector<double> S = Profile(3600, 1), T = Profile(state.range(0), 2);
  for (auto _ : state) benchmark::DoNotOptimize(zet::test::CircularDefinition(S, T, false));
}
BENCHMARK(BM_CorrelateCircularDefinition)->Arg(3600)->Arg(360)->Unit(benchmark::kMillisecond);

void BM_CorrelateCircular(benchmark::State& state) {
  CRunner r("_Zet_Array_CNArrMathCorrelateCircular_",
            {NumberArray(Profile(3600, 1)), NumberArray(Profile(state.range(0), 2)), CZetObject()});
  r.Context().Input(2) = false;
  for (auto _ : state) benchmark::DoNotOptimize(r.Run());
}
BENCHMARK(BM_CorrelateCircular)->Arg(3600)->Arg(360)->Unit(benchmark::kMillisecond);

// ---- Smooth: 10^6 values, 10 passes ----

void SmoothLoop(const std::vector<double>& in, std::vector<double>& b, int passes) {
  b = in;
  const size_t n = b.size();
  for (int p = 0; p < passes; ++p) {
    double prev = b[0], mid = b[1];
    for (size_t i = 1; i + 1 < n; ++i) {
      const double next = b[i + 1];
      b[i] = ((mid * 2 + prev) + next) * 0.25;
      prev = mid;
      mid = next;
    }
  }
}

void BM_SmoothLoop(benchmark::State& state) {
  const std::vector<double> in = Profile(1000000, 3);
  std::vector<double> out;
  for (auto _ : state) {
    SmoothLoop(in, out, 10);
    benchmark::DoNotOptimize(out.data());
  }
}
BENCHMARK(BM_SmoothLoop)->Unit(benchmark::kMillisecond);

void BM_Smooth(benchmark::State& state) {
  CRunner r("_Zet_Array_CNArrMathSmooth_", {NumberArray(Profile(1000000, 3)), CZetObject()});
  r.Context().Input(1) = 10.0;
  for (auto _ : state) benchmark::DoNotOptimize(r.Run());
}
BENCHMARK(BM_Smooth)->Unit(benchmark::kMillisecond);

// ---- Sort and IndexArray: 10^6 numbers ----

std::vector<double> Shuffled(size_t n) {
  std::vector<double> v(n);
  std::mt19937_64 rng(4);
  std::uniform_real_distribution<double> u(-1e3, 1e3);
  for (double& x : v) x = u(rng);
  return v;
}

void BM_SortLoop(benchmark::State& state) {
  const std::vector<double> in = Shuffled(1000000);
  std::vector<double> out;
  for (auto _ : state) {
    out = in;
    std::sort(out.begin(), out.end());
    benchmark::DoNotOptimize(out.data());
  }
}
BENCHMARK(BM_SortLoop)->Unit(benchmark::kMillisecond);

void BM_Sort(benchmark::State& state) {
  CRunner r("_Zet_Array_CNArrSort_", {NumberArray(Shuffled(1000000))});
  for (auto _ : state) benchmark::DoNotOptimize(r.Run());
}
BENCHMARK(BM_Sort)->Unit(benchmark::kMillisecond);

void BM_IndexArrayLoop(benchmark::State& state) {
  const std::vector<double> in = Shuffled(1000000);
  std::vector<unsigned> order(in.size());
  std::vector<double> out(in.size());
  for (auto _ : state) {
    std::iota(order.begin(), order.end(), 0u);
    std::sort(order.begin(), order.end(), [&](unsigned a, unsigned b) { return in[a] > in[b]; });
    std::copy(order.begin(), order.end(), out.begin());
    benchmark::DoNotOptimize(out.data());
  }
}
BENCHMARK(BM_IndexArrayLoop)->Unit(benchmark::kMillisecond);

void BM_IndexArray(benchmark::State& state) {
  CRunner r("_Zet_Array_CNArrMathIndexArray_", {NumberArray(Shuffled(1000000))});
  for (auto _ : state) benchmark::DoNotOptimize(r.Run());
}
BENCHMARK(BM_IndexArray)->Unit(benchmark::kMillisecond);

// The point Sort, "increasing x", of 10^6 points.
std::vector<CZetPoint> ShuffledPoints(size_t n) {
  const std::vector<double> x = Shuffled(n);
  std::vector<CZetPoint> p(n);
  for (size_t i = 0; i < n; ++i) p[i] = CZetPoint(x[i], x[n - 1 - i]);
  return p;
}

void BM_PointSortLoop(benchmark::State& state) {
  const std::vector<CZetPoint> in = ShuffledPoints(1000000);
  std::vector<CZetPoint> out;
  for (auto _ : state) {
    out = in;
    std::sort(out.begin(), out.end(), [](const CZetPoint& a, const CZetPoint& b) { return a.x < b.x; });
    benchmark::DoNotOptimize(out.data());
  }
}
BENCHMARK(BM_PointSortLoop)->Unit(benchmark::kMillisecond);

void BM_PointSort(benchmark::State& state) {
  CZetObject points(ZET_OBJ_POINT_ARRAY);
  points.Ref<CZetPointVector>().Std() = ShuffledPoints(1000000);
  CRunner r("_Zet_Array_CPArrSort_", {points});
  for (auto _ : state) benchmark::DoNotOptimize(r.Run());
}
BENCHMARK(BM_PointSort)->Unit(benchmark::kMillisecond);

// ---- Remove Isolated Outliers: 10^5 points ----

std::vector<CZetPoint> EdgePoints(size_t n) {
  std::mt19937_64 rng(5);
  std::normal_distribution<double> jitter(0.0, 0.05);
  std::vector<CZetPoint> p(n);
  for (size_t i = 0; i < n; ++i) p[i] = CZetPoint(i * 2.0 + jitter(rng), 100 + jitter(rng));
  for (size_t i = 7; i < n; i += 1000) p[i].y += 40;  // isolated outliers
  return p;
}

// The definition written plainly: spacing, a scan of every cluster per value, the
// split into good and bad points.
void OutliersLoop(const std::vector<CZetPoint>& p, double tol, std::vector<CZetPoint>& good,
                  std::vector<CZetPoint>& bad) {
  const size_t n = p.size();
  std::vector<double> s(n);
  const auto dist = [&](size_t i, size_t j) {
    return std::hypot(p[j].x - p[i].x, p[j].y - p[i].y);
  };
  s[0] = dist(0, 1);
  for (size_t i = 1; i + 1 < n; ++i) s[i] = std::max(dist(i - 1, i), dist(i, i + 1));
  s[n - 1] = dist(n - 2, n - 1);
  std::vector<double> centre, sum;
  std::vector<std::vector<size_t>> members;
  for (size_t i = 0; i < n; ++i) {
    size_t best = centre.size();
    double bestDist = 0;
    for (size_t c = 0; c < centre.size(); ++c) {
      const double d = std::fabs(centre[c] - s[i]);
      if (d < tol && (best == centre.size() || d < bestDist)) {
        best = c;
        bestDist = d;
      }
    }
    if (best == centre.size()) {
      centre.push_back(s[i]);
      sum.push_back(s[i]);
      members.push_back({i});
    } else {
      members[best].push_back(i);
      sum[best] += s[i];
      centre[best] = sum[best] / static_cast<double>(members[best].size());
    }
  }
  size_t win = 0;
  for (size_t c = 1; c < members.size(); ++c)
    if (members[c].size() > members[win].size()) win = c;
  std::vector<bool> isGood(n);
  for (size_t i : members[win]) isGood[i] = true;
  good.clear();
  bad.clear();
  for (size_t i = 0; i < n; ++i) (isGood[i] ? good : bad).push_back(p[i]);
}

void BM_RemoveOutliersLoop(benchmark::State& state) {
  const std::vector<CZetPoint> p = EdgePoints(100000);
  std::vector<CZetPoint> good, bad;
  for (auto _ : state) {
    OutliersLoop(p, 0.5, good, bad);
    benchmark::DoNotOptimize(good.data());
  }
}
BENCHMARK(BM_RemoveOutliersLoop)->Unit(benchmark::kMillisecond);

void BM_RemoveOutliers(benchmark::State& state) {
  CZetObject points(ZET_OBJ_POINT_ARRAY);
  points.Ref<CZetPointVector>().Std() = EdgePoints(100000);
  CRunner r("_Zet_Array_CPArrCluster1D_", {points, CZetObject()});
  r.Context().Input(1) = 0.5;
  for (auto _ : state) benchmark::DoNotOptimize(r.Run());
}
BENCHMARK(BM_RemoveOutliers)->Unit(benchmark::kMillisecond);

// ---- Append and GetAt on 10^6 elements ----

void BM_AppendLoop(benchmark::State& state) {
  const std::vector<double> in = Shuffled(1000000);
  for (auto _ : state) {
    std::vector<double> out;
    out.reserve(in.size() + 1);
    out = in;
    out.push_back(1.5);
    benchmark::DoNotOptimize(out.data());
  }
}
BENCHMARK(BM_AppendLoop)->Unit(benchmark::kMicrosecond);

void BM_Append(benchmark::State& state) {
  CRunner r("_Zet_Array_CNArrAppend_", {NumberArray(Shuffled(1000000)), CZetObject()}, 2);
  r.Context().Input(1) = 1.5;
  for (auto _ : state) benchmark::DoNotOptimize(r.Run());
}
BENCHMARK(BM_Append)->Unit(benchmark::kMicrosecond);

void BM_GetAtLoop(benchmark::State& state) {
  const std::vector<double> in = Shuffled(1000000);
  size_t i = 0;
  for (auto _ : state) {
    benchmark::DoNotOptimize(in[i]);
    i = (i + 7919) % in.size();
  }
}
BENCHMARK(BM_GetAtLoop);

// The array's size must not show: 10^6 elements cost what 1 element costs.
void BM_GetAt(benchmark::State& state) {
  CRunner r("_Zet_Array_CNArrGetAt_", {NumberArray(Shuffled(state.range(0))), CZetObject()});
  size_t i = 0;
  for (auto _ : state) {
    r.Context().Input(1) = static_cast<double>(i);
    benchmark::DoNotOptimize(r.Run());
    i = (i + 7919) % static_cast<size_t>(state.range(0));
  }
}
BENCHMARK(BM_GetAt)->Arg(1)->Arg(1000000);

}  // namespace
BENCHMARK_MAIN();
