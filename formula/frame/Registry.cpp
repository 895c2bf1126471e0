// Expands the registry list into the rows: factories, identifiers, ids,
// effects, and each row's category from the run it stands in. Built at compile
// time, so a row outside a ZET_FIRST/ZET_LAST pair or a run closed by the wrong
// tag does not compile.
#include "frame/Registry.h"

#include <array>

#define ZET_INSTR(Class, ...) IXInstrPlugin* ZetNew_##Class(const zet::SRegistryRow&);
#include "frame/Registry.def"

namespace zet {
namespace {

enum class EEntry { kRow, kFirst, kLast };

struct SEntry {
  EEntry what;
  SRegistryRow row;
  const char* tag;
};

constexpr SEntry kEntries[] = {
#define ZET_INSTR(Class, Family, Ident, Id, Effects) \
  {EEntry::kRow, {#Class, &ZetNew_##Class, Ident, Id, Effects, nullptr}, nullptr},
#define ZET_FIRST(Tag, Category) {EEntry::kFirst, {.category = Category}, #Tag},
#define ZET_LAST(Tag) {EEntry::kLast, {}, #Tag},
#include "frame/Registry.def"
};

constexpr size_t CountOf(EEntry what) {
  size_t n = 0;
  for (const SEntry& e : kEntries) n += e.what == what ? 1 : 0;
  return n;
}

constexpr bool SameText(const char* a, const char* b) {
  while (*a && *a == *b) ++a, ++b;
  return *a == *b;
}

constexpr auto kRows = [] {
  std::array<SRegistryRow, CountOf(EEntry::kRow)> rows{};
  const SEntry* open = nullptr;
  size_t i = 0;
  for (const SEntry& e : kEntries) {
    if (e.what == EEntry::kFirst) {
      if (open) throw "Registry.def: ZET_FIRST inside an open run";
      open = &e;
    } else if (e.what == EEntry::kLast) {
      if (!open || !SameText(open->tag, e.tag)) throw "Registry.def: ZET_LAST closes another run";
      open = nullptr;
    } else {
      if (!open) throw "Registry.def: a row outside a run";
      rows[i] = e.row;
      rows[i++].category = open->row.category;
    }
  }
  if (open) throw "Registry.def: the last run is not closed";
  return rows;
}();

constexpr auto kRuns = [] {
  std::array<SCategoryRun, CountOf(EEntry::kFirst)> runs{};
  size_t r = 0;
  int position = 0;
  for (const SEntry& e : kEntries) {
    if (e.what == EEntry::kFirst)
      runs[r] = {e.tag, e.row.category, position + 1, 0};
    else if (e.what == EEntry::kLast)
      runs[r++].last = position;
    else
      ++position;
  }
  return runs;
}();

}  // namespace

const SRegistryRow* RegistryRows() { return kRows.data(); }
size_t RegistrySize() { return kRows.size(); }
const SCategoryRun* CategoryRuns() { return kRuns.data(); }
size_t CategoryRunCount() { return kRuns.size(); }

}  // namespace zet
