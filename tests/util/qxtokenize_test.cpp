#include <gtest/gtest.h>

#include <list>
#include <random>
#include <sstream>
#include <string>
#include <vector>

#include <qxsystem/util/qxstring.h>

using namespace QXSystem;

namespace {

using Tokens = std::vector<std::string>;

// What `split` gives, having seen that vector and list agree and that neither
// keeps what it held.
template <class Split>
Tokens Both(Split split) {
  Tokens vector{"old", "older"};
  std::list<std::string> list{"old"};
  EXPECT_TRUE(split(vector));
  EXPECT_TRUE(split(list));
  EXPECT_EQ(vector, Tokens(list.begin(), list.end()));
  return vector;
}

Tokens NotEmpty(const Tokens& tokens) {
  Tokens result;
  for (const auto& token : tokens)
    if (!token.empty()) result.push_back(token);
  return result;
}

Tokens Split(const std::string& text, const std::string& delimiters, bool skipEmpty) {
  return Both([&](auto& out) { return QXStringTokenize(out, text, delimiters, skipEmpty); });
}

Tokens SplitQuoted(const std::string& text, const std::string& delimiters,
                   const std::string& quotes, bool skipEmpty) {
  return Both(
      [&](auto& out) { return QXStringTokenizeQuoted(out, text, delimiters, quotes, skipEmpty); });
}

Tokens SplitCSV(const std::string& line) {
  return Both([&](auto& out) { return QXStringCSVTokenize(out, line, ',', '"'); });
}

// Letters from `alphabet`, up to 70 of them, so that blocks of 16 matter.
std::string RandomText(std::mt19937& random, const std::string& alphabet) {
  std::string text(random() % (random() % 4 == 0 ? 70 : 8), ' ');
  for (auto& c : text) c = alphabet[random() % alphabet.size()];
  return text;
}

}  // namespace

TEST(Tokenize, CutsAtEveryDelimiterOrAtRuns) {
  EXPECT_EQ(Split("a,,b,", ",", false), (Tokens{"a", "", "b", ""}));
  EXPECT_EQ(Split("a,,b,", ",", true), (Tokens{"a", "b"}));
  EXPECT_EQ(Split("", ",", false), (Tokens{""}));
  EXPECT_EQ(Split("", ",", true), (Tokens{}));
  EXPECT_EQ(Split("a b", "", true), (Tokens{"a b"}));

  std::mt19937 random(1);
  for (int i = 0; i < 20000; ++i) {
    const std::string text = RandomText(random, "ab,;|\t\xFF-_");
    const std::string delimiters = std::string(",;|\t\xFF").substr(0, random() % 6);
    Tokens all{""};
    for (const char c : text) {
      if (delimiters.find(c) != std::string::npos)
        all.emplace_back();
      else
        all.back() += c;
    }
    ASSERT_EQ(Split(text, delimiters, false), all) << text;
    ASSERT_EQ(Split(text, delimiters, true), NotEmpty(all)) << text;
    ASSERT_EQ(QXStringJoin(Split(text, ",", false), ","), text);
  }
}

TEST(Tokenize, TakesItsInputFromTheContainer) {
  Tokens tokens{"x", "a b", " "};
  QXStringTokenize(tokens, tokens[1], tokens[2]);
  EXPECT_EQ(tokens, (Tokens{"a", "b"}));
  std::list<std::string> list{"'a b' c", " ", "'"};
  QXStringTokenizeQuoted(list, list.front(), *std::next(list.begin()), list.back());
  EXPECT_EQ(list, (std::list<std::string>{"'a b'", "c"}));
  tokens = {"1,\"2,3\""};
  QXStringCSVTokenize(tokens, tokens[0]);
  EXPECT_EQ(tokens, (Tokens{"1", "2,3"}));
  QXStringTokenizeWhitespace(tokens, tokens[1]);
  EXPECT_EQ(tokens, (Tokens{"2,3"}));
}

TEST(TokenizeQuoted, ProtectsDelimitersBetweenQuotes) {
  const struct {
    std::string text;
    Tokens tokens;
  } cases[] = {{"", {}},
               {",,", {}},
               {"a,b", {"a", "b"}},
               {",;a,,b,", {"", "", "a", "", "b", ""}},
               {"a,;", {"a", "", ""}},
               {"'a,b',c", {"'a,b'", "c"}},
               {"'a,b'xy,c", {"'a,b'xy", "c"}},
               {"'a'',b',c", {"'a'',b'", "c"}},
               {"\"a',b\",c", {"\"a',b\"", "c"}},
               {"a'b,c'", {"a'b", "c'"}},
               {" 'a,b'", {" 'a", "b'"}},
               {"'open,c", {"'open,c"}},
               {"''',c", {"''',c"}},  // a pair, and nothing closes
               {"'',c", {"''", "c"}},
               {"'", {"'"}}};
  for (const auto& c : cases) {
    SCOPED_TRACE(c.text);
    EXPECT_EQ(SplitQuoted(c.text, ",;", "\"'", false), c.tokens);
    EXPECT_EQ(SplitQuoted(c.text, ",;", "\"'", true), NotEmpty(c.tokens));
    EXPECT_EQ(SplitQuoted(c.text, ",;", "", true), Split(c.text, ",;", true));
  }
}

