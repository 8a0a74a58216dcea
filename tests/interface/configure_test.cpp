// Configuration texts and requirement texts.
#include <gtest/gtest.h>

#include <qxsystem/interface/interface.h>
#include <qxsystem/interface/parameter_concrete.h>
#include <qxsystem/platform/istream.h>
#include <qxsystem/platform/ostream.h>

#include "interface/support.h"
#include "platform/temp_dir.h"

using namespace QXSystem;
using namespace std::string_literals;

namespace {

std::string Written(const QXInterface& interface) {
  QXPlatform::qxosstream out;
  EXPECT_TRUE(QXWriteInterfaceConfigurationFile(interface, out));
  return out.str();
}

constexpr char Everything[] = R"(# A comment
!BRIEF   All   of it
!DETAIL
   kept as it is
# this too

!PARAMETER -plain
  !TYPE int
!END words
!CATEGORY "My Things" 3
  !BRIEF Things  of mine
  !PARAMETER	-mode -7 ignored
    !DEFAULT fast
    # Numbers and names take turns
    !LEGAL_VALUE 3
    !LEGAL_VALUE fast
    !LEGAL_VALUE 1
    !LEGAL_VALUE Slow
    !ILLEGAL_VALUE 2
    !LEGAL_RANGE 7 inf
    !ILLEGAL_RANGE 9 11
    !DEFAULT 1
    !ALIAS -m
    !ALIAS --mode
    !TYPE const
    !LIST yes
    !REQUIRED T
    !SIMPLE false
    !KEYLESS 2
    !INPUT 4
    !OUTPUT on
    !ELEMENT   a  b	c  
    !COMMAND d
    !BRIEF How   to do it
    !DETAIL ignored
    four
      six

	tab
    !BOGUS no keyword, so detail
    !VISIBILITY SIMPLE
  !END
  !PARAMETER -hidden
    !TYPE string
    !VISIBILITY Hidden
  !END
!END
!CATEGORY nameless x
!CATEGORY inner 2
!BRIEF
!END
!END
)";

constexpr char EverythingWritten[] = R"(!PARAMETER -plain 0
  !TYPE int
  !LIST false
  !REQUIRED false
  !OUTPUT false
  !SIMPLE false
!END
!CATEGORY "nameless"  0
!CATEGORY "inner"  2
!END

!END

!CATEGORY "My Things"  3
  !BRIEF Things of mine 
!PARAMETER -mode -7
  !TYPE const
  !LIST true
  !ALIAS -m
  !ALIAS --mode
  !DEFAULT fast
  !DEFAULT 1
  !REQUIRED true
  !INPUT 4
  !OUTPUT true
  !SIMPLE true
  !KEYLESS 2
  !LEGAL_VALUE 3
  !LEGAL_VALUE fast
  !LEGAL_VALUE 1
  !LEGAL_VALUE Slow
  !ILLEGAL_VALUE 2
  !LEGAL_RANGE 7 inf
  !ILLEGAL_RANGE 9 11
  !ELEMENT a  b	c
  !COMMAND d
  !BRIEF How to do it 
  !DETAIL
       four
         six
    
    tab
       !BOGUS no keyword, so detail
!END
!END

)";

TEST(QXConfigure, BuildsATreeAndWritesItBack) {
  const QXPushQXThrowHasNoMessages silent;
  QXInterface root(Everything);
  EXPECT_EQ(root.GetBrief(), "All of it ");
  EXPECT_EQ(All(root.GetDetail()), (Texts{"   kept as it is", "# this too", ""}));
  EXPECT_EQ(Names(root.GetParameters(true)), "-plain -mode -hidden");
  EXPECT_EQ(Written(root), EverythingWritten);

  // What was written makes the same tree, hidden parameters apart.
  QXInterface again(Written(root).c_str());
  EXPECT_EQ(Written(again), EverythingWritten);
  unsigned mode = 0;
  EXPECT_TRUE(QXGetSetting(again, "-mode", mode) && mode == 3);
  EXPECT_TRUE(QXGetSetting(again, "-mode", mode, 1) && mode == 1);
}

