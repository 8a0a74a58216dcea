#include <qxsystem/interface/commandline.h>

#include <stdlib.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <fstream>

#include <gtest/gtest.h>

#include <qxsystem/interface/files.h>
#include <qxsystem/interface/interface.h>
#include <qxsystem/interface/parameter_concrete.h>
#include <qxsystem/platform/ostream.h>

#include "interface/support.h"
#include "platform/temp_dir.h"

using namespace QXSystem;
using QXPlatform::qxosstream;
using QXPlatform::qxout;

namespace {

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

bool Parse(QXInterface& interface, const Texts& words, const char* requirements = nullptr) {
  Arguments a(words);
  return QXParseCommandLine(interface, a.argc(), a.argv(),
                            reinterpret_cast<const unsigned char*>(requirements),
                            QXErrorLevel::Warning, /*checkHelp=*/false);
}

bool ParseLW(QXInterface& interface, const Texts& words) {
  Arguments a(words);
  return QXParseCommandLineLW(interface, a.argc(), a.argv(), nullptr, QXErrorLevel::Warning);
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

// Parses each line of a table and compares the messages, and what is set then.
template <class Parser>
void ExpectSessions(const std::string& text, const char* table, const Parser& parse) {
  for (const auto& [words, answer] : Sessions(table)) {
    SCOPED_TRACE(words);
    const Messages messages;
    QXInterface itf(text.c_str());
    const bool good = parse(itf, Split(words));
    const std::string told = messages.At(QXErrorLevel::Warning);
    EXPECT_EQ(told + Values(itf) + "\n", answer);
    EXPECT_EQ(good, told.empty());
  }
}

const std::string Text = Describe(R"(-in string; KEYLESS 1; ALIAS -i
-n int; KEYLESS 2; DEFAULT 5
-out string; KEYLESS 3
-flag bool
-l int; LIST true; ILLEGAL_VALUE 13
-s string; LIST true
-m const; LEGAL_VALUE 1; LEGAL_VALUE fast; LEGAL_RANGE 4 5; ILLEGAL_VALUE 7; ILLEGAL_RANGE 8 9
-bl bool; LIST true
-file file
-param param_file; LIST true
)");

TEST(QXParseCommandLine, AssignsKeysThenArgumentsWithoutKey) {
  ExpectSessions(Text, R"($ ->
$ -IN x -N 3 -> -in=x -n=3
$ -i x -> -in=x
$ -in -n -n 4 -> -in=-n -n=4
$ -flag -> -flag=true
$ -flag -n 3 -> -n=3 -flag=true
$ -flag 0 x -> -in=x -flag=0
$ -flag No -> -flag=No
$ -flag other -> -in=other -flag=true
$ -l 1 2 3 -flag -> -flag=true -l=1;2;3
$ -l 1 2 x -> -in=x -l=1;2
$ -l 1,2 3,4 -> -in=3,4 -l=1;2
$ -l 1 -l 2,+3 4 -> -l=2;3;4
$ -l 1 -l 2 -l 3 -> -l=1;2;3
$ -s a,b -x --version --unset-n c -n 3 -> -n=3 -s=a,b;-x;--version;--unset-n;c
$ -bl t 0 -bl 1,0 -> -in=1,0 -bl=t;0;true
$ -m FAST -> -m=FAST
$ x 3 y -> -in=x -n=3 -out=y
$ -n 3 x y -> -in=x -n=3 -out=y
$ -n 7 --unset-N x --unset -> -in=x -out=--unset
$ --unset-i -in x ->
$ --unsetn -> -in=--unsetn
)",
                 [](QXInterface& itf, const Texts& words) { return Parse(itf, words); });
}

TEST(QXParseCommandLine, StopsAtTheFirstKindOfFault) {
  ExpectSessions(Text, R"($ a b -n 3
Unknown parameter, a, on command line
Unknown parameter, b, on command line

$ -n 3 -N 4
-N is specified twice on the command line
-n=3
$ -flag -in
Parameter -in on the command line is not followed by a value
-flag=true
$ -L 13
13 is not a legal setting for parameter -L (specified on command line)
  Illegal value : 13

$ -l 1,13
1,13 is not a legal setting for parameter -l (specified on command line)
  Illegal value : 13

$ -m 8
8 is not a legal setting for parameter -m (specified on command line)
  Legal value : fast
  Legal Range : 4 to 5
  Illegal value : 7
  Illegal Range : 8 to 9

$ -file no/file
Problem loading parameter -file with setting no/file

$ -param x y
Problem loading parameter -param with setting xy

$ a 1 c d e
Unknown argument d on command line (too many arguments to be keyless)
Unknown argument e on command line (too many arguments to be keyless)

$ -n 1 a b c
Unknown argument c on command line.  There are too many arguments to be keyless (one or more keyless parameters are explicitly specified)
-in=a -n=1 -out=b
$ a b
b is not a legal setting for the keyless parameter -n specified on the command line
-in=a
)",
                 [](QXInterface& itf, const Texts& words) { return Parse(itf, words); });
  const Messages messages;
  QXInterface itf(Describe("-n int").c_str());
  EXPECT_FALSE(Parse(itf, {"a", ""}));  // the empty argument is the key of nothing
  EXPECT_EQ(messages.At(QXErrorLevel::Warning),
            "Unknown argument on command line a\nUnknown argument on command line \n");
}

