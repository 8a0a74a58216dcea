// Generic data blocks: what was read, as far as it has a stored form, is read
// again from what is written, unread values byte for byte, and the second
// writing equals the first.

#include "qxb_fuzz.h"

namespace {

bool Starts(const std::string& text, const std::string& prefix) {
  return text.compare(0, prefix.size(), prefix) == 0;
}

// What is to be expected of writing an object and reading it again.
struct Stored {
  std::string items;     // as Describe gives those that come back
  bool refused = false;  // a name stands for a code that cannot be stored
  bool readable = true;  // the writing can be read to its end
};

Stored Expect(const QXBase& object, bool readsContainers) {
  Stored stored;
  for (QXIter<QXBaseData> it = object.GetDataIter(); it; ++it) {
    std::string name = QXGetTag(it->GetTag()), value = DescribeValue(*it);
    const auto is = [&](const void* type) { return it->GetDataType() == type; };
    const bool unread = is(QXGetDataType<QXUnknownQXBData>());
    const bool container = is(QXGetDataType<QXContainer>());
    if (name.empty() || value == "b:00" || (unread && Starts(name, "QXUnknownQXB"))) continue;
    if (container) {
      const auto& inside = static_cast<QXBaseDataT<QXContainer>&>(*it).GetValue();
      const Stored inner = Expect(inside, readsContainers);
      if (!readsContainers || inner.refused) continue;
      stored.readable = stored.readable && inner.readable;
      value = "{" + inner.items + "}";
    }
    if ((unread || container) && name.size() > 1008) continue;

    // An array without elements ends the reading, and so does a name that
    // looks like an envelope.
    const bool emptyArray = it->GetSize() == 0 && !is(QXGetDataType<bool*>());
    if (emptyArray || Starts(name, "!HandledQXBTag:")) stored.readable = false;
    if (Starts(name, "UnknownQXB")) {
      const long number = std::strtol(name.c_str() + 10, nullptr, 10);
      const auto code = static_cast<signed char>(number);
      if (code < 0) stored.refused = true;
      // A value in an envelope has its name from there, any other from its tag.
      if (code > 0 && !unread && !container) {
        char read[QXBTagBufferSize];
        qxisstream in(std::string(1, static_cast<char>(code)) + "x");
        QXBReadTag(in, read);
        name = *read ? read : "UnknownQXB" + std::to_string(code);
      }
    }
    stored.items += name + "=" + value + " ";
  }
  return stored;
}

void CheckBlock(const std::string& payload, const QXBinaryIOHandlerBase& handler,
                bool readsContainers) {
  QXContainer first, dripped;
  qxisstream in(payload);
  DripStream drops(payload);
  const unsigned status = QXBReadQXBase(in, first, payload.size(), handler);
  REQUIRE(status <= QXBReturn::IncorrectHandlerType && in.eof());
  REQUIRE(QXBReadQXBase(drops, dripped, payload.size(), handler) == status);
  REQUIRE(Describe(first) == Describe(dripped));

  const Stored expected = Expect(first, readsContainers);
  qxosstream written;
  REQUIRE(QXBWriteQXBase(written, first, "", handler) == !expected.refused);
  REQUIRE(!expected.refused || written.size() == 0);
  if (expected.refused || written.size() == 0) return;

  QXContainer second;
  qxisstream again(written.str());
  const unsigned secondStatus = QXBReadQXBase(again, second, written.size(), handler);
  if (!expected.readable) return;
  REQUIRE(secondStatus == QXBReturn::Success);
  REQUIRE(Describe(second) == expected.items);
  qxosstream rewritten;
  REQUIRE(QXBWriteQXBase(rewritten, second, "", handler));
  REQUIRE(rewritten.str() == written.str());
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const QXBinaryIOHandler filled = ContainerHandler(), empty;
  const std::string payload(data, data + size);
  CheckBlock(payload, filled, /*readsContainers=*/true);
  CheckBlock(payload, empty, /*readsContainers=*/false);
  return 0;
}
