// The stored forms of values in a generic data block: the one table that reader
// and writer share.
//
// An item is a tag, a type code and a value. By its shape a value is
//
//     Plain    the bytes of a number
//     Counted  a length in bytes, then that many bytes
//     Bits     as Counted, in memory a vector of bool
//     Marked   a short-family byte-order mark, then as Counted
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <utility>

#include <qxsystem/core/base.h>
#include <qxsystem/core/tagmap_private.h>
#include <qxsystem/qxb/qxb.h>

namespace QXSystem {

/// The type code of a value in its envelope, and the byte behind the envelope's
/// tag.
constexpr unsigned char HandledCode = 96;
constexpr unsigned char EnvelopeType = 81;

/// A generic data block while it is read.
struct BlockReader {
  explicit BlockReader(QXBase& holder) : object(holder) {}

  qxisstream in;         // what is left of the block
  QXBase& object;        // takes the items
  bool swapInt = false;  // the writer's order of integers is not ours
  bool swapFloat = false;
  std::string_view name;  // the present item's
  std::string numbered;   // the name of an item that is known by its number

  /// Appends a value under the present name.
  template <class T>
  void Add(T value) {
    object.AddData<T>(TagOfName(name), std::move(value));
  }
};

enum class Shape : unsigned char { Plain, Counted, Bits, Marked };

/// The bytes of a value as they are stored behind its mark and length. Those of
/// a vector of bool stand nowhere: its bits are expanded while they are written,
/// and `data` is the vector.
struct ValueBytes {
  const void* data;
  std::size_t size;
};

struct Codec {
  unsigned char code;
  Shape shape;
  const void* type;                        // identity of the item's value
  unsigned (*read)(BlockReader&);          // a status of QXBReturn
  ValueBytes (*bytes)(const QXBaseData&);  // of an item of this type
};

/// The form of a value of this type; null for one that has none of its own.
const Codec* FindCodec(const void* type);

/// The form with this type code; null if there is none.
const Codec* FindCodec(unsigned char code);

}  // namespace QXSystem
