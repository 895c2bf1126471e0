// ZetObject: the platform's values. CZetObject is the variant that carries every
// parameter, input and output; the typed values derive from CZetBaseType.
//
// Storage: a CZetObject keeps its value in an inline buffer when it fits (Booleans,
// integers, numbers, points, lines, circles, rectangles, handles and strings), so
// assigning a scalar to an output allocates nothing; vectors live on the heap.
//
// Conversions between kinds (the scalar reads never have undefined behaviour):
//
//   held \ read   double              bool                int                     text
//   untyped       0.0                 false               0                       ""
//   Boolean       0.0 / 1.0           itself              0 / 1                   ""
//   integer       exact               != 0                itself                  ""
//   number        itself              != 0.0 (NaN: true)  ZetTruncInt32           ""
//   string        strtod prefix, 0.0  its double != 0.0   ZetTruncInt32(double)   itself
//   other kinds   0.0                 false               0                       ""
//
// A reference conversion (operator CZetDouble& and friends) to the kind the object
// holds returns the held value. To another scalar kind (Boolean, integer, number) it
// first converts the held value in place by the table above; to any other kind it
// gives the object an empty value of that kind and returns it. This is how a host's
// fresh, untyped output becomes the array an instruction fills.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <new>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include "zet/ZetExport.h"
#include "zet/ZetTypes.h"

enum ZET_OBJ_TYPE : int {
  ZET_OBJ_UNTYPED = 0,
  ZET_OBJ_BOOL = 1,
  ZET_OBJ_INT = 2,
  ZET_OBJ_DOUBLE = 3,
  ZET_OBJ_STRING = 4,
  ZET_OBJ_POINT = 6,
  ZET_OBJ_LINE = 7,
  ZET_OBJ_CIRCLE = 8,
  ZET_OBJ_RECT = 9,
  ZET_OBJ_HANDLE = 10,
  ZET_OBJ_BOOL_ARRAY = 0x1000,
  ZET_OBJ_NUMBER_ARRAY = 0x1002,
  ZET_OBJ_STRING_ARRAY = 0x1003,
  ZET_OBJ_POINT_ARRAY = 0x1004,
  ZET_OBJ_LINE_ARRAY = 0x1006,
};

// The processor's conversions of a double to a 32-bit int, as the instructions need
// them: toward zero (the C runtime's cast) and to nearest-even (the default rounding
// mode). NaN and values outside the int range give INT32_MIN, the "integer
// indefinite" value of the x86 conversion instructions, instead of undefined behaviour.
ZET_PLATFORM_API int32_t ZetTruncInt32(double v);
ZET_PLATFORM_API int32_t ZetRoundInt32(double v);

class IXStorage;  // persistence interface of the platform; the library never calls it
class CZetImage;

class ZET_PLATFORM_API CZetBaseType {
 public:
  virtual ~CZetBaseType();
  virtual CZetBaseType* Clone() const = 0;
  virtual void Copy(const CZetBaseType& other) = 0;  // no-op when the kinds differ
  virtual bool Compare(const CZetBaseType& other) const = 0;
  virtual CStdStr Format(int precision) const = 0;
  virtual ZET_OBJ_TYPE GetType() const = 0;
  virtual void Save(IXStorage*) const {}
  virtual void Load(IXStorage*) {}
  // Copy-constructs this value at `where` (inline storage of CZetObject).
  virtual CZetBaseType* CloneAt(void* where) const = 0;
};

// Clone, CloneAt, Copy, Compare and GetType once for every value class.
template <class Derived, ZET_OBJ_TYPE kCode>
class TZetValue : public CZetBaseType {
 public:
  static constexpr ZET_OBJ_TYPE kType = kCode;
  CZetBaseType* Clone() const override { return new Derived(Self()); }
  CZetBaseType* CloneAt(void* where) const override { return new (where) Derived(Self()); }
  void Copy(const CZetBaseType& other) override {
    if (other.GetType() == kCode) static_cast<Derived&>(*this) = static_cast<const Derived&>(other);
  }
  bool Compare(const CZetBaseType& other) const override {
    return other.GetType() == kCode && Self() == static_cast<const Derived&>(other);
  }
  ZET_OBJ_TYPE GetType() const override { return kCode; }

 private:
  const Derived& Self() const { return static_cast<const Derived&>(*this); }
};

