#include <qxsystem/util/bitvector.h>

#include <gtest/gtest.h>

#include <algorithm>
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

unsigned Count(const Model& model, unsigned first = 0, unsigned last = None) {
  unsigned count = 0;
  for (unsigned i = first; i < model.size() && i <= last; ++i) count += model[i];
  return count;
}

template <class Operation>
Model Combine(Model a, Model b, Operation operation) {
  a.resize(std::max(a.size(), b.size())), b.resize(a.size());
  for (std::size_t i = 0; i < a.size(); ++i) a[i] = operation(bool(a[i]), bool(b[i]));
  return a;
}

// Also beyond the end, where all must be 0.
bool AreSame(const QXBitVector& bits, const Model& model) {
  Model copy{true};
  QXCopyBits(copy, bits);
  return copy == model && bits.GetSize() == model.size() &&
         (model.size() % 64 == 0 || bits.GetWords()[model.size() / 64] >> model.size() % 64 == 0);
}

const unsigned sizes[] = {0, 1, 3, 8, 63, 64, 65, 127, 128, 129, 256, 300, 1024, 2049, 9000};

}  // namespace

TEST(QXBitVector, IsAVectorOfBoolThroughAnyHistory) {
  Dice dice{std::minstd_rand(1)};
  QXBitVector bits;
  Model model;
  for (int step = 0; step < 20000; ++step) {
    const unsigned i = dice(200), choice = dice(8);
    if (choice == 0) {
      ASSERT_TRUE(bits.SetSize(i));
      model.resize(i);
    } else if (choice == 1) {
      QXBitVector copy(bits), other(i);
      other = copy;
      copy.SetBit(0, !copy.GetBit(0));  // a copy is no view
      bits = QXBitVector(1);
      bits = std::move(other);
      bits = *&bits;
    } else {
      ASSERT_EQ(bits.GetBit(i), i < model.size() && model[i]);
      ASSERT_TRUE(bits.SetBit(i, choice > 3));
      if (i >= model.size()) model.resize(i + 1);
      model[i] = choice > 3;
    }
    ASSERT_PRED2(AreSame, bits, model) << step;
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
    EXPECT_TRUE(bits.CountBits() == places.size() && bits.CountRangeBits(0, None) == places.size());
    for (unsigned i = bits.FirstBit(); i != None; i = bits.NextBit(i)) upwards.push_back(i);
    for (unsigned i = bits.LastBit(); i != None; i = bits.PrevBit(i)) downwards.push_back(i);
    std::reverse(downwards.begin(), downwards.end());
    EXPECT_TRUE(upwards == places && downwards == places) << size;
    for (const unsigned beyond : {size, size + 70, None})
      EXPECT_TRUE(bits.NextBit(beyond) == None && bits.PrevBit(beyond) == bits.LastBit() &&
                  bits.CountRangeBits(beyond, None) == 0);
    EXPECT_EQ(bits.PrevBit(0), None);
    for (int i = 0; i < 300; ++i) {
      const unsigned first = dice(size + 2), last = first + dice(150);
      EXPECT_EQ(bits.CountRangeBits(first, last), Count(model, first, last))
          << first << " " << last;
    }
  }
}

TEST(QXBitVector, CountsAlikeByTableAndByVectors) {
  Dice dice{std::minstd_rand(3)};
  for (unsigned n = 0; n < 150; ++n) {
    Model p = RandomBits(dice, 64 * n), q = RandomBits(dice, 64 * n);
    if (n > 140) p = q = Model(64 * n, true);  // the most that a byte must hold
    const QXBitVector a = FromModel(p), b = FromModel(q);
    const std::uint64_t alone = Count(p), both = Count(Combine(p, q, std::bit_and<>())),
                        either = Count(Combine(p, q, std::bit_or<>()));
    const auto expect = [&](std::uint64_t count, PairCounts pair) {
      EXPECT_TRUE(count == alone && pair.both == both && pair.either == either) << n;
    };
    expect(CountBitsPortable(a.GetWords(), n), CountPairPortable(a.GetWords(), b.GetWords(), n));
    if (__builtin_cpu_supports("avx2"))
      expect(CountBitsAvx2(a.GetWords(), n), CountPairAvx2(a.GetWords(), b.GetWords(), n));
  }
}

