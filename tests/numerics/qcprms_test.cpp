#include <qxsystem/numerics/qcprms.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <random>
#include <string>
#include <vector>

#include <qxsystem/core/errortest.h>
#include <qxsystem/numerics/regrotation.h>
#include <qxsystem/numerics/simplerms.h>

#include "rotation.h"

using namespace QXMath;
using namespace QXSystem;

namespace {

struct Lists {
  std::vector<double> a, b, w;

  unsigned Size() const { return static_cast<unsigned>(a.size() / 3); }
  const double* Weights() const { return w.empty() ? nullptr : w.data(); }

  // `motion` as 12 numbers, or null.
  double Rms(double* motion) const {
    return QXQCPRMSBetweenWeightedPoints(a.data(), b.data(), Weights(), Size(), motion,
                                         motion ? motion + 9 : nullptr);
  }
  double RobustRms(double* motion) const {
    return SimpleRMSBetweenWeightedPoints(a.data(), b.data(), Weights(), Size(), motion);
  }

  // The mean squared distance after the rotation `r` and the shift `t`, null
  // for the best one.
  double Residual(const double* r, const double* t) const {
    double sums[3]{}, squares = 0, weight = 0;
    for (unsigned i = 0; i < Size(); ++i) {
      const double wi = w.empty() ? 1 : w[i];
      double p[3] = {b[3 * i], b[3 * i + 1], b[3 * i + 2]};
      QXGeom3DRotate(p, r, 1);
      for (unsigned k = 0; k < 3; ++k) {
        const double d = a[3 * i + k] - p[k] - (t ? t[k] : 0);
        squares += wi * d * d, sums[k] += wi * d;
      }
      weight += wi;
    }
    for (const double sum : sums) squares -= t ? 0 : sum * sum / weight;
    return squares / weight;
  }
};

}  // namespace

// Seven atoms of two protein fragments, the example of Theobald's and Liu's
// reference program, whose rotation brings the first list onto the second.
TEST(Superposition, GivesPublishedValues) {
  const Lists lists = {{-2.803,  -15.373, 24.556,  0.893,   -16.062, 25.147,  1.368,
                        -12.371, 25.885,  -1.651,  -12.153, 28.177,  -0.440,  -15.218,
                        30.068,  2.551,   -13.273, 31.372,  0.105,   -11.330, 33.567},
                       {-14.739, -18.673, 15.040,  -12.473, -15.810, 16.074,  -14.802,
                        -13.307, 14.408,  -17.782, -14.852, 16.171,  -16.124, -14.617,
                        19.584,  -15.029, -11.037, 18.902,  -18.577, -10.001, 17.996},
                       {1, 2, 3, 4, 5, 6, 7}};
  const double rotation[9] = {0.72216358,  0.69118937,  -0.02714790, -0.52038257, 0.51700833,
                              -0.67963547, -0.45572112, 0.50493528,  0.73304748};
  double rot[9], trans[3];
  const double *a = lists.a.data(), *b = lists.b.data();
  const double rms = QXQCPRMSBetweenPoints(a, b, 7, rot, trans);
  EXPECT_NEAR(rms, 0.719106, 5e-7);
  for (int i = 0; i < 9; ++i) EXPECT_NEAR(rot[i], rotation[i], 5e-9);
  EXPECT_NEAR(lists.Rms(nullptr), 0.745016, 5e-7);
  EXPECT_EQ(rms, 0x1.702eb88273685p-1);  // on every processor and from every compiler

  const std::vector<float> f(a, a + 21), g(b, b + 21), ones(7, 1);
  const std::vector<double> wideF(f.begin(), f.end()), wideG(g.begin(), g.end());
  const double floats = QXQCPRMSBetweenPoints(f.data(), g.data(), 7, nullptr, nullptr);
  EXPECT_EQ(floats, QXQCPRMSBetweenPoints(wideF.data(), wideG.data(), 7, nullptr, nullptr));
  EXPECT_EQ(floats, QXQCPRMSBetweenWeightedPoints(f.data(), g.data(), ones.data(), 7, rot, trans));
}

