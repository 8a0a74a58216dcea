// Configuration texts and requirement texts.

#include "interface/support.h"

using namespace QXSystem;

namespace {

std::string Written(const QXInterface& interface) {
  QXPlatform::qxosstream out;
  EXPECT_TRUE(QXWriteInterfaceConfigurationFile(interface, out));
  return out.str();
}

// "/" stands for a line end.
const std::string Everything = Lines(R"(# A comment
!BRIEF   All   of it/!DETAIL/   kept as it is/# this too/
!CATEGORY "My Things" 3
  !BRIEF Things  of mine
  !PARAMETER	-mode -7 ignored
    !DEFAULT fast/# Numbers and names take turns
    !LEGAL_VALUE 3/!LEGAL_VALUE fast/!LEGAL_VALUE 1/!LEGAL_VALUE Slow/!DEFAULT 1
    !ILLEGAL_VALUE 2/!LEGAL_RANGE 7 inf/!ILLEGAL_RANGE 9 11/!ALIAS -m/!ALIAS --mode/!TYPE const
    !LIST yes/!REQUIRED T/!SIMPLE false/!KEYLESS 2/!INPUT 4/!OUTPUT on/!BRIEF How   to do it
    !ELEMENT   a  b	c  /!COMMAND d/!DETAIL ignored
    four
      six

	tab
    !BOGUS no keyword, so detail
    !VISIBILITY SIMPLE
  !END
  !PARAMETER -hidden/!TYPE string/!VISIBILITY Hidden/!END words
  !CATEGORY inner/!BRIEF/!END
!END
)");

const std::string EverythingWritten = Lines(R"(!CATEGORY "My Things"  3
  !BRIEF Things of mine 
!PARAMETER -mode -7
  !TYPE const/  !LIST true/  !ALIAS -m/  !ALIAS --mode/  !DEFAULT fast/  !DEFAULT 1
  !REQUIRED true/  !INPUT 4/  !OUTPUT true/  !SIMPLE true/  !KEYLESS 2
  !LEGAL_VALUE 3/  !LEGAL_VALUE fast/  !LEGAL_VALUE 1/  !LEGAL_VALUE Slow/  !ILLEGAL_VALUE 2
  !LEGAL_RANGE 7 inf/  !ILLEGAL_RANGE 9 11
  !ELEMENT a  b	c/  !COMMAND d/  !BRIEF How to do it /  !DETAIL
       four
         six
    
    tab
       !BOGUS no keyword, so detail
!END
!CATEGORY "inner"  0/!END

!END

)");

TEST(QXConfigure, BuildsATreeAndWritesItBack) {
  const QXPushQXThrowHasNoMessages silent;
  const QXInterface root(Everything.c_str());
  EXPECT_EQ(root.GetBrief(), "All of it ");
  EXPECT_EQ(All(root.GetDetail()), (Texts{"   kept as it is", "# this too", ""}));
  EXPECT_EQ(Names(root.GetParameters(true)), "-mode -hidden");
  EXPECT_EQ(Written(root), EverythingWritten);

  // What was written makes the same tree, hidden parameters apart.
  const QXInterface again(Written(root).c_str());
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
  ExpectSessions(R"($     four/      six/    four -> four|  six|four
$     four//  /      -> four||  | 
$ 	one/  two -> one| two
$   /  ->   | 
$ none/    four -> none|    four
)",
                 QXErrorLevel::Error, [](const std::string& block) {
                   const std::string text = "!PARAMETER -x/!TYPE int/!DETAIL/" + block;
                   const QXInterface root(Lines(text + "/!BRIEF x/!END").c_str());
                   EXPECT_EQ(root.GetParameter("-x")->GetBrief(), "x ");
                   return Outcome{true, Join(All(root.GetParameter("-x")->GetDetail()), "|")};
                 });
}

TEST(QXConfigure, ReopensCategories) {
  QXInterface root(
      "!CATEGORY a 5\n!CATEGORY b\n!END\n!END\n"
      "!CATEGORY c\n!CATEGORY \"a\"\n!BRIEF of c");  // c has none of that name
  EXPECT_TRUE(QXConfigure(root, "!CATEGORY b 4\n!BRIEF again\n!END\n!CATEGORY a\n!BRIEF first"));
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
    const Messages messages;
    QXInterface root;
    const bool good = QXConfigure(root, line.c_str());
    std::string got = messages.At(QXErrorLevel::Error);
    for (QXIter<QXInterface> c = root.GetInterfaces(false); c && good; ++c)
      got += c->GetName() + ";" + std::to_string(c->GetOrderPriority()) + "\n";
    EXPECT_EQ(got, (good ? "" : "Error parsing line\n" + line + "\n") + answer);
  }
}

TEST(QXConfigure, EndsAtFaultsOfStructure) {
  // The lines, with "/" for a line end, the messages, and the categories read.
  ExpectSessions(
      R"($ !CATEGORY -> Probable invalid keyword in interface configuration file /   line : !CATEGORY
$ !end -> Probable invalid keyword in interface configuration file /   line : !end
$ #/ stray line -> Configuring interface.  Unable to parse line /   line :  stray line
$ !PARAMETER -x/!TYPE int/ -> Configure.  !PARAMETER -x is unterminated (by !END)
$ !PARAMETER -x/!TYPE int 3/!END -> Unknown or unspecified type for parameter -x
$ !PARAMETER -x/!TYPE int/!LIST maybe/!END
configuring parameter -x : !LIST must be followed by true or false
$ !CATEGORY a/!X y/!CATEGORY ours/!END/words
Probable invalid keyword in interface configuration file
  line : !X y
Problem configuring subcategory
Configuring interface.  Unable to parse line
  line : words
a ours
$ /#/!END/never read
)",
      QXErrorLevel::Error, [](const std::string& lines) {
        QXInterface root;
        const bool good = QXConfigure(root, Lines(lines).c_str());
        return Outcome{good, Names(root.GetInterfaces(true))};
      });
  // The end of an inner category that is at fault closes the outer one.
  const Messages quiet;
  QXInterface root;
  EXPECT_TRUE(QXConfigure(root, "!CATEGORY a\n!X y\n!END\nnever read"));
}

