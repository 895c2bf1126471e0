// The library object, its registry and the module's one export.
#include "frame/Registry.h"

namespace {

const SInstrLibInfo kLibInfo = {1, "Formula Library\nThis is the very first version of it"};

// Owns the registered instruction objects.
class CImpInstrPluginLib : public IXInstrPluginLib {
 public:
  ~CImpInstrPluginLib() override {
    for (IXInstrPlugin* p : m_plugins) delete p;
    m_plugins.clear();
    m_plugins.shrink_to_fit();
  }
  IXInstrPlugin** GetPlugins() override { return m_plugins.data(); }
  int GetPluginCount() override { return static_cast<int>(m_plugins.size()); }
  void InitAll() override {
    for (IXInstrPlugin* p : m_plugins)
      if (p) p->Init();
  }
  void TermAll() override {
    for (IXInstrPlugin* p : m_plugins) {
      if (!p) continue;
      p->Term();
      delete p;
    }
    m_plugins.clear();  // the storage stays allocated
  }
  CZetObject Reserved6(void*) override { return CZetObject(); }

 protected:
  std::vector<IXInstrPlugin*> m_plugins;
};

class CFormulaLib final : public CImpInstrPluginLib {
 public:
  CFormulaLib() {
    zet::PinParallelRuntime();
    const zet::SRegistryRow* rows = zet::RegistryRows();
    for (size_t i = 0; i < zet::RegistrySize(); ++i) m_plugins.push_back(rows[i].create(rows[i]));
  }
  const SInstrLibInfo* GetLibInfo() override { return &kLibInfo; }
};

CFormulaLib g_formulaLib;

}  // namespace

#if defined(_WIN32)
#define ZET_PLUGIN_EXPORT  // formula/frame/exports.def names the DLL's one export
#else
#define ZET_PLUGIN_EXPORT __attribute__((visibility("default")))
#endif
extern "C" ZET_PLUGIN_EXPORT IXInstrPluginLib* ZetPluginLibGet() {
  return &g_formulaLib;
}
