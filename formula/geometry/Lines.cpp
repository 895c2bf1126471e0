// Lines: set, the distance of a point from a line (drawn on request), splitting and
// making lines, the line through two points, normalising a line or an angle, and the
// angle between two lines. A line's a is held in radians; numbers given to or taken
// from the user are in the user's unit (CZetAngleTr); d is never converted.
#include <cmath>

#include "geometry/Geometry.h"
#include "zet/ZetGeometry.h"
#include "zet/ZetSetting.h"

namespace zet {
namespace {

class CLineSet final : public TInstr<CLineSet> {
 public:
  static void Describe(CDescriber& d) {
    d.Head("LnSet", "Sets a line to the specified value")
        .Input(kTypeLine, "ln", CZetLine())
        .Output(kTypeLine, "output");
  }
  int Execute(IXInstrContext* ctx) override { return ExecuteCopy(ctx); }
};

// The foot of the perpendicular from the point; lines that cannot be crossed (only a
// degenerate line, such as one with a NaN angle) give distance 0 and the point (0, 0).
class CPt2LnDist final : public TInstr<CPt2LnDist> {
 public:
  static void Describe(CDescriber& d) {
    d.Head("PtToLnDist", "Calculates the distance between a point and a line")
        .ParamBool("Parameters", "display distance", "Draw the segment from the point to the line",
                   false, 1)
        .Input(kTypePoint, "pt", CZetPoint())
        .Input(kTypeLine, "ln", CZetLine())
        .Output(kTypeNumber, "distance")
        .Output(kTypePoint, "measurement point")
        .Output(kTypeLine, "measurement line");
  }
  int Execute(IXInstrContext* ctx) override {
    CArgs a(ctx);
    const bool display = a.Param(0).AsBool();
    const CZetPoint pt = a.Point(0);
    const CZetLine ln = a.Line(1);
    CZetLine perp;
    CZetGeometry::LinePerpendicular(ln.a, pt.x, pt.y, &perp.a, &perp.d);
    CZetPoint foot;
    const double dist =
        CZetGeometry::LineIntersection(ln, perp, &foot) ? CZetGeometry::Point2PointDist(pt, foot) : 0.0;
    a.Out(0) = std::fabs(dist);
    a.Out(1) = foot;
    a.Out(2) = perp;
    if (display) {
      if (IXInstrAnnotations* annotations = geometry::Annotations(a))
        annotations->AddSegment(nullptr, pt, foot, 0, 1, 1);
    }
    return kOk;
  }
};

class CLnToAD final : public TInstr<CLnToAD> {
 public:
  static void Describe(CDescriber& d) {
    d.Head("LnToAD", "Extracts the values of a and d as two numbers")
        .Input(kTypeLine, "line", CZetLine())
        .Output(kTypeNumber, "a")
        .Output(kTypeNumber, "d");
  }
  int Execute(IXInstrContext* ctx) override {
    CArgs a(ctx);
    const CZetLine ln = a.Line(0);
    a.Out(0) = CZetAngleTr::ToPrefs(ln.a, true);
    a.Out(1) = ln.d;
    return kOk;
  }
};

// The line as given: not brought to the canonical form.
class CADToLn final : public TInstr<CADToLn> {
 public:
  static void Describe(CDescriber& d) {
    d.Head("ADToLn", "Makes a line from the values passed in")
        .Input(kTypeNumber, "a", 0.0)
        .Input(kTypeNumber, "d", 0.0)
        .Output(kTypeLine, "line");
  }
  int Execute(IXInstrContext* ctx) override {
    CArgs a(ctx);
    a.Out(0) = CZetLine(CZetAngleTr::ToRad(a.Number(0)), a.Number(1));
    return kOk;
  }
};

class C2PtsToLn final : public TInstr<C2PtsToLn> {
 public:
  static void Describe(CDescriber& d) {
    d.Head("TwoPtsToLn", "Calculates the line defined by two points")
        .Input(kTypePoint, "pt1", CZetPoint())
        .Input(kTypePoint, "pt2", CZetPoint())
        .Output(kTypeLine, "ln");
  }
  int Execute(IXInstrContext* ctx) override {
    CArgs a(ctx);
    const CZetPoint p1 = a.Point(0), p2 = a.Point(1);
    CZetGeometry::PointPointToLine(p1, p2, &a.OutRef<CZetLine>(0));
    return kOk;
  }
};

class CLnNorm final : public TInstr<CLnNorm> {
 public:
  static void Describe(CDescriber& d) {
    d.Head("LnNormalize", "Normalizes the line")
        .Input(kTypeLine, "line", CZetLine())
        .Output(kTypeLine, "normalized line");
  }
  int Execute(IXInstrContext* ctx) override {
    CArgs a(ctx);
    CZetLine ln = a.Line(0);
    CZetGeometry::NormalizeLine(&ln);
    a.Out(0) = ln;
    return kOk;
  }
};

// The descriptions' degree range, (-180 to 180], is the program's own text; the angle
// is brought into (-90, 90] degrees, the equivalent of (-π/2, π/2].
class CNormAngle final : public TInstr<CNormAngle> {
 public:
  static void Describe(CDescriber& d) {
    d.Head("AngleNormalize",
           "Normalizes the angle: (-PI/2 to PI/2] or (-180 to 180] depending on the uom "
           "application preferences")
        .Input(kTypeNumber, "angle", 0.0)
        .Output(kTypeNumber, "normalized angle");
  }
  int Execute(IXInstrContext* ctx) override {
    CArgs a(ctx);
    double v = CZetAngleTr::ToRad(a.Number(0));
    CZetGeometry::NormalizeAngleMinusPiBy2ToPiBy2(&v);
    a.Out(0) = CZetAngleTr::ToPrefs(v, true);
    return kOk;
  }
};

class CLnToLnAngle final : public TInstr<CLnToLnAngle> {
 public:
  static void Describe(CDescriber& d) {
    d.Head("LnToLnAngle",
           "Calculates the angle between two lines (ln1.a - ln2.a). Angle is normalized to "
           "(-PI/2, PI/2] or (-180 to 180] depending on the uom application "
           "preferences.")
        .Input(kTypeLine, "ln1", CZetLine())
        .Input(kTypeLine, "ln2", CZetLine())
        .Output(kTypeNumber, "angle");
  }
  int Execute(IXInstrContext* ctx) override {
    CArgs a(ctx);
    double v = a.Line(0).a - a.Line(1).a;
    CZetGeometry::NormalizeAngleMinusPiBy2ToPiBy2(&v);
    a.Out(0) = CZetAngleTr::ToPrefs(v, true);
    return kOk;
  }
};

}  // namespace
}  // namespace zet

#define ZET_FAMILY_Lines ZET_THIS_FAMILY
#include "frame/Factories.def"
