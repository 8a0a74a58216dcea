#include <qxsystem/json/json_private.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>

#include <rapidjson/error/en.h>
#include <rapidjson/reader.h>

#include <qxsystem/core/error.h>
#include <qxsystem/util/qxnumber.h>

namespace QXSystem {
namespace {

using rapidjson::ParseErrorCode;
using rapidjson::SizeType;

// Iterative, so that no nesting uses up the stack.
constexpr unsigned parseFlags = rapidjson::kParseFullPrecisionFlag |
                                rapidjson::kParseNanAndInfFlag | rapidjson::kParseIterativeFlag;

// Hands the parser's events on to a document, as long as they do not nest too
// deep.
class Builder {
public:
  Builder(rapidjson::Document& document, const char* end, std::size_t depth)
      : document_(document), end_(end), levels_(depth) {}

  // Where the text ends: there is a zero byte.
  const char* End() const { return end_; }
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
  const char* const end_;
  std::size_t levels_;  // still free
  bool tooDeep_ = false;
};

// --- numbers

bool IsDigit(char c) {
  return c >= '0' && c <= '9';
}

// Steps over digits and appends them to `value`, modulo 2^64.
const char* TakeDigits(const char* p, const char* end, std::uint64_t& value) {
  // Eight at a time: the bytes are added up as pairs, the pairs as fours, and
  // the fours as eights, each in its own part of the word.
  for (std::uint64_t block; end - p >= 8; p += 8) {
    std::memcpy(&block, p, 8);
    const std::uint64_t high = 0xF0F0F0F0F0F0F0F0;
    if ((block & high) != 0x3030303030303030) break;
    if (((block + 0x0606060606060606) & high) != 0x3030303030303030) break;
    block -= 0x3030303030303030;
    block = (block * 10 + (block >> 8)) & 0x00FF00FF00FF00FF;
    block = (block * 100 + (block >> 16)) & 0x0000FFFF0000FFFF;
    block = (block * 10000 + (block >> 32)) & 0x00000000FFFFFFFF;
    value = value * 100000000 + block;
  }
  for (; IsDigit(*p); ++p) value = value * 10 + static_cast<unsigned>(*p - '0');
  return p;
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
double Decimal(std::uint64_t digits, std::size_t decimals) {
  __extension__ using Wide = unsigned __int128;
  if (digits == 0) return 0;
  const std::uint64_t five = powersOfFive[decimals];
  const int up = __builtin_clzl(digits), fiveUp = __builtin_clzl(five);
  // Both fractions of 64 bits with the first one set; half the upper one is
  // less than the lower, so that the quotient fits.
  const Wide numerator = static_cast<Wide>(digits << up) << 63;
  const std::uint64_t denominator = five << fiveUp;
  auto quotient = static_cast<std::uint64_t>(numerator / denominator);
  quotient |= numerator - static_cast<Wide>(quotient) * denominator != 0;

  const int spare = __builtin_clzl(quotient);
  quotient <<= spare;
  std::uint64_t bits = quotient >> 11;
  const std::uint64_t cut = quotient & 0x7FF, half = 0x400;
  bits += cut > half || (cut == half && bits % 2 == 1);
  // Rounding up to 2^53 carries into the exponent, as it should.
  const int exponent = 11 - 63 - up + fiveUp - static_cast<int>(decimals) - spare;
  bits += static_cast<std::uint64_t>(exponent + 1074) << 52;
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
ParseErrorCode ReadNumber(const char*& p, Builder& builder) {
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
    p = TakeDigits(p, builder.End(), digits);
  auto count = static_cast<std::size_t>(p - counted);
  std::size_t decimals = 0;
  if (*p == '.') {
    const char* const fraction = ++p;
    if (!IsDigit(*p)) return rapidjson::kParseErrorNumberMissFraction;
    if (count == 0)
      while (*p == '0') ++p;
    counted = p;
    p = TakeDigits(p, builder.End(), digits);
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
    value = Decimal(digits, decimals);
    if (negative) value = -value;
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

}  // namespace
}  // namespace QXSystem

namespace rapidjson {

template <>
template <>
inline void Reader::ParseNumber<QXSystem::parseFlags, InsituStringStream, QXSystem::Builder>(
    InsituStringStream& is, QXSystem::Builder& builder) {
  const char* p = is.src_;
  const ParseErrorCode error = QXSystem::ReadNumber(p, builder);
  is.src_ += p - is.src_;
  if (error != kParseErrorNone) SetParseError(error, is.Tell());
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
  Builder builder(document, text + size, depth);
  rapidjson::ParseResult result;
  const auto generate = [&](rapidjson::Document&) {
    rapidjson::InsituStringStream stream(text);
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

std::string JSONText(const rapidjson::Value& value) {
  JSONOutput output;
  value.Accept(output.GetWriter());
  return output.GetText();
}

bool IsJSONText(const Writer& writer, const std::string& text, std::size_t levels) {
  if (text.empty()) return false;
  // How many arrays and objects are open is known to the writer alone.
  struct Levels : Writer {
    static std::size_t Of(const Writer& w) {
      return (w.*&Levels::level_stack_).GetSize() / sizeof(Level);
    }
  };
  const std::size_t open = std::min<std::size_t>(Levels::Of(writer) + levels, QXMaxJSONNesting);
  std::string copy = text;
  rapidjson::Document ignored;
  return ParseInPlace(ignored, copy.data(), copy.size(), QXMaxJSONNesting - open);
}

void WriteText(Writer& writer, std::string_view text) {
  // Room is made for six bytes a character, counted in 32 bits.
  constexpr std::size_t longest = 700'000'000;
  if (text.size() > longest) {
    QXThrow.Warning("JSON: text of %zu bytes is too long, written as an empty one", text.size());
    text = {};
  }
  writer.String(text.empty() ? "" : text.data(), static_cast<SizeType>(text.size()));
}

}  // namespace QXSystem
