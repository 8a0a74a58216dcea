#include <qxsystem/util/bitcount_private.h>

#include <immintrin.h>

#include <algorithm>

namespace QXSystem {

namespace {

std::uint64_t CountWord(std::uint64_t word) {
  std::uint64_t count = 0;
  for (int byte = 0; byte < 8; ++byte, word >>= 8) count += BitCount[word & 0xFF];
  return count;
}

// The counts of the bytes of `v`, by their halves.
QX_AVX2 inline __m256i CountBytes(__m256i v) {
  const __m256i counts = _mm256_broadcastsi128_si256(
      _mm_loadu_si128(reinterpret_cast<const __m128i*>(BitCount.data())));
  const __m256i half = _mm256_set1_epi8(0x0F);
  return _mm256_add_epi8(
      _mm256_shuffle_epi8(counts, _mm256_and_si256(v, half)),
      _mm256_shuffle_epi8(counts, _mm256_and_si256(_mm256_srli_epi16(v, 4), half)));
}

// Adds up counts of bytes.
struct Sum {
  __m256i bytes, total;  // what bytes can hold, and four words

  QX_AVX2 void Add(__m256i v) { bytes = _mm256_add_epi8(bytes, CountBytes(v)); }
  QX_AVX2 void Flush() {
    total = _mm256_add_epi64(total, _mm256_sad_epu8(bytes, _mm256_setzero_si256()));
    bytes = _mm256_setzero_si256();
  }
  QX_AVX2 std::uint64_t Total() const {
    const __m128i pair =
        _mm_add_epi64(_mm256_castsi256_si128(total), _mm256_extracti128_si256(total, 1));
    return static_cast<std::uint64_t>(_mm_cvtsi128_si64(pair)) +
           static_cast<std::uint64_t>(_mm_extract_epi64(pair, 1));
  }
};

constexpr std::size_t MaxInBytes = 31;  // of counts up to 8

QX_AVX2 inline __m256i Load(const std::uint64_t* words) {
  return _mm256_loadu_si256(reinterpret_cast<const __m256i*>(words));
}

// Hands all words to `sink`, four at a time and the last ones filled up with 0.
template <class Sink, class... Words>
QX_AVX2 void Run(Sink& sink, std::size_t n, const Words*... words) {
  std::size_t i = 0;
  while (i + 4 <= n) {
    for (const std::size_t end = std::min(n - 3, i + 4 * MaxInBytes); i < end; i += 4)
      sink.Add(Load(words + i)...);
    sink.Flush();
  }
  if (i == n) return;
  const auto rest = [=](const std::uint64_t* all) QX_AVX2 {
    std::uint64_t last[4] = {};
    std::copy(all + i, all + n, last);
    return Load(last);
  };
  sink.Add(rest(words)...);
  sink.Flush();
}

struct PairSum {
  Sum both, either;

  QX_AVX2 void Add(__m256i a, __m256i b) {
    both.Add(_mm256_and_si256(a, b));
    either.Add(_mm256_or_si256(a, b));
  }
  QX_AVX2 void Flush() {
    both.Flush();
    either.Flush();
  }
};

}  // namespace

std::uint64_t CountBitsPortable(const std::uint64_t* words, std::size_t n) {
  std::uint64_t count = 0;
  for (std::size_t i = 0; i < n; ++i) count += CountWord(words[i]);
  return count;
}

PairCounts CountPairPortable(const std::uint64_t* a, const std::uint64_t* b, std::size_t n) {
  PairCounts counts{};
  for (std::size_t i = 0; i < n; ++i) {
    counts.both += CountWord(a[i] & b[i]);
    counts.either += CountWord(a[i] | b[i]);
  }
  return counts;
}

QX_AVX2 std::uint64_t CountBitsAvx2(const std::uint64_t* words, std::size_t n) {
  Sum sum{};
  Run(sum, n, words);
  return sum.Total();
}

QX_AVX2 PairCounts CountPairAvx2(const std::uint64_t* a, const std::uint64_t* b, std::size_t n) {
  PairSum sum{};
  Run(sum, n, a, b);
  return {sum.both.Total(), sum.either.Total()};
}

}  // namespace QXSystem
