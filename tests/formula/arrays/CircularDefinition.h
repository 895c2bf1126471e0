// CorrelateCircular's definition written out as the plain loop over every window,
// the reference of its tests and the baseline of its benchmark.
#pragma once

#include <cmath>
#include <vector>

namespace zet::test {

struct SCircular {
  std::vector<double> scores;
  std::vector<bool> invalidAt;
  double templateSize = 0;
  double invalid = 0;
};

inline SCircular CircularDefinition(const std::vector<double>& a1, const std::vector<double>& a2,
                                    bool align) {
  SCircular r;
  if (a1.empty() || a2.empty()) return r;
  const std::vector<double>& S = a1.size() > a2.size() ? a1 : a2;
  const std::vector<double>& T = a1.size() > a2.size() ? a2 : a1;
  const size_t s = S.size(), t = T.size();
  std::vector<double> buf(S);
  buf.insert(buf.end(), S.begin(), S.begin() + static_cast<long>(t));
  double sumT = 0;
  for (double x : T) sumT += x;
  const double mT = sumT / static_cast<double>(t);
  double sqT = 0;
  for (double x : T) sqT += (x - mT) * (x - mT);
  const double dT = std::sqrt(sqT);
  r.scores.assign(s, 0.0);
  r.invalidAt.assign(s, false);
  for (size_t k = 0; k < s; ++k) {
    const double* w = &buf[k];
    double sum = 0;
    for (size_t i = 0; i < t; ++i) sum += w[i];
    const double mW = sum / static_cast<double>(t);
    double swt = 0, sww = 0;
    for (size_t i = 0; i < t; ++i) {
      swt += (w[i] - mW) * (T[i] - mT);
      sww += (w[i] - mW) * (w[i] - mW);
    }
    const double den = std::sqrt(sww) * dT;
    const size_t at = align && t > 2 ? (k + t / 2) % s : k;
    if (den == 0) {
      ++r.invalid;
      r.invalidAt[at] = true;
    } else {
      r.scores[at] = swt / den;
    }
  }
  r.templateSize = static_cast<double>(t);
  return r;
}

}  // namespace zet::test
