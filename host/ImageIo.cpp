// Image files for the host: binary PGM (P5) and PNG in, PGM and PNG out, and the
// SHA-256 of an image's pixels.
//
// Decisions kept here:
// - Files are recognised by their contents (the P5 or PNG signature), not their
//   name; anything else is refused with a text naming the file. A file is read whole
//   and decoded from memory (ImageDecode.h), which is also what the fuzzers drive.
// - A declared size is checked against the file before any pixel memory is taken: a
//   PGM must hold all its samples; a PNG's deflate stream cannot expand more than
//   1032 times (a 258-byte match in 2 bits), so a PNG whose filtered rows exceed
//   1032 times the file's size is refused, however few bytes declare it.
// - The file's size bounds the decoded size at 8 bits per sample, so that a PNG of 1,
//   2 or 4 bits per sample (or a palette) cannot claim more rows than its bytes could
//   hold once expanded. On top of that no image of more than MaxImagePixels() pixels
//   is decoded, however its file is made.
// - PGM samples are kept as stored, without rescaling to the full range: a maxval of
//   100 still gives 8-bit pixels 0..100. 16-bit samples are big-endian in the file
//   and native (little-endian) in memory.
// - PNG: grey of 1, 2 or 4 bits is expanded to 8 bits; grey with alpha loses its
//   alpha (the image stays monochrome); palette images become colour, with alpha
//   when the palette has transparency; 16-bit colour is scaled to 8 bits; a grey
//   transparency chunk is ignored. No gamma conversion is applied.
// - Writing is chosen by the extension (.pgm or .png, either case). PGM holds grey
//   only (8 or 16 bits). A 4-byte image is written to PNG as RGB when every fourth
//   byte is 0 (as in the instructions' colour images, whose fourth byte would read as
//   a fully transparent alpha) and as RGBA otherwise, so reading the file back gives
//   the same bytes either way.
#include "ImageDecode.h"

#if !defined(_WIN32)
#include <openssl/evp.h>  // Windows: host/win32/Sha256.cpp
#endif
#include <png.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <cctype>
#include <cerrno>
#include <csetjmp>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <memory>
#include <new>
#include <vector>

