#include <qxsystem/util/bitvector.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <climits>
#include <functional>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include <qxsystem/core/errortest.h>
#include <qxsystem/util/bitcount_private.h>

using namespace QXSystem;

namespace {

constexpr unsigned None = 0xFFFFFFFF;
using Model = std::vector<bool>;

struct Dice {
  std::minstd_rand random;
  unsigned operator()(unsigned sides) { return static_cast<unsigned>(random() % sides); }
};

Model RandomBits(Dice& dice, unsigned size) {
  Model bits(size);
  const unsigned rarity = 1 + dice(40);  // sparse ones have long gaps to skip
  for (unsigned i = 0; i < size; ++i) bits[i] = dice(rarity) == 0;
  return bits;
}

QXBitVector FromModel(const Model& model) {
  QXBitVector bits;
  QXCopyBits(bits, model);
  return bits;
}

unsigned Count(const Model& model, unsigned first, unsigned last) {
  unsigned count = 0;
  for (unsigned i = first; i < model.size() && i <= last; ++i) count += model[i];
  return count;
}

template <class Operation>
Model Combine(Model a, Model b, Operation operation) {
  const std::size_t size = std::max(a.size(), b.size());
  a.resize(size), b.resize(size);
  for (std::size_t i = 0; i < size; ++i) a[i] = operation(bool(a[i]), bool(b[i]));
  return a;
}

void ExpectSame(const QXBitVector& bits, const Model& model) {
  ASSERT_EQ(bits.GetSize(), model.size());
  Model copy{true};
  QXCopyBits(copy, bits);
  ASSERT_EQ(copy, model);
  ASSERT_TRUE(model.size() % 64 == 0 ||
              bits.GetWords()[bits.GetNumWords() - 1] >> model.size() % 64 == 0);
}

const unsigned sizes[] = {0, 1, 3, 8, 63, 64, 65, 127, 128, 129, 256, 300, 1024, 2049, 9000};

}  // namespace

TEST(QXBitVector, IsAVectorOfBoolThroughAnyHistory) {
  Dice dice{std::minstd_rand(1)};
  QXBitVector bits;
  Model model;
  for (int step = 0; step < 20000; ++step) {
    SCOPED_TRACE(step);
    const unsigned i = dice(200), size = static_cast<unsigned>(model.size());
    switch (dice(8)) {
      case 0:
        ASSERT_TRUE(bits.SetSize(i));
        model.resize(i);
        break;
      case 1: {
        QXBitVector copy(bits), other(dice(200));
        other = copy;
        copy.SetBit(0, !copy.GetBit(0));  // a copy is no view
        bits = QXBitVector(1);
        bits = std::move(other);
        bits = *&bits;
        break;
      }
      default: {
        const bool on = dice(3) != 0;
        ASSERT_EQ(bits.GetBit(i), i < size && model[i]);
        ASSERT_TRUE(bits.SetBit(i, on));
        if (i >= size) model.resize(i + 1);
        model[i] = on;
      }
    }
    ASSERT_NO_FATAL_FAILURE(ExpectSame(bits, model));
  }
}

TEST(QXBitVector, CountsAndScans) {
  Dice dice{std::minstd_rand(2)};
  for (const unsigned size : sizes) {
    const Model model = RandomBits(dice, size);
    const QXBitVector bits = FromModel(model);
    std::vector<unsigned> places, upwards, downwards;
    for (unsigned i = 0; i < size; ++i)
      if (model[i]) places.push_back(i);
    EXPECT_EQ(bits.CountBits(), places.size());
    for (unsigned i = bits.FirstBit(); i != None; i = bits.NextBit(i)) upwards.push_back(i);
    for (unsigned i = bits.LastBit(); i != None; i = bits.PrevBit(i)) downwards.push_back(i);
    EXPECT_EQ(upwards, places);
    EXPECT_EQ(std::vector<unsigned>(downwards.rbegin(), downwards.rend()), places);
    for (const unsigned beyond : {size, size + 70, None}) {
      EXPECT_TRUE(bits.NextBit(beyond) == None && bits.PrevBit(beyond) == bits.LastBit());
      EXPECT_EQ(bits.CountRangeBits(beyond, None), 0u);
    }
    EXPECT_EQ(bits.PrevBit(0), None);
    EXPECT_EQ(bits.CountRangeBits(0, None), places.size());
    for (int i = 0; i < 300; ++i) {
      const unsigned first = dice(size + 2), last = first + dice(150);
      EXPECT_EQ(bits.CountRangeBits(first, last), Count(model, first, last))
          << first << " " << last;
    }
  }
}

