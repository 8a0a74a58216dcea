#include <qxsystem/qxb/qxbwfxn.h>

#include <algorithm>
#include <cstdlib>
#include <deque>

#include <qxsystem/core/error.h>
#include <qxsystem/platform/compress.h>
#include <qxsystem/qxb/qxb_private.h>
#include <qxsystem/qxb/qxbitem_private.h>

namespace QXSystem {
namespace {

constexpr std::size_t BlockMarks = 2;

// An item whose stored form is settled.
struct Item {
  StoredTag tag;
  const Codec* codec;  // null for a value in its envelope
  ValueBytes value;    // of an envelope: the nested record
  std::size_t size;    // of the value, from behind the type code on
};

// The tag of the envelope around a value: the prefix and the value's name.
struct EnvelopeTag {
  std::string_view name;

  std::size_t NameSize() const { return EnvelopePrefix.size() + name.size(); }
  std::size_t Size() const { return 1 + QXBDataLengthBytes(NameSize()) + NameSize(); }
  void Write(qxostream& out) const {
    out.put(0);
    QXBWriteDataLength(out, NameSize());
    out.write(EnvelopePrefix.data(), EnvelopePrefix.size());
    out.write(name.data(), name.size());
  }
};

// A block in the making: first every item's form and size is settled, which
// needs memory only for values that functors write; then all is written in one
// go, each value once.
class BlockWriter {
public:
  explicit BlockWriter(const QXBinaryIOHandlerBase& handler) : handler_(handler) {}

  // False when the whole block must be refused.
  bool Add(const QXBaseData& item);

  std::size_t Size() const { return size_; }
  void Write(qxostream& out) const;

private:
  bool AddHandled(std::string_view name, const void* record, std::size_t size);
  bool AddByFunctor(std::string_view name, const QXBaseData& item);
  void Add(const Item& item) {
    items_.push_back(item);
    size_ += item.tag.Size() + 1 + item.size;
  }

