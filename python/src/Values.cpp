// Values between Python and the library (see Values.h).
#include "Values.h"

#include <cmath>
#include <cstring>
#include <limits>

namespace zet::python {

namespace {

py::object g_point, g_line, g_circle, g_rect, g_npBool;

std::string TypeName(py::handle h) { return py::str(py::type::handle_of(h).attr("__name__")); }

bool IsBool(py::handle v) {
  return PyBool_Check(v.ptr()) || (g_npBool && py::isinstance(v, g_npBool));
}

bool IsText(py::handle v) { return PyUnicode_Check(v.ptr()); }

// A number: int, float or a NumPy scalar, but not a Boolean and not text.
double Number(py::handle v, const SSlot& what) {
  if (PyFloat_CheckExact(v.ptr())) return PyFloat_AS_DOUBLE(v.ptr());
  if (IsBool(v) || IsText(v) || PyBytes_Check(v.ptr())) WrongType(what, "a number", v);
  const double d = PyFloat_AsDouble(v.ptr());
  if (d == -1.0 && PyErr_Occurred()) {
    PyErr_Clear();
    WrongType(what, "a number", v);
  }
  return d;
}

// A 32-bit integer from an int (exact) or a number truncated toward zero, as the
// library turns numbers into integers.
int Int32(py::handle v, const SSlot& what) {
  if (PyLong_Check(v.ptr()) && !IsBool(v)) {
    int overflow = 0;
    const long long i = PyLong_AsLongLongAndOverflow(v.ptr(), &overflow);
    if (!overflow && i >= std::numeric_limits<int32_t>::min() &&
        i <= std::numeric_limits<int32_t>::max())
      return static_cast<int>(i);
    BadValue(what, "expected a 32-bit integer, got " + std::string(py::repr(v)));
  }
  const double d = std::trunc(Number(v, what));
  if (!(d >= std::numeric_limits<int32_t>::min() && d <= std::numeric_limits<int32_t>::max()))
    BadValue(what, "expected a 32-bit integer, got " + std::string(py::repr(v)));
  return static_cast<int>(d);
}

// A pair of numbers: a named tuple, a tuple, a list or a NumPy array of two.
std::pair<double, double> Pair(py::handle v, const SSlot& what, const char* kind) {
  if (IsText(v) || !PySequence_Check(v.ptr())) WrongType(what, kind, v);
  const py::sequence s = py::reinterpret_borrow<py::sequence>(v);
  if (py::len(s) != 2) BadValue(what, std::string("expected ") + kind + " of two numbers, got " +
                                          std::string(py::repr(v)));
  return {Number(s[0], what), Number(s[1], what)};
}

// An (N, 2) float64 view of an array-like of pairs; an empty sequence is (0, 2).
py::array_t<double> Pairs(py::handle v, const SSlot& what, const char* kind) {
  if (IsText(v) || (!PySequence_Check(v.ptr()) && !py::isinstance<py::array>(v)))
    WrongType(what, kind, v);
  py::array a = py::array::ensure(v);
  if (!a) {
    PyErr_Clear();
    WrongType(what, kind, v);
  }
  if (a.size() == 0) return py::array_t<double>(std::vector<py::ssize_t>{0, 2});
  const char k = a.dtype().kind();
  if (k != 'f' && k != 'i' && k != 'u') WrongType(what, kind, v);
  if (a.ndim() != 2 || a.shape(1) != 2)
    BadValue(what, std::string("expected ") + kind + " as an (N, 2) array");
  return py::array_t<double, py::array::c_style | py::array::forcecast>::ensure(a);
}

template <class Vec>
Vec& Sized(CZetObject& out, size_t n, const SSlot& what) {
  Vec& vec = out.Ref<Vec>();
  if (n > Vec::kMaxSize || !vec.Resize(static_cast<unsigned>(n))) BadValue(what, "array too large");
  return vec;
}

template <class Vec, class F>
py::array PairVectorOut(const Vec& v, F pair) {
  const auto& s = v.Std();
  py::array_t<double> a(std::vector<py::ssize_t>{static_cast<py::ssize_t>(s.size()), 2});
  double* d = a.mutable_data();
  for (size_t i = 0; i < s.size(); ++i) {
    const auto [first, second] = pair(s[i]);
    d[2 * i] = first;
    d[2 * i + 1] = second;
  }
  return a;
}

}  // namespace

void InitTypes() {
  py::module_ types = py::module_::import("zetformula._types");
  g_point = types.attr("Point");
  g_line = types.attr("Line");
  g_circle = types.attr("Circle");
  g_rect = types.attr("Rect");
  g_npBool = py::module_::import("numpy").attr("bool_");
  // Released with the interpreter's modules, not by static destructors after it is gone.
  py::module_::import("atexit").attr("register")(py::cpp_function([] {
    g_point = g_line = g_circle = g_rect = g_npBool = py::object();
  }));
}

std::string SSlot::Text() const {
  std::string s = kind;
  if (index >= 0) s += " " + std::to_string(index);
  if (name) s += " '" + (nameIsCp1252 ? zet::host::Cp1252ToUtf8(name) : std::string(name)) + "'";
  return s;
}

void WrongType(const SSlot& what, const std::string& expected, py::handle got) {
  throw py::type_error(what.Text() + ": expected " + expected + ", got " + TypeName(got) + " " +
                       std::string(py::repr(got)));
}

void BadValue(const SSlot& what, const std::string& text) {
  throw py::value_error(what.Text() + ": " + text);
}

std::string ToCp1252(py::handle text, const SSlot& what) {
  if (!IsText(text)) WrongType(what, "a str", text);
  Py_ssize_t size = 0;
  const char* utf8 = PyUnicode_AsUTF8AndSize(text.ptr(), &size);
  if (!utf8) {  // lone surrogates
    PyErr_Clear();
    BadValue(what, "text has a character that Windows-1252 cannot hold");
  }
  std::string out;
  if (!zet::host::Utf8ToCp1252(std::string(utf8, static_cast<size_t>(size)), &out))
    BadValue(what, "text has a character that Windows-1252 cannot hold");
  return out;
}

py::str FromCp1252(const std::string& text) {
  const std::string utf8 = zet::host::Cp1252ToUtf8(text);
  return py::str(utf8.data(), utf8.size());
}

void ArrayToImage(py::handle value, CZetImage& image, const SSlot& what) {
  if (!py::isinstance<py::array>(value)) WrongType(what, "an image (a NumPy array)", value);
  const py::array a = py::reinterpret_borrow<py::array>(value);
  int attr = 0;
  if (a.dtype().is(py::dtype::of<uint8_t>()) && a.ndim() == 2)
    attr = kZetImageMono8;
  else if (a.dtype().is(py::dtype::of<uint16_t>()) && a.ndim() == 2)
    attr = kZetImageMono16;
  else if (a.dtype().is(py::dtype::of<uint8_t>()) && a.ndim() == 3 && a.shape(2) == 4)
    attr = kZetImageColor32;
  else {
    std::string shape;
    for (py::ssize_t i = 0; i < a.ndim(); ++i) shape += (i ? ", " : "") + std::to_string(a.shape(i));
    BadValue(what, "an image is uint8 (H, W), uint16 (H, W) or uint8 (H, W, 4); got " +
                       std::string(py::str(a.dtype())) + " (" + shape + ")");
  }
  if (a.shape(0) > CZetImage::kMaxSide || a.shape(1) > CZetImage::kMaxSide ||
      image.Create(static_cast<int>(a.shape(1)), static_cast<int>(a.shape(0)), attr) != kZetImageOk)
    BadValue(what, "image too large or empty");
  // Rows are copied whole; an array with gaps inside its rows is packed first.
  const size_t bpp = static_cast<size_t>(CZetImage::BytesPerPixel(attr));
  py::array packed = a;
  if (a.strides(1) != static_cast<py::ssize_t>(bpp) || (a.ndim() == 3 && a.strides(2) != 1))
    packed = py::module_::import("numpy").attr("ascontiguousarray")(a);
  const auto* base = static_cast<const uint8_t*>(packed.data());
  for (int y = 0; y < image.Height(); ++y)
    std::memcpy(image.Row(y), base + y * packed.strides(0), bpp * static_cast<size_t>(image.Width()));
}

py::array ImageToArray(const CZetImage& image) {
  std::vector<py::ssize_t> shape{image.Height(), image.Width()};
  py::array a;
  if (image.Attr() == kZetImageMono16) {
    a = py::array_t<uint16_t>(shape);
  } else {
    if (image.Attr() == kZetImageColor32) shape.push_back(4);
    a = py::array_t<uint8_t>(shape);
  }
  const size_t rowBytes = static_cast<size_t>(image.Width() * image.BytesPerPixel());
  auto* out = static_cast<uint8_t*>(a.mutable_data());
  for (int y = 0; y < image.Height(); ++y)
    std::memcpy(out + static_cast<size_t>(y) * rowBytes, image.Row(y), rowBytes);
  return a;
}

void ToValue(py::handle v, int type, CZetObject& out, const SSlot& what,
             std::vector<std::unique_ptr<CZetImage>>& images) {
  if (v.is_none()) {
    out.Clear();
    return;
  }
  switch (type) {
    case kTypeBool:
      if (!IsBool(v)) WrongType(what, "True or False", v);
      out = PyObject_IsTrue(v.ptr()) == 1;
      return;
    case kTypeInt:
    case kTypeChoice: out = Int32(v, what); return;
    case kTypeNumber: out = Number(v, what); return;
    case kTypeString: out = ToCp1252(v, what); return;
    case kTypePoint: {
      const auto [x, y] = Pair(v, what, "a point (x, y)");
      out = CZetPoint(x, y);
      return;
    }
    case kTypeLine: {
      const auto [a, d] = Pair(v, what, "a line (a, d)");
      out = CZetLine(a, d);
      return;
    }
    case kTypeImage: {
      auto img = std::make_unique<CZetImage>();
      if (IsText(v) || py::hasattr(v, "__fspath__")) {
        const std::string file = ToCp1252(py::module_::import("os").attr("fspath")(v), what);
        const std::string err = zet::host::LoadImageFile(file, *img);
        if (!err.empty()) BadValue(what, err);
      } else {
        ArrayToImage(v, *img, what);
      }
      out = CZetHandle(img.get());
      images.push_back(std::move(img));
      return;
    }
    case kTypeBoolArray: {
      if (IsText(v) || (!PySequence_Check(v.ptr()) && !py::isinstance<py::array>(v)))
        WrongType(what, "a sequence of Booleans", v);
      const py::sequence s = py::reinterpret_borrow<py::sequence>(v);
      const size_t n = py::len(s);
      CZetBoolVector& vec = Sized<CZetBoolVector>(out, n, what);
      for (size_t i = 0; i < n; ++i) {
        const py::object e = s[i];
        if (!IsBool(e)) WrongType(what, "True or False", e);
        vec[static_cast<unsigned>(i)] = PyObject_IsTrue(e.ptr()) == 1;
      }
      return;
    }
    case kTypeNumberArray: {
      if (IsText(v) || (!PySequence_Check(v.ptr()) && !py::isinstance<py::array>(v)))
        WrongType(what, "a sequence of numbers", v);
      py::array a = py::array::ensure(v);
      if (!a) {
        PyErr_Clear();
        WrongType(what, "a sequence of numbers", v);
      }
      const char k = a.dtype().kind();
      if (a.size() != 0 && k != 'f' && k != 'i' && k != 'u') WrongType(what, "a sequence of numbers", v);
      if (a.ndim() > 1) BadValue(what, "expected a one-dimensional array");
      // float64 with packed elements is copied with one memcpy; others are converted.
      const auto d = py::array_t<double, py::array::c_style | py::array::forcecast>::ensure(a);
      // One pass: the vector is allocated and filled by the copy (no zero-fill first).
      const size_t n = static_cast<size_t>(d.size());
      if (n > CZetNumberVector::kMaxSize) BadValue(what, "array too large");
      out.Ref<CZetNumberVector>().Std().assign(d.data(), d.data() + n);
      return;
    }
    case kTypeStringArray: {
      if (IsText(v) || !PySequence_Check(v.ptr())) WrongType(what, "a list of str", v);
      const py::sequence s = py::reinterpret_borrow<py::sequence>(v);
      const size_t n = py::len(s);
      CZetStringVector& vec = Sized<CZetStringVector>(out, n, what);
      for (size_t i = 0; i < n; ++i) vec[static_cast<unsigned>(i)] = ToCp1252(s[i], what);
      return;
    }
    case kTypePointArray: {
      const auto p = Pairs(v, what, "a point array");
      CZetPointVector& vec = Sized<CZetPointVector>(out, static_cast<size_t>(p.shape(0)), what);
      const double* d = p.data();
      for (py::ssize_t i = 0; i < p.shape(0); ++i) vec[static_cast<unsigned>(i)] = CZetPoint(d[2 * i], d[2 * i + 1]);
      return;
    }
    case kTypeLineArray: {
      const auto p = Pairs(v, what, "a line array");
      CZetLineVector& vec = Sized<CZetLineVector>(out, static_cast<size_t>(p.shape(0)), what);
      const double* d = p.data();
      for (py::ssize_t i = 0; i < p.shape(0); ++i) vec[static_cast<unsigned>(i)] = CZetLine(d[2 * i], d[2 * i + 1]);
      return;
    }
    default: BadValue(what, "slot of unknown type " + std::to_string(type));
  }
}

py::object FromValue(CZetObject& o, bool steal) {
  switch (o.GetType()) {
    case ZET_OBJ_UNTYPED: return py::none();
    case ZET_OBJ_BOOL: return py::bool_(o.AsBool());
    case ZET_OBJ_INT: return py::int_(o.AsInt());
    case ZET_OBJ_DOUBLE: return py::float_(o.AsDouble());
    case ZET_OBJ_STRING: return FromCp1252(o.AsString());
    case ZET_OBJ_POINT: {
      const CZetPoint& p = *o.Get<CZetPoint>();
      return g_point(p.x, p.y);
    }
    case ZET_OBJ_LINE: {
      const CZetLine& l = *o.Get<CZetLine>();
      return g_line(l.a, l.d);
    }
    case ZET_OBJ_CIRCLE: {
      const CZetCircle& c = *o.Get<CZetCircle>();
      return g_circle(c.cx, c.cy, c.r);
    }
    case ZET_OBJ_RECT: {
      const CZetRect& r = *o.Get<CZetRect>();
      return g_rect(r.cx, r.cy, r.w, r.h, r.angle);
    }
    case ZET_OBJ_HANDLE: {
      const CZetImage* img = o.Get<CZetHandle>()->GetImage();
      if (!img || !img->IsCreated()) return py::none();
      return ImageToArray(*img);
    }
    case ZET_OBJ_BOOL_ARRAY: {
      const auto& s = o.Get<CZetBoolVector>()->Std();
      py::array_t<bool> a(static_cast<py::ssize_t>(s.size()));
      bool* d = a.mutable_data();
      for (size_t i = 0; i < s.size(); ++i) d[i] = s[i].m_v;
      return a;
    }
    case ZET_OBJ_NUMBER_ARRAY: {
      auto& vec = o.Ref<CZetNumberVector>().Std();
      if (!steal) return py::array_t<double>(static_cast<py::ssize_t>(vec.size()), vec.data());
      // The vector's storage becomes the array's: no copy on the way out.
      auto* held = new std::vector<double>(std::move(vec));
      py::capsule owner(held, [](void* p) { delete static_cast<std::vector<double>*>(p); });
      return py::array_t<double>(static_cast<py::ssize_t>(held->size()), held->data(), owner);
    }
    case ZET_OBJ_STRING_ARRAY: {
      const auto& s = o.Get<CZetStringVector>()->Std();
      py::list l(s.size());
      for (size_t i = 0; i < s.size(); ++i) l[i] = FromCp1252(s[i].Str());
      return l;
    }
    case ZET_OBJ_POINT_ARRAY:
      return PairVectorOut(*o.Get<CZetPointVector>(),
                           [](const CZetPoint& p) { return std::pair(p.x, p.y); });
    case ZET_OBJ_LINE_ARRAY:
      return PairVectorOut(*o.Get<CZetLineVector>(),
                           [](const CZetLine& l) { return std::pair(l.a, l.d); });
  }
  return py::none();
}

py::list RecordsToPython(const std::vector<zet::host::SAnnotationRecord>& records) {
  py::list out(records.size());
  for (size_t i = 0; i < records.size(); ++i) {
    const auto& r = records[i];
    py::dict d;
    d["op"] = r.op;
    for (const auto& [name, value] : r.fields) {
      CZetObject copy = value;
      d[py::str(name)] = FromValue(copy, true);
    }
    d["trailing"] = py::make_tuple(r.trailing[0], r.trailing[1]);
    out[i] = std::move(d);
  }
  return out;
}

}  // namespace zet::python
