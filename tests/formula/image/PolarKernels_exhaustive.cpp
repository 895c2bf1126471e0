// Exhaustive checks of the vector kernels against the scalar definition, on every
// compiled instruction set. A block's result depends only on (S1, S2, sum), so
// covering every reachable triple covers every possible frame. Long-running: this
// binary carries the ctest label "exhaustive".
#include "PolarFrames.h"

namespace zet::test {
namespace {

// The reachable sums of (S1, S2): |S1| + |S2| .. 1020 - |S1| - |S2|, in steps of 2.
template <class Fn>
void ForEachSum(int s1, int s2, Fn fn) {
  const int edge = std::abs(s1) + std::abs(s2);
  for (int sum = edge; sum <= 1020 - edge; sum += 2) fn(sum);
}

// One frame per S1: a row pair per S2, the reachable sums along it (width padded
// with the last block).
SBuffer FrameForS1(int s1) {
  SBuffer raw(2 * 511, 2 * 511, 1);
  for (int s2 = -255; s2 <= 255; ++s2) {
    const int row = s2 + 255;
    int col = 0;
    std::array<uint8_t, 4> last{};
    ForEachSum(s1, s2, [&](int sum) { PutBlock(raw, col++, row, last = BlockFor(s1, s2, sum)); });
    for (; col < 511; ++col) PutBlock(raw, col, row, last);
  }
  return raw;
}

TEST(PolarKernelsExhaustive, BlockBuilderReachesTheTriple) {
  long triples = 0;
  for (int s1 = -255; s1 <= 255; ++s1)
    for (int s2 = -255; s2 <= 255; ++s2)
      ForEachSum(s1, s2, [&](int sum) {
        const auto b = BlockFor(s1, s2, sum);
        ++triples;
        ASSERT_EQ(b[3] - b[0], s1);
        ASSERT_EQ(b[1] - b[2], s2);
        ASSERT_EQ(b[0] + b[1] + b[2] + b[3], sum);
      });
  EXPECT_EQ(triples, 66'716'671);  // the sum over (S1, S2) of 511 - |S1| - |S2|
}

TEST(PolarKernelsExhaustive, EveryReachableTripleOnEveryTarget) {
  const int types[] = {polar::kTypeDolp, polar::kTypeAop, polar::kTypeS0, polar::kTypeS1,
                       polar::kTypeS2, polar::kTypeHue, polar::kTypeHueValue};
  for (int s1 = -255; s1 <= 255; ++s1) {
    const SBuffer raw = FrameForS1(s1);
    for (int type : types) {
      const SBuffer want = RunKernel(polar::ScalarProcess, type, raw);
      ForEachTarget([&](const char* target) {
        const std::string diff = FirstDifference(want, RunKernel(polar::FastProcess, type, raw));
        ASSERT_EQ(diff, "") << target << " S1 " << s1 << " type " << type
                            << " (row = S2 + 255; column = (sum - |S1| - |S2|) / 2)";
      });
      if (HasFatalFailure()) return;
    }
  }
}

}  // namespace
}  // namespace zet::test
