// A tracer that prints a dot now and then.
#pragma once

#include <memory>
#include <string>

#include <qxsystem/core/export.h>
#include <qxsystem/platform/ostream.h>
#include <qxsystem/util/qxtracerbase.h>

namespace QXSystem {

class QXDotTracerImpl;

/// Prints dots while work goes on, 80 to a line, and "Done." at its end.
///
/// Every SetProgress, Push, Pop and Aborted prints one, unless the last is less
/// than the interval ago; SetTask and Refresh print nothing. The interval counts
/// processor time, or wall-clock time once that comes to 2148 seconds.
///
/// A tracer is passed on as the QXTracerBase& to which it converts.
class QXSYSTEM_API QXDotTracer {
public:
  /// A dot at most every `interval` seconds, to `out`, which is borrowed.
  QXDotTracer(float interval, QXPlatform::qxostream& out);

  /// The same behind `title`, which is printed now.
  QXDotTracer(const std::string& title, float interval, QXPlatform::qxostream& out);

  /// Prints "Done." and a line end, on a new line where the dots fill one.
  ~QXDotTracer();

  QXDotTracer(const QXDotTracer&) = delete;
  QXDotTracer& operator=(const QXDotTracer&) = delete;

  operator QXTracerBase&();

private:
  std::unique_ptr<QXDotTracerImpl> impl_;
};

}  // namespace QXSystem
