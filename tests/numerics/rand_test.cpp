#include <qxsystem/numerics/rand.h>

#include <gtest/gtest.h>

#include <ctime>

using namespace QXSystem;

TEST(QXRandom, HasAKnownSequence) {
  QXRandom random(false);
  EXPECT_EQ(random.GetSeed(), 0u);
  for (const int expected : {1012484, 1716955679, 1792309082, 229610924, 1639479903})
    EXPECT_EQ(random.NextInt(), expected);
  QXRandom again(false);
  again.Seed(random.GetSeed());
  EXPECT_EQ(again.NextFloat(), static_cast<float>(random.NextInt() / 0x1p31));
  again.Seed(30835466);
  EXPECT_EQ(again.NextFloat(), 1) << "rounded up from 2^31 - 15";
}

TEST(QXRandom, StartsWithTheTime) {
  const auto before = static_cast<unsigned>(std::time(nullptr));
  QXRandom random(true);
  EXPECT_LE(random.GetSeed() - before, 5u);
  random.Seed(0);
  EXPECT_LE(random.TimeSeed() - before, 5u);
  EXPECT_NE(random.GetSeed(), 0u);
}
