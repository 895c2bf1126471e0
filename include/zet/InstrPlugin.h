// The instruction plug-in contract: the descriptor records, the instruction
// interface, the host's execution context and services, and the library interface a
// plug-in module hands out through ZetPluginLibGet.
//
// Virtual operations are declared in their contract slot order; the slots this
// library never uses are kept as Reserved* so the tables keep their shape.
#pragma once

#include <cstdint>
#include <map>
#include <vector>

#include "zet/ZetObject.h"
#include "zet/ZetTypes.h"

// Descriptor type codes (a numbering of their own, distinct from ZET_OBJ_TYPE):
// the rows of ZetTypes.def.
enum : int {
#define ZET_TYPE(Code, Number, ...) Code = Number,
#include "zet/ZetTypes.def"
};

// A descriptor type's row of ZetTypes.def: its value kind, its element type's
// code (array types; 0 for the others), the catalogue's name and the name a
// program's variable declares (nullptr: none).
struct SZetTypeInfo {
  int code = 0;
  ZET_OBJ_TYPE kind = ZET_OBJ_UNTYPED;
  int element = 0;
  const char* display = nullptr;
  const char* program = nullptr;
};

inline constexpr SZetTypeInfo kZetTypeInfos[] = {
#define ZET_TYPE(Code, Number, Value, Kind, Display, Program) {Code, Kind, 0, Display, Program},
#define ZET_ARRAY_TYPE(Code, Number, Value, Kind, Display, Program, Element) \
  {Code, Kind, Element, Display, Program},
#include "zet/ZetTypes.def"
};

// The row of a descriptor type code, or nullptr for a code that is none.
constexpr const SZetTypeInfo* ZetTypeInfo(int code) {
  for (const SZetTypeInfo& t : kZetTypeInfos)
    if (t.code == code) return &t;
  return nullptr;
}

// Service ids of IXInstrContext::GetService.
enum : int {
  kServiceAnnotations = 4100,
  kServiceStore = 4102,
  kServiceNotify = 4105,
};

// Execute results.
enum : int { kOk = 0, kFail = 3 };

// Levels of IXInstrNotify::ReportError: what the instruction says of its own failure.
enum : int {
  kReportWarning = 1,  // a result was still produced (Correlate's constant arrays)
  kReportError = 2,    // the computation could not be done (a division by zero)
};

// SInstrInfo::kind. Every class of this library ends with kKindPlain; the other two
// follow from the two words of SInstrInfo::kindWords when a descriptor sets them.
enum : int {
  kKindPlain = 17,
  kKindWordsNoOutputs = 18,
  kKindWordsWithOutputs = 19,
};

struct SInstrParam {
  int type = 0;
  const char* group = nullptr;
  const char* name = nullptr;
  const char* description = nullptr;
  CZetObject value;
  CZetObject minimum;
  CZetObject maximum;
  CIntStrMap choices;
  int hint = -1;
};

struct SInstrInput {
  int type = 0;
  const char* name = nullptr;
  const char* description = nullptr;
  CZetObject defaultValue;
  int ordinal = -1;
};

struct SInstrOutput {
  int type = 0;
  const char* name = nullptr;
  const char* description = nullptr;
  int ordinal = -1;
};

struct SInstrInfo {
  int kind = 0;
  const char* name = nullptr;
  const char* category = nullptr;
  const char* ident = nullptr;
  const char* description = nullptr;
  int id = 0;
  int reserved7 = 0;
  uint8_t reserved8 = 0;
  uint8_t variadic = 0;
  uint8_t reserved10[2] = {0, 0};
  int32_t kindWords[2] = {0, 0};  // decide the kind when non-zero (never set here)
  int32_t reserved12[2] = {0, 0};
  std::vector<SInstrParam> params;
  std::vector<SInstrInput> inputs;
  std::vector<SInstrOutput> outputs;
  int reserved16 = 0;
};

class IXInstrService {
 public:
  virtual ~IXInstrService() = default;
};

// Service 4105: messages to the user and program events.
class IXInstrNotify : public IXInstrService {
 public:
  virtual void ReportError(int level, const CStdStr& source, const CStdStr& text) = 0;
  virtual void PostEvent(int code, int value) = 0;
};