TEST(QXConfigure, ReadsAStreamUpToItsEnd) {
  QXPlatform::qxisstream in("!CATEGORY a\r\n!END\r\n!END\nrest");
  QXInterface root;
  EXPECT_TRUE(QXConfigure(root, in));
  EXPECT_EQ(Names(root.GetInterfaces(true)), "a");
  std::string rest;
  EXPECT_TRUE(in.getline(rest) && rest == "rest");
  EXPECT_TRUE(QXConfigure(root, static_cast<const char*>(nullptr)));
}

TEST(QXConfigure, CutsTheCommonIndentationOfADetail) {
  const struct {
    const char* block;
    Texts detail;
  } cases[] = {{"    four\n      six\n    four\n", {"four", "  six", "four"}},
               {"    four\n\n  \n     \n", {"four", "", "  ", " "}},
               {"\tone\n  two\n", {"one", " two"}},
               {"  \n \n", {"  ", " "}},
               {"none\n    four\n", {"none", "    four"}}};
  for (const auto& c : cases) {
    QXInterface root(("!PARAMETER -x\n!TYPE int\n!DETAIL\n"s + c.block + "!BRIEF x\n!END").c_str());
    EXPECT_EQ(All(root.GetParameter("-x")->GetDetail()), c.detail) << c.block;
    EXPECT_EQ(root.GetParameter("-x")->GetBrief(), "x ");
  }
}

TEST(QXConfigure, ReopensCategories) {
  QXInterface root(
      "!CATEGORY a 5\n!CATEGORY b\n!END\n!END\n"
      "!CATEGORY c\n!CATEGORY \"a\"\n!BRIEF of c\n!END\n!END\n"  // c has none of that name
      "!CATEGORY b 4\n!BRIEF again\n!END\n!CATEGORY a\n!BRIEF first");
  std::string all;
  for (QXIter<QXInterface> c = root.GetInterfaces(true); c; ++c)
    all += c->GetName() + std::to_string(c->GetOrderPriority()) + " " + c->GetBrief();
  EXPECT_EQ(all, "a0 first c0 b4 again a0 of c ");  // a priority that is not repeated goes
}

TEST(QXConfigure, TakesTheNameOfACategoryInQuotesOrNot) {
  // The line, then name and priority or why it was refused.
  for (const auto& [line, answer] : Sessions(R"($ !CATEGORY name 3 -> name;3
$ !CATEGORY name 3 4 -> name;3
$ !CATEGORY name x -> name;0
$ !CATEGORY "My  Things" -3  -> My  Things;-3
$ !CATEGORY " My Things" ->  My Things;0
$ !CATEGORY "a" x -> a;0
$ !CATEGORY "a" 1 2 -> a single word does not follow the quoted category name
$ !CATEGORY "a" "b" -> Invalid number of double quotes
$ !CATEGORY "a"b" 1 -> Invalid number of double quotes
$ !CATEGORY "a 1 -> Invalid number of double quotes
$ !CATEGORY "" 3 -> too many quotes
)")) {
    SCOPED_TRACE(line);
    const Messages messages;
    QXInterface root;
    const bool good = QXConfigure(root, line.c_str());
    const std::string told = messages.At(QXErrorLevel::Error);
    if (good) {
      const QXIter<QXInterface> c = root.GetInterfaces(false);
      EXPECT_EQ(c->GetName() + ";" + std::to_string(c->GetOrderPriority()) + "\n", answer);
    } else {
      EXPECT_EQ(told, "Error parsing line\n" + line + "\n" + answer);
      EXPECT_FALSE(QXIter<QXInterface>(root.GetInterfaces(false)));
    }
  }
}

TEST(QXConfigure, EndsAtFaultsOfStructure) {
  // The lines, with "/" for a line end.
  for (const auto& [lines, answer] : Sessions(R"($ !CATEGORY
Probable invalid keyword in interface configuration file
  line : !CATEGORY
$ !end
Probable invalid keyword in interface configuration file
  line : !end
$ #/ stray line
Configuring interface.  Unable to parse line
  line :  stray line
$ !PARAMETER -x/!TYPE int/
Configure.  !PARAMETER -x is unterminated (by !END)
$ !PARAMETER -x/!TYPE int 3/!END
Unknown or unspecified type for parameter -x
$ !PARAMETER -x/!TYPE int/!LIST maybe/!END
configuring parameter -x : !LIST must be followed by true or false
$ !CATEGORY a/!X y/!BRIEF ours/!END/!X z
Probable invalid keyword in interface configuration file
  line : !X y
Problem configuring subcategory
$ /#/!END/never read
$
)")) {
    SCOPED_TRACE(lines);
    std::string text = lines;
    std::replace(text.begin(), text.end(), '/', '\n');
    const Messages messages;
    QXInterface root;
    // The end of an inner category that is at fault closes the outer one.
    EXPECT_EQ(QXConfigure(root, text.c_str()), answer.empty() || lines.find("ours") != lines.npos);
    EXPECT_EQ(messages.At(QXErrorLevel::Error), answer);
  }
}

