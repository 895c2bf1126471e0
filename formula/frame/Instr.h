// The instruction idiom: a CRTP base that owns each class's static descriptor,
// the builder that fills it, and the thin argument view Execute works through.
//
//   namespace {
//   class CDivide final : public TInstr<CDivide> {
//    public:
//     static void Describe(CDescriber& d) {
//     d.Head("Divide", "...").Input(...)...; } int Execute(IXInstrContext* ctx)
//     override { CArgs a(ctx); ... }
//   };
//   }  // namespace
//
// The class's row in Registry.def holds its identifier, id, category, effects and
// family (the file it lives in); Init puts the first three in the descriptor before
// Describe adds the rest, so a class never repeats them. The family file ends with
// frame/Factories.def, which defines from the rows the functions the registry calls
// to create each class's object and hand it its row; the classes themselves stay
// private to their family's file.
#pragma once

#include <initializer_list>
#include <string>
#include <utility>

#include "frame/Registry.h"
#include "zet/InstrPlugin.h"

namespace zet {

inline constexpr const char* kEmptyText = "***Empty***";

// A descriptor default: a number, Boolean, text or typed value; "none" lets the
// builder pick the kind's empty value (an empty array for array types).
class CDefault {
 public:
  CDefault() = default;
  CDefault(double v) { m_value = v; }  // NOLINT
  CDefault(bool v) { m_value = v; }  // NOLINT
  CDefault(const char* v) { m_value = v; }  // NOLINT
  CDefault(const CZetBaseType& v) { m_value = v; }  // NOLINT
  const CZetObject& Value() const { return m_value; }

 private:
  CZetObject m_value;
};

using CChoices = std::initializer_list<std::pair<int, const char*>>;

// Fills an SInstrInfo exactly as the descriptor rules say: the header is zeroed,
// every entry is appended fresh and then filled in place, ordinals are positions, and
// the kind is computed last (Finish).
class CDescriber {
 public:
  explicit CDescriber(SInstrInfo& info);
  ~CDescriber();  // Finish

  // The head every Describe starts with; category, identifier and id come from the
  // class's registry row.
  CDescriber& Head(const char* name, const char* description) {
    return Name(name).Description(description);
  }
  CDescriber& Name(const char* name);
  CDescriber& Category(const char* category);
  CDescriber& Ident(const char* ident, int id);
  CDescriber& Description(const char* text);

  // Parameters. Integer and choice values and limits are stored as ints.
  CDescriber& ParamBool(const char* group, const char* name, const char* desc, bool value,
                        int hint = 0);
  CDescriber& ParamInt(const char* group, const char* name, const char* desc, int value, int min,
                       int max, int hint = 0);
  CDescriber& ParamNumber(const char* group, const char* name, const char* desc, double value,
                          double min, double max, int hint = 0);
  CDescriber& ParamString(const char* group, const char* name, const char* desc,
                          const char* value, int hint = 0);
  CDescriber& ParamChoice(const char* group, const char* name, const char* desc, int value,
                          int min, int max, CChoices choices, int hint = 0);

  CDescriber& Input(int type, const char* name, const CDefault& def = {},
                    const char* desc = nullptr);
  CDescriber& Variadic();
  CDescriber& Output(int type, const char* name, const char* desc = nullptr);
  // The two words that decide kind 18/19; no class of this library sets them.
  CDescriber& KindWords(int32_t first, int32_t second);

 private:
  SInstrParam& NewParam(int type, const char* group, const char* name, const char* desc,
                        int hint);
  SInstrInfo& m_info;
};

// Empties a descriptor's lists (Term); the header stays.
void TermInfo(SInstrInfo& info);

// The one Execute of SetBoolean, PtSet and LnSet: output 0 becomes a copy of input 0,
// the whole value whatever its kind.
int ExecuteCopy(IXInstrContext* ctx);

template <class Derived>
class TInstr : public IXInstrPlugin {
 public:
  void Init() override {
    CDescriber d(s_info);
    if (s_row) d.Category(s_row->category).Ident(s_row->ident, s_row->id);
    Derived::Describe(d);
  }
  void Term() override { TermInfo(s_info); }
  SInstrInfo* GetInfo() override { return &s_info; }
  IXInstrPlugin* Create() override { return new Derived; }

  static SInstrInfo& Info() { return s_info; }
  // The class's registry row (set by its factory before the first object
  // exists).
  static void Bind(const SRegistryRow& row) { s_row = &row; }

 private:
  static inline SInstrInfo s_info;
  static inline const SRegistryRow* s_row = nullptr;
};

// The empty value of a kind: what an input of another kind reads as.
template <class T>
const T& EmptyValue() {
  static const T kEmpty;
  return kEmpty;
}

// The argument view of one Execute. Inputs, outputs and parameters are fetched from
// the context once.
//
// Reading never changes an input: scalar reads follow the conversion table of
// CZetObject, and a typed read (Get<T>, Point, Line) of a value of another kind gives
// the empty value of the declared kind (an empty array, the point (0, 0)), leaving the
// host's value as it was. Outputs are written through Out(i), or through OutRef<T>(i),
// which gives an output of another kind the declared kind first (the way a host's
// fresh, untyped output becomes the array an instruction fills).
class CArgs {
 public:
  explicit CArgs(IXInstrContext* ctx)
      : m_ctx(ctx), m_in(ctx->GetInputs()), m_out(ctx->GetOutputs()) {}

  int Count() const { return m_ctx->GetInputCount(); }
  const CZetObject& In(int i) const { return *m_in[i]; }
  double Number(int i) const { return m_in[i]->AsDouble(); }
  bool Bool(int i) const { return m_in[i]->AsBool(); }
  // The two integer reads the instructions distinguish: the number truncated toward
  // zero (indexes, counts, colours), and the value's own integer conversion, which
  // for a held integer or Boolean is that value itself.
  int TruncInt(int i) const { return ZetTruncInt32(m_in[i]->AsDouble()); }
  int OwnInt(int i) const { return m_in[i]->AsInt(); }
  const char* Text(int i) const { return m_in[i]->AsText(); }
  const std::string& String(int i) const { return m_in[i]->AsString(); }
  template <class T>
  const T& Get(int i) const {
    const T* v = m_in[i]->Get<T>();
    return v ? *v : EmptyValue<T>();
  }
  const CZetPoint& Point(int i) const { return Get<CZetPoint>(i); }
  const CZetLine& Line(int i) const { return Get<CZetLine>(i); }

  CZetObject& Out(int i) const { return *m_out[i]; }
  template <class T>
  T& OutRef(int i) const {
    return m_out[i]->Ref<T>();
  }
  const CZetObject& Param(int i) const { return *m_ctx->GetParams()[i]; }
  IXInstrContext* Context() const { return m_ctx; }

  // ReportError(level, source, text) through the notify service (kReportWarning or
  // kReportError).
  void Report(int level, const char* source, const char* text) const;
  // Report, then return kFail.
  int Fail(int level, const char* source, const char* text) const {
    Report(level, source, text);
    return kFail;
  }

 private:
  IXInstrContext* m_ctx;
  CZetObject** m_in;
  CZetObject** m_out;
};

}  // namespace zet
