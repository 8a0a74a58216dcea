// A growable set of bits: set algebra by words, counting, scanning, similarity,
// and a compact text form in hexadecimal digits.
#pragma once

#include <climits>
#include <cstdint>
#include <string>
#include <vector>

#include <qxsystem/core/export.h>

namespace QXSystem {

/// A vector of bits, numbered from 0.
///
/// Up to 64 bits lie in the object itself, more in an array that is of just the
/// size needed. Reading a bit beyond the end gives 0, writing one makes the
/// vector larger. A size above INT_MAX is refused with the Error "Max size for
/// an QXBitVector is INT_MAX", and nothing changes. Copies are deep. What takes
/// memory throws `std::bad_alloc` when there is none.
class QXSYSTEM_API QXBitVector {
public:
  /// The answer of a scan that finds nothing.
  static constexpr unsigned None = 0xFFFFFFFF;

  QXBitVector() noexcept : word_(0), size_(0) {}

  /// `size` bits, all 0; none when `size` is refused.
  explicit QXBitVector(unsigned size) : QXBitVector() { SetSize(size); }

  QXBitVector(const QXBitVector& other);
  QXBitVector(QXBitVector&& other) noexcept;
  QXBitVector& operator=(const QXBitVector& other);
  QXBitVector& operator=(QXBitVector&& other) noexcept;
  virtual ~QXBitVector();

  /// The number of bits, set or not.
  unsigned GetSize() const { return size_; }

  /// Cuts off the bits from `size` on, or adds bits that are 0. False if refused.
  bool SetSize(unsigned size);

  bool GetBit(unsigned i) const { return i < size_ && (GetWords()[i / 64] >> i % 64 & 1); }

  /// Writes bit `i`; beyond the end the vector grows to i + 1 bits first, for a 0
  /// as well. False if refused.
  bool SetBit(unsigned i, bool on = true) {
    if (i >= size_ && !SetSize(i < INT_MAX ? i + 1 : None)) return false;
    const std::uint64_t mask = 1ul << i % 64;
    std::uint64_t& word = Words()[i / 64];
    word = on ? word | mask : word & ~mask;
    return true;
  }

  /// The storage: bit i is bit i % 64 of word i / 64, and those of the last word
  /// that lie beyond the end are 0. Valid until the size changes.
  const std::uint64_t* GetWords() const { return size_ <= 64 ? &word_ : heap_; }
  unsigned GetNumWords() const { return NumWordsOf(size_); }

  /// The number of bits that are set; in the second form, of those from `first`
  /// to `last`, both included.
  unsigned CountBits() const;
  unsigned CountRangeBits(unsigned first, unsigned last) const;

  /// The lowest and the highest bit that is set, or None.
  unsigned FirstBit() const { return FindFrom(0); }
  unsigned LastBit() const { return FindBefore(size_); }

  /// The lowest set bit above `i` and the highest one below it, or None.
  unsigned NextBit(unsigned i) const { return i < size_ ? FindFrom(i + 1) : None; }
  unsigned PrevBit(unsigned i) const { return FindBefore(i < size_ ? i : size_); }

  /// Combine the bits with those of `other`; -= clears those that are set there.
  /// A shorter vector first grows to the size of `other`, and where `other` is
  /// the shorter one, it counts as continued by 0.
  QXBitVector& operator&=(const QXBitVector& other);
  QXBitVector& operator|=(const QXBitVector& other);
  QXBitVector& operator^=(const QXBitVector& other);
  QXBitVector& operator-=(const QXBitVector& other);

  /// `QXMakeHex` without line feeds, and `QXParseHex`; null is the empty text.
  void ToHexString(std::string& text) const;
  bool FromHexString(const std::string& text);
  bool FromHexString(const char* text);

  friend QXSYSTEM_API QXBitVector operator~(QXBitVector a);
  friend QXSYSTEM_API void QXCopyBits(QXBitVector& to, const std::vector<bool>& from);
  friend QXSYSTEM_API bool QXParseHex(QXBitVector& bits, const std::string& text);

private:
  static unsigned NumWordsOf(unsigned size) { return size / 64 + (size % 64 != 0); }

  std::uint64_t* Words() { return size_ <= 64 ? &word_ : heap_; }
  void ClearBeyondEnd();
  unsigned FindFrom(unsigned begin) const;
  unsigned FindBefore(unsigned end) const;
  template <class Operation>
  QXBitVector& Combine(const QXBitVector& other);

