#include <qxsystem/records/fieldtable_private.h>

#include <algorithm>

#include <qxsystem/records/types_private.h>

namespace QXDataFlow {

// ---- Entries ----

namespace {

// The name of a built-in type as it stands in their table; empty for others.
std::string_view BuiltInName(std::string_view name) {
  std::string_view known;
  VisitBuiltIn(name, [&](const auto& handler) { known = NameOf(handler); });
  return known;
}

}  // namespace

void FieldEntry::SetType(std::string_view space, std::string_view typeName) {
  type = space.empty() ? BuiltInName(typeName) : std::string_view();
  if (!type.empty()) return;
  std::string& full = Extras().type;
  extras->typeSpace = space.size();
  full.assign(space).append(space.empty() ? "" : ":").append(typeName);
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

void FieldEntry::Reset() {
  nullable = readonly = isNull = hasBytes = false;
  type = {};
  value = {};
  extras.reset();
}

// ---- The table ----

namespace {

constexpr std::size_t MaxBlock = 128;

// Names with the same prefix differ in length if both end within it.
bool IsLess(std::string_view a, std::string_view b) {
  return std::max(a.size(), b.size()) <= sizeof(std::uint64_t) ? a.size() < b.size() : a < b;
}

}  // namespace

FieldTable::Place FieldTable::Locate(std::uint64_t prefix, std::string_view name) const {
  const auto isBelow = [=](const Item& item) {
    return item.prefix != prefix ? item.prefix < prefix : IsLess(item.entry->name, name);
  };
  // The first block that ends at or above the name, or the last one.
  const auto block = blocks_.size() < 2
                         ? blocks_.begin()
                         : std::partition_point(blocks_.begin(), blocks_.end() - 1,
                                                [&](const Block& b) { return isBelow(b.back()); });
  // Fields that come in order are looked for no further than at the end.
  const auto item = !block->empty() && isBelow(block->back())
                        ? block->end()
                        : std::partition_point(block->begin(), block->end(), isBelow);
  const bool isFound = item != block->end() && IsSameText(item->entry->name, name);
  return {static_cast<std::size_t>(block - blocks_.begin()),
          static_cast<std::size_t>(item - block->begin()), isFound ? item->entry : nullptr};
}

FieldEntry* FieldTable::Make() {
  void* room = freed_;
  if (freed_ != nullptr)
    freed_ = freed_->next;
  else
    room = memory_.Take(sizeof(FieldEntry));
  return new (room) FieldEntry;
}

void FieldTable::Destroy(FieldEntry* entry) {
  entry->~FieldEntry();
  freed_ = new (entry) Freed{freed_};
}

FieldEntry* FieldTable::Find(std::string_view name) const {
  return IsEmpty() ? nullptr : Locate(Prefix(name), name).entry;
}

FieldEntry& FieldTable::Add(std::string_view name) {
  if (blocks_.empty()) blocks_.emplace_back().reserve(8);
  const std::uint64_t prefix = Prefix(name);
  Place place = Locate(prefix, name);
  if (place.entry != nullptr) return *place.entry;
  if (blocks_[place.block].size() == MaxBlock) {
    Split(place.block);
    place = Locate(prefix, name);
  }
  Block& block = blocks_[place.block];
  FieldEntry* entry = Make();
  try {
    entry->name = name;
    block.insert(block.begin() + static_cast<std::ptrdiff_t>(place.at), {prefix, entry});
  } catch (...) {
    Destroy(entry);
    throw;
  }
  ++size_;
  return *entry;
}

void FieldTable::Split(std::size_t b) {
  blocks_.insert(blocks_.begin() + static_cast<std::ptrdiff_t>(b) + 1, Block());
  Block &block = blocks_[b], &next = blocks_[b + 1];
  const auto half = block.begin() + MaxBlock / 2;
  next.assign(half, block.end());
  block.erase(half, block.end());
}

void FieldTable::Erase(const FieldEntry& entry) {
  const Place place = Locate(Prefix(entry.name), entry.name);
  Block& block = blocks_[place.block];
  block.erase(block.begin() + static_cast<std::ptrdiff_t>(place.at));
  if (block.empty()) blocks_.erase(blocks_.begin() + static_cast<std::ptrdiff_t>(place.block));
  --size_;
  Destroy(place.entry);
}

void FieldTable::Clear() {
  for (FieldEntry& entry : *this) entry.~FieldEntry();
  blocks_.clear();
  memory_.Clear();
  freed_ = nullptr;
  size_ = 0;
}

}  // namespace QXDataFlow
