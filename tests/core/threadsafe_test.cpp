#include <qxsystem/core/threadsafe.h>

#include <atomic>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <iostream>
#include <memory>
#include <new>
#include <set>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include <qxsystem/core/base.h>
#include <qxsystem/core/errortest.h>
#include <qxsystem/core/memcache.h>
#include <qxsystem/core/vectoriter.h>

using namespace QXSystem;

// What is made with `new` and `new[]` in the process is counted, the library's too.
namespace {
std::atomic<long> objects, arrays, arraysFreed, arrayBytes;
}
[[gnu::noinline]] void* operator new(std::size_t size) {
  ++objects;
  if (void* const block = std::malloc(size)) return block;
  throw std::bad_alloc();
}
[[gnu::noinline]] void* operator new[](std::size_t size) {
  ++arrays;
  arrayBytes += static_cast<long>(size);
  return operator new(size);
}
[[gnu::noinline]] void operator delete(void* block) noexcept {
  std::free(block);
}
[[gnu::noinline]] void operator delete(void* block, std::size_t) noexcept {
  std::free(block);
}
[[gnu::noinline]] void operator delete[](void* block) noexcept {
  arraysFreed += block != nullptr;
  std::free(block);
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
    QXPushSimpleQXThrowTester reports;
    QXThrow.SetStrict(false);
    QXThrow.SetLevel(QXErrorLevel::Quiet);
    QXSetMemPoolMode(mode);
  }
};

void OnOtherThread(const std::function<void()>& run) {
  std::thread(run).join();
}

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

template <class Cache>
void ExpectBounded(long size) {
  const long made = arrays, freed = arraysFreed;
  Cache cache;
  const auto blocks = Take(cache, static_cast<std::size_t>(size), 1);
  EXPECT_EQ(arrays - made, 130 - 64);
  cache.Push(nullptr);
  for (void* block : blocks) cache.Push(block);
  EXPECT_EQ(arraysFreed - freed, 130 - 64);
  EXPECT_EQ(cache.Pop(), blocks[63]);
  EXPECT_EQ(cache.Pop(), blocks[62]);
}

template <class Cache>
void ExpectUnbounded(long size) {
  const long made = arrays, freed = arraysFreed, bytes = arrayBytes;
  {
    Cache cache;
    auto blocks = Take(cache, static_cast<std::size_t>(size), 64);
    for (void* block : blocks) cache.Push(block);
    for (; !blocks.empty(); blocks.pop_back()) EXPECT_EQ(cache.Pop(), blocks.back());
    EXPECT_EQ(arrays - made, 2);
    EXPECT_EQ(arrayBytes - bytes, 2 * 64 * size);
    EXPECT_EQ(arraysFreed, freed);
  }
  EXPECT_EQ(arraysFreed - freed, 2);
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
  const struct {
    unsigned mode;
    QXVirtualCache* expected;  // of the main thread
  } cases[] = {{4, Pool::BoundedCacheNormal()},
               {5, Pool::BoundedCacheMutexed()},
               {6, Pool::BoundedCacheNormal()},
               {8, Pool::UnboundedCacheNormal()},
               {9, Pool::UnboundedCacheMutexed()},
               {10, Pool::UnboundedCacheNormal()},
               {16, Pool::system()},
               {36, Pool::BoundedCacheSpinlocked()},
               {40, Pool::UnboundedCacheSpinlocked()}};
  for (const auto& c : cases) {
    SCOPED_TRACE(c.mode);
    const WithMode with(c.mode);
    const auto expect = [&c](QXVirtualCache* cache) {
      EXPECT_EQ(Pool::cachePtr(), cache);
      void* const block = Pool::Pop();
      Pool::Push(block);
      if (c.mode == QXMemPoolMode::System) return;
      EXPECT_EQ(cache->Pop(), block) << "the short way leads to the same cache";
      cache->Push(block);
    };
    expect(c.expected);
    OnOtherThread([&] {
      expect(c.mode == 6    ? Pool::BoundedCacheThreadLocal()
             : c.mode == 10 ? Pool::UnboundedCacheThreadLocal()
                            : c.expected);
    });
  }
  OnOtherThread([] { EXPECT_NE(Pool::UnboundedCacheThreadLocal(), Pool::UnboundedCacheNormal()); });
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
  ExpectBounded<QXBoundedCache<8, 64, QXVirtualCache>>(8);
  ExpectBounded<QXBoundedCache<24, 64, QXNotVirtualCache>>(24);
  ExpectBounded<QXMutexedBoundedCache<24, 64>>(24);
  ExpectBounded<QXSpinlockedBoundedCache<8, 64>>(8);
  ExpectUnbounded<QXUnboundedCache<8, 64, QXVirtualCache>>(8);
  ExpectUnbounded<Plain>(24);
  ExpectUnbounded<QXMutexedCache<Plain, QXVirtualCache>>(24);
  ExpectUnbounded<QXSpinlockedCache<Plain, QXVirtualCache>>(24);
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
    OnOtherThread([&block] { block = QXMemPool<24>::Pop(); });
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
  OnOtherThread([] {
    thread_local Late late;  // older than the cache
    std::vector<QXIter<int>> many(100, new QXVectorPtrIter<int>(&nothing));
    late.cursor = many[99];
  });
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
  void* const small = PopEmptyIter();
  PushEmptyIter(small);
  EXPECT_TRUE(isAt(small, new QXEmptyIter<std::string>));
  void* const block = QXMemPool<24>::Pop();
  QXMemPool<24>::Push(block);
  EXPECT_TRUE(isAt(block, new QXVectorPtrIter<std::string>(nullptr)));
  EXPECT_FALSE(isAt(block, new Larger(nullptr)));
  EXPECT_TRUE(isAt(block, new QXVectorPtrIter<std::string>(nullptr)));
}

TEST(QXPooled, WalksDataWithoutTheAllocator) {
  const WithMode with(QXMemPoolMode::Default);
  QXContainer empty, full;
  full.SetData<int>("first", 1);
  full.SetData<int>("second", 2);
  const auto walk = [&] {
    int items = 0;
    for (QXIter<QXBaseData> item = full.GetDataIter(); item; ++item) ++items;
    return items + bool(QXIter<QXBaseData>(empty.GetDataIter()));
  };
  EXPECT_EQ(walk(), 2);
  const long before = objects;
  for (int i = 0; i < 100; ++i) walk();
  EXPECT_EQ(objects, before);
}

#if defined(__SANITIZE_ADDRESS__)
TEST(QXFreeList, LetsASanitizerSeeUsesAfterReturn) {
  QXUnboundedCache<24, 64, QXVirtualCache> cache;
  auto* const block = static_cast<volatile char*>(cache.Pop());
  cache.Push(const_cast<char*>(block));
  EXPECT_DEATH(block[16] = 1, "use-after-poison");
}
#endif
