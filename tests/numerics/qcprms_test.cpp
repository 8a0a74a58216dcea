#include <qxsystem/numerics/qcprms.h>

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <random>
#include <string>
#include <vector>

#include <qxsystem/core/errortest.h>
#include <qxsystem/numerics/regrotation.h>
#include <qxsystem/numerics/simplerms.h>

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

  // The mean squared distance after `motion` and a further turn about the
  // centroid, which is the origin.
  double Residual(const double* motion, const double* turn) const {
    double squares = 0, weight = 0;
    for (unsigned i = 0; i < Size(); ++i) {
      const double wi = w.empty() ? 1 : w[i];
      double p[3] = {b[3 * i], b[3 * i + 1], b[3 * i + 2]};
      QXGeom3DRotate(p, motion, 1);
      for (int k = 0; k < 3; ++k) p[k] += motion[9 + k];
      QXGeom3DRotate(p, turn, 1);
      for (unsigned k = 0; k < 3; ++k) squares += wi * std::pow(a[3 * i + k] - p[k], 2);
      weight += wi;
    }
    return squares / weight;
  }
};

class Superposition : public testing::Test {
protected:
  // Eight points about the origin, some 3 `scale` across, and the same turned,
  // moved and shaken by `noise` times `scale`; a line stays one.
  Lists Make(const std::string& kind, double scale, double noise, bool weighted) {
    double rot[3][3], axis[3] = {1, 2, -1}, center[3]{}, weight = 0;
    const double half = normal(random), sine = std::sin(half);
    const double q[4] = {std::cos(half), sine * 2 / 7, sine * 3 / 7, sine * 6 / 7};
    QXGenerateRotationMatrix(q, rot);
    Lists lists;
    for (int i = 0; i < 8; ++i) {
      const double along = normal(random), wi = weighted ? std::fabs(normal(random)) + 0.1 : 1;
      const double shake = noise * normal(random);
      for (int k = 0; k < 3; ++k) {
        const double across = kind == "line" ? 0 : kind == "thin" ? 1e-4 : 1;
        double x = across == 1 ? normal(random) : along * axis[k] + across * normal(random);
        if (kind == "planar" && k == 2) x = 0;
        lists.a.push_back(scale * x);
        center[k] += wi * scale * x;
        if (kind == "mirrored" && k == 0) x = -x;
        if (kind == "collapsed") x = 0;
        lists.b.push_back(scale *
                          (x + 5 + (kind == "line" ? shake * axis[k] : noise * normal(random))));
      }
      weight += wi;
      if (weighted) lists.w.push_back(wi);
    }
    for (unsigned i = 0; i < 24; ++i) lists.a[i] -= center[i % 3] / weight;
    QXGeom3DRotate(lists.b.data(), rot[0], 8);
    return lists;
  }

  std::mt19937_64 random{1};
  std::normal_distribution<double> normal;
};

// Rows of a proper rotation are each the cross product of the next two.
void ExpectProper(const double* r) {
  for (int i = 0; i < 3; ++i) {
    const double *p = r + 3 * ((i + 1) % 3), *q = r + 3 * ((i + 2) % 3);
    EXPECT_NEAR(r[3 * i], p[1] * q[2] - p[2] * q[1], 1e-14);
    EXPECT_NEAR(r[3 * i + 1], p[2] * q[0] - p[0] * q[2], 1e-14);
    EXPECT_NEAR(r[3 * i + 2], p[0] * q[1] - p[1] * q[0], 1e-14);
  }
}

}  // namespace

// Seven atoms of two protein fragments, the example of Theobald's and Liu's
// reference program, whose rotation brings the first list onto the second.
TEST_F(Superposition, GivesPublishedValues) {
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
  const double* a = lists.a.data();
  const double* b = lists.b.data();
  const double rms = QXQCPRMSBetweenPoints(a, b, 7, rot, trans);
  EXPECT_NEAR(rms, 0.719106, 5e-7);
  for (int i = 0; i < 9; ++i) EXPECT_NEAR(rot[i], rotation[i], 5e-9);
  EXPECT_NEAR(lists.Rms(nullptr), 0.745016, 5e-7);
  EXPECT_EQ(rms, 0x1.702eb88273685p-1);  // on every processor and from every compiler

  const std::vector<float> f(a, a + 21), g(b, b + 21), ones(7, 1);
  const std::vector<double> wideF(f.begin(), f.end()), wideG(g.begin(), g.end());
  const double floats = QXQCPRMSBetweenPoints(f.data(), g.data(), 7, nullptr, nullptr);
  EXPECT_NEAR(floats, rms, 1e-6);
  EXPECT_EQ(floats, QXQCPRMSBetweenPoints(wideF.data(), wideG.data(), 7, nullptr, nullptr));
  EXPECT_EQ(floats, QXQCPRMSBetweenWeightedPoints(f.data(), g.data(), ones.data(), 7, rot, trans));
}

