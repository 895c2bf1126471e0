// Descriptor facts of the numeric, statistics, Boolean and trigonometric families that
// are easy to get wrong: the identifiers that break their family's pattern, which
// look-alikes repeat their last input, and the operands that default to 1.0.
#include "Harness.h"

namespace zet::test {
namespace {

TEST(NumericDescriptors, IrregularIdentifiers) {
  const struct {
    const char* ident;
    const char* name;
  } cases[] = {
      {"_Zet_Numeric_CGreaterOrEqual_", "GreaterOrEq"}, {"_Zet_Boolean_Set_", "SetBoolean"},
      {"_Zet_Numeric-Stat_CCp_", "Cp"},             {"_Zet_Numeric-Stat_CCpk_", "Cpk"},
      {"_Zet_Default_CCpArr_", "CpArr"},            {"_Zet_Number-Stat_CCpkArr_", "CpkArr"},
      {"_Zet_Trigonometric_Deg2Rad_", "DegToRad"},  {"_Zet_Trigonometric_Rad2Deg_", "RadToDeg"},
      {"_Zet_Trigonometry_CGetPiDiv2_", "GetPiDiv2"},
      {"_Zet_Trigonometry_CGetPiDiv4_", "GetPiDiv4"},
  };
  for (const auto& c : cases) EXPECT_STREQ(InfoOf(c.ident).name, c.name) << c.ident;
}

TEST(NumericDescriptors, VariadicFlagsAndDefaultsOfOne) {
  std::string variadic;
  for (const char* instr :
       {"_Zet_Numeric_AddNumbers_", "_Zet_Numeric_SubtractNumbers_", "_Zet_Numeric_MultiplyNumbers_", "Divide",      "Max2", "Min",       "MinArr",
        "Mean",   "MeanArr",  "Variance", "VarianceArr", "Cp",   "CpArr",     "Cpk",
        "CpkArr", "NOT",      "AND",      "OR",          "XOR",  "SetBoolean"}) {
    if (InfoOf(instr).variadic) variadic += std::string(InfoOf(instr).name) + ' ';
  }
  EXPECT_EQ(variadic, "Add Subtract Multiply Min Mean Variance Cp Cpk AND OR XOR ");
  // An unwired factor, denominator or exponent leaves the other operand as it is.
  for (const char* instr : {"_Zet_Numeric_MultiplyNumbers_", "Divide", "Pow", "Integer Divide", "Remainder"})
    EXPECT_EQ(InfoOf(instr).inputs.back().defaultValue.AsDouble(), 1.0) << instr;
}

}  // namespace
}  // namespace zet::test
