#include <qxsystem/numerics/pointsums_private.h>

#include <gtest/gtest.h>

#include <cstring>
#include <random>
#include <vector>

using namespace QXMath;

template <class T>
struct PointSumsOf : testing::Test {};
using Numbers = testing::Types<double, float>;
TYPED_TEST_SUITE(PointSumsOf, Numbers, );

TYPED_TEST(PointSumsOf, AreTheSameBitsOnEveryPath) {
  if (!__builtin_cpu_supports("avx2")) GTEST_SKIP() << "there is only one path here";
  std::mt19937_64 random(1);
  std::uniform_real_distribution<TypeParam> uniform(-10, 30);
  for (std::size_t n = 1; n < 70; ++n) {
    std::vector<TypeParam> a(3 * n), b(3 * n), w(n);
    for (auto* list : {&a, &b, &w})
      for (TypeParam& x : *list) x = uniform(random);
    for (const TypeParam* weights : {static_cast<TypeParam*>(nullptr), w.data()}) {
      const PointSums narrow = SumPointsSse2(a.data(), b.data(), weights, n);
      const PointSums wide = SumPointsAvx2(a.data(), b.data(), weights, n);
      EXPECT_EQ(std::memcmp(&narrow, &wide, sizeof narrow), 0) << n << (weights ? " weighted" : "");
    }
  }
}