TEST_F(Superposition, IsMinimalAndAgreesWithTheRobustRoute) {
  for (const char* kind : {"general", "planar", "line", "thin", "mirrored", "collapsed"})
    for (const double scale : {1e-3, 1e-1, 1.0, 1e2, 1e4})
      for (const double noise : {0.0, 1e-3, 0.5})
        for (int trial = 0; trial < 20; ++trial) {
          SCOPED_TRACE(testing::Message() << kind << " " << scale << " " << noise << " " << trial);
          const Lists lists = Make(kind, scale, noise, trial % 2 == 1);
          double fast[12], robust[12];
          const double expected = lists.RobustRms(robust);
          // The fast route takes up to 0.001 as 0; the root of the rounding of
          // squares is worth 1e-7 of the size of the lists.
          const double nothing = 0.0011 + 1e-6 * scale;
          const double tolerance = expected < nothing ? nothing : 1e-5 * expected;
          EXPECT_NEAR(lists.Rms(nullptr), expected, tolerance);
          EXPECT_NEAR(lists.Rms(fast), expected, tolerance);

          const double none[9] = {1, 0, 0, 0, 1, 0, 0, 0, 1}, slack = 1e-10 * scale * scale;
          for (const double* motion : {fast, robust}) {
            ExpectProper(motion);
            const double least = lists.Residual(motion, none);
            EXPECT_NEAR(least, expected * expected, slack);
            for (int axis = 1; axis < 4; ++axis)
              for (const double half : {-1e-3, 1e-3}) {
                double q[4] = {std::cos(half), 0, 0, 0}, turn[3][3];
                q[axis] = std::sin(half);
                QXGenerateRotationMatrix(q, turn);
                EXPECT_GE(lists.Residual(motion, turn[0]), least - slack);
              }
          }
        }
}

TEST_F(Superposition, FindsAPureTranslation) {
  Lists lists = Make("general", 1, 0, false);
  for (std::size_t i = 0; i < lists.a.size(); ++i) lists.b[i] = lists.a[i] - 2.5;
  double motion[12];
  EXPECT_EQ(lists.Rms(motion), 0);
  for (int i = 0; i < 12; ++i) EXPECT_NEAR(motion[i], i > 8 ? 2.5 : i % 4 == 0, 1e-14);
}

TEST_F(Superposition, TellsWhyItFallsBack) {
  const double nan = std::numeric_limits<double>::quiet_NaN();
  const std::vector<double> line = {0, 0, 0, 1, 2, 3, 2, 4, 6, 5, 10, 15}, point(12, 1.0);
  const std::vector<double> four = {1, 1, 1, 1, -1, -1, -1, 1, -1, -1, -1, 1};
  std::vector<double> inverted = four, broken = four, twice = four, near = four, nearer = four;
  for (double& x : inverted) x = -x;
  for (double& x : twice) x *= 2;
  for (double& x : near) x *= 1.0006;
  for (double& x : nearer) x *= 1.0005;
  broken[4] = nan;
  const std::string few = "QN RMS requires 3 independent coordinates. Falling back to Jacobi RMS.";
  const std::string newton = "Newton raphson failed. Falling back to Jacobi RMS.";
  const std::string rotation = "Failed to generate rotation matrix. Falling back to Jacobi RMS.";
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
      {"one collapsed", {four, point, {}}, true, newton, std::sqrt(3)},
      {"inverted", {four, inverted, {}}, false, newton, 2},
      {"NaN", {four, broken, {}}, true, newton, nan},
      {"no weight", {four, twice, {1, -1, 1, -1}}, true, newton, nan},
      {"line", {line, line, {}}, true, rotation, 0},
      {"line, distance only", {line, line, {}}, false, "", 0},
      {"odd weights", {four, twice, {-4, 1, 1, -3}}, false, "Sqrt yields non-normal number", nan},
      {"general", {four, twice, {}}, true, "", std::sqrt(3)},
      {"above 0.001", {four, near, {}}, true, "", 0.0006 * std::sqrt(3)},
      {"below 0.001", {four, nearer, {}}, true, "", 0},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    QXPushSimpleQXThrowTester reports;
    double motion[12];
    const double rms = c.lists.Rms(c.rotate ? motion : nullptr);
    EXPECT_TRUE(std::isnan(c.rms) ? std::isnan(rms) : std::fabs(rms - c.rms) < 1e-7) << rms;
    const std::string level = c.message == few ? "level = 1\n" : "level = 2\n";
    const std::string log = c.message.empty() ? "" : level + c.message;
    EXPECT_EQ(reports.GetErrorLog().substr(0, log.size()), log);
    EXPECT_EQ(reports.NumMessages(), log.empty() ? 0u : 1u);
  }
}
