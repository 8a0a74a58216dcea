#include <qxsystem/records/datarecord.h>

#include <typeinfo>

#include <qxsystem/core/nesting.h>
#include <qxsystem/records/codec_private.h>
#include <qxsystem/records/recordimpl_private.h>

namespace QXDataFlow {

// ---- Life ----

QXRecord::QXRecord() = default;
QXRecord::QXRecord(QXRecord&& other) noexcept = default;
QXRecord::~QXRecord() = default;

QXRecord::QXRecord(const QXRecord& other) {
  CopyFrom(other);
  DropSourceID();
}

QXRecord& QXRecord::operator=(const QXRecord& other) {
  if (&other != this) CopyFrom(other);
  return *this;
}

QXRecord& QXRecord::operator=(QXRecord&& other) noexcept {
  if (&other != this) impl_ = std::move(other.impl_);
  return *this;
}

QXRecordImpl& QXRecord::Impl() const {
  if (!impl_) impl_ = std::make_unique<QXRecordImpl>();
  return *impl_;
}

// Leaves this record with nothing in its caches. False if cached objects are
// nested too deep to be turned into bytes; the copy then lacks them.
bool QXRecord::CopyFrom(const QXRecord& other) {
  const QXSystem::QXNestingScope level;
  bool isWhole = level && other.UnloadChildCache();
  std::unique_ptr<QXRecordImpl> copy;
  if (other.impl_) {
    copy = std::make_unique<QXRecordImpl>(*other.impl_);
    isWhole = level && copy->UnloadCache() && isWhole;
    copy->DropCaches();
  }
  impl_ = std::move(copy);
  return isWhole;
}

void QXRecord::DropSourceID() {
  if (impl_ && impl_->meta) impl_->meta->RemoveAttribute(QXRecordMeta::SourceID);
}

std::string QXRecord::GetVersion() {
  return std::string(RecordVersion);
}

// NOLINTNEXTLINE(performance-unnecessary-value-param): overriders may change theirs
void QXRecord::FixChildCache(QXFieldBase) const {}

bool QXRecord::UnloadChildCache() const {
  if (!impl_) return true;
  // The fields are made only for those who may look at them.
  if (typeid(*this) != typeid(QXRecord))
    for (const QXFieldBase& field : GetFields()) FixChildCache(field);
  return impl_->UnloadChildCache();
}

// ---- Fields ----

bool QXRecord::AddField(const QXFieldBase& field) {
  return Impl().SetFieldEntry(field, /*isNull=*/false, /*freeIndex=*/true) != nullptr;
}

bool QXRecord::DeleteField(const QXFieldBase& field) {
  const FieldEntry* entry = Impl().Resolve(field);
  if (entry == nullptr || entry->name.empty()) return false;
  impl_->Erase(*entry);
  return true;
}

std::vector<QXFieldBase> QXRecord::GetFields() const {
  std::vector<QXFieldBase> fields;
  for (const FieldEntry* entry : Impl().ByIndex())
    fields.push_back(QXRecordImpl::MakeField(*entry));
  return fields;
}

int QXRecord::CheckField(const QXFieldBase& field, bool matchMeta) const {
  const FieldEntry* entry = Impl().Resolve(field);
  if (entry == nullptr) return QXFieldStatus::NoField;
  if (!QXRecordImpl::TypeMatches(*entry, field)) return QXFieldStatus::OtherType;
  if ((matchMeta || field.IsMetaMatch()) && !QXRecordImpl::IsMetaMatch(*entry, field))
    return QXFieldStatus::MetaDiffers;
  if (entry->isNull) return QXFieldStatus::Null;
  if (entry->hasBytes) return QXFieldStatus::HasValue;
  if (!entry->isCached) return QXFieldStatus::NoValue;
  return entry->object ? QXFieldStatus::HasValue : QXFieldStatus::Null;
}

bool QXRecord::HasField(const QXFieldBase& field, bool matchMeta) const {
  switch (CheckField(field, matchMeta)) {
    case QXFieldStatus::NoField:
    case QXFieldStatus::OtherType:
      return false;
    case QXFieldStatus::MetaDiffers:
      return !matchMeta;
    default:
      return true;
  }
}

QXFieldMeta QXRecord::GetFieldMeta(const std::string& name) const {
  const FieldEntry* entry = Impl().Resolve(QXFieldBase(name));
  return entry != nullptr && entry->extras ? entry->extras->meta : QXFieldMeta();
}

long QXRecord::GetFieldIdx(const QXFieldBase& field) const {
  const FieldEntry* entry = Impl().Find(field);
  return entry != nullptr ? long{entry->index} : -1;
}

long QXRecord::GetFieldIdx(const QXFieldBase& field) {
  const long index = std::as_const(*this).GetFieldIdx(field);
  if (index > 0) return index;
  const std::uint32_t next = impl_->NextIndex();
  return next != 0 ? long{next} : -1;
}

bool QXRecord::IsEmpty() const {
  return !impl_ || impl_->fields.IsEmpty();
}

void QXRecord::Clear() {
  if (impl_) impl_->Clear();
}

// ---- Values ----

namespace {

// The entry to read a value from; null where there is none, or it is null.
FieldEntry* FindValue(QXRecordImpl& impl, const QXFieldBase& field) {
  FieldEntry* entry = impl.Find(field);
  return entry != nullptr && !entry->isNull ? entry : nullptr;
}

// The object in the cache, if it is one of this field's own type: the entry's
// may be another one, of which the field's is a tail.
template <class T>
const T* CachedObject(const FieldEntry& entry, const QXFieldBase& field) {
  const bool isOwn = entry.isCached && entry.type == field.GetTypeName();
  return isOwn ? static_cast<const T*>(entry.object.get()) : nullptr;
}

// Calls `decode` with the bytes of a value. False if there are none, or it does.
template <class Decode>
bool DecodeBytes(FieldEntry& entry, Decode decode) {
  return QXRecordImpl::UnloadCache(entry) && entry.hasBytes &&
         decode(entry.value.Data(), entry.value.Size());
}

// Sets a value to the `size` bytes that `store` stores.
template <class Store>
bool SetEncoded(QXRecordImpl& impl, const QXFieldBase& field, std::size_t size, Store store) {
  if (field.IsReadonly()) return false;
  FieldEntry* entry = impl.SetFieldEntry(field, /*isNull=*/false);
  if (entry == nullptr) return false;
  store(entry->value.Set(size));
  entry->hasBytes = true;
  entry->DropCache();
  return true;
}

template <class T, class E>
bool SetVector(QXRecordImpl& impl, const QXFieldBase& field, const std::vector<E>& value) {
  return SetEncoded(impl, field, VectorSize<T>(value),
                    [&](unsigned char* at) { StoreVector<T>(at, value); });
}

void TakeElements(std::vector<QXRecord>& to, const std::vector<std::optional<QXRecord>>& from) {
  for (const auto& element : from) to.push_back(element ? *element : QXRecord());
}
template <class T>
void TakeElements(std::vector<T>& to, const std::vector<std::optional<T>>& from) {
  for (const auto& element : from) to.push_back(element.value_or(T()));
}

template <class T, class E>
bool DecodeElements(std::vector<E>& values, const unsigned char* bytes, std::size_t size) {
  if constexpr (std::is_same_v<T, QXRecord>)
    return DecodeVector(values, bytes, size);
  else
    return DecodeVector<T>(values, bytes, size);
}

template <class T, class E>
bool GetVector(QXRecordImpl& impl, std::vector<E>& value, const QXFieldBase& field) {
  using Value = std::vector<std::optional<T>>;
  value.clear();
  FieldEntry* entry = FindValue(impl, field);
  if (entry == nullptr) return false;
  if (const auto* cached = CachedObject<Value>(*entry, field)) {
    if constexpr (std::is_same_v<E, T>)
      TakeElements(value, *cached);
    else
      value = *cached;
    return true;
  }
  const auto decode = [&](const unsigned char* bytes, std::size_t size) {
    return DecodeElements<T>(value, bytes, size);
  };
  if (DecodeBytes(*entry, decode)) return true;
  value.clear();
  return false;
}

}  // namespace

bool QXRecord::HasValue(const QXFieldBase& field) const {
  const FieldEntry* entry = Impl().Find(field);
  return entry != nullptr && (entry->hasBytes || entry->isCached || entry->isNull);
}

bool QXRecord::IsNA(const QXFieldBase& field) const {
  const FieldEntry* entry = Impl().Find(field);
  return entry != nullptr && entry->isNull;
}

bool QXRecord::IsNA(const std::string& name) const {
  return IsNA(QXFieldBase(name));
}

bool QXRecord::ClearValue(const QXFieldBase& field) {
  FieldEntry* entry = Impl().Find(field);
  if (entry == nullptr) return false;
  const bool hadValue = entry->isCached || entry->hasBytes;
  entry->DropCache();
  if (entry->hasBytes) entry->isNull = false;
  entry->DropValue();
  return hadValue;
}

template <class T>
bool QXRecord::GetValue(T& value, const QXField<T>& field) const {
  FieldEntry* entry = FindValue(Impl(), field);
  const auto decode = [&](const unsigned char* bytes, std::size_t size) {
    return DecodeValue(value, bytes, size);
  };
  if (entry != nullptr) {
    if (const T* cached = CachedObject<T>(*entry, field)) {
      value = T(*cached);
      return true;
    }
    if constexpr (std::is_same_v<T, QXRecord>) {
      const auto record = std::make_shared<QXRecord>();
      const auto decodeRecord = [&](const unsigned char* bytes, std::size_t size) {
        return DecodeValue(*record, bytes, size);
      };
      if (DecodeBytes(*entry, decodeRecord)) {
        impl_->SetCache(*entry, record, /*isClean=*/true);
        value = T(*record);
        return true;
      }
    } else {
      if (DecodeBytes(*entry, decode)) return true;
    }
  }
  value = T();
  return false;
}

template <class T>
T QXRecord::GetValue(const QXField<T>& field) const {
  T value{};
  GetValue(value, field);
  return value;
}

template <class T>
bool QXRecord::GetValue(std::vector<std::optional<T>>& value, const QXVectorField<T>& field) const {
  return GetVector<T>(Impl(), value, field);
}

template <class T>
bool QXRecord::GetValue(std::vector<T>& value, const QXVectorField<T>& field) const {
  return GetVector<T>(Impl(), value, field);
}

template <class T>
std::vector<std::optional<T>> QXRecord::GetValue(const QXVectorField<T>& field) const {
  std::vector<std::optional<T>> value;
  GetValue(value, field);
  return value;
}

template <class To, class T, class>
To QXRecord::GetValue(const QXField<T>& field) const {
  return static_cast<To>(GetValue(field));
}

template <class To, class T, class>
std::vector<To> QXRecord::GetValue(const QXVectorField<T>& field) const {
  std::vector<T> value;
  GetValue(value, field);
  std::vector<To> converted;
  converted.reserve(value.size());
  for (const T element : value) converted.push_back(static_cast<To>(element));
  return converted;
}

template <class T>
bool QXRecord::SetValue(const QXField<T>& field, const std::common_type_t<T>& value) {
  if constexpr (std::is_same_v<T, QXRecord>)
    return AddToCache(field, std::make_shared<QXRecord>(value));
  else if constexpr (std::is_same_v<T, QXRange>)
    return SetBytes(field, QXFieldType<T>::ToBytes(value));
  else
    return SetEncoded(Impl(), field, ValueSize(value),
                      [&](unsigned char* at) { StoreValue(at, value); });
}

bool QXRecord::SetValue(const QXField<QXRecord>& field, QXRecord&& value) {
  auto record = std::make_shared<QXRecord>(std::move(value));
  record->DropSourceID();
  return AddToCache(field, std::move(record));
}

template <class T>
bool QXRecord::SetValue(const QXVectorField<T>& field, const std::vector<std::optional<T>>& value) {
  if constexpr (std::is_same_v<T, QXRecord>)
    return AddToCache(field, QXVectorFieldType<T>::GetCopyForCache(value));
  else
    return SetVector<T>(Impl(), field, value);
}

template <class T>
bool QXRecord::SetValue(const QXVectorField<T>& field, const std::vector<T>& value) {
  if constexpr (std::is_same_v<T, QXRecord>)
    return SetValue(field, std::vector<std::optional<T>>(value.begin(), value.end()));
  else
    return SetVector<T>(Impl(), field, value);
}

template <class T, class From, class>
bool QXRecord::SetValue(const QXVectorField<T>& field, const std::vector<From>& value) {
  return SetVector<T>(Impl(), field, value);
}

QXBytes QXRecord::GetBytes(const QXFieldBase& field) const {
  QXBytes bytes;
  GetBytes(bytes, field);
  return bytes;
}

QXBytes QXRecord::GetBytes(const std::string& name) const {
  return GetBytes(QXFieldBase(name));
}

bool QXRecord::GetBytes(QXBytes& bytes, const QXFieldBase& field) const {
  FieldEntry* entry = FindValue(Impl(), field);
  return entry != nullptr && DecodeBytes(*entry, [&](const unsigned char* from, std::size_t size) {
           Append(bytes, from, size);
           return true;
         });
}

bool QXRecord::SetBytes(const QXFieldBase& field, const QXBytes& bytes) {
  return SetEncoded(Impl(), field, bytes.size(), [&](unsigned char* at) { StoreValue(at, bytes); });
}

bool QXRecord::SetBytes(const QXFieldBase& field, const std::optional<QXBytes>& bytes) {
  if (bytes) return SetBytes(field, *bytes);
  if (field.IsReadonly()) return false;
  FieldEntry* entry = Impl().SetFieldEntry(field, /*isNull=*/true);
  if (entry == nullptr) return false;
  entry->DropCache();
  return true;
}

// ---- Cache of decoded values ----

std::shared_ptr<void> QXRecord::CheckCache(const QXFieldBase& field, bool onlyDirty) const {
  const FieldEntry* entry = Impl().Find(field);
  if (entry == nullptr || !entry->isCached) return nullptr;
  return onlyDirty && entry->isClean ? nullptr : entry->object;
}

void QXRecord::CacheOnRead(const QXFieldBase& field, std::shared_ptr<void> object) const {
  FieldEntry* entry = object ? Impl().Find(field) : nullptr;
  if (entry != nullptr) impl_->SetCache(*entry, std::move(object), /*isClean=*/true);
}

bool QXRecord::AddToCache(const QXFieldBase& field, std::shared_ptr<void> object) {
  if (field.IsReadonly()) return false;
  FieldEntry* entry = Impl().SetFieldEntry(field, /*isNull=*/false, /*freeIndex=*/true);
  if (entry != nullptr) impl_->SetCache(*entry, std::move(object), /*isClean=*/false);
  return entry != nullptr;
}

void QXRecord::MarkCacheDirty(const QXFieldBase& field, bool addField) {
  FieldEntry* entry = Impl().Find(field);
  if (entry != nullptr && entry->isCached) entry->isClean = false;
  if (addField) impl_->SetFieldEntry(field, /*isNull=*/false);
}

void QXRecord::ClearCacheEntry(int index) {
  for (FieldEntry& entry : Impl().fields)
    if (long{entry.index} == index) entry.DropCache();
}

void QXRecord::Flush() {
  if (!impl_) return;
  UnloadChildCache();
  impl_->UnloadCache();
  impl_->DropCaches();
}

// ---- Metadata of the record ----

const QXRecordMeta& QXRecord::GetRecordMeta() const {
  return Impl().Meta();
}

void QXRecord::SetRecordMeta(const QXRecordMeta& meta) {
  Impl().Meta() = meta;
}

std::string QXRecord::GetSourceID() const {
  return impl_ && impl_->meta ? impl_->meta->GetStrAttribute(QXRecordMeta::SourceID) : "";
}

void QXRecord::SetSourceID(const std::string& id) {
  Impl().Meta().SetAttribute(QXRecordMeta::SourceID, id);
}

// ---- Children ----

namespace {

// The decoded children of a field; null for a field that is not there.
ChildCache* LoadedChildren(QXRecordImpl& impl, const QXFieldBase& field) {
  FieldEntry* entry = impl.Find(field);
  return entry != nullptr ? &impl.LoadChildCache(*entry) : nullptr;
}

}  // namespace

bool QXRecord::HasChildRecords(const QXFieldBase& field) const {
  const FieldEntry* entry = Impl().Find(field);
  if (entry == nullptr || !entry->extras) return false;
  const FieldExtras& extras = *entry->extras;
  if (extras.childCache)
    for (const auto& [key, child] : *extras.childCache)
      if (!child->IsEmpty()) return true;
  return !extras.children.empty();
}

bool QXRecord::HasChildRecord(const QXFieldBase& field, const std::string& key) const {
  const ChildCache* children = LoadedChildren(Impl(), field);
  return children != nullptr && children->count(key) != 0;
}

bool QXRecord::HasChildRecord(const QXFieldBase& field, int key) const {
  return HasChildRecord(field, std::to_string(key));
}

std::shared_ptr<QXRecord> QXRecord::GetChildRecord(const QXFieldBase& field,
                                                   const std::string& key) {
  ChildCache* children = LoadedChildren(Impl(), field);
  if (children == nullptr) return nullptr;
  std::shared_ptr<QXRecord>& child = (*children)[key];
  if (!child) child = std::make_shared<QXRecord>();
  return child;
}

std::shared_ptr<QXRecord> QXRecord::GetChildRecord(const QXFieldBase& field, int key) {
  return GetChildRecord(field, std::to_string(key));
}

std::map<std::string, QXRecord> QXRecord::GetChildRecords(const QXFieldBase& field) const {
  if (!HasChildRecords(field)) return {};
  return ReadChildren(GetChildBytes(field));
}

// Where the children are not stored yet or are decoded anyway, one more need not
// encode them all; but an empty record would not stay among the decoded ones, nor
// its source id with a record.
bool QXRecord::AddChildRecord(const QXFieldBase& field, const std::string& key,
                              const QXRecord& record) {
  FieldEntry* entry = Impl().Find(field);
  if (entry == nullptr) return false;
  const bool isDecoded = !entry->HasChildren() || entry->extras->childCache;
  if (isDecoded && !record.IsEmpty() && record.GetSourceID().empty()) {
    impl_->LoadChildCache(*entry)[key] = std::make_shared<QXRecord>(record);
    return true;
  }
  auto all = GetChildRecords(field);
  all[key] = record;
  return SetChildren(field, all);
}

bool QXRecord::SetChildren(const QXFieldBase& field,
                           const std::map<std::string, QXRecord>& children) {
  ChildrenBytes bytes;
  for (const auto& [key, child] : children) {
    QXRecord copy;
    if (!copy.CopyFrom(child) || !bytes.Add(key, copy)) return false;
  }
  return SetChildBytes(field, bytes.Get());
}

bool QXRecord::DeleteChildRecord(const QXFieldBase& field, const std::string& key) {
  ChildCache* children = LoadedChildren(Impl(), field);
  if (children == nullptr || children->erase(key) == 0) return false;
  // Bytes without one of the decoded children would bring it back.
  if (children->empty()) impl_->Find(field)->extras->children.clear();
  return true;
}

bool QXRecord::DeleteChildRecords(const QXFieldBase& field) {
  return SetChildBytes(field, {});
}

QXBytes QXRecord::GetChildBytes(const QXFieldBase& field) const {
  FixChildCache(field);
  FieldEntry* entry = Impl().Find(field);
  if (entry == nullptr || !QXRecordImpl::UnloadChildCache(*entry)) return {};
  return entry->extras ? entry->extras->children : QXBytes();
}

bool QXRecord::SetChildBytes(const QXFieldBase& field, const QXBytes& bytes) {
  FieldEntry* entry = Impl().Find(field);
  if (entry == nullptr) return false;
  if (!bytes.empty() || entry->extras) {
    entry->Extras().children = bytes;
    entry->extras->childCache.reset();
  }
  return true;
}

// ---- Bytes of the whole record ----

QXBytes QXRecord::ToBytes() const {
  QXBytes bytes;
  ToBytes(bytes);
  return bytes;
}

void QXRecord::ToBytes(QXBytes& bytes) const {
  QXRecordImpl::Write(*this, bytes);
}

// Leaves nothing in the caches that the bytes lack. False if objects are nested
// too deep.
bool QXRecord::Unload() const {
  if (!impl_) return true;
  const QXSystem::QXNestingScope level;
  return level && UnloadChildCache() && impl_->UnloadCache();
}

bool QXRecord::FromBytes(const unsigned char* bytes, std::size_t size) {
  Cursor from(bytes, bytes + size), payload = from;
  std::string_view tag;
  if (from.Section(tag, payload)) return QXRecordImpl::Read(*this, payload);
  Clear();
  return false;
}

// ---- The closed lists of types ----

#define QX_INSTANTIATE_SCALAR(T)                                              \
  template QXSYSTEM_API T QXRecord::GetValue(const QXField<T>&) const;        \
  template QXSYSTEM_API bool QXRecord::GetValue(T&, const QXField<T>&) const; \
  template QXSYSTEM_API bool QXRecord::SetValue(const QXField<T>&, const std::common_type_t<T>&)
QX_INSTANTIATE_SCALAR(long);
QX_INSTANTIATE_SCALAR(std::string);
QX_INSTANTIATE_SCALAR(double);
QX_INSTANTIATE_SCALAR(QXBytes);
QX_INSTANTIATE_SCALAR(bool);
QX_INSTANTIATE_SCALAR(QXRecord);
QX_INSTANTIATE_SCALAR(QXRange);
QX_INSTANTIATE_SCALAR(QXJSONObject);
QX_INSTANTIATE_SCALAR(QXLinkObject);

#define QX_INSTANTIATE_VECTOR(T)                                                                  \
  template QXSYSTEM_API std::vector<std::optional<T>> QXRecord::GetValue(const QXVectorField<T>&) \
      const;                                                                                      \
  template QXSYSTEM_API bool QXRecord::GetValue(std::vector<std::optional<T>>&,                   \
                                                const QXVectorField<T>&) const;                   \
  template QXSYSTEM_API bool QXRecord::GetValue(std::vector<T>&, const QXVectorField<T>&) const;  \
  template QXSYSTEM_API bool QXRecord::SetValue(const QXVectorField<T>&,                          \
                                                const std::vector<std::optional<T>>&);            \
  template QXSYSTEM_API bool QXRecord::SetValue(const QXVectorField<T>&, const std::vector<T>&)
QX_INSTANTIATE_VECTOR(long);
QX_INSTANTIATE_VECTOR(std::string);
QX_INSTANTIATE_VECTOR(double);
QX_INSTANTIATE_VECTOR(QXBytes);
QX_INSTANTIATE_VECTOR(bool);
QX_INSTANTIATE_VECTOR(QXRecord);

#define QX_INSTANTIATE_CONVERSION(To, T)                                                       \
  template QXSYSTEM_API To QXRecord::GetValue<To>(const QXField<T>&) const;                    \
  template QXSYSTEM_API std::vector<To> QXRecord::GetValue<To>(const QXVectorField<T>&) const; \
  template QXSYSTEM_API bool QXRecord::SetValue(const QXVectorField<T>&, const std::vector<To>&)
QX_INSTANTIATE_CONVERSION(int, long);
QX_INSTANTIATE_CONVERSION(unsigned, long);
QX_INSTANTIATE_CONVERSION(float, double);

}  // namespace QXDataFlow
