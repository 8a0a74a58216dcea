#include <qxsystem/core/version.h>

#include <gtest/gtest.h>

#include <qxsystem/platform/ostream.h>

namespace QXSystem {
namespace {

// Programs and stored headers rest on these; they are the same in every build.
TEST(QXSystemVersion, HasItsConstantsAndIsRegisteredAtLoad) {
  QXPlatform::qxosstream out;
  QXPlatform::QXGetVersions(out);
  EXPECT_EQ(out.str(), "qxtoolkit QXSystem 3.3.0.1\n");
  EXPECT_EQ(QXSystemVersion().release, "3.3.0.1");
  EXPECT_EQ(QXSystemGetVersion(), 20220607);
  EXPECT_EQ(std::string(QXSystemGetArch()), "linux-x64");
  EXPECT_EQ(std::string(QXSystemGetPlatform()), "linux-g++7.x-x64");
  EXPECT_EQ(std::string(QXSystemGetNonDebugRelease()), "3.3.0.1");
  EXPECT_EQ(std::string(QXSystemGetRelease()), "3.3.0.1");
  EXPECT_EQ(std::string(QXSystemGetDebugRelease()), "3.3.0.1 debug");
  EXPECT_EQ(std::string(QXSystemGetConfigureArgs()), "RELEASE");
}

}  // namespace
}  // namespace QXSystem
