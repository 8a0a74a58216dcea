// Random numbers beside those of boost and of the standard library, all from
// MT19937-64. A benchmark is called Job<Library>.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <numeric>
#include <random>
#include <vector>

#include <qxsystem/numerics/ran_num_generators.h>

#if __has_include(<boost/random.hpp>)
#include <boost/random.hpp>
#define HAVE_BOOST 1
#endif

namespace {

struct QX {
  QXMath::MtRng<QXMath::Mt64Traits> engine;
  QXMath::QXGaussianRNG gaussian{0, 1};
  QXMath::QXGammaRNG gamma05{0.5, 1}, gamma25{2.5, 1};

  std::uint64_t Word() { return engine.Next(); }
  double Unit() { return engine.getUnitDouble(); }
  double Gaussian() { return gaussian(engine); }
  double Gamma05() { return gamma05(engine); }
  double Gamma25() { return gamma25(engine); }
  std::vector<unsigned long> Shuffle(unsigned long n) {
    return QXMath::QXRandomShuffleOfIndices(n, engine);
  }
};

template <class Engine, class UnitDouble, class Normal, class Gamma>
struct Peer {
  Engine engine;
  UnitDouble unit;
  Normal gaussian{0, 1};
  Gamma gamma05{0.5, 1}, gamma25{2.5, 1};

  std::uint64_t Word() { return engine(); }
  double Unit() { return unit(engine); }
  double Gaussian() { return gaussian(engine); }
  double Gamma05() { return gamma05(engine); }
  double Gamma25() { return gamma25(engine); }
  std::vector<unsigned long> Shuffle(unsigned long n) {
    std::vector<unsigned long> indices(n);
    std::iota(indices.begin(), indices.end(), 0);
    std::shuffle(indices.begin(), indices.end(), engine);
    return indices;
  }
};

using Std = Peer<std::mt19937_64, std::uniform_real_distribution<double>,
                 std::normal_distribution<double>, std::gamma_distribution<double>>;
#if HAVE_BOOST
using Boost =
    Peer<boost::random::mt19937_64, boost::random::uniform_01<double>,
         boost::random::normal_distribution<double>, boost::random::gamma_distribution<double>>;
#endif

#define JOB(Name, Call)                                          \
  template <class Library>                                       \
  void Name(benchmark::State& state) {                           \
    Library library;                                             \
    for (auto _ : state) benchmark::DoNotOptimize(library.Call); \
  }
JOB(Word64, Word())
JOB(UnitDouble, Unit())
JOB(Gaussian, Gaussian())
JOB(GammaOfShape05, Gamma05())
JOB(GammaOfShape25, Gamma25())
JOB(ShuffleOf100000, Shuffle(100000))

#define JOBS(Library)                 \
  BENCHMARK(Word64<Library>);         \
  BENCHMARK(UnitDouble<Library>);     \
  BENCHMARK(Gaussian<Library>);       \
  BENCHMARK(GammaOfShape05<Library>); \
  BENCHMARK(GammaOfShape25<Library>)

JOBS(QX);
JOBS(Std);
BENCHMARK(ShuffleOf100000<QX>);
BENCHMARK(ShuffleOf100000<Std>);
#if HAVE_BOOST
JOBS(Boost);  // whose engine std::shuffle does not take
#endif

}  // namespace
