// Random numbers: engines, which hold a stream, and distributions, which draw
// from the engine that they are given and hold only their parameters.
//
// The same engine in the same state gives the same values on every processor,
// bit for bit. Engines and distributions must not be shared between threads.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include <qxsystem/core/export.h>

namespace QXMath {

/// A stream of random numbers.
class QXSYSTEM_API QXRanNumEngine {
public:
  QXRanNumEngine() = default;
  QXRanNumEngine(const QXRanNumEngine&) = default;
  QXRanNumEngine& operator=(const QXRanNumEngine&) = default;
  virtual ~QXRanNumEngine();

  /// A whole number; distributions use its low 32 bits.
  virtual std::uint64_t getUnsigned() = 0;

  /// A number in [0, 1).
  virtual double getUnitDouble() = 0;
};

/// The parameters of MT19937-64. Source: Nishimura, ACM TOMACS 10 (2000) 348-357.
struct QXSYSTEM_API Mt64Traits {
  static constexpr std::size_t Size = 312, Middle = 156;
  static constexpr std::uint64_t LowMask = 0x7FFFFFFF;  // the bits below the split
  static constexpr std::uint64_t Matrix = 0xB5026F5AA96619E9;
  static constexpr std::uint64_t SeedFactor = 6364136223846793005;

  static constexpr std::uint64_t Temper(std::uint64_t word) {
    word ^= word >> 29 & 0x5555555555555555;
    word ^= word << 17 & 0x71D67FFFEDA60000;
    word ^= word << 37 & 0xFFF7EEE000000000;
    return word ^ word >> 43;
  }
};

/// A Mersenne Twister of 64-bit words.
template <class Traits>
class QXSYSTEM_API MtRng : public QXRanNumEngine {
public:
  explicit MtRng(std::uint64_t seed = 5489);

  /// Starts over, as a new engine with this seed.
  void Seed(std::uint64_t seed);

  /// The next word of the stream, all 64 bits of it. So is what the next two
  /// functions give made of one word.
  std::uint64_t Next() {
    if (left_ == 0) Refill();
    return words_[Traits::Size - left_--];
  }

  /// The upper 31 bits of the next word.
  std::uint64_t getUnsigned() override { return Next() >> 33; }

  /// The upper 53 bits of the next word, as a fraction.
  double getUnitDouble() override { return static_cast<double>(Next() >> 11) * 0x1p-53; }

private:
  void Refill();

  std::uint64_t state_[Traits::Size];
  std::uint64_t words_[Traits::Size];  // the same as they are given, made all at a time
  std::size_t left_;                   // of them, its last ones, that have not been given
};

extern template class MtRng<Mt64Traits>;

/// Whole numbers from `low` to `high`, both included.
///
/// The remainder of 31 bits of the engine: a range that is not small against 2^31
/// is not covered evenly, and of a larger one only the lower part. With
/// `high` = `low` - 1 the value is `low`.
class QXSYSTEM_API QXUniformIntRNG {
public:
  QXUniformIntRNG(int low, int high) : low_(low), high_(high) {}
  void SetParams(int low, int high) { *this = QXUniformIntRNG(low, high); }
  int operator()(QXRanNumEngine& engine) const;

private:
  int low_, high_;
};

/// Numbers evenly from `low` to `high`.
class QXSYSTEM_API QXUniformDoubleRNG {
public:
  QXUniformDoubleRNG(double low, double high) : low_(low), high_(high) {}
  void SetParams(double low, double high) { *this = QXUniformDoubleRNG(low, high); }
  double operator()(QXRanNumEngine& engine) const;

private:
  double low_, high_;
};

/// The normal distribution, by the polar method. It makes two values at a time
/// and keeps the second one, unscaled, for the next call.
/// Source: Marsaglia and Bray, SIAM Review 6 (1964) 260-264.
class QXSYSTEM_API QXGaussianRNG {
public:
  QXGaussianRNG(double mean, double sigma) : mean_(mean), sigma_(sigma) {}

  /// A value that is kept stays, and gets the new parameters when it is given.
  void SetParams(double mean, double sigma) { mean_ = mean, sigma_ = sigma; }
  double operator()(QXRanNumEngine& engine);

private:
  double mean_, sigma_;
  double spare_ = 0;
  bool hasSpare_ = false;
};

/// The gamma distribution of mean `shape` times `scale`; `shape` must be positive.
/// Sources: for shapes from 1 Cheng, Applied Statistics 26 (1977) 71-75, below 1
/// rejection from Weibull's distribution, Devroye, Non-Uniform Random Variate
/// Generation (1986), IX.3.4.
class QXSYSTEM_API QXGammaRNG {
public:
  QXGammaRNG(double shape, double scale) : shape_(shape), scale_(scale) { Setup(); }
  void SetParams(double shape, double scale) { *this = QXGammaRNG(shape, scale); }
  double operator()(QXRanNumEngine& engine) const;

private:
  void Setup();
  template <class Engine>
  double Cheng(Engine& engine) const;
  template <class Engine>
  double Weibull(Engine& engine) const;

