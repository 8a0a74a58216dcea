#include <qxsystem/records/datarecord.h>

#include <gtest/gtest.h>

#include <random>

#include "support.h"
#include "support/smallstack.h"

using namespace recordtest;

namespace {

const QXField<double> floatA("a");
const QXFieldBase anyA("a");  // without a type

QXFieldMeta Option(unsigned id) {
  return QXFieldMeta().SetOption(id);
}
constexpr unsigned FlagsID = 0x04000001, Hidden = 0x06000001;

std::string Indices(const QXRecord& record) {
  std::string text;
  for (const QXFieldBase& field : record.GetFields())
    text += field.GetName() + std::to_string(record.GetFieldIdx(field)) + " ";
  return text;
}

TEST(Record, NumbersItsFields) {
  QXRecord record;
  EXPECT_TRUE(record.IsEmpty());
  EXPECT_EQ(record.GetFieldIdx(intA), 1);  // what it would get
  EXPECT_EQ(std::as_const(record).GetFieldIdx(intA), -1);
  for (const char* const name : {"c", "a", "b", "d", "e"}) record.AddField(QXField<long>(name));
  EXPECT_EQ(Indices(record), "c1 a2 b3 d4 e5 ");
  for (const char* const name : {"a", "b", "d"}) record.DeleteField(QXFieldBase(name));
  record.AddField(QXField<long>("f"));
  EXPECT_EQ(Indices(record), "c1 e5 f6 ");
  record.DeleteField(QXFieldBase("f"));
  record.DeleteField(QXFieldBase("e"));
  record.AddField(QXField<long>("g"));
  EXPECT_EQ(Indices(record), "c1 g2 ");
  EXPECT_FALSE(record.DeleteField(QXFieldBase("f")) || record.DeleteField(QXFieldBase("")));
}

TEST(Record, ReplacesAFieldOfAnotherType) {
  // Adding frees the old field's index first, setting bytes does not.
  for (const bool add : {true, false}) {
    QXRecord record;
    record.SetValue(intA, 5);
    record.GetChildRecord(intA, "k")->SetValue(intN, 1);
    add ? record.AddField(stringB) : true;
    QXField<std::string> text("a");
    add ? record.AddField(text) : record.SetValue(text, "x");
    EXPECT_EQ(Indices(record), add ? "b2 a3 " : "a2 ");
    EXPECT_EQ(record.CheckField(intA), QXFieldStatus::OtherType);
    EXPECT_EQ(record.HasValue(text), !add);
    EXPECT_FALSE(record.HasChildRecords(text));
  }
}

TEST(Record, TellsWhatBecameOfAField) {
  QXRecord record;
  record.SetValue(intN, 5);
  record.AddField(QXField<long>("empty", Option(Hidden)));
  record.SetBytes(QXField<long>("null"), std::nullopt);
  record.AddToCache(QXField<std::string>("cached"), std::make_shared<std::string>("x"));
  record.AddToCache(QXField<std::string>("no object"), nullptr);
  record.SetBytes(MakeFieldBase("user", "ns:Int"), QXBytes{7});
  QXField<long> matching("unused", Option(Hidden)), other("n", Option(Hidden));
  matching.SetMetaMatch(true);
  const struct {
    QXFieldBase field;
    int status, statusWithMeta;
    bool has, hasWithMeta, hasValue;
  } cases[] = {
      {intN, 0, 0, true, true, true},
      {QXField<long>("none"), 1, 1, false, false, false},
      {QXField<long>("empty"), 2, 2, true, true, false},
      {QXField<long>("null"), 3, 3, true, true, true},
      {QXField<std::string>("cached"), 0, 0, true, true, true},
      {QXField<std::string>("no object"), 3, 3, true, true, true},
      {QXField<double>("n"), 4, 4, false, false, false},
      {other, 0, 5, true, false, true},
      {matching, 2, 2, true, true, false},              // found as "empty"
      {QXField<long>("user"), 0, 0, true, true, true},  // a tail of its type
      {MakeFieldBase("user", "s:Int"), 0, 0, true, true, true},
      {MakeFieldBase("user", "other:Int"), 4, 4, false, false, false},
      {QXFieldBase("user"), 0, 0, true, true, true},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.field.GetName() + " " + c.field.GetTypeName());
    EXPECT_EQ(record.CheckField(c.field, /*matchMeta=*/false), c.status);
    EXPECT_EQ(record.CheckField(c.field, /*matchMeta=*/true), c.statusWithMeta);
    EXPECT_EQ(record.HasField(c.field), c.has);
    EXPECT_EQ(record.HasField(c.field, true), c.hasWithMeta);
    EXPECT_EQ(record.HasValue(c.field), c.hasValue);
  }
  EXPECT_TRUE(record.GetFieldMeta("empty").HasOption(Hidden));
  EXPECT_TRUE(record.GetFieldMeta("none").IsEmpty());
}

