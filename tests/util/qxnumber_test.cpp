#include <gtest/gtest.h>
#include <unistd.h>

#include <cfloat>
#include <charconv>
#include <climits>
#include <clocale>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <limits>
#include <random>

#include <qxsystem/util/qxstring.h>

using namespace QXSystem;
using namespace std::string_literals;

namespace {

std::string ToText(long value, int base) {
  char text[70];
  return std::string(text, std::to_chars(text, text + sizeof text, value, base).ptr);
}

template <class... Args>
std::string Printf(const char* format, Args... args) {
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat-nonliteral"
#pragma GCC diagnostic ignored "-Wformat-security"
  std::string text(static_cast<std::size_t>(std::snprintf(nullptr, 0, format, args...)), ' ');
  std::snprintf(text.data(), text.size() + 1, format, args...);
#pragma GCC diagnostic pop
  return text;
}

// Equal as bytes, so that -0 is not 0 and NaN is NaN.
std::string Bits(double value) {
  return Printf("%a", value);
}

// A program whose locale writes "1,5". False where no such locale can be made.
class CommaLocale {
public:
  CommaLocale() {
    std::filesystem::create_directories(folder_);
    std::ofstream(folder_ / "source") << "comment_char %\nescape_char /\nLC_NUMERIC\n"
                                         "decimal_point \"<U002C>\"\nthousands_sep \"\"\n"
                                         "grouping -1\nEND LC_NUMERIC\n";
    const std::string command = "cd " + folder_.string() +
                                " && localedef --no-archive -c -i source -f ANSI_X3.4-1968 "
                                "./comma >/dev/null 2>&1";
    // The status tells of missing categories, which don't matter.
    [[maybe_unused]] const int status = std::system(command.c_str());
    ::setenv("LOCPATH", folder_.c_str(), 1);
    set_ = std::setlocale(LC_NUMERIC, "comma") != nullptr;
  }
  ~CommaLocale() {
    std::setlocale(LC_NUMERIC, "C");
    ::unsetenv("LOCPATH");
    std::filesystem::remove_all(folder_);
  }
  explicit operator bool() const { return set_ && Printf("%.1f", 1.5) == "1,5"; }

private:
  const std::filesystem::path folder_ =
      std::filesystem::path(::testing::TempDir()) / ("comma" + std::to_string(::getpid()));
  bool set_ = false;
};

}  // namespace

TEST(StringToNumber, ReadsAllOfAnInteger) {
  const struct {
    std::string text;
    int base;
    bool read;
    long value;
  } cases[] = {{"  +12\t", 10, true, 12},
               {"12a", 16, true, 298},
               {"-zZ", 36, true, -1295},
               {"-0", 10, true, 0},
               {std::string(40, '0') + "7", 10, true, 7},
               {"2147483647", 10, true, 2147483647},
               {"-2147483648", 10, true, -2147483648},
               {"2147483648", 10, false, 0},
               {"-2147483649", 10, false, 0},
               {"18446744073709551617", 10, false, 0},  // 1 modulo 2^64
               {std::string(30, '9'), 10, false, 0},
               {"", 10, false, 0},
               {"   ", 10, false, 0},
               {"+", 10, false, 0},
               {"+-1", 10, false, 0},
               {"+ 5", 10, false, 0},
               {"5\n", 10, false, 0},
               {"\r5", 10, false, 0},
               {"1\0"s, 10, false, 0},
               {"12a", 10, false, 0},
               {"12", 2, false, 0},
               {"0x10", 16, false, 0},
               {"@", 36, false, 0},
               {"1", 1, false, 0},
               {"1", 37, false, 0},
               {"1", -10, false, 0}};
  for (const auto& c : cases) {
    SCOPED_TRACE(c.text + " in base " + std::to_string(c.base));
    long value = 99;
    EXPECT_EQ(QXStringToNumber(c.text, value, c.base), c.read);
    EXPECT_EQ(value, c.value);
  }
}

// `Range` is the type whose range counts, which for the longs is not their own.
template <class T, class Range = T>
void ExpectRangeInEveryBase() {
  const long low = std::numeric_limits<Range>::min();
  const long high = std::numeric_limits<Range>::max();
  for (int base = 2; base <= 36; ++base)
    for (const long v : {low - 1, low, low + 1, high - 1, high, high + 1, high * 36}) {
      // Unsigned types take no minus, so low - 1 is refused there too.
      const bool inRange = v >= low && v <= high;
      for (const auto& text : {ToText(v, base), QXStringUpper(ToText(v, base)) + " "}) {
        T value = 9;
        EXPECT_EQ(QXStringToNumber(text, value, base), inRange) << text << " in base " << base;
        EXPECT_EQ(value, static_cast<T>(inRange ? v : 0)) << text << " in base " << base;
      }
    }
  T value = 9;
  EXPECT_EQ(QXStringToNumber("-0", value), std::is_signed_v<T>);
  EXPECT_EQ(value, 0);
}

