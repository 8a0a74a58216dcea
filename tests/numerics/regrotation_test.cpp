#include <qxsystem/numerics/regrotation.h>

#include <gtest/gtest.h>

#include <cmath>
#include <random>
#include <vector>

#include <qxsystem/core/errortest.h>

using namespace QXMath;
using namespace QXSystem;

TEST(QXGenerateRotationMatrix, TurnsByRodriguesForm) {
  std::mt19937_64 random(1);
  std::normal_distribution<double> normal;
  for (int trial = 0; trial < 200; ++trial) {
    const double half = normal(random), c = std::cos(2 * half), s = -std::sin(2 * half);
    double q[4] = {std::cos(half)}, n[3] = {normal(random), normal(random), normal(random)},
           m[3][3];
    const double length = std::hypot(n[0], n[1], n[2]);
    for (int k = 0; k < 3; ++k) q[k + 1] = (n[k] /= length) * std::sin(half);
    QXGenerateRotationMatrix(q, m);
    const double cross[3][3] = {{0, -n[2], n[1]}, {n[2], 0, -n[0]}, {-n[1], n[0], 0}};
    for (int i = 0; i < 3; ++i)
      for (int j = 0; j < 3; ++j)
        EXPECT_NEAR(m[i][j], (i == j) * c + n[i] * n[j] * (1 - c) + cross[i][j] * s, 1e-14);
  }
  for (const double scalar : {1.0, -1.0, std::nextafter(1.0, 2.0), -1.5}) {
    const double q[4] = {scalar, 0.1, 0.2, 0.3};
    double m[3][3];
    QXGenerateRotationMatrix(q, m);
    for (int i = 0; i < 9; ++i) EXPECT_EQ(m[i / 3][i % 3], i % 4 == 0) << scalar;
  }
}

TEST(QXHealPix, FollowsPixelsAndTurnsInSixSizes) {
  const std::vector<double> two = {.5, -.5}, three = {2 / 3., 0, -2 / 3.};
  const std::vector<double> four = {.75, .25, -.25, -.75};
  const struct {
    unsigned n, perRing, turns;
    std::vector<double> z;
  } cases[] = {{18, 3, 3, two},   {32, 4, 4, two},   {45, 3, 5, three},
               {72, 4, 6, three}, {112, 4, 7, four}, {160, 5, 8, four}};
  unsigned smallest = 0;  // that needs this size
  for (const auto& c : cases) {
    SCOPED_TRACE(c.n);
    EXPECT_TRUE(QXNextHealPix(smallest) == c.n && QXNextHealPix(c.n) == c.n);
    smallest = c.n + 1;
    std::vector<double> all(4 * c.n + 1, -7.0);
    ASSERT_TRUE(QXGetHealPix(c.n, all.data()));
    const double* q = all.data();
    for (unsigned turn = 0; turn < c.turns; ++turn)
      for (std::size_t ring = 0; ring < c.z.size(); ++ring)
        for (unsigned pixel = 0; pixel < c.perRing; ++pixel, q += 4) {
          const double half = std::acos(c.z[ring]) / 2, psi = (turn + 0.5) * M_PI / c.turns;
          const double phi = (2 * pixel + (ring % 2 == 0)) * M_PI / c.perRing;
          EXPECT_NEAR(q[0], std::cos(half) * std::cos(psi), 1e-15);
          EXPECT_NEAR(q[1], std::sin(half) * std::sin(psi - phi), 1e-15);
          EXPECT_NEAR(q[2], std::sin(half) * std::cos(psi - phi), 1e-15);
          EXPECT_NEAR(q[3], std::cos(half) * std::sin(psi), 1e-15);
        }
    EXPECT_TRUE(q == &all.back() && *q == -7);
  }
  EXPECT_EQ(QXNextHealPix(161), 160u);
  for (const unsigned n : {0u, 17u, 161u}) {
    const QXPushQXThrowHasSpecficMessages warning(
        QXErrorLevel::Warning, "QXGetHealPix: Bad number of points: " + std::to_string(n));
    double q = -7;
    EXPECT_TRUE(!QXGetHealPix(n, &q) && q == -7);
  }
}
