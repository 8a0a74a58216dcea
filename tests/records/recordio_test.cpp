#include <qxsystem/records/recordio.h>

#include <gtest/gtest.h>

#include "support.h"

using namespace recordtest;

namespace {

using qxbtest::DripStream;
using qxbtest::Hex;
using qxbtest::RefusingStream;
using QXPlatform::qxisstream;
using QXPlatform::qxosstream;

TEST(RecordStream, HoldsRecordsBackToBack) {
  qxosstream out;
  std::string expected;
  for (const std::string& golden : goldenRecords)
    for (const char* const format : {"binary", "qxb"}) {
      EXPECT_TRUE(QXWriteRecord(out, Read(golden), format));
      expected += Hex(golden);
    }
  ASSERT_EQ(out.str(), expected);
  EXPECT_FALSE(QXWriteRecord(out, QXRecord(), "text"));
  EXPECT_EQ(out.str(), expected);

  qxisstream whole(expected), again(expected);
  DripStream drops(expected);
  for (const std::string& golden : goldenRecords)
    for (const char* const format : {"binary", "qxb"}) {
      QXRecord record, other;
      EXPECT_FALSE(QXReadRecord(record, whole, "text"));
      EXPECT_TRUE(QXReadRecord(record, whole, format) && QXReadRecord(other, drops, format));
      EXPECT_EQ(record.ToBytes(), Bytes(golden));
      EXPECT_EQ(other.ToBytes(), Bytes(golden));
      EXPECT_EQ(QXReadRecordBytes(again), Bytes(golden));
    }
  QXRecord record = Read(smallRecord);
  EXPECT_FALSE(QXReadRecord(record, whole, "binary"));
  EXPECT_TRUE(whole.eof());
  EXPECT_EQ(record.GetValue(intN), 5);  // nothing was read into it
}

TEST(RecordStream, EndsAtDamage) {
  const auto expectBytes = [](const char* stream, const char* bytes) {
    SCOPED_TRACE(stream);
    qxisstream in(Hex(stream)), again(Hex(stream));
    EXPECT_EQ(ToHex(QXReadRecordBytes(in)), ToHex(Bytes(bytes)));
    QXRecord record;
    QXReadRecord(record, again, "binary");
    EXPECT_EQ(in.tell(), again.tell());
  };
  expectBytes("0B 'eleven byte' 00", "0B 'eleven byte' 00");
  expectBytes("8103 'tag' 8102 'ab'", "03 'tag' 02 'ab'");
  for (const char* const damaged :
       {"00 05 'xxxxx'", "0C 'twelve bytes' 00", "810C 'twelve bytes' 00", "03 'tag'",
        "03 'tag' 80", "03 'tag' 89", "03 'tag' 81FF", "03 'tag' 87 00000000000008 'ab'",
        "03 'tag' 86 000000000008 'ab'", "03 'tag' 03 'ab'", "'{\"version\":[1,0]}'"})
    expectBytes(damaged, "");
}

TEST(RecordStream, TellsThatBytesWereRefused) {
  QXRecord record = Read(everyType);
  record.SetValue(QXField<std::string>("long"), std::string(5000, 'x'));
  const std::size_t size = record.ToBytes().size();
  for (std::size_t room = 0; room < size; room += 13) {
    RefusingStream out(room);
    EXPECT_FALSE(QXWriteRecord(out, record, "binary"));
  }
  RefusingStream out(size);
  EXPECT_TRUE(QXWriteRecord(out, record, "binary") && out.flush());
  EXPECT_EQ(out.Taken(), ToText(record.ToBytes()));
}

}  // namespace
