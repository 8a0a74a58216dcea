// Configuration texts and requirement texts.
#include <gtest/gtest.h>

#include <qxsystem/core/errortest.h>
#include <qxsystem/interface/interface.h>
#include <qxsystem/interface/parameter_concrete.h>
#include <qxsystem/platform/ostream.h>

#include "interface/support.h"
#include "platform/temp_dir.h"

using namespace QXSystem;
using namespace std::string_literals;

namespace {

using Texts = std::vector<std::string>;

std::string Written(const QXInterface& interface) {
  QXPlatform::qxosstream out;
  EXPECT_TRUE(QXWriteInterfaceConfigurationFile(interface, out));
  return out.str();
}

// A parameter of the type, with more lines.
std::string Parameter(const std::string& name, const std::string& type, const std::string& more) {
  return "!PARAMETER " + name + "\n!TYPE " + type + "\n" + more + "!END\n";
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
!CATEGORY Empty
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
!CATEGORY "Empty"  0
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
    QXInterface root(Parameter("-x", "int", "!DETAIL\n"s + c.block + "!BRIEF x\n").c_str());
    EXPECT_EQ(All(root.GetParameter("-x")->GetDetail()), c.detail) << c.block;
    EXPECT_EQ(root.GetParameter("-x")->GetBrief(), "x ");
  }
}

TEST(QXConfigure, ReopensCategories) {
  QXInterface root(
      "!CATEGORY a 5\r\n!CATEGORY b\n!END\n!END\n"
      "!CATEGORY c\n!CATEGORY \"a\"\n!BRIEF of c\n!END\n!END\n"  // c has none of that name
      "!CATEGORY b 4\n!BRIEF again\n!END\n!CATEGORY a\n!BRIEF first");
  EXPECT_EQ(Names(root.GetInterfaces(true)), "a c b a");
  EXPECT_EQ(root.GetInterface("b")->GetBrief(), "again ");
  EXPECT_EQ(root.GetInterface("b")->GetOrderPriority(), 4);
  EXPECT_EQ(root.GetInterface("a")->GetBrief(), "first ");
  EXPECT_EQ(root.GetInterface("a")->GetOrderPriority(), 0);  // not repeated
  EXPECT_EQ(root.GetInterface("c")->GetInterface("a")->GetBrief(), "of c ");
}

TEST(QXConfigure, TakesTheNameOfACategoryInQuotesOrNot) {
  const struct {
    const char* line;
    const char* name;  // null when refused
    int priority;
    const char* message;
  } cases[] = {
      {"!CATEGORY name 3", "name", 3, ""},
      {"!CATEGORY name 3 4", "name", 3, ""},
      {"!CATEGORY name x", "name", 0, ""},
      {"!CATEGORY \"My  Things\" -3 ", "My  Things", -3, ""},
      {"!CATEGORY \"My Things\"", "My Things", 0, ""},
      {"!CATEGORY \"a\" x", "a", 0, ""},
      {"!CATEGORY \"a\" 1 2", nullptr, 0, "a single word does not follow the quoted category name"},
      {"!CATEGORY \"a\" \"b\"", nullptr, 0, "Invalid number of double quotes"},
      {"!CATEGORY \"a\"b\" 1", nullptr, 0, "Invalid number of double quotes"},
      {"!CATEGORY \"a 1", nullptr, 0, "Invalid number of double quotes"},
      {"!CATEGORY \"\" 3", nullptr, 0, "too many quotes"}};
  for (const auto& c : cases) {
    SCOPED_TRACE(c.line);
    QXPushSimpleQXThrowTester reports;
    QXThrow.SetStrict(false);
    QXInterface root;
    EXPECT_EQ(QXConfigure(root, c.line), c.name != nullptr);
    EXPECT_EQ(reports.GetErrorLog(),
              c.name ? "" : "level = 5\nError parsing line\n"s + c.line + "\n" + c.message + "\n");
    const QXIter<QXInterface> category = root.GetInterfaces(false);
    ASSERT_EQ(static_cast<bool>(category), c.name != nullptr);
    if (!category) continue;
    EXPECT_EQ(category->GetName(), c.name);
    EXPECT_EQ(category->GetOrderPriority(), c.priority);
  }
}

