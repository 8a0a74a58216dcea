#include <qxsystem/colour/colorgradient.h>

#include <cmath>
#include <limits>
#include <random>
#include <vector>

#include <gtest/gtest.h>

#include <tests/support/capture.h>

using namespace QXSystem;

namespace {

constexpr double inf = std::numeric_limits<double>::infinity();
constexpr double nan = std::numeric_limits<double>::quiet_NaN();

std::string At(const QXColorGradientBase& gradient, double value) {
  return gradient.GetColorAt(value).GetText(true);
}

std::string Stops(const QXColorGradientBase& gradient) {
  std::string text;
  for (QXIter<QXColorStop> stop = gradient.GetStops(); stop; ++stop)
    text += std::to_string(static_cast<int>(stop->value)) + stop->color.GetText(false) + " ";
  return text;
}

TEST(QXColorGradient, KeepsItsStopsInOrder) {
  QXLinearColorGradient gradient(QXColorStop(5, QXRed), QXColorStop(1, QXBlue));
  EXPECT_TRUE(gradient.AddStop({3, QXGreen}) && gradient.AddStop({9, QXWhite}));
  EXPECT_FALSE(gradient.AddStop({3, QXWhite}) || gradient.AddStop({nan, QXWhite}));
  EXPECT_EQ(Stops(gradient), "1#0000ff 3#00ff00 5#ff0000 9#ffffff ");
  EXPECT_EQ(Stops(QXLinearColorGradient({2, QXRed}, {2, QXBlue})), "2#ff0000 ");
  EXPECT_TRUE(gradient.GetMinValue() == 1 && gradient.GetMaxValue() == 9);
  EXPECT_TRUE(gradient.GetMinColor() == QXBlue && gradient.GetMaxColor() == QXWhite);

  const qxtest::Reports reports;
  EXPECT_FALSE(gradient.DeleteStop(4));
  EXPECT_TRUE(gradient.DeleteStop(3) && gradient.DeleteStop(0) && gradient.DeleteStop(0));
  EXPECT_FALSE(gradient.DeleteStop(7) || QXLinearColorGradient().DeleteStop(0));
  EXPECT_EQ(Stops(gradient), "5#ff0000 ");
  const std::string where = "QXColorGradientBase::DeleteStop() ";
  EXPECT_EQ(reports.GetErrorLog(), "level = 4\n" + where + "4 index is out of range (0-3)\n" +
                                       where + "Cannot delete last color stop\n" + where +
                                       "No color stop has been added!\n");
}

TEST(QXColorGradient, RoundsChannelsDownBothWays) {
  const QXLinearColorGradient up({0, QXBlack}, {1, QXWhite}), down({0, QXWhite}, {1, QXBlack}),
      fade({0, QXTransparentColor}, {1, QXRed});
  const struct {
    double value;
    const char *up, *down, *fade;
  } cases[] = {{0, "#000000ff", "#ffffffff", "#ffffff00"},
               {0.5, "#7f7f7fff", "#7f7f7fff", "#ff7f7f7f"},
               {0.8, "#ccccccff", "#323232ff", "#ff3232cc"},
               {0.001, "#000000ff", "#fefefeff", "#fffefe00"},
               {0.999, "#fefefeff", "#000000ff", "#ff0000fe"},
               {1, "#ffffffff", "#000000ff", "#ff0000ff"},
               {-inf, "#000000ff", "#ffffffff", "#ffffff00"},
               {inf, "#ffffffff", "#000000ff", "#ff0000ff"},
               {nan, "#ffffffff", "#ffffffff", "#ffffffff"}};
  for (const auto& c : cases) {
    EXPECT_EQ(At(up, c.value) + At(down, c.value) + At(fade, c.value),
              std::string(c.up) + c.down + c.fade);
  }
}

TEST(QXColorGradient, WithoutStopsIsBlackAndWithOneUniform) {
  const QXLinearColorGradient none, one({3, QXRed});
  for (const double value : {-inf, 3.0, 4.0})
    EXPECT_TRUE(none.GetColorAt(value) == QXBlack && one.GetColorAt(value) == QXRed);
  EXPECT_TRUE(none.IsEmpty() && none.GetMinColor() == QXBlack && none.GetMaxColor() == QXBlack);
  EXPECT_EQ(none.GetMaxValue(), std::numeric_limits<double>::max());
  EXPECT_EQ(none.GetMinValue(), -none.GetMaxValue());
  EXPECT_EQ(Stops(none), "");
}

TEST(QXColorGradient, MapsItsAxis) {
  const QXExponentColorGradient cube(3), root(0.5), one(1), wild(nan), most(20), least(0.01);
  const QXExponentialColorGradient exponential;
  const QXLogarithmicColorGradient logarithmic;
  EXPECT_TRUE(wild.GetExponent() == 1 && most.GetExponent() == 10 && least.GetExponent() == 0.1);
  for (const double x : {0.0, 0.25, 1.0, 3.0}) {
    EXPECT_DOUBLE_EQ(cube.TransformValue(x), x * x * x);
    EXPECT_DOUBLE_EQ(root.TransformValue(x), std::sqrt(x));
    EXPECT_EQ(one.TransformValue(x), x);
    EXPECT_NEAR(exponential.TransformValue(x), std::expm1(x), 1e-14);
    EXPECT_NEAR(logarithmic.TransformValue(x), std::log1p(x), 1e-15);
    for (const QXColorGradientBase* axis : std::initializer_list<const QXColorGradientBase*>{
             &cube, &root, &exponential, &logarithmic})
      EXPECT_EQ(axis->TransformValue(-x), -axis->TransformValue(x));
  }
  const QXColorStop black(0, QXBlack), white(1, QXWhite);
  EXPECT_EQ(At(QXExponentColorGradient(2, white, black), 0.5), "#3f3f3fff");
  EXPECT_EQ(At(QXLogarithmicColorGradient(black, white), 0.5), "#959595ff");
  EXPECT_EQ(At(QXExponentialColorGradient(black, white), 0.5), "#606060ff");
  // Where the axis has no room for the values, the lower stop's colour.
  const QXExponentialColorGradient wide({-800, QXRed}, {800, QXBlue});
  EXPECT_EQ(wide.GetColorAt(0), QXRed);
  EXPECT_EQ(wide.GetColorAt(799), QXBlue);
}

// The pair of stops found by search is the first that holds the value.
TEST(QXColorGradient, AgreesWithAWalkOverItsStops) {
  std::mt19937 random(7);
  const auto byte = [&] { return static_cast<unsigned>(random() % 256); };
  QXExponentColorGradient gradient(2.5);
  std::vector<QXColorStop> stops;
  for (unsigned i = 0; i < 50; ++i)
    gradient.AddStop({static_cast<double>(random() % 2000) - 1000, {byte(), byte(), byte()}});
  for (QXIter<QXColorStop> stop = gradient.GetStops(); stop; ++stop) stops.push_back(*stop);
  for (double value = -1010; value < 1010; value += 0.5) {
    std::string expected = stops.front().color.GetText(true);
    for (std::size_t i = 1; i < stops.size() && stops[i - 1].value <= value; ++i)
      expected = At(QXExponentColorGradient(2.5, stops[i - 1], stops[i]), value);
    EXPECT_EQ(At(gradient, value), expected) << value;
  }
}

}  // namespace
