// A tracer that keeps a small file up to date, for whoever looks at it from
// outside.
#pragma once

#include <memory>
#include <string>

#include <qxsystem/core/export.h>
#include <qxsystem/util/qxtracerbase.h>

namespace QXSystem {

class QXStatusFileTracerImpl;

/// Keeps a file that holds all tasks, outermost first, one on a line behind as
/// many blanks as it lies deep, with how far it is:
///
///     Reading
///      Pass 1 (% 42.00 done)
///
/// There is always one task; the last one stays at a Pop. Every operation writes
/// the file anew, unless it was written less than the interval ago, and so may
/// leave it as it is; the end always writes it, with the single line "Finished". The
/// interval counts processor time, or wall-clock time once that comes to 2148
/// seconds. A file that can't be written stops nobody's work and is not
/// reported. Line ends within a task's name become blanks.
///
/// Copies are one tracer, which ends with the last of them. It is passed on as
/// the QXTracerBase& to which it converts.
class QXSYSTEM_API QXStatusFileTracer {
public:
  /// Writes `fileName` at most every `interval` seconds; nothing yet.
  QXStatusFileTracer(std::string fileName, float interval);
  ~QXStatusFileTracer();
  QXStatusFileTracer(const QXStatusFileTracer& other);
  QXStatusFileTracer& operator=(const QXStatusFileTracer& other);

  operator QXTracerBase&();

private:
  std::shared_ptr<QXStatusFileTracerImpl> impl_;  // never null
};

}  // namespace QXSystem
