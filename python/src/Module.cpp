// _zetformula: the compiled half of the Python package. A Session is what one `zet exec`
// process is: the plug-in loaded through zethost, one execution context whose named
// store carries over from call to call, and the named instances made with Create.
// Everything else (names, docstrings, results as Python objects, programs, Dask) is
// in the Python half, zetformula/*.py.
//
// Threads: the GIL is released around Execute, and while a call waits for its session.
// A session runs one call at a time; two threads that want to run at once use two
// sessions (two zetformula.Library objects), which share the loaded plug-in.
#include <pybind11/stl.h>

#include <map>
#include <mutex>
#include <sstream>

#include "Values.h"
#include "zet/ZetSetting.h"

namespace zet::python {

namespace {

using zet::host::CZetExecContext;
using zet::host::CZetPluginModule;
using zet::host::SAnnotationRecord;

py::object g_default, g_report, g_event;

// One loaded module per plug-in file, shared by every session over it: loading runs
// InitAll, which must happen once per load. It is unloaded with its last session.
std::shared_ptr<CZetPluginModule> LoadModule(const std::string& path) {
  static std::mutex mutex;
  static std::map<std::string, std::weak_ptr<CZetPluginModule>> loaded;
  std::lock_guard lock(mutex);
  if (auto m = loaded[path].lock()) return m;
  std::shared_ptr<CZetPluginModule> m;
  try {
    m = std::make_shared<CZetPluginModule>(path);
  } catch (const std::runtime_error& e) {
    throw py::import_error(e.what());
  }
  loaded[path] = m;
  return m;
}

// The annotation records of one call, kept as the host keeps them so that the overlay
// renderer draws exactly what the instruction asked for.
struct SAnnotationList {
  std::vector<SAnnotationRecord> records;
};

// What one call did, as zetformula.Result. `names` are the output names, for result[name].
struct SResult {
  py::object status, exception, outputs, reports, events, annotations;
  py::tuple names;
};

// The process-wide settings, set for one call and put back afterwards.
class CScopedSettings {
 public:
  explicit CScopedSettings(py::handle settings) {
    if (settings.is_none()) return;
    if (!py::isinstance<py::dict>(settings)) WrongType("settings", "a dict", settings);
    CZetSetting& s = CZetSetting::Inst();
    m_active = true;
    m_unit = s.GetAngleUnit();
    m_color = s.GetDefaultAnnotationColor();
    Apply(py::reinterpret_borrow<py::dict>(settings));
  }
  ~CScopedSettings() {
    if (!m_active) return;
    CZetSetting::Inst().SetAngleUnit(m_unit);
    CZetSetting::Inst().SetDefaultAnnotationColor(m_color);
  }
  CScopedSettings(const CScopedSettings&) = delete;
  CScopedSettings& operator=(const CScopedSettings&) = delete;

  // {"angle_unit": "degrees" | "radians", "annotation_color": N}, as zet exec reads them.
  static void Apply(const py::dict& settings) {
    for (const auto& [key, value] : settings) {
      const std::string k = py::str(key);
      if (k == "angle_unit") {
        const std::string u = py::isinstance<py::str>(value) ? std::string(py::str(value)) : "";
        if (u != "degrees" && u != "radians")
          BadValue("settings", "angle_unit must be \"degrees\" or \"radians\"");
        CZetSetting::Inst().SetAngleUnit(u == "degrees" ? EZetAngleUnit::kDegrees
                                                        : EZetAngleUnit::kRadians);
      } else if (k == "annotation_color") {
        CZetObject color;
        std::vector<std::unique_ptr<CZetImage>> none;
        ToValue(value, kTypeInt, color, "annotation_color", none);
        CZetSetting::Inst().SetDefaultAnnotationColor(color.AsInt());
      } else {
        BadValue("settings", "unknown setting '" + k + "'");
      }
    }
  }

 private:
  bool m_active = false;
  EZetAngleUnit m_unit{};
  int m_color = 0;
};

class CSession {
 public:
  explicit CSession(const std::string& path) : m_module(LoadModule(path)) {}
  ~CSession() {
    for (auto& [name, inst] : m_instances) inst.first->Destroy(inst.first);
  }
  CSession(const CSession&) = delete;
  CSession& operator=(const CSession&) = delete;

  CZetPluginModule& Module() { return *m_module; }
  int Count() const { return m_module->Count(); }

  // The registry index for an identifier, display name or 1-based position; LookupError
  // with the host's text (naming the candidates of an ambiguous name) otherwise.
  int Find(py::handle name) {
    if (PyLong_Check(name.ptr()) && !PyBool_Check(name.ptr())) {
      const long long pos = name.cast<long long>();
      if (pos >= 1 && pos <= Count()) return static_cast<int>(pos - 1);
      throw py::key_error("no instruction at position " + std::to_string(pos));
    }
    std::string text;
    if (!py::isinstance<py::str>(name) || !zet::host::Utf8ToCp1252(name.cast<std::string>(), &text))
      throw py::key_error("unknown instruction " + std::string(py::repr(name)));
    std::string error;
    const int index = m_module->Find(text, &error);
    if (index < 0) throw py::key_error(zet::host::Cp1252ToUtf8(error));
    return index;
  }

