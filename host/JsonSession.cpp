// zet's JSON: the value codec, the JSON-Lines request runner and the catalogue.
#include <cmath>
#include <map>
#include <memory>
#include <nlohmann/json.hpp>
#include <sstream>

#include "ImageIo.h"
#include "zet/ZetHost.h"
#include "zet/ZetImage.h"
#include "zet/ZetSetting.h"

namespace zet::host {

using Json = nlohmann::ordered_json;

namespace {

// ---- values to JSON ----

Json NumberJson(double d) {
  if (std::isnan(d)) return "NaN";
  if (std::isinf(d)) return d > 0 ? "Infinity" : "-Infinity";
  return d;
}

Json TextJson(const char* text) { return text ? Json(Cp1252ToUtf8(text)) : Json(nullptr); }

Json PointJson(const CZetPoint& p) { return {{"x", NumberJson(p.x)}, {"y", NumberJson(p.y)}}; }
Json LineJson(const CZetLine& l) { return {{"a", NumberJson(l.a)}, {"d", NumberJson(l.d)}}; }

template <class Vec, class F>
Json ListJson(const Vec& v, F element) {
  Json a = Json::array();
  for (const auto& e : v.Std()) a.push_back(element(e));
  return a;
}

Json ValueJson(const CZetObject& o) {
  switch (o.GetType()) {
    case ZET_OBJ_UNTYPED: return nullptr;
    case ZET_OBJ_BOOL: return o.AsBool();
    case ZET_OBJ_INT: return o.AsInt();
    case ZET_OBJ_DOUBLE: return NumberJson(o.AsDouble());
    case ZET_OBJ_STRING: return Cp1252ToUtf8(o.AsString());
    case ZET_OBJ_POINT: return PointJson(*o.Get<CZetPoint>());
    case ZET_OBJ_LINE: return LineJson(*o.Get<CZetLine>());
    case ZET_OBJ_CIRCLE: {
      const CZetCircle& c = *o.Get<CZetCircle>();
      return {{"cx", NumberJson(c.cx)}, {"cy", NumberJson(c.cy)}, {"r", NumberJson(c.r)}};
    }
    case ZET_OBJ_RECT: {
      const CZetRect& r = *o.Get<CZetRect>();
      return {{"cx", NumberJson(r.cx)}, {"cy", NumberJson(r.cy)}, {"w", NumberJson(r.w)},
              {"h", NumberJson(r.h)}, {"angle", NumberJson(r.angle)}};
    }
    case ZET_OBJ_HANDLE: {
      const CZetImage* img = o.Get<CZetHandle>()->GetImage();
      if (!img || !img->IsCreated()) return nullptr;
      return {{"width", img->Width()}, {"height", img->Height()}, {"attr", img->Attr()},
              {"sha256", ImageSha256(*img)}};
    }
    case ZET_OBJ_BOOL_ARRAY:
      return ListJson(*o.Get<CZetBoolVector>(), [](const CZetBool& b) { return Json(b.m_v); });
    case ZET_OBJ_NUMBER_ARRAY:
      return ListJson(*o.Get<CZetNumberVector>(), [](double d) { return NumberJson(d); });
    case ZET_OBJ_STRING_ARRAY:
      return ListJson(*o.Get<CZetStringVector>(),
                      [](const CZetString& s) { return Json(Cp1252ToUtf8(s.Str())); });
    case ZET_OBJ_POINT_ARRAY: return ListJson(*o.Get<CZetPointVector>(), PointJson);
    case ZET_OBJ_LINE_ARRAY: return ListJson(*o.Get<CZetLineVector>(), LineJson);
  }
  return nullptr;
}

// ---- JSON to values of a declared kind ----

struct SDecodeError {
  std::string text;
};

[[noreturn]] void Fail(const std::string& text) { throw SDecodeError{text}; }

double NumberOf(const Json& j, const std::string& what) {
  if (j.is_number()) return j.get<double>();
  if (j.is_string()) {
    const std::string s = j.get<std::string>();
    if (s == "NaN") return std::nan("");
    if (s == "Infinity") return HUGE_VAL;
    if (s == "-Infinity") return -HUGE_VAL;
  }
  Fail(what + ": expected a number, got " + j.dump());
}

int IntOf(const Json& j, const std::string& what) {
  if (j.is_number_integer()) {
    const auto v = j.get<int64_t>();
    if (v >= INT32_MIN && v <= INT32_MAX) return static_cast<int>(v);
  } else if (j.is_number_float()) {
    // Truncated toward zero, as the library turns numbers into integers.
    const double d = std::trunc(j.get<double>());
    if (d >= INT32_MIN && d <= INT32_MAX) return static_cast<int>(d);
  }
  Fail(what + ": expected a 32-bit integer, got " + j.dump());
}

std::string TextOf(const Json& j, const std::string& what) {
  if (!j.is_string()) Fail(what + ": expected a string, got " + j.dump());
  std::string out;
  if (!Utf8ToCp1252(j.get<std::string>(), &out))
    Fail(what + ": text has a character that Windows-1252 cannot hold");
  return out;
}

const Json& Field(const Json& j, const char* key, const std::string& what) {
  if (!j.is_object() || !j.contains(key)) Fail(what + ": missing \"" + key + "\" in " + j.dump());
  return j.at(key);
}

CZetPoint PointOf(const Json& j, const std::string& what) {
  return CZetPoint(NumberOf(Field(j, "x", what), what), NumberOf(Field(j, "y", what), what));
}

CZetLine LineOf(const Json& j, const std::string& what) {
  return CZetLine(NumberOf(Field(j, "a", what), what), NumberOf(Field(j, "d", what), what));
}

template <class Vec, class F>
void FillList(const Json& j, CZetObject& out, const std::string& what, F element) {
  if (!j.is_array()) Fail(what + ": expected an array, got " + j.dump());
  Vec& v = out.Ref<Vec>();
  if (!v.Resize(static_cast<unsigned>(std::min<size_t>(j.size(), Vec::kMaxSize + 1))))
    Fail(what + ": array too large");
  for (size_t i = 0; i < j.size(); ++i) v[static_cast<unsigned>(i)] = element(j[i]);
}

}  // namespace

// ---- the session ----

struct CZetJsonSession::SImpl {
  explicit SImpl(CZetPluginModule& m) : module(m) {}
  ~SImpl() {
    for (auto& [name, inst] : instances) inst.first->Destroy(inst.first);
  }

