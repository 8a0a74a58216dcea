#include <qxsystem/numerics/rand.h>

#include <gtest/gtest.h>

#include <ctime>

using namespace QXSystem;

TEST(QXRandom, HasAKnownSequence) {
  QXRandom random(false), again(true);
  EXPECT_LE(again.GetSeed() - static_cast<unsigned>(std::time(nullptr)) + 5, 5u);
  const unsigned seed = again.TimeSeed();
  EXPECT_EQ(again.GetSeed(), seed);
  for (const int expected : {1012484, 1716955679, 1792309082, 229610924, 1639479903})
    EXPECT_EQ(random.NextInt(), expected);
  again.Seed(random.GetSeed());
  EXPECT_EQ(again.NextFloat(), static_cast<float>(random.NextInt() / 0x1p31));
  again.Seed(30835466);
  EXPECT_EQ(again.NextFloat(), 1) << "rounded up from just below 1";
}
