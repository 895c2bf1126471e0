// Running an inspection program over images (zet run).
//
// Each image gets an execution context and variables of its own; the steps run in
// order and their annotation records make the image's overlay. A step that throws,
// returns a failure, or is handed a variable of the wrong kind stops that image with a
// message naming the step; the run goes on with the next image.
//
// Threads: --jobs N runs images on N threads. Each thread makes its own object of
// every step's instruction (Create) and a fresh context per image, so no instruction
// object ever runs on two threads, and an image's results do not depend on the thread
// it ran on. Results are written in the order of the images, whatever order they finish
// in, so any number of jobs gives the same files.
//
// Settings: the angle unit and the default annotation colour live in the one
// process-wide settings object that every instruction reads. They are set once, before
// the first image, from the command line and the program's "settings", and nothing
// changes them while images run: a program step has no way to, and the renderer takes
// the default colour as an argument read at the start.
#include <sys/stat.h>

#include <atomic>
#include <cctype>
#include <chrono>
#include <fstream>
#include <iterator>
#include <map>
#include <mutex>
#include <optional>
#include <set>
#include <ostream>
#include <thread>

#include "Program.h"
#include "ImageDecode.h"
#include "zet/ZetSetting.h"

namespace zet::host {

namespace fs = std::filesystem;

namespace {

const char* KindName(ZET_OBJ_TYPE k) {
  switch (k) {
    case ZET_OBJ_UNTYPED: return "nothing";
    case ZET_OBJ_BOOL: return "a Boolean";
    case ZET_OBJ_INT: return "an integer";
    case ZET_OBJ_DOUBLE: return "a number";
    case ZET_OBJ_STRING: return "a string";
    case ZET_OBJ_POINT: return "a point";
    case ZET_OBJ_LINE: return "a line";
    case ZET_OBJ_CIRCLE: return "a circle";
    case ZET_OBJ_RECT: return "a rectangle";
    case ZET_OBJ_HANDLE: return "an image";
    case ZET_OBJ_BOOL_ARRAY: return "a Boolean array";
    case ZET_OBJ_NUMBER_ARRAY: return "a number array";
    case ZET_OBJ_STRING_ARRAY: return "a string array";
    case ZET_OBJ_POINT_ARRAY: return "a point array";
    case ZET_OBJ_LINE_ARRAY: return "a line array";
  }
  return "a value";
}

// Whether a variable's value may go to an input of descriptor type `type`: Booleans,
// numbers and strings cross over by the value conversion table, as a host wiring them
// would; every other kind must be the input's own.
bool Fits(const CZetObject& v, int type) {
  const auto scalar = [](ZET_OBJ_TYPE k) {
    return k == ZET_OBJ_BOOL || k == ZET_OBJ_INT || k == ZET_OBJ_DOUBLE || k == ZET_OBJ_STRING;
  };
  const SZetTypeInfo* t = ZetTypeInfo(type);
  if (!t || !t->program) return true;  // no variable declares it (integer, choice)
  return scalar(t->kind) ? scalar(v.GetType()) : v.GetType() == t->kind;
}

struct SImageResult {
  bool ok = false;
  std::string error;
  Json json;  // the results line
};

// One thread's share of the run: an object of every step's instruction.
class CWorker {
 public:
  CWorker(CZetPluginModule& module, const SProgram& program, const SProgramOptions& opt,
          int defaultColor)
      : m_module(module), m_program(program), m_opt(opt), m_defaultColor(defaultColor) {
    for (const SStep& s : program.steps) m_objects.push_back(module.At(s.index)->Create());
  }
  ~CWorker() {
    for (size_t i = 0; i < m_objects.size(); ++i)
      if (m_objects[i]) m_module.At(m_program.steps[i].index)->Destroy(m_objects[i]);
  }
  CWorker(const CWorker&) = delete;
  CWorker& operator=(const CWorker&) = delete;

  SImageResult Run(const std::string& image, const std::string& overlayName) {
    SImageResult r;
    std::vector<CZetObject> vars(m_program.vars.size());
    std::vector<std::unique_ptr<CZetImage>> images;
    std::vector<SAnnotationRecord> overlay;
    Json reports = Json::array(), events = Json::array(), overlayFile;
    try {
      r.error = Steps(image, vars, images, overlay, reports, events);
    } catch (const std::exception& e) {  // allocation failures and the like
      r.error = e.what();
    }
    if (m_program.overlay && m_opt.overlays && !images.empty()) {
      const std::string err = Overlay(vars, overlay, overlayName);
      if (err.empty())
        overlayFile = overlayName;
      else if (r.error.empty())
        r.error = err;
    }
    r.ok = r.error.empty();
    r.json["image"] = image;
    r.json["ok"] = r.ok;
    if (!r.ok) r.json["error"] = r.error;
    Json& results = r.json["results"] = Json::object();
    for (int v : m_program.results) results[m_program.vars[v].name] = ValueJson(vars[v]);
    r.json["reports"] = std::move(reports);
    r.json["events"] = std::move(events);
    r.json["overlay"] = std::move(overlayFile);
    return r;
  }

