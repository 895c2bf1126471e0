// The image digest on Windows: the system's own SHA-256 (bcrypt), over the pixel rows
// without their padding, as on Linux.
#include <windows.h>
#include <bcrypt.h>

#include "zet/ZetHost.h"

namespace zet::host {

std::string ImageSha256(const CZetImage& image) {
  BCRYPT_ALG_HANDLE alg = nullptr;
  if (BCryptOpenAlgorithmProvider(&alg, BCRYPT_SHA256_ALGORITHM, nullptr, 0) != 0) return "";
  BCRYPT_HASH_HANDLE hash = nullptr;
  unsigned char digest[32];
  bool ok = BCryptCreateHash(alg, &hash, nullptr, 0, nullptr, 0, 0) == 0;
  const size_t rowBytes = static_cast<size_t>(image.Width()) * image.BytesPerPixel();
  for (int y = 0; ok && y < image.Height() && image.IsCreated(); ++y)
    ok = BCryptHashData(hash, const_cast<PUCHAR>(static_cast<const unsigned char*>(image.Row(y))),
                        static_cast<ULONG>(rowBytes), 0) == 0;
  ok = ok && BCryptFinishHash(hash, digest, sizeof digest, 0) == 0;
  if (hash) BCryptDestroyHash(hash);
  BCryptCloseAlgorithmProvider(alg, 0);
  if (!ok) return "";
  static const char kHex[] = "0123456789abcdef";
  std::string hex;
  for (unsigned char b : digest) {
    hex += kHex[b >> 4];
    hex += kHex[b & 15];
  }
  return hex;
}

}  // namespace zet::host
