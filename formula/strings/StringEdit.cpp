// Texts built and cut: set, copy, append, pack, left, right, mid, trim, replace,
// set a character and insert.
//
// "Output unchanged" below means the instruction writes nothing, so the output keeps
// what it held, and still succeeds. Builders reserve once and append, so their time
// is linear in the total length.
#include <algorithm>
#include <cstring>
#include <string>

#include "strings/Text.h"

namespace zet {
namespace {

// The substring from `first`, at most `count` bytes: empty when `first` is past the
// end or `count` is negative.
std::string_view MidOf(std::string_view s, int64_t first, int64_t count) {
  if (first > static_cast<int64_t>(s.size()) || count < 0) return {};
  return s.substr(static_cast<size_t>(first), static_cast<size_t>(count));
}

class CStringSet final : public TInstr<CStringSet> {
 public:
  static void Describe(CDescriber& d) {
    d.Head("SetString", "Sets a string to the specified value")
        .Input(kTypeString, "string", kEmptyText)
        .Output(kTypeString, "output");
  }
  int Execute(IXInstrContext* ctx) override {
    CArgs a(ctx);
    a.Out(0) = a.In(0);  // the whole value, not a conversion to text
    return kOk;
  }
};

class CAddStr final : public TInstr<CAddStr> {
 public:
  static void Describe(CDescriber& d) {
    d.Head("AddStr", "Creates a new string by appending string2 to string1.")
        .Input(kTypeString, "string1", kEmptyText)
        .Input(kTypeString, "string2", kEmptyText)
        .Output(kTypeString, "string");
  }
  int Execute(IXInstrContext* ctx) override {
    CArgs a(ctx);
    const std::string_view s1 = TextArg(a, 0), s2 = TextArg(a, 1);
    std::string s;
    s.reserve(s1.size() + s2.size());
    s.append(s1).append(s2);
    MoveText(a.Out(0), std::move(s));
    return kOk;
  }
};

class CCopyStr final : public TInstr<CCopyStr> {
 public:
  static void Describe(CDescriber& d) {
    d.Head("CopyStr", "Returns a copy of the input string.")
        .Input(kTypeString, "string", kEmptyText)
        .Output(kTypeString, "string copy");
  }
  int Execute(IXInstrContext* ctx) override {
    CArgs a(ctx);
    SetText(a.Out(0), TextArg(a, 0));
    return kOk;
  }
};

// LeftStr, RightStr and MidStr name their one output "string", as AddStr does.
class CLeftStr final : public TInstr<CLeftStr> {
 public:
  static void Describe(CDescriber& d) {
    d.Head("LeftStr",
           "Returns a new string consisting of the n leftmost chars of the argument "
           "string.")
        .Input(kTypeString, "string", kEmptyText)
        .Input(kTypeNumber, "left n", 0.0)
        .Output(kTypeString, "string");
  }
  int Execute(IXInstrContext* ctx) override {
    CArgs a(ctx);
    const int32_t n = IntArg(a, 1);
    if (n < 0) return kOk;  // output unchanged
    SetText(a.Out(0), TextArg(a, 0).substr(0, static_cast<size_t>(n)));
    return kOk;
  }
};

class CRightStr final : public TInstr<CRightStr> {
 public:
  static void Describe(CDescriber& d) {
    d.Head("RightStr",
           "Returns a new string consisting of the n rightmost chars of the argument "
           "string.")
        .Input(kTypeString, "string", kEmptyText)
        .Input(kTypeNumber, "right n", 0.0)
        .Output(kTypeString, "string");
  }
  int Execute(IXInstrContext* ctx) override {
    CArgs a(ctx);
    const int32_t n = IntArg(a, 1);
    if (n < 0) return kOk;  // output unchanged
    const std::string_view s = TextArg(a, 0);
    SetText(a.Out(0), s.substr(s.size() - std::min(s.size(), static_cast<size_t>(n))));
    return kOk;
  }
};

class CMidStr final : public TInstr<CMidStr> {
 public:
  static void Describe(CDescriber& d) {
    d.Head("MidStr",
           "Returns a new string consisting of the middle n characters of the "
           "argument string, starting at position p.")
        .Input(kTypeString, "string", kEmptyText)
        .Input(kTypeNumber, "start pos", 0.0)
        .Input(kTypeNumber, "mid n", 0.0)
        .Output(kTypeString, "string");
  }
  int Execute(IXInstrContext* ctx) override {
    CArgs a(ctx);
    const int32_t p = IntArg(a, 1), n = IntArg(a, 2);
    if (p < 0 || n < 0) return kOk;  // output unchanged
    SetText(a.Out(0), MidOf(TextArg(a, 0), p, n));
    return kOk;
  }
};

class CTrimStr final : public TInstr<CTrimStr> {
 public:
  static void Describe(CDescriber& d) {
    d.Head("TrimStr",
           "Return a new string obtained by eliminating m leading and n trailing "
           "characters from the argument string.")
        .Input(kTypeString, "string", kEmptyText)
        .Input(kTypeNumber, "leading m", 0.0)
        .Input(kTypeNumber, "trailing n", 0.0)
        .Output(kTypeString, "trimmed");
  }
  int Execute(IXInstrContext* ctx) override {
    CArgs a(ctx);
    const int32_t m = IntArg(a, 1), n = IntArg(a, 2);
    if (m < 0 || n < 0) return kOk;  // output unchanged
    const std::string_view s = TextArg(a, 0);
    SetText(a.Out(0), MidOf(s, m, static_cast<int64_t>(s.size()) - n - m));
    return kOk;
  }
};

class CPackStr final : public TInstr<CPackStr> {
 public:
  static void Describe(CDescriber& d) {
    d.Head("PackStr", "Returns a string built from concatenating input strings.")
        .Input(kTypeStringArray, "strings")
        .Output(kTypeString, "concat string");
  }
  int Execute(IXInstrContext* ctx) override {
    CArgs a(ctx);
    std::string s;
    // Anything but a string array packs as an empty one.
    if (const CZetStringVector* v = a.In(0).Get<CZetStringVector>()) {
      size_t total = 0;
      for (const CZetString& e : v->Std()) total += std::strlen(e);
      s.reserve(total);
      for (const CZetString& e : v->Std()) s.append(static_cast<const char*>(e));
    }
    MoveText(a.Out(0), std::move(s));
    return kOk;
  }
};

class CReplaceStr final : public TInstr<CReplaceStr> {
 public:
  static void Describe(CDescriber& d) {
    d.Head("ReplaceStr",
           "Replaces all the occurences of the what string found in the specified "
           "string with the replacement string. Case sensitive.")
        .Input(kTypeString, "source", kEmptyText)
        .Input(kTypeString, "what", kEmptyText)
        .Input(kTypeString, "replacement", kEmptyText)
        .Output(kTypeString, "replaced");
  }
  int Execute(IXInstrContext* ctx) override {
    CArgs a(ctx);
    // Left to right, going on after each inserted replacement: a replacement that
    // contains `what` is not replaced again. An empty `what` replaces nothing.
    CStdStr s(TextArg(a, 0));
    s.Replace(std::string(TextArg(a, 1)), std::string(TextArg(a, 2)));
    MoveText(a.Out(0), std::move(s));
    return kOk;
  }
};

class CSetAtStr final : public TInstr<CSetAtStr> {
 public:
  static void Describe(CDescriber& d) {
    d.Head("SetAtStr", "Sets the character argument at position pos in the specified string.")
        .Input(kTypeString, "string", kEmptyText)
        .Input(kTypeNumber, "pos", 0.0)
        .Input(kTypeNumber, "char", 0.0)
        .Output(kTypeString, "new string");
  }
  int Execute(IXInstrContext* ctx) override {
    CArgs a(ctx);
    const int32_t pos = IntArg(a, 1), c = IntArg(a, 2);
    const std::string_view text = TextArg(a, 0);
    if (pos < 0 || c < 0 || static_cast<size_t>(pos) >= text.size()) return kOk;  // unchanged
    std::string s(text);
    s[static_cast<size_t>(pos)] = static_cast<char>(c & 0xFF);
    // Texts end at their first zero byte, here as everywhere: setting code 0 cuts the
    // text at pos rather than leave bytes no reader of a text would see.
    if (s[static_cast<size_t>(pos)] == '\0') s.resize(static_cast<size_t>(pos));
    MoveText(a.Out(0), std::move(s));
    return kOk;
  }
};

class CInsertAtStr final : public TInstr<CInsertAtStr> {
 public:
  static void Describe(CDescriber& d) {
    d.Head("InsertAtStr", "Inserts the argument string at position pos in the specified string.")
        .Input(kTypeString, "string", kEmptyText)
        .Input(kTypeNumber, "pos", 0.0)
        .Input(kTypeString, "ins string", kEmptyText)
        .Output(kTypeString, "new string");
  }
  int Execute(IXInstrContext* ctx) override {
    CArgs a(ctx);
    SetText(a.Out(0), kEmptyText);
    const int32_t pos = IntArg(a, 1);
    const std::string_view text = TextArg(a, 0), ins = TextArg(a, 2);
    // Only strictly inside the text: inserting at its end is refused.
    if (pos < 0 || static_cast<size_t>(pos) >= text.size()) return kOk;
    std::string s;
    s.reserve(text.size() + ins.size());
    s.append(text.substr(0, static_cast<size_t>(pos))).append(ins).append(text.substr(static_cast<size_t>(pos)));
    MoveText(a.Out(0), std::move(s));
    return kOk;
  }
};

}  // namespace
}  // namespace zet

#define ZET_FAMILY_StringEdit ZET_THIS_FAMILY
#include "frame/Factories.def"
