// What damaged and hostile bytes can do to a reader: nothing beyond a status
// and bounded memory.

#include <gtest/gtest.h>

#include "support.h"
#include "support/countedheap.h"

using namespace qxbtest;

namespace {

const QXBinaryIOHandler filled = ContainerHandler(), empty;

// The items that a filled handler finds in these bytes, a stream or a block's
// payload, which each handler reads within `bound` of heap, or in proportion.
std::string Read(const std::string& bytes, bool block, std::size_t bound = 0) {
  if (bound == 0) bound = 64 * bytes.size() + (1 << 20);
  QXGetTag("a name");  // the table of names has a megabyte for the process's life
  std::string items;
  for (const QXBinaryIOHandler* handler : {&empty, &filled}) {
    const auto read = [&](qxistream& in, QXContainer& object) {
      return block ? QXBReadQXBase(in, object, bytes.size(), *handler)
                   : ReadAll(in, object, *handler);
    };
    QXContainer object, dripped;
    qxisstream in(bytes);
    DripStream drops(bytes);
    const std::size_t before = peak = inUse.load();
    const unsigned status = read(in, object);
    EXPECT_LT(peak - before, bound) << ToHex(bytes.substr(0, 20));
    EXPECT_LE(status, QXBReturn::IncorrectHandlerType);
    items = Describe(object);
    if (bytes.size() > 10000) continue;
    EXPECT_EQ(read(drops, dripped), status);
    EXPECT_EQ(Describe(dripped), items);
  }
  return items;
}

TEST(QXBDamage, IsAStatusAndLeavesWhatCameBefore) {
  Reports reports;
  const std::string items =
      StoredItems() + Hex("39 01 07000000") + ContainerItem() + UnreadItem() + ContainerItem();
  const std::string group = Counted("\x36", Block(ContainerItem()) + UnknownRecords());
  for (const bool block : {true, false}) {
    const std::string bytes =
        block ? Hex("01 3F") + items : Block(items) + UnknownRecords() + group;
    const std::string whole = Read(bytes, block);
    EXPECT_GT(whole.size(), bytes.size());
    for (std::size_t cut = 0; cut < bytes.size(); ++cut) {
      const std::string read = Read(bytes.substr(0, cut), block);
      EXPECT_EQ(read, whole.substr(0, read.size()));
    }
    for (std::size_t at = 0; at < bytes.size(); ++at)
      for (const int value : {0x00, 0x01, 0x7F, 0x80, 0xFF}) {
        std::string damaged = bytes;
        damaged[at] = static_cast<char>(value);
        Read(damaged, block);
        reports.Clear();
      }
  }
}

// Lengths that are claimed, and what makes the most of few bytes.
TEST(QXBDamage, StaysInsideTheBound) {
  Reports reports;
  const std::string claim = Hex("7F7F7F7F8F");
  for (const char* head : {"01", "36", "C8", "35", "00 81 'x'"})
    Read(Hex(head) + claim + Hex("01 3F 00 81"), false, 100000);
  for (const char* type :
       {"03", "05", "10", "11", "12 01", "20", "50", "51", "53 01", "58", "60 1F 51"})
    Read(Block(Hex("1F") + Hex(type) + claim), false, 100000);
  for (const char* unit : {"33 81 07", "36 7F 7F FF", "33 50 80", "33 10 80", "33 03 80", "33 FF",
                           "1F 60 1F 51 83 35 81 33"}) {
    std::string bytes;
    for (int i = 0; i < 100000; ++i) bytes += Hex(unit);
    for (const std::string& stream : {bytes, Counted("\x36", bytes), Block(bytes)})
      Read(stream, false);
  }
  std::string names, unread;
  for (int i = 10000; i < 30000; ++i) {
    const std::string name = "00 85 '" + std::to_string(i) + "'";
    names += Hex(name + "50 80");
    unread += Hex("1F 60 1F 51 8A 1F 88" + name + "07");
  }
  Read(Block(names), false);
  Read(Block(unread + unread), false);
}

}  // namespace
