#include <qxsystem/qxb/qxbrfxn.h>

#include <qxsystem/core/base_private.h>
#include <qxsystem/core/tagmap_private.h>
#include <qxsystem/qxb/qxb_private.h>
#include <qxsystem/qxb/qxbitem_private.h>

namespace QXSystem {
namespace {

// The name of what a tag names: a code without a name is known by its number,
// by which the writer finds it again, kept in `numbered`. Empty for what can
// name no item: a code above 127, or a long tag whose name is empty.
std::string_view ItemName(std::string_view name, unsigned char code, std::string& numbered) {
  if (!name.empty() || code == 0 || code > 127) return name;
  return numbered = std::string(NumberedPrefix) + std::to_string(code);
}

// Keeps a value that nobody can read in the object, under its name. An earlier
// one of that name gives way; a value of another type does not, and then this
// one stands behind it, so that nothing unread is lost.
void KeepUnread(QXBase& object, unsigned tag, QXUnknownQXBData kept) {
  QXBaseData* first = QXBaseAccess::FindData(object, tag);
  if (first && first->GetDataType() == QXGetDataType<QXUnknownQXBData>())
    static_cast<QXBaseDataT<QXUnknownQXBData>*>(first)->GetValue() = std::move(kept);
  else
    object.AddData<QXUnknownQXBData>(tag, std::move(kept));
}

// Reads the name that leads a handled value's body. A name with nothing behind
// it is the whole body of an empty value, so the end of the stream is no
// failure here.
bool ReadBodyName(qxisstream& in, unsigned& tag) {
  unsigned char code;
  std::string_view name;
  std::string numbered;
  if (ReadTag(in, name, code) == TagRead::None) return false;
  name = ItemName(name, code, numbered);
  if (name.empty()) return false;
  tag = TagOfName(name);
  return true;
}

// A value in its envelope, from its nested length on.
unsigned ReadHandled(BlockReader& block, const QXBinaryIOHandlerBase& handler) {
  unsigned long length;
  if (!ReadLength(block.in, QXBMaxLength, length)) return QXBReturn::IncorrectSize;
  const auto* bytes = reinterpret_cast<const char*>(block.in.take(length));
  if (!bytes) return QXBReturn::IncorrectSize;
  const QXNestingScope level;
  if (!level) return QXBReturn::CheckFailed;

  qxisstream nested;
  nested.set(bytes, length, /*copy=*/false);
  QXBHead functor;
  if (const unsigned status = functor.ReadFrom(nested)) return status;
  if (const auto* fxn = QXFindReadFxn<QXBase>(handler, functor.name.c_str()))
    return (*fxn)(nested, block.object, functor.length, handler);

  unsigned tag;
  if (!ReadBodyName(nested, tag)) return QXBReturn::IncorrectHandlerType;
  nested.seek(0);
  QXUnknownQXBData kept(nested, QXGetDataType<QXBase>(), length, functor.name.c_str(),
                        functor.code);
  if (!kept) return QXBReturn::IncorrectSize;  // no memory for its bytes
  KeepUnread(block.object, tag, std::move(kept));
  return QXBReturn::Success;
}

// One item, from its tag on.
unsigned ReadItem(BlockReader& block, const QXBinaryIOHandlerBase& handler) {
  unsigned char tagCode;
  if (ReadTag(block.in, block.name, tagCode) != TagRead::MoreFollows)
    return QXBReturn::ReadTagFailed;
  // The value of an item without a name is read all the same, then the walk
  // ends.
  block.name = ItemName(block.name, tagCode, block.numbered);
  const bool named = !block.name.empty();
  const auto typeCode = static_cast<unsigned char>(block.in.get());

  unsigned status = QXBReturn::Success;
  if (StartsWith(block.name, EnvelopePrefix)) {
    status = ReadHandled(block, handler);
  } else if (typeCode == HandledCode) {
    unsigned char envelopeCode;
    if (ReadTag(block.in, block.name, envelopeCode) != TagRead::MoreFollows ||
        block.in.get() != EnvelopeType)
      status = QXBReturn::ReadTagFailed;
    else
      status = ReadHandled(block, handler);
  } else if (const Codec* codec = FindCodec(typeCode)) {
    status = codec->read(block);
  }
  return named ? status : QXBReturn::ReadTagFailed;
}

}  // namespace

QXBPayload::QXBPayload(qxistream& in, unsigned long length) {
  const Bytes bytes = TakeBytes(in, length, owned_);
  stream_.set(reinterpret_cast<const char*>(bytes.data), bytes.size, /*copy=*/false);
  status_ = bytes.size == length ? QXBReturn::Success : QXBReturn::IncorrectSize;
}

QXBPayload::~QXBPayload() = default;

bool QXBPayload::ReadValueName(unsigned& tag) {
  return ReadBodyName(stream_, tag);
}

unsigned QXBReadQXBase(qxistream& in, QXBase& object, unsigned long length,
                       const QXBinaryIOHandlerBase& handler) {
  std::string owned;
  const Bytes bytes = TakeBytes(in, length, owned);
  if (bytes.size < length || length < 2) return QXBReturn::IncorrectSize;

  BlockReader block(object);
  block.in.set(reinterpret_cast<const char*>(bytes.data), bytes.size, /*copy=*/false);
  block.swapInt = QXBIntEndian(static_cast<unsigned>(block.in.get()));
  block.swapFloat = QXBFloatEndian(static_cast<unsigned>(block.in.get()));
  unsigned status = QXBReturn::Success;
  while (status == QXBReturn::Success && !block.in.eof()) status = ReadItem(block, handler);
  return status;
}

unsigned QXBReadPOD(qxistream& in, QXBase& object, unsigned long length) {
  return QXBReadQXBase(in, object, length, EmptyHandler());
}

}  // namespace QXSystem
