#include <qxsystem/json/json_private.h>

#include <emmintrin.h>

#include <array>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>

#include <rapidjson/error/en.h>
#include <rapidjson/reader.h>

#include <qxsystem/core/error.h>
#include <qxsystem/util/digits_private.h>
#include <qxsystem/util/qxnumber.h>

namespace QXSystem {
namespace {

using rapidjson::ParseErrorCode;
using rapidjson::SizeType;

// Iterative, so that no nesting uses up the stack.
constexpr unsigned parseFlags = rapidjson::kParseInsituFlag | rapidjson::kParseFullPrecisionFlag |
                                rapidjson::kParseNanAndInfFlag | rapidjson::kParseIterativeFlag;

// A text in memory that is parsed where it stands: strings are unescaped over
// themselves. Behind its end is a zero byte.
struct TextStream : rapidjson::InsituStringStream {
  TextStream(char* text, std::size_t size)
      : rapidjson::InsituStringStream(text), end(text + size) {}

  const char* end;
};

// Hands the parser's events on to a document, as long as they do not nest too
// deep.
class Builder {
public:
  Builder(rapidjson::Document& document, std::size_t depth) : document_(document), levels_(depth) {}

  bool TooDeep() const { return tooDeep_; }

  bool Null() { return document_.Null(); }
  bool Bool(bool value) { return document_.Bool(value); }
  bool Int(int value) { return document_.Int(value); }
  bool Uint(unsigned value) { return document_.Uint(value); }
  bool Int64(std::int64_t value) { return document_.Int64(value); }
  bool Uint64(std::uint64_t value) { return document_.Uint64(value); }
  bool Double(double value) { return document_.Double(value); }
  bool RawNumber(const char* text, SizeType size, bool copy) {
    return document_.RawNumber(text, size, copy);
  }
  bool String(const char* text, SizeType size, bool copy) {
    return document_.String(text, size, copy);
  }
  bool Key(const char* text, SizeType size, bool copy) { return document_.Key(text, size, copy); }
  bool StartObject() { return Enter() && document_.StartObject(); }
  bool EndObject(SizeType members) {
    ++levels_;
    return document_.EndObject(members);
  }
  bool StartArray() { return Enter() && document_.StartArray(); }
  bool EndArray(SizeType elements) {
    ++levels_;
    return document_.EndArray(elements);
  }

private:
  bool Enter() {
    tooDeep_ = levels_ == 0;
    --levels_;
    return !tooDeep_;
  }

