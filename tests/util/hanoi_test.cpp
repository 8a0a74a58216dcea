#include <qxsystem/util/hanoi.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <functional>
#include <limits>
#include <new>
#include <numeric>
#include <random>
#include <string>
#include <vector>

#include <gtest/gtest.h>

using QXSystem::hanoi;
using QXSystem::HanoiCompare;
using QXSystem::hanoisort;

namespace {

using Bytes = std::vector<unsigned char>;

// What compare functions, which carry no state, look at.
std::size_t calls, throwAt;
std::mt19937 dice;

int CompareFirstByte(const void* x, const void* y) {
  ++calls;
  return *static_cast<const unsigned char*>(x) - *static_cast<const unsigned char*>(y);
}

int CompareAndThrow(const void* x, const void* y) {
  if (calls == throwAt) throw std::runtime_error("compare");
  return CompareFirstByte(x, y);
}

int CompareAtRandom(const void* x, const void* y) {
  CompareFirstByte(x, y);  // the addresses must be readable
  return static_cast<int>(dice() % 3) - 1;
}

int CompareInts(const void* x, const void* y) {
  const int a = *static_cast<const int*>(x), b = *static_cast<const int*>(y);
  return (a > b) - (a < b);
}

// Elements of `size` bytes: the key, then bytes that tell each from all others.
Bytes Elements(const std::vector<unsigned char>& keys, std::size_t size) {
  Bytes bytes;
  for (std::size_t i = 0; i < keys.size(); ++i) {
    bytes.push_back(keys[i]);
    for (std::size_t j = 1; j < size; ++j)
      bytes.push_back(static_cast<unsigned char>((j % 2 ? i : i >> 8) + j / 2));
  }
  return bytes;
}

// The elements in the order that a stable sort gives them.
Bytes StablySorted(const Bytes& elements, const std::vector<unsigned char>& keys,
                   std::size_t size) {
  std::vector<std::size_t> order(keys.size());
  std::iota(order.begin(), order.end(), std::size_t{0});
  std::stable_sort(order.begin(), order.end(),
                   [&](std::size_t a, std::size_t b) { return keys[a] < keys[b]; });
  Bytes bytes;
  for (const std::size_t i : order)
    bytes.insert(bytes.end(), &elements[i * size], &elements[i * size] + size);
  return bytes;
}

std::vector<std::string> AsSet(const unsigned char* bytes, std::size_t count, std::size_t size) {
  std::vector<std::string> elements;
  for (std::size_t i = 0; i < count; ++i)
    elements.emplace_back(reinterpret_cast<const char*>(bytes) + i * size, size);
  std::sort(elements.begin(), elements.end());
  return elements;
}

const struct {
  const char* name;
  std::function<unsigned(unsigned, unsigned)> key;  // of element i of n
} patterns[] = {
    {"random", [](unsigned, unsigned) { return dice() % 256; }},
    {"two keys", [](unsigned, unsigned) { return dice() % 2; }},
    {"equal", [](unsigned, unsigned) { return 7u; }},
    {"ascending", [](unsigned i, unsigned) { return i; }},
    {"descending", [](unsigned i, unsigned n) { return n - i; }},
    {"saw", [](unsigned i, unsigned) { return i % 9; }},
    {"nearly ascending", [](unsigned i, unsigned) { return i + (dice() % 16 ? 0 : dice() % 64); }},
};

std::vector<unsigned char> Keys(unsigned pattern, unsigned n) {
  std::vector<unsigned char> keys(n);
  for (unsigned i = 0; i < n; ++i)
    keys[i] = static_cast<unsigned char>(patterns[pattern].key(i, n));
  return keys;
}

// The sort as it is defined, step by step and element by element: every run
// stays where the four cases of a merge say.
bool HanoiByTheBook(int* base, std::size_t n, int* tmp) {
  if (n <= 1) return false;
  if (n == 2) {
    if (base[0] <= base[1]) return false;
    tmp[0] = base[1];
    tmp[1] = base[0];
    return true;
  }
  const std::size_t n1 = n / 2;
  const bool r1 = HanoiByTheBook(base, n1, tmp);
  const bool r2 = HanoiByTheBook(base + n1, n - n1, tmp + n1);
  const std::vector<int> first(r1 ? tmp : base, (r1 ? tmp : base) + n1);
  const std::vector<int> second((r2 ? tmp : base) + n1, (r2 ? tmp : base) + n);
  std::merge(first.begin(), first.end(), second.begin(), second.end(), r1 ? base : tmp);
  return !r1;
}

}  // namespace

TEST(Hanoisort, SortsStablyWhateverSizeLengthOrderAndAlignment) {
  for (unsigned pattern = 0; pattern < std::size(patterns); ++pattern) {
    for (const std::size_t size : {1u, 2u, 4u, 8u, 12u, 16u, 24u, 32u, 37u}) {
      for (unsigned n = 0; n <= 200; n += n < 70 ? 1 : 13) {
        const auto keys = Keys(pattern, n);
        const Bytes elements = Elements(keys, size);
        const Bytes expected = StablySorted(elements, keys, size);
        for (const std::size_t shift : {0u, 1u}) {
          SCOPED_TRACE(std::string(patterns[pattern].name) + ", " + std::to_string(n) + " of " +
                       std::to_string(size) + " bytes");
          Bytes memory(shift + n * size + 1, 0xEE);
          std::copy(elements.begin(), elements.end(), memory.begin() + static_cast<long>(shift));
          hanoisort(memory.data() + shift, n, size, CompareFirstByte);
          ASSERT_EQ(Bytes(memory.begin() + static_cast<long>(shift), memory.end() - 1), expected);
          ASSERT_EQ(memory.back(), 0xEE);
        }
      }
    }
  }
}