  SResult Call(int index, py::sequence inputs, py::handle params, py::handle outputs,
                 py::handle instance, py::handle settings) {
    if (index < 0 || index >= Count()) throw py::index_error("no instruction " + std::to_string(index));
    std::unique_lock lock(m_mutex, std::try_to_lock);
    if (!lock.owns_lock()) {
      py::gil_scoped_release release;
      lock.lock();
    }
    m_images.clear();
    const SInstrInfo& info = *m_module->At(index)->GetInfo();
    const int declared = static_cast<int>(info.inputs.size());
    // Trailing inputs left at their defaults are not given (they count for a variadic one).
    int given = static_cast<int>(py::len(inputs));
    while (given > 0 && py::object(inputs[static_cast<size_t>(given - 1)]).is(g_default)) --given;
    if (!info.variadic && given > declared)
      throw py::type_error("too many inputs: " + std::to_string(given) + " for " +
                           std::to_string(declared));
    m_ctx.Reset(info, info.variadic ? given : declared);
    if (!params.is_none()) Params(info, params);
    for (int i = 0; i < given; ++i) {
      py::object held;  // a sequence other than a tuple may make its items on access
      if (!PyTuple_Check(inputs.ptr())) held = inputs[static_cast<size_t>(i)];
      const py::handle v = held ? py::handle(held) : py::handle(PyTuple_GET_ITEM(inputs.ptr(), i));
      if (v.is(g_default)) continue;
      const int slot = std::min(i, declared - 1);
      if (slot < 0) throw py::type_error("this instruction has no inputs");
      ToValue(v, info.inputs[slot].type, m_ctx.Input(i), SSlot("input", i, info.inputs[slot].name),
              m_images);
    }
    if (!outputs.is_none()) {
      const py::sequence o = py::reinterpret_borrow<py::sequence>(outputs);
      if (py::len(o) > info.outputs.size())
        throw py::type_error("outputs: at most one value per output");
      for (size_t i = 0; i < py::len(o); ++i)
        ToValue(o[i], info.outputs[i].type, m_ctx.Output(static_cast<int>(i)),
                SSlot("output", static_cast<int>(i), info.outputs[i].name), m_images);
    }
    IXInstrPlugin* obj = Object(index, instance);
    zet::host::SExecResult r;
    {
      CScopedSettings scoped(settings);
      py::gil_scoped_release release;
      r = m_ctx.Run(obj);
    }
    py::list outs(static_cast<size_t>(m_ctx.OutputSlots()));
    for (int i = 0; i < m_ctx.OutputSlots(); ++i) outs[static_cast<size_t>(i)] = FromValue(m_ctx.Output(i), true);
    // Reports and events are tuples: most calls have none, and the empty tuple is shared.
    const auto& n = m_ctx.Notify();
    py::tuple reports(n.reports.size());
    for (size_t i = 0; i < n.reports.size(); ++i)
      reports[i] = g_report(n.reports[i].level, FromCp1252(n.reports[i].source), FromCp1252(n.reports[i].text));
    py::tuple events(n.events.size());
    for (size_t i = 0; i < n.events.size(); ++i) events[i] = g_event(n.events[i].code, n.events[i].value);
    py::object annotations = py::none();
    auto& records = m_ctx.Annotations().records;
    if (!records.empty()) annotations = py::cast(SAnnotationList{std::move(records)});
    records.clear();
    SResult result;
    result.status = r.threw ? py::object(py::none()) : py::object(py::int_(r.status));
    result.exception = r.threw ? py::object(FromCp1252(r.exception)) : py::object(py::none());
    result.outputs = std::move(outs);
    result.reports = std::move(reports);
    result.events = std::move(events);
    result.annotations = std::move(annotations);
    result.names = Names(index, info);
    return result;
  }

 private:
  py::tuple Names(int index, const SInstrInfo& info) {
    if (m_names.empty()) m_names.resize(static_cast<size_t>(Count()));
    py::object& names = m_names[static_cast<size_t>(index)];
    if (!names) {
      py::tuple t(info.outputs.size());
      for (size_t i = 0; i < info.outputs.size(); ++i)
        t[i] = info.outputs[i].name ? py::object(FromCp1252(info.outputs[i].name)) : py::object(py::none());
      names = std::move(t);
    }
    return py::reinterpret_borrow<py::tuple>(names);
  }

