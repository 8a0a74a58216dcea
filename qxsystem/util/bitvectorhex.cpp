// The text form of bit vectors. Sixteen digits are a word, and go through one
// register of SSE2, which every x86-64 has.

#include <emmintrin.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <utility>

#include <qxsystem/core/error.h>
#include <qxsystem/util/bitvector.h>

namespace QXSystem {

namespace {

// --- Writing

constexpr std::size_t DigitsPerWord = 16;

void WriteWord(std::uint64_t word, char* out) {
  const __m128i bytes = _mm_set1_epi64x(static_cast<long long>(word));
  const __m128i half = _mm_set1_epi8(0x0F);
  const __m128i values =
      _mm_unpacklo_epi8(_mm_and_si128(bytes, half), _mm_and_si128(_mm_srli_epi16(bytes, 4), half));
  const __m128i letters =
      _mm_and_si128(_mm_cmpgt_epi8(values, _mm_set1_epi8(9)), _mm_set1_epi8('A' - '0' - 10));
  const __m128i digits = _mm_add_epi8(_mm_add_epi8(values, letters), _mm_set1_epi8('0'));
  _mm_storeu_si128(reinterpret_cast<__m128i*>(out), digits);
}

// Moves the characters of a text of `size`, which stand at its beginning, to
// their places in lines of `length` each, from the last line back.
void BreakLines(char* text, std::size_t size, std::size_t length) {
  for (std::size_t line = (size - 1) / length; line > 0; --line) {
    const std::size_t begin = line * length;
    char* const to = text + begin + line;
    std::memmove(to, text + begin, std::min(length, size - begin));
    to[-1] = '\n';
  }
}

// `words` gives the words of the bits by their number.
template <class Words>
void MakeHex(std::string& out, std::size_t size, Words words, unsigned lineLength) {
  const std::size_t digits = (size + 3) / 4, characters = digits + 1;
  out.resize(characters + (lineLength ? (characters - 1) / lineLength : 0));
  std::size_t i = 0;
  for (; i + DigitsPerWord <= digits; i += DigitsPerWord)
    WriteWord(words(i / DigitsPerWord), &out[i]);
  if (i < digits) {
    char last[DigitsPerWord];
    WriteWord(words(i / DigitsPerWord), last);
    std::copy_n(last, digits - i, &out[i]);
  }
  out[digits] = "JGHI"[4 * digits - size];
  if (lineLength) BreakLines(out.data(), characters, lineLength);
}

// --- Reading

constexpr unsigned char NoDigit = 0xFF;

constexpr std::array<unsigned char, 256> DigitValues = [] {
  std::array<unsigned char, 256> values{};
  for (auto& value : values) value = NoDigit;
  for (unsigned char i = 0; i < 10; ++i) values['0' + i] = i;
  for (unsigned char i = 10; i < 16; ++i) values['A' + i - 10] = values['a' + i - 10] = i;
  return values;
}();

// The word that sixteen digits stand for, the first one lowest. False if there
// are other characters among them.
bool ReadWord(const char* text, std::uint64_t& word) {
  const __m128i characters = _mm_loadu_si128(reinterpret_cast<const __m128i*>(text));
  const __m128i lower = _mm_or_si128(characters, _mm_set1_epi8('a' - 'A'));
  const __m128i areDigits = _mm_and_si128(_mm_cmpgt_epi8(characters, _mm_set1_epi8('0' - 1)),
                                          _mm_cmplt_epi8(characters, _mm_set1_epi8('9' + 1)));
  const __m128i areLetters = _mm_and_si128(_mm_cmpgt_epi8(lower, _mm_set1_epi8('a' - 1)),
                                           _mm_cmplt_epi8(lower, _mm_set1_epi8('f' + 1)));
  if (_mm_movemask_epi8(_mm_or_si128(areDigits, areLetters)) != 0xFFFF) return false;
  const __m128i values = _mm_add_epi8(_mm_and_si128(characters, _mm_set1_epi8(0x0F)),
                                      _mm_and_si128(areLetters, _mm_set1_epi8(9)));
  // Two values in 16 bits become the byte at their low end.
  const __m128i pairs =
      _mm_and_si128(_mm_or_si128(values, _mm_srli_epi16(values, 4)), _mm_set1_epi16(0xFF));
  word = static_cast<std::uint64_t>(_mm_cvtsi128_si64(_mm_packus_epi16(pairs, pairs)));
  return true;
}

std::uint64_t ReverseDigits(std::uint64_t word) {
  constexpr std::uint64_t LowHalves = 0x0F0F0F0F0F0F0F0F;
  word = __builtin_bswap64(word);
  return (word & LowHalves) << 4 | (word >> 4 & LowHalves);
}

// Takes digits into words that are 0, from bit 0 up.
class DigitSink {
public:
  explicit DigitSink(std::uint64_t* words) : words_(words) {}

