// zet: the reference host's command line (list, describe, catalog, exec, run).
#include <CLI/CLI.hpp>
#include <fstream>
#include <iostream>
#include <nlohmann/json.hpp>

#include "zet/ZetHost.h"
#include "zet/ZetSetting.h"

using namespace zet::host;

namespace {

int RunLines(CZetPluginModule& module, std::istream& in) {
  CZetJsonSession session(module);
  std::string line;
  while (std::getline(in, line)) {
    if (line.find_first_not_of(" \t\r") == std::string::npos) continue;  // blank lines
    std::cout << session.Handle(line) << '\n' << std::flush;
  }
  return 0;
}

}  // namespace

int main(int argc, char** argv) {
  CLI::App app{"zet: runs the formula plug-in the way an inspection host does"};
  app.require_subcommand(1);
  std::string plugin;
  std::string angleUnit = "radians";
  int annotationColor = CZetSetting::Inst().GetDefaultAnnotationColor();
  app.add_option("--plugin", plugin, "The plug-in module (default: beside zet, or installed)");
  app.add_option("--angle-unit", angleUnit, "degrees or radians")
      ->check(CLI::IsMember({"degrees", "radians"}));
  app.add_option("--annotation-color", annotationColor, "Default annotation colour");

  auto* list = app.add_subcommand("list", "One line per instruction in registry order");
  std::string name;
  auto* describe = app.add_subcommand("describe", "One instruction's descriptor");
  describe->add_option("NAME", name, "Identifier, display name or position")->required();
  std::string format = "json";
  auto* catalog = app.add_subcommand("catalog", "Every descriptor in registry order");
  catalog->add_option("--format", format, "json or markdown")
      ->check(CLI::IsMember({"json", "markdown"}));
  auto* exec = app.add_subcommand("exec", "JSON-Lines requests on stdin, responses on stdout");
  std::string program;
  auto* run = app.add_subcommand(
      "run", "Runs an inspection program: a file of zet exec request lines");
  run->add_option("PROGRAM", program, "Program file")->required()->check(CLI::ExistingFile);

  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError& e) {
    const int rc = app.exit(e);
    return rc == 0 ? 0 : 2;
  }

  CZetSetting::Inst().SetAngleUnit(angleUnit == "degrees" ? EZetAngleUnit::kDegrees
                                                           : EZetAngleUnit::kRadians);
  CZetSetting::Inst().SetDefaultAnnotationColor(annotationColor);

  try {
    CZetPluginModule module(plugin.empty() ? CZetPluginModule::DefaultPath() : plugin);
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
      return RunLines(module, std::cin);
    } else if (*run) {
      std::ifstream in(program);
      return RunLines(module, in);
    }
  } catch (const std::exception& e) {
    std::cerr << "zet: " << e.what() << "\n";
    return 1;
  }
  return 0;
}
