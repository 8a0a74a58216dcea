#include <qxsystem/interface/files.h>

#include <gtest/gtest.h>
#include <rapidjson/document.h>
#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>

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

const std::string Text = Describe(R"(-n int; ALIAS --number; LEGAL_RANGE 1 9; DEFAULT 5
-s string
-l float; LIST true; DEFAULT 1.50; DEFAULT 2
-b bool
-h int; VISIBILITY hidden
!CATEGORY Sub
!BRIEF of it
-c const; LEGAL_VALUE 3; LEGAL_VALUE fast; DEFAULT 3
!CATEGORY Deep
-f file
!END
!END
!CATEGORY Secret
-x int; VISIBILITY hidden
!END
)");

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
    QXInterface root(Text.c_str());
    EXPECT_TRUE(Parse(root, "# comment\n\n  # another\n" + std::string(c.line)));
    EXPECT_EQ(Values(root, c.name), c.values);
    EXPECT_TRUE(root.GetParameter(c.name)->GetHasValue());
  }
}

TEST(QXParseParameterFile, ReportsFaultsAndReadsOn) {
  // The line, the message, and the values of -n and -l then.
  for (const auto& [line, answer] : Sessions(R"($ -m 1
Unknown parameter -m in parameter file (begin comment lines with #)

$ -b
In parameter file key -b is not followed by a value

$ -s ''
In parameter file key -s is not followed by a value

$ --number 10
10 is not a legal setting for parameter --number (specified in parameter file)
  Legal Range : 1 to 9

$ -n 3 4
Problem in parameter file with key -n.  Key is followed by multiple values.
3;
$ -n 3 x
Problem in parameter file with key -n.  Key is followed by multiple values.
3;
$ -l 1 x 2
x is not a legal setting for parameter -l (specified in parameter file)
1;2;
$ -l 1,2
1,2 is not a legal setting for parameter -l (specified in parameter file)

$ -f no/file
Unable to load parameter -f listed in parameter file, check that no/file is a valid setting

)")) {
    SCOPED_TRACE(line);
    const Messages messages;
    QXInterface root(Text.c_str());
    EXPECT_FALSE(Parse(root, line + "\n-c fast\n"));
    std::string got = messages.At(QXErrorLevel::Warning);
    for (const char* name : {"-n", "-l"})
      for (const std::string& value : Values(root, name)) got += value + ";";
    EXPECT_EQ(got + "\n", answer);
    EXPECT_EQ(Values(root, "-c"), Texts{"fast"});  // reading goes on
  }
}

TEST(QXParseParameterFile, LoadsAListAsIfOneByOne) {
  const TempDir dir;
  const std::string file = dir.Write("file", "x");
  QXInterface root(Text.c_str());
  root.GetParameter("-f")->SetIsList(true);
  const Messages messages;
  EXPECT_FALSE(Parse(root, "-f " + file + " " + dir.Path("none") + " " + file));
  std::string told;  // behind a text that cannot be loaded nothing can
  for (const std::string& name : {dir.Path("none"), file})
    told += "Unable to load parameter -f listed in parameter file, check that " + name +
            " is a valid setting\n";
  EXPECT_EQ(messages.At(QXErrorLevel::Warning), told);
  EXPECT_FALSE(root.GetParameter("-f")->GetHasValue());
}

TEST(QXParseParameterFile, LeavesOrReplacesWhatIsSet) {
  const QXPushQXThrowHasNoMessages silent;
  QXInterface root(Text.c_str());
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
  QXInterface root(Text.c_str());
  EXPECT_FALSE(Parse(root, "--numer 3\n-quite-another 4"));
  EXPECT_EQ(reports.GetErrorLog(),
            "level = 2\nDid you mean --number instead of --numer?\n"
            "level = 4\nUnknown parameter --numer in parameter file (begin comment lines with #)\n"
            "Unknown parameter -quite-another in parameter file (begin comment lines with #)\n");
}

TEST(QXWriteSettings, WritesValuesAndAsCommentsTheRest) {
  QXInterface root(Text.c_str());
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
  QXInterface root(Text.c_str());
  ASSERT_TRUE(Parse(root,
                    "-n 7\n-s \"it's  # 'so'\"\n-l -0 1e-9 1.50e+10 inf 100\n-b off\n-h 1\n"
                    "-c Fast\n-x 9\n-f " +
                        dir.Write("a file", "bytes").replace(0, 0, "'") + "'"));
  for (const bool all : {true, false}) {
    QXInterface again(Text.c_str());
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
  QXInterface root(Text.c_str());
  static_cast<QXStringParameter*>(root.GetParameter("-s"))->SetDefault("a b");
  qxosstream out;
  QXTextWriter writer(out, "  ");
  EXPECT_TRUE(WriteDefaultsImpl(root, writer) && writer.End());
  EXPECT_EQ(out.str(),
            "#-b : (no default setting)\n-l 1.50 2\n-n 5\n-s \"a b\"\n"
            "\n#Sub of it   \n    -c fast\n    \n"
            "    #Deep   \n        #-f : (no default setting)\n");
}

// What a strict reader makes of the document, written without white space.
std::string Reread(const QXInterface& interface) {
  qxosstream out;
  EXPECT_TRUE(QXWriteJSON(interface, out));
  rapidjson::Document json;
  json.Parse(out.str().c_str());
  EXPECT_FALSE(json.HasParseError()) << out.str();
  rapidjson::StringBuffer buffer;
  rapidjson::Writer<rapidjson::StringBuffer> writer(buffer);
  json.Accept(writer);
  return buffer.GetString();
}

TEST(QXWriteJSON, DescribesTheInterfaceWithAllItsKeysInOrder) {
  QXInterface root(Describe(R"(-x const; LIST 1; ALIAS -a; ALIAS -b; DEFAULT 1
-n int; REQUIRED true; INPUT 4; OUTPUT true; SIMPLE true; KEYLESS 2; ILLEGAL_VALUE 4; LEGAL_RANGE 1 9; LEGAL_RANGE 2 3; ILLEGAL_RANGE 5 6; ELEMENT e; COMMAND c; BRIEF b; DETAIL; d
!CATEGORY Sub -3
!DETAIL
one
 two
-h string; VISIBILITY hidden; LEGAL_VALUE x; LEGAL_VALUE y
!END
)")
                       .c_str());
  root.SetBrief("a \"quoted\" \\ brief");
  root.GetParameter("-x")->SetVisibility(3);
  root.GetParameter("-x")->SetOrderPriority(1);
  const std::string rest =
      R"("required":false,"input":0,"output":false,"visibility":"hidden","keyless":0,)"
      R"("legal_value":["x","y"],"illegal_value":[],"legal_range":[],"illegal_range":[],)"
      R"("element":"","command":"","brief":"","detail":[]})";
  EXPECT_EQ(
      Reread(root),
      R"({"name":"","order":0,"brief":"a \"quoted\" \\ brief","detail":[],"params":[)"
      R"({"name":"-n","order":0,"type":"int","list":false,"alias":[],"default":[],"required":true,)"
      R"("input":4,"output":true,"visibility":"simple","keyless":2,"legal_value":[],)"
      R"("illegal_value":["4"],"legal_range":[["1","9"],["2","3"]],"illegal_range":[["5","6"]],)"
      R"("element":"e","command":"c","brief":"b ","detail":["!d"]},)"
      R"({"name":"-x","order":1,"type":"const","list":true,"alias":["-a","-b"],)"
      R"("default":["1"],"required":false,"input":0,"output":false,"visibility":null,"keyless":0,)"
      R"("legal_value":[],"illegal_value":[],"legal_range":[],"illegal_range":[],"element":"",)"
      R"("command":"","brief":"","detail":[]}],"interfaces":[)"
      R"({"name":"Sub","order":-3,"brief":"","detail":["one"," two"],"params":[)"
      R"({"name":"-h","order":0,"type":"string","list":false,"alias":[],"default":[],)" +
          rest + "]}]}");
  EXPECT_EQ(Reread(QXInterface(root)), Reread(root));  // copies have every field
}

}  // namespace
