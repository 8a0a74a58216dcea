#include <qxsystem/numerics/simplerms.h>

#include <gtest/gtest.h>

#include <cmath>
#include <vector>

#include <qxsystem/numerics/regrotation.h>

using namespace QXMath;

TEST(SimpleRms, AnswersWhereThereIsNothingToTurn) {
  const double point[3] = {1, 2, 3};
  for (const int n : {0, -1}) {
    std::vector<double> out(12, 7.0);
    EXPECT_EQ(RMSBetweenPoints<double>(point, point, nullptr, n, out.data()), -1);
    EXPECT_EQ(out, (std::vector<double>{1, 0, 0, 0, 1, 0, 0, 0, 1, 0, 0, 0}));
  }
  const float a[] = {0, 0, 0, 1, 2, 3, -4, 5, 0, 7, -3, 1};
  const float b[] = {0, 1, 2, 1, 3, 5, -4, 6, 2, 7, -2, 3};
  std::vector<double> out(12);
  EXPECT_EQ(SimpleRMSBetweenPoints(a, b, 4, out.data()), 0);
  EXPECT_EQ(out, (std::vector<double>{1, 0, 0, 0, 1, 0, 0, 0, 1, 0, -1, -2}));
}

TEST(SimpleRms, FitsTwoPointsByTheirDistance) {
  const double a[] = {0, 0, 0, 0, 0, 4}, b[] = {1, 1, 1, 3, 1, 1}, w[] = {1, 3};
  double out[12], p[] = {2.5, 1, 1, 3, 1, 1};
  EXPECT_NEAR(SimpleRMSBetweenPoints(a, b, 2, out), 1, 1e-15);
  EXPECT_NEAR(SimpleRMSBetweenWeightedPoints(a, b, w, 2, out), std::sqrt(0.75), 1e-15);
  // The centroid (2.5, 1, 1) comes to (0, 0, 3), and the line along x to z.
  const double moved[] = {0, 0, 3, 0, 0, 3.5};
  QXGeom3DRotate(p, out, 2);
  for (int i = 0; i < 6; ++i) EXPECT_NEAR(p[i] + out[9 + i % 3], moved[i], 1e-15);
}
