// Image files of the host: PGM and PNG round trips, the conversions of other PNG
// kinds, the refusals, and the digest zet prints.
#include "zet/ZetHost.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

namespace zet::host {
namespace {

namespace fs = std::filesystem;

// Files go to a folder of the test's own, so that concurrent runs never meet.
class ImageIo : public ::testing::Test {
 protected:
  void SetUp() override { fs::create_directories(m_dir); }
  void TearDown() override { fs::remove_all(m_dir); }
  std::string Path(const std::string& name) const { return (m_dir / name).string(); }
  std::string Write(const std::string& name, const std::string& bytes) const {
    std::ofstream(Path(name), std::ios::binary) << bytes;
    return Path(name);
  }

  const fs::path m_dir =
      fs::temp_directory_path() / ("zet_imageio_" + std::to_string(getpid()) + "_" +
                                   ::testing::UnitTest::GetInstance()->current_test_info()->name());
};

// The pixel bytes, rows concatenated without padding.
std::string Bytes(const CZetImage& img) {
  std::string s;
  for (int y = 0; y < img.Height(); ++y)
    s.append(reinterpret_cast<const char*>(img.Row(y)),
             static_cast<size_t>(img.Width()) * img.BytesPerPixel());
  return s;
}

// An image of odd width (so rows are padded) filled with a byte pattern.
void Fill(CZetImage& img, int w, int h, int attr, bool fourthZero = false) {
  ASSERT_EQ(img.Create(w, h, attr), kZetImageOk);
  for (int y = 0; y < h; ++y)
    for (int i = 0; i < w * img.BytesPerPixel(); ++i)
      img.Row(y)[i] = (fourthZero && i % 4 == 3) ? 0 : static_cast<uint8_t>(y * 37 + i * 11 + 5);
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
    EXPECT_EQ(back.Attr(), img.Attr());
    EXPECT_EQ(back.Width(), img.Width());
    EXPECT_EQ(Bytes(back), Bytes(img));
  }
  // 16-bit PGM samples are big-endian: the first pixel, bytes 05 10 in memory, as 10 05.
  std::ifstream in(Path("g16.PGM"), std::ios::binary);
  EXPECT_EQ(std::string(std::istreambuf_iterator<char>(in), {}).substr(0, 15),
            std::string("P5\n7 5\n65535\n\x10\x05", 15));
}

std::string Be32(uint32_t v) {
  return {static_cast<char>(v >> 24), static_cast<char>(v >> 16), static_cast<char>(v >> 8),
          static_cast<char>(v)};
}

std::string Chunk(const std::string& type, const std::string& data) {
  uint32_t crc = 0xffffffff;
  for (unsigned char b : type + data)
    for (int k = 0; k < 8; ++k, b >>= 1) crc = (crc >> 1) ^ (((crc ^ b) & 1) ? 0xedb88320 : 0);
  return Be32(static_cast<uint32_t>(data.size())) + type + data + Be32(~crc);
}

// A one-row PNG: `row` follows filter byte 0 in one stored zlib block (under 255 bytes);
// `extra` chunks go between IHDR and IDAT.
std::string Png(int w, char depth, char kind, const std::string& row,
                const std::string& extra = "") {
  const std::string raw = '\0' + row;
  uint32_t a = 1, b = 0;  // Adler-32
  for (unsigned char ch : raw) b = (b + (a = (a + ch) % 65521)) % 65521;
  const char n = static_cast<char>(raw.size());
  const std::string zlib = std::string("\x78\x01\x01", 3) + n + '\0' + static_cast<char>(~n) +
                           '\xff' + raw + Be32(b << 16 | a);
  return "\x89PNG\r\n\x1a\n" +
         Chunk("IHDR", Be32(w) + Be32(1) + depth + kind + std::string(3, '\0')) + extra +
         Chunk("IDAT", zlib) + Chunk("IEND", "");
}

// A 16-bit grey PNG that declares 30000 x 30000 pixels and holds one empty block.
std::string HugePng() {
  return "\x89PNG\r\n\x1a\n" +
         Chunk("IHDR", Be32(30000) + Be32(30000) + '\x10' + std::string(4, '\0')) +
         Chunk("IDAT", std::string("\x78\x01\x03\x00\x00\x00\x00\x01", 8)) + Chunk("IEND", "");
}

// PGM headers may hold comments and any whitespace; a maxval up to 255 gives 8-bit
// pixels, above it 16-bit ones. Other PNG kinds are converted: palette to colour (with
// alpha from tRNS), grey with alpha to grey, low bit depths expanded, 16-bit colour
// scaled to 8 bits.
TEST_F(ImageIo, LoadsAndConverts) {
  const std::string plte = Chunk("PLTE", std::string("\xff\0\0\0\xff\0\0\0\xff", 9));
  const std::string rgb("\0\1\2", 3);
  const struct {
    const char* name;
    std::string bytes, pixels;
    int attr;
  } cases[] = {
      {"comments.pgm", "P5 # raw\n# size\n3\t1 100\n\x01\x02\x64", "\x01\x02\x64", kZetImageMono8},
      {"maxval300.pgm", std::string("P5 2 1 300 \x01\x02\xff\x00", 15),
       std::string("\x02\x01\x00\xff", 4), kZetImageMono16},  // low byte first in memory
      {"palette.png", Png(3, 8, 3, rgb, plte), std::string("\xff\0\0\0\0\xff\0\0\0\0\xff\0", 12),
       kZetImageColor32},
      {"paletteAlpha.png", Png(3, 8, 3, rgb, plte + Chunk("tRNS", "\x80")),
       std::string("\xff\0\0\x80\0\xff\0\xff\0\0\xff\xff", 12), kZetImageColor32},
      {"greyAlpha.png", Png(2, 8, 4, std::string("\x0a\xc8\x14\0", 4)), "\x0a\x14", kZetImageMono8},
      {"grey1.png", Png(3, 1, 0, "\xa0"), std::string("\xff\0\xff", 3), kZetImageMono8},
      {"rgb16.png", Png(1, 16, 2, "\x12\x34\xab\xcd\xff\xff"), std::string("\x12\xab\xff\0", 4),
       kZetImageColor32},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    CZetImage img;
    ASSERT_EQ(LoadImageFile(Write(c.name, c.bytes), img), "");
    EXPECT_EQ(img.Attr(), c.attr);
    EXPECT_EQ(Bytes(img), c.pixels);
  }
}

// Refused files are named in the error and leave no image; so are refused writes.
TEST_F(ImageIo, Refusals) {
  const struct {
    const char* name;
    std::string bytes;
    const char* says;
  } cases[] = {
      {"text.pgm", "hello", "neither a PGM (P5) nor a PNG"},
      {"ascii.pgm", "P2 1 1 255 7", "P2"},
      {"short.pgm", "P5 4 4 255\n\x01\x02", "truncated"},
      // 1.8 GB of 16-bit samples declared by 23 bytes: refused before any pixel memory is
      // taken (every sample must be in the file).
      {"huge.pgm", "P5 30000 30000 65535\n\x01\x02", "truncated"},
      {"maxval.pgm", "P5 1 1 0\n\x01", "maxval"},
      {"maxval2.pgm", "P5 1 1 70000\n\x01\x01", "maxval"},
      {"empty.pgm", "P5 0 3 255\n", "no pixels"},
      {"header.pgm", "P5 1 x 255\n", "header"},
      {"broken.png", std::string("\x89PNG\r\n\x1a\n\0\0\0\x0dIHDRgarbage", 23), "PNG"},
      {"cut.png", Png(3, 8, 0, "abc").substr(0, 40), "truncated"},
      // 1.8 GB of 16-bit pixels declared by 70 bytes: refused before any pixel memory
      // is taken (no deflate stream of 70 bytes inflates to 1.8 GB of rows).
      {"huge.png", HugePng(), "30000 x 30000 pixels cannot be held in"},
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
  CZetImage none, colour, grey;
  EXPECT_NE(LoadImageFile(Path("missing.png"), none).find("missing.png"), std::string::npos);
  EXPECT_NE(LoadImageFile("/dev/zero", none).find("not a regular file"), std::string::npos);
  Fill(colour, 3, 2, kZetImageColor32);
  Fill(grey, 3, 2, kZetImageMono8);
  EXPECT_NE(SaveImageFile(Path("c.pgm"), colour).find("grey"), std::string::npos);
  EXPECT_NE(SaveImageFile(Path("g.bmp"), grey).find("g.bmp"), std::string::npos);
  EXPECT_NE(SaveImageFile(Path("n.png"), none), "");
  EXPECT_NE(SaveImageFile(Path("no/such/dir.png"), grey), "");
  EXPECT_FALSE(fs::exists(Path("g.bmp")));
}

// The digest covers W x bytes-per-pixel per row, never the row padding; 16-bit pixels
// count as held in memory, low byte first.
TEST(ImageSha256, RowsWithoutPadding) {
  CZetImage grey, wide;
  Fill(grey, 3, 2, kZetImageMono8);  // 05 10 1b, 2a 35 40
  ASSERT_GT(grey.Pitch(), 3);
  grey.Row(0)[3] = 0xEE;  // padding
  EXPECT_EQ(ImageSha256(grey), "0074dafb82f65149f455450873dc4be128e637af9308f556dc6b2a115b826f33");
  Fill(wide, 2, 1, kZetImageMono16);  // 05 10 1b 26
  EXPECT_EQ(ImageSha256(wide), "869e5c4fcb102fc71fd65ebf68a2aa6725a31bc60786ad581d11c9fd51e56bbb");
}

}  // namespace
}  // namespace zet::host
