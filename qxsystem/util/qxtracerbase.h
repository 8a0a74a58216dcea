// Progress: the interface through which long work tells how far it is, and the
// tracer that tells nobody.
//
//     void Read(qxistream& in, QXTracerBase& tracer = QXNoTracer) {
//       tracer.SetTask("Reading");
//       for (unsigned i = 0; i < n && !tracer.Aborted(); ++i)
//         tracer.SetProgress(i, n);
//     }
//
// What a tracer shows is up to it; unless it says more, it belongs to one thread
// at a time. Percentages outside 0 to 100 are taken for the nearer end, NaN for
// no news at all.
#pragma once

#include <string>

#include <qxsystem/core/export.h>

namespace QXSystem {

/// Receives the progress of a piece of work.
class QXSYSTEM_API QXTracerBase {
public:
  virtual ~QXTracerBase();

  /// Names the present task.
  virtual void SetTask(std::string task) = 0;

  /// Enters a part of the present task.
  virtual void Push(std::string task) = 0;

  /// Leaves the part entered last.
  virtual void Pop() = 0;

  /// Shows again what was shown last.
  virtual void Refresh() = 0;

  /// `done` of `total` steps of the present task are done.
  virtual void SetProgress(unsigned done, unsigned total) = 0;

  /// `percent` of the present task is done.
  virtual void SetProgress(double percent) = 0;

  /// Whether the work should stop.
  virtual bool Aborted() = 0;

protected:
  constexpr QXTracerBase() = default;
  QXTracerBase(const QXTracerBase&) = default;
  QXTracerBase& operator=(const QXTracerBase&) = default;
};

/// Shows nothing and never asks to stop. Safe from any thread.
class QXSYSTEM_API QXNullTracer : public QXTracerBase {
public:
  constexpr QXNullTracer() = default;
  ~QXNullTracer() override;

  void SetTask(std::string task) override;
  void Push(std::string task) override;
  void Pop() override;
  void Refresh() override;
  void SetProgress(unsigned done, unsigned total) override;
  void SetProgress(double percent) override;
  bool Aborted() override;
};

/// For whoever has to name a tracer and wants none; there from the first static
/// initialiser to the end of the process.
QXSYSTEM_API extern QXNullTracer& NullTracer;
QXSYSTEM_API extern QXNullTracer& QXNoTracer;

}  // namespace QXSystem
