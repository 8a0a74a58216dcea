#include <qxsystem/core/nesting.h>

#include <qxsystem/core/error.h>

namespace QXSystem {
namespace {

thread_local unsigned depth = 0;

}  // namespace

QXNestingScope::QXNestingScope() : allowed_(++depth <= QXMaxNesting) {
  if (!allowed_) QXThrow.Warning("data nested more than %u levels deep is refused", QXMaxNesting);
}

QXNestingScope::~QXNestingScope() {
  --depth;
}

}  // namespace QXSystem
