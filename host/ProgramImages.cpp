// The images a program run would inspect, for runners that share one program's images
// among processes (the Python package's Dask runner) and must list them exactly as
// RunProgram does.
#include "Program.h"

namespace zet::host {

std::vector<std::string> ProgramImageFiles(CZetPluginModule& module, const std::string& program,
                                           const std::vector<std::string>& images,
                                           std::string* error) {
  try {
    if (!images.empty()) return ImageFiles(Json(images), std::filesystem::path());
    const SProgram p = LoadProgram(module, program);
    if (!p.images.is_null()) return ImageFiles(p.images, p.file.parent_path());
    return {};
  } catch (const SDecodeError& e) {
    if (error) *error = e.text;
    return {};
  }
}

}  // namespace zet::host
