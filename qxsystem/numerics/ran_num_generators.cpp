#include <qxsystem/numerics/ran_num_generators.h>

#include <algorithm>
#include <cmath>
#include <numeric>
#include <typeinfo>
#include <utility>

#include <qxsystem/numerics/elementary_private.h>

namespace QXMath {

QXRanNumEngine::~QXRanNumEngine() = default;

// --- The Mersenne Twister

template <class Traits>
MtRng<Traits>::MtRng(std::uint64_t seed) {
  Seed(seed);
}

template <class Traits>
void MtRng<Traits>::Seed(std::uint64_t seed) {
  std::uint64_t word = seed;
  for (std::size_t i = 0; i < Traits::Size; ++i) {
    if (i > 0) word = Traits::SeedFactor * (word ^ word >> 62) + i;
    state_[i] = word;
  }
  left_ = 0;
}

template <class Traits>
void MtRng<Traits>::Refill() {
  const auto twist = [](std::uint64_t first, std::uint64_t second, std::uint64_t middle) {
    const std::uint64_t word = (first & ~Traits::LowMask) | (second & Traits::LowMask);
    return middle ^ word >> 1 ^ (-(word & 1) & Traits::Matrix);
  };
  constexpr std::size_t Size = Traits::Size, Middle = Traits::Middle;
  std::uint64_t* const s = state_;
  for (std::size_t i = 0; i < Size - Middle; ++i) s[i] = twist(s[i], s[i + 1], s[i + Middle]);
  for (std::size_t i = Size - Middle; i < Size - 1; ++i)
    s[i] = twist(s[i], s[i + 1], s[i + Middle - Size]);
  s[Size - 1] = twist(s[Size - 1], s[0], s[Middle - 1]);
  for (std::size_t i = 0; i < Size; ++i) words_[i] = Traits::Temper(s[i]);
  left_ = Size;
}

template class MtRng<Mt64Traits>;

// --- Distributions

namespace {

constexpr double Pi = 3.14159265358979323846;

using Engine = QXRanNumEngine;
using Mt = MtRng<Mt64Traits>;

double UnitDouble(Engine& engine) {
  return engine.getUnitDouble();
}
double UnitDouble(Mt& engine) {
  return engine.Mt::getUnitDouble();
}

// Calls `draw` with the engine, as what it is if that is our own one: most take a
// few numbers at a time, and shall not pay for a virtual call with each.
template <class Draw>
auto WithEngine(Engine& engine, Draw draw) {
  return typeid(engine) == typeid(Mt) ? draw(static_cast<Mt&>(engine)) : draw(engine);
}

// A number in (0, 1).
double OpenUnit(Engine& engine) {
  double u;
  do u = engine.getUnitDouble();
  while (u == 0 || u == 1);
  return u;
}

}  // namespace

int QXUniformIntRNG::operator()(QXRanNumEngine& engine) const {
  const std::int64_t range = std::int64_t{high_} + 1 - low_;
  if (range == 0) return low_;
  return static_cast<int>(static_cast<std::int32_t>(engine.getUnsigned()) % range + low_);
}

double QXUniformDoubleRNG::operator()(QXRanNumEngine& engine) const {
  return engine.getUnitDouble() * (high_ - low_) + low_;
}

double QXGaussianRNG::operator()(QXRanNumEngine& engine) {
  double value = spare_;
  if (!hasSpare_)
    value = WithEngine(engine, [this](auto& e) {
      double x, y, s;
      do {
        x = 2 * UnitDouble(e) - 1;
        y = 2 * UnitDouble(e) - 1;
        s = x * x + y * y;
      } while (s > 1 || s == 0);
      const double f = std::sqrt(-2 * Log(s) / s);
      spare_ = x * f;
      return y * f;
    });
  hasSpare_ = !hasSpare_;  // not earlier: an engine may throw
  return value * sigma_ + mean_;
}

void QXGammaRNG::Setup() {
  if (shape_ >= 1) {
    const double lambda = std::sqrt(2 * shape_ - 1);
    inverse_ = 1 / lambda;
    b_ = shape_ - 1.3862943611198906;  // ln 4
    c_ = shape_ + lambda;
  } else {
    inverse_ = 1 / shape_;
    e_ = (1 - shape_) * Pow(shape_, shape_ / (1 - shape_));
  }
}

// In both methods the loop goes on for what is refused, not for what is not
// accepted: a shape without a distribution ends in NaN, not in a loop for ever.

template <class E>
double QXGammaRNG::Cheng(E& engine) const {
  constexpr double D = 2.504077396776274;  // 1 + ln 4.5
  double x, y, z;
  do {
    double u1, u2;
    do {
      u1 = UnitDouble(engine);
      u2 = UnitDouble(engine);
    } while (u2 == 0 || u2 == 1);
    const double v = inverse_ * Log(u2 / (1 - u2));
    x = shape_ * Exp(v);
    z = u2 * u2 * u1;
    y = v * c_ - x + b_;
  } while (4.5 * z - D > y && Log(z) > y);
  return x;
}

template <class E>
double QXGammaRNG::Weibull(E& engine) const {
  double x, sum;
  do {
    double u1, u2;
    do {
      u1 = UnitDouble(engine);
      u2 = UnitDouble(engine);
    } while (u1 == 0 || u2 == 0);
    const double p = -Log(u1);
    x = inverse_ == 2 ? p * p : Pow(p, inverse_);
    sum = p - Log(u2);
  } while (e_ + x > sum);
  return x;
}

double QXGammaRNG::operator()(QXRanNumEngine& engine) const {
  return WithEngine(engine, [this](auto& e) { return shape_ >= 1 ? Cheng(e) : Weibull(e); }) *
         scale_;
}

QXStudentsTRNG::QXStudentsTRNG(double location, double scale, double dof)
    : location_(location), scale_(scale), dof_(dof), gaussian_(0, 1), gamma_(dof / 2, 1) {}

void QXStudentsTRNG::SetParams(double location, double scale, double dof) {
  location_ = location, scale_ = scale, dof_ = dof;
  gamma_.SetParams(dof / 2, 1);
}

double QXStudentsTRNG::operator()(QXRanNumEngine& engine) {
  const double z = gaussian_(engine), g = gamma_(engine);
  return std::sqrt(dof_ / (2 * g)) * z * scale_ + location_;
}

double QXChiSquaredRNG::operator()(QXRanNumEngine& engine) const {
  return 2 * gamma_(engine);
}

double QXSnedecorsFRNG::operator()(QXRanNumEngine& engine) const {
  const double g1 = gamma1_(engine), g2 = gamma2_(engine);
  return 2 * g1 / (2 * g2 / d2_ * d1_);
}

double QXBetaRNG::operator()(QXRanNumEngine& engine) const {
  const double g1 = gamma1_(engine), g2 = gamma2_(engine);
  return g1 / (g2 + g1);
}

double QXGumbelRNG::operator()(QXRanNumEngine& engine) const {
  return location_ - scale_ * Log(-Log(OpenUnit(engine)));
}

double QXGenExtremeValRNG::operator()(QXRanNumEngine& engine) const {
  const double l = Log(-Log(OpenUnit(engine)));
  if (shape_ == 0) return location_ - l * scale_;
  return location_ + scale_ * (Exp(-l * shape_) - 1) / shape_;
}

void QXUniformOnUnitSphereRNG::GetRandomPoint(std::vector<double>& out,
                                              QXRanNumEngine& engine) const {
  out.assign(std::size_t{dimension_} + 1, 0);
  double squares = 0;
  for (double& x : out) {
    x = QXGaussianRNG(0, 1)(engine);  // anew, so that no point depends on the one before
    squares += x * x;
  }
  const double length = std::sqrt(squares);
  for (double& x : out) x /= length;
}

void QX3DRotationMatrixRNG::GetRotationMatrix(std::vector<double>& out,
                                              QXRanNumEngine& engine) const {
  // The functions for double depend on the processor.
  const long double t = QXUniformDoubleRNG(0, 2 * Pi)(engine);
  const double c = static_cast<double>(std::cos(t)), s = static_cast<double>(std::sin(t));
  out = {c, s, 0, -s, c, 0, 0, 0, 1};

  std::vector<double> point;
  QXUniformOnUnitSphereRNG(2).GetRandomPoint(point, engine);
  const double x = point[0], y = point[1], z = point[2], r2 = x * x + y * y;
  constexpr double AtPole = 4.930380657631324e-28;
  if (r2 < AtPole) return;

  // The turn about z, followed by the one that brings z to the point.
  const double r = std::sqrt(r2), e[2] = {-y / r, x / r}, f[2] = {x / r, y / r};
  for (double* row = out.data(); row != out.data() + 6; row += 3) {
    const double a = f[0] * row[0] + f[1] * row[1], b = e[0] * row[0] + e[1] * row[1];
    row[0] = f[0] * z * a + e[0] * b;
    row[1] = f[1] * z * a + e[1] * b;
    row[2] = -std::sqrt(std::max(0.0, 1 - z * z)) * a;
  }
  std::copy(point.begin(), point.end(), out.begin() + 6);
}

std::vector<unsigned long> QXRandomShuffleOfIndices(unsigned long n, QXRanNumEngine& engine) {
  std::vector<unsigned long> indices;
  indices.reserve(n);
  indices.resize(n);
  std::iota(indices.begin(), indices.end(), 0);
  const auto swapWithLast = [&](auto i) {  // division takes longer for wider types
    std::swap(indices[static_cast<std::uint32_t>(engine.getUnsigned()) % i], indices[i - 1]);
  };
  constexpr unsigned long Narrow = 0xFFFFFFFF;
  unsigned long i = n;
  for (; i > Narrow; --i) swapWithLast(i);
  for (; i >= 2; --i) swapWithLast(static_cast<std::uint32_t>(i));
  return indices;
}

}  // namespace QXMath
