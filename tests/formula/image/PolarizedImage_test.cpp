// ProcessPolarizedImage through the plug-in: input checks, known values of every
// type, the parameter guard, and the per-instance output image with its reuse rule
// (run this binary under the sanitizer build too).
#include "Harness.h"
#include "PolarFrames.h"
#include "zet/ZetImage.h"

namespace zet::test {
namespace {

// A frame of w x h pixels from a function of the pixel position.
template <class Fn>
std::unique_ptr<CZetImage> Frame(int w, int h, Fn pixel) {
  auto img = std::make_unique<CZetImage>();
  EXPECT_EQ(img->Create(w, h, kZetImageMono8), kZetImageOk);
  for (int y = 0; y < h; ++y)
    for (int x = 0; x < w; ++x) img->Row(y)[x] = pixel(x, y);
  return img;
}

std::unique_ptr<CZetImage> Noise(int w, int h, unsigned seed) {
  return Frame(w, h, [&](int x, int y) {
    return static_cast<uint8_t>((x * 131 + y * 71 + seed) * 2654435761u >> 24);
  });
}

// One object made with Create, its own context, destroyed at the end.
class CInstance {
 public:
  CInstance() : m_proto(Module().At(IndexOf("ProcessPolarizedImage"))), m_obj(m_proto->Create()) {}
  ~CInstance() { m_proto->Destroy(m_obj); }

  int Run(const CZetObject& type, CZetImage* input) {
    m_ctx.Reset(*m_proto->GetInfo());
    m_ctx.Param(0) = type;
    m_ctx.Input(0) = CZetHandle(input);
    const host::SExecResult r = m_ctx.Run(m_obj);
    EXPECT_FALSE(r.threw) << r.exception;
    return r.status;
  }
  int Run(int type, CZetImage* input) { return Run(V(type), input); }
  CZetImage* Image() {
    const CZetHandle* h = m_ctx.Output(0).Get<CZetHandle>();
    return h ? h->GetImage() : nullptr;
  }

