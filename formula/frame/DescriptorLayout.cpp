// The descriptor records as a 32-bit Windows host reads them: the sizes and field
// offsets of SInstrInfo and its entries in a 32-bit process, checked at compile time
// on every 32-bit build (the Windows x86 build above all). Pointers and ints take 4
// bytes there, a vector three pointers; a value (CZetObject) holds a double, so it is
// aligned as one.
#include <cstddef>

#include "zet/InstrPlugin.h"

#if INTPTR_MAX == INT32_MAX
// The records hold vectors and values, so they are not standard-layout; their offsets
// are still fixed by the ABI, which is the point of this check.
#pragma GCC diagnostic ignored "-Winvalid-offsetof"
namespace {

constexpr size_t RoundUp(size_t n, size_t to) { return (n + to - 1) / to * to; }
constexpr size_t kVector = 12;
constexpr size_t kValue = sizeof(CZetObject);
constexpr size_t kValueAt = RoundUp(16, alignof(CZetObject));

static_assert(sizeof(void*) == 4 && sizeof(int) == 4);
static_assert(sizeof(std::vector<SInstrParam>) == kVector);

// SInstrInfo: kind, four texts, id, a zero int, four bytes, two pairs of words, the
// three lists and a last int: 88 bytes.
static_assert(offsetof(SInstrInfo, kind) == 0);
static_assert(offsetof(SInstrInfo, name) == 4);
static_assert(offsetof(SInstrInfo, category) == 8);
static_assert(offsetof(SInstrInfo, ident) == 12);
static_assert(offsetof(SInstrInfo, description) == 16);
static_assert(offsetof(SInstrInfo, id) == 20);
static_assert(offsetof(SInstrInfo, reserved7) == 24);
static_assert(offsetof(SInstrInfo, reserved8) == 28);
static_assert(offsetof(SInstrInfo, variadic) == 29);
static_assert(offsetof(SInstrInfo, reserved10) == 30);
static_assert(offsetof(SInstrInfo, kindWords) == 32);
static_assert(offsetof(SInstrInfo, reserved12) == 40);
static_assert(offsetof(SInstrInfo, params) == 48);
static_assert(offsetof(SInstrInfo, inputs) == 48 + kVector);
static_assert(offsetof(SInstrInfo, outputs) == 48 + 2 * kVector);
static_assert(offsetof(SInstrInfo, reserved16) == 48 + 3 * kVector);
static_assert(sizeof(SInstrInfo) == 88);

// SInstrOutput: type, name, description, ordinal.
static_assert(offsetof(SInstrOutput, type) == 0);
static_assert(offsetof(SInstrOutput, name) == 4);
static_assert(offsetof(SInstrOutput, description) == 8);
static_assert(offsetof(SInstrOutput, ordinal) == 12);
static_assert(sizeof(SInstrOutput) == 16);

// SInstrInput: type, name, description, the default value, ordinal.
static_assert(offsetof(SInstrInput, type) == 0);
static_assert(offsetof(SInstrInput, name) == 4);
static_assert(offsetof(SInstrInput, description) == 8);
static_assert(offsetof(SInstrInput, defaultValue) == RoundUp(12, alignof(CZetObject)));
static_assert(offsetof(SInstrInput, ordinal) == RoundUp(12, alignof(CZetObject)) + kValue);

// SInstrParam: type, group, name, description, value, minimum, maximum, choices, hint.
static_assert(offsetof(SInstrParam, type) == 0);
static_assert(offsetof(SInstrParam, group) == 4);
static_assert(offsetof(SInstrParam, name) == 8);
static_assert(offsetof(SInstrParam, description) == 12);
static_assert(offsetof(SInstrParam, value) == kValueAt);
static_assert(offsetof(SInstrParam, minimum) == kValueAt + kValue);
static_assert(offsetof(SInstrParam, maximum) == kValueAt + 2 * kValue);
static_assert(offsetof(SInstrParam, choices) == kValueAt + 3 * kValue);
static_assert(offsetof(SInstrParam, hint) == kValueAt + 3 * kValue + sizeof(CIntStrMap));

}  // namespace
#endif
