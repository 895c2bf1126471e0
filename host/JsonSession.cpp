// zet exec: the JSON-Lines request runner. One execution context serves every request
// of a session; each request names an instruction and its values, each response gives
// the status, outputs and what the instruction told the host's services.
#include <exception>
#include <map>
#include <new>
#include <optional>
#include <ostream>
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
        Fail("instance '" + Cut(name) + "' belongs to another instruction");
      return it->second.first;
    }
    IXInstrPlugin* obj = proto->Create();
    if (!obj) Fail("instruction could not create an instance");
    instances.emplace(name, std::make_pair(obj, index));
    return obj;
  }

  // The answer's text; with a sink, text beyond CZetJsonSession::kStreamAbove bytes
  // has already been written there.
  // A request line: read in one pass when it can be, else parsed whole.
  std::string RunLine(const std::string& line, std::ostream* sink = nullptr) {
    {
      SReadRequest read;
      if (ReadRequest(line, module, read)) return Run(std::move(read.tree), sink, &read.inputs);
    }
    return Run(ParseJson(line), sink);
  }

  // `read`: inputs already made from the line (ReadRequest), whose places in `req`
  // hold null.
  std::string Run(Json req, std::ostream* sink = nullptr, std::vector<SReadInput>* read = nullptr) {
    requestImages.clear();
    if (!req.is_object()) Fail("a request must be a JSON object");
    if (!req.contains("instr")) Fail("missing \"instr\"");
    if (req.contains("settings")) ApplySettings(ParseSettings(req["settings"]));
    const int index = ResolveInstr(module, req["instr"]);
    const SInstrInfo& info = *module.At(index)->GetInfo();
    const int declared = static_cast<int>(info.inputs.size());

    // A reference, not a copy: the inputs may be the bulk of the request.
    const Json noInputs = Json::array();
    const Json& inputs = req.contains("inputs") ? req.at("inputs") : noInputs;
    if (!inputs.is_array()) Fail("\"inputs\" must be a list");
    const int given = static_cast<int>(inputs.size());
    if (!info.variadic && given > declared)
      Fail("too many inputs: " + std::to_string(given) + " for " + std::to_string(declared));
    ctx.Reset(info, info.variadic ? given : declared);

    if (req.contains("params"))
      DecodeParams(info, req["params"], ctx.Params(),
                   requestImages);
    SReadInput* next = read && !read->empty() ? read->data() : nullptr;
    for (int i = 0; i < given; ++i) {
      const int slot = std::min(i, declared - 1);
      if (slot < 0) Fail("this instruction has no inputs");
      if (next && next->index == i) {
        if (!next->error.empty()) Fail(next->error);
        ctx.Input(i) = std::move(next->value);
        next = next + 1 == read->data() + read->size() ? nullptr : next + 1;
        continue;
      }
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
    // Files are saved before the answer is written: a "save" that cannot be read makes
    // the whole answer an error, as before any output was written.
    std::optional<std::string> saveError;
    if (req.contains("save")) saveError = Save(req["save"]);
    // The request, which may be as large as the answer, is released before the answer
    // is written.
    req = Json();
    // The answer is streamed: output arrays go element by element into the text.
    std::string text;
    CJsonWriter w(text, sink, CZetJsonSession::kStreamAbove);
    w.Open('{');
    w.Key("status");
    w.Value(r.threw ? Json(nullptr) : Json(r.status));
    if (r.threw) {
      w.Key("exception");
      w.Value(Json(Cp1252ToUtf8(r.exception)));
    }
    w.Key("outputs");
    w.Open('[');
    for (int i = 0; i < ctx.OutputSlots(); ++i) w.Object(ctx.Output(i));
    w.Close(']');
    w.Key("reports");
    w.Open('[');
    for (const SReport& rep : ctx.Notify().reports)
      w.Value(Json{{"level", rep.level}, {"source", Cp1252ToUtf8(rep.source)},
                   {"text", Cp1252ToUtf8(rep.text)}});
    w.Close(']');
    w.Key("events");
    w.Open('[');
    for (const SEvent& e : ctx.Notify().events) w.Value(Json{{"code", e.code}, {"value", e.value}});
    w.Close(']');
    w.Key("annotations");
    w.Open('[');
    for (const SAnnotationRecord& a : ctx.Annotations().records) w.Annotation(a);
    w.Close(']');
    if (saveError && !saveError->empty()) {
      w.Key("save_error");
      w.Value(Json(*saveError));
    }
    w.Close('}');
    return text;
  }

  // Writes the images named by "save"; returns the last failure's text ("" for none).
  std::string Save(const Json& save) {
    std::string last;
    if (!save.is_object()) Fail("\"save\" must map output indexes to files");
    for (const auto& [key, file] : save.items()) {
      char* end = nullptr;
      const long i = std::strtol(key.c_str(), &end, 10);
      if (key.empty() || *end || i < 0 || i >= ctx.OutputSlots())
        Fail("save: no output " + Cut(key));
      const CZetHandle* h = ctx.Output(static_cast<int>(i)).Get<CZetHandle>();
      std::string err;
      if (!h || !h->GetImage() || !h->GetImage()->IsCreated())
        err = "output " + key + " holds no image";
      else
        err = SaveImageFile(TextOf(file, "save"), *h->GetImage());
      if (!err.empty()) last = err;  // the run itself happened
    }
    return last;
  }
};
CZetJsonSession::CZetJsonSession(CZetPluginModule& module) : m_impl(std::make_unique<SImpl>(module)) {}
CZetJsonSession::~CZetJsonSession() = default;

namespace {

// Error texts may quote the request's own bytes (the parser's "last read"), which
// need not be UTF-8: those bytes become U+FFFD instead of ending the session.
std::string Dump(const Json& j) { return j.dump(-1, ' ', false, Json::error_handler_t::replace); }

}  // namespace

namespace {

// The answer to a request that failed with the exception `e`.
std::string ErrorAnswer(std::exception_ptr e) {
  try {
    try {
      std::rethrow_exception(e);
    } catch (const SDecodeError& e) {
      return Dump(Json{{"error", e.text}});
    } catch (const Json::parse_error& e) {
      return Dump(Json{{"error", "bad JSON: " + Cut(e.what(), 300)}});
    } catch (const std::bad_alloc&) {
      // Whatever the request built is released by now; the session goes on.
      return R"({"error":"out of memory"})";
    } catch (const std::exception& e) {
      return Dump(Json{{"error", e.what()}});
    } catch (...) {
      return R"({"error":"unknown exception"})";
    }
  } catch (const std::bad_alloc&) {  // even the error text could not be made
    return R"({"error":"out of memory"})";
  }
}

}  // namespace

std::string CZetJsonSession::Handle(const std::string& line) {
  try {
    return m_impl->RunLine(line);
  } catch (...) {
    return ErrorAnswer(std::current_exception());
  }
}

void CZetJsonSession::Handle(const std::string& line, std::ostream& out) {
  // Only an answer beyond kStreamAbove reaches `out` before it is complete. By then
  // its values exist and what it still takes is one piece's buffer and an element's
  // text at a time, so a failure (an error line instead) comes before the first piece.
  std::string tail;
  try {
    tail = m_impl->RunLine(line, &out);
  } catch (...) {
    tail = ErrorAnswer(std::current_exception());
  }
  out.write(tail.data(), static_cast<std::streamsize>(tail.size()));
}

}  // namespace zet::host
