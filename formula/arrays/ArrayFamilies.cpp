// The classes of the typed-array families' shared operations: one per ZET_ARRAY
// row of Registry.def, an alias of the operation's template over the row's
// element trait and a row type with its description variant, so that
//   ZET_ARRAY(CPArrEraseRange, EraseRange, Point,
//   "_Zet_Array_CPArrEraseRange_", ...)
// gives `using CPArrEraseRange = TArrEraseRange<PointElem,
// SCPArrEraseRangeRow>`, and frame/Factories.def its factory (the identifier and id reach the
// descriptor from the row itself). The families' own algorithms are
// hand-written classes in the other files of this folder.
#include "arrays/ArrayOps.h"

namespace zet {
namespace {

#define ZET_INSTR(Class, ...)
#define ZET_ARRAY(Class, Op, Type, Ident, Id, Text)                 \
  struct S##Class##Row {                                            \
    static constexpr const char* kDescription = S##Op##Texts::Text; \
  };                                                                \
  using Class = TArr##Op<Type##Elem, S##Class##Row>;
#include "frame/Registry.def"

}  // namespace
}  // namespace zet

#define ZET_FAMILY_ArrayFamilies ZET_THIS_FAMILY
#include "frame/Factories.def"
