// What the input and the output streams share: a state that can be tested, and
// manipulators.
#pragma once

#include <qxsystem/platform/export.h>

namespace QXPlatform {

/// Base of all streams. A stream belongs to one thread at a time.
class QXPLATFORM_API qxstream {
public:
  virtual ~qxstream();

  /// False once opening, closing or moving bytes has failed, or text could not
  /// be understood. Reaching the end of the input is no failure. A successful
  /// `open` or `set` makes it true again.
  explicit operator bool() const { return !failed_; }

protected:
  constexpr qxstream() = default;
  qxstream(const qxstream&) = default;
  qxstream& operator=(const qxstream&) = default;

  void SetFailed(bool failed) { failed_ = failed; }

private:
  bool failed_ = false;
};

/// A manipulator that applies to both families of streams.
using qxmanipulator = qxstream& (*)(qxstream&);

}  // namespace QXPlatform
