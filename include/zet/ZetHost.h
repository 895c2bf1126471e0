// ZetHost: the reference host. It loads a plug-in module the way an inspection host
// does, gives its instructions a real execution context with the three services,
// and runs zet's JSON-Lines requests.
//
//   CZetPluginModule module(path);                 // dlopen, ZetPluginLibGet, InitAll
//   CZetExecContext ctx;
//   IXInstrPlugin* add = module.At(module.Find("Add"));
//   ctx.Reset(*add->GetInfo(), 3);                 // defaults, three wired inputs
//   ctx.Input(0) = 1.0; ctx.Input(1) = 2.0; ctx.Input(2) = 3.0;
//   SExecResult r = ctx.Run(add);                  // r.status == 0, ctx.Output(0) == 6
#pragma once

#include <map>
#include <memory>
#include <iosfwd>
#include <span>
#include <string>
#include <utility>
#include <vector>

#include "zet/InstrPlugin.h"
#include "zet/ZetImage.h"
#include "zet/ZetExport.h"

namespace zet::host {

struct SReport {
  int level;
  std::string source;
  std::string text;
};

struct SEvent {
  int code;
  int value;
};

// One call on the annotation service, kept as data: the operation's name and its
// arguments by name in call order (a null label is an untyped value).
struct SAnnotationRecord {
  std::string op;
  std::vector<std::pair<std::string, CZetObject>> fields;
  int trailing[2] = {0, 0};
};

// Collects ReportError and PostEvent calls.
class ZET_HOST_API CNotifyRecorder final : public IXInstrNotify {
 public:
  void ReportError(int level, const CStdStr& source, const CStdStr& text) override;
  void PostEvent(int code, int value) override;
  std::vector<SReport> reports;
  std::vector<SEvent> events;
};

// Named memory blocks; owns them (delete[]) for its whole life.
class ZET_HOST_API CNamedStore final : public IXInstrStore {
 public:
  ~CNamedStore() override;
  void* Find(const char* name) override;
  bool Add(const char* name, void* block, unsigned size) override;

 private:
  std::map<std::string, std::pair<uint8_t*, unsigned>> m_blocks;
};

// Records every annotation call.
class ZET_HOST_API CAnnotationRecorder final : public IXInstrAnnotations {
 public:
  void AddPoint(const char* label, const CZetPoint& pt, int color, int t1, int t2) override;
  void AddSegment(const char* label, const CZetPoint& start, const CZetPoint& end, int color,
                  int t1, int t2) override;
  void AddLine(const char* label, const CZetLine& line, int color, int t1, int t2) override;
  void AddCircle(const char* label, const CZetCircle& circle, int color, bool fill, int t1,
                 int t2) override;
  void AddCircles(const char* label, const CZetPointVector& centres, double radius, int color,
                  bool fill, int t1, int t2) override;
  void AddRect(const char* label, const CZetRect& rect, int color, bool fill, int t1,
               int t2) override;
  void AddPoints(const char* label, const CZetPointVector& points, int color, int t1,
                 int t2) override;
  void AddText(const CZetPoint& where, const char* label, const char* font, int color,
               bool background, int t1, int t2) override;
  void AddPolyline(const char* label, const CZetPointVector& points, int color, int t1,
                   int t2) override;
  void AddPixels(const char* label, const CZetPointVector& points, int color, int t1,
                 int t2) override;
  std::vector<SAnnotationRecord> records;

 private:
  SAnnotationRecord& New(const char* op, int t1, int t2);
};

struct SExecResult {
  bool threw = false;
  int status = 0;
  std::string exception;  // what() of the exception when threw
};

// The execution context: parameter, input and output values with the pointer arrays
// the instruction sees, and the services. The named store lives as long as the
// context; reports, events and annotations are cleared by Reset.
class ZET_HOST_API CZetExecContext final : public IXInstrContext {
 public:
  CZetExecContext() = default;
  CZetExecContext(const CZetExecContext&) = delete;
  CZetExecContext& operator=(const CZetExecContext&) = delete;

  // Prepares a run of an instruction with this descriptor: parameters take their
  // descriptor values, inputs their defaults, outputs become untyped. `inputCount` is
  // what GetInputCount answers (-1: the declared count). The input array always holds
  // at least the declared inputs; inputs past the declared ones start untyped.
  void Reset(const SInstrInfo& info, int inputCount = -1);
  // Sizes the slots without touching descriptor defaults.
  void Resize(int params, int inputs, int inputCount, int outputs);
  void ClearRecords();

