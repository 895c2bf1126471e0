// Values between Python and the library: a Python object to a CZetObject of a slot's
// declared descriptor type, and any CZetObject back to Python. The rules follow zet's
// JSON values (shared by `zet exec`): None makes a slot untyped, Booleans are only
// True/False, integers and choices take numbers truncated toward zero to 32 bits, texts
// are UTF-8 outside and Windows-1252 inside. NumPy arrays carry number and point
// arrays and images.
#pragma once

#include <pybind11/numpy.h>
#include <pybind11/pybind11.h>

#include <memory>
#include <string>
#include <vector>

#include "zet/ZetHost.h"

namespace zet::python {

namespace py = pybind11;

// Names a slot in error messages ("input 1 'points'", "settings"). The text is made only
// when a message needs it: a call converts its values on every run.
struct SSlot {
  SSlot(const char* kind) : kind(kind) {}  // NOLINT: a plain name converts
  SSlot(const char* kind, int index, const char* name, bool nameIsCp1252 = true)
      : kind(kind), index(index), name(name), nameIsCp1252(nameIsCp1252) {}
  std::string Text() const;
  const char* kind;
  int index = -1;
  const char* name = nullptr;
  bool nameIsCp1252 = true;
};

// Raised for a value that cannot go to its slot at all (wrong kind: TypeError) or whose
// content does not fit (ValueError). `what` names the slot in the message.
[[noreturn]] void WrongType(const SSlot& what, const std::string& expected, py::handle got);
[[noreturn]] void BadValue(const SSlot& what, const std::string& text);

// Python text to Windows-1252; a character it cannot hold raises ValueError.
std::string ToCp1252(py::handle text, const SSlot& what);
py::str FromCp1252(const std::string& text);

// Converts `value` to the descriptor type `type` into `out`. Images made from arrays or
// loaded from files are appended to `images`, which must outlive the value's use.
void ToValue(py::handle value, int type, CZetObject& out, const SSlot& what,
             std::vector<std::unique_ptr<CZetImage>>& images);

// Any value as Python. `steal` allows moving a number array's storage into the NumPy
// array (the value is left empty); images are copied.
py::object FromValue(CZetObject& value, bool steal);

// Images between NumPy and the platform: uint8 (H, W) is 8-bit grey, uint16 (H, W)
// 16-bit grey, uint8 (H, W, 4) colour. Both copy the pixels.
void ArrayToImage(py::handle array, CZetImage& image, const SSlot& what);
py::array ImageToArray(const CZetImage& image);

// The annotation records as Python dicts: {"op": ..., fields by name, "trailing": [t1, t2]}.
py::list RecordsToPython(const std::vector<zet::host::SAnnotationRecord>& records);

// Imports the named tuple classes from zetformula._types once.
void InitTypes();

}  // namespace zet::python
