// The sums of pointsums_private.h over whatever four doubles the including file
// is compiled for. Everything is private to that file, and nothing of the
// standard library is inlined here: code for AVX2 must not end up where another
// file calls it.
#pragma once

#include <immintrin.h>

#include <qxsystem/numerics/pointsums_private.h>

namespace QXMath {
namespace {

// Two neighbouring numbers.
inline __m128d LoadPair(const double* p) {
  return _mm_loadu_pd(p);
}
inline __m128d LoadPair(const float* p) {
  return _mm_cvtps_pd(_mm_castsi128_ps(_mm_loadu_si64(p)));
}

// Four doubles as two halves; `Unzip` works within each. Mask bit 0 picks from
// `p`, bit 1 from `q`.
#ifdef __AVX2__
struct Four {
  __m256d v;

  friend Four operator+(Four p, Four q) { return {_mm256_add_pd(p.v, q.v)}; }
  friend Four operator-(Four p, Four q) { return {_mm256_sub_pd(p.v, q.v)}; }
  friend Four operator*(Four p, Four q) { return {_mm256_mul_pd(p.v, q.v)}; }
};
inline Four All(double value) {
  return {_mm256_set1_pd(value)};
}
template <class T>
Four Halves(const T* low, const T* high) {
  return {_mm256_insertf128_pd(_mm256_castpd128_pd256(LoadPair(low)), LoadPair(high), 1)};
}
template <int Mask>
Four Unzip(Four p, Four q) {
  return {_mm256_shuffle_pd(p.v, q.v, Mask | Mask << 2)};
}
inline void Store(double* to, Four p) {
  _mm256_storeu_pd(to, p.v);
}
#else
struct Four {
  __m128d low, high;

  friend Four operator+(Four p, Four q) {
    return {_mm_add_pd(p.low, q.low), _mm_add_pd(p.high, q.high)};
  }
  friend Four operator-(Four p, Four q) {
    return {_mm_sub_pd(p.low, q.low), _mm_sub_pd(p.high, q.high)};
  }
  friend Four operator*(Four p, Four q) {
    return {_mm_mul_pd(p.low, q.low), _mm_mul_pd(p.high, q.high)};
  }
};
inline Four All(double value) {
  return {_mm_set1_pd(value), _mm_set1_pd(value)};
}
template <class T>
Four Halves(const T* low, const T* high) {
  return {LoadPair(low), LoadPair(high)};
}
template <int Mask>
Four Unzip(Four p, Four q) {
  return {_mm_shuffle_pd(p.low, q.low, Mask), _mm_shuffle_pd(p.high, q.high, Mask)};
}
inline void Store(double* to, Four p) {
  _mm_storeu_pd(to, p.low);
  _mm_storeu_pd(to + 2, p.high);
}
#endif

// A point, or with Four as the number four points.
template <class V>
struct Point {
  V x, y, z;

  friend Point operator+(Point p, Point q) { return {p.x + q.x, p.y + q.y, p.z + q.z}; }
  friend Point operator-(Point p, Point q) { return {p.x - q.x, p.y - q.y, p.z - q.z}; }
  friend Point operator*(Point p, V w) { return {p.x * w, p.y * w, p.z * w}; }
  friend V Dot(Point p, Point q) { return p.x * q.x + p.y * q.y + p.z * q.z; }
};

template <class T>
Point<double> LoadPoint(const T* p) {
  return {p[0], p[1], p[2]};
}

template <class T>
Point<Four> LoadPoints(const T* p) {
  const Four xy = Halves(p, p + 6);       // x0 y0  x2 y2
  const Four zx = Halves(p + 2, p + 8);   // z0 x1  z2 x3
  const Four yz = Halves(p + 4, p + 10);  // y1 z1  y3 z3
  return {Unzip<2>(xy, zx), Unzip<1>(xy, yz), Unzip<2>(zx, yz)};
}

// What one pass adds up, for one point pair or four.
template <class V>
struct Firsts {
  static constexpr int Size = 7;
  V sum[Size];  // w a, w b, w

