// The descriptor builder and the argument view's report.
#include "frame/Instr.h"

namespace zet {

CDescriber::CDescriber(SInstrInfo& info) : m_info(info) {
  // Zero the header; the lists are left as they are (empty after Term), so a second
  // Init without Term appends them a second time.
  m_info.kind = 0;
  m_info.name = m_info.category = m_info.ident = m_info.description = nullptr;
  m_info.id = 0;
  m_info.reserved7 = 0;
  m_info.reserved8 = 0;
  m_info.variadic = 0;
  m_info.reserved10[0] = m_info.reserved10[1] = 0;
  m_info.kindWords[0] = m_info.kindWords[1] = 0;
  m_info.reserved12[0] = m_info.reserved12[1] = 0;
  m_info.reserved16 = 0;
}

CDescriber::~CDescriber() {
  if (m_info.kind == 0) {
    if (m_info.kindWords[0] == 0 && m_info.kindWords[1] == 0)
      m_info.kind = kKindPlain;
    else
      m_info.kind = m_info.outputs.empty() ? kKindWordsNoOutputs : kKindWordsWithOutputs;
  }
}

CDescriber& CDescriber::Name(const char* name) {
  m_info.name = name;
  return *this;
}
CDescriber& CDescriber::Category(const char* category) {
  m_info.category = category;
  return *this;
}
CDescriber& CDescriber::Ident(const char* ident, int id) {
  m_info.ident = ident;
  m_info.id = id;
  m_info.reserved7 = 0;
  return *this;
}
CDescriber& CDescriber::Description(const char* text) {
  m_info.description = text;
  return *this;
}

SInstrParam& CDescriber::NewParam(int type, const char* group, const char* name,
                                  const char* desc, int hint) {
  SInstrParam& p = m_info.params.emplace_back();
  p.type = type;
  p.group = group;
  p.name = name;
  p.description = desc;
  p.hint = hint;
  return p;
}

CDescriber& CDescriber::ParamBool(const char* group, const char* name, const char* desc,
                                  bool value, int hint) {
  NewParam(kTypeBool, group, name, desc, hint).value = value;
  return *this;
}

CDescriber& CDescriber::ParamInt(const char* group, const char* name, const char* desc, int value,
                                 int min, int max, int hint) {
  SInstrParam& p = NewParam(kTypeInt, group, name, desc, hint);
  p.value = value;
  p.minimum = min;
  p.maximum = max;
  return *this;
}

CDescriber& CDescriber::ParamNumber(const char* group, const char* name, const char* desc,
                                    double value, double min, double max, int hint) {
  SInstrParam& p = NewParam(kTypeNumber, group, name, desc, hint);
  p.value = value;
  p.minimum = min;
  p.maximum = max;
  return *this;
}

CDescriber& CDescriber::ParamString(const char* group, const char* name, const char* desc,
                                    const char* value, int hint) {
  NewParam(kTypeString, group, name, desc, hint).value = value;
  return *this;
}

CDescriber& CDescriber::ParamChoice(const char* group, const char* name, const char* desc,
                                    int value, int min, int max, CChoices choices, int hint) {
  SInstrParam& p = NewParam(kTypeChoice, group, name, desc, hint);
  p.value = value;
  p.minimum = min;
  p.maximum = max;
  for (const auto& [key, label] : choices) p.choices.emplace(key, label);
  return *this;
}

CDescriber& CDescriber::Input(int type, const char* name, const CDefault& def, const char* desc) {
  SInstrInput& in = m_info.inputs.emplace_back();
  in.type = type;
  in.name = name;
  in.description = desc;
  const SZetTypeInfo* t = ZetTypeInfo(type);
  if (!def.Value().IsEmpty())
    in.defaultValue = def.Value();
  else if (t && t->element)
    in.defaultValue.SetType(t->kind);  // an empty array
  in.ordinal = static_cast<int>(m_info.inputs.size()) - 1;
  return *this;
}

CDescriber& CDescriber::Variadic() {
  m_info.variadic = 1;
  return *this;
}

CDescriber& CDescriber::Output(int type, const char* name, const char* desc) {
  SInstrOutput& out = m_info.outputs.emplace_back();
  out.type = type;
  out.name = name;
  out.description = desc;
  out.ordinal = static_cast<int>(m_info.outputs.size()) - 1;
  return *this;
}

CDescriber& CDescriber::KindWords(int32_t first, int32_t second) {
  m_info.kindWords[0] = first;
  m_info.kindWords[1] = second;
  return *this;
}

void TermInfo(SInstrInfo& info) {
  for (SInstrInput& in : info.inputs) in.defaultValue.Clear();
  for (SInstrParam& p : info.params) {
    p.value.Clear();
    p.minimum.Clear();
    p.maximum.Clear();
  }
  info.inputs.clear();
  info.outputs.clear();
  info.params.clear();
}

int ExecuteCopy(IXInstrContext* ctx) {
  *ctx->GetOutputs()[0] = *ctx->GetInputs()[0];
  return kOk;
}

void CArgs::Report(int level, const char* source, const char* text) const {
  auto* notify = static_cast<IXInstrNotify*>(m_ctx->GetService(kServiceNotify));
  if (notify) notify->ReportError(level, CStdStr(source), CStdStr(text));
}

}  // namespace zet
