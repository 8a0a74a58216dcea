// Counting set bits over arrays of words. There are two routes, equal in their
// results: a table of the counts of all bytes, and its first sixteen entries in
// a vector register, where a byte shuffle looks up 32 half bytes at once. Neither
// asks for a population-count instruction.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

namespace QXSystem {

constexpr std::array<std::uint8_t, 256> BitCount = [] {
  std::array<std::uint8_t, 256> counts{};
  for (std::size_t byte = 1; byte < counts.size(); ++byte)
    counts[byte] = static_cast<std::uint8_t>(counts[byte / 2] + byte % 2);
  return counts;
}();

// Numbers of bits that are set in both of two arrays, and in either.
struct PairCounts {
  std::uint64_t both, either;
};

std::uint64_t CountBitsPortable(const std::uint64_t* words, std::size_t n);
PairCounts CountPairPortable(const std::uint64_t* a, const std::uint64_t* b, std::size_t n);

// What is compiled for processors with AVX2, and must not run on others.
#define QX_AVX2 __attribute__((target("avx2")))

QX_AVX2 std::uint64_t CountBitsAvx2(const std::uint64_t* words, std::size_t n);
QX_AVX2 PairCounts CountPairAvx2(const std::uint64_t* a, const std::uint64_t* b, std::size_t n);

// Whether they serve for `n` words here.
inline bool UseAvx2(std::size_t n) {
  return n >= 4 && __builtin_cpu_supports("avx2");
}
inline std::uint64_t CountBits(const std::uint64_t* words, std::size_t n) {
  return UseAvx2(n) ? CountBitsAvx2(words, n) : CountBitsPortable(words, n);
}
inline PairCounts CountPair(const std::uint64_t* a, const std::uint64_t* b, std::size_t n) {
  return UseAvx2(n) ? CountPairAvx2(a, b, n) : CountPairPortable(a, b, n);
}

}  // namespace QXSystem
