// Tests of floating-point numbers by their bits, so that they hold in programs
// built with -ffast-math too, where a compiler may assume there is no NaN.
#pragma once

#include <cstdint>

namespace QXPlatform {

/// True for a NaN, quiet or signalling, of either sign.
constexpr bool QXIsNaN(float value) {
  return (__builtin_bit_cast(std::uint32_t, value) & 0x7fffffff) > 0x7f800000;
}
constexpr bool QXIsNaN(double value) {
  return (__builtin_bit_cast(std::uint64_t, value) & 0x7fffffffffffffff) > 0x7ff0000000000000;
}

/// The same as `QXIsNaN`.
constexpr bool QXIsRealNaN(double value) {
  return QXIsNaN(value);
}

/// True for a normal finite number: no zero, subnormal, infinity or NaN.
constexpr bool QXIsNormalNum(double value) {
  const std::uint64_t exponent = __builtin_bit_cast(std::uint64_t, value) >> 52 & 0x7ff;
  return exponent != 0 && exponent != 0x7ff;
}

}  // namespace QXPlatform
