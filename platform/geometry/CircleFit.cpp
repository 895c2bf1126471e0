// The best-fit circle: the geometric least-squares circle (minimising the sum of
// squared orthogonal distances |p - c| - r), with the outlier trimming of FitCommon.h.
//
// Start: the algebraic "Hyper" fit (Al-Sharadqah and Chernov), which has no essential
// bias, unlike the simple algebraic fit whose radius shrinks on short arcs. The circle
// A z + B x + C y + D = 0 (z = x² + y²) minimises A'MA under A'NA = 1, M the moment
// matrix of the rows (z, x, y, 1) and N Hyper's constraint; with Y = M^½ that is the
// eigenvector of Y N⁻¹ Y with the smallest positive eigenvalue, A = Y⁻¹ times it.
// Then Levenberg-Marquardt on the orthogonal distances. All of it runs on coordinates
// centred on the centroid and scaled to unit spread, so that neither the size of the
// circle nor its place in the image costs precision.
#include <Eigen/Dense>
#include <cmath>

#include "FitCommon.h"

namespace zet::geometry {
namespace {

using Eigen::Matrix3d;
using Eigen::Matrix4d;
using Eigen::Vector3d;
using Eigen::Vector4d;

// Relative size below which a singular value counts as zero (an exact fit), and the
// flatness of the scatter below which the points count as collinear.
constexpr double kExactFit = 1e-12;
constexpr double kCollinear = 1e-10;
constexpr int kMaxIterations = 100;
// Levenberg-Marquardt stops at a step below this (relative to the circle) or a
// relative decrease of the cost below that.
constexpr double kStepTolerance = 1e-12;
constexpr double kCostTolerance = 1e-12;

struct SCircleModel {
  static constexpr size_t kMinPoints = 3;
  double cx = 0, cy = 0, r = 0;
  bool fitted = false;  // cx, cy, r hold a circle

  double Distance(const CZetPoint& p) const { return CircleDistance(p.x, p.y, cx, cy, r); }
  double StartShift() const { return r; }  // the radii left in scratch.first
  void Distances(const CZetPoint* points, size_t n, double* out) const {
    if (const double* base = PointsAsDoubles(points))
      return CircleDistances(base, n, cx, cy, r, out);
    for (size_t i = 0; i < n; ++i) out[i] = Distance(points[i]);
  }
  size_t DistancesBracket(const CZetPoint* points, size_t n, double* out, double lo, double hi,
                          double* inside, size_t* below, double* squares) const {
    if (const double* base = PointsAsDoubles(points))
      return CircleDistancesBracket(base, n, cx, cy, r, out, lo, hi, inside, below, squares);
    Distances(points, n, out);
    *squares = 0;
    for (size_t i = 0; i < n; ++i) *squares += out[i] < lo ? out[i] * out[i] : 0.0;
    return Bracket(out, n, lo, hi, inside, below);
  }

  unsigned Fit(const CZetPoint* points, const uint32_t* idx, size_t m) {
    return WithIndex(idx, [&](auto at) { return FitAt(points, m, at); });
  }

  // The centre: the median, coordinate by coordinate, of the centres of the circles
  // through points a third of the set apart; the radius: the median distance of the
  // points from it.
  bool RobustStart(const CZetPoint* points, size_t n, SFitScratch& scratch) {
    const size_t third = n / 3;
    std::vector<double>& xs = scratch.first;
    std::vector<double>& ys = scratch.second;
    if (xs.size() < n) xs.resize(n);  // grown, never shrunk: resizing clears
    if (ys.size() < third) ys.resize(third);
    size_t m = 0;
    if (const double* base = PointsAsDoubles(points)) {
      m = CircleCentres(base, third, xs.data(), ys.data());
    } else {
      for (size_t i = 0; i < third; ++i)
        m += CircleCentre(points[i].x, points[i].y, points[i + third].x, points[i + third].y,
                          points[i + 2 * third].x, points[i + 2 * third].y, &xs[m], &ys[m]);
    }
    if (m == 0) return false;
    cx = KthSmallest(xs.data(), m, m / 2, scratch.work);
    cy = KthSmallest(ys.data(), m, m / 2, scratch.work);
    // The distances from the centre (CircleDistance from radius 0, which takes NaN as
    // infinite: a start with a NaN distance fails, so an infinite one looks again).
    std::vector<double>& radii = scratch.first;
    r = 0;
    Distances(points, n, radii.data());
    for (size_t i = 0; i < n; ++i) {
      if (radii[i] == INFINITY && std::isnan(Length(points[i].x - cx, points[i].y - cy)))
        return false;
    }
    r = KthSmallest(radii.data(), n, n / 2, scratch.work);
    fitted = std::isfinite(cx) && std::isfinite(cy) && std::isfinite(r);
    return fitted;
  }

