#include <qxsystem/numerics/elementary_private.h>

#include <gtest/gtest.h>

#include <cmath>
#include <random>

using namespace QXMath;

namespace {

// The C library is within a unit of the last digit, and so are we, nearly.
bool AreClose(double a, double b) {
  if (!std::isfinite(b)) return a == b || (a != a && b != b);
  return std::fabs(a - b) <= 2 * DBL_EPSILON * std::fabs(b) + DBL_TRUE_MIN;
}

}  // namespace

TEST(Elementary, AgreesWithTheCLibrary) {
  std::mt19937_64 random(1);
  std::uniform_real_distribution<double> unit;
  for (int i = 0; i < 200000; ++i) {
    const double x = unit(random), exponent = 1500 * (x - 0.5), wide = std::exp(0.9 * exponent);
    for (const double argument : {1 + std::ldexp(x - 0.5, -(i % 50)), x, wide})
      ASSERT_PRED2(AreClose, Log(argument), std::log(argument)) << argument;
    ASSERT_PRED2(AreClose, Exp(exponent), std::exp(exponent)) << exponent;
    ASSERT_PRED2(AreClose, Pow(wide, 3 * x - 1), std::pow(wide, 3 * x - 1)) << wide;
  }
}

TEST(Elementary, AnswersAsTheCLibraryAtTheEdges) {
  for (const double x : {0.0, 1.0, -1.0, DBL_TRUE_MIN, DBL_MIN, DBL_MAX, -DBL_MAX, 709.7, -745.1,
                         -746.0, 746.0, HUGE_VAL, -HUGE_VAL, std::nan("")}) {
    EXPECT_PRED2(AreClose, Log(x), std::log(x)) << x;
    EXPECT_PRED2(AreClose, Exp(x), std::exp(x)) << x;
    for (const double y : {-3.0, 1e300, HUGE_VAL})
      EXPECT_TRUE(x <= 0 || x == 1 || AreClose(Pow(x, y), std::pow(x, y))) << x << " " << y;
  }
  EXPECT_TRUE(std::isnan(Pow(-1, 0.5)));
}
