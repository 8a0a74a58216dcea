// Compiled with -mavx2.
#include <qxsystem/numerics/pointsums_kernel_private.h>

namespace QXMath {

PointSums SumPointsAvx2(const double* a, const double* b, const double* w, std::size_t n) {
  return Sum(a, b, w, n);
}
PointSums SumPointsAvx2(const float* a, const float* b, const float* w, std::size_t n) {
  return Sum(a, b, w, n);
}

}  // namespace QXMath
