#include <qxsystem/core/threadsafe.h>

#include <atomic>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <iostream>
#include <memory>
#include <set>
#include <stdexcept>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include <qxsystem/core/memcache.h>
#include <qxsystem/core/vectoriter.h>

#include "support/capture.h"

using namespace QXSystem;

// What is made with `new[]` in the process is counted, the library's too.
namespace {
std::atomic<long> arrays, arraysFreed, arrayBytes;
}
[[gnu::noinline]] void* operator new[](std::size_t size) {
  ++arrays;
  arrayBytes += static_cast<long>(size);
  return operator new(size);
}
[[gnu::noinline]] void operator delete[](void* block) noexcept {
  arraysFreed += block != nullptr;
  operator delete(block);
}
[[gnu::noinline]] void operator delete[](void* block, std::size_t) noexcept {
  operator delete[](block);
}

namespace {

// Another mode, for tests alone: no block is in circulation meanwhile.
struct WithMode {
  const unsigned before = QXGetMemPoolMode();
  explicit WithMode(unsigned mode) { Set(mode); }
  ~WithMode() { Set(before); }

  static void Set(unsigned mode) {
    const qxtest::Reports silent;
    QXSetMemPoolMode(mode);
  }
};

// Takes 130 blocks: those inside come in order, as do those of each chunk.
template <class Cache>
std::vector<void*> Take(Cache& cache, std::size_t size, std::size_t chunk) {
  std::vector<void*> blocks(130);
  for (std::size_t i = 0; i < blocks.size(); ++i) {
    std::memset(blocks[i] = cache.Pop(), 0x55, size);
    EXPECT_EQ(reinterpret_cast<std::uintptr_t>(blocks[i]) % 8, 0u);
    if (i < 64 || chunk > 1) {
      EXPECT_EQ(blocks[i], static_cast<char*>(blocks[i / 64 * 64]) + i % 64 * size);
    }
  }
  EXPECT_EQ(std::set<void*>(blocks.begin(), blocks.end()).size(), blocks.size());
  return blocks;
}

// What returns is given again, the last first; a bounded cache keeps 64 blocks.
template <class Cache>
void ExpectRecycles(long size, bool bounded) {
  const long made = arrays, freed = arraysFreed, bytes = arrayBytes;
  {
    Cache cache;
    auto blocks = Take(cache, static_cast<std::size_t>(size), bounded ? 1 : 64);
    EXPECT_EQ(arrays - made, bounded ? 130 - 64 : 2);
    EXPECT_TRUE(bounded || arrayBytes - bytes == 2 * 64 * size);
    if (bounded) cache.Push(nullptr);
    for (void* block : blocks) cache.Push(block);
    EXPECT_EQ(arraysFreed - freed, bounded ? 130 - 64 : 0);
    if (bounded) blocks.resize(64);
    for (; !blocks.empty(); blocks.pop_back()) EXPECT_EQ(cache.Pop(), blocks.back());
  }
  EXPECT_EQ(arraysFreed - freed, bounded ? 130 - 64 : 2);
}

}  // namespace

TEST(QXMemPoolMode, IsSetOnceByTheNewSwitchOrTheOld) {
  testing::GTEST_FLAG(death_test_style) = "threadsafe";  // in a process of its own
  unsetenv("QX_TEST_POOL_MODE");
  const auto useSwitches = [] {
    QXPushSimpleQXThrowTester reports;
    QXThrow.SetStrict(false);
    const bool fresh = QXGetMemPoolMode() == 10 && QXGetThreadSafe();
    QXSetThreadSafe(false);
    const bool off = QXGetMemPoolMode() == 8;
    QXSetThreadSafe(true);
    std::cerr << fresh << off << QXGetMemPoolMode() << reports.GetErrorLog();
    std::exit(0);
  };
  EXPECT_EXIT(
      useSwitches(), testing::ExitedWithCode(0),
      "1110level = 4\n"
      "QXGetThreadSafe.. is deprecated as of Kelvar 1.7.0\n"
      "Use QXGetMemPoolMode.. instead\n"
      "QXSetThreadSafe.false. is deprecated as of Kelvar 1.7.0\n"
      "Use QXSetMemPoolMode.QXMemPoolMode::SingleThreaded.QXMemPoolMode::UnboundedCache. instead\n"
      "QXSetThreadSafe.true. is deprecated as of Kelvar 1.7.0\n"
      "Use QXSetMemPoolMode.QXMemPoolMode::Default. instead\n"
      "level = 5\n"
      "QXSetMemPoolMode called twice! Should only be called once per program\n$");
}

TEST(QXMemPool, ServesEachModeFromItsCache) {
  using Pool = QXMemPool<24>;
  const std::pair<unsigned, QXVirtualCache*> cases[] = {{4, Pool::BoundedCacheNormal()},
                                                        {5, Pool::BoundedCacheMutexed()},
                                                        {6, Pool::BoundedCacheNormal()},
                                                        {8, Pool::UnboundedCacheNormal()},
                                                        {9, Pool::UnboundedCacheMutexed()},
                                                        {10, Pool::UnboundedCacheNormal()},
                                                        {16, Pool::system()},
                                                        {36, Pool::BoundedCacheSpinlocked()},
                                                        {40, Pool::UnboundedCacheSpinlocked()}};
  for (const auto& each : cases) {
    const unsigned mode = each.first;
    SCOPED_TRACE(mode);
    const WithMode with(mode);
    const auto expect = [mode](QXVirtualCache* cache) {
      EXPECT_EQ(Pool::cachePtr(), cache);
      void* const block = Pool::Pop();
      Pool::Push(block);
      if (mode == QXMemPoolMode::System) return;
      EXPECT_EQ(cache->Pop(), block) << "the short way leads to the same cache";
      cache->Push(block);
    };
    expect(each.second);
    std::thread([&] {
      expect(mode == 6    ? Pool::BoundedCacheThreadLocal()
             : mode == 10 ? Pool::UnboundedCacheThreadLocal()
                          : each.second);
      EXPECT_NE(Pool::UnboundedCacheThreadLocal(), Pool::UnboundedCacheNormal());
    }).join();
  }
}

