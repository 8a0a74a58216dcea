// What the sources of the binary format share.
#pragma once

#include <cstddef>
#include <cstring>
#include <string>
#include <string_view>

#include <qxsystem/qxb/qxb.h>
#include <qxsystem/qxb/qxbhand.h>

namespace QXSystem {

/// Leads the tag that names the envelope of a handled value.
constexpr std::string_view EnvelopePrefix = "!HandledQXBTag:";

/// Leads the name of an item whose tag was a code without a name; the code
/// follows in decimal.
constexpr std::string_view NumberedPrefix = "UnknownQXB";

/// Leads the names of attached records, which are no part of a block.
constexpr std::string_view AttachedPrefix = "QXUnknownQXB";

inline bool StartsWith(std::string_view text, std::string_view prefix) {
  return text.size() >= prefix.size() &&
         std::memcmp(text.data(), prefix.data(), prefix.size()) == 0;
}

/// What became of reading a tag. A tag that ends its stream is complete, but
/// most callers need something behind it.
enum class TagRead { None, MoreFollows, AtEnd };

/// Consumes a tag. `name` is the complete name or empty, never part of one; in
/// the second form it stands in the memory behind the stream.
TagRead ReadTag(qxistream& in, std::string& name, unsigned char& code);
TagRead ReadTag(qxisstream& in, std::string_view& name, unsigned char& code);

/// Consumes a length; false, with a warning, where QXBReadDataLength gives 0
/// for a length that could not be read.
bool ReadLength(qxistream& in, unsigned long max, unsigned long& value);

/// The code of a short name, 0 for any other. Which one that is is looked up
/// only for a name that begins like one.
unsigned char FindShortCode(std::string_view name);
inline unsigned char ShortCode(std::string_view name) {
  const bool like = !name.empty() && (name[0] == 'Q' || name[0] == 'M' || name[0] == 'z');
  return like ? FindShortCode(name) : static_cast<unsigned char>(0);
}

/// The most bytes that a length takes.
constexpr std::size_t MaxLengthBytes = 10;

/// Stores a length and gives the end of it.
///
/// Seven bits a byte, least significant first. The high bit marks the last
/// byte, it is no continuation: 127 is FF, 128 is 00 81.
inline unsigned char* StoreLength(unsigned char* at, unsigned long length) {
  for (; length > 0x7F; length >>= 7) *at++ = static_cast<unsigned char>(length & 0x7F);
  *at++ = static_cast<unsigned char>(length | 0x80);
  return at;
}

/// Stores `n` bytes and gives the end of them. Most are few, names and numbers:
/// two moves that may overlap are quicker than a call.
inline unsigned char* StoreBytes(unsigned char* at, const void* bytes, std::size_t n) {
  const auto* from = static_cast<const unsigned char*>(bytes);
  if (n > 16) {
    std::memcpy(at, from, n);
  } else if (n >= 8) {
    std::memcpy(at, from, 8);
    std::memcpy(at + n - 8, from + n - 8, 8);
  } else if (n >= 4) {
    std::memcpy(at, from, 4);
    std::memcpy(at + n - 4, from + n - 4, 4);
  } else {
    for (std::size_t i = 0; i < n; ++i) at[i] = from[i];
  }
  return at + n;
}

/// Stores a tag and gives the end of it: only the code when it is not 0, else
/// the long form of `name`.
inline unsigned char* StoreTag(unsigned char* at, unsigned char code, std::string_view name) {
  *at++ = code;
  return code ? at : StoreBytes(StoreLength(at, name.size()), name.data(), name.size());
}

/// The most bytes that a tag of this name takes.
inline std::size_t MaxTagSize(std::string_view name) {
  return 1 + MaxLengthBytes + name.size();
}

/// Whether a name can be stored as a tag.
inline bool IsTagName(std::string_view name) {
  return !name.empty() && name.size() < QXBTagBufferSize;
}

/// Takes `length` bytes off `in` and gives as many as came: those in the
/// stream's memory where it has them all, valid until `in` is used again, else
/// a copy in `owned` that grows with the bytes that come. A length beyond all
/// memory throws std::bad_alloc.
struct Bytes {
  const unsigned char* data;
  std::size_t size;
};
Bytes TakeBytes(qxistream& in, unsigned long length, std::string& owned);

/// A handler that knows nothing, for all who read or write plain data.
const QXBinaryIOHandler& EmptyHandler();

}  // namespace QXSystem
