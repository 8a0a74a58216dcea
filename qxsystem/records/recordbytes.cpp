// The byte format of records: sections, and the tables in them.

#include <algorithm>
#include <string_view>

#include <qxsystem/records/recordimpl_private.h>
#include <qxsystem/records/types_private.h>

namespace QXDataFlow {
namespace {

constexpr std::string_view RecordTag = "record.v1", VersionTag = "version", FieldsTag = "fields",
                           MetaTag = "meta", DataTag = "data", ChildrenTag = "children";

// The index under which the record's own metadata is stored.
constexpr std::uint32_t RecordIndex = 0;

// ---- Reading ----

// Values and metadata refer to fields by index and may come before them, so they
// are noted while sections are read and given to the fields at the end.
class Reader {
public:
  explicit Reader(QXRecordImpl& record) : record_(record) {}

  // What was read before damage is in the record.
  bool Read(Cursor payload) {
    const bool isWhole = ReadSections(payload);
    return Assign() && isWhole;
  }

private:
  struct Value {
    std::uint32_t index;
    bool isNull;
    ValueBytes bytes;
  };

  struct Section {
    std::string_view tag;
    bool (Reader::*read)(Cursor);
  };
  static constexpr std::size_t NumSections = 5;
  static const Section sections[NumSections];

  bool ReadSections(Cursor payload) {
    while (payload.Left() != 0) {
      const unsigned char* begin = payload.At();
      std::string_view tag;
      Cursor content = payload;
      if (!payload.Section(tag, content)) return false;
      const auto* section = std::find_if(std::begin(sections), std::end(sections),
                                         [tag](const Section& known) { return known.tag == tag; });
      if (section == std::end(sections))
        Append(record_.unknown, begin, static_cast<std::size_t>(payload.At() - begin));
      else if (!(this->*section->read)(content))
        return false;
    }
    return true;
  }

  // There is one format so far, whatever the text says.
  bool ReadVersion(Cursor from) {
    std::string_view text;
    return from.Text(text);
  }

  bool ReadFields(Cursor from) {
    while (from.Left() != 0) {
      std::string_view name, type;
      std::uint32_t index;
      bool nullable, isNone;
      if (!from.Text(name) || !from.Number(index) || index == RecordIndex || !from.Text(type) ||
          !from.Bool(nullable, isNone))
        return false;
      FieldEntry& entry = record_.fields.Add(name);
      entry.Reset();
      entry.index = index;
      entry.nullable = nullable;
      const TypeName split = SplitTypeName(type);
      entry.SetType(split.space, split.type);
    }
    return true;
  }

  bool ReadMeta(Cursor from) {
    while (from.Left() != 0) {
      std::uint32_t index;
      std::vector<unsigned> options;
      std::vector<QXMeta::Attribute> attributes;
      if (!from.Number(index) || !ReadOptions(from, options) || !ReadAttributes(from, attributes))
        return false;
      QXFieldMeta& meta = metas_[index];
      meta.Clear();
      meta.SetOptions(options).SetAttributes(std::move(attributes));
    }
    return true;
  }

  static bool ReadOptions(Cursor& from, std::vector<unsigned>& options) {
    std::size_t count;
    if (!from.Count(count)) return false;
    options.resize(count);
    return std::all_of(options.begin(), options.end(),
                       [&](unsigned& id) { return from.Number(id); });
  }

  // A value is kept as it stands; where it ends follows from the id.
  static bool ReadAttributes(Cursor& from, std::vector<QXMeta::Attribute>& attributes) {
    std::size_t count;
    if (!from.Count(count)) return false;
    attributes.reserve(count);
    for (std::uint32_t id; count > 0; --count) {
      if (!from.Number(id)) return false;
      const unsigned char* const begin = from.At();
      if (!PassAttribute(from, id)) return false;
      attributes.emplace_back(id, QXBytes(begin, from.At()));
    }
    return true;
  }

  static bool PassAttribute(Cursor& from, std::uint32_t id) {
    if (QXMetadata::TakesAttribute<std::string>(id)) return from.PassText();
    if (QXMetadata::TakesAttribute<double>(id)) return from.PassFloat();
    if (QXMetadata::TakesAttribute<int>(id)) return from.PassInt();
    return true;
  }