class ZET_PLATFORM_API CZetBool : public TZetValue<CZetBool, ZET_OBJ_BOOL> {
 public:
  CZetBool(bool v = false) : m_v(v) {}  // NOLINT
  operator bool&() { return m_v; }
  operator bool() const { return m_v; }
  bool operator==(const CZetBool& o) const { return m_v == o.m_v; }
  CStdStr Format(int precision) const override;
  bool m_v;
};

class ZET_PLATFORM_API CZetInt : public TZetValue<CZetInt, ZET_OBJ_INT> {
 public:
  CZetInt(int v = 0) : m_v(v) {}  // NOLINT
  operator int&() { return m_v; }
  bool operator==(const CZetInt& o) const { return m_v == o.m_v; }
  CStdStr Format(int precision) const override;
  int m_v;
};

class ZET_PLATFORM_API CZetDouble : public TZetValue<CZetDouble, ZET_OBJ_DOUBLE> {
 public:
  CZetDouble(double v = 0.0) : m_v(v) {}  // NOLINT
  operator double&() { return m_v; }
  operator double() const { return m_v; }
  CZetDouble& operator=(const double& v) {
    m_v = v;
    return *this;
  }
  bool operator==(const CZetDouble& o) const { return m_v == o.m_v; }
  CStdStr Format(int precision) const override;
  double m_v;
};

class ZET_PLATFORM_API CZetString : public TZetValue<CZetString, ZET_OBJ_STRING> {
 public:
  CZetString() = default;
  CZetString(const char* s) : m_s(s ? s : "") {}  // NOLINT
  CZetString(std::string s) : m_s(std::move(s)) {}  // NOLINT
  CZetString& operator=(const char* s) {
    m_s.assign(s ? s : "");
    return *this;
  }
  CZetString& operator=(const std::string& s) {
    m_s.assign(s);
    return *this;
  }
  operator const char*() const { return m_s.c_str(); }
  bool operator==(const CZetString& o) const { return m_s == o.m_s; }
  // The whole text, embedded zero bytes included.
  const std::string& Str() const { return m_s; }
  std::string& Str() { return m_s; }
  CStdStr Format(int precision) const override;
  std::string m_s;
};

template <class T, int kCode>
class TZetPoint : public TZetValue<TZetPoint<T, kCode>, static_cast<ZET_OBJ_TYPE>(kCode)> {
 public:
  TZetPoint() = default;
  TZetPoint(T px, T py) : x(px), y(py) {}
  bool operator==(const TZetPoint& o) const { return x == o.x && y == o.y; }
  CStdStr Format(int precision) const override {
    CStdStr s;
    s.Format("(%.*f, %.*f)", precision, static_cast<double>(x), precision, static_cast<double>(y));
    return s;
  }
  T x{};
  T y{};
};
using CZetPoint = TZetPoint<double, ZET_OBJ_POINT>;

class ZET_PLATFORM_API CZetLine : public TZetValue<CZetLine, ZET_OBJ_LINE> {
 public:
  CZetLine() = default;
  CZetLine(double pa, double pd) : a(pa), d(pd) {}  // angle first, in radians
  bool operator==(const CZetLine& o) const { return a == o.a && d == o.d; }
  CStdStr Format(int precision) const override;
  double a = 0.0;
  double d = 0.0;
};

class ZET_PLATFORM_API CZetCircle : public TZetValue<CZetCircle, ZET_OBJ_CIRCLE> {
 public:
  CZetCircle() = default;
  CZetCircle(double px, double py, double pr) : cx(px), cy(py), r(pr) {}
  bool operator==(const CZetCircle& o) const { return cx == o.cx && cy == o.cy && r == o.r; }
  CStdStr Format(int precision) const override;
  double cx = 0.0;
  double cy = 0.0;
  double r = 0.0;
};

template <class T, int kCode>
class TZetRect : public TZetValue<TZetRect<T, kCode>, static_cast<ZET_OBJ_TYPE>(kCode)> {
 public:
  TZetRect() = default;
  TZetRect(T pcx, T pcy, T pw, T ph, T pangle) : cx(pcx), cy(pcy), w(pw), h(ph), angle(pangle) {}
  bool operator==(const TZetRect& o) const {
    return cx == o.cx && cy == o.cy && w == o.w && h == o.h && angle == o.angle;
  }
  CStdStr Format(int precision) const override {
    CStdStr s;
    s.Format("(%.*f, %.*f, %.*f, %.*f, %.*f)", precision, double(cx), precision, double(cy),
             precision, double(w), precision, double(h), precision, double(angle));
    return s;
  }
  T cx{}, cy{}, w{}, h{}, angle{};
};
using CZetRect = TZetRect<double, ZET_OBJ_RECT>;