 private:
  // Runs the steps on one image; returns "" or what stopped it.
  std::string Steps(const std::string& image, std::vector<CZetObject>& vars,
                    std::vector<std::unique_ptr<CZetImage>>& images,
                    std::vector<SAnnotationRecord>& overlay, Json& reports, Json& events) {
    auto current = std::make_unique<CZetImage>();
    if (std::string err = LoadImageFile(image, *current); !err.empty()) return err;
    vars[0] = CZetHandle(current.get());
    images.push_back(std::move(current));
    for (size_t v = 1; v < vars.size(); ++v) {
      const SVariable& var = m_program.vars[v];
      if (!var.file.empty()) {
        if (std::string err = FromFile(var, image, vars[v], images); !err.empty())
          return "variable '" + var.name + "': " + err;
      } else {
        vars[v] = var.value;
      }
    }
    CZetExecContext ctx;
    for (size_t k = 0; k < m_program.steps.size(); ++k) {
      const SStep& s = m_program.steps[k];
      if (!m_objects[k]) return s.label + ": the instruction could not create an object";
      const SInstrInfo& info = *m_module.At(s.index)->GetInfo();
      ctx.Reset(info, s.inputCount);
      for (size_t i = 0; i < s.params.size(); ++i) ctx.Param(static_cast<int>(i)) = s.params[i];
      for (const SBinding& b : s.inputs) {
        if (b.var < 0) {
          ctx.Input(b.slot) = b.literal;
          continue;
        }
        const SInstrInput& in = info.inputs[std::min<size_t>(b.slot, info.inputs.size() - 1)];
        if (!Fits(vars[b.var], in.type))
          return s.label + ": input '" + Cp1252ToUtf8(in.name ? in.name : "") + "': variable '" +
                 m_program.vars[b.var].name + "' holds " + KindName(vars[b.var].GetType());
        ctx.Input(b.slot) = vars[b.var];
      }
      const SExecResult run = ctx.Run(m_objects[k]);
      std::string told;
      for (const SReport& rep : ctx.Notify().reports) {
        reports.push_back({{"step", s.number}, {"level", rep.level},
                           {"source", Cp1252ToUtf8(rep.source)}, {"text", Cp1252ToUtf8(rep.text)}});
        told += "; " + Cp1252ToUtf8(rep.source) + ": " + Cp1252ToUtf8(rep.text);
      }
      for (const SEvent& e : ctx.Notify().events)
        events.push_back({{"step", s.number}, {"code", e.code}, {"value", e.value}});
      auto& records = ctx.Annotations().records;
      overlay.insert(overlay.end(), std::make_move_iterator(records.begin()),
                     std::make_move_iterator(records.end()));
      if (run.threw) return s.label + ": exception: " + Cp1252ToUtf8(run.exception);
      if (run.status != kOk)
        return s.label + ": failed with status " + std::to_string(run.status) + told;
      for (const auto& [out, var] : s.outputs) vars[var] = ctx.Output(out);
    }
    return "";
  }

  // A variable read from its file beside the image: an image file, or JSON.
  static std::string FromFile(const SVariable& var, const std::string& image, CZetObject& out,
                              std::vector<std::unique_ptr<CZetImage>>& images) {
    const fs::path file = VariableFile(var.file, image);
    if (var.type == kTypeImage) {
      auto img = std::make_unique<CZetImage>();
      if (std::string err = LoadImageFile(file.string(), *img); !err.empty()) return err;
      out = CZetHandle(img.get());
      images.push_back(std::move(img));
      return "";
    }
    std::string text;
    if (const std::string err = ReadRegularFile(file.string(), text, ""); !err.empty())
      return "cannot read " + file.string() +
             (err.ends_with("not a regular file") ? ": not a regular file" : "");
    try {
      const Json j = ParseJson(text);
      DecodeValue(j, var.type, out, file.string(), images);
    } catch (const Json::exception& e) {
      return file.string() + ": " + Cut(e.what(), 300);
    } catch (const SDecodeError& e) {
      return e.text;
    }
    return "";
  }

  std::string Overlay(const std::vector<CZetObject>& vars,
                      const std::vector<SAnnotationRecord>& records, const std::string& name) {
    const CZetHandle* h = vars[m_program.overlayVar].Get<CZetHandle>();
    if (!h || !h->GetImage() || !h->GetImage()->IsCreated())
      return "overlay: variable '" + m_program.vars[m_program.overlayVar].name +
             "' holds no image";
    CZetImage out;
    std::string err = RenderOverlay(*h->GetImage(), records, m_defaultColor, out);
    if (err.empty()) err = SaveImageFile((fs::path(m_opt.outDir) / name).string(), out);
    return err.empty() ? "" : "overlay: " + err;
  }

