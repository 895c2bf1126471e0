// CZetObject and the typed values: storage, copying, the conversion table and the
// text forms.
#include "zet/ZetObject.h"

#include <cmath>
#include <cstdlib>
#include <limits>

int32_t ZetTruncInt32(double v) {
  // NaN fails both comparisons and so takes the "integer indefinite" value too.
  if (v > -2147483649.0 && v < 2147483648.0) return static_cast<int32_t>(v);
  return std::numeric_limits<int32_t>::min();
}

int32_t ZetRoundInt32(double v) {
  const double r = std::nearbyint(v);  // default rounding mode: to nearest, ties to even
  if (r >= -2147483648.0 && r < 2147483648.0) return static_cast<int32_t>(r);
  return std::numeric_limits<int32_t>::min();
}

CZetBaseType::~CZetBaseType() = default;

CStdStr CZetBool::Format(int) const { return m_v ? "true" : "false"; }

CStdStr CZetInt::Format(int) const {
  CStdStr s;
  s.Format("%d", m_v);
  return s;
}

CStdStr CZetDouble::Format(int precision) const {
  CStdStr s;
  s.Format("%.*f", precision, m_v);
  return s;
}

CStdStr CZetString::Format(int) const { return CStdStr(m_s); }

CStdStr CZetLine::Format(int precision) const {
  CStdStr s;
  s.Format("(%.*f, %.*f)", precision, a, precision, d);
  return s;
}

CStdStr CZetCircle::Format(int precision) const {
  CStdStr s;
  s.Format("(%.*f, %.*f, %.*f)", precision, cx, precision, cy, precision, r);
  return s;
}

CStdStr CZetHandle::Format(int) const {
  CStdStr s;
  s.Format("handle %p", static_cast<void*>(m_pImage));
  return s;
}

CZetObject::CZetObject(ZET_OBJ_TYPE type) : m_type(ZET_OBJ_UNTYPED), m_p(nullptr) {
  SetType(type);
}

CZetObject::CZetObject(const CZetObject& other) : m_type(ZET_OBJ_UNTYPED), m_p(nullptr) {
  if (other.m_p) CopyFrom(*other.m_p);
}

CZetObject::CZetObject(CZetObject&& other) noexcept : m_type(ZET_OBJ_UNTYPED), m_p(nullptr) {
  *this = std::move(other);
}

CZetObject& CZetObject::operator=(const CZetObject& other) {
  if (this == &other) return *this;
  if (!other.m_p) {
    Clear();
  } else {
    CopyFrom(*other.m_p);
  }
  return *this;
}

CZetObject& CZetObject::operator=(CZetObject&& other) noexcept {
  if (this == &other) return *this;
  if (other.m_p && !other.IsInline()) {
    Clear();
    m_p = other.m_p;
    m_type = other.m_type;
    other.m_p = nullptr;
    other.m_type = ZET_OBJ_UNTYPED;
  } else if (other.m_p) {
    // Inline values are small; a copy cannot throw for them but strings, whose
    // copy may allocate. Fall back to a plain copy and keep `other` intact.
    try {
      CopyFrom(*other.m_p);
    } catch (...) {
      Clear();
    }
  } else {
    Clear();
  }
  return *this;
}

CZetObject& CZetObject::operator=(const CZetBaseType& value) {
  if (&value != m_p) CopyFrom(value);
  return *this;
}

void CZetObject::CopyFrom(const CZetBaseType& value) {
  // Same kind: assign in place (no allocation for scalars, reuse of a string's or a
  // vector's storage).
  if (m_p && m_type == value.GetType()) {
    m_p->Copy(value);
    return;
  }
  Clear();
  // Every value that fits in the buffer is constructed there.
  switch (value.GetType()) {
    case ZET_OBJ_BOOL:
    case ZET_OBJ_INT:
    case ZET_OBJ_DOUBLE:
    case ZET_OBJ_STRING:
    case ZET_OBJ_POINT:
    case ZET_OBJ_LINE:
    case ZET_OBJ_CIRCLE:
    case ZET_OBJ_RECT:
    case ZET_OBJ_HANDLE:
      m_p = value.CloneAt(m_buf);
      break;
    default:
      m_p = value.Clone();
      break;
  }
  m_type = value.GetType();
}

static_assert(sizeof(CZetString) <= 48 && sizeof(CZetRect) <= 48 && sizeof(CZetCircle) <= 48,
              "inline kinds must fit the buffer");

