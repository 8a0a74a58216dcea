#include <qxsystem/grid/grid_util.h>

#include <algorithm>
#include <cstdint>
#include <limits>
#include <string>
#include <vector>

#include <qxsystem/platform/binaryio.h>

namespace QXSystem {

using QXPlatform::qxisstream;
using QXPlatform::qxistream;
using QXPlatform::qxostream;

void QXGetCenterAndExtents(const QXGridBase& grid, float* center, float* extents) {
  if (!center || !extents) return;
  if (grid.IsSpacingSet()) {
    extents[0] = static_cast<float>(grid.GetXDim()) * grid.GetSpacing();
    extents[1] = static_cast<float>(grid.GetYDim()) * grid.GetSpacing();
    extents[2] = static_cast<float>(grid.GetZDim()) * grid.GetSpacing();
  }
  if (grid.IsXMidSet() && grid.IsYMidSet() && grid.IsZMidSet())
    grid.GetMid(center[0], center[1], center[2]);
}

namespace {

constexpr unsigned char letter = 't';
constexpr std::uint64_t headSize = 11 * 4 + sizeof letter;  // what the total counts of it
constexpr std::uint64_t maxTotal = std::numeric_limits<unsigned int>::max();

// The numbers in front of the letter, as they lie in the file.
struct Head {
  unsigned int total = 0, zero = 0, grids = 0, kind = 0;
  unsigned int xdim = 0, ydim = 0, zdim = 0;
  float xmid = 0, ymid = 0, zmid = 0, spacing = 0, inverseSpacing = 0;
};
constexpr unsigned numbers = 12;
static_assert(sizeof(Head) == numbers * 4, "moved as it stands in memory");

unsigned char* BytesOf(void* object) {
  return static_cast<unsigned char*>(object);
}
const unsigned char* BytesOf(const void* object) {
  return static_cast<const unsigned char*>(object);
}

bool WriteFloats(qxostream& out, const float* values, std::size_t n) {
  return QX_io_write_binary(out, BytesOf(values), sizeof *values, static_cast<unsigned>(n)) ==
         n * sizeof *values;
}
bool ReadFloats(qxistream& in, float* values, std::size_t n) {
  return QX_io_read_binary(in, BytesOf(values), sizeof *values, static_cast<unsigned>(n)) ==
         n * sizeof *values;
}

bool WriteHead(qxostream& out, const QXGridBase& grid, unsigned int grids, unsigned int kind) {
  const std::uint64_t values = std::uint64_t{grid.GetSize()} * grids;
  if (values > (maxTotal - headSize) / sizeof(float)) return false;
  Head head;
  head.total = static_cast<unsigned>(headSize + sizeof(float) * values);
  head.grids = grids;
  head.kind = kind;
  grid.GetDim(head.xdim, head.ydim, head.zdim);
  grid.GetMid(head.xmid, head.ymid, head.zmid);
  head.spacing = grid.GetSpacing();
  head.inverseSpacing = 1 / head.spacing;
  return QX_io_write_binary(out, BytesOf(&head), 4, numbers) == sizeof head && out.put(letter);
}

// Values stand point by point in a file and grid by grid in memory, so they go
// through a buffer, so many points at a time.
std::size_t PointsAtOnce(std::size_t grids) {
  return std::max<std::size_t>(16384 / grids, 1);
}

bool WriteValues(qxostream& out, const QXFixedMultiGrid<float>& grid) {
  const std::size_t size = grid.GetSize(), grids = grid.GetNumGrids();
  std::vector<float> buffer(PointsAtOnce(grids) * grids);
  for (std::size_t done = 0, points; done < size; done += points) {
    points = std::min(PointsAtOnce(grids), size - done);
    for (std::size_t g = 0; g < grids; ++g) {
      const float* values = grid.GetGrid(static_cast<unsigned>(g))->GetValues() + done;
      for (std::size_t i = 0; i < points; ++i) buffer[i * grids + g] = values[i];
    }
    if (!WriteFloats(out, buffer.data(), points * grids)) return false;
  }
  return true;
}

bool ReadValues(qxistream& in, QXFixedMultiGrid<float>& grid) {
  const std::size_t size = grid.GetSize(), grids = grid.GetNumGrids();
  std::vector<float> buffer(PointsAtOnce(grids) * grids);
  for (std::size_t done = 0, points; done < size; done += points) {
    points = std::min(PointsAtOnce(grids), size - done);
    if (!ReadFloats(in, buffer.data(), points * grids)) return false;
    for (std::size_t g = 0; g < grids; ++g) {
      float* values = grid.GetGrid(static_cast<unsigned>(g))->GetValues() + done;
      for (std::size_t i = 0; i < points; ++i) values[i] = buffer[i * grids + g];
    }
  }
  return true;
}

// The number of values behind this head, if its total agrees with that.
bool CountValues(const Head& head, std::uint64_t& values) {
  values = head.grids;
  for (const unsigned int dim : {head.xdim, head.ydim, head.zdim})
    if (__builtin_mul_overflow(values, dim, &values)) return false;
  return values <= maxTotal && headSize + values * sizeof(float) == head.total;
}

// The grid takes the shape of the file before the number of grids, lest many
// grids of a former shape be made in between.
bool ReadBody(qxistream& in, const Head& head, bool hasValues, QXFixedMultiGrid<float>& grid) {
  grid.SetSpacing(head.spacing);
  grid.SetMid(head.xmid, head.ymid, head.zmid);
  if (!hasValues) return true;
  return grid.SetNumGrids(1) && grid.SetDim(head.xdim, head.ydim, head.zdim) &&
         grid.SetNumGrids(head.grids) && ReadValues(in, grid);
}

}  // namespace

bool QXWriteOldStyleGrid(qxostream& out, const QXFixedGrid<float>& grid) {
  return WriteHead(out, grid, /*grids=*/1, /*kind=*/0) &&
         WriteFloats(out, grid.GetValues(), grid.GetSize());
}

bool QXWriteOldStyleGrid(qxostream& out, const QXFixedMultiGrid<float>& grid, unsigned int kind) {
  return WriteHead(out, grid, grid.GetNumGrids(), kind) && WriteValues(out, grid);
}

bool QXReadOldStyleGrid(qxistream& in, QXMultiGrid<float>& target) {
  auto* grid = dynamic_cast<QXFixedMultiGrid<float>*>(&target);
  if (!grid) return false;
  Head head;
  std::uint64_t values;
  if (QX_io_read_binary(in, BytesOf(&head), 4, numbers) != sizeof head || in.get() < 0 ||
      !CountValues(head, values))
    return false;

  // No memory for a grid before its values are known to be there: they are, in a
  // file of known size, or in memory once they have come.
  const std::uint64_t bytes = values * sizeof(float);
  const long at = in.tell(), size = in.size();
  if (at >= 0 && size >= at && static_cast<std::uint64_t>(size - at) >= bytes)
    return ReadBody(in, head, values != 0, *grid);
  std::string held;
  if (in.read(held, bytes) != bytes) return false;
  qxisstream memory;
  memory.set(held.data(), held.size(), /*own=*/false);
  return ReadBody(memory, head, values != 0, *grid);
}

}  // namespace QXSystem
