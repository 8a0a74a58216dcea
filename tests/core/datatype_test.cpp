#include <qxsystem/core/datatype.h>

#include <gtest/gtest.h>

namespace QXSystem {
namespace {

TEST(QXGetDataType, HashesNamesAsPublished) {
  // The first test vectors that the authors of FNV-1a give for 64 bits.
  EXPECT_EQ(detail::HashTypeName(""), 0xcbf29ce484222325u);
  EXPECT_EQ(detail::HashTypeName("a"), 0xaf63dc4c8601ec8cu);
  EXPECT_EQ(detail::HashTypeName("foobar"), 0x85944171f73967e8u);
  EXPECT_EQ(detail::HashTypeName("*foobar"), detail::HashTypeName("foobar"));
  EXPECT_NE(detail::HashTypeName("**"), detail::HashTypeName("*"));
  EXPECT_EQ(detail::HashTypeName("\xff"), 0xaf64724c8602eb6eu) << "bytes are unsigned";
  EXPECT_EQ(QXGetDataType<int>(),
            reinterpret_cast<const void*>(detail::HashTypeName(typeid(int).name())));
}

}  // namespace
}  // namespace QXSystem
