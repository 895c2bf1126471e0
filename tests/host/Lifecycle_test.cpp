// The library object through the real loader: entry point, registry, InitAll,
// Create/Destroy, TermAll, and repeated load/unload cycles (leaks show under the
// sanitizer build).
#include <dlfcn.h>
#include <gtest/gtest.h>

#include <set>
#include <string>

#include "zet/ZetHost.h"

namespace {

struct SModule {
  SModule() : handle(dlopen(ZET_TEST_PLUGIN, RTLD_NOW | RTLD_LOCAL)) {}
  ~SModule() {
    if (handle) dlclose(handle);
  }
  IXInstrPluginLib* Get() const {
    auto get = reinterpret_cast<ZetPluginLibGetFn>(dlsym(handle, ZET_PLUGIN_ENTRY));
    return get ? get() : nullptr;
  }
  void* handle;
};

TEST(Lifecycle, EntryPointAndLibraryInformation) {
  SModule m;
  ASSERT_NE(m.handle, nullptr) << dlerror();
  IXInstrPluginLib* lib = m.Get();
  ASSERT_NE(lib, nullptr);
  EXPECT_EQ(lib, m.Get());  // the same object on every call
  EXPECT_EQ(lib->GetLibInfo()->version, 1);
  EXPECT_STREQ(lib->GetLibInfo()->info, "Formula Library\nThis is the very first version of it");
  EXPECT_GT(lib->GetPluginCount(), 0);
  EXPECT_TRUE(lib->Reserved6(nullptr).IsEmpty());
}

TEST(Lifecycle, InitCreateDestroyTermTwice) {
  SModule m;
  IXInstrPluginLib* lib = m.Get();
  ASSERT_NE(lib, nullptr);
  const int n = lib->GetPluginCount();
  lib->InitAll();
  std::set<int> ids;
  std::set<std::string> idents;
  for (int i = 0; i < n; ++i) {
    IXInstrPlugin* p = lib->GetPlugins()[i];
    ASSERT_NE(p, nullptr);
    EXPECT_EQ(p->GetInfo()->kind, 17);
    EXPECT_TRUE(ids.insert(p->GetInfo()->id).second) << p->GetInfo()->id;
    EXPECT_TRUE(idents.insert(p->GetInfo()->ident).second) << p->GetInfo()->ident;
    IXInstrPlugin* q = p->Create();
    ASSERT_NE(q, nullptr);
    EXPECT_EQ(q->GetInfo(), p->GetInfo());  // one static descriptor per class
    p->Destroy(q);
    p->Destroy(nullptr);
  }
  IXInstrPlugin* first = lib->GetPlugins()[0];
  const char* name = first->GetInfo()->name;
  (void)name;
  lib->TermAll();
  EXPECT_EQ(lib->GetPluginCount(), 0);
  EXPECT_NE(lib->GetPlugins(), nullptr);  // the storage stays
  lib->TermAll();                         // nothing left to do
  EXPECT_EQ(lib->GetPluginCount(), 0);
}

TEST(Lifecycle, HundredLoadUnloadCycles) {
  for (int i = 0; i < 100; ++i) {
    zet::host::CZetPluginModule module(ZET_TEST_PLUGIN);
    ASSERT_GT(module.Count(), 0);
    if (i % 25 == 0) {
      zet::host::CZetExecContext ctx;
      IXInstrPlugin* add = module.At(module.Find("Add"));
      ctx.Reset(*add->GetInfo(), 2);
      ctx.Input(0) = 1.0;
      ctx.Input(1) = 2.0;
      EXPECT_EQ(ctx.Run(add).status, 0);
      EXPECT_EQ(ctx.Output(0).AsDouble(), 3.0);
    }
  }
}

TEST(Lifecycle, LoaderErrors) {
  EXPECT_THROW(zet::host::CZetPluginModule("/nonexistent/ZetFormulaLib.so"), std::runtime_error);
  EXPECT_THROW(zet::host::CZetPluginModule("libc.so.6"), std::runtime_error);
}

TEST(Lifecycle, OnlyTheEntryPointIsExported) {
  const std::string cmd = std::string("nm -D --defined-only ") + ZET_TEST_PLUGIN;
  FILE* p = popen(cmd.c_str(), "r");
  ASSERT_NE(p, nullptr);
  char line[512];
  std::vector<std::string> symbols;
  while (fgets(line, sizeof line, p)) {
    std::string s(line);
    const auto sp = s.rfind(' ');
    symbols.push_back(s.substr(sp + 1, s.size() - sp - 2));
  }
  pclose(p);
  ASSERT_FALSE(symbols.empty()) << "nm gave nothing";
  for (const std::string& s : symbols)
    if (s != "ZetPluginLibGet" && s.rfind("__", 0) != 0 && s != "_init" && s != "_fini")
      ADD_FAILURE() << "exported: " << s;
}

}  // namespace