  void Params(const SInstrInfo& info, py::handle params) {
    if (py::isinstance<py::dict>(params)) {
      for (const auto& [key, value] : py::reinterpret_borrow<py::dict>(params)) {
        const std::string name = ToCp1252(key, "parameter name");
        int i = -1;
        for (size_t k = 0; k < info.params.size() && i < 0; ++k)
          if (info.params[k].name && name == info.params[k].name) i = static_cast<int>(k);
        if (i < 0) throw py::value_error("unknown parameter '" + std::string(py::str(key)) + "'");
        const std::string keyText = py::str(key);
        ToValue(value, info.params[i].type, m_ctx.Param(i), SSlot("param", -1, keyText.c_str(), false),
                m_images);
      }
      return;
    }
    if (py::isinstance<py::str>(params) || !PySequence_Check(params.ptr()))
      WrongType("params", "a list or a dict by parameter name", params);
    const py::sequence p = py::reinterpret_borrow<py::sequence>(params);
    if (py::len(p) > info.params.size()) throw py::type_error("too many params");
    for (size_t i = 0; i < py::len(p); ++i)
      ToValue(p[i], info.params[i].type, m_ctx.Param(static_cast<int>(i)),
              SSlot("param", static_cast<int>(i), info.params[i].name), m_images);
  }

  IXInstrPlugin* Object(int index, py::handle instance) {
    IXInstrPlugin* proto = m_module->At(index);
    if (instance.is_none()) return proto;
    const std::string name = ToCp1252(instance, "instance");
    auto it = m_instances.find(name);
    if (it != m_instances.end()) {
      if (it->second.second != index)
        throw py::value_error("instance '" + std::string(py::str(instance)) +
                              "' belongs to another instruction");
      return it->second.first;
    }
    IXInstrPlugin* obj = proto->Create();
    if (!obj) throw std::runtime_error("instruction could not create an instance");
    m_instances.emplace(name, std::make_pair(obj, index));
    return obj;
  }

  std::shared_ptr<CZetPluginModule> m_module;
  std::mutex m_mutex;
  CZetExecContext m_ctx;
  std::map<std::string, std::pair<IXInstrPlugin*, int>> m_instances;
  std::vector<std::unique_ptr<CZetImage>> m_images;
  std::vector<py::object> m_names;  // per registry index, made on first use
};

py::array RenderOverlay(py::handle background, py::iterable sources, int defaultColor) {
  CZetImage bg, out;
  ArrayToImage(background, bg, "background");
  std::vector<SAnnotationRecord> records;
  for (py::handle s : sources) {
    if (s.is_none()) continue;
    const auto& list = s.cast<const SAnnotationList&>();
    records.insert(records.end(), list.records.begin(), list.records.end());
  }
  std::string err;
  {
    py::gil_scoped_release release;
    err = zet::host::RenderOverlay(bg, records, defaultColor, out);
  }
  if (!err.empty()) throw py::value_error(err);
  return ImageToArray(out);
}

}  // namespace

}  // namespace zet::python