  const QXBinaryIOHandlerBase& handler_;
  std::vector<Item> items_;
  std::deque<qxosstream> nested_;  // what functors wrote; never moves
  std::size_t size_ = 0;           // of all items
};

// The tag of an item. A name made from a code when it was read becomes that
// code again, whatever kind of value bears it; false for a number that is no
// code. "UnknownQXB" without a number, or with 0, is an ordinary name: a lone
// zero byte would be taken for the start of a long tag.
bool ItemTag(std::string_view name, StoredTag& tag) {
  tag = MakeTag(name);
  if (!StartsWith(name, NumberedPrefix)) return true;
  const auto code = static_cast<signed char>(
      std::strtol(name.data() + NumberedPrefix.size(), nullptr, /*base=*/10));
  if (code > 0) tag.code = static_cast<unsigned char>(code);
  return code >= 0;
}

// Whether the name fits a tag that has `prefix` more bytes.
bool NameFits(std::string_view name, std::size_t prefix) {
  if (name.size() + prefix < QXBTagBufferSize) return true;
  QXThrow.Warning("data item '%.60s...' is not written: its name of %zu bytes is too long",
                  name.data(), name.size());
  return false;
}

bool BlockWriter::Add(const QXBaseData& item) {
  if (!QXHasTag(item.GetTag())) return true;
  const std::string_view name = QXGetTag(item.GetTag());
  if (name.empty()) return true;

  const void* type = item.GetDataType();
  if (type == QXGetDataType<QXUnknownQXBData>()) {
    if (StartsWith(name, AttachedPrefix)) return true;
    const auto& kept = static_cast<const QXBaseDataT<QXUnknownQXBData>&>(item).GetValue().GetData();
    return AddHandled(name, kept.data(), kept.size());
  }
  const Codec* codec = FindCodec(type);
  if (!codec) return AddByFunctor(name, item);

  Item stored{{}, codec, codec->bytes(item), 0};
  // Absence is how a false bool is stored, unless somebody writes it otherwise.
  if (type == QXGetDataType<bool>() && !*static_cast<const bool*>(stored.value.data))
    return AddByFunctor(name, item);
  if (!NameFits(name, 0)) return true;
  if (!ItemTag(name, stored.tag)) return false;
  stored.size = stored.value.size;
  if (codec->shape != Shape::Plain) stored.size += QXBDataLengthBytes(stored.value.size);
  if (codec->shape == Shape::Marked) ++stored.size;
  Add(stored);
  return true;
}

bool BlockWriter::AddHandled(std::string_view name, const void* record, std::size_t size) {
  // A nested record without bytes would end the reading of the block.
  if (size == 0 || !NameFits(name, EnvelopePrefix.size())) return true;
  Item stored{{}, nullptr, {record, size, nullptr}, 0};
  if (!ItemTag(name, stored.tag)) return false;
  stored.size = EnvelopeTag{name}.Size() + 1 + QXBDataLengthBytes(size) + size;
  Add(stored);
  return true;
}

bool BlockWriter::AddByFunctor(std::string_view name, const QXBaseData& item) {
  for (QXIter<QXWriteFxn<QXBaseData>> fxn = handler_.GetBaseWriteFxns(); fxn; ++fxn) {
    if (fxn->GetType() != item.GetDataType()) continue;
    const QXNestingScope level;
    if (!level) return false;
    qxosstream& record = nested_.emplace_back();
    if (!(*fxn)(record, item, handler_)) {
      // The text has carried the level's word from the beginning, so it shows
      // twice; programs look for it as it is.
      QXThrow.Warning("Warning: Failed to write QXBase data for tag %s.  Skipping...", name.data());
      nested_.pop_back();
      return true;
    }
    return AddHandled(name, record.data(), record.size());
  }
  return true;
}

void WriteBits(qxostream& out, const std::vector<bool>& bits) {
  unsigned char bytes[1024];
  for (std::size_t done = 0; done < bits.size();) {
    const std::size_t count = std::min(bits.size() - done, sizeof bytes);
    for (std::size_t i = 0; i < count; ++i) bytes[i] = bits[done + i];
    out.write(bytes, count);
    done += count;
  }
}

void BlockWriter::Write(qxostream& out) const {
  out.put(static_cast<unsigned char>(QXBIntEndian()));
  out.put(static_cast<unsigned char>(QXBFloatEndian()));
  for (const Item& item : items_) {
    item.tag.Write(out);
    if (item.codec) {
      out.put(item.codec->code);
    } else {
      out.put(HandledCode);
      EnvelopeTag{item.tag.name}.Write(out);
      out.put(EnvelopeType);
    }
    if (item.codec && item.codec->shape == Shape::Marked)
      out.put(static_cast<unsigned char>(QXBShortEndian()));
    if (!item.codec || item.codec->shape != Shape::Plain) QXBWriteDataLength(out, item.value.size);
    if (item.value.bits)
      WriteBits(out, *item.value.bits);
    else
      out.write(static_cast<const unsigned char*>(item.value.data), item.value.size);
  }
}

// Whether a record of this tag and payload can be read again; told if not.
bool CheckRecord(const std::string& tag, std::size_t size) {
  if (tag.size() >= QXBTagBufferSize) {
    QXThrow.Warning("record '%.60s...' is not written: its tag of %zu bytes is too long",
                    tag.c_str(), tag.size());
    return false;
  }
  if (size == 0) {
    QXThrow.Warning("record '%s' is not written: it has no payload", tag.c_str());
    return false;
  }
  if (size > QXBMaxLength) {
    QXThrow.Warning("record '%s' is not written: its %zu bytes are more than can be read again",
                    tag.c_str(), size);
    return false;
  }
  return true;
}

}  // namespace

bool QXBWriteQXBase(qxostream& out, const QXBase& object, const std::string& tag,
                    const QXBinaryIOHandlerBase& handler) {
  QXIter<QXBaseData> item = object.GetDataIter();
  if (!item) return true;
  BlockWriter block(handler);
  for (; item; ++item)
    if (!block.Add(*item)) return false;
  if (block.Size() == 0) return true;

  const std::size_t size = block.Size() + BlockMarks;
  if (!CheckRecord(tag, size)) return false;
  if (!tag.empty()) {
    MakeTag(tag.c_str()).Write(out);
    QXBWriteDataLength(out, size);
  }
  block.Write(out);
  return static_cast<bool>(out);
}

bool QXBWritePOD(qxostream& out, const QXBase& object, const std::string& tag) {
  return QXBWriteQXBase(out, object, tag, EmptyHandler());
}

bool QXBWriteRecord(qxostream& out, const std::string& tag, const char* payload, std::size_t size) {
  return CheckRecord(tag, size) && QXBWriteTag(out, tag.c_str()) && QXBWriteDataLength(out, size) &&
         out.write(payload, size) == size;
}

const char* QXBasePODWriteFxn::GetTag() const {
  return "QXBasePOD";
}
const void* QXBasePODWriteFxn::GetType() const {
  return QXGetDataType<QXBase>();
}
QXBasePODWriteFxn* QXBasePODWriteFxn::CreateCopy() const {
  return new QXBasePODWriteFxn(*this);
}
bool QXBasePODWriteFxn::operator()(qxostream& out, const QXBase& object,
                                   const QXBinaryIOHandlerBase& handler) const {
  return QXBWriteQXBase(out, object, GetTag(), handler);
}

bool QXBWriteGroup(qxostream& out, const std::string& tag, const qxosstream& records, bool compress,
                   const std::string& method) {
  if (records.size() == 0) return true;
  if (!compress) return QXBWriteRecord(out, tag, records.data(), records.size());
  std::string packed;
  return QXPlatform::QXCompress(packed, records.data(), records.size(), method.c_str()) &&
         QXBWriteRecord(out, tag, packed.data(), packed.size());
}

}  // namespace QXSystem