  bool ReadData(Cursor from) {
    const unsigned char* const begin = from.At();
    unsigned char* const copy = record_.Take(from.Left());
    StoreBytes(copy, begin, from.Left());
    values_.reserve(16);
    while (from.Left() != 0) {
      std::uint32_t index;
      std::string_view bytes;
      bool isNull;
      if (!from.Number(index) || !from.Text(bytes, isNull)) return false;
      values_.push_back({index, isNull, {copy + (from.At() - begin) - bytes.size(), bytes.size()}});
    }
    return true;
  }

  bool ReadChildren(Cursor from) {
    children_.clear();
    while (from.Left() != 0) {
      std::uint32_t index;
      std::string_view bytes;
      bool isNone;
      if (!from.Number(index) || !from.Text(bytes, isNone)) return false;
      children_[index] = bytes;
    }
    return true;
  }

  // Gives the fields what was read for their indices. False if two have one
  // index, of which the second is deleted.
  bool Assign() {
    if (!MapIndices()) return false;
    for (const Value& value : values_) {
      FieldEntry* entry = Find(value.index);
      if (entry == nullptr) continue;
      entry->hasBytes = true;
      entry->isNull = entry->isNull || value.isNull;
      entry->value = value.bytes;
    }
    for (auto& [index, meta] : metas_) {
      if (index == RecordIndex) {
        record_.Meta() = static_cast<const QXMeta&>(meta);
      } else if (FieldEntry* entry = Find(index)) {
        entry->Extras().meta = std::move(meta);
      }
    }
    for (const auto& [index, bytes] : children_)
      if (FieldEntry* entry = Find(index))
        entry->Extras().children.assign(bytes.begin(), bytes.end());
    return true;
  }

  // Most indices are as small as if no field was ever deleted, and have their
  // place in a table.
  bool MapIndices() {
    std::vector<FieldEntry*> twice;
    small_.resize(2 * record_.fields.Size() + 16);
    for (FieldEntry& entry : record_.fields) {
      FieldEntry*& place = entry.index < small_.size() ? small_[entry.index] : large_[entry.index];
      if (place == nullptr)
        place = &entry;
      else
        twice.push_back(&entry);
    }
    for (const FieldEntry* entry : twice) record_.fields.Erase(*entry);
    return twice.empty();
  }

  FieldEntry* Find(std::uint32_t index) const {
    if (index < small_.size()) return small_[index];
    const auto place = large_.find(index);
    return place != large_.end() ? place->second : nullptr;
  }

