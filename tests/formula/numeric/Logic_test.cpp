// Boolean logic: the variadic AND, OR and XOR over any count, AND's short circuit,
// and SetBoolean's copy of the whole value.
#include <cstdlib>

#include "Harness.h"

namespace zet::test {
namespace {

TEST(Logic, Table) {
  const struct {
    const char* instr;
    std::vector<bool> in;
    bool out;
    int count = -2;  // what the host counts; -2: the list size
  } cases[] = {
      {"NOT", {true}, false},           {"NOT", {false}, true},
      {"AND", {true}, true},            {"AND", {false}, false},
      {"AND", {true, true, true}, true}, {"AND", {true, true, false}, false},
      {"AND", {false, true}, false},    {"OR", {false}, false},
      {"OR", {false, false}, false},    {"OR", {false, false, true}, true},
      {"OR", {true, false}, true},      {"XOR", {true}, true},
      {"XOR", {true, true}, false},     {"XOR", {true, true, true}, true},
      {"XOR", {false, true, false, false}, true},
      {"SetBoolean", {true}, true},
      // Input 0 is the result when the host counts no input at all.
      {"AND", {true, false}, true, 0},  {"OR", {true, false}, true, 0},
      {"XOR", {true, true}, true, 0},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(std::string(c.instr) + " #" + std::to_string(&c - cases));
    std::vector<CZetObject> in;
    for (bool b : c.in) in.push_back(V(b));
    SRunOptions opt;
    opt.inputCount = c.count;
    const CRun r = Exec(c.instr, in, opt);
    ASSERT_EQ(r.status, 0);
    ASSERT_EQ(r.Out(0).GetType(), ZET_OBJ_BOOL);
    EXPECT_EQ(r.Out(0).AsBool(), c.out);
  }
}

// SetBoolean copies the whole value, type included; NOT converts.
TEST(Logic, SetBooleanCopiesTheWholeValue) {
  EXPECT_EQ(Exec("SetBoolean", {V(2.5)}).Out(0).GetType(), ZET_OBJ_DOUBLE);
  EXPECT_FALSE(Exec("NOT", {V(2.5)}).Out(0).AsBool());
}

// Deliberate: AND stops reading at the first false input. The inputs after it are null
// pointers here, so a read would crash.
TEST(LogicDeathTest, AndReadsNoInputAfterAFalseOne) {
  IXInstrPlugin* andInstr = Module().At(IndexOf("AND"));
  EXPECT_EXIT(
      {
        host::CZetExecContext ctx;
        ctx.Reset(*andInstr->GetInfo(), 4);
        ctx.Input(0) = V(false);
        for (int i = 1; i < 4; ++i) ctx.GetInputs()[i] = nullptr;
        const int status = andInstr->Execute(&ctx);
        std::exit(status == kOk && !ctx.Output(0).AsBool() ? 0 : 1);
      },
      testing::ExitedWithCode(0), "");
}

}  // namespace
}  // namespace zet::test
