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
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(std::string(c.instr) + " #" + std::to_string(&c - cases));
    std::vector<CZetObject> in;
    for (bool b : c.in) in.push_back(V(b));
    const CRun r = Exec(c.instr, in);
    ASSERT_EQ(r.status, 0);
    ASSERT_EQ(r.Out(0).GetType(), ZET_OBJ_BOOL);
    EXPECT_EQ(r.Out(0).AsBool(), c.out);
  }
}

// Input 0 is the result when the host counts no input at all.
TEST(Logic, FirstInputIsReadWhateverTheCount) {
  SRunOptions opt;
  opt.inputCount = 0;
  for (const char* instr : {"AND", "OR", "XOR"}) {
    EXPECT_TRUE(Exec(instr, {V(true), V(false)}, opt).Out(0).AsBool()) << instr;
  }
}

TEST(Logic, SetBooleanCopiesTheWholeValue) {
  const CRun r = Exec("SetBoolean", {V(2.5)});
  EXPECT_EQ(r.Out(0).GetType(), ZET_OBJ_DOUBLE);
  EXPECT_FALSE(Exec("NOT", {V(2.5)}).Out(0).AsBool());  // NOT converts
}

// A context whose inputs past the first are missing: an instruction that reads them
// dereferences null.
class CSparseContext final : public IXInstrContext {
 public:
  CSparseContext(CZetObject* first, int count) : m_in(static_cast<size_t>(count), nullptr) {
    m_in[0] = first;
  }
  CZetObject** GetParams() override { return nullptr; }
  CZetObject** GetInputs() override { return m_in.data(); }
  int GetInputCount() override { return static_cast<int>(m_in.size()); }
  CZetObject** GetOutputs() override { return m_outPtr; }
  CZetObject* GetParam(int) override { return nullptr; }
  CZetObject* GetInput(int i) override { return m_in[static_cast<size_t>(i)]; }
  CZetObject* GetOutput(int) override { return &m_out; }
  void SetOutputHint(int, int) override {}
  IXInstrService* GetService(int) override { return nullptr; }
  const CZetObject& Out() const { return m_out; }

 private:
  std::vector<CZetObject*> m_in;
  CZetObject m_out;
  CZetObject* m_outPtr[1] = {&m_out};
};

// AND stops reading at the first false input; deliberate.
TEST(LogicDeathTest, AndReadsNoInputAfterAFalseOne) {
  IXInstrPlugin* andInstr = Module().At(IndexOf("AND"));
  EXPECT_EXIT(
      {
        CZetObject first = V(false);
        CSparseContext ctx(&first, 4);
        const int status = andInstr->Execute(&ctx);
        std::exit(status == kOk && !ctx.Out().AsBool() ? 0 : 1);
      },
      testing::ExitedWithCode(0), "");
}

}  // namespace
}  // namespace zet::test
