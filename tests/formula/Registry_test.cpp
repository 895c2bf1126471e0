// What holds for every registered instruction: the registry order, descriptor
// invariants, Term/Init, and a sweep of hostile inputs that must neither crash nor
// leak (run it under the sanitizer build), with only the two kept faults throwing.
#include <cmath>
#include <limits>
#include <map>
#include <set>

#include "Harness.h"
#include "frame/Instr.h"

namespace zet::test {
namespace {

const std::vector<std::string>& RegisteredClasses() {
  static const std::vector<std::string> rows = {
#define ZET_INSTR(Class) #Class,
#include "frame/Registry.def"
  };
  return rows;
}

// The library's order as runs of one category: its length and the classes that open
// and close it. The numeric and string runs interleave on purpose.
struct SRun {
  const char* category;
  int count;
  const char* first;
  const char* last;
};
constexpr SRun kRuns[] = {
    {"Numeric", 26, "CNumericSet", "CNotEqual"},
    {"Statistics", 13, "CMin", "CCpkArr"},
    {"Boolean", 5, "CBooleanSet", "CXor"},
    {"Trigonometric", 11, "CSin", "CGetPiDiv4"},
    {"Geometric", 39, "CPointSet", "CPtsToGrid"},
    {"String", 22, "CStringSet", "CInsertAtStr"},
    {"Numeric", 2, "CNumberToString", "CStringToNumber"},
    {"String", 1, "CWordLengthStr", "CWordLengthStr"},
    {"IO: System", 27, "CGetMiliSecCount", "CLog"},
    {"Array: Number", 38, "CNArrGetAt", "CNArrMathClipHigh"},
    {"Array: Boolean", 15, "CBArrGetAt", "CBArrGetRange"},
    {"Array: String", 16, "CSArrGetAt", "CSArrGetRange"},
    {"Array: Point", 19, "CPArrGetAt", "CPArrSort"},
    {"Array: Line", 16, "CLArrGetAt", "CLArrGetRange"},
    {"IO: Annotations", 10, "CAnnotText", "CAnnotPolyline"},
    {"IO: Keyboard", 3, "CZetKbdTestOneKey", "CZetKbdTestAnyKey"},
    {"Image", 1, "CProcessPolarizedImage", "CProcessPolarizedImage"},
};

TEST(Registry, OrderFollowsTheLibraryList) {
  int total = 0;
  for (const SRun& run : kRuns) total += run.count;
  EXPECT_EQ(total, 264);
  const std::vector<std::string>& classes = RegisteredClasses();
  ASSERT_EQ(static_cast<size_t>(Module().Count()), classes.size());
  // A family comes in whole; until every one is in, the missing runs are left out.
  size_t k = 0;
  for (const SRun& run : kRuns) {
    if (k >= classes.size() || classes[k] != run.first) continue;
    SCOPED_TRACE(std::string(run.category) + " from position " + std::to_string(k + 1));
    ASSERT_LE(k + run.count, classes.size());
    EXPECT_EQ(classes[k + run.count - 1], run.last);
    for (int i = 0; i < run.count; ++i, ++k)
      EXPECT_STREQ(Module().At(static_cast<int>(k))->GetInfo()->category, run.category);
  }
  EXPECT_EQ(k, classes.size()) << classes[std::min(k, classes.size() - 1)]
                               << " is out of order or unknown";
}

TEST(Registry, IdsAndIdentifiersAreUnique) {
  std::set<int> ids;
  std::set<std::string> idents;
  for (int i = 0; i < Module().Count(); ++i) {
    const SInstrInfo& info = *Module().At(i)->GetInfo();
    EXPECT_TRUE(ids.insert(info.id).second) << info.id;
    EXPECT_TRUE(idents.insert(info.ident).second) << info.ident;
  }
}

// The builder's kind rule, on a descriptor of its own.
TEST(Descriptor, KindFromTheTwoWords) {
  struct {
    int32_t w0, w1;
    bool outputs;
    int kind;
  } cases[] = {{0, 0, true, 17}, {1, 0, false, 18}, {0, 1, true, 19}, {5, 5, false, 18}};
  for (const auto& c : cases) {
    SInstrInfo info;
    {
      CDescriber d(info);
      d.Name("T").KindWords(c.w0, c.w1);
      if (c.outputs) d.Output(kTypeNumber, "o");
    }
    EXPECT_EQ(info.kind, c.kind);
  }
  SInstrInfo preset;
  {
    CDescriber d(preset);
    preset.kind = 42;  // a kind already set is left alone
  }
  EXPECT_EQ(preset.kind, 42);
}

TEST(Descriptor, FreshEntriesAreFilledInPlace) {
  SInstrInfo info;
  {
    CDescriber d(info);
    d.ParamChoice("G", "c", "desc", 1, 0, 2, {{2, "two"}, {0, "zero"}, {1, "one"}})
        .Input(kTypeNumber, "n", 2.5)
        .Input(kTypeStringArray, "s")
        .Variadic()
        .Output(kTypeBool, "b");
  }
  ASSERT_EQ(info.params.size(), 1u);
  EXPECT_EQ(info.params[0].choices.begin()->second, "zero");  // ascending by value
  EXPECT_EQ(info.params[0].value.GetType(), ZET_OBJ_INT);
  EXPECT_EQ(info.inputs[1].ordinal, 1);
  EXPECT_EQ(info.inputs[1].defaultValue.GetType(), ZET_OBJ_STRING_ARRAY);
  EXPECT_EQ(info.variadic, 1);
  TermInfo(info);
  EXPECT_TRUE(info.params.empty() && info.inputs.empty() && info.outputs.empty());
  EXPECT_STREQ(info.name, nullptr);
}

std::vector<int> AllIndexes() {
  std::vector<int> v;
  for (int i = 0; i < Module().Count(); ++i) v.push_back(i);
  return v;
}

std::string ParamName(const testing::TestParamInfo<int>& p) {
  std::string s = Module().At(p.param)->GetInfo()->ident;
  for (char& c : s)
    if (!isalnum(static_cast<unsigned char>(c))) c = '_';
  return std::to_string(p.param + 1) + s;
}

class EveryInstruction : public testing::TestWithParam<int> {
 protected:
  IXInstrPlugin* Instr() const { return Module().At(GetParam()); }
  const SInstrInfo& Info() const { return *Instr()->GetInfo(); }
};

ZET_OBJ_TYPE DefaultKind(int type) {
  switch (type) {
    case kTypeBool: return ZET_OBJ_BOOL;
    case kTypeNumber: return ZET_OBJ_DOUBLE;
    case kTypeString: return ZET_OBJ_STRING;
    case kTypeBoolArray: return ZET_OBJ_BOOL_ARRAY;
    case kTypeNumberArray: return ZET_OBJ_NUMBER_ARRAY;
    case kTypeStringArray: return ZET_OBJ_STRING_ARRAY;
    case kTypePointArray: return ZET_OBJ_POINT_ARRAY;
    case kTypeLineArray: return ZET_OBJ_LINE_ARRAY;
    default: return ZET_OBJ_UNTYPED;  // points, lines and images: checked by their family
  }
}

TEST_P(EveryInstruction, DescriptorInvariants) {
  const SInstrInfo& info = Info();
  EXPECT_EQ(info.kind, 17);
  ASSERT_NE(info.name, nullptr);
  ASSERT_NE(info.category, nullptr);
  ASSERT_NE(info.ident, nullptr);
  EXPECT_NE(info.description, nullptr);
  EXPECT_TRUE((info.id >= 460000 && info.id <= 460287) || info.id == 450165) << info.id;
  for (size_t i = 0; i < info.inputs.size(); ++i) {
    const SInstrInput& in = info.inputs[i];
    EXPECT_EQ(in.ordinal, static_cast<int>(i));
    ASSERT_NE(in.name, nullptr);
    if (DefaultKind(in.type) != ZET_OBJ_UNTYPED) {
      EXPECT_EQ(in.defaultValue.GetType(), DefaultKind(in.type)) << in.name;
    }
  }
  for (size_t i = 0; i < info.outputs.size(); ++i) {
    EXPECT_EQ(info.outputs[i].ordinal, static_cast<int>(i));
    EXPECT_NE(info.outputs[i].name, nullptr);
  }
  for (const SInstrParam& p : info.params) {
    SCOPED_TRACE(p.name);
    EXPECT_NE(p.group, nullptr);
    EXPECT_GE(p.hint, 0);
    if (p.type == kTypeInt || p.type == kTypeChoice) {
      ASSERT_EQ(p.value.GetType(), ZET_OBJ_INT);
      ASSERT_EQ(p.minimum.GetType(), ZET_OBJ_INT);
      ASSERT_EQ(p.maximum.GetType(), ZET_OBJ_INT);
      EXPECT_LE(p.minimum.AsInt(), p.value.AsInt());
      EXPECT_LE(p.value.AsInt(), p.maximum.AsInt());
    }
    if (p.type == kTypeChoice) {
      EXPECT_EQ(p.choices.count(p.value.AsInt()), 1u);
    } else {
      EXPECT_TRUE(p.choices.empty());
    }
  }
}

TEST_P(EveryInstruction, TermEmptiesInitRebuilds) {
  IXInstrPlugin* p = Instr();
  const SInstrInfo& info = Info();
  const size_t params = info.params.size(), inputs = info.inputs.size(),
               outputs = info.outputs.size();
  const char* name = info.name;
  p->Init();  // a second Init without Term appends the lists again
  EXPECT_EQ(info.inputs.size(), 2 * inputs);
  EXPECT_EQ(info.outputs.size(), 2 * outputs);
  p->Term();
  EXPECT_TRUE(info.params.empty() && info.inputs.empty() && info.outputs.empty());
  EXPECT_EQ(info.name, name);
  p->Init();
  EXPECT_EQ(info.params.size(), params);
  EXPECT_EQ(info.inputs.size(), inputs);
  EXPECT_EQ(info.outputs.size(), outputs);
  EXPECT_EQ(info.kind, 17);
}

// Instructions whose hostile run would act on the machine (sleep, dialogs, files)
// are swept by their own family's tests instead. Identifier -> reason.
const std::map<std::string, const char*>& SweepSkips() {
  static const std::map<std::string, const char*> skips = {};
  return skips;
}

// The two faults kept on purpose: identifier -> what the exception says.
bool KeptFault(const std::string& ident, const std::string& what) {
  if (ident == "_Zet_Numeric_RemainderNumbers_") return what == "integer division by zero";
  if (ident == "_Zet_String_CGetAt_") return what.find("basic_string") != std::string::npos;
  return false;
}

struct SScenario {
  std::string name;
  std::map<int, CZetObject> byType;  // descriptor type -> value; others keep defaults
  CZetObject any;                    // when not empty: every input gets this value
};

std::vector<SScenario> Scenarios() {
  std::vector<SScenario> s;
  const double kInf = std::numeric_limits<double>::infinity();
  for (double h : {std::nan(""), kInf, -kInf, -0.0, 1e308, -1e308, 2147483648.0, -2147483649.0,
                   4.9e-324, 255.5, -1.0, 1e6}) {
    SScenario sc{"number " + std::to_string(h), {}, {}};
    sc.byType[kTypeNumber] = V(h);
    sc.byType[kTypeNumberArray] = NumArr({h, 1.0, h});
    sc.byType[kTypePoint] = V(CZetPoint(h, 1.0));
    sc.byType[kTypeLine] = V(CZetLine(h, h));
    sc.byType[kTypePointArray] = PtArr({{h, 1.0}, {1.0, h}, {h, h}, {0.0, 0.0}});
    s.push_back(sc);
  }
  const std::string longText(50000, 'a');
  std::string words;
  for (int i = 0; i < 5000; ++i) words += "word \t";
  for (const std::string& t :
       {std::string(), longText, words, std::string("%s%n%p%d%c%*d%.*f%999999999f%%%"),
        std::string("%f %f %f %f %f %f %f %f %f %f %f %f %f %f %f %f %f %f %f %f"),
        std::string("\x92\xff\x80 0x 0X7FFFFFFF"), std::string("a\0b", 3)}) {
    SScenario sc{"text of " + std::to_string(t.size()), {}, {}};
    sc.byType[kTypeString] = V(t);
    CZetObject arr(ZET_OBJ_STRING_ARRAY);
    for (int i = 0; i < 3; ++i) arr.Ref<CZetStringVector>().PushBack(CZetString(t));
    sc.byType[kTypeStringArray] = arr;
    s.push_back(sc);
  }
  s.push_back({"all untyped", {}, CZetObject()});
  s.push_back({"all text", {}, V("12abc")});
  s.push_back({"all numbers", {}, V(3.0)});
  s.push_back({"all Booleans", {}, V(true)});
  s.push_back({"all number arrays", {}, NumArr({1, 2, std::nan("")})});
  s.push_back({"all string arrays", {}, StrArr({"", "x"})});
  s.push_back({"all points", {}, V(CZetPoint(std::nan(""), kInf))});
  s.push_back({"all lines", {}, V(CZetLine(kInf, -1))});
  s.push_back({"all empty handles", {}, V(CZetHandle())});
  return s;
}

TEST_P(EveryInstruction, HostileInputsNeitherCrashNorThrow) {
  const SInstrInfo& info = Info();
  if (SweepSkips().count(info.ident)) GTEST_SKIP() << SweepSkips().at(info.ident);
  const int declared = static_cast<int>(info.inputs.size());
  std::vector<int> counts = {declared};
  if (info.variadic) counts.insert(counts.end(), {0, 1, declared + 20});
  for (const SScenario& sc : Scenarios()) {
    for (int count : counts) {
      SCOPED_TRACE(sc.name + ", " + std::to_string(count) + " inputs");
      host::CZetExecContext ctx;
      ctx.Reset(info, count);
      for (int i = 0; i < ctx.InputSlots(); ++i) {
        const int type = info.inputs[std::min(i, declared - 1)].type;
        if (sc.any.GetType() != ZET_OBJ_UNTYPED || sc.name == "all untyped")
          ctx.Input(i) = sc.any;
        else if (auto it = sc.byType.find(type); it != sc.byType.end())
          ctx.Input(i) = it->second;
      }
      const host::SExecResult r = ctx.Run(Instr());
      if (r.threw) {
        EXPECT_TRUE(KeptFault(info.ident, r.exception)) << "threw: " << r.exception;
      } else {
        EXPECT_TRUE(r.status == kOk || r.status == kFail) << r.status;
      }
    }
  }
}

TEST_P(EveryInstruction, HostileParametersNeitherCrashNorThrow) {
  const SInstrInfo& info = Info();
  if (info.params.empty()) return;
  if (SweepSkips().count(info.ident)) GTEST_SKIP() << SweepSkips().at(info.ident);
  const CZetObject values[] = {V(-1), V(INT32_MAX), V(INT32_MIN), V(std::nan("")), V(1e308),
                               V(""), CZetObject(), V(true)};
  for (size_t k = 0; k < info.params.size(); ++k) {
    for (const CZetObject& v : values) {
      host::CZetExecContext ctx;
      ctx.Reset(info);
      ctx.Param(static_cast<int>(k)) = v;
      const host::SExecResult r = ctx.Run(Instr());
      EXPECT_FALSE(r.threw && !KeptFault(info.ident, r.exception)) << r.exception;
    }
  }
}

INSTANTIATE_TEST_SUITE_P(Registry, EveryInstruction, testing::ValuesIn(AllIndexes()), ParamName);

}  // namespace
}  // namespace zet::test
