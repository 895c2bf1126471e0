// String ConcatArr and Append against the vector's byte cap, which counts the texts: a few long
// texts that together pass it are refused before anything is copied, and the output is left as it
// was. One long text stands in several inputs at once (the inputs are pointers to the same value),
// so a case costs one text and not the gigabyte it adds up to.
#include <string>
#include <vector>

#include "Harness.h"

namespace zet::test {
namespace {

// A run's context whose inputs are the given values themselves, not copies.
class CSharedInputs final : public IXInstrContext {
 public:
  CSharedInputs(const SInstrInfo& info, std::vector<CZetObject*> inputs)
      : m_inputs(std::move(inputs)) {
    m_ctx.Reset(info, static_cast<int>(m_inputs.size()));
    m_ctx.Output(0) = "untouched";
  }
  CZetObject** GetParams() override { return m_ctx.GetParams(); }
  CZetObject** GetInputs() override { return m_inputs.data(); }
  int GetInputCount() override { return static_cast<int>(m_inputs.size()); }
  CZetObject** GetOutputs() override { return m_ctx.GetOutputs(); }
  CZetObject* GetParam(int i) override { return m_ctx.GetParam(i); }
  CZetObject* GetInput(int i) override {
    return i >= 0 && static_cast<size_t>(i) < m_inputs.size() ? m_inputs[static_cast<size_t>(i)]
                                                              : nullptr;
  }
  CZetObject* GetOutput(int i) override { return m_ctx.GetOutput(i); }
  void SetOutputHint(int output, int value) override { m_ctx.SetOutputHint(output, value); }
  IXInstrService* GetService(int id) override { return m_ctx.GetService(id); }
  const CZetObject& Output() { return m_ctx.Output(0); }

 private:
  host::CZetExecContext m_ctx;
  std::vector<CZetObject*> m_inputs;
};

CZetObject Texts(std::vector<std::string> texts) {
  CZetObject o;
  for (std::string& t : texts) o.Ref<CZetStringVector>().Std().emplace_back(std::move(t));
  return o;
}

// `first`, then `value` `count` times.
std::vector<CZetObject*> Repeat(CZetObject* first, CZetObject* value, size_t count) {
  std::vector<CZetObject*> in(count + 1, value);
  in[0] = first;
  return in;
}

constexpr size_t kCap = kZetMaxVectorBytes;
constexpr size_t kElement = sizeof(CZetString);

TEST(StringArrayCap, ConcatArrAndAppendCountTheTexts) {
  // ConcatArr of an array with itself: one text of half the cap, less its element's own bytes, fits
  // twice exactly; one byte more does not.
  CZetObject halfArray;
  halfArray.Ref<CZetStringVector>().Std().emplace_back(std::string((kCap / 2 - kElement) + 1, 'h'));
  // Append of one text as many values: 32 texts of a 64th of the cap pass it after the half above,
  // with their elements' bytes, and neither the array's text nor the values' alone would. (The
  // instruction reads each value to count it, so a case costs a copy of every value.)
  CZetObject sixtyFourth;
  sixtyFourth = std::string(kCap / 64, 's');
  CZetObject small = Texts({"a", "b"});
  CZetObject c;
  c = "c";

  const struct {
    const char* what;
    const char* instr;
    std::vector<CZetObject*> inputs;
    std::vector<std::string> want;  // empty: refused (status 3, the output untouched)
  } cases[] = {
      {"concat over the cap", "_Zet_Array_CSArrConcatArr_", {&halfArray, &halfArray}, {}},
      {"concat under it", "_Zet_Array_CSArrConcatArr_", {&small, &small}, {"a", "b", "a", "b"}},
      {"append to a long text over the cap",
       "_Zet_Array_CSArrAppend_",
       Repeat(&halfArray, &sixtyFourth, 32),
       {}},
      {"append under it", "_Zet_Array_CSArrAppend_", {&small, &c, &c}, {"a", "b", "c", "c"}},
  };
  for (const auto& t : cases) {
    SCOPED_TRACE(t.what);
    IXInstrPlugin* instr = Module().At(IndexOf(t.instr));
    CSharedInputs ctx(*instr->GetInfo(), t.inputs);
    const int status = instr->Execute(&ctx);
    if (t.want.empty()) {
      EXPECT_EQ(status, kFail);
      EXPECT_EQ(ctx.Output().AsString(), "untouched");
      continue;
    }
    ASSERT_EQ(status, kOk);
    const CZetStringVector* out = ctx.Output().Get<CZetStringVector>();
    ASSERT_NE(out, nullptr);
    std::vector<std::string> got;
    for (const CZetString& s : out->Std()) got.push_back(s.Str());
    EXPECT_EQ(got, t.want);
  }
}

}  // namespace
}  // namespace zet::test
