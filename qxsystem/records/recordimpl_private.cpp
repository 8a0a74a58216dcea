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
    if (!entry.extras) continue;
    if (entry.extras->object) to.push_back(std::move(entry.extras->object));
    if (!entry.extras->childCache) continue;
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
  unsigned char* room = Take(other.size_ - other.dead_);
  for (const FieldEntry& from : other.fields) {
    FieldEntry& entry = fields.Add(from.name);
    std::tie(entry.index, entry.nullable, entry.readonly, entry.isNull, entry.hasBytes,
             entry.type) =
        std::tie(from.index, from.nullable, from.readonly, from.isNull, from.hasBytes, from.type);
    entry.value = {room, from.value.size};
    room = StoreBytes(room, from.value.data, from.value.size);
    if (!from.extras) continue;
    FieldExtras& extras = entry.Extras();
    extras.type = from.extras->type;
    extras.typeSpace = from.extras->typeSpace;
    if (from.HasOwnType()) entry.type = extras.type;
    extras.meta = from.extras->meta;
    extras.children = from.extras->children;
    if (from.extras->isCached && !from.extras->isClean)
      entry.SetCache(from.extras->object, /*isClean=*/false);
  }
}

// Records in the caches of records in caches are let go of one after the other,
// not one inside the other, which could take more stack than there is.
QXRecordImpl::~QXRecordImpl() {
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

FieldEntry* QXRecordImpl::SetField(const QXFieldBase& field, bool isNull) {
  FieldEntry* found = field.metaMatch_ ? Resolve(field) : nullptr;
  FieldEntry& entry = found != nullptr ? *found : fields.Add(field.name_);
  const bool isKnown = entry.index != 0 && TypeMatches(entry, field);
  if (isKnown && field.metaMatch_) {
    entry.Extras().meta.Merge(field.meta_);
    entry.isNull = isNull;
    return &entry;
  }
  if (!isKnown) {
    const std::uint32_t index = NextIndex();
    if (index == 0) {
      if (entry.index == 0) fields.Erase(entry);
      return nullptr;
    }
    DropValue(entry);
    entry.Reset();
    entry.index = lastIndex_ = index;
  }
  for (const unsigned option : field.meta_.GetOptions()) RemoveElsewhere(option, entry);
  if (!field.typeNamespace_.empty() || !IsSameText(entry.type, field.type_))
    entry.SetType(field.typeNamespace_, field.type_);
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
  for (FieldEntry& other : fields) {
    if (&other == &entry || !other.HasMeta()) continue;
    QXFieldMeta& held = other.extras->meta;
    const std::vector<unsigned> options = held.GetOptions();
    for (const unsigned present : options)
      if ((present & mask) == (option & mask)) held.RemoveOption(present);
  }
}

void QXRecordImpl::Erase(const FieldEntry& entry) {
  if (entry.index == lastIndex_) lastIndexKnown_ = false;
  dead_ += entry.value.size;
  fields.Erase(entry);
}

void QXRecordImpl::Clear() {
  fields.Clear();
  values_.Clear();
  unknown.clear();
  meta.reset();
  size_ = dead_ = 0;
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
  const std::size_t space = entry.HasOwnType() ? entry.extras->typeSpace : 0;
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

unsigned char* QXRecordImpl::Take(std::size_t size) {
  unsigned char* room = values_.Take(size);
  size_ += size;
  return room;
}

unsigned char* QXRecordImpl::ValueRoom(FieldEntry& entry, std::size_t size) {
  if (entry.hasBytes && size <= entry.value.size) {
    dead_ += entry.value.size - size;
    entry.value.size = size;
  } else {
    unsigned char* room = Take(size);
    DropValue(entry);
    entry.value = {room, size};
    entry.hasBytes = true;
    if (dead_ > 1024 && dead_ > size_ / 2) Compact();
  }
  return entry.value.data;
}

void QXRecordImpl::DropValue(FieldEntry& entry) {
  dead_ += entry.value.size;
  entry.hasBytes = false;
  entry.value = {};
}

void QXRecordImpl::Compact() {
  Arena live;
  unsigned char* room = live.Take(size_ - dead_);
  for (FieldEntry& entry : fields) {
    unsigned char* const value = std::exchange(entry.value.data, room);
    room = StoreBytes(room, value, entry.value.size);
  }
  values_.Swap(live);
  size_ -= std::exchange(dead_, 0);
}

bool QXRecordImpl::UnloadValue(FieldEntry& entry) {
  if (!entry.IsCached() || entry.extras->isClean || !entry.extras->object) return true;
  const QXFieldTypeHandler* handler = FindHandler(entry.type);
  if (handler == nullptr) return true;
  const QXBytes bytes = handler->PtrToBytes(entry.extras->object.get());
  const bool isRecord = handler == &Types::Record || handler == &Types::RecordVec;
  if (bytes.empty() && isRecord) return false;
  StoreValue(ValueRoom(entry, bytes.size()), bytes);
  entry.extras->isClean = true;
  return true;
}

bool QXRecordImpl::UnloadValues() {
  bool isDone = true;
  for (FieldEntry& entry : fields) isDone = UnloadValue(entry) && isDone;
  return isDone;
}

void QXRecordImpl::DropCaches() {
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

void QXRecordImpl::LoadChildren(FieldEntry& entry) {
  FieldExtras& extras = entry.Extras();
  if (extras.childCache) return;
  extras.childCache = std::make_unique<ChildCache>();
  for (auto& [key, child] : ReadChildren(extras.children)) {
    const auto& loaded = (*extras.childCache)[key] = std::make_shared<QXRecord>(std::move(child));
    loaded->DropSourceID();
  }
}

bool QXRecordImpl::UnloadChildren(FieldEntry& entry) {
  if (!entry.extras || !entry.extras->childCache) return true;
  ChildrenBytes bytes;
  for (const auto& [key, child] : *entry.extras->childCache) {
    if (child->IsEmpty()) continue;
    QXRecord copy;
    if (!copy.CopyFrom(*child) || !bytes.Add(key, copy)) return false;
  }
  entry.extras->children = bytes.Get();
  return true;
}

bool QXRecordImpl::UnloadChildren() {
  bool isDone = true;
  for (FieldEntry& entry : fields) isDone = UnloadChildren(entry) && isDone;
  return isDone;
}

}  // namespace QXDataFlow
