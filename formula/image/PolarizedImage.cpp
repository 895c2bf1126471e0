// The polarization-camera instruction: a raw frame whose 2 x 2 blocks hold the four
// polarizer directions becomes one derived image (a channel, a Stokes parameter, the
// degree or angle of linear polarization, or the angle as colour), half as wide and
// half as high. The pixel work is in PolarKernels.
//
// Each instance keeps its output image from run to run. It is re-created only when
// the output type switches between the 8-bit types and the two colour types; an
// image of the right kind is reused whatever its size. Decisions kept here:
// - The loops never write outside the kept image: when it is smaller than the new
//   result, only the part that fits is computed; when it is larger, the rest keeps
//   its old pixels.
// - A 1 x 1 (or 1-wide, 1-high) input has an empty result: the output image cannot be
//   created, nothing is written, and the run returns 0 with the output handle on the
//   instance's (empty) image.
// - When the output image cannot be allocated for a non-empty result, the run returns
//   3 without a message and leaves the output value as it was.
// - An input that is this instance's own output image is read from a copy, since
//   re-creating the output would free the pixels being read.
// - The parameter's maximum is 10, the last labelled type; 11 still passes the guard
//   in Execute and writes no pixels.
#include <algorithm>
#include <cstring>
#include <memory>
#include <vector>

#include "frame/Instr.h"
#include "image/PolarKernels.h"
#include "zet/ZetImage.h"

namespace zet {
namespace {

using polar::IsColourType;

class CProcessPolarizedImage final : public TInstr<CProcessPolarizedImage> {
 public:
  static void Describe(CDescriber& d) {
    d.Head("ProcessPolarizedImage", "Process image from polarized camera")
        .ParamChoice("Polarization processing", "output image type",
                     "Controls polatization processing", polar::kTypeI0, polar::kTypeI0,
                     polar::kTypeHueValue,
                     {{polar::kTypeI0, "Polarized I0"},
                      {polar::kTypeI45, "Polarized I45"},
                      {polar::kTypeI90, "Polarized I90"},
                      {polar::kTypeI135, "Polarized I135"},
                      {polar::kTypeDolp, "Degree of Linear Polarization (DoLP)"},
                      {polar::kTypeAop, "Angle of Polarization (AoP)"},
                      {polar::kTypeS0, "Stokes S0"},
                      {polar::kTypeS1, "Stokes S1"},
                      {polar::kTypeS2, "Stokes S2"},
                      {polar::kTypeHue, "AoP to hue"},
                      {polar::kTypeHueValue, "AoP to hue and intensity"}})
        .Input(kTypeImage, "polarized image", {},
               "image with polarized info: row0: 90, 45 row1: 135, 0")
        .Output(kTypeImage, "output image");
  }

  int Execute(IXInstrContext* ctx) override {
    CArgs a(ctx);
    int type = a.Param(0).AsInt();
    if (type < polar::kTypeI0 || type > polar::kTypeNone) type = polar::kTypeS0;

    const CZetHandle* handle = a.In(0).Get<CZetHandle>();
    CZetImage* input = handle ? handle->GetImage() : nullptr;
    if (!input || !input->IsCreated()) return kOk;
    SZetImageInfo in;
    input->GetInfo(&in);
    if (in.attr != kZetImageMono8) return kFail;
    const int width = in.width & ~1;
    const int height = in.height & ~1;

    if (!m_output) m_output = std::make_unique<CZetImage>();
    std::vector<uint8_t> copy;
    if (input == m_output.get()) in = CopyOf(in, width, height, copy);

    const int wanted = IsColourType(type) ? kZetImageColor32 : kZetImageMono8;
    SZetImageInfo out;
    m_output->GetInfo(&out);
    if (out.attr != wanted) {
      m_output->Destroy();
      m_output->Create(width / 2, height / 2, wanted);
      m_output->GetInfo(&out);
    }
    if (!out.pixels && width > 0 && height > 0) return kFail;  // allocation failed

    polar::SPolarFrame frame;
    frame.src = in.pixels;
    frame.srcPitch = in.pitch;
    frame.dst = out.pixels;
    frame.dstPitch = out.pitch;
    frame.cols = out.pixels ? std::min(width / 2, out.width) : 0;
    frame.rows = out.pixels ? std::min(height / 2, out.height) : 0;
    polar::FastProcess(type, frame);

    a.Out(0) = CZetHandle(m_output.get());
    return kOk;
  }

 private:
  // The first width x height pixels of `in`, copied into `buffer`.
  static SZetImageInfo CopyOf(const SZetImageInfo& in, int width, int height,
                              std::vector<uint8_t>& buffer) {
    buffer.resize(static_cast<size_t>(width) * height);
    for (int y = 0; y < height; ++y)
      std::memcpy(buffer.data() + static_cast<size_t>(y) * width,
                  in.pixels + static_cast<ptrdiff_t>(y) * in.pitch, static_cast<size_t>(width));
    SZetImageInfo copy = in;
    copy.pixels = buffer.data();
    copy.pitch = width;
    return copy;
  }

  std::unique_ptr<CZetImage> m_output;  // owned by this instance, reused between runs
};

}  // namespace
}  // namespace zet

#define ZET_FAMILY_PolarizedImage ZET_THIS_FAMILY
#include "frame/Factories.def"