TEST(Record, KeepsOptionsThatOnlyOneFieldMayHave) {
  QXRecord record;
  record.AddField(QXField<long>("a", Option(FlagsID).SetOption(Hidden)));
  record.SetValue(QXField<long>("b", Option(FlagsID)), 1);
  EXPECT_EQ(record.GetFieldMeta("a").GetOptions(), std::vector<unsigned>{Hidden});
  EXPECT_TRUE(record.GetFieldMeta("b").HasOption(FlagsID));

  // Back and on to the next, also when the field in between is deleted.
  record.AddField(QXField<long>("a", Option(FlagsID)));
  EXPECT_TRUE(record.GetFieldMeta("b").IsEmpty());
  record.DeleteField(QXField<long>("a"));
  for (const char* const name : {"c", "b", "d"}) {
    record.AddField(QXField<long>(name, Option(FlagsID)));
    for (const QXFieldBase& field : record.GetFields())
      EXPECT_EQ(field.GetMeta().HasOption(FlagsID), field.GetName() == name) << name;
  }
}

TEST(Record, MatchesByMetadata) {
  QXRecord record;
  record.SetValue(QXField<long>("y", Option(Hidden)), 1);
  record.SetValue(QXField<long>("x", Option(Hidden).SetOption(7)), 2);
  record.SetBytes(QXField<long>("z", Option(9)), std::nullopt);
  QXField<long> hidden("z", Option(Hidden)), nine("q", Option(9)), none("new", Option(11));
  for (QXField<long>* field : {&hidden, &nine, &none}) field->SetMetaMatch(true);
  EXPECT_EQ(record.GetValue(hidden), 2);  // the first by name
  nine.SetMeta(Option(9));
  EXPECT_TRUE(record.SetValue(nine, 3));  // no longer null
  EXPECT_EQ(record.GetValue(QXField<long>("z")), 3);
  record.SetValue(none, 4);
  EXPECT_EQ(Indices(record), "y1 x2 z3 new4 ");
  EXPECT_FALSE(record.GetFields().back().IsMetaMatch());
}

TEST(Record, TellsNullFromValue) {
  QXRecord record;
  record.SetValue(intA, 5);
  EXPECT_TRUE(record.SetBytes(intA, std::nullopt));
  long value = 9;
  QXBytes bytes;
  EXPECT_FALSE(record.GetValue(value, intA) || record.GetBytes(bytes, intA));
  EXPECT_EQ(value, 0);
  EXPECT_TRUE(record.IsNA(intA) && record.IsNA("a") && !record.IsNA(floatA) &&
              record.HasValue(intA));
  record.AddField(intA);  // what was there before the null
  EXPECT_EQ(record.GetValue(intA), 5);
  record.SetBytes(intA, std::nullopt);
  EXPECT_TRUE(record.ClearValue(intA));
  EXPECT_EQ(record.CheckField(intA), QXFieldStatus::NoValue);
  EXPECT_FALSE(record.ClearValue(intA));

  QXRecord fresh;
  fresh.SetBytes(intA, std::nullopt);
  EXPECT_FALSE(fresh.ClearValue(intA));
  EXPECT_TRUE(fresh.IsNA(intA));
}

