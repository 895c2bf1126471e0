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

}  // namespace zet