  CZetPluginModule& module;
  CZetExecContext ctx;
  // instance name -> (object, registry index it was made from)
  std::map<std::string, std::pair<IXInstrPlugin*, int>> instances;
  std::vector<std::unique_ptr<CZetImage>> requestImages;

  void Decode(const Json& j, int type, CZetObject& out, const std::string& what) {
    if (j.is_null()) {
      out.Clear();
      return;
    }
    switch (type) {
      case kTypeBool:
        if (!j.is_boolean()) Fail(what + ": expected true or false, got " + j.dump());
        out = j.get<bool>();
        return;
      case kTypeInt:
      case kTypeChoice: out = IntOf(j, what); return;
      case kTypeNumber: out = NumberOf(j, what); return;
      case kTypeString: out = TextOf(j, what); return;
      case kTypePoint: out = PointOf(j, what); return;
      case kTypeLine: out = LineOf(j, what); return;
      case kTypeImage: {
        const std::string file = TextOf(Field(j, "file", what), what);
        auto img = std::make_unique<CZetImage>();
        const std::string err = LoadImageFile(file, *img);
        if (!err.empty()) Fail(what + ": " + err);
        out = CZetHandle(img.get());
        requestImages.push_back(std::move(img));
        return;
      }
      case kTypeBoolArray:
        FillList<CZetBoolVector>(j, out, what, [&](const Json& e) {
          if (!e.is_boolean()) Fail(what + ": expected true or false, got " + e.dump());
          return CZetBool(e.get<bool>());
        });
        return;
      case kTypeNumberArray:
        FillList<CZetNumberVector>(j, out, what, [&](const Json& e) { return NumberOf(e, what); });
        return;
      case kTypeStringArray:
        FillList<CZetStringVector>(j, out, what,
                                   [&](const Json& e) { return CZetString(TextOf(e, what)); });
        return;
      case kTypePointArray:
        FillList<CZetPointVector>(j, out, what, [&](const Json& e) { return PointOf(e, what); });
        return;
      case kTypeLineArray:
        FillList<CZetLineVector>(j, out, what, [&](const Json& e) { return LineOf(e, what); });
        return;
      default: Fail(what + ": slot of unknown type " + std::to_string(type));
    }
  }