  void Add(Point<V> p, Point<V> q) {
    sum[0] = sum[0] + p.x, sum[1] = sum[1] + p.y, sum[2] = sum[2] + p.z;
    sum[3] = sum[3] + q.x, sum[4] = sum[4] + q.y, sum[5] = sum[5] + q.z;
  }
  void Add(Point<V> p, Point<V> q, V w) {
    Add(p * w, q * w);
    sum[6] = sum[6] + w;
  }
};

template <class V>
struct Seconds {
  static constexpr int Size = 10;
  V sum[Size];  // s row by row, g
  Point<V> ca, cb;

  void Add(Point<V> p, Point<V> q) {
    p = p - ca;
    q = q - cb;
    AddProducts(p, q, Dot(p, p) + Dot(q, q));
  }
  void Add(Point<V> p, Point<V> q, V w) {
    p = p - ca;
    q = q - cb;
    AddProducts(p * w, q, Dot(p * w, p) + Dot(q * w, q));
  }

private:
  void AddProducts(Point<V> p, Point<V> q, V squares) {
    sum[0] = sum[0] + p.x * q.x, sum[1] = sum[1] + p.x * q.y, sum[2] = sum[2] + p.x * q.z;
    sum[3] = sum[3] + p.y * q.x, sum[4] = sum[4] + p.y * q.y, sum[5] = sum[5] + p.y * q.z;
    sum[6] = sum[6] + p.z * q.x, sum[7] = sum[7] + p.z * q.y, sum[8] = sum[8] + p.z * q.z;
    sum[9] = sum[9] + squares;
  }
};

// Runs a pass over all points: fours in registers, the last one to three each
// into its own partial sum.
template <bool Weighted, class T, template <class> class Pass>
void Run(const T* a, const T* b, const T* w, std::size_t n, Pass<Four> fours, Pass<double> ones,
         double* sum) {
  constexpr int Size = Pass<double>::Size;
  std::size_t i = 0;
  for (; i + 4 <= n; i += 4) {
    if constexpr (Weighted)
      fours.Add(LoadPoints(a + 3 * i), LoadPoints(b + 3 * i), Halves(w + i, w + i + 2));
    else
      fours.Add(LoadPoints(a + 3 * i), LoadPoints(b + 3 * i));
  }
  double partial[Size][4];
  for (int j = 0; j < Size; ++j) Store(partial[j], fours.sum[j]);
  for (int k = 0; i < n; ++i, ++k) {
    Pass<double> one = ones;
    if constexpr (Weighted)
      one.Add(LoadPoint(a + 3 * i), LoadPoint(b + 3 * i), static_cast<double>(w[i]));
    else
      one.Add(LoadPoint(a + 3 * i), LoadPoint(b + 3 * i));
    for (int j = 0; j < Size; ++j) partial[j][k] += one.sum[j];
  }
  for (int j = 0; j < Size; ++j)
    sum[j] = (partial[j][0] + partial[j][1]) + (partial[j][2] + partial[j][3]);
}

inline Point<Four> All(Point<double> p) {
  return {All(p.x), All(p.y), All(p.z)};
}

template <bool Weighted, class T>
PointSums Sum(const T* a, const T* b, const T* w, std::size_t n) {
  double first[Firsts<double>::Size];
  Run<Weighted>(a, b, w, n, Firsts<Four>{}, Firsts<double>{}, first);
  PointSums sums;
  sums.weight = Weighted ? first[6] : static_cast<double>(n);
  for (int k = 0; k < 3; ++k) {
    sums.ca[k] = first[k] / sums.weight;
    sums.cb[k] = first[3 + k] / sums.weight;
  }
  const Point<double> ca = LoadPoint(sums.ca), cb = LoadPoint(sums.cb);
  double second[Seconds<double>::Size];
  Run<Weighted>(a, b, w, n, Seconds<Four>{{}, All(ca), All(cb)}, Seconds<double>{{}, ca, cb},
                second);
  for (int k = 0; k < 9; ++k) sums.s[k] = second[k];
  sums.g = second[9];
  return sums;
}

template <class T>
PointSums Sum(const T* a, const T* b, const T* w, std::size_t n) {
  return w ? Sum<true>(a, b, w, n) : Sum<false>(a, b, w, n);
}

}  // namespace
}  // namespace QXMath