  QXRecordImpl& record_;
  std::vector<FieldEntry*> small_;  // fields by index
  std::map<std::uint32_t, FieldEntry*> large_;
  std::vector<Value> values_;
  std::map<std::uint32_t, QXFieldMeta> metas_;
  std::map<std::uint32_t, std::string_view> children_;
};

const Reader::Section Reader::sections[] = {{VersionTag, &Reader::ReadVersion},
                                            {FieldsTag, &Reader::ReadFields},
                                            {MetaTag, &Reader::ReadMeta},
                                            {DataTag, &Reader::ReadData},
                                            {ChildrenTag, &Reader::ReadChildren}};

// ---- Writing ----

std::size_t MetaSize(std::uint32_t index, const QXMeta& meta) {
  std::size_t size =
      IntSize(index) + IntSize(meta.GetOptions().size()) + IntSize(meta.GetAttributes().size());
  for (const unsigned option : meta.GetOptions()) size += IntSize(option);
  for (const auto& [id, bytes] : meta.GetAttributes()) size += IntSize(id) + bytes.size();
  return size;
}

unsigned char* StoreMeta(unsigned char* at, std::uint32_t index, const QXMeta& meta) {
  at = StoreInt(StoreInt(at, index), meta.GetOptions().size());
  for (const unsigned option : meta.GetOptions()) at = StoreInt(at, option);
  at = StoreInt(at, meta.GetAttributes().size());
  for (const auto& [id, bytes] : meta.GetAttributes())
    at = StoreBytes(StoreInt(at, id), bytes.data(), bytes.size());
  return at;
}

// A section with nothing in it is left out.
std::size_t TableSize(std::string_view tag, std::size_t payload) {
  return payload != 0 ? SectionSize(tag, payload) : 0;
}
unsigned char* StoreTableHead(unsigned char* at, std::string_view tag, std::size_t payload) {
  return payload != 0 ? StoreSectionHead(at, tag, payload) : at;
}

}  // namespace

bool QXRecordImpl::Read(QXRecord& record, Cursor payload) {
  record.Clear();
  QXRecordImpl& impl = record.Impl();
  const bool isWhole = impl.Read(payload);
  // Many small records would be mostly memory for what they don't have.
  if (impl.IsVoid()) record.impl_.reset();
  return isWhole;
}

bool QXRecordImpl::Read(Cursor payload) {
  const bool isWhole = Reader(*this).Read(payload);
  lastIndexKnown_ = false;
  dead_ = size_;
  for (const FieldEntry& entry : fields) dead_ -= entry.value.size;
  return isWhole;
}

bool QXRecordImpl::Write(const QXRecord& record, QXPlatform::qxostream& out) {
  if (!record.Unload()) return false;
  const RecordSizes sizes = record.Impl().Sizes();
  const std::unique_ptr<unsigned char[]> bytes(new unsigned char[sizes.whole]);
  record.Impl().Store(bytes.get(), sizes);
  return out.write(bytes.get(), sizes.whole) == sizes.whole;
}

RecordSizes QXRecordImpl::Sizes() const {
  RecordSizes sizes;
  for (const FieldEntry& entry : fields) {
    const std::size_t index = IntSize(entry.index);
    sizes.fields += TextSize(entry.name.size()) + index + TextSize(entry.type.size()) + 1;
    if (entry.HasMeta()) sizes.meta += MetaSize(entry.index, entry.extras->meta);
    if (entry.isNull)
      sizes.data += index + 1;
    else if (entry.hasBytes)
      sizes.data += index + TextSize(entry.value.size);
    if (entry.HasChildren()) sizes.children += index + TextSize(entry.extras->children.size());
  }
  if (meta && !meta->IsEmpty()) sizes.meta += MetaSize(RecordIndex, *meta);
  sizes.payload = SectionSize(VersionTag, TextSize(RecordVersion.size())) +
                  TableSize(FieldsTag, sizes.fields) + TableSize(MetaTag, sizes.meta) +
                  TableSize(DataTag, sizes.data) + TableSize(ChildrenTag, sizes.children) +
                  unknown.size();
  sizes.whole = SectionSize(RecordTag, sizes.payload);
  return sizes;
}

void QXRecordImpl::Store(unsigned char* at, const RecordSizes& sizes) const {
  at = StoreSectionHead(at, RecordTag, sizes.payload);
  at = StoreSectionHead(at, VersionTag, TextSize(RecordVersion.size()));
  at = StoreText(at, RecordVersion);

  at = StoreTableHead(at, FieldsTag, sizes.fields);
  for (const FieldEntry& entry : fields) {
    at = StoreText(StoreInt(StoreText(at, entry.name), entry.index), entry.type);
    *at++ = entry.nullable ? 1 : 0;
  }

  if (sizes.meta != 0) {
    at = StoreSectionHead(at, MetaTag, sizes.meta);
    for (const FieldEntry& entry : fields)
      if (entry.HasMeta()) at = StoreMeta(at, entry.index, entry.extras->meta);
    if (meta && !meta->IsEmpty()) at = StoreMeta(at, RecordIndex, *meta);
  }

  at = StoreTableHead(at, DataTag, sizes.data);
  for (const FieldEntry& entry : fields) {
    if (!entry.isNull && !entry.hasBytes) continue;
    at = StoreInt(at, entry.index);
    if (entry.isNull)
      *at++ = NoneByte;
    else
      at = StoreText(at, entry.value.data, entry.value.size);
  }

  if (sizes.children != 0) {
    at = StoreSectionHead(at, ChildrenTag, sizes.children);
    for (const FieldEntry* entry : ByIndex())
      if (entry->HasChildren())
        at = StoreText(StoreInt(at, entry->index), entry->extras->children.data(),
                       entry->extras->children.size());
  }
  StoreBytes(at, unknown.data(), unknown.size());
}

}  // namespace QXDataFlow
