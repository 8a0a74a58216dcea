// Writers, help texts, the page of HTML and the fragment of LaTeX.
#include <qxsystem/interface/help.h>

#include <set>

#include <qxsystem/interface/writer.h>
#include <qxsystem/util/qxstring.h>

#include "interface/support.h"

using namespace QXSystem;
using QXPlatform::qxosstream;

namespace {

// "/" stands for a line end.
const std::string Text = Describe(Lines(R"(!BRIEF A program
-in string; KEYLESS 1; REQUIRED true; SIMPLE true; BRIEF Structures to read, in one of the formats that are known by their endings
-bare bool
!PARAMETER -mode/!TYPE const/!LIST true/!ALIAS -m/!ALIAS --mode
  !LEGAL_VALUE 1/!LEGAL_VALUE fast/!LEGAL_VALUE 2/!LEGAL_VALUE careful/!ILLEGAL_VALUE 9
  !LEGAL_RANGE 7 inf/!LEGAL_RANGE 3 5/!ILLEGAL_RANGE 10 11/!DEFAULT 1/!DEFAULT careful
  !BRIEF See -in/!DETAIL
    Like :ref:$the other$other.html$ one, not :ref:$this one$
      no
    -in decides
!END
!CATEGORY Output 1/!BRIEF Where it goes/!DETAIL
   to
  -out of here
-out float; SIMPLE true; DEFAULT 0.500000
-secret int; VISIBILITY hidden
!CATEGORY Deep
-deep int; VISIBILITY hidden; BRIEF Last
!END/!END
)"));

TEST(QXTextWriter, KeepsLineEndsBackAndIndentsAtOnce) {
  qxosstream out;
  QXTextWriter w(out, "..");
  EXPECT_TRUE(w.NewLine());
  EXPECT_TRUE(w.Start("start"));  // before the line end
  EXPECT_TRUE(w("head") && w.Bold() && w.Indent() && w.NewLine() && w.NewLine());
  EXPECT_TRUE(w.WriteAnchor("anchor") && w.Line() && w.List() && w.WriteLink("link"));
  EXPECT_TRUE(w.EndList() && w.EndIndent() && w.NewLine() && w("tail") && w.NewLine() && w.End());
  EXPECT_EQ(out.str(), "start\n\nhead..\n    \n    anchor" + std::string(78, '-') +
                           "..\n        link\ntail\n");

  QXPushSimpleQXThrowTester reports;
  EXPECT_FALSE(w.EndIndent() || w.EndList());
  EXPECT_EQ(reports.GetErrorLog(), "level = 4\nToo Many EndIndents\nToo Many EndIndents\n");
  out.clear();
  w("x");  // still at level 0
  for (int i = 0; i < 50; ++i) w.Indent();
  w.Line();
  EXPECT_EQ(out.str(), "x" + std::string(100, '.'));
}

std::string Brief(const QXInterface& interface, unsigned level, unsigned width) {
  qxosstream out;
  EXPECT_TRUE(WriteBriefHelpDescription(interface, "prog", out, level, width));
  return out.str();
}

TEST(BriefHelp, ListsUpToAVisibility) {
  QXInterface root(Text.c_str());
  EXPECT_EQ(Brief(root, QXVisibility::Simple, 80),
            "prog : A program \nSimple parameter list\n"
            "    -in : Structures to read, in one of the formats that are known by their\n"
            "          endings\n\n    Output : Where it goes \n      -out\n\n\n");
  root.SetName("Name");
  EXPECT_EQ(Brief(root, QXVisibility::Normal, 0)
                .find("Name : A program \nComplete parameter list\n    -bare\n    -in :\n"),
            0u);
  root.SetBrief("");
  const std::string all = Brief(root, QXVisibility::Hidden, 1000);
  EXPECT_EQ(all.find("Power user parameter list\n"), 0u);
  EXPECT_NE(all.find("      -out\n      -secret\n\n      Deep\n        -deep : Last\n\n\n\n"),
            std::string::npos);
}

TEST(BriefHelp, BreaksLinesOnlyWhereAWordIsTooLong) {
  const QXInterface root(Text.c_str());
  for (unsigned width = 0; width < 100; ++width) {
    std::vector<std::string> lines, words;
    QXStringTokenize(lines, Brief(root, QXVisibility::Simple, width), "\n");
    std::string text;
    for (std::size_t i = 2; lines[i].find("Output") == std::string::npos; ++i) {
      QXStringTokenize(words, lines[i], " ");
      EXPECT_TRUE(lines[i].size() <= width || words.size() == (i == 2 ? 2 : 1)) << lines[i];
      text += " " + QXStringJoin(words, " ");
    }
    EXPECT_EQ(text,
              " -in : Structures to read, in one of the formats that are known by their endings");
  }
}

std::string Detail(const QXParameter& parameter) {
  qxosstream out;
  QXTextWriter writer(out, "  ");
  EXPECT_TRUE(WriteParameterDetailImpl(parameter, writer) && writer.End());
  EXPECT_FALSE(writer.EndIndent());  // back at level 0
  return out.str();
}

TEST(DetailHelp, TellsAllAboutAParameter) {
  const QXPushTestHandler quiet;
  const QXInterface root(Text.c_str());
  EXPECT_EQ(Detail(*root.GetParameter("-mode")),
            "Contents of parameter -mode  \n    Aliases :   -m  --mode\n    Type : const\n"
            "    Allow list : true\n    Default is a list :  \n        fast\n        careful\n"
            "    Simple : false\n    Required : false\n    Legal values : careful fast\n"
            "    Legal ranges :  \n        7 to inf\n        3 to 5\n    Illegal values : 9\n"
            "    Illegal ranges :  \n        10 to 11\n    Brief : See -in \n    Detail  \n"
            "        Like the other one, not :ref:$this one$\n          no\n"
            "        -in decides\n");
  for (const auto& [name, part] : Sessions(R"($ -in
    Default : (parameter does not have a default)
    Keyless : 1
    Simple : true
    Required : true
    Brief : Structures to read, in one of the formats that are known by their endings 
$ -bare -> Brief : (No brief description)
$ -out -> Default : 0.5
$ -deep -> Hidden flag
)"))
    EXPECT_NE(Detail(*root.GetParameter(name)).find(part), std::string::npos) << name;
  EXPECT_NE(Detail(QXStringParameter("-s", "a b")).find("Default : \"a b\"\n    Simple : false"),
            std::string::npos);
}

std::string Html(const QXInterface& interface, const std::string& name,
                 const std::string& version) {
  qxosstream out;
  EXPECT_TRUE(QXWriteHtml(interface, out, name, version));
  return out.str();
}

TEST(HtmlHelp, WritesThePage) {
  const QXPushTestHandler quiet;
  const QXInterface root(Text.c_str());
  const std::string page = Html(root, "prog", "1.0");
  const std::string head =
      "<html>\n<head>\n<title> Help for Prog version 1.0</title>\n</head>\n<body>\n"
      "<a name=\"top_of_file\"></a>\n<font size=\"6\">Help for Prog version 1.0</font>\n<hr>\n"
      "<font size=\"5\"><b><u>Parameter list</u></b></font> - Simple parameters are listed in "
      "boldface.  Defaults are listed in parenthesis.<br>\n<blockquote>\n"
      "<a href=#-bare>-bare</a>  : No brief description available<br>\n"
      "<b><a href=#-in>-in</a></b>  : Structures to read,";
  EXPECT_EQ(page.substr(0, head.size()), head);
  for (const char* part :
       {"<a href=#-mode>-mode</a> (fast careful) : See <a href=#-in>-in</a> <br>\n"
        "<u><a href=#Output>Output</a></u> : Where it goes <br>\n<blockquote>\n"
        "<b><a href=#-out>-out</a></b> (0.500000) : No brief description available<br>\n"
        "<u><a href=#Deep>Deep</a></u> : <br>\n<blockquote>\n</blockquote>\n"
        "</blockquote>\n</blockquote>\n<a href=#top_of_file>Top</a> of page<br>\n<hr>\n",

        "<hr>\n<font size=\"4\"><u>Parameter : <a name=\"-mode\">-mode</a></font></u><br>\n"
        "<blockquote>\nType : const<br>\nList allowed : yes<br>\nDefault : fast careful<br>\n"
        "Simple : no<br>\nRequired : no<br>\nLegal Values : careful fast<br>\n"
        "Legal Ranges : <br>\n<blockquote>\n7 to inf<br>\n3 to 5<br>\n</blockquote>\n"
        "Illegal Values : 9<br>\n"
        "Illegal Ranges : <br>\n<blockquote>\n10 to 11<br>\n</blockquote>\n"
        "Brief : See <a href=#-in>-in</a> <br>\n"
        "<u> Detailed description</u><br>\n<blockquote>\n"
        "<p>Like <a href=other.html>the other</a> one, not :ref:$this one$</p> <br>\n"
        "<p> no</p> <br>\n<p>-in decides</p> <br>\n</blockquote>\n"
        "<br><a href=#top_of_file>Top</a>\n</blockquote>\n",

        "<hr>\n<font size=\"4\"><u>Category : <a name=\"Output\">Output</a></font></u><br>\n"
        "<blockquote>\nParameters : <a href=#-out>-out</a> <br>\n"
        "Child Categories : <a href=#Deep>Deep</a> <br>\n"
        "Parent Category : <a href=#top_of_file>Top level</a><br>\n"
        "Brief : Where it goes <br>\n<u> Detailed description</u><br>\n<blockquote>\n"
        "to <br>\n<a href=#-out>-out</a> of here <br>\n</blockquote>\n"
        "<br><a href=#top_of_file>Top</a>\n</blockquote>\n<hr>\n",

        "Category : <a href=#Output>Output</a><br>\nDefault : <br>\nParameter is hidden <br>\n"
        "Required : no<br>\nBrief : <br>\n",

        "Parent Category : <a href=#Output>Output</a><br>\n", "</blockquote>\n</body>\n</html>\n"})
    EXPECT_NE(page.find(part), std::string::npos) << part;
  EXPECT_EQ(Html(root, "", "2")
                .find("<html>\n<head>\n</head>\n<body>\n"
                      "<a name=\"top_of_file\"></a>\n"
                      "<font size=\"6\"> version 2</font>\n<hr>\n"),
            0u);
}

TEST(HtmlHelp, HasAPlaceForEveryLinkInside) {
  QXInterface root(Text.c_str());
  root.SetName("top");  // of which there is no description
  const std::string page = Html(root, "prog", "");
  const auto find = [&page](const std::string& before, const char* end) {
    std::multiset<std::string> found;
    for (std::size_t at = 0; (at = page.find(before, at)) != page.npos;) {
      at += before.size();
      found.insert(page.substr(at, page.find_first_of(end, at) - at));
    }
    return found;
  };
  const std::multiset<std::string> places = find("<a name=\"", "\"");
  for (const std::string& link : find("<a href=#", ">")) EXPECT_EQ(places.count(link), 1u) << link;
  EXPECT_EQ(places.size(), 9u);
  EXPECT_EQ(find("<blockquote", ">").size(), find("</blockquote", ">").size());

  const Messages messages;
  root.AddInterface()->SetName("Deep");
  root.AddParameter(QXIntParameter("Output"));
  Html(root, "prog", "");
  EXPECT_EQ(messages.At(QXErrorLevel::Warning),
            "Problem with interface auto-links in html file\n"
            "Problem with parameter auto-links in html file\n");
}

TEST(LatexHelp, WritesAnItemOfADescription) {
  const QXPushTestHandler quiet;
  const QXInterface root(Text.c_str());
  QXIntParameter p("-n");
  EXPECT_TRUE(p.AddAlias("a") && p.AddAlias("b") && p.AddAlias("c"));
  qxosstream out;
  EXPECT_TRUE(QXWriteParameterLatex(*root.GetParameter("-mode"), out));
  EXPECT_TRUE(QXWriteParameterLatex(p, out));
  EXPECT_EQ(out.str(), R"(\item[\code{-mode}] See -in 
\begin{description}
\item[\code{Aliases}] -m and --mode
\item[\code{Type}] const
\item[\code{Default}] fast and careful
\item[\code{Legal Values}] careful and fast
\item[\code{Illegal Value}] 9
\item[\code{LegalRanges}] (7 to inf) and (3 to 5)
\item[\code{IllegalRange}] (10 to 11)
\end{description}
Like :ref:$the other$other.html$ one, not :ref:$this one$
  no
-in decides
\item[\code{-n}] 
\begin{description}
\item[\code{Aliases}] a, b and c
\item[\code{Type}] int
\item[\code{Default}] No default
\end{description}
)");
}

}  // namespace
