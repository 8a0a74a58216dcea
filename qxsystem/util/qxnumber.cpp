#include <qxsystem/util/qxnumber.h>

#include <locale.h>
#include <stdlib.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdint>
#include <iterator>
#include <limits>
#include <optional>
#include <string_view>

#include <qxsystem/util/digits_private.h>
#include <qxsystem/util/qxstring.h>

namespace QXSystem {

namespace {

bool IsBlank(char c) {
  return c == ' ' || c == '\t';
}

// 0 to 9, and more for what is no digit.
unsigned DecimalDigit(char c) {
  return static_cast<unsigned>(c) - '0';
}

// A locale that is never freed: threads may still convert during exit.
locale_t CLocale() {
  static const locale_t locale = ::newlocale(LC_ALL_MASK, "C", nullptr);
  return locale;
}

// The calling thread writes numbers in the C locale while this lives.
class CLocaleScope {
public:
  CLocaleScope() : saved_(::uselocale(CLocale())) {}
  ~CLocaleScope() { ::uselocale(saved_); }
  CLocaleScope(const CLocaleScope&) = delete;
  CLocaleScope& operator=(const CLocaleScope&) = delete;

private:
  const locale_t saved_;
};

// --- text to integer

constexpr auto digitValues = [] {
  std::array<unsigned char, 256> values{};
  for (auto& v : values) v = 36;  // a digit of no base
  for (unsigned i = 0; i < 10; ++i) values['0' + i] = static_cast<unsigned char>(i);
  for (unsigned i = 0; i < 26; ++i)
    values['a' + i] = values['A' + i] = static_cast<unsigned char>(10 + i);
  return values;
}();

// The value of `text` from `lowest`, where 0 forbids the "-", to `highest`, both
// within 33 bits.
std::optional<long> ParseInteger(const std::string& text, long lowest, long highest, int base) {
  // No loop passes the end: the zero byte there is neither blank nor digit.
  const char* p = text.data();
  while (IsBlank(*p)) ++p;
  const bool negative = *p == '-' && lowest < 0;
  if (negative || *p == '+') ++p;
  const long limit = negative ? -lowest : highest;

  const char* const first = p;
  long value = 0;
  for (;; ++p) {
    const long digit = digitValues[static_cast<unsigned char>(*p)];
    if (digit >= base) break;
    value = value * base + digit;
    if (value > limit) return std::nullopt;
  }
  if (p == first) return std::nullopt;
  while (IsBlank(*p)) ++p;
  if (p != text.data() + text.size()) return std::nullopt;
  return negative ? -value : value;
}

// What most integers are: a "-" or none and up to 18 decimal digits, which can't
// overflow, so that one test at the end suffices. False says nothing yet.
// `lowest` is 0 or -highest - 1.
bool ReadPlainInteger(const std::string& text, long lowest, long highest, long& out) {
  const char* p = text.data();
  const bool negative = *p == '-' && lowest < 0;
  p += negative;
  const char* const first = p;
  unsigned long value = 0;
  for (unsigned digit; (digit = DecimalDigit(*p)) < 10; ++p) value = value * 10 + digit;
  if (p != text.data() + text.size() || p == first || p - first > 18) return false;
  // Without branches on the sign, which is hard to predict.
  if (value > static_cast<unsigned long>(highest) + negative) return false;
  out = static_cast<long>(value) * (1 - 2 * long{negative});
  return true;
}

bool IsBase(int base) {
  return base >= 2 && base <= 36;
}

// `Range` is the type whose range counts.
template <class Range, class T>
[[gnu::noinline]] bool ReadAnyInteger(const std::string& text, T& out, int base) {
  std::optional<long> value;
  if (IsBase(base))
    value = ParseInteger(text, std::numeric_limits<Range>::min(), std::numeric_limits<Range>::max(),
                         base);
  out = static_cast<T>(value.value_or(0));
  return value.has_value();
}

// The quick way needs no stack frame, as the other one is a tail call.
template <class Range, class T>
bool ReadInteger(const std::string& text, T& out, int base) {
  long plain;
  if (base != 10 || !ReadPlainInteger(text, std::numeric_limits<Range>::min(),
                                      std::numeric_limits<Range>::max(), plain))
    return ReadAnyInteger<Range>(text, out, base);
  out = static_cast<T>(plain);
  return true;
}

// --- text to real

// White space of the C locale, which strtod skips.
bool IsSpace(char c) {
  return c == ' ' || (c >= '\t' && c <= '\r');
}

bool OnlyBlanks(const char* p, const char* end) {
  while (p != end && (IsBlank(*p) || *p == '\n')) ++p;
  return p == end;
}

// Short decimal numbers without exponent, as they mostly are. In 16 characters
// there are at most 15 digits and a point, or 16 digits. The 15 digits and the
// power of ten that divides them are doubles without error, so that the one
// division rounds as strtod does (Clinger, PLDI 1990, 92-101); the 16 digits are
// rounded when they become a double.
bool ReadShortDecimal(const char* p, const char* end, double& out) {
  static constexpr double powers[] = {1e0, 1e1, 1e2,  1e3,  1e4,  1e5,  1e6,  1e7,
                                      1e8, 1e9, 1e10, 1e11, 1e12, 1e13, 1e14, 1e15};
  const bool negative = *p == '-';
  p += negative;
  if (end - p > 16) return false;
  const char* const first = p;
  long mantissa = 0;
  unsigned digit;
  for (; (digit = DecimalDigit(*p)) < 10; ++p) mantissa = mantissa * 10 + digit;
  std::ptrdiff_t digits = p - first;
  std::ptrdiff_t decimals = 0;
  if (*p == '.') {
    const char* const fraction = ++p;
    for (; (digit = DecimalDigit(*p)) < 10; ++p) mantissa = mantissa * 10 + digit;
    decimals = p - fraction;
    digits += decimals;
  }
  if (p != end || digits == 0) return false;
  const double magnitude = static_cast<double>(mantissa) / powers[decimals];
  out = negative ? -magnitude : magnitude;
  return true;
}

// All other decimal numbers: std::from_chars reads them several times as fast as
// strtod and to the same last bit, but takes no "+" and leaves overflow and
// hexadecimal digits to others. "+-1" must not slip through.
bool ReadDecimal(const char* p, const char* end, double& out) {
  while (IsSpace(*p)) ++p;
  if (*p == '+' && p[1] != '-') ++p;
  const auto [rest, error] = std::from_chars(p, end, out);
  return error == std::errc() && OnlyBlanks(rest, end);
}

// --- real to text

template <class T>
std::string PrintReal(T value, char format, int precision) {
  std::string conversion = "%.*";
  if constexpr (std::is_same_v<T, long double>) conversion += 'L';
  conversion += format;
  const CLocaleScope numbersOfC;
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat-nonliteral"
  return QXMakeString(conversion.c_str(), precision, value);
#pragma GCC diagnostic pop
}

bool IsRealFormat(char format) {
  return std::string_view("eEfFgG").find(format) != std::string_view::npos;
}

constexpr int defaultPrecision = 6;

// --- significant figures

// Where zeros at the end may belong to the exponent, as in 0x1.8p10.
bool IsHexadecimal(const std::string& text) {
  const auto number = std::min(text.find_first_not_of(" \t\n\v\f\r+-"), text.size());
  return text.compare(number, 2, "0x") == 0 || text.compare(number, 2, "0X") == 0;
}

bool IsExponent(const std::string& text, std::size_t at) {
  return (text[at] == 'e' || text[at] == 'E') &&
         std::string_view("+-0123456789").find(text.c_str()[at + 1]) != std::string_view::npos;
}

}  // namespace

bool QXStringToNumber(const std::string& text, long& out, int base) {
  return ReadInteger<std::int32_t>(text, out, base);
}

bool QXStringToNumber(const std::string& text, unsigned long& out, int base) {
  return ReadInteger<std::uint32_t>(text, out, base);
}

bool QXStringToNumber(const std::string& text, int& out, int base) {
  return ReadInteger<int>(text, out, base);
}

bool QXStringToNumber(const std::string& text, unsigned int& out, int base) {
  return ReadInteger<unsigned int>(text, out, base);
}

bool QXStringToNumber(const std::string& text, short& out, int base) {
  return ReadInteger<short>(text, out, base);
}

bool QXStringToNumber(const std::string& text, unsigned short& out, int base) {
  return ReadInteger<unsigned short>(text, out, base);
}

bool QXStringToNumber(const std::string& text, double& out) {
  out = 0.0;
  if (text.empty()) return false;
  const char* const end = text.data() + text.size();
  double value;
  if (!ReadShortDecimal(text.data(), end, value) && !ReadDecimal(text.data(), end, value)) {
    char* rest;
    value = ::strtod_l(text.c_str(), &rest, CLocale());
    if (!OnlyBlanks(rest, end)) return false;
  }
  out = value;
  return true;
}

bool QXStringToNumber(const std::string& text, float& out) {
  double value;
  const bool read = QXStringToNumber(text, value);
  out = static_cast<float>(value);
  return read;
}

bool QXStringToNumber(const std::string& text, bool& out) {
  static constexpr const char* words[][2] = {{"0", "1"},    {"no", "yes"}, {"false", "true"},
                                             {"off", "on"}, {"n", "y"},    {"f", "t"}};
  const std::string word = QXStringLower(text);
  for (const auto& pair : words) {
    if (word != pair[0] && word != pair[1]) continue;
    out = word == pair[1];
    return true;
  }
  return false;
}

bool QXNumberToString(long value, std::string& out, int base) {
  if (base == 10) {
    // In place: a copy would have to wait for the digits, which are stored in pairs.
    out.resize(IntegerLength(value));
    WriteBefore(out.data() + out.size(), value);
  } else if (IsBase(base)) {
    char digits[1 + std::numeric_limits<unsigned long>::digits];
    out.assign(digits, std::to_chars(digits, std::end(digits), value, base).ptr);
  } else {
    out.clear();
  }
  return true;
}

bool QXNumberToString(double value, std::string& out, char format, int precision) {
  if (!IsRealFormat(format)) return false;
  if (precision <= 0) precision = defaultPrecision;
  const char letter = static_cast<char>(format | 0x20);

  if (letter == 'f') {
    char digits[maxNumberLength];
    const char* const begin =
        WriteFixedBefore(std::end(digits), value, static_cast<unsigned>(precision));
    if (begin != nullptr) {
      out.assign(begin, static_cast<std::size_t>(std::end(digits) - begin));
      return true;
    }
  }
  constexpr int maxPrecision = 200;
  if (precision > maxPrecision) {
    out = PrintReal(value, format, precision);
    return true;
  }
  char digits[1 + std::numeric_limits<double>::max_exponent10 + 2 + maxPrecision];
  const auto style = letter == 'f'   ? std::chars_format::fixed
                     : letter == 'e' ? std::chars_format::scientific
                                     : std::chars_format::general;
  out.assign(digits, std::to_chars(digits, std::end(digits), value, style, precision).ptr);
  if (format != letter) out = QXStringUpper(out);  // e, inf, nan
  return true;
}

bool QXNumberToString(long double value, std::string& out, char format, int precision) {
  if (!IsRealFormat(format)) return false;
  out = PrintReal(value, format, precision <= 0 ? defaultPrecision : precision);
  return true;
}

std::string QXNumberToString(const bool& value) {
  return value ? "true" : "false";
}

std::string QXTrimToSigFigs(const std::string& text) {
  const auto point = text.rfind('.');
  if (point == std::string::npos || IsHexadecimal(text)) return text;
  const auto mark = text.find_last_of("eE", point);
  if (mark != std::string::npos && IsExponent(text, mark)) return text;  // 1E+5.00
  // The fraction ends with the text or where an exponent begins.
  const auto end = std::min(text.find_first_not_of("0123456789", point + 1), text.size());
  if (end != text.size() && !IsExponent(text, end)) return text;
  auto keep = end;
  while (keep > point + 2 && text[keep - 1] == '0') --keep;
  return text.substr(0, keep) + text.substr(end);
}

double QXLinearInterpolation(const double& x, const double& x0, const double& x1, const double& y0,
                             const double& y1) {
  return (x - x0) * (y1 - y0) / (x1 - x0) + y0;
}

double QX2DLinearInterpolation(const double& x0, const double& y0, const double& x1,
                               const double& y1, const double& q00, const double& q11,
                               const double& q01, const double& q10, const double& x,
                               const double& y) {
  const double r0 = QXLinearInterpolation(x, x0, x1, q00, q10);
  const double r1 = QXLinearInterpolation(x, x0, x1, q01, q11);
  return QXLinearInterpolation(y, y0, y1, r0, r1);
}

}  // namespace QXSystem