TEST(Record, RefusesChangesThroughReadonlyFields) {
  const QXField<long> readonly("a", {}, /*readonly=*/true);
  QXRecord record;
  EXPECT_FALSE(record.SetValue(readonly, 1) || record.SetBytes(readonly, std::nullopt) ||
               record.AddToCache(readonly, std::make_shared<long>(1)));
  EXPECT_TRUE(record.IsEmpty());
  EXPECT_TRUE(record.AddField(readonly) && record.SetValue(intA, 1));
}

TEST(Record, ConvertsAndAppends) {
  const QXVectorField<long> longs("l");
  const QXVectorField<double> doubles("d");
  QXRecord record;
  record.SetValue(longs, std::vector<int>{-1, 2});
  EXPECT_EQ(record.GetValue<int>(longs), (std::vector<int>{-1, 2}));
  EXPECT_EQ((record.GetValue<unsigned, long>(longs)), (std::vector<unsigned>{~0U, 2}));
  record.SetValue(longs, std::vector<unsigned>{~0U});
  EXPECT_EQ(record.GetValue(longs), (std::vector<std::optional<long>>{0xFFFFFFFF}));
  record.SetValue(doubles, std::vector<float>{0.5F});
  record.SetValue(floatA, 0.25);
  EXPECT_EQ((record.GetValue<float, double>(doubles)), std::vector<float>{0.5F});
  EXPECT_EQ(record.GetValue<float>(floatA), 0.25F);
  QXBytes bytes{1};
  EXPECT_TRUE(record.GetBytes(bytes, longs));
  record.ToBytes(bytes);
  EXPECT_EQ(bytes.size(), 1 + record.GetBytes("l").size() + record.ToBytes().size());
}

// Values of all sizes, set again and again, deleted and copied.
TEST(Record, KeepsValuesApart) {
  std::mt19937 random(5);
  std::map<std::string, std::string> expected;
  QXRecord record;
  for (int i = 0; i < 3000; ++i) {
    const std::string name = "field number " + std::to_string(random() % 400);
    const std::string value(random() % (i % 10 == 0 ? 3000 : 40), static_cast<char>(random()));
    if (random() % 5 == 0) {
      EXPECT_EQ(record.DeleteField(QXFieldBase(name)), expected.erase(name) == 1);
    } else {
      record.SetValue(QXField<std::string>(name), expected[name] = value);
    }
    if (i % 500 == 0) {
      QXRecord read;
      ASSERT_TRUE(read.FromBytes(record.ToBytes()));
      record = i % 1000 == 0 ? read : QXRecord(read);
    }
  }
  EXPECT_EQ(record.GetFields().size(), expected.size());
  for (const auto& [name, value] : expected)
    EXPECT_EQ(record.GetValue(QXField<std::string>(name)), value);
}

