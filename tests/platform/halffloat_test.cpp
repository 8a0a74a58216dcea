#include <qxsystem/platform/halffloat.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cfloat>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <type_traits>

using namespace QXPlatform;

static_assert(std::is_trivially_copyable_v<QXHalfFloat>);
static_assert(QXHalfFloat(1.0f).GetBits() == 0x3c00);

namespace {

// The value by the definition of the format; not for infinities and NaNs.
double Defined(unsigned bits) {
  const int exponent = static_cast<int>(bits >> 10 & 31);
  const int fraction = static_cast<int>(bits & 1023);
  const double sign = bits & 0x8000 ? -1 : 1;
  return sign * std::ldexp(exponent ? 1024 + fraction : fraction, std::max(exponent, 1) - 25);
}

std::uint16_t Bits(float value) {
  return QXHalfFloat(value).GetBits();
}

}  // namespace

TEST(QXHalfFloat, ConvertsEveryPatternToFloatAndBack) {
  for (unsigned bits = 0; bits < 0x10000; ++bits) {
    const float value = QXHalfFloat::FromBits(static_cast<std::uint16_t>(bits));
    if ((bits & 0x7fff) < 0x7c00)
      ASSERT_EQ(static_cast<double>(value), Defined(bits)) << bits;
    else
      ASSERT_TRUE((bits & 0x3ff) == 0 ? std::isinf(value) : std::isnan(value)) << bits;
    ASSERT_TRUE(std::signbit(value) == (bits >> 15 != 0) && Bits(value) == bits) << bits;
  }
}

// Between any two neighbours the middle, which a float can hold, goes to the
// even one, and the floats beside it to the nearer one.
TEST(QXHalfFloat, RoundsToNearestEven) {
  for (unsigned bits = 0; bits < 0x7c00; ++bits) {
    const double next = bits == 0x7bff ? 65536 : Defined(bits + 1);
    const auto middle = static_cast<float>((Defined(bits) + next) / 2);
    const float above = std::nextafter(middle, 1e30f), below = std::nextafter(middle, 0.0f);
    ASSERT_EQ(Bits(middle), bits + bits % 2) << bits;
    ASSERT_TRUE(Bits(above) == bits + 1 && Bits(below) == bits) << bits;
    ASSERT_EQ(Bits(-above), 0x8000 | (bits + 1)) << bits;
  }
  EXPECT_TRUE(Bits(FLT_MAX) == 0x7c00 && Bits(FLT_TRUE_MIN) == 0);
}

TEST(QXHalfFloat, KeepsANaNWhosePayloadDoesNotFit) {
  for (const std::uint32_t bits : {0x7f800001u, 0xff801fffu}) {
    float value;
    std::memcpy(&value, &bits, sizeof value);
    EXPECT_EQ(Bits(value), 0x7e00 | bits >> 31 << 15);
  }
}
