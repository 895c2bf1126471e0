// CorrelateCircular: the normalized correlation of a template T (the shorter array, t
// values) with every circular window of a search array S (s values). Defined per
// window W = S[k .. k + t - 1] (wrapping round) by sequential sums:
//   mW = sum(W) / t, Swt = sum((W - mW)(T - mT)), Sww = sum((W - mW)^2),
//   score = Swt / (sqrt(Sww) dT), or 0 counted as invalid when that denominator is 0.
//
// Done literally that costs s * t. Here the cross sums of every window come from one
// FFT correlation (or a direct product for short templates) of S shifted by its mean,
// and each window's sum and sum of squares slide along in double-double arithmetic.
// An estimate of how far that result and the definition's own rounding can be apart
// decides per window whether the fast score is kept (within kBudget) or the window
// is computed exactly as the definition does it: windows that are constant or nearly
// so, hold huge or tiny values, or whose spread is small against their offset. So
// the invalid windows, their zero scores and every non-finite score are the
// definition's exactly, and the other scores agree with it to about 1e-13.
#include <bit>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <optional>
#include <vector>

#include "arrays/ArrayCommon.h"
#include "arrays/Fft.h"

namespace zet {
namespace {

constexpr double kU = 0x1p-53;       // the unit roundoff
constexpr double kHuge = 0x1p200;    // larger magnitudes may overflow the definition's sums
constexpr double kTinyDev = 0x1p-200;  // smaller deviations may underflow its squares
constexpr double kBudget = 1e-13;    // the estimated difference a fast score may have
constexpr size_t kDirectUpTo = 32;   // templates this short are correlated directly
// The error of an FFT cross sum, in units of kU * log2(n) * |V| * dT (measured: 0.15).
constexpr double kFftErrorScale = 2.0;

// ---- double-double arithmetic (exact sums and squares, products to ~kU^2) ----

struct SDd {
  double hi = 0.0;
  double lo = 0.0;
};

SDd TwoSum(double a, double b) {
  const double s = a + b;
  const double bb = s - a;
  return {s, (a - (s - bb)) + (b - bb)};
}

SDd Renorm(double hi, double lo) {
  const double s = hi + lo;
  return {s, lo - (s - hi)};
}

SDd Add(SDd x, SDd y) {
  const SDd s = TwoSum(x.hi, y.hi);
  return Renorm(s.hi, s.lo + (x.lo + y.lo));
}

SDd Neg(SDd x) { return {-x.hi, -x.lo}; }

// Veltkamp's split: a = hi + lo with 26-bit halves (|a| below 2^996).
void Split(double a, double& hi, double& lo) {
  const double c = 134217729.0 * a;
  hi = c - (c - a);
  lo = a - hi;
}

SDd TwoProd(double a, double b) {
  double ah, al, bh, bl;
  Split(a, ah, al);
  Split(b, bh, bl);
  const double p = a * b;
  return {p, ((ah * bh - p) + ah * bl + al * bh) + al * bl};
}

SDd Mul(SDd x, SDd y) {
  const SDd p = TwoProd(x.hi, y.hi);
  return Renorm(p.hi, p.lo + (x.hi * y.lo + x.lo * y.hi));
}

SDd Div(SDd x, double d) {
  const double q1 = x.hi / d;
  const SDd r = Add(x, Neg(TwoProd(q1, d)));
  return Renorm(q1, r.hi / d);
}

// ---- the definition ----

// A wrap-around view of S: S followed by its first t - 1 values again, as the
// definition's buffer holds them, read in place: element j < s + t - 1.
class CWrapView {
 public:
  explicit CWrapView(const std::vector<double>& s) : m_p(s.data()), m_n(s.size()) {}
  double operator[](size_t j) const { return m_p[j < m_n ? j : j - m_n]; }

