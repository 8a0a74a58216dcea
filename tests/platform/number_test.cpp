#include <qxsystem/platform/number.h>

#include <gtest/gtest.h>

#include <cfloat>
#include <cmath>
#include <limits>

using namespace QXPlatform;

TEST(Numbers, AreToldApartAsByTheMathLibrary) {
  using Double = std::numeric_limits<double>;
  for (const double magnitude :
       {0.0, DBL_TRUE_MIN, std::nextafter(DBL_MIN, 0), DBL_MIN, 1.0, DBL_MAX, Double::infinity(),
        Double::quiet_NaN(), Double::signaling_NaN()})
    for (const double value : {magnitude, -magnitude}) {
      SCOPED_TRACE(value);
      EXPECT_EQ(QXIsNaN(value), std::isnan(value));
      EXPECT_EQ(QXIsRealNaN(value), std::isnan(value));
      EXPECT_EQ(QXIsNormalNum(value), std::isnormal(value));
      EXPECT_EQ(QXIsNaN(static_cast<float>(value)), std::isnan(value));
    }
}
