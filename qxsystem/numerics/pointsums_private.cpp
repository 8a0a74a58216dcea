#include <qxsystem/numerics/pointsums_kernel_private.h>

namespace QXMath {

PointSums SumPointsSse2(const double* a, const double* b, const double* w, std::size_t n) {
  return Sum(a, b, w, n);
}
PointSums SumPointsSse2(const float* a, const float* b, const float* w, std::size_t n) {
  return Sum(a, b, w, n);
}

}  // namespace QXMath
