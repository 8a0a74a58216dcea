#include <qxsystem/numerics/stats.h>

#include <algorithm>
#include <cmath>
#include <iterator>

#include <qxsystem/core/error.h>
#include <qxsystem/platform/malloca.h>

namespace QXMath {
namespace {

constexpr float Levels[] = {0.1f, 0.05f, 0.025f, 0.01f, 0.005f, 0.001f};

struct CriticalValues {
  unsigned dof;
  float values[std::size(Levels)];
};
constexpr CriticalValues Table[] = {
    {0, {-1, -1, -1, -1, -1, -1}},
    {1, {2.706f, 3.841f, 5.024f, 6.635f, 7.879f, 10.828f}},
};

}  // namespace

double QXChiSquare(const unsigned* table, unsigned rows, unsigned cols) {
  const std::size_t bytes = (std::size_t{rows} + cols) * sizeof(double);
  const QXPlatform::QXMallocaPtr scratch = QXMalloca(bytes);
  double* const rowTotals = static_cast<double*>(scratch.get());
  double* const colTotals = rowTotals + rows;
  std::fill(rowTotals, colTotals + cols, 0.0);
  std::uint32_t total = 0;
  const unsigned* cell = table;
  for (unsigned i = 0; i < rows; ++i)
    for (unsigned j = 0; j < cols; ++j, ++cell) {
      rowTotals[i] += *cell;
      colTotals[j] += *cell;
      total += *cell;
    }

  const double n = total;
  double chi2 = 0;
  cell = table;
  for (unsigned i = 0; i < rows; ++i)
    for (unsigned j = 0; j < cols; ++j, ++cell) {
      const double observed = *cell, product = rowTotals[i] * colTotals[j];
      chi2 += observed * observed * n / product + product / n - 2 * observed;
    }
  return chi2;
}

double QXPhi(double chi2, unsigned k, unsigned n) {
  return std::sqrt(chi2 / (k == 1 ? n : n * (k - 1)));
}

double QXPhi(double chi2, unsigned rows, unsigned cols, unsigned n) {
  const unsigned k = std::min(rows, cols);
  if (k < 2) return 0;
  return std::sqrt(chi2 / static_cast<double>(static_cast<float>(n * (k - 1))));
}

double QXMaxp(double chi2, unsigned dof) {
  if (dof >= std::size(Table)) {
    QXSystem::QXThrow.Warning("To Many Degrees of Freedom");
    return 0;
  }
  const CriticalValues& critical = Table[dof];
  if (critical.dof != dof)
    QXSystem::QXThrow.Error("Corrumpt Chi Square Table in Maxp at dof = %d", static_cast<int>(dof));
  const float* above =
      std::find_if(std::begin(critical.values), std::end(critical.values),
                   [chi2](float value) { return static_cast<double>(value) > chi2; });
  const auto reached = above - std::begin(critical.values);
  return reached == 0 ? 0 : static_cast<double>(Levels[reached - 1]);
}

std::uint32_t QXLog2(unsigned long n) {
  return n == 0 ? 0xFFFFFFFF : static_cast<std::uint32_t>(63 - __builtin_clzl(n));
}

}  // namespace QXMath
