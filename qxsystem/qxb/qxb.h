// The binary object format: tags, lengths, byte-order marks, stepping over
// records, and the record that keeps what nobody here understands.
//
// A stream is a series of records (tag, length, payload) from its first byte to
// its last. docs/qxb-format.md has the whole layout.
#pragma once

#include <string>
#include <vector>

#include <qxsystem/core/base.h>
#include <qxsystem/core/export.h>
#include <qxsystem/platform/istream.h>
#include <qxsystem/platform/ostream.h>

namespace QXSystem {

using QXPlatform::qxisstream;
using QXPlatform::qxistream;
using QXPlatform::qxosstream;
using QXPlatform::qxostream;

/// What a read answers.
namespace QXBReturn {
constexpr unsigned Success = 0;
constexpr unsigned NoParentClass = 1;
constexpr unsigned CheckFailed = 2;  ///< also: nested deeper than QXMaxNesting
constexpr unsigned StreamFailed = 3;
constexpr unsigned IncorrectSize = 4;
constexpr unsigned Continue = 5;
constexpr unsigned ReadTagFailed = 6;
constexpr unsigned CorruptHeader = 7;
constexpr unsigned EndOfFile = 8;
constexpr unsigned ReadLengthFailed = 9;
constexpr unsigned TypeCheckFailed = 10;
constexpr unsigned IncorrectHandlerType = 11;
}  // namespace QXBReturn

/// The text of a status, such as "Read Tag Failed".
QXSYSTEM_API const char* QXGetQXBReturnString(unsigned int status);

/// Room that a caller gives for a tag's name, its terminating zero included. A
/// name has at most one byte less.
constexpr unsigned QXBTagBufferSize = 1024;

/// Largest length that a reader accepts.
constexpr unsigned long QXBMaxLength = 0xFFFFFFFF;

/// Stores a tag: one byte when the name is one of the 48 short ones, else a
/// zero byte, the name's length and the name. False, with nothing written, for
/// a null or empty name and for one of 1024 bytes or more; false too when the
/// target refuses bytes.
QXSYSTEM_API bool QXBWriteTag(qxostream& out, const char* tag);

/// Stores a tag with the code as given: only the code byte when it is not 0 or
/// the name is empty, else also the name's length and the name. False for a
/// name over 1023 bytes, with nothing written, and when the target refuses
/// bytes.
QXSYSTEM_API bool QXBWriteTag(qxostream& out, const char* tag, unsigned char code);

/// Consumes a tag and gives its name and its code byte, 0 for a long tag. A
/// code without a name clears the whole buffer `tag` of 1024 bytes.
///
/// False when the stream ends before, in or right behind the tag, since a tag
/// is always followed by something; a code that is the stream's last byte is
/// reported, and the name untouched. A name of no or of 1024 bytes and more is
/// told as a warning, and false.
QXSYSTEM_API bool QXBReadTag(qxistream& in, char* tag, unsigned char& code);
QXSYSTEM_API bool QXBReadTag(qxistream& in, char* tag);

/// Looks at the next byte and consumes nothing: gives it as the code, and the
/// short name it stands for. Any other code, 0 for a long tag too, clears the
/// whole buffer `tag` of 1024 bytes. False at the end of the stream.
QXSYSTEM_API bool QXBPeekTag(qxistream& in, char* tag, unsigned char& code);
QXSYSTEM_API bool QXBPeekTag(qxistream& in, char* tag);

/// Whether the first `length` bytes of `tag` are exactly one of the short
/// names.
QXSYSTEM_API bool QXIsInternalQXBTag(const char* tag, unsigned long length);

/// Stores a length: seven bits a byte, least significant first, the high bit
/// set on the last byte. False when the target refuses bytes.
QXSYSTEM_API bool QXBWriteDataLength(qxostream& out, unsigned int length);
QXSYSTEM_API bool QXBWriteDataLength(qxostream& out, unsigned long length);

/// Reads a length. 0, with a warning, when the stream ends in it, when no end
/// comes within ten bytes, or when it is above `max`; 0 also for a stored 0.
QXSYSTEM_API unsigned long QXBReadDataLength(qxistream& in, unsigned long max);

/// The number of bytes that a length takes: up to 5, up to 10.
QXSYSTEM_API unsigned int QXBDataLengthBytes(unsigned int length);
QXSYSTEM_API unsigned int QXBDataLengthBytes(unsigned long length);

/// The tag and length in front of every record.
struct QXSYSTEM_API QXBHead {
  std::string name;
  unsigned char code = 0;  ///< 0 for a long tag
  unsigned long length = 0;

