#include <qxsystem/records/recordio.h>

#include <algorithm>

#include <qxsystem/platform/istream.h>
#include <qxsystem/platform/ostream.h>
#include <qxsystem/records/recordimpl_private.h>
#include <qxsystem/records/recordjson.h>

namespace QXDataFlow {
namespace {

// Tags of records in streams are shorter than this; a text such as "{" at the
// front of another format is a longer one.
constexpr std::size_t MaxStreamTag = 12;

// Reads a size; false where there is none.
bool ReadSize(qxistream& in, std::size_t& size) {
  unsigned char bytes[9];
  if (in.read(bytes, 1) != 1) return false;
  const std::size_t more = bytes[0] < 0x80 ? 0 : bytes[0] & 0x7FU;
  if (more >= sizeof bytes || in.read(bytes + 1, more) != more) return false;
  long value;
  bool isNone;
  Cursor(bytes, bytes + 1 + more).Int(value, isNone);
  size = static_cast<std::size_t>(value);
  return !isNone && size <= MaxLength;
}

// A record's section that was taken off a stream. The payload stays in the
// stream's memory where all of it is there already.
struct StreamSection {
  std::string tag;
  const unsigned char* payload = nullptr;
  std::size_t size = 0;

  bool Read(qxistream& in) {
    std::size_t tagSize;
    if (in.eof() || !ReadSize(in, tagSize) || tagSize == 0 || tagSize >= MaxStreamTag ||
        in.read(tag, tagSize) != tagSize || !ReadSize(in, size))
      return false;
    payload = in.take(size);
    if (payload != nullptr) return true;
    if (in.read(owned_, size) != size) return false;
    payload = reinterpret_cast<const unsigned char*>(owned_.data());
    return true;
  }

private:
  std::string owned_;
};

bool IsBinary(const std::string& format) {
  return format == "binary" || format == "qxb";
}

bool IsJSON(const std::string& format) {
  return format == "json";
}

// A record's text as one line. Line ends in it stand between tokens, where any
// blank does; those inside of texts are escaped.
std::string JSONLine(const QXRecord& record) {
  std::string line = QXRecordToJSON(record);
  if (line.empty()) return line;
  std::replace_if(
      line.begin(), line.end(), [](char c) { return c == '\n' || c == '\r'; }, ' ');
  return line += '\n';
}

}  // namespace

QXBytes QXRecordToBytes(const QXRecord& record) {
  return record.ToBytes();
}

bool QXRecordFromBytes(QXRecord& record, const QXBytes& bytes) {
  return !bytes.empty() && record.FromBytes(bytes);
}

QXBytes QXReadRecordBytes(qxistream& in) {
  StreamSection section;
  QXBytes bytes;
  if (!section.Read(in)) return bytes;
  unsigned char* at = Grow(bytes, SectionSize(section.tag, section.size));
  StoreBytes(StoreSectionHead(at, section.tag, section.size), section.payload, section.size);
  return bytes;
}

bool QXWriteRecord(qxostream& out, const QXRecord& record, const std::string& format) {
  if (IsJSON(format)) {
    const std::string line = JSONLine(record);
    return !line.empty() && out.write(line.data(), line.size()) == line.size();
  }
  return IsBinary(format) && QXRecordImpl::Write(record, out);
}

bool QXReadRecord(QXRecord& record, qxistream& in, const std::string& format) {
  if (IsJSON(format)) {
    std::string line;
    return in.getline(line) && QXRecordFromJSON(record, line);
  }
  if (!IsBinary(format)) return false;
  StreamSection section;
  return section.Read(in) &&
         QXRecordImpl::Read(record, {section.payload, section.payload + section.size});
}

}  // namespace QXDataFlow
