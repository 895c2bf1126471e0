// Best-fit circles, of a point array or of single point inputs: the fit itself is
// CZetGeometry's; here the points are prepared, the circle's bounding box and the
// statistics of the points' radii computed, and the circle drawn.
#include <cmath>
#include <vector>

#include "geometry/Geometry.h"
#include "zet/ZetSetting.h"

namespace zet {
namespace {

// The circle fits' outputs, in descriptor order.
enum ECircleFitOut : int {
  kCircleDiameter,
  kCircleIncluded,
  kCircleAvgError,
  kCircleCenter,
  kCircleTopLeft,
  kCircleTopRight,
  kCircleBottomRight,
  kCircleBottomLeft,
  kCircleOutliers,
  kCircleUsed,
  kCircleMinDiameter,
  kCircleMaxDiameter,
  kCircleCircularity,
  kCircleOvality,
  kCircleStdDeviation,
};

// The inputs before the points, and after (the variadic form); the outputs.
CDescriber& CircleFitInputs(CDescriber& d, bool variadic) {
  d.Input(kTypeNumber, "percent outliers", 0.0, "Percent of points to be discarded as outliers");
  if (!variadic) d.Input(kTypePointArray, "points", {}, "Array of points to use in circle fit");
  d.Input(kTypeBool, "preprocess", false, geometry::kPreprocessDescription)
      .Input(kTypeNumber, "tolerance", 1.0, geometry::kToleranceDescription)
      .Input(kTypeNumber, "annotation color", 0.0,
             "-1:Don't draw; 0:Use default color; Else use this color");
  if (variadic)
    d.Input(kTypePoint, "point", CZetPoint(), "Point (infinite input) to use in circle fit")
        .Variadic();
  return d.Output(kTypeNumber, "diameter", "Diameter of the fitted circle")
      .Output(kTypeNumber, "points included", "Number of points used in the fit")
      .Output(kTypeNumber, "avg fit error",
              "Average distance of the points used from the fitted circle")
      .Output(kTypePoint, "center", "Center of the fitted circle")
      .Output(kTypePoint, "top left", "Top left corner of the circle's bounding box")
      .Output(kTypePoint, "top right", "Top right corner of the circle's bounding box")
      .Output(kTypePoint, "bottom right", "Bottom right corner of the circle's bounding box")
      .Output(kTypePoint, "bottom left", "Bottom left corner of the circle's bounding box")
      .Output(kTypePointArray, "outliers", "Points discarded as outliers")
      .Output(kTypePointArray, "points used", "Points used in the fit")
      .Output(kTypeNumber, "min diameter",
              "Twice the smallest distance of a point used from the center")
      .Output(kTypeNumber, "max diameter",
              "Twice the largest distance of a point used from the center")
      .Output(kTypeNumber, "circularity",
              "Circularity of input points, from 0% (a line) to 100% (ideal circle)")
      .Output(kTypeNumber, "ovality",
              "How oval the input points are. 0% is a circle, 100% is a line - an extreme oval")
      .Output(kTypeNumber, "std deviation",
              "Standard deviation of the distances of the points used from the center");
}

struct SCircleFitRequest {
  const char* source;
  const CZetPoint* points;
  size_t n;
  double percent;
  bool preprocess;
  double tolerance;
  int color;  // -1: do not draw; 0: the default colour
};

int FitCircle(const CArgs& a, const SCircleFitRequest& r) {
  if (r.preprocess && r.tolerance < 0)
    return a.Fail(kReportError, r.source, geometry::kNegativeTolerance);
  const geometry::CFitPoints fit(r.points, r.n, r.preprocess, r.tolerance);
  double diameter = 0, avgError = 0;
  unsigned m = 0;
  CZetPoint c;
  CZetPointVector& used = a.OutRef<CZetPointVector>(kCircleUsed);
  const unsigned status = CZetGeometry::Points2BestCircle(
      fit.Data(), fit.Size(), geometry::PercentArg(r.percent), &diameter, &m, &avgError, &c,
      &a.OutRef<CZetPointVector>(kCircleOutliers), &used);
  const double R = diameter * 0.5;
  a.Out(kCircleDiameter) = diameter;
  a.Out(kCircleIncluded) = static_cast<double>(m);
  a.Out(kCircleAvgError) = avgError;
  a.Out(kCircleCenter) = c;
  a.Out(kCircleTopLeft) = CZetPoint(c.x - R, c.y - R);
  a.Out(kCircleTopRight) = CZetPoint(c.x + R, c.y - R);
  a.Out(kCircleBottomRight) = CZetPoint(c.x + R, c.y + R);
  a.Out(kCircleBottomLeft) = CZetPoint(c.x - R, c.y + R);
  if (status != CZetGeometry::kFitOk) return kFail;

  if (m > 0) {
    // The sums run on radii scaled by a power of two near 1 / diameter: exact, so the
    // result is the formula's to the bit, and finite for circles whose squared radii
    // would overflow.
    const int exponent = std::isfinite(diameter) && diameter > 0 ? std::ilogb(diameter) : 0;
    double rmin = 2 * diameter, rmax = 0, sum = 0, sum2 = 0;
    for (const CZetPoint& p : used.Std()) {
      const double dist = CZetGeometry::Point2PointDist(c, p);
      rmin = std::fmin(rmin, dist);
      rmax = std::fmax(rmax, dist);
      const double scaled = std::ldexp(dist, -exponent);
      sum += scaled;
      sum2 += scaled * scaled;
    }
    const double dm = static_cast<double>(m);
    const double spread = dm * sum2 - sum * sum;  // rounding may take it below 0
    a.Out(kCircleMinDiameter) = 2 * rmin;
    a.Out(kCircleMaxDiameter) = 2 * rmax;
    a.Out(kCircleCircularity) = rmin / rmax * 100;
    a.Out(kCircleOvality) = (rmax - rmin) * 100 / (rmax + rmin);
    a.Out(kCircleStdDeviation) =
        spread < 0 ? 0.0 : std::ldexp(std::sqrt(spread / (dm * dm)), exponent);
  }
  if (r.color != -1) {
    const int color = r.color == 0 ? CZetSetting::Inst().GetDefaultAnnotationColor() : r.color;
    if (IXInstrAnnotations* annotations = geometry::Annotations(a))
      annotations->AddCircle("", CZetCircle(c.x, c.y, R), color, false, 1, 1);
  }
  return kOk;
}

class CPt2BestCircle final : public TInstr<CPt2BestCircle> {
 public:
  static void Describe(CDescriber& d) {
    CircleFitInputs(d.Head("PtsToBestCircle", "Fits a circle through a set of points"), false);
  }
  int Execute(IXInstrContext* ctx) override {
    CArgs a(ctx);
    const CZetPointVector& pts = a.Get<CZetPointVector>(1);
    return FitCircle(a, {"PtsToBestCircle", pts.GetStorage(), pts.Size(), a.Number(0), a.Bool(2),
                         a.Number(3), a.TruncInt(4)});
  }
};

// The points are the variadic inputs after "annotation color": the input count less 4.
class CPt2BestCircleInf final : public TInstr<CPt2BestCircleInf> {
 public:
  static void Describe(CDescriber& d) {
    CircleFitInputs(d.Head("PtsToBestCircleInf",
                           "Fits a circle through a set of points taken as individual point "
                           "inputs."),
                    true);
  }
  int Execute(IXInstrContext* ctx) override {
    CArgs a(ctx);
    const std::vector<CZetPoint> pts = geometry::VariadicPoints(a, 4);
    return FitCircle(a, {"PtsToBestCircleInf", pts.data(), pts.size(), a.Number(0), a.Bool(1),
                         a.Number(2), a.TruncInt(3)});
  }
};

}  // namespace
}  // namespace zet

#define ZET_FAMILY_CircleFits ZET_THIS_FAMILY
#include "frame/Factories.def"