  /// Consumes both. Success; ReadTagFailed for no tag, or one without name and
  /// code; for a length of 0 or one that cannot be read EndOfFile when the
  /// stream ends with it, else ReadLengthFailed.
  unsigned ReadFrom(qxistream& in);
};

/// Steps over one record. ReadTagFailed at the end of the stream or for a tag
/// that cannot be read; ReadLengthFailed for a length of 0, EndOfFile when the
/// stream ends with it. A payload that is cut short is stepped over.
QXSYSTEM_API unsigned int QXBinarySkip(qxistream& in);

/// Counts the records up to the end of the stream. At damage the status tells
/// what it was, and `count` the records passed before it.
QXSYSTEM_API unsigned int QXBinaryCount(qxistream& in, unsigned int& count);

/// This host's byte-order marks, by family of numbers. Numbers are stored in
/// the order of the host that writes, behind these marks.
QXSYSTEM_API unsigned int QXBIntEndian();    ///< int, unsigned int
QXSYSTEM_API unsigned int QXBFloatEndian();  ///< float, double
QXSYSTEM_API unsigned int QXBShortEndian();  ///< short, unsigned short, QXHalfFloat
QXSYSTEM_API unsigned int QXBFPosTEndian();  ///< long

/// Whether numbers behind this mark must be swapped: its low byte is not
/// exactly this host's mark.
QXSYSTEM_API bool QXBIntEndian(unsigned int mark);
QXSYSTEM_API bool QXBFloatEndian(unsigned int mark);
QXSYSTEM_API bool QXBShortEndian(unsigned int mark);
QXSYSTEM_API bool QXBFPosTEndian(unsigned int mark);

/// Whether this host stores such numbers with the least significant byte
/// first.
QXSYSTEM_API bool QXIsIntLittleEndian();
QXSYSTEM_API bool QXIsFloatLittleEndian();
QXSYSTEM_API bool QXIsShortLittleEndian();
QXSYSTEM_API bool QXIsFPosTLittleEndian();

/// Whether numbers of a file of the given order must be swapped on this host.
QXSYSTEM_API bool QXIsIntByteSwapRequired(bool fileIsLittleEndian);
QXSYSTEM_API bool QXIsFloatByteSwapRequired(bool fileIsLittleEndian);
QXSYSTEM_API bool QXIsShortByteSwapRequired(bool fileIsLittleEndian);
QXSYSTEM_API bool QXIsFPosTByteSwapRequired(bool fileIsLittleEndian);

/// The same questions by type: int, unsigned int, float, double, short,
/// unsigned short, long, QXHalfFloat.
template <class T>
unsigned char QXGetHostEndian();
template <class T>
bool QXGetFileEndian(unsigned int mark);
template <class T>
bool QXIsLittleEndian();
template <class T>
bool QXIsByteSwapRequired(bool fileIsLittleEndian);

#define QX_INSTANTIATE_ENDIAN(prefix, T)                          \
  prefix QXSYSTEM_API unsigned char QXGetHostEndian<T>();         \
  prefix QXSYSTEM_API bool QXGetFileEndian<T>(unsigned int mark); \
  prefix QXSYSTEM_API bool QXIsLittleEndian<T>();                 \
  prefix QXSYSTEM_API bool QXIsByteSwapRequired<T>(bool fileIsLittleEndian)
#define QX_INSTANTIATE_ENDIANS(prefix)           \
  QX_INSTANTIATE_ENDIAN(prefix, int);            \
  QX_INSTANTIATE_ENDIAN(prefix, unsigned int);   \
  QX_INSTANTIATE_ENDIAN(prefix, float);          \
  QX_INSTANTIATE_ENDIAN(prefix, double);         \
  QX_INSTANTIATE_ENDIAN(prefix, short);          \
  QX_INSTANTIATE_ENDIAN(prefix, unsigned short); \
  QX_INSTANTIATE_ENDIAN(prefix, long);           \
  QX_INSTANTIATE_ENDIAN(prefix, QXPlatform::QXHalfFloat)
QX_INSTANTIATE_ENDIANS(extern template);

/// The kept bytes of a record that no reader here claimed, so that they can be
/// written back unchanged.
///
/// There are two kinds. Of a record of a stream the bytes are the payload
/// alone, its head is in tag and code; it hangs on the object it came with
/// under QXUnknownQXBDataTagName(), and QXBWriteUnknown stores it again. Of a
/// value inside a generic data block they are the whole nested record, head
/// included; it lies in the object under the value's own name, and
/// QXBWriteQXBase stores it again with the object's other values.
class QXSYSTEM_API QXUnknownQXBData {
public:
  QXUnknownQXBData();

