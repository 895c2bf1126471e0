// Image files decoded from memory (host-internal): what LoadImageFile does with a
// file's bytes, and what the image fuzzers drive. `name` only appears in error texts.
// Each returns "" on success, else an error text; on error the image holds nothing.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

#include "zet/ZetHost.h"

namespace zet::host {

// By the signature: PNG, binary PGM, or an error naming the file.
std::string DecodeImage(const std::string& name, const uint8_t* data, size_t size, CZetImage& image);
std::string DecodePgm(const std::string& name, const uint8_t* data, size_t size, CZetImage& image);
std::string DecodePng(const std::string& name, const uint8_t* data, size_t size, CZetImage& image);

// Reads a whole regular file into `data`; returns "" or an error text that starts
// "cannot open " or "cannot read " followed by `what` (say "image ") and the quoted
// name. A FIFO, device or folder is refused ("not a regular file") without blocking.
std::string ReadRegularFile(const std::string& path, std::string& data, const std::string& what);

}  // namespace zet::host
