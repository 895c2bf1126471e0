// Images made to cost far more than their files: PNGs of 1 bit per sample (grey or
// palette) whose few bytes declare gigabytes of pixels, and the ceiling on the pixels
// of any image the host decodes. The bombs are made here, with libpng.
#include <gtest/gtest.h>
#include <png.h>
#if defined(_WIN32)
#include <windows.h>
#include <psapi.h>
#else
#include <sys/resource.h>
#endif

#include <cstdio>
#include <string>
#include <vector>

#include "TempDir.h"
#include "zet/ZetHost.h"

namespace zet::test {
namespace {

// Writes a PNG of `width` x `height` with every sample 0.
void WriteZeroPng(const std::string& path, uint32_t width, uint32_t height, int depth, int colour) {
  FILE* f = std::fopen(path.c_str(), "wb");
  ASSERT_NE(f, nullptr);
  png_structp png = png_create_write_struct(PNG_LIBPNG_VER_STRING, nullptr, nullptr, nullptr);
  png_infop info = png_create_info_struct(png);
  ASSERT_EQ(setjmp(png_jmpbuf(png)), 0);
  png_init_io(png, f);
  png_set_IHDR(png, info, width, height, depth, colour, PNG_INTERLACE_NONE,
               PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
  png_color palette[2] = {{0, 0, 0}, {255, 255, 255}};
  if (colour == PNG_COLOR_TYPE_PALETTE) png_set_PLTE(png, info, palette, 2);
  png_set_filter(png, 0, PNG_FILTER_NONE);
  png_write_info(png, info);
  std::vector<png_byte> row(png_get_rowbytes(png, info), 0);
  for (uint32_t y = 0; y < height; ++y) png_write_row(png, row.data());
  png_write_end(png, nullptr);
  png_destroy_write_struct(&png, &info);
  std::fclose(f);
}

// The process's peak resident memory, in kilobytes.
long PeakKb() {
#if defined(_WIN32)
  PROCESS_MEMORY_COUNTERS m{};
  m.cb = sizeof m;
  K32GetProcessMemoryInfo(GetCurrentProcess(), &m, sizeof m);
  return static_cast<long>(m.PeakWorkingSetSize / 1024);
#else
  rusage u{};
  getrusage(RUSAGE_SELF, &u);
  return u.ru_maxrss;
#endif
}

TEST(ImageBomb, OneBitPngsAreRefusedBeforeTheirPixelsAreTaken) {
  CTempDir dir;
  const struct {
    const char* name;
    uint32_t width, height;
    int colour;
  } bombs[] = {
      {"palette.png", 32768, 16384, PNG_COLOR_TYPE_PALETTE},  // once 2 GB
      {"grey.png", 32767, 32767, PNG_COLOR_TYPE_GRAY},        // once 5 GB under zet run
  };
  for (const auto& b : bombs) {
    SCOPED_TRACE(b.name);
    WriteZeroPng(dir / b.name, b.width, b.height, 1, b.colour);
    const long before = PeakKb();
    CZetImage img;
    const std::string err = host::LoadImageFile(dir / b.name, img);
    EXPECT_NE(err.find("cannot be held in"), std::string::npos) << err;
    EXPECT_FALSE(img.IsCreated());
    EXPECT_LT(PeakKb() - before, 64 * 1024);  // kilobytes: nothing near the pixels' size
  }
}

// The ceiling holds for every kind of file, and can be raised.
TEST(ImageBomb, ThePixelCeilingIsAnOption) {
  CTempDir dir;
  CZetImage img;
  ASSERT_EQ(img.Create(20, 10, kZetImageMono8), kZetImageOk);
  for (const char* name : {"a.pgm", "a.png"}) {
    SCOPED_TRACE(name);
    ASSERT_EQ(host::SaveImageFile(dir / name, img), "");
    CZetImage back;
    host::SetMaxImagePixels(199);
    EXPECT_NE(host::LoadImageFile(dir / name, back).find("more than 199 pixels"), std::string::npos);
    host::SetMaxImagePixels(200);
    EXPECT_EQ(host::LoadImageFile(dir / name, back), "");
    CZetImage overlay;
    host::SetMaxImagePixels(199);
    EXPECT_NE(host::RenderOverlay(back, {}, 0, overlay)
                  .find(ZET_HOST_HAS_OVERLAYS ? "more than 199 pixels" : host::kOverlaysUnavailable),
              std::string::npos);
  }
  host::SetMaxImagePixels(host::kDefaultMaxImagePixels);
  EXPECT_EQ(host::MaxImagePixels(), uint64_t{1} << 27);
}

}  // namespace
}  // namespace zet::test
