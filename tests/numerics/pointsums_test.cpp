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

      // The order that is promised: partial sums of every fourth.
      double partial[4]{}, weight[4]{};
      for (std::size_t i = 0; i < n; ++i) {
        const double wi = weighted ? static_cast<double>(w[i]) : 1;
        partial[i % 4] += (a[3 * i] - narrow.ca[0]) * wi * (b[3 * i + 2] - narrow.cb[2]);
        weight[i % 4] += wi;
      }
      EXPECT_EQ(narrow.s[2], (partial[0] + partial[1]) + (partial[2] + partial[3]));
      EXPECT_EQ(narrow.weight, (weight[0] + weight[1]) + (weight[2] + weight[3]));
    }
  }
}

TEST(PointSums, AreTheSameBitsOnEveryPath) {
  if (!__builtin_cpu_supports("avx2")) GTEST_SKIP() << "there is only one path here";
  ExpectTheSameBits<double>();
  ExpectTheSameBits<float>();
}
