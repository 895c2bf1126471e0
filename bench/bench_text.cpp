// String instructions on a 10 MiB text through the host's context, beside the same
// work done directly on std::string in the same run: the length, a search that
// finds its match at the end, a replacement that doubles the text, and the
// character codes as a number array. Each checks its answer once before it is timed.
//
//   bench_text --benchmark_counters_tabular=true
#include <benchmark/benchmark.h>

#include <cstring>
#include <string>
#include <vector>

#include "zet/ZetHost.h"

namespace {

using zet::host::CZetExecContext;
using zet::host::CZetPluginModule;

constexpr size_t kSize = size_t{10} << 20;

CZetPluginModule& Module() {
  static CZetPluginModule module(ZET_BENCH_PLUGIN);
  return module;
}

// Ten megabytes of 'a' ending in "z".
const std::string& Text() {
  static const std::string text = [] {
    std::string t(kSize, 'a');
    t.back() = 'z';
    return t;
  }();
  return text;
}

// Runs `name` on (text, extra...) once per iteration; `check` judges the first run.
template <class Check>
void Through(benchmark::State& state, const char* name, std::vector<CZetObject> extra, Check check) {
  const int index = Module().Find(name);
  if (index < 0) {
    state.SkipWithError("instruction not registered");
    return;
  }
  IXInstrPlugin* instr = Module().At(index);
  CZetExecContext ctx;
  ctx.Reset(*instr->GetInfo());
  ctx.Input(0) = Text().c_str();
  for (size_t i = 0; i < extra.size(); ++i) ctx.Input(static_cast<int>(i + 1)) = extra[i];
  if (ctx.Run(instr).threw || !check(ctx.Output(0))) {
    state.SkipWithError("wrong answer");
    return;
  }
  for (auto _ : state) benchmark::DoNotOptimize(instr->Execute(&ctx));
  state.SetBytesProcessed(state.iterations() * static_cast<int64_t>(kSize));
}

CZetObject Str(const char* s) {
  CZetObject o;
  o = s;
  return o;
}

void BM_LenStrDirect(benchmark::State& state) {
  for (auto _ : state) benchmark::DoNotOptimize(std::strlen(Text().c_str()));
  state.SetBytesProcessed(state.iterations() * static_cast<int64_t>(kSize));
}
BENCHMARK(BM_LenStrDirect);

void BM_LenStr(benchmark::State& state) {
  Through(state, "LenStr", {}, [](const CZetObject& o) { return o.AsDouble() == static_cast<double>(kSize); });
}
BENCHMARK(BM_LenStr);

void BM_FindStrDirect(benchmark::State& state) {
  for (auto _ : state) benchmark::DoNotOptimize(Text().find("az"));
  state.SetBytesProcessed(state.iterations() * static_cast<int64_t>(kSize));
}
BENCHMARK(BM_FindStrDirect);

void BM_FindStr(benchmark::State& state) {
  Through(state, "FindStr", {Str("az")},
          [](const CZetObject& o) { return o.AsDouble() == static_cast<double>(kSize - 2); });
}
BENCHMARK(BM_FindStr);

void BM_ReplaceStrDirect(benchmark::State& state) {
  const std::string& text = Text();
  for (auto _ : state) {
    std::string out;
    out.reserve(2 * kSize);
    for (char c : text) {
      if (c == 'a')
        out.append("bb");
      else
        out.push_back(c);
    }
    benchmark::DoNotOptimize(out.data());
  }
  state.SetBytesProcessed(state.iterations() * static_cast<int64_t>(kSize));
}
BENCHMARK(BM_ReplaceStrDirect)->Unit(benchmark::kMillisecond);

void BM_ReplaceStr(benchmark::State& state) {
  Through(state, "ReplaceStr", {Str("a"), Str("bb")},
          [](const CZetObject& o) { return o.AsString().size() == 2 * kSize - 1; });
}
BENCHMARK(BM_ReplaceStr)->Unit(benchmark::kMillisecond);

// Into one array kept across runs, as the instruction's output is.
void BM_CharToNumDirect(benchmark::State& state) {
  const std::string& text = Text();
  std::vector<double> codes(kSize);
  for (auto _ : state) {
    for (size_t i = 0; i < kSize; ++i) codes[i] = static_cast<signed char>(text[i]);
    benchmark::DoNotOptimize(codes.data());
  }
  state.SetBytesProcessed(state.iterations() * static_cast<int64_t>(kSize));
}
BENCHMARK(BM_CharToNumDirect)->Unit(benchmark::kMillisecond);

void BM_CharToNum(benchmark::State& state) {
  Through(state, "CharToNum", {}, [](const CZetObject& o) {
    const CZetNumberVector* v = o.Get<CZetNumberVector>();
    return v && v->Size() == kSize && (*v)[static_cast<unsigned>(kSize - 1)] == 'z';
  });
}
BENCHMARK(BM_CharToNum)->Unit(benchmark::kMillisecond);

}  // namespace

BENCHMARK_MAIN();
