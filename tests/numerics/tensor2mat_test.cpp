#include <qxsystem/numerics/tensor2mat.h>

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <limits>
#include <random>
#include <string>

#include <qxsystem/core/errortest.h>

#include "rotation.h"

using namespace QXMath;
using namespace QXSystem;

using Tensor = std::array<double, 9>;

static constexpr double NaN = std::numeric_limits<double>::quiet_NaN();

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
      for (int j = 0; j < 4; ++j) row += a[i][j] * v[j], squares += a[i][j] * a[i][j];
      EXPECT_NEAR(std::fabs(row), least * std::fabs(v[i]), 1e-14 * scale);
      EXPECT_LE(least, std::fabs(values[i]));
      trace += a[i][i] - values[i], squares -= values[i] * values[i], length += v[i] * v[i];
    }
    EXPECT_NEAR(length, 1, 1e-14);
    EXPECT_NEAR(trace, 0, 1e-14 * scale);
    EXPECT_NEAR(squares, 0, 1e-13 * scale * scale);
  }
}

TEST(QXJacobiReduction, TakesEqualDiagonalElementsTiesAndNaN) {
  double tie[4][4] = {{3, 0, 0, 0}, {0, -2, 0, 0}, {0, 0, 2, 0}, {0, 0, 0, 2}};
  double bad[4][4] = {{2, NaN, 0, 0}, {0, 2, 1, 0}, {0, 0, 2, 0}, {0, 0, 0, 2}};
  double equal[4][4] = {{2, 1, 0, 0}, {0, 2, 0, 0}, {0, 0, 5, 0}, {0, 0, 0, 5}}, values[4], v[4];
  EXPECT_NEAR(QXJacobiReduction(values, equal, v), 1, 1e-15);
  EXPECT_NEAR(v[0] * v[1], -0.5, 1e-15);
  EXPECT_TRUE(QXJacobiReduction(values, tie, v) == 2 && v[1] == 1 && values[1] == -2);
  QXJacobiReduction(values, bad, v);  // ends
}

TEST(PrincipalAxes, MakeTheTensorDiagonal) {
  std::mt19937_64 random(1);
  std::normal_distribution<double> normal;
  for (int trial = 0; trial < 500; ++trial) {
    Tensor t;
    for (double& x : t) x = std::pow(10, trial % 5) * normal(random);
    t[3] = t[1], t[6] = t[2], t[7] = t[5];
    double pmi[3], r[9];
    EXPECT_EQ(QXMakeRotationMatrix(pmi, r, t.data()), 0);
    EXPECT_TRUE(std::fabs(pmi[0]) >= std::fabs(pmi[1]) && std::fabs(pmi[1]) >= std::fabs(pmi[2]));
    for (int i = 0; i < 9; ++i) {
      const double *p = r + i / 3 * 3, *u = t.data() + i % 3 * 3;
      // A cubic's roots lose half their digits where two are close.
      const double row = u[0] * p[0] + u[1] * p[1] + u[2] * p[2];
      EXPECT_NEAR(row, pmi[i / 3] * r[i], 1e-6 * std::fabs(pmi[0])) << trial;
    }
    ExpectProper(r, 1e-12);
  }
}

TEST(PrincipalAxes, KeepTheSpecialCases) {
  const std::string none = "level = 4\nNo principle axes found during inertial alignment\n";
  const std::string nan = "level = 4\nNaN detected during inertial alignment diagonalization\n";
  const struct {
    Tensor tensor;
    int moments, axes;  // results
    double pmi[3];
    std::string log;
  } cases[] = {
      {{0, 2, 0, 2, 3, 0, 0, 0, -2}, 0, 0, {4, -2, -1}, ""},
      {{2, 1, 1, 1, 2, 1, 1, 1, 2}, 0, 0, {2, 2, 2}, ""},  // an exact double root
      {{0, 1e-8, 0, 1e-8, 0, 0, 0, 0, 0}, -3, 0, {0, 0, 0}, none},
      {{3, 1, 0, 1, 3, 0, 0, NaN, 3}, 0, -4, {}, nan},
  };
  double pmi[3];
  Tensor rot;
  for (const auto& c : cases) {
    SCOPED_TRACE(c.tensor[1]);
    QXPushSimpleQXThrowTester reports;
    EXPECT_EQ(QXMakeRotationMatrix(pmi, rot.data(), c.tensor.data()), c.axes);
    EXPECT_EQ(reports.GetErrorLog(), c.log);
    EXPECT_TRUE(c.axes == 0 || rot == (Tensor{1, 0, 0, 0, 1, 0, 0, 0, 1}));
    EXPECT_EQ(QXPMIFromInertialTensor(pmi, c.tensor.data()), c.moments);
    for (int i = 0; i < 3; ++i)
      EXPECT_TRUE(c.axes != 0 || std::fabs(pmi[i] - c.pmi[i]) < 1e-14) << pmi[i];
  }

  const Tensor sphere = {3, 0, 0, 0, 3, 0, 0, 0, 3};
  EXPECT_EQ(QXMakeRotationMatrix(pmi, rot.data(), sphere.data()), 0);
  EXPECT_TRUE(rot == sphere && pmi[0] == 0 && pmi[1] == 0 && pmi[2] == 0);
  for (unsigned i = 0; i < 9; ++i) {
    Tensor changed = sphere;
    changed[i] = 1e-300;
    EXPECT_EQ(MatrixIsDiagonal(changed.data()), i % 4 == 0) << i;
  }
}