TEST(QXConfigure, KeepsAParameterWithTheLinesThatAreGood) {
  // A parameter, the lines of it that are bad, and the defaults it has then. A name
  // is known when the lines behind it have been read. The text of a default stays
  // although its file cannot be read.
  for (const auto& [parameter, answer] : Sessions(
           R"($ int; DEFAULT 1; DEFAULT x; DEFAULT 2 -> 2 / DEFAULT x
$ int; DEFAULT a b; words; DEFAULT ->  / DEFAULT a b / words / DEFAULT
$ int; ALIAS; REQUIRED x; KEYLESS -1 ->  / ALIAS / REQUIRED x / KEYLESS -1
$ int; LEGAL_RANGE 1; ELEMENT; ILLEGAL_RANGE inf 1 ->  / LEGAL_RANGE 1 / ELEMENT / ILLEGAL_RANGE inf 1
$ bool; LEGAL_VALUE true; default 1 ->  / LEGAL_VALUE true / default 1
$ const; LIST 1; DEFAULT b; DEFAULT c; DEFAULT 1; LEGAL_VALUE 1; LEGAL_VALUE b -> b;1 / DEFAULT c
$ file; DEFAULT none -> none / DEFAULT none
$ stringExt; LIST 1; LEGAL_VALUE a; DEFAULT a; DEFAULT b; DEFAULT a -> a;b;a / DEFAULT b / DEFAULT a
)")) {
    SCOPED_TRACE(parameter);
    const Messages messages;
    QXInterface root;
    EXPECT_TRUE(QXConfigure(root, Describe("-x " + parameter).c_str()));
    std::string got = Join(All(root.GetParameter("-x")->GetStringDefaults()), ";") + "\n";
    std::istringstream log(messages.GetErrorLog());
    for (std::string line; std::getline(log, line);)
      if (line.find("  line :   !") == 0) got += line.substr(12) + "\n";
    EXPECT_EQ(got, answer);
  }
}

TEST(QXConfigure, WarnsOfWhatIsNotLegalAndKeepsIt) {
  ExpectSessions(
      R"($ int; DEFAULT 7; LEGAL_RANGE 1 3 -> !DEFAULT value of 7 is not a legal setting for parameter -x / 7
$ stringExt; DEFAULT no/file; LEGAL_VALUE a
-x file no/file does not exist or is empty.
!DEFAULT value of no/file is not a legal setting for parameter -x
no/file
)",
      QXErrorLevel::Warning, [](const std::string& parameter) {
        const QXInterface root(Describe("-x " + parameter).c_str());
        const QXParameter& x = *root.GetParameter("-x");
        return Outcome{false, x.GetHasDefault() ? x.GetStringDefault() : "none"};
      });
  const Messages messages;
  const QXInterface root(Describe("-x int; VISIBILITY Low").c_str());
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
  EXPECT_TRUE(s.AddDefault("") && s.AddDefault("\"q\""));
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
    const std::string block = Lines("# first//!REQUIREMENT of any kind/" + options);
    EXPECT_EQ(HasRequired(root, block), answer == "met\n");
    EXPECT_EQ(HasRequired(root, block + "\n!END\n!REQUIREMENT\n!OPTION -n"), answer == "met\n");
  }
}

TEST(QXHasRequired, TellsWhatIsMissingOrWrong) {
  // A text, with "/" for a line end.
  ExpectSessions(R"($ !REQUIREMENT/!ERROR_MSG x/  Give//# no/  -n./!OPTION -n/!END/never read
Missing requirements:
  Give

  -n.

$ !REQUIREMENT/!OPTION !-n/!END/!OPTION -n
HasRequired, Problem parsing requirement
 line !OPTION -n
$ !REQUIREMENT/!OPTION !-n/!OPTION -n x/!OPTION -n -/!END
HasRequired.  Problem parsing !OPTION
 line : !OPTION -n -
)",
                 QXErrorLevel::Warning, [](const std::string& text) {
                   const QXInterface root(Describe("-n int").c_str());
                   return Outcome{HasRequired(root, Lines(text))};
                 });
  Messages messages;
  const QXInterface root(
      Describe("-a int; REQUIRED 1\n-b int; REQUIRED 1; DEFAULT 1\n-c int; REQUIRED 1").c_str());
  EXPECT_FALSE(QXHasRequired(root, nullptr, QXErrorLevel::Info));
  EXPECT_EQ(messages.At(QXErrorLevel::Info),
            "Missing required parameter -a\nMissing required parameter -c\n");
  EXPECT_FALSE(HasRequired(root, "!REQUIREMENT\n!OPTION -b\n!END"));  // for the same reason
  messages.Clear();
  EXPECT_FALSE(HasRequired(QXInterface(), "!REQUIREMENT\n!OPTION\n!OPTION !-m\n!END"));
  EXPECT_EQ(messages.At(QXErrorLevel::Error),  // whatever the level
            "HasRequired.  Unknown key -m in !OPTION\n line : !OPTION !-m\n");
  EXPECT_TRUE(QXHasRequired(QXInterface(), nullptr, QXErrorLevel::Error));
}

}  // namespace
