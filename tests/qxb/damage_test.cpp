// What damaged and hostile bytes can do to a reader: nothing beyond a status
// and bounded memory.

#include <gtest/gtest.h>
#include <malloc.h>

#include <atomic>
#include <cstdlib>
#include <new>
#include <string>

#include "support.h"

namespace {

// Heap in use through operator new, by blocks as large as they really are.
std::atomic<std::size_t> inUse, peak;

}  // namespace

void* operator new(std::size_t size) {
  void* block = std::malloc(size != 0 ? size : 1);
  if (block == nullptr) throw std::bad_alloc();
  const std::size_t now = inUse += malloc_usable_size(block);
  if (now > peak) peak = now;
  return block;
}
void operator delete(void* block) noexcept {
  inUse -= malloc_usable_size(block);
  std::free(block);
}
void operator delete(void* block, std::size_t) noexcept {
  operator delete(block);
}

using namespace qxbtest;

namespace {

// The heap that `work` needed at its peak. The first block of the table of
// names, a megabyte for the life of the process, is not its doing.
template <class F>
std::size_t PeakOf(F work) {
  QXGetTag("a name");
  const std::size_t before = inUse;
  peak = before;
  work();
  return peak - before;
}

std::size_t Bound(std::size_t input) {
  return 64 * input + (1 << 20);
}

const QXBinaryIOHandler filled = ContainerHandler(), empty;

// Every way to read a stream of these bytes; the items that a filled handler
// found.
std::string ReadEveryWay(const std::string& bytes) {
  std::string items;
  for (const QXBinaryIOHandler* handler : {&filled, &empty}) {
    QXContainer object;
    unsigned status = 0;
    const std::size_t heap = PeakOf([&] {
      qxisstream in(bytes);
      status = ReadAll(in, object, *handler);
    });
    EXPECT_LE(status, QXBReturn::IncorrectHandlerType);
    EXPECT_LT(heap, Bound(bytes.size()));
    if (handler == &filled) items = Describe(object);

    QXContainer dripped;
    DripStream drops(bytes);
    EXPECT_EQ(ReadAll(drops, dripped, *handler), status);
    EXPECT_EQ(Describe(dripped), Describe(object));
  }
  qxisstream in(bytes);
  unsigned count = 0;
  const unsigned status = QXBinaryCount(in, count);
  EXPECT_TRUE(status == 0 || status == 6 || status == 8 || status == 9) << status;
  EXPECT_LE(3 * count, bytes.size() + 2);
  return items;
}

// Calls `check` with every truncation of `bytes`, then with every copy in which
// one byte is another.
template <class F>
void Damage(const std::string& bytes, F check) {
  for (std::size_t cut = 0; cut < bytes.size(); ++cut) check(bytes.substr(0, cut));
  for (std::size_t at = 0; at < bytes.size(); ++at)
    for (const int value : {0x00, 0x01, 0x7F, 0x80, 0xFF}) {
      std::string damaged = bytes;
      damaged[at] = static_cast<char>(value);
      check(damaged);
    }
}

TEST(QXBDamage, OfAStreamIsAStatus) {
  Reports reports;
  const std::string golden = GoldenStream();
  const std::string whole = ReadEveryWay(golden);
  for (const char* item : {"c={i=i:05000000 } ", "u=(Fxn,0,", "UnknownQXB57=i:", "Data=(Notes,0,",
                           "Data=(,200,0102)", "Data=(QXBase,0,07)"})
    EXPECT_NE(whole.find(item), whole.npos) << item;

  Damage(golden, [&](const std::string& damaged) {
    const std::string items = ReadEveryWay(damaged);
    // What stands before a cut is read as in the whole.
    const bool cut = damaged.size() < golden.size();
    EXPECT_EQ(cut ? items : "", whole.substr(0, cut ? items.size() : 0));
    reports.Clear();
  });
}

TEST(QXBDamage, OfABlockLeavesWhatCameBefore) {
  Reports reports;
  std::string block = Hex("01 3F");
  for (const StoredForm& form : StoredForms()) block += Hex("00 81 'v'") + Hex(form.native);
  block += ContainerItem() + UnreadItem() + ContainerItem();
  const auto read = [&](const std::string& payload) {
    QXContainer object;
    qxisstream in(payload);
    EXPECT_LT(PeakOf([&] { QXBReadQXBase(in, object, payload.size(), filled); }),
              Bound(payload.size()));
    EXPECT_TRUE(in.eof());
    return Describe(object);
  };
  const std::string whole = read(block);
  std::size_t longest = 0;
  Damage(block, [&](const std::string& damaged) {
    const std::string items = read(damaged);
    if (damaged.size() < block.size()) {
      EXPECT_EQ(items, whole.substr(0, items.size()));
      EXPECT_GE(items.size(), longest);
      longest = items.size();
    }
  });
  EXPECT_GT(longest, whole.size() / 2);
}

TEST(QXBDamage, ClaimedLengthsCostNoMemory) {
  Reports reports;
  const std::string claim = Hex("7F7F7F7F8F");
  for (const char* head : {"01", "36", "C8", "35", "00 81 'x'"})
    EXPECT_LT(PeakOf([&] { ReadEveryWay(Hex(head) + claim + Hex("01 3F 00 81")); }), 100000u)
        << head;
  for (const char* type :
       {"03", "05", "10", "11", "12 01", "20", "50", "51", "53 01", "58", "60 1F 51"})
    EXPECT_LT(PeakOf([&] { ReadEveryWay(Block(Hex("1F") + Hex(type) + claim)); }), 100000u) << type;
}

// What makes the most of few bytes.
TEST(QXBDamage, DenseInputStaysInsideTheBound) {
  Reports reports;
  const auto repeat = [](const std::string& unit, unsigned count) {
    const std::string one = Hex(unit);
    std::string bytes;
    while (count--) bytes += one;
    return bytes;
  };
  std::string names;
  for (unsigned i = 10000; i < 30000; ++i)
    names += repeat("00 85 '" + std::to_string(i) + "' 50 80", 1);
  const std::string inputs[] = {repeat("33 81 07", 100000),
                                Counted("\x36", repeat("33 81 07", 100000)),
                                repeat("36 7F 7F FF", 100000),
                                Block(repeat("33 50 80", 100000)),
                                Block(repeat("33 10 80", 100000)),
                                Block(repeat("33 03 80", 100000)),
                                Block(repeat("33 FF", 100000)),
                                Block(repeat("1F 60 1F 51 83 35 81 33", 100000)),
                                Block(names)};
  for (const std::string& input : inputs)
    for (const QXBinaryIOHandler* handler : {&filled, &empty}) {
      QXContainer object;
      qxisstream in(input);
      EXPECT_LT(PeakOf([&] { ReadAll(in, object, *handler); }), Bound(input.size()))
          << ToHex(input.substr(0, 12));
    }
}

}  // namespace
