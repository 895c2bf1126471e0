// Reading a zet exec request line in one pass (see Request.h). The line is parsed with the JSON
// library's event interface; everything but the inputs that are arrays becomes a JSON value as
// ParseJson would make it, and each array input of an instruction named earlier on the line is read
// straight into the values of its slot (numbers, Booleans, texts, points, lines), so a million
// points cost their 16 MB and not a JSON object each.
//
// Each element is made a small JSON value of its own and decoded by the value codec's ElementOf,
// then dropped: the values and the error texts are the codec's, and an array that fails fails as
// DecodeValue fails it (too many elements first, else its first element that does not fit), at the
// point where the request decodes that input. Only an "instr" given twice after inputs were read
// sends the line back to ParseJson.
#include <optional>
#include <utility>

#include "Request.h"

namespace zet::host {

namespace {

using Dom = nlohmann::detail::json_sax_dom_parser<Json>;

class CRequestReader {
 public:
  CRequestReader(CZetPluginModule& module, SReadRequest& out)
      : m_module(module), m_out(out), m_dom(out.tree) {}

  // Whether the pass ended because the line must be read whole instead.
  bool GaveUp() const { return m_gaveUp; }

  bool null() {
    if (m_capture) return Element([&](Dom& d) { return d.null(); }, Json(nullptr));
    return Scalar([&] { return m_dom.null(); }, Json(nullptr));
  }
  bool boolean(bool b) {
    if (m_capture) return Element([&](Dom& d) { return d.boolean(b); }, Json(b));
    return Scalar([&] { return m_dom.boolean(b); }, Json(b));
  }
  bool number_integer(Json::number_integer_t v) {
    if (m_capture) return Element([&](Dom& d) { return d.number_integer(v); }, Json(v));
    return Scalar([&] { return m_dom.number_integer(v); }, Json(v));
  }
  bool number_unsigned(Json::number_unsigned_t v) {
    if (m_capture) return Element([&](Dom& d) { return d.number_unsigned(v); }, Json(v));
    return Scalar([&] { return m_dom.number_unsigned(v); }, Json(v));
  }
  bool number_float(Json::number_float_t v, const Json::string_t& text) {
    if (m_capture) return Element([&](Dom& d) { return d.number_float(v, text); }, Json(v));
    return Scalar([&] { return m_dom.number_float(v, text); }, Json(v));
  }
  bool string(Json::string_t& s) {
    if (m_capture) return Element([&](Dom& d) { return d.string(s); }, Json(s));
    // Only an "instr" is looked at, so only then is the text copied.
    return Scalar([&] { return m_dom.string(s); }, IsInstr() ? Json(s) : Json());
  }
  bool binary(Json::binary_t& b) {
    return m_capture ? GiveUp() : m_dom.binary(b);  // JSON text has none
  }

  bool start_object(std::size_t n) {
    if (m_capture) return Open([&](Dom& d) { return d.start_object(n); });
    if (m_depth == 0) m_topIsObject = true;
    CountInput();
    ++m_depth;
    return m_dom.start_object(n);
  }
  bool end_object() {
    if (m_capture) return Close([&](Dom& d) { return d.end_object(); });
    --m_depth;
    return m_dom.end_object();
  }
  bool key(Json::string_t& k) {
    if (m_capture) return m_element->key(k);
    if (m_depth == 1) {
      m_key = k;
      if (k == "instr" && ++m_instrKeys > 1) {
        // The last "instr" is the one that counts: inputs read for an earlier one would be of the
        // wrong kinds.
        m_instr = -1;
        if (!m_out.inputs.empty()) return GiveUp();
      }
      // A later "inputs" replaces the earlier one, and with it what was read of it.
      if (k == "inputs") m_out.inputs.clear();
    }
    return m_dom.key(k);
  }
  bool start_array(std::size_t n) {
    if (m_capture) return Open([&](Dom& d) { return d.start_array(n); });
    if (m_depth == 2 && m_inInputs && m_instr >= 0) {
      const int i = m_inputCount;
      const int type = SlotType(i);
      if (IsArrayType(type)) {
        ++m_inputCount;
        BeginCapture(i, type);
        return m_dom.null();  // the input's place in the tree; its values are read here
      }
    }
    CountInput();
    if (m_depth == 1 && m_topIsObject && m_key == "inputs") {
      m_inInputs = true;
      m_inputCount = 0;
    }
    ++m_depth;
    return m_dom.start_array(n);
  }
  bool end_array() {
    if (m_capture) return Close([&](Dom& d) { return d.end_array(); });
    if (--m_depth == 1) m_inInputs = false;
    return m_dom.end_array();
  }

  template <class Exception>
  bool parse_error(std::size_t position, const std::string& last, const Exception& ex) {
    return m_dom.parse_error(position, last, ex);  // throws, as Json::parse does
  }

 private:
  bool IsInstr() const { return m_depth == 1 && m_key == "instr"; }

