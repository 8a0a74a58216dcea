// The fields of a record by name, in the order in which they are stored.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <functional>
#include <map>
#include <memory>
#include <set>
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

/// The encoded value of a field: in memory of its own, of which the first bytes
/// are here, or in the record's, as it was read.
class ValueBytes {
public:
  ValueBytes() = default;
  ~ValueBytes() { Free(); }
  ValueBytes(const ValueBytes&) = delete;
  ValueBytes& operator=(const ValueBytes&) = delete;

  const unsigned char* Data() const { return data_; }
  std::size_t Size() const { return size_; }

  /// Room for a new value, not initialised.
  unsigned char* Set(std::size_t size) {
    if (size > capacity_) Grow(size);
    size_ = size;
    return data_;
  }

  /// Takes a value that is kept elsewhere.
  void Refer(unsigned char* data, std::size_t size) {
    Free();
    data_ = data;
    size_ = size;
    capacity_ = 0;
  }

  void Clear() {
    Free();
    data_ = here_;
    size_ = 0;
    capacity_ = sizeof here_;
  }

private:
  void Free() {
    if (capacity_ > sizeof here_) delete[] data_;
  }
  void Grow(std::size_t size);

  unsigned char here_[16];
  unsigned char* data_ = here_;
  std::size_t size_ = 0;
  std::size_t capacity_ = sizeof here_;  // more in memory of its own, 0 elsewhere
};

/// The decoded children of a field, by key.
using ChildCache = std::map<std::string, std::shared_ptr<QXRecord>>;

/// What only some fields have.
struct FieldExtras {
  QXFieldMeta meta;
  QXBytes children;                        // encoded, as far as childCache is not newer
  std::unique_ptr<ChildCache> childCache;  // null until they are decoded
};

/// A field of a record.
struct FieldEntry {
  explicit FieldEntry(std::string_view fieldName) : name(fieldName) {}

  std::string name;
  std::string_view type;        // the full name, in static memory or the table's
  std::uint32_t typeSpace = 0;  // the length of its namespace, without the ":"
  std::uint32_t index = 0;      // 0 only while it is made
  bool nullable = false;
  bool readonly = false;
  bool isNull = false;  // takes precedence over bytes
  bool hasBytes = false;
  bool isCached = false;         // there is an entry in the cache of values,
  bool isClean = false;          // which agrees with the bytes
  std::shared_ptr<void> object;  // and has this object
  ValueBytes value;
  std::unique_ptr<FieldExtras> extras;

  FieldExtras& Extras() {
    if (!extras) extras = std::make_unique<FieldExtras>();
    return *extras;
  }
  bool HasMeta() const { return extras && !extras->meta.IsEmpty(); }
  bool HasChildren() const { return extras && !extras->children.empty(); }

  void DropCache() {
    isCached = isClean = false;
    object.reset();
  }
  void DropValue() {
    hasBytes = false;
    value.Clear();
  }

  /// Makes it as new: only the name stays.
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
    Iterator(const Item* item, const Item* end, const Block* next, const Block* last)
        : item_(item), end_(end), next_(next), last_(last) {}
    FieldEntry& operator*() const { return *item_->entry; }
    Iterator& operator++() {
      if (++item_ == end_ && next_ != last_) {
        item_ = next_->data();
        end_ = item_ + next_++->size();
      }
      return *this;
    }
    // A block may begin where the last one ends, so the place alone is not enough.
    bool operator!=(const Iterator& other) const {
      return item_ != other.item_ || next_ != other.next_;
    }

  private:
    const Item *item_, *end_;    // in the present block
    const Block *next_, *last_;  // the blocks behind it
  };
  Iterator begin() const {
    const Block* const more = more_.data();
    return {first_.data(), first_.data() + first_.size(), more, more + more_.size()};
  }
  Iterator end() const {
    const Block& last = more_.empty() ? first_ : more_.back();
    const Item* const item = last.data() + last.size();
    const Block* const behind = more_.data() + more_.size();
    return {item, item, behind, behind};
  }

  bool IsEmpty() const { return size_ == 0; }
  std::size_t Size() const { return size_; }

  /// The entry of that name, null if there is none.
  FieldEntry* Find(std::string_view name) const;

  /// The same; a new one with index 0 if there was none.
  FieldEntry& Add(std::string_view name);

  void Erase(const FieldEntry& entry);
  void Clear();

  /// Makes memory ready for about as many more entries.
  void Reserve(std::size_t entries);

  /// Gives `entry` a type, of this whole name or in a namespace whose name may be
  /// empty.
  void SetType(FieldEntry& entry, std::string_view name);
  void SetType(FieldEntry& entry, std::string_view space, std::string_view type);

  /// Memory for values, which lasts until `Clear`.
  unsigned char* Take(std::size_t size) { return memory_.Take(size); }

private:
  struct Place {
    std::size_t block;
    std::ptrdiff_t at;  // in the block, of the first item that is not below the name
    FieldEntry* entry;  // of that name, or null
  };
  Place Locate(std::uint64_t prefix, std::string_view name) const;
  void Split(std::size_t block);
  FieldEntry* Make(std::string_view name);

  struct Freed {
    Freed* next;
  };
  Block& BlockAt(std::size_t i) { return i == 0 ? first_ : more_[i - 1]; }

  Arena memory_;
  Freed* freed_ = nullptr;  // entries to be used again
  std::size_t size_ = 0;
  Block first_;                                                // empty in an empty table
  std::vector<Block> more_;                                    // none is empty
  std::unique_ptr<std::set<std::string, std::less<>>> types_;  // of those not built in
};

}  // namespace QXDataFlow
