#include <qxsystem/core/threadsafe.h>

#include <atomic>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <new>
#include <iterator>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include <qxsystem/core/base.h>
#include <qxsystem/core/errortest.h>
#include <qxsystem/core/memcache.h>
#include <qxsystem/core/vectoriter.h>

using namespace QXSystem;

// Every array made with `new[]` in the process is counted, the library's too.
namespace {
std::atomic<long> arraysMade, arraysFreed, bytesMade;
}
void* operator new[](std::size_t size) {
  ++arraysMade;
  bytesMade += static_cast<long>(size);
  if (void* const block = std::malloc(size)) return block;
  throw std::bad_alloc();
}
void operator delete[](void* block) noexcept {
  if (block) ++arraysFreed;
  std::free(block);
}
void operator delete[](void* block, std::size_t) noexcept {
  operator delete[](block);
}

namespace {

struct Arrays {
  long made = arraysMade, freed = arraysFreed, bytes = bytesMade;
  long Made() const { return arraysMade - made; }
  long Freed() const { return arraysFreed - freed; }
  long Bytes() const { return bytesMade - bytes; }
};

// Another mode, for tests alone: no block is in circulation meanwhile.
struct WithMode {
  unsigned before = QXGetMemPoolMode();
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

long Distance(const void* from, const void* to) {
  return static_cast<const unsigned char*>(to) - static_cast<const unsigned char*>(from);
}

constexpr long Count = 64;

// The first `n` blocks of a cache, checked to be aligned, apart and writable.
template <class Cache>
std::vector<void*> Take(Cache& cache, long n, std::size_t size) {
  std::vector<void*> blocks;
  std::set<std::uintptr_t> places;
  for (long i = 0; i < n; ++i) {
    blocks.push_back(cache.Pop());
    std::memset(blocks.back(), 0x55, size);
    const auto place = reinterpret_cast<std::uintptr_t>(blocks.back());
    EXPECT_EQ(place % 8, 0u);
    const auto next = places.lower_bound(place);
    EXPECT_TRUE(next == places.end() || *next >= place + size);
    EXPECT_TRUE(next == places.begin() || *std::prev(next) + size <= place);
    places.insert(next, place);
  }
  return blocks;
}

template <class Cache, long N>
void ExpectBounded() {
  const Arrays arrays;
  Cache cache;
  auto blocks = Take(cache, Count + 2, N);
  for (long i = 0; i < Count; ++i) EXPECT_EQ(Distance(blocks[0], blocks[size_t(i)]), i * N);
  EXPECT_EQ(arrays.Made(), 2);
  EXPECT_EQ(arrays.Bytes(), 2 * N);
  cache.Push(blocks[64]);
  EXPECT_EQ(arrays.Freed(), 1);
  cache.Push(blocks[3]);
  cache.Push(blocks[5]);
  cache.Push(blocks[65]);
  cache.Push(nullptr);
  EXPECT_EQ(cache.Pop(), blocks[5]);
  EXPECT_EQ(cache.Pop(), blocks[3]);
  EXPECT_EQ(arrays.Made(), 2);
  EXPECT_EQ(arrays.Freed(), 2);
}

template <class Cache, long N>
void ExpectUnbounded() {
  const Arrays arrays;
  {
    Cache cache;
    auto blocks = Take(cache, 3 * Count, N);
    for (long i = 0; i < 3 * Count; ++i)
      EXPECT_EQ(Distance(blocks[size_t(i / Count * Count)], blocks[size_t(i)]), i % Count * N);
    EXPECT_EQ(arrays.Made(), 2);
    EXPECT_EQ(arrays.Bytes(), 2 * Count * N);
    for (void* block : blocks) cache.Push(block);
    for (auto block = blocks.rbegin(); block != blocks.rend(); ++block)
      EXPECT_EQ(cache.Pop(), *block);
    EXPECT_EQ(arrays.Made(), 2);
    EXPECT_EQ(arrays.Freed(), 0);
  }
  EXPECT_EQ(arrays.Freed(), 2);
}

}  // namespace

TEST(QXMemPoolMode, IsSetOnceByTheNewSwitchOrTheOld) {
  testing::GTEST_FLAG(death_test_style) = "threadsafe";  // in a process of its own
  unsetenv("QX_TEST_POOL_MODE");
  const auto useSwitches = [] {
    if (QXGetMemPoolMode() != 10) std::exit(2);
    QXThrow.SetStrict(false);
    if (!QXGetThreadSafe()) std::exit(3);
    QXSetThreadSafe(false);
    if (QXGetMemPoolMode() != 8 || QXGetThreadSafe()) std::exit(4);
    QXSetThreadSafe(true);
    if (QXGetMemPoolMode() != 10) std::exit(5);
    QXThrow.SetStrict(true);
    QXSetMemPoolMode(10);
  };
  const std::string get =
      "Warning: QXGetThreadSafe.. is deprecated as of Kelvar 1.7.0\n"
      "Warning: Use QXGetMemPoolMode.. instead\n";
  const std::string twice =
      "QXSetMemPoolMode called twice! Should only be called once per program\n";
  EXPECT_EXIT(useSwitches(), testing::ExitedWithCode(1),
              get +
                  "Warning: QXSetThreadSafe.false. is deprecated as of Kelvar 1.7.0\n"
                  "Warning: Use QXSetMemPoolMode.QXMemPoolMode::SingleThreaded.QXMemPoolMode::"
                  "UnboundedCache. instead\n" +
                  get +
                  "Warning: QXSetThreadSafe.true. is deprecated as of Kelvar 1.7.0\n"
                  "Warning: Use QXSetMemPoolMode.QXMemPoolMode::Default. instead\n"
                  "Warning: " +
                  twice + "Fatal: " + twice);
}

TEST(QXMemPool, ServesEachModeFromItsCache) {
  using Pool = QXMemPool<24>;
  struct Caches {
    QXVirtualCache *main, *other;
  };
  const struct {
    unsigned mode;
    Caches (*expected)();
  } cases[] = {{4,
                [] {
                  return Caches{Pool::BoundedCacheNormal(), Pool::BoundedCacheNormal()};
                }},
               {5,
                [] {
                  return Caches{Pool::BoundedCacheMutexed(), Pool::BoundedCacheMutexed()};
                }},
               {6,
                [] {
                  return Caches{Pool::BoundedCacheNormal(), Pool::BoundedCacheThreadLocal()};
                }},
               {8,
                [] {
                  return Caches{Pool::UnboundedCacheNormal(), Pool::UnboundedCacheNormal()};
                }},
               {9,
                [] {
                  return Caches{Pool::UnboundedCacheMutexed(), Pool::UnboundedCacheMutexed()};
                }},
               {10,
                [] {
                  return Caches{Pool::UnboundedCacheNormal(), Pool::UnboundedCacheThreadLocal()};
                }},
               {16,
                [] {
                  return Caches{Pool::system(), Pool::system()};
                }},
               {36,
                [] {
                  return Caches{Pool::BoundedCacheSpinlocked(), Pool::BoundedCacheSpinlocked()};
                }},
               {40, [] {
                  return Caches{Pool::UnboundedCacheSpinlocked(), Pool::UnboundedCacheSpinlocked()};
                }}};
  std::set<QXVirtualCache*> all;
  for (const auto& c : cases) {
    SCOPED_TRACE(c.mode);
    const WithMode with(c.mode);
    QXVirtualCache* const mine = Pool::cachePtr();
    EXPECT_EQ(mine, c.expected().main);
    EXPECT_EQ(mine, Pool::cachePtr());
    all.insert(mine);
    OnOtherThread([&] {
      QXVirtualCache* const others = Pool::cachePtr();
      EXPECT_EQ(others, c.expected().other);
      EXPECT_EQ(others == mine, !(c.mode & QXMemPoolMode::ThreadLocal));
      void* const block = Pool::Pop();
      Pool::Push(block);
      if (c.mode != 16) {
        EXPECT_EQ(others->Pop(), block) << "the short way leads to the same cache";
        others->Push(block);
      }
    });
  }
  EXPECT_EQ(all.size(), 7u);
}

TEST(QXMemPool, FallsBackOnTheAllocatorInAnIllegalMode) {
  for (const unsigned mode : {0u, 1u, 2u, 7u, 11u, 12u, 20u, 32u, 44u}) {
    const WithMode with(mode);
    QXPushSimpleQXThrowTester reports;
    EXPECT_THROW(PopEmptyIter(), std::runtime_error);
    reports.Clear();
    QXThrow.SetStrict(false);
    const Arrays arrays;
    PushEmptyIter(PopEmptyIter());
    EXPECT_EQ(arrays.Made(), 1);
    EXPECT_EQ(arrays.Freed(), 1);
    const std::string text = "Unrecognized QXMemPoolMode (" + std::to_string(mode) + ")\n";
    EXPECT_EQ(reports.GetErrorLog(), "level = 5\n" + text + text);
  }
}

TEST(QXBoundedCache, RecyclesItsOwnBlocksAlone) {
  ExpectBounded<QXBoundedCache<8, 64, QXVirtualCache>, 8>();
  ExpectBounded<QXBoundedCache<24, 64, QXNotVirtualCache>, 24>();
  ExpectBounded<QXMutexedBoundedCache<24, 64>, 24>();
  ExpectBounded<QXSpinlockedBoundedCache<8, 64>, 8>();
}

TEST(QXUnboundedCache, GrowsByChunksAndFreesThemAtItsEnd) {
  using Plain = QXUnboundedCache<24, 64, QXNotVirtualCache>;
  ExpectUnbounded<QXUnboundedCache<8, 64, QXVirtualCache>, 8>();
  ExpectUnbounded<Plain, 24>();
  ExpectUnbounded<QXMutexedCache<Plain, QXVirtualCache>, 24>();
  ExpectUnbounded<QXSpinlockedCache<Plain, QXVirtualCache>, 24>();
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
    ~Late() { EXPECT_FALSE(QXIter<int>(cursor) || !cursor.Copy()); }
  };
  const Arrays arrays;
  OnOtherThread([] {
    thread_local Late late;  // older than the cache
    std::vector<QXIter<int>> many(100, new QXVectorPtrIter<int>(&nothing));
    late.cursor = many[99];
  });
  EXPECT_EQ(arrays.Made(), 1);
  EXPECT_EQ(arrays.Freed(), 1);
}

