#include <qxsystem/util/bitvector.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <new>
#include <utility>

#include <qxsystem/core/error.h>
#include <qxsystem/util/bitcount_private.h>

namespace QXSystem {

namespace {

// What malloc and its kind gave, unless that is nothing.
std::uint64_t* Checked(void* block) {
  if (!block) throw std::bad_alloc();
  return static_cast<std::uint64_t*>(block);
}

// The bits of a word from bit `i` on, and those up to and with bit `i`.
std::uint64_t MaskFrom(unsigned i) {
  return ~0ul << i % 64;
}
std::uint64_t MaskTo(unsigned i) {
  return ~0ul >> (63 - i % 64);
}

// The operations on words, each compiled twice.
struct And {
  std::uint64_t operator()(std::uint64_t a, std::uint64_t b) const { return a & b; }
};
struct Or {
  std::uint64_t operator()(std::uint64_t a, std::uint64_t b) const { return a | b; }
};
struct Xor {
  std::uint64_t operator()(std::uint64_t a, std::uint64_t b) const { return a ^ b; }
};
struct AndNot {
  std::uint64_t operator()(std::uint64_t a, std::uint64_t b) const { return a & ~b; }
};

template <class Operation>
void CombinePortable(std::uint64_t* to, const std::uint64_t* from, std::size_t n) {
  for (std::size_t i = 0; i < n; ++i) to[i] = Operation()(to[i], from[i]);
}
template <class Operation>
QX_AVX2 void CombineAvx2(std::uint64_t* to, const std::uint64_t* from, std::size_t n) {
  for (std::size_t i = 0; i < n; ++i) to[i] = Operation()(to[i], from[i]);
}

}  // namespace

QXBitVector::QXBitVector(const QXBitVector& other) : word_(other.word_), size_(other.size_) {
  if (size_ <= 64) return;
  const std::size_t bytes = GetNumWords() * sizeof(std::uint64_t);
  heap_ = Checked(std::malloc(bytes));
  std::memcpy(heap_, other.heap_, bytes);
}

QXBitVector::QXBitVector(QXBitVector&& other) noexcept : QXBitVector() {
  *this = std::move(other);
}

QXBitVector& QXBitVector::operator=(const QXBitVector& other) {
  if (GetNumWords() != other.GetNumWords()) return *this = QXBitVector(other);
  size_ = other.size_;
  std::copy_n(other.GetWords(), GetNumWords(), Words());
  return *this;
}

QXBitVector& QXBitVector::operator=(QXBitVector&& other) noexcept {
  std::swap(word_, other.word_);  // or the pointers, which are as wide
  std::swap(size_, other.size_);
  return *this;
}

QXBitVector::~QXBitVector() {
  if (size_ > 64) std::free(heap_);
}

bool QXBitVector::SetSize(unsigned size) {
  if (size > INT_MAX) {
    QXThrow.Error("Max size for an QXBitVector is INT_MAX");
    return false;
  }
  const unsigned oldWords = GetNumWords(), newWords = NumWordsOf(size);
  if (size <= 64) {
    if (size_ > 64) {
      const std::uint64_t first = heap_[0];
      std::free(heap_);
      word_ = first;
    }
  } else if (size_ <= 64) {
    const auto heap = Checked(std::calloc(newWords, sizeof(std::uint64_t)));
    heap[0] = word_;
    heap_ = heap;
  } else if (oldWords != newWords) {
    heap_ = Checked(std::realloc(heap_, newWords * sizeof(std::uint64_t)));
    if (oldWords < newWords) std::fill(heap_ + oldWords, heap_ + newWords, 0);
  }
  const bool cut = size < size_;
  size_ = size;
  if (cut) ClearBeyondEnd();
  return true;
}

void QXBitVector::ClearBeyondEnd() {
  if (size_ == 0)
    word_ = 0;
  else
    Words()[GetNumWords() - 1] &= MaskTo(size_ - 1);
}

unsigned QXBitVector::CountBits() const {
  return static_cast<unsigned>(QXSystem::CountBits(GetWords(), GetNumWords()));
}

unsigned QXBitVector::CountRangeBits(unsigned first, unsigned last) const {
  if (first >= size_ || first > last) return 0;
  last = std::min(last, size_ - 1);
  const std::uint64_t *low = GetWords() + first / 64, *high = GetWords() + last / 64;
  std::uint64_t ends[2] = {*low & MaskFrom(first), *high & MaskTo(last)};
  if (low == high) {
    ends[0] &= ends[1];
    return static_cast<unsigned>(QXSystem::CountBits(ends, 1));
  }
  const auto between = static_cast<std::size_t>(high - low - 1);
  return static_cast<unsigned>(QXSystem::CountBits(ends, 2) +
                               QXSystem::CountBits(low + 1, between));
}

unsigned QXBitVector::FindFrom(unsigned begin) const {
  if (begin >= size_) return None;
  const std::uint64_t* const words = GetWords();
  const unsigned end = GetNumWords();
  unsigned i = begin / 64;
  std::uint64_t word = words[i] & MaskFrom(begin);
  while (word == 0) {
    if (++i == end) return None;
    word = words[i];
  }
  return 64 * i + static_cast<unsigned>(__builtin_ctzl(word));
}

unsigned QXBitVector::FindBefore(unsigned end) const {
  if (end == 0) return None;
  const std::uint64_t* const words = GetWords();
  unsigned i = (end - 1) / 64;
  std::uint64_t word = words[i] & MaskTo(end - 1);
  while (word == 0) {
    if (i == 0) return None;
    word = words[--i];
  }
  return 64 * i + 63 - static_cast<unsigned>(__builtin_clzl(word));
}

template <class Operation>
QXBitVector& QXBitVector::Combine(const QXBitVector& other) {
  if (size_ < other.size_) SetSize(other.size_);
  const unsigned n = other.GetNumWords();
  if (UseAvx2(n))
    CombineAvx2<Operation>(Words(), other.GetWords(), n);
  else
    CombinePortable<Operation>(Words(), other.GetWords(), n);
  return *this;
}

QXBitVector& QXBitVector::operator&=(const QXBitVector& other) {
  Combine<And>(other);
  const unsigned n = GetNumWords(), common = other.GetNumWords();
  if (common < n) std::fill(Words() + common, Words() + n, 0);
  return *this;
}
QXBitVector& QXBitVector::operator|=(const QXBitVector& other) {
  return Combine<Or>(other);
}
QXBitVector& QXBitVector::operator^=(const QXBitVector& other) {
  return Combine<Xor>(other);
}
QXBitVector& QXBitVector::operator-=(const QXBitVector& other) {
  return Combine<AndNot>(other);
}

QXBitVector operator&(QXBitVector a, const QXBitVector& b) {
  a &= b;
  return a;
}
QXBitVector operator|(QXBitVector a, const QXBitVector& b) {
  a |= b;
  return a;
}
QXBitVector operator^(QXBitVector a, const QXBitVector& b) {
  a ^= b;
  return a;
}
QXBitVector operator-(QXBitVector a, const QXBitVector& b) {
  a -= b;
  return a;
}

QXBitVector operator~(QXBitVector a) {
  std::uint64_t* const words = a.Words();
  std::transform(words, words + a.GetNumWords(), words, std::bit_not<>());
  a.ClearBeyondEnd();
  return a;
}

bool operator==(const QXBitVector& a, const QXBitVector& b) {
  return a.GetSize() == b.GetSize() &&
         std::equal(a.GetWords(), a.GetWords() + a.GetNumWords(), b.GetWords());
}

QXBitVector QXBitVectorNot(const QXBitVector& a) {
  return ~a;
}
QXBitVector QXBitVectorAnd(const QXBitVector& a, const QXBitVector& b) {
  return a & b;
}
QXBitVector QXBitVectorOr(const QXBitVector& a, const QXBitVector& b) {
  return a | b;
}
QXBitVector QXBitVectorXor(const QXBitVector& a, const QXBitVector& b) {
  return a ^ b;
}
QXBitVector QXBitVectorSub(const QXBitVector& a, const QXBitVector& b) {
  return a - b;
}
bool QXBitVectorEqual(const QXBitVector& a, const QXBitVector& b) {
  return a == b;
}

double QXTanimoto(const QXBitVector& a, const QXBitVector& b) {
  if (a.GetNumWords() > b.GetNumWords()) return QXTanimoto(b, a);
  const unsigned n = a.GetNumWords();
  PairCounts counts = CountPair(a.GetWords(), b.GetWords(), n);
  counts.either += CountBits(b.GetWords() + n, b.GetNumWords() - n);
  if (counts.either == 0) return 1;
  return static_cast<double>(counts.both) / static_cast<double>(counts.either);
}

void QXGetBitCounts(const QXBitVector& a, const QXBitVector& b, unsigned* onlyA, unsigned* onlyB,
                    unsigned* both) {
  unsigned neither;
  QXGetBitCounts(a, b, onlyA, onlyB, both, &neither);
}

void QXGetBitCounts(const QXBitVector& a, const QXBitVector& b, unsigned* onlyA, unsigned* onlyB,
                    unsigned* both, unsigned* neither) {
  *onlyA = *onlyB = *both = *neither = 0;
  if (a.GetSize() != b.GetSize()) {
    QXThrow.Warning("QXGetBitCounts: different bit vector size %d != %d",
                    static_cast<int>(a.GetSize()), static_cast<int>(b.GetSize()));
    return;
  }
  const PairCounts counts = CountPair(a.GetWords(), b.GetWords(), a.GetNumWords());
  const unsigned countA = a.CountBits(), either = static_cast<unsigned>(counts.either);
  *both = static_cast<unsigned>(counts.both);
  *onlyA = countA - *both;
  *onlyB = either - countA;
  *neither = a.GetSize() - either;
}

}  // namespace QXSystem