 private:
  const double* m_p;
  size_t m_n;
};

struct SScore {
  double score;
  bool invalid;
};

// Window k against the template's deviations tp (T - mT) and norm dT, as defined.
SScore DefinitionWindow(const CWrapView& b, size_t k, const std::vector<double>& tp, double dT) {
  const size_t t = tp.size();
  double sum = 0.0;
  for (size_t i = 0; i < t; ++i) sum += b[k + i];
  const double mw = sum / static_cast<double>(t);
  double swt = 0.0, sww = 0.0;
  for (size_t i = 0; i < t; ++i) {
    const double d = b[k + i] - mw;
    swt += d * tp[i];
    sww += d * d;
  }
  const double den = std::sqrt(sww) * dT;
  if (den == 0.0) return {0.0, true};
  return {swt / den, false};
}

bool SameBits(double a, double b) { return std::memcmp(&a, &b, sizeof a) == 0; }

// ---- the fast form ----

// x(k) = sum_i v(k + i) tp[i] for every window k < s, by one complex FFT of v and the
// reversed template packed as real and imaginary parts. The template is scaled by a
// power of two to the norm of v first, so neither part's rounding swamps the other.
class CFftCross {
 public:
  template <class V>
  CFftCross(V v, size_t s, const std::vector<double>& tp, double vNorm, double tNorm)
      : m_t(tp.size()) {
    const size_t n = std::bit_ceil(s + m_t - 1);
    const int scale = tNorm > 0.0 && vNorm > 0.0 ? std::ilogb(vNorm) - std::ilogb(tNorm) : 0;
    m_z.resize(n);
    for (size_t j = 0; j < s + m_t - 1; ++j) m_z[j].re = v(j);
    for (size_t i = 0; i < m_t; ++i) m_z[m_t - 1 - i].im = std::ldexp(tp[i], scale);
    ForwardFft(m_z.data(), n);
    // The parts' spectra, V = (Z[k] + conj Z[-k]) / 2 and R = (Z[k] - conj Z[-k]) / 2i;
    // their product is kept conjugated, so that a forward transform inverts it.
    for (size_t k = 0; k <= n / 2; ++k) {
      const size_t m = (n - k) & (n - 1);
      const SComplex a = m_z[k], b = m_z[m];
      const double vr = 0.5 * (a.re + b.re), vi = 0.5 * (a.im - b.im);
      const double rr = 0.5 * (a.im + b.im), ri = -0.5 * (a.re - b.re);
      const double pr = vr * rr - vi * ri, pi = vr * ri + vi * rr;
      m_z[k] = {pr, -pi};
      m_z[m] = {pr, pi};
    }
    ForwardFft(m_z.data(), n);
    m_unscale = std::ldexp(1.0 / static_cast<double>(n), -scale);
    m_log2n = std::log2(static_cast<double>(n));
  }
  double operator()(size_t k) const { return m_z[k + m_t - 1].re * m_unscale; }
  // The error of x(k), in units of |v| |tp|.
  double Error() const { return kFftErrorScale * kU * m_log2n; }

 private:
  size_t m_t;
  std::vector<SComplex> m_z;
  double m_unscale = 1.0, m_log2n = 0.0;
};

// ---- the steps of one correlation ----

// The template as the definition computes it: deviations tp = T - mT, norm dT,
// and sum(tp) exactly.
struct STemplate {
  std::vector<double> tp;
  double dT = 0.0;
  SDd tau;
  bool finite = true;
  bool fast = false;  // neither huge values nor a tiny spread: the fast form applies
};

STemplate PrepareTemplate(const std::vector<double>& tmpl) {
  const size_t t = tmpl.size();
  double sumT = 0.0;
  for (double x : tmpl) sumT += x;
  const double mT = sumT / static_cast<double>(t);
  STemplate r;
  r.tp.resize(t);
  double sqT = 0.0, maxT = 0.0;
  for (size_t i = 0; i < t; ++i) {
    r.tp[i] = tmpl[i] - mT;
    sqT += r.tp[i] * r.tp[i];
    r.tau = Add(r.tau, {r.tp[i], 0.0});
    r.finite = r.finite && std::isfinite(tmpl[i]);
    maxT = std::fmax(maxT, std::fabs(tmpl[i]));
  }
  r.dT = std::sqrt(sqT);
  r.fast = maxT <= kHuge && r.dT >= kTinyDev;
  return r;
}

// The search values shifted by the mean c of its plain values: V = B - c over
// the plain values, 0 elsewhere.
class CShiftedSearch {
 public:
  CShiftedSearch(const std::vector<double>& search, size_t t) : m_b(search) {
    double sum = 0.0;
    size_t n = 0;
    for (double x : search)
      if (Plain(x)) {
        sum += x;
        ++n;
      }
    m_c = n ? sum / static_cast<double>(n) : 0.0;
    double sq = 0.0;
    for (size_t j = 0; j < search.size() + t - 1; ++j) sq += (*this)(j) * (*this)(j);
    m_norm = std::sqrt(sq);
  }
  static bool Plain(double x) { return std::isfinite(x) && std::fabs(x) <= kHuge; }
  const CWrapView& B() const { return m_b; }
  double operator()(size_t j) const { return Plain(m_b[j]) ? m_b[j] - m_c : 0.0; }
  double Norm() const { return m_norm; }

