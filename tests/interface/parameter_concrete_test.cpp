#include <qxsystem/interface/parameter_concrete.h>

#include <unistd.h>

#include <memory>

#include "interface/support.h"
#include "platform/temp_dir.h"

using namespace QXSystem;
using QXPlatform::qxisstream;
using namespace std::string_literals;

namespace {

std::string Content(qxisstream stream) {
  std::string bytes;
  stream.read(bytes);
  return bytes;
}

// Class id, identity, value type and copy of one class.
template <class P, class T>
void ExpectClass(const std::string& id) {
  SCOPED_TRACE(id);
  const P p("-p");
  EXPECT_EQ(P::StaticClassID(), id);
  EXPECT_EQ(p.ClassID(), id);
  EXPECT_EQ(p.TypedParameterTypeID(), QXGetDataType<QXTypedParameter<T>>());
  EXPECT_EQ(p.FactoryTypeID(), QXGetDataType<P>());
  const std::unique_ptr<QXParameter> copy(p.CreateCopy());
  const QXParameter& same = *copy;
  EXPECT_EQ(typeid(same), typeid(P));
}

TEST(QXConcreteParameters, KnowTheirClassTypeAndCopy) {
  ExpectClass<QXBoolParameter, bool>("bool"), ExpectClass<QXIntParameter, int>("int");
  ExpectClass<QXUIntParameter, unsigned>("unsigned"), ExpectClass<QXFloatParameter, float>("float");
  ExpectClass<QXDoubleParameter, double>("double");
  ExpectClass<QXStringParameter, std::string>("string");
  ExpectClass<QXStringExtParameter, std::string>("stringExt");
  ExpectClass<QXConstParameter, unsigned>("const"), ExpectClass<QXBitParameter, unsigned>("bit");
  ExpectClass<QXFileParameter, qxisstream>("file");
  ExpectClass<QXParamFileParameter, qxisstream>("param_file");
}

TEST(QXBoolParameter, TakesTheWordsOfBothKindsAndNoLists) {
  QXBoolParameter p("-b");
  bool on = false;
  for (const char* word : {"1", "ON", "Yes", "T", "true", "y"})
    EXPECT_TRUE(p.GetTypedValue(on, word) && on) << word;
  for (const char* word : {"0", "off", "No", "f", "FALSE", "N"})
    EXPECT_TRUE(p.GetTypedValue(on, word) && !on) << word;
  for (const char* word : {"2", "", "tr", "10"}) EXPECT_FALSE(p.IsLegalString(word)) << word;
  EXPECT_FALSE(p.AddLegalValue("1") || p.AddIllegalValue("1") || p.AddLegalRange("0", "1") ||
               p.AddIllegalRange("0", "1"));
  EXPECT_TRUE(p.IsLegal(false));
}

TEST(QXPODParameter, SetsAllTextsOfAListOrNone) {
  QXIntParameter p("-n");
  p.AddIllegalValue("9");
  EXPECT_TRUE(p.SetStringValues("1,2 3\t,\n+4"));
  EXPECT_EQ(All(p.GetValues()), (std::vector<int>{1, 2, 3, 4}));
  for (const char* bad : {"", " ,\t\n", "1,x", "5,9"}) EXPECT_FALSE(p.SetStringValues(bad)) << bad;
  EXPECT_EQ(All(p.GetStringValues()), (Texts{"1", "2", "3", "4"}));
  EXPECT_TRUE(p.IsSetToString(" 3 ") && !p.IsSetToString("9") && !p.IsSetToString("x"));
}

TEST(QXStringParameter, MatchesItsListsInAnyCase) {
  QXStringParameter p("-s");
  EXPECT_TRUE(p.IsLegalString("anything"));
  EXPECT_FALSE(p.AddLegalRange("a", "b") || p.AddIllegalRange("a", "b"));
  p.AddLegalValue("*.SDF"), p.AddLegalValue("none"), p.AddIllegalValue("Old*");
  for (const char* good : {"x.sdf", "X.Sdf", "NONE"}) EXPECT_TRUE(p.IsLegalString(good)) << good;
  for (const char* bad : {"x.mol", "old.sdf", "nonesuch"})
    EXPECT_FALSE(p.IsLegalString(bad) || p.IsLegal(bad)) << bad;
  EXPECT_TRUE(p.AddStringValue("A") && p.Load());
  EXPECT_TRUE(p.IsSetToString("A") && !p.IsSetToString("a"));  // exact, unlike legality
}

TEST(QXConstParameter, PairsNumbersWithNames) {
  QXConstParameter p("-c");
  EXPECT_EQ(All(p.GetPrettyLegalValues()), Texts{});
  EXPECT_FALSE(p.AddLegalValue("fast"));  // no number to name
  for (const char* text : {"3", "Fast", "FAST", "1", "2", "slow"})
    EXPECT_TRUE(p.AddLegalValue(text)) << text;
  EXPECT_TRUE(p.AddLegalValue("careful"));
  EXPECT_FALSE(p.AddLegalValue("more"));  // all three have one
  EXPECT_EQ(All(p.GetLegalValues()), (Texts{"3", "Fast", "FAST", "1", "2", "slow", "careful"}));
  EXPECT_EQ(All(p.GetPrettyLegalValues()), (Texts{"careful", "fast", "slow"}));
  EXPECT_EQ(p.GetKeyIndex("Careful"), 2u);
  EXPECT_EQ(p.GetKeyIndex("none"), QXConstParameter::m_invalidKey);

  p.AddIllegalValue("slow");
  EXPECT_TRUE(p.IsLegalString("slow"));  // by name, while its number is not
  EXPECT_FALSE(p.IsLegalString("1") || p.IsLegalString("4") || p.IsLegalString("x"));
  EXPECT_TRUE(p.SetValue("FAST") && !p.SetValue("slow") && !p.AddValue("x"));
  EXPECT_EQ(All(p.GetStringValues()), Texts{"3"});
  EXPECT_TRUE(p.SetDefault("careful") && p.AddDefault("fast"));
  EXPECT_EQ(p.GetPrettyDefault(0) + p.GetPrettyDefault(1) + p.GetPrettyDefault(2), "carefulfast");
  EXPECT_EQ(p.GetStringDefault(1), "3");

  EXPECT_TRUE(p.SetStringValues("careful,3"));
  EXPECT_EQ(All(p.GetValues()), (std::vector<unsigned>{2, 3}));
}

TEST(QXConstParameter, NamesTheFirstNumberThatHasNone) {
  QXConstParameter p("-c", 3, "Three");
  EXPECT_EQ(p.GetStringDefault() + p.GetPrettyDefault(), "3three");
  EXPECT_EQ(All(p.GetLegalValues()), (Texts{"3", "three"}));
  EXPECT_TRUE(p.AddLegalEntry(4, "three"));  // 3 has lost its name
  EXPECT_TRUE(p.AddLegalValue("new") && p.GetKeyIndex("new") == 3 && p.GetKeyIndex("three") == 4);
  for (unsigned n = 10; n < 20000; ++n)  // in milliseconds, or with a fault minutes
    p.AddLegalValue(std::to_string(n)), p.AddLegalValue("k" + std::to_string(n));
  EXPECT_EQ(p.GetKeyIndex("k19999"), 19999u);
}

TEST(QXBitParameter, TakesCombinationsOfItsFlags) {
  QXBitParameter p("-b", 1, "a");
  p.AddLegalEntry(2, "B");
  unsigned mask = 7;
  EXPECT_TRUE(p.GetMask("A,b", mask) && mask == 3);
  EXPECT_TRUE(p.GetMask("", mask) && mask == 0);
  EXPECT_TRUE(!p.GetMask("a, b", mask) && mask == 0);  // " b" is no flag
  for (const char* good : {"a,b", "3", "9", ""}) EXPECT_TRUE(p.IsLegalString(good)) << good;
  for (const char* bad : {"0", "4", "a,c"}) EXPECT_FALSE(p.IsLegalString(bad)) << bad;

  EXPECT_FALSE(p.IsLegal(3));
  EXPECT_TRUE(p.SetValue(3) && p.AddValue("a,b"));
  EXPECT_TRUE(p.IsLegal(3));  // from now on
  EXPECT_FALSE(p.AddValue(4));
  EXPECT_TRUE(p.SetDefault(9) && p.AddDefault(1));
  EXPECT_EQ(All(p.GetValues()), (std::vector<unsigned>{3, 3}));
  p.AddIllegalValue("5");
  EXPECT_FALSE(p.SetValue(5) || p.AddDefault(5));
  EXPECT_EQ(All(p.GetLegalValues()), (Texts{"1", "a", "2", "b", "3", "9"}));
}

TEST(QXStringExtParameter, TakesAFileWhereTheTextIsNotLegal) {
  const TempDir dir;
  const std::string text = "text of\nthe file", file = dir.Write("file", text);
  const std::string empty = dir.Write("empty", "");
  const Messages messages;
  QXStringExtParameter p("-s");
  p.AddLegalValue("word");
  EXPECT_TRUE(p.IsLegalString("WORD") && p.IsLegalString(file));
  EXPECT_FALSE(messages.HasMessages());
  EXPECT_FALSE(p.IsLegalString(empty));
  EXPECT_EQ(messages.At(QXErrorLevel::Warning),
            "-s file " + empty + " does not exist or is empty.\n");

  EXPECT_TRUE(p.AddStringValue("WORD") && p.AddStringValue(file) && p.Load());
  EXPECT_EQ(All(p.GetValues()), (Texts{"WORD", text}));
  EXPECT_EQ(p.GetStringValue(1), file);
  EXPECT_TRUE(p.AddStringValue(empty));
  EXPECT_FALSE(p.Load());

  // A configuration text is read in order: what is legal when a default is met decides.
  const QXInterface described(Describe("-s stringExt; DEFAULT " + file +
                                       "; LEGAL_VALUE a\n-t stringExt; LIST 1; LEGAL_VALUE a; "
                                       "DEFAULT " +
                                       file + "\n-u stringExt; LIST 1; DEFAULT " + file +
                                       "; LEGAL_VALUE a; ALIAS -v")
                                  .c_str());
  for (const auto& [key, setting] : {std::pair("-s", file), {"-t", text}, {"-u", file}}) {
    auto& parameter = dynamic_cast<QXStringParameter&>(*described.GetParameter(key));
    EXPECT_EQ(All(parameter.GetSettings()), Texts{setting}) << key;
  }
}

TEST(QXFileParameter, HoldsTheBytesAfterTheFileHasGone) {
  QXFileParameter p("-f");
  std::string name;
  {
    const TempDir dir;
    name = dir.Write("file", "bytes");
    EXPECT_TRUE(p.SetStringValue(name) && p.Load() && p.IsSetToString(name));
    // No file, an empty one, a directory, one that tells no size but 0, one without end.
    QXFileParameter q("-q");
    for (const std::string& bad : {dir.Path("none"), dir.Write("empty", ""), dir.Path(""),
                                   "/proc/self/stat"s, "/dev/zero"s}) {
      EXPECT_TRUE(q.SetStringValue(bad)) << bad;
      EXPECT_FALSE(q.Load() || q.GetHasValue()) << bad;
    }
    int ends[2];
    ASSERT_TRUE(::pipe(ends) == 0 && ::write(ends[1], "x", 1) == 1 && ::close(ends[1]) == 0);
    EXPECT_TRUE(q.SetStringValue("/dev/fd/" + std::to_string(ends[0])) && q.Load());
    ::close(ends[0]);
  }
  qxisstream stream;
  ASSERT_TRUE(p.GetSetting(stream));
  EXPECT_EQ(Content(stream), "bytes");

  const std::unique_ptr<QXParameter> copy(p.CreateCopy());
  EXPECT_TRUE(p.SetValue(qxisstream("typed")));
  EXPECT_EQ(p.GetStringValue(), "");  // there is no text for bytes
  EXPECT_FALSE(p.SetStringValues(name));
  EXPECT_FALSE(p.AddLegalValue("x") || p.AddIllegalValue("x") || p.AddLegalRange("x", "y") ||
               p.AddIllegalRange("x", "y"));
  EXPECT_TRUE(p.IsLegalString("x"));

  std::vector<unsigned char> buffer(p.ValueAndDefaultBinarySize());
  EXPECT_EQ(p.WriteValueAndDefaultBinary(buffer.data()), buffer.size());
  EXPECT_EQ(copy->ReadValueAndDefaultBinary(buffer.data()), buffer.size());
  ASSERT_TRUE(static_cast<QXFileParameter&>(*copy).GetValue(stream));
  EXPECT_EQ(Content(stream), "typed");
}

}  // namespace
