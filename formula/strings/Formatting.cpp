// Numbers to text and back: the two printf-style formatters, the parameter-driven
// number formatter and the scanner, the character-code converters and the variadic
// string builder.
//
// User formats reach the C runtime only through CStdStr::FormatDoubles, which parses
// them and gives each conversion one double (see ZetTypes.h for what %s, %n, %d, %c,
// stars and surplus conversions print). Texts are read through the value's const
// char* conversion, so an embedded zero byte ends a text, and texts are written back
// the same way: a %c of code 0 ends a formatted output there.
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <string>

#include "frame/Instr.h"

namespace zet {
namespace {

// The numbers a PrintfNumInf format may use; more inputs are refused.
constexpr int kMaxPrintfNumbers = 17;

class CPrintfNum final : public TInstr<CPrintfNum> {
 public:
  static void Describe(CDescriber& d) {
    d.Head("PrintfNum",
           "Formats a number as string. This formula is very similar to the "
           "C-language \"sprintf\" command. Most of the \"sprintf\"\x92"
           "s float type formatting flags are valid.")
        .Input(kTypeString, "formatting", kEmptyText)
        .Input(kTypeNumber, "number", 0.0)
        .Output(kTypeString, "formatted string");
  }
  int Execute(IXInstrContext* ctx) override {
    CArgs a(ctx);
    const double x = a.Number(1);
    a.Out(0) = CStdStr::FormatDoubles(a.Text(0), &x, 1).c_str();
    return kOk;
  }
};

class CPrintfNumInf final : public TInstr<CPrintfNumInf> {
 public:
  static void Describe(CDescriber& d) {
    d.Head("PrintfNumInf",
           "Formats 1 to 17 numbers into a string. This formula is similar to the "
           "C-language \"sprintf\" command. Most of the \"sprintf\"\x92"
           "s float type formatting flags are valid.")
        .Input(kTypeString, "formatting", kEmptyText)
        .Input(kTypeNumber, "number", 0.0)
        .Variadic()
        .Output(kTypeString, "formatted string");
  }
  int Execute(IXInstrContext* ctx) override {
    CArgs a(ctx);
    const int n = a.Count() - 1;
    if (n > kMaxPrintfNumbers) {
      a.Report(kReportWarning, "PrintfNumInf", "Too many number arguments");
      CStdStr zero;
      zero.Format("%1.0f", 0.0);
      a.Out(0) = zero;
      return kOk;
    }
    // Always all 17, zeros after the given ones: a format with more conversions than
    // numbers prints zeros for the missing ones.
    double numbers[kMaxPrintfNumbers] = {};
    for (int i = 0; i < n; ++i) numbers[i] = a.Number(i + 1);
    a.Out(0) = CStdStr::FormatDoubles(a.Text(0), numbers, kMaxPrintfNumbers).c_str();
    return kOk;
  }
};

class CChar2Num final : public TInstr<CChar2Num> {
 public:
  static void Describe(CDescriber& d) {
    d.Head("CharToNum",
           "Returns a numeric array containing the ASCII values of the input "
           "character string")
        .Input(kTypeString, "strToConvert", kEmptyText)
        .Output(kTypeNumberArray, "charVals");
  }
  int Execute(IXInstrContext* ctx) override {
    CArgs a(ctx);
    const char* text = a.Text(0);
    const size_t len = std::strlen(text);
    CZetNumberVector& out = a.Out(0).Ref<CZetNumberVector>();
    // Only a text past the vector cap (over 134 million bytes) can be refused.
    if (len > CZetNumberVector::kMaxSize || !out.Resize(static_cast<unsigned>(len))) return kFail;
    double* v = out.GetStorage();
    for (size_t i = 0; i < len; ++i) v[i] = static_cast<signed char>(text[i]);
    return kOk;
  }
};

class CNum2Char final : public TInstr<CNum2Char> {
 public:
  static void Describe(CDescriber& d) {
    d.Head("NumToChar", "Returns a string built from an array of numeric, ASCII values.")
        .Input(kTypeNumber, "char count", 1.0, "Character count, array size in characters")
        .Input(kTypeNumberArray, "chars")
        .Output(kTypeString, "string");
  }
  int Execute(IXInstrContext* ctx) override {
    CArgs a(ctx);
    const unsigned count = static_cast<unsigned>(ZetTruncInt32(a.Number(0)));
    const CZetNumberVector* chars = a.In(1).Get<CZetNumberVector>();  // anything else: empty
    const unsigned size = chars ? chars->Size() : 0u;
    // Compared as unsigned: a negative count takes the whole array.
    const unsigned n = count < size ? count : size;
    std::string s;
    s.reserve(n);
    for (unsigned i = 0; i < n; ++i) {
      const char c = static_cast<char>(ZetTruncInt32((*chars)[i]) & 0xFF);
      if (c == '\0') break;  // the output is a zero-terminated text
      s.push_back(c);
    }
    a.Out(0) = s;
    return kOk;
  }
};

class CCreateStrInf final : public TInstr<CCreateStrInf> {
 public:
  static void Describe(CDescriber& d) {
    d.Head("CreateStrInf", "Creates a new string from input strings")
        .Input(kTypeString, "string", kEmptyText, "input string")
        .Variadic()
        .Output(kTypeString, "new string");
  }
  int Execute(IXInstrContext* ctx) override {
    CArgs a(ctx);
    const int n = a.Count();
    size_t total = 0;
    for (int i = 0; i < n; ++i) total += std::strlen(a.Text(i));
    std::string s;
    s.reserve(total);
    for (int i = 0; i < n; ++i) s.append(a.Text(i));
    a.Out(0) = s;
    return kOk;
  }
};

// Category "Numeric", though they live with the text conversions. Both use the
// indexed accessors of the context.
class CNumberToString final : public TInstr<CNumberToString> {
 public:
  static void Describe(CDescriber& d) {
    d.Head("NumToString", "Returns a string representing given number.")
        .ParamBool("Parameters", "Show +/-",
                   "Always show + or - signs. If false on negative numbers will show -", false)
        .ParamInt("Parameters", "Number of digits",
                  "Used with padding. String will be formated to show at least specified "
                  "number of digits.",
                  8, 1, 1000)
        .ParamChoice("Parameters", "Integer field padding",
                     "Controls how integers digits are padded.", 0, 0, 2,
                     {{0, "No padding"}, {1, "Pad with '0'"}, {2, "Pad with ' '"}})
        .ParamInt("Parameters", "Number of decimal point digits",
                  "The value is rounded to the appropriate number of digits.", 3, 0, 1000)
        .Input(kTypeNumber, "number", 0.0)
        .Output(kTypeString, "string");
  }
  int Execute(IXInstrContext* ctx) override {
    const bool sign = ctx->GetParam(0)->AsBool();
    const int digits = ctx->GetParam(1)->AsInt();
    const int padding = ctx->GetParam(2)->AsInt();
    const int decimals = ctx->GetParam(3)->AsInt();
    const double x = ctx->GetInput(0)->AsDouble();
    // "%[+][0N| N].Df". The digit count is a printf field width (the whole field).
    std::string fmt = "%";
    if (sign) fmt += '+';
    if (padding == 1) fmt += '0' + std::to_string(digits);
    if (padding == 2) fmt += ' ' + std::to_string(digits);
    fmt += '.' + std::to_string(decimals) + 'f';
    // Out-of-range parameters (a host need not enforce 1..1000) make huge or odd
    // formats; the user-format engine keeps them bounded and harmless.
    *ctx->GetOutput(0) = CStdStr::FormatDoubles(fmt.c_str(), &x, 1);
    return kOk;
  }
};

class CStringToNumber final : public TInstr<CStringToNumber> {
 public:
  static void Describe(CDescriber& d) {
    d.Head("StringToNum", "Returns a number scanned from the given string.")
        .Input(kTypeString, "string", "",
               "String containing a number. Prefix with 0x for hex numbers.")
        .Output(kTypeNumber, "number", "Scanned value")
        .Output(kTypeBool, "success", "True if number was successfully scanned");
  }
  int Execute(IXInstrContext* ctx) override {
    const char* text = ctx->GetInput(0)->AsText();
    double value = 0.0;
    bool success = false;
    // "0x" anywhere in the text selects the hexadecimal scan, which the runtime
    // stores into a 32-bit int: 0xFFFFFFFF is -1.
    unsigned hex = 0;
    if ((std::strstr(text, "0x") || std::strstr(text, "0X")) && std::sscanf(text, "%x", &hex) == 1) {
      value = static_cast<int32_t>(hex);
      success = true;
    } else if (double scanned = 0.0; std::sscanf(text, "%lf", &scanned) == 1) {
      value = scanned;
      success = true;
    }
    *ctx->GetOutput(0) = value;
    *ctx->GetOutput(1) = success;
    return kOk;
  }
};

}  // namespace
}  // namespace zet

#define ZET_FAMILY_Formatting ZET_THIS_FAMILY
#include "frame/Factories.def"