TEST(QXConfigure, KeepsAParameterWithTheLinesThatAreGood) {
  const TempDir dir;
  const std::string file = dir.Write("file", "x");
  const struct {
    std::string parameter;
    Texts bad;
    std::string kept;  // of the defaults
  } cases[] = {{"int; DEFAULT 1; DEFAULT x; DEFAULT 2", {"DEFAULT x"}, "2;"},
               {"int; DEFAULT a b; words; DEFAULT", {"DEFAULT a b", "words", "DEFAULT"}, ""},
               {"int; ALIAS; REQUIRED x; KEYLESS -1", {"ALIAS", "REQUIRED x", "KEYLESS -1"}, ""},
               {"int; LEGAL_RANGE 1; ELEMENT; ILLEGAL_RANGE inf 1",
                {"LEGAL_RANGE 1", "ELEMENT", "ILLEGAL_RANGE inf 1"},
                ""},
               {"bool; LEGAL_VALUE true; default 1", {"LEGAL_VALUE true", "default 1"}, ""},
               {"const; LIST 1; DEFAULT b; DEFAULT c; DEFAULT 1; LEGAL_VALUE 1; LEGAL_VALUE b",
                {"DEFAULT c"},
                "b;1;"},
               // The text of a default stays although its file cannot be read.
               {"file; LIST 1; DEFAULT " + file + "; DEFAULT no/file; DEFAULT " + file,
                {"DEFAULT no/file", "DEFAULT " + file},
                file + ";no/file;" + file + ";"}};
  for (const auto& c : cases) {
    SCOPED_TRACE(c.parameter);
    const Messages messages;
    QXInterface root;
    EXPECT_TRUE(QXConfigure(root, Describe("-x " + c.parameter).c_str()));
    std::string told, kept;
    for (const std::string& line : c.bad)
      told += "Problem parsing interface configuration file or parameter -x\n  line :   !" + line +
              "\n";
    EXPECT_EQ(messages.At(QXErrorLevel::Error), told);
    for (const std::string& text : All(root.GetParameter("-x")->GetStringDefaults()))
      kept += text + ";";
    EXPECT_EQ(kept, c.kept);
  }
}

TEST(QXConfigure, WarnsOfADefaultThatIsNotLegalAndKeepsIt) {
  Messages messages;
  QXInterface root(Describe("-x int; DEFAULT 7; LEGAL_RANGE 1 3").c_str());
  EXPECT_EQ(messages.At(QXErrorLevel::Warning),
            "!DEFAULT value of 7 is not a legal setting for parameter -x\n");
  EXPECT_TRUE(root.GetParameter("-x")->GetHasDefault());
  messages.Clear();
  QXInterface other(Describe("-x int; VISIBILITY Low").c_str());
  EXPECT_EQ(messages.At(QXErrorLevel::Error), "Unknown keyword, Low, passed to !VISIBILITY\n");
}

TEST(QXConfigure, RefusesEndlessNesting) {
  const Messages messages;
  std::string text;
  for (int i = 0; i < 1000; ++i) text += "!CATEGORY a\n";
  QXInterface root;
  QXConfigure(root, text.c_str());
  EXPECT_TRUE(messages.HasMessagesAtLevel(QXErrorLevel::Warning));
  EXPECT_EQ(All(root.GetInterfaces(true)).size(), 128u);
}

