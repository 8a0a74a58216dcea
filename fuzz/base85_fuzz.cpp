// Base85: bytes come back from their text, and any text decodes to bytes that
// do.

#include <cstdint>
#include <string>
#include <vector>

#include <qxsystem/json/base85.h>

#include "require.h"

using namespace QXDataFlow;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::vector<unsigned char> bytes(data, data + size);
  const std::string text = QXBase85Encode(bytes);
  REQUIRE(text.size() == size + (size + 3) / 4);
  REQUIRE(text.find_first_of("\"\\ \n") == text.npos);
  REQUIRE(QXBase85Decode(text) == bytes);

  const auto decoded = QXBase85Decode(std::string(data, data + size));
  REQUIRE(decoded.size() == size * 4 / 5);
  REQUIRE(QXBase85Decode(QXBase85Encode(decoded)) == decoded);
  return 0;
}
