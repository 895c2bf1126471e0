// Keyboard tests: is one key (a virtual-key code given as a number or a text) or any
// key held down at this moment. Mouse buttons share the key codes and are refused.
#include <algorithm>
#include <bitset>

#include "system/System.h"
#include "zet/ZetOs.h"

namespace zet {
namespace {

constexpr const char* kKeyCodeText =
    "A numeric virtual-key code between 1 and 255; mouse buttons not accepted";

// The left, right and middle mouse buttons; the extra buttons 5 and 6 count as keys.
bool IsMouseButton(int code) { return code == 1 || code == 2 || code == 4; }

// The C runtime's atoi as Windows has it: leading blanks, an optional sign, the digits
// up to the first non-digit; 0 without digits; saturated at the int range.
int32_t Atoi(const char* s) {
  while (*s == ' ' || (*s >= '\t' && *s <= '\r')) ++s;
  const bool negative = *s == '-';
  if (*s == '-' || *s == '+') ++s;
  int64_t v = 0;
  for (; *s >= '0' && *s <= '9'; ++s) v = std::min<int64_t>(v * 10 + (*s - '0'), INT64_C(1) << 31);
  if (negative) return static_cast<int32_t>(-v);
  return static_cast<int32_t>(std::min<int64_t>(v, INT32_MAX));
}

// Both single-key tests: an invalid code is reported at level 2 and leaves "pressed"
// as it was.
int TestOneKey(const CArgs& a, int key) {
  if (key < 1 || key > 255 || IsMouseButton(key)) {
    CStdStr text;
    text.Format("Invalid key value: %d. Must be between 1 and 255 and not a mouse button "
                "virtual-key",
                key);
    a.Report(kReportError, "Test one key", text.c_str());
    return kOk;
  }
  a.Out(0) = CZetOs::IsKeyDown(key);
  return kOk;
}

class CZetKbdTestOneKey final : public TInstr<CZetKbdTestOneKey> {
 public:
  static void Describe(CDescriber& d) {
    d.Head("Test one key (number)", "Tests for a specific key press")
        .Input(kTypeNumber, "key code", 0.0, kKeyCodeText)
        .Output(kTypeBool, "pressed");
  }
  int Execute(IXInstrContext* ctx) override {
    CArgs a(ctx);
    return TestOneKey(a, a.TruncInt(0));
  }
};

class CZetKbdTestOneKeyStr final : public TInstr<CZetKbdTestOneKeyStr> {
 public:
  static void Describe(CDescriber& d) {
    d.Head("Test one key (string)", "Tests for a specific key press")
        .Input(kTypeString, "key code", "", kKeyCodeText)
        .Output(kTypeBool, "pressed");
  }
  int Execute(IXInstrContext* ctx) override {
    CArgs a(ctx);
    return TestOneKey(a, Atoi(a.Text(0)));
  }
};

// The lowest code held down wins (shift, 16, before a letter).
class CZetKbdTestAnyKey final : public TInstr<CZetKbdTestAnyKey> {
 public:
  static void Describe(CDescriber& d) {
    d.Head("Test any key", "Tests for any key press")
        .Output(kTypeBool, "pressed")
        .Output(kTypeNumber, "virtual-key code; mouse buttons not accepted");
  }
  int Execute(IXInstrContext* ctx) override {
    CArgs a(ctx);
    std::bitset<256> down;
    CZetOs::GetKeyboardState(&down);
    int code = 0;
    for (int k = 0; k < 256 && code == 0; ++k)
      if (down.test(static_cast<size_t>(k)) && !IsMouseButton(k)) code = k;
    a.Out(0) = code != 0;
    a.Out(1) = static_cast<double>(code);
    return kOk;
  }
};

}  // namespace
}  // namespace zet

#define ZET_FAMILY_Keyboard ZET_THIS_FAMILY
#include "frame/Factories.def"
