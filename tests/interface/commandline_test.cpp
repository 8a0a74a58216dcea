#include <qxsystem/interface/commandline.h>

#include <stdlib.h>
#include <unistd.h>

#include <cstdlib>
#include <fstream>
#include <sstream>

#include <gtest/gtest.h>

#include <qxsystem/core/errortest.h>
#include <qxsystem/interface/files.h>
#include <qxsystem/interface/interface.h>
#include <qxsystem/interface/parameter_concrete.h>
#include <qxsystem/platform/ostream.h>

#include "interface/support.h"
#include "platform/temp_dir.h"

using namespace QXSystem;
using namespace std::string_literals;
using QXPlatform::qxosstream;
using QXPlatform::qxout;

namespace {

using Texts = std::vector<std::string>;

// argc and argv of a program.
class Arguments {
public:
  Arguments(Texts words, const std::string& program = "prog") : words_(std::move(words)) {
    words_.insert(words_.begin(), program);
    for (std::string& word : words_) argv_.push_back(word.data());
    argv_.push_back(nullptr);
  }
  int argc() const { return static_cast<int>(words_.size()); }
  char** argv() { return argv_.data(); }

private:
  Texts words_;
  std::vector<char*> argv_;
};

// "-l 1 2" as it would be split by a shell without quotes.
Texts Split(const std::string& line) {
  std::istringstream in(line);
  return {std::istream_iterator<std::string>(in), {}};
}

bool Parse(QXInterface& interface, const Texts& words, const char* requirements = nullptr) {
  Arguments a(words);
  return QXParseCommandLine(interface, a.argc(), a.argv(),
                            reinterpret_cast<const unsigned char*>(requirements),
                            QXErrorLevel::Warning, /*checkHelp=*/false);
}

// The values of all parameters that have some: "-n=3 -l=1;2".
std::string Values(const QXInterface& interface) {
  std::string all;
  for (QXIter<QXParameter> p = interface.GetParameters(true); p; ++p) {
    std::string values;
    for (const std::string& text : All(p->GetStringValues()))
      values += (values.empty() ? "" : ";") + text;
    if (p->GetHasValue()) all += (all.empty() ? "" : " ") + p->GetName() + "=" + values;
  }
  return all;
}

constexpr char Text[] = R"(!PARAMETER -in
  !TYPE string
  !KEYLESS 1
  !ALIAS -i
!END
!PARAMETER -n
  !TYPE int
  !KEYLESS 2
  !DEFAULT 5
!END
!PARAMETER -out
  !TYPE string
  !KEYLESS 3
!END
!PARAMETER -flag
  !TYPE bool
!END
!PARAMETER -l
  !TYPE int
  !LIST true
  !ILLEGAL_VALUE 13
!END
!PARAMETER -s
  !TYPE string
  !LIST true
!END
!PARAMETER -m
  !TYPE const
  !LEGAL_VALUE 1
  !LEGAL_VALUE fast
  !LEGAL_RANGE 4 5
  !ILLEGAL_VALUE 7
  !ILLEGAL_RANGE 8 9
!END
!PARAMETER -bl
  !TYPE bool
  !LIST true
!END
!PARAMETER -file
  !TYPE file
!END
!PARAMETER -param
  !TYPE param_file
  !LIST true
!END
)";

TEST(QXParseCommandLine, AssignsKeysThenArgumentsWithoutKey) {
  const struct {
    const char* words;
    const char* values;
  } cases[] = {{"", ""},
               {"-IN x -N 3", "-in=x -n=3"},
               {"-i x", "-in=x"},
               {"-in -n -n 4", "-in=-n -n=4"},  // the next argument is the value
               {"-flag", "-flag=true"},
               {"-flag -n 3", "-n=3 -flag=true"},
               {"-flag 0 x", "-in=x -flag=0"},
               {"-flag No", "-flag=No"},
               {"-flag other", "-in=other -flag=true"},
               {"-l 1 2 3 -flag", "-flag=true -l=1;2;3"},
               {"-l 1 2 x", "-in=x -l=1;2"},
               {"-l 1,2 3,4", "-in=3,4 -l=1;2"},  // only behind the key
               {"-l 1 -l 2,+3 4", "-l=2;3;4"},    // a comma list replaces
               {"-l 1 -l 2 -l 3", "-l=1;2;3"},
               {"-s a,b -x --version --unset-n c -n 3", "-n=3 -s=a,b;-x;--version;--unset-n;c"},
               {"-bl t 0 -bl 1,0", "-in=1,0 -bl=t;0;true"},
               {"-m FAST", "-m=FAST"},
               {"x 3 y", "-in=x -n=3 -out=y"},
               {"-n 3 x y", "-in=x -n=3 -out=y"},
               {"-n 7 --unset-N x --unset", "-in=x -out=--unset"},
               {"--unset-i -in x", ""},
               {"--unsetn", "-in=--unsetn"}};
  for (const auto& c : cases) {
    SCOPED_TRACE(c.words);
    const QXPushQXThrowHasNoMessages silent;
    QXInterface itf(Text);
    EXPECT_TRUE(Parse(itf, Split(c.words)));
    EXPECT_EQ(Values(itf), c.values);
  }
}

