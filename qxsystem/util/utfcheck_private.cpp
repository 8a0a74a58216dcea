#include <qxsystem/util/utfcheck_private.h>

#include <immintrin.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>

namespace QXSystem {

namespace {

// --- Character by character

// Sequences by their first byte; what is in no row is no first byte.
struct Form {
  unsigned first, last;
  std::size_t length;
  std::uint32_t lowest, highest;  // code points
};
constexpr Form Forms[] = {{0xC0, 0xDF, 2, 0x80, 0x7FF},
                          {0xE0, 0xEF, 3, 0x800, 0xFFFD},
                          {0xF0, 0xF7, 4, 0x10000, 0x10FFFF}};

// The length of the sequence at the beginning of `n` bytes, 0 for none.
std::size_t SequenceLength(const unsigned char* text, std::size_t n) {
  for (const Form& form : Forms) {
    if (text[0] < form.first || text[0] > form.last) continue;
    if (n < form.length) return 0;
    std::uint32_t point = text[0] - form.first;
    for (std::size_t i = 1; i < form.length; ++i) {
      if ((text[i] & 0xC0) != 0x80) return 0;
      point = point << 6 | (text[i] & 0x3F);
    }
    const bool surrogate = point >= 0xD800 && point <= 0xDFFF;
    return point < form.lowest || point > form.highest || surrogate ? 0 : form.length;
  }
  return 0;
}

bool AreEightAscii(const unsigned char* text) {
  std::uint64_t bytes;
  std::memcpy(&bytes, text, 8);
  return (bytes & 0x8080808080808080) == 0;
}

// --- 32 bytes at a time, after Keiser and Lemire, Software: Practice and
// Experience 51 (2021) 950-964. Almost every fault shows in two neighbouring
// bytes, and is found where it fits both halves of the first and the upper half
// of the second: three tables of 16 entries, which byte shuffles look up.

enum Fault : std::uint8_t {
  TooShort = 1,
  TooLong = 2,
  Overlong3 = 4,
  TooLarge = 8,
  Surrogate = 16,
  Overlong2 = 32,
  OverlongOrTooLarge4 = 64,
  TwoContinuations = 128,  // right behind a first byte of three or four
};

struct Pair {
  Fault fault;
  unsigned first, firstEnd, second, secondEnd;  // both ends included
};
constexpr Pair Pairs[] = {
    {TooShort, 0xC0, 0xFF, 0x00, 0x7F},
    {TooShort, 0xC0, 0xFF, 0xC0, 0xFF},
    {TooLong, 0x00, 0x7F, 0x80, 0xBF},
    {TwoContinuations, 0x80, 0xBF, 0x80, 0xBF},
    {Overlong2, 0xC0, 0xC1, 0x80, 0xBF},
    {Overlong3, 0xE0, 0xE0, 0x80, 0x9F},
    {Surrogate, 0xED, 0xED, 0xA0, 0xBF},
    {OverlongOrTooLarge4, 0xF0, 0xF0, 0x80, 0x8F},
    {OverlongOrTooLarge4, 0xF5, 0xFF, 0x80, 0x8F},
    {TooLarge, 0xF4, 0xFF, 0x90, 0xBF},
};

struct FaultTables {
  std::array<std::uint8_t, 16> firstHigh{}, firstLow{}, secondHigh{};

  constexpr FaultTables() {
    for (const Pair& pair : Pairs) {
      for (unsigned byte = pair.first; byte <= pair.firstEnd; ++byte) {
        firstHigh[byte >> 4] |= pair.fault;
        firstLow[byte & 15] |= pair.fault;
      }
      for (unsigned byte = pair.second; byte <= pair.secondEnd; ++byte)
        secondHigh[byte >> 4] |= pair.fault;
    }
  }
};
constexpr FaultTables Tables;

#define QX_AVX2 __attribute__((target("avx2")))

QX_AVX2 inline __m256i Load(const unsigned char* text) {
  return _mm256_loadu_si256(reinterpret_cast<const __m256i*>(text));
}

QX_AVX2 inline __m256i All(unsigned byte) {
  return _mm256_set1_epi8(static_cast<char>(byte));
}

QX_AVX2 inline __m256i LookUp(const std::array<std::uint8_t, 16>& table, __m256i halves) {
  const auto* const entries = reinterpret_cast<const __m128i*>(table.data());
  return _mm256_shuffle_epi8(_mm256_broadcastsi128_si256(_mm_loadu_si128(entries)), halves);
}

QX_AVX2 inline __m256i HighHalves(__m256i bytes) {
  return _mm256_and_si256(_mm256_srli_epi16(bytes, 4), All(0x0F));
}

// The bytes that stand `N` before those of `bytes`, whose predecessors are
// `previous`.
template <int N>
QX_AVX2 inline __m256i Before(__m256i bytes, __m256i previous) {
  return _mm256_alignr_epi8(bytes, _mm256_permute2x128_si256(previous, bytes, 0x21), 16 - N);
}

// Takes 32 bytes after the other; faults add up.
struct Checker {
  __m256i previous, faults;

