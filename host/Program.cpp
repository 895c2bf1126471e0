// Reading an inspection program: the file's JSON checked against the loaded plug-in's
// descriptors and turned into an SProgram (see Program.h, docs/programs.md). Every
// mistake that does not depend on an image (an unknown instruction, parameter, input or
// variable, a literal that does not fit its slot, a variable read before anything
// writes it) is found here, before any image is touched.
#include "Program.h"
#include "ImageDecode.h"

#include <algorithm>
#include <fstream>
#include <iterator>
#include <map>
#include <set>

namespace zet::host {

namespace fs = std::filesystem;

namespace {

// The descriptor type a variable declares: its program name ("boolean") or the
// catalogue's spelling ("Boolean"); both are accepted (docs/programs.md). 0:
// none.
int DeclaredType(const Json& name) {
  for (const SZetTypeInfo& t : kZetTypeInfos)
    if (t.program && (name == t.program || name == t.display)) return t.code;
  return 0;
}

void OnlyKeys(const Json& j, std::initializer_list<const char*> keys, const std::string& what) {
  if (!j.is_object()) Fail(what + ": expected an object");
  for (const auto& item : j.items()) {
    const std::string& key = item.key();
    if (std::find_if(keys.begin(), keys.end(), [&](const char* k) { return key == k; }) ==
        keys.end())
      Fail(what + ": unknown field \"" + key + "\"");
  }
}

// {"var": "name"} names a variable; anything else is a literal.
bool IsVariableRef(const Json& j) { return j.is_object() && j.size() == 1 && j.contains("var"); }

class CLoader {
 public:
  CLoader(CZetPluginModule& module, const fs::path& file) : m_module(module) {
    m_program.file = file;
    m_base = file.parent_path();
    Declare(kImageVariable);
    m_set.insert(0);
  }

  SProgram Load(const Json& j) {
    OnlyKeys(j, {"description", "images", "settings", "variables", "steps", "results", "overlay"},
             "program");
    if (j.contains("settings")) m_program.settings = ParseSettings(j["settings"]);
    if (j.contains("variables")) Variables(j["variables"]);
    const Json steps = j.value("steps", Json::array());
    if (!steps.is_array()) Fail("\"steps\" must be a list");
    // Every variable a step writes is known from the start, so that reading one too
    // early is told as such.
    for (const Json& s : steps)
      if (s.is_object() && s.contains("outputs") && s["outputs"].is_structured())
        for (const Json& name : s["outputs"])
          if (name.is_string() && !name.get<std::string>().empty() && name != kImageVariable)
            Declare(name.get<std::string>());
    for (size_t i = 0; i < steps.size(); ++i) Step(steps[i], static_cast<int>(i) + 1);
    if (j.contains("results")) {
      const Json& r = j["results"];
      if (!r.is_array()) Fail("\"results\" must be a list of variable names");
      for (const Json& name : r) m_program.results.push_back(Known(name, "results"));
    }
    if (j.contains("overlay")) {
      const Json& o = j["overlay"];
      if (o.is_boolean()) {
        m_program.overlay = o.get<bool>();
      } else {
        OnlyKeys(o, {"over"}, "overlay");
        if (o.contains("over")) m_program.overlayVar = Known(o["over"], "overlay");
      }
    }
    return std::move(m_program);
  }

 private:
  int Declare(const std::string& name) {
    auto [it, added] = m_names.try_emplace(name, static_cast<int>(m_program.vars.size()));
    if (added) m_program.vars.push_back({name, 0, CZetObject(), ""});
    return it->second;
  }

  // A variable the program declares or some step writes.
  int Known(const Json& name, const std::string& what) {
    if (!name.is_string()) Fail(what + ": a variable name must be a string, got " + Brief(name));
    auto it = m_names.find(name.get<std::string>());
    if (it == m_names.end()) Fail(what + ": no variable '" + name.get<std::string>() + "'");
    return it->second;
  }

