// One sweep over every registry row: each instruction runs on inputs a host's
// program can produce by accident or by malice (NaN, infinities, +-2^31 and
// beyond, huge and empty texts, format directives, empty and long arrays with
// hostile elements, values of another kind, outputs that arrive holding
// something else). The answer is 0 or 3, never a crash, a hang or a throw, but
// for the two faults kept on purpose; an array output is afterwards of its
// declared kind or, after a refusal, the value it arrived with. Run it under
// the asan preset too.
//
// Instructions whose declared effects act on the machine (files, sleeps and
// message boxes, the application log) are left out here; their families' tests
// cover them.
#include <cmath>
#include <limits>
#include <map>
#include <optional>
#include <stdexcept>
#include <string_view>

#include "Harness.h"
#include "zet/ZetEffects.h"

namespace zet::test {
namespace {

const double kInf = std::numeric_limits<double>::infinity();
const double kNaN = std::numeric_limits<double>::quiet_NaN();

// The effects that keep an instruction out of the sweep.
constexpr unsigned kNotSwept = kEffectFiles | kEffectBlocking | kEffectLog;

// The two faults kept on purpose: identifier -> the type of what it throws.
bool KeptFault(const std::string& ident, const std::exception_ptr& thrown) {
  if (ident == "_Zet_Numeric_RemainderNumbers_") return IsA<std::domain_error>(thrown);
  if (ident == "_Zet_String_CGetAt_") return IsA<std::out_of_range>(thrown);
  return false;
}

const SZetTypeInfo& TypeOf(int code) {
  static const SZetTypeInfo kNone{};
  const SZetTypeInfo* t = ZetTypeInfo(code);
  return t ? *t : kNone;
}

// An array of descriptor type `type` with n elements, hostile ones among them.
CZetObject HostileArray(int type, size_t n) {
  CZetObject o(TypeOf(type).kind);
  const double values[] = {kNaN, kInf, -kInf, -0.0, 1e308, 2147483648.0};
  const auto v = [&](size_t i) { return values[i % 6]; };
  switch (TypeOf(type).element) {
    case kTypeBool:
      o.Ref<CZetBoolVector>().Std().assign(n, true);
      break;
    case kTypeNumber:
      for (size_t i = 0; i < n; ++i) o.Ref<CZetNumberVector>().Std().push_back(v(i));
      break;
    case kTypeString:
      for (size_t i = 0; i < n; ++i)
        o.Ref<CZetStringVector>().Std().push_back(CZetString(i % 2 ? "" : "1e400"));
      break;
    case kTypePoint:
      for (size_t i = 0; i < n; ++i) o.Ref<CZetPointVector>().Std().emplace_back(v(i), v(i + 1));
      break;
    case kTypeLine:
      for (size_t i = 0; i < n; ++i) o.Ref<CZetLineVector>().Std().emplace_back(v(i), v(i + 2));
      break;
    default:
      break;
  }
  return o;
}

// One row of the table: values by descriptor type (types not given keep their
// defaults), or one value for every input; the sizes of hostile arrays for
// array inputs (the first and the others); what every output holds before the
// run.
struct SScenario {
  std::string name;
  std::map<int, CZetObject> byType;
  std::optional<CZetObject> every;
  std::optional<std::pair<size_t, size_t>> arrays;
  CZetObject output = V("kept");
};

SScenario Named(std::string name) {
  SScenario sc;
  sc.name = std::move(name);
  return sc;
}

std::vector<SScenario> Scenarios() {
  std::vector<SScenario> s;
  for (double h : {kNaN, kInf, -kInf, -0.0, 1e308, -1e308, 2147483648.0, -2147483649.0,
                   2147483647.0, 4.9e-324, 255.5, -1.0, 3.0, 1e6}) {
    SScenario sc = Named("number " + std::to_string(h));
    sc.byType[kTypeNumber] = V(h);
    sc.byType[kTypePoint] = V(CZetPoint(h, 1.0));
    sc.byType[kTypeLine] = V(CZetLine(h, h));
    sc.byType[kTypeNumberArray] = NumArr({h, 1.0, h});
    sc.byType[kTypePointArray] = PtArr({{h, 1.0}, {1.0, h}, {h, h}, {0.0, 0.0}});
    s.push_back(sc);
    SScenario arrays = Named("hostile arrays, number " + std::to_string(h));
    arrays.byType[kTypeNumber] = V(h);
    arrays.arrays = {{3, 3}};
    s.push_back(arrays);
    SScenario empty = Named("empty arrays, number " + std::to_string(h));
    empty.byType[kTypeNumber] = V(h);
    empty.arrays = {{0, 0}};
    empty.output = LnArr({{1.0, 2.0}});
    s.push_back(empty);
  }
  const std::string longText(50000, 'a');
  std::string words;
  for (int i = 0; i < 5000; ++i) words += "word \t";
  for (const std::string& t :
       {std::string(), longText, words, std::string("%s%n%p%d%c%*d%.*f%999999999f%%%"),
        std::string("%f %f %f %f %f %f %f %f %f %f %f %f %f %f %f %f %f %f %f %f"),
        std::string("\x92\xff\x80 0x 0X7FFFFFFF"), std::string("a\0b", 3)}) {
    SScenario sc = Named("text of " + std::to_string(t.size()));
    sc.byType[kTypeString] = V(t);
    CZetObject arr(ZET_OBJ_STRING_ARRAY);
    for (int i = 0; i < 3; ++i) arr.Ref<CZetStringVector>().PushBack(CZetString(t));
    sc.byType[kTypeStringArray] = arr;
    s.push_back(sc);
  }
  const std::pair<const char*, CZetObject> every[] = {
      {"all untyped", CZetObject()},
      {"all text", V("12abc")},
      {"all numbers", V(3.0)},
      {"all Booleans", V(true)},
      {"all number arrays", NumArr({1, 2, kNaN})},
      {"all string arrays", StrArr({"", "x"})},
      {"all points", V(CZetPoint(kNaN, kInf))},
      {"all lines", V(CZetLine(kInf, -1))},
      {"all empty handles", V(CZetHandle())},
  };
  for (const auto& [name, value] : every) {
    s.push_back(Named(name));
    s.back().every = value;
  }
  // 10^6 elements in a first number array, 10^5 in a first array of another
  // kind (larger elements); the other arrays short.
  s.push_back(Named("long arrays"));
  s.back().byType[kTypeNumber] = V(1.0);
  s.back().arrays = {{0, 3}};
  return s;
}

class Hostile : public testing::TestWithParam<int> {
 protected:
  void SetUp() override {
    unsigned effects = 0;
    ASSERT_TRUE(host::InstrEffects(Info().ident, &effects)) << "no registry row";
    if (effects & kNotSwept) {
      std::string names;
      for (const std::string& n : EffectNames(effects & kNotSwept)) names += " " + n;
      GTEST_SKIP() << "acts on the machine:" << names;
    }
  }
  IXInstrPlugin* Instr() const { return Module().At(GetParam()); }
  const SInstrInfo& Info() const { return *Instr()->GetInfo(); }

