// Fuzzing zet's request runner (CZetJsonSession) with the real plug-in: each
// line of the input is one request of one session, as `zet exec` reads them.
// The answer to every line must be one JSON object.
//
// Requests that would act on the machine are left out before they run: a "save"
// or "file" key anywhere (files written or read by name), and the instructions
// whose declared effects reach beyond the process's outputs (files and folders,
// the environment, sleeps and message boxes, the desktop, the log;
// include/zet/ZetEffects.h). Their own tests cover those. A line that is not
// JSON goes to the runner as it is.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <nlohmann/json.hpp>
#include <string>
#include <string_view>

#include "zet/ZetEffects.h"
#include "zet/ZetHost.h"
#include "zet/ZetSetting.h"

namespace {

using Json = nlohmann::ordered_json;
using zet::host::CZetPluginModule;

CZetPluginModule* g_module = nullptr;
// Comfortably above the runner's nesting limit (128), whatever either counts from.
constexpr int kDeeperThanTheRunnerReads = 160;
struct STooDeep {
  int depth;
};

bool NamesAFile(const Json& j) {
  if (j.is_object()) {
    for (const auto& [key, value] : j.items())
      if (key == "save" || key == "file" || NamesAFile(value)) return true;
  } else if (j.is_array()) {
    for (const Json& e : j)
      if (NamesAFile(e)) return true;
  }
  return false;
}

bool ActsOnTheMachine(const Json& request) {
  if (NamesAFile(request)) return true;
  if (!request.is_object() || !request.contains("instr")) return false;
  const Json& instr = request["instr"];
  int index = -1;
  if (instr.is_number_integer()) {
    const auto pos = instr.get<int64_t>();
    if (pos >= 1 && pos <= g_module->Count()) index = static_cast<int>(pos - 1);
  } else if (instr.is_string()) {
    std::string name;
    if (zet::host::Utf8ToCp1252(instr.get<std::string>(), &name)) index = g_module->Find(name);
  }
  if (index < 0) return false;
  constexpr unsigned kActsOnTheMachine = zet::kEffectFiles | zet::kEffectEnvironment |
                                         zet::kEffectBlocking | zet::kEffectDesktop |
                                         zet::kEffectLog;
  unsigned effects = 0;
  if (!zet::host::InstrEffects(g_module->At(index)->GetInfo()->ident, &effects)) return true;
  return (effects & kActsOnTheMachine) != 0;
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
  const char* path = std::getenv("ZET_PLUGIN");
  g_module = new CZetPluginModule(path && *path ? path : ZET_FUZZ_PLUGIN);  // for the whole run
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  CZetSetting::Inst().SetAngleUnit(EZetAngleUnit::kRadians);
  zet::host::CZetJsonSession session(*g_module);
  const std::string_view input(reinterpret_cast<const char*>(data), size);
  for (size_t start = 0; start < input.size();) {
    size_t end = input.find('\n', start);
    if (end == std::string_view::npos) end = input.size();
    const std::string line(input.substr(start, end - start));
    start = end + 1;
    // Nesting far beyond what the runner accepts is not parsed here (the checks below
    // recurse): the runner refuses such a line before it looks at what it asks for.
    bool tooDeep = false;
    Json request;
    try {
      request = Json::parse(
          line,
          [](int depth, Json::parse_event_t, Json&) {
            if (depth > kDeeperThanTheRunnerReads) throw STooDeep{depth};
            return true;
          },
          false);
    } catch (const STooDeep&) {
      tooDeep = true;
    }
    if (!tooDeep && !request.is_discarded() && ActsOnTheMachine(request)) continue;
    const Json answer = Json::parse(session.Handle(line), nullptr, false);
    if (!answer.is_object()) std::abort();
    if (tooDeep && !answer.contains("error")) std::abort();
  }
  return 0;
}
