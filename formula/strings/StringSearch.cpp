// Texts compared, searched and measured: compare, the three searches, the character
// at a position, the length and the word lengths.
//
// Texts are single bytes; positions are 0-based byte offsets and come out as numbers.
#include <algorithm>
#include <cctype>
#include <string>

#include "strings/Text.h"

namespace zet {
namespace {

// Search results as numbers: npos is -1.
double Found(size_t pos) { return pos == std::string_view::npos ? -1.0 : static_cast<double>(pos); }

// The classic "C" locale's lower-case mapping, whatever locale the process runs in.
unsigned char LowerC(unsigned char c) { return c >= 'A' && c <= 'Z' ? c + ('a' - 'A') : c; }

// Case-insensitive comparison of two zero-terminated texts: lower-cased bytes compared
// as signed 8-bit values, up to a difference or the end of the first text (whose
// terminating zero takes part, so "abc" is greater than "abc\xE9").
int CompareNoCase(const char* s1, const char* s2) {
  for (;; ++s1, ++s2) {
    const signed char c1 = static_cast<signed char>(LowerC(static_cast<unsigned char>(*s1)));
    const signed char c2 = static_cast<signed char>(LowerC(static_cast<unsigned char>(*s2)));
    if (c1 != c2) return c1 < c2 ? -1 : 1;
    if (c1 == 0) return 0;
  }
}

class CCompStr final : public TInstr<CCompStr> {
 public:
  static void Describe(CDescriber& d) {
    d.Head("CompStr",
           "Returns -1 if the first string is less than the second string, 0 if they "
           "are equal, 1 if it is greater. The comparison is case "
           "sensitive by default.")
        .Input(kTypeString, "string1", kEmptyText)
        .Input(kTypeString, "string2", kEmptyText)
        .Input(kTypeBool, "case sensitive", true)
        .Output(kTypeNumber, "result");
  }
  // Bytes 128 to 255 order after ASCII when case sensitive (the standard string
  // comparison, unsigned bytes) and before it when not (signed bytes); both are kept.
  int Execute(IXInstrContext* ctx) override {
    CArgs a(ctx);
    int r;
    if (a.Bool(2)) {
      r = TextArg(a, 0).compare(TextArg(a, 1));
    } else {
      r = CompareNoCase(a.Text(0), a.Text(1));
    }
    a.Out(0) = r < 0 ? -1.0 : r > 0 ? 1.0 : 0.0;
    return kOk;
  }
};

class CFindStr final : public TInstr<CFindStr> {
 public:
  static void Describe(CDescriber& d) {
    d.Head("FindStr",
           "Searches the what string in the source string and returns the position "
           "of the first occurence if any or -1 if not found. Case sensitive.")
        .Input(kTypeString, "src", kEmptyText)
        .Input(kTypeString, "what", kEmptyText)
        .Output(kTypeNumber, "pos found");
  }
  int Execute(IXInstrContext* ctx) override {
    CArgs a(ctx);
    a.Out(0) = Found(TextArg(a, 0).find(TextArg(a, 1)));  // an empty `what` is at 0
    return kOk;
  }
};

class CFindStrReverse final : public TInstr<CFindStrReverse> {
 public:
  static void Describe(CDescriber& d) {
    d.Head("FindStrReverse",
           "Returns the position of 'what' found in a reverse search of 'src', or -1 "
           "if not found. Case sensitive.")
        .Input(kTypeString, "src", kEmptyText, "String to search")
        .Input(kTypeString, "what", kEmptyText, "Find this string")
        .Output(kTypeNumber, "pos found");
  }
  int Execute(IXInstrContext* ctx) override {
    CArgs a(ctx);
    a.Out(0) = Found(TextArg(a, 0).rfind(TextArg(a, 1)));  // an empty `what`: the length
    return kOk;
  }
};

class CFindStrNth final : public TInstr<CFindStrNth> {
 public:
  static void Describe(CDescriber& d) {
    d.Head("FindStrNth",
           "Returns the position of the Nth occurrence of 'what' in a forward search "
           "of 'src' or, -1 if not found. Case sensitive.")
        .Input(kTypeString, "src", kEmptyText)
        .Input(kTypeString, "what", kEmptyText)
        .Input(kTypeNumber, "Nth", 0.0, "Find this occurrence of 'what' in 'src'")
        .Output(kTypeNumber, "pos found");
  }
  // Occurrences do not overlap. One that ends exactly at the end of `src` is never
  // reported, even as the Nth: the search gives up as soon as the next start would be
  // at or past the end. Kept as the instruction has always behaved.
  int Execute(IXInstrContext* ctx) override {
    CArgs a(ctx);
    const std::string_view src = TextArg(a, 0), what = TextArg(a, 1);
    const int32_t nth = std::max<int32_t>(IntArg(a, 2), 1);
    size_t pos = std::string_view::npos;
    if (!src.empty() && !what.empty()) {
      size_t start = 0;
      for (int32_t k = 0; k < nth; ++k) {
        pos = src.find(what, start);
        if (pos == std::string_view::npos) break;
        start = pos + what.size();
        if (start >= src.size()) {
          pos = std::string_view::npos;
          break;
        }
      }
    }
    a.Out(0) = Found(pos);
    return kOk;
  }
};

class CGetAt final : public TInstr<CGetAt> {
 public:
  static void Describe(CDescriber& d) {
    d.Head("GetAt",
           "Returns the numerical value of the character at position pos in the "
           "string.")
        .Input(kTypeString, "string", kEmptyText)
        .Input(kTypeNumber, "pos", 0.0)
        .Output(kTypeNumber, "char");
  }
  // At pos == length the string's own bounds check throws std::out_of_range, which
  // leaves Execute to the host: one of the two faults the contract keeps on purpose.
  int Execute(IXInstrContext* ctx) override {
    CArgs a(ctx);
    const int32_t pos = IntArg(a, 1);
    if (pos < 0) return kOk;  // output unchanged
    const CStdStr s(a.Text(0));
    if (static_cast<size_t>(pos) > s.size()) {
      a.Out(0) = -1.0;
      return kOk;
    }
    a.Out(0) = static_cast<double>(static_cast<signed char>(s.at(static_cast<size_t>(pos))));
    return kOk;
  }
};

class CLenStr final : public TInstr<CLenStr> {
 public:
  static void Describe(CDescriber& d) {
    d.Head("LenStr", "Returns the length of the string (in characters).")
        .Input(kTypeString, "string", kEmptyText)
        .Output(kTypeNumber, "length");
  }
  int Execute(IXInstrContext* ctx) override {
    CArgs a(ctx);
    a.Out(0) = static_cast<double>(TextArg(a, 0).size());
    return kOk;
  }
};

class CWordLengthStr final : public TInstr<CWordLengthStr> {
 public:
  static void Describe(CDescriber& d) {
    d.Head("GetWordLength",
           "Get length, in characters, of the smallest and largest words in string")
        .Input(kTypeString, "string", kEmptyText)
        .Output(kTypeNumber, "min word length")
        .Output(kTypeNumber, "max word length")
        .Output(kTypeNumber, "word count");
  }
  // Words are maximal runs of bytes the C runtime's isspace rejects (in the C locale:
  // all but blank, \t \n \v \f \r; bytes 128 to 255 are word bytes).
  int Execute(IXInstrContext* ctx) override {
    CArgs a(ctx);
    size_t minLen = 0, maxLen = 0, count = 0, cur = 0;
    const auto endWord = [&] {
      if (cur == 0) return;
      minLen = count == 0 ? cur : std::min(minLen, cur);
      maxLen = std::max(maxLen, cur);
      ++count;
      cur = 0;
    };
    for (const char c : TextArg(a, 0)) {
      if (std::isspace(static_cast<unsigned char>(c)))
        endWord();
      else
        ++cur;
    }
    endWord();
    a.Out(0) = static_cast<double>(minLen);
    a.Out(1) = static_cast<double>(maxLen);
    a.Out(2) = static_cast<double>(count);
    return kOk;
  }
};

}  // namespace
}  // namespace zet

#define ZET_FAMILY_StringSearch ZET_THIS_FAMILY
#include "frame/Factories.def"