  /// Reads `size` bytes from `in`. If fewer arrive, or memory runs out, the
  /// object stays without bytes and converts to false.
  QXUnknownQXBData(qxistream& in, const void* type, unsigned long size, const char* tag,
                   unsigned char code);

  /// Whether there are bytes.
  explicit operator bool() const { return !data_.empty(); }

  const std::vector<unsigned char>& GetData() const { return data_; }

  /// The identity of the type of the object that the record belonged to.
  const void* GetType() const { return type_; }

  /// The record's tag.
  const std::string& GetTag() const { return tag_; }

  /// The code byte that came with the tag, 0 for the long form.
  unsigned char GetCode() const { return code_; }

private:
  std::vector<unsigned char> data_;
  const void* type_ = nullptr;
  std::string tag_;
  unsigned char code_ = 0;
};

/// The name under which unknown records of a stream are attached,
/// "QXUnknownQXBData".
QXSYSTEM_API const char* QXUnknownQXBDataTagName();

/// Appends a copy of `record` to the object's data, behind any attached before.
/// Nothing happens for a null pointer or an object that is no QXBase.
QXSYSTEM_API void QXAttachData(const QXUnknownQXBData& record, QXBase& object);
QXSYSTEM_API void QXAttachData(const QXUnknownQXBData& record, QXBase* object);
QXSYSTEM_API void QXAttachData(const QXUnknownQXBData& record, ...);

/// The same without a copy: the bytes move into the object.
QXSYSTEM_API void QXAttachData(QXUnknownQXBData&& record, QXBase* object);

/// Writes an attached record back as it was: tag in the form it came in,
/// length, payload. False, with nothing written, for one without bytes or
/// without a tag, which would read as damage; false too when the target refuses
/// bytes.
///
/// Attached records are no part of their object's data block; a program that
/// passes objects on writes them itself:
///
///     for (QXIter<QXBaseData> it = object.GetDataIter(QXUnknownQXBDataTagName()); it; ++it)
///       if (it->GetDataType() == QXGetDataType<QXUnknownQXBData>())
///         QXBWriteUnknown(out, static_cast<QXBaseDataT<QXUnknownQXBData>&>(*it).GetValue());
QXSYSTEM_API bool QXBWriteUnknown(qxostream& out, const QXUnknownQXBData& record);

extern template class QXBaseDataT<QXUnknownQXBData>;

}  // namespace QXSystem
