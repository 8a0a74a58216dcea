#include <gtest/gtest.h>

#include <climits>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cwchar>
#include <sstream>
#include <string>

#include <qxsystem/core/errortest.h>
#include <qxsystem/util/qxstring.h>

using namespace QXSystem;

TEST(Case, ConcernsLettersOfAsciiOnly) {
  std::string all;
  for (int c = 0; c < 256; ++c) all += static_cast<char>(c);
  const std::string lower = QXStringLower(all);
  const std::string upper = QXStringUpper(all);
  for (std::size_t c = 0; c < 256; ++c) {
    EXPECT_EQ(lower[c], all[c >= 'A' && c <= 'Z' ? c + 32 : c]);
    EXPECT_EQ(upper[c], all[c >= 'a' && c <= 'z' ? c - 32 : c]);
    for (std::size_t d = 0; d < 256; ++d)
      ASSERT_EQ(QXStringEquals(all.substr(c, 1), all.substr(d, 1)), lower[c] == lower[d]);
  }
  EXPECT_FALSE(QXStringEquals("-in", "-inn"));
}

TEST(WhiteSpace, IsStrippedSimplifiedAndExpanded) {
  const struct {
    std::string text, stripped, simplified, expanded;
  } cases[] = {{"  a \t b  ", "a \t b", " a b", "  a      b  "},
               {"a\n ", "a\n", "a\n", "a\n "},
               {" \t ", "", "", "      "}};
  for (const auto& c : cases) {
    EXPECT_EQ(QXStringStripWhiteSpace(c.text), c.stripped);
    EXPECT_EQ(QXStringSimplifyWhiteSpace(c.text), c.simplified);
    EXPECT_EQ(QXStringTabsToSpaces(c.text), c.expanded);
    EXPECT_EQ(QXStringTranslate(c.text), c.text);
  }
}

TEST(Match, KnowsTwoWildcardsAndWarnsOfMore) {
  const QXPushQXThrowHasSpecficMessages warning(
      QXErrorLevel::Warning,
      "QXStringMatch doesn't support more than two wildcards, *'s, in a pattern");
  // A text, a comma and a pattern.
  const auto matches = [](const std::string& row) {
    const auto comma = row.find(',');
    return QXStringMatch(row.substr(0, comma), row.substr(comma + 1));
  };
  std::istringstream matching(
      "abc,abc abc,a* abc,*c ab,ab*b a,a**a acc,a*c*c abcdef,*cd* a*b,a*b a?c,a?c , ,* "
      "a*b*c*,a*b*c*");
  for (std::string row; matching >> row;) EXPECT_TRUE(matches(row)) << row;
  std::istringstream others(
      "a, abc,ABC abc,ab abc,b* abc,*b ab,a*b*b aba,ab*a*ba b,bb* abcdef,a*x*f abcdef,*ef*f "
      "abc,a?c abc,x*b*c* abc,*a*b*x");
  for (std::string row; others >> row;) EXPECT_FALSE(matches(row)) << row;
  EXPECT_EQ(warning.NumMessages(), 0u);
  EXPECT_FALSE(matches("abc,a*b*c*") || matches("abc,***"));
  EXPECT_EQ(warning.NumMessages(), 2u);

  const std::string text(1 << 20, 'a');  // in milliseconds, or with a fault minutes
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

TEST(MakeString, PrintsAsPrintfDoesAndWarnsOfWhatItRefuses) {
  const char* volatile null = nullptr;  // volatile: hidden from the compiler's warnings
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
    EXPECT_EQ(QXMakeString("%s%d", text.c_str(), 12), text + "12");
  }
  char buffer[4];
  EXPECT_TRUE(QXSNPrintf(buffer, sizeof buffer, "%d", 12345) == 5 && buffer == std::string("123"));
  // No letter of the C locale.
  const QXPushQXThrowHasSpecficMessages warning(
      QXErrorLevel::Warning, "Unable to resize string memory: 2147483647 (2147483647)");
  EXPECT_EQ(QXMakeString("%lc", static_cast<wint_t>(0x20AC)), "");
  EXPECT_EQ(warning.NumMessages(), 1u);
}
