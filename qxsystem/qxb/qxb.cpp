#include <qxsystem/qxb/qxb.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <new>

#include <qxsystem/core/error.h>
#include <qxsystem/qxb/qxb_private.h>

namespace QXSystem {
namespace {

// The short names by code; an empty one is a code without a name.
constexpr std::array<std::string_view, 57> ShortTags = {
    "",
    "QXBasePOD",
    "",
    "",
    "",
    "",
    "",
    "",
    "",
    "",
    "QXMolBase",
    "QXMCMolBase",
    "QXAtomPOD",
    "QXBondPOD",
    "QXConfPOD",
    "QXConfSDData",
    "QXMCMolCartConf",
    "QXMolAtomNames",
    "QXMolAtomTypes",
    "QXMolCT",
    "QXMolFloatCoord",
    "QXMolPartialCharge",
    "QXMolRadii",
    "QXMolResidue",
    "QXMolSDData",
    "QXMolTitle",
    "QXConfTitle",
    "MDLParity",
    "QXBondStereo",
    "QXMolComment",
    "QXConfEnergy",
    "QXBase",
    "QXMolDimension",
    "QXConfDimension",
    "zQXMCMolBase",
    "QXMolAtomIntType",
    "QXMolBondIntType",
    "QXMolRotor",
    "QXConfTorsion",
    "QXMCMolRotorCart",
    "QXMolEnergy",
    "QXStyleList",
    "QXStyleMap",
    "QXStyleAtomID",
    "QXStyleConfs",
    "QXStyleID",
    "QXMCMolCartConfHalfFloat",
    "QXMCMolCartConfDouble",
    "QXConfTorsionHalfFloat",
    "QXConfTorsionDouble",
    "QXConfTorsionCompressed",
    "QXConfTorsionHalfFloatCompressed",
    "QXConfTorsionDoubleCompressed",
    "QXContainer",
    "QXGroup",
    "zstdQXMCMolBase",
    "QXPrimarySubSearchScreen",
};

constexpr std::size_t LongestShortTag = 32;

// The codes that have names, ordered by the names' lengths: those of length n
// are codes[start[n]] up to codes[start[n + 1]].
struct CodesByLength {
  std::array<unsigned char, ShortTags.size()> codes{};
  std::array<unsigned char, LongestShortTag + 2> start{};
};

constexpr CodesByLength OrderByLength() {
  CodesByLength order;
  unsigned char used = 0;
  for (std::size_t length = 0; length <= LongestShortTag; ++length) {
    order.start[length] = used;
    for (std::size_t code = 1; length > 0 && code < ShortTags.size(); ++code)
      if (ShortTags[code].size() == length) order.codes[used++] = static_cast<unsigned char>(code);
  }
  order.start[LongestShortTag + 1] = used;
  return order;
}

constexpr CodesByLength byLength = OrderByLength();
static_assert(byLength.start[LongestShortTag + 1] == 48, "48 names have a code");

std::string_view ShortName(unsigned char code) {
  return code < ShortTags.size() ? ShortTags[code] : std::string_view();
}

// Gives `name`, or clears the whole of the caller's buffer for an empty one.
void StoreName(std::string_view name, char* buffer) {
  if (name.empty()) {
    std::memset(buffer, 0, QXBTagBufferSize);
    return;
  }
  std::memcpy(buffer, name.data(), name.size());
  buffer[name.size()] = '\0';
}

// Stores a tag of at most 1023 bytes.
bool PutTag(qxostream& out, unsigned char code, std::string_view name) {
  unsigned char bytes[QXBTagBufferSize + MaxLengthBytes];
  const auto size = static_cast<std::size_t>(StoreTag(bytes, code, name) - bytes);
  return out.write(bytes, size) == size;
}

}  // namespace

const char* QXGetQXBReturnString(unsigned int status) {
  static constexpr const char* texts[] = {
      "Success",        "No Parent Class",    "Check Failed",      "Stream Failed",
      "Incorrect Size", "Continue",           "Read Tag Failed",   "Corrupt Header",
      "End of File",    "Read Length Failed", "Type Check Failed", "Incorrect Handler Type"};
  return status < std::size(texts) ? texts[status] : "Unknown QXBReturn Error";
}

// ---- Tags ----

unsigned char FindShortCode(std::string_view name) {
  if (name.size() > LongestShortTag) return 0;
  for (unsigned at = byLength.start[name.size()]; at < byLength.start[name.size() + 1]; ++at)
    if (ShortTags[byLength.codes[at]] == name) return byLength.codes[at];
  return 0;
}

bool QXBWriteTag(qxostream& out, const char* tag) {
  const std::string_view name(tag ? tag : "");
  if (!IsTagName(name)) return false;
  return PutTag(out, ShortCode(name), name);
}

bool QXBWriteTag(qxostream& out, const char* tag, unsigned char code) {
  const std::string_view name(tag ? tag : "");
  if (name.size() >= QXBTagBufferSize) return false;
  return name.empty() ? out.put(code) : PutTag(out, code, name);
}

// Reads a tag up to its name, which has `length` bytes in the stream: none
// behind a code. False when there is no tag.
static bool ReadTagHead(qxistream& in, unsigned char& code, unsigned long& length) {
  length = 0;
  const int byte = in.get();
  if (byte < 0) return false;
  code = static_cast<unsigned char>(byte);
  if (code != 0) return true;
  if (in.eof()) return false;
  ReadLength(in, QXBMaxLength, length);
  if (length != 0 && length < QXBTagBufferSize) return true;
  QXThrow.Warning("error occurred while reading tag in QXBinary file (len = %d)",
                  static_cast<int>(length));
  return false;
}

static TagRead TagEnd(qxistream& in) {
  return in.eof() ? TagRead::AtEnd : TagRead::MoreFollows;
}

// Names are C strings to everyone who gets them, so a zero ends one.
TagRead ReadTag(qxistream& in, std::string& name, unsigned char& code) {
  name.clear();
  unsigned long length;
  if (!ReadTagHead(in, code, length)) return TagRead::None;
  if (code != 0) {
    name = ShortName(code);
  } else if (in.read(name, length) == length) {
    name.resize(std::strlen(name.c_str()));
  } else {
    name.clear();
    return TagRead::None;
  }
  return TagEnd(in);
}

TagRead ReadTag(qxisstream& in, std::string_view& name, unsigned char& code) {
  name = {};
  unsigned long length;
  if (!ReadTagHead(in, code, length)) return TagRead::None;
  if (code != 0) {
    name = ShortName(code);
  } else if (const auto* text = reinterpret_cast<const char*>(in.take(length))) {
    name = {text, strnlen(text, length)};
  } else {
    return TagRead::None;
  }
  return TagEnd(in);
}

bool QXBReadTag(qxistream& in, char* tag, unsigned char& code) {
  // A code that is the last byte is reported with the name left alone.
  const int first = in.peek();
  if (first >= 0 && in.peek(1) < 0) {
    code = static_cast<unsigned char>(in.get());
    return false;
  }
  std::string name;
  const TagRead result = ReadTag(in, name, code);
  if (result == TagRead::None)
    tag[0] = '\0';
  else
    StoreName(name, tag);
  return result == TagRead::MoreFollows;
}

bool QXBReadTag(qxistream& in, char* tag) {
  unsigned char code;
  return QXBReadTag(in, tag, code);
}

bool QXBPeekTag(qxistream& in, char* tag, unsigned char& code) {
  const int byte = in.peek();
  if (byte < 0) return false;
  code = static_cast<unsigned char>(byte);
  StoreName(ShortName(code), tag);
  return true;
}

bool QXBPeekTag(qxistream& in, char* tag) {
  unsigned char code;
  return QXBPeekTag(in, tag, code);
}

bool QXIsInternalQXBTag(const char* tag, unsigned long length) {
  return tag && ShortCode(std::string_view(tag, length)) != 0;
}

// ---- Lengths ----

unsigned int QXBDataLengthBytes(unsigned long length) {
  unsigned int bytes = 1;
  for (; length > 0x7F; length >>= 7) ++bytes;
  return bytes;
}

unsigned int QXBDataLengthBytes(unsigned int length) {
  return QXBDataLengthBytes(static_cast<unsigned long>(length));
}

bool QXBWriteDataLength(qxostream& out, unsigned long length) {
  unsigned char bytes[MaxLengthBytes];
  const auto used = static_cast<std::size_t>(StoreLength(bytes, length) - bytes);
  return out.write(bytes, used) == used;
}

bool QXBWriteDataLength(qxostream& out, unsigned int length) {
  return QXBWriteDataLength(out, static_cast<unsigned long>(length));
}

bool ReadLength(qxistream& in, unsigned long max, unsigned long& value) {
  value = 0;
  unsigned long sum = 0;
  bool beyond = false;  // bits above the 64 that we can hold
  for (unsigned i = 0; i < MaxLengthBytes; ++i) {
    const int byte = in.get();
    if (byte < 0) {
      QXThrow.Warning("end of file reached in QXBReadDataLength(QXPlatform::qxistream &)");
      return false;
    }
    const auto group = static_cast<unsigned long>(byte & 0x7F);
    sum |= group << (7 * i);
    beyond = i == MaxLengthBytes - 1 && group > 1;
    if ((byte & 0x80) == 0) continue;
    if (beyond || sum > max) break;
    value = sum;
    return true;
  }
  QXThrow.Warning("data size corrupt in QXBinary file");
  return false;
}

unsigned long QXBReadDataLength(qxistream& in, unsigned long max) {
  unsigned long value;
  ReadLength(in, max, value);
  return value;
}

// ---- Records ----

unsigned QXBHead::ReadFrom(qxistream& in) {
  if (ReadTag(in, name, code) != TagRead::MoreFollows || (name.empty() && code == 0))
    return QXBReturn::ReadTagFailed;
  length = QXBReadDataLength(in, QXBMaxLength);
  if (length == 0) return in.eof() ? QXBReturn::EndOfFile : QXBReturn::ReadLengthFailed;
  return QXBReturn::Success;
}

unsigned int QXBinarySkip(qxistream& in) {
  QXBHead head;
  if (const unsigned status = head.ReadFrom(in)) return status;
  in.skip(static_cast<long>(head.length));
  return QXBReturn::Success;
}

// The end is looked for before each record: what ends inside a tag is damage.
unsigned int QXBinaryCount(qxistream& in, unsigned int& count) {
  for (count = 0; !in.eof(); ++count)
    if (const unsigned status = QXBinarySkip(in)) return status;
  return QXBReturn::Success;
}

Bytes TakeBytes(qxistream& in, unsigned long length, std::string& owned) {
  if (length > PTRDIFF_MAX) throw std::bad_alloc();
  if (const unsigned char* data = in.take(length)) return {data, length};
  in.read(owned, length);
  return {reinterpret_cast<const unsigned char*>(owned.data()), owned.size()};
}

// ---- Byte order ----

namespace {

constexpr unsigned IntMark = 1;
constexpr unsigned FloatMark = 63;
constexpr unsigned ShortMark = 1;
constexpr unsigned FPosTMark = 1;

static_assert(__BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__, "the marks are those of such a host");

bool Differs(unsigned mark, unsigned host) {
  return (mark & 0xFF) != host;
}

template <class T>
struct Family;
template <unsigned Mark>
struct FamilyOf {
  static constexpr unsigned mark = Mark;
};
template <>
struct Family<int> : FamilyOf<IntMark> {};
template <>
struct Family<unsigned int> : FamilyOf<IntMark> {};
template <>
struct Family<float> : FamilyOf<FloatMark> {};
template <>
struct Family<double> : FamilyOf<FloatMark> {};
template <>
struct Family<short> : FamilyOf<ShortMark> {};
template <>
struct Family<unsigned short> : FamilyOf<ShortMark> {};
template <>
struct Family<long> : FamilyOf<FPosTMark> {};
template <>
struct Family<QXPlatform::QXHalfFloat> : FamilyOf<ShortMark> {};

}  // namespace

unsigned int QXBIntEndian() {
  return IntMark;
}
unsigned int QXBFloatEndian() {
  return FloatMark;
}
unsigned int QXBShortEndian() {
  return ShortMark;
}
unsigned int QXBFPosTEndian() {
  return FPosTMark;
}

bool QXBIntEndian(unsigned int mark) {
  return Differs(mark, IntMark);
}
bool QXBFloatEndian(unsigned int mark) {
  return Differs(mark, FloatMark);
}
bool QXBShortEndian(unsigned int mark) {
  return Differs(mark, ShortMark);
}
bool QXBFPosTEndian(unsigned int mark) {
  return Differs(mark, FPosTMark);
}

bool QXIsIntLittleEndian() {
  return true;
}
bool QXIsFloatLittleEndian() {
  return true;
}
bool QXIsShortLittleEndian() {
  return true;
}
bool QXIsFPosTLittleEndian() {
  return true;
}

bool QXIsIntByteSwapRequired(bool fileIsLittleEndian) {
  return !fileIsLittleEndian;
}
bool QXIsFloatByteSwapRequired(bool fileIsLittleEndian) {
  return !fileIsLittleEndian;
}
bool QXIsShortByteSwapRequired(bool fileIsLittleEndian) {
  return !fileIsLittleEndian;
}
bool QXIsFPosTByteSwapRequired(bool fileIsLittleEndian) {
  return !fileIsLittleEndian;
}

template <class T>
unsigned char QXGetHostEndian() {
  return Family<T>::mark;
}
template <class T>
bool QXGetFileEndian(unsigned int mark) {
  return Differs(mark, Family<T>::mark);
}
template <class T>
bool QXIsLittleEndian() {
  return true;
}
template <class T>
bool QXIsByteSwapRequired(bool fileIsLittleEndian) {
  return !fileIsLittleEndian;
}
QX_INSTANTIATE_ENDIANS(template);

// ---- Unknown records ----

template class QXBaseDataT<QXUnknownQXBData>;

QXUnknownQXBData::QXUnknownQXBData() = default;

QXUnknownQXBData::QXUnknownQXBData(qxistream& in, const void* type, unsigned long size,
                                   const char* tag, unsigned char code)
    : type_(type), tag_(tag ? tag : ""), code_(code) {
  try {
    std::string owned;
    const Bytes bytes = TakeBytes(in, size, owned);
    if (bytes.size == size) data_.assign(bytes.data, bytes.data + bytes.size);
  } catch (const std::bad_alloc&) {
    data_.clear();
  }
}

const char* QXUnknownQXBDataTagName() {
  return "QXUnknownQXBData";
}

void QXAttachData(QXUnknownQXBData&& record, QXBase* object) {
  if (object) object->AddData<QXUnknownQXBData>(QXUnknownQXBDataTagName(), std::move(record));
}

void QXAttachData(const QXUnknownQXBData& record, QXBase* object) {
  QXAttachData(QXUnknownQXBData(record), object);
}

void QXAttachData(const QXUnknownQXBData& record, QXBase& object) {
  QXAttachData(QXUnknownQXBData(record), &object);
}

void QXAttachData(const QXUnknownQXBData&, ...) {}

bool QXBWriteUnknown(qxostream& out, const QXUnknownQXBData& record) {
  const bool tagged = record.GetCode() != 0 || !record.GetTag().empty();
  return record && tagged && QXBWriteTag(out, record.GetTag().c_str(), record.GetCode()) &&
         QXBWriteDataLength(out, record.GetData().size()) &&
         out.write(record.GetData().data(), record.GetData().size()) == record.GetData().size();
}

}  // namespace QXSystem
