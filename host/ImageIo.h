// Image files for the host: PGM and PNG in, PGM and PNG out, and the digest zet
// prints for an image output.
#pragma once

#include <string>

#include "zet/ZetImage.h"

namespace zet::host {

// Loads a PGM or PNG file: 8-bit grey gives attribute 1, 16-bit grey attribute 16,
// 8-bit RGB or RGBA attribute 32 (the fourth byte 0 or alpha). Returns "" on success,
// else an error text naming the file.
std::string LoadImageFile(const std::string& path, CZetImage& image);

// Writes PGM (8- or 16-bit grey) or PNG (8-bit grey, 16-bit grey, 4-byte images as RGB
// when every fourth byte is 0, else RGBA) by the file's extension (.pgm, .png).
// Returns "" on success, else an error text naming the file.
std::string SaveImageFile(const std::string& path, const CZetImage& image);

// SHA-256 (lower-case hex) of the pixel rows concatenated without row padding, the
// bytes as held in memory (16-bit pixels little-endian).
std::string ImageSha256(const CZetImage& image);

}  // namespace zet::host