TEST(TokenizeWhitespace, CountsRunsAndStops) {
  const struct {
    std::string text;
    bool keepEmpty;
    std::size_t maxTokens, endPos;
    Tokens tokens;
  } cases[] = {{" a  b ", true, 0, 6, {"", "a", "", "b", ""}},
               {" a  b ", false, 0, 6, {"a", "b"}},
               {"a b\r\n\tc", true, 0, 7, {"a", "b", "", "c"}},
               {"a\vb", true, 0, 3, {"a\vb"}},
               {"", true, 0, 0, {}},
               {" \n ", true, 0, 3, {""}},
               {" \n ", false, 0, 3, {}},
               {"a  b  c", false, 2, 6, {"a", "b"}},
               {"a  b  ", false, 2, 6, {"a", "b"}},
               {"a  b  c", true, 1, 3, {"a"}},
               {"a  b  c", true, 2, 3, {"a", ""}},
               {"a  b  ", true, 3, 6, {"a", "", "b"}},
               {" a", true, 1, 1, {""}},
               {"  a b", false, 1, 4, {"a"}}};
  for (const auto& c : cases) {
    std::size_t endPos = 99;
    const auto split = [&](auto& out) {
      return QXStringTokenizeWhitespace(out, c.text, c.keepEmpty, c.maxTokens, &endPos);
    };
    EXPECT_EQ(Both(split), c.tokens) << c.text << "|" << c.maxTokens;
    EXPECT_EQ(endPos, c.endPos) << c.text << "|" << c.maxTokens;
  }
}

TEST(Quotes, AreStrippedAndCollapsed) {
  // A text, the same stripped, and collapsed.
  std::istringstream rows(
      "'a' a 'a'  'a\" 'a\" 'a\"  xax xax xax  ' ' '  ''' ' '''  '''' '' '''  ''''' ''' ''''  "
      "'a''b''''c' a''b''''c 'a'b''c'  'a\"\"b' a\"\"b 'a\"\"b'");
  for (std::string text, stripped, collapsed; rows >> text >> stripped >> collapsed;) {
    EXPECT_EQ(QXStringStripQuotes(text, "\"'"), stripped) << text;
    EXPECT_EQ(QXStringCollapseQuotes(text, "\"'"), collapsed) << text;
  }
  EXPECT_EQ(QXStringStripQuotes("''", "'") + QXStringStripQuotes("", "'"), "");
  EXPECT_EQ(QXStringCollapseQuotes("''", "'") + QXStringCollapseQuotes("", "'"), "''");
}

TEST(Join, SeparatesAndTrails) {
  EXPECT_EQ(QXStringJoin(Tokens{}, ", ", true), "");
  EXPECT_EQ(QXStringJoin(Tokens{"", ""}, ", "), ", ");
  EXPECT_EQ(QXStringJoin(std::list<std::string>{"a", "b"}, ", ", true), "a, b, ");
}

TEST(CSV, ReadsFields) {
  EXPECT_EQ(SplitCSV("\"a,b\",\"say \"\"hi\"\"\",c"), (Tokens{"a,b", "say \"hi\"", "c"}));
  EXPECT_EQ(QXStringCSVJoin(Tokens{"a,b", "say \"hi\"", "c"}), "\"a,b\",say \"hi\",c");
  EXPECT_EQ(SplitCSV(""), Tokens{});
  EXPECT_EQ(SplitCSV(",,"), Tokens{});
  EXPECT_EQ(SplitCSV(",a,"), (Tokens{"", "a", ""}));
  EXPECT_EQ(SplitCSV("\"\",a"), (Tokens{"", "a"}));
  EXPECT_EQ(SplitCSV("\"a,b\"xy,c"), (Tokens{"\"a,b\"xy", "c"}));
  EXPECT_EQ(SplitCSV(" \"a\",b"), (Tokens{" \"a\"", "b"}));
  EXPECT_EQ(QXStringCSVQuote(""), "");
  EXPECT_EQ(QXStringCSVQuote("\"a\nb"), "\"\"\"a\nb\"");
  EXPECT_EQ(QXStringCSVQuote("a\"b\n"), "a\"b\n");
}

TEST(CSV, ReadsWhatItWrites) {
  std::mt19937 random(2);
  for (int i = 0; i < 20000; ++i) {
    Tokens fields(1 + random() % 4);
    for (auto& field : fields) field = RandomText(random, "a,\"\" \n");
    const std::string line = QXStringCSVJoin(fields);
    EXPECT_EQ(line, QXStringCSVJoin(std::list<std::string>(fields.begin(), fields.end())));
    const bool blank = line.find_first_not_of(',') == std::string::npos;
    ASSERT_EQ(SplitCSV(line), blank ? Tokens{} : fields) << line;
  }
}

// A megabyte takes milliseconds, or with a fault minutes.
TEST(Tokenize, TakesLinearTime) {
  for (const char* unit : {"\"", ",", "\"\",", "\",\"", "a\"", " ", "\"a"}) {
    std::string text;
    while (text.size() < 1 << 20) text += unit;
    Tokens tokens;
    QXStringTokenize(tokens, text, ",", false);
    QXStringTokenizeQuoted(tokens, text, ",", "\"", false);
    QXStringTokenizeWhitespace(tokens, text, true);
    EXPECT_TRUE(QXStringCSVTokenize(tokens, text));
  }
}
