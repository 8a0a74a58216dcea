#include <qxsystem/numerics/pointsums_private.h>

#include <gtest/gtest.h>

#include <cstring>
#include <random>
#include <vector>

using namespace QXMath;

template <class T>
void ExpectTheSameBits() {
  std::mt19937_64 random(1);
  std::uniform_real_distribution<T> uniform(-10, 30);
  for (std::size_t n = 1; n < 70; ++n) {
    std::vector<T> a(3 * n), b(3 * n), w(n);
    for (auto* list : {&a, &b, &w})
      for (T& x : *list) x = uniform(random);
    for (const bool weighted : {false, true}) {
      SCOPED_TRACE(testing::Message() << n << " " << sizeof(T) << " " << weighted);
      const T* weights = weighted ? w.data() : nullptr;
      const PointSums narrow = SumPointsSse2(a.data(), b.data(), weights, n);
      const PointSums wide = SumPointsAvx2(a.data(), b.data(), weights, n);
      EXPECT_EQ(std::memcmp(&narrow, &wide, sizeof narrow), 0);
    }
  }
}

TEST(PointSums, AreTheSameBitsOnEveryPath) {
  if (!__builtin_cpu_supports("avx2")) GTEST_SKIP() << "there is only one path here";
  ExpectTheSameBits<double>();
  ExpectTheSameBits<float>();
}
