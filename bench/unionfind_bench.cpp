// A million random unions over a million items, then one query for each.
#include <benchmark/benchmark.h>

#include <random>
#include <utility>
#include <vector>

#include <qxsystem/util/unionfind.h>

#if __has_include(<boost/pending/disjoint_sets.hpp>)
#include <boost/pending/disjoint_sets.hpp>
#define HAVE_BOOST 1
#endif

namespace {

constexpr int Items = 1000000;

const std::vector<std::pair<int, int>>& Unions() {
  static const auto unions = [] {
    std::mt19937 random(1);
    std::uniform_int_distribution<int> item(0, Items - 1);
    std::vector<std::pair<int, int>> made(Items);
    for (auto& [a, b] : made) a = item(random), b = item(random);
    return made;
  }();
  return unions;
}

struct UnionFind {
  QXSystem::QXUnionFind groups{Items};
  void Union(int a, int b) { groups.Union(a, b); }
  int Find(int i) { return groups.FindID(i); }
};

#ifdef HAVE_BOOST
template <class FindCompress>
struct Boost {
  std::vector<int> rank = std::vector<int>(Items), parent = std::vector<int>(Items);
  boost::disjoint_sets<int*, int*, FindCompress> groups{rank.data(), parent.data()};
  Boost() {
    for (int i = 0; i < Items; ++i) groups.make_set(i);
  }
  void Union(int a, int b) { groups.union_set(a, b); }
  int Find(int i) { return groups.find_set(i); }
};
#endif

template <class Groups>
void RandomUnions(benchmark::State& state) {
  const auto& unions = Unions();
  for (auto _ : state) {
    Groups groups;
    for (const auto& [a, b] : unions) groups.Union(a, b);
    long sum = 0;
    for (int i = 0; i < Items; ++i) sum += groups.Find(i);
    benchmark::DoNotOptimize(sum);
  }
  state.SetItemsProcessed(state.iterations() * Items);
}

BENCHMARK(RandomUnions<UnionFind>)->Unit(benchmark::kMillisecond);
#ifdef HAVE_BOOST
BENCHMARK(RandomUnions<Boost<boost::find_with_path_halving>>)->Unit(benchmark::kMillisecond);
BENCHMARK(RandomUnions<Boost<boost::find_with_full_path_compression>>)
    ->Unit(benchmark::kMillisecond);
#endif

}  // namespace