CZetObject& CZetObject::operator=(const char* text) {
  if (m_type == ZET_OBJ_STRING)
    *static_cast<CZetString*>(m_p) = text;
  else
    Emplace<CZetString>(text);
  return *this;
}

CZetObject& CZetObject::operator=(const std::string& text) {
  if (m_type == ZET_OBJ_STRING)
    *static_cast<CZetString*>(m_p) = text;
  else
    Emplace<CZetString>(text);
  return *this;
}

void CZetObject::Clear() noexcept {
  if (m_p) {
    if (IsInline())
      m_p->~CZetBaseType();
    else
      delete m_p;
  }
  m_p = nullptr;
  m_type = ZET_OBJ_UNTYPED;
}

void CZetObject::SetType(ZET_OBJ_TYPE type) {
  switch (type) {
    case ZET_OBJ_UNTYPED: Clear(); break;
    case ZET_OBJ_BOOL: Emplace<CZetBool>(); break;
    case ZET_OBJ_INT: Emplace<CZetInt>(); break;
    case ZET_OBJ_DOUBLE: Emplace<CZetDouble>(); break;
    case ZET_OBJ_STRING: Emplace<CZetString>(); break;
    case ZET_OBJ_POINT: Emplace<CZetPoint>(); break;
    case ZET_OBJ_LINE: Emplace<CZetLine>(); break;
    case ZET_OBJ_CIRCLE: Emplace<CZetCircle>(); break;
    case ZET_OBJ_RECT: Emplace<CZetRect>(); break;
    case ZET_OBJ_HANDLE: Emplace<CZetHandle>(); break;
    case ZET_OBJ_BOOL_ARRAY: Emplace<CZetBoolVector>(); break;
    case ZET_OBJ_NUMBER_ARRAY: Emplace<CZetNumberVector>(); break;
    case ZET_OBJ_STRING_ARRAY: Emplace<CZetStringVector>(); break;
    case ZET_OBJ_POINT_ARRAY: Emplace<CZetPointVector>(); break;
    case ZET_OBJ_LINE_ARRAY: Emplace<CZetLineVector>(); break;
    default: Clear(); break;  // a code this platform does not know: untyped
  }
}

void CZetObject::Retype(ZET_OBJ_TYPE type) {
  switch (type) {
    case ZET_OBJ_BOOL: *this = AsBool(); break;
    case ZET_OBJ_INT: *this = AsInt(); break;
    case ZET_OBJ_DOUBLE: *this = AsDouble(); break;
    default: SetType(type); break;
  }
}

double CZetObject::SlowDouble() const {
  switch (m_type) {
    case ZET_OBJ_DOUBLE: return static_cast<const CZetDouble*>(m_p)->m_v;
    case ZET_OBJ_BOOL: return static_cast<const CZetBool*>(m_p)->m_v ? 1.0 : 0.0;
    case ZET_OBJ_INT: return static_cast<const CZetInt*>(m_p)->m_v;
    case ZET_OBJ_STRING: return std::strtod(static_cast<const CZetString*>(m_p)->m_s.c_str(), nullptr);
    default: return 0.0;
  }
}

bool CZetObject::SlowBool() const {
  switch (m_type) {
    case ZET_OBJ_BOOL: return static_cast<const CZetBool*>(m_p)->m_v;
    case ZET_OBJ_INT: return static_cast<const CZetInt*>(m_p)->m_v != 0;
    case ZET_OBJ_DOUBLE:
    case ZET_OBJ_STRING: return SlowDouble() != 0.0;
    default: return false;
  }
}

int CZetObject::AsInt() const {
  switch (m_type) {
    case ZET_OBJ_INT: return static_cast<const CZetInt*>(m_p)->m_v;
    case ZET_OBJ_BOOL: return static_cast<const CZetBool*>(m_p)->m_v ? 1 : 0;
    case ZET_OBJ_DOUBLE:
    case ZET_OBJ_STRING: return ZetTruncInt32(SlowDouble());
    default: return 0;
  }
}

const std::string& CZetObject::AsString() const {
  static const std::string kEmpty;
  return m_type == ZET_OBJ_STRING ? static_cast<const CZetString*>(m_p)->m_s : kEmpty;
}

bool CZetObject::operator==(const CZetObject& other) const {
  if (!m_p || !other.m_p) return !m_p && !other.m_p;
  return m_p->Compare(*other.m_p);
}