TEST(QXParseCommandLine, GivesTheRestToAKeylessList) {
  const TempDir dir;
  QXInterface itf(
      "!PARAMETER -a\n!TYPE int\n!KEYLESS 1\n!END\n"
      "!PARAMETER -l\n!TYPE file\n!LIST true\n!KEYLESS 2\n!END");
  const std::string file = dir.Write("file", "x"), none = dir.Path("none");
  QXInterface good(itf);
  EXPECT_TRUE(Parse(good, {"-l", file, "-a", "1", file, file}));
  EXPECT_EQ(Values(good), "-a=1 -l=" + file + ";" + file + ";" + file);
  const Messages messages;
  EXPECT_FALSE(Parse(itf, {"1", file, none, file}));
  EXPECT_EQ(messages.At(QXErrorLevel::Warning),
            "Problem loading keyless parameter -l with setting " + none + "\n");
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
  EXPECT_TRUE(Parse(itf, Texts(1000, "word")));
  list.ClearValues();
  std::string line = "-l";
  for (int i = 0; i < 1000; ++i) line += " word";
  QXPlatform::qxisstream in(line);
  EXPECT_TRUE(QXParseParameterFile(itf, in, false, QXErrorLevel::Warning));
  EXPECT_EQ(All(list.GetStringValues()).size(), 1000u);
  EXPECT_LT(Counting::count, 10000u);
}

TEST(QXParseCommandLine, ReadsParameterFilesThenUnsetsThenJudges) {
  const TempDir dir;
  const std::string one = dir.Write("1", "-n 3\n-in one\n-param nowhere\n-out file\n");
  const std::string two = dir.Write("2", "-in two\n-flag on\n-l 1 2\n-s a\n");
  constexpr char requirement[] = "!REQUIREMENT\n!OPTION !-s\n!ERROR_MSG\nNo -s\n!END\n";
  QXInterface itf(Text.c_str());
  EXPECT_TRUE(Parse(itf, {"-param", one, two, "-l", "7", "--unset-n", "--unset-s"}, requirement));
  EXPECT_EQ(Values(itf), "-in=one -out=file -flag=on -l=7 -param=" + one + ";" + two);
  int n = 0;
  EXPECT_TRUE(QXGetSetting(itf, "-n", n) && n == 5);  // the default shows through

  Messages messages;
  QXInterface other(Text.c_str()), bad(Text.c_str());
  EXPECT_FALSE(Parse(other, {"-param", two}, requirement));
  EXPECT_FALSE(Parse(bad, {"-param", dir.Write("3", "-x 1\n-in x\n")}));
  EXPECT_EQ(messages.At(QXErrorLevel::Warning),
            "Missing requirements:\nNo -s\n\n"
            "Unknown parameter -x in parameter file (begin comment lines with #)\n"
            "Problem parsing parameter file\n");
  EXPECT_EQ(bad.GetParameter("-in")->GetStringValue(), "x");
}

