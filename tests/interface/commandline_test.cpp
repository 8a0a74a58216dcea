#include <qxsystem/interface/commandline.h>

#include <stdlib.h>
#include <unistd.h>

#include <cstdlib>

#include <qxsystem/interface/files.h>

#include "interface/support.h"
#include "platform/temp_dir.h"

using namespace QXSystem;

namespace {

constexpr unsigned Level = QXErrorLevel::Warning;  // of the parsers' messages

// argc and argv of a program.
struct Arguments {
  explicit Arguments(const std::string& line, const std::string& program = "prog")
      : words(Split(program + " " + line)) {
    for (std::string& word : words) pointers.push_back(word.data());
    pointers.push_back(nullptr);
  }
  int argc() const { return static_cast<int>(words.size()); }
  char** argv() { return pointers.data(); }

  Texts words;
  std::vector<char*> pointers;
};

bool Parse(QXInterface& interface, const std::string& line, const char* requirement = nullptr) {
  Arguments a(line);
  return QXParseCommandLine(interface, a.argc(), a.argv(),
                            reinterpret_cast<const unsigned char*>(requirement), Level,
                            /*checkHelp=*/false);
}

bool ParseLW(QXInterface& interface, const std::string& line, const char* = nullptr) {
  Arguments a(line);
  return QXParseCommandLineLW(interface, a.argc(), a.argv(), nullptr, Level);
}

// Parses each line of a table and compares the messages, and what is set then.
void ExpectParses(decltype(Parse)* parse, const std::string& text, const std::string& table) {
  ExpectSessions(table, Level, [&](const std::string& line) {
    QXInterface itf(text.c_str());
    const bool good = parse(itf, line, nullptr);
    return Outcome{good, ValuesOf(itf)};
  });
}

const std::string Text = Describe(R"(-in string; KEYLESS 1; ALIAS -i
-n int; KEYLESS 2; DEFAULT 5
-out string; KEYLESS 3
-flag bool
-l int; LIST true; ILLEGAL_VALUE 13
-s string; LIST true
-m const; LEGAL_VALUE 1; LEGAL_VALUE fast; LEGAL_RANGE 4 5; ILLEGAL_VALUE 7; ILLEGAL_RANGE 8 9
-bl bool; LIST true
-file file; LIST true
-param param_file; LIST true
)");

TEST(QXParseCommandLine, AssignsKeysThenArgumentsWithoutKey) {
  ExpectParses(Parse, Text, R"($
$ -I x -N 3 -> -in=x -n=3
$ -in -n -n 4 -> -in=-n -n=4
$ -flag -n 3 -> -n=3 -flag=true
$ -flag No x -> -in=x -flag=No
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
$ --unsetn -> -in=--unsetn
$ a b -n 3 -> Unknown parameter, a, on command line / Unknown parameter, b, on command line
$ -n 3 -N 4 -> -N is specified twice on the command line / -n=3
$ -flag -in -> Parameter -in on the command line is not followed by a value / -flag=true
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
$ -param x y -> Problem loading parameter -param with setting xy
$ -file /dev/null -> Problem loading parameter -file with setting /dev/null
$ a 1 c d e
Unknown argument d on command line (too many arguments to be keyless)
Unknown argument e on command line (too many arguments to be keyless)
$ -n 1 a b c
Unknown argument c on command line.  There are too many arguments to be keyless (one or more keyless parameters are explicitly specified)
-in=a -n=1 -out=b
$ a b -> b is not a legal setting for the keyless parameter -n specified on the command line / -in=a
)");
  ExpectParses(Parse, Describe("-n int"),
               R"($ a '' -> Unknown argument on command line a / Unknown argument on command line 
)");
  ExpectParses(Parse, Describe("-n int; KEYLESS 1\n-e stringExt; LIST 1; LEGAL_VALUE a; KEYLESS 2"),
               R"($ -e a -n 1 a a -> -n=1 -e=a;a;a
$ -e a -e a -e a -n 1 -> -n=1 -e=a;a;a
$ 1 a /dev/null a -> Problem loading keyless parameter -e with setting /dev/null / -n=1
$ -e a -e /dev/null -n x -> Problem loading parameter -e with setting /dev/null
)");
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
  std::string words, keys;
  for (int i = 0; i < 1000; ++i) words += " word", keys += " -l word";
  EXPECT_TRUE(Parse(itf, words) && list.ClearValues() && Parse(itf, keys) && list.ClearValues());
  QXPlatform::qxisstream in("-l" + words);
  EXPECT_TRUE(QXParseParameterFile(itf, in, false, Level));
  EXPECT_EQ(All(list.GetStringValues()).size(), 1000u);
  EXPECT_LT(Counting::count, 10000u);
}

TEST(QXParseCommandLine, ReadsParameterFilesThenUnsetsThenJudges) {
  const TempDir dir;
  const std::string one = dir.Write("1", "-n 3\n-in one\n-param nowhere\n-out file\n");
  const std::string two = dir.Write("2", "-in two\n-flag on\n-l 1 2\n-s a\n");
  const char requirement[] = "!REQUIREMENT\n!OPTION !-s\n!ERROR_MSG\nNo -s\n!END\n";
  QXInterface itf(Text.c_str()), other(itf), bad(itf);
  EXPECT_TRUE(Parse(itf, "-param " + one + " " + two + " -l 7 --unset-n --unset-s", requirement));
  EXPECT_EQ(ValuesOf(itf), "-in=one -out=file -flag=on -l=7 -param=" + one + ";" + two);
  int n = 0;
  EXPECT_TRUE(QXGetSetting(itf, "-n", n) && n == 5);  // the default shows through

  const Messages messages;
  EXPECT_FALSE(Parse(other, "-param " + two, requirement) ||
               Parse(bad, "-param " + dir.Write("3", "-x 1\n-in x\n"), requirement));
  EXPECT_EQ(messages.At(Level),
            "Missing requirements:\nNo -s\n\n"
            "Unknown parameter -x in parameter file (begin comment lines with #)\n"
            "Problem parsing parameter file\n");
  EXPECT_EQ(bad.GetParameter("-in")->GetStringValue(), "x");
}

TEST(QXParseCommandLine, WantsKeylessParametersToCountFromOne) {
  // Parameters, with "/" for a line end.
  ExpectSessions(R"($ -a int/-b int
$ -a int; KEYLESS 3; LIST 1/-b int; KEYLESS 1/-c int; KEYLESS 2
$ -a int; KEYLESS 2/-b int; KEYLESS 3/-c int
Missing keyless parameter 1, have keyless parameter 2 (-a)
$ -a int; KEYLESS 1/-b int; KEYLESS 3
Missing keyless parameter 2, have keyless parameter 1 (-a) and 3 (-b)
$ -a int; KEYLESS 1/-b int; KEYLESS 1/-c int; KEYLESS 2
Missing keyless parameter 2, have keyless parameter 1 (-a) and 1 (-b)
$ -a int; KEYLESS 1; LIST 1/-b int; KEYLESS 2/-c int; LIST 1
If a keyless parameter is also a list type parameter it must be the last keyless entry.
Parameter -a is violating this rule (-b is after it)
)",
                 QXErrorLevel::Error, [](const std::string& lines) {
                   QXInterface itf(Describe(Lines(lines)).c_str());
                   return Outcome{Parse(itf, "")};
                 });
}