// An opaque handle; it carries an image without owning it.
class ZET_PLATFORM_API CZetHandle : public TZetValue<CZetHandle, ZET_OBJ_HANDLE> {
 public:
  CZetHandle(CZetImage* image = nullptr) : m_pImage(image) {}  // NOLINT
  bool operator==(const CZetHandle& o) const { return m_pImage == o.m_pImage; }
  CStdStr Format(int precision) const override;
  CZetImage* GetImage() const { return m_pImage; }
  void SetImage(CZetImage* image) { m_pImage = image; }
  CZetImage* m_pImage;
};

// Vectors refuse to grow beyond this many bytes: Resize, Insert and PushBack then
// return false and leave the vector as it was. The bytes are the elements' own and,
// for strings, their texts' (CZetVectorBytes), so that many copies of a long text are
// bounded as one long array is. The text bytes are counted as the vector's own
// operations change them; a text rewritten in place through operator[] or Std() is
// counted from the next Resize or Insert on, which count all texts again.
//
// Insert and Erase take signed positions and counts and behave as a growable
// array would with any of them; the array instructions whose checks are loose
// on purpose pass their values on unchanged and get these results:
// - a negative insert count inserts nothing (InsertRep, CreateRep);
// - a negative insert position inserts at the front, a position past the end
//   appends (Insert, whose only test is for a negative index, and the point
//   Insert, which tests nothing): the position is clamped to 0 .. Size();
//   InsertionPoint says where the elements went;
// - an erase range is clipped to the elements that exist, so a negative start
//   erases from the first element (EraseRange with a negative idxStart) and a
//   range past the end erases nothing.
// The only refusal left is the cap: an insert that would grow the vector beyond it.
inline constexpr size_t kZetMaxVectorBytes = size_t{1} << 30;

// The bytes an element holds beyond itself: a string's text; nothing for the others.
template <class T>
size_t CZetVectorBytes(const T&) {
  return 0;
}
inline size_t CZetVectorBytes(const CZetString& s) { return s.Str().size(); }

template <class T, int kCode>
class TZetVector : public TZetValue<TZetVector<T, kCode>, static_cast<ZET_OBJ_TYPE>(kCode)> {
 public:
  static constexpr size_t kMaxSize = kZetMaxVectorBytes / sizeof(T);
  static constexpr bool kHasText = std::is_same_v<T, CZetString>;
  using value_type = T;

