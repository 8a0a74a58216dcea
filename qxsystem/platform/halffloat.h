// Floating-point numbers of 16 bits, the binary16 of IEEE 754: 11 significant
// bits, magnitudes up to 65504 and down to 2^-24.
#pragma once

#include <cstdint>

#include <qxsystem/platform/export.h>

namespace QXPlatform {

/// A 16-bit floating-point number, for storage: arithmetic is that of `float`,
/// to which it converts without loss.
class QXPLATFORM_API QXHalfFloat {
public:
  constexpr QXHalfFloat() = default;

  /// The nearest half, of two equally near ones the even; from 65520 on an
  /// infinity. A NaN stays one, with its sign and the upper bits of its
  /// payload. A `double` is rounded to `float` first.
  constexpr QXHalfFloat(float value) : bits_(Round(__builtin_bit_cast(std::uint32_t, value))) {}

  constexpr operator float() const { return __builtin_bit_cast(float, Widen(bits_)); }

  /// The stored form: sign, 5 bits of exponent, 10 bits of fraction.
  constexpr std::uint16_t GetBits() const { return bits_; }
  static constexpr QXHalfFloat FromBits(std::uint16_t bits) {
    QXHalfFloat half;
    half.bits_ = bits;
    return half;
  }

private:
  static constexpr std::uint16_t Round(std::uint32_t bits);
  static constexpr std::uint32_t Widen(std::uint16_t bits);

  // Bit patterns of floats where the forms meet.
  static constexpr std::uint32_t infinity = 0x7f800000;
  static constexpr std::uint32_t overflow = 0x477ff000;       // 65520
  static constexpr std::uint32_t leastNormal = 0x38800000;    // 2^-14
  static constexpr std::uint32_t roundsToZero = 0x33000000;   // 2^-25
  static constexpr std::uint32_t exponentShift = 0x38000000;  // 127 - 15, as an exponent
  static constexpr std::uint32_t halfInfinity = 0x7c00;

  std::uint16_t bits_ = 0;
};

constexpr std::uint16_t QXHalfFloat::Round(std::uint32_t bits) {
  const std::uint32_t sign = bits >> 16 & 0x8000;
  const std::uint32_t magnitude = bits & 0x7fffffff;
  std::uint32_t half = 0;
  if (magnitude > infinity) {
    // A payload that lies wholly below the upper bits must not make an infinity.
    const std::uint32_t payload = magnitude >> 13 & 0x3ff;
    half = halfInfinity | (payload != 0 ? payload : 0x200);
  } else if (magnitude >= overflow) {
    half = halfInfinity;
  } else if (magnitude >= leastNormal) {
    // Just below one half of the last place, and one more for an odd result. A
    // carry runs into the exponent, where it belongs.
    half = (magnitude - exponentShift + 0xfff + (magnitude >> 13 & 1)) >> 13;
  } else if (magnitude > roundsToZero) {
    // Subnormal: the significand in units of 2^-24, rounded alike.
    const std::uint32_t significand = (magnitude & 0x7fffff) | 0x800000;
    const std::uint32_t shift = 126 - (magnitude >> 23);
    half = (significand + (1u << (shift - 1)) - 1 + (significand >> shift & 1)) >> shift;
  }
  return static_cast<std::uint16_t>(sign | half);
}

constexpr std::uint32_t QXHalfFloat::Widen(std::uint16_t bits) {
  const std::uint32_t sign = (bits & 0x8000u) << 16;
  const std::uint32_t magnitude = bits & 0x7fffu;
  if (magnitude >= halfInfinity) return sign | infinity | (magnitude & 0x3ff) << 13;
  if (magnitude >= 0x400) return sign | ((magnitude << 13) + exponentShift);
  // Subnormal here, normal there: the product is exact.
  return sign | __builtin_bit_cast(std::uint32_t, static_cast<float>(magnitude) * 0x1p-24f);
}

static_assert(sizeof(QXHalfFloat) == 2);

}  // namespace QXPlatform