  void ApplySettings(const Json& s) {
    if (!s.is_object()) Fail("settings: expected an object");
    if (s.contains("angle_unit")) {
      const Json& u = s["angle_unit"];
      if (u == "degrees")
        CZetSetting::Inst().SetAngleUnit(EZetAngleUnit::kDegrees);
      else if (u == "radians")
        CZetSetting::Inst().SetAngleUnit(EZetAngleUnit::kRadians);
      else
        Fail("settings: angle_unit must be \"degrees\" or \"radians\"");
    }
    if (s.contains("annotation_color"))
      CZetSetting::Inst().SetDefaultAnnotationColor(IntOf(s["annotation_color"], "annotation_color"));
  }

  int Resolve(const Json& instr) {
    std::string error;
    int index = -1;
    if (instr.is_number_integer()) {
      const auto pos = instr.get<int64_t>();
      if (pos >= 1 && pos <= module.Count()) return static_cast<int>(pos - 1);
      Fail("no instruction at position " + instr.dump());
    }
    if (!instr.is_string()) Fail("\"instr\" must be a name, an identifier or a position");
    std::string name;
    if (!Utf8ToCp1252(instr.get<std::string>(), &name)) Fail("unknown instruction " + instr.dump());
    index = module.Find(name, &error);
    if (index < 0) Fail(error);
    return index;
  }

  IXInstrPlugin* Object(const Json& req, int index) {
    IXInstrPlugin* proto = module.At(index);
    if (!req.contains("instance")) return proto;
    const std::string name = TextOf(req["instance"], "instance");
    auto it = instances.find(name);
    if (it != instances.end()) {
      if (it->second.second != index)
        Fail("instance '" + name + "' belongs to another instruction");
      return it->second.first;
    }
    IXInstrPlugin* obj = proto->Create();
    if (!obj) Fail("instruction could not create an instance");
    instances.emplace(name, std::make_pair(obj, index));
    return obj;
  }

