#include <qxsystem/platform/thread.h>

#include <gtest/gtest.h>

#include <deque>

using namespace QXPlatform;

namespace {

// Adds up what is queued until a zero comes.
class Adder : public QXThread {
public:
  ~Adder() override { Join(); }

  void Put(int number) {
    condition_.Acquire();
    queue_.push_back(number);
    condition_.Broadcast();
    condition_.Release();
  }

  bool joinedItself = false;

protected:
  void Run(void* argument) override {
    joinedItself = Join();
    while (const int number = Take()) *static_cast<long*>(argument) += number;
  }

private:
  int Take() {
    condition_.Acquire();
    while (queue_.empty()) condition_.Wait();
    const int number = queue_.front();
    queue_.pop_front();
    condition_.Release();
    return number;
  }

  QXCondition condition_;
  std::deque<int> queue_;
};

}  // namespace

TEST(QXThread, RunsAndCanBeStartedAgain) {
  Adder adder;
  EXPECT_FALSE(adder.Join()) << "nothing to wait for";
  for (int round = 0; round < 2; ++round) {
    long sum = 0;
    ASSERT_TRUE(adder.Start(&sum));
    EXPECT_FALSE(adder.Start(&sum)) << "still running";
    for (int i = 1; i <= 1000; ++i) adder.Put(i);
    adder.Put(0);
    EXPECT_TRUE(adder.Join());
    EXPECT_EQ(sum, 500500);
    EXPECT_FALSE(adder.joinedItself);
  }
}
