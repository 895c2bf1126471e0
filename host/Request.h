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

// A zet exec request line read in one pass (RequestRead.cpp): the request as JSON,
// except for its inputs that are arrays of an instruction named before them, which
// are read straight into values of their slots' kinds and left as null in the tree.
struct SReadInput {
  int index = 0;      // the position in "inputs"
  CZetObject value;   // the slot's values
  std::string error;  // when set, what decoding the input fails with instead of the value
};
struct SReadRequest {
  Json tree;
  std::vector<SReadInput> inputs;  // in the order of their positions
};
// Reads `line` into `out`. Fails as ParseJson does (nesting, malformed text). An input that does
// not fit its slot is left with the error text DecodeValue would give it. Returns false, with `out`
// empty, when the line is beyond the direct path (an "instr" given again after inputs were read):
// ParseJson then reads it.
bool ReadRequest(std::string_view line, CZetPluginModule& module, SReadRequest& out);

// The index of the entry whose name is `key` (UTF-8), or whose position it spells
// ("0", "1", ...); -1 when there is none.
template <class Entry>
int EntryIndex(const std::vector<Entry>& entries, const std::string& key);

}  // namespace zet::host
