// Talking to the operator and the surroundings: beeps and system sounds, the message
// box, random numbers, the application log and program events. All return 0.
#include <string>

#include "system/System.h"
#include "zet/ZetLog.h"
#include "zet/ZetOs.h"

namespace zet {
namespace {

constexpr unsigned kSimpleBeep = 0xFFFFFFFFu;

class CSystemBeep final : public TInstr<CSystemBeep> {
 public:
  static void Describe(CDescriber& d) { d.Head("Beep", "Beeps"); }
  int Execute(IXInstrContext*) override {
    CZetOs::PlayMessageBeep(kSimpleBeep);
    return kOk;
  }
};

// rand() / 32768: [0, 1) on a grid of 1/32768.
class CSystemRandom final : public TInstr<CSystemRandom> {
 public:
  static void Describe(CDescriber& d) {
    d.Head("Random", "Generates random number from [0..1)").Output(kTypeNumber, "random");
  }
  int Execute(IXInstrContext* ctx) override {
    CArgs(ctx).Out(0) = CZetOs::Rand() * 3.0517578125e-05;
    return kOk;
  }
};

class CSystemRandomSeed final : public TInstr<CSystemRandomSeed> {
 public:
  static void Describe(CDescriber& d) {
    d.Head("Random Seed", "Seeds the random number generator")
        .ParamInt("Parameters", "seed", "'Random' generator seed. 0=ignore, 1=reinitialize", 0, 0,
                  32767, 5);
  }
  int Execute(IXInstrContext* ctx) override {
    const int seed = CArgs(ctx).Param(0).AsInt();
    if (seed != 0) CZetOs::Srand(static_cast<unsigned>(seed));
    return kOk;
  }
};

// The box blocks this thread until the operator answers; its caption always starts
// with the product's prefix.
class CSystemMsgBox final : public TInstr<CSystemMsgBox> {
 public:
  static void Describe(CDescriber& d) {
    d.Head("Message Box ",
           "Displays a message box and waits for the user to dismiss it pausing "
           "program execution in the meantime. The message box is application "
           "modal.\nReturn values for the buttons are:\n 1 for OK\n2 for Cancel\n3 for "
           "Abort\n4 for Retry\n5 for Ignore\n6 for Yes\n7 for No")
        .ParamChoice("Message box", "button(s)", "The button(s) to be used with the message box", 0,
                     0, 5,
                     {{0, "OK"},
                      {1, "OK / Cancel"},
                      {5, "Retry / Cancel"},
                      {4, "Yes / No"},
                      {3, "Yes / No / Cancel"},
                      {2, "Abort / Retry / Ignore"}})
        .ParamChoice("Message box", "icon", "The icon to be used with the message box", 64, 16, 64,
                     {{64, "Information"}, {48, "Warning"}, {32, "Question"}, {16, "Error"}})
        .ParamChoice("Message box", "default button", "The default button", 0, 0, 512,
                     {{0, "Button 1"}, {256, "Button 2"}, {512, "Button 3"}})
        .Input(kTypeString, "title", "Message Box instruction", "Message box's title")
        .Input(kTypeString, "text", "Press OK to continue", "Message box's text")
        .Output(kTypeNumber, "result");
  }
  int Execute(IXInstrContext* ctx) override {
    CArgs a(ctx);
    const unsigned style = static_cast<unsigned>(a.Param(0).AsInt() | a.Param(1).AsInt() |
                                                 a.Param(2).AsInt());
    const std::string caption = std::string("Quorvix - ") + a.Text(0);
    a.Out(0) = static_cast<double>(CZetOs::ShowMessageBox(a.Text(1), caption.c_str(), style));
    return kOk;
  }
};

// "Simple beep" is stored as 128 (0xFFFFFFFF cannot be a choice) and played as the
// simple beep.
class CSystemMsgBeep final : public TInstr<CSystemMsgBeep> {
 public:
  static void Describe(CDescriber& d) {
    d.Head("Message Beep ", "Generates the system sound for selected event.")
        .ParamChoice("Message beep", "MB_OK", "The sound/beep type to be generated", 0, 0, 128,
                     {{0, "System default"},
                      {64, "System information"},
                      {48, "System warning"},
                      {32, "System question"},
                      {16, "System error"},
                      {128, "Simple beep"}});
  }
  int Execute(IXInstrContext* ctx) override {
    const int type = CArgs(ctx).Param(0).AsInt();
    CZetOs::PlayMessageBeep(type == 128 ? kSimpleBeep : static_cast<unsigned>(type));
    return kOk;
  }
};

class CSystemGenerateProgramEvent final : public TInstr<CSystemGenerateProgramEvent> {
 public:
  static constexpr int kEventCode = 45;

  static void Describe(CDescriber& d) {
    d.Head("Generate Engine Control Event ",
           "Generates an event call in QEngine Control (ZetEngCtrl.dll). This "
           "instruction will cause an event handler to be invoked in your "
           "VB/VC/C# program.")
        .ParamInt("Parameters", "event id", nullptr, 0, INT32_MIN, INT32_MAX);
  }
  int Execute(IXInstrContext* ctx) override {
    const int id = CArgs(ctx).Param(0).AsInt();
    if (auto* notify = static_cast<IXInstrNotify*>(ctx->GetService(kServiceNotify)))
      notify->PostEvent(kEventCode, id);
    return kOk;
  }
};

class CLog final : public TInstr<CLog> {
 public:
  static void Describe(CDescriber& d) {
    d.Head("Log ", "Logs a message in the application log")
        .ParamChoice("Log level", "", "The level of severity: INFO or DEBUG", 2, 1, 2,
                     {{2, "Information"}, {1, "Debug"}})
        .Input(kTypeString, "message", kEmptyText, "The message to be logged");
  }
  int Execute(IXInstrContext* ctx) override {
    CArgs a(ctx);
    CZetLog::Instance().Log(a.Param(0).AsInt(), a.Text(0));
    return kOk;
  }
};

}  // namespace
}  // namespace zet

#define ZET_FAMILY_Messages ZET_THIS_FAMILY
#include "frame/Factories.def"
