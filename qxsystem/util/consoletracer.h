// A tracer that draws a bar on the console.
#pragma once

#include <sys/time.h>

#include <atomic>
#include <mutex>
#include <string>

#include <qxsystem/core/export.h>
#include <qxsystem/util/qxtracerbase.h>

namespace QXSystem {

/// Keeps one line of the standard error stream up to date:
///
///     Reading                  [========------------]  42.00%  00:01:07
///
/// The line shows the task set or entered last, the part of it that is done, and
/// the time that it has taken, in hours, minutes and seconds. It is drawn again
/// when the percentage has grown by a step, and at any news that comes later
/// than a step of time after the last drawing. What lies below the last
/// percentage is ignored, so parts that are entered and left belong behind one
/// another, each with a Push and a Pop.
///
/// All operations may be called from any thread.
class QXSYSTEM_API QXConsoleProgressTracer : public QXTracerBase {
public:
  /// A bar of `barLength` characters; steps in percent and in seconds.
  explicit QXConsoleProgressTracer(unsigned barLength = 20, double percentStep = 1.0,
                                   double timeStep = 1.0);
  ~QXConsoleProgressTracer() override;

  /// Both begin the line anew, at 0 and with the time from now on.
  void SetTask(std::string task) override;
  void Push(std::string task) override;

  /// Shows the task as done, and leaves its line.
  void Pop() override;

  void Refresh() override;

  /// A `total` of 0 counts as 0 percent.
  void SetProgress(unsigned done, unsigned total) override;
  void SetProgress(double percent) override;

  /// False.
  bool Aborted() override;

private:
  double Elapsed() const;
  void PrintProgress(double percent, double elapsed);
  std::string PrintBar(double percent) const;
  static std::string PrintTime(double elapsed);

  std::string task_;
  const unsigned barLength_;
  const double percentStep_, timeStep_;
  // What was drawn last: changed under the mutex, read without it too.
  std::atomic<double> lastPercent_{0}, lastElapsed_{0};
  timeval start_;
  std::mutex mutex_;  // guards all fields that change
};

}  // namespace QXSystem
