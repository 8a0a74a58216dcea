// Dots that count: one for so many items, and the running count at the end of
// every line.
#pragma once

#include <memory>
#include <string>

#include <qxsystem/core/export.h>

namespace QXSystem {

/// Counts items and prints a dot for every few, on the standard error stream:
///
///     .......... 1000 molecules read.
///     ...
///     Total: 1342 molecules read.
class QXSYSTEM_API QXDots {
public:
  /// A dot for `dotEvery` items and a line for `lineLength`; 0 for one of them
  /// makes the object silent, save for `Total`. A null text is empty.
  QXDots(unsigned lineLength, unsigned dotEvery, const char* noun, const char* verb);

  /// Counts `step` items, with a dot. Beware of a lone character, which is a
  /// number here: `Update('*')` counts 42 items.
  void Update(unsigned step = 1) { Update('.', step); }

  /// The same with `mark` in the place of the dot.
  void Update(char mark, unsigned step);

  /// Prints the count so far, on a line of its own.
  void Total();

private:
  unsigned lineLength_, dotEvery_;
  unsigned long total_ = 0;      // items
  unsigned long lineTotal_ = 0;  // items on full lines
  unsigned long lineFill_ = 0;   // items with a dot on the present line
  unsigned long dotFill_ = 0;    // items since the last dot
  std::string noun_, verb_;
  bool silent_;
};

/// QXDots with a thread of its own that prints, with "processed" as verb:
/// callers only hand over their steps.
///
/// All operations may be called from any thread.
class QXSYSTEM_API QXThreadedDots {
public:
  QXThreadedDots(unsigned lineLength, unsigned dotEvery, const char* noun);

  /// Stops the thread, after all steps handed over. No other thread may be in an
  /// operation.
  ~QXThreadedDots();

  QXThreadedDots(const QXThreadedDots&) = delete;
  QXThreadedDots& operator=(const QXThreadedDots&) = delete;

  /// Counts `step` items; waits while two steps per processor are not worked off
  /// yet. An Error is reported for a step of 0, and once `Total` was called, also
  /// for those who wait at that time; such a step does not count.
  void Update(unsigned step = 1);

  /// Prints the count of all steps that were taken. The second call and later
  /// ones do nothing.
  void Total();

private:
  class Worker;
  std::unique_ptr<Worker> worker_;
};

}  // namespace QXSystem
