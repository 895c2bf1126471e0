// The JSON form of values (host-internal): every kind of CZetObject to JSON, and JSON
// to a value of a descriptor's declared kind. zet's requests, responses, catalogue and
// program runner all speak it; shared/zet-cli.md's value table is what it implements.
#pragma once

#include <memory>
#include <nlohmann/json.hpp>
#include <string>
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

// JSON to a value of the descriptor type `type` (kTypeBool ... kTypeLineArray); null
// makes the value untyped. An image ({"file": ...}) is loaded into an image appended
// to `images`, which the caller keeps alive for as long as the value is used.
void DecodeValue(const Json& j, int type, CZetObject& out, const std::string& what,
                 std::vector<std::unique_ptr<CZetImage>>& images);

}  // namespace zet::host
