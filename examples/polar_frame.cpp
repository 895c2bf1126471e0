// polar_frame: writes a synthetic raw frame of a polarization camera as an 8-bit PGM.
//
//   polar_frame OUT.pgm [WIDTH HEIGHT]      (default 640 x 480; odd sizes allowed)
//
// Every 2 x 2 block holds the four polarizer directions, row 0: 90, 45 degrees and
// row 1: 135, 0 degrees. A polarizer at angle a passes
//   I(a) = I / 2 * (1 + p * cos(2 * (a - phi)))
// of light with intensity I, degree of linear polarization p and angle phi, so the
// four pixels of a block sum to 2 I. The fields are easy to recognise in the
// derived images:
//   intensity I:  a left-to-right ramp from 60 to 250;
//   degree p:     0 at the centre, growing with the distance to 1 at the rim of a
//                 centred disc, and 0.3 outside it;
//   angle phi:    half the direction of the pixel seen from the centre, so it runs
//                 once through -90 .. +90 degrees around the centre.
#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <vector>

namespace {

constexpr double kPi = 3.14159265358979323846;

struct SLight {
  double intensity, degree, angle;  // angle in radians
};

SLight LightAt(double x, double y, int width, int height) {
  const double cx = width / 2.0, cy = height / 2.0;
  const double radius = 0.45 * std::min(width, height);
  const double dx = x - cx, dy = cy - y;  // y up
  const double r = std::hypot(dx, dy);
  SLight l;
  l.intensity = 60.0 + 190.0 * x / std::max(1, width - 1);
  l.degree = r <= radius ? r / radius : 0.3;
  l.angle = std::atan2(dy, dx) / 2.0;
  return l;
}

uint8_t Through(const SLight& l, double polarizerDegrees) {
  const double a = polarizerDegrees * kPi / 180.0;
  const double v = l.intensity / 2.0 * (1.0 + l.degree * std::cos(2.0 * (a - l.angle)));
  return static_cast<uint8_t>(std::clamp(std::lround(v), 0L, 255L));
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2 && argc != 4) {
    std::fprintf(stderr, "usage: %s OUT.pgm [WIDTH HEIGHT]\n", argv[0]);
    return 2;
  }
  const int width = argc == 4 ? std::atoi(argv[2]) : 640;
  const int height = argc == 4 ? std::atoi(argv[3]) : 480;
  if (width < 1 || height < 1 || width > 65536 || height > 65536) {
    std::fprintf(stderr, "%s: width and height must be 1 .. 65536\n", argv[0]);
    return 2;
  }
  std::vector<uint8_t> pixels(static_cast<size_t>(width) * height);
  auto at = [&](int x, int y) -> uint8_t& { return pixels[static_cast<size_t>(y) * width + x]; };
  for (int y = 0; y < height; y += 2)
    for (int x = 0; x < width; x += 2) {
      const SLight l = LightAt(x + 1.0, y + 1.0, width, height);  // the block's centre
      const int directions[2][2] = {{90, 45}, {135, 0}};
      for (int dy = 0; dy < 2 && y + dy < height; ++dy)
        for (int dx = 0; dx < 2 && x + dx < width; ++dx)
          at(x + dx, y + dy) = Through(l, directions[dy][dx]);
    }
  FILE* f = std::fopen(argv[1], "wb");
  if (!f) {
    std::perror(argv[1]);
    return 1;
  }
  std::fprintf(f, "P5\n%d %d\n255\n", width, height);
  const bool ok = std::fwrite(pixels.data(), 1, pixels.size(), f) == pixels.size();
  if (std::fclose(f) != 0 || !ok) {
    std::perror(argv[1]);
    return 1;
  }
  return 0;
}
