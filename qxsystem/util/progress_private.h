// What the tracers share: when to show something again, and percentages.
#pragma once

#include <ctime>
#include <string>

namespace QXSystem {

/// The time since the last output, in processor time at first: work that sleeps
/// makes no progress worth telling. What processor clocks with 32 bits of
/// microseconds could count, 2147 seconds, is the end of that; from then on it
/// is wall-clock time.
class OutputClock {
public:
  /// Output is due every `interval` seconds, at 0 always.
  explicit OutputClock(float interval) : interval_(interval) { Restart(); }

  bool IsDue() const;

  /// To be called after every output.
  void Restart();

private:
  float interval_;
  std::clock_t processor_;
  std::time_t wall_;
};

/// Puts `percent` into 0 to 100. False, and nothing done, for a NaN.
bool LimitPercent(double& percent);

/// With two decimals, right-aligned in six columns, whatever the locale.
std::string PercentText(double percent);

}  // namespace QXSystem
