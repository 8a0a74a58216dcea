#include <qxsystem/platform/version.h>

#include <algorithm>
#include <mutex>
#include <vector>

#include <qxsystem/platform/ostream.h>

namespace QXPlatform {

namespace {

struct Registry {
  std::mutex mutex;
  std::vector<QXVersion (*)()> getters;
};

// Made on first use, since that is in somebody's static initialiser, and never
// destroyed, since the last use may be in a static destructor.
Registry& TheRegistry() {
  static Registry& registry = *new Registry;
  return registry;
}

}  // namespace

bool QXRegisterVersion(QXVersion (*getter)()) {
  Registry& registry = TheRegistry();
  const std::lock_guard<std::mutex> lock(registry.mutex);
  auto& getters = registry.getters;
  if (getter == nullptr || std::find(getters.begin(), getters.end(), getter) != getters.end())
    return false;
  getters.push_back(getter);
  return true;
}

void QXGetVersions(qxostream& out) {
  Registry& registry = TheRegistry();
  std::unique_lock<std::mutex> lock(registry.mutex);
  const auto getters = registry.getters;
  lock.unlock();  // a getter is foreign code
  for (const auto getter : getters) {
    const QXVersion version = getter();
    out << version.family << ' ' << version.name << ' ' << version.release << '\n';
  }
}

}  // namespace QXPlatform
