#include <gtest/gtest.h>

#include <algorithm>
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

Tokens NotEmpty(Tokens tokens) {
  tokens.erase(std::remove(tokens.begin(), tokens.end(), ""), tokens.end());
  return tokens;
}

Tokens Split(const std::string& text, const std::string& delimiters, bool skipEmpty) {
  return Both([&](auto& out) { return QXStringTokenize(out, text, delimiters, skipEmpty); });
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
  std::mt19937 random(1);
  for (int i = 0; i < 20000; ++i) {
    const std::string text = RandomText(random, "ab,;|\t\xFF-_");
    const std::string delimiters = std::string(",;|\t\xFF").substr(0, random() % 6);
    Tokens all{""};
    for (const char c : text)
      delimiters.find(c) != text.npos ? void(all.emplace_back()) : all.back().push_back(c);
    ASSERT_EQ(Split(text, delimiters, false), all) << text;
    ASSERT_EQ(Split(text, delimiters, true), NotEmpty(all)) << text;
    ASSERT_EQ(QXStringJoin(Split(text, ",", false), ","), text);
  }
  EXPECT_EQ(QXStringJoin(Tokens{}, ", ", true), "");
  EXPECT_EQ(QXStringJoin(std::list<std::string>{"a", "b"}, ", ", true), "a, b, ");
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
}

TEST(TokenizeQuoted, ProtectsDelimitersBetweenQuotes) {
  const struct {
    std::string text;
    Tokens tokens;
  } cases[] = {{"", {}},
               {",;a,,b,", {"", "", "a", "", "b", ""}},
               {"'a,b'xy,c", {"'a,b'xy", "c"}},
               {"'a'',b',c", {"'a'',b'", "c"}},
               {"\"a',b\",c", {"\"a',b\"", "c"}},
               {"a'b,c'", {"a'b", "c'"}},
               {"'open,c", {"'open,c"}},
               {"''',c", {"''',c"}},  // a pair, and nothing closes
               {"'", {"'"}}};
  for (const auto& c : cases) {
    for (const bool skip : {false, true})
      EXPECT_EQ(
          Both([&](auto& out) { return QXStringTokenizeQuoted(out, c.text, ",;", "\"'", skip); }),
          skip ? NotEmpty(c.tokens) : c.tokens)
          << c.text;
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
               {"", true, 0, 0, {}},
               {" \n ", true, 0, 3, {""}},
               {"a  b  c", false, 2, 6, {"a", "b"}},
               {"a  b  c", true, 2, 3, {"a", ""}},
               {"a  b  ", true, 3, 6, {"a", "", "b"}},
               {"  a b", false, 1, 4, {"a"}}};
  for (const auto& c : cases) {
    std::size_t endPos = 99;
    const auto split = [&](auto& out) {
      return QXStringTokenizeWhitespace(out, c.text, c.keepEmpty, c.maxTokens, &endPos);
    };
    EXPECT_TRUE(Both(split) == c.tokens && endPos == c.endPos) << c.text << "|" << c.maxTokens;
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
  EXPECT_EQ(QXStringStripQuotes("''", "'") + QXStringCollapseQuotes("''", "'"), "''");
  EXPECT_EQ(QXStringStripQuotes("", "'") + QXStringCollapseQuotes("", "'"), "");
}

TEST(CSV, ReadsWhatItWrites) {
  EXPECT_EQ(SplitCSV("\"a,b\",\"say \"\"hi\"\"\",c"), (Tokens{"a,b", "say \"hi\"", "c"}));
  EXPECT_EQ(SplitCSV("\"a,b\"xy, \"a\""), (Tokens{"\"a,b\"xy", " \"a\""}));
  EXPECT_EQ(QXStringCSVJoin(Tokens{"", "a,b", "a\"b\n", "\"a\nb"}), ",\"a,b\",a\"b\n,\"\"\"a\nb\"");
  std::mt19937 random(2);
  for (int i = 0; i < 20000; ++i) {
    Tokens fields(1 + random() % 4);
    for (auto& field : fields) field = RandomText(random, "a,\"\" \n");
    const std::string line = QXStringCSVJoin(fields);
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