PYBIND11_MODULE(_zetformula, m) {
  using namespace zet::python;
  namespace host = zet::host;
  m.doc() = "The compiled half of zetformula: sessions over the plug-in, loaded through zethost.";
  InitTypes();
  const py::module_ types = py::module_::import("zetformula._types");
  g_default = types.attr("DEFAULT");
  g_report = types.attr("Report");
  g_event = types.attr("Event");
  py::module_::import("atexit").attr("register")(py::cpp_function([] {
    g_default = g_report = g_event = py::object();
  }));

  py::class_<SAnnotationList>(m, "AnnotationList",
                              "The annotation records of a call, as the overlay renderer takes them.")
      .def("__len__", [](const SAnnotationList& a) { return a.records.size(); })
      .def("records", [](const SAnnotationList& a) { return RecordsToPython(a.records); });

  py::class_<SResult>(m, "Result", R"(What one call did, as one zet exec response says it.

status: 0 or 3 as Execute returned (None when it threw); exception: its text or None;
outputs: every output after the run, written or not; reports: Report tuples
(ReportError calls); events: Event tuples (PostEvent calls); annotations: the
annotation service's records as dicts, in call order; annotation_list: the same records
as the overlay renderer takes them. result[name] or result[i] is an output; value is
the only output of a one-output instruction.)")
      .def_readonly("status", &SResult::status)
      .def_readonly("exception", &SResult::exception)
      .def_readonly("outputs", &SResult::outputs)
      .def_readonly("reports", &SResult::reports)
      .def_readonly("events", &SResult::events)
      .def_readonly("annotation_list", &SResult::annotations)
      .def_readonly("output_names", &SResult::names)
      .def_property_readonly("ok", [](const SResult& r) { return r.status.equal(py::int_(0)); })
      .def_property_readonly("annotations",
                             [](const SResult& r) {
                               if (r.annotations.is_none()) return py::list();
                               return RecordsToPython(r.annotations.cast<const SAnnotationList&>().records);
                             })
      .def_property_readonly("value",
                             [](const SResult& r) -> py::object {
                               const py::list outs = r.outputs;
                               if (py::len(outs) != 1)
                                 throw py::value_error("the instruction has " + std::to_string(py::len(outs)) +
                                                       " outputs; use outputs or [name]");
                               return outs[0];
                             })
      .def("__getitem__",
           [](const SResult& r, py::handle key) -> py::object {
             const py::list outs = r.outputs;
             if (py::isinstance<py::str>(key)) {
               for (size_t i = 0; i < r.names.size(); ++i)
                 if (py::object(r.names[i]).equal(py::reinterpret_borrow<py::object>(key))) return outs[i];
               throw py::key_error("no output " + std::string(py::repr(key)) + "; outputs: " +
                                   std::string(py::repr(r.names)));
             }
             return outs.attr("__getitem__")(key);
           })
      .def("__repr__", [](const SResult& r) {
        std::string s = "Result(status=" + std::string(py::repr(r.status));
        if (!r.exception.is_none()) s += ", exception=" + std::string(py::repr(r.exception));
        s += ", outputs=" + std::string(py::repr(r.outputs)) + ", reports=" + std::string(py::repr(r.reports)) +
             ", events=" + std::string(py::repr(r.events)) + ", annotations=" +
             std::to_string(r.annotations.is_none() ? 0 : r.annotations.cast<const SAnnotationList&>().records.size()) +
             " records)";
        return s;
      });

  py::class_<CSession>(m, "Session")
      .def(py::init<const std::string&>(), py::arg("plugin"))
      .def("count", &CSession::Count)
      .def("find", &CSession::Find, py::arg("name"))
      .def("call", &CSession::Call, py::arg("index"), py::arg("inputs"), py::arg("params"),
           py::arg("outputs"), py::arg("instance"), py::arg("settings"))
      .def("catalog_json", [](CSession& s) { return host::CatalogJson(s.Module()); })
      .def("describe_text", [](CSession& s, int i) { return host::DescribeText(s.Module(), i); })
      .def("list_text", [](CSession& s) { return host::ListText(s.Module()); });

  // A plain pybind11 function, the benchmark's baseline for the cost of a call.
  m.def("_baseline_add", [](double a, double b) { return a + b; });
  m.def("set_settings", [](py::dict settings) { CScopedSettings::Apply(settings); });
  m.def("get_settings", [] {
    py::dict d;
    d["angle_unit"] = CZetSetting::Inst().GetAngleUnit() == EZetAngleUnit::kDegrees ? "degrees" : "radians";
    d["annotation_color"] = CZetSetting::Inst().GetDefaultAnnotationColor();
    return d;
  });
  m.def("load_image", [](const std::string& path) {
    CZetImage img;
    const std::string err = host::LoadImageFile(path, img);
    if (!err.empty()) throw py::value_error(err);
    return ImageToArray(img);
  });
  m.def("save_image", [](const std::string& path, py::handle array) {
    CZetImage img;
    ArrayToImage(array, img, "image");
    const std::string err = host::SaveImageFile(path, img);
    if (!err.empty()) throw py::value_error(err);
  });
  m.def("render_overlay", &RenderOverlay, py::arg("background"), py::arg("sources"),
        py::arg("default_color"));
  m.def(
      "run_program",
      [](const std::string& plugin, const std::string& program, std::vector<std::string> images,
         const std::string& outDir, int jobs, bool csv, bool overlays, bool keepAngleUnit,
         bool keepAnnotationColor) {
        auto module = LoadModule(plugin);
        host::SProgramOptions o;
        o.program = program;
        o.images = std::move(images);
        o.outDir = outDir;
        o.jobs = jobs;
        o.csv = csv;
        o.overlays = overlays;
        o.progress = false;
        o.keepAngleUnit = keepAngleUnit;
        o.keepAnnotationColor = keepAnnotationColor;
        std::ostringstream log;
        int rc = 0;
        {
          py::gil_scoped_release release;
          rc = host::RunProgram(*module, o, log);
        }
        return py::make_tuple(rc, log.str());
      },
      py::arg("plugin"), py::arg("program"), py::arg("images"), py::arg("out_dir"), py::arg("jobs"),
      py::arg("csv"), py::arg("overlays"), py::arg("keep_angle_unit"),
      py::arg("keep_annotation_color"));
  m.def("program_images",
        [](const std::string& plugin, const std::string& program, const std::vector<std::string>& images) {
          auto module = LoadModule(plugin);
          std::string error;
          std::vector<std::string> files = host::ProgramImageFiles(*module, program, images, &error);
          if (!error.empty()) throw py::value_error(error);
          return files;
        });
}
