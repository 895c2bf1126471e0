// The platform DLL's class constants that users may take the address of (a test's
// EXPECT_EQ binds them to references): a program that imports a class reaches its
// static constexpr members through the DLL's export table, so the DLL must emit them.
// Taking their addresses here does; elsewhere than on Windows nothing is needed.
#include "zet/ZetGeometry.h"

namespace zet::os {

extern const void* const kExportedConstants[];
const void* const kExportedConstants[] = {
    &CZetGeometry::Pi,          &CZetGeometry::PiDiv2,           &CZetGeometry::PiDiv4,
    &CZetGeometry::kFitOk,      &CZetGeometry::kFitBadPercent,   &CZetGeometry::kFitTooFewPoints,
    &CZetGeometry::kFitNonFinite, &CZetGeometry::kFitDegenerate,
};

}  // namespace zet::os