TEST(Record, CachesObjects) {
  const QXFieldBase user = MakeFieldBase("u", "cache:Text"),
                    unknown = MakeFieldBase("v", "who:Knows");
  struct Text : QXFieldTypeHandler {
    std::string GetName() const override { return "cache:Text"; }
    QXBytes PtrToBytes(const void* value) const override {
      const auto& text = *static_cast<const std::string*>(value);
      return {text.begin(), text.end()};
    }
  };
  QXFieldTypeHandlerRegistry::GetInstance().RegisterHandler(new Text, 0);
  QXRecord record;
  const auto text = std::make_shared<std::string>("one");
  for (const QXFieldBase& field : {user, unknown, static_cast<QXFieldBase>(stringB)}) {
    record.SetBytes(field, QXBytes{'o', 'l', 'd'});
    record.AddToCache(field, text);
    EXPECT_EQ(record.CheckCache(field, /*onlyDirty=*/true), text);
  }
  EXPECT_EQ(record.GetValue(stringB), "one");
  EXPECT_EQ(ToText(record.GetBytes(stringB)) + ToText(record.GetBytes(user)) +
                ToText(record.GetBytes(unknown)),
            "oneoneold");
  EXPECT_EQ(record.CheckCache(stringB, /*onlyDirty=*/true), nullptr);
  *text = "two";
  EXPECT_EQ(record.GetValue(stringB), "two");
  EXPECT_EQ(ToText(record.GetBytes(stringB)), "one");
  record.MarkCacheDirty(stringB);
  EXPECT_EQ(ToText(record.GetBytes(stringB)), "two");

  // A field whose type becomes a tail of it keeps the bytes of the object alone.
  record.AddToCache(user, text);
  record.AddField(MakeFieldBase("u", "Text"));
  EXPECT_EQ(record.CheckCache(user) == nullptr ? ToText(record.GetBytes("u")) : "", "two");

  // Asked for as a tail of a foreign type, an object is looked at as bytes.
  EXPECT_EQ(record.GetValue(QXField<QXBytes>("b")), QXBytes());
  record.AddToCache(MakeFieldBase("w", "cache:String"), text);
  EXPECT_EQ(record.GetValue(QXField<std::string>("w")), "");

  record.AddToCache(intA, std::make_shared<long>(7));
  record.ClearCacheEntry(static_cast<int>(record.GetFieldIdx(intA)));
  EXPECT_FALSE(record.HasValue(intA));
  record.AddToCache(floatA, std::make_shared<double>(7));  // has no bytes
  EXPECT_EQ(record.GetValue(floatA), 7);
  record.Flush();
  EXPECT_EQ(record.GetValue(floatA), 0);
  EXPECT_EQ(record.CheckCache(user), nullptr);
  record.CacheOnRead(QXField<long>("nowhere"), text);
  EXPECT_FALSE(record.HasField(QXField<long>("nowhere")));
}

TEST(Record, DecodesNestedRecordsOnce) {
  const QXField<QXRecord> field("r");
  QXRecord inner = Read(smallRecord), record;
  inner.SetSourceID("s");
  record.SetValue(field, inner);
  inner.SetValue(intN, 6);
  EXPECT_EQ(record.GetValue(field).GetValue(intN), 5);
  EXPECT_EQ(record.GetValue(field).GetSourceID(), "");
  record.SetBytes(field, inner.ToBytes());  // bytes keep it, copies don't
  EXPECT_EQ(record.CheckCache(field), nullptr);
  EXPECT_EQ(record.GetValue(field).GetSourceID(), "");
  const auto cached = std::static_pointer_cast<QXRecord>(record.CheckCache(field));
  ASSERT_TRUE(cached);
  EXPECT_EQ(cached->GetSourceID(), "s");
  EXPECT_EQ(record.CheckCache(field, /*onlyDirty=*/true), nullptr);
  cached->SetValue(intN, 8);
  record.MarkCacheDirty(field);
  EXPECT_EQ(Types::Record.ToBytes(record.GetValue(field)).size(), Bytes(smallRecord).size());
  QXRecord read;
  read.FromBytes(record.ToBytes());
  EXPECT_EQ(read.GetValue(field).GetValue(intN), 8);

  const QXVectorField<QXRecord> vector("v");
  record.SetValue(vector, std::vector<QXRecord>{inner, QXRecord()});
  EXPECT_TRUE(record.CheckCache(vector));
  std::vector<QXRecord> records;
  EXPECT_TRUE(record.GetValue(records, vector));
  EXPECT_EQ(records.at(0).GetValue(intN), 6);
  record.Flush();
  EXPECT_EQ(record.GetValue(vector).at(0)->GetValue(intN), 6);
  record.SetValue(field, std::move(inner));
  EXPECT_EQ(record.GetValue(field).GetValue(intN), 6);
}

