// The instruction test harness (see Harness.h).
#include "Harness.h"

namespace zet::test {

int ExecuteCatching(IXInstrPlugin* instr, host::CZetExecContext& ctx, std::exception_ptr& thrown,
                    std::string* what) {
  thrown = nullptr;
  try {
    return instr->Execute(&ctx);
  } catch (const std::exception& e) {
    if (what) *what = e.what();
    thrown = std::current_exception();
  } catch (...) {
    thrown = std::current_exception();
  }
  return 0;
}

host::CZetPluginModule& Module() {
  static host::CZetPluginModule module(ZET_TEST_PLUGIN);
  return module;
}

CZetObject NumArr(std::initializer_list<double> v) {
  CZetObject o(ZET_OBJ_NUMBER_ARRAY);
  for (double d : v) o.Ref<CZetNumberVector>().PushBack(d);
  return o;
}

CZetObject StrArr(std::initializer_list<const char*> v) {
  CZetObject o(ZET_OBJ_STRING_ARRAY);
  for (const char* s : v) o.Ref<CZetStringVector>().PushBack(CZetString(s));
  return o;
}

CZetObject BoolArr(std::initializer_list<bool> v) {
  CZetObject o(ZET_OBJ_BOOL_ARRAY);
  for (bool b : v) o.Ref<CZetBoolVector>().PushBack(CZetBool(b));
  return o;
}

CZetObject PtArr(std::initializer_list<CZetPoint> v) {
  CZetObject o(ZET_OBJ_POINT_ARRAY);
  for (const CZetPoint& p : v) o.Ref<CZetPointVector>().PushBack(p);
  return o;
}

CZetObject LnArr(std::initializer_list<CZetLine> v) {
  CZetObject o(ZET_OBJ_LINE_ARRAY);
  for (const CZetLine& l : v) o.Ref<CZetLineVector>().PushBack(l);
  return o;
}

int IndexOf(const std::string& name) {
  std::string error;
  const int index = Module().Find(name, &error);
  EXPECT_GE(index, 0) << error;
  return index;
}

const SInstrInfo& InfoOf(const std::string& name) {
  const int index = IndexOf(name);
  if (index < 0) throw std::runtime_error("unknown instruction " + name);
  return *Module().At(index)->GetInfo();
}

CRun Exec(const std::string& name, std::vector<CZetObject> inputs, const SRunOptions& opt) {
  const int index = IndexOf(name);
  CRun r;
  if (index < 0) {
    r.status = -1;
    return r;
  }
  IXInstrPlugin* instr = Module().At(index);
  const SInstrInfo& info = *instr->GetInfo();
  int count = opt.inputCount;
  if (count == -2) count = info.variadic ? static_cast<int>(inputs.size()) : -1;
  host::CZetExecContext ctx;
  ctx.Reset(info, count);
  if (static_cast<int>(inputs.size()) > ctx.InputSlots())
    ctx.Resize(ctx.ParamSlots(), static_cast<int>(inputs.size()), ctx.GetInputCount(),
               ctx.OutputSlots());
  for (size_t i = 0; i < inputs.size(); ++i) ctx.Input(static_cast<int>(i)) = inputs[i];
  for (size_t i = 0; i < opt.params.size() && static_cast<int>(i) < ctx.ParamSlots(); ++i)
    ctx.Param(static_cast<int>(i)) = opt.params[i];
  for (size_t i = 0; i < opt.outputs.size() && static_cast<int>(i) < ctx.OutputSlots(); ++i)
    ctx.Output(static_cast<int>(i)) = opt.outputs[i];
  r.status = ExecuteCatching(instr, ctx, r.thrown, &r.exception);
  r.threw = r.thrown != nullptr;
  for (int i = 0; i < ctx.OutputSlots(); ++i) r.outputs.push_back(ctx.Output(i));
  for (size_t i = 0; i < inputs.size(); ++i) r.inputs.push_back(ctx.Input(static_cast<int>(i)));
  r.reports = ctx.Notify().reports;
  r.events = ctx.Notify().events;
  r.annotations = ctx.Annotations().records;
  return r;
}

}  // namespace zet::test
