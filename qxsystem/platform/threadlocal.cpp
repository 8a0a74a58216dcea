#include <qxsystem/platform/threadlocal.h>

#include <atomic>

namespace QXPlatform {

__thread QXThreadLocalHit QXLastThreadLocalHit = {};

std::uint64_t QXNextThreadLocalSerial() {
  static std::atomic<std::uint64_t> last{0};
  return last.fetch_add(1, std::memory_order_relaxed) + 1;
}

}  // namespace QXPlatform
