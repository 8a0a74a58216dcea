#include <qxsystem/numerics/qcprms.h>

#include <algorithm>
#include <cmath>

#include <qxsystem/core/error.h>
#include <qxsystem/numerics/pointsums_private.h>
#include <qxsystem/numerics/simplerms.h>
#include <qxsystem/platform/number.h>

namespace QXMath {
namespace {

using QXSystem::QXThrow;

constexpr int MaxNewtonSteps = 50;
constexpr double NewtonPrecision = 1e-6;
constexpr double OnLine = 1e-24;           // of |adj S|^2, against |S|^4
constexpr double AtPoint = 1e-6;           // of |S|^2, against all squared distances
constexpr double FlatSlope = 1e-4;         // against that of x^4 / 4
constexpr double SmallestAdjugate = 1e-7;  // of a column that is used, squared
constexpr double FitPrecision = 1e-12;     // of a rotation, against all squared distances

template <class T>
double FallBack(const T* a, const T* b, const T* w, unsigned n, double* rot, double* trans) {
  double out[12];
  const double rms = SimpleRMSBetweenWeightedPoints(a, b, w, n, rot ? out : nullptr);
  if (rot) {
    std::copy_n(out, 9, rot);
    std::copy_n(out + 9, 3, trans);
  }
  return rms;
}

// Writes the largest eigenvalue of the key matrix to `result`, by Newton's method on
//   P(x) = x^4 - 2 |S|^2 x^2 - 8 det S x + |S|^4 - 4 |adj S|^2
// from above, where no root lies. False if that does not end in a good one.
bool LargestEigenvalue(const double* s, double g, double* result) {
  // adj S, transposed
  const double minors[9] = {
      s[4] * s[8] - s[5] * s[7], s[5] * s[6] - s[3] * s[8], s[3] * s[7] - s[4] * s[6],
      s[2] * s[7] - s[1] * s[8], s[0] * s[8] - s[2] * s[6], s[1] * s[6] - s[0] * s[7],
      s[1] * s[5] - s[2] * s[4], s[2] * s[3] - s[0] * s[5], s[0] * s[4] - s[1] * s[3]};
  double squares = 0, minorSquares = 0;
  for (int i = 0; i < 9; ++i) {
    squares += s[i] * s[i];
    minorSquares += minors[i] * minors[i];
  }
  const double det = s[0] * minors[0] + s[1] * minors[1] + s[2] * minors[2];

  // On a line S has rank 1, and the two largest roots coincide in |S|, where
  // Newton's method would crawl into rounding errors.
  if (minorSquares < OnLine * squares * squares && squares > AtPoint * g * g) {
    *result = std::sqrt(squares);
    return true;
  }

  const double c2 = -2 * squares, c1 = -8 * det, c0 = squares * squares - 4 * minorSquares;
  double slope = 0;
  const auto correction = [=, &slope](double x) {
    const double x2 = x * x;
    const double b = (x2 + c2) * x;
    const double a = b + c1;
    slope = 2 * x2 * x + b + a;
    return (a * x + c0) / slope;
  };
  double x = 0.5 * g;
  for (int step = 0; step < MaxNewtonSteps; ++step) {
    const double delta = correction(x);
    x -= delta;
    if (std::fabs(x * NewtonPrecision) > std::fabs(delta)) {
      // One more step doubles the digits, unless the curve is flat because
      // roots lie together, as for thin lists and some mirror images.
      *result = x - correction(x);
      return slope > FlatSlope * x * x * x;
    }
  }
  return false;
}

// The 2 by 2 minors of two rows, named by their columns.
struct RowMinors {
  RowMinors(const double* r, const double* t)
      : m01(r[0] * t[1] - r[1] * t[0]),
        m02(r[0] * t[2] - r[2] * t[0]),
        m03(r[0] * t[3] - r[3] * t[0]),
        m12(r[1] * t[2] - r[2] * t[1]),
        m13(r[1] * t[3] - r[3] * t[1]),
        m23(r[2] * t[3] - r[3] * t[2]) {}

