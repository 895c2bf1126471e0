// Environment: the process environment read whole, by names and by one name, and set
// with the C runtime's _putenv rules. Nothing is cached: every run reads the
// environment as it is then.
#include <string>

#include "system/System.h"
#include "zet/ZetOs.h"

namespace zet {
namespace {

// Fills a string-array output with `items`; an empty list leaves the output as it was.
void SetList(const CArgs& a, const CStdStrVector& items) {
  if (items.empty()) return;
  auto& out = a.OutRef<CZetStringVector>(0);
  if (!out.Resize(static_cast<unsigned>(items.size()))) return;
  for (size_t i = 0; i < items.size(); ++i) out[static_cast<unsigned>(i)].Str() = items[i];
}

class CGetEnvVars final : public TInstr<CGetEnvVars> {
 public:
  static void Describe(CDescriber& d) {
    d.Head("GetEnvVars",
           "Returns an array of strings, each element containing a pair of the form "
           "ENV_VAR=string .")
        .Output(kTypeStringArray, "env vars");
  }
  int Execute(IXInstrContext* ctx) override {
    SetList(CArgs(ctx), CZetOs::GetEnvironment());
    return kOk;
  }
};

// The text before the first "=" of each entry: an entry that starts with "=", or has
// none, gives an empty name.
class CGetEnvNames final : public TInstr<CGetEnvNames> {
 public:
  static void Describe(CDescriber& d) {
    d.Head("GetEnvNames",
           "Returns an array of strings, each element containing the name of an "
           "environment variable.")
        .Output(kTypeStringArray, "env var names");
  }
  int Execute(IXInstrContext* ctx) override {
    CStdStrVector names = CZetOs::GetEnvironment();
    for (CStdStr& entry : names) {
      const size_t eq = entry.find('=');
      entry.resize(eq == std::string::npos ? 0 : eq);
    }
    SetList(CArgs(ctx), names);
    return kOk;
  }
};

class CGetEnv final : public TInstr<CGetEnv> {
 public:
  static void Describe(CDescriber& d) {
    d.Head("GetEnv", "Returns the value of the specified environment variable.")
        .Input(kTypeString, "env var name", kEmptyText)
        .Output(kTypeString, "env var value");
  }
  int Execute(IXInstrContext* ctx) override {
    CArgs a(ctx);
    CStdStr value;
    if (!CZetOs::GetEnv(a.Text(0), &value) || value.empty()) value = "Not found";
    a.Out(0) = value;
    return kOk;
  }
};

class CSetEnv final : public TInstr<CSetEnv> {
 public:
  static void Describe(CDescriber& d) {
    d.Head("SetEnv", "Sets the value of the specified environment variable.")
        .Input(kTypeString, "env var name", kEmptyText)
        .Input(kTypeString, "env var value", kEmptyText);
  }
  int Execute(IXInstrContext* ctx) override {
    CArgs a(ctx);
    const std::string assignment = std::string(a.Text(0)) + "=" + a.Text(1);
    return CZetOs::PutEnv(assignment.c_str()) ? kOk : kFail;
  }
};

}  // namespace
}  // namespace zet

#define ZET_FAMILY_Environment ZET_THIS_FAMILY
#include "frame/Factories.def"
