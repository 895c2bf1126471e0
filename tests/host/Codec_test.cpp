// Windows-1252 <-> UTF-8 and the JSON session's request handling.
#include <gtest/gtest.h>

#include "zet/ZetHost.h"

namespace {

using namespace zet::host;

TEST(Cp1252, EveryByteRoundTrips) {
  std::string all;
  for (int b = 1; b < 256; ++b) all += static_cast<char>(b);
  std::string back;
  ASSERT_TRUE(Utf8ToCp1252(Cp1252ToUtf8(all), &back));
  EXPECT_EQ(back, all);
}

TEST(Cp1252, KnownCharacters) {
  EXPECT_EQ(Cp1252ToUtf8("\x92"), "\xE2\x80\x99");  // right single quotation mark
  EXPECT_EQ(Cp1252ToUtf8("\x80"), "\xE2\x82\xAC");  // euro sign
  EXPECT_EQ(Cp1252ToUtf8("\xE9"), "\xC3\xA9");      // e acute
  std::string out;
  EXPECT_FALSE(Utf8ToCp1252("\xE2\x88\x9E", &out));  // infinity sign: no byte for it
  EXPECT_FALSE(Utf8ToCp1252("\xC3", &out));          // truncated sequence
  EXPECT_FALSE(Utf8ToCp1252("\xFF", &out));          // not UTF-8
  ASSERT_TRUE(Utf8ToCp1252(std::string("a\0b", 3), &out));
  EXPECT_EQ(out.size(), 3u);
}

TEST(JsonSession, RequestErrorsKeepTheSessionGoing) {
  CZetPluginModule module(ZET_TEST_PLUGIN);
  CZetJsonSession session(module);
  const struct {
    const char* request;
    const char* starts;
  } cases[] = {
      {"", "{\"error\":\"bad JSON"},
      {"{\"instr\": \"Add\", \"inputs\": [{\"x\": 1}]}", "{\"error\":\"input 0: expected a number"},
      {"{\"instr\": \"Add\", \"inputs\": 5}", "{\"error\":\"\\\"inputs\\\" must be a list"},
      {"{\"instr\": \"Add\", \"params\": [1]}", "{\"error\":\"too many params"},
      {"{\"instr\": \"Add\", \"params\": {\"nope\": 1}}", "{\"error\":\"unknown parameter 'nope'"},
      {"{\"instr\": \"Add\", \"settings\": {\"angle_unit\": \"grads\"}}", "{\"error\":\"settings"},
      {"{\"instr\": \"Divide\", \"outputs\": [1, 2]}", "{\"error\":\"\\\"outputs\\\" must be"},
      {"{\"instr\": \"Add\", \"inputs\": [1, 2], \"save\": {\"0\": \"/tmp/x.png\"}}",
       "{\"status\":0,\"outputs\":[3.0]"},
      {"{\"instr\": \"Add\", \"inputs\": [1e308, 1e308]}", "{\"status\":0,\"outputs\":[\"Infinity\"]"},
      {"{\"instr\": 0}", "{\"error\":\"no instruction at position 0"},
      {"{\"instr\": \"7\"}", "{\"status\":0,\"outputs\":[0.0]"},  // position as text
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.request);
    const std::string resp = session.Handle(c.request);
    EXPECT_EQ(resp.rfind(c.starts, 0), 0u) << resp;
  }
}

}  // namespace
