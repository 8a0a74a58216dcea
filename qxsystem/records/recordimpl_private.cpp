#include <qxsystem/records/recordimpl_private.h>

#include <algorithm>
#include <limits>
#include <new>
#include <tuple>

#include <qxsystem/records/codec_private.h>
#include <qxsystem/records/metadata.h>
#include <qxsystem/records/types_private.h>

namespace QXDataFlow {

namespace {

const QXFieldTypeHandler* FindHandler(std::string_view type) {
  const QXFieldTypeHandler* found = nullptr;
  if (VisitBuiltIn(type, [&](const auto& handler) { found = &handler; })) return found;
  return QXFieldTypeHandlerRegistry::GetInstance().GetHandler(std::string(type));
}

// Takes `tail` off the end of `text`; false if it is not there.
bool TakeTail(std::string_view& text, std::string_view tail) {
  if (tail.size() > text.size() || text.substr(text.size() - tail.size()) != tail) return false;
  text.remove_suffix(tail.size());
  return true;
}

// What records in the course of destruction still have to let go of.
thread_local std::vector<std::shared_ptr<void>>* dying = nullptr;

void MoveObjects(FieldTable& fields, std::vector<std::shared_ptr<void>>& to) {
  for (FieldEntry& entry : fields) {
    if (entry.object) to.push_back(std::move(entry.object));
    if (!entry.extras || !entry.extras->childCache) continue;
    for (auto& [key, child] : *entry.extras->childCache) to.push_back(std::move(child));
  }
}

}  // namespace

// ---- The record ----

QXRecordImpl::QXRecordImpl(const QXRecordImpl& other)
    : unknown(other.unknown),
      meta(other.meta ? std::make_unique<QXRecordMeta>(*other.meta) : nullptr),
      lastIndex_(other.lastIndex_),
      lastIndexKnown_(other.lastIndexKnown_) {
  fields.Reserve(other.fields.Size());
  for (const FieldEntry& from : other.fields) {
    FieldEntry& entry = fields.Add(from.name);
    const std::string_view type = from.type;
    const std::uint32_t space = from.typeSpace;
    fields.SetType(entry, type.substr(0, space), type.substr(space != 0 ? space + 1 : 0));
    entry.index = from.index;
    entry.nullable = from.nullable;
    entry.readonly = from.readonly;
    entry.isNull = from.isNull;
    entry.hasBytes = from.hasBytes;
    StoreBytes(entry.value.Set(from.value.Size()), from.value.Data(), from.value.Size());
    if (from.isCached && !from.isClean) SetCache(entry, from.object, /*isClean=*/false);
    if (!from.extras) continue;
    entry.Extras().meta = from.extras->meta;
    entry.extras->children = from.extras->children;
  }
}

// Records in the caches of records in caches are let go of one after the other,
// not one inside the other, which could take more stack than there is.
QXRecordImpl::~QXRecordImpl() {
  if (!mayHaveCaches_) return;
  std::vector<std::shared_ptr<void>> objects;
  if (dying != nullptr) {
    MoveObjects(fields, *dying);
    return;
  }
  MoveObjects(fields, objects);
  if (objects.empty()) return;
  dying = &objects;
  while (!objects.empty()) {
    const std::shared_ptr<void> last = std::move(objects.back());
    objects.pop_back();
  }
  dying = nullptr;
}

// ---- Fields ----

bool QXRecordImpl::TypeMatches(const FieldEntry& entry, const QXFieldBase& field) {
  if (IsSameText(entry.type, field.type_) && field.typeNamespace_.empty()) return true;
  std::string_view stored = entry.type;
  return TakeTail(stored, field.type_) &&
         (field.typeNamespace_.empty() ||
          (TakeTail(stored, ":") && TakeTail(stored, field.typeNamespace_)));
}

bool QXRecordImpl::IsMetaMatch(const FieldEntry& entry, const QXFieldBase& field) {
  return field.meta_.IsSubsetOf(entry.extras ? entry.extras->meta : QXFieldMeta());
}

FieldEntry* QXRecordImpl::Resolve(const QXFieldBase& field) {
  if (field.metaMatch_) {
    const std::string type = field.GetTypeName();
    for (FieldEntry& entry : fields)
      if (entry.type == type && IsMetaMatch(entry, field)) return &entry;
  }
  return fields.Find(field.name_);
}

FieldEntry* QXRecordImpl::Find(const QXFieldBase& field) {
  FieldEntry* entry = Resolve(field);
  return entry != nullptr && TypeMatches(*entry, field) ? entry : nullptr;
}

FieldEntry* QXRecordImpl::SetFieldEntry(const QXFieldBase& field, bool isNull, bool freeIndex) {
  FieldEntry* found = field.metaMatch_ ? Resolve(field) : nullptr;
  FieldEntry& entry = found != nullptr ? *found : fields.Add(field.name_);
  const bool isKnown = entry.index != 0 && TypeMatches(entry, field);
  if (isKnown && field.metaMatch_) {
    entry.Extras().meta.Merge(field.meta_);
    holders_.clear();
    entry.isNull = isNull;
    return &entry;
  }
  if (!isKnown) {
    if (freeIndex && entry.index != 0) {
      lastIndexKnown_ = lastIndexKnown_ && entry.index != lastIndex_;
      entry.index = 0;
    }
    const std::uint32_t index = NextIndex();
    if (index == 0) {
      if (entry.index == 0) fields.Erase(entry);
      return nullptr;
    }
    entry.Reset();
    entry.index = lastIndex_ = index;
  }
  for (const unsigned option : field.meta_.GetOptions()) RemoveElsewhere(option, entry);
  if (!field.typeNamespace_.empty() || !IsSameText(entry.type, field.type_)) {
    // An object is of the type that the entry had when it came into the cache.
    if (entry.type != field.GetTypeName()) {
      UnloadCache(entry);
      entry.DropCache();
    }
    fields.SetType(entry, field.typeNamespace_, field.type_);
  }
  entry.nullable = field.nullable_;
  entry.readonly = field.readonly_;
  entry.isNull = isNull;
  if (entry.HasMeta() || !field.meta_.IsEmpty()) entry.Extras().meta = field.meta_;
  return &entry;
}

// An option that only one field may have leaves the others.
void QXRecordImpl::RemoveElsewhere(unsigned option, const FieldEntry& entry) {
  const unsigned mask = QXMetadata::QXGetMetaPerRecordMask(option);
  if (mask == 0) return;
  const auto leave = [&](FieldEntry* other) {
    if (other == nullptr || other == &entry || !other->HasMeta()) return;
    QXFieldMeta& held = other->extras->meta;
    const std::vector<unsigned> options = held.GetOptions();
    for (const unsigned present : options)
      if ((present & mask) == (option & mask)) held.RemoveOption(present);
  };
  const auto known = std::find_if(holders_.begin(), holders_.end(), [&](const auto& holder) {
    return holder.first == (option & mask);
  });
  if (known != holders_.end()) {
    leave(fields.Find(known->second));
    known->second = entry.name;
    return;
  }
  for (FieldEntry& other : fields) leave(&other);
  holders_.emplace_back(option & mask, entry.name);
}

void QXRecordImpl::Erase(const FieldEntry& entry) {
  if (entry.index == lastIndex_) lastIndexKnown_ = false;
  fields.Erase(entry);
}

void QXRecordImpl::Clear() {
  fields.Clear();
  unknown.clear();
  meta.reset();
  mayHaveCaches_ = false;
  holders_.clear();
  lastIndex_ = 0;
  lastIndexKnown_ = true;
}

std::uint32_t QXRecordImpl::NextIndex() {
  if (!lastIndexKnown_) {
    lastIndex_ = 0;
    for (const FieldEntry& entry : fields) lastIndex_ = std::max(lastIndex_, entry.index);
    lastIndexKnown_ = true;
  }
  const bool isLeft = lastIndex_ < std::numeric_limits<std::uint32_t>::max();
  return isLeft ? lastIndex_ + 1 : 0;
}

QXFieldBase QXRecordImpl::MakeField(const FieldEntry& entry) {
  const std::uint32_t space = entry.typeSpace;
  return {std::string(entry.type.substr(space != 0 ? space + 1 : 0)),
          std::string(entry.type.substr(0, space)),
          entry.name,
          entry.extras ? entry.extras->meta : QXFieldMeta(),
          entry.readonly,
          entry.nullable};
}

std::vector<FieldEntry*> QXRecordImpl::ByIndex() const {
  std::vector<FieldEntry*> entries;
  entries.reserve(fields.Size());
  for (FieldEntry& entry : fields) entries.push_back(&entry);
  std::sort(entries.begin(), entries.end(),
            [](const FieldEntry* a, const FieldEntry* b) { return FieldEntryComparison(*a, *b); });
  return entries;
}

// ---- Values ----

void QXRecordImpl::SetCache(FieldEntry& entry, std::shared_ptr<void> object, bool isClean) {
  entry.object = std::move(object);
  entry.isCached = true;
  entry.isClean = isClean;
  mayHaveCaches_ = true;
}

bool QXRecordImpl::UnloadCache(FieldEntry& entry) {
  if (!entry.isCached || entry.isClean || !entry.object) return true;
  const QXFieldTypeHandler* handler = FindHandler(entry.type);
  if (handler == nullptr) return true;
  if (handler == &Types::Record) {  // without a copy of the bytes
    if (!Write(*static_cast<const QXRecord*>(entry.object.get()), entry.value)) return false;
  } else {
    const QXBytes bytes = handler->PtrToBytes(entry.object.get());
    if (bytes.empty() && handler == &Types::RecordVec) return false;
    StoreValue(entry.value.Set(bytes.size()), bytes);
  }
  entry.hasBytes = true;
  entry.isClean = true;
  return true;
}

bool QXRecordImpl::UnloadCache() {
  bool isDone = true;
  if (mayHaveCaches_)
    for (FieldEntry& entry : fields)
      if (entry.isCached) isDone = UnloadCache(entry) && isDone;
  return isDone;
}

void QXRecordImpl::DropCaches() {
  if (!std::exchange(mayHaveCaches_, false)) return;
  for (FieldEntry& entry : fields) {
    entry.DropCache();
    if (entry.extras) entry.extras->childCache.reset();
  }
}

// ---- Children ----

namespace {

// The field in which a stored child has its key.
const QXField<std::string>& KeyField() {
  static const auto& field = *new QXField<std::string>(std::string(QX_PREFIX) + "key");
  return field;
}

}  // namespace

bool ChildrenBytes::Add(const std::string& key, QXRecord& child) {
  child.AddField(KeyField());
  child.SetValue(KeyField(), key);
  const std::size_t before = records_.size();
  child.ToBytes(records_);
  ++count_;
  return records_.size() != before;
}

QXBytes ChildrenBytes::Get() const {
  QXBytes bytes;
  if (count_ == 0) return bytes;
  bytes.reserve(IntSize(count_) + records_.size());
  StoreInt(Grow(bytes, IntSize(count_)), count_);
  AppendValue(bytes, records_);
  return bytes;
}

std::map<std::string, QXRecord> ReadChildren(const QXBytes& bytes) {
  std::vector<std::optional<QXRecord>> records;
  DecodeVector(records, bytes.data(), bytes.size());
  std::map<std::string, QXRecord> children;
  for (std::optional<QXRecord>& record : records) {
    if (!record) continue;
    std::string key = record->GetValue(KeyField());
    record->DeleteField(KeyField());
    children[std::move(key)] = std::move(*record);
  }
  return children;
}

ChildCache& QXRecordImpl::LoadChildCache(FieldEntry& entry) {
  FieldExtras& extras = entry.Extras();
  if (extras.childCache) return *extras.childCache;
  extras.childCache = std::make_unique<ChildCache>();
  mayHaveCaches_ = true;
  for (auto& [key, child] : ReadChildren(extras.children)) {
    const auto& loaded = (*extras.childCache)[key] = std::make_shared<QXRecord>(std::move(child));
    loaded->DropSourceID();
  }
  return *extras.childCache;
}

bool QXRecordImpl::UnloadChildCache(FieldEntry& entry) {
  if (!entry.extras || !entry.extras->childCache) return true;
  ChildrenBytes bytes;
  for (const auto& [key, child] : *entry.extras->childCache) {
    if (child->IsEmpty()) continue;
    QXRecord copy;
    if (!copy.CopyFrom(*child)) return false;
    copy.DropSourceID();
    if (!bytes.Add(key, copy)) return false;
  }
  entry.extras->children = bytes.Get();
  return true;
}

bool QXRecordImpl::UnloadChildCache() {
  bool isDone = true;
  if (mayHaveCaches_)
    for (FieldEntry& entry : fields)
      if (entry.extras) isDone = UnloadChildCache(entry) && isDone;
  return isDone;
}

}  // namespace QXDataFlow
