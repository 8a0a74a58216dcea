#include <qxsystem/util/utfconvert.h>

#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

#include <qxsystem/util/utfcheck_private.h>

using namespace QXSystem;

namespace {

using Bytes = std::vector<unsigned char>;  // as many as the address sanitizer guards

bool Has(const Bytes& text, std::size_t i, unsigned low, unsigned high) {
  return i < text.size() && text[i] >= low && text[i] <= high;
}

// By the table of well-formed byte sequences in the Unicode standard (3-7),
// without U+FFFE and U+FFFF.
bool IsWellFormed(const Bytes& text) {
  const struct {
    unsigned first, last, secondLow, secondHigh, length;
  } rows[] = {
      {0x01, 0x7F, 0, 0, 1},       {0xC2, 0xDF, 0x80, 0xBF, 2}, {0xE0, 0xE0, 0xA0, 0xBF, 3},
      {0xE1, 0xEC, 0x80, 0xBF, 3}, {0xED, 0xED, 0x80, 0x9F, 3}, {0xEE, 0xEF, 0x80, 0xBF, 3},
      {0xF0, 0xF0, 0x90, 0xBF, 4}, {0xF1, 0xF3, 0x80, 0xBF, 4}, {0xF4, 0xF4, 0x80, 0x8F, 4}};
  for (std::size_t i = 0; i < text.size();) {
    if (Has(text, i, 0xEF, 0xEF) && Has(text, i + 1, 0xBF, 0xBF) && Has(text, i + 2, 0xBE, 0xBF))
      return false;
    unsigned length = 0;
    for (const auto& row : rows)
      if (Has(text, i, row.first, row.last) &&
          (row.length < 2 || Has(text, i + 1, row.secondLow, row.secondHigh)))
        length = row.length;
    if (length == 0) return false;
    for (std::size_t k = 2; k < length; ++k)
      if (!Has(text, i + k, 0x80, 0xBF)) return false;
    i += length;
  }
  return true;
}

void ExpectTheSameEverywhere(Bytes text) {
  const bool expected = IsWellFormed(text), avx2 = __builtin_cpu_supports("avx2");
  ASSERT_EQ(IsUtf8Portable(text.data(), text.size()), expected) << testing::PrintToString(text);
  ASSERT_EQ(avx2 ? IsUtf8Avx2(text.data(), text.size()) : expected, expected)
      << testing::PrintToString(text);
  text.push_back(0);
  ASSERT_EQ(QXIsValidUTF8(text.data()), expected) << testing::PrintToString(text);
}

}  // namespace

TEST(QXIsValidUTF8, AgreesWithTheStandardOnAllKindsOfSequences) {
  for (unsigned first = 1; first < 256; ++first)
    for (unsigned second = 1; second < 256; ++second)
      ASSERT_NO_FATAL_FAILURE(ExpectTheSameEverywhere(
          {static_cast<unsigned char>(first), static_cast<unsigned char>(second)}));
  // The bytes at which some rule begins or ends.
  const Bytes kinds = {0x01, 0x7F, 0x80, 0x8F, 0x90, 0x9F, 0xA0, 0xBD, 0xBE,
                       0xBF, 0xC0, 0xC1, 0xC2, 0xDF, 0xE0, 0xE1, 0xEC, 0xED,
                       0xEE, 0xEF, 0xF0, 0xF1, 0xF3, 0xF4, 0xF5, 0xFF};
  for (const auto a : kinds)
    for (const auto b : kinds)
      for (const auto c : kinds)
        for (const auto d : kinds) ASSERT_NO_FATAL_FAILURE(ExpectTheSameEverywhere({a, b, c, d}));
}

TEST(QXIsValidUTF8, SeesCharactersWhereverTheyStand) {
  const std::string front = "\xF0\x9F\x98\x80";
  for (const std::string piece : {"\xC3\xA9", "\xE2\x82\xAC", "\xF0\x9F\x98\x80", "\xEF\xBF\xBD",
                                  "\xEF\xBF\xBE", "\xF0\x9F\x98", "\xC3", "\xA9", "\xED\xA0\x80"})
    for (std::size_t place = 0; place < 4100; place += place == 140 ? 3940 : 1)
      for (const std::size_t behind : {0u, 1u, 3u, 40u})
        for (const bool ascii : {false, true}) {
          Bytes text(place, 'a');
          for (std::size_t i = 0; !ascii && i < place / 4 * 4; ++i)
            text[i] = static_cast<unsigned char>(front[i % 4]);
          text.insert(text.end(), piece.begin(), piece.end());
          text.insert(text.end(), behind, 'b');
          ASSERT_NO_FATAL_FAILURE(ExpectTheSameEverywhere(text));
        }
}

TEST(QXBytesToUTF8, ConvertsWhatIsNotUtf8) {
  const std::pair<const char*, const char*> cases[] = {
      {"", ""},
      {"abc \xC3\xA9", "abc \xC3\xA9"},
      {"\xF4\x8F\xBF\xBF\xEF\xBF\xBD\x7F", "\xF4\x8F\xBF\xBF\xEF\xBF\xBD\x7F"},
      {"\xC0\xAF", "\xC3\x80\xC2\xAF"},                  // an overlong /
      {"\xED\xA0\x80", "\xC3\xAD\xC2\xA0\xE2\x82\xAC"},  // U+D800
      {"\xE9 \xFF", "\xC3\xA9 \xC3\xBF"},
      {"\x80", "\xE2\x82\xAC"},
      {"\x9F", "\xC5\xB8"},
      {"\x81\x8D\x8F\x90\x9D", "\xC2\x81\xC2\x8D\xC2\x8F\xC2\x90\xC2\x9D"},
      {"\x93\x96\x99", "\xE2\x80\x9C\xE2\x80\x93\xE2\x84\xA2"}};
  for (const auto& [bytes, expected] : cases) EXPECT_STREQ(QXBytesToUTF8(bytes).c_str(), expected);
  const unsigned char valid[] = "\xC3\xA9";
  EXPECT_EQ(QXWin1252ToUTF8(valid), "\xC3\x83\xC2\xA9");
}
