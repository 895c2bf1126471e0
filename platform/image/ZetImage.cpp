// CZetImage: 64-byte aligned rows, zero-filled on creation.
#include "zet/ZetImage.h"

#include <cstdlib>
#if defined(_WIN32)
#include <malloc.h>
#endif
#include <cstring>
#include <new>

namespace {
constexpr int kRowAlign = 64;
}

CZetImage::~CZetImage() { Destroy(); }

int CZetImage::BytesPerPixel(int attr) {
  switch (attr) {
    case kZetImageMono8: return 1;
    case kZetImageMono16: return 2;
    case kZetImageColor32: return 4;
    default: return 0;
  }
}

EZetImageError CZetImage::Create(int width, int height, int attr) {
  Destroy();
  const int bpp = BytesPerPixel(attr);
  if (bpp == 0 || width <= 0 || height <= 0 || width > kMaxSide || height > kMaxSide)
    return kZetImageErrArgs;
  const size_t pitch = (static_cast<size_t>(width) * bpp + kRowAlign - 1) / kRowAlign * kRowAlign;
  const size_t bytes = pitch * static_cast<size_t>(height);
  if (bytes > kMaxBytes) return kZetImageErrAlloc;
#if defined(_WIN32)
  void* p = _aligned_malloc(bytes, kRowAlign);  // the C runtime has no aligned_alloc
#else
  void* p = std::aligned_alloc(kRowAlign, bytes);
#endif
  if (!p) return kZetImageErrAlloc;
  std::memset(p, 0, bytes);
  m_pixels = static_cast<uint8_t*>(p);
  m_width = width;
  m_height = height;
  m_attr = attr;
  m_pitch = static_cast<int>(pitch);
  return kZetImageOk;
}

EZetImageError CZetImage::Destroy() {
#if defined(_WIN32)
  _aligned_free(m_pixels);
#else
  std::free(m_pixels);
#endif
  m_pixels = nullptr;
  m_width = m_height = m_attr = m_pitch = 0;
  return kZetImageOk;
}

EZetImageError CZetImage::GetInfo(SZetImageInfo* info) const {
  if (!info) return kZetImageErrArgs;
  *info = SZetImageInfo{};
  info->attr = m_attr;
  info->bytesPerPixel = BytesPerPixel(m_attr);
  info->width = m_width;
  info->height = m_height;
  info->pixels = m_pixels;
  info->pitch = m_pitch;
  return kZetImageOk;
}
