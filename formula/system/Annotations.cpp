// Overlay annotations: ten instructions that hand one shape each to the host's
// annotation service (text, point, segment, infinite line, circle, circles of one
// radius, rotated rectangle, point set, pixel set, polyline). Nothing is drawn here:
// the host owns the overlay, its rendering and the meaning of colour 0 (its default
// annotation colour). Colours are numbers truncated toward zero and passed unchanged;
// every operation ends with the two integers 1, 1; every Execute returns 0.
#include "frame/Instr.h"
#include "zet/ZetSetting.h"

namespace zet {
namespace {

constexpr int kTrail = 1;  // both trailing integers of every service call

IXInstrAnnotations* Sink(const CArgs& a) {
  return static_cast<IXInstrAnnotations*>(a.Context()->GetService(kServiceAnnotations));
}

const CZetPoint kOrigin(0.0, 0.0);

// The point array, label and colour of inputs 0 to 2 handed to a point-set operation.
using PointSetOp = void (IXInstrAnnotations::*)(const char*, const CZetPointVector&, int, int,
                                                 int);
int SendPointSet(IXInstrContext* ctx, PointSetOp op) {
  CArgs a(ctx);
  if (IXInstrAnnotations* sink = Sink(a))
    (sink->*op)(a.Text(1), a.Get<CZetPointVector>(0), a.TruncInt(2), kTrail, kTrail);
  return kOk;
}

class CAnnotText final : public TInstr<CAnnotText> {
 public:
  static void Describe(CDescriber& d) {
    d.Head("Text", "Add text annotation")
        .Input(kTypePoint, "location", kOrigin, "x,y starting location of text")
        .Input(kTypeString, "label", "Text label", "Text to display")
        .Input(kTypeNumber, "color", 0.0, "Text color. 0 = Use default color")
        .Input(kTypeBool, "paint background", false, "If true, color the text's background")
        .Input(kTypeString, "font", "", "String to select a font family and point size");
  }
  int Execute(IXInstrContext* ctx) override {
    CArgs a(ctx);
    if (IXInstrAnnotations* sink = Sink(a))
      sink->AddText(a.Point(0), a.Text(1), a.Text(4), a.TruncInt(2), a.Bool(3), kTrail, kTrail);
    return kOk;
  }
};

class CAnnotPoint final : public TInstr<CAnnotPoint> {
 public:
  static void Describe(CDescriber& d) {
    d.Head("Point", "Add point annotation")
        .Input(kTypePoint, "location", kOrigin, "x,y location of point")
        .Input(kTypeString, "label", "Point label", "Label for point")
        .Input(kTypeNumber, "color", 0.0, "Point color.  0 = Use default color");
  }
  int Execute(IXInstrContext* ctx) override {
    CArgs a(ctx);
    if (IXInstrAnnotations* sink = Sink(a))
      sink->AddPoint(a.Text(1), a.Point(0), a.TruncInt(2), kTrail, kTrail);
    return kOk;
  }
};

class CAnnotSegment final : public TInstr<CAnnotSegment> {
 public:
  static void Describe(CDescriber& d) {
    d.Head("Line Segment", "Add line segment annotation")
        .Input(kTypePoint, "start", kOrigin, "Starting point of line")
        .Input(kTypePoint, "end", kOrigin, "Ending point of line")
        .Input(kTypeString, "label", "Segment label", "Line segment label")
        .Input(kTypeNumber, "color", 0.0, "Line segment color. 0 for default color");
  }
  int Execute(IXInstrContext* ctx) override {
    CArgs a(ctx);
    if (IXInstrAnnotations* sink = Sink(a))
      sink->AddSegment(a.Text(2), a.Point(0), a.Point(1), a.TruncInt(3), kTrail, kTrail);
    return kOk;
  }
};

// The label has one text, "Line label": read as its default, as the first text of every
// other label is (Polyline's default and description are even the same text), so it has
// no description.
class CAnnotLine final : public TInstr<CAnnotLine> {
 public:
  static void Describe(CDescriber& d) {
    d.Head("Line", "Add line annotation")
        .Input(kTypeLine, "line", CZetLine(0.0, 0.0), "Line angle, distance")
        .Input(kTypeString, "label", "Line label")
        .Input(kTypeNumber, "color", 0.0, "Line color. 0 for default color");
  }
  int Execute(IXInstrContext* ctx) override {
    CArgs a(ctx);
    if (IXInstrAnnotations* sink = Sink(a))
      sink->AddLine(a.Text(1), a.Line(0), a.TruncInt(2), kTrail, kTrail);
    return kOk;
  }
};

// A radius of exactly 0 draws nothing; negative and NaN radii go to the host as given.
class CAnnotCircle final : public TInstr<CAnnotCircle> {
 public:
  static void Describe(CDescriber& d) {
    d.Head("Circle", "Add circle annotation")
        .Input(kTypePoint, "center", kOrigin, "Center point of circle annotation")
        .Input(kTypeNumber, "radius", 1.0, "Radius of circle annotation")
        .Input(kTypeString, "label", "Circle label", "Circle's label")
        .Input(kTypeNumber, "color", 0.0, "Circle color. 0 for default color")
        .Input(kTypeBool, "fill", false, "If True, fill circle with 'color'");
  }
  int Execute(IXInstrContext* ctx) override {
    CArgs a(ctx);
    const double radius = a.Number(1);
    if (radius == 0.0) return kOk;
    const CZetPoint& c = a.Point(0);
    if (IXInstrAnnotations* sink = Sink(a))
      sink->AddCircle(a.Text(2), CZetCircle(c.x, c.y, radius), a.TruncInt(3), a.Bool(4), kTrail,
                      kTrail);
    return kOk;
  }
};

class CAnnotCirclesFixedRadius final : public TInstr<CAnnotCirclesFixedRadius> {
 public:
  static void Describe(CDescriber& d) {
    d.Head("Circles", "Add array of constant-radius circle annotations")
        .Input(kTypePointArray, "center points", {}, "Array of circle center points")
        .Input(kTypeNumber, "radius", 1.0, "Circles' radius")
        .Input(kTypeString, "label", "Circles label", "Circles' label")
        .Input(kTypeNumber, "color", 0.0, "Circles' color. 0 for default color")
        .Input(kTypeBool, "fill", false, "If True, fill circles with 'color'");
  }
  int Execute(IXInstrContext* ctx) override {
    CArgs a(ctx);
    const CZetPointVector& centres = a.Get<CZetPointVector>(0);
    const double radius = a.Number(1);
    if (radius == 0.0 || centres.Size() == 0) return kOk;
    if (IXInstrAnnotations* sink = Sink(a))
      sink->AddCircles(a.Text(2), centres, radius, a.TruncInt(3), a.Bool(4), kTrail, kTrail);
    return kOk;
  }
};

class CAnnotRect final : public TInstr<CAnnotRect> {
 public:
  static void Describe(CDescriber& d) {
    d.Head("Rectangle", "Add rectangle annotation")
        .Input(kTypePoint, "center", kOrigin, "Center point of rectangle")
        .Input(kTypeNumber, "width", 0.0, "Width of rectangle")
        .Input(kTypeNumber, "height", 0.0, "Height of rectangle")
        .Input(kTypeNumber, "angle", 0.0, "Angle of rectangle, rotated around center")
        .Input(kTypeString, "label", "Rect label", "Label for rectangle")
        .Input(kTypeNumber, "color", 0.0, "Rectangle color. 0 = Use default color")
        .Input(kTypeBool, "fill", false, "If True, fill rectangle with 'color'")
        .Input(kTypeBool, "in radians", true, "If true, angle is in radians. If false, in degrees");
  }
  int Execute(IXInstrContext* ctx) override {
    CArgs a(ctx);
    double angle = a.Number(3);
    // The literal rather than CZetGeometry::Pi: the conversion is this instruction's own
    // and must not follow any change of the platform constant.
    if (!a.Bool(7)) angle = angle * 3.141592653589793 / 180.0;
    const CZetPoint& c = a.Point(0);
    if (IXInstrAnnotations* sink = Sink(a))
      sink->AddRect(a.Text(4), CZetRect(c.x, c.y, a.Number(1), a.Number(2), angle),
                    a.TruncInt(5), a.Bool(6), kTrail, kTrail);
    return kOk;
  }
};

class CAnnotPoints final : public TInstr<CAnnotPoints> {
 public:
  static void Describe(CDescriber& d) {
    d.Head("Points", "Add points annotation")
        .Input(kTypePointArray, "points", {}, "Array of points (+ marks) to draw")
        .Input(kTypeString, "label", "Points label", "Label for point array")
        .Input(kTypeNumber, "color", 0.0, "Color of points. 0 = Use default color");
  }
  int Execute(IXInstrContext* ctx) override {
    return SendPointSet(ctx, &IXInstrAnnotations::AddPoints);
  }
};

class CAnnotPixels final : public TInstr<CAnnotPixels> {
 public:
  static void Describe(CDescriber& d) {
    d.Head("Pixels", "Add pixels annotation")
        .Input(kTypePointArray, "pixels", {}, "Input array of pixels")
        .Input(kTypeString, "label", "Pixels label", "Label for pixels")
        .Input(kTypeNumber, "color", 0.0, "Pixel color. 0 = Use default color");
  }
  int Execute(IXInstrContext* ctx) override {
    return SendPointSet(ctx, &IXInstrAnnotations::AddPixels);
  }
};

// A closed polyline ends with an unlabelled segment from its first point to its last,
// in the polyline's colour: colour 0 is resolved to the default annotation colour here,
// so that the host's default cannot differ between the two records.
class CAnnotPolyline final : public TInstr<CAnnotPolyline> {
 public:
  static void Describe(CDescriber& d) {
    d.Head("Polyline", "Add polyline annotation")
        .Input(kTypePointArray, "polyline", {}, "Point array to connect with lines")
        .Input(kTypeString, "label", "Polyline label", "Polyline label")
        .Input(kTypeNumber, "color", 0.0, "Polyline color. 0 = use default color")
        .Input(kTypeBool, "close", false, "Close polyline if true");
  }
  int Execute(IXInstrContext* ctx) override {
    CArgs a(ctx);
    const CZetPointVector& points = a.Get<CZetPointVector>(0);
    if (points.Size() < 2) return kOk;
    IXInstrAnnotations* sink = Sink(a);
    if (!sink) return kOk;
    int color = a.TruncInt(2);
    sink->AddPolyline(a.Text(1), points, color, kTrail, kTrail);
    if (a.Bool(3)) {
      if (color == 0) color = CZetSetting::Inst().GetDefaultAnnotationColor();
      sink->AddSegment(nullptr, points[0], points[points.Size() - 1], color, kTrail, kTrail);
    }
    return kOk;
  }
};

}  // namespace
}  // namespace zet

#define ZET_FAMILY_Annotations ZET_THIS_FAMILY
#include "frame/Factories.def"
