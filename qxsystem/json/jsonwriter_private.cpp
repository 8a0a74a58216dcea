#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>

#include <qxsystem/core/error.h>
#include <qxsystem/json/json_private.h>
#include <qxsystem/util/digits_private.h>

namespace QXSystem {
namespace {

using rapidjson::internal::DiyFp;

// What a Writer keeps to itself.
struct WriterParts : Writer {
  // The arrays and objects that are open.
  static std::size_t CountLevels(const Writer& writer) {
    return (writer.*&WriterParts::level_stack_).GetSize() / sizeof(Level);
  }

  // Puts a number of at most `most` characters, which `print` writes and gives
  // the end of, straight into the text.
  template <class Print>
  static void PutNumber(Writer& writer, unsigned most, Print print) {
    (writer.*&WriterParts::Prefix)(rapidjson::kNumberType);
    auto& text = *(writer.*&WriterParts::os_);
    char* const begin = text.Push(most);
    text.Pop(most - static_cast<std::size_t>(print(begin) - begin));
  }
};

// The digits of a fraction in the making. Grisu2 writes a number a little above
// the value, digit by digit, until what remains of it is less than what may be
// left out.
struct Fraction {
  std::uint64_t rest;   // in units of 2^-bits
  std::uint64_t spare;  // what may be left out
  int bits;
  unsigned count = 0;  // digits taken

  bool Ends() const { return rest < spare; }

  // The next `n` digits as a number.
  std::uint32_t Take(unsigned n) {
    __extension__ using Wide = unsigned __int128;
    const Wide scaled = static_cast<Wide>(rest) * powersOfTen[n];
    rest = static_cast<std::uint64_t>(scaled) & ((std::uint64_t{1} << bits) - 1);
    spare *= powersOfTen[n];
    count += n;
    return static_cast<std::uint32_t>(scaled >> bits);
  }

  // Appends `2 * pairs` digits, unless the fraction ends within them: had it
  // ended after fewer, only zeros would follow, and it would still end here.
  template <unsigned pairs>
  char* Append(char* end) {
    // What may be left out must stay a fraction.
    if (spare >= (std::uint64_t{1} << bits) / powersOfTen[2 * pairs]) return end;
    Fraction next = *this;
    std::uint32_t digits = next.Take(2 * pairs);
    if (next.Ends()) return end;
    *this = next;
    end += 2 * pairs;
    char* at = end;
    for (unsigned i = 0; i < pairs; ++i, digits /= 100) at = WritePairBefore(at, digits % 100);
    return end;
  }
};

// Prints a positive number as RapidJSON does, and returns the end. What it
// prints by Grisu2 (Loitsch, PLDI 2010, 233-243) is short but not always the
// shortest, so no other method gives the same texts. This one takes several
// digits at a time.
char* Print(double value, char* out) {
  const DiyFp exact(value);
  DiyFp below, above;
  exact.NormalizedBoundaries(&below, &above);
  int exponent;
  const DiyFp power = rapidjson::internal::GetCachedPower(above.e, &exponent);
  const DiyFp scaled = exact.Normalize() * power;
  above = above * power;
  below = below * power;
  --above.f;
  ++below.f;

  const int bits = -above.e;  // 32 to 60
  const std::uint64_t one = std::uint64_t{1} << bits;
  Fraction fraction{above.f & (one - 1), above.f - below.f, bits};
  // The few that end before their fraction are left to RapidJSON.
  if (fraction.rest <= fraction.spare) return rapidjson::internal::dtoa(value, out);
  const auto integer = static_cast<long>(above.f >> bits);
  char* const digits = out + 1;  // there will be a point
  char* end = digits + IntegerLength(integer);
  WriteBefore(end, integer);
  end = fraction.Append<4>(end);
  end = fraction.Append<2>(end);
  do *end++ = static_cast<char>('0' + fraction.Take(1));
  while (!fraction.Ends());

  const int length = static_cast<int>(end - digits);
  // RapidJSON does no rounding from the ninth digit of the fraction on.
  const std::uint64_t distance =
      fraction.count < 9 ? (above.f - scaled.f) * powersOfTen[fraction.count] : 0;
  rapidjson::internal::GrisuRound(digits, length, fraction.spare, fraction.rest, one, distance);

  exponent -= static_cast<int>(fraction.count);
  const int point = length + exponent;
  if (point <= 0 || point >= length) {
    std::memmove(out, digits, static_cast<std::size_t>(length));
    return rapidjson::internal::Prettify(out, length, exponent, Writer::kDefaultMaxDecimalPlaces);
  }
  for (int i = 0; i < point; ++i) out[i] = digits[i];
  out[point] = '.';
  return end;
}

}  // namespace

void WriteDouble(Writer& writer, double value) {
  // Neither zero nor infinite nor NaN.
  const bool ordinary =
      std::abs(value) > 0 && std::abs(value) <= std::numeric_limits<double>::max();
  if (!ordinary) {
    writer.Double(value);
    return;
  }
  constexpr unsigned most = 1 + 25;  // the sign and what `dtoa` asks for
  WriterParts::PutNumber(writer, most, [value](char* out) {
    if (value < 0) *out++ = '-';
    return Print(std::abs(value), out);
  });
}

std::string JSONText(const rapidjson::Value& value) {
  JSONOutput output;
  value.Accept(output.GetWriter());
  return output.GetText();
}

bool IsJSONText(const Writer& writer, const std::string& text, std::size_t levels) {
  if (text.empty()) return false;
  const std::size_t open =
      std::min<std::size_t>(WriterParts::CountLevels(writer) + levels, QXMaxJSONNesting);
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
  writer.String(text.empty() ? "" : text.data(), static_cast<rapidjson::SizeType>(text.size()));
}

}  // namespace QXSystem
