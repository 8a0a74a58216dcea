#include <qxsystem/util/progress_private.h>

#include <algorithm>

#include <qxsystem/platform/number.h>
#include <qxsystem/util/qxnumber.h>

namespace QXSystem {

bool OutputClock::IsDue() const {
  constexpr std::time_t processorTimeEnds = 2148;
  const std::time_t seconds = std::time(nullptr) - wall_;
  const float since =
      seconds < processorTimeEnds
          ? static_cast<float>(static_cast<double>(std::clock() - processor_) * 1e-6)
          : static_cast<float>(seconds);
  return since >= interval_;
}

void OutputClock::Restart() {
  processor_ = std::clock();
  wall_ = std::time(nullptr);
}

bool LimitPercent(double& percent) {
  if (QXPlatform::QXIsNaN(percent)) return false;
  percent = percent > 0 ? std::min(percent, 100.0) : 0.0;  // also for the zero with a sign
  return true;
}

std::string PercentText(double percent) {
  constexpr std::size_t width = 6;
  std::string text;
  QXNumberToString(percent, text, 'f', 2);
  if (text.size() < width) text.insert(0, width - text.size(), ' ');
  return text;
}

}  // namespace QXSystem
