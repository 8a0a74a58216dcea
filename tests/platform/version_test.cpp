#include <qxsystem/platform/version.h>

#include <gtest/gtest.h>

#include <qxsystem/platform/ostream.h>

using namespace QXPlatform;

namespace {

QXVersion First() {
  return {"qxtoolkit", "First", "1.2.3"};
}
QXVersion Second() {
  return {"other", "Second", "20.1"};
}

// As a library does it, before any other initialiser may have run.
const bool registered = QXRegisterVersion(First);

}  // namespace

TEST(QXGetVersions, PrintsEachToolkitOnce) {
  EXPECT_TRUE(registered);
  EXPECT_TRUE(QXRegisterVersion(Second));
  EXPECT_FALSE(QXRegisterVersion(First));
  EXPECT_FALSE(QXRegisterVersion(nullptr));
  qxosstream out;
  QXGetVersions(out);
  const std::string text = out.str();
  EXPECT_NE(text.find("qxtoolkit First 1.2.3\nother Second 20.1\n"), std::string::npos) << text;
  EXPECT_EQ(text.find("First"), text.rfind("First"));
}