  union {
    std::uint64_t word_;   // up to 64 bits
    std::uint64_t* heap_;  // more; from malloc
  };
  unsigned size_;
};

/// As the compound operators, on a copy of the left vector.
QXSYSTEM_API QXBitVector operator&(QXBitVector a, const QXBitVector& b);
QXSYSTEM_API QXBitVector operator|(QXBitVector a, const QXBitVector& b);
QXSYSTEM_API QXBitVector operator^(QXBitVector a, const QXBitVector& b);
QXSYSTEM_API QXBitVector operator-(QXBitVector a, const QXBitVector& b);

/// The vector of the same size whose bits are the other way round.
QXSYSTEM_API QXBitVector operator~(QXBitVector a);

/// Whether sizes and bits are the same.
QXSYSTEM_API bool operator==(const QXBitVector& a, const QXBitVector& b);
inline bool operator!=(const QXBitVector& a, const QXBitVector& b) {
  return !(a == b);
}

/// The operators by name.
QXSYSTEM_API QXBitVector QXBitVectorNot(const QXBitVector& a);
QXSYSTEM_API QXBitVector QXBitVectorAnd(const QXBitVector& a, const QXBitVector& b);
QXSYSTEM_API QXBitVector QXBitVectorOr(const QXBitVector& a, const QXBitVector& b);
QXSYSTEM_API QXBitVector QXBitVectorXor(const QXBitVector& a, const QXBitVector& b);
QXSYSTEM_API QXBitVector QXBitVectorSub(const QXBitVector& a, const QXBitVector& b);
QXSYSTEM_API bool QXBitVectorEqual(const QXBitVector& a, const QXBitVector& b);

/// The Tanimoto similarity, 0 to 1: the number of bits that are set in both,
/// divided by that of bits set in either. Sizes may differ. Without any bit set
/// the two are taken for the same: 1.
QXSYSTEM_API double QXTanimoto(const QXBitVector& a, const QXBitVector& b);

/// Counts the bits that are set in one vector alone, in both, and in neither.
/// The sizes must be equal: otherwise there is a warning, and all counts are 0.
QXSYSTEM_API void QXGetBitCounts(const QXBitVector& a, const QXBitVector& b, unsigned* onlyA,
                                 unsigned* onlyB, unsigned* both);
QXSYSTEM_API void QXGetBitCounts(const QXBitVector& a, const QXBitVector& b, unsigned* onlyA,
                                 unsigned* onlyB, unsigned* both, unsigned* neither);

/// Whether the numbers have a bit in common.
inline bool QXInBitField(unsigned a, unsigned b) {
  return (a & b) != 0;
}

/// Whether `v` is a power of 2, or 0 and that counts as one.
inline bool QXBitIsPowerOf2(unsigned v, bool zeroCounts) {
  return v == 0 ? zeroCounts : (v & (v - 1)) == 0;
}

/// Give the target the size and the bits of the source.
QXSYSTEM_API void QXCopyBits(QXBitVector& to, const std::vector<bool>& from);
QXSYSTEM_API void QXCopyBits(std::vector<bool>& to, const QXBitVector& from);

/// Writes the text form of the bits to `out`, in place of what it held; true.
///
/// Each of "0123456789ABCDEF" stands for four bits, the first for bits 0 to 3 and
/// the lowest of them for 1. A letter at the end tells how many bits of the last
/// digit are beyond the size: J none, G 1, H 2, I 3. So {0, 1, 9} of 10 bits is
/// "302H", and no bits at all are "J". With a `lineLength`, line feeds part the
/// text, the letter too, into lines of that many characters; there is none at
/// the end.
QXSYSTEM_API bool QXMakeHex(std::string& out, const QXBitVector& bits, unsigned lineLength);
QXSYSTEM_API bool QXMakeHex(std::string& out, const std::vector<bool>& bits, unsigned lineLength);

/// Gives the vector the size and the bits that `text` tells.
///
/// The text is that of `QXMakeHex`, or one with the letter K, L, M or N in the
/// place of G, H, I or J, where the last digit stands for the lowest bits. So it
/// does without a letter; the last character is a digit then. Digits may be in
/// lower case. All other characters are skipped.
///
/// An empty text changes nothing, which is a success. The result is false and
/// the vector empty if there are fewer bits than the letter says are too many;
/// false and an unchanged vector, with the Error of the class, for 2^29 or more
/// characters before the letter.
QXSYSTEM_API bool QXParseHex(QXBitVector& bits, const std::string& text);

/// The same, but on failure the vector is left as it was.
QXSYSTEM_API bool QXParseHex(std::vector<bool>& bits, const std::string& text);

}  // namespace QXSystem
