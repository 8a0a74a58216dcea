#include <gtest/gtest.h>

#include <cfloat>
#include <charconv>
#include <climits>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <optional>
#include <random>
#include <sstream>

#include <qxsystem/util/qxstring.h>

#include <tests/support/commalocale.h>

using namespace QXSystem;
using namespace std::string_literals;

namespace {

std::string ToText(long value, int base) {
  char text[70];
  return std::string(text, std::to_chars(text, text + sizeof text, value, base).ptr);
}

// The value of `text`, if it is a number; what is none leaves 0.
template <class T, class... Base>
std::optional<T> Read(const std::string& text, Base... base) {
  T value = 99;
  if (QXStringToNumber(text, value, base...)) return value;
  EXPECT_EQ(value, 0);
  return std::nullopt;
}

// The C library's text of a number.
template <class T>
std::string Printf(const std::string& format, T value) {
  static char text[25000];
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat-nonliteral"
  std::snprintf(text, sizeof text, format.c_str(), value);
#pragma GCC diagnostic pop
  return text;
}

}  // namespace

TEST(StringToNumber, ReadsAllOfAnInteger) {
  EXPECT_EQ(Read<long>("  +12\t"), 12);
  EXPECT_EQ(Read<long>(std::string(40, '0') + "7"), 7);
  EXPECT_TRUE(Read<long>("12a", 16) == 298 && Read<long>("-zZ", 36) == -1295);
  EXPECT_EQ(Read<long>("0x10", 16), std::nullopt);
  for (const auto& text : {""s, "   "s, "+"s, "+-1"s, "+ 5"s, "5\n"s, "\r5"s, "1\0"s, "12a"s,
                           "0x1"s, std::string(30, '9'), "18446744073709551617"s})  // 1 modulo 2^64
    EXPECT_EQ(Read<long>(text), std::nullopt) << text;
  for (const int base : {-10, 0, 1, 37}) EXPECT_EQ(Read<long>("0", base), std::nullopt) << base;
}

// `Range` is the type whose range counts, which for the longs is not their own.
template <class T, class Range = T>
void ExpectRangeInEveryBase() {
  const long low = std::numeric_limits<Range>::min();
  const long high = std::numeric_limits<Range>::max();
  for (int base = 2; base <= 36; ++base)
    for (const long v : {low - 1, low, low + 1, high - 1, high, high + 1, high * 36})
      // Unsigned types take no minus, so low - 1 is refused there too.
      EXPECT_EQ(Read<T>(ToText(v, base), base),
                v >= low && v <= high ? std::optional<T>(static_cast<T>(v)) : std::nullopt)
          << v << " in base " << base;
  EXPECT_EQ(Read<T>("-0").has_value(), std::is_signed_v<T>);
}

TEST(StringToNumber, HoldsEachTypeToItsRangeInEveryBase) {
  ExpectRangeInEveryBase<long, int>(), ExpectRangeInEveryBase<unsigned long, unsigned>();
  ExpectRangeInEveryBase<int>(), ExpectRangeInEveryBase<unsigned>();
  ExpectRangeInEveryBase<short>(), ExpectRangeInEveryBase<unsigned short>();
}

TEST(StringToNumber, ReadsAllOfAReal) {
  EXPECT_EQ(Read<double>("\r\v\f 1.5\n\t "), 1.5);
  for (const char* blanks : {" ", "\n\t"}) EXPECT_EQ(Read<double>(blanks), 0.0);
  for (const auto& text : {""s, "\v"s, "1.5\r"s, "1.5\0"s, "1,5"s})
    EXPECT_EQ(Read<double>(text), std::nullopt) << text;
  EXPECT_TRUE(Read<float>(" 0.1 ") == 0.1F && Read<float>("1e300") == HUGE_VALF);

  // Like strtod, to the last bit, on random text: every other one near a number.
  std::mt19937 random(5);
  unsigned numbers = 0;
  for (int i = 0; i < 200000; ++i) {
    std::string text;
    if (i % 2 == 0) {
      text = std::to_string(random() % 1000) + "." + std::to_string(random());
      if (random() % 2) text += std::to_string(random());
      if (random() % 4 == 0) text += "e" + std::to_string(static_cast<int>(random() % 700) - 350);
    }
    for (auto n = random() % 4; n > 0 || text.empty(); n -= n > 0)
      text.insert(random() % (text.size() + 1), 1, " \t\r\n+-.eE0123456789xXpinfa"[random() % 27]);
    char* rest;
    const double expected = std::strtod(text.c_str(), &rest);
    const bool read =
        text.find_first_not_of(" \t\n", static_cast<std::size_t>(rest - text.c_str())) == text.npos;
    double value = 99;
    ASSERT_EQ(QXStringToNumber(text, value), read) << text;
    ASSERT_EQ(Printf("%a", value), Printf("%a", read ? expected : 0.0)) << text;  // -0, NaN too
    numbers += read;
  }
  EXPECT_GT(numbers, 50000u);
}

TEST(StringToNumber, KnowsTheWordsOfABool) {
  std::istringstream rows("1 0 YES No True FALSE On off y N t f");
  bool value;
  for (std::string on, off; rows >> on >> off;) {
    EXPECT_TRUE(QXStringToNumber(on, value = false) && value) << on;
    EXPECT_TRUE(QXStringToNumber(off, value = true) && !value) << off;
  }
  for (const auto& text : {""s, "2"s, "nope"s, " 1"s, "t\0"s, "01"s})
    for (const bool before : {false, true})
      EXPECT_TRUE(!QXStringToNumber(text, value = before) && value == before) << text;
}