TEST(QXConfigure, EndsAtFaultsOfStructure) {
  const struct {
    std::string text;
    bool good;
    const char* messages;
  } cases[] = {
      {"!CATEGORY", false,
       "Probable invalid keyword in interface configuration file\n  line : !CATEGORY\n"},
      {"!end\n", false,
       "Probable invalid keyword in interface configuration file\n  line : !end\n"},
      {"\t stray line", false,
       "Configuring interface.  Unable to parse line\n  line : \t stray line\n"},
      {"!PARAMETER -x\n!TYPE int\n", false,
       "Configure.  !PARAMETER -x is unterminated (by !END)\n"},
      {"!PARAMETER -x\n!TYPE int 3\n!END", false, "Unknown or unspecified type for parameter -x\n"},
      {"!PARAMETER -x\n!TYPE int\n!LIST maybe\n!END", false,
       "configuring parameter -x : !LIST must be followed by true or false\n"},
      {"!CATEGORY a\n!X y\n!BRIEF ours\n!END\n!X z\n", true,  // the inner end closes the outer one
       "Probable invalid keyword in interface configuration file\n  line : !X y\n"
       "Problem configuring subcategory\n"},
      {"\n#\n!END\nnever read", true, ""},
      {"", true, ""}};
  for (const auto& c : cases) {
    SCOPED_TRACE(c.text);
    QXPushSimpleQXThrowTester reports;
    QXThrow.SetStrict(false);
    QXInterface root;
    EXPECT_EQ(QXConfigure(root, c.text.c_str()), c.good);
    EXPECT_EQ(reports.GetErrorLog(), *c.messages ? "level = 5\n"s + c.messages : "");
  }
  QXInterface root;
  EXPECT_TRUE(QXConfigure(root, static_cast<const char*>(nullptr)));
}

TEST(QXConfigure, KeepsAParameterWithTheLinesThatAreGood) {
  const TempDir dir;
  const std::string file = dir.Write("file", "x");
  const struct {
    const char* type;
    std::string lines;
    Texts bad;
    std::string kept;  // as written, between the types and "!REQUIRED"
  } cases[] = {
      {"int", "!DEFAULT 1\n!DEFAULT x\n!DEFAULT 2\n", {"!DEFAULT x"}, "  !DEFAULT 2\n"},
      {"int", "!DEFAULT a b\nwords\n!DEFAULT\n", {"!DEFAULT a b", "words", "!DEFAULT"}, ""},
      {"int",
       "!ALIAS\n!REQUIRED x\n!KEYLESS -1\n!LEGAL_RANGE 1\n!ELEMENT\n!ILLEGAL_RANGE inf 1\n",
       {"!ALIAS", "!REQUIRED x", "!KEYLESS -1", "!LEGAL_RANGE 1", "!ELEMENT",
        "!ILLEGAL_RANGE inf 1"},
       ""},
      {"bool", "!LEGAL_VALUE true\n!default 1\n", {"!LEGAL_VALUE true", "!default 1"}, ""},
      {"const",
       "!LIST 1\n!DEFAULT b\n!DEFAULT c\n!DEFAULT 1\n!LEGAL_VALUE 1\n!LEGAL_VALUE b\n",
       {"!DEFAULT c"},
       "  !DEFAULT b\n  !DEFAULT 1\n"},
      // The text of a default stays although its file cannot be read.
      {"file",
       "!LIST 1\n!DEFAULT " + file + "\n!DEFAULT no/file\n!DEFAULT " + file + "\n",
       {"!DEFAULT no/file", "!DEFAULT " + file},
       "  !DEFAULT " + file + "\n  !DEFAULT no/file\n  !DEFAULT " + file + "\n"}};
  for (const auto& c : cases) {
    SCOPED_TRACE(c.lines);
    QXPushSimpleQXThrowTester reports;
    QXThrow.SetStrict(false);
    QXInterface root;
    EXPECT_TRUE(QXConfigure(root, Parameter("-x", c.type, c.lines).c_str()));
    std::string messages = "level = 5\n";
    for (const std::string& line : c.bad)
      messages +=
          "Problem parsing interface configuration file or parameter -x\n  line : " + line + "\n";
    EXPECT_EQ(reports.GetErrorLog(), messages);
    std::string written = Written(root);
    const std::size_t from = written.find('\n', written.find("!LIST")) + 1;
    EXPECT_EQ(written.substr(from, written.find("  !REQUIRED") - from), c.kept);
  }
}

TEST(QXConfigure, WarnsOfADefaultThatIsNotLegalAndKeepsIt) {
  QXPushSimpleQXThrowTester reports;
  QXInterface root(Parameter("-x", "int", "!DEFAULT 7\n!LEGAL_RANGE 1 3\n").c_str());
  EXPECT_EQ(reports.GetErrorLog(),
            "level = 4\n!DEFAULT value of 7 is not a legal setting for parameter -x\n");
  EXPECT_TRUE(root.GetParameter("-x")->GetHasDefault());
  QXThrow.SetStrict(false);
  reports.Clear();
  QXInterface other(Parameter("-x", "int", "!VISIBILITY Low\n").c_str());
  EXPECT_EQ(reports.GetErrorLog(), "level = 5\nUnknown keyword, Low, passed to !VISIBILITY\n");
}

