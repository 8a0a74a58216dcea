#include <qxsystem/platform/clock.h>

namespace QXPlatform {

void QXGetTimeOfDay(timeval* now) {
  ::gettimeofday(now, nullptr);
}

bool QXCurrentTime(std::tm* now) {
  const std::time_t seconds = std::time(nullptr);
  if (now == nullptr || seconds == static_cast<std::time_t>(-1)) return false;
  ::tzset();  // localtime_r alone would miss a time zone that was set meanwhile
  return ::localtime_r(&seconds, now) != nullptr;
}

}  // namespace QXPlatform
