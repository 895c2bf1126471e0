// Expands the registry list into the factory table.
#include "frame/Registry.h"

#define ZET_INSTR(Class) IXInstrPlugin* ZetNew_##Class();
#include "frame/Registry.def"

namespace zet {
namespace {

constexpr SRegistryRow kRows[] = {
#define ZET_INSTR(Class) {#Class, &ZetNew_##Class},
#include "frame/Registry.def"
};

}  // namespace

const SRegistryRow* RegistryRows() { return kRows; }
size_t RegistrySize() { return sizeof(kRows) / sizeof(kRows[0]); }

}  // namespace zet
