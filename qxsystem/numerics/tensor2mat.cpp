#include <qxsystem/numerics/tensor2mat.h>

#include <algorithm>
#include <array>
#include <cmath>

#include <qxsystem/core/error.h>
#include <qxsystem/platform/number.h>

namespace QXMath {
namespace {

using QXSystem::QXThrow;

constexpr int MaxSweeps = 49;
constexpr int RoughSweeps = 3;    // those that pass over small elements
constexpr int CarefulSweeps = 4;  // those before negligible elements are dropped

constexpr double NegligibleCoefficient = 1e-6;
constexpr double NoMoment = 1e-9;
constexpr int MaxTrials = 64;

using Vector = std::array<double, 3>;

double DropNegligible(double value) {
  return std::fabs(value) < NegligibleCoefficient ? 0 : value;
}

// cos(acos(k) / 3) for -1 <= k <= 1, the largest root of 4 y^3 - 3 y = k.
// Newton's steps from 1 fall onto it from above. In plain arithmetic, because
// the acos and cos of the C library depend in the last bit on whether the
// processor can fuse multiply and add.
long double CosOfThird(long double k) {
  long double y = 1;
  for (int step = 0; step < 64; ++step) {
    const long double next = (8 * y * y * y + k) / (12 * y * y - 3);
    if (!(next < y && next > 0.5L)) break;  // at 1/2 there is a double root
    y = next;
  }
  return y;
}

// (tensor - moment) v
Vector Apply(const double* tensor, double moment, const Vector& v) {
  Vector result;
  const double* row = tensor;
  for (unsigned i = 0; i < 3; ++i, row += 3)
    result[i] = row[0] * v[0] + row[1] * v[1] + row[2] * v[2] - moment * v[i];
  return result;
}

bool HasNaN(const Vector& v) {
  return std::any_of(v.begin(), v.end(), [](double x) { return QXPlatform::QXIsNaN(x); });
}

bool IsZero(const Vector& v) {
  return std::fabs(v[0]) + std::fabs(v[1]) + std::fabs(v[2]) == 0;
}

Vector Cross(const Vector& p, const Vector& q) {
  return {p[1] * q[2] - p[2] * q[1], p[2] * q[0] - p[0] * q[2], p[0] * q[1] - p[1] * q[0]};
}

Vector Normalised(const Vector& v) {
  const double length = std::sqrt(v[0] * v[0] + v[1] * v[1] + v[2] * v[2]);
  return length == 0 ? v : Vector{v[0] / length, v[1] / length, v[2] / length};
}

}  // namespace

double QXJacobiReduction(double* eigenvalues, double (*matrix)[4], double* eigenvector) {
  double vectors[4][4] = {{1, 0, 0, 0}, {0, 1, 0, 0}, {0, 0, 1, 0}, {0, 0, 0, 1}};
  double base[4];     // the diagonal at the beginning of a sweep
  double shift[4]{};  // what the sweep has added to it so far
  double* const d = eigenvalues;
  for (int i = 0; i < 4; ++i) base[i] = d[i] = matrix[i][i];

  for (int sweep = 1; sweep <= MaxSweeps; ++sweep) {
    double off = 0;
    for (int p = 0; p < 3; ++p)
      for (int q = p + 1; q < 4; ++q) off += std::fabs(matrix[p][q]);
    if (off == 0) break;
    const double threshold = sweep <= RoughSweeps ? 0.2 * off / 16 : 0;

    for (int p = 0; p < 3; ++p)
      for (int q = p + 1; q < 4; ++q) {
        double& pivot = matrix[p][q];
        const double g = 100 * std::fabs(pivot);
        if (sweep > CarefulSweeps && std::fabs(d[p]) + g == std::fabs(d[p]) &&
            std::fabs(d[q]) + g == std::fabs(d[q])) {
          pivot = 0;
          continue;
        }
        if (!(std::fabs(pivot) > threshold)) continue;

        // The tangent of the smaller of the two angles that clear the pivot:
        // 45 degrees, not 0, where the diagonal elements are equal.
        const double h = d[q] - d[p];
        double t = pivot / h;
        if (std::fabs(h) + g != std::fabs(h)) {
          const double theta = 0.5 * h / pivot;
          t = 1 / (std::fabs(theta) + std::sqrt(theta * theta + 1));
          if (theta < 0) t = -t;
        }
        const double c = 1 / std::sqrt(t * t + 1), s = t * c, tau = s / (1 + c);
        shift[p] -= t * pivot;
        shift[q] += t * pivot;
        d[p] -= t * pivot;
        d[q] += t * pivot;
        pivot = 0;
        const auto rotate = [s, tau](double& u, double& v) {
          const double oldU = u, oldV = v;
          u = oldU - s * (oldV + oldU * tau);
          v = oldV + s * (oldU - oldV * tau);
        };
        for (int i = 0; i < 4; ++i) {
          if (i != p && i != q)
            rotate(matrix[std::min(i, p)][std::max(i, p)], matrix[std::min(i, q)][std::max(i, q)]);
          rotate(vectors[i][p], vectors[i][q]);
        }
      }

    for (int i = 0; i < 4; ++i) {
      base[i] += shift[i];
      d[i] = base[i];
      shift[i] = 0;
    }
  }

  int smallest = 0;
  for (int i = 1; i < 4; ++i)
    if (std::fabs(d[i]) < std::fabs(d[smallest])) smallest = i;
  for (int i = 0; i < 4; ++i) eigenvector[i] = vectors[i][smallest];
  return std::fabs(d[smallest]);
}

bool MatrixIsDiagonal(const double* m) {
  return m[1] == 0 && m[2] == 0 && m[3] == 0 && m[5] == 0 && m[6] == 0 && m[7] == 0;
}

int QXPMIFromInertialTensor(double* pmi, const double* tensor) {
  const double* m = tensor;
  // The roots of x^3 + 3 a x^2 + c1 x + c0, and with x = y - a of
  // y^3 + 3 q y + 2 r; d tells how many are real.
  const double a = -DropNegligible(m[0] + m[4] + m[8]) / 3;
  const double minor0 = m[4] * m[8] - m[5] * m[7];
  const double minor1 = m[3] * m[8] - m[5] * m[6];
  const double minor2 = m[3] * m[7] - m[4] * m[6];
  const double c1 =
      DropNegligible(minor0 + (m[0] * m[8] - m[2] * m[6]) + (m[0] * m[4] - m[1] * m[3]));
  const double c0 = DropNegligible(-(m[0] * minor0 - m[1] * minor1 + m[2] * minor2));
  const double q = (c1 - 3 * a * a) / 3;
  const double r = (2 * a * a * a - c1 * a + c0) / 2;
  const double d = r * r + q * q * q;

  if (d < 0) {
    const double k = -r / std::sqrt(-(q * q * q));
    const long double y = CosOfThird(std::clamp(k, -1.0, 1.0));  // rounding may leave the range
    const long double w = std::sqrt(3 * (1 - y) * (1 + y));
    const double radius = 2 * std::sqrt(-q);
    pmi[0] = radius * static_cast<double>(y) - a;
    pmi[1] = radius * static_cast<double>(-(y + w) / 2) - a;  // a third of a turn on
    pmi[2] = radius * static_cast<double>((w - y) / 2) - a;   // two thirds
  } else if (d > 0) {
    // Rounding made a pair of equal roots complex; their real part is meant.
    // In the longer format, as rounding for double is the C library's choice.
    const double u = -static_cast<double>(std::cbrt(static_cast<long double>(r)));
    pmi[0] = 2 * u - a;
    pmi[1] = pmi[2] = -(u + a);
  } else {
    // A triple root. An exact double root, 4, 1, 1 for instance, comes here too
    // and is given as 2, 2, 2 on purpose: with its true roots both factors of the
    // axes would take out all there is, and leave rows of zeros.
    pmi[0] = pmi[1] = pmi[2] = -a;
  }

  for (const int i : {0, 1, 0})
    if (std::fabs(pmi[i]) < std::fabs(pmi[i + 1])) std::swap(pmi[i], pmi[i + 1]);
  if (std::fabs(pmi[0]) < NoMoment) {
    QXThrow.Warning("No principle axes found during inertial alignment");
    return -3;
  }
  return 0;
}

int QXMakeRotationMatrix(double* pmi, double* rot, const double* tensor) {
  if (MatrixIsDiagonal(tensor)) {
    std::copy_n(tensor, 9, rot);
    std::fill_n(pmi, 3, 0.0);
    return 0;
  }
  QXPMIFromInertialTensor(pmi, tensor);

  // A matrix less one of its eigenvalues takes that eigenvector out of any
  // vector: with two taken out, the axis of the largest moment is left.
  Vector u{}, w{};
  double y = 0.847359;
  for (int trial = 0; trial < MaxTrials; ++trial, y -= 0.1) {
    u = Apply(tensor, pmi[2], {0.343257, y, 0.127438});
    w = Apply(tensor, pmi[1], u);
    if (HasNaN(u) || HasNaN(w)) {
      QXThrow.Warning("NaN detected during inertial alignment diagonalization");
      for (int i = 0; i < 9; ++i) rot[i] = i % 4 == 0;
      return -4;
    }
    if (!IsZero(u) && !IsZero(w)) break;
  }
  const Vector c = Cross(u, w), d = Cross(c, w);
  double* row = rot;
  for (const Vector& axis : {w, d, c}) {
    const Vector unit = Normalised(axis);
    row = std::copy(unit.begin(), unit.end(), row);
  }
  return 0;
}

}  // namespace QXMath