  TZetVector() = default;
  virtual unsigned Size() const { return static_cast<unsigned>(m_v.size()); }
  virtual bool Resize(unsigned n) {
    if (n > kMaxSize) return false;
    if constexpr (kHasText) m_textBytes = TextBytes(0, std::min<size_t>(n, m_v.size()));
    m_v.resize(n);
    return true;
  }
  T& operator[](unsigned i) { return m_v[i]; }
  const T& operator[](unsigned i) const { return m_v[i]; }
  // Where an insert at `pos` puts its first element: pos clamped to 0 .. Size().
  size_t InsertionPoint(int64_t pos) const {
    return pos < 0 ? 0 : std::min<size_t>(static_cast<uint64_t>(pos), m_v.size());
  }
  // Inserts `count` copies of `value` at InsertionPoint(pos); a count below 1
  // inserts nothing. False (and the vector as it was) only beyond the cap.
  bool Insert(int64_t pos, int64_t count, const T& value) {
    if (count <= 0) return true;
    if (static_cast<uint64_t>(count) > kMaxSize - m_v.size()) return false;
    const size_t n = static_cast<size_t>(count);
    if constexpr (kHasText) {
      m_textBytes = TextBytes(0, m_v.size());
      if (!Fits(m_v.size() + n, m_textBytes, n, CZetVectorBytes(value))) return false;
    }
    m_v.insert(m_v.begin() + InsertionPoint(pos), n, value);
    if constexpr (kHasText) m_textBytes += n * CZetVectorBytes(value);
    return true;
  }
  bool PushBack(const T& value) {
    if (m_v.size() >= kMaxSize) return false;
    if constexpr (kHasText) {
      if (!Fits(m_v.size() + 1, m_textBytes, 1, CZetVectorBytes(value))) return false;
    }
    m_v.push_back(value);
    if constexpr (kHasText) m_textBytes += CZetVectorBytes(value);
    return true;
  }
  // Removes the elements of [pos, pos + count) that exist; never fails.
  bool Erase(int64_t pos, int64_t count) {
    const int64_t n = static_cast<int64_t>(m_v.size());
    const int64_t first = std::clamp<int64_t>(pos, 0, n);
    if (count <= 0 || pos >= n) return true;
    const int64_t end = pos > n - count ? n : pos + count;  // without overflow
    const int64_t last = std::clamp<int64_t>(end, first, n);
    m_v.erase(m_v.begin() + first, m_v.begin() + last);
    if constexpr (kHasText) m_textBytes = TextBytes(0, m_v.size());
    return true;
  }
  T* GetStorage() { return m_v.data(); }
  const T* GetStorage() const { return m_v.data(); }
  // What the cap counts of this vector: its elements' bytes and, for strings, their
  // texts' (counted afresh, so texts written through Std() are included).
  size_t CapBytes() const { return m_v.size() * sizeof(T) + TextBytes(0, m_v.size()); }
  bool operator==(const TZetVector& o) const { return m_v == o.m_v; }
  CStdStr Format(int precision) const override {
    CStdStr s = "[";
    for (size_t i = 0; i < m_v.size(); ++i) {
      if (i) s += ", ";
      s += ElementText(m_v[i], precision);
    }
    return s + "]";
  }
  std::vector<T>& Std() { return m_v; }
  const std::vector<T>& Std() const { return m_v; }

 private:
  size_t TextBytes(size_t from, size_t to) const {
    size_t n = 0;
    for (size_t i = from; i < to; ++i) n += CZetVectorBytes(m_v[i]);
    return n;
  }
  // Whether `elements` elements holding `text` bytes of text, `count` more of them
  // with `each` bytes, fit the cap.
  static bool Fits(size_t elements, size_t text, size_t count, size_t each) {
    const size_t own = elements * sizeof(T);
    if (own > kZetMaxVectorBytes || text > kZetMaxVectorBytes - own) return false;
    return count == 0 || each <= (kZetMaxVectorBytes - own - text) / count;
  }
  static CStdStr ElementText(const T& e, int precision) {
    if constexpr (std::is_same_v<T, double>) {
      CStdStr s;
      s.Format("%.*f", precision, e);
      return s;
    } else {
      return e.Format(precision);
    }
  }
  std::vector<T> m_v;
  size_t m_textBytes = 0;  // kHasText: the texts' bytes, as the operations above left them
};

using CZetNumberVector = TZetVector<double, ZET_OBJ_NUMBER_ARRAY>;
using CZetStringVector = TZetVector<CZetString, ZET_OBJ_STRING_ARRAY>;
using CZetPointVector = TZetVector<CZetPoint, ZET_OBJ_POINT_ARRAY>;
using CZetLineVector = TZetVector<CZetLine, ZET_OBJ_LINE_ARRAY>;

// The Boolean array: elements are CZetBool values, so GetStorage yields CZetBool*.
class ZET_PLATFORM_API CZetBoolVector : public TZetVector<CZetBool, ZET_OBJ_BOOL_ARRAY> {
 public:
  using Base = TZetVector<CZetBool, ZET_OBJ_BOOL_ARRAY>;
  bool& operator[](unsigned i) { return Std()[i].m_v; }
  bool operator[](unsigned i) const { return Std()[i].m_v; }
  CZetBaseType* Clone() const override { return new CZetBoolVector(*this); }
  CZetBaseType* CloneAt(void* where) const override { return new (where) CZetBoolVector(*this); }
  void Copy(const CZetBaseType& other) override {
    if (other.GetType() == ZET_OBJ_BOOL_ARRAY) *this = static_cast<const CZetBoolVector&>(other);
  }
};

class ZET_PLATFORM_API CZetObject {
 public:
  CZetObject() noexcept : m_type(ZET_OBJ_UNTYPED), m_p(nullptr) {}
  explicit CZetObject(ZET_OBJ_TYPE type);
  CZetObject(const CZetObject& other);
  CZetObject(CZetObject&& other) noexcept;
  ~CZetObject() { Clear(); }

