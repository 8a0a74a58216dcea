// Generic data beside other bags of named values: eight items set in a new
// object, set again, asked for, and copied with the object. The library by id
// and by name; the peers know names only. `Literal` is a name as it stands in
// the caller's code, of which the peers make a std::string at every call; `Key`
// is a std::string that the caller has made beforehand, the best that the peers
// can be given. RDProps gives texts as copies, the others by reference.
#include <benchmark/benchmark.h>

#include <any>
#include <array>
#include <string>
#include <unordered_map>

#include <qxsystem/core/base.h>

#if __has_include(<RDGeneral/RDProps.h>)
#include <RDGeneral/RDProps.h>
#define HAVE_RDKIT 1
#endif

namespace {

using QXSystem::QXContainer;

enum Item : std::size_t { Title, Atoms, Charge, Serial, Chiral, Radius, Mass, Energy };

using Literal = const char*;
using Key = std::string;

template <class Name>
const std::array<Name, 8> names = {"title",  "atom count", "formal charge", "serial number",
                                   "chiral", "radius",     "mass",          "energy"};

std::array<unsigned, 8> Tags() {
  std::array<unsigned, 8> tags;
  for (std::size_t i = 0; i < tags.size(); ++i) tags[i] = QXSystem::QXGetTag(names<Literal>[i]);
  return tags;
}

struct QXById {
  inline static const auto tags = Tags();
  QXContainer bag;

  template <class T>
  void Set(Item item, const T& value) {
    bag.SetData<T>(tags[item], value);
  }
  template <class T>
  decltype(auto) Get(Item item) const {
    return bag.GetData<T>(tags[item]);
  }
};

struct QXByName {
  QXContainer bag;

  template <class T>
  void Set(Item item, const T& value) {
    bag.SetData<T>(names<Literal>[item], value);
  }
  template <class T>
  decltype(auto) Get(Item item) const {
    return bag.GetData<T>(names<Literal>[item]);
  }
};

template <class Name>
struct AnyMap {
  std::unordered_map<std::string, std::any> bag;

  template <class T>
  void Set(Item item, const T& value) {
    bag[names<Name>[item]] = value;
  }
  template <class T>
  const T& Get(Item item) const {
    return *std::any_cast<T>(&bag.find(names<Name>[item])->second);
  }
};

#if HAVE_RDKIT
template <class Name>
struct RDProps {
  RDKit::RDProps bag;

  template <class T>
  void Set(Item item, const T& value) {
    bag.setProp<T>(names<Name>[item], value);
  }
  template <class T>
  T Get(Item item) const {
    return bag.getProp<T>(names<Name>[item]);
  }
};
#endif

template <class Bag>
void SetAll(Bag& bag, int seed) {
  static const std::string title = "aspirin";
  bag.template Set<std::string>(Title, title);
  bag.template Set<int>(Atoms, seed);
  bag.template Set<int>(Charge, seed + 1);
  bag.template Set<unsigned>(Serial, static_cast<unsigned>(seed) + 2);
  bag.template Set<bool>(Chiral, seed > 0);
  bag.template Set<float>(Radius, static_cast<float>(seed) + 4);
  bag.template Set<double>(Mass, seed + 5);
  bag.template Set<double>(Energy, seed + 6);
}

template <class Bag>
double GetAll(const Bag& bag) {
  return static_cast<double>(bag.template Get<std::string>(Title).size()) +
         bag.template Get<int>(Atoms) + bag.template Get<int>(Charge) +
         bag.template Get<unsigned>(Serial) + bag.template Get<bool>(Chiral) +
         static_cast<double>(bag.template Get<float>(Radius)) + bag.template Get<double>(Mass) +
         bag.template Get<double>(Energy);
}

template <class Bag>
void Fill(benchmark::State& state) {
  int seed = 1;
  for (auto _ : state) {
    Bag bag;
    SetAll(bag, ++seed);
    benchmark::DoNotOptimize(bag);
  }
}

template <class Bag>
void Overwrite(benchmark::State& state) {
  Bag bag;
  SetAll(bag, 1);
  int seed = 1;
  for (auto _ : state) {
    SetAll(bag, ++seed);
    benchmark::DoNotOptimize(bag);
  }
}

template <class Bag>
void Get(benchmark::State& state) {
  Bag bag;
  SetAll(bag, 1);
  if (GetAll(bag) != 32) state.SkipWithError("wrong values");
  for (auto _ : state) {
    benchmark::DoNotOptimize(bag);
    benchmark::DoNotOptimize(GetAll(bag));
  }
}

template <class Bag>
void Copy(benchmark::State& state) {
  Bag bag;
  SetAll(bag, 1);
  for (auto _ : state) {
    Bag copy(bag);
    benchmark::DoNotOptimize(copy);
  }
}

#if HAVE_RDKIT
#define BENCH_RDKIT(job, Name) BENCHMARK(job<RDProps<Name>>)
#else
#define BENCH_RDKIT(job, Name) static_assert(true)
#endif

#define BENCH_NAMED(job)           \
  BENCHMARK(job<QXById>);          \
  BENCHMARK(job<QXByName>);        \
  BENCH_RDKIT(job, Literal);       \
  BENCH_RDKIT(job, Key);           \
  BENCHMARK(job<AnyMap<Literal>>); \
  BENCHMARK(job<AnyMap<Key>>)

BENCH_NAMED(Fill);
BENCH_NAMED(Overwrite);
BENCH_NAMED(Get);

// A copy asks for no names.
BENCHMARK(Copy<QXById>);
BENCH_RDKIT(Copy, Key);
BENCHMARK(Copy<AnyMap<Key>>);

}  // namespace
