// Points: set, distances between points and point arrays, the angle and distance of
// two points, splitting and making points, the middle and mean point, rotation. Angles
// cross this boundary in the user's unit (CZetAngleTr); the geometry is CZetGeometry's.
#include <algorithm>

#include "geometry/Geometry.h"
#include "zet/ZetGeometry.h"
#include "zet/ZetSetting.h"

namespace zet {
namespace {

class CPointSet final : public TInstr<CPointSet> {
 public:
  static void Describe(CDescriber& d) {
    d.Head("PtSet", "Sets a point to the specified value")
        .Input(kTypePoint, "pt", CZetPoint())
        .Output(kTypePoint, "output");
  }
  int Execute(IXInstrContext* ctx) override { return ExecuteCopy(ctx); }
};

CDescriber& TwoPoints(CDescriber& d) {
  return d.Input(kTypePoint, "pt1", CZetPoint()).Input(kTypePoint, "pt2", CZetPoint());
}

CDescriber& Distances(CDescriber& d, int type) {
  return d.Output(type, "distance").Output(type, "x distance").Output(type, "y distance");
}

class CPt2PtDist final : public TInstr<CPt2PtDist> {
 public:
  static void Describe(CDescriber& d) {
    d.Head("PtToPtDist",
           "Calculates the distance between two points and its projections on the X and Y "
           "axes");
    Distances(TwoPoints(d), kTypeNumber);
  }
  int Execute(IXInstrContext* ctx) override {
    CArgs a(ctx);
    const CZetPoint p1 = a.Point(0), p2 = a.Point(1);
    a.Out(0) = CZetGeometry::Point2PointDist(p1, p2);
    a.Out(1) = p2.x - p1.x;  // signed: the second point minus the first
    a.Out(2) = p2.y - p1.y;
    return kOk;
  }
};

// The three number-array outputs of the point-array distances, sized n.
struct SDistanceArrays {
  CZetNumberVector &dist, &dx, &dy;
  SDistanceArrays(const CArgs& a, unsigned n)
      : dist(a.OutRef<CZetNumberVector>(0)),
        dx(a.OutRef<CZetNumberVector>(1)),
        dy(a.OutRef<CZetNumberVector>(2)) {
    dist.Resize(n), dx.Resize(n), dy.Resize(n);
  }
  void Set(unsigned i, const CZetPoint& from, const CZetPoint& to) {
    dist[i] = CZetGeometry::Point2PointDist(from, to);
    dx[i] = to.x - from.x;
    dy[i] = to.y - from.y;
  }
};

class CPtToPtsDist final : public TInstr<CPtToPtsDist> {
 public:
  static void Describe(CDescriber& d) {
    d.Head("PtToPtsDist", "Calculates the distance between point and point array")
        .Input(kTypePoint, "pt", CZetPoint())
        .Input(kTypePointArray, "pts");
    Distances(d, kTypeNumberArray);
  }
  int Execute(IXInstrContext* ctx) override {
    CArgs a(ctx);
    const CZetPoint pt = a.Point(0);
    const CZetPointVector& pts = a.Get<CZetPointVector>(1);
    SDistanceArrays out(a, pts.Size());
    for (unsigned i = 0; i < pts.Size(); ++i) out.Set(i, pt, pts[i]);
    return kOk;
  }
};

// The surplus of the longer array is ignored, without a message.
class CPtsToPtsDist final : public TInstr<CPtsToPtsDist> {
 public:
  static void Describe(CDescriber& d) {
    d.Head("PtsToPtsDist", "Calculates the distance between point arrays")
        .Input(kTypePointArray, "pts0")
        .Input(kTypePointArray, "pts1");
    Distances(d, kTypeNumberArray);
  }
  int Execute(IXInstrContext* ctx) override {
    CArgs a(ctx);
    const CZetPointVector &pts0 = a.Get<CZetPointVector>(0), &pts1 = a.Get<CZetPointVector>(1);
    const unsigned n = std::min(pts0.Size(), pts1.Size());
    SDistanceArrays out(a, n);
    for (unsigned i = 0; i < n; ++i) out.Set(i, pts0[i], pts1[i]);
    return kOk;
  }
};

class CPt2PtDistPitch final : public TInstr<CPt2PtDistPitch> {
 public:
  static void Describe(CDescriber& d) {
    d.Head("PtToPtAngleDist",
           "Calculates the distance between two points and the line's angle with the X axis");
    TwoPoints(d).Output(kTypeNumber, "a").Output(kTypeNumber, "d");
  }
  int Execute(IXInstrContext* ctx) override {
    CArgs a(ctx);
    CZetLine pitch;
    CZetGeometry::Point2PointDistPitch(a.Point(0), a.Point(1), &pitch);
    a.Out(0) = CZetAngleTr::ToPrefs(pitch.a, true);
    a.Out(1) = pitch.d;
    return kOk;
  }
};

class CPtToXY final : public TInstr<CPtToXY> {
 public:
  static void Describe(CDescriber& d) {
    d.Head("PtToXY", "Extracts the values of x and y as two numbers")
        .Input(kTypePoint, "point", CZetPoint())
        .Output(kTypeNumber, "x")
        .Output(kTypeNumber, "y");
  }
  int Execute(IXInstrContext* ctx) override {
    CArgs a(ctx);
    const CZetPoint p = a.Point(0);
    a.Out(0) = p.x;
    a.Out(1) = p.y;
    return kOk;
  }
};

class CXYToPt final : public TInstr<CXYToPt> {
 public:
  static void Describe(CDescriber& d) {
    d.Head("XYToPt", "Makes a point from the values passed in")
        .Input(kTypeNumber, "x", 0.0)
        .Input(kTypeNumber, "y", 0.0)
        .Output(kTypePoint, "point");
  }
  int Execute(IXInstrContext* ctx) override {
    CArgs a(ctx);
    a.Out(0) = CZetPoint(a.Number(0), a.Number(1));
    return kOk;
  }
};

class CMiddlePt final : public TInstr<CMiddlePt> {
 public:
  static void Describe(CDescriber& d) {
    d.Head("PtMiddle", "Calculates the middle (point) of the line defined by two points");
    TwoPoints(d).Output(kTypePoint, "middle pt");
  }
  int Execute(IXInstrContext* ctx) override {
    CArgs a(ctx);
    const CZetPoint p1 = a.Point(0), p2 = a.Point(1);
    CZetGeometry::MiddlePoint(p1, p2, &a.OutRef<CZetPoint>(0));
    return kOk;
  }
};

constexpr const char* kMeanDescription = "Calculates the average (mean) point";

// Sums from 0.0 in index order, divided by the count.
template <class Get>
CZetPoint Mean(unsigned n, Get get) {
  double sx = 0.0, sy = 0.0;
  for (unsigned i = 0; i < n; ++i) {
    const CZetPoint& p = get(i);
    sx += p.x;
    sy += p.y;
  }
  return CZetPoint(sx / n, sy / n);
}

class CPtAvg final : public TInstr<CPtAvg> {
 public:
  static void Describe(CDescriber& d) {
    d.Head("PtAverage", kMeanDescription)
        .Input(kTypePointArray, "pts")
        .Output(kTypePoint, "mean pt");
  }
  int Execute(IXInstrContext* ctx) override {
    CArgs a(ctx);
    const CZetPointVector& pts = a.Get<CZetPointVector>(0);
    if (pts.Size() == 0)
      return a.Fail(kReportError, "MeanPt", "Algorithm needs at least one point.");
    a.Out(0) = Mean(pts.Size(), [&](unsigned i) -> const CZetPoint& { return pts[i]; });
    return kOk;
  }
};

// Deliberately unlike PtAverage: no inputs give 0/0, the point (NaN, NaN), and success.
class CPtAvgInf final : public TInstr<CPtAvgInf> {
 public:
  static void Describe(CDescriber& d) {
    d.Head("PtAverageInf", kMeanDescription)
        .Input(kTypePoint, "pt", CZetPoint())
        .Variadic()
        .Output(kTypePoint, "mean pt");
  }
  int Execute(IXInstrContext* ctx) override {
    CArgs a(ctx);
    const unsigned n = static_cast<unsigned>(std::max(a.Count(), 0));
    a.Out(0) = Mean(n, [&](unsigned i) -> const CZetPoint& { return a.Point(static_cast<int>(i)); });
    return kOk;
  }
};

// A positive angle turns clockwise on the screen (y grows downward).
class CPtRotate final : public TInstr<CPtRotate> {
 public:
  static void Describe(CDescriber& d) {
    d.Head("PtRotate", "Rotates a point around another(center) with angle")
        .Input(kTypePoint, "point", CZetPoint())
        .Input(kTypeNumber, "angle", 0.0)
        .Input(kTypePoint, "center", CZetPoint())
        .Output(kTypePoint, "rotated point");
  }
  int Execute(IXInstrContext* ctx) override {
    CArgs a(ctx);
    CZetPoint p = a.Point(0);
    const CZetPoint center = a.Point(2);
    CZetGeometry::RotatePointClockwise(CZetAngleTr::ToRad(a.Number(1)), center, &p);
    a.Out(0) = p;
    return kOk;
  }
};

}  // namespace
}  // namespace zet

#define ZET_FAMILY_Points ZET_THIS_FAMILY
#include "frame/Factories.def"
