#include <qxsystem/util/hanoi.h>

#include <algorithm>
#include <limits>
#include <new>
#include <random>
#include <stdexcept>
#include <string>
#include <vector>

#include <gtest/gtest.h>

using namespace QXSystem;

namespace {

// What compare functions, which carry no state, look at.
std::size_t calls, throwAt = ~std::size_t{0};
std::mt19937 dice;

int CompareFirstByte(const void* x, const void* y) {
  if (calls++ == throwAt) throw std::runtime_error("compare");
  return *static_cast<const unsigned char*>(x) - *static_cast<const unsigned char*>(y);
}

int CompareAtRandom(const void* x, const void* y) {
  CompareFirstByte(x, y);  // the addresses must be readable
  return static_cast<int>(dice() % 3) - 1;
}

int CompareInts(const void* x, const void* y) {
  return *static_cast<const int*>(x) - *static_cast<const int*>(y);
}

// A byte that is the key, then bytes that tell each from all others.
using Elements = std::vector<std::string>;

template <class Key>
Elements Make(std::size_t n, std::size_t size, Key key) {
  Elements elements(n, std::string(size, ' '));
  for (std::size_t i = 0; i < n; ++i) {
    for (std::size_t j = 0; j < size; ++j)
      elements[i][j] = static_cast<char>((j % 2 ? i : i >> 8) + j / 2);
    elements[i][0] = static_cast<char>(key(i));
  }
  return elements;
}

std::string Flat(const Elements& elements) {
  std::string bytes;
  for (const std::string& element : elements) bytes += element;
  return bytes;
}

Elements AsSet(const std::string& bytes, std::size_t size) {
  Elements elements;
  for (std::size_t i = 0; i < bytes.size(); i += size) elements.push_back(bytes.substr(i, size));
  std::sort(elements.begin(), elements.end());
  return elements;
}

// Whether the result lands in the scratch array: a merge goes to the array in which its
// first run is not.
bool Hops(const std::vector<int>& data, std::size_t n) {
  return n > 2 ? !Hops(data, n / 2) : n == 2 && data[0] > data[1];
}

}  // namespace

TEST(Hanoisort, SortsStablyWhateverSizeLengthOrderAndAlignment) {
  const auto check = [](std::size_t n, std::size_t size, auto key) {
    Elements elements = Make(n, size, key);
    const std::string bytes = Flat(elements);
    std::stable_sort(elements.begin(), elements.end(), [](const auto& a, const auto& b) {
      return static_cast<unsigned char>(a[0]) < static_cast<unsigned char>(b[0]);
    });
    for (const std::size_t shift : {0u, 1u}) {
      std::string memory = std::string(shift, '#') + bytes + "#";
      hanoisort(memory.data() + shift, n, size, CompareFirstByte);
      ASSERT_EQ(memory, std::string(shift, '#') + Flat(elements) + "#") << n << '*' << size;
    }
  };
  const auto any = [](std::size_t) { return dice(); };
  for (const std::size_t size : {1u, 2u, 4u, 8u, 12u, 16u, 24u, 32u, 37u})
    for (std::size_t n = 0; n <= 200; n += n < 70 ? 1 : 13) {
      check(n, size, any);
      check(n, size, [](std::size_t) { return dice() % 2; });
      check(n, size, [n](std::size_t i) { return n - i; });
      check(n, size, [](std::size_t i) { return i + (dice() % 16 ? 0 : dice() % 64); });
    }
  // Around 64 KiB, from where on the scratch array is on the heap, and beyond.
  for (const std::size_t n : {16379u, 16380u, 16381u, 60000u}) check(n, 4, any);
}

TEST(Hanoisort, RefusesMoreThanMemoryCanHold) {
  constexpr std::size_t most = std::numeric_limits<std::size_t>::max();
  int x = 1;
  EXPECT_THROW(hanoisort(&x, most / 4, 4, CompareInts), std::bad_alloc);
  EXPECT_THROW(hanoisort(&x, 1, most - 15, CompareInts), std::bad_alloc);
  hanoisort(nullptr, 0, most, nullptr);
  hanoisort(nullptr, most, 0, nullptr);
}

TEST(Hanoisort, KeepsAllElementsWhenCompareThrowsOrContradictsItself) {
  for (const std::size_t size : {4u, 8u, 7u, 24u})
    for (const std::size_t n : {2u, 3u, 4u, 5u, 17u, 48u, 65u, 9000u}) {
      const std::string elements = Flat(Make(n, size, [](std::size_t) { return dice(); }));
      const Elements set = AsSet(elements, size);
      for (std::size_t at = 0; at < 1000; ++at) {
        std::string work = elements;
        calls = 0;
        throwAt = n < 9000 ? at : at + 60000;
        try {
          hanoisort(work.data(), n, size, CompareFirstByte);
          at = 1000;  // not called so often
        } catch (const std::runtime_error&) {
          if (n == 9000) at += 300;
        }
        ASSERT_EQ(AsSet(work, size), set) << n << " of " << size << " bytes, call " << throwAt;
        throwAt = ~std::size_t{0};
        hanoisort(work.data(), n, size, CompareAtRandom);
        ASSERT_EQ(AsSet(work, size), set) << n << " of " << size << " bytes, random order";
      }
    }
}

TEST(Hanoisort, ComparesNoMoreThanItSays) {
  const std::size_t n = 4096;  // 12 levels of merging
  std::string keys(n, ' ');
  for (char& key : keys) key = static_cast<char>(dice());
  for (const std::size_t limit : {n * 12 + n / 8, n * 4}) {
    calls = 0;
    hanoisort(keys.data(), n, 1, CompareFirstByte);
    EXPECT_LE(calls, limit);  // the second time they are sorted
  }
}

TEST(Hanoi, LandsWhereTheTableOfMergesSays) {
  for (unsigned round = 0; round < 1500; ++round) {
    const unsigned n = round % 100;
    std::vector<int> data(n), scratch(n);
    for (int& x : data) x = static_cast<int>(dice() % (n + 1));
    std::vector<int> all = data, sorted = data;
    std::sort(sorted.begin(), sorted.end());
    const bool hopped = hanoi(data.data(), n, scratch.data(), HanoiCompare<int>(CompareInts));
    ASSERT_EQ(hopped, Hops(all, n)) << n;
    ASSERT_EQ(hopped ? scratch : data, sorted) << n;
    ASSERT_TRUE(std::is_permutation(data.begin(), data.end(), all.begin())) << "in data, too";
  }
}
