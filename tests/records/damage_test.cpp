// What damaged and hostile bytes can do to a reader of records: nothing beyond
// a false, an exception that is promised, and bounded memory.

#include <gtest/gtest.h>

#include "every_value.h"
#include "support.h"
#include "support/countedheap.h"

using namespace recordtest;

namespace {

// Runs `work` on an input of `size` bytes, in memory that fits it.
template <class F>
void WithinBounds(std::size_t size, F work) {
  const std::size_t before = peak = inUse.load();
  work();
  EXPECT_LT(peak - before, 64 * size + (1 << 20));
}

// Reads `bytes` and asks for every value of them, within bounds. Whether they
// are a record.
bool Try(const QXBytes& bytes) {
  QXRecord record;
  bool isRecord = false;
  WithinBounds(bytes.size(), [&] { isRecord = record.FromBytes(bytes); });
  AskForEveryValue(record);
  const QXBytes written = record.ToBytes();
  QXRecord again;
  EXPECT_TRUE(again.FromBytes(written));
  EXPECT_EQ(ToHex(again.ToBytes()), ToHex(written));
  return isRecord;
}

TEST(RecordDamage, IsToldAndLeavesARecord) {
  Reports reports;
  for (const std::string& golden : goldenRecords) {
    const QXBytes whole = Bytes(golden);
    ASSERT_TRUE(Try(whole));
    for (std::size_t at = 0; at < whole.size(); ++at) {
      QXBytes damaged = whole;
      for (const int value : {0x00, 0x01, 0x7F, 0x80, 0xFF}) {
        damaged[at] = static_cast<unsigned char>(value);
        Try(damaged);
      }
      damaged.resize(at);
      EXPECT_FALSE(Try(damaged));
      reports.Clear();
    }
  }
}

// Every length and count of a record in its place: first the sizes that stand in
// the golden bytes, then the numbers that cannot be.
TEST(RecordDamage, ClaimsCostNoMemory) {
  Reports reports;
  const QXBytes whole = Bytes(everyType);
  for (const char* const claim : {"85 0000008000", "86 000000000008", "87 00000000000008",
                                  "88 0000000000000080", "88 FFFFFFFFFFFFFF7F"}) {
    const QXBytes number = Bytes(claim);
    for (auto at = whole.begin(); at != whole.end(); ++at) {
      QXBytes damaged(whole.begin(), at);
      damaged.insert(damaged.end(), number.begin(), number.end());
      damaged.insert(damaged.end(), at + 1, whole.end());
      Try(damaged);
      reports.Clear();
    }
    // Counts inside of values.
    QXBytes bytes = number;
    bytes.resize(200, 0x80);
    QXRecord record;
    record.SetBytes(intA, bytes);
    AskForEveryValue(record);
  }
}

// What makes the most of few bytes.
TEST(RecordDamage, DenseInputStaysInsideTheBound) {
  Reports reports;
  constexpr std::size_t repeats = 40000;
  const auto repeat = [](const QXBytes& unit, std::size_t times) {
    QXBytes bytes;
    for (std::size_t i = 0; i < times; ++i) bytes.insert(bytes.end(), unit.begin(), unit.end());
    return bytes;
  };
  // Vectors of elements that are as small as can be.
  for (const char* const unit :
       {"00", "80", "05", "00 00", "00 02 00 00", "00 0C 06'fields' 04 00 01 00 00",
        "00 13 06'fields' 0B 01'a' 01 00 00 01'b' 02 01'x' 00"}) {
    QXWriteBuffer count;
    count.WriteInt(repeats);
    QXBytes bytes = count.Get();
    const QXBytes elements = repeat(Bytes(unit), repeats);
    bytes.insert(bytes.end(), elements.begin(), elements.end());
    ForEveryField("v", [&](const auto& field) {
      QXRecord record;
      record.SetBytes(field, bytes);
      SCOPED_TRACE(unit + field.GetTypeName());
      WithinBounds(bytes.size(), [&] { AskForValue(record, field); });
    });
  }
  // Tables of entries that are as small as can be: distinct fields, metadata,
  // attributes without values, children.
  QXWriteBuffer fields("fields"), meta("meta"), attributes("meta"), data("data"),
      children("children");
  const QXBytes ids = repeat(Bytes("01"), repeats);
  attributes.Append(Bytes("00 00"));
  attributes.WriteInt(repeats);
  attributes.Append(ids);
  for (std::size_t i = 0; i < repeats; ++i) {
    std::string name;
    for (std::size_t n = i; n != 0; n /= 200) name += static_cast<char>(n % 200);
    fields.WriteString(name);
    fields.WriteInt(i + 1);
    fields.Append(Bytes("00 00"));
    for (QXWriteBuffer* table : {&meta, &data, &children}) table->WriteInt(i + 1);
    meta.Append(Bytes("01 07 00"));
    data.Append(Bytes("80"));
    children.Append(Bytes("01 00"));
  }
  for (const QXWriteBuffer* extra : {&meta, &attributes, &data, &children}) {
    QXWriteBuffer record("record.v1");
    fields.CopyWrapped(record);
    extra->CopyWrapped(record);
    QXBytes bytes;
    record.CopyWrapped(bytes);
    WithinBounds(bytes.size(), [&] { EXPECT_TRUE(QXRecord().FromBytes(bytes)); });
  }
}

// Deeper than objects may nest: every step down is the caller's, and none is
// taken by reading.
TEST(RecordDamage, DepthIsNotFollowed) {
  Reports reports;
  QXBytes bytes = Bytes(smallRecord);
  const QXField<QXRecord> field("r");
  for (int i = 0; i < 1000; ++i) {
    QXRecord outer;
    outer.SetBytes(field, bytes);
    bytes = outer.ToBytes();
  }
  EXPECT_TRUE(Try(bytes));
}

}  // namespace
