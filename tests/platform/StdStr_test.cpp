// CStdStr: the growing formatter and the substring helpers.
#include <gtest/gtest.h>

#include <string>

#include "zet/ZetTypes.h"

namespace {

TEST(StdStr, FormatGrowsPastEveryBufferSize) {
  for (int n : {10, 2047, 2048, 2049, 6144, 20000, 43007, 50000}) {
    SCOPED_TRACE(n);
    CStdStr s;
    s.Format("%*d", n, 7);  // past the last buffer, what fits is kept
    EXPECT_EQ(s, (std::string(n - 1, ' ') + '7').substr(0, CStdStr::kFormatLimit));
  }
}

TEST(StdStr, Substrings) {
  const CStdStr s = "abcdef";
  EXPECT_EQ(s.Left(2), "ab");
  EXPECT_EQ(s.Left(99), "abcdef");
  EXPECT_EQ(s.Right(2), "ef");
  EXPECT_EQ(s.Mid(2, 3), "cde");
  EXPECT_EQ(s.Mid(9, 3), "");
  EXPECT_EQ(s.Mid(4), "ef");
}

}  // namespace