TEST(QXBitVector, CountsAlikeByTableAndByVectors) {
  const bool avx2 = __builtin_cpu_supports("avx2");
  Dice dice{std::minstd_rand(3)};
  for (unsigned n = 0; n < 150; ++n) {
    QXBitVector a = FromModel(RandomBits(dice, 64 * n)), b = FromModel(RandomBits(dice, 64 * n));
    if (n > 140) a = ~QXBitVector(64 * n), b = a;  // the most that a byte must hold
    const std::uint64_t *p = a.GetWords(), *q = b.GetWords();
    Model left, right;
    QXCopyBits(left, a), QXCopyBits(right, b);
    const auto count = [](const Model& m) {
      return static_cast<std::uint64_t>(std::count(m.begin(), m.end(), true));
    };
    const std::uint64_t alone = count(left), both = count(Combine(left, right, std::bit_and<>())),
                        either = count(Combine(left, right, std::bit_or<>()));
    const PairCounts table = CountPairPortable(p, q, n);
    EXPECT_TRUE(CountBitsPortable(p, n) == alone && table.both == both && table.either == either);
    if (!avx2) continue;
    const PairCounts vectors = CountPairAvx2(p, q, n);
    EXPECT_TRUE(CountBitsAvx2(p, n) == alone && vectors.both == both && vectors.either == either);
  }
}

TEST(QXBitVector, CombinesSetsOfAnySizes) {
  Dice dice{std::minstd_rand(4)};
  const auto less = [](bool x, bool y) { return x && !y; };
  for (const unsigned size : sizes)
    for (const unsigned other : sizes) {
      SCOPED_TRACE(testing::Message() << size << " " << other);
      const Model p = RandomBits(dice, size), q = RandomBits(dice, other);
      const QXBitVector a = FromModel(p), b = FromModel(q);
      const Model common = Combine(p, q, std::bit_and<>()), either = Combine(p, q, std::bit_or<>());
      ASSERT_NO_FATAL_FAILURE(ExpectSame(a & b, common));
      ASSERT_NO_FATAL_FAILURE(ExpectSame(QXBitVectorOr(a, b), either));
      ASSERT_NO_FATAL_FAILURE(ExpectSame(a ^ b, Combine(p, q, std::bit_xor<>())));
      ASSERT_NO_FATAL_FAILURE(ExpectSame(a - b, Combine(p, q, less)));
      ASSERT_TRUE(QXBitVectorSub(a, a).CountBits() == 0 && QXBitVectorXor(a, a).LastBit() == None);
      ASSERT_TRUE(QXBitVectorNot(a) == (a ^ ~QXBitVector(size)) && (a & ~a).FirstBit() == None);
      ASSERT_EQ(QXBitVectorEqual(a, b), p == q);
      ASSERT_EQ(QXBitVectorAnd(a, b) != b, common != q);

      const unsigned inBoth = Count(common, 0, None), inEither = Count(either, 0, None);
      ASSERT_EQ(QXTanimoto(a, b), inEither == 0 ? 1 : double(inBoth) / inEither);
      if (size != other) continue;
      unsigned onlyA, onlyB, both, neither;
      QXGetBitCounts(a, b, &onlyA, &onlyB, &both, &neither);
      ASSERT_TRUE(both == inBoth && neither == size - inEither);
      ASSERT_TRUE(onlyA + inBoth == a.CountBits() && onlyB + inBoth == b.CountBits());
    }
}

TEST(QXBitVector, HasNoCountsOfDifferentSizes) {
  const QXPushQXThrowHasSpecficMessages warning(QXErrorLevel::Warning,
                                                "QXGetBitCounts: different bit vector size 3 != 4");
  unsigned counts[] = {9, 9, 9, 9};
  QXGetBitCounts(~QXBitVector(3), QXBitVector(4), counts, counts + 1, counts + 2, counts + 3);
  for (const unsigned count : counts) EXPECT_EQ(count, 0u);
  counts[0] = 9;
  QXGetBitCounts(~QXBitVector(3), QXBitVector(4), counts, counts + 1, counts + 2);
  EXPECT_EQ(counts[0], 0u);
}

TEST(QXBitVector, RefusesMoreBitsThanAnIntCounts) {
  QXPushSimpleQXThrowTester reports;
  QXThrow.SetStrict(false);
  QXBitVector bits(70);
  bits.SetBit(69);
  for (const unsigned i : {0x7FFFFFFFu, 0x80000000u, None})
    EXPECT_FALSE(bits.SetBit(i) || bits.SetBit(i, false) || bits.GetBit(i));
  EXPECT_FALSE(bits.SetSize(0x80000000));
  EXPECT_TRUE(bits.GetSize() == 70 && bits.GetBit(69) && QXBitVector(None).GetSize() == 0);
  EXPECT_EQ(reports.NumMessages(), 8u);

  reports.Clear();
  EXPECT_FALSE(QXParseHex(bits, std::string(1 << 29, '0')));
  EXPECT_TRUE(bits.GetSize() == 70 && bits.GetBit(69));
  EXPECT_EQ(reports.GetErrorLog(), "level = 5\nMax size for an QXBitVector is INT_MAX\n");
}

