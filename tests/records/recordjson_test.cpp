#include <qxsystem/records/recordjson.h>

#include <gtest/gtest.h>

#include <limits>

#include <qxsystem/core/errortest.h>
#include <qxsystem/platform/istream.h>
#include <qxsystem/platform/ostream.h>
#include <qxsystem/records/recordio.h>

#include "support/smallstack.h"

using namespace QXDataFlow;
using namespace QXSystem;
using namespace std::string_literals;

namespace {

constexpr double inf = std::numeric_limits<double>::infinity();

std::string Document(const std::string& fields, const std::string& more = "") {
  return R"({"version":[1,0],)" + more + R"("fields":[)" + fields + "]}";
}

// A field "f", the first of its record: with more members, with a value.
std::string FieldWith(const std::string& type, const std::string& members) {
  return R"({"name":"f","type":")" + type + R"(","idx":1)" + members + "}";
}
std::string Field(const std::string& type, const std::string& value) {
  return FieldWith(type, value.empty() ? "" : R"(,"value":)" + value);
}

template <class T>
QXRecord Holding(const T& value) {
  QXRecord record;
  record.SetValue(QXField<T>("f"), value);
  return record;
}
template <class T>
QXRecord Holding(const std::vector<std::optional<T>>& value) {
  QXRecord record;
  record.SetValue(QXVectorField<T>("f"), value);
  return record;
}

// What a document is read as, written again; behind it, in brackets, the number
// of warnings and what reading answers.
std::string Read(const std::string& text) {
  const QXPushSimpleQXThrowTester reports;
  QXRecord record;
  const bool read = QXRecordFromJSON(record, text);
  const std::string written = QXRecordToJSON(record);
  return written + "[" + std::to_string(reports.NumMessagesAtLevel(QXErrorLevel::Warning)) +
         (read ? " true]" : " false]");
}

// A type whose bytes are JSON.
class Verbatim : public QXFieldTypeHandler {
public:
  std::string GetName() const override { return "ns:Verbatim"; }
  std::string BytesToJSON(const QXBytes& bytes) const override {
    return {bytes.begin(), bytes.end()};
  }
  QXBytes JSONToBytes(const std::string& json) const override { return {json.begin(), json.end()}; }
};

TEST(RecordJSON, ShowsValuesAndReadsThemBack) {
  QXRecord inner = Holding(2.5);
  inner.SetSourceID("inner");
  const std::string innerText = Document(Field("Float", "2.5"), R"("source id":"inner",)");
  QXRecord holder;
  holder.SetBytes(QXField<QXRecord>("f"), inner.ToBytes());
  QXRecord null;
  null.SetBytes(MakeFieldBase("f", "foreign:Type"), std::nullopt);

  const struct {
    QXRecord record;
    std::string type, more;
  } cases[] = {
      {Holding(-5L), "Int", "-5"},
      {Holding("a\"\0\n\xFF"s), "String", "\"a\\\"\\u0000\\n\xFF\""},
      {Holding(0.1), "Float", "0.1"},
      {Holding(true), "Bool", "true"},
      // The test vector of ZeroMQ's Z85, whose alphabet has small letters first.
      {Holding(QXBytes{0x86, 0x4F, 0xD2, 0x6F, 0xB5, 0x59, 0xF7, 0x5B}), "Blob", R"("hELLOwORLD")"},
      {Holding(QXRange(-1.5, 2, 2)), "Range", "[-1.5,2.0,0.0,2.0]"},
      {Holding(QXRange(std::nullopt, 2, 0)), "Range", "[null,2.0,1.0,0.0]"},
      {Holding(QXRange(2, std::nullopt, 1)), "Range", "[2.0,null,-1.0,1.0]"},
      {Holding(QXJSONObject(R"({"a":[1,{}]})")), "JSONObject", R"({"a":[1,{}]})"},
      {Holding(QXLinkObject("{}")), "Link", "{}"},
      {holder, "Record", innerText},
      {Holding<long>({1L << 40, std::nullopt, -1}), "IntVec", "[1099511627776,null,-1]"},
      {Holding<double>({0.5, std::nullopt, inf}), "FloatVec", "[0.5,null,Infinity]"},
      {Holding<bool>({true, std::nullopt, false}), "BoolVec", "[true,null,false]"},
      {Holding<std::string>({"a", std::nullopt, ""}), "StringVec", R"(["a",null,""])"},
      {Holding<QXBytes>({QXBytes{0, 0, 0, 0}, std::nullopt, QXBytes()}), "BlobVec",
       R"(["00000",null,""])"},
      {Holding<QXRecord>({Holding(true), std::nullopt, QXRecord()}), "RecordVec",
       "[" + Document(Field("Bool", "true")) + ",null," + Document("") + "]"},
      {null, "foreign:Type", "null"},
  };
  for (const auto& c : cases) {
    const std::string text = Document(Field(c.type, c.more));
    EXPECT_EQ(QXRecordToJSON(c.record), text);
    QXRecord read;
    EXPECT_TRUE(QXRecordFromJSON(read, text));
    EXPECT_EQ(read.ToBytes(), c.record.ToBytes()) << text;
  }
}

TEST(RecordJSON, ReadsValuesByTheTypeOfTheirField) {
  QXFieldTypeHandlerRegistry::GetInstance().RegisterHandler(new Verbatim, 0);
  const char* const noField = "-";
  const struct {
    std::string type, value, result;  // "": without a value
    unsigned warnings = 0;
  } cases[] = {
      {"Int", "4294967301", "5"},
      {"Int", "2147483648", "-2147483648"},
      {"Int", "5.0", noField, 1},
      {"Float", "NaN", "NaN"},
      {"Float", "\"1\"", noField, 1},
      {"Record", R"({"version":[1,0,0]})", noField, 1},
      {"IntVec", "[1,2.5]", noField, 1},
      {"RecordVec", "[{}]", noField, 2},
      {"Range", "[0,1,null,0]", noField, 1},
      {"Range", "[1,2,1,3]", "[null,2.0,1.0,3.0]"},
      {"Range", "[1,2,-1,0]", "[1.0,null,-1.0,0.0]"},
      {"Range", "[2,1,0,0]", "[null,null,0.0,0.0]", 1},
      {"JSONObject", "[]", "", 2},
      {"Link", R"({"a" : NaN})", R"({"a":NaN})"},
      {"Int", "", "0"},
      {"StringVec", "", "[]"},
      {"Record", "", Document("")},
      {"Link", "", ""},
      {"ns:Nowhere", "[1]", ""},
      {"ns:Nowhere", "null", "null"},
      {"ns:Verbatim", R"("[1 ,2]")", "[1 ,2]"},
      {"ns:Verbatim", R"("\"a\"")", R"("a")"},
      {"ns:Verbatim", "[1 ,2]", "[1,2]"},
      {"ns:Verbatim", R"("[")", "", 1},
      {"ns:Verbatim", "5", "", 1},
  };
  for (const auto& c : cases)
    EXPECT_EQ(Read(Document(Field(c.type, c.value))),
              Document(c.result == noField ? "" : Field(c.type, c.result)) + "[" +
                  std::to_string(c.warnings) + " true]")
        << c.type << c.value;
  EXPECT_EQ(QXRecordToJSON(Holding(1L << 40)), Document(Field("Int", "1099511627776")));
}

TEST(RecordJSON, ReadsWhatItCanOfADocument) {
  const std::string none = Document(""), bad = R"({"version":[1,0,0]})";
  const auto child = [&](const std::string& more) {
    return Document(FieldWith("a:B", R"(,"child":{"10":)" + none + more + R"(,"9":)" + none + "}"));
  };
  const auto meta = [](const std::string& options) {
    return Document(FieldWith("a:B", R"(,"meta":{"options":)" + options + "}"));
  };
  const std::pair<std::string, std::string> cases[] = {
      {R"({"version":[{},null]})", none + "[0 true]"},
      {"{}", none + "[1 false]"},
      {bad, none + "[1 false]"},
      {R"({"version":[1,0],"source id":5})", none + "[1 false]"},
      {R"({"version":[1,0],"source id":"here","fields":{}})",
       Document("", R"("source id":"here",)") + "[1 false]"},
      {Document(FieldWith("a:B", R"(,"nullable":true)")),
       Document(FieldWith("a:B", R"(,"nullable":true)")) + "[0 true]"},
      {child(""), child("") + "[0 true]"},
      {child(R"(,"8":)" + bad), child("") + "[1 true]"},
      {meta(R"(["Flags.ID","nowhere",5,"Units.Length.m","Units.Mass.g"])"),
       meta(R"(["Flags.ID","Units.Mass.g"])") + "[0 true]"},
      {meta("{}"), none + "[1 true]"},
      {Document(FieldWith("Int", R"(,"nullable":1)")), none + "[1 true]"},
      // Fields get indices in their order; what is no object ends them.
      {Document(R"({"name":"b","type":"a:B","idx":9},{},{"name":"a","type":"a:B","idx":0},1,)" +
                Field("Int", "")),
       Document(R"({"name":"b","type":"a:B","idx":1},{"name":"a","type":"a:B","idx":2})") +
           "[3 true]"},
  };
  for (const auto& [document, result] : cases) EXPECT_EQ(Read(document), result) << document;
}

TEST(RecordJSON, ReplacesTheRecordUnlessNothingCanBeParsed) {
  const QXPushSimpleQXThrowTester reports;
  QXRecord record = Holding(5L);
  for (const auto& text : {""s, "[]"s, Document("") + "\0"s, std::string(400 << 10, '[')})
    EXPECT_FALSE(QXRecordFromJSON(record, text));
  EXPECT_EQ(reports.NumMessagesAtLevel(QXErrorLevel::Warning), 4u);
  EXPECT_EQ(QXRecordToJSON(record), Document(Field("Int", "5")));
  EXPECT_TRUE(QXRecordFromJSON(record, Document("")));
  EXPECT_EQ(QXRecordToJSON(record), Document(""));
}

TEST(RecordJSON, LeavesOutWhatIsNoJSONAndWritesZeroForBytesThatAreNoValue) {
  QXFieldTypeHandlerRegistry::GetInstance().RegisterHandler(new Verbatim, 0);
  const auto deep = [](std::size_t levels) {
    return R"({"a":)" + std::string(levels, '[') + std::string(levels, ']') + "}";
  };
  const struct {
    std::string type, bytes, more;
    unsigned warnings;
  } cases[] = {
      {"Int", "123456789", "0", 0},
      {"BoolVec", "\x02\x01", "[]", 0},
      {"Record", "\x01", Document(""), 0},
      {"JSONObject", "5", "", 2},
      // The text has one level, and stands in three.
      {"JSONObject", deep(1020), deep(1020), 0},
      {"JSONObject", deep(1021), "", 1},
      {"ns:Verbatim", std::string(400 << 10, '['), "", 1},
  };
  for (const auto& c : cases) {
    const QXPushSimpleQXThrowTester reports;
    QXRecord record;
    record.SetBytes(MakeFieldBase("f", c.type), QXBytes(c.bytes.begin(), c.bytes.end()));
    EXPECT_EQ(QXRecordToJSON(record), Document(Field(c.type, c.more)));
    EXPECT_EQ(reports.NumMessagesAtLevel(QXErrorLevel::Warning), c.warnings) << c.type;
  }
}

TEST(RecordJSON, ShowsMetadataByTheNamesOfTheCatalogue) {
  const unsigned author = QXMeta::GetValue("Annotation.Author"),
                 lower = QXMeta::GetValue("Limits.Lower"),
                 priority = QXMeta::GetValue("Display.Values.Priority");
  QXFieldMeta meta;
  EXPECT_EQ(QXFieldMetaToJSON(meta), "{}");
  meta.SetOption(QXMeta::GetValue("Flags.ID")).SetOption(0x0FFFFFFF);
  meta.SetAttribute(lower, -0.5).SetAttribute(priority, -7);
  meta.AddAttribute(author, "b"s).AddAttribute(author, "a"s).AddAttribute(0x0200FFFF, "unnamed"s);
  const std::string text = R"({"options":["Flags.ID"],"attributes":[["Annotation.Author","a"],)"
                           R"(["Annotation.Author","a"],["Display.Values.Priority",-7],)"
                           R"(["Limits.Lower",-0.5]]})";
  EXPECT_EQ(QXFieldMetaToJSON(meta), text);

  const QXPushSimpleQXThrowTester reports;
  QXFieldMeta read;
  read.SetAttribute(author, "c"s).SetOption(QXMeta::GetValue("Flags.Range"));
  EXPECT_TRUE(QXFieldMetaFromJSON(read, text, /*clear=*/false));
  EXPECT_EQ(read.GetOptions().size(), 2u);
  EXPECT_TRUE(read.HasAttribute(author, "a"s) && read.HasAttribute(lower, -0.5) &&
              read.HasAttribute(priority, -7) && read.GetAttributes().size() == 3);
  const std::string odd =
      R"({"options":["Units::Mass.g"],"attributes":[5,[],["Limits.Lower","5"],["Flags.ID",1]]})";
  EXPECT_TRUE(QXFieldMetaFromJSON(read, odd, /*clear=*/true));
  EXPECT_FALSE(QXFieldMetaFromJSON(read, R"({"attributes":{}})", /*clear=*/false));
  EXPECT_FALSE(QXFieldMetaFromJSON(read, "[]", /*clear=*/true));
  EXPECT_EQ(QXFieldMetaToJSON(read), R"({"options":["Units.Mass.g"]})");

  // Short values are all shown, but not a long one in the place of each.
  QXFieldMeta several;
  std::vector<QXMeta::Attribute> many(10000, {author, QXBytes{0}});
  several.SetAttributes(many);
  EXPECT_EQ(QXFieldMetaToJSON(several).size(), 10000 * R"(["Annotation.Author",""],)"s.size() + 16);
  several.SetAttribute(author, std::string(10000, 'x'));
  many[0] = several.GetAttributes(author)[0];
  several.SetAttributes(many);
  EXPECT_LT(QXFieldMetaToJSON(several).size(), 800000u);
}

TEST(RecordJSON, StreamsHoldOneRecordALine) {
  const QXPushSimpleQXThrowTester reports;
  QXRecord object;
  object.SetBytes(QXField<QXJSONObject>("f"), QXBytes{'{', '\r', '\n', '}'});
  QXPlatform::qxosstream out;
  EXPECT_TRUE(QXWriteRecord(out, object, "json"));
  EXPECT_TRUE(QXWriteRecord(out, Holding("a\nb"s), "json"));
  EXPECT_FALSE(QXWriteRecord(out, object, "JSON"));
  EXPECT_EQ(out.str(), Document(Field("JSONObject", "{  }")) + "\n" +
                           Document(Field("String", R"("a\nb")")) + "\n");
  QXPlatform::qxisstream in(out.str());
  QXRecord record;
  for (unsigned records = 0; QXReadRecord(record, in, "json"); ++records) EXPECT_LT(records, 2u);
  EXPECT_EQ(record.GetValue(QXField<std::string>("f")), "a\nb");
  EXPECT_EQ(reports.NumMessages(), 0u);
}

// Records in one another, by values and by children in turn.
std::string Nested(unsigned levels) {
  if (levels == 1) return Document("");
  const std::string inner = Nested(levels - 1);
  if (levels % 2 == 0) return Document(Field("Record", inner));
  return Document(FieldWith("Bool", R"(,"child":{"k":)" + inner + R"(},"value":true)"));
}

TEST(RecordJSON, NestsUpTo128LevelsOnASmallStack) {
  OnSmallStack([] {
    const QXPushSimpleQXThrowTester reports;
    QXRecord read, outer;
    EXPECT_TRUE(QXRecordFromJSON(read, Nested(128)));
    EXPECT_EQ(QXRecordToJSON(read), Nested(128));
    EXPECT_EQ(reports.NumMessages(), 0u);
    outer.SetBytes(QXField<QXRecord>("f"), read.ToBytes());
    EXPECT_EQ(QXRecordToJSON(outer), "");
    // The innermost of 129 is left out with its field.
    EXPECT_TRUE(QXRecordFromJSON(read, Nested(129)));
    EXPECT_EQ(QXRecordToJSON(read).size() + Field("Record", Document("")).size(),
              Nested(129).size());
    EXPECT_EQ(reports.NumMessagesAtLevel(QXErrorLevel::Warning), 2u);
  });
}

}  // namespace
