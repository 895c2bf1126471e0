// ProcessPolarizedImage through the plug-in: descriptor, input checks, known values
// of every type, the parameter guard, and the per-instance output image with its
// reuse rule (run this binary under the sanitizer build too).
#include "Harness.h"
#include "PolarFrames.h"
#include "zet/ZetImage.h"

namespace zet::test {
namespace {

constexpr const char* kName = "ProcessPolarizedImage";

// A frame of w x h pixels from a function of the pixel position.
template <class Fn>
std::unique_ptr<CZetImage> Frame(int w, int h, Fn pixel, int attr = kZetImageMono8) {
  auto img = std::make_unique<CZetImage>();
  EXPECT_EQ(img->Create(w, h, attr), kZetImageOk);
  for (int y = 0; y < h; ++y)
    for (int x = 0; x < w * img->BytesPerPixel(); ++x) img->Row(y)[x] = pixel(x, y);
  return img;
}

// Every block holds the same four directions.
std::unique_ptr<CZetImage> Uniform(int w, int h, int p0, int p45, int p90, int p135) {
  return Frame(w, h, [&](int x, int y) {
    return static_cast<uint8_t>(y % 2 == 0 ? (x % 2 == 0 ? p90 : p45) : (x % 2 == 0 ? p135 : p0));
  });
}

std::unique_ptr<CZetImage> Noise(int w, int h, unsigned seed) {
  return Frame(w, h, [&](int x, int y) { return static_cast<uint8_t>((x * 131 + y * 71 + seed) * 2654435761u >> 24); });
}

// One object made with Create, its own context, destroyed at the end.
class CInstance {
 public:
  CInstance() : m_proto(Module().At(IndexOf(kName))), m_obj(m_proto->Create()) {}
  ~CInstance() { m_proto->Destroy(m_obj); }