// ---- Ends of the process ----

// For a child process, whose standard output becomes its standard error: parses,
// `how` that is to be done, and ends with 7 for true and 8 for false.
[[noreturn]] void RunChild(const std::string& how, const std::string& line) {
  ::dup2(2, 1);
  Arguments a(line);
  if (how == "strict" || how == "lenient" || how == "faulty") {
    QXThrow.SetStrict(how != "lenient");
    const std::string text = Text + Describe("!BRIEF Does it\n-r int; REQUIRED true; BRIEF Needed");
    const QXInterface itf(how == "faulty" ? "!X" : text.c_str(), a.argc(), a.argv());
    std::exit(7);
  }
  QXInterface itf(how == "light" ? "" : Text.c_str());
  const char* version = how == "help" ? nullptr : "1.2";
  const bool good =
      how == "light"
          ? QXParseCommandLineLW(itf, version, a.argc(), a.argv(), nullptr, Level)
          : QXParseCommandLine(itf, version, a.argc(), a.argv(), nullptr, Level, how == "help");
  std::exit(good ? 7 : 8);
}

TEST(CommandLines, EndTheProcessAsTheyMust) {
  const struct {
    const char* how;
    const char* line;
    int status;
    const char* printed;
  } cases[] = {
      {"strict", "", 0,
       "^No arguments specified on the command line\nprog : Does it \nRequired parameters:\n"
       "    -r : Needed \nFor more help type:\n  prog --help\n$"},
      {"strict", "--help", 0, "^prog : Does it \nSimple parameter list\nAdditional help"},
      {"strict", "-n x", 1, "^Fatal: x is not a legal setting for"},
      {"strict", "x", 1, "^Fatal: Missing required parameter -r\n$"},
      {"lenient", "x", 1, "^Warning: Missing required parameter -r\n$"},
      {"strict", "-r 1", 7, "^$"},
      {"faulty", "-r 1", 1, "^Fatal: Probable invalid keyword"},
      {"help", "--help all", 0, "^Complete parameter list\n"},
      {"full", "-n 3 --version -z", 0, "^1\\.2\n$"},
      {"full", "-n x --version", 8, "^Warning: x is not"},
      {"full", "--Version", 7, "^$"},
      {"light", "--version", 0, "^1\\.2\n$"}};
  for (const auto& c : cases) {
    SCOPED_TRACE(std::string(c.how) + " : " + c.line);
    EXPECT_EXIT(RunChild(c.how, c.line), testing::ExitedWithCode(c.status), c.printed);
  }
}