TEST(QXParseCommandLine, StopsAtTheFirstKindOfFault) {
  const struct {
    const char* words;
    const char* messages;
    const char* values;
  } cases[] = {
      {"a b -n 3", "Unknown parameter, a, on command line\nUnknown parameter, b, on command line\n",
       ""},
      {"-n 3 -N 4", "-N is specified twice on the command line\n", "-n=3"},
      {"-flag -in", "Parameter -in on the command line is not followed by a value\n", "-flag=true"},
      {"-L 13",
       "13 is not a legal setting for parameter -L (specified on command line)\n"
       "  Illegal value : 13\n",
       ""},
      {"-l 1,13",
       "1,13 is not a legal setting for parameter -l (specified on command line)\n"
       "  Illegal value : 13\n",
       ""},
      {"-m 8",
       "8 is not a legal setting for parameter -m (specified on command line)\n"
       "  Legal value : fast\n  Legal Range : 4 to 5\n  Illegal value : 7\n"
       "  Illegal Range : 8 to 9\n",
       ""},
      {"-file no/file", "Problem loading parameter -file with setting no/file\n", ""},
      {"-param x y", "Problem loading parameter -param with setting xy\n", ""},
      {"a 1 c d e",
       "Unknown argument d on command line (too many arguments to be keyless)\n"
       "Unknown argument e on command line (too many arguments to be keyless)\n",
       ""},
      {"-n 1 a b c",
       "Unknown argument c on command line.  There are too many arguments to be keyless (one or "
       "more keyless parameters are explicitly specified)\n",
       "-in=a -n=1 -out=b"},
      {"a b",
       "b is not a legal setting for the keyless parameter -n specified on the command line\n",
       "-in=a"}};
  for (const auto& c : cases) {
    SCOPED_TRACE(c.words);
    QXPushSimpleQXThrowTester reports;
    QXInterface itf(Text);
    EXPECT_FALSE(Parse(itf, Split(c.words)));
    EXPECT_EQ(reports.GetErrorLog(), "level = 4\n"s + c.messages);
    EXPECT_EQ(Values(itf), c.values);
  }
  QXPushSimpleQXThrowTester reports;
  QXInterface itf("!PARAMETER -n\n!TYPE int\n!END");
  EXPECT_FALSE(Parse(itf, {"a", ""}));  // the empty argument is the key of nothing
  EXPECT_EQ(reports.GetErrorLog(),
            "level = 4\nUnknown argument on command line a\nUnknown argument on command line \n");
}

TEST(QXParseCommandLine, GivesTheRestToAKeylessList) {
  const TempDir dir;
  QXInterface itf(
      "!PARAMETER -a\n!TYPE int\n!KEYLESS 1\n!END\n"
      "!PARAMETER -l\n!TYPE file\n!LIST true\n!KEYLESS 2\n!END");
  const std::string file = dir.Write("file", "x"), none = dir.Path("none");
  {
    QXInterface good(itf);
    EXPECT_TRUE(Parse(good, {"-l", file, "-a", "1", file, file}));
    EXPECT_EQ(Values(good), "-a=1 -l=" + file + ";" + file + ";" + file);
  }
  QXPushSimpleQXThrowTester reports;
  EXPECT_FALSE(Parse(itf, {"1", file, none, file}));
  EXPECT_EQ(reports.GetErrorLog(),
            "level = 4\nProblem loading keyless parameter -l with setting " + none + "\n");
}

// Counts how often a text is made a value.
struct Counting : QXStringParameter {
  using QXStringParameter::QXStringParameter;
  bool GetTypedValue(std::string& out, const std::string& text) const override {
    ++count;
    return QXStringParameter::GetTypedValue(out, text);
  }
  QXParameter* CreateCopy() const override { return new Counting(*this); }
  static inline unsigned count = 0;
};