TEST(StringToNumber, HoldsEachTypeToItsRangeInEveryBase) {
  ExpectRangeInEveryBase<long, std::int32_t>();
  ExpectRangeInEveryBase<unsigned long, std::uint32_t>();
  ExpectRangeInEveryBase<int>();
  ExpectRangeInEveryBase<unsigned int>();
  ExpectRangeInEveryBase<short>();
  ExpectRangeInEveryBase<unsigned short>();
}

TEST(StringToNumber, ReadsAllOfAReal) {
  const double infinity = std::numeric_limits<double>::infinity();
  const struct {
    std::string text;
    bool read;
    double value;
  } cases[] = {{"1.5 ", true, 1.5},
               {"\r\v\f 1.5\n\t ", true, 1.5},
               {"+.5", true, 0.5},
               {"-5.", true, -5.0},
               {"-0", true, -0.0},
               {"1e-3", true, 1e-3},
               {"0x1p3", true, 8.0},
               {"-0X.8", true, -0.5},
               {"-inf", true, -infinity},
               {"+Infinity", true, infinity},
               {"nan", true, std::nan("")},
               {"1e400", true, infinity},
               {"1e-400", true, 0.0},
               {"4.9e-324", true, 4.9e-324},
               {"   ", true, 0.0},
               {"\n\t", true, 0.0},
               {"", false, 0.0},
               {"\v", false, 0.0},
               {"1.5x", false, 0.0},
               {"1.5\r", false, 0.0},
               {"1.5\0"s, false, 0.0},
               {"1,5", false, 0.0},
               {"1e", false, 0.0},
               {".", false, 0.0},
               {"-", false, 0.0},
               {"+-1", false, 0.0},
               {"- 1", false, 0.0},
               {"1 2", false, 0.0}};
  for (const auto& c : cases) {
    SCOPED_TRACE(c.text);
    double value = 99;
    EXPECT_EQ(QXStringToNumber(c.text, value), c.read);
    EXPECT_EQ(Bits(value), Bits(c.value));
    float narrow = 99;
    EXPECT_EQ(QXStringToNumber(c.text, narrow), c.read);
    EXPECT_EQ(Bits(narrow), Bits(static_cast<float>(c.value)));
  }
  float narrow = 0;
  EXPECT_TRUE(QXStringToNumber("1e300", narrow));
  EXPECT_EQ(narrow, std::numeric_limits<float>::infinity());
}

