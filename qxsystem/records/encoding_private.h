// The primitive encodings of the record format: storing them into room that is
// there, and the cursor through which all bytes from outside are read.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <stdexcept>
#include <string_view>

#include <qxsystem/records/types.h>

namespace QXDataFlow {

/// Stands for no integer, text, blob, bool or record.
constexpr unsigned char NoneByte = 0x80;

/// Stands for no float: a quiet NaN, told from others by its bits.
constexpr std::uint64_t NoneFloat = 0x7FF80E0000000000;

/// The largest length that is believed.
constexpr unsigned long MaxLength = 1UL << 43;

/// A length that is above that, or above the number of bytes that are left.
constexpr unsigned long BadLength = ~0UL;

/// The longest tag of a section.
constexpr unsigned long MaxTag = 16;

// ---- Storing ----

/// The number of bytes of an integer's value, its sign bit among them; 127 and
/// -127 take one, 128 and -128 two. The smallest integer, whose magnitude alone
/// has 64 bits, takes the eight that there are.
inline std::size_t IntValueBytes(long value) {
  const auto bits = static_cast<std::uint64_t>(value);
  const std::uint64_t magnitude = value < 0 ? -bits : bits;
  if (magnitude < 128) return 1;
  const auto length = 64 - static_cast<std::size_t>(__builtin_clzl(magnitude));
  return length == 64 ? 8 : length / 8 + 1;
}

inline unsigned char* StoreIntValue(unsigned char* at, long value, std::size_t size) {
  auto bits = static_cast<std::uint64_t>(value);
  for (; size > 0; --size, bits >>= 8) *at++ = static_cast<unsigned char>(bits);
  return at;
}

/// Stores bytes, of which there may be none at a null address. Most are few,
/// names and numbers: two moves that may overlap are quicker than a call.
inline unsigned char* StoreBytes(unsigned char* at, const void* bytes, std::size_t size) {
  const auto* from = static_cast<const unsigned char*>(bytes);
  if (size > 16) {
    std::memcpy(at, from, size);
  } else if (size >= 8) {
    std::memcpy(at, from, 8);
    std::memcpy(at + size - 8, from + size - 8, 8);
  } else if (size >= 4) {
    std::memcpy(at, from, 4);
    std::memcpy(at + size - 4, from + size - 4, 4);
  } else {
    for (std::size_t i = 0; i < size; ++i) at[i] = from[i];
  }
  return at + size;
}

inline bool IsShortInt(long value) {
  return static_cast<unsigned long>(value) < 128;
}

inline std::size_t IntSize(long value) {
  return IsShortInt(value) ? 1 : 1 + IntValueBytes(value);
}
inline std::size_t IntSize(std::size_t value) {
  return IntSize(static_cast<long>(value));
}
inline std::size_t IntSize(std::uint32_t value) {
  return IntSize(long{value});
}

inline unsigned char* StoreInt(unsigned char* at, long value) {
  if (IsShortInt(value)) {
    *at = static_cast<unsigned char>(value);
    return at + 1;
  }
  const std::size_t size = IntValueBytes(value);
  *at = static_cast<unsigned char>(0x80 + size);
  return StoreIntValue(at + 1, value, size);
}
inline unsigned char* StoreInt(unsigned char* at, std::size_t value) {
  return StoreInt(at, static_cast<long>(value));
}
inline unsigned char* StoreInt(unsigned char* at, std::uint32_t value) {
  return StoreInt(at, long{value});
}

/// A text, or a blob: its length and its bytes.
inline std::size_t TextSize(std::size_t size) {
  return IntSize(size) + size;
}
inline unsigned char* StoreText(unsigned char* at, const void* bytes, std::size_t size) {
  return StoreBytes(StoreInt(at, size), bytes, size);
}
inline unsigned char* StoreText(unsigned char* at, std::string_view text) {
  return StoreText(at, text.data(), text.size());
}

template <class T>
unsigned char* StoreBits(unsigned char* at, const T& value) {
  return StoreBytes(at, &value, sizeof value);
}

/// A section without its payload.
inline std::size_t SectionSize(std::string_view tag, std::size_t payload) {
  return TextSize(tag.size()) + IntSize(payload) + payload;
}
inline unsigned char* StoreSectionHead(unsigned char* at, std::string_view tag,
                                       std::size_t payload) {
  return StoreInt(StoreText(at, tag), payload);
}

/// Room for `size` more bytes at the end of `bytes`.
inline unsigned char* Grow(QXBytes& bytes, std::size_t size) {
  const std::size_t used = bytes.size();
  bytes.resize(used + size);
  return bytes.data() + used;
}

inline void Append(QXBytes& bytes, const void* from, std::size_t size) {
  const auto* first = static_cast<const unsigned char*>(from);
  bytes.insert(bytes.end(), first, first + size);
}

// ---- Reading ----

[[noreturn]] inline void ThrowBadLength() {
  throw std::length_error("a record's text or blob claims more bytes than there are");
}

/// An integer of `size` bytes, at most eight, of which the last has the sign.
inline long LoadIntValue(const unsigned char* at, std::size_t size) {
  std::uint64_t bits = size != 0 && (at[size - 1] & 0x80) != 0 ? ~std::uint64_t{0} : 0;
  std::memcpy(&bits, at, size);
  return static_cast<long>(bits);
}

template <class T>
T LoadBits(const unsigned char* at) {
  T value;
  std::memcpy(&value, at, sizeof value);
  return value;
}

/// Reads bytes from outside and never passes their end. `Take` is the one place
/// where that is seen to; every other read is made of it. A read answers false
/// when the bytes end before it is complete, and then says nothing of where
/// the cursor stands.
class Cursor {
public:
  Cursor(const unsigned char* begin, const unsigned char* end) : at_(begin), end_(end) {}
  explicit Cursor(const QXBytes& bytes) : Cursor(bytes.data(), bytes.data() + bytes.size()) {}

