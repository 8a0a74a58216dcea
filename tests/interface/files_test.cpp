#include <qxsystem/interface/files.h>

#include <gtest/gtest.h>
#include <rapidjson/document.h>

#include <qxsystem/core/errortest.h>
#include <qxsystem/interface/interface.h>
#include <qxsystem/interface/parameter_concrete.h>
#include <qxsystem/interface/writer.h>
#include <qxsystem/platform/istream.h>
#include <qxsystem/platform/ostream.h>

#include "interface/support.h"
#include "platform/temp_dir.h"

using namespace QXSystem;
using QXPlatform::qxisstream;
using QXPlatform::qxosstream;

namespace {

using Texts = std::vector<std::string>;

constexpr char Text[] = R"(!PARAMETER -n
  !TYPE int
  !ALIAS --number
  !LEGAL_RANGE 1 9
  !DEFAULT 5
!END
!PARAMETER -s
  !TYPE string
!END
!PARAMETER -l
  !TYPE float
  !LIST true
  !DEFAULT 1.50
  !DEFAULT 2
!END
!PARAMETER -b
  !TYPE bool
!END
!PARAMETER -h
  !TYPE int
  !VISIBILITY hidden
!END
!CATEGORY Sub
  !BRIEF of it
  !PARAMETER -c
    !TYPE const
    !LEGAL_VALUE 3
    !LEGAL_VALUE fast
    !DEFAULT 3
  !END
  !CATEGORY Deep
    !PARAMETER -f
      !TYPE file
    !END
  !END
!END
!CATEGORY Secret
  !PARAMETER -x
    !TYPE int
    !VISIBILITY hidden
  !END
!END
)";

bool Parse(QXInterface& interface, const std::string& lines, bool overwrite = false) {
  qxisstream in(lines);
  return QXParseParameterFile(interface, in, overwrite, QXErrorLevel::Warning);
}

Texts Values(const QXInterface& interface, const std::string& name) {
  return All(interface.GetParameter(name)->GetStringValues());
}

std::string Settings(const QXInterface& interface, bool all, const std::string& mode = "") {
  qxosstream out;
  EXPECT_TRUE(QXWriteSettings(interface, out, all, mode));
  return out.str();
}

TEST(QXParseParameterFile, ReadsOneSettingALine) {
  const QXPushQXThrowHasNoMessages silent;
  const struct {
    const char* line;
    const char* name;
    Texts values;
  } cases[] = {{"-n 3", "-n", {"3"}},
               {"--Number\t3\r\n", "-n", {"3"}},
               {"-s 'a b'", "-s", {"a b"}},
               {"-s \"a ''b'", "-s", {"a ''b"}},  // the ends need not be the same
               {"-s 'it''s'", "-s", {"it''s"}},
               {"-s 'a'b", "-s", {"'a'b"}},
               {"-s 'open end", "-s", {"'open end"}},
               {"'-s' #", "-s", {"#"}},
               {"-l 1 '' 2 3e1", "-l", {"1", "2", "3e1"}},
               {"-s ''\"\"x", "-s", {"''\"\"x"}}};
  for (const auto& c : cases) {
    SCOPED_TRACE(c.line);
    QXInterface root(Text);
    EXPECT_TRUE(Parse(root, "# comment\n\n  # another\n" + std::string(c.line)));
    EXPECT_EQ(Values(root, c.name), c.values);
    EXPECT_TRUE(root.GetParameter(c.name)->GetHasValue());
  }
}

TEST(QXParseParameterFile, ReportsFaultsAndReadsOn) {
  const struct {
    const char* line;
    const char* message;
    Texts values;  // of -n and -l together
  } cases[] = {
      {"-m 1", "Unknown parameter -m in parameter file (begin comment lines with #)", {}},
      {"-b", "In parameter file key -b is not followed by a value", {}},
      {"-s ''", "In parameter file key -s is not followed by a value", {}},
      {"--number 10",
       "10 is not a legal setting for parameter --number (specified in parameter file)\n"
       "  Legal Range : 1 to 9",
       {}},
      {"-n 3 4",
       "Problem in parameter file with key -n.  Key is followed by multiple values.",
       {"3"}},
      {"-n 3 x",
       "Problem in parameter file with key -n.  Key is followed by multiple values.",
       {"3"}},
      {"-l 1 x 2",
       "x is not a legal setting for parameter -l (specified in parameter file)",
       {"1", "2"}},
      {"-l 1,2", "1,2 is not a legal setting for parameter -l (specified in parameter file)", {}},
      {"-f no/file",
       "Unable to load parameter -f listed in parameter file, check that no/file is a valid "
       "setting",
       {}}};
  for (const auto& c : cases) {
    SCOPED_TRACE(c.line);
    QXPushSimpleQXThrowTester reports;
    QXInterface root(Text);
    EXPECT_FALSE(Parse(root, std::string(c.line) + "\n-c fast\n"));
    EXPECT_EQ(reports.GetErrorLog(), "level = 4\n" + std::string(c.message) + "\n");
    Texts values = Values(root, "-n");
    for (const std::string& value : Values(root, "-l")) values.push_back(value);
    EXPECT_EQ(values, c.values);
    EXPECT_EQ(Values(root, "-c"), Texts{"fast"});
  }
}

