#include <qxsystem/records/recordbuffer.h>

#include <qxsystem/records/codec_private.h>

namespace QXDataFlow {

// ---- Writing ----

QXWriteBuffer::QXWriteBuffer(const std::string& tag) : tag_(tag) {}

void QXWriteBuffer::WriteInt(long value) {
  StoreInt(Grow(bytes_, IntSize(value)), value);
}
void QXWriteBuffer::WriteFloat(double value) {
  StoreBits(Grow(bytes_, sizeof value), value);
}
void QXWriteBuffer::WriteBool(bool value) {
  bytes_.push_back(value ? 1 : 0);
}
void QXWriteBuffer::WriteString(const std::string& value) {
  StoreText(Grow(bytes_, TextSize(value.size())), value);
}
void QXWriteBuffer::WriteBlob(const QXBytes& value) {
  StoreText(Grow(bytes_, TextSize(value.size())), value.data(), value.size());
}

void QXWriteBuffer::WriteIntVec(const std::vector<long>& values) {
  AppendVector<long>(bytes_, values);
}
void QXWriteBuffer::WriteIntVec(const std::vector<int>& values) {
  AppendVector<long>(bytes_, values);
}
void QXWriteBuffer::WriteIntVec(const std::vector<unsigned>& values) {
  AppendVector<long>(bytes_, values);
}
void QXWriteBuffer::WriteFloatVec(const std::vector<double>& values) {
  AppendVector<double>(bytes_, values);
}
void QXWriteBuffer::WriteFloatVec(const std::vector<float>& values) {
  AppendVector<double>(bytes_, values);
}
void QXWriteBuffer::WriteBoolVec(const std::vector<bool>& values) {
  AppendVector<bool>(bytes_, values);
}
void QXWriteBuffer::WriteStringVec(const std::vector<std::string>& values) {
  AppendVector<std::string>(bytes_, values);
}

void QXWriteBuffer::WriteNoneInt() {
  bytes_.push_back(NoneByte);
}
void QXWriteBuffer::WriteNoneString() {
  bytes_.push_back(NoneByte);
}
void QXWriteBuffer::WriteNoneFloat() {
  StoreBits(Grow(bytes_, sizeof NoneFloat), NoneFloat);
}
void QXWriteBuffer::WriteNoneBool() {
  bytes_.push_back(NoneByte);
}
void QXWriteBuffer::WriteNoneBlob() {
  bytes_.push_back(NoneByte);
}

template <>
void QXWriteBuffer::Write(const long& value) {
  WriteInt(value);
}
template <>
void QXWriteBuffer::Write(const double& value) {
  WriteFloat(value);
}
template <>
void QXWriteBuffer::Write(const std::string& value) {
  WriteString(value);
}

void QXWriteBuffer::Append(const QXBytes& bytes) {
  const std::size_t size = bytes.size();  // `bytes` may be our own, which Grow moves
  unsigned char* at = Grow(bytes_, size);
  StoreBytes(at, bytes.data(), size);
}
void QXWriteBuffer::Append(const QXWriteBuffer& other) {
  Append(other.bytes_);
}

void QXWriteBuffer::CopyWrapped(QXWriteBuffer& target, bool force) const {
  CopyWrapped(target.bytes_, force);
}
void QXWriteBuffer::CopyWrapped(QXBytes& target, bool force) const {
  const std::size_t size = bytes_.size();  // `target` may be our own, which Grow moves
  if (size == 0 && !force) return;
  unsigned char* at = Grow(target, SectionSize(tag_, size));
  StoreBytes(StoreSectionHead(at, tag_, size), bytes_.data(), size);
}

// ---- Reading ----

QXReadBuffer::QXReadBuffer(const QXBytes& bytes)
    : current_(bytes.data()), end_(bytes.data() + bytes.size()) {}

// Calls `step` with a cursor over what is left and moves behind what it read, or
// to the end where it answers false.
template <class Step>
bool QXReadBuffer::Advance(Step step) {
  Cursor from(current_, end_);
  const bool complete = step(from);
  current_ = complete ? from.At() : end_;
  return complete;
}

long QXReadBuffer::ReadInt(bool& isNone) {
  long value;
  if (Advance([&](Cursor& from) { return from.Int(value, isNone); })) return value;
  isNone = true;
  return 0;
}
long QXReadBuffer::ReadInt() {
  bool isNone;
  return ReadInt(isNone);
}

double QXReadBuffer::ReadFloat(bool& isNone) {
  double value;
  if (Advance([&](Cursor& from) { return from.Float(value, isNone); })) return value;
  isNone = true;
  return 0.0;
}
double QXReadBuffer::ReadFloat() {
  bool isNone;
  return ReadFloat(isNone);
}

bool QXReadBuffer::ReadBool(bool& isNone) {
  bool value;
  if (Advance([&](Cursor& from) { return from.Bool(value, isNone); })) return value;
  isNone = true;
  return false;
}
bool QXReadBuffer::ReadBool() {
  bool isNone;
  return ReadBool(isNone);
}

unsigned long QXReadBuffer::ReadLength(bool& isNone) {
  std::size_t length;
  if (Advance([&](Cursor& from) { return from.Length(length, isNone); })) return length;
  isNone = true;
  return 0;
}
unsigned long QXReadBuffer::ReadLength() {
  bool isNone;
  return ReadLength(isNone);
}

// The bytes of a text or blob; null for none.
const unsigned char* QXReadBuffer::TakeText(unsigned long& length, bool& isNone,
                                            unsigned long maxLength) {
  length = ReadLength(isNone);
  isNone = isNone || (maxLength != 0 && length > maxLength);
  if (isNone) length = 0;
  if (length == BadLength) ThrowBadLength();
  const unsigned char* bytes = current_;
  current_ += length;
  return bytes;
}

QXBytes QXReadBuffer::ReadBlob(bool& isNone) {
  unsigned long length;
  const unsigned char* bytes = TakeText(length, isNone, 0);
  return {bytes, bytes + length};
}
QXBytes QXReadBuffer::ReadBlob() {
  bool isNone;
  return ReadBlob(isNone);
}

std::string QXReadBuffer::ReadString(bool& isNone, unsigned long maxLength) {
  unsigned long length;
  const unsigned char* bytes = TakeText(length, isNone, maxLength);
  return {reinterpret_cast<const char*>(bytes), length};
}
std::string QXReadBuffer::ReadString(unsigned long maxLength) {
  bool isNone;
  return ReadString(isNone, maxLength);
}

template <>
long QXReadBuffer::Read() {
  return ReadInt();
}
template <>
double QXReadBuffer::Read() {
  return ReadFloat();
}
template <>
std::string QXReadBuffer::Read() {
  return ReadString();
}
template <>
bool QXReadBuffer::Read() {
  return ReadBool();
}

// The bytes that `step` passes.
template <class Step>
QXBytes QXReadBuffer::Raw(Step step) {
  const unsigned char* begin = current_;
  return Advance(step) ? QXBytes(begin, current_) : QXBytes();
}

template <>
QXBytes QXReadBuffer::ReadRawBytes<long>() {
  return Raw([](Cursor& from) { return from.PassInt(); });
}
template <>
QXBytes QXReadBuffer::ReadRawBytes<double>() {
  return Raw([](Cursor& from) { return from.PassFloat(); });
}
template <>
QXBytes QXReadBuffer::ReadRawBytes<std::string>() {
  return Raw([](Cursor& from) { return from.PassText(); });
}

bool QXReadBuffer::Unwrap(std::string& tag, QXReadBuffer& content) {
  std::string_view name;
  Cursor payload(nullptr, nullptr);
  if (!Advance([&](Cursor& from) { return from.Section(name, payload); })) return false;
  tag = name;
  content.current_ = payload.At();
  content.end_ = payload.End();
  return true;
}

QXBytes QXReadBuffer::ReadContainer() {
  bool isNone = false;
  const QXBytes bytes = Raw([&](Cursor& from) {
    std::string_view tag;
    Cursor payload = from;
    return from.Section(tag, payload, isNone, MaxLength);
  });
  return isNone ? QXBytes() : bytes;
}

}  // namespace QXDataFlow
