// The library's Windows-1252 codec: every byte under both treatments of the five undefined bytes,
// and what becomes of UTF-8 that is broken or out of reach.
#include <gtest/gtest.h>

#include <string>

#include "zet/ZetCp1252.h"

namespace zet::test {
namespace {

using cp1252::EUndefined;

// Windows-1252's characters for 0x80..0x9F, written out from its published table (0: the five bytes
// it leaves undefined).
constexpr long kPublished[32] = {0x20AC, 0,      0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021,
                                 0x02C6, 0x2030, 0x0160, 0x2039, 0x0152, 0,      0x017D, 0,
                                 0,      0x2018, 0x2019, 0x201C, 0x201D, 0x2022, 0x2013, 0x2014,
                                 0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0,      0x017E, 0x0178};

// UTF-8 written out by hand for the checks (not the codec's own writer).
std::string Utf8(long cp) {
  std::string s;
  if (cp < 0x80) return std::string(1, static_cast<char>(cp));
  if (cp < 0x800)
    return {static_cast<char>(0xC0 | (cp >> 6)), static_cast<char>(0x80 | (cp & 0x3F))};
  s += static_cast<char>(0xE0 | (cp >> 12));
  s += static_cast<char>(0x80 | ((cp >> 6) & 0x3F));
  s += static_cast<char>(0x80 | (cp & 0x3F));
  return s;
}

TEST(Cp1252, EveryByteUnderBothPolicies) {
  for (const EUndefined policy : {EUndefined::kRefuse, EUndefined::kC1Control}) {
    std::string all, allUtf8;
    for (int b = 0; b < 256; ++b) {
      SCOPED_TRACE(testing::Message()
                   << "byte " << b << (policy == EUndefined::kRefuse ? " refuse" : " C1"));
      const auto byte = static_cast<unsigned char>(b);
      const std::string one(1, static_cast<char>(b));
      const long published = b >= 0x80 && b < 0xA0 ? kPublished[b - 0x80] : b;
      const bool undefined = b != 0 && published == 0;
      std::string utf8, back;
      if (undefined && policy == EUndefined::kRefuse) {
        EXPECT_EQ(cp1252::CodePoint(byte, policy), -1);
        EXPECT_FALSE(cp1252::ToUtf8(one, &utf8, policy));
        EXPECT_EQ(utf8, "\xEF\xBF\xBD");
        // Nor does the C1 control of that value come back as the byte.
        EXPECT_EQ(cp1252::ByteOf(b, policy), -1);
        EXPECT_FALSE(cp1252::FromUtf8(Utf8(b), &back, policy));
        EXPECT_EQ(back, "?");
        continue;
      }
      const long cp = undefined ? b : published;  // the C1 control of the same value
      EXPECT_EQ(cp1252::CodePoint(byte, policy), cp);
      EXPECT_EQ(cp1252::ByteOf(cp, policy), b);
      EXPECT_TRUE(cp1252::ToUtf8(one, &utf8, policy));
      EXPECT_EQ(utf8, Utf8(cp));
      EXPECT_TRUE(cp1252::FromUtf8(utf8, &back, policy));
      EXPECT_EQ(back, one);
      all += one;
      allUtf8 += utf8;
    }
    // The whole run of bytes at once, both ways.
    std::string utf8, back;
    EXPECT_TRUE(cp1252::ToUtf8(all, &utf8, policy));
    EXPECT_EQ(utf8, allUtf8);
    EXPECT_TRUE(cp1252::FromUtf8(utf8, &back, policy));
    EXPECT_EQ(back, all);
    EXPECT_EQ(all.size(), policy == EUndefined::kRefuse ? 251u : 256u);
  }
}

// What UTF-8 cannot give as Windows-1252 becomes '?', one for each byte of a broken sequence and
// one for each character out of reach; the rest is converted.
TEST(Cp1252, BrokenOrUnreachableUtf8) {
  const struct {
    const char* utf8;
    const char* cp1252;
  } cases[] = {
      {"caf\xC3\xA9 \xE2\x82\xAC", "caf\xE9 \x80"},  // fine
      {"\xE2\x88\x9E", "?"},                         // infinity: no byte for it
      {"\xF0\x9F\x98\x80", "?"},                     // beyond the basic plane
      {"a\xC3", "a?"},                               // cut short
      {"a\xC3"
       "b",
       "a?b"},                       // continuation missing
      {"\xA9", "?"},                 // stray continuation byte
      {"\xC0\xAF", "??"},            // overlong '/'
      {"\xE0\x80\xAF", "???"},       // overlong '/', three bytes
      {"\xC1\xA9", "??"},            // overlong 'i'
      {"\xED\xA0\x80", "???"},       // a surrogate
      {"\xF4\x90\x80\x80", "????"},  // beyond U+10FFFF
      {"\xFF\xFE", "??"},            // never in UTF-8
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.utf8);
    for (const EUndefined policy : {EUndefined::kRefuse, EUndefined::kC1Control}) {
      std::string out;
      const bool exact = cp1252::FromUtf8(c.utf8, &out, policy);
      EXPECT_EQ(out, c.cp1252);
      EXPECT_EQ(exact, out.find('?') == std::string::npos);
    }
  }
}

}  // namespace
}  // namespace zet::test