  // Fills the inputs for `sc` and `count` inputs, runs, and checks the answer.
  void RunScenario(const SScenario& sc, int count) {
    const SInstrInfo& info = Info();
    host::CZetExecContext ctx;
    ctx.Reset(info, count);
    const int declared = static_cast<int>(info.inputs.size());
    bool firstArray = true;
    for (int i = 0; i < ctx.InputSlots(); ++i) {
      const int type = info.inputs[std::min(i, declared - 1)].type;
      if (sc.every) {
        ctx.Input(i) = *sc.every;
      } else if (sc.arrays && TypeOf(type).element) {
        size_t n = firstArray ? sc.arrays->first : sc.arrays->second;
        if (sc.name == "long arrays" && firstArray) n = type == kTypeNumberArray ? 1000000 : 100000;
        ctx.Input(i) = HostileArray(type, n);
        firstArray = false;
      } else if (auto it = sc.byType.find(type); it != sc.byType.end()) {
        ctx.Input(i) = it->second;
      }
    }
    for (int i = 0; i < ctx.OutputSlots(); ++i) ctx.Output(i) = sc.output;
    std::exception_ptr thrown;
    std::string what;
    const int status = ExecuteCatching(Instr(), ctx, thrown, &what);
    if (thrown) {
      EXPECT_TRUE(KeptFault(info.ident, thrown)) << "threw: " << what;
      return;
    }
    EXPECT_TRUE(status == kOk || status == kFail) << status;
    // The array families' rule for their outputs (others, such as PtsToGrid, may
    // answer 0 with a report and leave an output alone).
    if (std::string_view(info.category).substr(0, 7) != "Array: ") return;
    for (int i = 0; i < ctx.OutputSlots(); ++i) {
      const ZET_OBJ_TYPE kind = TypeOf(info.outputs[i].type).kind;
      if (!TypeOf(info.outputs[i].type).element) continue;
      const CZetObject& out = ctx.Output(i);
      EXPECT_TRUE(out.GetType() == kind || (status == kFail && out == sc.output))
          << "output " << i << " holds type " << out.GetType();
    }
  }
};

TEST_P(Hostile, InputsNeitherCrashNorThrow) {
  const SInstrInfo& info = Info();
  const int declared = static_cast<int>(info.inputs.size());
  std::vector<int> counts = {declared};
  if (info.variadic) counts.insert(counts.end(), {0, 1, declared + 20});
  for (const SScenario& sc : Scenarios()) {
    for (int count : counts) {
      if (sc.name == "long arrays" && count != declared) continue;
      SCOPED_TRACE(sc.name + ", " + std::to_string(count) + " inputs");
      RunScenario(sc, count);
    }
  }
}

TEST_P(Hostile, ParametersNeitherCrashNorThrow) {
  const SInstrInfo& info = Info();
  const CZetObject values[] = {V(-1),    V(INT32_MAX), V(INT32_MIN), V(kNaN),
                               V(1e308), V(""),        CZetObject(), V(true)};
  for (size_t k = 0; k < info.params.size(); ++k) {
    for (const CZetObject& v : values) {
      host::CZetExecContext ctx;
      ctx.Reset(info);
      ctx.Param(static_cast<int>(k)) = v;
      std::exception_ptr thrown;
      std::string what;
      ExecuteCatching(Instr(), ctx, thrown, &what);
      EXPECT_FALSE(thrown && !KeptFault(info.ident, thrown)) << what;
    }
  }
}

INSTANTIATE_TEST_SUITE_P(Registry, Hostile, testing::ValuesIn(AllIndexes()), IndexName);

}  // namespace
}  // namespace zet::test