TEST(QXParseCommandLine, WantsKeylessParametersToCountFromOne) {
  // The numbers of -a, -b and -c, with an "l" for a list.
  for (const auto& [numbers, answer] : Sessions(R"($ 0 0 0
$ 3 1 2
$ 3l 1 2
$ 2 3 0
Missing keyless parameter 1, have keyless parameter 2 (-a)
$ 1 3 0
Missing keyless parameter 2, have keyless parameter 1 (-a) and 3 (-b)
$ 1 1 2
Missing keyless parameter 2, have keyless parameter 1 (-a) and 1 (-b)
$ 1l 2 0l
If a keyless parameter is also a list type parameter it must be the last keyless entry.
Parameter -a is violating this rule (-b is after it)
)")) {
    SCOPED_TRACE(numbers);
    QXInterface itf;
    std::string name = "-a";
    for (const std::string& number : Split(numbers)) {
      QXStringParameter p(name);
      p.SetKeyless(static_cast<unsigned>(number[0] - '0'));
      p.SetIsList(number.size() > 1);
      itf.AddParameter(p);
      ++name.back();
    }
    const Messages messages;
    EXPECT_EQ(Parse(itf, {}), answer.empty());
    EXPECT_EQ(messages.At(QXErrorLevel::Error), answer);
  }
}

// ---- Ends of the process ----

void Construct(const std::string& text, const Texts& words) {
  Arguments a(words);
  const QXInterface itf(text.c_str(), a.argc(), a.argv());
}

TEST(QXInterfaceWithArguments, EndsTheProcessAsItMust) {
  const std::string text = Text + Describe("-r int; REQUIRED true; BRIEF Needed");
  const testing::ExitedWithCode zero(0), one(1), seven(7);
  EXPECT_EXIT(Construct(text, {}), zero,
              "^No arguments specified on the command line\nRequired parameters:\n"
              "    -r : Needed \nFor more help type:\n  prog --help\n$");
  EXPECT_EXIT(Construct(text, {"--help"}), zero,
              "^Simple parameter list\nAdditional help functions:\n");
  EXPECT_EXIT(Construct(text, {"-n", "x"}), one, "^Fatal: x is not a legal setting for");
  EXPECT_EXIT(Construct(text, {"x"}), one, "^Fatal: Missing required parameter -r\n$");
  EXPECT_EXIT((QXThrow.SetStrict(false), Construct(text, {"x"})), one,
              "^Warning: Missing required parameter -r\n$");
  EXPECT_EXIT((Construct(text, {"-r", "1"}), std::exit(7)), seven, "^$");
  EXPECT_EXIT(Construct("!X", {"-r", "1"}), one, "^Fatal: Probable invalid keyword");
}

// For a child process, whose standard output becomes its standard error.
void ParseVersion(const char* version, const Texts& words, bool light) {
  ::dup2(2, 1);
  Arguments a(words);
  QXInterface itf(light ? "" : Text.c_str());
  const unsigned level = QXErrorLevel::Warning;
  const bool good =
      light ? QXParseCommandLineLW(itf, version, a.argc(), a.argv(), nullptr, level)
            : QXParseCommandLine(itf, version, a.argc(), a.argv(), nullptr, level, false);
  std::exit(good ? 7 : 8);
}

TEST(QXParseCommandLine, PrintsTheVersionWhereItIsReached) {
  const testing::ExitedWithCode zero(0), seven(7), eight(8);
  EXPECT_EXIT(ParseVersion("1.2", {"-n", "3", "--version", "-z"}, false), zero, "^1\\.2\n$");
  EXPECT_EXIT(ParseVersion(nullptr, {"x", "--version"}, false), zero, "^version not set\n$");
  EXPECT_EXIT(ParseVersion("1.2", {"--version"}, true), zero, "^1\\.2\n$");
  EXPECT_EXIT(ParseVersion("1.2", {"-n", "x", "--version"}, false), eight, "");
  EXPECT_EXIT(ParseVersion("1.2", {"--Version"}, false), seven, "^$");
}

