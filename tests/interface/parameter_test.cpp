#include <qxsystem/interface/parameter.h>

#include <memory>

#include <qxsystem/interface/factory.h>

#include "interface/support.h"

using namespace QXSystem;
using namespace std::string_literals;

namespace {

TEST(QXParameter, NamesAndAliasesAreSingleWords) {
  QXIntParameter p("  -n\t");
  EXPECT_EQ(p.GetName(), "-n");
  for (const char* bad : {"", " \t\n", "-a -b"})
    EXPECT_FALSE(p.SetName(bad) || p.AddAlias(bad)) << bad;
  EXPECT_EQ(p.GetName(), "-n");
  EXPECT_TRUE(p.AddAlias(" -a\n"));
  EXPECT_EQ(All(p.GetAliases()), Texts{"-a"});
  EXPECT_EQ(QXIntParameter("two words").GetName(), "");
  EXPECT_EQ(QXIntParameter("-x\r").GetName(), "-x\r");  // no separator here
}

TEST(QXParameter, TextBecomesASettingWhenItIsLoaded) {
  QXIntParameter p("-n", 7);
  EXPECT_TRUE(p.IsSet() && !p.GetHasValue());
  EXPECT_TRUE(p.AddStringValue("1") && p.AddStringValue(" 2 "));
  EXPECT_FALSE(p.AddStringValue("x") || p.SetStringValue("x") || p.GetHasValue());
  EXPECT_EQ(All(p.GetSettings()), std::vector<int>{7});

  EXPECT_TRUE(p.Load());
  EXPECT_EQ(All(p.GetSettings()), (std::vector<int>{1, 2}));
  EXPECT_EQ(p.GetStringValue(1), " 2 ");
  EXPECT_EQ(p.GetStringValue(5), "");
  int n = 99;
  EXPECT_FALSE(p.GetValue(n, 5) || p.GetSetting(n, 2));
  EXPECT_EQ(n, 99);

  EXPECT_TRUE(p.ClearValues() && p.GetSetting(n) && n == 7);
  EXPECT_EQ(p.GetStringValue(), "");
}

TEST(QXParameter, TypedSettersKeepTheTextInStep) {
  QXIntParameter p("-n");
  p.AddIllegalValue("3");
  EXPECT_FALSE(p.SetValue(3));
  EXPECT_TRUE(p.AddValue(4) && p.AddValue(-5));
  EXPECT_FALSE(p.AddDefault(3));
  EXPECT_TRUE(p.AddDefault(6) && p.SetDefault(8));
  EXPECT_EQ(All(p.GetStringValues()), (Texts{"4", "-5"}));
  EXPECT_EQ(All(p.GetStringDefaults()), Texts{"8"});
  int n = 0;
  EXPECT_TRUE(p.GetSetting(n, 1) && n == -5);
  EXPECT_FALSE(p.GetDefault(n, 1));
  QXIter<const int> last = p.GetValues();
  last.ToLast();
  EXPECT_TRUE(p.SetValue(*last));  // one of its own
  EXPECT_EQ(All(p.GetValues()), std::vector<int>{-5});

  // What is set has a fixed number of decimals, and loading goes by the text.
  QXDoubleParameter d("-d", 1e-13);
  double x = 0;
  EXPECT_TRUE(d.GetDefault(x) && x == 1e-13);
  EXPECT_EQ(d.GetStringDefault(), "0.000000000000");
  EXPECT_TRUE(d.Load() && d.GetDefault(x) && x == 0);
}

TEST(QXParameter, WritesEveryTypeInItsForm) {
  EXPECT_EQ(QXBoolParameter("-x", true).GetStringDefault(), "true");
  EXPECT_EQ(QXIntParameter("-x", -2147483647 - 1).GetStringDefault(), "-2147483648");
  EXPECT_EQ(QXUIntParameter("-x", 4294967295u).GetStringDefault(), "4294967295");
  EXPECT_EQ(QXFloatParameter("-x", 0.1f).GetStringDefault(), "0.100000");
  EXPECT_EQ(QXDoubleParameter("-x", 1.0 / 3).GetStringDefault(), "0.333333333333");
  EXPECT_EQ(QXStringParameter("-x", "a b").GetStringDefault(), "a b");
}

TEST(QXParameter, RangesReachFromBoundToBound) {
  const struct {
    const char *low, *high, *inside, *outside;
  } cases[] = {{"1", "10", "1 5 10", "0 10.5 nan"},
               {"10", "1", "1 5 10", "0.999 11"},
               {"inf", "2", "2 3 inf", "1.999 -inf"},
               {"-inf", "2", "2 -9 -inf", "2.001 inf"},
               {"2", "inf", "2 3", "1"},
               {"2", "-inf", "2 1", "3"}};
  for (const auto& c : cases) {
    SCOPED_TRACE(c.low + " to "s + c.high);
    QXDoubleParameter legal("-d"), illegal("-d");
    EXPECT_TRUE(legal.AddLegalRange(c.low, c.high) && illegal.AddIllegalRange(c.low, c.high));
    for (const bool in : {true, false})
      for (const std::string& word : Split(in ? c.inside : c.outside)) {
        EXPECT_EQ(legal.IsLegalString(word), in) << word;
        EXPECT_EQ(illegal.IsLegalString(word), !in) << word;
      }
  }
  EXPECT_FALSE(QXIntParameter("-n").AddIllegalRange("inf", "3"));  // no int
}

TEST(QXParameter, IllegalBeatsLegal) {
  QXIntParameter p("-n");
  EXPECT_TRUE(p.IsLegal(5));
  p.AddIllegalValue("5");
  EXPECT_FALSE(p.IsLegal(5));
  EXPECT_TRUE(p.IsLegal(6));  // nothing is listed as legal: all else is
  p.AddLegalRange("1", "9");
  p.AddLegalValue("20");
  p.AddIllegalRange("7", "8");
  for (int n : {1, 6, 9, 20}) EXPECT_TRUE(p.IsLegal(n)) << n;
  for (int n : {0, 5, 7, 8, 10, 21}) EXPECT_FALSE(p.IsLegal(n)) << n;
}

TEST(QXParameter, ReportsListsThatCannotBeUnderstood) {
  const Messages messages;
  QXIntParameter p("-n"), q("-q");
  QXDoubleParameter r("-r");
  p.AddLegalValue("5"), p.AddLegalRange("-inf", "inf");
  q.AddLegalRange("1", "x"), q.AddLegalRange("0", "9");
  r.AddIllegalRange("-inf", "-inf");
  EXPECT_TRUE(p.IsLegal(5) && !messages.HasMessages());        // decided before the range is met
  EXPECT_FALSE(p.IsLegal(6) || q.IsLegal(4) || r.IsLegal(4));  // a bad one ends the question
  EXPECT_EQ(messages.At(QXErrorLevel::Error),
            "Invalid legal range for parameter -n is (-inf to inf)\n"
            "Invalid legal range for parameter -q is (1 to x)\n"
            "Invalid illegal range for parameter -r is (-inf to -inf)\n");
}

// A parameter whose words change their meaning after they were listed.
struct Fickle : QXIntParameter {
  using QXIntParameter::QXIntParameter;
  bool GetTypedValue(int& out, const std::string& text) const override {
    return text != "2" && QXIntParameter::GetTypedValue(out, text);
  }
};

TEST(QXParameter, ReadsItsListsWithTheConversionOfItsClass) {
  const Messages messages;
  Fickle p("-n");
  p.AddIllegalValue("2"), p.AddLegalValue("2"), p.AddLegalValue("3");
  EXPECT_TRUE(p.IsLegal(3) && !p.IsLegal(2));
  const std::string once =
      "Cannot interpret illegal value 2, of parameter -n\n"
      "Cannot interpret legal value 2, of parameter -n\n";
  EXPECT_EQ(messages.At(QXErrorLevel::Error), once + once);

  // A failed load leaves no half of the values behind.
  EXPECT_TRUE(p.AddStringValue("1") && p.AddStringValue("2"));
  EXPECT_FALSE(p.Load() || p.GetHasValue());
  EXPECT_EQ(p.GetStringValue(1), "2");
}

TEST(QXParameter, CopiesAreTheirOwn) {
  QXConstParameter p("-p", 3, "Three");
  ASSERT_TRUE(p.AddStringValue("three") && p.Load());
  const std::unique_ptr<QXParameter> copy(p.CreateCopy());
  p.ClearValues();
  p.AddLegalEntry(4, "four");
  auto& c = dynamic_cast<QXConstParameter&>(*copy);
  EXPECT_EQ(All(c.GetStringValues()), Texts{"three"});
  EXPECT_EQ(All(c.GetValues()), std::vector<unsigned>{3});
  EXPECT_EQ(All(c.GetStringDefaults()), Texts{"3"});
  EXPECT_TRUE(c.GetKeyIndex("THREE") == 3 && c.GetKeyIndex("four") != 4);
}

template <class P, class T>
void BinaryRoundTrip(const std::vector<T>& values, const std::string& bytes) {
  P p("-p");
  for (const T& value : values) ASSERT_TRUE(p.AddValue(value));
  std::vector<unsigned char> buffer(p.ValueAndDefaultBinarySize() + 1, 0xEE);
  ASSERT_EQ(p.WriteValueAndDefaultBinary(buffer.data()), buffer.size() - 1);
  EXPECT_EQ(std::string(buffer.begin(), buffer.end() - 1), bytes + "\1\0\0\0\0"s);
  EXPECT_EQ(buffer.back(), 0xEE);

  P q("-q");
  q.AddDefault(values.front());
  EXPECT_EQ(q.ReadValueAndDefaultBinary(buffer.data()), buffer.size() - 1);
  EXPECT_EQ(All(q.GetValues()), values);
  EXPECT_FALSE(q.IsSet(static_cast<unsigned>(values.size())) || q.GetHasDefault());
}

TEST(QXParameter, BinaryFormIsAHeadACountAndTheEntries) {
  BinaryRoundTrip<QXBoolParameter, bool>({true, false}, "\1\2\0\0\0\1\0"s);
  BinaryRoundTrip<QXIntParameter, int>({-2}, "\1\1\0\0\0\xFE\xFF\xFF\xFF"s);
  BinaryRoundTrip<QXUIntParameter, unsigned>({0x01020304}, "\1\1\0\0\0\4\3\2\1"s);
  BinaryRoundTrip<QXFloatParameter, float>({1.5f}, "\1\1\0\0\0\0\0\xC0\x3F"s);
  BinaryRoundTrip<QXDoubleParameter, double>({1.5}, "\1\1\0\0\0\0\0\0\0\0\0\xF8\x3F"s);
  BinaryRoundTrip<QXStringParameter, std::string>({"", "ab"}, "\1\2\0\0\0\0\0\0\0\2\0\0\0ab"s);
}

TEST(QXParameter, BinaryFormIsReadInEitherByteOrder) {
  const auto read = [](QXParameter& p, const std::string& bytes) {
    return p.ReadValueAndDefaultBinary(reinterpret_cast<const unsigned char*>(bytes.data()));
  };
  QXStringParameter s("-s");
  EXPECT_EQ(read(s, "\x41\0\0\0\1\0\0\0\2ab\1\1\0\0\0\1\0\0\0c"s), 21u);
  EXPECT_EQ(All(s.GetValues()), Texts{"ab"});
  EXPECT_EQ(All(s.GetDefaults()), Texts{"c"});

  QXUIntParameter u("-u", 1);
  EXPECT_EQ(read(u, "\x61\0\0\0\1\1\2\3\4\2"s), 10u);  // head bits beyond the six mean nothing
  EXPECT_EQ(All(u.GetValues()), std::vector<unsigned>{0x01020304});
  EXPECT_EQ(All(u.GetDefaults()), std::vector<unsigned>{1});  // its block was of another kind
  EXPECT_EQ(read(u, "\2"s), 1u);
}

TEST(QXSimpleFactory, MakesWhatIsRegisteredFirst) {
  QXSimpleFactory<std::string, QXParameter> factory;
  EXPECT_TRUE(factory.Register("n", new QXFactoryWorker<QXParameter, QXIntParameter>));
  EXPECT_FALSE(factory.Register("n", new QXFactoryWorker<QXParameter, QXBoolParameter>));
  EXPECT_TRUE(factory.Register("null", nullptr));
  const std::unique_ptr<QXParameter> n(factory.Construct("n"));
  EXPECT_EQ(n->ClassID() + n->GetName(), "int");
  const Messages messages;
  EXPECT_FALSE(factory.Construct("null") || factory.Construct("%s"));
  EXPECT_EQ(messages.GetErrorLog(),
            "level = 4\nQXSimpleFactory.  Unknown classid %s\n"
            "level = 5\nNULL pointer in Factory Registry\n");
}

}  // namespace
