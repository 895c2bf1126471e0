// The registry's rows, in registry order, with the descriptor facts they carry
// and the runs of one category, all expanded from Registry.def.
#pragma once

#include <cstddef>

#include "zet/InstrPlugin.h"
#include "zet/ZetEffects.h"

namespace zet {

struct SRegistryRow {
  const char* className = nullptr;
  IXInstrPlugin* (*create)(const SRegistryRow& row) = nullptr;
  const char* ident = nullptr;
  int id = 0;
  unsigned effects = kEffectNone;
  const char* category = nullptr;  // from the ZET_FIRST row of the run it is in
};

// A run of rows of one category: positions first .. last (1 is the first row).
struct SCategoryRun {
  const char* tag = nullptr;
  const char* category = nullptr;
  int first = 0;
  int last = 0;
};

// Every row of Registry.def, in order.
const SRegistryRow* RegistryRows();
size_t RegistrySize();
const SCategoryRun* CategoryRuns();
size_t CategoryRunCount();

// Marks the OpenMP runtime as never to be unloaded (see ParallelRuntime.cpp); called
// once when the library object is made.
void PinParallelRuntime();

}  // namespace zet
