// Descriptor facts of the comparison, statistics, Boolean and trigonometric families
// that are easy to get wrong: irregular identifiers, out-of-order ids, output names,
// variadic flags, and the empty number array that array inputs default to.
#include "Harness.h"

namespace zet::test {
namespace {

std::string Names(const auto& entries) {
  std::string s;
  for (const auto& e : entries) {
    if (!s.empty()) s += ',';
    s += e.name;
  }
  return s;
}

TEST(NumericDescriptors, Table) {
  const struct {
    const char* ident;
    const char* name;
    int id;
    bool variadic;
    const char* inputs;
    const char* outputs;
  } cases[] = {
      {"_Zet_Numeric_CGreaterOrEqual_", "GreaterOrEq", 460125, false, "n1,n2", "n1 >= n2"},
      {"_Zet_Numeric_CEqual_", "Eq", 460128, false, "n1,n2", "n1 == n2"},
      {"_Zet_Numeric_CNotEqual_", "NotEq", 460129, false, "n1,n2", "n1 != n2"},
      {"_Zet_Numeric_CMin_", "Min", 460130, true, "number", "min,idx"},
      {"_Zet_Numeric_CVariance_", "Variance", 460133, true, "number", "variance"},
      {"_Zet_Numeric-Stat_CCp_", "Cp", 460139, true, "HiLim,LoLim,number", "Cp"},
      {"_Zet_Numeric-Stat_CCpk_", "Cpk", 460140, true, "HiLim,LoLim,number", "Cpk"},
      {"_Zet_Numeric_CSumArr_", "SumArr", 460134, false, "numbers", "sum"},
      {"_Zet_Numeric_CMaxArr_", "MaxArr", 460136, false, "numbers", "max,idx"},
      {"_Zet_Numeric_CVarianceArr_", "VarianceArr", 460138, false, "numbers", "variance"},
      {"_Zet_Default_CCpArr_", "CpArr", 460141, false, "HiLim,LoLim,numbers", "Cp"},
      {"_Zet_Number-Stat_CCpkArr_", "CpkArr", 460142, false, "HiLim,LoLim,numbers", "Cpk"},
      {"_Zet_Boolean_Set_", "SetBoolean", 460075, false, "bool", "output"},
      {"_Zet_Boolean_Not_", "NOT", 460076, false, "bool", "negated input"},
      {"_Zet_Boolean_And_", "AND", 460077, true, "bool", "and result"},
      {"_Zet_Boolean_Xor_", "XOR", 460079, true, "bool", "xor result"},
      {"_Zet_Trigonometric_ArcSin_", "ArcSin", 460177, false, "sin", "angle"},
      {"_Zet_Trigonometric_Deg2Rad_", "DegToRad", 460180, false, "angle", "radians"},
      {"_Zet_Trigonometric_Rad2Deg_", "RadToDeg", 460181, false, "angle", "degrees"},
      {"_Zet_Trigonometric_GetPi_", "GetPi", 460182, false, "", "Pi"},
      {"_Zet_Trigonometry_CGetPiDiv2_", "GetPiDiv2", 460183, false, "", "PiDiv2"},
      {"_Zet_Trigonometry_CGetPiDiv4_", "GetPiDiv4", 460184, false, "", "PiDiv4"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.ident);
    const SInstrInfo& info = InfoOf(c.ident);
    EXPECT_STREQ(info.name, c.name);
    EXPECT_EQ(info.id, c.id);
    EXPECT_EQ(info.variadic, c.variadic ? 1 : 0);
    EXPECT_EQ(Names(info.inputs), c.inputs);
    EXPECT_EQ(Names(info.outputs), c.outputs);
    for (const SInstrInput& in : info.inputs) {
      EXPECT_EQ(in.description, nullptr);
      if (std::string(in.name) != "numbers") continue;
      EXPECT_EQ(in.type, kTypeNumberArray);
      const CZetNumberVector* def = in.defaultValue.Get<CZetNumberVector>();
      ASSERT_NE(def, nullptr);
      EXPECT_EQ(def->Size(), 0u);
    }
  }
}

// Kept exactly as the host shows them, odd punctuation included.
TEST(NumericDescriptors, OddDescriptions) {
  EXPECT_STREQ(InfoOf("_Zet_Number-Stat_CCpkArr_").description,
               "Returns the process capability index Cpk2 sided specification limits) for all "
               "the valuesin the array argument.");
  EXPECT_STREQ(InfoOf("_Zet_Numeric-Stat_CCp_").description,
               "Returns the process capability index Cp");
  EXPECT_STREQ(InfoOf("_Zet_Trigonometric_GetPi_").description,
               "Retrieves the value of Pi (as used internally by the application.)");
}

}  // namespace
}  // namespace zet::test
