// Clock, date and time texts, Sleep and the stopwatches, which keep their start times
// in the execution context's named store.
#include <atomic>
#include <cctype>
#include <cmath>
#include <limits>
#include <thread>

#include "Harness.h"
#include "system/System.h"
#include "zet/ZetOs.h"

namespace zet::test {
namespace {

// Runs a stopwatch instruction with `index` on a context that lives across runs.
host::SExecResult Stopwatch(host::CZetExecContext& ctx, const char* name, int index,
                            double initialOutput = -1.0) {
  IXInstrPlugin* p = Module().At(IndexOf(name));
  ctx.Reset(*p->GetInfo());
  ctx.Param(0) = V(index);
  if (ctx.OutputSlots() > 0) ctx.Output(0) = V(initialOutput);
  return ctx.Run(p);
}

TEST(SystemStopwatch, StartStopAndStopAgain) {
  host::CZetExecContext ctx;
  EXPECT_EQ(Stopwatch(ctx, "Stopwatch Stop ", 7).status, kOk);
  EXPECT_EQ(ctx.Output(0).AsDouble(), 0.0);  // never started
  EXPECT_EQ(Stopwatch(ctx, "Stopwatch Start ", 7).status, kOk);
  CZetOs::Sleep(30);
  EXPECT_EQ(Stopwatch(ctx, "Stopwatch Stop ", 7).status, kOk);
  EXPECT_GE(ctx.Output(0).AsDouble(), 30.0);
  EXPECT_EQ(Stopwatch(ctx, "Stopwatch Stop ", 7).status, kOk);
  EXPECT_EQ(ctx.Output(0).AsDouble(), 0.0);  // stopped by the first Stop
  EXPECT_NE(ctx.Store().Find("SystemTimers256"), nullptr);
}

TEST(SystemStopwatch, IndexesAndContexts) {
  host::CZetExecContext a, b;
  for (int index : {0, 255}) {
    SCOPED_TRACE(index);
    EXPECT_EQ(Stopwatch(a, "Stopwatch Start ", index).status, kOk);
    // Another context has timers of its own.
    EXPECT_EQ(Stopwatch(b, "Stopwatch Stop ", index).status, kOk);
    EXPECT_EQ(b.Output(0).AsDouble(), 0.0);
    EXPECT_EQ(Stopwatch(a, "Stopwatch Stop ", index).status, kOk);
    EXPECT_GE(a.Output(0).AsDouble(), 0.0);
  }
  for (int index : {256, -1, INT32_MIN}) {
    SCOPED_TRACE(index);
    EXPECT_EQ(Stopwatch(a, "Stopwatch Start ", index).status, kFail);
    EXPECT_EQ(Stopwatch(a, "Stopwatch Stop ", index, 42.0).status, kFail);
    EXPECT_EQ(a.Output(0).AsDouble(), 42.0);
  }
  // A restart measures from the second start.
  EXPECT_EQ(Stopwatch(a, "Stopwatch Start ", 3).status, kOk);
  CZetOs::Sleep(40);
  EXPECT_EQ(Stopwatch(a, "Stopwatch Start ", 3).status, kOk);
  EXPECT_EQ(Stopwatch(a, "Stopwatch Stop ", 3).status, kOk);
  EXPECT_LT(a.Output(0).AsDouble(), 40.0);
}

TEST(SystemClock, TimeDifferences) {
  const double now = Exec("GetMilliSecCount", {}).Out(0).AsDouble();
  EXPECT_GT(now, 0.0);
  EXPECT_GE(Exec("GetTimeDiff", {V(now)}).Out(0).AsDouble(), 0.0);
  EXPECT_LT(Exec("GetTimeDiff", {V(now + 1e9)}).Out(0).AsDouble(), 0.0);  // no check on input
}

// Whether `t` has the shape `p`: '#' a digit, '~' an optional digit, '^' an upper-case
// letter, '_' one or more lower-case letters, '@' A or P; other characters as they are.
bool Shape(const char* t, const char* p) {
  switch (*p) {
    case '\0': return *t == '\0';
    case '#': return std::isdigit(static_cast<unsigned char>(*t)) && Shape(t + 1, p + 1);
    case '~':
      return (std::isdigit(static_cast<unsigned char>(*t)) && Shape(t + 1, p + 1)) ||
             Shape(t, p + 1);
    case '^': return std::isupper(static_cast<unsigned char>(*t)) && Shape(t + 1, p + 1);
    case '_':
      return std::islower(static_cast<unsigned char>(*t)) &&
             (Shape(t + 1, p + 1) || Shape(t + 1, p));
    case '@': return (*t == 'A' || *t == 'P') && Shape(t + 1, p + 1);
    default: return *t == *p && Shape(t + 1, p + 1);
  }
}

TEST(SystemClock, DateAndTimeTexts) {
  const struct {
    const char* instr;
    std::vector<CZetObject> inputs;
    const char* pattern;
  } cases[] = {
      {"GetDate", {}, "##/##/##"},
      {"GetTime", {}, "##:##:##"},
      {"GetDateFormat", {V("yyyy-MM-dd")}, "20##-##-##"},
      {"GetDateFormat", {V("'day' d, dddd")}, "day #~, ^_day"},
      {"GetDateFormat", {}, "***Empt#~***"},  // the default picture: y is a code
      {"GetTimeFormat", {V("h:mm tt")}, "#~:## @M"},
      {"GetTimeFormat", {V("")}, ""},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(std::string(c.instr) + " " + c.pattern);
    const CRun r = Exec(c.instr, c.inputs);
    EXPECT_EQ(r.status, kOk);
    EXPECT_TRUE(Shape(r.Out(0).AsString().c_str(), c.pattern)) << r.Out(0).AsString();
  }
}

TEST(SystemSleep, MillisecondsTruncateTo64BitsAndKeepTheLow32) {
  const double kNaN = std::numeric_limits<double>::quiet_NaN();
  const double kInf = std::numeric_limits<double>::infinity();
  const struct {
    double in;
    uint32_t ms;
  } cases[] = {
      {0.9, 0},          {100.7, 100},          {-0.5, 0},           {-1.0, 0xFFFFFFFFu},
      {-2.0, 0xFFFFFFFEu}, {4294967301.0, 5},   {-4294967296.0, 0},  {kNaN, 0},
      {kInf, 0},         {-kInf, 0},            {1e19, 0},           {12884901895.0, 7},
  };
  for (const auto& c : cases) EXPECT_EQ(SleepMilliseconds(c.in), c.ms) << c.in;
}

TEST(SystemSleep, SleepsAtLeastAndForEver) {
  const double start = CZetOs::GetMSecTime();
  EXPECT_EQ(Exec("Sleep", {V(25.9)}).status, kOk);
  EXPECT_GE(CZetOs::GetMSecTime() - start, 25.0);
  // 0xFFFFFFFF (what -1 becomes) is the wait for ever: the thread is still asleep
  // when the test ends.
  static std::atomic<bool> woke{false};
  std::thread([] {
    CZetOs::Sleep(SleepMilliseconds(-1.0));
    woke = true;
  }).detach();
  CZetOs::Sleep(300);
  EXPECT_FALSE(woke);
}

}  // namespace
}  // namespace zet::test
