#include <qxsystem/platform/stream.h>

namespace QXPlatform {

qxstream::~qxstream() = default;

}  // namespace QXPlatform
