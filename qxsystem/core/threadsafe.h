// Small-object memory: pools of fixed-size blocks for objects that are made and
// dropped at a high rate, above all cursors, and the process-wide mode that
// says how the pools deal with threads.
//
// The mode is set at most once, at program start, before the first block is
// taken: a block must go back to the cache that issued it.
#pragma once

#include <cstddef>
#include <new>

#include <qxsystem/core/export.h>

#if defined(__SANITIZE_ADDRESS__)
#define QX_POISON_FREE_BLOCKS
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define QX_POISON_FREE_BLOCKS
#endif
#endif
#ifdef QX_POISON_FREE_BLOCKS
#include <sanitizer/asan_interface.h>
#endif

namespace QXSystem {

/// Flags that add up to a mode. Legal are 4, 5, 6, 8, 9, 10, 16, 36 and 40: a
/// kind of cache with a way to treat threads, or `System` alone.
namespace QXMemPoolMode {
constexpr unsigned SingleThreaded = 0;  ///< no locks, one thread uses pooled objects
constexpr unsigned Mutexed = 1;         ///< one shared cache behind a mutex
constexpr unsigned ThreadLocal = 2;     ///< one cache per thread
constexpr unsigned BoundedCache = 4;    ///< recycles 64 blocks, more go to the allocator
constexpr unsigned UnboundedCache = 8;  ///< grows by 64 blocks, frees them when it dies
constexpr unsigned System = 16;         ///< no cache, every block from `new[]`
constexpr unsigned Spinlocked = 32;     ///< one shared cache behind a spin lock
constexpr unsigned Default = ThreadLocal | UnboundedCache;
}  // namespace QXMemPoolMode

/// Sets the mode of the process. The value is not checked here: one that is not
/// legal is reported as an Error each time a pool is used, which then serves
/// blocks as in mode `System`.
///
/// A second call is reported as an Error; when that returns, the new mode holds.
QXSYSTEM_API void QXSetMemPoolMode(unsigned mode);

/// The mode of the process, `Default` unless set.
QXSYSTEM_API unsigned QXGetMemPoolMode();

/// Deprecated, use `QXSetMemPoolMode`: sets the mode 10 for true and 8 for
/// false, which counts as its one call, and says so in two warnings.
QXSYSTEM_API void QXSetThreadSafe(bool flag);

/// Deprecated, use `QXGetMemPoolMode`: the flag last set, true in the beginning.
/// Reports two warnings.
QXSYSTEM_API bool QXGetThreadSafe();

/// Takes a block of 8 bytes for an empty cursor: one pool for all of them,
/// whatever their element type.
QXSYSTEM_API void* PopEmptyIter();

/// Returns a block taken by `PopEmptyIter`, which must not be null.
QXSYSTEM_API void PushEmptyIter(void* block);

/// A source of blocks of one size.
class QXSYSTEM_API QXVirtualCache {
public:
  /// A block aligned to 8 bytes, its contents undefined. Throws
  /// `std::bad_alloc` when there is no memory.
  virtual void* Pop() = 0;

  /// Takes back a block that this cache has issued.
  virtual void Push(void* block) = 0;

  virtual ~QXVirtualCache();

protected:
  QXVirtualCache() = default;
  QXVirtualCache(const QXVirtualCache&) = delete;
  QXVirtualCache& operator=(const QXVirtualCache&) = delete;
};

// The caches themselves, <qxsystem/core/memcache.h>.
template <std::size_t N, std::size_t Count, class Base>
class QXBoundedCache;
template <std::size_t N, std::size_t Count, class Base>
class QXUnboundedCache;
template <std::size_t N, std::size_t Count>
class QXMutexedBoundedCache;
template <std::size_t N, std::size_t Count>
class QXSpinlockedBoundedCache;
template <class Cache, class Base>
class QXMutexedCache;
template <class Cache, class Base>
class QXSpinlockedCache;
template <std::size_t N>
class QXSystemAlloc;
class QXNotVirtualCache;

/// A list of free blocks of `N` bytes, linked through their first words. In
/// builds with the address sanitizer they must not be touched.
template <std::size_t N>
class QXFreeList {
  static_assert(N >= sizeof(void*) && N % sizeof(void*) == 0, "a block holds aligned links");

public:
  QXFreeList() = default;
  QXFreeList(const QXFreeList&) = delete;
  QXFreeList& operator=(const QXFreeList&) = delete;

  bool IsEmpty() const { return !head_; }

  void Push(void* block) {
    head_ = ::new (block) Free{head_};
#ifdef QX_POISON_FREE_BLOCKS
    __asan_poison_memory_region(block, N);
#endif
  }

