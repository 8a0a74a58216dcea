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
  // A value, its place in the record's block of values; or null.
  struct Value {
    std::uint32_t index;
    bool isNull;
    Span span;
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
      FieldEntry& entry =
          record_.fields.try_emplace(record_.fields.end(), std::string(name))->second;
      entry = FieldEntry();
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
    const std::size_t offset = record_.values.size();
    Append(record_.values, begin, from.Left());
    while (from.Left() != 0) {
      std::uint32_t index;
      std::string_view bytes;
      bool isNull;
      if (!from.Number(index) || !from.Text(bytes, isNull)) return false;
      const auto behind = static_cast<std::size_t>(from.At() - begin);
      values_.push_back({index, isNull, {offset + behind - bytes.size(), bytes.size()}});
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
  // index, of which one is deleted.
  bool Assign() {
    fields_ = record_.ByIndex();
    bool isUnique = true;
    for (std::size_t i = 1; i < fields_.size(); ++i)
      if (fields_[i]->second.index == fields_[i - 1]->second.index) {
        record_.fields.erase(record_.fields.find(std::exchange(fields_[i], fields_[i - 1])->first));
        isUnique = false;
      }
    for (const Value& value : values_) {
      FieldEntry* entry = Find(value.index);
      if (entry == nullptr) continue;
      entry->hasBytes = true;
      entry->isNull = entry->isNull || value.isNull;
      entry->value = value.span;
    }
    for (auto& [index, meta] : metas_)
      if (FieldEntry* entry = meta.IsEmpty() ? nullptr : Find(index))
        entry->Extras().meta = std::move(meta);
      else if (index == RecordIndex)
        record_.Meta() = static_cast<const QXMeta&>(meta);
    for (const auto& [index, bytes] : children_)
      if (FieldEntry* entry = Find(index))
        entry->Extras().children.assign(bytes.begin(), bytes.end());
    return isUnique;
  }

  FieldEntry* Find(std::uint32_t index) const {
    const auto place = std::lower_bound(
        fields_.begin(), fields_.end(), index,
        [](const NamedField* field, std::uint32_t key) { return field->second.index < key; });
    return place != fields_.end() && (*place)->second.index == index ? &(*place)->second : nullptr;
  }

  QXRecordImpl& record_;
  std::vector<NamedField*> fields_;  // by index
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

// The payloads of the sections that are tables.
struct Sizes {
  std::size_t fields = 0, meta = 0, data = 0, children = 0;
};

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
  dead_ = values.size();
  for (const auto& [name, entry] : fields) dead_ -= entry.value.size;
  return isWhole;
}

// Sizes first, then all bytes into room that is exactly as large.
void QXRecordImpl::Write(QXBytes& out) {
  Sizes sizes;
  std::vector<const FieldEntry*> parents;
  for (const auto& [name, entry] : fields) {
    const std::size_t index = IntSize(entry.index);
    sizes.fields += TextSize(name.size()) + index + TextSize(entry.type.size()) + 1;
    if (entry.HasMeta()) sizes.meta += MetaSize(entry.index, entry.extras->meta);
    if (entry.isNull)
      sizes.data += index + 1;
    else if (entry.hasBytes)
      sizes.data += index + TextSize(entry.value.size);
    if (!entry.HasChildren()) continue;
    sizes.children += index + TextSize(entry.extras->children.size());
    parents.push_back(&entry);
  }
  if (meta && !meta->IsEmpty()) sizes.meta += MetaSize(RecordIndex, *meta);
  const std::size_t size = SectionSize(VersionTag, TextSize(RecordVersion.size())) +
                           TableSize(FieldsTag, sizes.fields) + TableSize(MetaTag, sizes.meta) +
                           TableSize(DataTag, sizes.data) + TableSize(ChildrenTag, sizes.children) +
                           unknown.size();

  unsigned char* at = Grow(out, SectionSize(RecordTag, size));
  at = StoreSectionHead(at, RecordTag, size);
  at = StoreSectionHead(at, VersionTag, TextSize(RecordVersion.size()));
  at = StoreText(at, RecordVersion);

  at = StoreTableHead(at, FieldsTag, sizes.fields);
  for (const auto& [name, entry] : fields) {
    at = StoreText(StoreInt(StoreText(at, name), entry.index), entry.type);
    *at++ = entry.nullable ? 1 : 0;
  }

  at = StoreTableHead(at, MetaTag, sizes.meta);
  if (sizes.meta != 0) {
    for (const auto& [name, entry] : fields)
      if (entry.HasMeta()) at = StoreMeta(at, entry.index, entry.extras->meta);
    if (meta && !meta->IsEmpty()) at = StoreMeta(at, RecordIndex, *meta);
  }

  at = StoreTableHead(at, DataTag, sizes.data);
  for (const auto& [name, entry] : fields) {
    if (!entry.isNull && !entry.hasBytes) continue;
    at = StoreInt(at, entry.index);
    if (entry.isNull)
      *at++ = NoneByte;
    else
      at = StoreText(at, Bytes(entry), entry.value.size);
  }

  at = StoreTableHead(at, ChildrenTag, sizes.children);
  std::sort(parents.begin(), parents.end(),
            [](const FieldEntry* a, const FieldEntry* b) { return FieldEntryComparison(*a, *b); });
  for (const FieldEntry* entry : parents)
    at = StoreText(StoreInt(at, entry->index), entry->extras->children.data(),
                   entry->extras->children.size());
  StoreBytes(at, unknown.data(), unknown.size());
}

}  // namespace QXDataFlow
