// Reading a zet exec request line in one pass (see Request.h). The line is parsed with the JSON
// library's event interface; everything but the inputs that are arrays becomes a JSON value as
// ParseJson would make it, and each array input of an instruction named earlier on the line is read
// straight into the values of its slot (numbers, Booleans, texts, points, lines), so a million
// points cost their 16 MB and not a JSON object each.
//
// Exactness comes first: the reader only takes the direct path when the result is the one the JSON
// value would have given. An element that does not fit its slot, or an "instr" given twice, ends
// the pass, and the caller reads the line again with ParseJson, so that every error text is the one
// the usual path writes, word for word.
#include <cmath>
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
    if (m_capture) return Element(EEvent::kOther, 0, nullptr);
    return Scalar([&] { return m_dom.null(); }, Json(nullptr));
  }
  bool boolean(bool b) {
    if (m_capture) return Element(b ? EEvent::kTrue : EEvent::kFalse, 0, nullptr);
    return Scalar([&] { return m_dom.boolean(b); }, Json(b));
  }
  bool number_integer(Json::number_integer_t v) {
    if (m_capture) return Element(EEvent::kNumber, static_cast<double>(v), nullptr);
    return Scalar([&] { return m_dom.number_integer(v); }, Json(v));
  }
  bool number_unsigned(Json::number_unsigned_t v) {
    if (m_capture) return Element(EEvent::kNumber, static_cast<double>(v), nullptr);
    return Scalar([&] { return m_dom.number_unsigned(v); }, Json(v));
  }
  bool number_float(Json::number_float_t v, const Json::string_t& text) {
    if (m_capture) return Element(EEvent::kNumber, v, nullptr);
    return Scalar([&] { return m_dom.number_float(v, text); }, Json(v));
  }
  bool string(Json::string_t& s) {
    if (m_capture) return Element(EEvent::kString, 0, &s);
    // Only an "instr" is looked at, so only then is the text copied.
    return Scalar([&] { return m_dom.string(s); }, IsInstr() ? Json(s) : Json());
  }
  bool binary(Json::binary_t& b) {
    return m_capture ? Element(EEvent::kOther, 0, nullptr) : m_dom.binary(b);
  }

  bool start_object(std::size_t n) {
    if (m_capture) return Open(true);
    if (m_depth == 0) m_topIsObject = true;
    CountInput();
    ++m_depth;
    return m_dom.start_object(n);
  }
  bool end_object() {
    if (m_capture) return Close();
    --m_depth;
    return m_dom.end_object();
  }
  bool key(Json::string_t& k) {
    if (m_capture) {
      if (m_nest == 1) m_field = FieldOf(k);
      return true;
    }
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
    if (m_capture) return Open(false);
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
    if (m_capture) return Close();
    if (--m_depth == 1) m_inInputs = false;
    return m_dom.end_array();
  }

  template <class Exception>
  bool parse_error(std::size_t position, const std::string& last, const Exception& ex) {
    return m_dom.parse_error(position, last, ex);  // throws, as Json::parse does
  }

 private:
  enum class EEvent { kNumber, kString, kTrue, kFalse, kOther };

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

  template <class Vector>
  Vector& Values() {
    return m_out.inputs.back().value.Ref<Vector>();
  }

  // Whether the array has more elements than its slot can hold: the rest are then only parsed, and
  // the input fails as the usual path fails it, whatever they are.
  template <class Vector>
  bool Full() {
    if (m_count++ < Vector::kMaxSize) return false;
    SReadInput& in = m_out.inputs.back();
    if (in.error.empty()) {
      in.error = "input " + std::to_string(in.index) + ": array too large";
      in.value.Clear();
    }
    return true;
  }
  bool Overflowed() const { return !m_out.inputs.back().error.empty(); }

  // A number as NumberOf reads one: a JSON number, or "NaN", "Infinity", "-Infinity".
  static bool NumberFrom(EEvent e, double d, const std::string* s, double* out) {
    if (e == EEvent::kNumber) {
      *out = d;
      return true;
    }
    if (e != EEvent::kString) return false;
    if (*s == "NaN")
      *out = std::nan("");
    else if (*s == "Infinity")
      *out = HUGE_VAL;
    else if (*s == "-Infinity")
      *out = -HUGE_VAL;
    else
      return false;
    return true;
  }

  int FieldOf(const std::string& k) const {
    const bool point = m_type == kTypePointArray;
    if (k == (point ? "x" : "a")) return 0;
    if (k == (point ? "y" : "d")) return 1;
    return -1;
  }

  // A scalar inside the captured array.
  bool Element(EEvent e, double d, std::string* s) {
    if (m_nest == 0) {  // an element of the array itself
      if (Overflowed()) return true;
      switch (m_type) {
        case kTypeNumberArray: {
          double v;
          if (!NumberFrom(e, d, s, &v)) return GiveUp();
          if (!Full<CZetNumberVector>()) Values<CZetNumberVector>().Std().push_back(v);
          return true;
        }
        case kTypeBoolArray:
          if (e != EEvent::kTrue && e != EEvent::kFalse) return GiveUp();
          if (!Full<CZetBoolVector>())
            Values<CZetBoolVector>().Std().emplace_back(e == EEvent::kTrue);
          return true;
        case kTypeStringArray: {
          std::string text;
          if (e != EEvent::kString || !Utf8ToCp1252(*s, &text)) return GiveUp();
          if (!Full<CZetStringVector>())
            Values<CZetStringVector>().Std().emplace_back(std::move(text));
          return true;
        }
        default:
          return GiveUp();  // points and lines are objects
      }
    }
    // A field of a point or a line; a later field of the same name replaces it, as in a JSON
    // object. Other fields are not read.
    if (m_nest == 1 && m_field >= 0) m_valid[m_field] = NumberFrom(e, d, s, &m_xy[m_field]);
    return true;
  }

  bool Open(bool object) {
    const bool pointOrLine = m_type == kTypePointArray || m_type == kTypeLineArray;
    if (m_nest == 0) {
      if (!object || !pointOrLine) return GiveUp();
      m_valid[0] = m_valid[1] = false;
      m_field = -1;
    } else if (m_nest == 1 && m_field >= 0) {
      m_valid[m_field] = false;  // a field holding an array or an object
      m_field = -1;
    }
    ++m_nest;
    return true;
  }

  bool Close() {
    if (m_nest == 0) {  // the end of the array
      m_capture = false;
      return true;
    }
    if (--m_nest > 0) return true;
    // The end of a point or a line.
    if (Overflowed()) return true;
    if (!m_valid[0] || !m_valid[1]) return GiveUp();
    if (m_type == kTypePointArray) {
      if (!Full<CZetPointVector>()) Values<CZetPointVector>().Std().emplace_back(m_xy[0], m_xy[1]);
    } else if (!Full<CZetLineVector>()) {
      Values<CZetLineVector>().Std().emplace_back(m_xy[0], m_xy[1]);
    }
    return true;
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
  int m_field = -1;      // the point's or line's field whose value comes next (0, 1,
                         // -1: other)
  bool m_valid[2] = {};  // whether each field holds a number
  double m_xy[2] = {};
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