  // A scalar outside the captured arrays: into the tree, and an "instr" is resolved at once so that
  // the inputs after it can be read as their slots' kinds.
  template <class F>
  bool Scalar(F toDom, const Json& value) {
    CountInput();
    if (IsInstr() && m_instrKeys == 1) {
      try {
        m_instr = ResolveInstr(m_module, value);
      } catch (const SDecodeError&) {
        m_instr = -1;  // the request fails there; its error comes from the usual path
      }
    }
    return toDom();
  }

  // One more element of the "inputs" list itself.
  void CountInput() {
    if (m_depth == 2 && m_inInputs) ++m_inputCount;
  }

  int SlotType(int i) const {
    const SInstrInfo& info = *m_module.At(m_instr)->GetInfo();
    const int declared = static_cast<int>(info.inputs.size());
    if (declared == 0 || (!info.variadic && i >= declared)) return -1;
    return info.inputs[static_cast<size_t>(std::min(i, declared - 1))].type;
  }

  static bool IsArrayType(int type) {
    switch (type) {
#define ZET_ARRAY_TYPE(Code, ...) case Code:
#include "zet/ZetTypes.def"
      return true;
      default:
        return false;
    }
  }

  // ---- one array input read into its slot ----

  void BeginCapture(int index, int type) {
    m_capture = true;
    m_type = type;
    m_nest = 0;
    m_count = 0;
    m_what = "input " + std::to_string(index);
    m_elementError.clear();
    m_out.inputs.push_back(SReadInput{index, CZetObject(), {}});
    switch (type) {
#define ZET_ARRAY_TYPE(Code, Number, Vector, ...) \
  case Code:                                      \
    m_out.inputs.back().value.Ref<Vector>();      \
    break;
#include "zet/ZetTypes.def"
      default:
        break;
    }
  }

  // One whole element: counted, and decoded into the slot's values until the array has failed.
  void Decode(const Json& e) {
    switch (m_type) {
#define ZET_ARRAY_TYPE(Code, Number, Vector, ...) \
  case Code:                                      \
    Add<Vector>(e);                               \
    break;
#include "zet/ZetTypes.def"
      default:
        break;
    }
  }

  template <class Vector>
  void Add(const Json& e) {
    SReadInput& in = m_out.inputs.back();
    if (++m_count > Vector::kMaxSize) {
      // Too many: the input fails so whatever its elements are (DecodeValue checks the size first),
      // and the rest are only parsed.
      in.error = m_what + ": array too large";
      in.value.Clear();
      return;
    }
    if (!m_elementError.empty()) return;
    try {
      in.value.Ref<Vector>().Std().push_back(ElementOf<typename Vector::value_type>(e, m_what));
    } catch (const SDecodeError& error) {
      m_elementError = error.text;  // the first element that does not fit
      in.value.Clear();
    }
  }

  // A scalar inside the captured array: an element itself, or part of one.
  template <class F>
  bool Element(F toElement, const Json& value) {
    if (m_nest > 0) return toElement(*m_element);
    Decode(value);
    return true;
  }

  template <class F>
  bool Open(F toElement) {
    if (m_nest++ == 0) {  // an element that is an array or an object
      m_elementValue = Json();
      m_element.emplace(m_elementValue);
    }
    return toElement(*m_element);
  }

  template <class F>
  bool Close(F toElement) {
    if (m_nest == 0) {  // the end of the array
      m_capture = false;
      SReadInput& in = m_out.inputs.back();
      if (in.error.empty() && !m_elementError.empty()) in.error = std::move(m_elementError);
      return true;
    }
    const bool ok = toElement(*m_element);
    if (--m_nest == 0) {
      m_element.reset();
      Decode(m_elementValue);
      m_elementValue = Json();
    }
    return ok;
  }

  bool GiveUp() {
    m_gaveUp = true;
    return false;  // ends the parse
  }

  CZetPluginModule& m_module;
  SReadRequest& m_out;
  Dom m_dom;
  bool m_gaveUp = false;

  // Where the tree is: open containers, the request's last key, the inputs list.
  int m_depth = 0;
  bool m_topIsObject = false;
  std::string m_key;
  int m_instrKeys = 0;
  int m_instr = -1;
  bool m_inInputs = false;
  int m_inputCount = 0;

  // The array being read into a slot.
  bool m_capture = false;
  int m_type = 0;
  int m_nest = 0;  // containers open inside it
  size_t m_count = 0;
  std::string m_what;          // "input N", as errors name it
  std::string m_elementError;  // what its first element that does not fit says
  // The element being read when it is an array or an object.
  Json m_elementValue;
  std::optional<Dom> m_element;
};

}  // namespace

bool ReadRequest(std::string_view line, CZetPluginModule& module, SReadRequest& out) {
  CheckJsonDepth(line);
  CRequestReader reader(module, out);
  Json::sax_parse(line.begin(), line.end(), &reader);
  if (reader.GaveUp()) {
    out = SReadRequest();
    return false;
  }
  return true;
}

}  // namespace zet::host
