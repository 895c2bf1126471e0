// The environment instructions on this process's real environment.
#include <algorithm>
#include <cstdlib>
#include <string>
#include <vector>

#include "Harness.h"
#include "system/Options.h"

extern char** environ;

namespace zet::test {
namespace {

std::vector<std::string> Strings(const CZetObject& o) {
  std::vector<std::string> v;
  if (const auto* arr = o.Get<CZetStringVector>())
    for (unsigned i = 0; i < arr->Size(); ++i) v.push_back((*arr)[i].Str());
  return v;
}

bool Has(const std::vector<std::string>& v, const std::string& s) {
  return std::find(v.begin(), v.end(), s) != v.end();
}

TEST(SystemEnv, SetAndGetFollowTheRuntimeRules) {
  const struct {
    const char *name, *value;
    int status;
    const char *readName, *read;
  } cases[] = {
      // The runtime's own rules are the platform test's; these are the instruction's:
      // the name and value joined by '=', an absent name read as "Not found", an empty
      // name refused.
      {"ZET_SYS_A", "1", kOk, "ZET_SYS_A", "1"},
      {"ZET_SYS_A", "", kOk, "ZET_SYS_A", "Not found"},
      {"ZET_SYS_B=x", "y", kOk, "ZET_SYS_B", "x=y"},
      {"", "x", kFail, "ZET_SYS_NEVER", "Not found"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(std::string(c.name) + "=" + c.value);
    EXPECT_EQ(Exec("SetEnv", {V(c.name), V(c.value)}).status, c.status);
    EXPECT_EQ(Exec("GetEnv", {V(c.readName)}).Out(0).AsString(), c.read);
  }
  setenv("ZET_SYS_EMPTY", "", 1);
  EXPECT_EQ(Exec("GetEnv", {V("ZET_SYS_EMPTY")}).Out(0).AsString(), "Not found");
  unsetenv("ZET_SYS_B");
  unsetenv("ZET_SYS_EMPTY");
}

// The instructions read the process table itself, so a table of our own stands in for
// it: entries that setenv cannot make (no "=", a leading "=") and an empty table.
class SystemEnvTable : public testing::Test {
 protected:
  void TearDown() override { environ = m_saved; }
  void Use(char** table) { environ = table; }

 private:
  char** m_saved = environ;
};

TEST_F(SystemEnvTable, EntriesAndNamesInTableOrder) {
  char a[] = "PATH=/bin", b[] = "=C:=C:\\work", c[] = "NOEQUALS", d[] = "X=a=b", e[] = "E=";
  char* table[] = {a, b, c, d, e, nullptr};
  Use(table);
  const std::vector<std::string> vars = Strings(Exec("GetEnvVars", {}).Out(0));
  const std::vector<std::string> names = Strings(Exec("GetEnvNames", {}).Out(0));
  EXPECT_EQ(vars, (std::vector<std::string>{"PATH=/bin", "=C:=C:\\work", "NOEQUALS", "X=a=b",
                                            "E="}));
  EXPECT_EQ(names, (std::vector<std::string>{"PATH", "", "", "X", "E"}));
}

TEST_F(SystemEnvTable, AnEmptyTableLeavesTheOutput) {
  char* table[] = {nullptr};
  Use(table);
  const CRun vars = Exec("GetEnvVars", {}, Outputs({StrArr({"kept"})}));
  const CRun names = Exec("GetEnvNames", {}, Outputs({StrArr({"kept"})}));
  EXPECT_EQ(Strings(vars.Out(0)), std::vector<std::string>{"kept"});
  EXPECT_EQ(Strings(names.Out(0)), std::vector<std::string>{"kept"});
}

TEST(SystemEnv, TheRealTable) {
  setenv("ZET_SYS_LIST", "a=b", 1);
  const std::vector<std::string> vars = Strings(Exec("GetEnvVars", {}).Out(0));
  std::vector<std::string> table;
  for (char** e = environ; *e; ++e) table.push_back(*e);
  EXPECT_EQ(vars, table);
  EXPECT_TRUE(Has(vars, "ZET_SYS_LIST=a=b"));
  EXPECT_TRUE(Has(Strings(Exec("GetEnvNames", {}).Out(0)), "ZET_SYS_LIST"));
  unsetenv("ZET_SYS_LIST");
}

}  // namespace
}  // namespace zet::test
