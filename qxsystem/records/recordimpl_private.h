// What a record holds.
#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <qxsystem/platform/ostream.h>
#include <qxsystem/records/datarecord.h>
#include <qxsystem/records/encoding_private.h>
#include <qxsystem/records/fieldtable_private.h>

namespace QXDataFlow {

/// The version of the byte format.
constexpr std::string_view RecordVersion = "1.0";

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

/// Reading a record copies all of its values at once, into memory where the fields
/// refer to them; a value that is set is encoded where it stays.
class QXRecordImpl {
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
  FieldEntry* Resolve(const QXFieldBase& field);

  /// The same, null also if its type is another one.
  FieldEntry* Find(const QXFieldBase& field);

  /// Whether `field` asks for an entry of this type: for its full name or a tail
  /// of that.
  static bool TypeMatches(const FieldEntry& entry, const QXFieldBase& field);
  static bool IsMetaMatch(const FieldEntry& entry, const QXFieldBase& field);

  /// Stores what `field` says, in the entry it asks for or a new one. An entry
  /// of another type loses all that it had, with `freeIndex` before the new index
  /// is chosen. Null when no index is left.
  FieldEntry* SetFieldEntry(const QXFieldBase& field, bool isNull, bool freeIndex = false);

  void Erase(const FieldEntry& entry);
  void Clear();

  /// Whether it says no more than none.
  bool IsVoid() const { return fields.IsEmpty() && unknown.empty() && !HasMeta(); }
  bool HasMeta() const { return meta && !meta->IsEmpty(); }

  /// The index for a new field, 0 when there is none.
  std::uint32_t NextIndex();

  static QXFieldBase MakeField(const FieldEntry& entry);
  std::vector<FieldEntry*> ByIndex() const;

  // ---- Values ----

  void SetCache(FieldEntry& entry, std::shared_ptr<void> object, bool isClean);

  /// Turns the object in the cache into bytes, if it was changed. False for
  /// records that are nested too deep to have any.
  static bool UnloadCache(FieldEntry& entry);
  bool UnloadCache();

  /// Empties all caches, of values and of children, whatever is in them.
  void DropCaches();

  // ---- Children ----

  /// Decodes the children of a field, unless they are.
  ChildCache& LoadChildCache(FieldEntry& entry);

  /// Turns decoded children into bytes, those without fields left out. False
  /// for children that are nested too deep to have any.
  static bool UnloadChildCache(FieldEntry& entry);
  bool UnloadChildCache();

  // ---- The byte format ----

  /// Replaces a record by what the payload of its section says. False for
  /// damage, with what was read before it.
  static bool Read(QXRecord& record, Cursor payload);

  /// Append a record's section, or make it a value; nothing, and false, if objects in its caches
  /// are nested too deep. False, too, when the stream refuses bytes.
  static void Write(const QXRecord& record, QXBytes& bytes);
  static bool Write(const QXRecord& record, ValueBytes& value);
  static bool Write(const QXRecord& record, QXPlatform::qxostream& stream);

  QXRecordMeta& Meta() {
    if (!meta) meta = std::make_unique<QXRecordMeta>();
    return *meta;
  }

  FieldTable fields;
  QXBytes unknown;                     // sections of kinds that are not known here, as they came
  std::unique_ptr<QXRecordMeta> meta;  // few records have any

private:
  void RemoveElsewhere(unsigned option, const FieldEntry& entry);

  std::uint32_t lastIndex_ = 0;  // the highest in use, unless it was freed
  bool lastIndexKnown_ = true;
  bool mayHaveCaches_ = false;  // of values or children, in some field

  // Of options that only one field may have, under their masks, the name of the only
  // one that may have it. An option that is not here may stand anywhere.
  std::vector<std::pair<unsigned, std::string>> holders_;
};

}  // namespace QXDataFlow