  const unsigned char* At() const { return at_; }
  const unsigned char* End() const { return end_; }
  std::size_t Left() const { return static_cast<std::size_t>(end_ - at_); }

  bool Take(std::size_t size, const unsigned char*& bytes) {
    if (size > Left()) return false;
    bytes = at_;
    at_ += size;
    return true;
  }

  /// A prefix of 0x80 or above 0x88 stands alone and means none.
  bool Int(long& value, bool& isNone) {
    const unsigned char* byte;
    if (!Take(1, byte)) return false;
    value = *byte;
    isNone = false;
    if (*byte < 0x80) return true;
    const std::size_t size = *byte & 0x7FU;
    isNone = size == 0 || size > 8;
    value = 0;
    if (isNone) return true;
    if (!Take(size, byte)) return false;
    value = LoadIntValue(byte, size);
    return true;
  }

  /// A number that must be there, from 0 to 2^32 - 1.
  bool Number(std::uint32_t& number) {
    long value;
    bool isNone;
    if (!Int(value, isNone) || isNone) return false;
    number = static_cast<std::uint32_t>(value);
    return value == static_cast<long>(number);
  }

  /// BadLength where it cannot be.
  bool Length(std::size_t& length, bool& isNone) {
    long value;
    if (!Int(value, isNone)) return false;
    length = static_cast<std::size_t>(value);
    if (length > MaxLength || length > Left()) length = BadLength;
    return true;
  }

  /// A number of elements that take `elementSize` bytes or more each. A none
  /// and a negative number are 0.
  bool Count(std::size_t& count, std::size_t elementSize = 1) {
    long value;
    bool isNone;
    if (!Int(value, isNone)) return false;
    count = value > 0 ? static_cast<std::size_t>(value) : 0;
    return count <= Left() / elementSize;
  }

  /// The bytes of a text or blob, in the source. False also for one that claims
  /// more than there is.
  bool Text(std::string_view& text, bool& isNone) {
    std::size_t length;
    const unsigned char* bytes;
    if (!Length(length, isNone) || !Take(length, bytes)) return false;
    text = {reinterpret_cast<const char*>(bytes), length};
    return true;
  }

  /// The same, but one that claims more than there is throws.
  bool TextOrThrow(std::string_view& text, bool& isNone) {
    Cursor ahead = *this;
    std::size_t length;
    if (ahead.Length(length, isNone) && length == BadLength) ThrowBadLength();
    return Text(text, isNone);
  }

  /// A text that must be there.
  bool Text(std::string_view& text) {
    bool isNone;
    return Text(text, isNone) && !isNone;
  }

  bool Float(double& value, bool& isNone) {
    const unsigned char* bytes;
    if (!Take(sizeof value, bytes)) return false;
    isNone = LoadBits<std::uint64_t>(bytes) == NoneFloat;
    value = isNone ? 0.0 : LoadBits<double>(bytes);
    return true;
  }

  bool Bool(bool& value, bool& isNone) {
    const unsigned char* byte;
    if (!Take(1, byte)) return false;
    isNone = *byte == NoneByte;
    value = !isNone && *byte != 0;
    return true;
  }

  /// A section, whose tag has at most `maxTag` bytes; or a none in its place.
  bool Section(std::string_view& tag, Cursor& payload, bool& isNone, std::size_t maxTag) {
    std::size_t length;
    const unsigned char* bytes;
    if (!Text(tag, isNone) || tag.size() > maxTag) return false;
    if (isNone) return true;
    if (!Length(length, isNone) || isNone || !Take(length, bytes)) return false;
    payload = Cursor(bytes, bytes + length);
    return true;
  }

  /// A section that must be there, with a tag that one may have.
  bool Section(std::string_view& tag, Cursor& payload) {
    bool isNone;
    return Section(tag, payload, isNone, MaxTag) && !isNone;
  }

  /// Steps over a value that is kept encoded. Of an integer as many bytes are
  /// passed as its prefix says, whether it is one or not.
  bool PassInt() {
    const unsigned char* byte;
    return Take(1, byte) && (*byte < 0x80 || Take(*byte & 0x7FU, byte));
  }
  bool PassFloat() {
    const unsigned char* bytes;
    return Take(sizeof(double), bytes);
  }
  bool PassText() {
    Cursor ahead = *this;
    std::size_t length;
    bool isNone;
    const unsigned char* bytes;
    return ahead.Length(length, isNone) && PassInt() && Take(length, bytes);
  }

private:
  const unsigned char* at_;
  const unsigned char* end_;
};

}  // namespace QXDataFlow
