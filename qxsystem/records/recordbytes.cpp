// The byte format of records: sections, and the tables in them.

#include <algorithm>
#include <iterator>
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

// Reads the sections of a record in two passes. What is stored by index, values,
// metadata and children, may come before the fields that have the indices.
class Reader {
public:
  explicit Reader(QXRecordImpl& record) : record_(record) {}

  // What was read before damage is in the record.
  bool Read(Cursor payload) {
    Cursor read = payload;
    const bool isWhole = ReadSections(read, /*byIndex=*/false);
    if (!MapIndices()) return false;
    payload = Cursor(payload.At(), read.At());
    return ReadSections(payload, /*byIndex=*/true) && isWhole;
  }

private:
  struct Section {
    std::string_view tag;
    bool byIndex;  // read in the second pass
    bool (Reader::*read)(Cursor);
  };
  static const Section known[5];

  // Stops in front of a section that is damaged. The first pass keeps the
  // sections that are not known.
  bool ReadSections(Cursor& payload, bool byIndex) {
    while (payload.Left() != 0) {
      Cursor next = payload, content = payload;
      std::string_view tag;
      if (!next.Section(tag, content)) return false;
      const auto* section = std::find_if(std::begin(known), std::end(known),
                                         [tag](const Section& row) { return row.tag == tag; });
      if (section == std::end(known)) {
        if (!byIndex)
          Append(record_.unknown, payload.At(), static_cast<std::size_t>(next.At() - payload.At()));
      } else if (section->byIndex == byIndex && !(this->*section->read)(content)) {
        return false;
      }
      payload = next;
    }
    return true;
  }

  // There is one format so far, whatever the text says.
  bool ReadVersion(Cursor from) {
    std::string_view text;
    return from.Text(text);
  }

  bool ReadFields(Cursor from) {
    constexpr std::size_t usualSize = 16;
    record_.fields.Reserve(from.Left() / usualSize + 1);
    while (from.Left() != 0) {
      std::string_view name, type;
      std::uint32_t index;
      bool nullable, isNone;
      if (!from.Text(name) || !from.Number(index) || index == RecordIndex || !from.Text(type) ||
          !from.Bool(nullable, isNone))
        return false;
      FieldEntry& entry = record_.fields.Add(name);
      if (entry.index != 0) entry.Reset();  // of two of one name the second counts
      entry.index = index;
      entry.nullable = nullable;
      record_.fields.SetType(entry, type);
    }
    return true;
  }

