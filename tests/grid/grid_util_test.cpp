#include <qxsystem/grid/grid_util.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <new>
#include <numeric>

#include <gtest/gtest.h>

#include <qxb/support.h>

using namespace QXSystem;
using namespace qxbtest;

// The largest block that was asked for.
static std::size_t largest;

[[gnu::noinline]] void* operator new(std::size_t size) {
  largest = std::max(largest, size);
  if (void* block = std::malloc(size != 0 ? size : 1)) return block;
  throw std::bad_alloc();
}
[[gnu::noinline]] void operator delete(void* block) noexcept {
  std::free(block);
}
[[gnu::noinline]] void operator delete(void* block, std::size_t) noexcept {
  std::free(block);
}

namespace {

using Grid = QXFixedGrid<float>;
using MultiGrid = QXFixedMultiGrid<float>;

// A head with 4 bytes for each number, and the letter.
std::string Head(std::initializer_list<unsigned> integers, std::initializer_list<float> floats) {
  std::string bytes;
  for (const unsigned i : integers) bytes.append(reinterpret_cast<const char*>(&i), 4);
  for (const float f : floats) bytes.append(reinterpret_cast<const char*>(&f), 4);
  return bytes + "t";
}

std::string Floats(std::initializer_list<float> values) {
  return std::string(reinterpret_cast<const char*>(values.begin()), 4 * values.size());
}

// Two grids of 2 x 1 x 2 points, and their file.
MultiGrid Sample() {
  MultiGrid grid(2, 1, 2, 1, 2, 3, 0.25F, "sample");
  grid.SetNumGrids(2);
  for (const unsigned g : {0u, 1u})
    std::iota(grid.GetGrid(g)->GetValues(), grid.GetGrid(g)->GetValues() + 4, 10 * (g + 1));
  return grid;
}
const std::string sampleFile = Head({45 + 32, 0, 2, 7, 2, 1, 2}, {1, 2, 3, 0.25F, 4}) +
                               Floats({10, 20, 11, 21, 12, 22, 13, 23});

// All that a file can hold of a grid.
std::string Content(const MultiGrid& grid) {
  return Written([&](qxostream& out) { return QXWriteOldStyleGrid(out, grid, 7); });
}

TEST(QXOldStyleGrid, StoresValuesPointByPoint) {
  EXPECT_EQ(ToHex(Content(Sample())), ToHex(sampleFile));
  Grid one;
  *one.GetValues() = -1;
  EXPECT_EQ(ToHex(Written([&](qxostream& out) { return QXWriteOldStyleGrid(out, one); })),
            ToHex(Head({49, 0, 1, 0, 1, 1, 1}, {0, 0, 0, 0.5F, 2}) + Floats({-1})));
  for (std::size_t room = 0; room < sampleFile.size(); ++room) {
    RefusingStream out(room);
    EXPECT_FALSE(QXWriteOldStyleGrid(out, Sample(), 7)) << room;
    EXPECT_EQ(out.Taken(), sampleFile.substr(0, room));
  }
}

TEST(QXOldStyleGrid, ReadsWhatItWrote) {
  for (const unsigned points : {1u, 17u, 20000u})
    for (const unsigned grids : {1u, 3u, 100u}) {
      MultiGrid grid(points, 1, 1, -1, -2, -3, 0.1F, "");
      grid.SetNumGrids(grids);
      for (unsigned g = 0; g < grids; ++g)
        for (unsigned i = 0; i < points; ++i)
          grid.GetGrid(g)->GetValues()[i] = static_cast<float>(g * points + i);
      const std::string file = Content(grid);
      MultiGrid read = Sample(), dripped;
      qxisstream in(file + "x");
      EXPECT_TRUE(QXReadOldStyleGrid(in, read));
      EXPECT_EQ(in.get(), 'x') << "what is behind the file stays";
      EXPECT_EQ(Content(read), file);
      if (points == 20000) continue;
      DripStream drops(file);  // of unknown size
      EXPECT_TRUE(QXReadOldStyleGrid(drops, dripped));
      EXPECT_EQ(Content(dripped), file);
    }
}

TEST(QXOldStyleGrid, RefusesDamageBeforeItTouchesTheGrid) {
  MultiGrid grid = Sample();
  const auto refuses = [&](const std::string& bytes) {
    qxisstream in(bytes);
    DripStream drops(bytes);
    largest = 0;
    EXPECT_FALSE(QXReadOldStyleGrid(in, grid) || QXReadOldStyleGrid(drops, grid));
    EXPECT_LT(largest, 1000u);
    EXPECT_EQ(Content(grid), sampleFile);
  };
  for (std::size_t cut = 0; cut < sampleFile.size(); ++cut) refuses(sampleFile.substr(0, cut));
  const unsigned max = std::numeric_limits<unsigned>::max();
  const std::initializer_list<float> shape = {0, 0, 0, 1, 1};
  for (const std::string& head :
       {Head({44 + 32, 0, 2, 0, 2, 1, 2}, shape), Head({46 + 32, 0, 2, 0, 2, 1, 2}, shape),
        Head({max, 0, 1, 0, max, 1, 1}, shape), Head({45, 0, max, 0, max, max, max}, shape),
        Head({45, 0, 0x10000, 0, 0x10000, 0x10000, 0x10000}, shape),  // 2^64 values
        Head({45, 0, 0x40000000, 0, 0x10000, 0x10000, 1}, shape),     // 2^64 bytes
        Head({max - 2, 0, 1, 0, 0x3FFFFFF4, 1, 1}, shape),            // 4 GB that do not come
        Head({44, 0, 0, 0, 1, 1, 1}, shape)})
    refuses(head + sampleFile);
}

TEST(QXOldStyleGrid, LeavesOutWhatTheGridRefuses) {
  constexpr float nan = std::numeric_limits<float>::quiet_NaN();
  const unsigned max = std::numeric_limits<unsigned>::max();
  const struct {
    std::string file, content;
    const char* warning;
  } cases[] = {{Head({49, 9, 1, 9, 1, 1, 1}, {5, nan, 6, 0, 9}) + Floats({1}),
                Head({49, 0, 1, 7, 1, 1, 1}, {5, 2, 6, 0.25F, 4}) + Floats({1}),
                "level = 4\nSetYMid unable to handle NaN: nan\n"},
               {Head({45, 0, 0, 0, 2, 1, 2}, {1, 2, 3, 0.25F, 4}), sampleFile, ""},
               {Head({45, 0, max, 0, 0, max, max}, {1, 2, 3, -1, 4}) + "behind", sampleFile, ""}};
  for (const auto& c : cases) {
    Reports reports;
    MultiGrid grid = Sample();
    qxisstream in(c.file);
    EXPECT_TRUE(QXReadOldStyleGrid(in, grid));
    EXPECT_EQ(ToHex(Content(grid)), ToHex(c.content));
    EXPECT_EQ(reports.GetErrorLog(), c.warning);
  }
}

// A file of few values must not make many of a grid that was large before, nor of
// grids that were many.
TEST(QXOldStyleGrid, NeverMakesManyGridsOfAFormerSize) {
  MultiGrid grid(1000, 1000, 1, 0, 0, 0, 1, "");
  largest = 0;
  for (const unsigned size : {1u, 4000u}) {
    const unsigned grids = 4000 / size;
    std::string file = Head({45 + 16000, 0, grids, 0, size, 1, 1}, {0, 0, 0, 1, 1});
    file.append(16000, '\0');
    qxisstream in(file);
    EXPECT_TRUE(QXReadOldStyleGrid(in, grid));
    EXPECT_TRUE(grid.GetNumGrids() == grids && grid.GetSize() == size);
  }
  EXPECT_LT(largest, 1000000u);
}

}  // namespace
