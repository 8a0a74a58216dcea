// The sums over two point lists that a superposition needs. They are the whole
// cost of long lists, and come in two builds, for SSE2 and for AVX2.
//
// Both give the same bits, because the order of summation is fixed: partial sum
// k takes the points k, k + 4, k + 8, ..., and a sum is (0 + 1) + (2 + 3). Four
// partial sums are two SSE2 registers or one of AVX2. Nothing is fused.
#pragma once

#include <cstddef>

namespace QXMath {

struct PointSums {
  double weight;  // sum of w; without weights every w is 1
  double ca[3];   // centroid of a, sum of w a / weight
  double cb[3];   // centroid of b
  double s[9];    // sum of w (a - ca)i (b - cb)j at 3 i + j
  double g;       // sum of w (|a - ca|^2 + |b - cb|^2)
};

// Of `n` points, x y z each; `w` may be null. Floats are widened on reading.
PointSums SumPointsSse2(const double* a, const double* b, const double* w, std::size_t n);
PointSums SumPointsSse2(const float* a, const float* b, const float* w, std::size_t n);

// The same for processors with AVX2, and no others.
PointSums SumPointsAvx2(const double* a, const double* b, const double* w, std::size_t n);
PointSums SumPointsAvx2(const float* a, const float* b, const float* w, std::size_t n);

// The best of the two for this processor.
template <class T>
PointSums SumPoints(const T* a, const T* b, const T* w, std::size_t n) {
  return __builtin_cpu_supports("avx2") ? SumPointsAvx2(a, b, w, n) : SumPointsSse2(a, b, w, n);
}

}  // namespace QXMath
