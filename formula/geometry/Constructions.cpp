// Constructions: bisectors, the distance between two lines along a third,
// perpendicular and parallel lines, intersections, the inscribed circle (always
// drawn), a circle's bounding box, the two-point anchor and the point grid. The
// routines' Boolean results are not examined: outputs start from the zero point and
// line, and a routine that cannot construct its result leaves them so.
#include <algorithm>
#include <cmath>
#include <cstdint>

#include "geometry/Geometry.h"
#include "zet/ZetGeometry.h"
#include "zet/ZetSetting.h"

namespace zet {
namespace {

class CAngleBis final : public TInstr<CAngleBis> {
 public:
  static void Describe(CDescriber& d) {
    d.Head("AngleBisect",
           "Calculates the bisector of the angle between the lines intersecting in the 2nd "
           "point")
        .Input(kTypePoint, "pt1", CZetPoint())
        .Input(kTypePoint, "pt2", CZetPoint())
        .Input(kTypePoint, "pt3", CZetPoint())
        .Output(kTypeLine, "bisector");
  }
  int Execute(IXInstrContext* ctx) override {
    CArgs a(ctx);
    CZetLine bisector;
    CZetGeometry::AngleBisect(a.Point(0), a.Point(1), a.Point(2), &bisector);
    a.Out(0) = bisector;
    return kOk;
  }
};

class CLnBis final : public TInstr<CLnBis> {
 public:
  static void Describe(CDescriber& d) {
    d.Head("LnsBisect", "Calculates the bisector of the angle made by two lines")
        .Input(kTypeLine, "ln1", CZetLine())
        .Input(kTypeLine, "ln2", CZetLine())
        .Output(kTypeLine, "bisector");
  }
  int Execute(IXInstrContext* ctx) override {
    CArgs a(ctx);
    CZetLine bisector;
    CZetGeometry::LineBisect(a.Line(0), a.Line(1), &bisector);
    a.Out(0) = bisector;
    return kOk;
  }
};

// Signed as the routine gives it (along the third line's canonical direction).
class CLn2LnDist final : public TInstr<CLn2LnDist> {
 public:
  static void Describe(CDescriber& d) {
    d.Head("LnToLnDist",
           "Calculates the distance between two lines along a third line. This is the length "
           "of the segment defined by the intersection of line 1 and line3 "
           "at one end, and of line 2 and line 3 at the other.")
        .Input(kTypeLine, "ln1", CZetLine())
        .Input(kTypeLine, "ln2", CZetLine())
        .Input(kTypeLine, "ln3", CZetLine())
        .Output(kTypeNumber, "distance");
  }
  int Execute(IXInstrContext* ctx) override {
    CArgs a(ctx);
    double dist = 0.0;
    CZetGeometry::Line2LineDist(a.Line(0), a.Line(1), a.Line(2), &dist);
    a.Out(0) = dist;
    return kOk;
  }
};

// LnPerpendicular and LnParallel: one construction through the point, from the
// line's angle.
template <class Derived, void (*kConstruct)(double, const CZetPoint&, CZetLine*)>
class TLineThroughPoint : public TInstr<Derived> {
 public:
  int Execute(IXInstrContext* ctx) override {
    CArgs a(ctx);
    CZetLine result;
    kConstruct(a.Line(0).a, a.Point(1), &result);
    a.Out(0) = result;
    return kOk;
  }
};

CDescriber& LineAndPoint(CDescriber& d, const char* output) {
  return d.Input(kTypeLine, "line", CZetLine()).Input(kTypePoint, "point", CZetPoint())
      .Output(kTypeLine, output);
}

constexpr void (*kPerpendicular)(double, const CZetPoint&, CZetLine*) =
    &CZetGeometry::LinePerpendicular;

class CLnPerp final : public TLineThroughPoint<CLnPerp, kPerpendicular> {
 public:
  static void Describe(CDescriber& d) {
    LineAndPoint(d.Head("LnPerpendicular",
                        "Calculates the perpendicular line to a given line trough a point"),
                 "perpendicular");
  }
};

class CLnPara final : public TLineThroughPoint<CLnPara, &CZetGeometry::LineParallel> {
 public:
  static void Describe(CDescriber& d) {
    LineAndPoint(
        d.Head("LnParallel", "Calculates the parallel line to a given line trough a point"),
        "parallel");
  }
};

// Parallel lines leave the point (0, 0).
class CLnInters final : public TInstr<CLnInters> {
 public:
  static void Describe(CDescriber& d) {
    d.Head("LnsIntersection", "Calculates the point of intersection between two lines")
        .Input(kTypeLine, "line1", CZetLine())
        .Input(kTypeLine, "line2", CZetLine())
        .Output(kTypePoint, "inters point");
  }
  int Execute(IXInstrContext* ctx) override {
    CArgs a(ctx);
    CZetPoint p;
    CZetGeometry::LineIntersection(a.Line(0), a.Line(1), &p);
    a.Out(0) = p;
    return kOk;
  }
};

class CCircleLineIntersect final : public TInstr<CCircleLineIntersect> {
 public:
  static void Describe(CDescriber& d) {
    d.Head("CircleLineIntersect", "Calculates circle line intersection")
        .Input(kTypePoint, "center", CZetPoint())
        .Input(kTypeNumber, "radius", 0.0)
        .Input(kTypeLine, "ln", CZetLine())
        .Output(kTypeNumber, "intersection_count")
        .Output(kTypePoint, "intersection1")
        .Output(kTypePoint, "intersection2");
  }
  int Execute(IXInstrContext* ctx) override {
    CArgs a(ctx);
    CZetPoint points[2];
    int count = 0;
    CZetGeometry::CircleLineIntersection(a.Point(0), a.Number(1), a.Line(2), points, &count);
    a.Out(0) = static_cast<double>(count);
    a.Out(1) = points[0];
    a.Out(2) = points[1];
    return kOk;
  }
};

// Draws the circle on every run, with an empty label, colour 0 and no fill.
class CCircInTriangle final : public TInstr<CCircInTriangle> {
 public:
  static void Describe(CDescriber& d) {
    d.Head("CircleInTriangle", "Finds the circle inscribed in a triangle")
        .Input(kTypePoint, "point1", CZetPoint())
        .Input(kTypePoint, "point2", CZetPoint())
        .Input(kTypePoint, "point3", CZetPoint())
        .Output(kTypePoint, "center")
        .Output(kTypeNumber, "diam");
  }
  int Execute(IXInstrContext* ctx) override {
    CArgs a(ctx);
    double diam = 0.0;
    CZetPoint center;
    CZetGeometry::CircleInTriangle(a.Point(0), a.Point(1), a.Point(2), &diam, &center);
    a.Out(0) = center;
    a.Out(1) = diam;
    if (IXInstrAnnotations* annotations = geometry::Annotations(a))
      annotations->AddCircle("", CZetCircle(center.x, center.y, diam * 0.5), 0, false, 1, 1);
    return kOk;
  }
};

// The corners lie diam, not diam / 2, from the centre: a box twice the circle's size.
// That is this instruction's contract, kept on purpose.
class CCircBndBox final : public TInstr<CCircBndBox> {
 public:
  static void Describe(CDescriber& d) {
    d.Head("CircleBoundingBox", "Calculates the bounding box for the circle")
        .Input(kTypeNumber, "diam", 0.0)
        .Input(kTypePoint, "center", CZetPoint())
        .Output(kTypePoint, "top left")
        .Output(kTypePoint, "top right")
        .Output(kTypePoint, "bottom left")
        .Output(kTypePoint, "bottom right");
  }
  int Execute(IXInstrContext* ctx) override {
    CArgs a(ctx);
    const double diam = a.Number(0);
    const CZetPoint c = a.Point(1);
    a.Out(0) = CZetPoint(c.x - diam, c.y - diam);
    a.Out(1) = CZetPoint(c.x + diam, c.y - diam);
    a.Out(2) = CZetPoint(c.x - diam, c.y + diam);
    a.Out(3) = CZetPoint(c.x + diam, c.y + diam);
    return kOk;
  }
};

class CMakeAnchor final : public TInstr<CMakeAnchor> {
 public:
  static void Describe(CDescriber& d) {
    d.Head("MakeAnchor", "Creates an anchor for the landmarking.")
        .Input(kTypePoint, "point", CZetPoint())
        .Input(kTypeNumber, "angle", 0.0)
        .Input(kTypeNumber, "distance", 0.0)
        .Output(kTypePoint, "point0")
        .Output(kTypePoint, "point1");
  }
  int Execute(IXInstrContext* ctx) override {
    CArgs a(ctx);
    const CZetPoint p = a.Point(0);
    const double angle = CZetAngleTr::ToRad(a.Number(1)), dist = a.Number(2);
    const double dx = dist * std::cos(angle), dy = dist * std::sin(angle);
    a.Out(0) = CZetPoint(p.x + dx, p.y + dy);
    a.Out(1) = CZetPoint(p.x - dx, p.y - dy);
    return kOk;
  }
};

// The grid's two kept quirks, both deliberate: the insertion sort truncates to an
// integer each value it moves down, and the vertical step divides by nx - 1, not
// ny - 1. Both messages leave the output as it was and still return 0.
class CPtsToGrid final : public TInstr<CPtsToGrid> {
 public:
  static void Describe(CDescriber& d) {
    d.Head("PtsToGrid", "Generate a grid of points inside boudaries")
        .Input(kTypePointArray, "boundaries", {}, "4 corners of the grid boudaries")
        .Input(kTypeNumber, "grid size X", 0.0, "Grid size on the X axis")
        .Input(kTypeNumber, "grid size Y", 0.0, "Grid size on the Y axis")
        .Output(kTypePointArray, "grid");
  }
  int Execute(IXInstrContext* ctx) override {
    CArgs a(ctx);
    const CZetPointVector& corners = a.Get<CZetPointVector>(0);
    const int nx = a.OwnInt(1), ny = a.OwnInt(2);
    if (corners.Size() != 4) {
      a.Report(kReportError, "PtsToGrid", "Boundaries array size must be 4.");
      return kOk;
    }
    if (nx < 2 || ny < 2) {
      a.Report(kReportError, "PtsToGrid", "Grid sizes must be greater than 1.");
      return kOk;
    }
    const uint64_t total = static_cast<uint64_t>(nx) * static_cast<uint64_t>(ny);
    if (total > CZetPointVector::kMaxSize) {
      a.Report(kReportError, "PtsToGrid", "Grid sizes are too large.");
      return kOk;
    }
    double xs[4], ys[4];
    for (unsigned i = 0; i < 4; ++i) xs[i] = corners[i].x, ys[i] = corners[i].y;
    SortTruncating(xs);
    SortTruncating(ys);
    const double stepX = (xs[2] - xs[1]) / (nx - 1);
    const double stepY = (ys[2] - ys[1]) / (nx - 1);
    CZetPointVector grid;
    grid.Resize(static_cast<unsigned>(total));
    const CZetPoint first(xs[1], ys[1]);
    grid[0] = first;
    for (uint64_t i = 1; i < total; ++i) {
      const double column = static_cast<double>(i % static_cast<uint64_t>(nx));
      const double row = static_cast<double>(i / static_cast<uint64_t>(nx));
      grid[static_cast<unsigned>(i)] = CZetPoint(first.x + column * stepX, first.y + row * stepY);
    }
    a.OutRef<CZetPointVector>(0) = std::move(grid);
    return kOk;
  }

 private:
  static void SortTruncating(double (&v)[4]) {
    for (int k = 1; k < 4; ++k) {
      for (int j = k; j > 0 && v[j] < v[j - 1]; --j) {
        const double moved = ZetTruncInt32(v[j]);
        v[j] = v[j - 1];
        v[j - 1] = moved;
      }
    }
  }
};

}  // namespace
}  // namespace zet

#define ZET_FAMILY_Constructions ZET_THIS_FAMILY
#include "frame/Factories.def"
