// zet exec: the JSON-Lines request runner. One execution context serves every request
// of a session; each request names an instruction and its values, each response gives
// the status, outputs and what the instruction told the host's services.
#include <map>
#include <memory>

#include "Request.h"
#include "ValueCodec.h"
#include "zet/ZetHost.h"
#include "zet/ZetImage.h"

namespace zet::host {

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
    DecodeValue(j, type, out, what, requestImages);
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
    if (req.contains("settings")) ApplySettings(ParseSettings(req["settings"]));
    const int index = ResolveInstr(module, req["instr"]);
    const SInstrInfo& info = *module.At(index)->GetInfo();
    const int declared = static_cast<int>(info.inputs.size());

    const Json inputs = req.value("inputs", Json::array());
    if (!inputs.is_array()) Fail("\"inputs\" must be a list");
    const int given = static_cast<int>(inputs.size());
    if (!info.variadic && given > declared)
      Fail("too many inputs: " + std::to_string(given) + " for " + std::to_string(declared));
    ctx.Reset(info, info.variadic ? given : declared);

    if (req.contains("params"))
      DecodeParams(info, req["params"], ctx.Params(),
                   requestImages);
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
    for (const SAnnotationRecord& a : ctx.Annotations().records) annots.push_back(AnnotationJson(a));
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

namespace {

// Error texts may quote the request's own bytes (the parser's "last read"), which
// need not be UTF-8: those bytes become U+FFFD instead of ending the session.
std::string Dump(const Json& j) { return j.dump(-1, ' ', false, Json::error_handler_t::replace); }

}  // namespace

std::string CZetJsonSession::Handle(const std::string& line) {
  try {
    const Json req = Json::parse(line);
    return Dump(m_impl->Run(req));
  } catch (const SDecodeError& e) {
    return Dump(Json{{"error", e.text}});
  } catch (const Json::parse_error& e) {
    return Dump(Json{{"error", std::string("bad JSON: ") + e.what()}});
  } catch (const std::exception& e) {
    return Dump(Json{{"error", e.what()}});
  }
}

}  // namespace zet::host
