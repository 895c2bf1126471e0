// Placeholder until the image codecs land.
#include "ImageIo.h"

namespace zet::host {
std::string LoadImageFile(const std::string& path, CZetImage&) { return "cannot read image '" + path + "'"; }
std::string SaveImageFile(const std::string& path, const CZetImage&) { return "cannot write image '" + path + "'"; }
std::string ImageSha256(const CZetImage&) { return ""; }
}  // namespace zet::host