  QX_AVX2 void Add(__m256i bytes) {
    const __m256i before1 = Before<1>(bytes, previous), before2 = Before<2>(bytes, previous),
                  before3 = Before<3>(bytes, previous);
    const __m256i pairs = _mm256_and_si256(
        _mm256_and_si256(LookUp(Tables.firstHigh, HighHalves(before1)),
                         LookUp(Tables.firstLow, _mm256_and_si256(before1, All(0x0F)))),
        LookUp(Tables.secondHigh, HighHalves(bytes)));
    // The high bit where a third or fourth byte is due.
    const __m256i due =
        _mm256_and_si256(_mm256_or_si256(_mm256_subs_epu8(before2, All(0xE0 - 0x80)),
                                         _mm256_subs_epu8(before3, All(0xF0 - 0x80))),
                         All(0x80));
    // U+FFFE and U+FFFF: EF BF, and a continuation above BD.
    const __m256i reserved =
        _mm256_and_si256(_mm256_and_si256(_mm256_cmpeq_epi8(before2, All(0xEF)),
                                          _mm256_cmpeq_epi8(before1, All(0xBF))),
                         _mm256_cmpgt_epi8(bytes, All(0xBD)));
    faults = _mm256_or_si256(faults, _mm256_or_si256(_mm256_xor_si256(pairs, due), reserved));
    previous = bytes;
  }

  // What Add does for ASCII: faults where a sequence was not complete.
  QX_AVX2 void AddAscii(__m256i bytes) {
    // What may stand in the last places without a sequel.
    alignas(32) static constexpr std::array<unsigned char, 32> Highest = [] {
      std::array<unsigned char, 32> highest{};
      for (auto& byte : highest) byte = 0xFF;
      highest[29] = 0xEF, highest[30] = 0xDF, highest[31] = 0xBF;
      return highest;
    }();
    faults = _mm256_or_si256(faults, _mm256_subs_epu8(previous, Load(Highest.data())));
    previous = bytes;
  }

  QX_AVX2 void AddBlock(const unsigned char* text) {
    const __m256i bytes[4] = {Load(text), Load(text + 32), Load(text + 64), Load(text + 96)};
    const __m256i any =
        _mm256_or_si256(_mm256_or_si256(bytes[0], bytes[1]), _mm256_or_si256(bytes[2], bytes[3]));
    if (_mm256_movemask_epi8(any) == 0)
      AddAscii(bytes[3]);
    else
      for (const __m256i& quarter : bytes) Add(quarter);
  }
};

constexpr std::size_t Block = 128;

}  // namespace

bool IsUtf8Portable(const unsigned char* text, std::size_t n) {
  std::size_t length;
  for (const unsigned char* const end = text + n; text != end; text += length) {
    const auto left = static_cast<std::size_t>(end - text);
    if (left >= 8 && AreEightAscii(text))
      length = 8;
    else if (*text < 0x80)
      length = 1;
    else if ((length = SequenceLength(text, left)) == 0)
      return false;
  }
  return true;
}

QX_AVX2 bool IsUtf8Avx2(const unsigned char* text, std::size_t n) {
  Checker checker{};
  for (; n >= Block; text += Block, n -= Block) checker.AddBlock(text);
  unsigned char rest[Block] = {};  // at least one 0, before which all must be complete
  std::copy_n(text, n, rest);
  checker.AddBlock(rest);
  return _mm256_testz_si256(checker.faults, checker.faults);
}

}  // namespace QXSystem