  /// The block pushed last; the list must not be empty.
  void* Pop() {
    Free* const block = head_;
#ifdef QX_POISON_FREE_BLOCKS
    __asan_unpoison_memory_region(block, N);
#endif
    head_ = block->next;
    return block;
  }

  /// Adds `count` adjacent blocks, to be taken from the lowest upwards.
  void PushAll(unsigned char* blocks, std::size_t count) {
    while (count > 0) Push(blocks + --count * N);
  }

  /// Makes the memory of `count` adjacent blocks fit for other use.
  static void Forget([[maybe_unused]] unsigned char* blocks, [[maybe_unused]] std::size_t count) {
#ifdef QX_POISON_FREE_BLOCKS
    __asan_unpoison_memory_region(blocks, count * N);
#endif
  }

private:
  struct Free {
    Free* next;
  };
  Free* head_ = nullptr;
};

/// The pool of blocks of `N` bytes, for `N` 8 and 24.
///
/// In the modes 6 and 10 every thread has a cache of its own, the main thread
/// the shared one of the Normal kind. A block then goes back on the thread that
/// took it, and does not outlive that thread. Blocks of the main thread and of
/// all other modes may live until the process ends.
template <std::size_t N>
class QXSYSTEM_API QXMemPool {
public:
  /// The cache for the present mode and the calling thread; never null.
  static QXVirtualCache* cachePtr();

  /// The same as `cachePtr()->Pop()`, and faster in the default mode.
  static void* Pop() {
    if constexpr (HasShortWay) {
      QXFreeList<N>* const blocks = readyBlocks_;
      if (blocks && !blocks->IsEmpty()) return blocks->Pop();
    }
    return PopFromCache();
  }

  /// The same as `cachePtr()->Push(block)`; `block` must not be null.
  static void Push(void* block) {
    if constexpr (HasShortWay) {
      QXFreeList<N>* const blocks = readyBlocks_;
      if (blocks) return blocks->Push(block);
    }
    PushToCache(block);
  }

  // The caches by kind. Each is built when it is first asked for; the
  // thread-local ones die with their thread, the others never.
  static constexpr std::size_t Count = 64;
  using Bounded = QXBoundedCache<N, Count, QXVirtualCache>;
  using Unbounded = QXUnboundedCache<N, Count, QXVirtualCache>;
  using PlainUnbounded = QXUnboundedCache<N, Count, QXNotVirtualCache>;

  static Bounded* BoundedCacheNormal();
  static Bounded* BoundedCacheThreadLocal();
  static QXMutexedBoundedCache<N, Count>* BoundedCacheMutexed();
  static QXSpinlockedBoundedCache<N, Count>* BoundedCacheSpinlocked();
  static Unbounded* UnboundedCacheNormal();
  static Unbounded* UnboundedCacheThreadLocal();
  static QXMutexedCache<PlainUnbounded, QXVirtualCache>* UnboundedCacheMutexed();
  static QXSpinlockedCache<PlainUnbounded, QXVirtualCache>* UnboundedCacheSpinlocked();
  static QXSystemAlloc<N>* system();

private:
  friend QXSYSTEM_API void QXSetMemPoolMode(unsigned mode);

  static void* PopFromCache();
  static void PushToCache(void* block);
  template <class Cache>
  static Cache* ThreadLocalCache();

  // A program with the address sanitizer may use a library without it, which
  // would hand out blocks that the program has poisoned: there all blocks go
  // through the library.
#ifdef QX_POISON_FREE_BLOCKS
  static constexpr bool HasShortWay = false;
#else
  static constexpr bool HasShortWay = true;
#endif

  // The free blocks of this thread's cache in the default mode, null until that
  // is chosen. Unlike `thread_local`, `__thread` is read without a call.
  static __thread QXFreeList<N>* readyBlocks_ __attribute__((tls_model("initial-exec")));
};

extern template class QXMemPool<8>;
extern template class QXMemPool<24>;

/// Mix-in that takes the objects of a class of `N` bytes from `QXMemPool<N>`.
///
/// Derived classes of another size go to the heap, so the class needs a virtual
/// destructor, which alone knows the size on the way back. There is no unsized
/// `operator delete` on purpose: it would be preferred to this one.
template <std::size_t N>
struct QXPooled {
  static void* operator new(std::size_t size) {
    if (size != N) return ::operator new(size);
    if constexpr (N == 8) return PopEmptyIter();
    return QXMemPool<N>::Pop();
  }

  static void operator delete(void* block, std::size_t size) {
    if (size != N)
      ::operator delete(block);
    else if constexpr (N == 8)
      PushEmptyIter(block);
    else
      QXMemPool<N>::Push(block);
  }
};

}  // namespace QXSystem

#undef QX_POISON_FREE_BLOCKS
