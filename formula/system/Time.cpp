// Time: the millisecond clock, the local date and time as text, Sleep and the 256
// stopwatches kept in the host's named store.
#include "system/System.h"
#include "zet/ZetOs.h"

namespace zet {
namespace {

class CGetMiliSecCount final : public TInstr<CGetMiliSecCount> {
 public:
  static void Describe(CDescriber& d) {
    d.Head("GetMilliSecCount", "Get system millisecond count").Output(kTypeNumber, "count");
  }
  int Execute(IXInstrContext* ctx) override {
    CArgs(ctx).Out(0) = CZetOs::GetMSecTime();
    return kOk;
  }
};

// No check on the input: a later time gives a negative difference.
class CGetTimeDiff final : public TInstr<CGetTimeDiff> {
 public:
  static void Describe(CDescriber& d) {
    d.Head("GetTimeDiff",
           "Returns the difference between the current time and a specified time - "
           "all in milliseconds.")
        .Input(kTypeNumber, "time in ms", 0.0)
        .Output(kTypeNumber, "time difference");
  }
  int Execute(IXInstrContext* ctx) override {
    CArgs a(ctx);
    a.Out(0) = CZetOs::GetMSecTime() - a.Number(0);
    return kOk;
  }
};

// The four date and time texts: the local time read once, formatted with a picture;
// a picture the system cannot format fails and leaves the output as it was.
enum class EText { kDate, kTime };

int FormatNow(const CArgs& a, EText kind, const char* picture) {
  const SZetLocalTime now = CZetOs::GetLocalTime();
  CStdStr text;
  const bool ok = kind == EText::kDate ? CZetOs::FormatDate(picture, now, &text)
                                       : CZetOs::FormatTime(picture, now, &text);
  if (!ok) return kFail;
  a.Out(0) = text;
  return kOk;
}

class CGetDate final : public TInstr<CGetDate> {
 public:
  static void Describe(CDescriber& d) {
    d.Head("GetDate", "Returns the local date as a string in the format dd/mm/yy.")
        .Output(kTypeString, "date");
  }
  int Execute(IXInstrContext* ctx) override {
    return FormatNow(CArgs(ctx), EText::kDate, "dd/MM/yy");
  }
};

class CGetTime final : public TInstr<CGetTime> {
 public:
  static void Describe(CDescriber& d) {
    d.Head("GetTime",
           "Returns the local time as a string in the format hh:mm:ss.Uses the 24 hour "
           "clock.")
        .Output(kTypeString, "time");
  }
  int Execute(IXInstrContext* ctx) override {
    return FormatNow(CArgs(ctx), EText::kTime, "HH:mm:ss");
  }
};

class CGetDateFormat final : public TInstr<CGetDateFormat> {
 public:
  static void Describe(CDescriber& d) {
    d.Head("GetDateFormat",
           "Returns the local date as a string in the format specified. See the help "
           "for more info.")
        .Input(kTypeString, "date format", kEmptyText)
        .Output(kTypeString, "formatted date");
  }
  int Execute(IXInstrContext* ctx) override {
    CArgs a(ctx);
    return FormatNow(a, EText::kDate, a.Text(0));
  }
};

class CGetTimeFormat final : public TInstr<CGetTimeFormat> {
 public:
  static void Describe(CDescriber& d) {
    d.Head("GetTimeFormat",
           "Returns the local time as a string in the specified format. See the help "
           "for more info.")
        .Input(kTypeString, "time format", kEmptyText)
        .Output(kTypeString, "formatted time");
  }
  int Execute(IXInstrContext* ctx) override {
    CArgs a(ctx);
    return FormatNow(a, EText::kTime, a.Text(0));
  }
};

class CSleep final : public TInstr<CSleep> {
 public:
  static void Describe(CDescriber& d) {
    d.Head("Sleep", "Suspends execution for a given number of milliseconds.")
        .Input(kTypeNumber, "milliseconds", 0.0);
  }
  int Execute(IXInstrContext* ctx) override {
    CZetOs::Sleep(SleepMilliseconds(CArgs(ctx).Number(0)));
    return kOk;
  }
};

// ---- stopwatches ----

constexpr const char* kTimersName = "SystemTimers256";
constexpr unsigned kTimers = 256;

// The 256 start times of this context's stopwatches (0.0: not running), created
// zeroed in the host's store by whichever stopwatch needs it first. Null when the
// host has no store.
uint8_t* TimerBlock(IXInstrContext* ctx) {
  auto* store = static_cast<IXInstrStore*>(ctx->GetService(kServiceStore));
  if (!store) return nullptr;
  if (void* block = store->Find(kTimersName)) return static_cast<uint8_t*>(block);
  auto* block = new uint8_t[kTimers * sizeof(double)];
  CZetOs::Memset(block, 0, kTimers * sizeof(double));
  store->Add(kTimersName, block, kTimers * sizeof(double));  // the store owns it now
  return static_cast<uint8_t*>(store->Find(kTimersName));
}

double GetTimer(const uint8_t* block, unsigned i) {
  double v;
  CZetOs::Memcpy(&v, block + i * sizeof(double), sizeof v);
  return v;
}

void SetTimer(uint8_t* block, unsigned i, double v) {
  CZetOs::Memcpy(block + i * sizeof(double), &v, sizeof v);
}

// The index parameter taken as unsigned: negative values are above 255 too.
unsigned TimerIndex(IXInstrContext* ctx) {
  return static_cast<unsigned>(ctx->GetParams()[0]->AsInt());
}

CDescriber& Stopwatch(CDescriber& d) {
  return d.ParamInt("Parameters", "index", nullptr, 0, 0, 255);
}

class CSystemStopwatchStart final : public TInstr<CSystemStopwatchStart> {
 public:
  static void Describe(CDescriber& d) {
    Stopwatch(d.Head("Stopwatch Start ",
                     "Starts the stopwatch at index. If the stopwatch is already running it will "
                     "be restarted."));
  }
  int Execute(IXInstrContext* ctx) override {
    const unsigned index = TimerIndex(ctx);
    if (index >= kTimers) return kFail;
    uint8_t* timers = TimerBlock(ctx);
    if (!timers) return kFail;
    SetTimer(timers, index, CZetOs::GetMSecTime());
    return kOk;
  }
};

class CSystemStopwatchStop final : public TInstr<CSystemStopwatchStop> {
 public:
  static void Describe(CDescriber& d) {
    Stopwatch(d.Head("Stopwatch Stop ",
                     "Stops the stopwatch at index. If the stopwatch is not running it returns "
                     "zero."))
        .Output(kTypeNumber, "elapsed ms");
  }
  int Execute(IXInstrContext* ctx) override {
    const unsigned index = TimerIndex(ctx);
    if (index >= kTimers) return kFail;
    uint8_t* timers = TimerBlock(ctx);
    if (!timers) return kFail;
    const double start = GetTimer(timers, index);
    *ctx->GetOutput(0) = start == 0.0 ? 0.0 : CZetOs::GetMSecTime() - start;
    SetTimer(timers, index, 0.0);
    return kOk;
  }
};

}  // namespace
}  // namespace zet

#define ZET_FAMILY_Time ZET_THIS_FAMILY
#include "frame/Factories.def"