  CZetObject& Param(int i) { return m_params[i]; }
  CZetObject& Input(int i) { return m_inputs[i]; }
  CZetObject& Output(int i) { return m_outputs[i]; }
  std::span<CZetObject> Params() { return m_params; }
  int ParamSlots() const { return static_cast<int>(m_params.size()); }
  int InputSlots() const { return static_cast<int>(m_inputs.size()); }
  int OutputSlots() const { return static_cast<int>(m_outputs.size()); }

  // Execute with every exception caught: one bad instruction never takes the host down.
  SExecResult Run(IXInstrPlugin* instr);

  CNotifyRecorder& Notify() { return m_notify; }
  CNamedStore& Store() { return m_store; }
  CAnnotationRecorder& Annotations() { return m_annotations; }
  const std::vector<std::pair<int, int>>& OutputHints() const { return m_hints; }

  // IXInstrContext
  CZetObject** GetParams() override { return m_paramPtrs.data(); }
  CZetObject** GetInputs() override { return m_inputPtrs.data(); }
  int GetInputCount() override { return m_inputCount; }
  CZetObject** GetOutputs() override { return m_outputPtrs.data(); }
  CZetObject* GetParam(int i) override { return Slot(m_paramPtrs, i); }
  CZetObject* GetInput(int i) override { return Slot(m_inputPtrs, i); }
  CZetObject* GetOutput(int i) override { return Slot(m_outputPtrs, i); }
  void SetOutputHint(int outputIndex, int value) override;
  IXInstrService* GetService(int id) override;

 private:
  static CZetObject* Slot(std::vector<CZetObject*>& v, int i) {
    return i >= 0 && static_cast<size_t>(i) < v.size() ? v[i] : nullptr;
  }
  std::vector<CZetObject> m_params, m_inputs, m_outputs;
  std::vector<CZetObject*> m_paramPtrs, m_inputPtrs, m_outputPtrs;
  int m_inputCount = 0;
  std::vector<std::pair<int, int>> m_hints;
  CNotifyRecorder m_notify;
  CNamedStore m_store;
  CAnnotationRecorder m_annotations;
};

// A loaded plug-in module: dlopen, ZetPluginLibGet, InitAll; TermAll and dlclose on
// destruction.
class ZET_HOST_API CZetPluginModule {
 public:
  // Throws std::runtime_error with the loader's message when the module cannot be
  // loaded or has no ZetPluginLibGet.
  explicit CZetPluginModule(const std::string& path, bool init = true);
  ~CZetPluginModule();
  CZetPluginModule(const CZetPluginModule&) = delete;
  CZetPluginModule& operator=(const CZetPluginModule&) = delete;

  IXInstrPluginLib* Lib() const { return m_lib; }
  int Count() const { return m_lib->GetPluginCount(); }
  IXInstrPlugin* At(int index) const { return m_lib->GetPlugins()[index]; }
  void TermAll();

  // The index of an instruction named by identifier, display name (exact, or with
  // the trailing blank trimmed when that is unambiguous) or 1-based position text.
  // -1 with `error` set when unknown or ambiguous.
  int Find(const std::string& name, std::string* error = nullptr) const;

  // The plug-in beside the running executable, or where `make install` put it.
  static std::string DefaultPath();

 private:
  void* m_handle = nullptr;
  IXInstrPluginLib* m_lib = nullptr;
  bool m_terminated = false;
};

// The JSON-Lines session of `zet exec`: one context for all requests.
class ZET_HOST_API CZetJsonSession {
 public:
  explicit CZetJsonSession(CZetPluginModule& module);
  ~CZetJsonSession();
  // One request line in, one response line out (no newline).
  std::string Handle(const std::string& line);
  // The same response written to `out` (no newline). An answer of more than
  // kStreamAbove bytes is written while it is made, in pieces of that size, so that it
  // costs no more than that beyond its values; a smaller one is written whole.
  static constexpr size_t kStreamAbove = size_t{64} << 20;
  void Handle(const std::string& line, std::ostream& out);

