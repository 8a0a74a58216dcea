// The primitive encodings of the record format, written to and read from
// memory. docs/record-format.md has their bytes.
//
// Integers take one byte from 0 to 127 and as few as they can otherwise. In the
// place of an integer, a text, a blob, a bool or a float there may be a mark for
// none.
#pragma once

#include <string>
#include <vector>

#include <qxsystem/core/export.h>
#include <qxsystem/records/types.h>

namespace QXDataFlow {

/// Collects encoded values, the payload of a section: a tag, a length and that
/// many bytes.
class QXSYSTEM_API QXWriteBuffer {
public:
  QXWriteBuffer() = default;
  explicit QXWriteBuffer(const std::string& tag);

  /// Append a value. An unsigned number above the largest signed one is written
  /// as the negative number with its bits.
  void WriteInt(long value);
  void WriteInt(int value) { WriteInt(long{value}); }
  void WriteInt(unsigned value) { WriteInt(long{value}); }
  void WriteInt(unsigned long value) { WriteInt(static_cast<long>(value)); }
  void WriteFloat(double value);
  void WriteBool(bool value);
  void WriteString(const std::string& value);
  void WriteBlob(const QXBytes& value);

  /// Append the number of elements, then each.
  void WriteIntVec(const std::vector<long>& values);
  void WriteIntVec(const std::vector<int>& values);
  void WriteIntVec(const std::vector<unsigned>& values);
  void WriteFloatVec(const std::vector<double>& values);
  void WriteFloatVec(const std::vector<float>& values);
  void WriteBoolVec(const std::vector<bool>& values);
  void WriteStringVec(const std::vector<std::string>& values);

  /// Append the mark that stands for no value.
  void WriteNoneInt();
  void WriteNoneString();
  void WriteNoneFloat();
  void WriteNoneBool();
  void WriteNoneBlob();

  /// The operation for the type, which is `long`, `double` or `std::string`.
  template <class T>
  void Write(const T& value);

  /// Append bytes as they are; of `other` the payload.
  void Append(const QXBytes& bytes);
  void Append(const QXWriteBuffer& other);

  /// The payload.
  const QXBytes& Get() const { return bytes_; }

  /// Forgets the payload; the tag stays.
  void Clear() { bytes_.clear(); }

  /// About the size of the section, for reserving: too small by a few bytes
  /// where the length of tag or payload takes more than one.
  unsigned long WrappedSize() const { return bytes_.size() + tag_.size() + !tag_.empty(); }

  /// Appends the section to `target`, which may be this buffer. With an empty
  /// payload nothing, unless `force`.
  void CopyWrapped(QXWriteBuffer& target, bool force = false) const;
  void CopyWrapped(QXBytes& target, bool force = false) const;

private:
  QXBytes bytes_;
  std::string tag_;
};

/// Reads encoded values from bytes that it does not own: they must stay where
/// they are while it is used, so never make one of a temporary.
///
/// No read passes the end. A value that is cut off there reads as none, and
/// leaves the buffer at its end. A text or blob that claims more bytes than
/// there are throws std::length_error.
class QXSYSTEM_API QXReadBuffer {
public:
  /// What `ReadLength` gives for a length that cannot be.
  static constexpr unsigned long BadLength = ~0UL;

  /// A buffer without bytes.
  QXReadBuffer() = default;
  explicit QXReadBuffer(const QXBytes& bytes);

  /// Read a value; `isNone` tells whether the mark for none was there, which
  /// gives 0, "", false or no bytes.
  ///
  /// Of an integer's prefix, which is followed by up to eight bytes, any other
  /// number of bytes means none. Every byte but that mark is a bool.
  long ReadInt(bool& isNone);
  long ReadInt();
  double ReadFloat(bool& isNone);
  double ReadFloat();
  bool ReadBool(bool& isNone);
  bool ReadBool();
  QXBytes ReadBlob(bool& isNone);
  QXBytes ReadBlob();

  /// A text longer than `maxLength`, unless that is 0, reads as none, and its
  /// bytes stay unread.
  std::string ReadString(bool& isNone, unsigned long maxLength = 0);
  std::string ReadString(unsigned long maxLength = 0);

  /// Reads the length of what follows; `BadLength` where it is above 2^43 or
  /// above the number of bytes left.
  unsigned long ReadLength(bool& isNone);
  unsigned long ReadLength();

  /// The operation for the type, which is `long`, `double`, `std::string` or
  /// `bool`.
  template <class T>
  T Read();

  /// The bytes of one value as they stand, not decoded; none where it is cut
  /// off. T is `long`, `double` or `std::string`.
  ///
  /// Of an integer as many bytes are taken as its prefix says, whether it is
  /// one or not.
  template <class T>
  QXBytes ReadRawBytes();

  /// Whether bytes are left.
  bool IsValid() const { return current_ != nullptr && current_ < end_; }

  /// Steps over a section and gives its tag and its payload, in the same bytes
  /// as this buffer. False where there is none: the tag has more than 16 bytes,
  /// or tag or payload is cut off. The buffer then is left somewhere behind
  /// where it was.
  bool Unwrap(std::string& tag, QXReadBuffer& content);

  /// The bytes of a section as they stand, tag and length included; none for
  /// the mark for none, and for a section that is cut off.
  QXBytes ReadContainer();

private:
  template <class Step>
  bool Advance(Step step);
  const unsigned char* TakeText(unsigned long& length, bool& isNone, unsigned long maxLength);
  template <class Step>
  QXBytes Raw(Step step);

  const unsigned char* current_ = nullptr;  // null in a buffer without bytes
  const unsigned char* end_ = nullptr;
};

template <>
QXSYSTEM_API void QXWriteBuffer::Write(const long& value);
template <>
QXSYSTEM_API void QXWriteBuffer::Write(const double& value);
template <>
QXSYSTEM_API void QXWriteBuffer::Write(const std::string& value);

template <>
QXSYSTEM_API long QXReadBuffer::Read();
template <>
QXSYSTEM_API double QXReadBuffer::Read();
template <>
QXSYSTEM_API std::string QXReadBuffer::Read();
template <>
QXSYSTEM_API bool QXReadBuffer::Read();

template <>
QXSYSTEM_API QXBytes QXReadBuffer::ReadRawBytes<long>();
template <>
QXSYSTEM_API QXBytes QXReadBuffer::ReadRawBytes<double>();
template <>
QXSYSTEM_API QXBytes QXReadBuffer::ReadRawBytes<std::string>();

}  // namespace QXDataFlow
