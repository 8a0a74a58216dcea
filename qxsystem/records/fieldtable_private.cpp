#include <qxsystem/records/fieldtable_private.h>

#include <algorithm>

#include <qxsystem/records/types_private.h>

namespace QXDataFlow {

// ---- Entries ----

namespace {

// The name of a built-in type as it stands in their table; empty for others.
std::string_view BuiltInName(std::string_view name) {
  return std::apply(
      [name](const auto&... row) {
        std::string_view known;
        (void)((IsSameText(name, row.name) && (known = row.name, true)) || ...);
        return known;
      },
      builtIns);
}

}  // namespace

void ValueBytes::Grow(std::size_t size) {
  unsigned char* const room = size > sizeof here_ ? new unsigned char[size] : here_;
  Free();
  data_ = room;
  capacity_ = std::max(size, sizeof here_);
}

void FieldEntry::Reset() {
  type = {};
  typeSpace = index = 0;
  nullable = readonly = isNull = false;
  DropCache();
  DropValue();
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
  std::size_t b = 0;
  if (!more_.empty() && isBelow(first_.back())) {
    const auto next = std::partition_point(
        more_.begin(), more_.end() - 1, [&](const Block& block) { return isBelow(block.back()); });
    b = 1 + static_cast<std::size_t>(next - more_.begin());
  }
  const Block& block = b == 0 ? first_ : more_[b - 1];
  // Names that come in order are looked for no further than at the end.
  const auto item = !block.empty() && isBelow(block.back())
                        ? block.end()
                        : std::partition_point(block.begin(), block.end(), isBelow);
  const bool isFound = item != block.end() && IsSameText(item->entry->name, name);
  return {b, item - block.begin(), isFound ? item->entry : nullptr};
}

FieldEntry* FieldTable::Find(std::string_view name) const {
  return Locate(Prefix(name), name).entry;
}

FieldEntry& FieldTable::Add(std::string_view name) {
  const std::uint64_t prefix = Prefix(name);
  Place place = Locate(prefix, name);
  if (place.entry != nullptr) return *place.entry;
  if (BlockAt(place.block).size() == MaxBlock) {
    Split(place.block);
    place = Locate(prefix, name);
  }
  Block& block = BlockAt(place.block);
  if (block.size() == block.capacity()) block.reserve(std::max<std::size_t>(8, 2 * block.size()));
  FieldEntry* entry = Make(name);
  block.insert(block.begin() + place.at, {prefix, entry});
  ++size_;
  return *entry;
}

void FieldTable::Split(std::size_t b) {
  more_.emplace(more_.begin() + static_cast<std::ptrdiff_t>(b));
  Block &block = BlockAt(b), &next = BlockAt(b + 1);
  const auto half = block.begin() + MaxBlock / 2;
  next.assign(half, block.end());
  block.erase(half, block.end());
}

FieldEntry* FieldTable::Make(std::string_view name) {
  void* room = freed_;
  if (freed_ != nullptr)
    freed_ = freed_->next;
  else
    room = memory_.Take(sizeof(FieldEntry));
  return new (room) FieldEntry(name);
}

void FieldTable::Erase(const FieldEntry& entry) {
  const Place place = Locate(Prefix(entry.name), entry.name);
  Block& block = BlockAt(place.block);
  block.erase(block.begin() + place.at);
  if (block.empty() && !more_.empty()) {
    if (place.block == 0) first_.swap(more_.front());
    more_.erase(more_.begin() +
                static_cast<std::ptrdiff_t>(std::max<std::size_t>(place.block, 1) - 1));
  }
  --size_;
  place.entry->~FieldEntry();
  freed_ = new (place.entry) Freed{freed_};
}

void FieldTable::Clear() {
  for (FieldEntry& entry : *this) entry.~FieldEntry();
  first_.clear();
  more_.clear();
  types_.reset();
  memory_.Clear();
  freed_ = nullptr;
  size_ = 0;
}

void FieldTable::Reserve(std::size_t entries) {
  memory_.Reserve(entries * sizeof(FieldEntry));
  first_.reserve(std::min(entries, MaxBlock));
}

void FieldTable::SetType(FieldEntry& entry, std::string_view name) {
  entry.typeSpace = 0;
  entry.type = BuiltInName(name);
  if (!entry.type.empty()) return;
  const TypeName split = SplitTypeName(name);
  SetType(entry, split.space, split.type);
}

void FieldTable::SetType(FieldEntry& entry, std::string_view space, std::string_view type) {
  entry.typeSpace = static_cast<std::uint32_t>(space.size());
  entry.type = space.empty() ? BuiltInName(type) : std::string_view();
  if (!entry.type.empty() || (space.empty() && type.empty())) return;
  if (!types_) types_ = std::make_unique<std::set<std::string, std::less<>>>();
  std::string full(space);
  full.append(space.empty() ? "" : ":").append(type);
  entry.type = *types_->insert(std::move(full)).first;
}

}  // namespace QXDataFlow