TEST(QXParseCommandLine, ConvertsAListInLinearTime) {
  QXInterface itf;
  QXParameter& list = *itf.AddParameter(Counting("-l"));
  list.SetIsList(true);
  list.SetKeyless(1);
  const Texts words(1000, "word");
  EXPECT_TRUE(Parse(itf, words));
  list.ClearValues();
  qxosstream lines;
  lines << "-l";
  for (const std::string& word : words) lines << " " << word;
  QXPlatform::qxisstream in(lines.str());
  EXPECT_TRUE(QXParseParameterFile(itf, in, false, QXErrorLevel::Warning));
  EXPECT_EQ(All(list.GetStringValues()).size(), 1000u);
  EXPECT_LT(Counting::count, 10000u);
}

TEST(QXParseCommandLine, ReadsParameterFilesLast) {
  const TempDir dir;
  const std::string one = dir.Write("1", "-n 3\n-in one\n-param nowhere\n-out file\n");
  const std::string two = dir.Write("2", "-in two\n-flag on\n-l 1 2\n-s a\n");
  QXInterface itf(Text);
  EXPECT_TRUE(Parse(itf, {"-param", one, two, "-l", "7", "--unset-n", "--unset-s"}));
  EXPECT_EQ(Values(itf), "-in=one -out=file -flag=on -l=7 -param=" + one + ";" + two);
  int n = 0;
  EXPECT_TRUE(QXGetSetting(itf, "-n", n) && n == 5);  // the default shows through

  QXPushSimpleQXThrowTester reports;
  QXInterface bad(Text);
  EXPECT_FALSE(Parse(bad, {"-param", dir.Write("3", "-x 1\n-in x\n")}));
  EXPECT_EQ(reports.GetErrorLog(),
            "level = 4\nUnknown parameter -x in parameter file (begin comment lines with #)\n"
            "Problem parsing parameter file\n");
  EXPECT_EQ(bad.GetParameter("-in")->GetStringValue(), "x");
}

TEST(QXParseCommandLine, JudgesRequirementsLast) {
  constexpr char requirement[] = "!REQUIREMENT\n!OPTION -out\n!ERROR_MSG\nNo out\n!END\n";
  QXInterface itf(Text);
  EXPECT_TRUE(Parse(itf, {"-out", "x"}, requirement));
  QXPushSimpleQXThrowTester reports;
  EXPECT_FALSE(Parse(itf, {"--unset-out"}, requirement));
  EXPECT_EQ(reports.GetErrorLog(), "level = 4\nMissing requirements:\nNo out\n\n");
}

TEST(QXParseCommandLine, WantsKeylessParametersToCountFromOne) {
  const struct {
    const char* numbers;  // of -a -b -c, "l" for a list
    const char* messages;
  } cases[] = {
      {"0 0 0", ""},
      {"3 1 2", ""},
      {"3l 1 2", ""},
      {"2 3 0", "Missing keyless parameter 1, have keyless parameter 2 (-a)\n"},
      {"1 3 0", "Missing keyless parameter 2, have keyless parameter 1 (-a) and 3 (-b)\n"},
      {"1 1 2", "Missing keyless parameter 2, have keyless parameter 1 (-a) and 1 (-b)\n"},
      {"1l 2 0l",
       "If a keyless parameter is also a list type parameter it must be the last keyless entry.\n"
       "Parameter -a is violating this rule (-b is after it)\n"}};
  for (const auto& c : cases) {
    SCOPED_TRACE(c.numbers);
    QXInterface itf;
    char name = 'a';
    for (const std::string& number : Split(c.numbers)) {
      QXStringParameter p("-"s + name++);
      p.SetKeyless(static_cast<unsigned>(number[0] - '0'));
      p.SetIsList(number.size() > 1);
      itf.AddParameter(p);
    }
    QXPushSimpleQXThrowTester reports;
    QXThrow.SetStrict(false);
    EXPECT_EQ(Parse(itf, {}), !*c.messages);
    EXPECT_EQ(reports.GetErrorLog(), *c.messages ? "level = 5\n"s + c.messages : "");
  }
}

// ---- Ends of the process ----

void Construct(const std::string& text, const Texts& words) {
  Arguments a(words);
  const QXInterface itf(text.c_str(), a.argc(), a.argv());
}

