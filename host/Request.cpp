// Naming instructions, parameters and slots (see Request.h).
#include "Request.h"

#include <cstdlib>

namespace zet::host {

SSettings ParseSettings(const Json& s) {
  if (!s.is_object()) Fail("settings: expected an object");
  SSettings out;
  if (s.contains("angle_unit")) {
    const Json& u = s["angle_unit"];
    if (u == "degrees")
      out.angleUnit = EZetAngleUnit::kDegrees;
    else if (u == "radians")
      out.angleUnit = EZetAngleUnit::kRadians;
    else
      Fail("settings: angle_unit must be \"degrees\" or \"radians\"");
  }
  if (s.contains("annotation_color"))
    out.annotationColor = IntOf(s["annotation_color"], "annotation_color");
  return out;
}

void ApplySettings(const SSettings& s) {
  if (s.angleUnit) CZetSetting::Inst().SetAngleUnit(*s.angleUnit);
  if (s.annotationColor) CZetSetting::Inst().SetDefaultAnnotationColor(*s.annotationColor);
}

int ResolveInstr(CZetPluginModule& module, const Json& instr) {
  if (instr.is_number_integer()) {
    const auto pos = instr.get<int64_t>();
    if (pos >= 1 && pos <= module.Count()) return static_cast<int>(pos - 1);
    Fail("no instruction at position " + Brief(instr));
  }
  if (!instr.is_string()) Fail("\"instr\" must be a name, an identifier or a position");
  std::string name, error;
  if (!Utf8ToCp1252(instr.get<std::string>(), &name)) Fail("unknown instruction " + Brief(instr));
  const int index = module.Find(name, &error);
  if (index < 0) Fail(error);
  return index;
}

template <class Entry>
int EntryIndex(const std::vector<Entry>& entries, const std::string& key) {
  std::string name;
  if (Utf8ToCp1252(key, &name))
    for (size_t i = 0; i < entries.size(); ++i)
      if (entries[i].name && name == entries[i].name) return static_cast<int>(i);
  if (!key.empty() && key.find_first_not_of("0123456789") == std::string::npos) {
    const long i = std::strtol(key.c_str(), nullptr, 10);
    if (i >= 0 && static_cast<size_t>(i) < entries.size()) return static_cast<int>(i);
  }
  return -1;
}
template int EntryIndex(const std::vector<SInstrParam>&, const std::string&);
template int EntryIndex(const std::vector<SInstrInput>&, const std::string&);
template int EntryIndex(const std::vector<SInstrOutput>&, const std::string&);

void DecodeParams(const SInstrInfo& info, const Json& params,
                  std::span<CZetObject> slots, std::vector<std::unique_ptr<CZetImage>>& images) {
  if (params.is_array()) {
    if (params.size() > info.params.size()) Fail("too many params");
    for (size_t i = 0; i < params.size(); ++i)
      DecodeValue(params[i], info.params[i].type, slots[i],
                  "param " + std::to_string(i), images);
  } else if (params.is_object()) {
    for (const auto& [key, value] : params.items()) {
      std::string name;
      int i = -1;
      if (Utf8ToCp1252(key, &name))
        for (size_t k = 0; k < info.params.size() && i < 0; ++k)
          if (name == info.params[k].name) i = static_cast<int>(k);
      if (i < 0) Fail("unknown parameter '" + Cut(key) + "'");
      DecodeValue(value, info.params[i].type, slots[static_cast<size_t>(i)],
                  "param '" + Cut(key) + "'", images);
    }
  } else {
    Fail("\"params\" must be a list or an object");
  }
}

}  // namespace zet::host