// ---- Help ----

struct Answer {
  bool handled;
  std::string out;     // what went to the stream
  std::string output;  // what went to standard output
};

Answer Ask(const std::string& words, const std::string& program = "prog",
           const std::string& text = Text, bool exitOnEmpty = true) {
  const QXInterface itf(text.c_str());
  Arguments a(Split(words), program);
  qxosstream out;
  testing::internal::CaptureStdout();
  const bool handled = QXCheckHelp(itf, a.argc(), a.argv(), exitOnEmpty, out);
  qxout.flush();
  return {handled, out.str(), testing::internal::GetCapturedStdout()};
}

TEST(QXCheckHelp, AnswersByTheShapeOfTheCommandLine) {
  ::unsetenv("COLUMNS");
  // The beginning of what is printed, behind "o " to the stream, behind "s " to
  // standard output; nothing where the line asks for nothing.
  for (const auto& [words, answer] : Sessions(R"($
$ -n 3
$ -n --help
$ --Help
$ --help
o Simple parameter list
Additional help functions:
  prog --help simple      : Get a list of simple parameters (as seen above)
  prog --help all         : Get a complete list of parameters
$ --help simple
o Simple parameter list
$ --help all
o Complete parameter list
    -bl
    -file
$ --help all 120
o Complete parameter list
$ --help all 120 x
$ --help hidden
o Power user parameter list
$ --help poweruser
o Power user parameter list
$ --help defaults
o #Default settings
#-bl : (no default setting)
$ --help -FLAG
o Contents of parameter -flag  
    Type : bool
$ --help flag x
o Contents of parameter -flag  
$ --help i
o Contents of parameter -in  
    Aliases :   -i
$ --help nothing
o Unable to find help for 'nothing'
$ --itf
s #BeginInterface#
!PARAMETER -bl 0
$ --itf x
$ --json
s {
"name" : "",
$ --json x
$ --latex n
s \item[\code{-n}] 
$ --latex -i
s \item[\code{-in}] 
$ --latex N
s
$ --latex
)")) {
    SCOPED_TRACE(words);
    const Answer got = Ask(words);
    EXPECT_EQ(got.handled, !answer.empty());
    EXPECT_TRUE(got.out.empty() || answer[0] == 'o');
    EXPECT_TRUE(got.output.empty() || answer[0] == 's');
    const std::string head = answer.empty() ? "" : answer.substr(2);
    EXPECT_EQ((got.out + got.output).substr(0, head.size()), head);
  }
  EXPECT_EQ(Ask("--help versions").out.find("qxtoolkit QXSystem "), 0u);
  const std::string itf = Ask("--itf").output, end = "!END\n#EndInterface#\n";
  EXPECT_EQ(itf.substr(itf.size() - end.size()), end);
}

TEST(QXCheckHelp, AnswersNoArgumentsWhereSomethingIsRequired) {
  const std::string text =
      Describe("!BRIEF Does it\n!CATEGORY c\n-r int; REQUIRED true; DEFAULT 1\n!END");
  EXPECT_EQ(Ask("", "prog", text).out,
            "No arguments specified on the command line\nprog : Does it \nRequired parameters:\n"
            "    -r\nFor more help type:\n  prog --help\n");
  EXPECT_FALSE(Ask("", "prog", text, false).handled);
  qxosstream out;
  EXPECT_FALSE(QXCheckHelp(QXInterface(), 0, nullptr, true, out));
}

TEST(QXCheckHelp, TakesItsWidthFromTheArgumentsOrTheEnvironment) {
  const struct {
    const char* columns;  // null: not set
    const char* words;
    int lines;
  } cases[] = {{nullptr, "--help all", 1},  {nullptr, "--help all 14", 3},
               {"12", "--help all", 4},     {"12", "--help all 14", 3},
               {"12", "--help all x", 4},   {"12", "--help all 0", 9},
               {"wide", "--help all -1", 1}};
  for (const auto& c : cases) {
    c.columns ? ::setenv("COLUMNS", c.columns, 1) : ::unsetenv("COLUMNS");
    const std::string out = Ask(c.words, "prog", Describe("-x int; BRIEF a b c d e f g h")).out;
    EXPECT_EQ(std::count(out.begin(), out.end(), '\n') - 2, c.lines) << c.words;
  }
  ::unsetenv("COLUMNS");
}

TEST(QXCheckHelp, CreatesAPageBesideTheProgram) {
  const TempDir dir;
  const std::string program = dir.Path("prog"), page = program + "_help.html";
  EXPECT_EQ(Ask("--help html", program).out, "Creating '" + page + "'\n");
  std::string line;
  std::ifstream file(page);
  EXPECT_TRUE(std::getline(file, line) && line == "<html>");
  const std::string nowhere = dir.Path("none/prog");
  EXPECT_EQ(Ask("--help html", nowhere).out, "Unable to create file '" + nowhere + "_help.html'\n");
}

// ---- Switches of one letter ----

const std::string Switches = Describe(R"(-a bool; DEFAULT false; ALIAS -x
-b bool; DEFAULT false
-n int; KEYLESS 1; ILLEGAL_VALUE 3
-l int; KEYLESS 2; LIST true; DEFAULT 0
)");

TEST(QXParseCommandLineLW, TakesGroupsOfSwitchesThenArguments) {
  ExpectSessions(Switches, R"($

$ -a
-a=true
$ -bXa -B 1 2 3
-a=true -b=true -n=1 -l=2;3
$ 1 -4
-n=1 -l=-4
$ - -a
 - is not a valid command line arg
-a=true
$ -az -z --
Unknow switch -z (specified as part of group -az)
Unknow switch -z
Unknow switch --
-a=true
$ -n -an 5
-n is a keyless parameter, do not specify it with a key
-n is a keyless parameter, do not specify it with a key
-a=true -n=5
$ 3 4
Invalid command line argument 3
-l=4
$ 1 x 2 y 3
Invalid command line argument x
Invalid command line argument y
-n=1 -l=2;3
)",
                 ParseLW);
  const Messages messages;
  QXInterface itf(Switches.c_str());
  QXParameter& l = *itf.GetParameter("-l");
  l.SetIsList(false);
  EXPECT_FALSE(ParseLW(itf, {"1", "2", "3"}));
  EXPECT_TRUE(l.SetRequired(true) && l.ClearDefaults() && l.ClearValues());
  EXPECT_FALSE(ParseLW(itf, {"-a"}));
  EXPECT_EQ(messages.At(QXErrorLevel::Warning),
            "Too many arguments on the command line\nMissing required parameter -l\n");
}

