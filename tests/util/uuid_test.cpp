#include <qxsystem/util/uuid.h>

#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <set>
#include <string>
#include <thread>
#include <vector>

using namespace QXSystem;

namespace {

bool AreDigits(const std::string& text, std::size_t length) {
  return text.size() == length && text.find_first_not_of("0123456789abcdef") == text.npos;
}

// What a child of this process draws first.
std::string DrawInChild(QXUUIDGenerator& generator) {
  int ends[2];
  if (pipe(ends) != 0) return "";
  const pid_t child = fork();
  if (child == 0) {
    const std::string drawn = generator.GetUUID16() + QXGetUUID16();
    _exit(write(ends[1], drawn.data(), drawn.size()) == 32 ? 0 : 1);
  }
  close(ends[1]);
  std::string drawn(32, '\0');
  if (read(ends[0], drawn.data(), 32) != 32) drawn.clear();
  close(ends[0]);
  waitpid(child, nullptr, 0);
  return drawn;
}

}  // namespace

TEST(UUID, IsDrawnOnceByAnyThread) {
  std::vector<std::string> drawn[4];
  std::vector<std::thread> threads;
  for (auto& list : drawn)
    threads.emplace_back([&list] {
      for (int i = 0; i < 1000; ++i) list.push_back(i % 2 ? QXGetUUID16() : QXGetUUID32());
    });
  for (auto& thread : threads) thread.join();
  std::set<std::string> halves;
  for (const auto& list : drawn)
    for (const std::string& text : list) {
      ASSERT_TRUE(AreDigits(text, 16) || AreDigits(text, 32)) << text;
      for (std::size_t i = 0; i < text.size(); i += 16)
        EXPECT_TRUE(halves.insert(text.substr(i, 16)).second) << text;
    }
  EXPECT_EQ(halves.size(), 4 * 1500u);
  // All 64 bits are drawn: none is the same in all.
  for (std::size_t place = 0; place < 16; ++place) {
    std::set<char> digits;
    for (const auto& half : halves) digits.insert(half[place]);
    EXPECT_EQ(digits.size(), 16u) << place;
  }
}

TEST(UUID, IsDrawnAnewAfterFork) {
  QXUUIDGenerator generator;
  std::set<std::string> drawn = {DrawInChild(generator), DrawInChild(generator)};
  EXPECT_EQ(drawn.size(), 2u);
  for (int i = 0; i < 3; ++i) drawn.insert(generator.GetUUID16() + QXGetUUID16());
  EXPECT_EQ(drawn.size(), 5u);
  std::set<std::string> halves;
  for (const std::string& text : drawn)
    halves.insert(text.substr(0, 16)), halves.insert(text.substr(16));
  EXPECT_EQ(halves.size(), 10u);
}

TEST(UUID, IsRandomWithoutTheDevice) {
  rlimit limit;
  ASSERT_EQ(getrlimit(RLIMIT_NOFILE, &limit), 0);
  const rlimit none{0, limit.rlim_max};  // no file can be opened
  ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &none), 0);
  QXUUIDGenerator first, second;
  setrlimit(RLIMIT_NOFILE, &limit);
  const std::set<std::string> drawn = {first.GetUUID16(), second.GetUUID16(),
                                       "c96d191cf6f6aea6"};  // of the engine's own seed
  EXPECT_EQ(drawn.size(), 3u);
}
