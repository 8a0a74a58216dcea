// What the sources of the binary format share.
#pragma once

#include <cstddef>
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
  return text.substr(0, prefix.size()) == prefix;
}

/// What became of reading a tag. A tag that ends its stream is complete, but
/// most callers need something behind it.
enum class TagRead { None, MoreFollows, AtEnd };

/// Consumes a tag. `name` is the complete name or empty, never part of one.
TagRead ReadTag(qxistream& in, std::string& name, unsigned char& code);

/// The name for a code that has none, by which the writer finds it again.
std::string NumberedName(unsigned char code);

/// Consumes a length; false, with a warning, where QXBReadDataLength gives 0
/// for a length that could not be read.
bool ReadLength(qxistream& in, unsigned long max, unsigned long& value);

/// A tag in the form that it is stored in.
struct StoredTag {
  unsigned char code = 0;  // 0: the long form
  std::string_view name;   // not stored behind a code

  std::size_t Size() const { return code ? 1 : 1 + QXBDataLengthBytes(name.size()) + name.size(); }
  void Write(qxostream& out) const;
};

/// The stored form of a name that is neither empty nor too long.
StoredTag MakeTag(std::string_view name);

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
