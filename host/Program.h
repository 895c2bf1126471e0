// Inspection programs (host-internal): the checked form of a program file, ready to
// run on any number of images. Program.cpp reads and checks the file; ProgramRun.cpp
// runs it. docs/programs.md describes the file for users.
#pragma once

#include <filesystem>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "Request.h"

namespace zet::host {

// The variable that holds the image being inspected; always variable 0.
inline constexpr const char* kImageVariable = "image";

struct SVariable {
  std::string name;
  int type = 0;         // descriptor type code of "value" and "file"; 0 when untyped
  CZetObject value;     // the starting value (untyped when none)
  std::string file;     // per-image file pattern ({stem}, {name}); empty when none
};

// An input slot's source: a variable, or a literal decoded when the program was read.
struct SBinding {
  int slot = 0;
  int var = -1;  // >= 0: this variable
  CZetObject literal;
};

struct SStep {
  int number = 0;    // 1-based
  std::string name;  // optional, from the file
  int index = 0;     // registry index
  int inputCount = -1;  // what GetInputCount answers; -1 for the declared count
  std::vector<CZetObject> params;
  std::vector<SBinding> inputs;
  std::vector<std::pair<int, int>> outputs;  // (output index, variable)
  // How messages name the step: step 2 "fit" (PtsToBestCircle).
  std::string label;
};

struct SProgram {
  std::filesystem::path file;
  std::vector<SVariable> vars;
  std::vector<SStep> steps;
  std::vector<int> results;  // variables written to the results
  int overlayVar = 0;        // the image the overlay is drawn over
  bool overlay = true;
  Json images;  // the file's "images" entry (null when absent); see ImageFiles
  SSettings settings;
  std::vector<std::unique_ptr<CZetImage>> literalImages;  // images of literal inputs
};

// Reads and checks a program file. Throws SDecodeError with a text that names the
// file and the step or variable at fault.
SProgram LoadProgram(CZetPluginModule& module, const std::string& file);

// The image files of an "images" entry: a file, a folder (its PGM and PNG files, by
// name), or a list of either; relative paths are taken from `base`.
std::vector<std::string> ImageFiles(const Json& images, const std::filesystem::path& base);

// The variable's file for one image: {stem} and {name} replaced by the image's file
// name without and with its extension, relative to the image's folder.
std::filesystem::path VariableFile(const std::string& pattern, const std::filesystem::path& image);

}  // namespace zet::host