TEST(StringToNumber, AgreesWithStrtodOnRandomText) {
  std::mt19937 random(5);
  unsigned numbers = 0;
  for (int i = 0; i < 200000; ++i) {
    std::string text;
    if (i % 2 == 0) {  // near a number, of any length
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
    ASSERT_EQ(Bits(value), Bits(read ? expected : 0.0)) << text;
    numbers += read;
  }
  EXPECT_GT(numbers, 50000u);
}

TEST(StringToNumber, KnowsTheWordsOfABool) {
  for (const char* text : {"1", "YES", "True", "On", "y", "t"}) {
    bool value = false;
    EXPECT_TRUE(QXStringToNumber(text, value) && value) << text;
  }
  for (const char* text : {"0", "No", "FALSE", "off", "N", "f"}) {
    bool value = true;
    EXPECT_TRUE(QXStringToNumber(text, value) && !value) << text;
  }
  for (const auto& text : {""s, "2"s, "nope"s, " 1"s, "t\0"s, "01"s})
    for (bool value : {false, true}) {
      const bool before = value;
      EXPECT_FALSE(QXStringToNumber(text, value)) << text;
      EXPECT_EQ(value, before) << text;
    }
}

TEST(NumberToString, WritesIntegersInEveryBase) {
  std::vector<long> values = {LONG_MIN, LONG_MIN + 1, LONG_MAX};
  for (long power = 1; power < LONG_MAX / 10; power *= 10)
    for (const long v : {power - 1, power, -power, 1 - power}) values.push_back(v);
  std::string text;
  for (const long v : values) {
    EXPECT_TRUE(QXNumberToString(v, text));
    EXPECT_EQ(text, std::to_string(v));
    for (int base = 2; base <= 36; ++base) {
      EXPECT_TRUE(QXNumberToString(v, text, base));
      EXPECT_EQ(std::strtol(text.c_str(), nullptr, base), v) << text << " in base " << base;
    }
  }
  EXPECT_TRUE(QXNumberToString(35L, text, 36));
  EXPECT_EQ(text, "z");
  for (const int base : {0, 1, 37, -2}) {
    text = "old";
    EXPECT_TRUE(QXNumberToString(5L, text, base));
    EXPECT_EQ(text, "");
  }
  EXPECT_EQ(QXNumberToString(true) + QXNumberToString(false), "truefalse");
}

TEST(NumberToString, WritesRealsAsPrintfDoes) {
  const double infinity = std::numeric_limits<double>::infinity();
  std::vector<double> values = {0.0,
                                -0.0,
                                0.5,
                                1.5,
                                2.5,
                                0.125,
                                0.375,
                                1e22,
                                -1e23,
                                1e300,
                                1e-300,
                                5e-324,
                                0.9999,
                                9.9999995,
                                1e15,
                                DBL_MAX,
                                infinity,
                                -infinity,
                                std::nan(""),
                                0x1p63,
                                0x1p64,
                                0x1p53,
                                0x1.fffffffffffffp63};
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
      const std::string digits = precision > 0 ? "." + std::to_string(precision) : "";
      const std::string format = "%0" + digits + letter;
      const std::string longFormat = "%0" + digits + 'L' + letter;
      for (const double v : values) {
        ASSERT_TRUE(QXNumberToString(v, text, letter, precision));
        ASSERT_EQ(text, Printf(format.c_str(), v));
        if (precision > 17) break;  // slow, and the first value shows the route
      }
      ASSERT_TRUE(QXNumberToString(0.1L, text, letter, precision));
      ASSERT_EQ(text, Printf(longFormat.c_str(), 0.1L));
    }
  EXPECT_TRUE(QXNumberToString(1.5, text, 'f', 0));
  EXPECT_EQ(text, "1.500000");
  EXPECT_TRUE(QXNumberToString(DBL_MAX, text, 'F', 20000));
  EXPECT_EQ(text, Printf("%.20000f", DBL_MAX));

  for (const char letter : "aAdxL %\0"s) {
    text = "old";
    EXPECT_FALSE(QXNumberToString(1.5, text, letter, 2));
    EXPECT_FALSE(QXNumberToString(1.5L, text, letter, 2));
    EXPECT_EQ(text, "old");
  }
}

TEST(Numbers, KeepThePointWhateverTheLocale) {
  const CommaLocale comma;
  if (!comma) GTEST_SKIP() << "no locale with a decimal comma can be made here";
  double value = 0;
  for (const char* text : {"0.5", "+0.5", "0x.8", " 5e-1"}) {
    EXPECT_TRUE(QXStringToNumber(text, value)) << text;
    EXPECT_EQ(value, 0.5) << text;
  }
  EXPECT_FALSE(QXStringToNumber("0,5", value));
  std::string text;
  const auto written = [&](auto v, char letter, int precision) {
    EXPECT_TRUE(QXNumberToString(v, text, letter, precision));
    return text;
  };
  EXPECT_EQ(written(1.5, 'f', 1), "1.5");
  EXPECT_EQ(written(1.5, 'g', 2), "1.5");
  EXPECT_EQ(written(1.5L, 'e', 1), "1.5e+00");
  EXPECT_EQ(written(1.5, 'f', 1000), "1.5" + std::string(999, '0'));
  EXPECT_EQ(QXMakeString("%.1f %g", 1.5, 2.5), "1,5 2,5");  // printf is the program's
}

TEST(TrimToSigFigs, DropsZerosAndKeepsTheValue) {
  const char* cases[][2] = {{"1.500", "1.5"},
                            {"1.000", "1.0"},
                            {"2.500E+03", "2.5E+03"},
                            {"1.200e+10", "1.2e+10"},
                            {"-1.20E-10", "-1.2E-10"},
                            {"1.50e10", "1.5e10"},
                            {".500", ".5"},
                            {"0.0", "0.0"},
                            {"10.0010", "10.001"},
                            {"1.500E+", "1.5E+"},
                            {"100", "100"},
                            {"100.", "100."},
                            {"1E+5.00", "1E+5.00"},
                            {"1.E+10", "1.E+10"},
                            {"1.5e-10", "1.5e-10"},
                            {"0x1.80p+10", "0x1.80p+10"},
                            {" -0X1.80e00", " -0X1.80e00"},
                            {"nan", "nan"},
                            {"", ""},
                            {".", "."},
                            {"1.50 100", "1.50 100"},
                            {"1.2.300", "1.2.3"},
                            {"1.50e", "1.50e"}};
  for (const auto& c : cases) EXPECT_EQ(QXTrimToSigFigs(c[0]), c[1]);
}

TEST(Interpolation, TakesItsArgumentsInOrder) {
  EXPECT_EQ(QXLinearInterpolation(2, 1, 5, 10, 30), 15);
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
