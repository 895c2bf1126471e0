// ZetImage: the platform image. Rows are 64-byte aligned (the pitch is a multiple of
// 64 bytes) so that vector kernels can run over whole rows.
#pragma once

#include <cstddef>
#include <cstdint>

#include "zet/ZetExport.h"

// Pixel attributes.
enum : int {
  kZetImageMono8 = 1,    // 8-bit grey, 1 byte per pixel
  kZetImageMono16 = 16,  // 16-bit grey, 2 bytes per pixel
  kZetImageColor32 = 32  // 4 bytes per pixel (RGBx or HSVx)
};

// Platform error type of the image operations.
enum EZetImageError : int {
  kZetImageOk = 0,
  kZetImageErrArgs = -1,   // width, height or attribute out of range
  kZetImageErrAlloc = -2,  // the pixels could not be allocated
};

// The image record. The fields the instructions read keep their places in the
// original 32-bit record: attribute at 4, width at 12, height at 16, first pixel at
// 24 and pitch just after it.
struct SZetImageInfo {
  int32_t size = sizeof(SZetImageInfo);
  int32_t attr = 0;
  int32_t bytesPerPixel = 0;
  int32_t width = 0;
  int32_t height = 0;
  int32_t reserved20 = 0;
  uint8_t* pixels = nullptr;
  int32_t pitch = 0;
};

class ZET_PLATFORM_API CZetImage {
 public:
  // Largest width or height Create accepts, and largest pixel buffer in bytes.
  static constexpr int kMaxSide = 1 << 16;
  static constexpr size_t kMaxBytes = size_t{1} << 31;

  CZetImage() = default;
  ~CZetImage();
  CZetImage(const CZetImage&) = delete;
  CZetImage& operator=(const CZetImage&) = delete;

  // Allocates width x height pixels of `attr` (1, 16 or 32), zero-filled; an image
  // already created is destroyed first. On failure the image is left not created.
  EZetImageError Create(int width, int height, int attr);
  EZetImageError Destroy();
  EZetImageError GetInfo(SZetImageInfo* info) const;
  bool IsCreated() const { return m_pixels != nullptr; }

  int Width() const { return m_width; }
  int Height() const { return m_height; }
  int Attr() const { return m_attr; }
  int Pitch() const { return m_pitch; }
  int BytesPerPixel() const { return BytesPerPixel(m_attr); }
  uint8_t* Row(int y) { return m_pixels + static_cast<ptrdiff_t>(y) * m_pitch; }
  const uint8_t* Row(int y) const { return m_pixels + static_cast<ptrdiff_t>(y) * m_pitch; }

  static int BytesPerPixel(int attr);

 private:
  uint8_t* m_pixels = nullptr;
  int m_width = 0;
  int m_height = 0;
  int m_attr = 0;
  int m_pitch = 0;
};