// ---- Help ----

struct Answer {
  bool handled;
  std::string out;     // what went to the stream
  std::string output;  // what went to standard output
};

Answer Ask(const std::string& line, const std::string& program = "prog",
           const std::string& text = Text, bool exitOnEmpty = true) {
  const QXInterface itf(text.c_str());
  Arguments a(line, program);
  QXPlatform::qxosstream out;
  testing::internal::CaptureStdout();
  const bool handled = QXCheckHelp(itf, a.argc(), a.argv(), exitOnEmpty, out);
  QXPlatform::qxout.flush();
  return {handled, out.str(), testing::internal::GetCapturedStdout()};
}

TEST(QXCheckHelp, AnswersByTheShapeOfTheCommandLine) {
  ::unsetenv("COLUMNS");
  // The beginning of what is printed, behind "o " to the stream, behind "s " to
  // standard output; nothing where the line asks for nothing.
  for (const auto& [line, answer] : Sessions(R"($
$ -n 3
$ --Help
$ --help -> o Simple parameter list / Additional help functions:
$ --help simple -> o Simple parameter list
$ --help all 120 -> o Complete parameter list
$ --help all 120 x
$ --help hidden -> o Power user parameter list
$ --help poweruser -> o Power user parameter list
$ --help -FLAG -> o Contents of parameter -flag   /     Type : bool
$ --help i x -> o Contents of parameter -in   /     Aliases :   -i
$ --itf -> s #BeginInterface# / !PARAMETER -bl 0
$ --itf x
$ --json -> s { / "name" : "",
$ --json x
$ --latex i -> s \item[\code{-in}] 
$ --latex N -> s 
$ --latex
)")) {
    SCOPED_TRACE(line);
    const Answer got = Ask(line);
    EXPECT_EQ(got.handled, !answer.empty());
    EXPECT_TRUE(got.out.empty() || answer[0] == 'o');
    EXPECT_TRUE(got.output.empty() || answer[0] == 's');
    const std::string head = answer.empty() ? "" : answer.substr(2, answer.size() - 3);
    EXPECT_EQ((got.out + got.output).substr(0, head.size()), head);
  }
  EXPECT_EQ(Ask("--help html", "no/prog").out, "Unable to create file 'no/prog_help.html'\n");

  const std::string inside = Describe("!CATEGORY c\n-r int; REQUIRED true; DEFAULT 1\n!END");
  EXPECT_TRUE(Ask("", "prog", inside).handled);
  EXPECT_FALSE(Ask("", "prog", inside, /*exitOnEmpty=*/false).handled);
  QXPlatform::qxosstream out;
  EXPECT_FALSE(QXCheckHelp(QXInterface(), 0, nullptr, true, out));
}

TEST(QXCheckHelp, TakesItsWidthFromTheArgumentsOrTheEnvironment) {
  // COLUMNS, the arguments, and the number of lines for the parameter.
  ExpectSessions(R"($ - --help all -> 1
$ 12 --help all -> 4
$ 12 --help all 14 -> 3
$ 12 --help all x -> 4
$ wide --help all -1 -> 1
)",
                 Level, [](const std::string& line) {
                   const std::size_t at = line.find(' ');
                   ::setenv("COLUMNS", line.substr(0, at).c_str(), 1);
                   if (line[0] == '-') ::unsetenv("COLUMNS");
                   const std::string page =
                       Ask(line.substr(at), "prog", Describe("-x int; BRIEF a b c d e f g h")).out;
                   ::unsetenv("COLUMNS");
                   const auto ends = std::count(page.begin(), page.end(), '\n');
                   return Outcome{true, std::to_string(ends - 2)};
                 });
}