  // A literal image file is taken from the program's folder.
  void DecodeLiteral(Json j, int type, CZetObject& out, const std::string& what) {
    if (type == kTypeImage && j.is_object() && j.contains("file") && j["file"].is_string()) {
      const fs::path f = j["file"].get<std::string>();
      if (f.is_relative()) j["file"] = (m_base / f).lexically_normal().string();
    }
    DecodeValue(j, type, out, what, m_program.literalImages);
  }

  void Variables(const Json& vars) {
    if (!vars.is_object()) Fail("\"variables\" must be an object of name: declaration");
    for (const auto& [name, decl] : vars.items()) {
      const std::string what = "variable '" + name + "'";
      if (name.empty() || name == kImageVariable)
        Fail(what + ": the name is empty or reserved for the image being inspected");
      OnlyKeys(decl, {"type", "value", "file"}, what);
      SVariable& v = m_program.vars[static_cast<size_t>(Declare(name))];
      if (decl.contains("type")) {
        const Json& t = decl["type"];
        v.type = DeclaredType(t);
        if (!v.type) Fail(what + ": unknown type " + Brief(t));
      }
      if (decl.contains("value") && decl.contains("file"))
        Fail(what + ": give \"value\" or \"file\", not both");
      if ((decl.contains("value") || decl.contains("file")) && !v.type)
        Fail(what + ": a \"value\" or \"file\" needs a \"type\"");
      if (decl.contains("value")) DecodeLiteral(decl["value"], v.type, v.value, what);
      if (decl.contains("file")) {
        if (!decl["file"].is_string() || decl["file"].get<std::string>().empty())
          Fail(what + ": \"file\" must be a file name pattern");
        v.file = decl["file"].get<std::string>();
      }
      if (!v.value.IsEmpty() || !v.file.empty()) m_set.insert(m_names[name]);
    }
  }

  void Step(const Json& j, int number) {
    SStep s;
    s.number = number;
    s.label = "step " + std::to_string(number);
    if (j.is_object() && j.contains("name") && j["name"].is_string()) {
      s.name = j["name"].get<std::string>();
      s.label += " \"" + s.name + "\"";
    }
    try {
      OnlyKeys(j, {"name", "instr", "params", "inputs", "outputs"}, "a step");
      if (!j.contains("instr")) Fail("missing \"instr\"");
      s.index = ResolveInstr(m_module, j["instr"]);
      const SInstrInfo& info = *m_module.At(s.index)->GetInfo();
      s.label += " (" + Cp1252ToUtf8(info.name ? info.name : "") + ")";
      for (const SInstrParam& p : info.params) s.params.push_back(p.value);
      if (j.contains("params"))
        DecodeParams(info, j["params"], s.params,
                     m_program.literalImages);
      if (j.contains("inputs")) Inputs(info, j["inputs"], s);
      if (j.contains("outputs")) Outputs(info, j["outputs"], s);
    } catch (const SDecodeError& e) {
      Fail(s.label + ": " + e.text);
    }
    for (const auto& [out, var] : s.outputs) m_set.insert(var);
    m_program.steps.push_back(std::move(s));
  }

  void Inputs(const SInstrInfo& info, const Json& j, SStep& s) {
    const int declared = static_cast<int>(info.inputs.size());
    auto bind = [&](int slot, const Json& value, const std::string& what) {
      SBinding b;
      b.slot = slot;
      if (IsVariableRef(value)) {
        b.var = Known(value["var"], what);
        if (!m_set.count(b.var))
          Fail(what + ": variable '" + value["var"].get<std::string>() +
               "' has no value before this step");
      } else {
        DecodeLiteral(value, info.inputs[std::min(slot, declared - 1)].type, b.literal, what);
      }
      s.inputs.push_back(std::move(b));
    };
    if (j.is_array()) {
      const int given = static_cast<int>(j.size());
      if (given > declared && (!info.variadic || declared == 0))
        Fail("too many inputs: " + std::to_string(given) + " for " + std::to_string(declared));
      if (info.variadic) s.inputCount = given;
      for (int i = 0; i < given; ++i) bind(i, j[i], "input " + std::to_string(i));
    } else if (j.is_object()) {
      for (const auto& [key, value] : j.items()) {
        const int slot = EntryIndex(info.inputs, key);
        if (slot < 0) Fail("no input '" + key + "'");
        bind(slot, value, "input '" + key + "'");
      }
    } else {
      Fail("\"inputs\" must be a list or an object by input name");
    }
  }

