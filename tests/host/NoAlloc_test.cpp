// Executing a scalar instruction allocates nothing: every operator new in this test
// binary is counted while a run is measured.
#include <gtest/gtest.h>

#include <atomic>
#include <cstdlib>
#include <new>

#include "zet/ZetHost.h"

namespace {
std::atomic<bool> g_counting{false};
std::atomic<long> g_allocations{0};
}  // namespace

// Out of line, so that the compiler never pairs an inlined new with free().
__attribute__((noinline)) void* operator new(size_t n) {
  if (g_counting) ++g_allocations;
  if (void* p = std::malloc(n ? n : 1)) return p;
  throw std::bad_alloc();
}
void* operator new[](size_t n) { return operator new(n); }
__attribute__((noinline)) void operator delete(void* p) noexcept { std::free(p); }
__attribute__((noinline)) void operator delete[](void* p) noexcept { std::free(p); }
__attribute__((noinline)) void operator delete(void* p, size_t) noexcept { std::free(p); }
__attribute__((noinline)) void operator delete[](void* p, size_t) noexcept { std::free(p); }

namespace {

TEST(NoAlloc, ScalarInstructionsThroughTheContext) {
  zet::host::CZetPluginModule module(ZET_TEST_PLUGIN);
  for (const char* name : {"_Zet_Numeric_AddNumbers_", "Divide", "Round", "_Zet_Numeric_SubtractNumbers_", "Sqrt"}) {
    SCOPED_TRACE(name);
    IXInstrPlugin* instr = module.At(module.Find(name));
    zet::host::CZetExecContext ctx;
    ctx.Reset(*instr->GetInfo(), instr->GetInfo()->variadic ? 3 : -1);
    for (int i = 0; i < ctx.InputSlots(); ++i) ctx.Input(i) = 1.5 + i;
    instr->Execute(&ctx);  // the output takes its type once
    g_allocations = 0;
    g_counting = true;
    for (int k = 0; k < 100; ++k) instr->Execute(&ctx);
    g_counting = false;
    EXPECT_EQ(g_allocations.load(), 0);
  }
}

TEST(NoAlloc, AssigningAScalarToAFreshOutput) {
  CZetObject out;
  g_allocations = 0;
  g_counting = true;
  out = 2.5;
  out = true;
  out = 7;
  out = CZetPoint(1, 2);
  g_counting = false;
  EXPECT_EQ(g_allocations.load(), 0);
}

}  // namespace
