#include <qxsystem/json/json.h>

#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <limits>
#include <random>

#include <qxsystem/core/errortest.h>
#include <qxsystem/core/iter.h>
#include <qxsystem/json/jsonhandler.h>

using namespace QXSystem;
using namespace std::string_literals;

namespace {

const bool containersRegistered = QXRegisterJSONHandler(QXInitContainerJSONHandler());

// Tag ids decide the order in a document, and follow the first use of a name.
const unsigned tagsInOrder[] = {QXGetTag("n"), QXGetTag("m"), QXGetTag("c")};

std::string Document(const std::string& data) {
  return R"({"type":"container","version":"0.91")" + (data.empty() ? "" : "," + data) + "}";
}

// What stands in a document behind type and version.
std::string Data(const std::string& document) {
  const std::size_t head = Document("").size() - 1;
  EXPECT_EQ(document.substr(0, head), Document("").substr(0, head));
  return document.size() < head + 2 ? "" : document.substr(head + 1, document.size() - head - 2);
}

std::string Messages(const QXPushSimpleQXThrowTester& reports) {
  const std::string log = reports.GetErrorLog(), head = "level = 4\n";
  return log.compare(0, head.size(), head) == 0 ? log.substr(head.size()) : log;
}

// The messages of a write, and what it gives.
std::string Write(const QXBase& object, unsigned flags = 0) {
  const QXPushSimpleQXThrowTester reports;
  const std::string text = QXBaseToJSON(object, flags);
  return Messages(reports) + Data(text);
}

// The messages of a read, "false" if it fails, and what was read, written.
std::string Read(const std::string& text, QXBase&& object = QXContainer()) {
  const QXPushSimpleQXThrowTester reports;
  const bool read = QXJSONToBase(object, text);
  return Messages(reports) + (read ? "" : "false\n") + Write(object);
}

template <class T>
QXContainer Items(std::initializer_list<T> values) {
  QXContainer object;
  for (const T& value : values) object.AddData<T>("n", value);
  return object;
}

TEST(JSON, ShowsTypesAndReadsThemBack) {
  using Texts = std::vector<std::string>;
  constexpr double inf = std::numeric_limits<double>::infinity();
  const std::string block(37, 'x');
  const struct {
    QXContainer object;
    std::string data;
  } cases[] = {
      {Items<int>({}), ""},
      {Items({5}), R"("n":5,"qxhint":{"n":"i"})"},
      {Items({5.0}), R"("n":5.0)"},
      {Items({0.1F}), R"("n":0.10000000149011612,"qxhint":{"n":"f"})"},
      {Items({true}), R"("n":true)"},
      {Items({"a\"\0<é\xFF"s}), "\"n\":\"a\\\"\\u0000<é\xFF\""},
      {Items({block + "\"\\\n" + block + "\x7F\xFF"}),
       "\"n\":\"" + block + R"(\"\\\n)" + block + "\x7F\xFF\""},
      {Items({1, 2}), R"("n":[1,2],"qxhint":{"n":"mi"})"},
      {Items({0.5F, -0.0F}), R"("n":[0.5,-0.0],"qxhint":{"n":"mf"})"},
      {Items({1.5, inf, -inf}), R"("n":[1.5,Infinity,-Infinity],"qxhint":{"n":"m"})"},
      {Items({std::nan("")}), R"("n":NaN)"},
      {Items({false, true}), R"("n":[false,true],"qxhint":{"n":"m"})"},
      {Items({"a"s, ""s}), R"("n":["a",""],"qxhint":{"n":"m"})"},
      {Items<std::vector<int>>({{1, 2}}), R"("n":[1,2],"qxhint":{"n":"i"})"},
      {Items<std::vector<float>>({{1, 2}}), R"("n":[1.0,2.0],"qxhint":{"n":"f"})"},
      {Items<std::vector<double>>({{1}}), R"("n":[1.0])"},
      {Items<std::vector<bool>>({{true, false}}), R"("n":[true,false])"},
      {Items<Texts>({{"a", "b"}}), R"("n":["a","b"])"},
      {Items<QXContainer>({{}}), R"("n":)" + Document("")},
      {Items<QXContainer>({{}, Items({5})}), R"("n":[)" + Document("") + "," +
                                                 Document(R"("n":5,"qxhint":{"n":"i"})") +
                                                 R"(],"qxhint":{"n":"m"})"},
      {Items<std::vector<QXContainer>>({{Items({0.5})}}),
       R"("n":[)" + Document(R"("n":0.5)") + "]"},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(Write(c.object), c.data);
    EXPECT_EQ(Read(Document(c.data)), c.data);
  }
  QXContainer read;
  EXPECT_TRUE(QXJSONToBase(read, Document(R"("n":["a\u0000b"],"qxhint":{"n":"m"})")));
  EXPECT_EQ(read.GetData<std::string>("n"), "a\0b"s);
}

TEST(JSON, ReadsWhatItCanAndTellsTheRest) {
  const std::string asText = ", stored as JSONString\n";
  const std::string ignoringHint =
      "JSON: Numeric value out of range for integer, key: n, ignoring hint\n";
  const std::string mixed = "JSON: Heterogenous array of data found, key: n, expected type: ";
  const struct {
    std::string document, result;
  } cases[] = {
      // Numbers under hints.
      {R"({"n":3.7,"qxhint":{"n":"i"}})", R"("n":3,"qxhint":{"n":"i"})"},
      {R"({"n":-3.7,"m":5,"qxhint":{"n":"fi","m":"xmix"}})",
       R"("n":-3.700000047683716,"m":5,"qxhint":{"m":"i","n":"f"})"},
      {R"({"n":2147483647.999,"m":-2147483648,"qxhint":{"n":"i","m":"i"}})",
       R"("n":2147483647,"m":-2147483648,"qxhint":{"m":"i","n":"i"})"},
      {R"({"n":3000000000,"qxhint":{"n":"i"}})", ignoringHint + R"("n":3000000000.0)"},
      {R"({"n":1e20,"qxhint":{"n":"i"}})", ignoringHint + R"("n":100000000000000000000.0)"},
      {R"({"n":NaN,"qxhint":{"n":"i"}})", ignoringHint + R"("n":NaN)"},
      {R"({"n":[1,2.5],"qxhint":{"n":"i"}})", R"("n":[1,2],"qxhint":{"n":"i"})"},
      {R"({"n":[1,2147483648],"qxhint":{"n":"i"}})", ignoringHint + R"("n":[1.0,2147483648.0])"},
      {R"({"n":[1e20,2.5,5],"qxhint":{"n":"mi"}})",
       ignoringHint + R"("n":[100000000000000000000.0,2,5],"qxhint":{"n":"mi"})"},
      {R"({"n":5,"qxhint":{"n":5}})", R"("n":5.0)"},
      {R"({"n":5,"qxhint":{"n":"i","n":"f"}})", R"("n":5,"qxhint":{"n":"i"})"},
      {R"({"n":[5],"qxhint":{"n":"mi"}})", R"("n":5,"qxhint":{"n":"i"})"},
      {R"({"n":5,"qxhint":7})", "JSON: must be an object type, key: qxhint\nfalse\n"},
      // What has no place in the data.
      {R"({"n":null,"m":[]})",
       "JSON: Null value ignored, key: n\nJSON: Empty array ignored, key: m\n"},
      {R"({"n":{"a":[{},null,1e2]}})",
       "JSON: Can not read JSON object with key: n" + asText + R"("n":{"a":[{},null,100.0]})"},
      {R"({"n":{"type":""}})",
       "JSON: Can not read JSON object with key: n" + asText + R"("n":{"type":""})"},
      {R"({"n":{"type":5}})",
       "JSON: Can not read JSON object with key: n" + asText + R"("n":{"type":5})"},
      {R"({"n":[{},5]})",
       "JSON: Can not read JSON array of objects with key: n" + asText + R"("n":[{},5])"},
      {R"({"n":[{"type":"container","version":"0"},{"type":"x"}]})",
       "JSON: Can not read JSON array of objects with key: n" + asText +
           R"("n":[{"type":"container","version":"0"},{"type":"x"}])"},
      {R"({"n":[null,{}]})",
       "JSON: Can not read JSON array with key: n" + asText + R"("n":[null,{}])"},
      {R"({"n":[[1]]})", "JSON: Can not read JSON array with key: n" + asText + R"("n":[[1]])"},
      // Failures keep what was read before, of several items too.
      {R"({"m":1,"n":[1,"a"],"c":2})", mixed + "number\nfalse\n" + R"("m":1.0)"},
      {R"({"n":[1,2,true],"qxhint":{"n":"mi"}})",
       mixed + "number\nfalse\n" + R"("n":[1,2],"qxhint":{"n":"mi"})"},
      {R"({"n":[true,0]})", mixed + "boolean\nfalse\n"},
      {R"({"n":["a",0]})", mixed + "string\nfalse\n"},
      {R"({"m":1,"n":{"type":"container"}})",
       "JSON: missing required attribute, key: version\nfalse\n\"m\":1.0"},
      {R"({"n":[{"type":"container","version":"0"},{"type":"container","version":"1"}],)"
       R"("qxhint":{"n":"m"}})",
       "JSON: document version 1, not compatible with current reader version: 0.91\nfalse\n"
       R"("n":)" +
           Document("")},
      // A key that comes twice.
      {R"({"n":1,"n":"a","n":2})", "data type mismatch found when using generic data\n\"n\":2.0"},
      // Heads of documents.
      {R"({"version":7,"m":1})", R"("m":1.0)"},
      {R"({"type":"container","m":1})", "JSON: missing required attribute, key: version\nfalse\n"},
      {R"({"type":"","m":1})", "JSON: Unrecognized type: \nfalse\n"},
      {R"({"type":5,"m":1})", "JSON: expects type of: string, key: type\nfalse\n\"c\":true"},
      {"[]", "JSON: Top level document must be an object\nfalse\n\"c\":true"},
      {"{]", "JSON: parse error offset 1: Missing a name for object member.\nfalse\n\"c\":true"},
  };
  for (const auto& c : cases) {
    QXContainer before;
    before.SetData("c", true);  // stays if nothing was read
    EXPECT_EQ(Read(c.document, std::move(before)), c.result) << c.document;
  }
}

TEST(JSON, ChangesReservedNamesOnBothWays) {
  const struct {
    const char* name;
    const char* key;
  } cases[] = {{"type", "_type"},       {"_type", "__type"}, {"version", "_version"},
               {"_qxhint", "__qxhint"}, {"_x", "_x"},        {"typed", "typed"},
               {"_typed", "_typed"},    {"__", "__"}};
  for (const auto& c : cases) {
    QXContainer object, holder, again;
    object.SetData(c.name, 5);
    holder.SetData("n", object);
    const std::string key = "\""s + c.key + "\":";
    const std::string data = key + "5,\"qxhint\":{" + key + "\"i\"}";
    EXPECT_EQ(Write(object), data);
    EXPECT_EQ(Write(holder), "\"n\":" + Document(data));
    ASSERT_TRUE(QXJSONToBase(again, QXBaseToJSON(holder)));
    EXPECT_EQ(again.GetData<QXContainer>("n").GetData<int>(c.name), 5);
  }
  // Without a list every key is data.
  rapidjson::Document document;
  ASSERT_TRUE(JSONParseHelper(document, R"({"_type":1,"version":"x","qxhint":{"_type":"i"}})"));
  QXContainer plain;
  const QXPushQXThrowTest reports(QXErrorLevel::Warning, "JSON object with key: qxhint, stored");
  EXPECT_TRUE(QXParseBaseDataJSON(plain, document, nullptr, 0));
  EXPECT_EQ(plain.GetData<int>("_type"), 1);
  EXPECT_EQ(plain.GetData<std::string>("version"), "x");
  EXPECT_EQ(plain.GetData<JSONString>("qxhint").GetString(), R"({"_type":"i"})");
}

TEST(JSON, LeavesOutWhatHasNoForm) {
  QXContainer object;
  for (const char* name : {"snark", "SDTagData", "CDXAtomNumHydrogens", "QXGroup", "MDLParity", ""})
    object.SetData(name, 5);
  EXPECT_EQ(Write(object), "");
  // One that is left out neither opens the array of its name nor leaves it open.
  object = Items({1, 2});
  object.AddData<unsigned>("n", 5);
  const std::string skipped = Write(object);
  EXPECT_EQ(skipped.find("JSON: Can not write object with key: n, no handler for internal generic "
                         "data type: 0x"),
            0u);
  EXPECT_EQ(skipped.substr(skipped.find('\n') + 1), R"("n":[1,2],"qxhint":{"n":"mi"})");
  object = Items({JSONString(), JSONString("[1")});
  object.AddData("n", 5);
  EXPECT_EQ(Write(object),
            "JSON: parse error offset 2: Missing a comma or ']' after an array element.\n"
            R"("n":5,"qxhint":{"n":"i"})");
  // Other names follow the order of their ids, hints that of the keys.
  object = QXContainer();
  object.SetData("m", 1);
  object.SetData("n", 0.5F);
  object.AddData("m", 2);
  EXPECT_EQ(Write(object), R"("n":0.5,"m":[1,2],"qxhint":{"m":"mi","n":"f"})");
}

TEST(JSON, EscapesOnRequest) {
  QXContainer object;
  object.SetData<float>("<b>", 1);
  object.SetData<std::vector<std::string>>("n", {"a<", "&>"});
  object.SetData("c", Items({"<"s}));
  EXPECT_EQ(Write(object, ~QXJSONFlag::Escape), Write(object));
  EXPECT_EQ(Write(object, QXJSONFlag::Escape),
            R"("n":["a&lt;","&&gt;"],"c":)" + Document(R"("n":"<")") +
                R"(,"&lt;b&gt;":1.0,"qxhint":{"&lt;b&gt;":"f"})");
  std::string text = "&&lt;&lt;b&gt;&amp;&lt";
  QXUnescapeJSON(text);
  EXPECT_EQ(text, "&<<b>&amp;&lt");
  QXEscapeJSON(text);
  EXPECT_EQ(text, "&&lt;&lt;b&gt;&amp;&lt");
}

// --- handlers

struct Point {
  int x = 0;
};

class PointHandler : public QXContainerJSONHandler {
public:
  bool Read(QXBase& holder, std::string key, rapidjson::Value& value) override {
    holder.SetData<Point>(key.c_str(), {GetJSONIntAttr(value, "x", /*required=*/true).value});
    return true;
  }
  bool VRead(QXBase&, std::string, rapidjson::Value&, bool) override { return false; }
  void Write(QXBaseData* item, Writer& writer, unsigned flags) override {
    const int x = static_cast<QXBaseDataT<Point>*>(item)->GetValue().x + static_cast<int>(flags);
    const std::string text = R"({"type":"point","x":)" + std::to_string(x) + "}";
    writer.RawValue(text.data(), text.size(), rapidjson::kObjectType);
  }
  std::string GetJsonType() override { return "point"; }
  const void* GetDataType() override { return QXGetDataType<Point>(); }
  const void* GetVDataType() override { return nullptr; }
  unsigned GetFlavor() override { return 100; }
};

TEST(JSON, HandsOtherTypesToTheirHandlers) {
  EXPECT_EQ(QXGetJSONHandlerByType("point"), nullptr);
  EXPECT_FALSE(QXHasTag("point"));
  static PointHandler handler;
  EXPECT_TRUE(QXRegisterJSONHandler(&handler));
  EXPECT_EQ(QXGetJSONHandlerByType("point"), &handler);
  EXPECT_EQ(QXGetJSONVHandlerByType(QXGetDataType<Point>()), nullptr);
  EXPECT_EQ(Write(Items<Point>({{5}, {6}}), QXJSONFlag::Escape),
            R"("n":[{"type":"point","x":105},{"type":"point","x":106}],"qxhint":{"n":"m"})");
  // A whole document of the type; an array, which the handler refuses.
  EXPECT_EQ(Read(R"({"type":"point","x":7})"), R"("point":{"type":"point","x":107})");
  EXPECT_EQ(Read(R"({"m":1,"n":[{"type":"point"},{"type":"point"}]})"), "false\n\"m\":1.0");
}

TEST(JSON, NestsTo128Containers) {
  const auto nested = [](unsigned depth) {
    QXContainer object = Items({true});
    for (; depth > 0; --depth) {
      QXContainer outer;
      outer.AddData("n", std::move(object));
      object = std::move(outer);
    }
    return object;
  };
  const std::string deepest = QXBaseToJSON(nested(128));
  EXPECT_EQ(Read(deepest), Data(deepest));
  const std::string refused = "data nested more than 128 levels deep is refused\n";
  const std::string without = Write(nested(129));
  EXPECT_EQ(without.substr(0, refused.size()), refused);
  EXPECT_EQ(without.find("true"), without.npos);
  EXPECT_EQ(Read(Document("\"n\":" + deepest)), refused + "false\n");
}

// --- parsing

TEST(JSON, LimitsTheNestingOfTexts) {
  const auto nested = [](std::size_t levels) {
    std::string text;
    for (std::size_t i = 0; i < levels; ++i) text += i % 2 ? "{\"a\":" : "[";
    text += '1';
    while (levels-- > 0) text += levels % 2 ? '}' : ']';
    return text;
  };
  const std::string tooDeep =
      "JSON: arrays and objects nested more than 1024 levels deep are refused\n";
  const std::string stored =
      "JSON: Can not read JSON array of objects with key: n, stored as JSONString\n";
  EXPECT_EQ(Read("{\"n\":" + nested(1023) + "}"), stored + "\"n\":" + nested(1023));
  for (const std::string& text : {nested(1024), std::string(400'000, '[')}) {
    EXPECT_EQ(Read("{\"n\":" + text + "}"), tooDeep + "false\n");
    EXPECT_EQ(Write(Items({JSONString(text)})), tooDeep);
  }
  // The array of a run is one level, a container another.
  QXContainer one = Items({JSONString("0"), JSONString(nested(1022))}), two = one;
  two.AddData("n", JSONString(nested(1023)));
  EXPECT_EQ(Write(one), "\"n\":[0," + nested(1022) + "]");
  EXPECT_EQ(Write(two), tooDeep + Write(one));
  EXPECT_EQ(Write(Items({one})), tooDeep + "\"n\":" + Document("\"n\":[0]"));
}

// A search through a long first element, or a long hint, for each of many
// values takes minutes.
TEST(JSON, ReadsInTimeInProportionToTheText) {
  const auto repeat = [](const std::string& text, unsigned times) {
    std::string all;
    while (times-- > 0) all += text;
    return all;
  };
  const std::string container = Document("");
  const std::string texts[] = {
      "{\"n\":[{" + repeat("\"m\":0,", 40'000) + container.substr(1) +
          repeat("," + container, 40'000) + "]}",
      "{\"qxhint\":{\"n\":\"" + std::string(1'000'000, 'k') + "\"}" + repeat(",\"n\":0", 200'000) +
          "}",
  };
  for (const std::string& text : texts) {
    SCOPED_TRACE(text.substr(0, 20));
    QXContainer object;
    const std::clock_t begin = std::clock();
    EXPECT_TRUE(QXJSONToBase(object, text));
    EXPECT_LT(std::clock() - begin, 2 * CLOCKS_PER_SEC);
  }
}

TEST(JSON, RefusesWhatIsNoJSON) {
  const struct {
    std::string text;
    std::string message;
  } cases[] = {
      {"", "parse error offset 0: The document is empty."},
      {"{\"n\":1"s + '\0' + "}",
       "parse error offset 6: Missing a comma or '}' after an object member."},
      {"{}\0{}"s, "parse error offset 2: The document root must not be followed by other values."},
      {"{} 5", "parse error offset 3: The document root must not be followed by other values."},
      {"{\"n\":\"0123456789abcde\x1F" + std::string(20, 'x') + "\"}",
       "parse error offset 21: Invalid escape character in string."},
      {"{\"n\":01}", "parse error offset 6: Missing a comma or '}' after an object member."},
      {"{\"n\":+1}", "parse error offset 5: Invalid value."},
      {"{\"n\":-}", "parse error offset 6: Invalid value."},
      {"{\"n\":NaM}", "parse error offset 7: Invalid value."},
      {"{\"n\":-Infinit}", "parse error offset 13: Invalid value."},
      {"{\"n\":1.}", "parse error offset 7: Miss fraction part in number."},
      {"{\"n\":1.e5}", "parse error offset 7: Miss fraction part in number."},
      {"{\"n\":1e+}", "parse error offset 8: Miss exponent in number."},
      {"{\"n\":  1e309}", "parse error offset 7: Number too big to be stored in double."},
      {"{\"n\":" + std::string(310, '9') + "}",
       "parse error offset 5: Number too big to be stored in double."},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(Read(c.text), "JSON: " + c.message + "\nfalse\n") << c.text;
    const QXPushSimpleQXThrowTester reports;
    rapidjson::Document document;
    EXPECT_FALSE(JSONParseHelper(document, c.text));
    EXPECT_TRUE(document.IsNull());
  }
}

std::vector<std::string> AwkwardNumbers() {
  std::vector<std::string> numbers = {
      "0", "-0", "2147483648", "-2147483648", "-2147483649", "4294967295", "4294967296",
      "9223372036854775808", "-9223372036854775808", "-9223372036854775809", "18446744073709551615",
      "18446744073709551616", "0.0", "-0.0e5", "1.7976931348623157e308", "4.9e-324", "2e-324",
      "9007199254740993.0", "0e999", "4503599627370496.5", "4503599627370497.5",
      // A hair above the middle of two doubles.
      "3.959641332384634227", "-6.371291802956740913", "0." + std::string(400, '0') + "1",
      std::string(300, '1') + "e-300", "0." + std::string(330, '0') + "123456789123456789e20",
      "Inf", "-Infinity"};
  std::mt19937_64 random(4);
  const auto below = [&](unsigned n) { return static_cast<unsigned>(random() % n); };
  while (numbers.size() < 20000) {
    std::string text = below(2) ? "-" : "";
    text += below(3) ? std::to_string(random() >> below(64)) : "0";
    if (below(4)) {
      text += "." + std::string(below(4) ? 0 : below(12), '0');
      for (unsigned n = 1 + below(24); n > 0; --n)
        text += static_cast<char>('0' + (below(4) ? below(10) : below(2) * 9));
    }
    if (!below(6)) text += (below(2) ? "e-" : "E+") + std::to_string(below(280));
    numbers.push_back(text);
  }
  return numbers;
}

// The C library reads the same text; integers are those of RapidJSON's own
// reading.
TEST(JSON, RoundsNumbersCorrectly) {
  for (const std::string& number : AwkwardNumbers()) {
    SCOPED_TRACE(number);
    rapidjson::Document ours, theirs;
    ASSERT_TRUE(JSONParseHelper(ours, "{\"n\":" + number + "}"));
    const rapidjson::Value& value = ours["n"];
    const bool plain = number.find_first_of(".eEI") == std::string::npos;
    if (plain && theirs.Parse(number.c_str()).IsUint64() + theirs.IsInt64() > 0) {
      EXPECT_EQ(value, theirs);
      EXPECT_EQ(value.IsInt() + 2 * value.IsUint(), theirs.IsInt() + 2 * theirs.IsUint());
    } else {
      const double expected = std::strtod(number.c_str(), nullptr);
      ASSERT_TRUE(value.IsDouble());
      EXPECT_EQ(value.GetDouble(), expected);
      EXPECT_EQ(std::signbit(value.GetDouble()), std::signbit(expected));
    }
  }
}

TEST(JSON, PrintsNumbersAsRapidJSONDoes) {
  std::vector<double> values;
  for (const std::string& number : AwkwardNumbers())
    for (const double value : {std::strtod(number.c_str(), nullptr),
                               static_cast<double>(std::strtof(number.c_str(), nullptr))})
      values.push_back(value);
  for (double power = 1e-320; power < 1e308; power *= 10)
    values.insert(values.end(), {power, std::nextafter(power, 0), std::nextafter(power, HUGE_VAL)});
  std::mt19937_64 random(5);
  for (int i = 0; i < 20000; ++i) {
    const std::uint64_t bits = random();
    std::memcpy(&values.emplace_back(), &bits, sizeof bits);
  }
  rapidjson::StringBuffer buffer;
  Writer writer(buffer);
  writer.StartArray();
  for (const double value : values) writer.Double(value);
  writer.EndArray();
  EXPECT_TRUE(Write(Items({values})) == "\"n\":"s + buffer.GetString());
}

TEST(JSON, ReadsAttributesOfTheRightType) {
  rapidjson::Document document;
  ASSERT_TRUE(JSONParseHelper(
      document, R"({"t":"a\u0000","i":-5,"u":3000000000,"w":4294967301,"d":5.0,"b":true,
                    "o":{},"a":[],"n":null})"));
  // The keys that each reader takes, with what it gives.
  const auto check = [&](auto reader, const char* expects, auto... accepted) {
    const std::map<std::string, std::common_type_t<decltype(accepted.second)...>> values{
        accepted...};
    for (const char* key : {"t", "i", "u", "w", "d", "b", "o", "a", "n", "absent"}) {
      SCOPED_TRACE(key);
      const bool taken = values.count(key) > 0, absent = key == "absent"s;
      for (const bool required : {false, true}) {
        const QXPushSimpleQXThrowTester reports;
        const auto result = reader(document, key, required);
        EXPECT_EQ(result.found, taken);
        EXPECT_EQ(result.failed, !taken && (!absent || required));
        EXPECT_EQ(result.value, taken ? values.at(key) : decltype(result.value)());
        const std::string fault = absent ? "missing required attribute" : expects;
        EXPECT_EQ(Messages(reports),
                  result.failed ? "JSON: " + fault + ", key: " + key + "\n" : "");
      }
    }
  };
  check(GetJSONStringAttr, "expects type of: string", std::pair("t", "a\0"s));
  check(GetJSONIntAttr, "expects type of: integer", std::pair("i", -5),
        std::pair("u", 3000000000 - 4294967296), std::pair("w", 5));
  check(GetJSONUnsignedAttr, "expects type of: unsigned", std::pair("u", 3000000000U));
  check(GetJSONBoolAttr, "expects type of: boolean", std::pair("b", true));
  check(GetJSONDoubleAttr, "expects type of: Double", std::pair("i", -5.0), std::pair("u", 3e9),
        std::pair("w", 4294967301.0), std::pair("d", 5.0));
  check(GetJSONObjectAttr, "must be an object type", std::pair("o", &document["o"]));
  check(GetJSONArrayAttr, "must be an array type", std::pair("a", &document["a"]));
  EXPECT_FALSE(GetJSONIntAttr(document["a"], "i", /*required=*/false).failed);
}

TEST(JSON, TakesVersionsThatBeginWithZero) {
  const QXPushSimpleQXThrowTester reports;
  for (const char* version : {"0.91", "0", "0.", "0.x.9"})
    EXPECT_TRUE(compatibleJSONVersion(version)) << version;
  for (const char* version : {"1.0", "", ".91", "00.91", " 0.91"})
    EXPECT_FALSE(compatibleJSONVersion(version)) << version;
}

TEST(JSON, TruncatesDownwards) {
  const struct {
    double value;
    int factor;
    double result;
  } cases[] = {{1.2345, 100, 1.23},
               {-1.2345, 100, -1.24},
               {2.5, 1, 2},
               {-0.001, 10, -0.1},
               {4503599627370495.5, 1, 4503599627370495},
               {4503599627370497, 1, 4503599627370497},
               {1e300, 1000, 1e300},
               {1e308, 1000, 1e308},
               {-1e308, 1000, -1e308}};
  for (const auto& c : cases) EXPECT_EQ(QXTruncate(c.value, c.factor), c.result) << c.value;
}

}  // namespace