  rapidjson::Document& document_;
  std::size_t levels_;  // still free
  bool tooDeep_ = false;
};

// --- numbers

bool IsDigit(char c) {
  return c >= '0' && c <= '9';
}

// Steps over digits and appends them to `value`, modulo 2^64: for the few of an
// integer.
inline const char* TakeInteger(const char* p, std::uint64_t& value) {
  for (; IsDigit(*p); ++p) value = value * 10 + static_cast<unsigned>(*p - '0');
  return p;
}

// The same for the many of a fraction: eight characters at a time, of which the
// first is the lowest byte.
inline const char* TakeFraction(const char* p, const char* end, std::uint64_t& value) {
  constexpr std::uint64_t zeros = 0x3030303030303030, sixes = 0x0606060606060606,
                          high = 0xF0F0F0F0F0F0F0F0;
  // The digits of a block are added up as pairs, as fours and as eight.
  const auto sum = [](std::uint64_t digits) {
    digits = (digits * 10 + (digits >> 8)) & 0x00FF00FF00FF00FF;
    digits = (digits * 100 + (digits >> 16)) & 0x0000FFFF0000FFFF;
    return (digits * 10000 + (digits >> 32)) & 0x00000000FFFFFFFF;
  };
  while (end - p >= 8) {
    std::uint64_t block;
    std::memcpy(&block, p, 8);
    // The lowest byte with a bit left is no digit; those above may be wrong.
    const std::uint64_t others = ((block ^ zeros) | ((block + sixes) ^ zeros)) & high;
    block -= zeros;
    if (others == 0) {
      value = value * 100000000 + sum(block);
      p += 8;
      continue;
    }
    // No branch on how many digits are left, which cannot be predicted. They
    // move up to the high end, and zeros in front of them do no harm.
    const int bits = __builtin_ctzl(others) & ~7;
    if (bits == 0) return p;
    value = value * powersOfTen[static_cast<std::size_t>(bits / 8)] + sum(block << (64 - bits));
    return p + bits / 8;
  }
  return TakeInteger(p, value);
}

constexpr auto powersOfFive = [] {
  std::array<std::uint64_t, 28> powers{};  // 5^27 is the last in 64 bits
  std::uint64_t power = 1;
  for (auto& p : powers) {
    p = power;
    power *= 5;
  }
  return powers;
}();

// `digits` / 10^`decimals`, correctly rounded: the quotient by the power of five
// to 63 or 64 bits, of which the last also tells whether a rest remains, and
// then one rounding. The result is 0 or well within the normal doubles.
inline double Decimal(bool negative, std::uint64_t digits, std::size_t decimals) {
  std::uint64_t bits = 0;
  if (digits != 0) {
    const std::uint64_t five = powersOfFive[decimals];
    const int up = __builtin_clzl(digits), fiveUp = __builtin_clzl(five);
    // The highest bits of both are set, so half the one is less than the other and
    // the quotient fits 64 bits.
    const std::uint64_t numerator = digits << up, denominator = five << fiveUp;
    __extension__ using Wide = unsigned __int128;
    const Wide wide = static_cast<Wide>(numerator) << 63;
    auto quotient = static_cast<std::uint64_t>(wide / denominator);
    const std::uint64_t rest = static_cast<std::uint64_t>(wide) - quotient * denominator;
    quotient |= rest != 0;

    const int spare = __builtin_clzl(quotient);
    quotient <<= spare;
    bits = quotient >> 11;
    const std::uint64_t cut = quotient & 0x7FF, half = 0x400;
    bits += cut > half || (cut == half && bits % 2 == 1);
    // Rounding up to 2^53 carries into the exponent, as it should.
    const int exponent = 11 - 63 - up + fiveUp - static_cast<int>(decimals) - spare;
    bits += static_cast<std::uint64_t>(exponent + 1074) << 52;
  }
  bits |= std::uint64_t{negative} << 63;
  double result;
  std::memcpy(&result, &bits, sizeof result);
  return result;
}

// Steps over as much of `word` as is there; true if that is all of it.
bool Take(const char*& p, const char* word) {
  for (; *word != '\0'; ++word, ++p)
    if (*p != *word) return false;
  return true;
}

// The numbers that JSON does not have, but Writer writes; also "Inf".
ParseErrorCode ReadNonFinite(const char*& p, bool negative, Builder& builder) {
  double value = std::numeric_limits<double>::quiet_NaN();
  bool known;
  if (*p == 'N') {
    known = Take(p, "NaN");
  } else {
    known = Take(p, "Inf") && (*p != 'i' || Take(p, "inity"));
    value = std::numeric_limits<double>::infinity();
  }
  if (!known) return rapidjson::kParseErrorValueInvalid;
  builder.Double(negative ? -value : value);
  return rapidjson::kParseErrorNone;
}

// Passes an integer on as the narrowest of RapidJSON's types; false when it
// needs more than 64 bits.
bool PassInteger(std::uint64_t magnitude, bool negative, Builder& builder) {
  const std::uint64_t value = negative ? -magnitude : magnitude;
  if (negative && magnitude > std::uint64_t{1} << 63) return false;
  if (negative && magnitude > std::uint64_t{1} << 31)
    builder.Int64(static_cast<std::int64_t>(value));
  else if (negative)
    builder.Int(static_cast<int>(value));
  else if (magnitude > std::numeric_limits<unsigned>::max())
    builder.Uint64(value);
  else
    builder.Uint(static_cast<unsigned>(value));
  return true;
}

// Reads a number and steps over it; after an error `p` is where it lies.
//
// RapidJSON has a function for this, but under the flag for full precision it
// reads beyond its table of powers of ten for numbers such as 0.000...1 with
// hundreds of zeros. This one is quicker, too.
ParseErrorCode ReadNumber(const char*& p, const char* end, Builder& builder) {
  const char* const begin = p;
  const bool negative = *p == '-';
  p += negative;
  if (*p == 'N' || *p == 'I') return ReadNonFinite(p, negative, builder);
  if (!IsDigit(*p)) return rapidjson::kParseErrorValueInvalid;

  std::uint64_t digits = 0;  // all of them without the point, modulo 2^64
  const char* counted = p;   // no zeros in front are counted
  if (*p == '0')
    counted = ++p;
  else
    p = TakeInteger(p, digits);
  auto count = static_cast<std::size_t>(p - counted);
  std::size_t decimals = 0;
  if (*p == '.') {
    const char* const fraction = ++p;
    if (!IsDigit(*p)) return rapidjson::kParseErrorNumberMissFraction;
    if (count == 0)
      while (*p == '0') ++p;
    counted = p;
    p = TakeFraction(p, end, digits);
    count += static_cast<std::size_t>(p - counted);
    decimals = static_cast<std::size_t>(p - fraction);
  }
  const bool hasExponent = *p == 'e' || *p == 'E';
  if (hasExponent) {
    ++p;
    if (*p == '+' || *p == '-') ++p;
    if (!IsDigit(*p)) return rapidjson::kParseErrorNumberMissExponent;
    while (IsDigit(*p)) ++p;
  }

  const bool exact = count <= 19;  // 10^19 is less than 2^64
  if (decimals == 0 && !hasExponent) {
    const bool fits = exact || std::from_chars(counted, p, digits).ec == std::errc();
    if (fits && PassInteger(digits, negative, builder)) return rapidjson::kParseErrorNone;
  }
  double value;
  if (exact && !hasExponent && decimals < powersOfFive.size()) {
    value = Decimal(negative, digits, decimals);
  } else if (std::from_chars(begin, p, value).ec != std::errc()) {
    QXStringToNumber(std::string(begin, p), value);  // out of range, up or down
  }
  if (std::isinf(value)) {
    p = begin;
    return rapidjson::kParseErrorNumberTooBig;
  }
  builder.Double(value);
  return rapidjson::kParseErrorNone;
}

// --- strings

// Of the characters at `p` that stand for themselves in a string, at least all
// up to the last 15 in front of `end`.
std::size_t CountPlain(const char* p, const char* end) {
  const char* const begin = p;
  for (; end - p >= 16; p += 16) {
    const __m128i block = _mm_loadu_si128(reinterpret_cast<const __m128i*>(p));
    const __m128i quotes = _mm_cmpeq_epi8(block, _mm_set1_epi8('"'));
    const __m128i escapes = _mm_cmpeq_epi8(block, _mm_set1_epi8('\\'));
    const __m128i controls = _mm_cmpeq_epi8(block, _mm_min_epu8(block, _mm_set1_epi8(0x1F)));
    const auto others = static_cast<unsigned>(
        _mm_movemask_epi8(_mm_or_si128(_mm_or_si128(quotes, escapes), controls)));
    if (others != 0) return static_cast<std::size_t>(p - begin + __builtin_ctz(others));
  }
  return static_cast<std::size_t>(p - begin);
}

}  // namespace
}  // namespace QXSystem

