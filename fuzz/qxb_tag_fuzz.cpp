// Lengths and tags: a second stream reads the same, and what was read is
// written so that it reads as the same again.

#include <cstring>

#include "qxb_fuzz.h"

namespace {

void CheckLength(const std::string& bytes) {
  qxisstream in(bytes), bounded(bytes);
  DripStream drops(bytes);
  const unsigned long length = QXBReadDataLength(in, ~0UL);
  REQUIRE(QXBReadDataLength(drops, ~0UL) == length);
  REQUIRE(QXBReadDataLength(bounded, QXBMaxLength) == (length <= QXBMaxLength ? length : 0));
  REQUIRE(drops.tell() == in.tell() && bounded.tell() == in.tell() && in.tell() <= 10);
  if (length == 0) return;

  qxosstream out;
  REQUIRE(QXBWriteDataLength(out, length));
  REQUIRE(out.size() == QXBDataLengthBytes(length));
  const auto used = static_cast<std::size_t>(in.tell());
  REQUIRE(out.size() <= used);  // longer forms have groups of zero at their end
  if (out.size() == used) REQUIRE(out.str() == bytes.substr(0, used));
  qxisstream again(out.str());
  REQUIRE(QXBReadDataLength(again, ~0UL) == length && again.eof());
}

void CheckTag(const std::string& bytes) {
  char name[QXBTagBufferSize] = "before", other[QXBTagBufferSize], peeked[QXBTagBufferSize];
  unsigned char code = 0, otherCode = 0, peekedCode = 0;
  qxisstream in(bytes);
  const bool there = QXBPeekTag(in, peeked, peekedCode);
  REQUIRE(there == !bytes.empty() && in.tell() == 0);
  const bool more = QXBReadTag(in, name, code);
  DripStream drops(bytes);
  REQUIRE(QXBReadTag(drops, other, otherCode) == more && drops.tell() == in.tell());
  REQUIRE(!there || code == peekedCode);
  if (!more) return;
  REQUIRE(otherCode == code && std::strcmp(other, name) == 0);
  REQUIRE(!in.eof() && std::strlen(name) < QXBTagBufferSize);
  REQUIRE(code == 0 || std::strcmp(peeked, name) == 0);
  if (*name == '\0' && code == 0) return;  // a name that begins with a zero byte

  // As it came, and, where it has a name, in the form that a writer chooses.
  for (const bool chosen : {false, true}) {
    if (chosen && *name == '\0') continue;
    qxosstream out;
    REQUIRE(chosen ? QXBWriteTag(out, name) : QXBWriteTag(out, name, code));
    REQUIRE(!chosen || QXIsInternalQXBTag(name, std::strlen(name)) == (out.size() == 1));
    out.put('x');
    qxisstream again(out.str());
    REQUIRE(QXBReadTag(again, other, otherCode));
    REQUIRE(std::strcmp(other, name) == 0 && (chosen || otherCode == code) && again.get() == 'x');
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string bytes(data, data + size);
  CheckLength(bytes);
  CheckTag(bytes);
  return 0;
}
