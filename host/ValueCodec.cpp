// The JSON form of values (see ValueCodec.h).
#include "ValueCodec.h"

#include <algorithm>
#include <cmath>


namespace zet::host {

namespace {

template <class Vec, class F>
Json ListJson(const Vec& v, F element) {
  Json a = Json::array();
  for (const auto& e : v.Std()) a.push_back(element(e));
  return a;
}

template <class Vec, class F>
void FillList(const Json& j, CZetObject& out, const std::string& what, F element) {
  if (!j.is_array()) Fail(what + ": expected an array, got " + Brief(j));
  Vec& v = out.Ref<Vec>();
  if (!v.Resize(static_cast<unsigned>(std::min<size_t>(j.size(), Vec::kMaxSize + 1))))
    Fail(what + ": array too large");
  for (size_t i = 0; i < j.size(); ++i) v[static_cast<unsigned>(i)] = element(j[i]);
}

const Json& Field(const Json& j, const char* key, const std::string& what) {
  if (!j.is_object() || !j.contains(key)) Fail(what + ": missing \"" + key + "\" in " + Brief(j));
  return j.at(key);
}

}  // namespace

// ---- values to JSON ----

Json NumberJson(double d) {
  if (std::isnan(d)) return "NaN";
  if (std::isinf(d)) return d > 0 ? "Infinity" : "-Infinity";
  return d;
}

Json TextJson(const char* text) { return text ? Json(Cp1252ToUtf8(text)) : Json(nullptr); }

Json PointJson(const CZetPoint& p) { return {{"x", NumberJson(p.x)}, {"y", NumberJson(p.y)}}; }
Json LineJson(const CZetLine& l) { return {{"a", NumberJson(l.a)}, {"d", NumberJson(l.d)}}; }

Json ValueJson(const CZetObject& o) {
  switch (o.GetType()) {
    case ZET_OBJ_UNTYPED: return nullptr;
    case ZET_OBJ_BOOL: return o.AsBool();
    case ZET_OBJ_INT: return o.AsInt();
    case ZET_OBJ_DOUBLE: return NumberJson(o.AsDouble());
    case ZET_OBJ_STRING: return Cp1252ToUtf8(o.AsString());
    case ZET_OBJ_POINT: return PointJson(*o.Get<CZetPoint>());
    case ZET_OBJ_LINE: return LineJson(*o.Get<CZetLine>());
    case ZET_OBJ_CIRCLE: {
      const CZetCircle& c = *o.Get<CZetCircle>();
      return {{"cx", NumberJson(c.cx)}, {"cy", NumberJson(c.cy)}, {"r", NumberJson(c.r)}};
    }
    case ZET_OBJ_RECT: {
      const CZetRect& r = *o.Get<CZetRect>();
      return {{"cx", NumberJson(r.cx)}, {"cy", NumberJson(r.cy)}, {"w", NumberJson(r.w)},
              {"h", NumberJson(r.h)}, {"angle", NumberJson(r.angle)}};
    }
    case ZET_OBJ_HANDLE: {
      const CZetImage* img = o.Get<CZetHandle>()->GetImage();
      if (!img || !img->IsCreated()) return nullptr;
      return {{"width", img->Width()}, {"height", img->Height()}, {"attr", img->Attr()},
              {"sha256", ImageSha256(*img)}};
    }
    case ZET_OBJ_BOOL_ARRAY:
      return ListJson(*o.Get<CZetBoolVector>(), [](const CZetBool& b) { return Json(b.m_v); });
    case ZET_OBJ_NUMBER_ARRAY:
      return ListJson(*o.Get<CZetNumberVector>(), [](double d) { return NumberJson(d); });
    case ZET_OBJ_STRING_ARRAY:
      return ListJson(*o.Get<CZetStringVector>(),
                      [](const CZetString& s) { return Json(Cp1252ToUtf8(s.Str())); });
    case ZET_OBJ_POINT_ARRAY: return ListJson(*o.Get<CZetPointVector>(), PointJson);
    case ZET_OBJ_LINE_ARRAY: return ListJson(*o.Get<CZetLineVector>(), LineJson);
  }
  return nullptr;
}

Json AnnotationJson(const SAnnotationRecord& a) {
  Json rec;
  rec["op"] = a.op;
  for (const auto& [name, value] : a.fields) rec[name] = ValueJson(value);
  rec["trailing"] = {a.trailing[0], a.trailing[1]};
  return rec;
}

// ---- JSON to values of a declared kind ----

[[noreturn]] void Fail(const std::string& text) { throw SDecodeError{text}; }

double NumberOf(const Json& j, const std::string& what) {
  if (j.is_number()) return j.get<double>();
  if (j.is_string()) {
    const std::string s = j.get<std::string>();
    if (s == "NaN") return std::nan("");
    if (s == "Infinity") return HUGE_VAL;
    if (s == "-Infinity") return -HUGE_VAL;
  }
  Fail(what + ": expected a number, got " + Brief(j));
}

int IntOf(const Json& j, const std::string& what) {
  if (j.is_number_integer()) {
    const auto v = j.get<int64_t>();
    if (v >= INT32_MIN && v <= INT32_MAX) return static_cast<int>(v);
  } else if (j.is_number_float()) {
    // Truncated toward zero, as the library turns numbers into integers.
    const double d = std::trunc(j.get<double>());
    if (d >= INT32_MIN && d <= INT32_MAX) return static_cast<int>(d);
  }
  Fail(what + ": expected a 32-bit integer, got " + Brief(j));
}

std::string TextOf(const Json& j, const std::string& what) {
  if (!j.is_string()) Fail(what + ": expected a string, got " + Brief(j));
  std::string out;
  if (!Utf8ToCp1252(j.get<std::string>(), &out))
    Fail(what + ": text has a character that Windows-1252 cannot hold");
  return out;
}

CZetPoint PointOf(const Json& j, const std::string& what) {
  return CZetPoint(NumberOf(Field(j, "x", what), what), NumberOf(Field(j, "y", what), what));
}

CZetLine LineOf(const Json& j, const std::string& what) {
  return CZetLine(NumberOf(Field(j, "a", what), what), NumberOf(Field(j, "d", what), what));
}

template <>
CZetBool ElementOf<CZetBool>(const Json& e, const std::string& what) {
  if (!e.is_boolean()) Fail(what + ": expected true or false, got " + Brief(e));
  return CZetBool(e.get<bool>());
}
template <>
double ElementOf<double>(const Json& e, const std::string& what) {
  return NumberOf(e, what);
}
template <>
CZetString ElementOf<CZetString>(const Json& e, const std::string& what) {
  return CZetString(TextOf(e, what));
}
template <>
CZetPoint ElementOf<CZetPoint>(const Json& e, const std::string& what) {
  return PointOf(e, what);
}
template <>
CZetLine ElementOf<CZetLine>(const Json& e, const std::string& what) {
  return LineOf(e, what);
}

void DecodeValue(const Json& j, int type, CZetObject& out, const std::string& what,
                 std::vector<std::unique_ptr<CZetImage>>& images) {
  if (j.is_null()) {
    out.Clear();
    return;
  }
  switch (type) {
    case kTypeBool:
      if (!j.is_boolean()) Fail(what + ": expected true or false, got " + Brief(j));
      out = j.get<bool>();
      return;
    case kTypeInt:
    case kTypeChoice: out = IntOf(j, what); return;
    case kTypeNumber: out = NumberOf(j, what); return;
    case kTypeString: out = TextOf(j, what); return;
    case kTypePoint: out = PointOf(j, what); return;
    case kTypeLine: out = LineOf(j, what); return;
    case kTypeImage: {
      const std::string file = TextOf(Field(j, "file", what), what);
      auto img = std::make_unique<CZetImage>();
      const std::string err = LoadImageFile(file, *img);
      if (!err.empty()) Fail(what + ": " + err);
      out = CZetHandle(img.get());
      images.push_back(std::move(img));
      return;
    }
#define ZET_ARRAY_TYPE(Code, Number, Vector, ...)                                            \
  case Code:                                                                                 \
    FillList<Vector>(j, out, what,                                                           \
                     [&](const Json& e) { return ElementOf<Vector::value_type>(e, what); }); \
    return;
#include "zet/ZetTypes.def"
    default: Fail(what + ": slot of unknown type " + std::to_string(type));
  }
}

}  // namespace zet::host