TEST(Hanoisort, TakesItsScratchFromTheHeapWhenThereIsMuch) {
  for (const unsigned n : {16379u, 16380u, 16381u, 100000u}) {  // around 64 KiB, and beyond
    std::vector<int> numbers(n);
    for (int& x : numbers) x = static_cast<int>(dice());
    std::vector<int> expected = numbers;
    std::sort(expected.begin(), expected.end());
    hanoisort(numbers.data(), n, sizeof(int), CompareInts);
    EXPECT_EQ(numbers, expected) << n;
  }
}

TEST(Hanoisort, RefusesMoreThanMemoryCanHold) {
  constexpr std::size_t most = std::numeric_limits<std::size_t>::max();
  int x = 1;
  EXPECT_THROW(hanoisort(&x, most / 2, 4, CompareInts), std::bad_alloc);
  EXPECT_THROW(hanoisort(&x, most / 4, 4, CompareInts), std::bad_alloc);
  EXPECT_THROW(hanoisort(&x, 1, most - 15, CompareInts), std::bad_alloc);
  hanoisort(nullptr, 0, most, nullptr);
  hanoisort(nullptr, most, 0, nullptr);
  hanoisort(&x, 1, sizeof x, nullptr);
}

TEST(Hanoisort, KeepsAllElementsWhenCompareThrowsAtAnyCall) {
  for (const std::size_t size : {4u, 8u, 7u, 24u}) {
    for (const unsigned n : {2u, 3u, 4u, 5u, 17u, 48u, 65u}) {
      const Bytes elements = Elements(Keys(0, n), size);
      calls = 0;
      Bytes work = elements;
      hanoisort(work.data(), n, size, CompareFirstByte);
      const std::size_t all = calls;
      for (throwAt = 0; throwAt < all; ++throwAt) {
        calls = 0;
        work = elements;
        ASSERT_THROW(hanoisort(work.data(), n, size, CompareAndThrow), std::runtime_error);
        ASSERT_EQ(AsSet(work.data(), n, size), AsSet(elements.data(), n, size))
            << n << " of " << size << " bytes, call " << throwAt;
      }
    }
  }
  throwAt = 500;  // heap scratch: a leak shows in sanitizer builds
  calls = 0;
  Bytes large = Elements(Keys(0, 10000), 8);
  EXPECT_THROW(hanoisort(large.data(), 10000, 8, CompareAndThrow), std::runtime_error);
}

TEST(Hanoisort, KeepsAllElementsUnderAnInconsistentOrder) {
  for (const std::size_t size : {4u, 8u, 7u, 24u}) {
    for (unsigned n = 0; n < 150; ++n) {
      const Bytes elements = Elements(Keys(0, n), size);
      Bytes work = elements;
      hanoisort(work.data(), n, size, CompareAtRandom);
      ASSERT_EQ(AsSet(work.data(), n, size), AsSet(elements.data(), n, size)) << n;
    }
  }
}

TEST(Hanoisort, ComparesNoMoreThanItSays) {
  const unsigned n = 4096;  // 12 levels of merging
  const auto count = [](Bytes keys) {
    calls = 0;
    hanoisort(keys.data(), n, 1, CompareFirstByte);
    return calls;
  };
  Bytes keys = Keys(0, n);
  EXPECT_LE(count(keys), n * 12 + n / 8);
  std::sort(keys.begin(), keys.end());
  EXPECT_LE(count(keys), n * 4);
}

TEST(Hanoi, LandsWhereTheTableOfMergesSays) {
  const struct {
    std::vector<long> data;
    bool inScratch;
  } cases[] = {
      {{}, false},       {{1}, false},           {{1, 2}, false},      {{2, 1}, true},
      {{1, 2, 3}, true}, {{3, 2, 1}, true},      {{1, 2, 3, 4}, true}, {{4, 3, 2, 1}, false},
      {{2, 2}, false},   {{1, 2, 3, 4, 5}, true}};
  for (auto c : cases) {
    std::vector<long> scratch(c.data.size());
    EXPECT_EQ(
        hanoi(c.data.data(), c.data.size(), scratch.data(), [](long x, long y) { return x < y; }),
        c.inScratch)
        << testing::PrintToString(c.data);
  }

  for (unsigned n = 0; n < 100; ++n) {
    for (int round = 0; round < 20; ++round) {
      std::vector<int> data(n), scratch(n), data2, scratch2(n);
      for (int& x : data) x = static_cast<int>(dice() % (n + 1));
      data2 = data;
      std::vector<int> before = data;
      const bool hopped = hanoi(data.data(), n, scratch.data(), HanoiCompare<int>(CompareInts));
      ASSERT_EQ(hopped, HanoiByTheBook(data2.data(), n, scratch2.data())) << n;
      ASSERT_EQ(hopped ? scratch : data, hopped ? scratch2 : data2) << n;
      std::sort(before.begin(), before.end());
      std::sort(data.begin(), data.end());
      ASSERT_EQ(data, before) << "all elements must be in data, too";
    }
  }
}

TEST(Hanoi, CopiesElementsThatOwnMemory) {
  std::vector<std::string> data, scratch(60);
  for (int i = 0; i < 60; ++i) data.push_back(std::to_string(i * 37 % 60 + 1000000000000000));
  const bool hopped = hanoi(data.data(), data.size(), scratch.data(), std::less<>());
  EXPECT_TRUE(std::is_sorted((hopped ? scratch : data).begin(), (hopped ? scratch : data).end()));
}