TEST(Record, CopiesAreOnTheirOwn) {
  QXRecord record;
  record.SetValue(stringB, "text");
  record.AddToCache(intA, std::make_shared<long>(300));
  record.GetChildRecord(intA, "k")->SetValue(intN, 1);
  record.SetSourceID("s");
  QXRecord copy(record), assigned;
  assigned = record;
  assigned = *&assigned;
  EXPECT_EQ(copy.GetSourceID() + assigned.GetSourceID(), "s");
  for (QXRecord* other : {&copy, &assigned}) {
    EXPECT_EQ(other->CheckCache(intA), nullptr);
    EXPECT_EQ(other->GetValue(intA), 300);
    other->GetChildRecord(intA, "k")->SetValue(intN, 2);
    other->SetValue(stringB, "other");
    EXPECT_EQ(other->GetChildRecord(intA, "k")->GetValue(intN), 2);
  }
  EXPECT_TRUE(record.CheckCache(intA, /*onlyDirty=*/true));
  EXPECT_EQ(record.GetChildRecord(intA, "k")->GetValue(intN), 1);
  EXPECT_EQ(record.GetValue(stringB), "text");
  QXRecord moved(std::move(record));
  EXPECT_TRUE(record.IsEmpty() && record.SetValue(intN, 1));  // NOLINT(bugprone-use-after-move)
  EXPECT_EQ(moved.GetSourceID(), "s");
  moved = *moved.GetChildRecord(intA, "k");  // of its own
  EXPECT_EQ(moved.GetValue(intN), 1);
  moved.Clear();
  EXPECT_EQ(ToHex(moved.ToBytes()), ToHex(Bytes(emptyRecord)));
}

TEST(Record, HasChildren) {
  QXRecord record;
  EXPECT_EQ(record.GetChildRecord(intA, "k"), nullptr);
  EXPECT_FALSE(record.AddChildRecord(intA, "k", QXRecord()) || record.SetChildren(intA, {}) ||
               record.DeleteChildRecords(intA) || record.SetChildBytes(intA, {}));
  record.AddField(intA);
  EXPECT_FALSE(record.HasChildRecords(intA) || record.HasChildRecord(intA, 7));
  record.GetChildRecord(intA, 10)->SetValue(intN, 10);
  record.GetChildRecord(intA, "9")->SetValue(intN, 9);
  EXPECT_FALSE(record.GetChildRecord(intA, "empty")->HasField(intN));  // asking makes one
  EXPECT_TRUE(record.HasChildRecord(intA, "10") && record.HasChildRecord(intA, "empty"));
  const auto children = record.GetChildRecords(intA);
  EXPECT_EQ(children.size(), 2u);  // without the empty one
  EXPECT_EQ(children.begin()->first, "10");
  EXPECT_EQ(children.begin()->second.GetFields().size(), 1u);  // without its key
  EXPECT_TRUE(record.HasChildRecord(intA, "empty"));
  record.Flush();
  EXPECT_FALSE(record.HasChildRecord(intA, "empty"));

  // A child whose key has a field of another type in its way, and a source id.
  QXRecord awkward;
  awkward.SetValue(QXField<long>("__qx__key"), 5);
  awkward.SetSourceID("s");
  EXPECT_TRUE(record.AddChildRecord(intA, "awk", awkward));
  EXPECT_EQ(record.GetChildRecords(intA).at("awk").GetSourceID(), "s");  // until it is decoded
  EXPECT_EQ(record.GetChildRecord(intA, "awk")->GetSourceID(), "");
  EXPECT_EQ(record.GetChildRecords(intA).count("awk"), 0u);  // nor has it fields

  const auto held = record.GetChildRecord(intA, 9);
  EXPECT_TRUE(record.AddChildRecord(intA, "9", Read(smallRecord)));
  EXPECT_EQ(held->GetValue(intN), 9);
  EXPECT_EQ(record.GetChildRecord(intA, 9)->GetValue(intN), 5);
  EXPECT_TRUE(record.AddChildRecord(intA, "none", QXRecord()));  // is there until it is decoded
  EXPECT_EQ(record.GetChildRecords(intA).count("none"), 1u);

  for (const char* const key : {"none", "9", "10"})
    EXPECT_TRUE(record.DeleteChildRecord(intA, key));
  EXPECT_FALSE(record.DeleteChildRecord(intA, "9") || record.HasChildRecords(intA));
  EXPECT_TRUE(record.GetChildBytes(intA).empty());

  EXPECT_TRUE(record.SetChildren(intA, {{"x", Read(smallRecord)}}));
  const QXBytes bytes = record.GetChildBytes(intA);
  EXPECT_TRUE(record.DeleteChildRecords(intA) && !record.HasChildRecords(intA));
  record.GetChildRecord(intA, "y")->SetValue(intN, 1);
  EXPECT_TRUE(record.SetChildBytes(intA, bytes));
  EXPECT_TRUE(record.HasChildRecord(intA, "x") && !record.HasChildRecord(intA, "y"));
}

