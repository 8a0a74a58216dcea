// The wall clock.
#pragma once

#include <sys/time.h>

#include <ctime>

#include <qxsystem/platform/export.h>

namespace QXPlatform {

/// Stores the seconds and microseconds since the beginning of 1970, UTC.
QXPLATFORM_API void QXGetTimeOfDay(timeval* now);

/// Stores the local time. False when none can be had, or `now` is null.
QXPLATFORM_API bool QXCurrentTime(std::tm* now);

}  // namespace QXPlatform
