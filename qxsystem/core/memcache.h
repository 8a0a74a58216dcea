// Caches of fixed-size blocks: bounded and unbounded, plain and behind a lock.
// Most callers want `QXMemPool`, which chooses one of them.
#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <mutex>
#include <new>
#include <utility>
#include <vector>

#include <qxsystem/core/export.h>
#include <qxsystem/core/threadsafe.h>

namespace QXSystem {

/// Base of a cache that a locking wrapper embeds: the wrapper alone carries the
/// virtual interface.
class QXNotVirtualCache {};

/// Every block from the allocator and back.
template <std::size_t N>
class QXSYSTEM_API QXSystemAlloc : public QXVirtualCache {
public:
  void* Pop() override { return new unsigned char[N]; }
  void Push(void* block) override { delete[] static_cast<unsigned char*>(block); }
};

/// Recycles the `Count` blocks that it has inside; further ones come from the
/// allocator and return there.
template <std::size_t N, std::size_t Count, class Base>
class QXSYSTEM_API QXBoundedCache : public Base {
public:
  QXBoundedCache() { free_.PushAll(storage_, Count); }
  ~QXBoundedCache() { free_.Forget(storage_, Count); }

  void* Pop() {
    void* const block = PopInline();
    return block ? block : new unsigned char[N];
  }

  /// Null is ignored.
  void Push(void* block) {
    if (IsInline(block))
      PushInline(block);
    else
      delete[] static_cast<unsigned char*>(block);
  }

  // The parts of which a wrapper guards only those that touch the list.
  bool IsInline(const void* block) const {
    return reinterpret_cast<std::uintptr_t>(block) - reinterpret_cast<std::uintptr_t>(storage_) <
           sizeof storage_;
  }
  void* PopInline() { return free_.IsEmpty() ? nullptr : free_.Pop(); }
  void PushInline(void* block) { free_.Push(block); }

private:
  QXFreeList<N> free_;
  alignas(8) unsigned char storage_[Count * N];
};

/// Grows by chunks of `Count` blocks, keeps every block that it is given, and
/// frees its memory when it dies.
template <std::size_t N, std::size_t Count, class Base>
class QXSYSTEM_API QXUnboundedCache : public Base {
public:
  QXUnboundedCache() { free_.PushAll(storage_, Count); }
  ~QXUnboundedCache() {
    free_.Forget(storage_, Count);
    for (const auto& chunk : chunks_) free_.Forget(chunk.get(), Count);
  }

  void* Pop() { return free_.IsEmpty() ? PopFromNewChunk() : free_.Pop(); }

  /// Tests nothing: `block` must not be null.
  void Push(void* block) { free_.Push(block); }

  /// The blocks at hand, for those who want to save the way through the cache.
  QXFreeList<N>& GetFreeList() { return free_; }

private:
  [[gnu::noinline, gnu::cold]] void* PopFromNewChunk() {
    std::unique_ptr<unsigned char[]> chunk(new unsigned char[Count * N]);
    chunks_.push_back(std::move(chunk));
    free_.PushAll(chunks_.back().get(), Count);
    return free_.Pop();
  }

  QXFreeList<N> free_;
  alignas(8) unsigned char storage_[Count * N];
  std::vector<std::unique_ptr<unsigned char[]>> chunks_;
};

/// A lock of one byte for sections of a few instructions: waits in a tight loop.
class QXSpinLock {
public:
  void lock() {
    while (taken_.exchange(true, std::memory_order_acquire)) {
    }
  }
  void unlock() { taken_.store(false, std::memory_order_release); }

private:
  std::atomic<bool> taken_{false};
};

/// A bounded cache for any thread. The allocator is called outside the lock.
template <std::size_t N, std::size_t Count, class Lock>
class QXSYSTEM_API QXLockedBoundedCache : public QXVirtualCache {
public:
  void* Pop() override {
    void* const block = PopInline();
    return block ? block : new unsigned char[N];
  }

  void Push(void* block) override {
    if (!cache_.IsInline(block)) {
      delete[] static_cast<unsigned char*>(block);
      return;
    }
    const std::lock_guard<Lock> guard(lock_);
    cache_.PushInline(block);
  }

private:
  void* PopInline() {
    const std::lock_guard<Lock> guard(lock_);
    return cache_.PopInline();
  }

  Lock lock_;
  QXBoundedCache<N, Count, QXNotVirtualCache> cache_;
};

/// Any cache, made fit for any thread; `Base` is the virtual interface.
template <class Cache, class Base, class Lock>
class QXSYSTEM_API QXLockedCache : public Base {
public:
  void* Pop() override {
    const std::lock_guard<Lock> guard(lock_);
    return cache_.Pop();
  }

  void Push(void* block) override {
    const std::lock_guard<Lock> guard(lock_);
    cache_.Push(block);
  }

private:
  Lock lock_;
  Cache cache_;
};

template <std::size_t N, std::size_t Count>
class QXSYSTEM_API QXMutexedBoundedCache : public QXLockedBoundedCache<N, Count, std::mutex> {};
template <std::size_t N, std::size_t Count>
class QXSYSTEM_API QXSpinlockedBoundedCache : public QXLockedBoundedCache<N, Count, QXSpinLock> {};
template <class Cache, class Base>
class QXSYSTEM_API QXMutexedCache : public QXLockedCache<Cache, Base, std::mutex> {};
template <class Cache, class Base>
class QXSYSTEM_API QXSpinlockedCache : public QXLockedCache<Cache, Base, QXSpinLock> {};

}  // namespace QXSystem
