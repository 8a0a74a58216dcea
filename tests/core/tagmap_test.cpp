#include <qxsystem/core/tagmap.h>

#include <gtest/gtest.h>

#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <map>
#include <new>
#include <random>
#include <string>
#include <thread>
#include <unordered_map>
#include <vector>

namespace {
std::atomic<unsigned> allocations{0};
}

void* operator new(std::size_t n) {
  ++allocations;
  if (void* block = std::malloc(n == 0 ? 1 : n)) return block;
  throw std::bad_alloc();
}
// Hidden from the compiler, which takes a plain `free` for a mistake here.
static void (*volatile release)(void*) = std::free;
void operator delete(void* block) noexcept {
  release(block);
}
void operator delete(void* block, std::size_t) noexcept {
  release(block);
}

namespace QXSystem {
namespace {

void Require(bool holds, const char* what) {
  if (holds) return;
  std::fprintf(stderr, "%s\n", what);
  std::exit(1);
}
#define REQUIRE(condition) Require(condition, #condition)

// The ids of a process that has seen no name yet.
void CheckFreshProcess() {
  const char* null = nullptr;
  REQUIRE(QXHasTag("QXBondStereo"));
  REQUIRE(QXGetTag("QXBondStereo") == 55);
  for (const unsigned id : {0u, 1u, 54u, 56u, 1023u}) REQUIRE(QXHasTag(id) && !*QXGetTag(id));
  REQUIRE(QXGetTag("") == 0 && QXGetTag(null) == 0 && QXGetTag(std::string()) == 0);
  REQUIRE(QXHasTag("") && QXHasTag(null) && QXHasTag(std::string()));
  REQUIRE(!QXHasTag(1024u) && !*QXGetTag(1024u));
  REQUIRE(!QXHasTag("never-seen") && !QXHasTag(std::string("never-seen")));
  REQUIRE(QXGetTag("first") == 1024 && QXGetTag("second") == 1025);
  REQUIRE(QXGetTag("first") == 1024 && QXHasTag("first") && QXHasTag(1025u));

  for (unsigned id = 1026; id <= 0x7fff; ++id) REQUIRE(QXGetTag("n" + std::to_string(id)) == id);
  REQUIRE(!QXHasTag(0x8000u) && !QXHasTag(0x10000u));
  REQUIRE(QXGetTag("next block") == 0x10000 && QXGetTag("and on") == 0x10001);
  REQUIRE(std::string(QXGetTag(0x10000u)) == "next block");
  REQUIRE(QXGetTag("n32767") == 0x7fff && QXGetTag("first") == 1024);
  REQUIRE(QXHasTag(0xffffu) && QXHasTag(0x10001u) && !QXHasTag(0x10002u));
  for (const unsigned id : {0x8000u, 0xffffu, 0x10002u, 0x18000u, 0x20000u, 0x80000000u, ~0u})
    REQUIRE(!*QXGetTag(id));
  std::exit(0);
}

TEST(QXGetTagDeathTest, GivesIdsInOrderAndBlockByBlock) {
  testing::FLAGS_gtest_death_test_style = "threadsafe";  // runs in a new process
  EXPECT_EXIT(CheckFreshProcess(), testing::ExitedWithCode(0), "");
  EXPECT_EXIT((REQUIRE(std::string(QXGetTag(55u)) == "QXBondStereo"), std::exit(0)),
              testing::ExitedWithCode(0), "");
}

// Every length around those where comparing and hashing change their ways, and
// a difference at every place.
TEST(QXGetTag, TellsNamesApartByEveryByte) {
  std::map<std::string, unsigned> expected;
  for (std::size_t length = 1; length <= 70; ++length)
    for (std::size_t at = 0; at < length; ++at)
      for (const char byte : {'\0', 'x', '\xe9'}) {
        std::string name(length, 'a');
        name[at] = byte;
        expected[name] = QXGetTag(name);
      }
  std::map<unsigned, std::string> names;
  for (const auto& [name, id] : expected) {
    EXPECT_TRUE(names.emplace(id, name).second) << "one id for " << name << " and " << names[id];
    EXPECT_EQ(QXGetTag(name), id);
    EXPECT_TRUE(QXHasTag(name));
    EXPECT_STREQ(QXGetTag(id), name.c_str());
  }
}

// Enough names for some to share a hash of 32 bits.
TEST(QXGetTag, AgreesWithAMapOnManyNames) {
  std::unordered_map<std::string, unsigned> ids;
  std::mt19937 random(7);
  const unsigned first = QXGetTag("the one before");
  const char* const text = QXGetTag(first);
  for (int i = 0; i < 400000; ++i) {
    std::string name = std::to_string(random() % 300000);
    name.insert(0, name.size() < 4 ? 20 : 0, '-');
    const auto [entry, isNew] = ids.emplace(name, 0);
    ASSERT_EQ(QXHasTag(name), !isNew) << name;
    const unsigned id = QXGetTag(name);
    if (isNew) entry->second = id;
    ASSERT_EQ(id, entry->second) << name;
    ASSERT_EQ(QXGetTag(id), name);
  }
  EXPECT_EQ(QXGetTag(first), text) << "names do not move";
}

TEST(QXGetTag, FindsKnownNamesWithoutAllocation) {
  const std::string name = "a name that is too long to lie within a std::string";
  const unsigned id = QXGetTag(name);
  std::thread([&] {
    const unsigned before = allocations;
    const bool found = QXGetTag(name) == id && QXGetTag(name.c_str()) == id && QXHasTag(name);
    EXPECT_EQ(allocations, before);
    EXPECT_TRUE(found);
  }).join();
}

TEST(QXGetTag, TakesOverNewNamesOnly) {
  std::string name = "this one will be moved, which a short one could not show";
  const char* const bytes = name.data();
  const std::string copy = name;
  const unsigned id = QXGetTag(std::move(name));
  EXPECT_EQ(QXGetTag(id), bytes);
  name = copy;
  EXPECT_EQ(QXGetTag(std::move(name)), id);
  EXPECT_EQ(name, copy);
}

TEST(QXGetTag, ThreadsAgree) {
  constexpr unsigned numThreads = 4, numNames = 6000;
  std::vector<std::vector<unsigned>> ids(numThreads, std::vector<unsigned>(numNames));
  std::vector<std::thread> threads;
  for (unsigned t = 0; t < numThreads; ++t)
    threads.emplace_back([&ids, t] {
      for (unsigned i = 0; i < numNames; ++i) {
        const unsigned n = t % 2 == 0 ? i : numNames - 1 - i;
        const std::string name = "shared between threads " + std::to_string(n);
        ids[t][n] = QXGetTag(name);
        ASSERT_TRUE(QXHasTag(name) && QXHasTag(ids[t][n]));
        ASSERT_EQ(QXGetTag(ids[t][n]), name);
      }
    });
  for (auto& thread : threads) thread.join();
  for (unsigned t = 1; t < numThreads; ++t) EXPECT_EQ(ids[t], ids[0]);
}

}  // namespace
}  // namespace QXSystem
