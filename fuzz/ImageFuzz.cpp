// Fuzzing the image readers: the bytes of one file, decoded as a binary PGM
// (fuzz_pgm) or a PNG (fuzz_png). A decoded image must have the size it claims; the
// digest reads every pixel row.
#include <cstddef>
#include <cstdint>
#include <cstdlib>

#include "ImageDecode.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  CZetImage image;
#ifdef ZET_FUZZ_PGM
  const std::string error = zet::host::DecodePgm("fuzz.pgm", data, size, image);
#else
  const std::string error = zet::host::DecodePng("fuzz.png", data, size, image);
#endif
  if (!error.empty()) {
    if (image.IsCreated()) std::abort();  // a refusal leaves no image
    return 0;
  }
  if (!image.IsCreated() || image.Width() <= 0 || image.Height() <= 0) std::abort();
  if (zet::host::ImageSha256(image).size() != 64) std::abort();
  return 0;
}
