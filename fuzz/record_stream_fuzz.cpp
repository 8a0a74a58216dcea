// Streams of records: a stream from memory and one that shows a byte at a time
// read alike, and what was read is written and read again as the same.

#include <tests/qxb/support.h>

#include "record_fuzz.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string bytes(data, data + size);
  QXPlatform::qxisstream whole(bytes), sections(bytes);
  qxbtest::DripStream drops(bytes);
  QXPlatform::qxosstream out;
  unsigned count = 0;
  for (;;) {
    QXRecord record, dripped;
    const long before = whole.tell();
    const bool isRead = QXReadRecord(record, whole, "binary");
    REQUIRE(QXReadRecord(dripped, drops, "qxb") == isRead);
    REQUIRE(whole.tell() == drops.tell());
    REQUIRE(dripped.ToBytes() == record.ToBytes());
    const QXBytes section = QXReadRecordBytes(sections);
    REQUIRE(sections.tell() == whole.tell());
    QXRecord same;
    REQUIRE(QXRecordFromBytes(same, section) == isRead);
    REQUIRE(same.ToBytes() == record.ToBytes());
    if (isRead) REQUIRE(QXWriteRecord(out, record, "binary") && ++count > 0);
    if (whole.tell() == before) break;
  }
  const std::string written = out.str();
  QXPlatform::qxisstream in(written);
  QXPlatform::qxosstream again;
  for (; count > 0; --count) {
    QXRecord record;
    REQUIRE(QXReadRecord(record, in, "qxb"));
    REQUIRE(QXWriteRecord(again, record, "qxb"));
  }
  REQUIRE(in.eof() && again.str() == written);
  return 0;
}
