#include <qxsystem/util/digits_private.h>

namespace QXSystem {

namespace {

__extension__ using Uint128 = unsigned __int128;

// The parts of a non-negative number whose decimals are counted in units of
// 10^-precision.
struct Decimal {
  std::uint64_t whole;
  std::uint64_t fraction;
};

// mantissa * 2^-shift to the nearest unit, a tie to the even one, as printf
// rounds. The mantissa has 53 bits and the shift is above 0.
Decimal Round(std::uint64_t mantissa, unsigned shift, unsigned precision) {
  Decimal result{};
  std::uint64_t rest = mantissa;
  if (shift < 64) {
    result.whole = mantissa >> shift;
    rest = mantissa & ((std::uint64_t{1} << shift) - 1);
  }
  if (shift >= 128) return result;  // below half a unit: the product has at most 117 bits

  const Uint128 scaled = Uint128{rest} * powersOfTen[precision];
  const Uint128 beyond = scaled & ((Uint128{1} << shift) - 1);
  const Uint128 half = Uint128{1} << (shift - 1);
  result.fraction = static_cast<std::uint64_t>(scaled >> shift);
  const bool odd = ((precision == 0 ? result.whole : result.fraction) & 1) != 0;
  if (beyond > half || (beyond == half && odd)) ++result.fraction;
  if (result.fraction == powersOfTen[precision]) {
    result.fraction = 0;
    ++result.whole;
  }
  return result;
}

}  // namespace

char* WriteFixedBefore(char* end, double value, unsigned precision) {
  constexpr unsigned mantissaBits = 52;
  constexpr unsigned bias = 1023;
  std::uint64_t bits;
  std::memcpy(&bits, &value, sizeof bits);
  const auto exponent = static_cast<unsigned>(bits >> mantissaBits) & 0x7FF;
  if (exponent >= bias + 64 || precision > maxFixedPrecision) return nullptr;

  // value = mantissa * 2^(exponent - bias - 52). Zero and subnormal numbers have
  // no hidden bit, but with it they are as far below any decimal.
  const std::uint64_t hidden = std::uint64_t{1} << mantissaBits;
  const std::uint64_t mantissa = hidden | (bits & (hidden - 1));
  const Decimal decimal = exponent >= bias + mantissaBits
                              ? Decimal{mantissa << (exponent - bias - mantissaBits), 0}
                              : Round(mantissa, bias + mantissaBits - exponent, precision);

  if (precision != 0) {
    std::uint64_t fraction = decimal.fraction;
    char* const point = end - precision - 1;
    for (; end - point > 2; fraction /= 100) end = WritePairBefore(end, fraction % 100);
    if (end - point == 2) *--end = static_cast<char>('0' + fraction);
    *--end = '.';
  }
  end = WriteBefore(end, decimal.whole);
  if (bits >> 63 != 0) *--end = '-';
  return end;
}

}  // namespace QXSystem