 private:
  CWrapView m_b;
  double m_c = 0.0;
  double m_norm = 0.0;
};

// The sliding state of window k: sums of V, V^2 and |B| over its plain values,
// and the counts of its non-finite values, its huge values and its adjacent
// unequal pairs.
class CSlidingWindow {
 public:
  CSlidingWindow(const CShiftedSearch& v, size_t t) : m_v(v), m_t(t) {
    const CWrapView& b = v.B();
    for (size_t i = 0; i < t; ++i) Slide(i, 1);
    for (size_t i = 0; i + 1 < t; ++i) changes += !SameBits(b[i], b[i + 1]);
  }
  // From window k - 1 to window k (k > 0).
  void Advance(size_t k) {
    const CWrapView& b = m_v.B();
    Slide(k - 1, -1);
    Slide(k + m_t - 1, 1);
    if (m_t > 1) changes += !SameBits(b[k + m_t - 2], b[k + m_t - 1]) - !SameBits(b[k - 1], b[k]);
  }

  SDd sumV, sumSq, sumAbs;
  int64_t nonFinite = 0, huge = 0, changes = 0;

 private:
  void Slide(size_t j, int sign) {
    const double bj = m_v.B()[j];
    if (!std::isfinite(bj)) {
      nonFinite += sign;
    } else if (!CShiftedSearch::Plain(bj)) {
      huge += sign;
    } else {
      const double vj = m_v(j);
      const SDd sq = TwoProd(vj, vj);
      sumV = Add(sumV, {sign * vj, 0.0});
      sumSq = Add(sumSq, sign > 0 ? sq : Neg(sq));
      sumAbs = Add(sumAbs, {sign * std::fabs(bj), 0.0});
    }
  }
  const CShiftedSearch& m_v;
  size_t m_t;
};

// The fast score of window k, or nothing when the estimated difference from the
// definition's rounding exceeds kBudget (the window is then computed exactly).
std::optional<double> FastScore(const STemplate& tm, const CShiftedSearch& v,
                                const CSlidingWindow& w, const std::optional<CFftCross>& fft,
                                size_t k) {
  const size_t t = tm.tp.size();
  const double tf = static_cast<double>(t);
  const SDd sww = Add(w.sumSq, Neg(Div(Mul(w.sumV, w.sumV), tf)));
  const double swwF = sww.hi + sww.lo;
  if (!(swwF >= kTinyDev * kTinyDev)) return std::nullopt;
  const double sw = std::sqrt(swwF);
  const double qv = std::sqrt(w.sumSq.hi + w.sumSq.lo);
  double cross = 0.0, crossError = 0.0;  // the error over dT
  if (fft) {
    cross = (*fft)(k);
    crossError = fft->Error() * v.Norm();
  } else {
    for (size_t i = 0; i < t; ++i) cross += v(k + i) * tm.tp[i];
    crossError = tf * kU * qv;
  }
  // sum((W - mW) tp) = sum(V tp) - mean(V) sum(tp).
  const double meanV = (w.sumV.hi + w.sumV.lo) / tf;
  const double score = (cross - meanV * (tm.tau.hi + tm.tau.lo)) / (sw * tm.dT);
  // Beside the cross sum's error: the rounding of V, and the definition's
  // rounded mean, off by at most delta, which moves Swt by delta sum(tp) and
  // Sww by t delta^2.
  const double delta = kU * (w.sumAbs.hi + w.sumAbs.lo);
  const double est = crossError / sw + kU * qv / sw * (1.0 + std::fabs(score)) +
                     delta * std::fabs(tm.tau.hi) / (sw * tm.dT) +
                     0.5 * tf * (delta / sw) * (delta / sw);
  if (!(est <= kBudget)) return std::nullopt;
  return score;
}

// Windows computed as the definition does it; a constant window's score depends
// on its value only, so the last constant one is remembered.
class CExactScores {
 public:
  CExactScores(const CWrapView& b, const STemplate& tm) : m_b(b), m_tm(tm) {}
  SScore At(size_t k, bool constant) {
    if (constant && m_haveCached && SameBits(m_b[k], m_cachedValue)) return m_cached;
    const SScore sc = DefinitionWindow(m_b, k, m_tm.tp, m_tm.dT);
    if (constant) {
      m_haveCached = true;
      m_cachedValue = m_b[k];
      m_cached = sc;
    }
    return sc;
  }

