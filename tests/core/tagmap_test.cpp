#include <qxsystem/core/tagmap.h>

#include <gtest/gtest.h>

#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <map>
#include <string>
#include <thread>
#include <vector>

#include "support/countedheap.h"

namespace QXSystem {
namespace {

using namespace std::string_literals;

void Require(bool holds, const char* what) {
  if (holds) return;
  std::fprintf(stderr, "%s\n", what);
  std::exit(1);
}
#define REQUIRE(condition) Require(condition, #condition)

// The ids of a process that has seen no name yet.
void CheckFreshProcess() {
  const char* null = nullptr;
  REQUIRE(QXHasTag("QXBondStereo") && QXGetTag("QXBondStereo") == 55);
  for (const unsigned id : {0u, 1u, 54u, 56u, 1023u}) REQUIRE(QXHasTag(id) && !*QXGetTag(id));
  REQUIRE(QXGetTag("") == 0 && QXGetTag(null) == 0 && QXGetTag(""s) == 0);
  REQUIRE(QXHasTag("") && QXHasTag(null) && QXHasTag(""s));
  REQUIRE(!QXHasTag(1024u) && !*QXGetTag(1024u) && !QXHasTag("never-seen"));
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
  EXPECT_EXIT((REQUIRE(QXGetTag(55u) == "QXBondStereo"s), std::exit(0)), testing::ExitedWithCode(0),
              "");
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

// Enough names of one length for some to share a hash of 32 bits, for each of
// the ways in which texts of one length are compared.
TEST(QXGetTag, TellsNamesOfOneHashApart) {
  const unsigned first = QXGetTag("the one before");
  const char* const text = QXGetTag(first);
  for (const std::size_t length : {12u, 28u, 30u, 40u}) {
    std::vector<unsigned> ids(200000);
    for (const bool again : {false, true})
      for (std::size_t i = 0; i < ids.size(); ++i) {
        std::string name = std::to_string(i);
        name.insert(length == 28 ? 0 : name.size(), length - name.size(), '-');
        const unsigned id = QXGetTag(name);
        ASSERT_EQ(QXGetTag(id), name);
        ASSERT_EQ(id, again ? ids[i] : id) << name;
        ids[i] = id;
      }
  }
  EXPECT_EQ(QXGetTag(first), text) << "names do not move";
}

TEST(QXGetTag, FindsKnownNamesWithoutAllocation) {
  const std::string name = "a name that is too long to lie within a std::string";
  const unsigned id = QXGetTag(name);
  std::thread([&] {
    const std::size_t before = peak = inUse.load();  // which any allocation would raise
    const bool found = QXGetTag(name) == id && QXGetTag(name.c_str()) == id && QXHasTag(name);
    EXPECT_TRUE(peak == before && found);
  }).join();
}

TEST(QXGetTag, TakesOverNewNamesOnly) {
  std::string name = "this one will be moved, which a short one could not show", copy = name;
  const char* const bytes = name.data();
  const unsigned id = QXGetTag(std::move(name));
  EXPECT_EQ(QXGetTag(id), bytes);
  EXPECT_EQ(QXGetTag(std::move(copy)), id);
  EXPECT_STREQ(copy.c_str(), bytes) << "a known name leaves its string alone";
}

// The threads go to each new name at the same time.
TEST(QXGetTag, ThreadsAgree) {
  constexpr unsigned numThreads = 2, numNames = 5000;
  std::atomic<unsigned> arrived{0};
  std::vector<std::vector<unsigned>> ids(numThreads);
  std::vector<std::thread> threads;
  for (auto& mine : ids)
    threads.emplace_back([&arrived, &mine] {
      for (unsigned i = 0; i < numNames; ++i) {
        const std::string name = "shared between threads " + std::to_string(i);
        ++arrived;
        for (int spins = 0; arrived < (i + 1) * numThreads; ++spins)
          if (spins % 1000 == 999) std::this_thread::yield();
        const unsigned id = QXGetTag(name);
        EXPECT_TRUE(QXHasTag(name) && QXHasTag(id) && QXGetTag(id) == name);
        mine.push_back(id);
      }
    });
  for (auto& thread : threads) thread.join();
  for (const auto& other : ids) EXPECT_EQ(other, ids[0]);
}

}  // namespace
}  // namespace QXSystem