TEST(QXParseCommandLineLW, WantsSwitchesThatAreFalse) {
  // The lines of a parameter, with "/" for a line end.
  for (const auto& [lines, answer] : Sessions(R"($ -p/!TYPE param_file/!KEYLESS 1
ParseCommandLineLW : does not support parameter files (-p)
$ -p/!TYPE string
ParseCommandLineLW : 
 All non-keyless parameter keys must be booleans (-p is not)
$ -p/!TYPE bool
ParseCommandLineLW : bool parameters must have a default value of false (-p does not have a default value)
$ -p/!TYPE bool/!DEFAULT t
ParseCommandLineLW : bool parameters must have a default value of false (-p does has a default value of true)
$ -p/!TYPE bool/!DEFAULT f/!ALIAS -pp
ParseCommandLineLW : 
 non-keyless bool parameters must have a - followed by a single character as a key (an alias of -p, -pp, does not)
$ -long/!TYPE bool/!DEFAULT f
ParseCommandLineLW : 
 non-keyless bool parameters must have a - followed by a single character as a key (-long does not)
)")) {
    std::string text = "!PARAMETER " + lines + "/!END";
    std::replace(text.begin(), text.end(), '/', '\n');
    QXInterface itf(text.c_str());
    const Messages messages;
    EXPECT_EQ(ParseLW(itf, {}), answer.find("support") != answer.npos);  // which is only told
    EXPECT_EQ(messages.At(QXErrorLevel::Error), answer);
  }
}

}  // namespace
