// The record: a self-describing bag of typed values, the unit of data-flow
// pipelines.
#pragma once

#include <map>
#include <memory>
#include <optional>
#include <string>
#include <type_traits>
#include <vector>

#include <qxsystem/core/export.h>
#include <qxsystem/records/field.h>
#include <qxsystem/records/types.h>

namespace QXDataFlow {

class QXRecordImpl;

/// Begins the names of the fields that the library adds to records on its own.
constexpr char QX_PREFIX[] = "__qx__";

/// What `QXRecord::CheckField` answers.
namespace QXFieldStatus {
constexpr int HasValue = 0;
constexpr int NoField = 1;      ///< no field of that name
constexpr int NoValue = 2;      ///< the field is there, without a value
constexpr int Null = 3;         ///< its value is null, or its cache entry holds no object
constexpr int OtherType = 4;    ///< a field of that name has another type
constexpr int MetaDiffers = 5;  ///< the field lacks metadata that was asked for
}  // namespace QXFieldStatus

/// Maps fields to values, with metadata, null values, nested records, and child
/// records per field.
///
/// Values are kept as their bytes, so a record passes on what the program knows
/// nothing of: fields of foreign types, and sections of later versions of the
/// format. Objects that are costly to decode are kept beside the bytes in a
/// cache, and turned into bytes when these are asked for.
///
/// **Finding a field.** The name decides. If the field asked for has the
/// meta-match flag, the first field, in order of names, that has its type and
/// all its metadata is taken in its place, if there is one. The type asked for
/// must be the stored one or a tail of it: "Int" finds "ns:Int", and a field
/// without type finds any. A name that is there with another type counts as
/// absent. Changes store the field that they are given: type, metadata and
/// nullable flag are its from then on, and options that only one field of a
/// record may have leave the others. With the meta-match flag the metadata is
/// merged into the field that was found.
///
/// **Index.** Every field has a number from 1 on, unique in the record. A new
/// field gets the highest number in use plus one.
///
/// **Readonly.** Nothing is set through a field that is readonly itself; that is
/// no property of the record's field.
///
/// **Copies** are deep. A copy has no source id and nothing in its caches; an
/// assigned record keeps the source id. Moving moves everything and leaves an
/// empty record.
///
/// A record belongs to one thread at a time, even for reading, which fills
/// caches.
class QXSYSTEM_API QXRecord {
public:
  QXRecord();
  QXRecord(const QXRecord& other);
  QXRecord(QXRecord&& other) noexcept;
  QXRecord& operator=(const QXRecord& other);
  QXRecord& operator=(QXRecord&& other) noexcept;
  virtual ~QXRecord();

  /// The version of the byte format that records are written in, "1.0".
  static std::string GetVersion();

  // ---- Fields ----

  /// Adds a field without a value, or replaces what is known of the present one
  /// and keeps its value, which is no longer null; one of another type is
  /// deleted first, with its value. True.
  bool AddField(const QXFieldBase& field);

  /// Deletes the field of that name, whatever its type, with its value and its
  /// children. False if there is none.
  bool DeleteField(const QXFieldBase& field);

  /// All fields in order of their indices. None has the meta-match flag, and
  /// those that were read from bytes aren't readonly.
  std::vector<QXFieldBase> GetFields() const;

  /// One of QXFieldStatus. Metadata is compared with `matchMeta` or the field's
  /// meta-match flag: that of `field` must be part of what is stored.
  int CheckField(const QXFieldBase& field, bool matchMeta = false) const;

  /// Whether the field is there with the right type, and the right metadata if
  /// `matchMeta`.
  bool HasField(const QXFieldBase& field, bool matchMeta = false) const;

  /// The metadata of a field, empty if there is none of that name.
  QXFieldMeta GetFieldMeta(const std::string& name) const;

  /// The index of the field, -1 if it is not there.
  long GetFieldIdx(const QXFieldBase& field) const;

  /// The index that the field has or would get; -1 if all numbers are used up.
  long GetFieldIdx(const QXFieldBase& field);

  /// Whether there are no fields.
  bool IsEmpty() const;

