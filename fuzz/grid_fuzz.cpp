// Old-style grid files: a file that is read has exactly the size it says and is
// written back as it was, but for what no grid holds; one that is refused leaves
// the grid alone.

#include <algorithm>
#include <cstring>

#include <qxsystem/grid/grid_util.h>

#include "qxb_fuzz.h"

namespace {

using Grid = QXFixedMultiGrid<float>;

std::string Content(const Grid& grid, unsigned kind) {
  qxosstream out;
  REQUIRE(QXWriteOldStyleGrid(out, grid, kind));
  return out.str();
}

unsigned Number(const std::string& bytes, std::size_t at) {
  unsigned number;
  std::memcpy(&number, bytes.data() + at, sizeof number);
  return number;
}

void CheckRead(qxistream& in, const std::string& bytes) {
  Grid grid(1, 2, 3, 4, 5, 6, 7, "");
  const std::string before = Content(grid, 0);
  if (!QXReadOldStyleGrid(in, grid)) {
    REQUIRE(Content(grid, 0) == before);
    return;
  }
  const unsigned total = Number(bytes, 0);
  REQUIRE(static_cast<unsigned long>(in.tell()) == 4ul + total && in.tell() >= 49);

  // A grid holds neither the second number nor the inverse spacing nor the
  // letter, nor a centre or spacing that it refused.
  std::string after = Content(grid, Number(bytes, 12));
  const auto same = [&](std::size_t at, std::size_t size) {
    return bytes.compare(at, size, after, at, size) == 0;
  };
  if (total == 45) {
    REQUIRE(after.substr(49) == before.substr(49));
    return;
  }
  REQUIRE(same(0, 4) && same(8, 20) && same(49, total - 45));
  for (const std::size_t at : {28u, 32u, 36u, 40u})
    REQUIRE(same(at, 4) || before.substr(at, 4) == after.substr(at, 4));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string bytes(data, data + size);
  qxisstream in(bytes);
  DripStream drops(bytes);
  CheckRead(in, bytes);
  CheckRead(drops, bytes);
  return 0;
}