  double m01, m02, m03, m12, m13, m23;
};

// Writes the cofactors of the fourth row of a matrix that has `row` and the two
// rows of `minors`, up to a common sign. The result is their sum of squares.
double Cofactors(const double* row, const RowMinors& minors, double* q) {
  q[0] = row[1] * minors.m23 - row[2] * minors.m13 + row[3] * minors.m12;
  q[1] = -row[0] * minors.m23 + row[2] * minors.m03 - row[3] * minors.m02;
  q[2] = row[0] * minors.m13 - row[1] * minors.m03 + row[3] * minors.m01;
  q[3] = -row[0] * minors.m12 + row[1] * minors.m02 - row[2] * minors.m01;
  return q[0] * q[0] + q[1] * q[1] + q[2] * q[2] + q[3] * q[3];
}

// The rotation of the eigenvector of the key matrix for the eigenvalue `x`.
// False, with nothing of use in `rot`, if there is no telling or it does not fit.
//
// For a unit quaternion q and its rotation R, q K q is the sum of Rij Sij. The
// columns of the adjugate of K - x are multiples of the eigenvector.
bool RotationOfEigenvalue(const double* s, double g, double x, double* rot) {
  const double a = s[7] - s[5], b = s[2] - s[6], c = s[3] - s[1];
  const double d = s[1] + s[3], e = s[2] + s[6], f = s[5] + s[7];
  const double k[4][4] = {{s[0] + s[4] + s[8] - x, a, b, c},
                          {a, s[0] - s[4] - s[8] - x, d, e},
                          {b, d, s[4] - s[0] - s[8] - x, f},
                          {c, e, f, s[8] - s[0] - s[4] - x}};
  double q[4];
  const RowMinors lower(k[2], k[3]);
  double squares = Cofactors(k[1], lower, q);
  if (squares < SmallestAdjugate) squares = Cofactors(k[0], lower, q);
  if (squares < SmallestAdjugate) {
    const RowMinors upper(k[0], k[1]);
    squares = Cofactors(k[3], upper, q);
    if (squares < SmallestAdjugate) squares = Cofactors(k[2], upper, q);
    if (squares < SmallestAdjugate) return false;
  }

  const double scale = 1 / squares;
  const double ww = q[0] * q[0], xx = q[1] * q[1], yy = q[2] * q[2], zz = q[3] * q[3];
  const double wx = q[0] * q[1], wy = q[0] * q[2], wz = q[0] * q[3];
  const double xy = q[1] * q[2], xz = q[1] * q[3], yz = q[2] * q[3];
  rot[0] = (ww + xx - yy - zz) * scale;
  rot[1] = 2 * (xy - wz) * scale;
  rot[2] = 2 * (xz + wy) * scale;
  rot[3] = 2 * (xy + wz) * scale;
  rot[4] = (ww - xx + yy - zz) * scale;
  rot[5] = 2 * (yz - wx) * scale;
  rot[6] = 2 * (xz - wy) * scale;
  rot[7] = 2 * (yz + wx) * scale;
  rot[8] = (ww - xx - yy + zz) * scale;

  double fit = 0;
  for (int i = 0; i < 9; ++i) fit += rot[i] * s[i];
  return std::fabs(fit - x) <= FitPrecision * g;  // false for NaN
}

template <class T>
double QCPRMSBetweenPoints(const T* a, const T* b, const T* w, unsigned n, double* rot,
                           double* trans) {
  if (n <= 2) {
    QXThrow.Debug("QN RMS requires 3 independent coordinates. Falling back to Jacobi RMS.");
    return FallBack(a, b, w, n, rot, trans);
  }
  const PointSums sums = SumPoints(a, b, w, n);
  double x;
  if (!LargestEigenvalue(sums.s, sums.g, &x)) {
    QXThrow.Verbose("Newton raphson failed. Falling back to Jacobi RMS.");
    return FallBack(a, b, w, n, rot, trans);
  }
  if (rot) {
    if (!RotationOfEigenvalue(sums.s, sums.g, x, rot)) {
      QXThrow.Verbose("Failed to generate rotation matrix. Falling back to Jacobi RMS.");
      return FallBack(a, b, w, n, rot, trans);
    }
    const double* row = rot;
    for (int k = 0; k < 3; ++k, row += 3)
      trans[k] = sums.ca[k] - (row[0] * sums.cb[0] + row[1] * sums.cb[1] + row[2] * sums.cb[2]);
  }
  const double msd = (sums.g - 2 * x) / sums.weight;
  if (msd > -0.0001 && msd < 1e-6) return 0;
  const double rms = std::sqrt(msd);
  if (QXPlatform::QXIsNormalNum(rms)) return rms;
  QXThrow.Verbose("Sqrt yields non-normal number %f %f. Falling back to Jacobi RMS.", msd, rms);
  return FallBack(a, b, w, n, rot, trans);
}

}  // namespace

double QXQCPRMSBetweenPoints(const double* a, const double* b, unsigned n, double* rot,
                             double* trans) {
  return QCPRMSBetweenPoints<double>(a, b, nullptr, n, rot, trans);
}
double QXQCPRMSBetweenPoints(const float* a, const float* b, unsigned n, double* rot,
                             double* trans) {
  return QCPRMSBetweenPoints<float>(a, b, nullptr, n, rot, trans);
}
double QXQCPRMSBetweenWeightedPoints(const double* a, const double* b, const double* w, unsigned n,
                                     double* rot, double* trans) {
  return QCPRMSBetweenPoints(a, b, w, n, rot, trans);
}
double QXQCPRMSBetweenWeightedPoints(const float* a, const float* b, const float* w, unsigned n,
                                     double* rot, double* trans) {
  return QCPRMSBetweenPoints(a, b, w, n, rot, trans);
}

}  // namespace QXMath
