// What a record holds.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <memory_resource>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <qxsystem/records/datarecord.h>
#include <qxsystem/records/encoding_private.h>

namespace QXDataFlow {

/// The version of the byte format.
constexpr std::string_view RecordVersion = "1.0";

/// Memory for the nodes of one map, which are all of one size: taken in chunks
/// that double, and used again when freed.
class NodePool final : public std::pmr::memory_resource {
public:
  NodePool() = default;
  ~NodePool() override;
  NodePool(const NodePool&) = delete;
  NodePool& operator=(const NodePool&) = delete;

private:
  struct Link {
    Link* next;
  };

  void* do_allocate(std::size_t size, std::size_t) override {
    if (free_ == nullptr) AddChunk(size);
    return std::exchange(free_, free_->next);
  }
  void do_deallocate(void* node, std::size_t, std::size_t) override { Free(node); }
  bool do_is_equal(const memory_resource& other) const noexcept override { return this == &other; }

  void Free(void* node) { free_ = new (node) Link{free_}; }
  void AddChunk(std::size_t nodeSize);

  Link* chunks_ = nullptr;
  Link* free_ = nullptr;
  std::size_t nextNodes_ = 4;  // of the next chunk
};

/// Some of the bytes in which a record keeps its values.
struct Span {
  std::size_t offset = 0;
  std::size_t size = 0;
};

/// The decoded children of a field, by key.
using ChildCache = std::map<std::string, std::shared_ptr<QXRecord>>;

/// Collects the children of a field in their stored form: a vector of records,
/// each with its key in a field.
class ChildrenBytes {
public:
  /// Gives `child` the field with its key. False for a child that has no bytes,
  /// being nested too deep.
  bool Add(const std::string& key, QXRecord& child);

  /// None without children.
  QXBytes Get() const;

private:
  std::size_t count_ = 0;
  QXBytes records_;
};

/// The children by key, without the field that has it.
std::map<std::string, QXRecord> ReadChildren(const QXBytes& bytes);

/// What only some fields have.
struct FieldExtras {
  std::string type;           // the full name of a type that is not built in
  std::size_t typeSpace = 0;  // the length of its namespace, without the ":"
  QXFieldMeta meta;
  QXBytes children;                        // encoded, without those in childCache
  std::unique_ptr<ChildCache> childCache;  // null until they are decoded

  bool isCached = false;         // there is an entry in the cache of values,
  bool isClean = false;          // which agrees with the bytes
  std::shared_ptr<void> object;  // and has this object
};

/// A field of a record, without its name.
struct FieldEntry {
  std::uint32_t index = 0;  // 0 only while it is made
  bool nullable = false;
  bool readonly = false;
  bool isNull = false;  // takes precedence over bytes
  bool hasBytes = false;
  std::string_view type;  // the full name; static, or extras->type
  Span value;             // if hasBytes
  std::unique_ptr<FieldExtras> extras;

  FieldExtras& Extras() {
    if (!extras) extras = std::make_unique<FieldExtras>();
    return *extras;
  }
  bool HasOwnType() const { return extras && type.data() == extras->type.data(); }
  bool HasMeta() const { return extras && !extras->meta.IsEmpty(); }
  bool IsCached() const { return extras && extras->isCached; }

  bool HasChildren() const { return extras && !extras->children.empty(); }

  /// The type of this name, in a namespace whose name may be empty.
  void SetType(std::string_view space, std::string_view name);
  void SetCache(std::shared_ptr<void> object, bool isClean);
  void DropCache();
};

/// The order of fields in a record.
inline bool FieldEntryComparison(const FieldEntry& a, const FieldEntry& b) {
  return a.index < b.index;
}

/// The fields by name, the order in which they are stored.
using FieldMap = std::pmr::map<std::string, FieldEntry, std::less<>>;
using NamedField = FieldMap::value_type;

/// Values lie one behind the other in one block of bytes, where the fields refer
/// to them: reading a record copies its values at once, and setting one appends
/// it. What a changed value leaves behind is cleared up when it makes up half
/// of the block.
class QXRecordImpl {
  NodePool pool_;  // before `fields`, which lives in it

public:
  QXRecordImpl() = default;

  /// Copies all but the objects in the caches; of these the values that the
  /// bytes lack are shared, to be turned into bytes at once.
  QXRecordImpl(const QXRecordImpl& other);
  QXRecordImpl& operator=(const QXRecordImpl&) = delete;
  ~QXRecordImpl();

  // ---- Fields ----

  /// The entry that `field` asks for, by name or, with the meta-match flag, by
  /// metadata, whatever its type; null if there is none.
  NamedField* Resolve(const QXFieldBase& field);

  /// The same, null also if its type is another one.
  NamedField* Find(const QXFieldBase& field);

  /// Whether `field` asks for an entry of this type: for its full name or a tail
  /// of that.
  static bool TypeMatches(const FieldEntry& entry, const QXFieldBase& field);
  static bool IsMetaMatch(const FieldEntry& entry, const QXFieldBase& field);

  /// Stores what `field` says, in the entry it asks for or a new one. An entry
  /// of another type loses all that it had. Null when no index is left.
  NamedField* SetField(const QXFieldBase& field, bool isNull);

  void Erase(const NamedField& place);
  void Clear();

  /// Whether it says no more than none.
  bool IsVoid() const { return fields.empty() && unknown.empty() && (!meta || meta->IsEmpty()); }

  /// The index for a new field, 0 when there is none.
  std::uint32_t NextIndex();

  static QXFieldBase MakeField(const NamedField& place);
  std::vector<NamedField*> ByIndex();

  // ---- Values ----

  const unsigned char* Bytes(const FieldEntry& entry) const {
    return values.data() + entry.value.offset;
  }

  /// Where a value goes that is to be encoded: the end of the block.
  QXBytes& StartValue();

  /// Makes what stands in the block from `start` on the value of `entry`.
  void TakeValue(FieldEntry& entry, std::size_t start);
  void DropValue(FieldEntry& entry);

  /// Turns the object in the cache into bytes, if it was changed. False for
  /// records that are nested too deep to have any.
  bool UnloadValue(FieldEntry& entry);
  bool UnloadValues();

  /// Empties all caches, of values and of children, whatever is in them.
  void DropCaches();

  // ---- Children ----

  /// Decodes the children of a field, unless they are.
  static void LoadChildren(FieldEntry& entry);

  /// Turns decoded children into bytes, those without fields left out. False
  /// for children that are nested too deep to have any.
  static bool UnloadChildren(FieldEntry& entry);
  bool UnloadChildren();

  // ---- The byte format ----

  /// Replaces a record by what the payload of its section says. False for
  /// damage, with what was read before it.
  static bool Read(QXRecord& record, Cursor payload);

  /// Appends the record's section; all caches are unloaded.
  void Write(QXBytes& out);

  QXRecordMeta& Meta() {
    if (!meta) meta = std::make_unique<QXRecordMeta>();
    return *meta;
  }

  FieldMap fields{&pool_};
  QXBytes values;
  QXBytes unknown;                     // sections of kinds that are not known here, as they came
  std::unique_ptr<QXRecordMeta> meta;  // few records have any

private:
  bool Read(Cursor payload);
  void Compact();
  void RemoveElsewhere(unsigned option, const NamedField& place);

  std::size_t dead_ = 0;         // bytes of `values` that no field refers to
  std::uint32_t lastIndex_ = 0;  // the highest in use, unless it was freed
  bool lastIndexKnown_ = true;
};

}  // namespace QXDataFlow