 private:
  const CWrapView& m_b;
  const STemplate& m_tm;
  bool m_haveCached = false;
  double m_cachedValue = 0.0;
  SScore m_cached{0.0, false};
};

// Writes the score of window k to out[(k + shift) mod s]; returns the invalid
// count.
size_t Correlate(const std::vector<double>& search, const std::vector<double>& tmpl, double* out,
                 size_t shift) {
  const size_t s = search.size(), t = tmpl.size();
  const STemplate tm = PrepareTemplate(tmpl);
  if (!tm.finite) {  // every window then has a NaN denominator and a NaN score
    std::fill_n(out, s, std::nan(""));
    return 0;
  }
  const CShiftedSearch v(search, t);
  std::optional<CFftCross> fft;
  if (tm.fast && tm.dT != 0.0 && t > kDirectUpTo)
    fft.emplace([&](size_t j) { return v(j); }, s, tm.tp, v.Norm(), tm.dT);
  CSlidingWindow w(v, t);
  CExactScores exact(v.B(), tm);
  size_t invalid = 0;
  for (size_t k = 0; k < s; ++k) {
    if (k > 0) w.Advance(k);
    SScore sc{0.0, false};
    if (w.nonFinite > 0) {
      sc.score = std::nan("");  // the window's mean, and so its sums, are NaN
    } else if (tm.dT == 0.0 && w.huge == 0) {
      sc.invalid = true;  // a finite sqrt(Sww) times 0
    } else if (tm.dT == 0.0 || !tm.fast || w.huge > 0) {
      sc = exact.At(k, w.changes == 0);
    } else if (const std::optional<double> fast = FastScore(tm, v, w, fft, k)) {
      sc.score = *fast;
    } else {
      sc = exact.At(k, w.changes == 0);
    }
    out[k + shift < s ? k + shift : k + shift - s] = sc.score;
    invalid += sc.invalid;
  }
  return invalid;
}

class CNArrMathCorrelateCircular final : public TInstr<CNArrMathCorrelateCircular> {
 public:
  static void Describe(CDescriber& d) {
    d.Head("CorrelateCircular",
           "Output array of normalized correlations between circular template and search arrays")
        .Input(kTypeNumberArray, "array_1", {}, "First input array of numbers")
        .Input(kTypeNumberArray, "array_2", {}, "Second input array of numbers")
        .Input(kTypeBool, "align scores", true,
               "If true, align array of correlation                 scores with smaller input "
               "array center position")
        .Output(kTypeNumberArray, "correlation scores")
        .Output(kTypeNumber, "template size")
        .Output(kTypeNumber, "# invalid");
  }
  int Execute(IXInstrContext* ctx) override {
    CArgs a(ctx);
    const std::vector<double>& x1 = a.Get<CZetNumberVector>(0).Std();
    const std::vector<double>& x2 = a.Get<CZetNumberVector>(1).Std();
    const bool align = a.Bool(2);
    if (x1.empty() || x2.empty()) {
      a.Report(kReportWarning, "CorrelateCircular", "No array values to correlate!");
      SizedOut(a, 0, 0);
      a.Out(1) = 0.0;
      a.Out(2) = 0.0;
      return kOk;
    }
    // The shorter array is the template; array_1 when the lengths are equal.
    const bool firstIsSearch = x1.size() > x2.size();
    const std::vector<double>& search = firstIsSearch ? x1 : x2;
    const std::vector<double>& tmpl = firstIsSearch ? x2 : x1;
    const size_t s = search.size(), t = tmpl.size();
    // Aligned, the score of window k stands at the template's centre, k + t / 2.
    const size_t shift = align && t > 2 ? t / 2 % s : 0;
    const size_t invalid = Correlate(search, tmpl, SizedOut(a, 0, s), shift);
    a.Out(1) = static_cast<double>(t);
    a.Out(2) = static_cast<double>(invalid);
    return kOk;
  }
};

}  // namespace
}  // namespace zet

#define ZET_FAMILY_CorrelateCircular ZET_THIS_FAMILY
#include "frame/Factories.def"