 private:
  IXInstrPlugin* m_proto;
  IXInstrPlugin* m_obj;
  host::CZetExecContext m_ctx;
};

// The definition's result for `type` over a whole image.
SBuffer Definition(int type, const CZetImage& in) {
  SBuffer raw(in.Width(), in.Height(), 1);
  for (int y = 0; y < in.Height(); ++y) std::memcpy(raw.Row(y), in.Row(y), in.Width());
  return RunKernel(polar::ScalarProcess, type, raw);
}

// The image equals the top-left cols x rows of a definition's result.
void ExpectRegion(const CZetImage* img, const SBuffer& want, int cols, int rows) {
  for (int y = 0; y < rows; ++y)
    ASSERT_EQ(std::memcmp(img->Row(y), want.Row(y), static_cast<size_t>(cols) * want.bpp), 0)
        << "row " << y;
}

// Run on the prototype: none of these reach the output image.
TEST(PolarizedImage, NothingToProcessLeavesTheOutput) {
  CZetImage notCreated, grey16, colour;
  ASSERT_EQ(grey16.Create(4, 4, kZetImageMono16), kZetImageOk);
  ASSERT_EQ(colour.Create(4, 4, kZetImageColor32), kZetImageOk);
  const struct {
    const char* what;
    CZetObject input;
    int status;
  } cases[] = {
      {"untyped input", Untyped(), 0},
      {"number input", V(3.0), 0},
      {"empty handle", V(CZetHandle()), 0},
      {"image not created", V(CZetHandle(&notCreated)), 0},
      {"16-bit image", V(CZetHandle(&grey16)), 3},
      {"colour image", V(CZetHandle(&colour)), 3},
  };
  SRunOptions opt;
  opt.outputs = {V(42.0)};
  for (const auto& c : cases) {
    SCOPED_TRACE(c.what);
    const CRun r = Exec("ProcessPolarizedImage", {c.input}, opt);
    EXPECT_FALSE(r.threw) << r.exception;
    EXPECT_EQ(r.status, c.status);
    EXPECT_EQ(r.Out(0).AsDouble(), 42.0);
  }
}

// Every output pixel of a frame of equal blocks: one byte, or the four of a colour pixel.
TEST(PolarizedImage, KnownValues) {
  using TBlock = std::array<uint8_t, 4>;  // P90, P45 over P135, P0
  const TBlock flat{100, 100, 100, 100}, black{}, deg45{0, 255, 0, 255}, degMinus45{0, 0, 255, 255};
  const TBlock deg0{0, 100, 100, 200}, deg90{200, 100, 100, 0}, channels{3, 2, 4, 1};
  const struct {
    const char* what;
    TBlock block;
    int type;
    std::vector<int> pixel;
  } cases[] = {
      {"uniform 100, S0", flat, polar::kTypeS0, {100}},
      {"uniform 100, S1 wraps 325", flat, polar::kTypeS1, {69}},
      {"uniform 100, S2 wraps 325", flat, polar::kTypeS2, {69}},
      {"uniform 100, DoLP", flat, polar::kTypeDolp, {0}},
      {"uniform 100, AoP of atan2(0, 0)", flat, polar::kTypeAop, {127}},
      {"black, S1 wraps 65025", black, polar::kTypeS1, {1}},
      {"black, S2", black, polar::kTypeS2, {1}},
      {"black, DoLP", black, polar::kTypeDolp, {0}},
      {"45 degrees, DoLP is sqrt 2 * 127", deg45, polar::kTypeDolp, {179}},
      {"45 degrees, AoP", deg45, polar::kTypeAop, {159}},
      {"45 degrees, S0 truncates", deg45, polar::kTypeS0, {127}},
      {"45 degrees, S1 is 510 / 255 * 255, low byte", deg45, polar::kTypeS1, {254}},
      {"45 degrees, hue 159", deg45, polar::kTypeHue, {0, 66, 255, 0}},
      {"-45 degrees, AoP", degMinus45, polar::kTypeAop, {95}},
      {"0 degrees, fully polarised DoLP is 127", deg0, polar::kTypeDolp, {127}},
      {"0 degrees, AoP", deg0, polar::kTypeAop, {127}},
      {"0 degrees, hue 127", deg0, polar::kTypeHue, {0, 255, 252, 0}},
      {"0 degrees, hue 127, value the mean intensity", deg0, polar::kTypeHueValue, {0, 100, 99, 0}},
      {"90 degrees, AoP", deg90, polar::kTypeAop, {255}},
      {"90 degrees, hue 255 taken as 0", deg90, polar::kTypeHue, {255, 0, 0, 0}},
      {"channel 0 is the 135 pixel", channels, polar::kTypeI0, {4}},
      {"channel 45 is the 90 pixel", channels, polar::kTypeI45, {3}},
      {"channel 90", channels, polar::kTypeI90, {3}},
      {"channel 135", channels, polar::kTypeI135, {4}},
  };
  CInstance inst;
  for (const auto& c : cases) {
    SCOPED_TRACE(c.what);
    const auto in = Frame(6, 4, [&](int x, int y) { return c.block[2 * (y % 2) + x % 2]; });
    ASSERT_EQ(inst.Run(c.type, in.get()), 0);
    const int n = static_cast<int>(c.pixel.size());
    ASSERT_EQ(inst.Image()->BytesPerPixel(), n);
    for (int y = 0; y < 2; ++y)
      for (const uint8_t* px = inst.Image()->Row(y); px < inst.Image()->Row(y) + 3 * n; px += n)
        ASSERT_EQ(std::vector<int>(px, px + n), c.pixel) << "row " << y;
  }
}

// Every type through the plug-in gives the definition's bytes on an odd-size frame;
// parameters outside 0..11 act as S0 and 11 writes nothing.
TEST(PolarizedImage, EveryTypeAndTheGuard) {
  const auto in = Noise(37, 21, 3), other = Noise(37, 21, 4);
  CInstance inst;
  for (int type = polar::kTypeI0; type <= polar::kTypeHueValue; ++type) {
    SCOPED_TRACE(type);
    ASSERT_EQ(inst.Run(type, in.get()), 0);
    ExpectRegion(inst.Image(), Definition(type, *in), 18, 10);
  }
  const SBuffer s0 = Definition(polar::kTypeS0, *in);
  for (const CZetObject& type : {V(-1), V(12), V(1e10), V(6.9)}) {
    ASSERT_EQ(inst.Run(type, in.get()), 0);
    ExpectRegion(inst.Image(), s0, 18, 10);
  }
  ASSERT_EQ(inst.Run(polar::kTypeNone, other.get()), 0);
  ExpectRegion(inst.Image(), s0, 18, 10);
}

// The instance's image: empty while the frame holds no block, then made at half the
// frame's size rounded down, reused by every type of the same kind whatever the size,
// re-created on a switch between the 8-bit and the colour types.
TEST(PolarizedImage, KeptImageIsReusedUntilTheKindChanges) {
  CInstance inst;
  const auto one = Noise(1, 1, 2), small = Noise(9, 7, 5), large = Noise(21, 15, 6);
  ASSERT_EQ(inst.Run(polar::kTypeS0, one.get()), 0);
  ASSERT_NE(inst.Image(), nullptr);
  EXPECT_FALSE(inst.Image()->IsCreated());
  ASSERT_EQ(inst.Run(polar::kTypeS0, small.get()), 0);
  CZetImage* kept = inst.Image();
  ASSERT_EQ(kept->Width(), 4);
  ASSERT_EQ(kept->Height(), 3);

  // A larger frame with another 8-bit type: the 4 x 3 image stays and only the
  // part that fits is written.
  ASSERT_EQ(inst.Run(polar::kTypeS1, large.get()), 0);
  EXPECT_EQ(kept->Width(), 4);
  EXPECT_EQ(kept->Height(), 3);
  ExpectRegion(kept, Definition(polar::kTypeS1, *large), 4, 3);
  for (int y = 0; y < 3; ++y)
    for (int x = 4; x < kept->Pitch(); ++x) ASSERT_EQ(kept->Row(y)[x], 0) << "padding";

  // Switching to a colour type re-creates it at the new size.
  const SBuffer hue = Definition(polar::kTypeHue, *large);
  ASSERT_EQ(inst.Run(polar::kTypeHue, large.get()), 0);
  EXPECT_EQ(inst.Image()->Attr(), kZetImageColor32);
  EXPECT_EQ(inst.Image()->Width(), 10);
  EXPECT_EQ(inst.Image()->Height(), 7);
  ExpectRegion(inst.Image(), hue, 10, 7);

  // A smaller frame into the larger colour image: the rest keeps its old pixels.
  ASSERT_EQ(inst.Run(polar::kTypeHueValue, small.get()), 0);
  EXPECT_EQ(inst.Image()->Width(), 10);
  ExpectRegion(inst.Image(), Definition(polar::kTypeHueValue, *small), 4, 3);
  EXPECT_EQ(std::memcmp(inst.Image()->Row(3), hue.Row(3), 40), 0);
  EXPECT_EQ(std::memcmp(inst.Image()->Row(0) + 16, hue.Row(0) + 16, 24), 0);
}

// Each instance keeps its own image (and frees it: the sanitizer build checks for leaks),
// and reads its own image fed back as input even while re-creating it.
TEST(PolarizedImage, InstancesAndOwnOutput) {
  CInstance a, b;
  const auto in = Noise(16, 12, 8);
  ASSERT_EQ(a.Run(polar::kTypeS0, in.get()), 0);
  ASSERT_EQ(b.Run(polar::kTypeHue, in.get()), 0);
  EXPECT_NE(a.Image(), b.Image());
  ExpectRegion(a.Image(), Definition(polar::kTypeS0, *in), 8, 6);
  const SBuffer want = Definition(polar::kTypeHue, *a.Image());
  ASSERT_EQ(a.Run(polar::kTypeHue, a.Image()), 0);
  ExpectRegion(a.Image(), want, 4, 3);
  ASSERT_EQ(a.Run(polar::kTypeS0, a.Image()), 3);  // colour input
}

}  // namespace
}  // namespace zet::test
