#include <qxsystem/qxb/qxbwfxn.h>

#include <algorithm>
#include <cstdlib>
#include <forward_list>

#include <qxsystem/core/base_private.h>
#include <qxsystem/core/error.h>
#include <qxsystem/core/tagmap_private.h>
#include <qxsystem/platform/compress.h>
#include <qxsystem/qxb/qxb_private.h>
#include <qxsystem/qxb/qxbitem_private.h>

namespace QXSystem {
namespace {

constexpr std::size_t BlockMarks = 2;

// A stream in memory that is filled through a pointer.
class Buffer : public qxosstream {
public:
  // Room for `n` bytes behind the present ones; `End` tells how many were used.
  unsigned char* Begin(std::size_t n) {
    if (n > Room()) reserve(2 * (size() + n) + 512);
    return pos_;
  }
  void End(unsigned char* end) { pos_ = end; }
};

// A block in the making. Its length comes first, so the whole is settled before
// anything is written; but values of some length stay where they are until
// then, so that each is copied once.
class BlockWriter {
public:
  explicit BlockWriter(const QXBinaryIOHandlerBase& handler) : handler_(handler) {}

  // False when the whole block must be refused.
  bool Add(const QXBaseData& item);

  std::size_t Size() const { return bytes_.size() + longSize_; }
  void Write(qxostream& out) const;

private:
  static constexpr std::size_t Long = 512;  // what is cheaper to keep than to copy twice

  // A value that belongs behind the first `at` of the bytes.
  struct LongValue {
    std::size_t at;
    ValueBytes value;
    bool bits;  // of a vector of bool
  };

  bool AddHandled(std::string_view name, const void* record, std::size_t size);
  bool AddByFunctor(std::string_view name, const QXBaseData& item);
  void AddLong(ValueBytes value, bool bits) {
    long_.push_back({bytes_.size(), value, bits});
    longSize_ += value.size;
  }

  const QXBinaryIOHandlerBase& handler_;
  Buffer bytes_;  // the block but for its marks and the long values
  std::vector<LongValue> long_;
  std::size_t longSize_ = 0;               // of all of them
  std::forward_list<qxosstream> records_;  // what functors wrote
};

// The code to store an item's tag as, 0 for the long form. A name made from a
// code when it was read becomes that code again, whatever kind of value bears
// it; -1 for a number that is no code. "UnknownQXB" without a number, or with 0,
// is an ordinary name: a lone zero byte would be taken for the start of a long
// tag.
int ItemCode(std::string_view name) {
  if (!StartsWith(name, NumberedPrefix)) return ShortCode(name);
  const auto code = static_cast<signed char>(
      std::strtol(name.data() + NumberedPrefix.size(), nullptr, /*base=*/10));
  return std::max<int>(code, -1);
}

// Whether the name fits a tag that has `prefix` more bytes.
bool NameFits(std::string_view name, std::size_t prefix) {
  if (name.size() + prefix < QXBTagBufferSize) return true;
  QXThrow.Warning("data item '%.60s...' is not written: its name of %zu bytes is too long",
                  name.data(), name.size());
  return false;
}

bool BlockWriter::Add(const QXBaseData& item) {
  const std::string_view name = NameOfTag(item.GetTag());
  if (name.empty()) return true;

  const void* type = item.GetDataType();
  if (type == QXGetDataType<QXUnknownQXBData>()) {
    if (StartsWith(name, AttachedPrefix)) return true;
    const auto& kept = static_cast<const QXBaseDataT<QXUnknownQXBData>&>(item).GetValue().GetData();
    return AddHandled(name, kept.data(), kept.size());
  }
  const Codec* codec = FindCodec(type);
  if (!codec) return AddByFunctor(name, item);

  const ValueBytes value = codec->bytes(item);
  // Absence is how a false bool is stored, unless somebody writes it otherwise.
  if (type == QXGetDataType<bool>() && !*static_cast<const bool*>(value.data))
    return AddByFunctor(name, item);
  if (!NameFits(name, 0)) return true;
  const int code = ItemCode(name);
  if (code < 0) return false;

  const bool isLong = codec->shape == Shape::Bits || value.size > Long;
  unsigned char* at =
      bytes_.Begin(MaxTagSize(name) + 2 + MaxLengthBytes + (isLong ? 0 : value.size));
  at = StoreTag(at, static_cast<unsigned char>(code), name);
  *at++ = codec->code;
  if (codec->shape == Shape::Marked) *at++ = static_cast<unsigned char>(QXBShortEndian());
  if (codec->shape != Shape::Plain) at = StoreLength(at, value.size);
  if (!isLong) at = StoreBytes(at, value.data, value.size);
  bytes_.End(at);
  if (isLong) AddLong(value, codec->shape == Shape::Bits);
  return true;
}

bool BlockWriter::AddHandled(std::string_view name, const void* record, std::size_t size) {
  // A nested record without bytes would end the reading of the block.
  if (size == 0 || !NameFits(name, EnvelopePrefix.size())) return true;
  const int code = ItemCode(name);
  if (code < 0) return false;

  unsigned char* at =
      bytes_.Begin(2 * MaxTagSize(name) + EnvelopePrefix.size() + MaxLengthBytes + 2);
  at = StoreTag(at, static_cast<unsigned char>(code), name);
  *at++ = HandledCode;
  *at++ = 0;
  at = StoreLength(at, EnvelopePrefix.size() + name.size());
  at = StoreBytes(at, EnvelopePrefix.data(), EnvelopePrefix.size());
  at = StoreBytes(at, name.data(), name.size());
  *at++ = EnvelopeType;
  bytes_.End(StoreLength(at, size));
  AddLong({record, size}, /*bits=*/false);
  return true;
}

bool BlockWriter::AddByFunctor(std::string_view name, const QXBaseData& item) {
  for (QXIter<QXWriteFxn<QXBaseData>> fxn = handler_.GetBaseWriteFxns(); fxn; ++fxn) {
    if (fxn->GetType() != item.GetDataType()) continue;
    const QXNestingScope level;
    if (!level) return false;
    qxosstream& record = records_.emplace_front();
    if (!(*fxn)(record, item, handler_)) {
      // The text has carried the level's word from the beginning, so it shows
      // twice; programs look for it as it is.
      QXThrow.Warning("Warning: Failed to write QXBase data for tag %s.  Skipping...", name.data());
      records_.pop_front();
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
  std::size_t done = 0;
  for (const LongValue& next : long_) {
    out.write(bytes_.data() + done, next.at - done);
    done = next.at;
    if (next.bits)
      WriteBits(out, *static_cast<const std::vector<bool>*>(next.value.data));
    else
      out.write(static_cast<const unsigned char*>(next.value.data), next.value.size);
  }
  out.write(bytes_.data() + done, bytes_.size() - done);
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
  const std::vector<QXBaseData*>* items = QXBaseAccess::Items(object);
  if (!items) return true;
  BlockWriter block(handler);
  for (const QXBaseData* item : *items)
    if (!block.Add(*item)) return false;
  if (block.Size() == 0) return true;

  const std::size_t size = block.Size() + BlockMarks;
  if (!CheckRecord(tag, size)) return false;
  if (!tag.empty() && !(QXBWriteTag(out, tag.c_str()) && QXBWriteDataLength(out, size)))
    return false;
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
