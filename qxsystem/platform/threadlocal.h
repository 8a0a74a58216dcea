// A value per object and thread.
#pragma once

#include <cstddef>
#include <cstdint>
#include <iterator>
#include <map>
#include <memory>
#include <mutex>
#include <thread>

#include <qxsystem/platform/export.h>

namespace QXPlatform {

/// What a thread's latest `QXThreadLocal<T>::Get` found, whatever its T. It is
/// trivial, so it can be asked as long as the thread runs, and lies where it
/// is read without a call.
struct QXThreadLocalHit {
  std::uint64_t serial;  // of the object that was asked; 0 for none
  void* value;           // its T in this thread
};
extern QXPLATFORM_API __thread QXThreadLocalHit QXLastThreadLocalHit
    __attribute__((tls_model("initial-exec")));

/// A number that no other call in this process gives, and never 0.
QXPLATFORM_API std::uint64_t QXNextThreadLocalSerial();

/// A `T` for every thread that asks, made by T's default constructor at the
/// thread's first `Get`, and destroyed with this object or at the thread's end,
/// whichever comes first.
///
/// `Get` may be called from any number of threads at once. A repeated `Get`
/// takes no lock, and costs a comparison when it is the thread's second in a
/// row on the same object. A thread whose thread-local objects have been
/// destroyed already, as the one that runs static destructors at exit, gets a
/// new `T`, which then lives as long as this object.
template <typename T>
class QXPLATFORM_API QXThreadLocal {
public:
  QXThreadLocal() = default;
  QXThreadLocal(const QXThreadLocal&) = delete;
  QXThreadLocal& operator=(const QXThreadLocal&) = delete;

  /// No other thread may be in `Get`, or use what it got.
  ~QXThreadLocal();

  /// The calling thread's value.
  T& Get() const {
    // Serials are never used twice, so a hit cannot be that of a dead object.
    const QXThreadLocalHit& hit = QXLastThreadLocalHit;
    return hit.serial == serial_ ? *static_cast<T*>(hit.value) : Find();
  }

private:
  // Shared by an object's map and a thread's; empty once the object is dead.
  using Slot = std::shared_ptr<std::shared_ptr<T>>;

  // One for each object: the slots of the threads that have asked.
  struct InterThreadMap {
    std::mutex mutex;
    std::map<std::thread::id, Slot> slots;
  };

  // One for each thread: the slots of the objects that it has asked. A key
  // outlives its object without holding it, and its address is not used again
  // before the key is gone.
  struct IntraThreadMap {
    ~IntraThreadMap();
    void Sweep();

    std::map<std::weak_ptr<InterThreadMap>, Slot, std::owner_less<>> slots;
    std::size_t sweepSize = 8;  // number of entries that makes a sweep due
  };

  [[gnu::noinline]] T& Find() const;  // keeps the way of a hit free of its frame
  T& FindInThread() const;
  T& FindInObject() const;

  static IntraThreadMap& ThisThread() {
    static thread_local IntraThreadMap map;
    return map;
  }

  // The thread's map has been destroyed. Trivial, so it can still be asked.
  static bool& ThreadIsEnding() {
    static thread_local bool ending = false;
    return ending;
  }

  // By `new`: a key would keep the memory of an object made by make_shared.
  const std::shared_ptr<InterThreadMap> inter_{new InterThreadMap};
  const std::uint64_t serial_ = QXNextThreadLocalSerial();
};

template <typename T>
QXThreadLocal<T>::~QXThreadLocal() {
  std::map<std::thread::id, Slot> slots;
  {
    // A thread may be ending just now and take its slot out of the map.
    const std::lock_guard<std::mutex> lock(inter_->mutex);
    slots.swap(inter_->slots);
  }
  for (auto& [id, slot] : slots) slot->reset();
}

template <typename T>
T& QXThreadLocal<T>::Find() const {
  T& value = ThreadIsEnding() ? FindInObject() : FindInThread();
  QXLastThreadLocalHit = {serial_, &value};
  return value;
}

template <typename T>
T& QXThreadLocal<T>::FindInThread() const {
  IntraThreadMap& thread = ThisThread();
  if (const auto found = thread.slots.find(inter_); found != thread.slots.end())
    return **found->second;

  const auto made = std::make_shared<std::shared_ptr<T>>(std::make_shared<T>());
  thread.Sweep();
  const Slot& slot = thread.slots.emplace(inter_, made).first->second;
  const std::lock_guard<std::mutex> lock(inter_->mutex);
  // Replaces, since the id may be that of a thread which is gone.
  inter_->slots[std::this_thread::get_id()] = slot;
  return **slot;
}

// Nobody tells the object of this thread's end any more, so its value stays.
template <typename T>
T& QXThreadLocal<T>::FindInObject() const {
  const auto made = std::make_shared<std::shared_ptr<T>>(std::make_shared<T>());
  const std::lock_guard<std::mutex> lock(inter_->mutex);
  return **inter_->slots.emplace(std::this_thread::get_id(), made).first->second;
}

// Forgets objects that are dead. Rests on the keys alone: the slot of an object
// that is dying may be changing in another thread.
template <typename T>
void QXThreadLocal<T>::IntraThreadMap::Sweep() {
  if (slots.size() < sweepSize) return;
  for (auto entry = slots.begin(); entry != slots.end();)
    entry = entry->first.expired() ? slots.erase(entry) : std::next(entry);
  sweepSize = 2 * slots.size() + 8;  // so that a sweep is paid by what came since
}

template <typename T>
QXThreadLocal<T>::IntraThreadMap::~IntraThreadMap() {
  ThreadIsEnding() = true;
  QXLastThreadLocalHit = {};
  for (auto& [key, slot] : slots) {
    const auto inter = key.lock();
    if (!inter) continue;
    const std::lock_guard<std::mutex> lock(inter->mutex);
    inter->slots.erase(std::this_thread::get_id());
  }
}

}  // namespace QXPlatform