// ---- Switches of one letter ----

TEST(QXParseCommandLineLW, TakesGroupsOfSwitchesThenArguments) {
  const std::string switches = Describe(R"(-a bool; DEFAULT false; ALIAS -x
-b bool; DEFAULT false
-n int; KEYLESS 1; ILLEGAL_VALUE 3; ALIAS -
)");
  ExpectParses(ParseLW, switches + Describe("-l int; KEYLESS 2; LIST true; DEFAULT 0"), R"($
$ -bXa -B 1 2 3 -> -a=true -b=true -n=1 -l=2;3
$ - -a ->  - is not a valid command line arg / -a=true
$ -az -z --
Unknow switch -z (specified as part of group -az)
Unknow switch -z
Unknow switch --
-a=true
$ -n -an 5
-n is a keyless parameter, do not specify it with a key
-n is a keyless parameter, do not specify it with a key
-a=true -n=5
$ 3 4 -> Invalid command line argument 3 / -l=4
$ 1 x 2 y 3 -> Invalid command line argument x / Invalid command line argument y / -n=1 -l=2;3
)");
  ExpectParses(ParseLW, switches + Describe("-r int; KEYLESS 2; REQUIRED 1"),
               R"($ 1 2 3 -> Too many arguments on the command line / -n=1 -r=2
$ -a -> Missing required parameter -r / -a=true
)");
  // What is not legal and what cannot be loaded, nor anything behind it, in order.
  ExpectParses(ParseLW, Describe("-f stringExt; KEYLESS 1; LIST 1; LEGAL_VALUE a"),
               R"($ a b /dev/null a
-f file b does not exist or is empty.
Invalid command line argument b
Invalid command line argument /dev/null
Invalid command line argument a
)");
}

TEST(QXParseCommandLineLW, WantsSwitchesThatAreFalse) {
  // A parameter and what its switch does.
  ExpectSessions(
      R"($ -p string
ParseCommandLineLW : 
 All non-keyless parameter keys must be booleans (-p is not)
switch -p is not a boolean parameter
$ -p bool
ParseCommandLineLW : bool parameters must have a default value of false (-p does not have a default value)
$ -p bool; DEFAULT t
ParseCommandLineLW : bool parameters must have a default value of false (-p does has a default value of true)
$ -p bool; DEFAULT f; ALIAS -pp
ParseCommandLineLW : 
 non-keyless bool parameters must have a - followed by a single character as a key (an alias of -p, -pp, does not)
$ -long bool; DEFAULT f; ALIAS -p
ParseCommandLineLW : 
 non-keyless bool parameters must have a - followed by a single character as a key (-long does not)
)",
      QXErrorLevel::Error, [](const std::string& parameter) {
        QXInterface itf(Describe(parameter).c_str());
        Arguments a("-p");
        return Outcome{QXParseCommandLineLW(itf, a.argc(), a.argv(), nullptr, QXErrorLevel::Error)};
      });
  const Messages messages;
  QXInterface itf(Describe("-p param_file; KEYLESS 1").c_str());
  EXPECT_TRUE(ParseLW(itf, ""));  // this is only told
  EXPECT_EQ(messages.At(QXErrorLevel::Error),
            "ParseCommandLineLW : does not support parameter files (-p)\n");
}

}  // namespace
