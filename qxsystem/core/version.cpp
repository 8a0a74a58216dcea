#include <qxsystem/core/version.h>

namespace QXSystem {

unsigned QXSystemGetVersion() {
  return 20220607;
}
const char* QXSystemGetArch() {
  return "linux-x64";
}
const char* QXSystemGetPlatform() {
  return "linux-g++7.x-x64";
}
const char* QXSystemGetRelease() {
  return QXSystemGetNonDebugRelease();
}
const char* QXSystemGetNonDebugRelease() {
  return "3.3.0.1";
}
const char* QXSystemGetDebugRelease() {
  return "3.3.0.1 debug";
}
const char* QXSystemGetConfigureArgs() {
  return "RELEASE";
}

QXPlatform::QXVersion QXSystemVersion() {
  return {"qxtoolkit", "QXSystem", QXSystemGetRelease()};
}

namespace {
[[maybe_unused]] const bool registered = QXPlatform::QXRegisterVersion(&QXSystemVersion);
}

}  // namespace QXSystem
