// The fields of a record by name, in the order in which they are stored.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include <qxsystem/records/arena_private.h>
#include <qxsystem/records/datarecord.h>

namespace QXDataFlow {

/// The first eight bytes of a text as a number with the same order, zeros behind
/// a shorter one: most names differ there, and need no further look.
inline std::uint64_t Prefix(std::string_view text) {
  std::uint64_t bytes = 0;
  if (text.size() >= 8) {
    std::memcpy(&bytes, text.data(), 8);
  } else if (text.size() >= 4) {
    std::uint32_t first, last;
    std::memcpy(&first, text.data(), 4);
    std::memcpy(&last, text.data() + text.size() - 4, 4);
    bytes = first | std::uint64_t{last} << 8 * (text.size() - 4);
  } else {
    for (std::size_t i = 0; i < text.size(); ++i)
      bytes |= std::uint64_t{static_cast<unsigned char>(text[i])} << 8 * i;
  }
  return __builtin_bswap64(bytes);
}

inline bool IsSameText(std::string_view a, std::string_view b) {
  return a.size() == b.size() && Prefix(a) == Prefix(b) &&
         (a.size() <= sizeof(std::uint64_t) || a == b);
}

/// The encoded value of a field, somewhere in the record's memory for values.
struct ValueBytes {
  unsigned char* data = nullptr;
  std::size_t size = 0;
};

/// The decoded children of a field, by key.
using ChildCache = std::map<std::string, std::shared_ptr<QXRecord>>;

/// What only some fields have.
struct FieldExtras {
  std::string type;           // the full name of a type that is not built in
  std::size_t typeSpace = 0;  // the length of its namespace, without the ":"
  QXFieldMeta meta;
  QXBytes children;                        // encoded, as far as childCache is not newer
  std::unique_ptr<ChildCache> childCache;  // null until they are decoded

  bool isCached = false;         // there is an entry in the cache of values,
  bool isClean = false;          // which agrees with the bytes
  std::shared_ptr<void> object;  // and has this object
};

/// A field of a record.
struct FieldEntry {
  std::string name;
  std::uint32_t index = 0;  // 0 only while it is made
  bool nullable = false;
  bool readonly = false;
  bool isNull = false;  // takes precedence over bytes
  bool hasBytes = false;
  std::string_view type;  // the full name; static, or extras->type
  ValueBytes value;       // if hasBytes
  std::unique_ptr<FieldExtras> extras;

  FieldExtras& Extras() {
    if (!extras) extras = std::make_unique<FieldExtras>();
    return *extras;
  }
  bool HasOwnType() const { return extras && type.data() == extras->type.data(); }
  bool HasMeta() const { return extras && !extras->meta.IsEmpty(); }
  bool HasChildren() const { return extras && !extras->children.empty(); }
  bool IsCached() const { return extras && extras->isCached; }

  /// The type of this name, in a namespace whose name may be empty.
  void SetType(std::string_view space, std::string_view typeName);
  void SetCache(std::shared_ptr<void> object, bool isClean);
  void DropCache();

  /// Makes it as new: all but name and index is gone.
  void Reset();
};

/// The order of fields in a record.
inline bool FieldEntryComparison(const FieldEntry& a, const FieldEntry& b) {
  return a.index < b.index;
}

/// The entries in order of their names. They stay where they are until they are
/// erased.
///
/// The order is kept in blocks of limited length: a record of few fields has
/// one, and in one of many an insertion moves no more than a block.
class FieldTable {
  struct Item {
    std::uint64_t prefix;
    FieldEntry* entry;
  };
  using Block = std::vector<Item>;

public:
  FieldTable() = default;
  ~FieldTable() { Clear(); }
  FieldTable(const FieldTable&) = delete;
  FieldTable& operator=(const FieldTable&) = delete;

  class Iterator {
  public:
    Iterator(const Block* block, std::size_t at) : block_(block), at_(at) {}
    FieldEntry& operator*() const { return *(*block_)[at_].entry; }
    Iterator& operator++() {
      if (++at_ == block_->size()) ++block_, at_ = 0;
      return *this;
    }
    bool operator!=(const Iterator& other) const {
      return block_ != other.block_ || at_ != other.at_;
    }

  private:
    const Block* block_;
    std::size_t at_;
  };
  Iterator begin() const { return {blocks_.data(), 0}; }
  Iterator end() const { return {blocks_.data() + blocks_.size(), 0}; }

  bool IsEmpty() const { return blocks_.empty(); }
  std::size_t Size() const { return size_; }

  /// The entry of that name, null if there is none.
  FieldEntry* Find(std::string_view name) const;

  /// The same; a new one with index 0 if there was none.
  FieldEntry& Add(std::string_view name);

  void Erase(const FieldEntry& entry);
  void Clear();

private:
  struct Place {
    std::size_t block;
    std::size_t at;     // in the block, of the first item that is not below the name
    FieldEntry* entry;  // of that name, or null
  };
  Place Locate(std::uint64_t prefix, std::string_view name) const;
  void Split(std::size_t block);
  FieldEntry* Make();
  void Destroy(FieldEntry* entry);

  struct Freed {
    Freed* next;
  };
  Arena memory_;
  Freed* freed_ = nullptr;     // entries to be used again
  std::vector<Block> blocks_;  // none is empty
  std::size_t size_ = 0;
};

}  // namespace QXDataFlow
