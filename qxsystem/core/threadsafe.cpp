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

pthread_key_t MakeThreadKey(void (*dies)(void*)) {
  pthread_key_t key;
  if (pthread_key_create(&key, dies)) throw std::bad_alloc();
  return key;
}

template <class Cache>
Cache* ImmortalCache() {
  static Cache* const cache = new Cache();
  return cache;
}

}  // namespace

void QXSetMemPoolMode(unsigned mode) {
  if (poolModeWasSet.exchange(true))
    QXThrow.Error("QXSetMemPoolMode called twice! Should only be called once per program");
  poolMode.store(mode, std::memory_order_relaxed);
  QXMemPool<8>::readyBlocks_ = nullptr;
  QXMemPool<24>::readyBlocks_ = nullptr;
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
    case Mode::UnboundedCache | Mode::ThreadLocal: {
      Unbounded* const cache =
          OnMainThread() ? UnboundedCacheNormal() : UnboundedCacheThreadLocal();
      readyBlocks_ = &cache->GetFreeList();
      return cache;
    }
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
__thread QXFreeList<N>* QXMemPool<N>::readyBlocks_ = nullptr;

template <std::size_t N>
void* QXMemPool<N>::PopFromCache() {
  return cachePtr()->Pop();
}

template <std::size_t N>
void QXMemPool<N>::PushToCache(void* block) {
  cachePtr()->Push(block);
}

// The calling thread's own cache. As thread-specific data it dies after all
// `thread_local` objects, so these may hold cursors and walk data when they die.
template <std::size_t N>
template <class Cache>
Cache* QXMemPool<N>::ThreadLocalCache() {
  thread_local Cache* own = nullptr;
  static const pthread_key_t key = MakeThreadKey([](void* cache) {
    own = nullptr;
    readyBlocks_ = nullptr;
    delete static_cast<Cache*>(cache);
  });
  if (!own) {
    auto cache = std::make_unique<Cache>();
    if (pthread_setspecific(key, cache.get())) throw std::bad_alloc();
    own = cache.release();
  }
  return own;
}

template <std::size_t N>
auto QXMemPool<N>::BoundedCacheNormal() -> Bounded* {
  return ImmortalCache<Bounded>();
}

template <std::size_t N>
auto QXMemPool<N>::BoundedCacheThreadLocal() -> Bounded* {
  return ThreadLocalCache<Bounded>();
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
  return ThreadLocalCache<Unbounded>();
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