TEST(NumberToString, WritesIntegersInEveryBase) {
  std::string text;
  for (const long v : {LONG_MIN, LONG_MIN + 1, LONG_MAX, 0L, 9L, -10L, 99999L, 100000L})
    for (int base = 2; base <= 36; ++base)
      EXPECT_TRUE(QXNumberToString(v, text, base) && text == ToText(v, base)) << text;
  for (const int base : {0, 1, 37, -2})
    EXPECT_TRUE(QXNumberToString(5L, text = "old", base) && text.empty());
  EXPECT_EQ(QXNumberToString(true) + QXNumberToString(false), "truefalse");
}

TEST(NumberToString, WritesRealsAsPrintfDoes) {
  std::vector<double> values = {-0.0,   0.5,    0.9999, -9.9999995, 1e22,     5e-324,
                                0x1p53, 0x1p63, 0x1p64, -HUGE_VAL,  HUGE_VAL, std::nan("")};
  std::mt19937_64 random(6);
  for (int i = 0; i < 3000; ++i) {
    double value;
    const auto bits = random();
    std::memcpy(&value, &bits, sizeof value);
    values.push_back(value);
    values.push_back(std::ldexp(static_cast<double>(bits >> 11), -static_cast<int>(bits % 130)));
    values.push_back(static_cast<double>(static_cast<long>(bits) >> 40) / 1024);  // many ties
  }
  std::string text;
  for (const char letter : "eEfFgG"s)
    for (const int precision : {0, -3, 1, 2, 3, 6, 12, 17, 19, 20, 25, 200, 201}) {
      const std::string format = precision > 0 ? "%0." + std::to_string(precision) : "%0";
      for (const double v : values) {
        ASSERT_TRUE(QXNumberToString(v, text, letter, precision));
        ASSERT_EQ(text, Printf(format + letter, v));
        if (precision > 20) break;  // slow, and the first value shows the route
      }
      ASSERT_TRUE(QXNumberToString(0.1L, text, letter, precision));
      ASSERT_EQ(text, Printf(format + 'L' + letter, 0.1L));
    }
  EXPECT_TRUE(QXNumberToString(DBL_MAX, text, 'F', 20000) && text == Printf("%.20000f", DBL_MAX));
  for (const char letter : "aAdxL %\0"s)
    EXPECT_FALSE(QXNumberToString(1.5, text = "old", letter, 2) ||
                 QXNumberToString(1.5L, text, letter, 2) || text != "old");
}

TEST(Numbers, KeepThePointWhateverTheLocale) {
  const qxtest::CommaLocale comma;
  if (!comma) GTEST_SKIP() << "no locale with a decimal comma can be made here";
  EXPECT_TRUE(Read<double>("+0.5") == 0.5 && Read<double>("0x.8") == 0.5);
  EXPECT_EQ(Read<double>("0,5"), std::nullopt);
  std::string text;
  EXPECT_TRUE(QXNumberToString(1.5, text, 'g', 2) && text == "1.5") << text;
  EXPECT_TRUE(QXNumberToString(1.5L, text, 'e', 1) && text == "1.5e+00") << text;
  EXPECT_TRUE(QXNumberToString(1.5, text, 'f', 1000) && text == "1.5" + std::string(999, '0'));
  EXPECT_EQ(QXMakeString("%.1f %g", 1.5, 2.5), "1,5 2,5");  // printf is the program's
}

TEST(TrimToSigFigs, DropsZerosAndKeepsTheValue) {
  std::istringstream rows(
      "1.500 1.5  1.000 1.0  2.500E+03 2.5E+03  1.200e+10 1.2e+10  -1.20E-10 -1.2E-10  1.50e10 "
      "1.5e10  .500 .5  10.0010 10.001  1.500E+ 1.5E+  1.2.300 1.2.3");
  for (std::string text, trimmed; rows >> text >> trimmed;)
    EXPECT_EQ(QXTrimToSigFigs(text), trimmed);
  for (const char* same : {"", "0.0", "100", "100.", ".", "nan", "1E+5.00", "1.E+10", "1.5e-10",
                           "1.50e", "1.50,10", "0x1.80p+10", "\n-0X1.80e00"})
    EXPECT_EQ(QXTrimToSigFigs(same), same);
}

TEST(Interpolation, TakesItsArgumentsInOrder) {
  // 1, 2, 3 and 4 at (0, 0), (1, 1), (0, 1) and (1, 0).
  EXPECT_EQ(QX2DLinearInterpolation(0, 0, 1, 1, 1, 2, 3, 4, 0, 1), 3);
  EXPECT_EQ(QX2DLinearInterpolation(0, 0, 1, 1, 1, 2, 3, 4, 1, 0), 4);
  EXPECT_EQ(QX2DLinearInterpolation(0, 0, 1, 1, 1, 2, 3, 4, 0.5, 0.25), 2.5);
  // The stated order of operations decides the last bit.
  const double x = 0.1, x0 = 0.3, x1 = 0.7, y0 = 0.2, y1 = 1.1;
  const volatile double product = (x - x0) * (y1 - y0);
  const volatile double quotient = product / (x1 - x0);
  EXPECT_EQ(QXLinearInterpolation(x, x0, x1, y0, y1), quotient + y0);
}
