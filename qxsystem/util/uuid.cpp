#include <qxsystem/util/uuid.h>

#include <fcntl.h>
#include <pthread.h>
#include <sys/random.h>
#include <unistd.h>

#include <chrono>
#include <cstdint>
#include <mutex>

#include <qxsystem/util/qxformat.h>

namespace QXSystem {

namespace {

// One mutex for all generators, which is hardly ever waited for: `fork` must take
// it, because a child inherits a locked mutex for ever.
std::mutex mutex;
unsigned forks = 0;  // guarded by it

void WatchForks() {
  [[maybe_unused]] static const int watched =
      pthread_atfork([] { mutex.lock(); }, [] { mutex.unlock(); },
                     [] {
                       ++forks;
                       mutex.unlock();
                     });
}

bool ReadRandom(std::uint64_t& word) {
  const int device = open("/dev/urandom", O_RDONLY | O_CLOEXEC);
  if (device < 0) return false;
  const bool good = read(device, &word, sizeof word) == sizeof word;
  close(device);
  return good;
}

// Spreads what differs between two numbers over all bits. Source: Steele, Lea and
// Flood, OOPSLA 2014, 453-472 (SplitMix).
std::uint64_t Mix(std::uint64_t word) {
  word += 0x9E3779B97F4A7C15;
  word = (word ^ word >> 30) * 0xBF58476D1CE4E5B9;
  word = (word ^ word >> 27) * 0x94D049BB133111EB;
  return word ^ word >> 31;
}

template <class Clock>
std::uint64_t Ticks() {
  return static_cast<std::uint64_t>(Clock::now().time_since_epoch().count());
}

std::uint64_t MakeSeed(const void* generator) {
  std::uint64_t word = 0;
  if (ReadRandom(word)) return word;
  // Without such a device perhaps without this call as well.
  if (getrandom(&word, sizeof word, GRND_NONBLOCK) != sizeof word) word = 0;
  for (const std::uint64_t other :
       {Ticks<std::chrono::system_clock>(), Ticks<std::chrono::steady_clock>(),
        static_cast<std::uint64_t>(getpid()), reinterpret_cast<std::uint64_t>(generator)})
    word = Mix(word ^ other);
  return word;
}

}  // namespace

QXUUIDGenerator::QXUUIDGenerator() {
  WatchForks();
  engine_.Seed(MakeSeed(this));
  const std::lock_guard<std::mutex> lock(mutex);
  forks_ = forks;
}

QXUUIDGenerator::~QXUUIDGenerator() = default;

std::string QXUUIDGenerator::GetUUID16() {
  std::uint64_t word;
  {
    const std::lock_guard<std::mutex> lock(mutex);
    if (forks_ != forks) {
      engine_.Seed(MakeSeed(this));
      forks_ = forks;
    }
    word = engine_.Next();
  }
  return QXMakeString("%016lx", word);
}

QXUUIDGenerator& QXGetUUIDGenerator() {
  static QXUUIDGenerator generator;
  return generator;
}

std::string QXGetUUID16() {
  return QXGetUUIDGenerator().GetUUID16();
}

std::string QXGetUUID32() {
  const std::string first = QXGetUUID16();
  return first + QXGetUUID16();
}

}  // namespace QXSystem
