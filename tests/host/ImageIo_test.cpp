// Image files of the host: PGM and PNG round trips, the conversions of other PNG
// kinds, the refusals, and the digest zet prints.
#include "ImageIo.h"

#include <gtest/gtest.h>

#include <cstring>
#include <filesystem>
#include <fstream>
#include <string>

namespace zet::host {
namespace {

namespace fs = std::filesystem;

class ImageIo : public ::testing::Test {
 protected:
  void SetUp() override {
    m_dir = fs::temp_directory_path() /
            ("zet_imageio_" + std::to_string(::testing::UnitTest::GetInstance()->random_seed()) +
             "_" + ::testing::UnitTest::GetInstance()->current_test_info()->name());
    fs::create_directories(m_dir);
  }
  void TearDown() override { fs::remove_all(m_dir); }

  std::string Path(const std::string& name) const { return (m_dir / name).string(); }
  std::string Write(const std::string& name, const std::string& bytes) const {
    std::ofstream(Path(name), std::ios::binary) << bytes;
    return Path(name);
  }
  static std::string ReadAll(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(in), {});
  }

  fs::path m_dir;
};

// An image of odd width (so rows are padded) filled with a byte pattern.
void Fill(CZetImage& img, int w, int h, int attr, bool fourthZero = false) {
  ASSERT_EQ(img.Create(w, h, attr), kZetImageOk);
  const int bpp = img.BytesPerPixel();
  for (int y = 0; y < h; ++y)
    for (int i = 0; i < w * bpp; ++i)
      img.Row(y)[i] = (fourthZero && i % 4 == 3) ? 0 : static_cast<uint8_t>(y * 37 + i * 11 + 5);
}

void ExpectSamePixels(const CZetImage& a, const CZetImage& b) {
  ASSERT_EQ(a.Attr(), b.Attr());
  ASSERT_EQ(a.Width(), b.Width());
  ASSERT_EQ(a.Height(), b.Height());
  for (int y = 0; y < a.Height(); ++y)
    EXPECT_EQ(std::memcmp(a.Row(y), b.Row(y), static_cast<size_t>(a.Width()) * a.BytesPerPixel()),
              0)
        << "row " << y;
}

TEST_F(ImageIo, RoundTrips) {
  const struct {
    const char* file;
    int attr;
    bool fourthZero;
  } cases[] = {{"g8.pgm", kZetImageMono8, false},  {"g16.PGM", kZetImageMono16, false},
               {"g8.png", kZetImageMono8, false},  {"g16.png", kZetImageMono16, false},
               {"rgb.png", kZetImageColor32, true}, {"rgba.png", kZetImageColor32, false}};
  for (const auto& c : cases) {
    SCOPED_TRACE(c.file);
    CZetImage img, back;
    Fill(img, 7, 5, c.attr, c.fourthZero);
    ASSERT_EQ(SaveImageFile(Path(c.file), img), "");
    ASSERT_EQ(LoadImageFile(Path(c.file), back), "");
    ExpectSamePixels(img, back);
  }
}

TEST_F(ImageIo, SixteenBitPgmIsBigEndianInTheFile) {
  CZetImage img;
  ASSERT_EQ(img.Create(1, 1, kZetImageMono16), kZetImageOk);
  const uint16_t v = 0x1234;
  std::memcpy(img.Row(0), &v, 2);
  ASSERT_EQ(SaveImageFile(Path("a.pgm"), img), "");
  EXPECT_EQ(ReadAll(Path("a.pgm")), std::string("P5\n1 1\n65535\n\x12\x34", 15));
}

TEST_F(ImageIo, PgmHeaderWithCommentsAndSmallMaxval) {
  CZetImage img;
  ASSERT_EQ(LoadImageFile(Write("c.pgm", "P5 # raw\n# size\n3\t1 100\n\x01\x02\x64"), img), "");
  EXPECT_EQ(img.Attr(), kZetImageMono8);
  EXPECT_EQ(std::string(reinterpret_cast<const char*>(img.Row(0)), 3), "\x01\x02\x64");
  ASSERT_EQ(LoadImageFile(Write("d.pgm", std::string("P5 2 1 300 \x01\x02\xff\x00", 15)), img), "");
  EXPECT_EQ(img.Attr(), kZetImageMono16);
  uint16_t px[2];
  std::memcpy(px, img.Row(0), 4);
  EXPECT_EQ(px[0], 0x0102);
  EXPECT_EQ(px[1], 0xff00);
}

// Other PNG kinds are converted: palette to colour (with alpha from tRNS), grey with
// alpha to grey, low bit depths expanded, 16-bit colour scaled to 8 bits.
TEST_F(ImageIo, PngConversions) {
  const std::string palette(
      "\x89\x50\x4e\x47\x0d\x0a\x1a\x0a\x00\x00\x00\x0d\x49\x48\x44\x52\x00\x00\x00\x03\x00\x00"
      "\x00\x01\x08\x03\x00\x00\x00\x2c\x3e\xe4\x86\x00\x00\x00\x09\x50\x4c\x54\x45\xff\x00\x00"
      "\x00\xff\x00\x00\x00\xff\x2d\x4a\xcd\x8a\x00\x00\x00\x0c\x49\x44\x41\x54\x78\x9c\x63\x60"
      "\x60\x64\x02\x00\x00\x08\x00\x04\x36\xe0\xb0\xa6\x00\x00\x00\x00\x49\x45\x4e\x44\xae\x42"
      "\x60\x82", 90);
  const std::string paletteAlpha(
      "\x89\x50\x4e\x47\x0d\x0a\x1a\x0a\x00\x00\x00\x0d\x49\x48\x44\x52\x00\x00\x00\x03\x00\x00"
      "\x00\x01\x08\x03\x00\x00\x00\x2c\x3e\xe4\x86\x00\x00\x00\x09\x50\x4c\x54\x45\xff\x00\x00"
      "\x00\xff\x00\x00\x00\xff\x2d\x4a\xcd\x8a\x00\x00\x00\x01\x74\x52\x4e\x53\x80\xad\x5e\x5b"
      "\x46\x00\x00\x00\x0c\x49\x44\x41\x54\x78\x9c\x63\x60\x60\x64\x02\x00\x00\x08\x00\x04\x36"
      "\xe0\xb0\xa6\x00\x00\x00\x00\x49\x45\x4e\x44\xae\x42\x60\x82", 103);
  const std::string greyAlpha(
      "\x89\x50\x4e\x47\x0d\x0a\x1a\x0a\x00\x00\x00\x0d\x49\x48\x44\x52\x00\x00\x00\x02\x00\x00"
      "\x00\x01\x08\x04\x00\x00\x00\x5e\x2b\xb7\x01\x00\x00\x00\x0d\x49\x44\x41\x54\x78\x9c\x63"
      "\xe0\x3a\x21\xc2\x00\x00\x02\xad\x00\xe7\xa5\x87\x04\x83\x00\x00\x00\x00\x49\x45\x4e\x44"
      "\xae\x42\x60\x82", 70);
  const std::string grey1(
      "\x89\x50\x4e\x47\x0d\x0a\x1a\x0a\x00\x00\x00\x0d\x49\x48\x44\x52\x00\x00\x00\x03\x00\x00"
      "\x00\x01\x01\x00\x00\x00\x00\x33\x9b\x29\x19\x00\x00\x00\x0a\x49\x44\x41\x54\x78\x9c\x63"
      "\x58\x00\x00\x00\xa2\x00\xa1\xdc\x8d\xb1\xcc\x00\x00\x00\x00\x49\x45\x4e\x44\xae\x42\x60"
      "\x82", 67);
  const std::string rgb16(
      "\x89\x50\x4e\x47\x0d\x0a\x1a\x0a\x00\x00\x00\x0d\x49\x48\x44\x52\x00\x00\x00\x01\x00\x00"
      "\x00\x01\x10\x02\x00\x00\x00\xc0\xe7\x8f\x9d\x00\x00\x00\x0f\x49\x44\x41\x54\x78\x9c\x63"
      "\x10\x32\x59\x7d\xf6\xff\x7f\x00\x09\x87\x03\xbd\xe5\x0c\x77\x05\x00\x00\x00\x00\x49\x45"
      "\x4e\x44\xae\x42\x60\x82", 72);
  const struct {
    const char* name;
    const std::string& bytes;
    int attr;
    std::string pixels;
  } cases[] = {
      {"palette", palette, kZetImageColor32, std::string("\xff\0\0\0\0\xff\0\0\0\0\xff\0", 12)},
      {"paletteAlpha", paletteAlpha, kZetImageColor32,
       std::string("\xff\0\0\x80\0\xff\0\xff\0\0\xff\xff", 12)},
      {"greyAlpha", greyAlpha, kZetImageMono8, "\x0a\x14"},
      {"grey1", grey1, kZetImageMono8, std::string("\xff\0\xff", 3)},
      {"rgb16", rgb16, kZetImageColor32, std::string("\x12\xab\xff\0", 4)},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    CZetImage img;
    ASSERT_EQ(LoadImageFile(Write(std::string(c.name) + ".png", c.bytes), img), "");
    EXPECT_EQ(img.Attr(), c.attr);
    EXPECT_EQ(img.Height(), 1);
    EXPECT_EQ(std::string(reinterpret_cast<const char*>(img.Row(0)),
                          static_cast<size_t>(img.Width()) * img.BytesPerPixel()),
              c.pixels);
  }
}

TEST_F(ImageIo, RefusedFilesNameTheFileAndLeaveNoImage) {
  const struct {
    const char* name;
    std::string bytes;
    const char* says;
  } cases[] = {
      {"text.pgm", "hello", "neither a PGM (P5) nor a PNG"},
      {"ascii.pgm", "P2 1 1 255 7", "P2"},
      {"short.pgm", "P5 4 4 255\n\x01\x02", "truncated"},
      {"maxval.pgm", "P5 1 1 0\n\x01", "maxval"},
      {"maxval2.pgm", "P5 1 1 70000\n\x01\x01", "maxval"},
      {"empty.pgm", "P5 0 3 255\n", "no pixels"},
      {"header.pgm", "P5 1 x 255\n", "header"},
      {"broken.png", std::string("\x89PNG\r\n\x1a\n\0\0\0\x0dIHDRgarbage", 23), "PNG"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    CZetImage img;
    Fill(img, 2, 2, kZetImageMono8);
    const std::string err = LoadImageFile(Write(c.name, c.bytes), img);
    EXPECT_NE(err.find(c.says), std::string::npos) << err;
    EXPECT_NE(err.find(c.name), std::string::npos) << err;
    EXPECT_FALSE(img.IsCreated());
  }
  CZetImage img;
  EXPECT_NE(LoadImageFile(Path("missing.png"), img).find("missing.png"), std::string::npos);
}

TEST_F(ImageIo, RefusedWrites) {
  CZetImage colour, grey, none;
  Fill(colour, 3, 2, kZetImageColor32);
  Fill(grey, 3, 2, kZetImageMono8);
  EXPECT_NE(SaveImageFile(Path("c.pgm"), colour).find("grey"), std::string::npos);
  EXPECT_NE(SaveImageFile(Path("g.bmp"), grey).find("g.bmp"), std::string::npos);
  EXPECT_NE(SaveImageFile(Path("n.png"), none), "");
  EXPECT_NE(SaveImageFile(Path("no/such/dir.png"), grey), "");
  EXPECT_FALSE(fs::exists(Path("g.bmp")));
}

// The digest covers W x bytes-per-pixel per row, never the row padding.
TEST(ImageSha256, RowsWithoutPadding) {
  CZetImage img;
  ASSERT_EQ(img.Create(3, 2, kZetImageMono8), kZetImageOk);
  ASSERT_GT(img.Pitch(), 3);
  for (int i = 0; i < 6; ++i) img.Row(i / 3)[i % 3] = static_cast<uint8_t>(i);
  img.Row(0)[3] = 0xEE;  // padding
  EXPECT_EQ(ImageSha256(img), "17e88db187afd62c16e5debf3e6527cd006bc012bc90b51a810cd80c2d511f43");

  CZetImage wide;  // 16-bit pixels as held in memory, low byte first
  ASSERT_EQ(wide.Create(2, 1, kZetImageMono16), kZetImageOk);
  const uint16_t px[2] = {0x1234, 0x00ff};
  std::memcpy(wide.Row(0), px, 4);
  EXPECT_EQ(ImageSha256(wide), "58779ac4f34cc525cfe178e4b21fae20635b36eb507b2360cb1daf29b66921c4");
}

}  // namespace
}  // namespace zet::host
