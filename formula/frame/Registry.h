// The registry's factories, in registry order.
#pragma once

#include <cstddef>

#include "zet/InstrPlugin.h"

namespace zet {

struct SRegistryRow {
  const char* className;
  IXInstrPlugin* (*create)();
};

// Every row of Registry.def, in order.
const SRegistryRow* RegistryRows();
size_t RegistrySize();

// Marks the OpenMP runtime as never to be unloaded (see ParallelRuntime.cpp); called
// once when the library object is made.
void PinParallelRuntime();

}  // namespace zet