TEST(QXMemPool, FallsBackOnTheAllocatorInAnIllegalMode) {
  for (const unsigned mode : {0u, 1u, 2u, 7u, 11u, 12u, 20u, 32u, 44u}) {
    const WithMode with(mode);
    QXPushSimpleQXThrowTester reports;
    EXPECT_THROW(PopEmptyIter(), std::runtime_error);
    QXThrow.SetStrict(false);
    const long made = arrays, freed = arraysFreed;
    PushEmptyIter(PopEmptyIter());
    EXPECT_TRUE(arrays - made == 1 && arraysFreed - freed == 1);
    const std::string text = "Unrecognized QXMemPoolMode (" + std::to_string(mode) + ")\n";
    EXPECT_EQ(reports.GetErrorLog(), "level = 5\n" + text + text + text);
  }
}

TEST(QXMemPool, HasCachesThatRecycleUpToABoundOrGrow) {
  using Plain = QXUnboundedCache<24, 64, QXNotVirtualCache>;
  ExpectRecycles<QXBoundedCache<8, 64, QXVirtualCache>>(8, true);
  ExpectRecycles<QXMutexedBoundedCache<24, 64>>(24, true);
  ExpectRecycles<QXSpinlockedBoundedCache<8, 64>>(8, true);
  ExpectRecycles<QXUnboundedCache<8, 64, QXVirtualCache>>(8, false);
  ExpectRecycles<QXMutexedCache<Plain, QXVirtualCache>>(24, false);
  ExpectRecycles<QXSpinlockedCache<Plain, QXVirtualCache>>(24, false);
}

TEST(QXMemPool, GivesABlockToOneThreadAtATime) {
  for (const unsigned mode : {5u, 6u, 9u, 10u, 36u, 40u}) {
    SCOPED_TRACE(mode);
    const WithMode with(mode);
    std::atomic<bool> torn{false};
    const auto work = [&torn](int mark) {
      for (int round = 0; round < 50; ++round) {
        std::vector<void*> blocks(100);
        for (void*& block : blocks) std::memset(block = QXMemPool<24>::Pop(), mark, 24);
        for (void* block : blocks) {
          if (*static_cast<unsigned char*>(block) != mark) torn = true;
          QXMemPool<24>::Push(block);
        }
      }
    };
    std::thread one(work, 1), two(work, 2);
    work(3);
    one.join();
    two.join();
    EXPECT_FALSE(torn);

    if (mode & QXMemPoolMode::ThreadLocal) continue;  // else any thread may return it
    void* block = nullptr;
    std::thread([&block] { block = QXMemPool<24>::Pop(); }).join();
    QXMemPool<24>::Push(block);
    EXPECT_EQ(QXMemPool<24>::Pop(), block);
    QXMemPool<24>::Push(block);
  }
}

TEST(QXMemPool, FreesTheCacheOfAThreadAfterAllItsObjects) {
  const WithMode with(QXMemPoolMode::Default);
  static const std::vector<int*> nothing;
  struct Late {
    QXIter<int> cursor;
    ~Late() { EXPECT_FALSE(QXIter<int>(cursor)); }
  };
  const long made = arrays, freed = arraysFreed;
  std::thread([] {
    thread_local Late late;  // older than the cache
    std::vector<QXIter<int>> many(100, new QXVectorPtrIter<int>(&nothing));
    late.cursor = many[99];
  }).join();
  EXPECT_TRUE(arrays - made == 1 && arraysFreed - freed == 1);
}

TEST(QXPooled, TakesCursorsFromThePoolOfTheirSize) {
  struct Larger : QXVectorPtrIter<std::string> {
    using QXVectorPtrIter::QXVectorPtrIter;
    long more = 1;
  };
  const WithMode with(QXMemPoolMode::Default);
  const auto isAt = [](void* block, QXIterBase<std::string>* cursor) {
    const std::unique_ptr<QXIterBase<std::string>> owner(cursor);
    return static_cast<void*>(cursor) == block;
  };
  void* const block = QXMemPool<24>::Pop();
  QXMemPool<24>::Push(block);
  EXPECT_TRUE(isAt(block, new QXVectorPtrIter<std::string>(nullptr)));
  EXPECT_FALSE(isAt(block, new Larger(nullptr)));
}

#if defined(__SANITIZE_ADDRESS__)
TEST(QXFreeList, LetsASanitizerSeeUsesAfterReturn) {
  QXUnboundedCache<24, 64, QXVirtualCache> cache;
  auto* const block = static_cast<volatile char*>(cache.Pop());
  cache.Push(const_cast<char*>(block));
  EXPECT_DEATH(block[16] = 1, "use-after-poison");
}
#endif
