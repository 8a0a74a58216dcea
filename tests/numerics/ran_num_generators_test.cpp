#include <qxsystem/numerics/ran_num_generators.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <functional>
#include <limits>
#include <random>
#include <stdexcept>
#include <vector>

#include "rotation.h"

using namespace QXMath;

namespace {

using Mt = MtRng<Mt64Traits>;

// An engine that the library does not know: hands over a list, and then the
// numbers of its own one. Counts what was taken.
struct Scripted : QXRanNumEngine {
  explicit Scripted(std::vector<double> list = {}, std::uint64_t seed = 20)
      : units(std::move(list)), mt(seed) {}
  std::uint64_t getUnsigned() override { return ++taken, mt.getUnsigned(); }
  double getUnitDouble() override {
    return taken++ < units.size() ? units[taken - 1] : mt.getUnitDouble();
  }

  std::vector<double> units;
  Mt mt;
  std::size_t taken = 0;
};

// The distribution function of the gamma distribution, by its power series.
std::function<double(double)> GammaCdf(double shape, double scale = 1) {
  return [=](double value) {
    const double x = value / scale;
    double term = x > 0 ? 1 / shape : 0, sum = term;
    for (double k = shape + 1; term > 1e-17 * sum; ++k) sum += term *= x / k;
    return x > 0 ? std::exp(shape * std::log(x) - x - std::lgamma(shape)) * sum : 0;
  };
}

struct Distribution {
  const char* name;
  std::function<double(QXRanNumEngine&)> draw;
  std::function<double(double)> cdf;
  std::uint64_t hash;  // of the bits of 1000 values from seed 20
};

const Distribution distributions[] = {
    {"uniform", QXUniformDoubleRNG(-1, 2), [](double x) { return (x + 1) / 3; },
     0xcfd29ae8ca56e949},
    {"gaussian", QXGaussianRNG(1, 2),
     [](double x) { return 0.5 * std::erfc(-(x - 1) / std::sqrt(8)); }, 0x4662da48769bb880},
    {"gamma 2.5", QXGammaRNG(2.5, 1), GammaCdf(2.5), 0x5605506c1ee21c8a},
    {"gamma 40", QXGammaRNG(40, 0.1), GammaCdf(40, 0.1), 0x44f972478e83fec3},
    {"gamma 0.999", QXGammaRNG(0.999, 2), GammaCdf(0.999, 2), 0xa0605d12c051cdcd},
    {"gamma 0.5", QXGammaRNG(0.5, 1), [](double x) { return std::erf(std::sqrt(x)); },
     0x13bcebfda5d31bd4},
    {"gamma 0.3", QXGammaRNG(0.3, 1), GammaCdf(0.3), 0xe7407b6ea797b57},
    {"t", QXStudentsTRNG(1, 2, 3),
     [](double x) {
       const double t = (x - 1) / 2 / std::sqrt(3);
       return 0.5 + (t / (1 + t * t) + std::atan(t)) / M_PI;
     },
     0x82fd67b54bc06323},
    {"chi-squared", QXChiSquaredRNG(3), GammaCdf(1.5, 2), 0x2533ed6a6531c327},
    {"F", QXSnedecorsFRNG(2, 5), [](double x) { return 1 - std::pow(1 + 0.4 * x, -2.5); },
     0xeb63771d253be0ae},
    {"beta 1, 0.7", QXBetaRNG(1, 0.7), [](double x) { return 1 - std::pow(1 - x, 0.7); },
     0x727179e70a03a1ea},
    {"Gumbel", QXGumbelRNG(1, 2), [](double x) { return std::exp(-std::exp((1 - x) / 2)); },
     0xa829c3adf8246d6b},
    {"extreme value", QXGenExtremeValRNG(1, 2, 0.25),
     [](double x) { return std::exp(-std::pow(1 + (x - 1) / 8, -4)); }, 0xac2f9a5561108b57},
};

// Kolmogorov's test of values between 0 and 1; a true one fails once in 10^4 seeds.
void ExpectUniform(std::vector<double> values) {
  std::sort(values.begin(), values.end());
  const double n = static_cast<double>(values.size());
  double distance = 0;
  for (std::size_t i = 0; i < values.size(); ++i) {
    const double step = static_cast<double>(i) / n;
    distance = std::max({distance, values[i] - step, step + 1 / n - values[i]});
  }
  EXPECT_LT(distance * std::sqrt(n), std::sqrt(std::log(2e4) / 2));
}

}  // namespace

