#include <qxsystem/platform/number.h>

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <limits>

namespace {

double FromBits(std::uint64_t bits) {
  double value;
  std::memcpy(&value, &bits, sizeof value);
  return value;
}

TEST(QXNumber, TellsItsKindsApart) {
  const struct {
    std::uint64_t bits;
    bool nan, normal;
  } cases[] = {
      {0x0000000000000000, false, false},  // zero
      {0x8000000000000000, false, false},  // its negative
      {0x0000000000000001, false, false},  // smallest subnormal
      {0x000fffffffffffff, false, false},  // largest subnormal
      {0x0010000000000000, false, true},   // smallest normal
      {0xbff0000000000000, false, true},   // -1
      {0x7fefffffffffffff, false, true},   // largest
      {0x7ff0000000000000, false, false},  // infinity
      {0xfff0000000000000, false, false},  // its negative
      {0x7ff0000000000001, true, false},   // signalling NaN
      {0xfff8000000000000, true, false},   // quiet NaN, negative
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(testing::Message() << std::hex << c.bits);
    const double value = FromBits(c.bits);
    EXPECT_EQ(QXPlatform::QXIsNaN(value), c.nan);
    EXPECT_EQ(QXPlatform::QXIsRealNaN(value), c.nan);
    EXPECT_EQ(QXPlatform::QXIsNormalNum(value), c.normal);
  }
  EXPECT_TRUE(QXPlatform::QXIsNaN(-std::numeric_limits<float>::quiet_NaN()));
  EXPECT_FALSE(QXPlatform::QXIsNaN(std::numeric_limits<float>::infinity()));
}

}  // namespace
