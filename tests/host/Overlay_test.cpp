// The overlay renderer on pixels: each kind of record over a grey background, the
// colour encoding and the default colour, the three kinds of background, and hostile
// geometry that must draw nothing rather than crash.
#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <limits>
#include <vector>

#include "zet/ZetHost.h"

namespace {

using zet::host::CAnnotationRecorder;
using zet::host::RenderOverlay;

constexpr int kRed = 0x0000FF, kGreen = 0x00FF00, kBlue = 0xFF0000;  // 0x00BBGGRR
constexpr int kGrey = 40;

struct SRgb {
  int r, g, b;
  bool operator==(const SRgb&) const = default;
};
constexpr SRgb kBg{kGrey, kGrey, kGrey}, kR{255, 0, 0}, kG{0, 255, 0};
// A pixel that a stroke covers only in part (diagonals, curves): tinted, not exact.
constexpr SRgb kTint{-1, -1, -1};

SRgb At(const CZetImage& img, int x, int y) {
  const uint8_t* p = img.Row(y) + 4 * x;
  return {p[0], p[1], p[2]};
}

CZetImage* Grey(CZetImage& img, int w = 100, int h = 100) {
  img.Create(w, h, kZetImageMono8);
  for (int y = 0; y < h; ++y) std::fill_n(img.Row(y), w, kGrey);
  return &img;
}

CZetPointVector Pts(std::initializer_list<CZetPoint> v) {
  CZetPointVector out;
  for (const CZetPoint& p : v) out.PushBack(p);
  return out;
}

struct SProbe {
  int x, y;
  SRgb rgb;
};

TEST(Overlay, EachRecordOnPixels) {
  const struct {
    const char* what;
    std::function<void(CAnnotationRecorder&)> draw;
    std::vector<SProbe> probes;
  } cases[] = {
      {"filled red circle", [](auto& a) { a.AddCircle("", CZetCircle(50, 50, 10), kRed, true, 1, 1); },
       {{50, 50, kR}, {45, 45, kR}, {65, 50, kBg}, {50, 62, kBg}}},
      {"colour 0 is the default colour",
       [](auto& a) { a.AddCircle(nullptr, CZetCircle(50, 50, 10), 0, true, 1, 1); },
       {{50, 50, kG}}},
      {"circle outline", [](auto& a) { a.AddCircle("", CZetCircle(50, 50, 10), kBlue, false, 1, 1); },
       {{60, 50, kTint}, {50, 40, kTint}, {50, 50, kBg}}},
      {"the top byte is ignored",
       [](auto& a) { a.AddCircle("", CZetCircle(50, 50, 10), 0x7F0000FF, true, 1, 1); },
       {{50, 50, kR}}},
      {"segment", [](auto& a) { a.AddSegment("", {10, 80}, {90, 80}, kRed, 1, 1); },
       {{11, 80, kR}, {50, 80, kR}, {89, 80, kR}, {50, 83, kBg}, {95, 80, kBg}}},
      {"infinite line a = 0, d = 30 spans the image",
       [](auto& a) { a.AddLine("", CZetLine(0, 30), kRed, 1, 1); },
       {{0, 30, kR}, {99, 30, kR}, {50, 33, kBg}}},
      {"infinite line a = pi/2, d = -20 is the column x = 20",
       [](auto& a) { a.AddLine("", CZetLine(M_PI / 2, -20), kRed, 1, 1); },
       {{20, 0, kR}, {20, 99, kR}, {23, 50, kBg}}},
      {"filled rectangle", [](auto& a) { a.AddRect("", CZetRect(50, 50, 40, 10, 0), kRed, true, 1, 1); },
       {{65, 50, kR}, {50, 60, kBg}}},
      {"rectangle turned by pi/2",
       [](auto& a) { a.AddRect("", CZetRect(50, 50, 40, 10, M_PI / 2), kRed, true, 1, 1); },
       {{50, 65, kR}, {65, 50, kBg}}},
      {"circles of one radius",
       [](auto& a) { a.AddCircles("", Pts({{20, 20}, {80, 80}}), 5, kRed, true, 1, 1); },
       {{20, 20, kR}, {80, 80, kR}, {50, 50, kBg}}},
      {"pixels round to the nearest pixel",
       [](auto& a) { a.AddPixels("", Pts({{10.4, 20.6}}), kRed, 1, 1); },
       {{10, 21, kR}, {11, 21, kBg}, {10, 20, kBg}}},
      {"points are + marks", [](auto& a) { a.AddPoints("", Pts({{30, 30}}), kRed, 1, 1); },
       {{30, 30, kR}, {33, 30, kR}, {30, 27, kR}, {32, 32, kBg}}},
      {"a point is an x cross", [](auto& a) { a.AddPoint("", {30, 30}, kRed, 1, 1); },
       {{32, 32, kTint}, {28, 32, kTint}, {33, 30, kBg}, {30, 34, kBg}}},
      {"polyline", [](auto& a) { a.AddPolyline("", Pts({{10, 10}, {90, 10}, {90, 90}}), kRed, 1, 1); },
       {{50, 10, kR}, {90, 50, kR}, {50, 50, kBg}}},
      {"segment far outside is clipped",
       [](auto& a) { a.AddSegment("", {-1e9, 70}, {1e9, 70}, kRed, 1, 1); },
       {{0, 70, kR}, {99, 70, kR}}},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.what);
    CAnnotationRecorder rec;
    c.draw(rec);
    CZetImage bg, out;
    ASSERT_EQ(RenderOverlay(*Grey(bg), rec.records, kGreen, out), "");
    ASSERT_EQ(out.Attr(), kZetImageColor32);
    for (const SProbe& p : c.probes) {
      const SRgb got = At(out, p.x, p.y);
      if (p.rgb == kTint)
        EXPECT_TRUE(!(got == kBg) && (got.r > got.g || got.b > got.g))
            << "at (" << p.x << ", " << p.y << ")";
      else
        EXPECT_EQ(got, p.rgb) << "at (" << p.x << ", " << p.y << "): " << got.r << ' ' << got.g
                            << ' ' << got.b;
    }
  }
}

