#include <qxsystem/grid/qxbgrid.h>

#include <gtest/gtest.h>

#include <qxb/support.h>

using namespace qxbtest;

namespace {

std::string Record(const QXGridBase& grid) {
  return Written([&](qxostream& out) { return QXBWriteGridBase(out, grid); });
}

TEST(QXBGridBase, StoresGeometryAndWhatWasSet) {
  const std::string tag = Hex("00 8A 'QXGridBase'");
  QXGridBase grid;
  EXPECT_EQ(Record(grid),
            Counted(tag, Hex("01 3F 00 01000000 01000000 01000000 00000000 00000000 00000000"
                             "0000003F 80")));
  grid.SetMid(1, 2, -2);
  grid.SetSpacing(0.25F);
  EXPECT_EQ(Record(grid),
            Counted(tag, Hex("01 3F 0F 01000000 01000000 01000000 0000803F 00000040 000000C0"
                             "0000803E 80")));
  const std::string title(200, 't');
  QXFixedMultiGrid<float> all(2, 3, 4, 0, 0, 0, 1, title);
  EXPECT_EQ(Record(all),
            Counted(tag, Hex("01 3F 1F 02000000 03000000 04000000 00000000 00000000 00000000"
                             "0000803F 48 81") +
                             title));
  QXGridBase partly;
  partly.SetYMid(0);
  partly.SetTitle("a");
  EXPECT_EQ(Record(partly)[15], 0x12);
  RefusingStream full(20);
  EXPECT_FALSE(QXBWriteGridBase(full, grid));
}

}  // namespace