TEST(MtRng, IsTheMersenneTwister) {
  Mt published;
  EXPECT_EQ(published.Next(), std::mt19937_64()());
  for (const std::uint64_t seed : {0ul, 5489ul, ~0ul}) {
    published.Seed(seed);
    std::mt19937_64 reference(seed);
    Mt copy(published);
    for (int i = 0; i < 1000; ++i) {
      ASSERT_EQ(published.Next(), reference());
      ASSERT_EQ(published.getUnsigned(), reference() >> 33);
      ASSERT_EQ(published.getUnitDouble(), static_cast<double>(reference() >> 11) / 0x1p53);
    }
    EXPECT_EQ(copy.Next(), Mt(seed).Next());
  }
}

TEST(Distributions, AreWhatTheirNamesSayAndTheSameBitsEverywhere) {
  for (const Distribution& d : distributions) {
    SCOPED_TRACE(d.name);
    Mt mt(20);
    Scripted other;
    auto draw = d.draw, drawOther = d.draw;
    std::uint64_t hash = 0;
    for (int i = 0; i < 1000; ++i) {
      const double value = draw(mt);
      ASSERT_EQ(value, drawOther(other)) << "from an engine that only the interface tells of";
      std::uint64_t bits;
      std::memcpy(&bits, &value, 8);
      hash = (hash ^ bits) * 0x100000001B3;
    }
    EXPECT_EQ(hash, d.hash) << std::hex << hash;

    draw = d.draw;
    mt.Seed(1);
    std::vector<double> values(20000);
    for (double& value : values) value = d.cdf(draw(mt));
    ExpectUniform(values);
  }
}

TEST(Distributions, TakeNewParameters) {
  Mt mt(3), same(3);
  QXGammaRNG gamma(3, 1);
  QXStudentsTRNG t(0, 1, 1);
  gamma.SetParams(0.4, 2), t.SetParams(1, 2, 3);
  EXPECT_EQ(gamma(mt), QXGammaRNG(0.4, 2)(same));
  EXPECT_EQ(t(mt), QXStudentsTRNG(1, 2, 3)(same));
  EXPECT_EQ(QXGenExtremeValRNG(1, 2, 0)(mt), QXGumbelRNG(1, 2)(same));
}

TEST(QXUniformIntRNG, TakesTheRemainderOfAWord) {
  constexpr int Min = std::numeric_limits<int>::min(), Max = std::numeric_limits<int>::max();
  const auto word = static_cast<std::int64_t>(Mt(5).getUnsigned());
  const std::pair<int, int> ranges[] = {{-3, 3}, {0, 0}, {0, Max}, {Min, Max}, {Max - 1, Max}};
  for (const auto& [low, high] : ranges) {
    Mt engine(5);
    EXPECT_EQ(QXUniformIntRNG(low, high)(engine), word % (std::int64_t{high} - low + 1) + low);
    EXPECT_EQ(QXUniformIntRNG(low, low == Min ? low : low - 1)(engine), low);
  }
}

TEST(QXGaussianRNG, MakesTwoValuesOfAPair) {
  Scripted engine({0, 0, 0.5, 0.5, 0.75, 0.25});  // on the rim's far side, in the middle, good
  QXGaussianRNG gaussian(0, 1);
  const double f = std::sqrt(-2 * std::log(0.5) / 0.5);
  EXPECT_DOUBLE_EQ(gaussian(engine), -0.5 * f);
  EXPECT_EQ(engine.taken, 6u);
  QXGaussianRNG copy(gaussian);
  gaussian.SetParams(1, 10);
  EXPECT_DOUBLE_EQ(gaussian(engine), 1 + 5 * f);
  EXPECT_DOUBLE_EQ(copy(engine), 0.5 * f);
  EXPECT_EQ(engine.taken, 6u);
}

