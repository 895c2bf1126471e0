// The keyboard tests without a display: the code checks and their message, the text
// read as atoi reads it, and "no key is down". (Keys on a display: Desktop_test.cpp.)
#include <cstdlib>
#include <string>

#include "Harness.h"
#include "system/Options.h"

namespace zet::test {
namespace {

// DISPLAY unset for the test's duration, put back after.
class KeyboardNoDisplay : public testing::Test {
 protected:
  void SetUp() override {
    if (const char* d = std::getenv("DISPLAY")) m_saved = d;
    unsetenv("DISPLAY");
  }
  void TearDown() override {
    if (!m_saved.empty()) setenv("DISPLAY", m_saved.c_str(), 1);
  }

 private:
  std::string m_saved;
};

std::string Invalid(int key) {
  return "Invalid key value: " + std::to_string(key) +
         ". Must be between 1 and 255 and not a mouse button virtual-key";
}

TEST_F(KeyboardNoDisplay, CodesAreCheckedFirst) {
  const struct {
    const char* instr;
    CZetObject key;
    int reported;  // the value in the message; -1000 for an accepted code
  } cases[] = {
      {"Test one key (number)", V(0.0), 0},
      {"Test one key (number)", V(256.0), 256},
      {"Test one key (number)", V(-3.0), -3},
      {"Test one key (number)", V(1.0), 1},
      {"Test one key (number)", V(2.0), 2},
      {"Test one key (number)", V(4.0), 4},
      {"Test one key (number)", V(0.99), 0},     // truncated toward zero
      {"Test one key (number)", V(-0.5), 0},
      {"Test one key (number)", V(3.0), -1000},  // cancel (VK 3), not a mouse button
      {"Test one key (number)", V(5.0), -1000},  // the extra mouse buttons are keys
      {"Test one key (number)", V(6.0), -1000},
      {"Test one key (number)", V(255.9), -1000},
      {"Test one key (string)", V("abc"), 0},
      {"Test one key (string)", V(""), 0},
      {"Test one key (string)", V("  -7x"), -7},
      {"Test one key (string)", V("4"), 4},
      {"Test one key (string)", V("99999999999"), INT32_MAX},
      {"Test one key (string)", V("65"), -1000},
      {"Test one key (string)", V(" +65abc"), -1000},
      {"Test one key (string)", V("0x41"), 0},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(std::string(c.instr) + " " + c.key.AsString());
    const CRun r = Exec(c.instr, {c.key}, Outputs({V(true)}));
    EXPECT_EQ(r.status, kOk);
    if (c.reported == -1000) {
      EXPECT_TRUE(r.reports.empty());
      EXPECT_FALSE(r.Out(0).AsBool());  // nothing is down without a display
    } else {
      ASSERT_EQ(r.reports.size(), 1u);
      EXPECT_EQ(r.Report(0).level, 2);
      EXPECT_EQ(r.Report(0).source, "Test one key");
      EXPECT_EQ(r.Report(0).text, Invalid(c.reported));
      EXPECT_TRUE(r.Out(0).AsBool());  // left as it was
    }
  }
}

TEST_F(KeyboardNoDisplay, NoKeyIsDown) {
  const CRun r = Exec("Test any key", {}, Outputs({V(true), V(9.0)}));
  EXPECT_EQ(r.status, kOk);
  EXPECT_FALSE(r.Out(0).AsBool());
  EXPECT_EQ(r.Out(1).AsDouble(), 0.0);
  setenv("DISPLAY", ":59998", 1);  // a display nobody serves
  EXPECT_FALSE(Exec("Test one key (number)", {V(65.0)}, Outputs({V(true)})).Out(0).AsBool());
  EXPECT_FALSE(Exec("Test any key", {}).Out(0).AsBool());
}

}  // namespace
}  // namespace zet::test