TEST(QXPooled, TakesCursorsFromThePoolOfTheirSize) {
  const WithMode with(QXMemPoolMode::Default);
  void* const small = PopEmptyIter();
  PushEmptyIter(small);
  QXIterBase<std::string>* const empty = new QXEmptyIter<std::string>;
  EXPECT_EQ(static_cast<void*>(empty), small);
  delete empty;
  void* const block = QXMemPool<24>::Pop();
  QXMemPool<24>::Push(block);
  QXIterBase<std::string>* const iter = new QXVectorPtrIter<std::string>(nullptr);
  EXPECT_EQ(static_cast<void*>(iter), block);
  delete iter;

  struct Larger : QXVectorPtrIter<std::string> {
    using QXVectorPtrIter::QXVectorPtrIter;
    long more = 1;
  };
  QXIterBase<std::string>* const larger = new Larger(nullptr);
  EXPECT_NE(static_cast<void*>(larger), block);
  delete larger;
  EXPECT_EQ(QXMemPool<24>::Pop(), block);
  QXMemPool<24>::Push(block);
}

#if defined(__SANITIZE_ADDRESS__)
TEST(QXFreeList, LetsASanitizerSeeUsesAfterReturn) {
  QXUnboundedCache<24, 64, QXVirtualCache> cache;
  auto* const block = static_cast<volatile char*>(cache.Pop());
  cache.Push(const_cast<char*>(block));
  EXPECT_DEATH(block[16] = 1, "use-after-poison");
}
#endif
