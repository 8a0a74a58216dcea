#include <qxsystem/util/consoletracer.h>

#include <algorithm>
#include <cmath>
#include <utility>

#include <qxsystem/platform/clock.h>
#include <qxsystem/platform/ostream.h>
#include <qxsystem/util/progress_private.h>
#include <qxsystem/util/qxformat.h>

namespace QXSystem {

using Lock = std::lock_guard<std::mutex>;

QXConsoleProgressTracer::QXConsoleProgressTracer(unsigned barLength, double percentStep,
                                                 double timeStep)
    : barLength_(barLength), percentStep_(percentStep), timeStep_(timeStep) {
  QXPlatform::QXGetTimeOfDay(&start_);
}

QXConsoleProgressTracer::~QXConsoleProgressTracer() = default;

void QXConsoleProgressTracer::SetTask(std::string task) {
  const Lock lock(mutex_);
  task_ = std::move(task);
  QXPlatform::QXGetTimeOfDay(&start_);
  PrintProgress(0, 0);
}

void QXConsoleProgressTracer::Push(std::string task) {
  SetTask(std::move(task));
}

void QXConsoleProgressTracer::Pop() {
  const Lock lock(mutex_);
  PrintProgress(100, Elapsed());
  QXPlatform::qxerr << "\n";
  QXPlatform::qxerr.flush();
}

void QXConsoleProgressTracer::Refresh() {
  const Lock lock(mutex_);
  PrintProgress(lastPercent_, Elapsed());
}

void QXConsoleProgressTracer::SetProgress(unsigned done, unsigned total) {
  SetProgress(total ? 100.0 * done / total : 0.0);
}

void QXConsoleProgressTracer::SetProgress(double percent) {
  if (!LimitPercent(percent) || percent < lastPercent_) return;
  const Lock lock(mutex_);
  if (percent < lastPercent_) return;  // another thread was further
  const double elapsed = Elapsed();
  if (percent >= lastPercent_ + percentStep_ || elapsed >= lastElapsed_ + timeStep_)
    PrintProgress(percent, elapsed);
}

bool QXConsoleProgressTracer::Aborted() {
  return false;
}

// In seconds; the clock may have been set back meanwhile.
double QXConsoleProgressTracer::Elapsed() const {
  timeval now;
  QXPlatform::QXGetTimeOfDay(&now);
  const auto seconds = static_cast<double>(now.tv_sec - start_.tv_sec);
  return std::max(0.0, seconds + 1e-6 * static_cast<double>(now.tv_usec - start_.tv_usec));
}

// One write, so that the line takes the place of the old one as a whole.
void QXConsoleProgressTracer::PrintProgress(double percent, double elapsed) {
  constexpr std::size_t taskWidth = 25;
  lastPercent_ = percent;
  lastElapsed_ = elapsed;
  std::string line = "\r" + task_;
  if (task_.size() < taskWidth) line.append(taskWidth - task_.size(), ' ');
  QXPlatform::qxerr << line + PrintBar(percent) + PrintTime(elapsed);
  QXPlatform::qxerr.flush();
}

std::string QXConsoleProgressTracer::PrintBar(double percent) const {
  const auto done = static_cast<std::size_t>(std::floor(barLength_ * percent / 100));
  return "[" + std::string(done, '=') + std::string(barLength_ - done, '-') + "] " +
         PercentText(percent) + "%  ";
}

// A full minute is 60 seconds still, and a full hour 60 minutes.
std::string QXConsoleProgressTracer::PrintTime(double elapsed) {
  long hours = 0, minutes = 0;
  if (elapsed > 3600) {
    hours = static_cast<long>(elapsed / 3600);
    elapsed -= static_cast<double>(hours) * 3600;
  }
  if (elapsed > 60) {
    minutes = static_cast<long>(elapsed / 60);
    elapsed -= static_cast<double>(minutes) * 60;
  }
  return QXMakeString("%02ld:%02ld:%02ld", hours, minutes, static_cast<long>(elapsed));
}

}  // namespace QXSystem
