// polar_frame: writes a synthetic raw frame of a polarization camera as an 8-bit PGM,
// and beside it the rim points of the part it shows, as an inspection program reads
// them.
//
//   polar_frame OUT.pgm [WIDTH HEIGHT [SEED]]    (default 640 x 480, seed 0)
//
// Every 2 x 2 block holds the four polarizer directions, row 0: 90, 45 degrees and
// row 1: 135, 0 degrees. A polarizer at angle a passes
//   I(a) = I / 2 * (1 + p * cos(2 * (a - phi)))
// of light with intensity I, degree of linear polarization p and angle phi, so the
// four pixels of a block sum to 2 I. The fields are easy to recognise in the
// derived images:
//   intensity I:  a left-to-right ramp from 60 to 250;
//   degree p:     0 at the centre of the part, growing to 1 at its rim, and 0.3
//                 outside it;
//   angle phi:    half the direction of the pixel seen from the part's centre, so it
//                 runs once through -90 .. +90 degrees around it.
// Seed 0 draws a round part in the middle of the frame; other seeds move it, size it
// and make it slightly oval, each the same on every machine.
//
// Beside OUT.pgm (OUT standing for the name without .pgm):
//   OUT.rim.json   the part's rim as an edge finder would report it: a JSON array of
//                  points {"x": .., "y": ..}, in order around the rim, with noise of
//                  about half a pixel and a few gross outliers;
//   OUT.part.json  what was drawn: centre, semi-axes, rotation and the outliers'
//                  positions in the rim array, to check a fit against.
// Point coordinates are those of the derived images (half the frame's width and
// height, pixel centres on whole numbers), over which a program draws its overlay.
#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <random>
#include <string>
#include <vector>

namespace {

constexpr double kPi = 3.14159265358979323846;
constexpr int kRimPoints = 90;
constexpr int kOutliers = 5;

// A part: an ellipse in derived-image coordinates.
struct SPart {
  double cx, cy, rx, ry, angle;  // angle: rotation of the x semi-axis, radians
};

// Uniform and normal numbers from the generator's raw output, so that every standard
// library gives the same frames (the library's distributions are its own).
class CRandom {
 public:
  explicit CRandom(unsigned seed) : m_gen(seed) {}
  double Uniform(double lo, double hi) { return lo + (hi - lo) * (m_gen() / 4294967296.0); }
  double Normal(double sigma) {  // Box-Muller
    const double u = Uniform(1e-12, 1.0), v = Uniform(0.0, 1.0);
    return sigma * std::sqrt(-2.0 * std::log(u)) * std::cos(2.0 * kPi * v);
  }

