#include <qxsystem/json/base85.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

namespace QXDataFlow {
namespace {

// RFC 1924, section 4.2.
constexpr std::string_view b85a =
    "0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz!#$%&()*+-;<=>?@^_`{|}~";
static_assert(b85a.size() == 85);

// All pairs of digits.
constexpr auto pairs = [] {
  std::array<std::array<char, 2>, 85 * 85> table{};
  for (std::size_t i = 0; i < table.size(); ++i) {
    table[i][0] = b85a[i / 85];
    table[i][1] = b85a[i % 85];
  }
  return table;
}();

// What each character adds at each of the five places, modulo 2^32; a character
// that is no digit counts as -1.
constexpr auto addends = [] {
  std::array<std::array<std::uint32_t, 256>, 5> table{};
  std::uint32_t weight = 1;
  for (std::size_t place = 5; place-- > 0; weight *= 85) {
    for (auto& addend : table[place]) addend = -weight;
    for (std::size_t i = 0; i < b85a.size(); ++i)
      table[place][static_cast<unsigned char>(b85a[i])] = static_cast<std::uint32_t>(i) * weight;
  }
  return table;
}();

void EncodeGroup(const unsigned char* from, char* to) {
  std::uint32_t number;
  std::memcpy(&number, from, 4);
  number = __builtin_bswap32(number);
  const std::uint32_t upper = number / (85 * 85 * 85), lower = number % (85 * 85 * 85);
  std::memcpy(to, &pairs[upper], 2);
  std::memcpy(to + 2, &pairs[lower / 85], 2);
  to[4] = b85a[lower % 85];
}

void DecodeGroup(const char* from, unsigned char* to) {
  std::uint32_t number = 0;
  for (std::size_t place = 0; place < 5; ++place)
    number += addends[place][static_cast<unsigned char>(from[place])];
  number = __builtin_bswap32(number);
  std::memcpy(to, &number, 4);
}

}  // namespace

std::string QXBase85Encode(const std::vector<unsigned char>& bytes) {
  const std::size_t groups = bytes.size() / 4, rest = bytes.size() % 4;
  std::string text(5 * groups + (rest ? rest + 1 : 0), '\0');
  const unsigned char* from = bytes.data();
  char* to = text.data();
  for (const char* const end = to + 5 * groups; to != end; from += 4, to += 5)
    EncodeGroup(from, to);
  if (rest) {
    unsigned char filled[4] = {};
    char group[5];
    std::memcpy(filled, from, rest);
    EncodeGroup(filled, group);
    std::memcpy(to, group, rest + 1);
  }
  return text;
}

std::vector<unsigned char> QXBase85Decode(const std::string& text) {
  const std::size_t groups = text.size() / 5, rest = text.size() % 5;
  std::vector<unsigned char> bytes(4 * groups + (rest ? rest - 1 : 0));
  const char* from = text.data();
  unsigned char* to = bytes.data();
  for (const char* const end = from + 5 * groups; from != end; from += 5, to += 4)
    DecodeGroup(from, to);
  if (rest > 1) {
    char filled[5] = {'~', '~', '~', '~', '~'};
    unsigned char group[4];
    std::memcpy(filled, from, rest);
    DecodeGroup(filled, group);
    std::memcpy(to, group, rest - 1);
  }
  return bytes;
}

}  // namespace QXDataFlow