  /// Deletes everything: fields, metadata, unknown sections.
  void Clear();

  // ---- Values ----

  /// Whether the field has a value, null included.
  bool HasValue(const QXFieldBase& field) const;

  /// Whether the value is null. The form with a name asks whatever the type.
  bool IsNA(const QXFieldBase& field) const;
  bool IsNA(const std::string& name) const;

  /// Takes the value away, from the bytes and from the cache; false if there was
  /// none. A null without bytes stays null.
  bool ClearValue(const QXFieldBase& field);

  /// The value of a field. For no value, null or bytes that are no such value
  /// the default of T or an empty vector.
  ///
  /// A record is decoded once and kept; the result is a copy of it. Bytes with
  /// vectors of texts or blobs that claim more than there is throw
  /// std::length_error.
  template <class T>
  T GetValue(const QXField<T>& field) const;
  template <class T>
  std::vector<std::optional<T>> GetValue(const QXVectorField<T>& field) const;

  /// The same into `value`; the result tells whether there was one. Absent
  /// elements of a plain vector become zero values.
  template <class T>
  bool GetValue(T& value, const QXField<T>& field) const;
  template <class T>
  bool GetValue(std::vector<std::optional<T>>& value, const QXVectorField<T>& field) const;
  template <class T>
  bool GetValue(std::vector<T>& value, const QXVectorField<T>& field) const;

  /// The value converted, element by element, to a type that widens to T:
  /// `GetValue<float>(floatField)`. Absent elements become 0.
  template <class To, class T, class = std::enable_if_t<QXWidens<To, T>>>
  To GetValue(const QXField<T>& field) const;
  template <class To, class T, class = std::enable_if_t<QXWidens<To, T>>>
  std::vector<To> GetValue(const QXVectorField<T>& field) const;

  /// Sets the value of a field, which is added if it is not there. False for a
  /// readonly field.
  ///
  /// A record, or a vector of them, is copied into the cache, and turned into
  /// bytes when these are asked for.
  template <class T>
  bool SetValue(const QXField<T>& field, const std::common_type_t<T>& value);
  template <class T>
  bool SetValue(const QXVectorField<T>& field, const std::vector<std::optional<T>>& value);
  template <class T>
  bool SetValue(const QXVectorField<T>& field, const std::vector<T>& value);

  /// The same without a copy: what `value` has in its caches goes along.
  bool SetValue(const QXField<QXRecord>& field, QXRecord&& value);

  /// The same from elements that widen: `int` and `unsigned` to `long`, `float`
  /// to `double`.
  template <class T, class From, class = std::enable_if_t<QXWidens<From, T>>>
  bool SetValue(const QXVectorField<T>& field, const std::vector<From>& value);

  /// The bytes of a value; none for no value and for null.
  QXBytes GetBytes(const QXFieldBase& field) const;
  QXBytes GetBytes(const std::string& name) const;

  /// Appends them to `bytes`; false for no value and for null.
  bool GetBytes(QXBytes& bytes, const QXFieldBase& field) const;

  /// Sets the value of a field by its bytes; absent ones set it to null, and
  /// whether the field is nullable is not asked. A field of the same name and
  /// another type is replaced. False for a readonly field.
  bool SetBytes(const QXFieldBase& field, const QXBytes& bytes);
  bool SetBytes(const QXFieldBase& field, const std::optional<QXBytes>& bytes);

  // ---- Cache of decoded values ----

  /// The object in the cache for the field, null if there is none. With
  /// `onlyDirty` one that agrees with the bytes counts as absent.
  std::shared_ptr<void> CheckCache(const QXFieldBase& field, bool onlyDirty = false) const;

  /// Keeps the object that was decoded from the field's bytes. A null one, or
  /// one for an unknown field, does nothing.
  void CacheOnRead(const QXFieldBase& field, std::shared_ptr<void> object) const;

