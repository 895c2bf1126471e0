// zet: the reference host's command line (list, describe, catalog, exec, run).
#include <CLI/CLI.hpp>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <memory>
#include <nlohmann/json.hpp>
#if defined(_WIN32)
#include <fcntl.h>
#include <io.h>
#endif

#include "zet/ZetHost.h"
#include "zet/ZetSetting.h"

using namespace zet::host;

namespace {

int RunLines(CZetPluginModule& module, std::istream& in) {
  CZetJsonSession session(module);
  std::string line;
  while (std::getline(in, line)) {
    if (line.find_first_not_of(" \t\r") == std::string::npos) continue;  // blank lines
    session.Handle(line, std::cout);
    std::cout << '\n' << std::flush;
  }
  return 0;
}

}  // namespace

int main(int argc, char** argv) {
#if defined(_WIN32)
  // Byte for byte as on Linux: no CR LF translation of the JSON Lines and the catalogue.
  _setmode(_fileno(stdin), _O_BINARY);
  _setmode(_fileno(stdout), _O_BINARY);
#endif
  CLI::App app{"zet: runs the formula plug-in the way an inspection host does"};
  app.require_subcommand(1);
  std::string plugin;
  std::string angleUnit = "radians";
  int annotationColor = CZetSetting::Inst().GetDefaultAnnotationColor();
  app.add_option("--plugin", plugin, "The plug-in module (default: beside zet, or installed)");
  app.add_option("--angle-unit", angleUnit, "degrees or radians")
      ->check(CLI::IsMember({"degrees", "radians"}));
  app.add_option("--annotation-color", annotationColor, "Default annotation colour");
  uint64_t maxImagePixels = kDefaultMaxImagePixels;
  app.add_option("--max-image-pixels", maxImagePixels,
                 "Largest image (in pixels) read or drawn; default 2^27")
      ->check(CLI::PositiveNumber);

  auto* list = app.add_subcommand("list", "One line per instruction in registry order");
  std::string name;
  auto* describe = app.add_subcommand("describe", "One instruction's descriptor");
  describe->add_option("NAME", name, "Identifier, display name or position")->required();
  std::string format = "json";
  auto* catalog = app.add_subcommand("catalog", "Every descriptor in registry order");
  catalog->add_option("--format", format, "json or markdown")
      ->check(CLI::IsMember({"json", "markdown"}));
  std::string requests;
  auto* exec = app.add_subcommand(
      "exec", "JSON-Lines requests from FILE (default: standard input), responses on stdout");
  exec->add_option("FILE", requests, "Request file")->check(CLI::ExistingFile);
  SProgramOptions runOptions;
  auto* run = app.add_subcommand("run", "Runs an inspection program over images");
  run->add_option("PROGRAM", runOptions.program, "Program file (docs/programs.md)")
      ->required()
      ->check(CLI::ExistingFile);
  run->add_option("IMAGES", runOptions.images, "Image files or folders (default: the program's)");
  run->add_option("--out", runOptions.outDir,
                  "Folder for results.jsonl, results.csv and the overlays (default: "
                  "PROGRAM's name without extension, .out, in the current folder)");
  run->add_flag("--csv", runOptions.csv, "Also write results.csv");
  run->add_option("--jobs,-j", runOptions.jobs, "Images run on this many threads")
      ->check(CLI::Range(1, 256));
  bool noOverlays = false, quiet = false;
  run->add_flag("--no-overlays", noOverlays, "Write no overlay images");
  run->add_flag("--quiet,-q", quiet, "No progress or summary (failures are still told)");

  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError& e) {
    const int rc = app.exit(e);
    return rc == 0 ? 0 : 2;
  }

  CZetSetting::Inst().SetAngleUnit(angleUnit == "degrees" ? EZetAngleUnit::kDegrees
                                                           : EZetAngleUnit::kRadians);
  CZetSetting::Inst().SetDefaultAnnotationColor(annotationColor);
  SetMaxImagePixels(maxImagePixels);

  // A plug-in that cannot be loaded means nothing can run: a usage error (2), never
  // the "an image failed" of zet run (1).
  std::unique_ptr<CZetPluginModule> loaded;
  try {
    loaded = std::make_unique<CZetPluginModule>(plugin.empty() ? CZetPluginModule::DefaultPath()
                                                               : plugin);
  } catch (const std::exception& e) {
    std::cerr << "zet: " << e.what() << "\n";
    return 2;
  }
  CZetPluginModule& module = *loaded;
  try {
    if (*list) {
      std::cout << ListText(module);
    } else if (*describe) {
      std::string error;
      const int index = module.Find(name, &error);
      if (index < 0) {
        std::cerr << "zet: " << error << "\n";
        return 2;
      }
      std::cout << DescribeText(module, index);
    } else if (*catalog) {
      std::cout << (format == "markdown" ? CatalogMarkdown(module) : CatalogJson(module) + "\n");
    } else if (*exec) {
      if (requests.empty()) return RunLines(module, std::cin);
      std::ifstream in(requests);
      return RunLines(module, in);
    } else if (*run) {
      if (runOptions.outDir.empty())
        runOptions.outDir = std::filesystem::path(runOptions.program).stem().string() + ".out";
      runOptions.overlays = !noOverlays && ZET_HOST_HAS_OVERLAYS;
      if (!noOverlays && !ZET_HOST_HAS_OVERLAYS)
        std::cerr << "zet: " << kOverlaysUnavailable << "; the results are written without them\n";
      runOptions.progress = !quiet;
      runOptions.keepAngleUnit = app.count("--angle-unit") > 0;
      runOptions.keepAnnotationColor = app.count("--annotation-color") > 0;
      return RunProgram(module, runOptions, std::cerr);
    }
  } catch (const std::exception& e) {
    std::cerr << "zet: " << e.what() << "\n";
    return 1;
  }
  return 0;
}