namespace zet::host {

namespace {
std::atomic<uint64_t> g_maxImagePixels{kDefaultMaxImagePixels};
}  // namespace

uint64_t MaxImagePixels() { return g_maxImagePixels.load(std::memory_order_relaxed); }
void SetMaxImagePixels(uint64_t pixels) { g_maxImagePixels.store(pixels, std::memory_order_relaxed); }

namespace {

struct SFileCloser {
  void operator()(FILE* f) const { std::fclose(f); }
};
using CFile = std::unique_ptr<FILE, SFileCloser>;

std::string Quote(const std::string& path) { return "'" + path + "'"; }

std::string LowerExtension(const std::string& path) {
  const size_t slash = path.find_last_of('/');
  const size_t dot = path.find_last_of('.');
  if (dot == std::string::npos || (slash != std::string::npos && dot < slash)) return "";
  std::string ext = path.substr(dot);
  for (char& c : ext) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  return ext;
}

// ---- PGM ----

// Reads the next header number, skipping blanks and '#' comments.
bool PgmNumber(const uint8_t* data, size_t size, size_t& pos, long& value) {
  while (pos < size) {
    if (data[pos] == '#') {
      while (pos < size && data[pos] != '\n' && data[pos] != '\r') ++pos;
    } else if (std::isspace(data[pos])) {
      ++pos;
    } else {
      break;
    }
  }
  if (pos >= size || !std::isdigit(data[pos])) return false;
  value = 0;
  while (pos < size && std::isdigit(data[pos])) {
    value = value * 10 + (data[pos] - '0');
    if (value > 1000000) return false;
    ++pos;
  }
  return true;
}

}  // namespace

std::string DecodePgm(const std::string& path, const uint8_t* data, size_t size, CZetImage& image) {
  image.Destroy();
  if (size < 2 || data[0] != 'P' || data[1] != '5') return Quote(path) + " is not a binary PGM";
  size_t pos = 2;
  long width = 0, height = 0, maxval = 0;
  if (!PgmNumber(data, size, pos, width) || !PgmNumber(data, size, pos, height) ||
      !PgmNumber(data, size, pos, maxval) || pos >= size || !std::isspace(data[pos]))
    return "bad PGM header in " + Quote(path);
  ++pos;  // the single blank after maxval
  if (width <= 0 || height <= 0) return "PGM " + Quote(path) + " has no pixels";
  if (maxval < 1 || maxval > 65535)
    return "PGM " + Quote(path) + ": maxval " + std::to_string(maxval) + " out of 1..65535";
  const int bpp = maxval <= 255 ? 1 : 2;
  const size_t need = static_cast<size_t>(width) * height * bpp;
  if (size - pos < need) return "PGM " + Quote(path) + " is truncated";
  if (static_cast<uint64_t>(width) * static_cast<uint64_t>(height) > MaxImagePixels())
    return "PGM " + Quote(path) + " has more than " + std::to_string(MaxImagePixels()) +
           " pixels";
  if (image.Create(static_cast<int>(width), static_cast<int>(height),
                   bpp == 1 ? kZetImageMono8 : kZetImageMono16) != kZetImageOk)
    return "PGM " + Quote(path) + " is too large";
  const uint8_t* src = data + pos;
  for (int y = 0; y < image.Height(); ++y, src += static_cast<size_t>(width) * bpp) {
    uint8_t* row = image.Row(y);
    if (bpp == 1) {
      std::memcpy(row, src, static_cast<size_t>(width));
    } else {
      for (long x = 0; x < width; ++x) {
        const uint16_t v = static_cast<uint16_t>(src[2 * x] << 8 | src[2 * x + 1]);
        std::memcpy(row + 2 * x, &v, 2);
      }
    }
  }
  return "";
}

namespace {

std::string SavePgm(const std::string& path, const CZetImage& image) {
  const int bpp = image.BytesPerPixel();
  if (image.Attr() != kZetImageMono8 && image.Attr() != kZetImageMono16)
    return "cannot write " + Quote(path) + ": PGM holds grey images only";
  std::ofstream out(path, std::ios::binary);
  if (!out) return "cannot create " + Quote(path);
  out << "P5\n" << image.Width() << ' ' << image.Height() << '\n'
      << (bpp == 1 ? 255 : 65535) << '\n';
  std::vector<uint8_t> row(static_cast<size_t>(image.Width()) * bpp);
  for (int y = 0; y < image.Height(); ++y) {
    const uint8_t* src = image.Row(y);
    if (bpp == 1) {
      std::memcpy(row.data(), src, row.size());
    } else {
      for (int x = 0; x < image.Width(); ++x) {
        uint16_t v;
        std::memcpy(&v, src + 2 * x, 2);
        row[2 * x] = static_cast<uint8_t>(v >> 8);
        row[2 * x + 1] = static_cast<uint8_t>(v);
      }
    }
    out.write(reinterpret_cast<const char*>(row.data()), static_cast<std::streamsize>(row.size()));
  }
  out.close();
  if (!out) return "cannot write " + Quote(path);
  return "";
}

// ---- PNG ----
// libpng reports errors by longjmp. The functions holding a setjmp below keep no
// objects with destructors of their own; everything they fill lives with the caller.

struct SPngState {
  char error[200] = "";
};

// The bytes a PNG is read from.
struct SPngSource {
  const uint8_t* data;
  size_t size;
  size_t pos = 0;
};

void PngRead(png_structp png, png_bytep out, size_t length) {
  auto* src = static_cast<SPngSource*>(png_get_io_ptr(png));
  if (src->size - src->pos < length) png_error(png, "file truncated");
  std::memcpy(out, src->data + src->pos, length);
  src->pos += length;
}

// Deflate expands at most 1032-fold: its longest match, 258 bytes, takes at least two
// bits of the stream.
constexpr uint64_t kMaxDeflateRatio = 1032;

void PngError(png_structp png, png_const_charp msg) {
  auto* state = static_cast<SPngState*>(png_get_error_ptr(png));
  std::snprintf(state->error, sizeof state->error, "%s", msg);
  std::longjmp(png_jmpbuf(png), 1);
}

void PngWarning(png_structp, png_const_charp) {}

// Decodes into `image`; returns false with state.error set on a libpng error.
bool ReadPng(SPngSource& src, CZetImage& image, std::vector<png_bytep>& rows, SPngState& state) {
  png_structp png = png_create_read_struct(PNG_LIBPNG_VER_STRING, &state, PngError, PngWarning);
  if (!png) {
    std::snprintf(state.error, sizeof state.error, "out of memory");
    return false;
  }
  png_infop info = png_create_info_struct(png);
  if (!info || setjmp(png_jmpbuf(png))) {
    png_destroy_read_struct(&png, &info, nullptr);
    if (!state.error[0]) std::snprintf(state.error, sizeof state.error, "out of memory");
    return false;
  }
  png_set_read_fn(png, &src, PngRead);
  png_read_info(png, info);
  const png_uint_32 width = png_get_image_width(png, info);
  const png_uint_32 height = png_get_image_height(png, info);
  // The filtered rows at 8 bits per sample at least (a row of 1-bit samples inflates
  // from as few bytes as its expansion to 8 bits would), against what the file's
  // bytes could inflate to at most.
  const uint64_t samples = static_cast<uint64_t>(width) * png_get_channels(png, info);
  const uint64_t sampleBytes = png_get_bit_depth(png, info) > 8 ? 2 : 1;
  const uint64_t stored = static_cast<uint64_t>(height) * (samples * sampleBytes + 1);
  if (stored / kMaxDeflateRatio > src.size) {
    std::snprintf(state.error, sizeof state.error,
                  "%u x %u pixels cannot be held in %zu bytes", width, height, src.size);
    png_destroy_read_struct(&png, &info, nullptr);
    return false;
  }
  if (static_cast<uint64_t>(width) * height > MaxImagePixels()) {
    std::snprintf(state.error, sizeof state.error, "%u x %u is more than %llu pixels", width,
                  height, static_cast<unsigned long long>(MaxImagePixels()));
    png_destroy_read_struct(&png, &info, nullptr);
    return false;
  }
  const int depth = png_get_bit_depth(png, info);
  const int colour = png_get_color_type(png, info);
  int attr = kZetImageColor32;
  switch (colour) {
    case PNG_COLOR_TYPE_GRAY:
    case PNG_COLOR_TYPE_GRAY_ALPHA:
      if (colour == PNG_COLOR_TYPE_GRAY_ALPHA) png_set_strip_alpha(png);
      if (depth < 8) png_set_expand_gray_1_2_4_to_8(png);
      attr = depth == 16 ? kZetImageMono16 : kZetImageMono8;
      if (depth == 16) png_set_swap(png);
      break;
    case PNG_COLOR_TYPE_PALETTE:
    case PNG_COLOR_TYPE_RGB:
      if (colour == PNG_COLOR_TYPE_PALETTE) png_set_palette_to_rgb(png);
      if (depth == 16) png_set_scale_16(png);
      if (png_get_valid(png, info, PNG_INFO_tRNS))
        png_set_tRNS_to_alpha(png);
      else
        png_set_filler(png, 0, PNG_FILLER_AFTER);
      break;
    case PNG_COLOR_TYPE_RGB_ALPHA:
      if (depth == 16) png_set_scale_16(png);
      break;
    default:
      std::snprintf(state.error, sizeof state.error, "colour type %d not supported", colour);
      png_destroy_read_struct(&png, &info, nullptr);
      return false;
  }
  png_set_interlace_handling(png);
  png_read_update_info(png, info);
  const int bpp = CZetImage::BytesPerPixel(attr);
  if (width > static_cast<png_uint_32>(CZetImage::kMaxSide) ||
      height > static_cast<png_uint_32>(CZetImage::kMaxSide) ||
      image.Create(static_cast<int>(width), static_cast<int>(height), attr) != kZetImageOk) {
    std::snprintf(state.error, sizeof state.error, "image of %ux%u is too large", width, height);
    png_destroy_read_struct(&png, &info, nullptr);
    return false;
  }
  if (png_get_rowbytes(png, info) != static_cast<size_t>(width) * bpp) {
    std::snprintf(state.error, sizeof state.error, "unexpected row layout");
    png_destroy_read_struct(&png, &info, nullptr);
    return false;
  }
  rows.resize(height);
  for (png_uint_32 y = 0; y < height; ++y) rows[y] = image.Row(static_cast<int>(y));
  png_read_image(png, rows.data());
  png_read_end(png, nullptr);
  png_destroy_read_struct(&png, &info, nullptr);
  return true;
}


bool AllFourthBytesZero(const CZetImage& image) {
  for (int y = 0; y < image.Height(); ++y) {
    const uint8_t* row = image.Row(y);
    for (int x = 0; x < image.Width(); ++x)
      if (row[4 * x + 3] != 0) return false;
  }
  return true;
}

bool WritePng(FILE* f, const CZetImage& image, std::vector<png_bytep>& rows, SPngState& state) {
  png_structp png = png_create_write_struct(PNG_LIBPNG_VER_STRING, &state, PngError, PngWarning);
  if (!png) {
    std::snprintf(state.error, sizeof state.error, "out of memory");
    return false;
  }
  png_infop info = png_create_info_struct(png);
  if (!info || setjmp(png_jmpbuf(png))) {
    png_destroy_write_struct(&png, &info);
    if (!state.error[0]) std::snprintf(state.error, sizeof state.error, "out of memory");
    return false;
  }
  png_init_io(png, f);
  const int attr = image.Attr();
  const bool dropFourth = attr == kZetImageColor32 && AllFourthBytesZero(image);
  const int colour = attr == kZetImageColor32
                         ? (dropFourth ? PNG_COLOR_TYPE_RGB : PNG_COLOR_TYPE_RGB_ALPHA)
                         : PNG_COLOR_TYPE_GRAY;
  png_set_IHDR(png, info, static_cast<png_uint_32>(image.Width()),
               static_cast<png_uint_32>(image.Height()), attr == kZetImageMono16 ? 16 : 8, colour,
               PNG_INTERLACE_NONE, PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
  png_write_info(png, info);
  if (attr == kZetImageMono16) png_set_swap(png);
  if (dropFourth) png_set_filler(png, 0, PNG_FILLER_AFTER);
  rows.resize(static_cast<size_t>(image.Height()));
  for (int y = 0; y < image.Height(); ++y) rows[y] = const_cast<png_bytep>(image.Row(y));
  png_write_image(png, rows.data());
  png_write_end(png, nullptr);
  png_destroy_write_struct(&png, &info);
  return true;
}

std::string SavePng(const std::string& path, const CZetImage& image) {
  if (CZetImage::BytesPerPixel(image.Attr()) == 0)
    return "cannot write " + Quote(path) + ": unknown pixel attribute";
  CFile f(std::fopen(path.c_str(), "wb"));
  if (!f) return "cannot create " + Quote(path);
  std::vector<png_bytep> rows;
  SPngState state;
  const bool ok = WritePng(f.get(), image, rows, state);
  const bool closed = std::fclose(f.release()) == 0;
  if (ok && closed) return "";
  std::remove(path.c_str());
  return "cannot write PNG " + Quote(path) + (ok ? "" : std::string(": ") + state.error);
}

}  // namespace

std::string DecodePng(const std::string& path, const uint8_t* data, size_t size, CZetImage& image) {
  image.Destroy();
  SPngSource src{data, size};
  std::vector<png_bytep> rows;
  SPngState state;
  if (ReadPng(src, image, rows, state)) return "";
  image.Destroy();
  return "cannot read PNG " + Quote(path) + ": " + state.error;
}

std::string DecodeImage(const std::string& path, const uint8_t* data, size_t size,
                        CZetImage& image) {
  image.Destroy();
  if (size >= 8 && png_sig_cmp(data, 0, 8) == 0) return DecodePng(path, data, size, image);
  if (size >= 2 && data[0] == 'P' && data[1] == '5') return DecodePgm(path, data, size, image);
  if (size >= 2 && data[0] == 'P' && data[1] >= '1' && data[1] <= '7')
    return "unsupported PNM variant P" + std::string(1, static_cast<char>(data[1])) + " in " +
           Quote(path) + " (binary PGM, P5, only)";
  return Quote(path) + " is neither a PGM (P5) nor a PNG image";
}

std::string ReadRegularFile(const std::string& path, std::string& data, const std::string& what) {
  data.clear();
  // O_NONBLOCK: opening a FIFO for reading must not wait for a writer; whatever is not
  // a regular file is refused before a byte is read.
#if defined(_WIN32)
  const int fd = open(path.c_str(), O_RDONLY | O_BINARY);  // no FIFO to wait on here
#else
  const int fd = open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
#endif
  struct stat st {};
  if (fd < 0 || fstat(fd, &st) != 0) {
    if (fd >= 0) close(fd);
    return "cannot open " + what + Quote(path);
  }
  if (!S_ISREG(st.st_mode)) {
    close(fd);
    return "cannot read " + what + Quote(path) + ": not a regular file";
  }
  std::string err;
  try {
    data.resize(static_cast<size_t>(st.st_size));
    size_t done = 0;
    while (done < data.size()) {
      const ssize_t n = read(fd, data.data() + done, data.size() - done);
      if (n < 0 && errno == EINTR) continue;
      if (n <= 0) break;
      done += static_cast<size_t>(n);
    }
    if (done != data.size()) err = "cannot read " + what + Quote(path);
  } catch (const std::bad_alloc&) {
    err = "cannot read " + what + Quote(path) + ": out of memory";
  }
  close(fd);
  if (!err.empty()) data.clear();
  return err;
}

std::string LoadImageFile(const std::string& path, CZetImage& image) {
  image.Destroy();
  std::string data;
  if (std::string err = ReadRegularFile(path, data, "image "); !err.empty()) return err;
  return DecodeImage(path, reinterpret_cast<const uint8_t*>(data.data()), data.size(), image);
}

std::string SaveImageFile(const std::string& path, const CZetImage& image) {
  if (!image.IsCreated()) return "cannot write " + Quote(path) + ": the image holds no pixels";
  const std::string ext = LowerExtension(path);
  if (ext == ".pgm") return SavePgm(path, image);
  if (ext == ".png") return SavePng(path, image);
  return "cannot write " + Quote(path) + ": the name must end in .pgm or .png";
}

#if !defined(_WIN32)
std::string ImageSha256(const CZetImage& image) {
  unsigned char digest[EVP_MAX_MD_SIZE];
  unsigned int len = 0;
  std::unique_ptr<EVP_MD_CTX, decltype(&EVP_MD_CTX_free)> ctx(EVP_MD_CTX_new(), EVP_MD_CTX_free);
  if (!ctx || EVP_DigestInit_ex(ctx.get(), EVP_sha256(), nullptr) != 1) return "";
  const size_t rowBytes = static_cast<size_t>(image.Width()) * image.BytesPerPixel();
  for (int y = 0; y < image.Height() && image.IsCreated(); ++y)
    if (EVP_DigestUpdate(ctx.get(), image.Row(y), rowBytes) != 1) return "";
  if (EVP_DigestFinal_ex(ctx.get(), digest, &len) != 1) return "";
  static const char kHex[] = "0123456789abcdef";
  std::string hex;
  for (unsigned i = 0; i < len; ++i) {
    hex += kHex[digest[i] >> 4];
    hex += kHex[digest[i] & 15];
  }
  return hex;
}
#endif

}  // namespace zet::host
