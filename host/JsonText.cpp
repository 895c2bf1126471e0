// JSON text at the host's edges (see ValueCodec.h): reading untrusted text with a
// nesting limit, short excerpts of untrusted values for error texts, and writing
// values by streaming so that an answer costs about its own text.
//
// The nesting limit is checked on the text before it is parsed: the parser itself
// is iterative, but copying, comparing and printing a parsed value recurse once per
// level, so a deep value would end the host on any of them.
//
// The writer gives byte for byte what Json::dump(-1, ' ', false, replace) gives for
// the same value: every scalar goes through the library's own serializer, only the
// brackets, commas and keys are written here.
#include <cstdio>
#include <ostream>

#include "ValueCodec.h"

namespace zet::host {

namespace {

using Serializer = nlohmann::detail::serializer<Json>;

// Where the text first nests deeper than kMaxJsonDepth: 0, or the 1-based byte
// offset of the bracket, with its line and column.
struct SDepthReport {
  size_t offset = 0;
  size_t line = 1;
  size_t column = 0;
};

SDepthReport FirstTooDeep(std::string_view text, bool comments) {
  SDepthReport r;
  size_t depth = 0;
  size_t lineStart = 0;
  for (size_t i = 0; i < text.size(); ++i) {
    const char c = text[i];
    if (c == '\n') {
      ++r.line;
      lineStart = i + 1;
    } else if (c == '"') {  // a string: skip to its closing quote
      for (++i; i < text.size() && text[i] != '"'; ++i)
        if (text[i] == '\\') ++i;
    } else if (comments && c == '/' && i + 1 < text.size() && text[i + 1] == '/') {
      while (i + 1 < text.size() && text[i + 1] != '\n') ++i;
    } else if (comments && c == '/' && i + 1 < text.size() && text[i + 1] == '*') {
      for (i += 2; i + 1 < text.size() && !(text[i] == '*' && text[i + 1] == '/'); ++i)
        if (text[i] == '\n') {
          ++r.line;
          lineStart = i + 1;
        }
      ++i;
    } else if (c == '[' || c == '{') {
      if (++depth > kMaxJsonDepth) {
        r.offset = i + 1;
        r.column = i - lineStart + 1;
        return r;
      }
    } else if ((c == ']' || c == '}') && depth > 0) {
      --depth;
    }
  }
  return r;
}

void BriefTo(const Json& j, std::string& out, size_t limit) {
  if (out.size() > limit) return;
  if (j.is_array()) {
    out += '[';
    bool first = true;
    for (const Json& e : j) {
      if (out.size() > limit) return;
      if (!first) out += ',';
      first = false;
      BriefTo(e, out, limit);
    }
    out += ']';
  } else if (j.is_object()) {
    out += '{';
    bool first = true;
    for (const auto& [key, value] : j.items()) {
      if (out.size() > limit) return;
      if (!first) out += ',';
      first = false;
      out += Json(key.substr(0, limit)).dump(-1, ' ', false, Json::error_handler_t::replace);
      out += ':';
      BriefTo(value, out, limit);
    }
    out += '}';
  } else if (j.is_string()) {
    const std::string& s = j.get_ref<const std::string&>();
    out += Json(s.size() > limit ? s.substr(0, limit) : s)
               .dump(-1, ' ', false, Json::error_handler_t::replace);
  } else {
    out += j.dump();
  }
}

}  // namespace

void CheckJsonDepth(std::string_view text, bool comments) {
  const SDepthReport deep = FirstTooDeep(text, comments);
  if (deep.offset)
    Fail("bad JSON: nested deeper than " + std::to_string(kMaxJsonDepth) + " levels at line " +
         std::to_string(deep.line) + ", column " + std::to_string(deep.column));
}

Json ParseJson(std::string_view text, bool comments) {
  CheckJsonDepth(text, comments);
  return Json::parse(text, nullptr, true, comments);
}

std::string Brief(const Json& j) {
  static constexpr size_t kLimit = 60;
  std::string out;
  BriefTo(j, out, kLimit);
  return Cut(out);
}

std::string Cut(const std::string& name, size_t limit) {
  if (name.size() <= limit) return name;
  size_t cut = limit - 3;
  while (cut > 0 && (static_cast<unsigned char>(name[cut]) & 0xC0) == 0x80) --cut;
  return name.substr(0, cut) + "...";
}

// ---- streaming ----

struct CJsonWriter::SImpl {
  SImpl(std::string& out, std::ostream* s, size_t above)
      : text(out), serializer(nlohmann::detail::output_adapter<char>(out), ' ',
                              Json::error_handler_t::replace),
        sink(s), flushAbove(above) {}
  std::string& text;
  Serializer serializer;
  std::ostream* sink;
  size_t flushAbove;
};

CJsonWriter::CJsonWriter(std::string& out, std::ostream* sink, size_t flushAbove)
    : m_impl(std::make_unique<SImpl>(out, sink, flushAbove)) {}
CJsonWriter::~CJsonWriter() = default;

void CJsonWriter::Spill() {
  if (!m_impl->sink || m_impl->text.size() <= m_impl->flushAbove) return;
  m_impl->sink->write(m_impl->text.data(), static_cast<std::streamsize>(m_impl->text.size()));
  m_impl->text.clear();
}

void CJsonWriter::Raw(std::string_view text) { m_impl->text.append(text); }

void CJsonWriter::Key(std::string_view key) {
  Separate();
  m_impl->serializer.dump(Json(key), false, false, 0);
  m_impl->text += ':';
  m_first = true;  // the value that follows takes no comma of its own
}

void CJsonWriter::Separate() {
  Spill();
  if (!m_first) m_impl->text += ',';
  m_first = false;
}

void CJsonWriter::Open(char bracket) {
  Separate();
  m_impl->text += bracket;
  m_first = true;
}

void CJsonWriter::Close(char bracket) {
  m_impl->text += bracket;
  m_first = false;
}

void CJsonWriter::Value(const Json& value) {
  Separate();
  m_impl->serializer.dump(value, false, false, 0);
}

void CJsonWriter::Number(double d) { Value(NumberJson(d)); }

void CJsonWriter::Point(const CZetPoint& p) {
  Open('{');
  Key("x");
  Number(p.x);
  Key("y");
  Number(p.y);
  Close('}');
}

void CJsonWriter::Line(const CZetLine& l) {
  Open('{');
  Key("a");
  Number(l.a);
  Key("d");
  Number(l.d);
  Close('}');
}

namespace {

template <class Vec, class F>
bool ListTo(CJsonWriter& w, const CZetObject& o, F element) {
  const Vec* v = o.Get<Vec>();
  if (!v) return false;
  w.Open('[');
  for (const auto& e : v->Std()) element(e);
  w.Close(']');
  return true;
}

}  // namespace

// The arrays are written element by element; everything else is small and goes
// through ValueJson.
void CJsonWriter::Object(const CZetObject& o) {
  if (ListTo<CZetNumberVector>(*this, o, [&](double d) { Number(d); }) ||
      ListTo<CZetPointVector>(*this, o, [&](const CZetPoint& p) { Point(p); }) ||
      ListTo<CZetLineVector>(*this, o, [&](const CZetLine& l) { Line(l); }) ||
      ListTo<CZetStringVector>(*this, o,
                               [&](const CZetString& s) { Value(Json(Cp1252ToUtf8(s.Str()))); }) ||
      ListTo<CZetBoolVector>(*this, o, [&](const CZetBool& b) { Value(Json(b.m_v)); }))
    return;
  Value(ValueJson(o));
}

void CJsonWriter::Annotation(const SAnnotationRecord& a) {
  Open('{');
  Key("op");
  Value(Json(a.op));
  for (const auto& [name, value] : a.fields) {
    Key(name);
    Object(value);
  }
  Key("trailing");
  Value(Json{a.trailing[0], a.trailing[1]});
  Close('}');
}

}  // namespace zet::host