TEST(QXConfigure, QuotesDefaultsWithBlanksAndSkipsWhatHasNoText) {
  struct Pointer : QXIntParameter {
    using QXIntParameter::QXIntParameter;
    std::string ClassID() const override { return "Pointer"; }
    QXParameter* CreateCopy() const override { return new Pointer(*this); }
  };
  QXInterface root;
  root.AddParameter(Pointer("-p"));
  QXStringParameter s("-s", "a b");
  s.AddDefault("");
  s.AddDefault("\"q\"");
  root.AddParameter(s);
  EXPECT_EQ(Written(root),
            "!PARAMETER -s 0\n  !TYPE string\n  !LIST false\n  !DEFAULT \"a b\"\n"
            "  !DEFAULT \"q\"\n  !REQUIRED false\n  !OUTPUT false\n  !SIMPLE false\n!END\n");
}

// ---- Requirements ----

bool HasRequired(const QXInterface& interface, const std::string& requirements) {
  return QXHasRequired(interface, reinterpret_cast<const unsigned char*>(requirements.c_str()),
                       QXErrorLevel::Warning);
}

TEST(QXHasRequired, ReportsEveryMissingParameter) {
  const Messages messages;
  QXInterface root(
      Describe("-a int; REQUIRED 1\n-b int; REQUIRED 1; DEFAULT 1\n-c int; REQUIRED 1").c_str());
  EXPECT_FALSE(QXHasRequired(root, nullptr, QXErrorLevel::Info));
  EXPECT_EQ(messages.At(QXErrorLevel::Info),
            "Missing required parameter -a\nMissing required parameter -c\n");
  EXPECT_FALSE(HasRequired(root, "!REQUIREMENT\n!OPTION -b\n!END"));
  root.DeleteParameter(*root.GetParameter("-a"));
  root.DeleteParameter(*root.GetParameter("-c"));
  EXPECT_TRUE(QXHasRequired(root, nullptr, QXErrorLevel::Info));
}

TEST(QXHasRequired, WantsOneOptionOfEveryBlock) {
  QXInterface root(Describe("-in string; ALIAS -i\n-n int; DEFAULT 5\n-out string").c_str());
  root.GetParameter("-in")->SetStringValue("File");
  ASSERT_TRUE(root.GetParameter("-in")->Load());
  // A default counts; numbers are compared as numbers.
  for (const auto& [options, answer] : Sessions(R"($ !OPTION -in -n -> met
$ !OPTION -IN -> met
$ !OPTION -i !-out -> met
$ !OPTION -in -out -> not
$ !OPTION -out/!OPTION -n -> met
$ !OPTION -n 5 -in File -> met
$ !OPTION -n  05 -> met
$ !OPTION -in file -> not
$ !OPTION -n 6 -> not
$ !OPTION !-n 6 -> met
$ !OPTION !-n 5 -> not
$ !OPTION and !well -in -> met
$ !OPTION -> met
$ words/# words -> not
$ -> not
)")) {
    SCOPED_TRACE(options);
    const QXPushTestHandler quiet;
    std::string block = "# first\n\n!REQUIREMENT of any kind\n" + options;
    std::replace(block.begin(), block.end(), '/', '\n');
    EXPECT_EQ(HasRequired(root, block), answer == "met\n");
    EXPECT_EQ(HasRequired(root, block + "\n!END\n!REQUIREMENT\n!OPTION -n\n!END"),
              answer == "met\n");
  }
}

TEST(QXHasRequired, TellsWhatIsMissingOrWrong) {
  const struct {
    const char* text;
    unsigned level;
    const char* told;
  } cases[] = {{"!REQUIREMENT\n!ERROR_MSG x\n  Give\n\n# no\n  -n.\n!OPTION -n\n!END\nnever read",
                4, "Missing requirements:\n  Give\n\n  -n.\n\n"},
               {"!REQUIREMENT\n!OPTION !-n\n!END\n!OPTION -n", 4,
                "HasRequired, Problem parsing requirement\n line !OPTION -n\n"},
               {"!REQUIREMENT\n!OPTION !-n\n!OPTION -n x\n!OPTION -n -\n!END", 4,
                "HasRequired.  Problem parsing !OPTION\n line : !OPTION -n -\n"},
               {"!REQUIREMENT\n!OPTION !-n\n!OPTION !-m\n!END", 5,
                "HasRequired.  Unknown key -m in !OPTION\n line : !OPTION !-m\n"}};
  for (const auto& c : cases) {
    const QXInterface root(Describe("-n int").c_str());
    const Messages messages;
    EXPECT_FALSE(HasRequired(root, c.text)) << c.text;
    EXPECT_EQ(messages.At(c.level), c.told);
  }
}

}  // namespace
