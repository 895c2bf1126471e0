// The library object through the real loader: entry point, registry, InitAll,
// Create/Destroy, TermAll, and repeated load/unload cycles (leaks show under the
// sanitizer build).
#include <dlfcn.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdio>
#include <memory>
#include <nlohmann/json.hpp>
#include <set>
#include <string>

#include "zet/ZetHost.h"

namespace {

// Through dlopen and dlsym alone, as any host: one library object, every class created
// and destroyed once initialised; TermAll empties the registry, and a second does nothing.
TEST(Lifecycle, EntryPointInitCreateDestroyTermTwice) {
  const std::unique_ptr<void, int (*)(void*)> module(dlopen(ZET_TEST_PLUGIN, RTLD_NOW), dlclose);
  ASSERT_TRUE(module) << dlerror();
  const auto get = reinterpret_cast<ZetPluginLibGetFn>(dlsym(module.get(), ZET_PLUGIN_ENTRY));
  ASSERT_NE(get, nullptr);
  IXInstrPluginLib* lib = get();
  ASSERT_NE(lib, nullptr);
  EXPECT_EQ(lib, get());  // the same object on every call
  EXPECT_EQ(lib->GetLibInfo()->version, 1);
  EXPECT_STREQ(lib->GetLibInfo()->info, "Formula Library\nThis is the very first version of it");
  EXPECT_TRUE(lib->Reserved6(nullptr).IsEmpty());
  const int n = lib->GetPluginCount();
  ASSERT_GT(n, 0);
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
  for (int term = 0; term < 2; ++term) {
    lib->TermAll();
    EXPECT_EQ(lib->GetPluginCount(), 0);
    EXPECT_NE(lib->GetPlugins(), nullptr);  // the storage stays
  }
}

// Every load fills the registry afresh and runs.
TEST(Lifecycle, HundredLoadUnloadCycles) {
  const int count = zet::host::CZetPluginModule(ZET_TEST_PLUGIN).Count();
  ASSERT_GT(count, 0);
  for (int i = 0; i < 100; ++i) {
    zet::host::CZetPluginModule module(ZET_TEST_PLUGIN);
    ASSERT_EQ(module.Count(), count);
    zet::host::CZetJsonSession session(module);
    const std::string r = session.Handle(R"({"instr": "_Zet_Numeric_AddNumbers_", "inputs": [1, 2]})");
    ASSERT_EQ(r.rfind(R"({"status":0,"outputs":[3.0])", 0), 0u) << r;
  }
}

// The polarization types 9 and 10 spread rows over worker threads above 4096 output
// pixels. The workers must stay valid after the plug-in is unloaded: a host that loads,
// runs them and unloads, over and over, and then exits, neither crashes nor leaks.
TEST(Lifecycle, HundredCyclesWithParallelWork) {
  // Named by process: other builds' test runs share the temporary folder.
  const std::string frame =
      ::testing::TempDir() + "lifecycle_frame_" + std::to_string(getpid()) + ".pgm";
  {
    CZetImage raw;
    ASSERT_EQ(raw.Create(200, 160, kZetImageMono8), kZetImageOk);  // 100 x 80 output pixels
    for (int y = 0; y < raw.Height(); ++y)
      for (int x = 0; x < raw.Width(); ++x) raw.Row(y)[x] = static_cast<uint8_t>(x * 7 + y * 3);
    ASSERT_EQ(zet::host::SaveImageFile(frame, raw), "");
  }
  // Fewer cycles on Windows: a load with its OpenMP runtime costs about 90 ms under Wine.
#if defined(_WIN32)
  constexpr int kCycles = 25;
#else
  constexpr int kCycles = 100;
#endif
  for (int i = 0; i < kCycles; ++i) {
    zet::host::CZetPluginModule module(ZET_TEST_PLUGIN);
    zet::host::CZetJsonSession session(module);
    for (int type : {9, 10}) {
      // The path as a JSON string: a Windows one holds backslashes.
      const std::string r = session.Handle(R"({"instr": "ProcessPolarizedImage", "params": [)" +
                                           std::to_string(type) + R"(], "inputs": [{"file": )" +
                                           nlohmann::json(frame).dump() + "}]}");
      ASSERT_EQ(r.rfind(R"({"status":0,"outputs":[{"width":100,"height":80)", 0), 0u) << r;
    }
  }
  std::remove(frame.c_str());
}

TEST(Lifecycle, LoaderErrors) {
  EXPECT_THROW(zet::host::CZetPluginModule("/nonexistent/ZetFormulaLib.so"), std::runtime_error);
  EXPECT_THROW(zet::host::CZetPluginModule("libc.so.6"), std::runtime_error);
}

}  // namespace