TEST(Superposition, AgreesWithTheRobustRoute) {
  const struct {
    const char* name;
    double spread[3], factor[3];  // of the first list; of the second to the first
  } kinds[] = {{"general", {1, 1, 1}, {1, 1, 1}},   {"planar", {1, 1, 0}, {1, 1, 1}},
               {"line", {1, 0, 0}, {1, 1, 1}},      {"thin", {1, 1e-4, 1e-4}, {1, 1, 1}},
               {"mirrored", {1, 1, 1}, {-1, 1, 1}}, {"collapsed", {1, 1, 1}, {0, 0, 0}}};
  std::mt19937_64 random(1);
  std::normal_distribution<double> normal;
  for (const auto& kind : kinds)
    for (const double scale : {1e-3, 1e-1, 1.0, 1e2, 1e4})
      for (const double noise : {0.0, 1e-3, 0.5})
        for (int trial = 0; trial < 20; ++trial) {
          SCOPED_TRACE(testing::Message() << kind.name << " " << scale << " " << noise);
          Lists lists;
          for (int i = 0; i < 24; ++i) {
            const int k = i % 3;
            const double x = kind.spread[k] * normal(random);
            const double shake = kind.spread[1] == 0 ? kind.spread[k] : 1;  // a line stays one
            lists.a.push_back(scale * x);
            lists.b.push_back(scale * (x * kind.factor[k] + 5 + noise * shake * normal(random)));
            if (k == 0 && trial % 2 == 1) lists.w.push_back(std::fabs(normal(random)) + 0.1);
          }
          const double half = normal(random), sine = std::sin(half) / 7;
          const double q[4] = {std::cos(half), sine * 2, sine * 3, sine * 6};
          double rot[3][3], fast[12], robust[12];
          QXGenerateRotationMatrix(q, rot);
          QXGeom3DRotate(lists.b.data(), rot[0], 8);
          const double expected = lists.RobustRms(robust);
          // The fast route takes up to 0.001 as 0; the root of the rounding of
          // squares is worth 1e-7 of the size of the lists.
          const double nothing = 0.0011 + 1e-6 * scale;
          const double tolerance = expected < nothing ? nothing : 1e-5 * expected;
          EXPECT_NEAR(lists.Rms(nullptr), expected, tolerance);
          EXPECT_NEAR(lists.Rms(fast), expected, tolerance);
          for (const double* motion : {fast, robust}) {
            ExpectProper(motion);
            const double best = lists.Residual(motion, motion + 9), unit = scale * scale;
            EXPECT_NEAR(best, expected * expected, 1e-10 * unit);
            for (const double turn : {-1e-3, 1e-3})
              for (int axis = 1; axis < 4; ++axis) {
                double tilt[4] = {std::sqrt(1 - 1e-6)}, small[3][3], turned[9];
                tilt[axis] = turn;
                QXGenerateRotationMatrix(tilt, small);
                std::copy_n(motion, 9, turned);
                QXGeom3DRotate(turned, small[0], 3);  // its rows
                EXPECT_GE(lists.Residual(turned, nullptr), best - 1e-10 * unit);
              }
          }
        }
}

TEST(Superposition, TellsWhyItFallsBack) {
  const double nan = std::numeric_limits<double>::quiet_NaN();
  const std::vector<double> line = {0, 0, 0, 1, 2, 3, 2, 4, 6, 5, 10, 15}, point(12, 1.0);
  const auto times = [](double f) {
    return std::vector<double>{f, f, f, f, -f, -f, -f, f, -f, -f, -f, f};
  };
  const std::vector<double> four = times(1);
  const std::string few = "QN RMS requires 3 independent coordinates. Falling back to Jacobi RMS.";
  const std::string newton = "Newton raphson failed. Falling back to Jacobi RMS.";
  const std::string turn = "Failed to generate rotation matrix. Falling back to Jacobi RMS.";
  const std::string root = "Sqrt yields non-normal number";  // and more
  const struct {
    const char* name;
    Lists lists;
    bool rotate;
    std::string message;  // or its beginning
    double rms;
  } cases[] = {
      {"two", {{1, 2, 3, 4, 5, 6}, {0, 0, 0, 1, 1, 1}, {}}, true, few, std::sqrt(3)},
      {"none", {}, true, few, -1},
      {"coincident", {point, point, {}}, true, newton, 0},
      {"inverted", {four, times(-1), {}}, false, newton, 2},
      {"NaN", {four, times(nan), {}}, true, newton, nan},
      {"no weight", {four, times(2), {1, -1, 1, -1}}, true, newton, nan},
      {"line", {line, line, {}}, true, turn, 0},
      {"line, distance only", {line, line, {}}, false, "", 0},
      {"odd weights", {four, times(2), {-4, 1, 1, -3}}, false, root, nan},
      {"above 0.001", {four, times(1.0006), {}}, true, "", 0.0006 * std::sqrt(3)},
      {"below 0.001", {four, times(1.0005), {}}, true, "", 0},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    QXPushSimpleQXThrowTester reports;
    double motion[12];
    const double rms = c.lists.Rms(c.rotate ? motion : nullptr);
    EXPECT_TRUE(std::isnan(c.rms) ? std::isnan(rms) : std::fabs(rms - c.rms) < 1e-7) << rms;
    const std::string log = (c.message == few ? "level = 1\n" : "level = 2\n") + c.message;
    EXPECT_EQ(reports.NumMessages(), c.message.empty() ? 0u : 1u);
    EXPECT_EQ(reports.GetErrorLog().substr(0, log.size()), c.message.empty() ? "" : log);
  }
}
