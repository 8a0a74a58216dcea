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

// What a child of this process draws first.
std::string DrawInChild(QXUUIDGenerator& generator) {
  int ends[2];
  if (pipe(ends) != 0) return "";
  const pid_t child = fork();
  std::string drawn(32, '\0');
  if (child == 0) {
    drawn = generator.GetUUID16() + QXGetUUID16();
    _exit(write(ends[1], drawn.data(), 32) == 32 ? 0 : 1);
  }
  close(ends[1]);
  if (read(ends[0], drawn.data(), 32) != 32) drawn.clear();
  close(ends[0]);
  waitpid(child, nullptr, 0);
  return drawn;
}

}  // namespace

TEST(UUID, IsDrawnOnceByAnyThread) {
  std::string drawn[4];
  std::vector<std::thread> threads;
  for (auto& text : drawn)
    threads.emplace_back([&text] {
      for (int i = 0; i < 1000; ++i) text += QXGetUUID16() + QXGetUUID32();
    });
  for (auto& thread : threads) thread.join();
  std::set<std::string> halves;
  std::set<char> digits[16];  // that occur in a place: all 64 bits are drawn
  for (const auto& text : drawn) {
    ASSERT_EQ(text.size(), 48000u);
    for (std::size_t i = 0; i < text.size(); ++i) {
      digits[i % 16].insert(text[i]);
      if (i % 16 == 0) halves.insert(text.substr(i, 16));
    }
  }
  EXPECT_EQ(halves.size(), 4 * 3000u);
  const std::string all = "0123456789abcdef";
  for (const auto& place : digits) EXPECT_EQ(place, std::set<char>(all.begin(), all.end()));
}

TEST(UUID, IsDrawnAnewAfterFork) {
  QXUUIDGenerator generator;
  std::set<std::string> halves;
  for (int i = 0; i < 5; ++i) {
    const std::string drawn =
        i < 2 ? DrawInChild(generator) : generator.GetUUID16() + QXGetUUID16();
    halves.insert({drawn.substr(0, 16), drawn.substr(16)});
  }
  EXPECT_EQ(halves.size(), 10u);
}

// The sanitizer of undefined behaviour needs descriptors itself, to look whether
// memory is there.
#ifndef __SANITIZE_ADDRESS__
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
#endif