  CZetObject& operator=(const CZetObject& other);
  CZetObject& operator=(CZetObject&& other) noexcept;
  CZetObject& operator=(const CZetBaseType& value);
  CZetObject& operator=(double v) {
    if (m_type == ZET_OBJ_DOUBLE)
      static_cast<CZetDouble*>(m_p)->m_v = v;
    else
      Emplace<CZetDouble>(v);
    return *this;
  }
  CZetObject& operator=(bool v) {
    if (m_type == ZET_OBJ_BOOL)
      static_cast<CZetBool*>(m_p)->m_v = v;
    else
      Emplace<CZetBool>(v);
    return *this;
  }
  CZetObject& operator=(int v) {
    if (m_type == ZET_OBJ_INT)
      static_cast<CZetInt*>(m_p)->m_v = v;
    else
      Emplace<CZetInt>(v);
    return *this;
  }
  CZetObject& operator=(const char* text);
  CZetObject& operator=(const std::string& text);  // keeps embedded zero bytes

  void Clear() noexcept;
  void SetType(ZET_OBJ_TYPE type);
  ZET_OBJ_TYPE GetType() const { return m_type; }
  bool IsEmpty() const { return m_type == ZET_OBJ_UNTYPED; }
  const CZetBaseType* GetValue() const { return m_p; }

  // Scalar reads (the table above).
  double AsDouble() const {
    return m_type == ZET_OBJ_DOUBLE ? static_cast<const CZetDouble*>(m_p)->m_v : SlowDouble();
  }
  bool AsBool() const {
    return m_type == ZET_OBJ_BOOL ? static_cast<const CZetBool*>(m_p)->m_v : SlowBool();
  }
  int AsInt() const;
  const char* AsText() const {
    return m_type == ZET_OBJ_STRING ? static_cast<const CZetString*>(m_p)->m_s.c_str() : "";
  }
  // The whole text with embedded zero bytes; empty for other kinds.
  const std::string& AsString() const;

  operator double() const { return AsDouble(); }
  operator bool() const { return AsBool(); }
  operator int() const { return AsInt(); }
  operator const char*() const { return AsText(); }

  // Typed access by reference (the rule above).
  template <class T>
  T& Ref() {
    if (m_type != T::kType) Retype(T::kType);
    return *static_cast<T*>(m_p);
  }
  // The held value when it is a T, else null.
  template <class T>
  const T* Get() const {
    return m_type == T::kType ? static_cast<const T*>(m_p) : nullptr;
  }

  operator CZetBool&() { return Ref<CZetBool>(); }
  operator CZetDouble&() { return Ref<CZetDouble>(); }
  operator CZetString&() { return Ref<CZetString>(); }
  operator CZetHandle&() { return Ref<CZetHandle>(); }
  operator CZetLine&() { return Ref<CZetLine>(); }
  operator CZetPoint&() { return Ref<CZetPoint>(); }
  operator CZetCircle&() { return Ref<CZetCircle>(); }
  operator CZetRect&() { return Ref<CZetRect>(); }
  operator CZetBoolVector&() { return Ref<CZetBoolVector>(); }
  operator CZetNumberVector&() { return Ref<CZetNumberVector>(); }
  operator CZetStringVector&() { return Ref<CZetStringVector>(); }
  operator CZetPointVector&() { return Ref<CZetPointVector>(); }
  operator CZetLineVector&() { return Ref<CZetLineVector>(); }

  bool operator==(const CZetObject& other) const;

 private:
  static constexpr size_t kInlineBytes = 48;

  template <class T, class... Args>
  void Emplace(Args&&... args) {
    Clear();
    if constexpr (sizeof(T) <= kInlineBytes && alignof(T) <= alignof(std::max_align_t)) {
      m_p = new (m_buf) T(std::forward<Args>(args)...);
    } else {
      m_p = new T(std::forward<Args>(args)...);
    }
    m_type = T::kType;
  }
  bool IsInline() const { return m_p == reinterpret_cast<const CZetBaseType*>(m_buf); }
  void CopyFrom(const CZetBaseType& value);
  void Retype(ZET_OBJ_TYPE type);
  double SlowDouble() const;
  bool SlowBool() const;

  ZET_OBJ_TYPE m_type;
  CZetBaseType* m_p;  // points into m_buf or to the heap; null when untyped
  alignas(std::max_align_t) unsigned char m_buf[kInlineBytes];
};
