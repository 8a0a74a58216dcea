// Logarithm, exponential and power in plain double arithmetic. The C library's
// round differently on processors that fuse multiply and add, and results that
// go through them would depend on the machine.
//
// Arguments are reduced by tables that are computed here, from the longer
// format; results are within 1.1 units of the last digit.
#pragma once

#include <array>
#include <cfloat>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <limits>

namespace QXMath {

// An unevaluated sum; `low` holds digits that `high` has no room for.
struct TwoParts {
  double high, low;
};

// `a * b`, exactly or nearly so. No FMA is at hand: the factors are cut in half,
// and the halves have exact products.
inline TwoParts Multiply(double a, double b) {
  const auto upperHalf = [](double x) {
    return __builtin_bit_cast(double, __builtin_bit_cast(std::uint64_t, x) & ~0x7FFFFFFul);
  };
  const double a1 = upperHalf(a), a2 = a - a1, b1 = upperHalf(b), b2 = b - b1;
  const double product = a * b;
  return {product, (((a1 * b1 - product) + a1 * b2) + a2 * b1) + a2 * b2};
}

// --- exp

constexpr int ExpSteps = 128;  // of a power of two

// 2^(i / ExpSteps)
inline constexpr std::array<double, ExpSteps> ExpTable = [] {
  constexpr long double Step = 1.0054299011128028213513839559L;  // 2^(1 / 128)
  std::array<double, ExpSteps> powers{};
  long double power = 1;
  for (double& entry : powers) {
    entry = static_cast<double>(power);
    power *= Step;
  }
  return powers;
}();

// 2^exponent, of a normal number
inline double PowerOfTwo(std::int64_t exponent) {
  return __builtin_bit_cast(double, (exponent + 1023) << 52);
}

// exp(x) as fraction times 2^exponent, for |x| < 1400 or so; the fraction is about
// 1 to 2.
struct ScaledExp {
  double fraction;
  std::int64_t exponent;
};
inline ScaledExp ExpInParts(TwoParts x) {
  // x = steps ln 2 / 128 + r, |r| < 0.0028; ln 2 / 128 in two parts, of which the
  // first has an exact product.
  constexpr double RoundingShift = 0x1.8p52;
  const double shifted = x.high * (ExpSteps / 0.69314718055994530942) + RoundingShift;
  const double steps = shifted - RoundingShift;
  constexpr double LnStepHigh = 0x1.62e42feep-8, LnStepLow = 0x1.a39ef35793c76p-40;
  const double r = (x.high - steps * LnStepHigh) - steps * LnStepLow + x.low;
  const double r2 = r * r;
  const double series = r + r2 * ((1 / 2. + r * (1 / 6.)) + r2 * (1 / 24. + r * (1 / 120.)));

  const std::int64_t count = static_cast<std::int64_t>(steps);
  const double power = ExpTable[static_cast<std::size_t>(count & (ExpSteps - 1))];
  return {power + power * series, count >> 7};
}

// exp(x) factor, for |x| < 1400 or so, correct where it overflows or is subnormal.
inline double TimesExp(TwoParts x, double factor) {
  const ScaledExp e = ExpInParts(x);
  // In two, because 2^exponent alone may be no normal number.
  return e.fraction * factor * PowerOfTwo(e.exponent / 2) * PowerOfTwo(e.exponent - e.exponent / 2);
}

// exp(x) for any x.
inline double Exp(TwoParts x) {
  if (std::fabs(x.high) < 700) {
    const ScaledExp e = ExpInParts(x);
    return e.fraction * PowerOfTwo(e.exponent);
  }
  if (x.high > 710) return std::numeric_limits<double>::infinity();
  if (x.high < -746) return 0;
  return x.high == x.high ? TimesExp(x, 1) : x.high;
}
inline double Exp(double x) {
  return Exp(TwoParts{x, 0});
}

// --- log

// An argument is 2^k z, with z from LowestZ to twice that. By their bits such
// numbers fall into 128 intervals, of which one has 1 in its middle.
constexpr std::uint64_t LowestZ = 0x3FE6900000000000;  // about sqrt(1 / 2)
constexpr int IntervalShift = 45;

// For an interval: a short number near the inverse of its middle, and the
// logarithm of one by that. The high part has its last digit at 2^-42, so that to
// add multiples of ln 2 that are cut there is exact.
struct LogEntry {
  double inverse, high, low;
};

constexpr long double LogOf(long double x) {
  const long double t = (x - 1) / (x + 1), t2 = t * t;
  long double power = t, sum = 0;
  for (int k = 1; k < 40; k += 2, power *= t2) sum += power / k;
  return 2 * sum;
}
constexpr double CutAt42(long double x) {
  constexpr long double Unit = 1.0L / (1ll << 42);
  return static_cast<double>(static_cast<long double>(static_cast<long long>(x / Unit)) * Unit);
}

constexpr long double Ln2 = 0.693147180559945309417232121458L;
constexpr double Ln2High = CutAt42(Ln2), Ln2Low = static_cast<double>(Ln2 - Ln2High);

inline constexpr std::array<LogEntry, 128> LogTable = [] {
  std::array<LogEntry, 128> table{};
  for (std::size_t i = 0; i < table.size(); ++i) {
    const double middle =
        __builtin_bit_cast(double, LowestZ + ((2 * i + 1) << (IntervalShift - 1)));
    const int inverse = (static_cast<int>(1024 / middle) + 1) / 2;  // rounded
    const long double log = LogOf(512.0L / inverse);
    table[i].inverse = inverse / 512.;
    table[i].high = CutAt42(log);
    table[i].low = static_cast<double>(log - table[i].high);
  }
  return table;
}();

// A positive normal number as 2^exponent times (1 + r1 + r2) times what `entry` is
// of; r1 + r2 is exact, and below 0.007.
struct ReducedLog {
  const LogEntry& entry;
  double exponent, r1, r2;
};
inline ReducedLog ReduceLog(double x) {
  const std::uint64_t offset = __builtin_bit_cast(std::uint64_t, x) - LowestZ;
  const LogEntry& entry = LogTable[offset >> IntervalShift & 127];
  const std::int64_t exponent = static_cast<std::int64_t>(offset) >> 52;
  const std::uint64_t zBits = (offset & ~0ul >> 12) + LowestZ;
  // Parts of z that have exact products.
  const double z = __builtin_bit_cast(double, zBits);
  const double z1 = __builtin_bit_cast(double, zBits & ~0x3FFul);
  return {entry, static_cast<double>(exponent), z1 * entry.inverse - 1, (z - z1) * entry.inverse};
}

// (log(1 + r) - r + r^2 / 2) / r^3
inline double LogSeries(double r, double r2) {
  return ((1 / 3. - r * (1 / 4.)) + r2 * (1 / 5. - r * (1 / 6.))) +
         r2 * r2 * (1 / 7. - r * (1 / 8.));
}

// The natural logarithm: NaN below 0, -infinity at 0.
inline double Log(double x) {
  if (!(x >= DBL_MIN && x <= DBL_MAX)) {
    if (x > 0 && x < DBL_MIN) return Log(x * 0x1p54) - 54 * static_cast<double>(Ln2);
    if (x == 0) return -std::numeric_limits<double>::infinity();
    return x > 0 ? x : std::numeric_limits<double>::quiet_NaN();
  }
  const ReducedLog reduced = ReduceLog(x);
  const double r = reduced.r1 + reduced.r2, r2 = r * r;
  const double exact = reduced.exponent * Ln2High + reduced.entry.high, sum = exact + r;
  const double rest = ((exact - sum) + r) + (reduced.exponent * Ln2Low + reduced.entry.low);
  return (r * r2 * LogSeries(r, r2) + (rest - 0.5 * r2)) + sum;
}

// The same to some 58 bits, for positive normal numbers.
inline TwoParts LogInParts(double x) {
  const ReducedLog reduced = ReduceLog(x);
  const double r = reduced.r1 + reduced.r2, rRest = (reduced.r1 - r) + reduced.r2;
  const TwoParts r2 = Multiply(r, r);
  const double exact = reduced.exponent * Ln2High + reduced.entry.high;
  const double sum1 = exact + r, rest1 = (exact - sum1) + r;
  const double sum2 = sum1 - 0.5 * r2.high, rest2 = (sum1 - sum2) - 0.5 * r2.high;
  const double rest = (rest1 + rest2) + (reduced.exponent * Ln2Low + reduced.entry.low) +
                      (rRest - r * rRest) + (r * r2.high * LogSeries(r, r2.high) - 0.5 * r2.low);
  const double high = sum2 + rest;
  return {high, (sum2 - high) + rest};
}

// x^y, for an x that is not negative; else NaN.
inline double Pow(double x, double y) {
  if (!(x >= DBL_MIN && x <= DBL_MAX)) return Exp(y * Log(x));
  const TwoParts log = LogInParts(x);
  const double exponent = y * log.high;
  if (!(std::fabs(exponent) < 750)) return Exp(exponent);
  const TwoParts product = Multiply(y, log.high);
  return Exp(TwoParts{product.high, product.low + y * log.low});
}

}  // namespace QXMath
