#include <qxsystem/records/types.h>

#include <gtest/gtest.h>

#include <cfloat>
#include <cmath>
#include <functional>
#include <limits>

#include <tests/support/commalocale.h>

#include "support.h"

using namespace recordtest;

namespace {

constexpr double Inf = std::numeric_limits<double>::infinity();
const double NaN = std::nan("");

template <class... T>
QXRange Of(T... numbers) {
  return QXRange(std::vector<double>{static_cast<double>(numbers)...});
}

TEST(Range, KeepsItsInvariantOrTellsWhyNot) {
  const std::optional<double> none;
  const char* const closed = "[1.000000000000, 2.000000000000]";
  const char* const inclusivity = "Invalid QXRange inclusivity specified: ";
  const struct {
    std::function<QXRange()> make;
    const char *format, *warning;  // the first one; "" for none
    unsigned inclusivity, warnings;
  } cases[] = {
      {[&] { return QXRange(1, 2, 3); }, "(1.000000000000, 2.000000000000]", "", 3, 0},
      {[&] { return QXRange(none, none, 2); }, "None", "", 0, 0},
      {[&] { return QXRange(none, 5, 0); }, "<=5.000000000000", "", 0, 0},
      {[&] { return QXRange(none, 5, 2); }, "<5.000000000000", "", 2, 0},
      {[&] { return QXRange(-DBL_MAX, Inf, 3); }, ">-179769313486231570814527423731704356798", "",
       3, 0},
      {[&] { return QXRange(0.25, none, 2); }, ">=0.250000000000", "", 2, 0},
      {[&] { return QXRange(0.25, none, 1); }, ">0.250000000000", "", 1, 0},
      {[&] { return QXRange(1, 1, 1); }, "1.000000000000", "", 1, 0},
      {[&] { return QXRange(1, 2, 7); }, closed, "Invalid QXRange inclusivity specified: 7", 0, 1},
      {[&] { return QXRange(5, 1, 0); }, "None",
       "Invalid QXRange specified, with low value > high value: (5,1) will default initialize", 0,
       1},
      {[&] { return QXRange(5, 1, 7); }, "None", "Invalid QXRange inclusivity specified: 7", 0, 2},
      {[&] { return QXRange(NaN, 1, 0); }, "None",
       "Invalid value for constructing an QXRange. Lower bound cannot be NaN", 0, 1},
      {[&] { return QXRange(1, NaN, 0); }, "None",
       "Invalid value for constructing an QXRange. Upper bound cannot be NaN", 0, 1},
      {[&] { return Of(1, 2); }, "None",
       "Invalid vector for constructing an QXRange. Must have a length of 3.", 0, 1},
      {[&] { return Of(NaN, 2, 0); }, "None",
       "Invalid vector for constructing an QXRange. Lower bound cannot be NaN", 0, 1},
      {[&] { return Of(1, NaN, 0); }, "None",
       "Invalid vector for constructing an QXRange. Upper bound cannot be NaN", 0, 1},
      {[&] { return Of(1, 2, 3.9); }, "(1.000000000000, 2.000000000000]", "", 3, 0},
      {[&] { return Of(1, 2, NaN); }, closed, inclusivity, 0, 1},
      {[&] { return Of(1, 2, -1); }, closed, inclusivity, 0, 1},
      {[&] { return Of(1, 2, 1e300); }, closed, inclusivity, 0, 1},
  };
  for (std::size_t i = 0; i < std::size(cases); ++i) {
    SCOPED_TRACE(i);
    Reports reports;
    const QXRange range = cases[i].make();
    const std::string format = Types::Range.Format(range);
    EXPECT_EQ(format.substr(0, 40), std::string(cases[i].format).substr(0, 40));
    EXPECT_EQ(range.GetInclusivity(), cases[i].inclusivity);
    EXPECT_EQ(reports.NumMessagesAtLevel(Warning), cases[i].warnings);
    EXPECT_NE(reports.GetErrorLog().find(cases[i].warning), std::string::npos);
    EXPECT_EQ(QXRange(range.GetAsVector()), range);
    EXPECT_EQ(QXRange::CheckedInclusivity(range.GetInclusivityString()), cases[i].inclusivity);
    QXRange read;
    EXPECT_TRUE(Types::Range.FromBytes(read, Types::Range.ToBytes(range)));
    EXPECT_EQ(read, range);
  }
  Reports reports;
  EXPECT_EQ(QXRange::CheckedInclusivity("]["), 0u);
  EXPECT_NE(reports.GetErrorLog().find("Invalid QXRange inclusivity-string specified: ]["),
            std::string::npos);
}

TEST(Range, AnswersQuestions) {
  const QXRange bounded(-DBL_MAX, DBL_MAX, 0), low(1, {}, 0), high({}, 1, 0), all;
  EXPECT_FALSE(bounded.IsUnboundedLow() || bounded.IsUnboundedHigh() || !bounded.IsValid());
  EXPECT_TRUE(low.IsUnboundedHigh() && !low.IsUnboundedLow() && low.IsValid() && !low.IsEmpty());
  EXPECT_TRUE(high.IsUnboundedLow() && !high.IsUnboundedHigh() && high.IsValid());
  EXPECT_TRUE(all.IsEmpty() && !all.IsValid());
  EXPECT_TRUE(all == QXRange(-Inf, {}, 3) && low != high && low != QXRange(1, {}, 1));
}

// The stored form, and texts that are none.
TEST(Range, IsStoredAsText) {
  qxtest::CommaLocale locale;
  const struct {
    const char* text;
    bool isRange;
    const char* format;
  } cases[] = {{"[1.000000,2.500000,0.0,2.000000]", true, "[1.000000000000, 2.500000000000)"},
               {"[null,2.000000,1.0,0.000000]", true, "<=2.000000000000"},
               {"[null,null,0.0,0.000000]", true, "None"},
               {"[3,7,1.0,0]", true, "<=7.000000000000"},  // the direction takes a bound away
               {"[3,7,-1.0,1]", true, ">3.000000000000"},
               {"[7,3,0,0]", true, "None"},
               {"(3,7,0,0", false, "None"},  // the last byte goes, whatever it is
               {"", false, "None"},
               {"[", false, "None"},
               {"[1,2,3]", false, "None"},
               {"[1,2,3,4,5]", false, "None"},
               {"[one,2,0,0]", false, "None"},
               {"[1,null,null,0]", false, "None"},
               {"[1,,0,0]", false, "None"}};
  for (const auto& c : cases) {
    SCOPED_TRACE(c.text);
    Reports reports;
    QXRange range(8, 9, 0);
    const std::string text = c.text;
    EXPECT_EQ(Types::Range.FromBytes(range, {text.begin(), text.end()}), c.isRange);
    EXPECT_EQ(Types::Range.Format(range), c.format);
  }
  EXPECT_EQ(ToText(Types::Range.ToBytes(QXRange(1, 2.5, 2))), cases[0].text);
  EXPECT_EQ(ToText(Types::Range.ToBytes(QXRange({}, 2, 0))), cases[1].text);
  EXPECT_EQ(ToText(Types::Range.ToBytes(QXRange())), cases[2].text);
}

TEST(JSONObject, KeepsTextsOfObjectsOnly) {
  EXPECT_EQ(QXJSONObject(" {\"a\" : [1] }\n").GetString(), " {\"a\" : [1] }\n");
  EXPECT_EQ(QXLinkObject("{}").GetString(), "{}");
  for (const char* const text : {"[1]", "5", "", "{", "{\"a\":1}x"}) {
    SCOPED_TRACE(text);
    Reports reports;
    EXPECT_EQ(QXJSONObject(text).GetString(), "");
    EXPECT_NE(reports.GetErrorLog().find(std::string("JSON object constructed with invalid "
                                                     "string: ") +
                                         text),
              std::string::npos);
    EXPECT_EQ(reports.NumMessagesAtLevel(Warning), 2u);
    QXLinkObject link("{}");
    const std::string bytes = text;
    EXPECT_FALSE(Types::Link.FromBytes(link, {bytes.begin(), bytes.end()}));
    EXPECT_EQ(link.GetString(), "");
  }
}

TEST(FieldTypes, SayWhatTheyAre) {
  const QXFieldTypeHandler* const types[] = {
      &Types::Int,    &Types::String,    &Types::Float,    &Types::Blob,       &Types::Bool,
      &Types::IntVec, &Types::StringVec, &Types::FloatVec, &Types::BlobVec,    &Types::BoolVec,
      &Types::Record, &Types::RecordVec, &Types::Range,    &Types::JSONObject, &Types::Link};
  for (std::size_t i = 0; i < std::size(types); ++i) {
    SCOPED_TRACE(types[i]->GetName());
    EXPECT_EQ(types[i]->IsPOD(), i < 10);
    EXPECT_EQ(types[i]->IsCacheable(), types[i] == &Types::Record);
    EXPECT_EQ(types[i]->BytesToJSON({1}), "");
    EXPECT_EQ(types[i]->JSONToBytes("1"), QXBytes());
  }
  EXPECT_EQ(QXVectorField<QXRecord>("x").GetTypeName(), "RecordVec");
}

TEST(FieldTypes, ShowValues) {
  using Numbers = std::vector<std::optional<long>>;
  EXPECT_EQ(Types::Int.Format(-5), "-5");
  EXPECT_EQ(Types::String.Format("a b"), "a b");
  EXPECT_EQ(Types::Float.Format(0.1), "0.100000000000");
  EXPECT_EQ(Types::Float.Format(-NaN), "nan");
  EXPECT_EQ(Types::Bool.Format(true) + Types::Bool.Format(false), "TrueFalse");
  EXPECT_EQ(Types::Blob.Format({1, 2}), "<Blob of length 2>");
  EXPECT_EQ(Types::JSONObject.Format(QXJSONObject("{}")), "{}");
  EXPECT_EQ(Types::Record.Format(QXRecord()), "<QXRecord>");
  EXPECT_EQ(Types::IntVec.Format(Numbers{1, {}, 3}), "[1, Null, 3]");
  EXPECT_EQ(Types::IntVec.Format(std::vector<long>{}), "[]");
  EXPECT_EQ(Types::BoolVec.Format(std::vector<bool>{true}), "[True]");
  EXPECT_EQ(Types::BlobVec.Format(std::vector<QXBytes>(1)), "[<Blob of length 0>]");
  EXPECT_EQ(Types::RecordVec.Format(std::vector<QXRecord>(1)), "[1 record]");
  EXPECT_EQ(Types::RecordVec.Format(std::vector<QXRecord>()), "[0 records]");
}

// What is none of a type's values; what is decoded appends, and nones become
// zero values in plain vectors.
TEST(FieldTypes, RefuseOtherBytes) {
  long number = 7;
  double real = 7;
  bool truth = false;
  EXPECT_TRUE(Types::Int.FromBytes(number, Bytes("FF")) && number == -1);
  EXPECT_TRUE(Types::Int.FromBytes(number, Bytes("FF00")) && number == 255);
  EXPECT_TRUE(!Types::Int.FromBytes(number, {}) && number == 0);
  EXPECT_FALSE(Types::Int.FromBytes(number, Bytes("010203040506070809")));
  EXPECT_TRUE(!Types::Float.FromBytes(real, Bytes("00000000000000")) && real == 0);
  EXPECT_FALSE(Types::Float.FromBytes(real, Bytes("000000000000000000")));
  EXPECT_TRUE(Types::Bool.FromBytes(truth, Bytes("00")) && truth);
  EXPECT_TRUE(Types::Bool.FromBytes(truth, Bytes("80")) && !truth);
  EXPECT_FALSE(Types::Bool.FromBytes(truth, {}));
  std::string text = "x";
  EXPECT_TRUE(Types::String.FromBytes(text, {}) && text.empty());
  QXRecord record;
  EXPECT_FALSE(Types::Record.FromBytes(record, {}));

  std::vector<long> numbers{9};
  EXPECT_TRUE(Types::IntVec.FromBytes(numbers, Bytes("02 80 05")));
  EXPECT_EQ(numbers, (std::vector<long>{9, 0, 5}));
  std::vector<double> reals;
  EXPECT_TRUE(Types::FloatVec.FromBytes(reals, Bytes("02 00000000000EF87F 000000000000F03F")));
  EXPECT_EQ(reals, (std::vector<double>{0, 1}));
  for (const char* const empty : {"00", "80", "81FF"}) {
    EXPECT_TRUE(Types::IntVec.FromBytes(numbers, Bytes(empty)));
    EXPECT_EQ(numbers.size(), 3u);
  }
  std::vector<std::string> texts;
  std::vector<QXRecord> records;
  for (const char* const bad : {"", "02", "86FFFFFFFFFF7F", "03 01 02"}) {
    SCOPED_TRACE(bad);
    EXPECT_FALSE(Types::IntVec.FromBytes(numbers, Bytes(bad)));
    EXPECT_FALSE(Types::FloatVec.FromBytes(reals, Bytes(bad)));
    EXPECT_FALSE(Types::RecordVec.FromBytes(records, Bytes(bad)));
  }
  EXPECT_THROW(Types::StringVec.FromBytes(texts, Bytes("02 01'a' 05'b'")), std::length_error);
  EXPECT_EQ(texts, std::vector<std::string>{"a"});
  // A record with a tag of any length, one that is damaged inside, none.
  records.clear();
  EXPECT_TRUE(
      Types::RecordVec.FromBytes(records, Bytes("03 11 'a tag of 17 bytes' 00 00 03 05'no' 80")));
  EXPECT_EQ(records.size(), 3u);
}

TEST(FieldTypes, PassAbsence) {
  EXPECT_EQ(Types::Int.ToBytes(std::optional<long>()), std::nullopt);
  EXPECT_EQ(Types::Int.ToBytes(std::optional<long>(5)), QXBytes{5});
  EXPECT_EQ(Types::BoolVec.ToBytes(std::optional<std::vector<bool>>()), std::nullopt);
}

// Only some types' objects are worth a cache.
TEST(FieldTypes, TurnCachedObjectsIntoBytes) {
  const long number = 128;
  const double real = 1;
  const std::string text = "ab";
  const QXRecord record = Read(smallRecord);
  const std::vector<std::optional<QXRecord>> records{record, {}};
  const std::vector<std::optional<long>> numbers{1};
  EXPECT_EQ(ToHex(Types::Int.PtrToBytes(&number)), "8000");
  EXPECT_EQ(ToText(Types::String.PtrToBytes(&text)), "ab");
  EXPECT_EQ(Types::Record.PtrToBytes(&record), Bytes(smallRecord));
  EXPECT_EQ(Types::RecordVec.PtrToBytes(&records), Bytes(std::string("02") + smallRecord + "80"));
  EXPECT_EQ(Types::Float.PtrToBytes(&real), QXBytes());
  EXPECT_EQ(Types::IntVec.PtrToBytes(&numbers), QXBytes());
  const auto copy = Types::RecordVec.GetCopyForCache(records);
  EXPECT_EQ(Types::RecordVec.ToBytes(*copy), Types::RecordVec.ToBytes(records));
}

class UserHandler : public QXFieldTypeHandler {
public:
  UserHandler(std::string name, int& alive) : name_(std::move(name)), alive_(alive) { ++alive_; }
  ~UserHandler() override { --alive_; }
  std::string GetName() const override { return name_; }

private:
  const std::string name_;
  int& alive_;
};

TEST(FieldTypeHandlerRegistry, KeepsTheFirstOfTheHighestPriority) {
  static int alive = 0;
  auto& registry = QXFieldTypeHandlerRegistry::GetInstance();
  const auto add = [&](int priority) {
    auto* handler = new UserHandler("user:prio", alive);
    registry.RegisterHandler(handler, priority);
    return handler;
  };
  add(-1);
  EXPECT_EQ(registry.GetHandler("user:prio"), nullptr);
  EXPECT_EQ(alive, 0);
  auto* first = add(0);
  add(0);
  EXPECT_EQ(registry.GetHandler("user:prio"), first);
  auto* better = add(2);
  EXPECT_EQ(registry.GetHandler("user:prio"), better);
  registry.RegisterHandler(better, 5);
  EXPECT_EQ(alive, 1);
  EXPECT_EQ(registry.GetHandler("user:prio"), better);
}

TEST(WrappedFieldTypeHandlerRegistry, ListsWhatItHas) {
  struct Wrapped : QXWrappedFieldTypeHandler {
    explicit Wrapped(const char* n) : name(n) {}
    std::string GetName() const override { return name; }
    const char* name;
  };
  static Wrapped a("wrapped a"), b("wrapped b"), b2("wrapped b");
  auto& registry = QXWrappedFieldTypeHandlerRegistry::GetInstance();
  for (Wrapped* handler : {&b, &a, &b2}) registry.RegisterHandler(handler);
  EXPECT_EQ(registry.GetHandler("wrapped b"), &b2);
  EXPECT_FALSE(registry.HasHandler("c"));
  Reports reports;
  EXPECT_EQ(registry.GetHandler("c %s"), nullptr);
  EXPECT_EQ(reports.GetErrorLog(),
            "level = 4\nNo wrapped handler for c %s\nHere are the handlers I have:\n"
            "wrapped a\nwrapped b\n");
}

}  // namespace
