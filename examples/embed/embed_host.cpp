// A minimal inspection host: loads the formula plug-in, runs "Add" on three wired
// numbers and "Divide" by zero through an execution context of its own, and prints
// what came back. Only the SDK headers and the platform library are used.
#include <dlfcn.h>

#include <cstdio>
#include <cstring>
#include <vector>

#include "zet/InstrPlugin.h"

// Prints every report the instructions send.
class CPrintNotify : public IXInstrNotify {
 public:
  void ReportError(int level, const CStdStr& source, const CStdStr& text) override {
    std::printf("report: level %d, %s: %s\n", level, source.c_str(), text.c_str());
  }
  void PostEvent(int code, int value) override { std::printf("event %d %d\n", code, value); }
};

// The execution context: arrays of value pointers and the one service this host offers.
class CContext : public IXInstrContext {
 public:
  CContext(const SInstrInfo& info, int inputCount)
      : m_inputs(std::max<size_t>(info.inputs.size(), inputCount)), m_outputs(info.outputs.size()),
        m_count(inputCount) {
    for (const SInstrParam& p : info.params) m_params.push_back(p.value);
    for (size_t i = 0; i < info.inputs.size(); ++i) m_inputs[i] = info.inputs[i].defaultValue;
    for (auto& v : m_params) m_paramPtrs.push_back(&v);
    for (auto& v : m_inputs) m_inputPtrs.push_back(&v);
    for (auto& v : m_outputs) m_outputPtrs.push_back(&v);
  }
  CZetObject& In(int i) { return m_inputs[i]; }
  CZetObject& Out(int i) { return m_outputs[i]; }

  CZetObject** GetParams() override { return m_paramPtrs.data(); }
  CZetObject** GetInputs() override { return m_inputPtrs.data(); }
  int GetInputCount() override { return m_count; }
  CZetObject** GetOutputs() override { return m_outputPtrs.data(); }
  CZetObject* GetParam(int i) override { return m_paramPtrs[i]; }
  CZetObject* GetInput(int i) override { return m_inputPtrs[i]; }
  CZetObject* GetOutput(int i) override { return m_outputPtrs[i]; }
  void SetOutputHint(int, int) override {}
  IXInstrService* GetService(int id) override { return id == kServiceNotify ? &m_notify : nullptr; }

 private:
  std::vector<CZetObject> m_params, m_inputs, m_outputs;
  std::vector<CZetObject*> m_paramPtrs, m_inputPtrs, m_outputPtrs;
  int m_count;
  CPrintNotify m_notify;
};

IXInstrPlugin* Find(IXInstrPluginLib* lib, const char* ident) {
  for (int i = 0; i < lib->GetPluginCount(); ++i)
    if (std::strcmp(lib->GetPlugins()[i]->GetInfo()->ident, ident) == 0) return lib->GetPlugins()[i];
  return nullptr;
}

int main() {
  void* module = dlopen(ZET_PLUGIN, RTLD_NOW | RTLD_LOCAL);
  if (!module) return std::printf("%s\n", dlerror()), 1;
  auto get = reinterpret_cast<ZetPluginLibGetFn>(dlsym(module, ZET_PLUGIN_ENTRY));
  IXInstrPluginLib* lib = get();
  lib->InitAll();
  std::printf("%s: %d instructions\n", lib->GetLibInfo()->info, lib->GetPluginCount());

  IXInstrPlugin* add = Find(lib, "_Zet_Numeric_AddNumbers_");
  CContext ctx(*add->GetInfo(), 3);  // "Add" is variadic: three wired numbers
  ctx.In(0) = 1.0;
  ctx.In(1) = 2.0;
  ctx.In(2) = 3.5;
  int status = add->Execute(&ctx);
  std::printf("Add -> status %d, sum %g\n", status, ctx.Out(0).AsDouble());

  IXInstrPlugin* divide = Find(lib, "_Zet_Numeric_DivideNumbers_");
  CContext div(*divide->GetInfo(), 2);
  div.In(0) = 1.0;
  div.In(1) = 0.0;
  status = divide->Execute(&div);
  std::printf("Divide -> status %d\n", status);

  lib->TermAll();
  dlclose(module);
  return 0;
}
