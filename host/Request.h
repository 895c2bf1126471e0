// What a zet exec request and an inspection-program step share (host-internal):
// the settings, naming an instruction, filling its parameters from a list or an object by name, and
// finding an input or output by name or position.
#pragma once

#include <optional>
#include <span>
#include <string>

#include "ValueCodec.h"
#include "zet/ZetHost.h"
#include "zet/ZetSetting.h"

namespace zet::host {

// The process-wide settings a request or a program may set: {"angle_unit":
// "degrees" | "radians", "annotation_color": N}. Absent fields stay as they are.
struct SSettings {
  std::optional<EZetAngleUnit> angleUnit;
  std::optional<int> annotationColor;
};
SSettings ParseSettings(const Json& settings);
void ApplySettings(const SSettings& settings);

// The registry index of an instruction named by identifier, display name or 1-based
// position (a JSON number or a string); fails with SDecodeError otherwise.
int ResolveInstr(CZetPluginModule& module, const Json& instr);

// Decodes `params` (a list in descriptor order or an object by parameter name) into the
// parameter slots `slots` (one per descriptor parameter); parameters not given are left
// as they are. Images are appended to `images`, which the caller keeps.
void DecodeParams(const SInstrInfo& info, const Json& params, std::span<CZetObject> slots,
                  std::vector<std::unique_ptr<CZetImage>>& images);

// The index of the entry whose name is `key` (UTF-8), or whose position it spells
// ("0", "1", ...); -1 when there is none.
template <class Entry>
int EntryIndex(const std::vector<Entry>& entries, const std::string& key);

}  // namespace zet::host