  int Run(CZetObject type, const CZetObject& input, const CZetObject& initialOutput = {}) {
    m_ctx.Reset(*m_proto->GetInfo());
    m_ctx.Param(0) = type;
    m_ctx.Input(0) = input;
    m_ctx.Output(0) = initialOutput;
    const host::SExecResult r = m_ctx.Run(m_obj);
    EXPECT_FALSE(r.threw) << r.exception;
    return r.status;
  }
  int Run(int type, const CZetImage* input) {
    return Run(V(type), V(CZetHandle(const_cast<CZetImage*>(input))));
  }
  const CZetObject& Output() { return m_ctx.Output(0); }
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

// Pixel (x, y) of an output image as an int (byte b of a 4-byte pixel).
int Px(const CZetImage* img, int x, int y, int b = 0) {
  return img->Row(y)[x * img->BytesPerPixel() + b];
}

// The image equals the top-left cols x rows of a definition's result.
void ExpectRegion(const CZetImage* img, const SBuffer& want, int cols, int rows) {
  for (int y = 0; y < rows; ++y)
    ASSERT_EQ(std::memcmp(img->Row(y), want.Row(y), static_cast<size_t>(cols) * want.bpp), 0)
        << "row " << y;
}

TEST(PolarizedImage, Descriptor) {
  const SInstrInfo& info = InfoOf("_CProcessPolarizedImage_");
  EXPECT_STREQ(info.name, "ProcessPolarizedImage");
  EXPECT_STREQ(info.category, "Image");
  EXPECT_EQ(info.id, 450165);
  EXPECT_STREQ(info.description, "Process image from polarized camera");
  ASSERT_EQ(info.params.size(), 1u);
  const SInstrParam& p = info.params[0];
  EXPECT_EQ(p.type, kTypeChoice);
  EXPECT_STREQ(p.group, "Polarization processing");
  EXPECT_STREQ(p.name, "output image type");
  EXPECT_STREQ(p.description, "Controls polatization processing");
  EXPECT_EQ(p.value.AsInt(), 0);
  EXPECT_EQ(p.minimum.AsInt(), 0);
  EXPECT_EQ(p.maximum.AsInt(), 10);
  const char* labels[] = {"Polarized I0", "Polarized I45", "Polarized I90", "Polarized I135",
                          "Degree of Linear Polarization (DoLP)", "Angle of Polarization (AoP)",
                          "Stokes S0", "Stokes S1", "Stokes S2", "AoP to hue",
                          "AoP to hue and intensity"};
  ASSERT_EQ(p.choices.size(), 11u);
  for (int k = 0; k < 11; ++k) EXPECT_EQ(p.choices.at(k), labels[k]) << k;
  ASSERT_EQ(info.inputs.size(), 1u);
  EXPECT_EQ(info.inputs[0].type, kTypeImage);
  EXPECT_STREQ(info.inputs[0].name, "polarized image");
  EXPECT_STREQ(info.inputs[0].description, "image with polarized info: row0: 90, 45 row1: 135, 0");
  ASSERT_EQ(info.outputs.size(), 1u);
  EXPECT_EQ(info.outputs[0].type, kTypeImage);
  EXPECT_STREQ(info.outputs[0].name, "output image");
}

TEST(PolarizedImage, NothingToProcessLeavesTheOutput) {
  CZetImage notCreated;
  const auto grey16 = Frame(4, 4, [](int, int) { return uint8_t{1}; }, kZetImageMono16);
  const auto colour = Frame(4, 4, [](int, int) { return uint8_t{1}; }, kZetImageColor32);
  const struct {
    const char* what;
    CZetObject input;
    int status;
  } cases[] = {
      {"untyped input", Untyped(), 0},
      {"number input", V(3.0), 0},
      {"empty handle", V(CZetHandle()), 0},
      {"image not created", V(CZetHandle(&notCreated)), 0},
      {"16-bit image", V(CZetHandle(grey16.get())), 3},
      {"colour image", V(CZetHandle(colour.get())), 3},
  };
  CInstance inst;
  for (const auto& c : cases) {
    SCOPED_TRACE(c.what);
    EXPECT_EQ(inst.Run(V(0), c.input, V(42.0)), c.status);
    EXPECT_EQ(inst.Output().AsDouble(), 42.0);
  }
}

TEST(PolarizedImage, OddSizesAreRoundedDown) {
  CInstance inst;
  const auto in = Noise(5, 3, 1);
  ASSERT_EQ(inst.Run(polar::kTypeS0, in.get()), 0);
  ASSERT_NE(inst.Image(), nullptr);
  EXPECT_EQ(inst.Image()->Width(), 2);
  EXPECT_EQ(inst.Image()->Height(), 1);
  EXPECT_EQ(inst.Image()->Attr(), kZetImageMono8);

  // A 1 x 1 frame has no block: the run succeeds with an empty output image.
  CInstance tiny;
  const auto one = Noise(1, 1, 2);
  EXPECT_EQ(tiny.Run(polar::kTypeHue, one.get()), 0);
  ASSERT_NE(tiny.Image(), nullptr);
  EXPECT_FALSE(tiny.Image()->IsCreated());
  // ... and the next real frame gets a proper image.
  EXPECT_EQ(tiny.Run(polar::kTypeHue, in.get()), 0);
  EXPECT_EQ(tiny.Image()->Width(), 2);
}

TEST(PolarizedImage, KnownValues) {
  const struct {
    const char* what;
    int p0, p45, p90, p135;
    int type;
    int value;
  } cases[] = {
      {"uniform 100, S0", 100, 100, 100, 100, polar::kTypeS0, 100},
      {"uniform 100, S1 wraps 325", 100, 100, 100, 100, polar::kTypeS1, 69},
      {"uniform 100, S2 wraps 325", 100, 100, 100, 100, polar::kTypeS2, 69},
      {"uniform 100, DoLP", 100, 100, 100, 100, polar::kTypeDolp, 0},
      {"uniform 100, AoP of atan2(0, 0)", 100, 100, 100, 100, polar::kTypeAop, 127},
      {"black, S1 wraps 65025", 0, 0, 0, 0, polar::kTypeS1, 1},
      {"black, S2", 0, 0, 0, 0, polar::kTypeS2, 1},
      {"black, DoLP", 0, 0, 0, 0, polar::kTypeDolp, 0},
      {"45 degrees, DoLP is sqrt 2 * 127", 255, 255, 0, 0, polar::kTypeDolp, 179},
      {"45 degrees, AoP", 255, 255, 0, 0, polar::kTypeAop, 159},
      {"45 degrees, S0 truncates", 255, 255, 0, 0, polar::kTypeS0, 127},
      {"0 degrees, fully polarised DoLP is 127", 200, 100, 0, 100, polar::kTypeDolp, 127},
      {"0 degrees, AoP", 200, 100, 0, 100, polar::kTypeAop, 127},
      {"90 degrees, AoP", 0, 100, 200, 100, polar::kTypeAop, 255},
      {"channel 0 is the 135 pixel", 1, 2, 3, 4, polar::kTypeI0, 4},
      {"channel 45 is the 90 pixel", 1, 2, 3, 4, polar::kTypeI45, 3},
      {"channel 90", 1, 2, 3, 4, polar::kTypeI90, 3},
      {"channel 135", 1, 2, 3, 4, polar::kTypeI135, 4},
  };
  CInstance inst;
  for (const auto& c : cases) {
    SCOPED_TRACE(c.what);
    const auto in = Uniform(6, 4, c.p0, c.p45, c.p90, c.p135);
    ASSERT_EQ(inst.Run(c.type, in.get()), 0);
    for (int y = 0; y < 2; ++y)
      for (int x = 0; x < 3; ++x) ASSERT_EQ(Px(inst.Image(), x, y), c.value) << x << "," << y;
  }
}

// Hue 127 (S2 = 0, S1 > 0) at full saturation; the value is 255 or the mean intensity.
TEST(PolarizedImage, HueTypes) {
  const auto in = Uniform(4, 2, 200, 100, 0, 100);  // mean intensity 100
  for (int type : {polar::kTypeHue, polar::kTypeHueValue}) {
    SCOPED_TRACE(type);
    uint8_t want[4] = {127, 255, static_cast<uint8_t>(type == polar::kTypeHue ? 255 : 100), 0};
    polar::HsvToRgbPixel(want);
    CInstance inst;
    ASSERT_EQ(inst.Run(type, in.get()), 0);
    EXPECT_EQ(inst.Image()->Attr(), kZetImageColor32);
    for (int b = 0; b < 4; ++b) EXPECT_EQ(Px(inst.Image(), 1, 0, b), want[b]) << "byte " << b;
  }
}

// Every type through the plug-in gives the definition's bytes; the duplicated
// channel types agree; parameters outside 0..11 act as S0 and 11 writes nothing.
TEST(PolarizedImage, EveryTypeAndTheGuard) {
  const auto in = Noise(37, 21, 3);
  CInstance inst;
  for (int type = polar::kTypeI0; type <= polar::kTypeHueValue; ++type) {
    SCOPED_TRACE(type);
    ASSERT_EQ(inst.Run(type, in.get()), 0);
    ExpectRegion(inst.Image(), Definition(type, *in), 18, 10);
  }
  const SBuffer s0 = Definition(polar::kTypeS0, *in);
  ASSERT_EQ(std::memcmp(Definition(0, *in).bytes.data(), Definition(3, *in).bytes.data(), s0.bytes.size()), 0);
  ASSERT_EQ(std::memcmp(Definition(1, *in).bytes.data(), Definition(2, *in).bytes.data(), s0.bytes.size()), 0);
  for (const CZetObject& type : {V(-1), V(12), V(1e10), V(6.9)}) {
    ASSERT_EQ(inst.Run(type, V(CZetHandle(in.get()))), 0);
    ExpectRegion(inst.Image(), s0, 18, 10);
  }
  const auto other = Noise(37, 21, 4);
  ASSERT_EQ(inst.Run(polar::kTypeNone, other.get()), 0);
  ExpectRegion(inst.Image(), s0, 18, 10);
}

TEST(PolarizedImage, KeptImageIsReusedUntilTheKindChanges) {
  CInstance inst;
  const auto small = Noise(8, 6, 5), large = Noise(20, 14, 6);
  ASSERT_EQ(inst.Run(polar::kTypeS0, small.get()), 0);
  CZetImage* kept = inst.Image();
  ASSERT_EQ(kept->Width(), 4);

  // A larger frame with another 8-bit type: the 4 x 3 image stays and only the
  // part that fits is written.
  ASSERT_EQ(inst.Run(polar::kTypeS1, large.get()), 0);
  EXPECT_EQ(inst.Image(), kept);
  EXPECT_EQ(kept->Width(), 4);
  EXPECT_EQ(kept->Height(), 3);
  ExpectRegion(kept, Definition(polar::kTypeS1, *large), 4, 3);
  for (int y = 0; y < 3; ++y)
    for (int x = 4; x < kept->Pitch(); ++x) ASSERT_EQ(kept->Row(y)[x], 0) << "padding";

  // Switching to a colour type re-creates it at the new size.
  ASSERT_EQ(inst.Run(polar::kTypeHue, large.get()), 0);
  EXPECT_EQ(inst.Image()->Attr(), kZetImageColor32);
  EXPECT_EQ(inst.Image()->Width(), 10);
  EXPECT_EQ(inst.Image()->Height(), 7);
  ExpectRegion(inst.Image(), Definition(polar::kTypeHue, *large), 10, 7);

  // A smaller frame into the larger colour image: the rest keeps its old pixels.
  const SBuffer before = Definition(polar::kTypeHue, *large);
  ASSERT_EQ(inst.Run(polar::kTypeHueValue, small.get()), 0);
  EXPECT_EQ(inst.Image()->Width(), 10);
  ExpectRegion(inst.Image(), Definition(polar::kTypeHueValue, *small), 4, 3);
  EXPECT_EQ(std::memcmp(inst.Image()->Row(3), before.Row(3), 40), 0);
  EXPECT_EQ(std::memcmp(inst.Image()->Row(0) + 16, before.Row(0) + 16, 24), 0);
}

TEST(PolarizedImage, InstancesKeepTheirOwnImages) {
  CInstance a, b;
  const auto in = Noise(8, 8, 7);
  ASSERT_EQ(a.Run(polar::kTypeS0, in.get()), 0);
  ASSERT_EQ(b.Run(polar::kTypeHue, in.get()), 0);
  EXPECT_NE(a.Image(), b.Image());
  EXPECT_EQ(a.Image()->Attr(), kZetImageMono8);
  EXPECT_EQ(b.Image()->Attr(), kZetImageColor32);
  // Destroying an instance frees its image (the sanitizer build checks for leaks).
  auto c = std::make_unique<CInstance>();
  ASSERT_EQ(c->Run(polar::kTypeHueValue, in.get()), 0);
  c.reset();
}

// The instance's own output fed back as input, even across a re-creation.
TEST(PolarizedImage, OwnOutputAsInput) {
  CInstance inst;
  const auto in = Noise(16, 12, 8);
  ASSERT_EQ(inst.Run(polar::kTypeS0, in.get()), 0);
  CZetImage* own = inst.Image();
  CZetImage copy;
  ASSERT_EQ(copy.Create(own->Width(), own->Height(), kZetImageMono8), kZetImageOk);
  for (int y = 0; y < own->Height(); ++y) std::memcpy(copy.Row(y), own->Row(y), own->Width());
  ASSERT_EQ(inst.Run(polar::kTypeHue, own), 0);
  ExpectRegion(inst.Image(), Definition(polar::kTypeHue, copy), 4, 3);
  ASSERT_EQ(inst.Run(polar::kTypeS0, inst.Image()), 3);  // colour input
}

}  // namespace
}  // namespace zet::test
