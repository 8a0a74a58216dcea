#include <qxsystem/util/dots.h>

#include <atomic>
#include <condition_variable>
#include <mutex>
#include <vector>

#include <qxsystem/core/error.h>
#include <qxsystem/platform/ostream.h>
#include <qxsystem/platform/thread.h>

namespace QXSystem {

using QXPlatform::qxerr;

QXDots::QXDots(unsigned lineLength, unsigned dotEvery, const char* noun, const char* verb)
    : lineLength_(lineLength),
      dotEvery_(dotEvery),
      noun_(noun ? noun : ""),
      verb_(verb ? verb : ""),
      silent_(lineLength == 0 || dotEvery == 0) {}

void QXDots::Update(char mark, unsigned step) {
  total_ += step;
  if (silent_) return;
  for (dotFill_ += step; dotFill_ >= dotEvery_; dotFill_ -= dotEvery_) {
    qxerr << mark;
    qxerr.flush();
    lineFill_ += dotEvery_;
    if (lineFill_ < lineLength_) continue;
    lineTotal_ += lineLength_;
    lineFill_ = 0;
    qxerr << " " + std::to_string(lineTotal_) + " " + noun_ + " " + verb_ + ".\n";
  }
}

void QXDots::Total() {
  qxerr << "\nTotal: " + std::to_string(total_) + " " + noun_ + " " + verb_ + ".\n";
}

namespace {

// The steps that callers have handed over, at most `capacity` of them.
//
// Every taking wakes one caller, which makes place for the next by handing over
// something to take; where all were woken to find the queue full again, eight
// busy callers took ten times as long.
class StepQueue {
public:
  explicit StepQueue(std::size_t capacity) : capacity_(capacity) {}

  // Waits for room. False when the queue is closed.
  bool Put(unsigned step) {
    std::unique_lock lock(mutex_);
    room_.wait(lock, [this] { return steps_.size() < capacity_ || closed_; });
    if (closed_) return false;
    steps_.push_back(step);
    const bool first = steps_.size() == 1;
    lock.unlock();
    if (first) filled_.notify_one();
    return true;
  }

  // Waits for steps and puts all of them in the place of `taken`. False when the
  // queue is closed and empty.
  bool TakeAll(std::vector<unsigned>& taken) {
    taken.clear();
    std::unique_lock lock(mutex_);
    filled_.wait(lock, [this] { return !steps_.empty() || closed_; });
    steps_.swap(taken);
    lock.unlock();
    room_.notify_one();
    return !taken.empty();
  }

  void Close() {
    const std::lock_guard lock(mutex_);
    closed_ = true;
    filled_.notify_all();
    room_.notify_all();
  }

private:
  std::mutex mutex_;
  std::condition_variable room_, filled_;
  const std::size_t capacity_;
  std::vector<unsigned> steps_;
  bool closed_ = false;
};

}  // namespace

class QXThreadedDots::Worker : public QXPlatform::QXThread {
public:
  Worker(unsigned lineLength, unsigned dotEvery, const char* noun)
      : dots_(lineLength, dotEvery, noun, "processed"),
        steps_(2 * QXPlatform::QXGetNumProcessors()),
        running_(Start(nullptr)) {}

  ~Worker() override {
    steps_.Close();
    Join();
  }

  void Update(unsigned step) {
    if (step == 0)
      QXThrow.Error("Invalid step size of 0 for QXThreadedDots::Update");
    else if (totalled_)
      QXThrow.Error("Attempting to Update a QXThreadedDots after Total already called.");
    else if (!(running_ ? steps_.Put(step) : UpdateHere(step)))
      QXThrow.Error("Failed to Update a QXThreadedDots");
  }

  void Total() {
    if (totalled_.exchange(true)) return;
    steps_.Close();
    Join();
    const std::lock_guard lock(mutex_);
    dots_.Total();
  }

protected:
  void Run(void*) override {
    std::vector<unsigned> steps;
    while (steps_.TakeAll(steps))
      for (const unsigned step : steps) dots_.Update(step);
  }

private:
  // For want of a thread the callers do its work, until the total.
  bool UpdateHere(unsigned step) {
    const std::lock_guard lock(mutex_);
    if (totalled_) return false;
    dots_.Update(step);
    return true;
  }

  QXDots dots_;  // the thread's while that runs, else under the mutex
  StepQueue steps_;
  std::mutex mutex_;
  std::atomic<bool> totalled_{false};
  const bool running_;  // last: the thread uses all of the above
};

QXThreadedDots::QXThreadedDots(unsigned lineLength, unsigned dotEvery, const char* noun)
    : worker_(std::make_unique<Worker>(lineLength, dotEvery, noun)) {}
QXThreadedDots::~QXThreadedDots() = default;

void QXThreadedDots::Update(unsigned step) {
  worker_->Update(step);
}

void QXThreadedDots::Total() {
  worker_->Total();
}

}  // namespace QXSystem
