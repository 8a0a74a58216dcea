// The limit on how deep stored objects may lie in one another.
#pragma once

#include <qxsystem/core/export.h>

namespace QXSystem {

/// Levels of nesting that readers and writers accept, through all formats
/// together: damaged or hostile bytes must not be able to use up the stack.
constexpr unsigned QXMaxNesting = 128;

/// One level of nesting on the calling thread, for the length of a scope.
///
/// Converts to false, after a warning, when it lies deeper than QXMaxNesting;
/// the caller then refuses the object.
class QXSYSTEM_API QXNestingScope {
public:
  QXNestingScope();
  ~QXNestingScope();
  QXNestingScope(const QXNestingScope&) = delete;
  QXNestingScope& operator=(const QXNestingScope&) = delete;

  explicit operator bool() const { return allowed_; }

private:
  bool allowed_;
};

}  // namespace QXSystem
