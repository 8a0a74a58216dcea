#include <qxsystem/records/recordimpl_private.h>

#include <algorithm>
#include <limits>
#include <new>
#include <tuple>

#include <qxsystem/records/codec_private.h>
#include <qxsystem/records/metadata.h>
#include <qxsystem/records/types_private.h>

namespace QXDataFlow {

// ---- Memory for nodes ----

NodePool::~NodePool() {
  while (chunks_ != nullptr) ::operator delete(std::exchange(chunks_, chunks_->next));
}

void NodePool::AddChunk(std::size_t nodeSize) {
  void* chunk = ::operator new(sizeof(Link) + nextNodes_ * nodeSize);
  chunks_ = new (chunk) Link{chunks_};
  auto* const nodes = reinterpret_cast<unsigned char*>(chunks_ + 1);
  for (std::size_t i = nextNodes_; i > 0; --i) Free(nodes + (i - 1) * nodeSize);
  nextNodes_ *= 2;
}

// ---- Entries ----

namespace {

// The name of a built-in type as it stands in their table; empty for others.
std::string_view BuiltInName(std::string_view name) {
  std::string_view known;
  VisitBuiltIn(name, [&](const auto& handler) { known = NameOf(handler); });
  return known;
}

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

void MoveObjects(FieldMap& fields, std::vector<std::shared_ptr<void>>& to) {
  for (auto& [name, entry] : fields) {
    if (!entry.extras) continue;
    if (entry.extras->object) to.push_back(std::move(entry.extras->object));
    if (!entry.extras->childCache) continue;
    for (auto& [key, child] : *entry.extras->childCache) to.push_back(std::move(child));
  }
}

}  // namespace

void FieldEntry::SetType(std::string_view space, std::string_view name) {
  type = space.empty() ? BuiltInName(name) : std::string_view();
  if (!type.empty()) return;
  std::string& full = Extras().type;
  extras->typeSpace = space.size();
  full.assign(space).append(space.empty() ? "" : ":").append(name);
  type = full;
}

void FieldEntry::SetCache(std::shared_ptr<void> object, bool isClean) {
  Extras().object = std::move(object);
  extras->isCached = true;
  extras->isClean = isClean;
}

void FieldEntry::DropCache() {
  if (!extras) return;
  extras->isCached = extras->isClean = false;
  extras->object.reset();
}

// ---- The record ----

QXRecordImpl::QXRecordImpl(const QXRecordImpl& other)
    : values(other.values),
      unknown(other.unknown),
      meta(other.meta ? std::make_unique<QXRecordMeta>(*other.meta) : nullptr),
      dead_(other.dead_),
      lastIndex_(other.lastIndex_),
      lastIndexKnown_(other.lastIndexKnown_) {
  for (const auto& [name, from] : other.fields) {
    FieldEntry& entry = fields.try_emplace(fields.end(), name)->second;
    std::tie(entry.index, entry.nullable, entry.readonly, entry.isNull, entry.hasBytes, entry.type,
             entry.value) = std::tie(from.index, from.nullable, from.readonly, from.isNull,
                                     from.hasBytes, from.type, from.value);
    if (!from.extras) continue;
    FieldExtras& extras = entry.Extras();
    extras.type = from.extras->type;
    extras.typeSpace = from.extras->typeSpace;
    if (from.HasOwnType()) entry.type = extras.type;
    extras.meta = from.extras->meta;
    extras.children = from.extras->children;
    if (from.extras->isCached && !from.extras->isClean) {
      extras.isCached = true;
      extras.object = from.extras->object;
    }
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
  std::string_view stored = entry.type;
  return TakeTail(stored, field.type_) &&
         (field.typeNamespace_.empty() ||
          (TakeTail(stored, ":") && TakeTail(stored, field.typeNamespace_)));
}

bool QXRecordImpl::IsMetaMatch(const FieldEntry& entry, const QXFieldBase& field) {
  return field.meta_.IsSubsetOf(entry.extras ? entry.extras->meta : QXFieldMeta());
}

NamedField* QXRecordImpl::Resolve(const QXFieldBase& field) {
  if (field.metaMatch_) {
    const std::string type = field.GetTypeName();
    for (NamedField& place : fields)
      if (place.second.type == type && IsMetaMatch(place.second, field)) return &place;
  }
  const auto place = fields.find(field.name_);
  return place != fields.end() ? &*place : nullptr;
}

NamedField* QXRecordImpl::Find(const QXFieldBase& field) {
  NamedField* place = Resolve(field);
  return place != nullptr && TypeMatches(place->second, field) ? place : nullptr;
}

NamedField* QXRecordImpl::SetField(const QXFieldBase& field, bool isNull) {
  NamedField* place = field.metaMatch_ ? Resolve(field) : nullptr;
  if (place == nullptr) place = &*fields.try_emplace(field.name_).first;
  FieldEntry& entry = place->second;
  const bool isKnown = entry.index != 0 && TypeMatches(entry, field);
  if (isKnown && field.metaMatch_) {
    entry.Extras().meta.Merge(field.meta_);
    entry.isNull = isNull;
    return place;
  }
  if (!isKnown) {
    const std::uint32_t index = NextIndex();
    if (index == 0) {
      if (entry.index == 0) fields.erase(fields.find(place->first));
      return nullptr;
    }
    DropValue(entry);
    entry = FieldEntry();
    entry.index = lastIndex_ = index;
  }
  for (const unsigned option : field.meta_.GetOptions()) RemoveElsewhere(option, *place);
  entry.SetType(field.typeNamespace_, field.type_);
  entry.nullable = field.nullable_;
  entry.readonly = field.readonly_;
  entry.isNull = isNull;
  if (entry.HasMeta() || !field.meta_.IsEmpty()) entry.Extras().meta = field.meta_;
  return place;
}

// An option that only one field may have leaves the others.
void QXRecordImpl::RemoveElsewhere(unsigned option, const NamedField& place) {
  const unsigned mask = QXMetadata::QXGetMetaPerRecordMask(option);
  if (mask == 0) return;
  for (NamedField& other : fields) {
    if (&other == &place || !other.second.HasMeta()) continue;
    QXFieldMeta& held = other.second.extras->meta;
    const std::vector<unsigned> options = held.GetOptions();
    for (const unsigned present : options)
      if ((present & mask) == (option & mask)) held.RemoveOption(present);
  }
}

void QXRecordImpl::Erase(const NamedField& place) {
  if (place.second.hasBytes) dead_ += place.second.value.size;
  if (place.second.index == lastIndex_) lastIndexKnown_ = false;
  fields.erase(fields.find(place.first));
}

void QXRecordImpl::Clear() {
  fields.clear();
  values.clear();
  unknown.clear();
  meta.reset();
  dead_ = 0;
  lastIndex_ = 0;
  lastIndexKnown_ = true;
}

std::uint32_t QXRecordImpl::NextIndex() {
  if (!lastIndexKnown_) {
    lastIndex_ = 0;
    for (const auto& [name, entry] : fields) lastIndex_ = std::max(lastIndex_, entry.index);
    lastIndexKnown_ = true;
  }
  const bool isLeft = lastIndex_ < std::numeric_limits<std::uint32_t>::max();
  return isLeft ? lastIndex_ + 1 : 0;
}

QXFieldBase QXRecordImpl::MakeField(const NamedField& place) {
  const FieldEntry& entry = place.second;
  const std::size_t space = entry.HasOwnType() ? entry.extras->typeSpace : 0;
  return {std::string(entry.type.substr(space != 0 ? space + 1 : 0)),
          std::string(entry.type.substr(0, space)),
          place.first,
          entry.extras ? entry.extras->meta : QXFieldMeta(),
          entry.readonly,
          entry.nullable};
}

std::vector<NamedField*> QXRecordImpl::ByIndex() {
  std::vector<NamedField*> places;
  places.reserve(fields.size());
  for (NamedField& place : fields) places.push_back(&place);
  std::sort(places.begin(), places.end(), [](const NamedField* a, const NamedField* b) {
    return FieldEntryComparison(a->second, b->second);
  });
  return places;
}

// ---- Values ----

QXBytes& QXRecordImpl::StartValue() {
  if (values.capacity() == 0) values.reserve(256);
  return values;
}

void QXRecordImpl::TakeValue(FieldEntry& entry, std::size_t start) {
  const std::size_t size = values.size() - start;
  if (entry.hasBytes && size <= entry.value.size) {
    StoreBytes(values.data() + entry.value.offset, values.data() + start, size);
    values.resize(start);
    dead_ += entry.value.size - size;
    entry.value.size = size;
  } else {
    DropValue(entry);
    entry.value = {start, size};
  }
  entry.hasBytes = true;
  if (dead_ > 1024 && dead_ > values.size() / 2) Compact();
}

void QXRecordImpl::DropValue(FieldEntry& entry) {
  if (entry.hasBytes) dead_ += entry.value.size;
  entry.hasBytes = false;
  entry.value = {};
}

void QXRecordImpl::Compact() {
  QXBytes live;
  live.reserve(values.size() - dead_);
  for (auto& [name, entry] : fields) {
    if (!entry.hasBytes) continue;
    const std::size_t offset = live.size();
    Append(live, Bytes(entry), entry.value.size);
    entry.value.offset = offset;
  }
  values = std::move(live);
  dead_ = 0;
}

bool QXRecordImpl::UnloadValue(FieldEntry& entry) {
  if (!entry.IsCached() || entry.extras->isClean || !entry.extras->object) return true;
  const QXFieldTypeHandler* handler = FindHandler(entry.type);
  if (handler == nullptr) return true;
  const QXBytes bytes = handler->PtrToBytes(entry.extras->object.get());
  const bool isRecord = handler == &Types::Record || handler == &Types::RecordVec;
  if (bytes.empty() && isRecord) return false;
  const std::size_t start = StartValue().size();
  AppendValue(values, bytes);
  TakeValue(entry, start);
  entry.extras->isClean = true;
  return true;
}

bool QXRecordImpl::UnloadValues() {
  bool isDone = true;
  for (auto& [name, entry] : fields) isDone = UnloadValue(entry) && isDone;
  return isDone;
}

void QXRecordImpl::DropCaches() {
  for (auto& [name, entry] : fields) {
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
  for (auto& [name, entry] : fields) isDone = UnloadChildren(entry) && isDone;
  return isDone;
}

}  // namespace QXDataFlow