  CZetPluginModule& m_module;
  const SProgram& m_program;
  const SProgramOptions& m_opt;
  int m_defaultColor;
  std::vector<IXInstrPlugin*> m_objects;
};

std::string CsvCell(const Json& v) {
  std::string s = v.is_null() ? "" : v.is_string() ? v.get<std::string>() : v.dump();
  if (s.find_first_of(",\"\r\n") == std::string::npos) return s;
  std::string q = "\"";
  for (char c : s) q += c == '"' ? std::string("\"\"") : std::string(1, c);
  return q + "\"";
}

// Gathers the images' results and writes them in image order as they complete.
class CCollector {
 public:
  CCollector(const SProgram& program, const SProgramOptions& opt, size_t count, std::ostream& log)
      : m_program(program), m_opt(opt), m_done(count), m_log(log), m_start(Clock::now()),
        m_lastProgress(m_start) {
    m_jsonl.open(fs::path(opt.outDir) / "results.jsonl", std::ios::binary);
    if (opt.csv) {
      m_csv.open(fs::path(opt.outDir) / "results.csv", std::ios::binary);
      m_csv << "image,ok,error";
      for (int v : program.results) m_csv << ',' << CsvCell(program.vars[v].name);
      m_csv << "\r\n";
    }
  }
  bool Opened() const { return m_jsonl.is_open() && (!m_opt.csv || m_csv.is_open()); }

  void Done(size_t i, SImageResult r) {
    std::lock_guard lock(m_mutex);
    if (!r.ok) {
      ++m_failed;
      m_log << "zet run: " << r.json["image"].get<std::string>() << ": " << r.error << '\n';
    }
    m_done[i] = std::move(r);
    for (; m_written < m_done.size() && m_done[m_written]; ++m_written) Write(*m_done[m_written]);
    if (m_opt.progress && Clock::now() - m_lastProgress >= std::chrono::seconds(1)) {
      m_lastProgress = Clock::now();
      m_log << "zet run: " << m_written << '/' << m_done.size() << " images, " << m_failed
            << " failed\n";
    }
  }

  // The summary; false when a results file could not be written.
  bool Finish() {
    m_jsonl.close();
    if (m_opt.csv) m_csv.close();
    const bool written = !m_jsonl.fail() && (!m_opt.csv || !m_csv.fail());
    if (!written) m_log << "zet run: cannot write the results in " << m_opt.outDir << '\n';
    if (m_opt.progress) {
      const double seconds = std::chrono::duration<double>(Clock::now() - m_start).count();
      m_log << "zet run: " << m_done.size() << (m_done.size() == 1 ? " image, " : " images, ")
            << m_done.size() - m_failed << " ok, "
            << m_failed << " failed in " << static_cast<int>(seconds * 10) / 10.0 << " s; results in "
            << (fs::path(m_opt.outDir) / "results.jsonl").string() << '\n';
    }
    return written;
  }
  size_t Failed() const { return m_failed; }

 private:
  using Clock = std::chrono::steady_clock;

  void Write(SImageResult& r) {
    m_jsonl << r.json.dump() << '\n';
    if (!m_opt.csv) return;
    m_csv << CsvCell(r.json["image"]) << ',' << (r.ok ? "true" : "false") << ','
          << CsvCell(r.ok ? Json() : Json(r.error));
    for (int v : m_program.results) m_csv << ',' << CsvCell(r.json["results"][m_program.vars[v].name]);
    m_csv << "\r\n";
    r.json = Json();  // written: keep no more than the flag
  }

