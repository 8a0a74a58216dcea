#include <qxsystem/interface/files.h>

#include <rapidjson/document.h>
#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>

#include <qxsystem/interface/writer.h>

#include "interface/support.h"
#include "platform/temp_dir.h"

using namespace QXSystem;
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
-e stringExt; LIST true; LEGAL_VALUE a; VISIBILITY hidden
!END
)");

bool Parse(QXInterface& interface, const std::string& lines, bool overwrite = false) {
  QXPlatform::qxisstream in(lines);
  return QXParseParameterFile(interface, in, overwrite, QXErrorLevel::Warning);
}

TEST(QXParseParameterFile, ReadsOneSettingALineAndGoesOnBehindFaults) {
  ExpectSessions(R"($ -n 3 -> -n=3 -b=1
$ --Number	3 -> -n=3 -b=1
$ -s 'a b' -> -s=a b -b=1
$ -s "a ''b' -> -s=a ''b -b=1
$ -s 'it''s' -> -s=it''s -b=1
$ -s 'a'b -> -s='a'b -b=1
$ -s 'open end -> -s='open end -b=1
$ -s ''""x -> -s=''""x -b=1
$ '-s' # -> -s=# -b=1
$ -l 1 '' 2 3e1 -> -l=1;2;3e1 -b=1
$ -m 1 -> Unknown parameter -m in parameter file (begin comment lines with #) / -b=1
$ -n -> In parameter file key -n is not followed by a value / -b=1
$ -s '' -> In parameter file key -s is not followed by a value / -b=1
$ --number 10
10 is not a legal setting for parameter --number (specified in parameter file)
  Legal Range : 1 to 9
-b=1
$ -n 3 x
Problem in parameter file with key -n.  Key is followed by multiple values.
-n=3 -b=1
$ -l 1 x 2
x is not a legal setting for parameter -l (specified in parameter file)
-l=1;2 -b=1
$ -l 1,2 -> 1,2 is not a legal setting for parameter -l (specified in parameter file) / -b=1
$ -f /dev/null x
Unable to load parameter -f listed in parameter file, check that /dev/null is a valid setting
Problem in parameter file with key -f.  Key is followed by multiple values.
-b=1
$ -e a b /dev/null a
-e file b does not exist or is empty.
b is not a legal setting for parameter -e (specified in parameter file)
  Legal value : a
Unable to load parameter -e listed in parameter file, check that /dev/null is a valid setting
Unable to load parameter -e listed in parameter file, check that a is a valid setting
-b=1
)",
                 QXErrorLevel::Warning, [](const std::string& line) {
                   QXInterface root(Text.c_str());
                   const bool good = Parse(root, "# comment\n\n  # more\n" + line + "\r\n-b 1");
                   return Outcome{good, ValuesOf(root)};
                 });
}

TEST(QXParseParameterFile, LeavesOrReplacesWhatIsSet) {
  const QXPushQXThrowHasNoMessages silent;
  QXInterface root(Text.c_str());
  EXPECT_TRUE(Parse(root, "-n 3\n-n 4 5 x\n-l 1\n-L 2 x"));  // not even looked at
  EXPECT_EQ(ValuesOf(root), "-n=3 -l=1");
  EXPECT_TRUE(Parse(root, "-n 4\n-l 2 3\n", /*overwrite=*/true));
  EXPECT_EQ(ValuesOf(root), "-n=4 -l=2;3");
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

// ---- Settings and defaults ----

std::string Settings(const QXInterface& interface, bool all, const std::string& mode = "") {
  qxosstream out;
  EXPECT_TRUE(QXWriteSettings(interface, out, all, mode));
  return out.str();
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

// The typed values and defaults of all parameters.
std::vector<unsigned char> Typed(const QXInterface& interface) {
  std::vector<unsigned char> all;
  for (QXIter<QXParameter> p = interface.GetParameters(true); p; ++p) {
    std::vector<unsigned char> one(p->ValueAndDefaultBinarySize());
    p->WriteValueAndDefaultBinary(one.data());
    all.insert(all.end(), one.begin(), one.end());
  }
  return all;
}

TEST(QXWriteSettings, AreAParameterFileThatReproducesThem) {
  const TempDir dir;
  QXInterface root(Text.c_str());
  ASSERT_TRUE(Parse(root,
                    "-n 7\n-s \"it's  # 'so'\"\n-l -0 1e-9 1.50e+10 inf 100\n-b off\n-h 1\n"
                    "-c Fast\n-x 9\n-f '" +
                        dir.Write("a file", "bytes") + "'"));
  for (const bool all : {true, false}) {
    QXInterface again(Text.c_str());
    const QXPushQXThrowHasNoMessages silent;
    EXPECT_TRUE(Parse(again, Settings(root, all)));
    EXPECT_EQ(Settings(again, all), Settings(root, all));
    EXPECT_EQ(Typed(again), Typed(root));
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

// ---- JSON ----

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
  QXInterface root(
      Describe(
          R"(-n const; LIST 1; ALIAS -a; ALIAS -b; REQUIRED true; INPUT 4; OUTPUT true; SIMPLE true; KEYLESS 2; ILLEGAL_VALUE 4; LEGAL_RANGE 1 9; LEGAL_RANGE 2 3; ILLEGAL_RANGE 5 6; ELEMENT e; COMMAND c; BRIEF b; DEFAULT 1; DETAIL; d
!CATEGORY Sub -3
!DETAIL
one
 two
-x string; LEGAL_VALUE x; LEGAL_VALUE y
!END
)")
          .c_str());
  root.SetBrief("a \"quoted\" \\ brief");
  EXPECT_TRUE(root.GetParameter("-x")->SetOrderPriority(1));
  // The visibilities, one of them without a name.
  const char* shown[] = {"\"simple\"", "\"normal\"", "\"hidden\"", "null"};
  for (unsigned visibility = 0; visibility < 4; ++visibility) {
    root.GetParameter("-x")->SetVisibility(visibility);
    EXPECT_EQ(
        Reread(root),
        R"({"name":"","order":0,"brief":"a \"quoted\" \\ brief","detail":[],"params":[)"
        R"({"name":"-n","order":0,"type":"const","list":true,"alias":["-a","-b"],"default":["1"],)"
        R"("required":true,"input":4,"output":true,"visibility":"simple","keyless":2,)"
        R"("legal_value":[],"illegal_value":["4"],"legal_range":[["1","9"],["2","3"]],)"
        R"("illegal_range":[["5","6"]],"element":"e","command":"c","brief":"b ","detail":["!d"]}],)"
        R"("interfaces":[{"name":"Sub","order":-3,"brief":"","detail":["one"," two"],"params":[)"
        R"({"name":"-x","order":1,"type":"string","list":false,"alias":[],"default":[],)"
        R"("required":false,"input":0,"output":false,"visibility":)" +
            std::string(shown[visibility]) +
            R"(,"keyless":0,"legal_value":["x","y"],"illegal_value":[],"legal_range":[],)"
            R"("illegal_range":[],"element":"","command":"","brief":"","detail":[]}]}]})");
  }
  EXPECT_EQ(Reread(QXInterface(root)), Reread(root));  // copies have every field
}

}  // namespace