TEST(Distributions, DrawAgainWhatHasNoLogarithm) {
  // A second number of 0 or 1 for Cheng's method, either of 0 for Weibull's: both anew.
  Scripted cheng({0.9, 0, 0.9, 1, 0.1, 0.5}), weibull({0, 0.9, 0.9, 0, std::exp(-1.), 0.01});
  Scripted gumbel({0, 1, 0.5});
  EXPECT_DOUBLE_EQ(QXGumbelRNG(1, 2)(gumbel), 1 - 2 * std::log(std::log(2.)));
  EXPECT_DOUBLE_EQ(QXGammaRNG(4, 1)(cheng), 4);  // at the mode of v
  EXPECT_DOUBLE_EQ(QXGammaRNG(0.5, 3)(weibull), 3);
  EXPECT_TRUE(gumbel.taken == 3 && cheng.taken == 6 && weibull.taken == 6);
}

TEST(QXGammaRNG, EndsForShapesWithoutADistribution) {
  Mt mt;
  for (const double shape : {-1.0, -1e300, 0.0, std::nan(""), HUGE_VAL, -HUGE_VAL, 1e-320})
    for (int i = 0; i < 20; ++i) QXGammaRNG(shape, 1)(mt);
}

TEST(QXUniformOnUnitSphereRNG, DrawsEachCoordinateAnew) {
  Scripted engine({0.75, 0.25, 0.25, 0.75, 0.75, 0.75, 0.25, 0.25});
  std::vector<double> point(9);
  QXUniformOnUnitSphereRNG(3).GetRandomPoint(point, engine);
  EXPECT_EQ(point, (std::vector<double>{-0.5, 0.5, 0.5, -0.5}));
  EXPECT_EQ(engine.taken, 8u);
}

TEST(QX3DRotationMatrixRNG, FavoursNoRotation) {
  Mt mt(6);
  std::vector<double> r, numbers[9];
  for (int i = 0; i < 5000; ++i) {
    QX3DRotationMatrixRNG().GetRotationMatrix(r, mt);
    ASSERT_EQ(r.size(), 9u);
    ExpectProper(r.data());
    for (std::size_t j = 0; j < 9; ++j) numbers[j].push_back((r[j] + 1) / 2);
  }
  for (const auto& values : numbers) ExpectUniform(values);

  mt.Seed(20);
  QX3DRotationMatrixRNG().GetRotationMatrix(r, mt);
  EXPECT_EQ(
      r, (std::vector<double>{-0x1.ae50525e7d511p-2, -0x1.8689001571018p-1, -0x1.f752fdaf07dbep-2,
                              0x1.55fd3f6ac537ep-1, 0x1.b4c24cfb63a1p-4, -0x1.791a653af65bap-1,
                              0x1.3a79bd9e34acp-1, -0x1.4691074f213c3p-1, 0x1.dbd45cd761386p-2}));
  // At the poles there is only the turn about z, also at the lower one.
  for (const double z : {0.25, 0.75}) {
    Scripted pole({0.25, 0.75, 0.5, 0.75, 0.5, 0.5, z});
    QX3DRotationMatrixRNG().GetRotationMatrix(r, pole);
    EXPECT_TRUE(std::fabs(r[1] - 1) < 1e-15 && r[8] == 1);
  }
}

TEST(QXRandomShuffleOfIndices, SwapsFromTheEnd) {
  Scripted engine;
  EXPECT_TRUE(QXRandomShuffleOfIndices(0, engine).empty());
  EXPECT_EQ(QXRandomShuffleOfIndices(1, engine), std::vector<unsigned long>{0});
  EXPECT_EQ(engine.taken, 0u);
  EXPECT_EQ(QXRandomShuffleOfIndices(10, engine),
            (std::vector<unsigned long>{5, 0, 4, 9, 2, 1, 7, 6, 3, 8}));
  try {
    QXRandomShuffleOfIndices(~0ul, engine);
    ADD_FAILURE();
  } catch (const std::length_error& error) {
    EXPECT_STREQ(error.what(), "vector::reserve");
  }
}
