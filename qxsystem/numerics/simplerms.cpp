#include <qxsystem/numerics/simplerms.h>

#include <algorithm>
#include <cmath>

#include <qxsystem/numerics/regrotation.h>
#include <qxsystem/numerics/tensor2mat.h>

namespace QXMath {

template <class T>
double RMSBetweenPoints(const T* a, const T* b, const T* w, int n, double* out) {
  double rot[3][3] = {{1, 0, 0}, {0, 1, 0}, {0, 0, 1}};
  double ca[3]{}, cb[3]{}, weight = 0, rms = -1;
  const auto weightOf = [w](int i) { return w ? static_cast<double>(w[i]) : 1.0; };

  if (n > 0) {
    for (int i = 0; i < n; ++i) {
      weight += weightOf(i);
      for (int k = 0; k < 3; ++k) {
        ca[k] += weightOf(i) * a[3l * i + k];
        cb[k] += weightOf(i) * b[3l * i + k];
      }
    }
    for (int k = 0; k < 3; ++k) {
      ca[k] /= weight;
      cb[k] /= weight;
    }

    double m[4][4]{};
    for (int i = 0; i < n; ++i) {
      double p[3], q[3];
      for (int k = 0; k < 3; ++k) {
        p[k] = a[3l * i + k] - ca[k];
        q[k] = b[3l * i + k] - cb[k];
      }
      QXBuildupWeightedMatrix(p, q, weightOf(i), m);
    }
    for (int row = 1; row < 4; ++row)
      for (int column = 0; column < row; ++column) m[row][column] = m[column][row];

    rms = 0;
    if (m[0][0] != 0) {  // else the centred lists coincide
      double eigenvalues[4], q[4];
      rms = std::sqrt(QXJacobiReduction(eigenvalues, m, q) / weight);
      if (out) QXGenerateRotationMatrix(q, rot);
    }
  }
  if (out) {
    std::copy_n(rot[0], 9, out);
    for (int k = 0; k < 3; ++k)
      out[9 + k] = ca[k] - (rot[k][0] * cb[0] + rot[k][1] * cb[1] + rot[k][2] * cb[2]);
  }
  return rms;
}
template double RMSBetweenPoints(const double*, const double*, const double*, int, double*);
template double RMSBetweenPoints(const float*, const float*, const float*, int, double*);

double SimpleRMSBetweenPoints(const double* a, const double* b, unsigned n, double* out) {
  return SimpleRMSBetweenWeightedPoints(a, b, nullptr, n, out);
}
double SimpleRMSBetweenPoints(const float* a, const float* b, unsigned n, double* out) {
  return SimpleRMSBetweenWeightedPoints(a, b, nullptr, n, out);
}
double SimpleRMSBetweenWeightedPoints(const double* a, const double* b, const double* w, unsigned n,
                                      double* out) {
  return RMSBetweenPoints(a, b, w, static_cast<int>(n), out);
}
double SimpleRMSBetweenWeightedPoints(const float* a, const float* b, const float* w, unsigned n,
                                      double* out) {
  return RMSBetweenPoints(a, b, w, static_cast<int>(n), out);
}

void QXBuildupMatrix(const double* p, const double* q, double (*m)[4]) {
  QXBuildupWeightedMatrix(p, q, 1, m);
}

void QXBuildupWeightedMatrix(const double* p, const double* q, double w, double (*m)[4]) {
  const double xm = p[0] - q[0], ym = p[1] - q[1], zm = p[2] - q[2];
  const double xp = p[0] + q[0], yp = p[1] + q[1], zp = p[2] + q[2];
  m[0][0] += w * (xm * xm + ym * ym + zm * zm);
  m[0][1] += w * (yp * zm - ym * zp);
  m[0][2] += w * (xm * zp - xp * zm);
  m[0][3] += w * (xp * ym - xm * yp);
  m[1][1] += w * (yp * yp + zp * zp + xm * xm);
  m[1][2] += w * (xm * ym - xp * yp);
  m[1][3] += w * (xm * zm - xp * zp);
  m[2][2] += w * (xp * xp + zp * zp + ym * ym);
  m[2][3] += w * (ym * zm - yp * zp);
  m[3][3] += w * (xp * xp + yp * yp + zm * zm);
}

}  // namespace QXMath