TEST(QXInterfaceWithArguments, EndsTheProcessAsItMust) {
  const std::string text = Text + "!PARAMETER -r\n!TYPE int\n!REQUIRED true\n!BRIEF Needed\n!END"s;
  EXPECT_EXIT(Construct(text, {}), testing::ExitedWithCode(0),
              "^No arguments specified on the command line\nRequired parameters:\n"
              "    -r : Needed \nFor more help type:\n  prog --help\n$");
  EXPECT_EXIT(Construct(text, {"--help"}), testing::ExitedWithCode(0),
              "^Simple parameter list\nAdditional help functions:\n");
  EXPECT_EXIT(Construct(text, {"-n", "x"}), testing::ExitedWithCode(1),
              "^Fatal: x is not a legal setting for parameter -n");
  EXPECT_EXIT(Construct(text, {"x"}), testing::ExitedWithCode(1),
              "^Fatal: Missing required parameter -r\n$");
  EXPECT_EXIT((QXThrow.SetStrict(false), Construct(text, {"x"})), testing::ExitedWithCode(1),
              "^Warning: Missing required parameter -r\n$");
  EXPECT_EXIT((Construct(text, {"-r", "1"}), std::exit(7)), testing::ExitedWithCode(7), "^$");
  EXPECT_EXIT((Construct("!X", {"-r", "1"}), std::exit(7)), testing::ExitedWithCode(1),
              "^Fatal: Probable invalid keyword");
}

// Runs in a child whose standard output is its standard error.
void ParseVersion(const char* version, const Texts& words, bool light) {
  ::dup2(2, 1);
  Arguments a(words);
  QXInterface itf(light ? "" : Text);
  const bool good =
      light ? QXParseCommandLineLW(itf, version, a.argc(), a.argv(), nullptr, QXErrorLevel::Warning)
            : QXParseCommandLine(itf, version, a.argc(), a.argv(), nullptr, QXErrorLevel::Warning,
                                 false);
  std::exit(good ? 7 : 8);
}

TEST(QXParseCommandLine, PrintsTheVersionWhereItIsReached) {
  const auto zero = testing::ExitedWithCode(0);
  EXPECT_EXIT(ParseVersion("1.2", {"-n", "3", "--version", "-z"}, false), zero, "^1\\.2\n$");
  EXPECT_EXIT(ParseVersion(nullptr, {"x", "--version"}, false), zero, "^version not set\n$");
  EXPECT_EXIT(ParseVersion("1.2", {"--version"}, true), zero, "^1\\.2\n$");
  EXPECT_EXIT(ParseVersion("1.2", {"-n", "x", "--version"}, false), testing::ExitedWithCode(8), "");
  EXPECT_EXIT(ParseVersion("1.2", {"-s", "--version"}, false), testing::ExitedWithCode(7), "^$");
  EXPECT_EXIT(ParseVersion("1.2", {"--Version"}, false), testing::ExitedWithCode(7), "^$");
}

// ---- Help ----

struct Answer {
  bool handled;
  std::string out;     // what went to the stream
  std::string output;  // what went to standard output
};

Answer Ask(const std::string& words, bool exitOnEmpty = true, const std::string& program = "prog",
           const char* text = Text) {
  const QXInterface itf(text);
  Arguments a(Split(words), program);
  qxosstream out;
  testing::internal::CaptureStdout();
  const bool handled = QXCheckHelp(itf, a.argc(), a.argv(), exitOnEmpty, out);
  qxout.flush();
  return {handled, out.str(), testing::internal::GetCapturedStdout()};
}

