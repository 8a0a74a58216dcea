// Blocks of 24 bytes from the pool in its default mode, beside the allocator:
// taken and returned one by one, and many at once.
#include <benchmark/benchmark.h>

#include <cstdlib>
#include <vector>

#include <qxsystem/core/threadsafe.h>

namespace {

struct Pool {
  static void* Take() { return QXSystem::QXMemPool<24>::Pop(); }
  static void Return(void* block) { QXSystem::QXMemPool<24>::Push(block); }
};

struct Malloc {
  static void* Take() { return std::malloc(24); }
  static void Return(void* block) { std::free(block); }
};

template <class Source>
void TakeAndReturn(benchmark::State& state) {
  std::vector<void*> blocks(static_cast<std::size_t>(state.range(0)));
  for (auto _ : state) {
    for (void*& block : blocks) benchmark::DoNotOptimize(block = Source::Take());
    for (void* block : blocks) Source::Return(block);
  }
  state.SetItemsProcessed(state.iterations() * state.range(0));
}

BENCHMARK(TakeAndReturn<Pool>)->Arg(1)->Arg(64)->Threads(1)->Threads(2);
BENCHMARK(TakeAndReturn<Malloc>)->Arg(1)->Arg(64)->Threads(1)->Threads(2);

}  // namespace
