// A thread with an object around it, and a lock with a condition.
#pragma once

#include <condition_variable>
#include <mutex>
#include <thread>

#include <qxsystem/platform/export.h>

namespace QXPlatform {

/// Something that runs on a thread of its own; derive and override `Run`.
///
/// Join before the derived object's destructor begins to take its fields down:
/// the base's destructor joins too, but then `Run` has nothing left to use.
/// `Start` and `Join` belong to one thread at a time.
class QXPLATFORM_API QXThread {
public:
  QXThread();
  QXThread(const QXThread&) = delete;
  QXThread& operator=(const QXThread&) = delete;
  virtual ~QXThread();

  /// Calls `Run(argument)` on a new thread. False when the system gives no
  /// thread, or when the one before was not joined. An exception that leaves
  /// `Run` ends the process.
  bool Start(void* argument);

  /// Waits for the end of `Run`, so not to be called from there; then the
  /// object may be started again. False when there is nothing to wait for.
  bool Join();

protected:
  /// What the thread does; gets the argument of `Start`.
  virtual void Run(void* argument) = 0;

private:
  std::thread thread_;
};

/// A lock that can be waited in. A thread must not take it twice.
class QXPLATFORM_API QXCondition {
public:
  QXCondition();
  QXCondition(const QXCondition&) = delete;
  QXCondition& operator=(const QXCondition&) = delete;
  ~QXCondition();

  /// Take and give back the lock; `Acquire` waits for it.
  void Acquire() { mutex_.lock(); }
  void Release() { mutex_.unlock(); }

  /// Releases the mutex, which the caller holds, waits for a broadcast, and
  /// holds it again on return. It may return without one, so call it in a loop
  /// around the test for what is waited for.
  void Wait();

  /// Wakes all that wait. The caller may hold the mutex or not.
  void Broadcast();

private:
  std::mutex mutex_;
  std::condition_variable condition_;
};

/// The number of processors that this process may run on, at least 1.
QXPLATFORM_API unsigned QXGetNumProcessors();

}  // namespace QXPlatform