// Service 4102: named memory blocks that live as long as the execution context.
// A block handed to Add must come from `new uint8_t[size]`; the store owns it from
// then on and frees it with delete[].
class IXInstrStore : public IXInstrService {
 public:
  virtual void* Find(const char* name) = 0;
  virtual bool Add(const char* name, void* block, unsigned size) = 0;
};

// Service 4100: overlay shapes over the current image. Every operation ends with two
// integers that this library always passes as 1, 1; labels may be null.
class IXInstrAnnotations : public IXInstrService {
 public:
  virtual void AddPoint(const char* label, const CZetPoint& pt, int color, int t1, int t2) = 0;
  virtual void AddSegment(const char* label, const CZetPoint& start, const CZetPoint& end,
                          int color, int t1, int t2) = 0;
  virtual void AddLine(const char* label, const CZetLine& line, int color, int t1, int t2) = 0;
  virtual void AddCircle(const char* label, const CZetCircle& circle, int color, bool fill,
                         int t1, int t2) = 0;
  virtual void AddCircles(const char* label, const CZetPointVector& centres, double radius,
                          int color, bool fill, int t1, int t2) = 0;
  virtual void AddRect(const char* label, const CZetRect& rect, int color, bool fill, int t1,
                       int t2) = 0;
  virtual void AddPoints(const char* label, const CZetPointVector& points, int color, int t1,
                         int t2) = 0;
  virtual void AddText(const CZetPoint& where, const char* label, const char* font, int color,
                       bool background, int t1, int t2) = 0;
  virtual void AddPolyline(const char* label, const CZetPointVector& points, int color, int t1,
                           int t2) = 0;
  virtual void AddPixels(const char* label, const CZetPointVector& points, int color, int t1,
                         int t2) = 0;
};

class IXInstrContext {
 public:
  virtual ~IXInstrContext() = default;
  virtual void Reserved1() {}
  virtual CZetObject** GetParams() = 0;
  virtual CZetObject** GetInputs() = 0;
  virtual int GetInputCount() = 0;
  virtual CZetObject** GetOutputs() = 0;
  virtual CZetObject* GetParam(int i) = 0;
  virtual CZetObject* GetInput(int i) = 0;
  virtual CZetObject* GetOutput(int i) = 0;
  virtual void Reserved9() {}
  virtual void SetOutputHint(int outputIndex, int value) = 0;
  virtual IXInstrService* GetService(int id) = 0;
};

class IXInstrPlugin {
 public:
  virtual ~IXInstrPlugin() = default;
  virtual void Init() {}
  virtual void Term() {}
  virtual void Reserved3(void*, void*) {}
  virtual SInstrInfo* GetInfo() = 0;
  virtual int Execute(IXInstrContext*) { return kOk; }
  virtual IXInstrPlugin* Create() = 0;
  virtual void Destroy(IXInstrPlugin* p) { delete p; }
  virtual bool Reserved8(void*) { return false; }
  virtual void Reserved9(void*, void*) {}
  virtual void Reserved10(void*, void*) {}
  virtual void Reserved11(void*) {}
  virtual bool Reserved12(void*, void*) { return false; }
  virtual bool Reserved13(void*, void*) { return false; }
  virtual bool Reserved14(void*, void*) { return false; }
  virtual bool Reserved15(void*, void*) { return false; }
};

struct SInstrLibInfo {
  int32_t version;
  const char* info;
};

class IXInstrPluginLib {
 public:
  virtual ~IXInstrPluginLib() = default;
  virtual const SInstrLibInfo* GetLibInfo() = 0;
  virtual IXInstrPlugin** GetPlugins() = 0;
  virtual int GetPluginCount() = 0;
  virtual void InitAll() = 0;
  virtual void TermAll() = 0;
  virtual CZetObject Reserved6(void* arg) = 0;
};

// The one export of a plug-in module.
extern "C" {
using ZetPluginLibGetFn = IXInstrPluginLib* (*)();
}
#define ZET_PLUGIN_ENTRY "ZetPluginLibGet"