// Counts the pixels of a region that differ from the background.
int Changed(const CZetImage& img, int x0, int y0, int x1, int y1) {
  int n = 0;
  for (int y = y0; y < y1; ++y)
    for (int x = x0; x < x1; ++x) n += !(At(img, x, y) == kBg);
  return n;
}

TEST(Overlay, TextLabelsAndBackgrounds) {
  CZetImage bg, plain, big, boxed, labelled;
  CAnnotationRecorder a;
  a.AddText({10, 10}, "Hello", "Sans 10", kRed, false, 1, 1);
  ASSERT_EQ(RenderOverlay(*Grey(bg, 200, 100), a.records, kGreen, plain), "");
  const int small = Changed(plain, 0, 0, 200, 100);
  EXPECT_GT(small, 20);
  EXPECT_EQ(Changed(plain, 0, 50, 200, 100), 0);  // the text hangs down from its point

  a.records[0].fields[2].second = "Sans 30";  // the font string sets the size
  ASSERT_EQ(RenderOverlay(bg, a.records, kGreen, big), "");
  EXPECT_GT(Changed(big, 0, 0, 200, 100), 3 * small);

  a.records[0].fields[3].second = kBlue;  // dark text: a white box behind it
  a.records[0].fields[4].second = true;
  a.records[0].fields[2].second = "";
  ASSERT_EQ(RenderOverlay(bg, a.records, kGreen, boxed), "");
  EXPECT_EQ(At(boxed, 9, 9), (SRgb{255, 255, 255}));

  CAnnotationRecorder l;
  l.AddPoint("a label", {20, 50}, kRed, 1, 1);
  ASSERT_EQ(RenderOverlay(bg, l.records, kGreen, labelled), "");
  EXPECT_GT(Changed(labelled, 30, 40, 200, 70), 20);  // to the right of the cross
}

