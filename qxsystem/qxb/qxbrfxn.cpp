#include <qxsystem/qxb/qxbrfxn.h>

#include <qxsystem/qxb/qxb_private.h>
#include <qxsystem/qxb/qxbitem_private.h>

namespace QXSystem {
namespace {

// Gives a code without a name the name that stands for it. False for what can
// name no item: a code above 127, or a long tag whose name is empty.
bool CompleteName(std::string& name, unsigned char code) {
  if (!name.empty()) return true;
  if (code == 0 || code > 127) return false;
  name = NumberedName(code);
  return true;
}

// Keeps a value that nobody can read in the object, under its name. An earlier
// one of that name gives way; a value of another type does not, and then this
// one stands behind it, so that nothing unread is lost.
void KeepUnread(QXBase& object, const std::string& name, QXUnknownQXBData kept) {
  const unsigned tag = QXGetTag(name);
  QXIter<QXBaseData> first = object.GetDataIter(tag);
  const bool taken = first && first->GetDataType() != QXGetDataType<QXUnknownQXBData>();
  if (taken)
    object.AddData<QXUnknownQXBData>(tag, std::move(kept));
  else
    object.SetData<QXUnknownQXBData>(tag, std::move(kept));
}

// Reads the name that leads a handled value's body. A name with nothing behind
// it is the whole body of an empty value, so the end of the stream is no
// failure here.
bool ReadBodyName(qxistream& in, std::string& name) {
  unsigned char code;
  return ReadTag(in, name, code) != TagRead::None && CompleteName(name, code);
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

  std::string name;
  if (!ReadBodyName(nested, name)) return QXBReturn::IncorrectHandlerType;
  nested.seek(0);
  KeepUnread(block.object, name,
             QXUnknownQXBData(nested, QXGetDataType<QXBase>(), length, functor.name.c_str(),
                              functor.code));
  return QXBReturn::Success;
}

// One item, from its tag on.
unsigned ReadItem(BlockReader& block, const QXBinaryIOHandlerBase& handler) {
  unsigned char tagCode;
  if (ReadTag(block.in, block.name, tagCode) != TagRead::MoreFollows)
    return QXBReturn::ReadTagFailed;
  // The value of an item without a name is read all the same, then the walk
  // ends.
  const bool named = CompleteName(block.name, tagCode);
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
  std::string name;
  if (!ReadBodyName(stream_, name)) return false;
  tag = QXGetTag(name);
  return true;
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
