// The text form of bit vectors: both kinds of vector read the same, and what was
// read comes back from what is written.

#include <cstdint>
#include <string>
#include <vector>

#include <qxsystem/util/bitvector.h>

#include "require.h"

using namespace QXSystem;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size == 0) return 0;
  const unsigned lineLength = data[0];
  const std::string text(data + 1, data + size);
  QXBitVector bits, again;
  std::vector<bool> model;
  const bool good = QXParseHex(bits, text);
  REQUIRE(QXParseHex(model, text) == good);
  REQUIRE(bits.GetSize() <= 4 * text.size() && (good || bits.GetSize() == 0));
  QXBitVector copy;
  QXCopyBits(copy, model);
  REQUIRE(copy == bits);

  std::string written, same;
  REQUIRE(QXMakeHex(written, bits, lineLength) && QXMakeHex(same, model, lineLength));
  REQUIRE(written == same);
  REQUIRE(QXParseHex(again, written) && again == bits);
  REQUIRE(again.CountBits() == again.CountRangeBits(0, QXBitVector::None));
  return 0;
}