TEST(QXConfigure, RefusesEndlessNesting) {
  QXPushSimpleQXThrowTester reports;
  QXThrow.SetStrict(false);
  std::string text;
  for (int i = 0; i < 1000; ++i) text += "!CATEGORY a\n";
  QXInterface root;
  QXConfigure(root, text.c_str());
  EXPECT_TRUE(reports.HasMessagesAtLevel(QXErrorLevel::Warning));
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
  QXPushSimpleQXThrowTester reports;
  QXInterface root((Parameter("-a", "int", "!REQUIRED true\n") +
                    Parameter("-b", "int", "!REQUIRED true\n!DEFAULT 1\n") +
                    Parameter("-c", "int", "!REQUIRED true\n"))
                       .c_str());
  EXPECT_FALSE(QXHasRequired(root, nullptr, QXErrorLevel::Info));
  EXPECT_EQ(reports.GetErrorLog(),
            "level = 3\nMissing required parameter -a\nMissing required parameter -c\n");
  EXPECT_FALSE(HasRequired(root, "!REQUIREMENT\n!OPTION -b\n!END"));
  root.DeleteParameter(*root.GetParameter("-a"));
  root.DeleteParameter(*root.GetParameter("-c"));
  EXPECT_TRUE(QXHasRequired(root, nullptr, QXErrorLevel::Info));
}

TEST(QXHasRequired, WantsOneOptionOfEveryBlock) {
  QXInterface root((Parameter("-in", "string", "!ALIAS -i\n") +
                    Parameter("-n", "int", "!DEFAULT 5\n") + Parameter("-out", "string", ""))
                       .c_str());
  root.GetParameter("-in")->SetStringValue("File");
  ASSERT_TRUE(root.GetParameter("-in")->Load());

  const struct {
    const char* options;
    bool met;
  } cases[] = {{"!OPTION -in -n", true},  // a default counts
               {"!OPTION -IN", true},           {"!OPTION -i !-out", true},
               {"!OPTION -in -out", false},     {"!OPTION -out\n!OPTION -n", true},
               {"!OPTION -n 5 -in File", true}, {"!OPTION -n  05", true},  // compared as numbers
               {"!OPTION -in file", false},     {"!OPTION -n 6", false},
               {"!OPTION !-n 6", true},         {"!OPTION !-n 5", false},
               {"!OPTION and !well -in", true}, {"!OPTION", true},
               {"words\n# words", false},       {"", false}};
  for (const auto& c : cases) {
    const QXPushTestHandler quiet;
    const std::string block = "# first\n\n!REQUIREMENT of any kind\n"s + c.options;
    EXPECT_EQ(HasRequired(root, block), c.met) << c.options;
    EXPECT_EQ(HasRequired(root, block + "\n!END\n!REQUIREMENT\n!OPTION -n\n!END"), c.met);
  }
}

TEST(QXHasRequired, TellsWhatIsMissingOrWrong) {
  QXInterface root(Parameter("-n", "int", "").c_str());
  const struct {
    const char* text;
    const char* messages;
  } cases[] = {{"!REQUIREMENT\n!ERROR_MSG x\n  Give\n\n# no\n  -n.\n!OPTION -n\n!END\nnever read",
                "level = 4\nMissing requirements:\n  Give\n\n  -n.\n\n"},
               {"!REQUIREMENT\n!OPTION !-n\n!END\n!OPTION -n",
                "level = 4\nHasRequired, Problem parsing requirement\n line !OPTION -n\n"},
               {"!REQUIREMENT\n!OPTION !-n\n!OPTION -n x\n!OPTION -n -\n!END",
                "level = 4\nHasRequired.  Problem parsing !OPTION\n line : !OPTION -n -\n"},
               {"!REQUIREMENT\n!OPTION !-n\n!OPTION !-m\n!END",
                "level = 5\nHasRequired.  Unknown key -m in !OPTION\n line : !OPTION !-m\n"}};
  for (const auto& c : cases) {
    QXPushSimpleQXThrowTester reports;
    QXThrow.SetStrict(false);
    EXPECT_FALSE(HasRequired(root, c.text)) << c.text;
    EXPECT_EQ(reports.GetErrorLog(), c.messages);
  }
}

}  // namespace