TEST(Hex, IsReadByTheLetterAtItsEnd) {
  using Places = std::vector<unsigned>;
  const struct {
    std::string text;
    unsigned size;
    Places places;
  } cases[] = {
      {"01I", 5, {4}},
      {"302H", 10, {0, 1, 9}},
      {"302L", 10, {1, 8, 9}},
      {"12J", 8, {0, 5}},
      {"12N", 8, {1, 4}},
      {"12", 8, {1, 4}},
      {"12J\n", 8, {1, 4}},
      {"1 0J", 8, {0}},
      {"ffj", 8, {0, 1, 2, 3, 4, 5, 6, 7}},
      {"FG", 3, {0, 1, 2}},
      {"FK", 3, {0, 1, 2}},
      {"aM", 1, {}},
      {"\xB1\n1\x80zG", 3, {0}},
      {"J", 0, {}},
      {"0000000000000001 0000000000000080J", 128, {60, 123}},
      {"8000000000000000 1000000000000000N", 128, {60, 127}},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.text);
    QXBitVector bits(99);
    Model model{true}, expected(c.size);
    for (const unsigned place : c.places) expected[place] = true;
    EXPECT_TRUE(bits.FromHexString(c.text.c_str()) && QXParseHex(model, c.text));
    ExpectSame(bits, expected);
    EXPECT_EQ(model, expected);
  }
  for (const std::string text : {"I", " I", "G", "xyzL"}) {
    QXBitVector bits(7);
    Model model(7);
    EXPECT_FALSE(bits.FromHexString(text) || QXParseHex(model, text)) << text;
    EXPECT_TRUE(bits.GetSize() == 0 && model.size() == 7);
    EXPECT_TRUE(QXParseHex(bits, "F") && QXParseHex(bits, "") && QXParseHex(model, ""));
    EXPECT_TRUE(bits.CountBits() == 4 && model.size() == 7);
  }
}

TEST(Hex, ComesBackAtAnySizeAndLineLength) {
  Dice dice{std::minstd_rand(5)};
  for (const unsigned size : sizes)
    for (const unsigned lineLength : {0u, 1u, 4u, 16u, 60u, 1000u}) {
      SCOPED_TRACE(testing::Message() << size << " " << lineLength);
      const Model model = RandomBits(dice, size);
      std::string plain, text, same;
      for (unsigned i = 0; i < size; i += 4) {
        unsigned digit = 0;
        for (unsigned k = i; k < std::min(i + 4, size); ++k) digit |= unsigned{model[k]} << (k - i);
        plain += "0123456789ABCDEF"[digit];
      }
      plain += "JIHG"[size % 4];
      std::string broken;
      for (std::size_t i = 0; i < plain.size(); ++i) {
        if (lineLength != 0 && i != 0 && i % lineLength == 0) broken += '\n';
        broken += plain[i];
      }
      ASSERT_TRUE(QXMakeHex(text, FromModel(model), lineLength) &&
                  QXMakeHex(same, model, lineLength));
      ASSERT_EQ(text, broken);
      ASSERT_EQ(same, broken);
      QXBitVector bits;
      ASSERT_TRUE(bits.FromHexString(text));
      ASSERT_NO_FATAL_FAILURE(ExpectSame(bits, model));
      bits.ToHexString(text);
      ASSERT_EQ(text, plain);

      // The other way round: digits reversed, letter four further on.
      std::reverse(text.begin(), text.end() - 1);
      text.back() = static_cast<char>(text.back() + 4);
      ASSERT_TRUE(QXParseHex(bits, text));
      ASSERT_NO_FATAL_FAILURE(ExpectSame(bits, model));
    }
}

TEST(BitField, SmallQuestions) {
  EXPECT_TRUE(QXInBitField(6, 12) && !QXInBitField(3, 12));
  for (const unsigned v : {1u, 2u, 0x80000000u}) EXPECT_TRUE(QXBitIsPowerOf2(v, false)) << v;
  for (const unsigned v : {3u, 6u, 0x80000001u}) EXPECT_FALSE(QXBitIsPowerOf2(v, true)) << v;
  EXPECT_TRUE(QXBitIsPowerOf2(0, true) && !QXBitIsPowerOf2(0, false));
}
