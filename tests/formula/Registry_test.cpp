// What holds for every registered instruction: the registry's category runs,
// unique ids and identifiers, descriptor invariants, Term/Init. The hostile
// sweep over the same rows is Hostile_test.cpp.
#include <cstdio>
#include <fstream>
#include <set>
#include <sstream>

#include "Harness.h"
#include "frame/Instr.h"

namespace zet::test {
namespace {

// The order itself is the catalogue snapshot's to keep (docs/catalogue.md,
// compared by the host's tests); here: the category runs of Registry.def are
// the categories the descriptors show, and they cover every row once.
struct SRun {
  const char* tag;
  const char* category;
  int count;
};

std::vector<SRun> Runs() {
  std::vector<SRun> runs;
#define ZET_FIRST(Tag, Category) runs.push_back({#Tag, Category, 0});
#define ZET_INSTR(Class, ...) ++runs.back().count;
#include "frame/Registry.def"
  return runs;
}

TEST(Registry, CategoryRunsAreTheDescriptorsCategories) {
  int position = 0;
  for (const SRun& run : Runs()) {
    SCOPED_TRACE(run.tag);
    EXPECT_GT(run.count, 0);
    for (int i = 0; i < run.count && position < Module().Count(); ++i, ++position)
      EXPECT_STREQ(Module().At(position)->GetInfo()->category, run.category);
  }
  EXPECT_EQ(position, Module().Count());
}

// The README's "registry positions A to B" each span whole category runs.
TEST(Registry, ReadmeRangesSpanCategoryRuns) {
  std::ifstream file(std::string(ZET_TEST_SOURCE_DIR) + "/README.md");
  std::stringstream readme;
  readme << file.rdbuf();
  const std::string text = readme.str();
  std::set<int> firsts, lasts;
  int position = 0;
  for (const SRun& run : Runs()) {
    firsts.insert(position + 1);
    position += run.count;
    lasts.insert(position);
  }
  // "registry positions A to B", found by hand (std::regex trips gcc's warnings under ASan).
  const std::string phrase = "registry positions ";
  int found = 0;
  for (size_t at = text.find(phrase); at != std::string::npos; at = text.find(phrase, at + 1)) {
    int first = 0, last = 0;
    if (std::sscanf(text.c_str() + at + phrase.size(), "%d to %d", &first, &last) != 2) continue;
    SCOPED_TRACE(text.substr(at, 40));
    ++found;
    EXPECT_EQ(firsts.count(first), 1u);
    EXPECT_EQ(lasts.count(last), 1u);
  }
  EXPECT_GT(found, 0);
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

class EveryInstruction : public testing::TestWithParam<int> {
 protected:
  IXInstrPlugin* Instr() const { return Module().At(GetParam()); }
  const SInstrInfo& Info() const { return *Instr()->GetInfo(); }
};

// The kind an input's default holds: its type's for Booleans, numbers, strings
// and arrays; points, lines and images are checked by their families.
ZET_OBJ_TYPE DefaultKind(int type) {
  const SZetTypeInfo* t = ZetTypeInfo(type);
  if (!t || t->kind == ZET_OBJ_POINT || t->kind == ZET_OBJ_LINE || t->kind == ZET_OBJ_HANDLE ||
      t->code == kTypeInt || t->code == kTypeChoice)
    return ZET_OBJ_UNTYPED;
  return t->kind;
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

INSTANTIATE_TEST_SUITE_P(Registry, EveryInstruction, testing::ValuesIn(AllIndexes()), IndexName);

}  // namespace
}  // namespace zet::test
