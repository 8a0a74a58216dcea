// The byte format of whole records, held against bytes worked out by hand.

#include <gtest/gtest.h>

#include "support.h"

using namespace recordtest;

namespace {

template <class T>
using Optionals = std::vector<std::optional<T>>;

QXRecord Small() {
  QXRecord record;
  record.SetValue(intN, 5);
  return record;
}

TEST(RecordBytes, HoldEveryType) {
  QXRecord record;
  const QXRecord read = Read(everyType);
  const auto hold = [&](const auto& field, const auto& value) {
    record.SetValue(field, value);
    EXPECT_EQ(read.GetValue(field), value) << field.GetName();
  };
  hold(intA, -300);
  hold(stringB, "hi");
  hold(QXField<double>("c"), 1.5);
  hold(QXField<QXBytes>("d"), QXBytes{0, 0xFF});
  hold(QXField<bool>("e"), true);
  hold(QXVectorField<long>("f"), Optionals<long>{1, {}, 128, -1});
  hold(QXVectorField<std::string>("g"), Optionals<std::string>{"x", {}, ""});
  hold(QXVectorField<double>("h"), Optionals<double>{-2.0, {}});
  hold(QXVectorField<QXBytes>("i"), Optionals<QXBytes>{QXBytes{7}, {}});
  hold(QXVectorField<bool>("j"), Optionals<bool>{true, {}, false});
  record.SetValue(QXField<QXRecord>("k"), Small());
  EXPECT_EQ(read.GetValue(QXField<QXRecord>("k")).GetValue(intN), 5);
  record.SetValue(QXVectorField<QXRecord>("l"), Optionals<QXRecord>{QXRecord(), {}});
  const auto records = read.GetValue(QXVectorField<QXRecord>("l"));
  EXPECT_TRUE(records.size() == 2 && records[0] && records[0]->IsEmpty() && !records[1]);
  hold(QXField<QXRange>("m"), QXRange(1.0, {}, 0));
  hold(QXField<QXJSONObject>("n"), QXJSONObject("{\"a\":1}"));
  hold(QXField<QXLinkObject>("o"), QXLinkObject("{\"b\":2}"));
  EXPECT_EQ(ToHex(record.ToBytes()), ToHex(Bytes(everyType)));
}

TEST(RecordBytes, HoldMetadata) {
  QXFieldMeta meta;
  meta.SetOptions({0x08030005, 0x0400000B})
      .AddAttribute(0x02000001, std::string("bb"))
      .AddAttribute(0x02000001, std::string("c"))
      .SetAttribute(0x06020002, 300)
      .SetAttribute(0x09000001, 0.5);
  QXRecord record;
  record.AddField(QXField<double>("a", meta, /*readonly=*/false, /*nullable=*/true));
  record.SetSourceID("s1");
  EXPECT_EQ(ToHex(record.ToBytes()), ToHex(Bytes(withMetadata)));

  const QXRecord read = Read(withMetadata);
  EXPECT_EQ(read.GetSourceID(), "s1");
  EXPECT_TRUE(meta.IsSubsetOf(read.GetFieldMeta("a")));
  EXPECT_TRUE(read.GetFieldMeta("a").IsSubsetOf(meta));
  EXPECT_TRUE(read.GetFields().at(0).IsNullable());
}

TEST(RecordBytes, HoldChildrenAndNullsAndUserTypes) {
  QXRecord parent;
  parent.AddField(intA);
  parent.GetChildRecord(intA, "k")->SetValue(intN, 5);
  EXPECT_EQ(ToHex(parent.ToBytes()), ToHex(Bytes(withChild)));
  EXPECT_EQ(Read(withChild).GetChildRecord(intA, "k")->GetValue(intN), 5);

  QXRecord nothing;
  nothing.SetBytes(intA, std::nullopt);
  EXPECT_EQ(ToHex(nothing.ToBytes()), ToHex(Bytes(withNull)));
  EXPECT_TRUE(Read(withNull).IsNA(intA));

  QXRecord user;
  user.SetBytes(MakeFieldBase("u", "ns:Thing"), QXBytes{0xAB});
  EXPECT_EQ(ToHex(user.ToBytes()), ToHex(Bytes(withUserType)));
  EXPECT_EQ(Read(withUserType).GetFields().at(0).GetTypeName(), "ns:Thing");
}

TEST(RecordBytes, ComeBackUnchanged) {
  for (const std::string& golden : goldenRecords) {
    QXRecord record;
    EXPECT_TRUE(record.FromBytes(Bytes(golden)));
    EXPECT_EQ(ToHex(record.ToBytes()), ToHex(Bytes(golden)));
    EXPECT_EQ(ToHex(QXRecord(record).ToBytes()).size(),
              ToHex(Bytes(golden)).size() - (golden == withMetadata ? 22 : 0));
  }
}

// Sections in another order, in pieces, with tags of other lengths, and around
// sections that are kept as they stand.
TEST(RecordBytes, AreReadInAnyOrder) {
  const std::string ordered =
      "02 'xx' 47 07 'unknown' 00"
      "04 'data' 03 01 01 05 04 'data' 02 02 80"
      "06 'fields' 08 01 'n' 01 03 'Int' 00 07 'version' 02 01 '7'"
      "06 'fields' 08 01 'm' 02 03 'Int' 00 00 00";
  const QXRecord record = Read(ordered);
  EXPECT_EQ(record.GetValue(intN), 5);
  EXPECT_TRUE(record.IsNA("m"));
  EXPECT_EQ(ToHex(record.ToBytes()),
            ToHex(Bytes("09 'record.v1' 3B 07 'version' 04 03 '1.0'"
                        "06 'fields' 10 01 'm' 02 03 'Int' 00 01 'n' 01 03 'Int' 00"
                        "04 'data' 05 02 80 01 01 05 07 'unknown' 00 00 00")));
}

TEST(RecordBytes, AreRefusedWhereTheirStructureIsBroken) {
  const struct {
    const char *why, *fields;
  } cases[] = {
      {"index 0", "01 'a' 00 03 'Int' 00"},
      {"index of more than 32 bits", "01 'a' 86 000000000100 03 'Int' 00"},
      {"index below 0", "01 'a' 81FF 03 'Int' 00"},
      {"no index", "01 'a' 80 03 'Int' 00"},
      {"no name", "80 01 03 'Int' 00"},
      {"no type", "01 'a' 01 80 00"},
      {"type cut off", "01 'a' 01 05 'Int' 00"},
      {"flag cut off", "01 'a' 01 03 'Int'"},
      {"an index twice", "01 'a' 01 03 'Int' 00 01 'b' 01 03 'Int' 00"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.why);
    const QXBytes fields = Bytes(std::string("01 'z' 09 03 'Int' 00") + c.fields);
    QXWriteBuffer section("fields"), outer("record.v1");
    section.Append(fields);
    section.CopyWrapped(outer);
    QXRecord record;
    record.SetSourceID("gone");
    QXBytes bytes;
    outer.CopyWrapped(bytes);
    EXPECT_FALSE(record.FromBytes(bytes));
    EXPECT_TRUE(record.HasField(QXField<long>("z")));  // what came before stays
    EXPECT_EQ(record.GetSourceID(), "");
  }
  QXRecord record;
  record.SetValue(intN, 1);
  EXPECT_FALSE(QXRecordFromBytes(record, {}));
  EXPECT_EQ(record.GetValue(intN), 1);
  EXPECT_FALSE(record.FromBytes(Bytes("11 'a tag of 17 bytes' 00")));
  EXPECT_TRUE(record.IsEmpty());
  EXPECT_TRUE(record.FromBytes(Bytes("10 'a tag of 16 byte' 00 'ignored'")));
  EXPECT_FALSE(record.FromBytes(Bytes("00 0A 07 'version' 01 80")));
}

// Types are told apart at the last colon, if there is no handler for the whole.
TEST(RecordBytes, SplitTypeNames) {
  struct Whole : QXFieldTypeHandler {
    std::string GetName() const override { return "bytes:whole"; }
  };
  QXFieldTypeHandlerRegistry::GetInstance().RegisterHandler(new Whole, 0);
  for (const char* const type : {"bytes:whole", "a:b:Int", "Int", "plain"}) {
    QXRecord record;
    record.SetBytes(MakeFieldBase("x", type), QXBytes{5});
    QXRecord read;
    ASSERT_TRUE(read.FromBytes(record.ToBytes()));
    EXPECT_EQ(read.GetFields().at(0).GetTypeName(), type);
    const bool isTail = std::string(type).find("Int") != std::string::npos;
    EXPECT_EQ(read.GetValue(QXField<long>("x")), isTail ? 5 : 0) << type;
  }
}

TEST(RecordBytes, KeepAttributesThatAreNotMinimal) {
  // Display.Values.Priority as three bytes, and one whose prefix is no integer's.
  const std::string meta =
      "07 'unknown' 00 06 'fields' 08 01 'a' 01 03 'Int' 00"
      "04 'meta' 1C 01 00 02 84 01000206 830500 00 84 01000206 8A 0102030405060708090A";
  QXWriteBuffer outer("record.v1");
  outer.Append(Bytes(meta));
  QXBytes bytes;
  outer.CopyWrapped(bytes);
  QXRecord record;
  ASSERT_TRUE(record.FromBytes(bytes));
  EXPECT_EQ(record.GetFieldMeta("a").GetIntAttribute(0x06020001), 5);
  QXRecord again;
  ASSERT_TRUE(again.FromBytes(record.ToBytes()));
  EXPECT_EQ(again.GetFieldMeta("a").GetAttributes(), record.GetFieldMeta("a").GetAttributes());
}

}  // namespace