TEST(QXParseParameterFile, LoadsAListAsIfOneByOne) {
  const TempDir dir;
  const std::string file = dir.Write("file", "x");
  QXInterface root(Text);
  root.GetParameter("-f")->SetIsList(true);
  QXPushSimpleQXThrowTester reports;
  EXPECT_FALSE(Parse(root, "-f " + file + " " + dir.Path("none") + " " + file));
  const auto message = [](const std::string& name) {
    return "Unable to load parameter -f listed in parameter file, check that " + name +
           " is a valid setting\n";
  };
  // Behind a text that cannot be loaded nothing can.
  EXPECT_EQ(reports.GetErrorLog(), "level = 4\n" + message(dir.Path("none")) + message(file));
  EXPECT_FALSE(root.GetParameter("-f")->GetHasValue());
}

TEST(QXParseParameterFile, LeavesOrReplacesWhatIsSet) {
  const QXPushQXThrowHasNoMessages silent;
  QXInterface root(Text);
  EXPECT_TRUE(Parse(root, "-n 3\n-n 4 5 x\n-l 1\n-L 2 x"));  // not even looked at
  EXPECT_EQ(Values(root, "-n"), Texts{"3"});
  EXPECT_EQ(Values(root, "-l"), Texts{"1"});
  EXPECT_TRUE(Parse(root, "-n 4\n-l 2 3\n", /*overwrite=*/true));
  EXPECT_EQ(Values(root, "-n"), Texts{"4"});
  EXPECT_EQ(Values(root, "-l"), (Texts{"2", "3"}));
}

TEST(QXParseParameterFile, SuggestsAKeyToThoseWhoListen) {
  QXPushSimpleQXThrowTester reports;
  QXThrow.SetLevel(QXErrorLevel::Verbose);
  QXInterface root(Text);
  EXPECT_FALSE(Parse(root, "--numer 3\n-quite-another 4"));
  EXPECT_EQ(reports.GetErrorLog(),
            "level = 2\nDid you mean --number instead of --numer?\n"
            "level = 4\nUnknown parameter --numer in parameter file (begin comment lines with #)\n"
            "Unknown parameter -quite-another in parameter file (begin comment lines with #)\n");
}

TEST(QXWriteSettings, WritesValuesAndAsCommentsTheRest) {
  QXInterface root(Text);
  EXPECT_EQ(Settings(root, false), "#Interface settings\n");
  ASSERT_TRUE(Parse(root, "-s 'a\tb'\n-l 2.500 .1\n-h 4\n-c FAST"));
  EXPECT_EQ(Settings(root, false, "test"),
            "#Interface settings\n#Mode test\n"
            "-h  4\n-l  2.5 .1\n-s  \"a\tb\"\n\n#Sub : of it   \n    -c  FAST\n");
  root.GetParameter("-l")->ClearValues();
  EXPECT_EQ(Settings(root, true),
            "#Interface settings\n"
            "#-b (Not set, no default)\n-h  4\n#-l  1.5 2\n#-n  5\n-s  \"a\tb\"\n"
            "\n#Sub : of it   \n    -c  FAST\n    \n"
            "    #Deep :   \n        #-f (Not set, no default)\n");
  EXPECT_EQ(root.GetParameter("-l")->GetStringDefault(), "1.50");  // only shown shorter
}

TEST(QXWriteSettings, AreAParameterFileThatReproducesThem) {
  const TempDir dir;
  QXInterface root(Text);
  ASSERT_TRUE(Parse(root,
                    "-n 7\n-s \"it's  # 'so'\"\n-l -0 1e-9 1.50e+10 inf 100\n-b off\n-h 1\n"
                    "-c Fast\n-x 9\n-f " +
                        dir.Write("a file", "bytes").replace(0, 0, "'") + "'"));
  for (const bool all : {true, false}) {
    QXInterface again(Text);
    const QXPushQXThrowHasNoMessages silent;
    EXPECT_TRUE(Parse(again, Settings(root, all)));
    EXPECT_EQ(Settings(again, all), Settings(root, all));
    for (QXIter<QXParameter> p = root.GetParameters(true); p; ++p) {
      std::vector<unsigned char> a(p->ValueAndDefaultBinarySize()), b;
      p->WriteValueAndDefaultBinary(a.data());
      const QXParameter& q = *again.GetParameter(p->GetName());
      b.resize(q.ValueAndDefaultBinarySize());
      q.WriteValueAndDefaultBinary(b.data());
      EXPECT_EQ(a, b) << p->GetName();
    }
  }
}

