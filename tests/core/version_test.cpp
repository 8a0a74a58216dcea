#include <qxsystem/core/version.h>

#include <gtest/gtest.h>

#include <qxsystem/platform/ostream.h>

namespace QXSystem {
namespace {

TEST(QXSystemVersion, IsRegisteredAtLoad) {
  QXPlatform::qxosstream out;
  QXPlatform::QXGetVersions(out);
  EXPECT_EQ(out.str(), "qxtoolkit QXSystem " + QXSystemVersion().release + '\n');
  EXPECT_EQ(QXSystemVersion().release, "3.3.0.1");
}

}  // namespace
}  // namespace QXSystem
