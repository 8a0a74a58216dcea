// Tags beside hash maps from names to numbers, all given the same names in the
// same order. With two threads the maps stand behind a mutex.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <mutex>
#include <random>
#include <string>
#include <unordered_map>
#include <vector>

#include <qxsystem/core/tagmap.h>

#if __has_include(<absl/container/flat_hash_map.h>)
#include <absl/container/flat_hash_map.h>
#define HAVE_ABSL 1
#endif

namespace {

using Names = std::vector<std::string>;

// `count` names of 4 to 32 characters that have not been made before.
Names FreshNames(std::size_t count) {
  static std::mt19937_64 random(1);
  static unsigned serial = 0;
  Names names(count);
  for (auto& name : names) {
    name = std::to_string(serial++);
    const std::size_t length = 4 + random() % 29;
    while (name.size() < length) name += static_cast<char>('a' + random() % 26);
    std::shuffle(name.begin(), name.end(), random);
    name += '#' + std::to_string(serial);
  }
  return names;
}

struct Tags {
  unsigned operator[](const std::string& name) { return QXSystem::QXGetTag(name); }
};

template <class Map>
struct Counted {
  Map map;
  unsigned operator[](const std::string& name) {
    return map.try_emplace(name, static_cast<unsigned>(map.size()) + 1).first->second;
  }
};

template <class Map>
struct Locked {
  Counted<Map> map;
  std::mutex mutex;
  unsigned operator[](const std::string& name) {
    const std::lock_guard<std::mutex> lock(mutex);
    return map[name];
  }
};

const Names& KnownNames(std::size_t count) {
  static const Names names = FreshNames(20000);
  static const Names few(names.begin(), names.begin() + 1000);
  return count == few.size() ? few : names;
}

// Every thread looks the names up in an order of its own.
template <class Table>
void Known(benchmark::State& state) {
  static Table table;
  Names names = KnownNames(static_cast<std::size_t>(state.range(0)));
  std::shuffle(names.begin(), names.end(),
               std::mt19937(static_cast<unsigned>(state.thread_index())));
  for (const auto& name : names) table[name];
  for (auto _ : state)
    for (const auto& name : names) benchmark::DoNotOptimize(table[name]);
  state.SetItemsProcessed(state.iterations() * state.range(0));
}

template <class Table>
void Intern(benchmark::State& state) {
  for (auto _ : state) {
    state.PauseTiming();
    const Names names = FreshNames(static_cast<std::size_t>(state.range(0)));
    auto* table = new Table;
    state.ResumeTiming();
    for (const auto& name : names) benchmark::DoNotOptimize((*table)[name]);
    state.PauseTiming();
    delete table;
    state.ResumeTiming();
  }
  state.SetItemsProcessed(state.iterations() * state.range(0));
}

using Std = std::unordered_map<std::string, unsigned>;

BENCHMARK(Known<Tags>)->Arg(1000)->Arg(20000);
BENCHMARK(Known<Counted<Std>>)->Arg(1000)->Arg(20000);
#if HAVE_ABSL
using Absl = absl::flat_hash_map<std::string, unsigned>;
BENCHMARK(Known<Counted<Absl>>)->Arg(1000)->Arg(20000);
#endif

BENCHMARK(Known<Tags>)->Arg(1000)->Arg(20000)->Threads(2)->UseRealTime();
BENCHMARK(Known<Locked<Std>>)->Arg(1000)->Arg(20000)->Threads(2)->UseRealTime();
#if HAVE_ABSL
BENCHMARK(Known<Locked<Absl>>)->Arg(1000)->Arg(20000)->Threads(2)->UseRealTime();
#endif

// Tags are never forgotten, so every round adds to what earlier rounds left.
BENCHMARK(Intern<Tags>)->Arg(20000)->Iterations(1);
BENCHMARK(Intern<Tags>)->Arg(1000000)->Iterations(1);
BENCHMARK(Intern<Counted<Std>>)->Arg(20000)->Iterations(1);
#if HAVE_ABSL
BENCHMARK(Intern<Counted<Absl>>)->Arg(20000)->Iterations(1);
#endif

}  // namespace