TEST(QXBitVector, CombinesSetsOfAnySizes) {
  Dice dice{std::minstd_rand(4)};
  for (const unsigned size : sizes)
    for (const unsigned other : sizes) {
      SCOPED_TRACE(testing::Message() << size << " " << other);
      const Model p = RandomBits(dice, size), q = RandomBits(dice, other);
      const QXBitVector a = FromModel(p), b = FromModel(q);
      const Model common = Combine(p, q, std::bit_and<>()), all = Combine(p, q, std::bit_or<>());
      ASSERT_PRED2(AreSame, QXBitVectorAnd(a, b), common);
      ASSERT_PRED2(AreSame, QXBitVectorOr(a, b), all);
      ASSERT_PRED2(AreSame, QXBitVectorXor(a, b), Combine(p, q, std::bit_xor<>()));
      ASSERT_PRED2(AreSame, QXBitVectorSub(a, b), Combine(p, q, std::greater<>()));
      ASSERT_PRED2(AreSame, QXBitVectorNot(a), Combine(p, Model(size), std::equal_to<>()));
      ASSERT_TRUE(QXBitVectorEqual(a, b) == (p == q) && (a != b) == (p != q));
      QXBitVector self(a);
      ASSERT_TRUE((self &= self) == a && (self -= self).LastBit() == None);

      const unsigned inBoth = Count(common), inEither = Count(all);
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
  unsigned counts[] = {9, 9, 9, 9, 9, 9, 9};
  QXGetBitCounts(~QXBitVector(3), QXBitVector(4), counts, counts + 1, counts + 2, counts + 3);
  QXGetBitCounts(~QXBitVector(3), QXBitVector(4), counts + 4, counts + 5, counts + 6);
  for (const unsigned count : counts) EXPECT_EQ(count, 0u);
}

TEST(QXBitVector, RefusesMoreBitsThanAnIntCounts) {
  QXPushSimpleQXThrowTester reports;
  QXThrow.SetStrict(false);
  QXBitVector bits(70);
  bits.SetBit(69);
  for (const unsigned i : {0x7FFFFFFFu, 0x80000000u, None})
    EXPECT_FALSE(bits.SetBit(i) || bits.SetBit(i, false) || bits.GetBit(i));
  EXPECT_FALSE(bits.SetSize(0x80000000) || QXParseHex(bits, std::string(1 << 29, '0')));
  EXPECT_TRUE(bits.GetSize() == 70 && bits.GetBit(69) && QXBitVector(None).GetSize() == 0);
  EXPECT_EQ(reports.NumMessages(), 9u);
  EXPECT_NE(reports.GetErrorLog().find("5\nMax size for an QXBitVector is INT_MAX\n"),
            std::string::npos);
}

TEST(Hex, IsReadByTheLetterAtItsEnd) {
  const struct {
    std::string text;
    unsigned size;
    std::vector<unsigned> places;
  } cases[] = {{"01I", 5, {4}},
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
               {"8000000000000000 1000000000000000N", 128, {60, 127}}};
  for (const auto& c : cases) {
    QXBitVector bits(99);
    Model model{true}, expected(c.size);
    for (const unsigned place : c.places) expected[place] = true;
    EXPECT_TRUE(bits.FromHexString(c.text.c_str()) && QXParseHex(model, c.text));
    EXPECT_TRUE(AreSame(bits, expected) && model == expected) << c.text;
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
      std::string plain, broken, text, same;
      for (unsigned i = 0; i < size; i += 4) {
        unsigned digit = 0;
        for (unsigned k = i; k < std::min(i + 4, size); ++k) digit |= unsigned{model[k]} << (k - i);
        plain += "0123456789ABCDEF"[digit];
      }
      plain += "JIHG"[size % 4];
      for (std::size_t i = 0; i < plain.size(); ++i) {
        if (lineLength != 0 && i != 0 && i % lineLength == 0) broken += '\n';
        broken += plain[i];
      }
      QXBitVector bits = FromModel(model);
      ASSERT_TRUE(QXMakeHex(text, bits, lineLength) && QXMakeHex(same, model, lineLength));
      ASSERT_TRUE(text == broken && same == broken) << text;
      ASSERT_TRUE(QXParseHex(bits, text) && AreSame(bits, model));
      bits.ToHexString(text);
      ASSERT_EQ(text, plain);
      // The other way round: digits reversed, letter four further on.
      std::reverse(text.begin(), text.end() - 1);
      text.back() = static_cast<char>(text.back() + 4);
      ASSERT_TRUE(QXParseHex(bits, text) && AreSame(bits, model));
    }
}

TEST(BitField, AnswersSmallQuestions) {
  EXPECT_TRUE(QXInBitField(6, 12) && !QXInBitField(3, 12));
  EXPECT_TRUE(QXBitIsPowerOf2(1, false) && QXBitIsPowerOf2(0x80000000, false));
  EXPECT_FALSE(QXBitIsPowerOf2(6, true) || QXBitIsPowerOf2(0x80000001, true));
  EXPECT_TRUE(QXBitIsPowerOf2(0, true) && !QXBitIsPowerOf2(0, false));
}
