#include <qxsystem/util/hanoi.h>

#include <algorithm>
#include <functional>
#include <limits>
#include <new>
#include <numeric>
#include <random>
#include <stdexcept>
#include <string>
#include <vector>

#include <gtest/gtest.h>

using namespace QXSystem;

namespace {

using Bytes = std::vector<unsigned char>;

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
  const int a = *static_cast<const int*>(x), b = *static_cast<const int*>(y);
  return (a > b) - (a < b);
}

// Elements of `size` bytes: the key, then bytes that tell each from all others.
Bytes Elements(const Bytes& keys, std::size_t size) {
  Bytes bytes;
  for (std::size_t i = 0; i < keys.size(); ++i) {
    bytes.push_back(keys[i]);
    for (std::size_t j = 1; j < size; ++j)
      bytes.push_back(static_cast<unsigned char>((j % 2 ? i : i >> 8) + j / 2));
  }
  return bytes;
}

Bytes StablySorted(const Bytes& elements, const Bytes& keys, std::size_t size) {
  std::vector<std::size_t> order(keys.size());
  std::iota(order.begin(), order.end(), std::size_t{0});
  std::stable_sort(order.begin(), order.end(),
                   [&](std::size_t a, std::size_t b) { return keys[a] < keys[b]; });
  Bytes bytes;
  for (const std::size_t i : order)
    bytes.insert(bytes.end(), &elements[i * size], &elements[i * size] + size);
  return bytes;
}

std::vector<std::string> AsSet(const Bytes& bytes, std::size_t size) {
  std::vector<std::string> elements;
  for (std::size_t i = 0; i < bytes.size(); i += size)
    elements.emplace_back(reinterpret_cast<const char*>(&bytes[i]), size);
  std::sort(elements.begin(), elements.end());
  return elements;
}

Bytes RandomKeys(unsigned n) {
  Bytes keys(n);
  for (auto& key : keys) key = static_cast<unsigned char>(dice());
  return keys;
}

// The sort as it is defined, run by run: where a result lands is the point.
bool HanoiByTheBook(int* base, std::size_t n, int* tmp) {
  if (n <= 1) return false;
  if (n == 2) {
    tmp[0] = base[1];
    tmp[1] = base[0];
    return base[0] > base[1];
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
  const std::function<unsigned(unsigned, unsigned)> patterns[] = {
      [](unsigned, unsigned) { return dice(); },
      [](unsigned, unsigned) { return dice() % 2; },
      [](unsigned i, unsigned) { return i; },
      [](unsigned i, unsigned n) { return n - i; },
      [](unsigned i, unsigned) { return i % 9; },
      [](unsigned i, unsigned) { return i + (dice() % 16 ? 0 : dice() % 64); }};
  for (const auto& pattern : patterns) {
    for (const std::size_t size : {1u, 2u, 4u, 8u, 12u, 16u, 24u, 32u, 37u}) {
      for (unsigned n = 0; n <= 200; n += n < 70 ? 1 : 13) {
        Bytes keys;
        for (unsigned i = 0; i < n; ++i) keys.push_back(static_cast<unsigned char>(pattern(i, n)));
        const Bytes elements = Elements(keys, size);
        for (const long shift : {0, 1}) {
          Bytes memory(elements.size() + 2, 0xEE);
          std::copy(elements.begin(), elements.end(), memory.begin() + shift);
          hanoisort(memory.data() + shift, n, size, CompareFirstByte);
          Bytes expected = StablySorted(elements, keys, size);
          expected.insert(shift ? expected.begin() : expected.end(), 0xEE);
          expected.push_back(0xEE);
          ASSERT_EQ(memory, expected)
              << n << " of " << size << " bytes, pattern " << &pattern - patterns;
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
}

TEST(Hanoisort, KeepsAllElementsWhenCompareThrowsOrContradictsItself) {
  for (const std::size_t size : {4u, 8u, 7u, 24u}) {
    for (const unsigned n : {2u, 3u, 4u, 5u, 17u, 48u, 65u, 9000u}) {
      const Bytes elements = Elements(RandomKeys(n), size);
      const auto set = AsSet(elements, size);
      for (std::size_t at = 0; at < 1000; ++at) {
        Bytes work = elements;
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
}

TEST(Hanoisort, ComparesNoMoreThanItSays) {
  const unsigned n = 4096;  // 12 levels of merging
  Bytes keys = RandomKeys(n);
  for (const std::size_t limit : {n * 12 + n / 8, n * 4}) {
    calls = 0;
    hanoisort(keys.data(), n, 1, CompareFirstByte);
    EXPECT_LE(calls, limit);  // the second time they are sorted
  }
}

TEST(Hanoi, LandsWhereTheTableOfMergesSays) {
  const struct {
    std::vector<long> data;
    bool inScratch;
  } cases[] = {{{1, 2}, false},   {{2, 1}, true},       {{2, 2}, false},
               {{1, 2, 3}, true}, {{1, 2, 3, 4}, true}, {{4, 3, 2, 1}, false}};
  for (auto c : cases) {
    std::vector<long> scratch(c.data.size());
    EXPECT_EQ(hanoi(c.data.data(), c.data.size(), scratch.data(), std::less<long>()), c.inScratch)
        << testing::PrintToString(c.data);
  }
  for (unsigned round = 0; round < 1500; ++round) {
    const unsigned n = round % 100;
    std::vector<int> data(n), scratch(n), scratch2(n);
    for (int& x : data) x = static_cast<int>(dice() % (n + 1));
    std::vector<int> data2 = data, all = data;
    const bool hopped = hanoi(data.data(), n, scratch.data(), HanoiCompare<int>(CompareInts));
    ASSERT_EQ(hopped, HanoiByTheBook(data2.data(), n, scratch2.data())) << n;
    ASSERT_EQ(hopped ? scratch : data, hopped ? scratch2 : data2) << n;
    ASSERT_EQ(AsSet(Bytes(data.begin(), data.end()), 1), AsSet(Bytes(all.begin(), all.end()), 1))
        << "all elements must be in data, too";
  }
}