  Json Run(const Json& req) {
    requestImages.clear();
    if (!req.is_object()) Fail("a request must be a JSON object");
    if (!req.contains("instr")) Fail("missing \"instr\"");
    if (req.contains("settings")) ApplySettings(req["settings"]);
    const int index = Resolve(req["instr"]);
    const SInstrInfo& info = *module.At(index)->GetInfo();
    const int declared = static_cast<int>(info.inputs.size());

    const Json inputs = req.value("inputs", Json::array());
    if (!inputs.is_array()) Fail("\"inputs\" must be a list");
    const int given = static_cast<int>(inputs.size());
    if (!info.variadic && given > declared)
      Fail("too many inputs: " + std::to_string(given) + " for " + std::to_string(declared));
    ctx.Reset(info, info.variadic ? given : declared);

    // Parameters: a list in descriptor order or an object by name.
    if (req.contains("params")) {
      const Json& p = req["params"];
      if (p.is_array()) {
        if (p.size() > info.params.size()) Fail("too many params");
        for (size_t i = 0; i < p.size(); ++i)
          Decode(p[i], info.params[i].type, ctx.Param(static_cast<int>(i)),
                 std::string("param ") + std::to_string(i));
      } else if (p.is_object()) {
        for (const auto& [key, value] : p.items()) {
          std::string name;
          size_t i = 0;
          if (Utf8ToCp1252(key, &name))
            while (i < info.params.size() && name != info.params[i].name) ++i;
          if (i >= info.params.size()) Fail("unknown parameter '" + key + "'");
          Decode(value, info.params[i].type, ctx.Param(static_cast<int>(i)), "param '" + key + "'");
        }
      } else {
        Fail("\"params\" must be a list or an object");
      }
    }
    for (int i = 0; i < given; ++i) {
      const int slot = std::min(i, declared - 1);
      if (slot < 0) Fail("this instruction has no inputs");
      Decode(inputs[i], info.inputs[slot].type, ctx.Input(i), "input " + std::to_string(i));
    }
    if (req.contains("outputs")) {
      const Json& o = req["outputs"];
      if (!o.is_array() || o.size() > info.outputs.size()) Fail("\"outputs\" must be a list of at most one value per output");
      for (size_t i = 0; i < o.size(); ++i)
        Decode(o[i], info.outputs[i].type, ctx.Output(static_cast<int>(i)),
               "output " + std::to_string(i));
    }
    IXInstrPlugin* obj = Object(req, index);

    const SExecResult r = ctx.Run(obj);
    Json resp;
    resp["status"] = r.threw ? Json(nullptr) : Json(r.status);
    if (r.threw) resp["exception"] = Cp1252ToUtf8(r.exception);
    Json outs = Json::array();
    for (int i = 0; i < ctx.OutputSlots(); ++i) outs.push_back(ValueJson(ctx.Output(i)));
    resp["outputs"] = outs;
    Json reports = Json::array();
    for (const SReport& rep : ctx.Notify().reports)
      reports.push_back({{"level", rep.level}, {"source", Cp1252ToUtf8(rep.source)},
                         {"text", Cp1252ToUtf8(rep.text)}});
    resp["reports"] = reports;
    Json events = Json::array();
    for (const SEvent& e : ctx.Notify().events) events.push_back({{"code", e.code}, {"value", e.value}});
    resp["events"] = events;
    Json annots = Json::array();
    for (const SAnnotationRecord& a : ctx.Annotations().records) {
      Json rec;
      rec["op"] = a.op;
      for (const auto& [name, value] : a.fields) rec[name] = ValueJson(value);
      rec["trailing"] = {a.trailing[0], a.trailing[1]};
      annots.push_back(rec);
    }
    resp["annotations"] = annots;
    if (req.contains("save")) Save(req["save"], resp);
    return resp;
  }

  void Save(const Json& save, Json& resp) {
    if (!save.is_object()) Fail("\"save\" must map output indexes to files");
    for (const auto& [key, file] : save.items()) {
      char* end = nullptr;
      const long i = std::strtol(key.c_str(), &end, 10);
      if (key.empty() || *end || i < 0 || i >= ctx.OutputSlots()) Fail("save: no output " + key);
      const CZetHandle* h = ctx.Output(static_cast<int>(i)).Get<CZetHandle>();
      std::string err;
      if (!h || !h->GetImage() || !h->GetImage()->IsCreated())
        err = "output " + key + " holds no image";
      else
        err = SaveImageFile(TextOf(file, "save"), *h->GetImage());
      if (!err.empty()) resp["save_error"] = err;  // the run itself happened
    }
  }
};

CZetJsonSession::CZetJsonSession(CZetPluginModule& module) : m_impl(std::make_unique<SImpl>(module)) {}
CZetJsonSession::~CZetJsonSession() = default;

std::string CZetJsonSession::Handle(const std::string& line) {
  try {
    const Json req = Json::parse(line);
    return m_impl->Run(req).dump();
  } catch (const SDecodeError& e) {
    return Json{{"error", e.text}}.dump();
  } catch (const Json::parse_error& e) {
    return Json{{"error", std::string("bad JSON: ") + e.what()}}.dump();
  } catch (const std::exception& e) {
    return Json{{"error", e.what()}}.dump();
  }
}

// ---- catalogue ----

namespace {

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
  return j;
}

const char* TypeName(int type) {
  switch (type) {
    case kTypeBool: return "Boolean";
    case kTypeInt: return "integer";
    case kTypeNumber: return "number";
    case kTypeString: return "string";
    case kTypePoint: return "point";
    case kTypeLine: return "line";
    case kTypeImage: return "image";
    case kTypeChoice: return "choice";
    case kTypeBoolArray: return "Boolean array";
    case kTypeNumberArray: return "number array";
    case kTypeStringArray: return "string array";
    case kTypePointArray: return "point array";
    case kTypeLineArray: return "line array";
    default: return "?";
  }
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
      << (info.variadic ? ", variadic (the last input repeats)" : "") << "\n";
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
