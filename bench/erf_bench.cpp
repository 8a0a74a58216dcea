// The error functions beside those of the C library, over -6 to 6.
#include <benchmark/benchmark.h>

#include <cmath>
#include <random>
#include <vector>

#include <qxsystem/numerics/specialfunction.h>

namespace {

template <double (*Function)(double)>
void Over6(benchmark::State& state) {
  std::mt19937_64 random(1);
  std::uniform_real_distribution<double> uniform(-6, 6);
  std::vector<double> arguments(4096);
  for (double& x : arguments) x = uniform(random);
  for (auto _ : state)
    for (const double x : arguments) benchmark::DoNotOptimize(Function(x));
  state.SetItemsProcessed(state.iterations() * 4096);
}
BENCHMARK(Over6<QXMath::QXerfc>)->Name("erfc/QX");
BENCHMARK(Over6<std::erfc>)->Name("erfc/std");
BENCHMARK(Over6<QXMath::QXerf>)->Name("erf/QX");
BENCHMARK(Over6<std::erf>)->Name("erf/std");

}  // namespace
