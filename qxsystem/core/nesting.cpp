#include <qxsystem/core/nesting.h>

#include <qxsystem/core/error.h>

namespace QXSystem {
namespace {

thread_local unsigned depth = 0;

}  // namespace

// Warns first: a report that throws must not leave the depth raised.
QXNestingScope::QXNestingScope() : allowed_(depth < QXMaxNesting) {
  if (!allowed_) QXThrow.Warning("data nested more than %u levels deep is refused", QXMaxNesting);
  ++depth;
}

QXNestingScope::~QXNestingScope() {
  --depth;
}

}  // namespace QXSystem