TEST(QXCheckHelp, AnswersByTheShapeOfTheCommandLine) {
  ::unsetenv("COLUMNS");
  const struct {
    const char* words;
    bool handled;
    const char* out;     // its beginning
    const char* output;  // its beginning
  } cases[] = {{"", false, "", ""},
               {"-n 3", false, "", ""},
               {"-n --help", false, "", ""},
               {"--Help", false, "", ""},
               {"--help", true,
                "Simple parameter list\nAdditional help functions:\n  prog --help simple  ", ""},
               {"--help simple", true, "Simple parameter list\n", ""},
               {"--help all", true, "Complete parameter list\n    -bl\n    -file\n", ""},
               {"--help all 120", true, "Complete parameter list\n", ""},
               {"--help all 120 x", false, "", ""},
               {"--help hidden", true, "Power user parameter list\n", ""},
               {"--help poweruser", true, "Power user parameter list\n", ""},
               {"--help defaults", true, "#Default settings\n#-bl : (no default setting)\n", ""},
               {"--help versions", true, "qxtoolkit QXSystem ", ""},
               {"--help -FLAG", true, "Contents of parameter -flag  \n    Type : bool\n", ""},
               {"--help flag x", true, "Contents of parameter -flag  \n", ""},
               {"--help i", true, "Contents of parameter -in  \n    Aliases :   -i\n", ""},
               {"--help nothing", true, "Unable to find help for 'nothing'\n", ""},
               {"--itf", true, "", "#BeginInterface#\n!PARAMETER -bl 0\n"},
               {"--itf x", false, "", ""},
               {"--json", true, "", "{\n\"name\" : \"\",\n"},
               {"--json x", false, "", ""},
               {"--latex n", true, "", "\\item[\\code{-n}]"},
               {"--latex -i", true, "", "\\item[\\code{-in}]"},
               {"--latex N", true, "", ""},
               {"--latex", false, "", ""}};
  for (const auto& c : cases) {
    SCOPED_TRACE(c.words);
    const Answer answer = Ask(c.words);
    EXPECT_EQ(answer.handled, c.handled);
    EXPECT_EQ(answer.out.substr(0, std::strlen(c.out)), c.out);
    EXPECT_EQ(answer.output.substr(0, std::strlen(c.output)), c.output);
    EXPECT_EQ(answer.out.empty(), !*c.out);
    EXPECT_EQ(answer.output.empty(), !*c.output);
  }
  EXPECT_NE(Ask("--itf").output.find("!END\n#EndInterface#\n"), std::string::npos);
  EXPECT_NE(Ask("--help").out.find("\n  prog --help versions    : List the toolkits and versions "
                                   "used in the application\n"),
            std::string::npos);
}

TEST(QXCheckHelp, AnswersNoArgumentsWhereSomethingIsRequired) {
  constexpr char text[] = R"(!BRIEF Does it
!CATEGORY c
!PARAMETER -r
  !TYPE int
  !REQUIRED true
  !DEFAULT 1
!END)";
  EXPECT_EQ(Ask("", true, "prog", text).out,
            "No arguments specified on the command line\nprog : Does it \nRequired parameters:\n"
            "    -r\nFor more help type:\n  prog --help\n");
  EXPECT_FALSE(Ask("", false, "prog", text).handled);
  qxosstream out;
  EXPECT_FALSE(QXCheckHelp(QXInterface(), 0, nullptr, true, out));
}

TEST(QXCheckHelp, TakesItsWidthFromTheArgumentsOrTheEnvironment) {
  constexpr char text[] = "!PARAMETER -x\n!TYPE int\n!BRIEF a b c d e f g h\n!END";
  const auto lines = [&](const std::string& words) {
    const std::string out = Ask(words, true, "prog", text).out;
    return std::count(out.begin(), out.end(), '\n') - 2;  // title and empty line
  };
  ::unsetenv("COLUMNS");
  EXPECT_EQ(lines("--help all"), 1);
  EXPECT_EQ(lines("--help all 14"), 3);
  ::setenv("COLUMNS", "12", 1);
  EXPECT_EQ(lines("--help all"), 4);
  EXPECT_EQ(lines("--help all 14"), 3);
  EXPECT_EQ(lines("--help all x"), 4);
  EXPECT_EQ(lines("--help all 0"), 9);
  ::setenv("COLUMNS", "wide", 1);
  EXPECT_EQ(lines("--help all -1"), 1);
  ::unsetenv("COLUMNS");
}

TEST(QXCheckHelp, CreatesAPageBesideTheProgram) {
  const TempDir dir;
  const std::string program = dir.Path("prog"), page = program + "_help.html";
  EXPECT_EQ(Ask("--help html", true, program).out, "Creating '" + page + "'\n");
  std::ifstream file(page);
  std::string line;
  std::getline(file, line);
  EXPECT_EQ(line, "<html>");
  const std::string nowhere = dir.Path("none/prog");
  EXPECT_EQ(Ask("--help html", true, nowhere).out,
            "Unable to create file '" + nowhere + "_help.html'\n");
}

// ---- Switches of one letter ----

constexpr char Switches[] = R"(!PARAMETER -a
  !TYPE bool
  !DEFAULT false
  !ALIAS -x
!END
!PARAMETER -b
  !TYPE bool
  !DEFAULT false
!END
!PARAMETER -n
  !TYPE int
  !KEYLESS 1
  !ILLEGAL_VALUE 3