  void Put(char digit) {
    const std::uint64_t value = DigitValues[static_cast<unsigned char>(digit)];
    if (value == NoDigit) return;
    words_[count_ / DigitsPerWord] |= value << Shift();
    ++count_;
  }

  void PutWord(std::uint64_t word) {
    std::uint64_t* const to = words_ + count_ / DigitsPerWord;
    to[0] |= word << Shift();
    if (Shift() != 0) to[1] |= word >> (64 - Shift());
    count_ += DigitsPerWord;
  }

  std::size_t NumBits() const { return 4 * count_; }

private:
  std::size_t Shift() const { return count_ % DigitsPerWord * 4; }

  std::uint64_t* words_;
  std::size_t count_ = 0;
};

void Read(const char* begin, const char* end, DigitSink& sink) {
  std::uint64_t word;
  while (begin != end) {
    if (end - begin >= 16 && ReadWord(begin, word)) {
      sink.PutWord(word);
      begin += DigitsPerWord;
    } else {
      sink.Put(*begin++);
    }
  }
}

void ReadBackwards(const char* begin, const char* end, DigitSink& sink) {
  std::uint64_t word;
  while (begin != end) {
    if (end - begin >= 16 && ReadWord(end - DigitsPerWord, word)) {
      sink.PutWord(ReverseDigits(word));
      end -= DigitsPerWord;
    } else {
      sink.Put(*--end);
    }
  }
}

constexpr std::size_t MaxDigits = 1ul << 29;

}  // namespace

bool QXMakeHex(std::string& out, const QXBitVector& bits, unsigned lineLength) {
  MakeHex(
      out, bits.GetSize(), [&](std::size_t i) { return bits.GetWords()[i]; }, lineLength);
  return true;
}

bool QXMakeHex(std::string& out, const std::vector<bool>& bits, unsigned lineLength) {
  const auto word = [&bits](std::size_t i) {
    std::uint64_t value = 0;
    for (std::size_t k = 64 * i; k < std::min(64 * i + 64, bits.size()); ++k)
      value |= std::uint64_t{bits[k]} << k % 64;
    return value;
  };
  MakeHex(out, bits.size(), word, lineLength);
  return true;
}

bool QXParseHex(QXBitVector& bits, const std::string& text) {
  if (text.empty()) return true;
  const char last = text.back();
  const bool closed = last >= 'G' && last <= 'N', forwards = closed && last <= 'J';
  const std::size_t padding = closed ? static_cast<std::size_t>(last - 'G' + 1) % 4 : 0;
  const std::size_t characters = text.size() - closed;
  if (characters >= MaxDigits) {
    QXThrow.Error("Max size for an QXBitVector is INT_MAX");
    return false;
  }
  bits.SetSize(static_cast<unsigned>(4 * characters));
  std::fill_n(bits.Words(), bits.GetNumWords(), 0);
  DigitSink sink(bits.Words());
  (forwards ? Read : ReadBackwards)(text.data(), text.data() + characters, sink);
  const bool enough = sink.NumBits() >= padding;
  bits.SetSize(enough ? static_cast<unsigned>(sink.NumBits() - padding) : 0);
  return enough;
}

bool QXParseHex(std::vector<bool>& bits, const std::string& text) {
  if (text.empty()) return true;
  QXBitVector parsed;
  if (!QXParseHex(parsed, text)) return false;
  QXCopyBits(bits, parsed);
  return true;
}

void QXCopyBits(QXBitVector& to, const std::vector<bool>& from) {
  QXBitVector copy;
  if (!copy.SetSize(static_cast<unsigned>(std::min<std::size_t>(from.size(), QXBitVector::None))))
    return;
  std::uint64_t* const words = copy.Words();
  for (std::size_t i = 0; i < from.size(); ++i) words[i / 64] |= std::uint64_t{from[i]} << i % 64;
  to = std::move(copy);
}

void QXCopyBits(std::vector<bool>& to, const QXBitVector& from) {
  to.assign(from.GetSize(), false);
  for (unsigned i = from.FirstBit(); i != QXBitVector::None; i = from.NextBit(i)) to[i] = true;
}

void QXBitVector::ToHexString(std::string& text) const {
  QXMakeHex(text, *this, 0);
}

bool QXBitVector::FromHexString(const std::string& text) {
  return QXParseHex(*this, text);
}

bool QXBitVector::FromHexString(const char* text) {
  return QXParseHex(*this, std::string(text ? text : ""));
}

}  // namespace QXSystem