 private:
  std::mt19937 m_gen;
};

SPart MakePart(int width, int height, unsigned seed) {
  const double w = width / 2.0, h = height / 2.0, side = std::min(w, h);
  if (seed == 0) return {(w - 1) / 2.0, (h - 1) / 2.0, 0.45 * side, 0.45 * side, 0.0};
  CRandom r(seed);
  SPart p;
  p.rx = r.Uniform(0.30, 0.40) * side;
  p.ry = p.rx * (1.0 - r.Uniform(0.0, 0.06));
  p.angle = r.Uniform(0.0, kPi);
  p.cx = (w - 1) / 2.0 + r.Uniform(-0.08, 0.08) * w;
  p.cy = (h - 1) / 2.0 + r.Uniform(-0.08, 0.08) * h;
  return p;
}

struct SLight {
  double intensity, degree, angle;  // angle in radians
};

// The light at a raw-frame position; (x, y) is the centre of a 2 x 2 block.
SLight LightAt(double x, double y, int width, const SPart& part) {
  const double u = (x - 1.0) / 2.0, v = (y - 1.0) / 2.0;  // derived-image coordinates
  const double dx = u - part.cx, dy = v - part.cy;
  const double c = std::cos(part.angle), s = std::sin(part.angle);
  const double along = (dx * c + dy * s) / part.rx, across = (-dx * s + dy * c) / part.ry;
  const double rho = std::hypot(along, across);
  SLight l;
  l.intensity = 60.0 + 190.0 * x / std::max(1, width - 1);
  l.degree = rho <= 1.0 ? rho : 0.3;
  l.angle = std::atan2(-dy, dx) / 2.0;  // y up
  return l;
}

uint8_t Through(const SLight& l, double polarizerDegrees) {
  const double a = polarizerDegrees * kPi / 180.0;
  const double v = l.intensity / 2.0 * (1.0 + l.degree * std::cos(2.0 * (a - l.angle)));
  return static_cast<uint8_t>(std::clamp(std::lround(v), 0L, 255L));
}

bool WriteFile(const std::string& path, const std::string& header, const void* data,
               size_t size) {
  FILE* f = std::fopen(path.c_str(), "wb");
  if (!f) {
    std::perror(path.c_str());
    return false;
  }
  const bool ok = std::fwrite(header.data(), 1, header.size(), f) == header.size() &&
                  std::fwrite(data, 1, size, f) == size;
  if (std::fclose(f) != 0 || !ok) {
    std::perror(path.c_str());
    return false;
  }
  return true;
}

// The rim in order around the part, with noise; returns the outliers' positions.
std::vector<int> RimPoints(const SPart& part, unsigned seed, std::string* json) {
  CRandom r(seed * 7919u + 17u);
  std::vector<int> outliers;
  while (outliers.size() < kOutliers) {
    const int k = static_cast<int>(r.Uniform(0, kRimPoints));
    if (std::find(outliers.begin(), outliers.end(), k) == outliers.end()) outliers.push_back(k);
  }
  std::sort(outliers.begin(), outliers.end());
  const double c = std::cos(part.angle), s = std::sin(part.angle);
  *json = "[";
  for (int k = 0; k < kRimPoints; ++k) {
    const double t = 2.0 * kPi * (k + r.Uniform(-0.3, 0.3)) / kRimPoints;
    double ex = part.rx * std::cos(t), ey = part.ry * std::sin(t);
    // Off the rim along the direction from the centre: noise, or a gross error.
    const double len = std::hypot(ex, ey);
    double off = r.Normal(0.5);
    if (std::find(outliers.begin(), outliers.end(), k) != outliers.end())
      off = (r.Uniform(0, 1) < 0.5 ? -1 : 1) * r.Uniform(0.08, 0.2) * part.rx;
    ex += ex / len * off;
    ey += ey / len * off;
    char buf[64];
    std::snprintf(buf, sizeof buf, "%s{\"x\": %.2f, \"y\": %.2f}", k ? ", " : "",
                  part.cx + ex * c - ey * s, part.cy + ex * s + ey * c);
    *json += buf;
  }
  *json += "]\n";
  return outliers;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2 && argc != 4 && argc != 5) {
    std::fprintf(stderr, "usage: %s OUT.pgm [WIDTH HEIGHT [SEED]]\n", argv[0]);
    return 2;
  }
  const int width = argc >= 4 ? std::atoi(argv[2]) : 640;
  const int height = argc >= 4 ? std::atoi(argv[3]) : 480;
  const unsigned seed = argc == 5 ? static_cast<unsigned>(std::strtoul(argv[4], nullptr, 10)) : 0;
  if (width < 1 || height < 1 || width > 65536 || height > 65536) {
    std::fprintf(stderr, "%s: width and height must be 1 .. 65536\n", argv[0]);
    return 2;
  }
  const SPart part = MakePart(width, height, seed);
  std::vector<uint8_t> pixels(static_cast<size_t>(width) * height);
  auto at = [&](int x, int y) -> uint8_t& { return pixels[static_cast<size_t>(y) * width + x]; };
  for (int y = 0; y < height; y += 2)
    for (int x = 0; x < width; x += 2) {
      const SLight l = LightAt(x + 1.0, y + 1.0, width, part);  // the block's centre
      const int directions[2][2] = {{90, 45}, {135, 0}};
      for (int dy = 0; dy < 2 && y + dy < height; ++dy)
        for (int dx = 0; dx < 2 && x + dx < width; ++dx)
          at(x + dx, y + dy) = Through(l, directions[dy][dx]);
    }
  const std::string out = argv[1];
  const std::string stem = out.size() > 4 && out.compare(out.size() - 4, 4, ".pgm") == 0
                               ? out.substr(0, out.size() - 4)
                               : out;
  std::string rim;
  const std::vector<int> outliers = RimPoints(part, seed, &rim);
  char buf[256];
  std::snprintf(buf, sizeof buf,
                "{\"cx\": %.3f, \"cy\": %.3f, \"rx\": %.3f, \"ry\": %.3f, \"angle\": %.5f, "
                "\"outliers\": [",
                part.cx, part.cy, part.rx, part.ry, part.angle);
  std::string truth = buf;
  for (size_t i = 0; i < outliers.size(); ++i)
    truth += (i ? ", " : "") + std::to_string(outliers[i]);
  truth += "]}\n";
  const std::string header = "P5\n" + std::to_string(width) + " " + std::to_string(height) + "\n255\n";
  const bool ok = WriteFile(out, header, pixels.data(), pixels.size()) &&
                  WriteFile(stem + ".rim.json", rim, "", 0) &&
                  WriteFile(stem + ".part.json", truth, "", 0);
  return ok ? 0 : 1;
}
