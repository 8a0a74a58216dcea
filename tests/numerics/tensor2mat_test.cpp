#include <qxsystem/numerics/tensor2mat.h>

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <limits>
#include <random>

#include <qxsystem/core/errortest.h>

using namespace QXMath;
using namespace QXSystem;

namespace {

using Tensor = std::array<double, 9>;

constexpr double NaN = std::numeric_limits<double>::quiet_NaN();

}  // namespace

TEST(QXJacobiReduction, GivesEigenvaluesAndTheVectorOfTheSmallest) {
  std::mt19937_64 random(1);
  std::normal_distribution<double> normal;
  for (int trial = 0; trial < 500; ++trial) {
    const double scale = std::pow(10, trial % 9 - 4);
    double m[4][4], a[4][4], values[4], v[4];
    for (int i = 0; i < 4; ++i)
      for (int j = i; j < 4; ++j) {
        m[j][i] = NaN;  // only the upper triangle is read
        m[i][j] = a[i][j] = a[j][i] = scale * normal(random);
      }
    const double least = QXJacobiReduction(values, m, v);
    double trace = 0, squares = 0, length = 0;
    for (int i = 0; i < 4; ++i) {
      double row = 0;
      for (int j = 0; j < 4; ++j) {
        row += a[i][j] * v[j];
        squares += a[i][j] * a[i][j];
      }
      EXPECT_NEAR(std::fabs(row), least * std::fabs(v[i]), 1e-14 * scale);
      EXPECT_LE(least, std::fabs(values[i]));
      trace += a[i][i] - values[i];
      squares -= values[i] * values[i];
      length += v[i] * v[i];
    }
    EXPECT_NEAR(length, 1, 1e-14);
    EXPECT_NEAR(trace, 0, 1e-14 * scale);
    EXPECT_NEAR(squares, 0, 1e-13 * scale * scale);
  }
}

TEST(QXJacobiReduction, TakesEqualDiagonalElementsTiesAndNaN) {
  double equal[4][4] = {{2, 1, 0, 0}, {0, 2, 0, 0}, {0, 0, 5, 0}, {0, 0, 0, 5}};
  double tie[4][4] = {{3, 0, 0, 0}, {0, -2, 0, 0}, {0, 0, 2, 0}, {0, 0, 0, 2}};
  double bad[4][4] = {{2, NaN, 0, 0}, {0, 2, 1, 0}, {0, 0, 2, 0}, {0, 0, 0, 2}};
  double values[4], v[4];
  EXPECT_NEAR(QXJacobiReduction(values, equal, v), 1, 1e-15);
  EXPECT_NEAR(values[1], 3, 1e-15);
  EXPECT_NEAR(v[0] * v[1], -0.5, 1e-15);
  EXPECT_EQ(QXJacobiReduction(values, tie, v), 2);
  for (int i = 0; i < 4; ++i) EXPECT_EQ(v[i], i == 1);
  QXJacobiReduction(values, bad, v);  // ends
}

TEST(PrincipalAxes, MakeTheTensorDiagonal) {
  std::mt19937_64 random(1);
  std::normal_distribution<double> normal;
  for (int trial = 0; trial < 500; ++trial) {
    const double scale = std::pow(10, trial % 5);
    Tensor t;
    for (const unsigned i : {0u, 1u, 2u, 4u, 5u, 8u}) t[i] = scale * normal(random);
    t[3] = t[1], t[6] = t[2], t[7] = t[5];
    double pmi[3], alone[3], r[9];
    EXPECT_EQ(QXMakeRotationMatrix(pmi, r, t.data()), 0);
    EXPECT_EQ(QXPMIFromInertialTensor(alone, t.data()), 0);
    for (int i = 0; i < 3; ++i) {
      const double *p = r + 3 * i, *q = r + 3 * ((i + 1) % 3), *s = r + 3 * ((i + 2) % 3);
      EXPECT_EQ(pmi[i], alone[i]);
      EXPECT_TRUE(i == 0 || std::fabs(pmi[i]) <= std::fabs(pmi[i - 1]));
      for (int k = 0; k < 3; ++k) {
        // A cubic's roots lose half their digits where two are close.
        const double* u = t.data() + 3 * k;
        const double row = u[0] * p[0] + u[1] * p[1] + u[2] * p[2];
        EXPECT_NEAR(row, pmi[i] * p[k], 1e-6 * std::fabs(pmi[0])) << trial;
        EXPECT_NEAR(p[k], q[(k + 1) % 3] * s[(k + 2) % 3] - q[(k + 2) % 3] * s[(k + 1) % 3], 1e-12);
      }
    }
  }
}

TEST(PrincipalAxes, KeepTheSpecialCases) {
  const Tensor sphere = {3, 0, 0, 0, 3, 0, 0, 0, 3};
  const struct {
    const char* name;
    Tensor tensor;
    int moments, axes;  // results
    double pmi[3];
    const char* log;
  } cases[] = {
      {"signs", {0, 2, 0, 2, 3, 0, 0, 0, -2}, 0, 0, {4, -2, -1}, ""},
      {"exact double root", {2, 1, 1, 1, 2, 1, 1, 1, 2}, 0, 0, {2, 2, 2}, ""},
      {"diagonal", sphere, 0, 0, {3, 3, 3}, ""},
      {"near zero",
       {0, 1e-8, 0, 1e-8, 0, 0, 0, 0, 0},
       -3,
       0,
       {0, 0, 0},
       "level = 4\nNo principle axes found during inertial alignment\n"},
      {"NaN",
       {3, 1, 0, 1, 3, 0, 0, NaN, 3},
       0,
       -4,
       {NaN, NaN, NaN},
       "level = 4\nNaN detected during inertial alignment diagonalization\n"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    double pmi[3];
    Tensor rot;
    {
      QXPushSimpleQXThrowTester reports;
      EXPECT_EQ(QXMakeRotationMatrix(pmi, rot.data(), c.tensor.data()), c.axes);
      EXPECT_EQ(reports.GetErrorLog(), c.log);
    }
    if (c.axes == -4) {
      EXPECT_EQ(rot, (Tensor{1, 0, 0, 0, 1, 0, 0, 0, 1}));
      continue;
    }
    if (c.tensor == sphere) {
      EXPECT_EQ(rot, sphere);
      EXPECT_EQ(pmi[0] + pmi[1] + pmi[2], 0);
    }
    EXPECT_EQ(QXPMIFromInertialTensor(pmi, c.tensor.data()), c.moments);
    for (int i = 0; i < 3; ++i) EXPECT_NEAR(pmi[i], c.pmi[i], 1e-14);
  }
  for (unsigned i = 0; i < 9; ++i) {
    Tensor changed = sphere;
    changed[i] = 1e-300;
    EXPECT_EQ(MatrixIsDiagonal(changed.data()), i % 4 == 0) << i;
  }
}
