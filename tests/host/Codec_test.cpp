// Windows-1252 <-> UTF-8 and the JSON session's request handling.
#include <gtest/gtest.h>

#include "zet/ZetHost.h"

namespace {

using namespace zet::host;

// Every byte survives the trip through UTF-8; what has no Windows-1252 byte is refused.
TEST(Cp1252, RoundTripsAndRefusals) {
  std::string all, back;
  for (int b = 1; b < 256; ++b) all += static_cast<char>(b);
  ASSERT_TRUE(Utf8ToCp1252(Cp1252ToUtf8(all), &back));
  EXPECT_EQ(back, all);
  // Right single quotation mark, euro sign, e acute.
  EXPECT_EQ(Cp1252ToUtf8("\x92\x80\xE9"), "\xE2\x80\x99\xE2\x82\xAC\xC3\xA9");
  // Infinity sign (no byte for it), a truncated sequence, not UTF-8.
  for (const char* bad : {"\xE2\x88\x9E", "\xC3", "\xFF"}) EXPECT_FALSE(Utf8ToCp1252(bad, &back));
  ASSERT_TRUE(Utf8ToCp1252(std::string("a\0b", 3), &back));
  EXPECT_EQ(back, std::string("a\0b", 3));
}

TEST(JsonSession, RequestErrorsKeepTheSessionGoing) {
  CZetPluginModule module(ZET_TEST_PLUGIN);
  CZetJsonSession session(module);
  const struct {
    const char* request;
    const char* starts;
  } cases[] = {
      {"", R"({"error":"bad JSON)"},
      {R"({"instr": "_Zet_Numeric_AddNumbers_", "inputs": [{"x": 1}]})", R"({"error":"input 0: expected a number)"},
      {R"({"instr": "_Zet_Numeric_AddNumbers_", "inputs": 5})", R"({"error":"\"inputs\" must be a list)"},
      {R"({"instr": "_Zet_Numeric_AddNumbers_", "params": [1]})", R"({"error":"too many params)"},
      {R"({"instr": "_Zet_Numeric_AddNumbers_", "params": {"nope": 1}})", R"({"error":"unknown parameter 'nope')"},
      {R"({"instr": "_Zet_Numeric_AddNumbers_", "settings": {"angle_unit": "grads"}})", R"({"error":"settings)"},
      {R"({"instr": "Divide", "outputs": [1, 2]})", R"({"error":"\"outputs\" must be)"},
      {R"({"instr": "_Zet_Numeric_AddNumbers_", "inputs": [1, 2], "save": {"0": "/tmp/x.png"}})",
       R"({"status":0,"outputs":[3.0])"},
      {R"({"instr": "_Zet_Numeric_AddNumbers_", "inputs": [1e308, 1e308]})", R"({"status":0,"outputs":["Infinity"])"},
      {R"({"instr": 0})", R"({"error":"no instruction at position 0)"},
      {R"({"instr": "7"})", R"({"status":0,"outputs":[0.0])"},  // position as text
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.request);
    const std::string resp = session.Handle(c.request);
    EXPECT_EQ(resp.rfind(c.starts, 0), 0u) << resp;
  }
}

}  // namespace
