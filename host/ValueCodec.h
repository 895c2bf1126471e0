// The JSON form of values (host-internal): every kind of CZetObject to JSON, and JSON
// to a value of a descriptor's declared kind. zet's requests, responses, catalogue and
// program runner all speak it; shared/zet-cli.md's value table is what it implements.
#pragma once

#include <memory>
#include <nlohmann/json.hpp>
#include <string>
#include <string_view>
#include <vector>

#include "zet/ZetHost.h"
#include "zet/ZetImage.h"

namespace zet::host {

using Json = nlohmann::ordered_json;

// A value that does not fit its slot, or a malformed request; the text says which.
struct SDecodeError {
  std::string text;
};
[[noreturn]] void Fail(const std::string& text);

Json NumberJson(double d);
Json TextJson(const char* text);  // null for a null pointer
Json PointJson(const CZetPoint& p);
Json LineJson(const CZetLine& l);
Json ValueJson(const CZetObject& o);
// One annotation call as its record: op, the arguments by name, trailing.
Json AnnotationJson(const SAnnotationRecord& a);

// Scalar reads of JSON; `what` names the slot in the error text.
double NumberOf(const Json& j, const std::string& what);
int IntOf(const Json& j, const std::string& what);
std::string TextOf(const Json& j, const std::string& what);  // UTF-8 in, Windows-1252 out
CZetPoint PointOf(const Json& j, const std::string& what);
CZetLine LineOf(const Json& j, const std::string& what);
// One element of an array value as a value of the array's element type T (CZetBool,
// double, CZetString, CZetPoint, CZetLine).
template <class T>
T ElementOf(const Json& e, const std::string& what);
template <>
CZetBool ElementOf<CZetBool>(const Json& e, const std::string& what);
template <>
double ElementOf<double>(const Json& e, const std::string& what);
template <>
CZetString ElementOf<CZetString>(const Json& e, const std::string& what);
template <>
CZetPoint ElementOf<CZetPoint>(const Json& e, const std::string& what);
template <>
CZetLine ElementOf<CZetLine>(const Json& e, const std::string& what);

// JSON to a value of the descriptor type `type` (kTypeBool ... kTypeLineArray); null
// makes the value untyped. An image ({"file": ...}) is loaded into an image appended
// to `images`, which the caller keeps alive for as long as the value is used.
void DecodeValue(const Json& j, int type, CZetObject& out, const std::string& what,
                 std::vector<std::unique_ptr<CZetImage>>& images);

// ---- JSON text (JsonText.cpp) ----

// The deepest nesting of arrays and objects that JSON read by the host may have
// (requests, program files, variable files). Real requests and programs stay far
// below it; deeper text is refused before it is parsed.
inline constexpr size_t kMaxJsonDepth = 128;

// Parses untrusted text; fails (SDecodeError, "bad JSON: nested deeper than ...",
// naming the line and column) beyond kMaxJsonDepth, and throws the parser's own
// Json::parse_error for malformed text. `comments`: // and /* */ are allowed.
Json ParseJson(std::string_view text, bool comments = false);
// The nesting check of ParseJson alone, for readers that parse the text themselves.
void CheckJsonDepth(std::string_view text, bool comments = false);

// At most about 60 characters of a value's JSON, cut with "..." (for error texts,
// which never quote untrusted input whole).
std::string Brief(const Json& j);
// A name from the input (a key, an instance name) as error texts quote it: at most
// `limit` bytes, cut with "..." (the parser's messages, which quote the last token
// read, are cut at 300).
std::string Cut(const std::string& name, size_t limit = 60);

// Appends JSON text to a string as Json::dump(-1, ' ', false, replace) would write
// it, without building the value as a tree: arrays of a value are written element
// by element. Commas are put in by the writer.
class CJsonWriter {
 public:
  // With a `sink`, text beyond `flushAbove` bytes is moved from `out` to the sink as
  // it is made.
  explicit CJsonWriter(std::string& out, std::ostream* sink = nullptr, size_t flushAbove = 0);
  ~CJsonWriter();
  void Open(char bracket);   // '{' or '['
  void Close(char bracket);  // '}' or ']'
  void Key(std::string_view key);
  void Value(const Json& value);  // a small value, whole
  void Number(double d);
  void Point(const CZetPoint& p);
  void Line(const CZetLine& l);
  void Object(const CZetObject& o);  // as ValueJson would give it
  void Annotation(const SAnnotationRecord& a);  // as AnnotationJson would give it
  void Raw(std::string_view text);

 private:
  void Separate();
  void Spill();
  struct SImpl;
  std::unique_ptr<SImpl> m_impl;
  bool m_first = true;
};

}  // namespace zet::host
