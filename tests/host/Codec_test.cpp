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

// Arrays given as inputs are read straight into their slots when the instruction
// comes first on the line, and through a JSON value when it comes after them. Both
// must answer alike, errors word for word: every case is run both ways.
TEST(JsonSession, ArrayInputsReadDirectlyAnswerAsTheTreeDoes) {
  CZetPluginModule module(ZET_TEST_PLUGIN);
  CZetJsonSession session(module);
  const char* numbers = "\"_Zet_Array_CNArrConcatArr_\"";
  const char* bools = "\"_Zet_Array_CBArrConcatArr_\"";
  const char* texts = "\"_Zet_Array_CSArrConcatArr_\"";
  const char* points = "\"_Zet_Array_CArrConcatArr_\"";
  const char* lines = "\"_Zet_Array_CLArrConcatArr_\"";
  const struct {
    const char* instr;
    const char* inputs;
    const char* more;  // further members of the request
    bool ok;
  } cases[] = {
      {numbers, R"([[3, -1, 2.5, 18446744073709551615, -9223372036854775808, 1e300], ["NaN", "Infinity", "-Infinity"]])", "", true},
      {numbers, "[[], []]", "", true},
      {numbers, R"([[1, "x"]])", "", false},
      {numbers, "[[1, null]]", "", false},
      {numbers, "[[1, [2]]]", "", false},
      {numbers, R"([[1, {"x": 1}]])", "", false},
      {numbers, "[[true]]", "", false},
      {numbers, "[[1], 5]", "", false},
      {numbers, R"([[1, "x"], [true]])", "", false},
      {numbers, R"(["a", [1, "x"]])", "", false},
      {numbers, R"([[1, "x"]])", R"(, "params": {"nope": 1})", false},
      {numbers, "[[1], [2], [3]]", "", false},
      {numbers, "[[1], [2]]", R"(, "inputs": [[5, 4], [3]])", true},
      {numbers, "[[1], [2]]", R"(, "instr": "_Zet_Array_CSArrConcatArr_")", false},
      {numbers, "[[1], [2]]", R"(, "instr": "_Zet_Array_CNArrSort_")", false},
      {"\"nope\"", "[[1], [2]]", "", false},
      {"2", "[[1], [2]]", "", false},
      {bools, "[[true, false], [true]]", "", true},
      {bools, "[[1]]", "", false},
      {texts, R"([["caf\u00e9", "Gr\u00f6\u00dfe \u20ac", "", "a\"b", "\u0081"], ["x"]])", "", true},
      {texts, R"([["\u221e"]])", "", false},
      {texts, "[[1]]", "", false},
      {texts, R"([[["a"]]])", "", false},
      {points, R"([[{"x": 1, "y": 2}, {"y": 4, "x": 3, "z": [1, {"q": 2}]}], [{"x": 1, "x": 5, "y": "NaN"}]])", "", true},
      {points, R"([[{"x": [1], "x": 2, "y": 1}, {"x": 1, "y": {"v": 1}, "y": 2}]])", "", true},
      {points, R"([[{"x": 1}]])", "", false},
      {points, R"([[{"x": "a", "y": 1}]])", "", false},
      {points, R"([[{"x": 2, "y": 1, "x": [1]}]])", "", false},
      {points, "[[[1, 2]]]", "", false},
      {points, R"([[{"x": 1, "y": 2}, 3]])", "", false},
      {lines, R"([[{"a": 0.5, "d": 10}, {"d": -1, "a": "-Infinity"}], []])", "", true},
      {lines, R"([[{"x": 1, "y": 2}]])", "", false},
  };
  for (const auto& c : cases) {
    const std::string direct =
        std::string("{\"instr\": ") + c.instr + ", \"inputs\": " + c.inputs + c.more + "}";
    const std::string tree =
        std::string("{\"inputs\": ") + c.inputs + ", \"instr\": " + c.instr + c.more + "}";
    SCOPED_TRACE(direct);
    const std::string answer = session.Handle(direct);
    EXPECT_EQ(answer, session.Handle(tree));
    EXPECT_EQ(answer.rfind("{\"status\":0,", 0) == 0, c.ok) << answer;
  }
}

}  // namespace
