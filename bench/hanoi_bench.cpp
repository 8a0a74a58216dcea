// hanoisort beside the sorts of the standard library, all with the same
// comparison function behind a pointer, on random keys.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <random>
#include <vector>

#include <qxsystem/util/hanoi.h>

namespace {

using Compare = int (*)(const void*, const void*);

struct Wide {
  std::int64_t key;
  std::int64_t payload[2];
};

std::int64_t Key(std::int32_t x) {
  return x;
}
std::int64_t Key(std::int64_t x) {
  return x;
}
std::int64_t Key(const Wide& x) {
  return x.key;
}

template <class T>
int ByKey(const void* x, const void* y) {
  const std::int64_t a = Key(*static_cast<const T*>(x)), b = Key(*static_cast<const T*>(y));
  return (a > b) - (a < b);
}

template <class T>
T Random(std::mt19937_64& random) {
  if constexpr (sizeof(T) == sizeof(Wide))
    return {static_cast<std::int64_t>(random()), {1, 2}};
  else
    return static_cast<T>(random());
}

struct Hanoi {
  template <class T>
  static void Sort(std::vector<T>& v, Compare compare) {
    QXSystem::hanoisort(v.data(), v.size(), sizeof(T), compare);
  }
};

struct QSort {
  template <class T>
  static void Sort(std::vector<T>& v, Compare compare) {
    std::qsort(v.data(), v.size(), sizeof(T), compare);
  }
};

struct StdSort {
  template <class T>
  static void Sort(std::vector<T>& v, Compare compare) {
    std::sort(v.begin(), v.end(), [=](const T& x, const T& y) { return compare(&x, &y) < 0; });
  }
};

struct StableSort {
  template <class T>
  static void Sort(std::vector<T>& v, Compare compare) {
    std::stable_sort(v.begin(), v.end(),
                     [=](const T& x, const T& y) { return compare(&x, &y) < 0; });
  }
};

// Many arrays for the small size, so that no branch predictor learns them.
template <class Sorter, class T>
void SortRandom(benchmark::State& state) {
  const auto n = static_cast<std::size_t>(state.range(0));
  std::mt19937_64 random(1);
  std::vector<std::vector<T>> inputs(std::max<std::size_t>(1, 200000 / n), std::vector<T>(n));
  for (auto& input : inputs)
    for (T& x : input) x = Random<T>(random);
  Compare compare = ByKey<T>;
  benchmark::DoNotOptimize(compare);  // no sorter may see through the pointer
  std::vector<T> work;
  std::size_t next = 0;
  for (auto _ : state) {
    work = inputs[next++ % inputs.size()];  // for all alike, and cheap beside the sort
    Sorter::Sort(work, compare);
    benchmark::DoNotOptimize(work.data());
  }
  state.SetItemsProcessed(state.iterations() * state.range(0));
}

#define BENCHMARK_SORTERS(T)                                                  \
  BENCHMARK(SortRandom<Hanoi, T>)->Arg(1000)->Arg(100000)->Arg(1000000);      \
  BENCHMARK(SortRandom<StdSort, T>)->Arg(1000)->Arg(100000)->Arg(1000000);    \
  BENCHMARK(SortRandom<StableSort, T>)->Arg(1000)->Arg(100000)->Arg(1000000); \
  BENCHMARK(SortRandom<QSort, T>)->Arg(1000)->Arg(100000)->Arg(1000000)

BENCHMARK_SORTERS(std::int32_t);
BENCHMARK_SORTERS(std::int64_t);
BENCHMARK_SORTERS(Wide);

}  // namespace
