#include <gtest/gtest.h>

#include <climits>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cwchar>
#include <random>
#include <string>

#include <qxsystem/core/errortest.h>
#include <qxsystem/util/qxstring.h>

using namespace QXSystem;

TEST(Case, ConcernsLettersOfAsciiOnly) {
  std::string all;
  for (int c = 0; c < 256; ++c) all += static_cast<char>(c);
  const std::string lower = QXStringLower(all);
  const std::string upper = QXStringUpper(all);
  for (int c = 0; c < 256; ++c) {
    const auto at = static_cast<std::size_t>(c);
    const bool isUpper = c >= 'A' && c <= 'Z';
    const bool isLower = c >= 'a' && c <= 'z';
    EXPECT_EQ(lower[at], static_cast<char>(isUpper ? c + 32 : c));
    EXPECT_EQ(upper[at], static_cast<char>(isLower ? c - 32 : c));
    for (int d = 0; d < 256; ++d) {
      const bool equal = c == d || (isUpper && d == c + 32) || (isLower && d == c - 32);
      const std::string a(1, static_cast<char>(c));
      const std::string b(1, static_cast<char>(d));
      ASSERT_EQ(QXStringEquals(a, b), equal) << c << " " << d;
    }
  }
  EXPECT_TRUE(QXStringEquals("-In", "-iN"));
  EXPECT_FALSE(QXStringEquals("-in", "-inn"));
}

TEST(WhiteSpace, IsStrippedSimplifiedAndExpanded) {
  const struct {
    std::string text, stripped, simplified, expanded;
  } cases[] = {{"  a \t b  ", "a \t b", " a b", "  a      b  "},
               {"\ta", "a", " a", "    a"},
               {"a\n ", "a\n", "a\n", "a\n "},
               {" \t ", "", "", "      "},
               {"", "", "", ""}};
  for (const auto& c : cases) {
    EXPECT_EQ(QXStringStripWhiteSpace(c.text), c.stripped);
    EXPECT_EQ(QXStringSimplifyWhiteSpace(c.text), c.simplified);
    EXPECT_EQ(QXStringTabsToSpaces(c.text), c.expanded);
    EXPECT_EQ(QXStringTranslate(c.text), c.text);
  }
}

TEST(Match, KnowsTwoWildcards) {
  const struct {
    const char *text, *pattern;
    bool match;
  } cases[] = {{"", "", true},
               {"a", "", false},
               {"", "*", true},
               {"abc", "abc", true},
               {"abc", "ABC", false},
               {"abc", "ab", false},
               {"abc", "a*", true},
               {"abc", "*c", true},
               {"abc", "b*", false},
               {"ab", "ab*b", true},
               {"ab", "a*b*b", false},
               {"a", "a**a", true},
               {"abcdef", "a*d*f", true},
               {"abcdef", "a*x*f", false},
               {"abcdef", "*cd*", true},
               {"abcdef", "ab*bc*", false},
               {"abc", "a*c*c", false},
               {"acc", "a*c*c", true},
               {"a*b", "a*b", true},
               {"a?c", "a?c", true},
               {"abc", "a?c", false}};
  const QXPushQXThrowHasNoMessages quiet;
  for (const auto& c : cases)
    EXPECT_EQ(QXStringMatch(c.text, c.pattern), c.match) << c.text << " " << c.pattern;
}

TEST(Match, WarnsOfMoreWildcardsWhereItMatters) {
  const struct {
    const char *text, *pattern;
    bool match;
    unsigned warnings;
  } cases[] = {{"abc", "a*b*c*", false, 1},
               {"abc", "***", false, 1},
               {"a*b*c*", "a*b*c*", true, 0},
               {"abc", "x*b*c*", false, 0},
               {"abc", "*a*b*x", false, 0}};
  for (const auto& c : cases) {
    QXPushSimpleQXThrowTester reports;
    EXPECT_EQ(QXStringMatch(c.text, c.pattern), c.match) << c.pattern;
    EXPECT_EQ(reports.NumMessagesAtLevel(QXErrorLevel::Warning), c.warnings) << c.pattern;
    if (c.warnings == 0) continue;
    EXPECT_NE(reports.GetErrorLog().find("QXStringMatch doesn't support more than two wildcards, "
                                         "*'s, in a pattern\n"),
              std::string::npos);
  }
}

TEST(Match, TakesLinearTime) {
  const std::string text(1 << 20, 'a');
  EXPECT_FALSE(QXStringMatch(text, "*" + text.substr(text.size() / 2) + "b*"));
}

// Both sides are printf; what is tested is that no conversion takes a wrong
// turn on the way.
#define EXPECT_PRINTF(...)                                                                       \
  do {                                                                                           \
    std::string expected(static_cast<std::size_t>(std::snprintf(nullptr, 0, __VA_ARGS__)), ' '); \
    std::snprintf(expected.data(), expected.size() + 1, __VA_ARGS__);                            \
    EXPECT_EQ(QXMakeString(__VA_ARGS__), expected);                                              \
  } while (false)

TEST(MakeString, PrintsAsPrintfDoes) {
  const char* volatile null = nullptr;  // volatile: hidden from the compiler's warnings
  EXPECT_PRINTF("plain");
  EXPECT_PRINTF("%s %d %.3f", "molecule", 42, 1.23456);
  EXPECT_PRINTF("%d %i %u %%", INT_MIN, INT_MAX, UINT_MAX);
  EXPECT_PRINTF("%ld %li %lu %zu %zd", LONG_MIN, LONG_MAX, ULONG_MAX, SIZE_MAX, ssize_t{-1});
  EXPECT_PRINTF("%f %.0f %.9f %f", 0.1, 2.5, -1e-9, 1e300);
  EXPECT_PRINTF("%f %.2f", static_cast<double>(NAN), -static_cast<double>(INFINITY));
  EXPECT_PRINTF("%5d|%-5s|%05.1f|%+d|%x|%#o|%e|%g|%.10f|%.3s", 7, "ab", 1.5, 3, 255u, 8u, 1.5, 2.5,
                0.1, "abcdef");
  EXPECT_PRINTF("%hd %lld %p %*d", short{-3}, 5LL, static_cast<void*>(nullptr), 4, 2);
  EXPECT_EQ(QXMakeString("%s|%c|", null, '\0'), std::string("(null)|\0|", 9));
  std::string (*const unchecked)(const char*, ...) = QXMakeString;
  EXPECT_EQ(unchecked(nullptr), "");
  for (const std::size_t size : {1023u, 1024u, 8191u, 8192u, 16383u, 16384u, 100000u}) {
    const std::string text(size, 'x');
    EXPECT_EQ(QXMakeString("%s", text.c_str()), text);
    EXPECT_EQ(QXMakeString("%s%d", text.c_str(), 12), text + "12");
  }
  char buffer[4];
  EXPECT_EQ(QXSNPrintf(buffer, sizeof buffer, "%d", 12345), 5);
  EXPECT_STREQ(buffer, "123");
}

TEST(MakeString, WarnsOfWhatPrintfRefuses) {
  QXPushSimpleQXThrowTester reports;
  EXPECT_EQ(QXMakeString("%lc", static_cast<wint_t>(0x20AC)), "");  // not in the C locale
  EXPECT_EQ(reports.NumMessagesAtLevel(QXErrorLevel::Warning), 1u);
  EXPECT_NE(reports.GetErrorLog().find("Unable to resize string memory: "), std::string::npos);
}
