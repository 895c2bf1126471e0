// CStdStr: the growing formatter and the substring helpers.
#include <gtest/gtest.h>

#include "zet/ZetSetting.h"
#include "zet/ZetGeometry.h"
#include "zet/ZetTypes.h"

namespace {

TEST(StdStr, FormatGrowsPastEveryBufferSize) {
  for (int n : {10, 2047, 2048, 2049, 6144, 20000, 43007}) {
    SCOPED_TRACE(n);
    CStdStr s;
    s.Format("%*d", n, 7);
    ASSERT_EQ(static_cast<int>(s.size()), n);
    EXPECT_EQ(s.back(), '7');
  }
  CStdStr cut;
  cut.Format("%50000d", 7);  // past the last buffer: what fits is kept
  EXPECT_EQ(static_cast<int>(cut.size()), CStdStr::kFormatLimit);
}

TEST(StdStr, Substrings) {
  const CStdStr s = "abcdef";
  EXPECT_EQ(s.Left(2), "ab");
  EXPECT_EQ(s.Left(99), "abcdef");
  EXPECT_EQ(s.Right(2), "ef");
  EXPECT_EQ(s.Mid(2, 3), "cde");
  EXPECT_EQ(s.Mid(9, 3), "");
  EXPECT_EQ(s.Mid(4), "ef");
  CStdStr r = "aaa";
  EXPECT_EQ(r.Replace("a", "aa"), 3);
  EXPECT_EQ(r, "aaaaaa");
}

TEST(AngleTr, FollowsTheUnitSetting) {
  CZetSetting::Inst().SetAngleUnit(EZetAngleUnit::kDegrees);
  EXPECT_EQ(CZetAngleTr::ToRad(180), CZetGeometry::Pi);
  EXPECT_EQ(CZetAngleTr::ToPrefs(CZetGeometry::Pi, true), 180.0);
  CZetSetting::Inst().SetAngleUnit(EZetAngleUnit::kRadians);
  EXPECT_EQ(CZetAngleTr::ToRad(1.5), 1.5);
  EXPECT_EQ(CZetAngleTr::ToPrefs(1.5, true), 1.5);
}

}  // namespace
