// Decimal digits of numbers, for the number and format functions. They are
// written from the last one back.
#pragma once

#include <array>
#include <cstdint>
#include <cstring>

namespace QXSystem {

constexpr unsigned maxFixedPrecision = 19;  // 10^19 is the last power of ten in 64 bits

/// The most bytes that the functions below write: sign, digits, point, decimals.
constexpr unsigned maxNumberLength = 1 + 20 + 1 + maxFixedPrecision;

constexpr auto powersOfTen = [] {
  std::array<std::uint64_t, 20> powers{};
  std::uint64_t power = 1;
  for (auto& p : powers) {
    p = power;
    power *= 10;
  }
  return powers;
}();

constexpr auto digitPairs = [] {
  std::array<char, 200> pairs{};
  for (std::size_t i = 0; i < pairs.size(); ++i)
    pairs[i] = static_cast<char>('0' + (i % 2 == 0 ? i / 20 : i / 2 % 10));
  return pairs;
}();

/// Writes the two digits of `pair` up to `end`, and returns where they begin.
template <class T>
char* WritePairBefore(char* end, T pair) {
  std::memcpy(end - 2, &digitPairs[2 * pair], 2);
  return end - 2;
}

template <class T>
char* WriteDigitsBefore(char* end, T value) {
  for (; value >= 100; value /= 100) end = WritePairBefore(end, value % 100);
  if (value >= 10) return WritePairBefore(end, value);
  *--end = static_cast<char>('0' + value);
  return end;
}

inline std::uint64_t Magnitude(long value) {
  const auto bits = static_cast<std::uint64_t>(value);
  return value < 0 ? -bits : bits;
}

/// The number of bytes that `WriteBefore` writes.
inline unsigned IntegerLength(long value) {
  const std::uint64_t magnitude = Magnitude(value) | 1;  // 0 has one digit, as 1 has
  // 1233 / 4096 is a little more than the decimal logarithm of 2.
  const auto bits = 64 - static_cast<unsigned>(__builtin_clzl(magnitude));
  const unsigned digits = bits * 1233 / 4096;
  return digits + (magnitude >= powersOfTen[digits]) + (value < 0);
}

/// Writes `value` up to `end`, and returns where it begins.
inline char* WriteBefore(char* end, unsigned long value) {
  const auto narrow = static_cast<std::uint32_t>(value);  // divided in half the time
  return narrow == value ? WriteDigitsBefore(end, narrow) : WriteDigitsBefore(end, value);
}

inline char* WriteBefore(char* end, long value) {
  char* begin = WriteBefore(end, Magnitude(value));
  if (value < 0) *--begin = '-';
  return begin;
}

/// Writes `value` with `precision` decimals up to `end`, byte for byte as
/// printf's "%.*f" does in the C locale and under rounding to nearest, and
/// returns where it begins.
///
/// Null, and nothing written, for values from 2^64 on, infinities, NaN and a
/// precision above `maxFixedPrecision`.
char* WriteFixedBefore(char* end, double value, unsigned precision);

}  // namespace QXSystem
