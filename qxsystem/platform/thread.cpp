#include <qxsystem/platform/thread.h>

#include <sched.h>
#include <unistd.h>

#include <algorithm>
#include <system_error>

namespace QXPlatform {

QXThread::QXThread() = default;

QXThread::~QXThread() {
  Join();
}

bool QXThread::Start(void* argument) {
  if (thread_.joinable()) return false;
  try {
    thread_ = std::thread([this, argument] { Run(argument); });
  } catch (const std::system_error&) {
    return false;
  }
  return true;
}

bool QXThread::Join() {
  if (!thread_.joinable()) return false;
  thread_.join();
  return true;
}

QXCondition::QXCondition() = default;
QXCondition::~QXCondition() = default;

void QXCondition::Wait() {
  std::unique_lock<std::mutex> held(mutex_, std::adopt_lock);
  condition_.wait(held);
  held.release();
}

void QXCondition::Broadcast() {
  condition_.notify_all();
}

unsigned QXGetNumProcessors() {
  cpu_set_t allowed;
  if (::sched_getaffinity(0, sizeof allowed, &allowed) == 0)
    return static_cast<unsigned>(std::max(1, CPU_COUNT(&allowed)));
  // The set is too small for machines of more than 1024 processors.
  return static_cast<unsigned>(std::max(1l, ::sysconf(_SC_NPROCESSORS_ONLN)));
}

}  // namespace QXPlatform