  template <class At>
  unsigned FitAt(const CZetPoint* points, size_t m, At at) {
    SFrame f;
    unsigned status = CentredMoments(points, m, at, &f);
    if (status != CZetGeometry::kFitOk) return status;
    // The points as the fit sees them: q = (frame - mean) / spread.
    const double spread = std::sqrt((f.cxx + f.cyy) / static_cast<double>(m));
    const double lmax = 0.5 * (f.cxx + f.cyy) +
                        std::hypot(0.5 * (f.cxx - f.cyy), f.cxy);  // scatter's major axis
    const double lmin = f.cxx + f.cyy - lmax;
    if (!(lmin > kCollinear * kCollinear * lmax)) return CZetGeometry::kFitDegenerate;
    // Worked out once: Levenberg-Marquardt reads them at every step.
    SFitScratch& scratch = FitScratch();
    scratch.frameX.resize(m);
    scratch.frameY.resize(m);
    double* const qx = scratch.frameX.data();
    double* const qy = scratch.frameY.data();
    for (size_t i = 0; i < m; ++i) {
      const CZetPoint p = f.ToFrame(points[at(i)]);
      qx[i] = (p.x - f.mx) / spread, qy[i] = (p.y - f.my) / spread;
    }
    const auto q = [qx, qy](size_t i) { return CZetPoint(qx[i], qy[i]); };

    Vector3d c;  // centre x, centre y, radius, in q
    if (fitted) {  // a refit of a subset starts from the fit it was chosen by
      const CZetPoint p = f.ToFrame(CZetPoint(cx, cy));
      c = Vector3d((p.x - f.mx) / spread, (p.y - f.my) / spread, r * f.invScale / spread);
    }
    if (!fitted || !c.allFinite()) {
      if (!Hyper(m, q, &c)) return CZetGeometry::kFitDegenerate;
    }
    Refine(m, qx, qy, &c);
    const CZetPoint centre = f.FromFrame(f.mx + spread * c[0], f.my + spread * c[1]);
    cx = centre.x, cy = centre.y;
    r = std::fabs(c[2]) * spread / f.invScale;
    fitted = std::isfinite(cx) && std::isfinite(cy) && std::isfinite(r);
    return fitted ? CZetGeometry::kFitOk : CZetGeometry::kFitNonFinite;
  }

  template <class Q>
  static bool Hyper(size_t m, Q q, Vector3d* circle) {
    // The moments of the rows (z, x, y, 1), z = x² + y².
    double zz = 0, zx = 0, zy = 0, z1 = 0, xx = 0, xy = 0, x1 = 0, yy = 0, y1 = 0;
    for (size_t i = 0; i < m; ++i) {
      const CZetPoint p = q(i);
      const double z = p.x * p.x + p.y * p.y;
      zz += z * z, zx += z * p.x, zy += z * p.y, z1 += z;
      xx += p.x * p.x, xy += p.x * p.y, x1 += p.x, yy += p.y * p.y, y1 += p.y;
    }
    Matrix4d M;
    M << zz, zx, zy, z1,  //
        zx, xx, xy, x1,   //
        zy, xy, yy, y1,   //
        z1, x1, y1, static_cast<double>(m);
    M /= static_cast<double>(m);
    Matrix4d N;
    N << 8 * M(0, 3), 4 * M(1, 3), 4 * M(2, 3), 2,  //
        4 * M(1, 3), 1, 0, 0,                       //
        4 * M(2, 3), 0, 1, 0,                       //
        2, 0, 0, 0;
    Eigen::SelfAdjointEigenSolver<Matrix4d> eig(M);
    if (eig.info() != Eigen::Success) return false;
    const Vector4d ev = eig.eigenvalues().cwiseMax(0.0);  // ascending
    Vector4d A;
    if (ev[0] <= kExactFit * kExactFit * ev[3]) {
      A = eig.eigenvectors().col(0);  // the points lie on a circle (or line) exactly
    } else {
      const Matrix4d& V = eig.eigenvectors();
      const Matrix4d Y = V * ev.cwiseSqrt().asDiagonal() * V.transpose();
      const Matrix4d Yinv = V * ev.cwiseSqrt().cwiseInverse().asDiagonal() * V.transpose();
      Eigen::SelfAdjointEigenSolver<Matrix4d> h(Y * N.inverse() * Y);
      if (h.info() != Eigen::Success) return false;
      int k = -1;
      for (int j = 0; j < 4 && k < 0; ++j)
        if (h.eigenvalues()[j] > 0) k = j;
      if (k < 0) return false;
      A = Yinv * h.eigenvectors().col(k);
    }
    // A z + B x + C y + D = 0 with A = 0 is a line, not a circle.
    if (!(std::fabs(A[0]) > kExactFit * A.tail<3>().norm())) return false;
    const double cx = -A[1] / (2 * A[0]), cy = -A[2] / (2 * A[0]);
    const double r2 = cx * cx + cy * cy - A[3] / A[0];
    if (!(r2 > 0) || !std::isfinite(r2)) return false;
    *circle = Vector3d(cx, cy, std::sqrt(r2));
    return true;
  }

