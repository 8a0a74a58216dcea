#include <qxsystem/numerics/stats.h>

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <vector>

#include <qxsystem/core/errortest.h>
#include <qxsystem/platform/malloca.h>

using namespace QXMath;
using namespace QXSystem;

TEST(QXChiSquare, MeasuresDependence) {
  const unsigned two[] = {10, 20, 30, 40}, proportional[] = {1, 2, 3, 10, 20, 30};
  const unsigned published[] = {90, 60, 104, 95, 30, 50, 51, 20, 30, 40, 45, 35};  // Wikipedia
  const unsigned emptyRow[] = {1, 2, 0, 0};
  EXPECT_NEAR(QXChiSquare(two, 2, 2), 50 / 63., 1e-13);  // 4^2 (1/12 + 1/18 + 1/28 + 1/42)
  EXPECT_NEAR(QXChiSquare(published, 3, 4), 24.5712, 5e-5);
  EXPECT_NEAR(QXChiSquare(proportional, 2, 3), 0, 1e-13);
  EXPECT_EQ(QXChiSquare(two, 0, 3) + QXChiSquare(two, 3, 0), 0);
  EXPECT_TRUE(std::isnan(QXChiSquare(emptyRow, 2, 2)));
  const unsigned wrapping[] = {0x80000000, 0x80000000};  // to a total of 0
  EXPECT_EQ(QXChiSquare(wrapping, 1, 2), std::numeric_limits<double>::infinity());
  // Totals that do not fit the stack.
  const auto rows = static_cast<unsigned>(QXPlatform::QXGetAllocaThreshold() / sizeof(double));
  std::vector<unsigned> large(2ul * rows, 5);
  EXPECT_NEAR(QXChiSquare(large.data(), rows, 2), 0, 1e-8);
}

TEST(QXPhi, DividesByTheWrappedProduct) {
  EXPECT_EQ(QXPhi(18, 3, 1), 3);
  EXPECT_EQ(QXPhi(1, 0, 1), std::sqrt(1 / 4294967295.));
  EXPECT_EQ(QXPhi(1, 0x10001, 0x10000), std::numeric_limits<double>::infinity());
  EXPECT_EQ(QXPhi(18, 3, 7, 1) + QXPhi(18, 7, 3, 1), 3 + 3);
  EXPECT_EQ(QXPhi(18, 1, 5, 2) + QXPhi(18, 5, 0, 0), 0);
  EXPECT_EQ(QXPhi(1, 2, 2, 16777217), 1 / 4096.);  // 2^24 in single precision
}

TEST(QXMaxp, ReadsTheTable) {
  const std::pair<double, float> steps[] = {
      {2.706, 0},   {2.7061, 0.1f}, {3.841, 0.1f},    {3.8411, 0.05f},  {6.635, 0.025f},
      {6.7, 0.01f}, {7.9, 0.005f},  {10.828, 0.005f}, {10.829, 0.001f}, {std::nan(""), 0.001f}};
  for (const auto& [chi2, level] : steps)
    EXPECT_EQ(QXMaxp(chi2, 1), static_cast<double>(level)) << chi2;
  EXPECT_TRUE(QXMaxp(-1, 0) == static_cast<double>(0.001f) && QXMaxp(-1.5, 0) == 0);
  QXPushSimpleQXThrowTester reports;
  EXPECT_EQ(QXMaxp(1, 2) + QXMaxp(1, 0xFFFFFFFF), 0);
  EXPECT_EQ(reports.GetErrorLog(),
            "level = 4\nTo Many Degrees of Freedom\nTo Many Degrees of Freedom\n");
}

TEST(QXLog2, RoundsDown) {
  EXPECT_EQ(QXLog2(0), 0xFFFFFFFF);
  for (unsigned bit = 0; bit < 64; ++bit)
    EXPECT_TRUE(QXLog2(1ul << bit) == bit && QXLog2(~0ul >> (63 - bit)) == bit) << bit;
}