!END
!PARAMETER -l
  !TYPE int
  !KEYLESS 2
  !LIST true
  !DEFAULT 0
!END
)";

bool ParseLW(QXInterface& interface, const Texts& words) {
  Arguments a(words);
  return QXParseCommandLineLW(interface, a.argc(), a.argv(), nullptr, QXErrorLevel::Info);
}

TEST(QXParseCommandLineLW, TakesGroupsOfSwitchesThenArguments) {
  const struct {
    const char* words;
    const char* values;
    const char* messages;
  } cases[] = {
      {"", "", ""},
      {"-a", "-a=true", ""},
      {"-bXa -B 1 2 3", "-a=true -b=true -n=1 -l=2;3", ""},
      {"1 -4", "-n=1 -l=-4", ""},  // no switch any more
      {"- -a", "-a=true", " - is not a valid command line arg\n"},
      {"-az -z --", "-a=true",
       "Unknow switch -z (specified as part of group -az)\nUnknow switch -z\nUnknow switch --\n"},
      {"-n -an 5", "-a=true -n=5",
       "-n is a keyless parameter, do not specify it with a key\n"
       "-n is a keyless parameter, do not specify it with a key\n"},
      {"3 4", "-l=4", "Invalid command line argument 3\n"},
      {"1 x 2 y 3", "-n=1 -l=2;3",
       "Invalid command line argument x\nInvalid command line argument y\n"}};
  for (const auto& c : cases) {
    SCOPED_TRACE(c.words);
    QXPushSimpleQXThrowTester reports;
    QXInterface itf(Switches);
    EXPECT_EQ(ParseLW(itf, Split(c.words)), !*c.messages);
    EXPECT_EQ(reports.GetErrorLog(), *c.messages ? "level = 3\n"s + c.messages : "");
    EXPECT_EQ(Values(itf), c.values);
  }
  QXPushSimpleQXThrowTester reports;
  QXInterface itf(Switches);
  itf.GetParameter("-l")->SetIsList(false);
  EXPECT_FALSE(ParseLW(itf, {"1", "2", "3"}));
  itf.GetParameter("-l")->SetRequired(true);
  itf.GetParameter("-l")->ClearDefaults();
  itf.GetParameter("-l")->ClearValues();
  EXPECT_FALSE(ParseLW(itf, {"-a"}));
  EXPECT_EQ(reports.GetErrorLog(),
            "level = 3\nToo many arguments on the command line\nMissing required parameter -l\n");
}

TEST(QXParseCommandLineLW, WantsSwitchesThatAreFalse) {
  const struct {
    const char* lines;
    bool good;
    const char* messages;
  } cases[] = {
      {"!TYPE param_file\n!KEYLESS 1\n", true, " : does not support parameter files (-p)\n"},
      {"!TYPE string\n", false,
       " : \n All non-keyless parameter keys must be booleans (-p is not)\n"},
      {"!TYPE bool\n", false,
       " : bool parameters must have a default value of false (-p does not have a default "
       "value)\n"},
      {"!TYPE bool\n!DEFAULT t\n", false,
       " : bool parameters must have a default value of false (-p does has a default value of "
       "true)\n"},
      {"!TYPE bool\n!DEFAULT f\n!ALIAS -pp\n", false,
       " : \n non-keyless bool parameters must have a - followed by a single character as a key "
       "(an alias of -p, -pp, does not)\n"}};
  for (const auto& c : cases) {
    SCOPED_TRACE(c.lines);
    QXPushSimpleQXThrowTester reports;
    QXThrow.SetStrict(false);
    QXInterface itf(("!PARAMETER -p\n"s + c.lines + "!END\n").c_str());
    EXPECT_EQ(ParseLW(itf, {}), c.good);
    EXPECT_EQ(reports.GetErrorLog(), "level = 5\nParseCommandLineLW"s + c.messages);
  }
  QXPushSimpleQXThrowTester reports;
  QXThrow.SetStrict(false);
  QXInterface itf("!PARAMETER -long\n!TYPE bool\n!DEFAULT f\n!END");
  EXPECT_FALSE(ParseLW(itf, {"-long"}));  // taken as four switches all the same
  EXPECT_EQ(reports.NumMessagesAtLevel(QXErrorLevel::Error), 1u);
  EXPECT_EQ(reports.NumMessagesAtLevel(QXErrorLevel::Info), 4u);
}

}  // namespace
