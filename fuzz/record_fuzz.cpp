// Records: what was read is written, and read again as the same; every value of
// it can be asked for as every type; a copy and a record whose caches have been
// filled write the same.

#include "record_fuzz.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  QXRecord record;
  record.FromBytes(data, size);
  const QXBytes written = record.ToBytes();
  QXRecord again;
  REQUIRE(again.FromBytes(written));
  REQUIRE(again.ToBytes() == written);

  AskForEveryValue(record);
  QXRecord copy;
  copy = record;
  const QXBytes asked = record.ToBytes();
  REQUIRE(copy.ToBytes() == asked);
  for (const QXFieldBase& field : record.GetFields()) {
    REQUIRE(record.HasField(field));
    REQUIRE(again.GetFieldIdx(field) == record.GetFieldIdx(field));
    REQUIRE(again.CheckField(field) == record.CheckField(field));
    record.DeleteField(field);
  }
  REQUIRE(record.GetFields().size() == 0 || record.HasField(QXFieldBase("")));
  return 0;
}
