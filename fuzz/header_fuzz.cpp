// Headers from files: a history is what the items say, with empty headers where
// some are missing, and never much longer than the file bears out; it goes over
// into the history of another header; and what is written is read as it was.

#include <algorithm>

#include <qxsystem/qxb/qxheader.h>

#include "qxb_fuzz.h"

namespace {

constexpr unsigned MostMissing = 4096;  // headers that a history may lack

const QXBinaryIOHandler& Handler() {
  static const QXBinaryIOHandler made = [] {
    QXBinaryIOHandler handler;
    handler.SetReadFxn(QXBasePODReadFxn<QXHeader>(), /*asDefault=*/false);
    handler.SetWriteFxn(PODWriter<QXHeader>(), /*asDefault=*/false);
    QXInstallGenericDataHandler<QXHeader>(handler, "HeaderValue");
    return handler;
  }();
  return made;
}

std::string Bytes(const QXHeader& header) {
  return Written([&](qxostream& out) { return QXBWriteQXBase(out, header, "", Handler()); });
}

std::vector<std::string> History(const QXHeader& header) {
  std::vector<std::string> history;
  for (QXIter<QXHeader> h = header.GetHistory(); h; ++h) history.push_back(Bytes(*h));
  return history;
}

unsigned CountItems(const QXHeader& header) {
  unsigned count = 0;
  for (QXIter<QXBaseData> item = header.GetDataIter(); item; ++item) ++count;
  return count;
}

// The history by another route: the first item of each name.
std::vector<std::string> Expected(const QXHeader& header) {
  const int claimed = std::max(header.GetData<int>("history"), 0);
  const unsigned count = std::min(static_cast<unsigned>(claimed), CountItems(header) + MostMissing);
  std::vector<std::string> history(count, Bytes(QXHeader()));
  std::vector<bool> seen(count);
  for (QXIter<QXBaseData> item = header.GetDataIter(); item; ++item) {
    const std::string name = QXGetTag(item->GetTag());
    const unsigned long number = std::strtoul(name.c_str(), nullptr, 10);
    if (name != std::to_string(number) || number >= count || seen[number]) continue;
    seen[number] = true;
    if (const auto* earlier = As<QXHeader>(*item)) history[count - 1 - number] = Bytes(*earlier);
  }
  return history;
}

// What is written is read to the same, as long as no name looks like an envelope.
void CheckFixpoint(const QXHeader& header) {
  const std::string written = Bytes(header);
  QXHeader again;
  qxisstream in(written);
  if (written.find("!HandledQXBTag:!") == written.npos &&
      QXBReadQXBase(in, again, written.size(), Handler()) == QXBReturn::Success)
    REQUIRE(Bytes(again) == written);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  QXHeader header, child;
  qxisstream in(std::string(data, data + size));
  QXBReadQXBase(in, header, size, Handler());
  CheckFixpoint(header);

  std::vector<std::string> history = History(header);
  REQUIRE(history == Expected(header));
  REQUIRE(child.AddHistory(header));
  REQUIRE(child.GetData<int>("history") == static_cast<int>(history.size()) + 1);
  std::vector<std::string> grown = History(child);
  grown.erase(grown.begin());  // the header itself, without its history
  std::reverse(grown.begin(), grown.end());
  REQUIRE(grown == history);
  CheckFixpoint(child);
  return 0;
}
