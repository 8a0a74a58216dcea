#include <qxsystem/qxb/qxbrfxn.h>

#include <unordered_map>

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

// Finds the first item of a name in a list that grows while it is read. A few
// are looked for one by one; for more there is an index, since a walk for every
// unread value would take a time that is quadratic in the block.
class FirstItems {
public:
  explicit FirstItems(const QXBase& object) : object_(object) {}

  // The first item with `tag`; null if there is none, or if a functor has since
  // moved it elsewhere.
  QXBaseData* Find(unsigned tag) {
    if (walks_ < MaxWalks) {
      ++walks_;
      const QXIter<QXBaseData> item = object_.GetDataIter(tag);
      return item ? item.operator->() : nullptr;
    }
    QXIter<QXBaseData> item = object_.GetDataIter();
    for (item += seen_; item; ++item) positions_.emplace(item->GetTag(), seen_++);
    const auto found = positions_.find(tag);
    if (found == positions_.end()) return nullptr;
    item.ToFirst() += found->second;
    return item && item->GetTag() == tag ? item.operator->() : nullptr;
  }

private:
  static constexpr unsigned MaxWalks = 4;

  const QXBase& object_;
  unsigned walks_ = 0;
  unsigned seen_ = 0;                                 // items that positions_ knows of
  std::unordered_map<unsigned, unsigned> positions_;  // by tag
};

// Keeps a value that nobody can read in the object, under its name. An earlier
// one of that name gives way; a value of another type does not, and then this
// one stands behind it, so that nothing unread is lost.
void KeepUnread(QXBase& object, FirstItems& firsts, unsigned tag, QXUnknownQXBData kept) {
  QXBaseData* first = firsts.Find(tag);
  if (first && first->GetDataType() == QXGetDataType<QXUnknownQXBData>())
    static_cast<QXBaseDataT<QXUnknownQXBData>*>(first)->GetValue() = std::move(kept);
  else
    object.AddData<QXUnknownQXBData>(tag, std::move(kept));
}

// Reads the name that leads a handled value's body. A name with nothing behind
// it is the whole body of an empty value, so the end of the stream is no
// failure here.
bool ReadBodyName(qxistream& in, std::string& name) {
  unsigned char code;
  return ReadTag(in, name, code) != TagRead::None && CompleteName(name, code);
}

// A value in its envelope, from its nested length on.
unsigned ReadHandled(BlockReader& block, FirstItems& firsts, const QXBinaryIOHandlerBase& handler) {
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
  QXUnknownQXBData kept(nested, QXGetDataType<QXBase>(), length, functor.name.c_str(),
                        functor.code);
  if (!kept) return QXBReturn::IncorrectSize;  // no memory for its bytes
  KeepUnread(block.object, firsts, QXGetTag(name), std::move(kept));
  return QXBReturn::Success;
}

// One item, from its tag on.
unsigned ReadItem(BlockReader& block, FirstItems& firsts, const QXBinaryIOHandlerBase& handler) {
  unsigned char tagCode;
  if (ReadTag(block.in, block.name, tagCode) != TagRead::MoreFollows)
    return QXBReturn::ReadTagFailed;
  // The value of an item without a name is read all the same, then the walk
  // ends.
  const bool named = CompleteName(block.name, tagCode);
  const auto typeCode = static_cast<unsigned char>(block.in.get());

  unsigned status = QXBReturn::Success;
  if (StartsWith(block.name, EnvelopePrefix)) {
    status = ReadHandled(block, firsts, handler);
  } else if (typeCode == HandledCode) {
    unsigned char envelopeCode;
    if (ReadTag(block.in, block.name, envelopeCode) != TagRead::MoreFollows ||
        block.in.get() != EnvelopeType)
      status = QXBReturn::ReadTagFailed;
    else
      status = ReadHandled(block, firsts, handler);
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
  FirstItems firsts(object);
  unsigned status = QXBReturn::Success;
  while (status == QXBReturn::Success && !block.in.eof()) status = ReadItem(block, firsts, handler);
  return status;
}

unsigned QXBReadPOD(qxistream& in, QXBase& object, unsigned long length) {
  return QXBReadQXBase(in, object, length, EmptyHandler());
}

}  // namespace QXSystem