  void Outputs(const SInstrInfo& info, const Json& j, SStep& s) {
    auto bind = [&](int out, const Json& name, const std::string& what) {
      if (name.is_null()) return;
      if (!name.is_string() || name.get<std::string>().empty())
        Fail(what + ": expected a variable name, got " + Brief(name));
      if (name == kImageVariable) Fail(what + ": the image being inspected cannot be written");
      s.outputs.emplace_back(out, Declare(name.get<std::string>()));
    };
    if (j.is_array()) {
      if (j.size() > info.outputs.size()) Fail("\"outputs\" lists more outputs than there are");
      for (size_t i = 0; i < j.size(); ++i)
        bind(static_cast<int>(i), j[i], "output " + std::to_string(i));
    } else if (j.is_object()) {
      for (const auto& [key, name] : j.items()) {
        const int out = EntryIndex(info.outputs, key);
        if (out < 0) Fail("no output '" + key + "'");
        bind(out, name, "output '" + key + "'");
      }
    } else {
      Fail("\"outputs\" must be a list or an object by output name");
    }
  }

  CZetPluginModule& m_module;
  SProgram m_program;
  fs::path m_base;
  std::map<std::string, int> m_names;
  std::set<int> m_set;  // variables that hold a value before the step being read
};

}  // namespace

SProgram LoadProgram(CZetPluginModule& module, const std::string& file) {
  std::string text;
  if (const std::string err = ReadRegularFile(file, text, ""); !err.empty())
    Fail(file + ": cannot read the program file" +
         (err.ends_with("not a regular file") ? ": not a regular file" : ""));
  try {
    const Json j = ParseJson(text, /*comments=*/true);
    SProgram p = CLoader(module, fs::path(file)).Load(j);
    p.images = j.value("images", Json());
    return p;
  } catch (const Json::exception& e) {
    Fail(file + ": " + Cut(e.what(), 300));
  } catch (const SDecodeError& e) {
    Fail(file + ": " + e.text);
  }
}

std::vector<std::string> ImageFiles(const Json& images, const fs::path& base) {
  std::vector<std::string> out;
  if (images.is_array()) {
    for (const Json& one : images) {
      const std::vector<std::string> part = ImageFiles(one, base);
      out.insert(out.end(), part.begin(), part.end());
    }
    return out;
  }
  if (!images.is_string()) Fail("\"images\" must be a file, a folder or a list of them");
  const fs::path p = (base / images.get<std::string>()).lexically_normal();
  std::error_code ec;
  if (fs::is_directory(p, ec)) {
    for (const auto& entry : fs::directory_iterator(p, ec)) {
      std::string ext = entry.path().extension().string();
      std::transform(ext.begin(), ext.end(), ext.begin(), ::tolower);
      if (entry.is_regular_file(ec) && (ext == ".pgm" || ext == ".png"))
        out.push_back(entry.path().lexically_normal().string());
    }
    std::sort(out.begin(), out.end());
  } else if (fs::exists(p, ec)) {
    out.push_back(p.string());
  } else {
    Fail("no image file or folder " + p.string());
  }
  return out;
}

fs::path VariableFile(const std::string& pattern, const fs::path& image) {
  std::string f = pattern;
  for (const auto& [key, value] : {std::pair<std::string, std::string>{"{stem}", image.stem().string()},
                                   {"{name}", image.filename().string()}})
    for (size_t at = 0; (at = f.find(key, at)) != std::string::npos; at += value.size())
      f.replace(at, key.size(), value);
  const fs::path p(f);
  return p.is_relative() ? (image.parent_path() / p).lexically_normal() : p;
}

}  // namespace zet::host