  /// Sets the value of a field to an object, which the record shares until it
  /// turns it into bytes. False for a readonly field.
  ///
  /// `object` is of the field type's value type. Its handler's `PtrToBytes` gives
  /// the bytes, which only user types and Int, String, Blob, Record and RecordVec
  /// have: an object of another built-in type is lost for no bytes, that of a
  /// user type without handler for those that were there before.
  bool AddToCache(const QXFieldBase& field, std::shared_ptr<void> object);

  /// Tells that the object in the cache was changed. With `addField` the field
  /// is stored anew, too.
  void MarkCacheDirty(const QXFieldBase& field, bool addField = false);

  /// Forgets the object of the field with this index, changed or not.
  void ClearCacheEntry(int index);

  /// Turns what is in the caches into bytes and empties them. Pointers to
  /// children are on their own from then on. Objects that are nested too deep to
  /// have bytes are lost, here and to copies, with a warning.
  void Flush();

  // ---- Metadata of the record ----

  const QXRecordMeta& GetRecordMeta() const;
  void SetRecordMeta(const QXRecordMeta& meta);

  /// The id of where the record came from, "" for none: the attribute SourceID
  /// of its metadata.
  std::string GetSourceID() const;
  void SetSourceID(const std::string& id);

  // ---- Children ----
  //
  // Each field may have child records, by key; an integer key is its decimal
  // text. Children that are decoded stay so until `Flush`. Whenever the bytes are
  // asked for, they are encoded, save those without fields, and without their
  // source ids. Children that are set keep source ids as long as they are not
  // decoded.

  bool HasChildRecords(const QXFieldBase& field) const;
  bool HasChildRecord(const QXFieldBase& field, const std::string& key) const;
  bool HasChildRecord(const QXFieldBase& field, int key) const;

  /// The child with this key, made if it is not there; changes to it are changes
  /// of this record, until `Flush`, `Clear`, an assignment or another change of
  /// all children lets go of it. Null for a field that is not there.
  std::shared_ptr<QXRecord> GetChildRecord(const QXFieldBase& field, const std::string& key);
  std::shared_ptr<QXRecord> GetChildRecord(const QXFieldBase& field, int key);

  /// All children by key, as they are stored.
  std::map<std::string, QXRecord> GetChildRecords(const QXFieldBase& field) const;

  /// Sets the child with this key, all children. False for a field that is not
  /// there.
  bool AddChildRecord(const QXFieldBase& field, const std::string& key, const QXRecord& record);
  bool SetChildren(const QXFieldBase& field, const std::map<std::string, QXRecord>& children);

  /// False if there is no such child, no such field.
  bool DeleteChildRecord(const QXFieldBase& field, const std::string& key);
  bool DeleteChildRecords(const QXFieldBase& field);

  /// All children of a field as they are stored: the bytes of a RecordVec, in
  /// which each child has its key in the String field "__qx__key". Setting them
  /// lets go of the decoded children; empty bytes are no children. False for a
  /// field that is not there.
  QXBytes GetChildBytes(const QXFieldBase& field) const;
  bool SetChildBytes(const QXFieldBase& field, const QXBytes& bytes);

  // ---- Bytes of the whole record ----

  /// The record in the byte format; the second form appends. Records whose
  /// cached objects lie more than QXMaxNesting deep in one another give no
  /// bytes, with a warning.
  QXBytes ToBytes() const;
  void ToBytes(QXBytes& bytes) const;

  /// Replaces the record by what the bytes say. False for damage, with what was
  /// read before it. Nested records and children are looked at when they are
  /// asked for.
  bool FromBytes(const QXBytes& bytes) { return FromBytes(bytes.data(), bytes.size()); }
  bool FromBytes(const unsigned char* bytes, std::size_t size);

protected:
  /// Called before the decoded children of a field are turned into bytes. Does
  /// nothing; for derived classes that keep children of their own.
  virtual void FixChildCache(QXFieldBase field) const;

private:
  friend class QXRecordImpl;

  QXRecordImpl& Impl() const;
  bool CopyFrom(const QXRecord& other);
  void DropSourceID();
  bool UnloadChildCache() const;
  bool Unload() const;

  mutable std::unique_ptr<QXRecordImpl> impl_;  // null while the record has nothing in it
};

}  // namespace QXDataFlow