TEST(WriteDefaultsImpl, NamesConstants) {
  QXInterface root(Text);
  static_cast<QXStringParameter*>(root.GetParameter("-s"))->SetDefault("a b");
  qxosstream out;
  QXTextWriter writer(out, "  ");
  EXPECT_TRUE(WriteDefaultsImpl(root, writer) && writer.End());
  EXPECT_EQ(out.str(),
            "#-b : (no default setting)\n-l 1.50 2\n-n 5\n-s \"a b\"\n"
            "\n#Sub of it   \n    -c fast\n    \n"
            "    #Deep   \n        #-f : (no default setting)\n");
}

// The keys of an object, in order.
std::string Keys(const rapidjson::Value& object) {
  std::string keys;
  for (const auto& member : object.GetObject()) keys += member.name.GetString() + std::string(" ");
  return keys;
}

std::string ListText(const rapidjson::Value& list) {
  std::string text = "[";
  for (const auto& item : list.GetArray())
    text += item.IsArray() ? ListText(item) : item.GetString() + std::string(";");
  return text + "]";
}

TEST(QXWriteJSON, DescribesTheInterface) {
  QXInterface root(Text);
  root.SetBrief("a \"quoted\" \\ brief");
  QXParameter& n = *root.GetParameter("-n");
  n.SetKeyless(2);
  n.SetRequired(true);
  n.SetInput(4);
  n.SetOrderPriority(-3);
  n.SetElement("e");
  n.SetCommand("c");
  n.SetBrief("b");
  n.AddDetail("d");
  n.AddIllegalValue("4");
  n.AddIllegalRange("5", "6");
  root.GetParameter("-b")->SetVisibility(3);
  qxosstream out;
  ASSERT_TRUE(QXWriteJSON(root, out));

  rapidjson::Document json;
  json.Parse(out.str().c_str());
  ASSERT_FALSE(json.HasParseError());
  EXPECT_EQ(Keys(json), "name order brief detail params interfaces ");
  EXPECT_STREQ(json["brief"].GetString(), "a \"quoted\" \\ brief");
  const auto& params = json["params"];
  ASSERT_EQ(params.Size(), 5u);
  for (const auto& p : params.GetArray())
    EXPECT_EQ(Keys(p),
              "name order type list alias default required input output visibility keyless "
              "legal_value illegal_value legal_range illegal_range element command brief detail ");
  const auto& p = params[0];
  EXPECT_STREQ(p["name"].GetString(), "-n");
  EXPECT_EQ(p["order"].GetInt(), -3);
  EXPECT_STREQ(p["type"].GetString(), "int");
  EXPECT_FALSE(p["list"].GetBool() || p["output"].GetBool());
  EXPECT_TRUE(p["required"].GetBool());
  EXPECT_EQ(p["input"].GetInt() + p["keyless"].GetInt(), 6);
  EXPECT_STREQ(p["visibility"].GetString(), "normal");
  EXPECT_EQ(ListText(p["alias"]) + ListText(p["default"]) + ListText(p["legal_value"]) +
                ListText(p["illegal_value"]) + ListText(p["legal_range"]) +
                ListText(p["illegal_range"]) + ListText(p["detail"]),
            "[--number;][5;][][4;][[1;9;]][[5;6;]][d;]");
  EXPECT_EQ(
      p["element"].GetString() + std::string(p["command"].GetString()) + p["brief"].GetString(),
      "ecb");
  EXPECT_TRUE(params[1]["visibility"].IsNull());
  EXPECT_EQ(ListText(params[3]["default"]), "[1.50;2;]");

  ASSERT_EQ(json["interfaces"].Size(), 2u);
  const auto& sub = json["interfaces"][1];
  EXPECT_STREQ(sub["name"].GetString(), "Sub");
  EXPECT_EQ(ListText(sub["params"][0]["default"]), "[3;]");  // the text, not the name
  EXPECT_EQ(Keys(sub["interfaces"][0]), "name order brief detail params ");
  EXPECT_STREQ(json["interfaces"][0]["params"][0]["visibility"].GetString(), "hidden");
  EXPECT_NE(out.str().find("\"alias\" : [\"--number\"],\n\"default\""), std::string::npos);
}

}  // namespace
