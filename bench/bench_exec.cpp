// The cost of running an instruction through the host's context, side by side with
// the same work as a direct call: "Add" with three inputs, and "PrintfNumInf" with
// 17 numbers against snprintf of the same format.
#include <benchmark/benchmark.h>

#include <cstdio>

#include "zet/ZetHost.h"

namespace {

using zet::host::CZetExecContext;
using zet::host::CZetPluginModule;

CZetPluginModule& Module() {
  static CZetPluginModule module(ZET_BENCH_PLUGIN);
  return module;
}

__attribute__((noinline)) double DirectSum(const double* x, int n) {
  double s = 0.0;
  for (int i = 0; i < n; ++i) s = s + x[i];
  return s;
}

void BM_AddDirect(benchmark::State& state) {
  double x[3] = {1.0, 2.0, 3.5};
  for (auto _ : state) {
    benchmark::DoNotOptimize(x);
    benchmark::DoNotOptimize(DirectSum(x, 3));
  }
}
BENCHMARK(BM_AddDirect);

void BM_AddThroughContext(benchmark::State& state) {
  IXInstrPlugin* add = Module().At(Module().Find("_Zet_Numeric_AddNumbers_"));
  CZetExecContext ctx;
  ctx.Reset(*add->GetInfo(), 3);
  ctx.Input(0) = 1.0;
  ctx.Input(1) = 2.0;
  ctx.Input(2) = 3.5;
  for (auto _ : state) {
    benchmark::DoNotOptimize(add->Execute(&ctx));
    benchmark::DoNotOptimize(ctx.Output(0));
  }
}
BENCHMARK(BM_AddThroughContext);

constexpr const char* kFormat17 =
    "%g %g %g %g %g %g %g %g %g %g %g %g %g %g %g %g %g";

void BM_Printf17Direct(benchmark::State& state) {
  const double x[17] = {1, 2.5, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16, 17.25};
  char buf[2048];
  for (auto _ : state) {
    benchmark::DoNotOptimize(std::snprintf(buf, sizeof buf, kFormat17, x[0], x[1], x[2], x[3], x[4],
                                           x[5], x[6], x[7], x[8], x[9], x[10], x[11], x[12], x[13],
                                           x[14], x[15], x[16]));
  }
}
BENCHMARK(BM_Printf17Direct);

void BM_PrintfNumInf17ThroughContext(benchmark::State& state) {
  const int index = Module().Find("PrintfNumInf");
  if (index < 0) {
    state.SkipWithError("PrintfNumInf is not registered");
    return;
  }
  IXInstrPlugin* printf17 = Module().At(index);
  CZetExecContext ctx;
  ctx.Reset(*printf17->GetInfo(), 18);
  ctx.Input(0) = kFormat17;
  const double x[17] = {1, 2.5, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16, 17.25};
  for (int i = 0; i < 17; ++i) ctx.Input(i + 1) = x[i];
  for (auto _ : state) benchmark::DoNotOptimize(printf17->Execute(&ctx));
}
BENCHMARK(BM_PrintfNumInf17ThroughContext);

}  // namespace

BENCHMARK_MAIN();