  // In the letters of the sources. Of these some serve for shapes from 1 and
  // others below.
  double shape_, scale_;
  double inverse_ = 0;  // of lambda, or of the shape
  double b_ = 0, c_ = 0, e_ = 0;
};

/// Student's t distribution, moved and stretched.
class QXSYSTEM_API QXStudentsTRNG {
public:
  QXStudentsTRNG(double location, double scale, double dof);
  void SetParams(double location, double scale, double dof);
  double operator()(QXRanNumEngine& engine);

private:
  double location_, scale_, dof_;
  QXGaussianRNG gaussian_;
  QXGammaRNG gamma_;
};

/// The chi-squared distribution.
class QXSYSTEM_API QXChiSquaredRNG {
public:
  explicit QXChiSquaredRNG(double dof) : gamma_(dof / 2, 1) {}
  void SetParams(double dof) { *this = QXChiSquaredRNG(dof); }
  double operator()(QXRanNumEngine& engine) const;

private:
  QXGammaRNG gamma_;
};

/// Snedecor's F distribution with `d1` and `d2` degrees of freedom.
class QXSYSTEM_API QXSnedecorsFRNG {
public:
  QXSnedecorsFRNG(double d1, double d2)
      : d1_(d1), d2_(d2), gamma1_(d1 / 2, 1), gamma2_(d2 / 2, 1) {}
  void SetParams(double d1, double d2) { *this = QXSnedecorsFRNG(d1, d2); }
  double operator()(QXRanNumEngine& engine) const;

private:
  double d1_, d2_;
  QXGammaRNG gamma1_, gamma2_;
};

/// The beta distribution.
class QXSYSTEM_API QXBetaRNG {
public:
  QXBetaRNG(double a, double b) : gamma1_(a, 1), gamma2_(b, 1) {}
  void SetParams(double a, double b) { *this = QXBetaRNG(a, b); }
  double operator()(QXRanNumEngine& engine) const;

private:
  QXGammaRNG gamma1_, gamma2_;
};

/// Gumbel's distribution, of largest values.
class QXSYSTEM_API QXGumbelRNG {
public:
  QXGumbelRNG(double location, double scale) : location_(location), scale_(scale) {}
  void SetParams(double location, double scale) { *this = QXGumbelRNG(location, scale); }
  double operator()(QXRanNumEngine& engine) const;

private:
  double location_, scale_;
};

/// The generalised distribution of extreme values; with `shape` 0 Gumbel's.
class QXSYSTEM_API QXGenExtremeValRNG {
public:
  QXGenExtremeValRNG(double location, double scale, double shape)
      : location_(location), scale_(scale), shape_(shape) {}
  void SetParams(double location, double scale, double shape) {
    *this = QXGenExtremeValRNG(location, scale, shape);
  }
  double operator()(QXRanNumEngine& engine) const;

private:
  double location_, scale_, shape_;
};

/// Points on the sphere of radius 1, of `dimension` dimensions: 1 is the circle,
/// 2 the surface of a ball.
class QXSYSTEM_API QXUniformOnUnitSphereRNG {
public:
  explicit QXUniformOnUnitSphereRNG(unsigned dimension) : dimension_(dimension) {}
  void SetParams(unsigned dimension) { dimension_ = dimension; }

  /// Replaces what `out` holds by the `dimension` + 1 coordinates of a point.
  void GetRandomPoint(std::vector<double>& out, QXRanNumEngine& engine) const;

private:
  unsigned dimension_;
};

/// Rotations in space, each as likely as any other.
/// Source: Arvo, in Graphics Gems III (1992) 117-120.
class QXSYSTEM_API QX3DRotationMatrixRNG {
public:
  void SetParams() {}

  /// Replaces what `out` holds by the 9 numbers of a proper rotation, row-major.
  void GetRotationMatrix(std::vector<double>& out, QXRanNumEngine& engine) const;
};

/// The numbers 0 to n - 1 in random order; up to 2^31 of them, each order is about
/// as likely as any other. Throws `std::length_error` for more than a vector holds.
QXSYSTEM_API std::vector<unsigned long> QXRandomShuffleOfIndices(unsigned long n,
                                                                 QXRanNumEngine& engine);

}  // namespace QXMath