  // Levenberg-Marquardt on e_i = |q_i - c| - r: J_i = (-(qx - cx)/|q - c|,
  // -(qy - cy)/|q - c|, -1); steps from (JᵀJ + λ diag JᵀJ) δ = -Jᵀe.
  static void Refine(size_t m, const double* qx, const double* qy, Vector3d* circle) {
    struct SEval {
      Matrix3d jtj;
      Vector3d jte;
      double cost;
    };
    const auto eval = [&](const Vector3d& c) {
      SEval e;
      double s[9];  // ux², ux uy, ux, uy², uy, -ux e, -uy e, -e, e²
      CircleStepSums(qx, qy, m, c[0], c[1], c[2], s);
      e.jtj << s[0], s[1], s[2], s[1], s[3], s[4], s[2], s[4], static_cast<double>(m);
      e.jte << s[5], s[6], s[7];
      e.cost = s[8];
      return e;
    };
    Vector3d c = *circle;
    SEval cur = eval(c);
    double lambda = 1e-4;
    for (int it = 0; it < kMaxIterations && cur.cost > 0; ++it) {
      Matrix3d a = cur.jtj;
      a.diagonal() *= 1.0 + lambda;
      const Vector3d step = a.ldlt().solve(-cur.jte);
      // Converged: a step this small changes nothing but the rounding.
      if (!step.allFinite() || step.norm() <= kStepTolerance * (1.0 + c.norm())) break;
      const SEval trial = eval(c + step);
      if (trial.cost < cur.cost) {
        const bool flat = cur.cost - trial.cost <= kCostTolerance * cur.cost;
        c += step;
        cur = trial;
        lambda = std::fmax(lambda * 0.1, 1e-12);
        if (flat) break;
      } else {
        lambda *= 10;
      }
    }
    *circle = c;
  }
};

}  // namespace
}  // namespace zet::geometry

using zet::geometry::SCircleModel;
using zet::geometry::SKept;

unsigned CZetGeometry::Points2BestCircle(const CZetPoint* points, size_t count,
                                         unsigned percent, double* diameter,
                                         unsigned* included, double* avgError,
                                         CZetPoint* center, CZetPointVector* outliers,
                                         CZetPointVector* used) {
  SCircleModel model;
  SKept kept;
  const unsigned status = zet::geometry::TrimmedFit(points, count, percent, model, &kept);
  *included = status == kFitOk ? static_cast<unsigned>(kept.Count(count)) : 0u;
  zet::geometry::SplitPoints(points, count, status == kFitOk ? &kept : nullptr, used, outliers);
  if (status != kFitOk) {
    zet::geometry::FinishFit(&kept);
    return status;
  }
  const size_t m = kept.Count(count);
  double sum = 0;
  for (size_t j = 0; j < m; ++j) sum += model.Distance(points[kept.all ? j : kept.idx[j]]);
  *diameter = 2 * model.r;
  *avgError = sum / static_cast<double>(m);
  *center = CZetPoint(model.cx, model.cy);
  zet::geometry::FinishFit(&kept);
  return kFitOk;
}