TEST(Record, AsksDerivedClassesForTheirChildren) {
  class Derived : public QXRecord {
  public:
    mutable std::string asked;

  protected:
    void FixChildCache(QXFieldBase field) const override { asked += field.GetName(); }
  };
  Derived record;
  record.SetValue(intA, 1);
  record.SetValue(stringB, "x");
  static_cast<const QXRecord&>(record).ToBytes();
  EXPECT_EQ(record.asked, "ab");
  // Also for a field without a type, which only damaged bytes make.
  ASSERT_TRUE(record.FromBytes(Bytes("00 0C 06 'fields' 04 00 01 00 00")));
  record.ToBytes();
  EXPECT_EQ(record.asked, "ab");
}

TEST(Record, RunsOutOfIndices) {
  QXRecord record = Read("00 11 06 'fields' 09 00 85FFFFFFFF00 00 00");
  ASSERT_EQ(record.GetFieldIdx(QXFieldBase("")), 0xFFFFFFFF);
  EXPECT_EQ(record.GetFieldIdx(intA), -1);
  EXPECT_FALSE(record.AddField(intA) || record.SetValue(intA, 1));
  EXPECT_FALSE(record.HasField(anyA));
}

// Many fields, added in an order that is the worst for a sorted list.
TEST(Record, TakesManyFields) {
  QXRecord record;
  constexpr int count = 200000;
  for (int i = count; i > 0; --i) record.AddField(QXField<long>(std::to_string(1000000 + i)));
  EXPECT_EQ(record.GetFields().size(), static_cast<std::size_t>(count));
  EXPECT_TRUE(record.HasField(QXField<long>("1000001")));
  EXPECT_FALSE(record.HasField(QXField<long>("1000000")));
  QXRecord read;
  EXPECT_TRUE(read.FromBytes(record.ToBytes()));
  for (int i = 1; i < count; i += 2) read.DeleteField(QXFieldBase(std::to_string(1000000 + i)));
  EXPECT_EQ(read.GetFields().size(), static_cast<std::size_t>(count / 2));
}

// Live objects inside one another, as only programs make them: children, or
// cached records.
std::shared_ptr<QXRecord> Nested(int levels, bool asChildren) {
  const QXField<QXRecord> field("r");
  const auto outer = std::make_shared<QXRecord>();
  std::shared_ptr<QXRecord> record = outer;
  for (int i = 1; i < levels; ++i) {
    std::shared_ptr<QXRecord> inner = std::make_shared<QXRecord>();
    record->AddField(field);
    if (asChildren)
      inner = record->GetChildRecord(field, "k");
    else
      record->AddToCache(field, inner);
    record = inner;
  }
  record->SetValue(intN, 5);
  return outer;
}

TEST(RecordNesting, HasALimitAndFitsASmallStack) {
  OnSmallStack([] {
    for (const bool asChildren : {true, false}) {
      Reports reports;
      EXPECT_FALSE(Nested(128, asChildren)->ToBytes().empty());
      EXPECT_EQ(Nested(128, asChildren)->ToBytes(), QXRecord(*Nested(128, asChildren)).ToBytes());
      EXPECT_FALSE(reports.HasMessages());
      EXPECT_TRUE(Nested(129, asChildren)->ToBytes().empty());
      EXPECT_TRUE(reports.HasMessagesAtLevel(Warning));
      Nested(100000, asChildren);  // and away
    }
    const auto self = std::make_shared<QXRecord>();
    self->AddToCache(QXField<QXRecord>("self"), self);
    Reports reports;
    EXPECT_TRUE(self->ToBytes().empty());
    self->Clear();
  });
}

}  // namespace
