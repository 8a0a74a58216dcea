#include <qxsystem/platform/threadlocal.h>

#include <gtest/gtest.h>

#include <atomic>
#include <memory>
#include <random>
#include <thread>
#include <utility>
#include <vector>

using namespace QXPlatform;

namespace {

// Starts at 3 and counts how many there are.
struct Level {
  Level() { ++alive; }
  ~Level() { --alive; }
  unsigned value = 3;
  static inline std::atomic<int> alive{0};
};

using Local = QXThreadLocal<Level>;

}  // namespace

TEST(QXThreadLocal, IsOneValueForEachObjectAndThread) {
  const Local a, b;
  a.Get().value = 1;
  b.Get().value = 2;
  std::thread([&] {
    EXPECT_TRUE(a.Get().value == 3 && b.Get().value == 3);
    a.Get().value = 9;
  }).join();
  EXPECT_TRUE(a.Get().value == 1 && b.Get().value == 2);
  std::thread([&] { EXPECT_EQ(a.Get().value, 3u) << "thread ids come again"; }).join();
}

TEST(QXThreadLocal, ValuesDieWithTheObjectOrTheThread) {
  auto object = std::make_unique<Local>();
  object->Get();
  std::thread([&] { EXPECT_TRUE((object->Get(), Level::alive == 2)); }).join();
  EXPECT_EQ(Level::alive, 1) << "with the thread";
  object.reset();
  EXPECT_EQ(Level::alive, 0) << "with the object";
}

namespace {

std::unique_ptr<Local> lateObject;
std::vector<unsigned> lateValues;

// Is destroyed behind the thread's map of values when it is made before it.
struct LateAsker {
  ~LateAsker() {
    if (!lateObject) return;
    lateValues = {lateObject->Get().value, Local().Get().value};
    lateObject->Get().value = 7;
    lateValues.push_back(lateObject->Get().value);
  }
  int made = 1;
};
thread_local LateAsker lateAsker;

}  // namespace

TEST(QXThreadLocal, AnswersWhenTheThreadsMapIsGone) {
  lateObject = std::make_unique<Local>();
  std::thread([] {
    EXPECT_EQ(lateAsker.made, 1);
    lateObject->Get().value = 5;
  }).join();
  EXPECT_EQ(lateValues, (std::vector<unsigned>{3, 3, 7})) << "its 5 was destroyed before";
  lateObject.reset();
  EXPECT_EQ(Level::alive, 0);
}

// Objects die while other threads, which have asked them before, ask others,
// end, and sweep their maps.
TEST(QXThreadLocal, SurvivesObjectsAndThreadsThatDieAtOnce) {
  constexpr int rounds = 40, threads = 4, shared = 8;
  for (int round = 0; round < rounds; ++round) {
    std::vector<std::shared_ptr<Local>> objects(shared);
    for (auto& object : objects) object = std::make_shared<Local>();
    std::vector<std::thread> workers;
    for (int t = 0; t < threads; ++t)
      workers.emplace_back([objects, seed = static_cast<unsigned>(round * threads + t)]() mutable {
        std::mt19937 random(seed);
        std::vector<unsigned> expected(objects.size(), 3);
        while (!objects.empty()) {
          const std::size_t i = random() % objects.size();
          EXPECT_EQ(objects[i]->Get().value, expected[i]);
          objects[i]->Get().value = expected[i] = static_cast<unsigned>(random());
          // A new object lies where a dead one lay, and the last hit is remembered.
          EXPECT_EQ(std::exchange(Local().Get().value, 4u), 3u);
          if (random() % 4 != 0) continue;
          std::swap(objects[i], objects.back()), std::swap(expected[i], expected.back());
          objects.pop_back(), expected.pop_back();
        }
      });
    objects.clear();
    for (auto& worker : workers) worker.join();
    ASSERT_EQ(Level::alive, 0);
  }
}
