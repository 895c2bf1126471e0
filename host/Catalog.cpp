// The catalogue: every descriptor as JSON (zet catalog), as Markdown (docs/catalogue.md)
// and as readable text (zet describe, zet list).
#include <map>
#include <sstream>

#include "ValueCodec.h"
#include "zet/ZetEffects.h"
#include "zet/ZetHost.h"

namespace zet::host {

namespace {

// The declared effects of this project's instructions, by identifier. The
// descriptor records have no room for them (they stay byte-exact) and the
// plug-in exports nothing but ZetPluginLibGet, so the host reads the plug-in's
// own registry rows, built into it.
const std::map<std::string, unsigned>& EffectsByIdent() {
  static const std::map<std::string, unsigned> effects = {
#define ZET_INSTR(Class, Family, Ident, Id, Effects) {Ident, Effects},
#include "../formula/frame/Registry.def"
  };
  return effects;
}

Json DescriptorJson(int position, const SInstrInfo& info) {
  Json j;
  j["position"] = position;
  j["kind"] = info.kind;
  j["name"] = TextJson(info.name);
  j["category"] = TextJson(info.category);
  j["identifier"] = TextJson(info.ident);
  j["id"] = info.id;
  j["description"] = TextJson(info.description);
  j["variadic"] = info.variadic != 0;
  Json params = Json::array();
  for (const SInstrParam& p : info.params) {
    Json choices = Json::array();
    for (const auto& [key, label] : p.choices) choices.push_back({key, Cp1252ToUtf8(label)});
    params.push_back({{"type", p.type}, {"group", TextJson(p.group)}, {"name", TextJson(p.name)},
                      {"description", TextJson(p.description)}, {"value", ValueJson(p.value)},
                      {"min", ValueJson(p.minimum)}, {"max", ValueJson(p.maximum)},
                      {"choices", choices}, {"hint", p.hint}});
  }
  j["params"] = params;
  Json inputs = Json::array();
  for (const SInstrInput& in : info.inputs)
    inputs.push_back({{"type", in.type}, {"name", TextJson(in.name)},
                      {"description", TextJson(in.description)},
                      {"default", ValueJson(in.defaultValue)}, {"ordinal", in.ordinal}});
  j["inputs"] = inputs;
  Json outputs = Json::array();
  for (const SInstrOutput& out : info.outputs)
    outputs.push_back({{"type", out.type}, {"name", TextJson(out.name)},
                       {"description", TextJson(out.description)}, {"ordinal", out.ordinal}});
  j["outputs"] = outputs;
  // Added last, so that the fields before it read as they always did. An
  // instruction the rows do not know (another plug-in's) has no "effects"
  // field: unknown, not none.
  if (unsigned effects = 0; InstrEffects(info.ident, &effects)) j["effects"] = EffectNames(effects);
  return j;
}

std::string EffectsText(const char* ident) {
  unsigned effects = 0;
  if (!InstrEffects(ident, &effects)) return "not declared";
  std::string text;
  for (const std::string& name : EffectNames(effects)) text += (text.empty() ? "" : ", ") + name;
  return text.empty() ? "none" : text;
}

const char* TypeName(int type) {
  const SZetTypeInfo* t = ZetTypeInfo(type);
  return t ? t->display : "?";
}

// A text as a Markdown code span that shows every blank (trailing ones too).
std::string Code(const char* text) {
  if (!text) return "(none)";
  std::string s = Cp1252ToUtf8(text);
  std::string out = "`";
  for (char c : s) {
    if (c == '`') out += "'";
    else if (c == '\n') out += "\\n";
    else if (c == '|') out += "\\|";
    else out += c;
  }
  return out + "`";
}

std::string Cell(const char* text) {
  if (!text) return "";
  std::string out;
  for (char c : Cp1252ToUtf8(text)) {
    if (c == '|') out += "\\|";
    else if (c == '\n') out += "<br>";
    else out += c;
  }
  return out;
}

}  // namespace

bool InstrEffects(const char* ident, unsigned* effects) {
  if (!ident) return false;
  const auto it = EffectsByIdent().find(ident);
  if (it == EffectsByIdent().end()) return false;
  *effects = it->second;
  return true;
}

std::string CatalogJson(CZetPluginModule& module) {
  const SInstrLibInfo* lib = module.Lib()->GetLibInfo();
  Json j;
  j["library"] = {{"version", lib->version}, {"info", TextJson(lib->info)}};
  Json list = Json::array();
  for (int i = 0; i < module.Count(); ++i) list.push_back(DescriptorJson(i + 1, *module.At(i)->GetInfo()));
  j["instructions"] = list;
  return j.dump(1);
}

std::string DescribeText(CZetPluginModule& module, int index) {
  const SInstrInfo& info = *module.At(index)->GetInfo();
  std::ostringstream o;
  o << "#" << index + 1 << " " << Code(info.name) << "  (" << Cp1252ToUtf8(info.category ? info.category : "")
    << ")\n";
  o << "identifier  " << Code(info.ident) << "  id " << info.id << "  kind " << info.kind
    << (info.variadic ? "  variadic" : "") << "\n";
  o << "description " << Cell(info.description) << "\n";
  o << "Effects: " << EffectsText(info.ident) << "\n";
  for (const SInstrParam& p : info.params) {
    o << "param  " << Code(p.name) << " : " << TypeName(p.type) << " [" << Cell(p.group) << "] = "
      << ValueJson(p.value).dump();
    if (!p.minimum.IsEmpty() || !p.maximum.IsEmpty())
      o << " (" << ValueJson(p.minimum).dump() << " .. " << ValueJson(p.maximum).dump() << ")";
    for (const auto& [key, label] : p.choices) o << "\n         " << key << " = " << Cp1252ToUtf8(label);
    o << "\n         " << Cell(p.description) << "\n";
  }
  for (const SInstrInput& in : info.inputs)
    o << "input  " << in.ordinal << " " << Code(in.name) << " : " << TypeName(in.type) << " = "
      << ValueJson(in.defaultValue).dump() << (in.description ? "  " + Cell(in.description) : "")
      << "\n";
  for (const SInstrOutput& out : info.outputs)
    o << "output " << out.ordinal << " " << Code(out.name) << " : " << TypeName(out.type)
      << (out.description ? "  " + Cell(out.description) : "") << "\n";
  return o.str();
}

std::string ListText(CZetPluginModule& module) {
  std::ostringstream o;
  for (int i = 0; i < module.Count(); ++i) {
    const SInstrInfo& info = *module.At(i)->GetInfo();
    o << i + 1 << "\t" << info.id << "\t" << Cp1252ToUtf8(info.ident ? info.ident : "") << "\t"
      << Cp1252ToUtf8(info.category ? info.category : "") << "\t"
      << Cp1252ToUtf8(info.name ? info.name : "") << "\n";
  }
  return o.str();
}

std::string CatalogMarkdown(CZetPluginModule& module) {
  const SInstrLibInfo* lib = module.Lib()->GetLibInfo();
  std::ostringstream o;
  o << "# Instruction catalogue\n\n"
    << "Generated by `zet catalog --format markdown` from the live descriptors; do not edit.\n\n"
    << "Library version " << lib->version << ": " << Cell(lib->info) << "\n\n"
    << "Names are shown as code so that trailing blanks stay visible.\n\n"
    << "## Categories in registry order\n\n| Positions | Category | Count |\n|---|---|---|\n";
  for (int first = 0; first < module.Count();) {
    const char* category = module.At(first)->GetInfo()->category;
    int last = first;
    while (last + 1 < module.Count() &&
           std::string(module.At(last + 1)->GetInfo()->category) == category)
      ++last;
    o << "| " << first + 1 << " to " << last + 1 << " | " << Cell(category) << " | "
      << last - first + 1 << " |\n";
    first = last + 1;
  }
  o << "\n## Instructions\n\n"
    << "| # | Name | Category | Identifier | Id |\n|---|---|---|---|---|\n";
  for (int i = 0; i < module.Count(); ++i) {
    const SInstrInfo& info = *module.At(i)->GetInfo();
    o << "| " << i + 1 << " | [" << Code(info.name) << "](#i" << i + 1 << ") | " << Cell(info.category)
      << " | " << Code(info.ident) << " | " << info.id << " |\n";
  }
  for (int i = 0; i < module.Count(); ++i) {
    const SInstrInfo& info = *module.At(i)->GetInfo();
    o << "\n<a id=\"i" << i + 1 << "\"></a>\n### " << i + 1 << ". " << Cell(info.name) << "\n\n"
      << Cell(info.description) << "\n\n"
      << "- name " << Code(info.name) << ", category " << Code(info.category) << "\n"
      << "- identifier " << Code(info.ident) << ", id " << info.id << ", kind " << info.kind
      << (info.variadic ? ", variadic (the last input repeats)" : "") << "\n"
      << "- effects: " << EffectsText(info.ident) << "\n";
    if (!info.params.empty()) {
      o << "\n| Parameter | Type | Group | Default | Min | Max | Choices | Hint | Description |\n"
        << "|---|---|---|---|---|---|---|---|---|\n";
      for (const SInstrParam& p : info.params) {
        std::string choices;
        for (const auto& [key, label] : p.choices)
          choices += (choices.empty() ? "" : "; ") + std::to_string(key) + " " + Code(label.c_str());
        o << "| " << Code(p.name) << " | " << TypeName(p.type) << " (" << p.type << ") | "
          << Cell(p.group) << " | " << ValueJson(p.value).dump() << " | "
          << ValueJson(p.minimum).dump() << " | " << ValueJson(p.maximum).dump() << " | " << choices
          << " | " << p.hint << " | " << Cell(p.description) << " |\n";
      }
    }
    if (!info.inputs.empty()) {
      o << "\n| In | Name | Type | Default | Description |\n|---|---|---|---|---|\n";
      for (const SInstrInput& in : info.inputs)
        o << "| " << in.ordinal << " | " << Code(in.name) << " | " << TypeName(in.type) << " ("
          << in.type << ") | " << Cell(ValueJson(in.defaultValue).dump().c_str()) << " | "
          << Cell(in.description) << " |\n";
    }
    if (!info.outputs.empty()) {
      o << "\n| Out | Name | Type | Description |\n|---|---|---|---|\n";
      for (const SInstrOutput& out : info.outputs)
        o << "| " << out.ordinal << " | " << Code(out.name) << " | " << TypeName(out.type) << " ("
          << out.type << ") | " << Cell(out.description) << " |\n";
    }
  }
  return o.str();
}

}  // namespace zet::host
