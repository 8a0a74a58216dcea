#include <qxsystem/platform/thread.h>

#include <gtest/gtest.h>

using namespace QXPlatform;

namespace {

// Two threads that pass a number to and fro, each adding one in its turn.
class Partner : public QXThread {
public:
  void AddInTurn(int parity) {
    condition_.Acquire();
    while (number < 2000) {
      if (number % 2 != parity) {
        condition_.Wait();
        continue;
      }
      ++number;
      condition_.Broadcast();
    }
    condition_.Release();
  }
  int number = 0;

protected:
  void Run(void* parity) override { AddInTurn(*static_cast<int*>(parity)); }

private:
  QXCondition condition_;
};

}  // namespace

TEST(QXThread, TakesTurnsByAConditionAndCanBeStartedAgain) {
  Partner partner;
  EXPECT_FALSE(partner.Join()) << "nothing to wait for";
  for (int parity : {0, 1}) {
    partner.number = 0;
    ASSERT_TRUE(partner.Start(&parity));
    EXPECT_FALSE(partner.Start(&parity)) << "not joined yet";
    partner.AddInTurn(1 - parity);
    EXPECT_TRUE(partner.Join());
    EXPECT_EQ(partner.number, 2000);
  }
}
