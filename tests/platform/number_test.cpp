#include <qxsystem/platform/number.h>

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <limits>

namespace {

TEST(QXNumber, TellsItsKindsApart) {
  const struct {
    std::uint64_t bits;
    bool nan, normal;
  } cases[] = {
      {0x8000000000000000, false, false},  // zero
      {0x000fffffffffffff, false, false},  // largest subnormal
      {0x0010000000000000, false, true},   // smallest normal
      {0xffefffffffffffff, false, true},   // largest
      {0x7ff0000000000000, false, false},  // infinity
      {0x7ff0000000000001, true, false},   // signalling NaN
      {0xfff8000000000000, true, false},   // quiet NaN
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(testing::Message() << std::hex << c.bits);
    double value;
    std::memcpy(&value, &c.bits, sizeof value);
    EXPECT_TRUE(QXPlatform::QXIsNaN(value) == c.nan && QXPlatform::QXIsRealNaN(value) == c.nan);
    EXPECT_EQ(QXPlatform::QXIsNormalNum(value), c.normal);
  }
  EXPECT_TRUE(QXPlatform::QXIsNaN(-std::numeric_limits<float>::quiet_NaN()));
  EXPECT_FALSE(QXPlatform::QXIsNaN(std::numeric_limits<float>::infinity()));
}

}  // namespace
