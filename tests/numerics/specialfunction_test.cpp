#include <qxsystem/numerics/specialfunction.h>

#include <gtest/gtest.h>

#include <cfloat>
#include <cmath>
#include <limits>
#include <random>
#include <utility>

using namespace QXMath;

TEST(QXerfc, GivesPublishedValues) {
  // Abramowitz and Stegun, table 7.1, and by arithmetic of 50 digits.
  const std::pair<double, double> cases[] = {{0, 1},
                                             {0.5, 0.47950012218695346232},
                                             {4, 1.5417257900280018852e-8},
                                             {26, 5.6631924088561428464e-296},
                                             {-5, 1.9999999999984625402}};
  for (const auto& [x, expected] : cases) {
    EXPECT_NEAR(QXerfc(x), expected, 1e-15 * expected) << x;
    EXPECT_NEAR(QXerf(x), 1 - expected, 1e-15) << x;
  }
}

TEST(QXerfc, AgreesWithTheCLibrary) {
  std::mt19937_64 random(1);
  for (const double limit : {0.5, 1.0, 4.0, 8.0, 28.0}) {
    std::uniform_real_distribution<double> uniform(-limit, limit);
    for (int i = 0; i < 50000; ++i) {
      const double x = uniform(random), expected = std::erfc(x);
      // A few units of the last digit from either, and more where it is subnormal.
      EXPECT_NEAR(QXerfc(x), expected, 10 * DBL_EPSILON * expected + DBL_TRUE_MIN) << x;
      EXPECT_NEAR(QXerf(x), std::erf(x), 1e-15) << x;
    }
  }
}

TEST(QXerfc, HasLimits) {
  for (const double x : {27.3, DBL_MAX, HUGE_VAL})
    EXPECT_TRUE(QXerfc(x) == 0 && QXerfc(-x) == 2) << x;
  EXPECT_EQ(QXerfc(-0.0), 1);
  EXPECT_EQ(QXerf(DBL_TRUE_MIN), 0);
  for (const double nan : {std::nan(""), -std::nan("")}) EXPECT_TRUE(std::isnan(QXerfc(nan)));
}