 private:
  struct SImpl;
  std::unique_ptr<SImpl> m_impl;
};

// Inspection programs (`zet run`; docs/programs.md describes the file): the program's
// steps run over each image in an execution context of its own; the variables asked
// for go to OUT/results.jsonl (and OUT/results.csv), each image's overlay to OUT as PNG.
struct SProgramOptions {
  std::string program;              // the program file
  std::vector<std::string> images;  // files or folders; when given, replace the program's
  std::string outDir;               // created when missing
  bool csv = false;
  bool overlays = true;
  int jobs = 1;                     // images run on this many threads, one context each
  bool progress = true;             // progress and a summary on the log
  // The caller set these settings itself (zet's --angle-unit, --annotation-color): the
  // program's own "settings" leave them alone.
  bool keepAngleUnit = false;
  bool keepAnnotationColor = false;
};
// 0 when every image succeeded; 1 when an image failed or a result could not be written;
// 2 when the program cannot run at all. Failures are told on `log` as they happen.
ZET_HOST_API int RunProgram(CZetPluginModule& module, const SProgramOptions& options,
                            std::ostream& log);

// The image files a run of `program` with `images` (as in SProgramOptions) would
// inspect, in their order. Empty with `error` set when the program or an image entry
// is at fault.
ZET_HOST_API std::vector<std::string> ProgramImageFiles(CZetPluginModule& module,
                                                        const std::string& program,
                                                        const std::vector<std::string>& images,
                                                        std::string* error);

// Catalogue texts for `zet catalog` and `zet describe`.
ZET_HOST_API std::string CatalogJson(CZetPluginModule& module);
ZET_HOST_API std::string CatalogMarkdown(CZetPluginModule& module);
ZET_HOST_API std::string DescribeText(CZetPluginModule& module, int index);
ZET_HOST_API std::string ListText(CZetPluginModule& module);
// The effects (include/zet/ZetEffects.h) an instruction of this project's
// plug-in declares, by identifier; false for an identifier its registry does
// not hold.
ZET_HOST_API bool InstrEffects(const char* ident, unsigned* effects);

// Image files: PGM and PNG in, PGM and PNG out, and the digest zet prints for an image
// output.
//
// LoadImageFile reads a PGM or PNG file: 8-bit grey gives attribute 1, 16-bit grey
// attribute 16, 8-bit RGB or RGBA attribute 32 (the fourth byte 0 or alpha).
// SaveImageFile writes PGM (8- or 16-bit grey) or PNG (8-bit grey, 16-bit grey, 4-byte
// images as RGB when every fourth byte is 0, else RGBA) by the file's extension. Both
// return "" on success, else an error text naming the file.
ZET_HOST_API std::string LoadImageFile(const std::string& path, CZetImage& image);
// The most pixels an image the host decodes (LoadImageFile) or renders (RenderOverlay)
// may have: kDefaultMaxImagePixels (2^27, such as 16384 x 8192) unless raised for the
// process (zet --max-image-pixels). Larger images are refused with an error text
// before their pixels are allocated.
inline constexpr uint64_t kDefaultMaxImagePixels = uint64_t{1} << 27;
ZET_HOST_API uint64_t MaxImagePixels();
ZET_HOST_API void SetMaxImagePixels(uint64_t pixels);
ZET_HOST_API std::string SaveImageFile(const std::string& path, const CZetImage& image);
// SHA-256 (lower-case hex) of the pixel rows concatenated without row padding, the
// bytes as held in memory (16-bit pixels little-endian).
ZET_HOST_API std::string ImageSha256(const CZetImage& image);

// Overlays: the annotation records drawn over an image (shapes with Cairo, text with
// Pango) into `out`, a new 32-bit image of the same size holding R, G, B and a zero
// fourth byte (SaveImageFile writes it as an RGB PNG). The background is 8-bit grey,
// 16-bit grey or 32-bit colour; colour 0 is `defaultColor`, other colours are
// 0x00BBGGRR. Returns "" on success, else an error text. host/Overlay.cpp says how
// each kind of record is drawn.
ZET_HOST_API std::string RenderOverlay(const CZetImage& background,
                                       const std::vector<SAnnotationRecord>& records,
                                       int defaultColor, CZetImage& out);
// A build without Cairo and Pango (the Windows builds) draws no overlays: there
// RenderOverlay returns this text and ZET_HOST_HAS_OVERLAYS is 0.
inline constexpr const char* kOverlaysUnavailable = "overlays are not available in this build";
#if defined(_WIN32)
#define ZET_HOST_HAS_OVERLAYS 0
#else
#define ZET_HOST_HAS_OVERLAYS 1
#endif

// Windows-1252 <-> UTF-8. Utf8ToCp1252 returns false when a character has no
// Windows-1252 byte (or the UTF-8 is malformed).
ZET_HOST_API std::string Cp1252ToUtf8(const std::string& text);
ZET_HOST_API bool Utf8ToCp1252(const std::string& utf8, std::string* out);

}  // namespace zet::host