  const SProgram& m_program;
  const SProgramOptions& m_opt;
  std::vector<std::optional<SImageResult>> m_done;
  size_t m_written = 0, m_failed = 0;
  std::ostream& m_log;
  std::mutex m_mutex;
  std::ofstream m_jsonl, m_csv;
  Clock::time_point m_start, m_lastProgress;
};

// Overlay file names: the image's name without its extension, .png; a name that two
// images share gets the image's position as a suffix. A name that is still taken (by
// another image's plain name: "a-2.pgm" beside "a.pgm" and "a.png") gets a further
// "-2", "-3", ... so that no two images of a run write the same overlay.
std::vector<std::string> OverlayNames(const std::vector<std::string>& images) {
  std::map<std::string, int> uses;
  for (const std::string& i : images) ++uses[fs::path(i).stem().string()];
  std::set<std::string> taken;
  for (const auto& [stem, n] : uses)
    if (n == 1) taken.insert(stem + ".png");
  std::vector<std::string> names;
  for (size_t i = 0; i < images.size(); ++i) {
    const std::string stem = fs::path(images[i]).stem().string();
    if (uses[stem] == 1) {
      names.push_back(stem + ".png");
      continue;
    }
    const std::string base = stem + "-" + std::to_string(i + 1);
    std::string name = base + ".png";
    for (int k = 2; taken.count(name); ++k) name = base + "-" + std::to_string(k) + ".png";
    taken.insert(name);
    names.push_back(name);
  }
  return names;
}

#if defined(_WIN32)
// Windows' stat has no inode: the file's canonical path, case folded, stands for it.
using FileKey = std::string;
std::optional<FileKey> KeyOf(const fs::path& file) {
  std::error_code ec;
  if (!fs::exists(file, ec)) return std::nullopt;
  const fs::path canonical = fs::weakly_canonical(file, ec);
  if (ec) return std::nullopt;
  std::string key = canonical.generic_string();
  for (char& c : key) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  return key;
}
#else
using FileKey = std::pair<dev_t, ino_t>;
std::optional<FileKey> KeyOf(const fs::path& file) {
  struct stat st {};
  if (stat(file.c_str(), &st) != 0) return std::nullopt;
  return FileKey{st.st_dev, st.st_ino};
}
#endif

// The input file that one of the run's own files would replace, or "". The run never
// writes over its inputs: the images, the variable files beside them and the program.
// Files are compared by identity (device and inode; on Windows the canonical path), so
// links and other spellings of a name are caught too.
std::string OverwrittenInput(const SProgram& program, const SProgramOptions& opt,
                             const std::vector<std::string>& images,
                             const std::vector<std::string>& overlayNames) {
  std::map<FileKey, std::string> inputs;
  const auto add = [&](const std::string& file) {
    if (const auto key = KeyOf(file)) inputs.emplace(*key, file);
  };
  add(opt.program);
  for (const std::string& image : images) {
    add(image);
    for (const SVariable& v : program.vars)
      if (!v.file.empty()) add(VariableFile(v.file, image).string());
  }
  std::vector<fs::path> outputs = {fs::path(opt.outDir) / "results.jsonl"};
  if (opt.csv) outputs.push_back(fs::path(opt.outDir) / "results.csv");
  if (program.overlay && opt.overlays)
    for (const std::string& name : overlayNames) outputs.push_back(fs::path(opt.outDir) / name);
  for (const fs::path& out : outputs) {
    const auto key = KeyOf(out);
    if (!key) continue;
    const auto it = inputs.find(*key);
    if (it != inputs.end()) return it->second;
  }
  return "";
}

}  // namespace

int RunProgram(CZetPluginModule& module, const SProgramOptions& opt, std::ostream& log) {
  SProgram program;
  std::vector<std::string> images;
  try {
    program = LoadProgram(module, opt.program);
    if (!opt.images.empty())
      images = ImageFiles(Json(opt.images), fs::path());
    else if (!program.images.is_null())
      images = ImageFiles(program.images, program.file.parent_path());
    if (images.empty()) Fail("no images to inspect");
  } catch (const SDecodeError& e) {
    log << "zet run: " << e.text << '\n';
    return 2;
  }
  SSettings settings = program.settings;
  if (opt.keepAngleUnit) settings.angleUnit.reset();
  if (opt.keepAnnotationColor) settings.annotationColor.reset();
  ApplySettings(settings);
  const int defaultColor = CZetSetting::Inst().GetDefaultAnnotationColor();

  // Refused before anything is written (opening results.jsonl empties it).
  const std::vector<std::string> overlayNames = OverlayNames(images);
  if (const std::string input = OverwrittenInput(program, opt, images, overlayNames);
      !input.empty()) {
    log << "zet run: the output would write over the input " << input
        << " (choose another --out)\n";
    return 2;
  }
  std::error_code ec;
  fs::create_directories(opt.outDir, ec);
  CCollector collector(program, opt, images.size(), log);
  if (ec || !collector.Opened()) {
    log << "zet run: cannot write to " << opt.outDir << '\n';
    return 2;
  }
  std::atomic<size_t> next{0};
  auto work = [&] {
    CWorker worker(module, program, opt, defaultColor);
    for (size_t i; (i = next++) < images.size();)
      collector.Done(i, worker.Run(images[i], overlayNames[i]));
  };
  const size_t jobs = std::clamp<size_t>(static_cast<size_t>(std::max(opt.jobs, 1)), 1, images.size());
  if (jobs == 1) {
    work();
  } else {
    std::vector<std::thread> threads;
    for (size_t j = 0; j < jobs; ++j) threads.emplace_back(work);
    for (std::thread& t : threads) t.join();
  }
  const bool written = collector.Finish();
  return collector.Failed() == 0 && written ? 0 : 1;
}

}  // namespace zet::host
