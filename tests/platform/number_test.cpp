#include <qxsystem/platform/number.h>

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <limits>
#include <tuple>

namespace {

TEST(QXNumber, TellsItsKindsApart) {
  const std::tuple<std::uint64_t, bool, bool> cases[] = {
      {0x8000000000000000, false, false},  // zero
      {0x000fffffffffffff, false, false},  // largest subnormal
      {0x0010000000000000, false, true},   // smallest normal
      {0xffefffffffffffff, false, true},   // largest
      {0x7ff0000000000000, false, false},  // infinity
      {0x7ff0000000000001, true, false},   // signalling NaN
      {0xfff8000000000000, true, false},   // quiet NaN
  };
  for (const auto& [bits, nan, normal] : cases) {
    SCOPED_TRACE(testing::Message() << std::hex << bits);
    double value;
    std::memcpy(&value, &bits, sizeof value);
    EXPECT_TRUE(QXPlatform::QXIsNaN(value) == nan && QXPlatform::QXIsRealNaN(value) == nan);
    EXPECT_EQ(QXPlatform::QXIsNormalNum(value), normal);
  }
  EXPECT_TRUE(QXPlatform::QXIsNaN(-std::numeric_limits<float>::quiet_NaN()));
  EXPECT_FALSE(QXPlatform::QXIsNaN(std::numeric_limits<float>::infinity()));
}

}  // namespace