// The parser's functions for numbers and for the plain parts of strings.
namespace rapidjson {

template <>
struct StreamTraits<QXSystem::TextStream> : StreamTraits<InsituStringStream> {};

template <>
template <>
inline void Reader::ParseNumber<QXSystem::parseFlags, QXSystem::TextStream, QXSystem::Builder>(
    QXSystem::TextStream& text, QXSystem::Builder& builder) {
  const char* p = text.src_;
  const ParseErrorCode error = QXSystem::ReadNumber(p, text.end, builder);
  text.src_ += p - text.src_;
  if (error != kParseErrorNone) SetParseError(error, text.Tell());
}

template <>
template <>
inline void Reader::ScanCopyUnescapedString<QXSystem::TextStream, QXSystem::TextStream>(
    QXSystem::TextStream& text, QXSystem::TextStream&) {
  const std::size_t plain = QXSystem::CountPlain(text.src_, text.end);
  if (text.dst_ != text.src_) std::memmove(text.dst_, text.src_, plain);
  text.src_ += plain;
  text.dst_ += plain;
}

}  // namespace rapidjson

namespace QXSystem {

bool ParseInPlace(rapidjson::Document& document, char* text, std::size_t size, std::size_t depth) {
  document.SetNull();
  // RapidJSON counts bytes and elements in 32 bits.
  if (size > std::numeric_limits<int>::max()) {
    QXThrow.Warning("JSON: text of 2 GiB or more is refused");
    return false;
  }
  Builder builder(document, depth);
  rapidjson::ParseResult result;
  const auto generate = [&](rapidjson::Document&) {
    TextStream stream(text, size);
    result = rapidjson::Reader().Parse<parseFlags>(stream, builder);
    // The parser takes a zero byte for the end of the text.
    if (!result.IsError() && stream.Tell() != size)
      result.Set(rapidjson::kParseErrorDocumentRootNotSingular, stream.Tell());
    return !result.IsError();
  };
  document.Populate(generate);
  if (builder.TooDeep())
    QXThrow.Warning("JSON: arrays and objects nested more than %u levels deep are refused",
                    QXMaxJSONNesting);
  else if (result.IsError())
    QXThrow.Warning("JSON: parse error offset %d: %s", static_cast<int>(result.Offset()),
                    rapidjson::GetParseError_En(result.Code()));
  return !result.IsError();
}

bool ParseObjectInPlace(rapidjson::Document& document, char* text, std::size_t size) {
  if (!ParseInPlace(document, text, size)) return false;
  if (document.IsObject()) return true;
  QXThrow.Warning("JSON: Top level document must be an object");
  document.SetNull();
  return false;
}

}  // namespace QXSystem
