// Best-fit lines and distances to lines: the line fit of a point array or of single
// point inputs (optionally preprocessed by clustering), the fit with the furthest
// points on either side, the rake fit, the distances of points from a line, and the
// angle of the line through two points. The fitting is CZetGeometry's; here the
// inputs are prepared and the results unpacked.
#include <cfloat>
#include <cmath>
#include <vector>

#include "geometry/Geometry.h"
#include "zet/ZetSetting.h"

namespace zet {
namespace {

// The outputs of the line fits and the rake: count, line, outliers, used.
enum ELineFitOut : int { kLineIncluded, kLineLine, kLineOutliers, kLineUsed };
CDescriber& LineFitOutputs(CDescriber& d) {
  return d.Output(kTypeNumber, "points included")
      .Output(kTypeLine, "line")
      .Output(kTypePointArray, "outliers")
      .Output(kTypePointArray, "points used");
}

constexpr int kOutliersHint = 0xFFFF;

struct SLineFitRequest {
  const char* source;
  const CZetPoint* points;
  size_t n;
  double percent;
  bool preprocess;
  double tolerance;
  bool emptyBeforeTolerance;  // the variadic form tests for no points first
};

// PtsToBestLine and PtsToBestLnInf after the output hint: clear the outputs, test the
// tolerance and the point count, preprocess, fit, write.
int FitLine(const CArgs& a, const SLineFitRequest& r) {
  a.Out(kLineIncluded) = 0.0;
  a.Out(kLineLine) = CZetLine(0, 0);
  CZetPointVector& outliers = a.OutRef<CZetPointVector>(kLineOutliers);
  CZetPointVector& used = a.OutRef<CZetPointVector>(kLineUsed);
  outliers.Resize(0);
  used.Resize(0);
  if (r.emptyBeforeTolerance && r.n == 0) return kOk;
  if (r.preprocess && r.tolerance < 0)
    return a.Fail(kReportError, r.source, geometry::kNegativeTolerance);
  if (r.n == 0) return kOk;
  const geometry::CFitPoints fit(r.points, r.n, r.preprocess, r.tolerance);
  unsigned included = 0;
  CZetLine line;
  const unsigned status = CZetGeometry::Points2BestLine(
      fit.Data(), fit.Size(), geometry::PercentArg(r.percent), &included, &line, &outliers, &used);
  a.Out(kLineIncluded) = static_cast<double>(included);
  a.Out(kLineLine) = line;
  return status == CZetGeometry::kFitOk ? kOk : kFail;
}

class CPt2BestLn final : public TInstr<CPt2BestLn> {
 public:
  static void Describe(CDescriber& d) {
    d.Head("PtsToBestLine", "Fits a line through a set of points")
        .Input(kTypeNumber, "percent outliers", 0.0)
        .Input(kTypePointArray, "pts")
        .Input(kTypeBool, "preprocess", false, geometry::kPreprocessDescription)
        .Input(kTypeNumber, "tolerance", 1.0, geometry::kToleranceDescription);
    LineFitOutputs(d);
  }
  int Execute(IXInstrContext* ctx) override {
    ctx->SetOutputHint(kLineOutliers, kOutliersHint);
    CArgs a(ctx);
    const CZetPointVector& pts = a.Get<CZetPointVector>(1);
    return FitLine(a, {"PtsToBestLine", pts.GetStorage(), pts.Size(), a.Number(0), a.Bool(2),
                       a.Number(3), false});
  }
};

class CPt2BestLnInf final : public TInstr<CPt2BestLnInf> {
 public:
  static void Describe(CDescriber& d) {
    d.Head("PtsToBestLnInf", "Fits a line through a set of points specified as individual inputs")
        .Input(kTypeNumber, "percent outliers", 0.0)
        .Input(kTypeBool, "preprocess", false, geometry::kPreprocessDescription)
        .Input(kTypeNumber, "tolerance", 1.0, geometry::kToleranceDescription)
        .Input(kTypePoint, "point", CZetPoint())
        .Variadic();
    LineFitOutputs(d);
  }
  int Execute(IXInstrContext* ctx) override {
    ctx->SetOutputHint(kLineOutliers, kOutliersHint);
    CArgs a(ctx);
    const std::vector<CZetPoint> pts = geometry::VariadicPoints(a, 3);
    return FitLine(a, {"PtsToBestLnInf", pts.data(), pts.size(), a.Number(0), a.Bool(1),
                       a.Number(2), true});
  }
};

// PtsToBestLnMaxOut's outputs, in descriptor order.
enum EMaxOutOut : int {
  kMaxOutIncluded,
  kMaxOutMinDist,
  kMaxOutMaxDist,
  kMaxOutMinPoint,
  kMaxOutMaxPoint,
  kMaxOutLine,
  kMaxOutOutliers
};

class CPt2BestLnMaxOut final : public TInstr<CPt2BestLnMaxOut> {
 public:
  static void Describe(CDescriber& d) {
    d.Head("PtsToBestLnMaxOut",
           "Fits a line through a set of points; calculates furthest points above and below "
           "the line and distances to them")
        .Input(kTypePointArray, "pts")
        .Input(kTypeNumber, "percent outliers", 0.0)
        .Output(kTypeNumber, "pts included")
        .Output(kTypeNumber, "min dist")
        .Output(kTypeNumber, "max dist")
        .Output(kTypePoint, "min point")
        .Output(kTypePoint, "max point")
        .Output(kTypeLine, "ln")
        .Output(kTypePointArray, "outliers");
  }
  // "min dist" is the furthest on the side above a (non-vertical) line, negative;
  // "max dist" the furthest below it (CZetGeometry's sign convention).
  int Execute(IXInstrContext* ctx) override {
    ctx->SetOutputHint(kMaxOutOutliers, kOutliersHint);
    CArgs a(ctx);
    const CZetPointVector& pts = a.Get<CZetPointVector>(0);
    unsigned included = 0;
    double minDist = 0, maxDist = 0;
    CZetPoint minPoint, maxPoint;
    CZetLine line;
    const unsigned status = CZetGeometry::Points2BestLineMaxOutliers(
        pts.GetStorage(), pts.Size(), geometry::PercentArg(a.Number(1)), &included, &minDist,
        &maxDist, &minPoint, &maxPoint, &line, &a.OutRef<CZetPointVector>(kMaxOutOutliers));
    a.Out(kMaxOutIncluded) = static_cast<double>(included);
    a.Out(kMaxOutMinDist) = minDist;
    a.Out(kMaxOutMaxDist) = maxDist;
    a.Out(kMaxOutMinPoint) = minPoint;
    a.Out(kMaxOutMaxPoint) = maxPoint;
    a.Out(kMaxOutLine) = line;
    return status == CZetGeometry::kFitOk ? kOk : kFail;
  }
};

// The rake fit (design in platform/geometry/RakeFit.cpp). Neither tolerance has a
// switch of its own: a tolerance of 0 turns its preprocessing step off, which the
// defaults do for the angle (a default angle could not suit both angle units). The
// angular tolerance is an angle in the user's unit. It behaves as PtsToBestLine does
// otherwise (output hint, cleared outputs, no points: success, a negative tolerance:
// the same message).
class CRakePt2BestLn final : public TInstr<CRakePt2BestLn> {
 public:
  static void Describe(CDescriber& d) {
    d.Head("RakeLineFit",
           "Fits a line through an ordered set of points belonging to a rake - with all "
           "implications")
        .Input(kTypeNumber, "percent outliers", 0.0)
        .Input(kTypePointArray, "pts")
        .Input(kTypeNumber, "linear tolerance", 1.0,
               "Clustering tolerance (step 1); used only if preprocessing is enabled")
        .Input(kTypeNumber, "angular tolerance", 0.0,
               "Clustering tolerance (step 2); used only if preprocessing is enabled");
    LineFitOutputs(d);
  }
  int Execute(IXInstrContext* ctx) override {
    ctx->SetOutputHint(kLineOutliers, kOutliersHint);
    CArgs a(ctx);
    a.Out(kLineIncluded) = 0.0;
    a.Out(kLineLine) = CZetLine(0, 0);
    CZetPointVector& outliers = a.OutRef<CZetPointVector>(kLineOutliers);
    CZetPointVector& used = a.OutRef<CZetPointVector>(kLineUsed);
    outliers.Resize(0);
    used.Resize(0);
    const double linear = a.Number(2), angular = CZetAngleTr::ToRad(a.Number(3));
    if (linear < 0 || angular < 0)
      return a.Fail(kReportError, "RakeLineFit", geometry::kNegativeTolerance);
    const CZetPointVector& pts = a.Get<CZetPointVector>(1);
    if (pts.Size() == 0) return kOk;
    unsigned included = 0;
    CZetLine line;
    const unsigned status = CZetGeometry::RakePoints2BestLine(
        pts.GetStorage(), pts.Size(), geometry::PercentArg(a.Number(0)), linear, angular,
        &included, &line, &outliers, &used);
    a.Out(kLineIncluded) = static_cast<double>(included);
    a.Out(kLineLine) = line;
    return status == CZetGeometry::kFitOk ? kOk : kFail;
  }
};

// The distance instructions' outputs, in descriptor order.
enum EDistanceOut : int { kDistances, kDistMin, kDistMax, kDistMinIndex, kDistMaxIndex };

// Unsigned distances of the points from the line, with the first smallest and the
// first largest; no points give the largest double, its negation and indexes -1.
int LineDistances(const CArgs& a, const CZetPoint* points, unsigned n, const CZetLine& line) {
  std::vector<double> signedDist(n);
  CZetGeometry::PointArray2LineDist(points, n, line, signedDist.data());
  CZetNumberVector& dist = a.OutRef<CZetNumberVector>(kDistances);
  dist.Resize(n);
  double lo = DBL_MAX, hi = -DBL_MAX;
  int loIndex = -1, hiIndex = -1;
  for (unsigned i = 0; i < n; ++i) {
    dist[i] = std::fabs(signedDist[i]);
    if (dist[i] < lo) lo = dist[i], loIndex = static_cast<int>(i);
    if (dist[i] > hi) hi = dist[i], hiIndex = static_cast<int>(i);
  }
  a.Out(kDistMin) = lo;
  a.Out(kDistMax) = hi;
  a.Out(kDistMinIndex) = static_cast<double>(loIndex);
  a.Out(kDistMaxIndex) = static_cast<double>(hiIndex);
  return kOk;
}

CDescriber& DistanceOutputs(CDescriber& d) {
  return d.Output(kTypeNumberArray, "distances")
      .Output(kTypeNumber, "min distance")
      .Output(kTypeNumber, "max distance")
      .Output(kTypeNumber, "min distance array index")
      .Output(kTypeNumber, "max distance array index");
}

class CPts2LnDist final : public TInstr<CPts2LnDist> {
 public:
  static void Describe(CDescriber& d) {
    d.Head("PtsToLnDist", "Calculates the distances between a point array and a line")
        .Input(kTypePointArray, "pts")
        .Input(kTypeLine, "ln", CZetLine());
    DistanceOutputs(d);
  }
  int Execute(IXInstrContext* ctx) override {
    CArgs a(ctx);
    const CZetPointVector& pts = a.Get<CZetPointVector>(0);
    return LineDistances(a, pts.GetStorage(), pts.Size(), a.Line(1));
  }
};

class CPts2LnDistInf final : public TInstr<CPts2LnDistInf> {
 public:
  static void Describe(CDescriber& d) {
    d.Head("PtsToLnDistInf",
           "Calculates the distances between a set of points and a line.The points are "
           "specified individually.")
        .Input(kTypeLine, "ln", CZetLine())
        .Input(kTypePoint, "point", CZetPoint())
        .Variadic();
    DistanceOutputs(d);
  }
  int Execute(IXInstrContext* ctx) override {
    CArgs a(ctx);
    const std::vector<CZetPoint> pts = geometry::VariadicPoints(a, 1);
    return LineDistances(a, pts.data(), static_cast<unsigned>(pts.size()), a.Line(0));
  }
};

// The sign of the angle is inverted on purpose: the platform's angle grows clockwise on
// the screen, the user's counter-clockwise; and the result, normalised to (-π/2, π/2],
// is the same for the two points in either order.
class CPt2BestAngle final : public TInstr<CPt2BestAngle> {
 public:
  static void Describe(CDescriber& d) {
    d.Head("PtsToBestAngle",
           "Calculates the angle between the x-axis and the line defined by the 2 points")
        .Input(kTypePoint, "pt1", CZetPoint())
        .Input(kTypePoint, "pt2", CZetPoint())
        .Output(kTypeNumber, "angle");
  }
  int Execute(IXInstrContext* ctx) override {
    CArgs a(ctx);
    double v = -CZetGeometry::Points2Angle(a.Point(0), a.Point(1));
    CZetGeometry::NormalizeAngleMinusPiBy2ToPiBy2(&v);
    a.Out(0) = CZetAngleTr::ToPrefs(v, true);
    return kOk;
  }
};

}  // namespace
}  // namespace zet

#define ZET_FAMILY_LineFits ZET_THIS_FAMILY
#include "frame/Factories.def"