  // Most indices are as small as if no field was ever deleted, and have their
  // place in a table. False if two fields have the same, of which one is deleted.
  bool MapIndices() {
    std::vector<const FieldEntry*> twice;
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

  // The field with this index, null for none.
  FieldEntry* Find(std::uint32_t index) const {
    if (index < small_.size()) return small_[index];
    const auto place = large_.find(index);
    return place != large_.end() ? place->second : nullptr;
  }

  bool ReadMeta(Cursor from) {
    while (from.Left() != 0) {
      std::uint32_t index;
      std::vector<unsigned> options;
      std::vector<QXMeta::Attribute> attributes;
      if (!from.Number(index) || !ReadOptions(from, options) || !ReadAttributes(from, attributes))
        return false;
      FieldEntry* entry = Find(index);
      QXMeta* meta = index == RecordIndex ? static_cast<QXMeta*>(&record_.Meta())
                     : entry != nullptr   ? &entry->Extras().meta
                                          : nullptr;
      if (meta == nullptr) continue;
      meta->Clear();
      meta->SetOptions(options).SetAttributes(std::move(attributes));
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

  // All values are copied at once. A null stays one whatever else is stored for
  // its index.
  bool ReadData(Cursor from) {
    const unsigned char* const begin = from.At();
    unsigned char* const copy = record_.fields.Take(from.Left());
    StoreBytes(copy, begin, from.Left());
    while (from.Left() != 0) {
      std::uint32_t index;
      std::string_view bytes;
      bool isNull;
      if (!from.Number(index) || !from.Text(bytes, isNull)) return false;
      FieldEntry* entry = Find(index);
      if (entry == nullptr) continue;
      entry->hasBytes = true;
      entry->isNull = entry->isNull || isNull;
      entry->value.Refer(copy + (from.At() - begin) - bytes.size(), bytes.size());
    }
    return true;
  }

  // Of several sections the last one counts.
  bool ReadChildren(Cursor from) {
    for (FieldEntry* parent : parents_) parent->extras->children.clear();
    parents_.clear();
    while (from.Left() != 0) {
      std::uint32_t index;
      std::string_view bytes;
      bool isNone;
      if (!from.Number(index) || !from.Text(bytes, isNone)) return false;
      FieldEntry* entry = Find(index);
      if (entry == nullptr) continue;
      entry->Extras().children.assign(bytes.begin(), bytes.end());
      parents_.push_back(entry);
    }
    return true;
  }

  QXRecordImpl& record_;
  std::vector<FieldEntry*> small_;  // fields by index
  std::map<std::uint32_t, FieldEntry*> large_;
  std::vector<FieldEntry*> parents_;  // the fields of the section of children last read
};

const Reader::Section Reader::known[] = {{VersionTag, false, &Reader::ReadVersion},
                                         {FieldsTag, false, &Reader::ReadFields},
                                         {MetaTag, true, &Reader::ReadMeta},
                                         {DataTag, true, &Reader::ReadData},
                                         {ChildrenTag, true, &Reader::ReadChildren}};

// ---- Writing ----

// Takes the bytes of a section, into memory that is large enough.
class MemoryOut {
public:
  explicit MemoryOut(unsigned char* at) : at_(at) {}

  template <class Integer>
  void Int(Integer value) {
    at_ = StoreInt(at_, value);
  }
  void Byte(unsigned char value) { *at_++ = value; }
  void Bytes(const void* bytes, std::size_t size) { at_ = StoreBytes(at_, bytes, size); }

private:
  unsigned char* at_;
};

// The same into a stream. What is small is collected first.
class StreamOut {
public:
  explicit StreamOut(QXPlatform::qxostream& out) : out_(out) {}

  template <class Integer>
  void Int(Integer value) {
    at_ = StoreInt(Room(9), value);
  }
  void Byte(unsigned char value) {
    *Room(1) = value;
    ++at_;
  }
  void Bytes(const void* bytes, std::size_t size) {
    if (size > sizeof buffer_ / 4) {
      Flush();
      Write(static_cast<const unsigned char*>(bytes), size);
    } else {
      at_ = StoreBytes(Room(size), bytes, size);
    }
  }

  // False if the stream refused bytes.
  bool Flush() {
    Write(buffer_, static_cast<std::size_t>(at_ - buffer_));
    at_ = buffer_;
    return taken_;
  }

private:
  unsigned char* Room(std::size_t size) {
    if (size > static_cast<std::size_t>(buffer_ + sizeof buffer_ - at_)) Flush();
    return at_;
  }
  void Write(const unsigned char* bytes, std::size_t size) {
    taken_ = taken_ && out_.write(bytes, size) == size;
  }

  QXPlatform::qxostream& out_;
  unsigned char buffer_[1024];
  unsigned char* at_ = buffer_;
  bool taken_ = true;
};

template <class Out>
void PutText(Out& out, const void* bytes, std::size_t size) {
  out.Int(size);
  out.Bytes(bytes, size);
}
template <class Out>
void PutText(Out& out, std::string_view text) {
  PutText(out, text.data(), text.size());
}
template <class Out>
void PutSectionHead(Out& out, std::string_view tag, std::size_t payload) {
  PutText(out, tag);
  out.Int(payload);
}

std::size_t MetaSize(std::uint32_t index, const QXMeta& meta) {
  std::size_t size =
      IntSize(index) + IntSize(meta.GetOptions().size()) + IntSize(meta.GetAttributes().size());
  for (const unsigned option : meta.GetOptions()) size += IntSize(option);
  for (const auto& [id, bytes] : meta.GetAttributes()) size += IntSize(id) + bytes.size();
  return size;
}
template <class Out>
void PutMeta(Out& out, std::uint32_t index, const QXMeta& meta) {
  out.Int(index);
  out.Int(meta.GetOptions().size());
  for (const unsigned option : meta.GetOptions()) out.Int(option);
  out.Int(meta.GetAttributes().size());
  for (const auto& [id, bytes] : meta.GetAttributes()) {
    out.Int(id);
    out.Bytes(bytes.data(), bytes.size());
  }
}

// The sizes of a record's section, of its payload, and of the tables in that.
struct Sizes {
  std::size_t whole = 0, payload = 0;
  std::size_t fields = 0, meta = 0, data = 0, children = 0;

  explicit Sizes(const QXRecordImpl& record) {
    for (const FieldEntry& entry : record.fields) {
      const std::size_t index = IntSize(entry.index);
      fields += TextSize(entry.name.size()) + index + TextSize(entry.type.size()) + 1;
      if (entry.HasMeta()) meta += MetaSize(entry.index, entry.extras->meta);
      if (entry.isNull)
        data += index + 1;
      else if (entry.hasBytes)
        data += index + TextSize(entry.value.Size());
      if (entry.HasChildren()) children += index + TextSize(entry.extras->children.size());
    }
    if (record.HasMeta()) meta += MetaSize(RecordIndex, *record.meta);
    payload = SectionSize(VersionTag, TextSize(RecordVersion.size())) + record.unknown.size();
    if (fields != 0) payload += SectionSize(FieldsTag, fields);
    if (meta != 0) payload += SectionSize(MetaTag, meta);
    if (data != 0) payload += SectionSize(DataTag, data);
    if (children != 0) payload += SectionSize(ChildrenTag, children);
    whole = SectionSize(RecordTag, payload);
  }
};

// A section with nothing in it is left out.
template <class Out>
void PutRecord(Out& out, const QXRecordImpl& record, const Sizes& sizes) {
  PutSectionHead(out, RecordTag, sizes.payload);
  PutSectionHead(out, VersionTag, TextSize(RecordVersion.size()));
  PutText(out, RecordVersion);

  if (sizes.fields != 0) PutSectionHead(out, FieldsTag, sizes.fields);
  for (const FieldEntry& entry : record.fields) {
    PutText(out, entry.name);
    out.Int(entry.index);
    PutText(out, entry.type);
    out.Byte(entry.nullable ? 1 : 0);
  }

  if (sizes.meta != 0) {
    PutSectionHead(out, MetaTag, sizes.meta);
    for (const FieldEntry& entry : record.fields)
      if (entry.HasMeta()) PutMeta(out, entry.index, entry.extras->meta);
    if (record.HasMeta()) PutMeta(out, RecordIndex, *record.meta);
  }

  if (sizes.data != 0) PutSectionHead(out, DataTag, sizes.data);
  for (const FieldEntry& entry : record.fields) {
    if (!entry.isNull && !entry.hasBytes) continue;
    out.Int(entry.index);
    if (entry.isNull)
      out.Byte(NoneByte);
    else
      PutText(out, entry.value.Data(), entry.value.Size());
  }

  if (sizes.children != 0) {
    PutSectionHead(out, ChildrenTag, sizes.children);
    for (const FieldEntry* entry : record.ByIndex()) {
      if (!entry->HasChildren()) continue;
      out.Int(entry->index);
      PutText(out, entry->extras->children.data(), entry->extras->children.size());
    }
  }
  out.Bytes(record.unknown.data(), record.unknown.size());
}

}  // namespace

bool QXRecordImpl::Read(QXRecord& record, Cursor payload) {
  record.Clear();
  QXRecordImpl& impl = record.Impl();
  const bool isWhole = Reader(impl).Read(payload);
  impl.lastIndexKnown_ = false;
  // Many small records would be mostly memory for what they don't have.
  if (impl.IsVoid()) record.impl_.reset();
  return isWhole;
}

void QXRecordImpl::Write(const QXRecord& record, QXBytes& bytes) {
  if (!record.Unload()) return;
  const Sizes sizes(record.Impl());
  MemoryOut out(Grow(bytes, sizes.whole));
  PutRecord(out, record.Impl(), sizes);
}

bool QXRecordImpl::Write(const QXRecord& record, ValueBytes& value) {
  if (!record.Unload()) return false;
  const Sizes sizes(record.Impl());
  MemoryOut out(value.Set(sizes.whole));
  PutRecord(out, record.Impl(), sizes);
  return true;
}

bool QXRecordImpl::Write(const QXRecord& record, QXPlatform::qxostream& stream) {
  if (!record.Unload()) return false;
  StreamOut out(stream);
  PutRecord(out, record.Impl(), Sizes(record.Impl()));
  return out.Flush();
}

}  // namespace QXDataFlow
