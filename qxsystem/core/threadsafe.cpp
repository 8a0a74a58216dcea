#include <qxsystem/core/threadsafe.h>

#include <pthread.h>

#include <atomic>
#include <memory>
#include <new>
#include <thread>

#include <qxsystem/core/error.h>
#include <qxsystem/core/mainthread_private.h>
#include <qxsystem/core/memcache.h>

namespace QXSystem {

namespace {

namespace Mode = QXMemPoolMode;

std::atomic<unsigned> poolMode{Mode::Default};
std::atomic<bool> poolModeWasSet{false};
std::atomic<bool> threadSafe{true};

bool OnMainThread() {
  return std::this_thread::get_id() == g_mainThreadId;
}

// Found without a call; the few bytes fit what the loader keeps in reserve.
#define QX_FAST_THREAD_LOCAL thread_local __attribute__((tls_model("initial-exec")))

// The cache that this thread uses in the default mode; null until it is chosen.
template <std::size_t N>
QX_FAST_THREAD_LOCAL typename QXMemPool<N>::Unbounded* defaultCache = nullptr;

// A thread's own cache; null until it is made.
template <class Cache>
QX_FAST_THREAD_LOCAL Cache* ownCache = nullptr;

// Thread-specific data die after all `thread_local` objects of the thread, so
// these may hold cursors and walk data in their destructors.
template <std::size_t N, class Cache>
Cache* ThreadLocalCache() {
  static const pthread_key_t key = [] {
    pthread_key_t made;
    const int failed = pthread_key_create(&made, [](void* cache) {
      defaultCache<N> = nullptr;
      ownCache<Cache> = nullptr;
      delete static_cast<Cache*>(cache);
    });
    if (failed) throw std::bad_alloc();
    return made;
  }();
  if (!ownCache<Cache>) {
    auto cache = std::make_unique<Cache>();
    if (pthread_setspecific(key, cache.get())) throw std::bad_alloc();
    ownCache<Cache> = cache.release();
  }
  return ownCache<Cache>;
}

template <class Cache>
Cache* ImmortalCache() {
  static Cache* const cache = new Cache();
  return cache;
}

}  // namespace

void QXSetMemPoolMode(unsigned mode) {
  if (poolModeWasSet.exchange(true))
    QXThrow.Error(
        "QXSetMemPoolMode called twice! Should only be called once per "
        "program");
  poolMode.store(mode, std::memory_order_relaxed);
}

unsigned QXGetMemPoolMode() {
  return poolMode.load(std::memory_order_relaxed);
}

void QXSetThreadSafe(bool flag) {
  threadSafe = flag;
  QXThrow.Warning("QXSetThreadSafe(%s) is deprecated as of Kelvar 1.7.0", flag ? "true" : "false");
  QXThrow.Warning("Use QXSetMemPoolMode(%s) instead",
                  flag ? "QXMemPoolMode::Default"
                       : "QXMemPoolMode::SingleThreaded|QXMemPoolMode::UnboundedCache");
  QXSetMemPoolMode(flag ? Mode::Default : Mode::SingleThreaded | Mode::UnboundedCache);
}

bool QXGetThreadSafe() {
  QXThrow.Warning("QXGetThreadSafe() is deprecated as of Kelvar 1.7.0");
  QXThrow.Warning("Use QXGetMemPoolMode() instead");
  return threadSafe;
}

void* PopEmptyIter() {
  return QXMemPool<8>::Pop();
}

void PushEmptyIter(void* block) {
  QXMemPool<8>::Push(block);
}

QXVirtualCache::~QXVirtualCache() = default;

template <std::size_t N>
QXVirtualCache* QXMemPool<N>::cachePtr() {
  const unsigned mode = QXGetMemPoolMode();
  switch (mode) {
    case Mode::BoundedCache | Mode::SingleThreaded:
      return BoundedCacheNormal();
    case Mode::BoundedCache | Mode::Mutexed:
      return BoundedCacheMutexed();
    case Mode::BoundedCache | Mode::ThreadLocal:
      if (OnMainThread()) return BoundedCacheNormal();
      return BoundedCacheThreadLocal();
    case Mode::UnboundedCache | Mode::SingleThreaded:
      return UnboundedCacheNormal();
    case Mode::UnboundedCache | Mode::Mutexed:
      return UnboundedCacheMutexed();
    case Mode::UnboundedCache | Mode::ThreadLocal:
      if (!defaultCache<N>)
        defaultCache<N> = OnMainThread() ? UnboundedCacheNormal() : UnboundedCacheThreadLocal();
      return defaultCache<N>;
    case Mode::System:
      return system();
    case Mode::BoundedCache | Mode::Spinlocked:
      return BoundedCacheSpinlocked();
    case Mode::UnboundedCache | Mode::Spinlocked:
      return UnboundedCacheSpinlocked();
    default:
      QXThrow.Error("Unrecognized QXMemPoolMode (%u)", mode);
      return system();
  }
}

template <std::size_t N>
void* QXMemPool<N>::Pop() {
  if (QXGetMemPoolMode() == Mode::Default && defaultCache<N>)
    return defaultCache<N>->Unbounded::Pop();
  return cachePtr()->Pop();
}

template <std::size_t N>
void QXMemPool<N>::Push(void* block) {
  if (QXGetMemPoolMode() == Mode::Default && defaultCache<N>)
    defaultCache<N>->Unbounded::Push(block);
  else
    cachePtr()->Push(block);
}

template <std::size_t N>
auto QXMemPool<N>::BoundedCacheNormal() -> Bounded* {
  return ImmortalCache<Bounded>();
}

template <std::size_t N>
auto QXMemPool<N>::BoundedCacheThreadLocal() -> Bounded* {
  return ThreadLocalCache<N, Bounded>();
}

template <std::size_t N>
auto QXMemPool<N>::BoundedCacheMutexed() -> QXMutexedBoundedCache<N, Count>* {
  return ImmortalCache<QXMutexedBoundedCache<N, Count>>();
}

template <std::size_t N>
auto QXMemPool<N>::BoundedCacheSpinlocked() -> QXSpinlockedBoundedCache<N, Count>* {
  return ImmortalCache<QXSpinlockedBoundedCache<N, Count>>();
}

template <std::size_t N>
auto QXMemPool<N>::UnboundedCacheNormal() -> Unbounded* {
  return ImmortalCache<Unbounded>();
}

template <std::size_t N>
auto QXMemPool<N>::UnboundedCacheThreadLocal() -> Unbounded* {
  return ThreadLocalCache<N, Unbounded>();
}

template <std::size_t N>
auto QXMemPool<N>::UnboundedCacheMutexed() -> QXMutexedCache<PlainUnbounded, QXVirtualCache>* {
  return ImmortalCache<QXMutexedCache<PlainUnbounded, QXVirtualCache>>();
}

template <std::size_t N>
auto QXMemPool<N>::UnboundedCacheSpinlocked()
    -> QXSpinlockedCache<PlainUnbounded, QXVirtualCache>* {
  return ImmortalCache<QXSpinlockedCache<PlainUnbounded, QXVirtualCache>>();
}

template <std::size_t N>
auto QXMemPool<N>::system() -> QXSystemAlloc<N>* {
  return ImmortalCache<QXSystemAlloc<N>>();
}

template class QXMemPool<8>;
template class QXMemPool<24>;

}  // namespace QXSystem
