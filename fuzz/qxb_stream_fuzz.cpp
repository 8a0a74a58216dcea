// Streams of records: counting, stepping and reading agree on where records
// end, and what nobody reads is written so that it reads as the same again.

#include "qxb_fuzz.h"

namespace {

std::vector<QXUnknownQXBData> Attached(const QXBase& object) {
  std::vector<QXUnknownQXBData> records;
  for (QXIter<QXBaseData> it = object.GetDataIter(QXUnknownQXBDataTagName()); it; ++it)
    if (it->GetDataType() == QXGetDataType<QXUnknownQXBData>())
      records.push_back(static_cast<QXBaseDataT<QXUnknownQXBData>&>(*it).GetValue());
  return records;
}

// Reads records until the first that fails; `ends` are the positions behind
// those that stepping over them found.
void CheckRead(const std::string& bytes, const QXBinaryIOHandlerBase& handler,
               const std::vector<long>& ends) {
  QXContainer object, dripped;
  qxisstream in(bytes);
  DripStream drops(bytes);
  unsigned status = QXBReturn::Success;
  for (const long end : ends) {
    status = QXBinaryRead(in, object, handler);
    REQUIRE(status <= QXBReturn::IncorrectHandlerType);
    REQUIRE(in.tell() == end);
    REQUIRE(QXBinaryRead(drops, dripped, handler) == status && drops.tell() == end);
    if (status != QXBReturn::Success) break;
  }
  REQUIRE(Describe(object) == Describe(dripped));

  qxosstream out;
  const std::vector<QXUnknownQXBData> kept = Attached(object);
  for (const QXUnknownQXBData& record : kept) REQUIRE(QXBWriteUnknown(out, record));
  QXContainer again;
  qxisstream written(out.str());
  REQUIRE(ReadAll(written, again, QXBinaryIOHandler()) == QXBReturn::Success);
  const std::vector<QXUnknownQXBData> back = Attached(again);
  REQUIRE(back.size() == kept.size());
  for (std::size_t i = 0; i < kept.size(); ++i)
    REQUIRE(back[i].GetTag() == kept[i].GetTag() && back[i].GetCode() == kept[i].GetCode() &&
            back[i].GetData() == kept[i].GetData());
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const QXBinaryIOHandler filled = ContainerHandler(), empty;
  const std::string bytes(data, data + size);
  std::vector<long> ends;
  unsigned status = QXBReturn::Success;
  qxisstream in(bytes), counted(bytes);
  while (!in.eof() && (status = QXBinarySkip(in)) == QXBReturn::Success) ends.push_back(in.tell());
  unsigned count = 0;
  REQUIRE(QXBinaryCount(counted, count) == status);
  REQUIRE(count == ends.size() && counted.tell() == in.tell());
  CheckRead(bytes, filled, ends);
  CheckRead(bytes, empty, ends);
  return 0;
}