TEST(Overlay, Backgrounds) {
  CZetImage grey8, grey16, colour, out;
  grey8.Create(4, 2, kZetImageMono8);
  grey8.Row(1)[3] = 100;
  grey16.Create(4, 2, kZetImageMono16);
  grey16.Row(0)[0] = 0xFF;  // 4095, the largest value: white
  grey16.Row(0)[1] = 0x0F;
  grey16.Row(1)[2] = 0xFF;  // 2047: half way, 127
  grey16.Row(1)[3] = 0x07;
  colour.Create(4, 2, kZetImageColor32);
  colour.Row(1)[4] = 10;
  colour.Row(1)[5] = 20;
  colour.Row(1)[6] = 30;
  colour.Row(1)[7] = 99;  // ignored
  const struct {
    const CZetImage* img;
    int x, y;
    SRgb rgb;
  } cases[] = {{&grey8, 3, 1, {100, 100, 100}}, {&grey8, 0, 0, {0, 0, 0}},
               {&grey16, 0, 0, {255, 255, 255}}, {&grey16, 1, 1, {127, 127, 127}},
               {&colour, 1, 1, {10, 20, 30}}};
  for (const auto& c : cases) {
    SCOPED_TRACE(c.img->Attr());
    ASSERT_EQ(RenderOverlay(*c.img, {}, kGreen, out), "");
    EXPECT_EQ(At(out, c.x, c.y), c.rgb);
    EXPECT_EQ(out.Row(c.y)[4 * c.x + 3], 0);
  }
  CZetImage none;
  EXPECT_NE(RenderOverlay(none, {}, kGreen, out), "");
}

// Non-finite and enormous geometry draws nothing and never upsets the rasteriser.
TEST(Overlay, HostileGeometryDrawsNothing) {
  const double kNaN = std::numeric_limits<double>::quiet_NaN();
  const double kInf = std::numeric_limits<double>::infinity();
  CAnnotationRecorder a;
  a.AddCircle("x", CZetCircle(kNaN, 5, 3), kRed, true, 1, 1);
  a.AddCircle("x", CZetCircle(50, 50, -5), kRed, true, 1, 1);
  a.AddCircle("x", CZetCircle(50, 50, 1e300), kRed, false, 1, 1);
  a.AddCircles("x", Pts({{50, 50}}), kNaN, kRed, true, 1, 1);
  a.AddSegment("x", {kInf, 0}, {50, 50}, kRed, 1, 1);
  a.AddLine("x", CZetLine(kNaN, 3), kRed, 1, 1);
  a.AddLine("x", CZetLine(1, 1e300), kRed, 1, 1);
  a.AddRect("x", CZetRect(50, 50, 1e300, 4, 0), kRed, true, 1, 1);
  a.AddRect("x", CZetRect(50, 50, 10, 4, kInf), kRed, true, 1, 1);
  a.AddPoints("x", Pts({{kNaN, 1}, {-1e200, 1e200}}), kRed, 1, 1);
  a.AddPixels("x", Pts({{kInf, 1}, {1e30, 5}}), kRed, 1, 1);
  a.AddPolyline("x", Pts({{kNaN, kNaN}, {1e300, -1e300}}), kRed, 1, 1);
  a.AddText({kNaN, 0}, "text", "Sans 12", kRed, true, 1, 1);
  a.AddText({50, 50}, "", "no such font 12", kRed, true, 1, 1);
  CZetImage bg, out;
  ASSERT_EQ(RenderOverlay(*Grey(bg), a.records, kGreen, out), "");
  EXPECT_EQ(Changed(out, 0, 0, 100, 100), 0);

  CAnnotationRecorder huge;  // the size is cut to 200 points
  huge.AddText({0, 0}, "W", "Sans 1000000", kRed, false, 1, 1);
  ASSERT_EQ(RenderOverlay(bg, huge.records, kGreen, out), "");
  EXPECT_GT(Changed(out, 0, 0, 100, 100), 1000);
}

}  // namespace
