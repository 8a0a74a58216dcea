#include <qxsystem/grid/grid.h>

#include <algorithm>
#include <functional>
#include <limits>
#include <numeric>

#include <gtest/gtest.h>

#include <qxsystem/grid/grid_util.h>
#include <qxsystem/util/qxformat.h>
#include <tests/support/capture.h>

using namespace QXSystem;
using qxtest::Reports;

using Grid = QXFixedGrid<float>;
using View = QXFixedRefGrid<float>;
using MultiGrid = QXFixedMultiGrid<float>;

static_assert(sizeof(View) == sizeof(Grid));

namespace {

constexpr float nan = std::numeric_limits<float>::quiet_NaN();
constexpr unsigned huge = 65536;  // squared, one more than a grid can hold

// Dimensions, centre, spacing, bounds, and what was set, in letters.
std::string Shape(const QXGridBase& g) {
  return QXMakeString("%ux%ux%u=%u (%g %g %g) %g/%g [%g %g %g, %g %g %g] ", g.GetXDim(),
                      g.GetYDim(), g.GetZDim(), g.GetSize(), g.GetXMid(), g.GetYMid(), g.GetZMid(),
                      g.GetSpacing(), g.GetInverseSpacing(), g.GetXMin(), g.GetYMin(), g.GetZMin(),
                      g.GetXMax(), g.GetYMax(), g.GetZMax()) +
         (g.IsXMidSet() ? "x" : "") + (g.IsYMidSet() ? "y" : "") + (g.IsZMidSet() ? "z" : "") +
         (g.IsSpacingSet() ? "s" : "") + (g.IsTitleSet() ? "t" : "");
}

std::string Values(const Grid& grid) {
  std::string text;
  for (unsigned i = 0; i < grid.GetSize(); ++i)
    text += std::to_string(static_cast<int>(grid.GetValues()[i])) + " ";
  return text;
}

void Count(Grid& grid, float first) {
  std::iota(grid.GetValues(), grid.GetValues() + grid.GetSize(), first);
}

TEST(QXGridBase, SetsWhatItIsGivenOrNothing) {
  const std::string big = "Grid dimensions too large for memory size: ";
  QXGridBase grid;
  const struct {
    std::function<bool()> set;
    bool result;
    const char* shape;
    std::string warning;
  } steps[] = {
      {[&] { return true; }, true, "1x1x1=1 (0 0 0) 0.5/2 [-0.25 -0.25 -0.25, 0.25 0.25 0.25] ",
       ""},
      {[&] { return grid.SetSpacing(0) || grid.SetSpacing(-1); }, false, nullptr, ""},
      {[&] { return grid.SetSpacing(nan); }, false, nullptr,
       "SetSpacing unable to handle NaN: nan"},
      {[&] { return grid.SetMid(1, nan, 3); }, false,
       "1x1x1=1 (1 0 3) 0.5/2 [0.75 -0.25 2.75, 1.25 0.25 3.25] xz",
       "SetYMid unable to handle NaN: nan"},
      {[&] { return grid.SetYMid(2) && grid.SetSpacing(4); }, true,
       "1x1x1=1 (1 2 3) 4/0.25 [-1 0 1, 3 4 5] xyzs", ""},
      {[&] { return grid.SetDim(2, 3, 4); }, true,
       "2x3x4=24 (1 2 3) 4/0.25 [-3 -4 -5, 5 8 11] xyzs", ""},
      {[&] { return grid.SetDim(2, 0, 4) || grid.SetXDim(0) || grid.SetZDim(0); }, false, nullptr,
       ""},
      {[&] { return grid.SetDim(huge, huge, 1); }, false, nullptr, big + "65536 x 65536"},
      {[&] { return grid.SetZDim(0x2AAAAAAB); }, false, nullptr, big + "6 x 715827883"},
      {[&] { return grid.SetXDim(huge) && grid.SetZDim(1) && grid.SetTitle("t"); }, true,
       "65536x3x1=196608 (1 2 3) 4/0.25 [-131071 -4 1, 131073 8 5] xyzst", ""},
      {[&] { return grid.SetYDim(huge); }, false, nullptr, big + "65536 x 65536"},
      {[&] { return grid.SetXDim(3) && grid.SetDim(0x55555555, 3, 1); }, true,
       "1431655765x3x1=4294967295 (1 2 3) 4/0.25 [-2.86331e+09 -4 1, 2.86331e+09 8 5] xyzst", ""}};
  std::string before;
  for (const auto& s : steps) {
    const Reports reports;
    EXPECT_EQ(s.set(), s.result);
    EXPECT_EQ(Shape(grid), s.shape ? s.shape : before) << "step " << &s - steps;
    EXPECT_EQ(reports.GetErrorLog(), s.warning.empty() ? "" : "level = 4\n" + s.warning + "\n");
    before = Shape(grid);
  }
  // What the constructor was given is not tested again.
  QXGridBase flat(5, 0, 1, 0, 0, nan, 0, "flat");
  EXPECT_EQ(flat.GetSize(), 0u);
  EXPECT_TRUE(flat.SetXDim(5) && !flat.SetXDim(6) && flat.SetYDim(2) && flat.GetSize() == 10);
}

TEST(QXGridBase, GivesCentreAndExtentsWhereSet) {
  const auto told = [](const QXGridBase& grid) {
    float c[3] = {9, 9, 9}, e[3] = {9, 9, 9};
    QXGetCenterAndExtents(grid, c, nullptr);
    QXGetCenterAndExtents(grid, c, e);
    return QXMakeString("%g %g %g, %g %g %g", c[0], c[1], c[2], e[0], e[1], e[2]);
  };
  QXGridBase grid;
  EXPECT_TRUE(grid.SetXMid(1) && grid.SetYMid(2) && grid.SetDim(4, 8, 12));
  EXPECT_EQ(told(grid), "9 9 9, 9 9 9");
  EXPECT_TRUE(grid.SetZMid(3));
  EXPECT_EQ(told(grid), "1 2 3, 9 9 9");
  EXPECT_TRUE(grid.SetSpacing(0.25F));
  EXPECT_EQ(told(grid), "1 2 3, 1 2 3");
}

TEST(QXGrid, KnowsItsBases) {
  MultiGrid multi;
  const QXBase &view = *multi.GetGrid(0), &base = multi;
  const void* const common[] = {QXGetDataType<QXBase>(), QXGetDataType<QXGridAbstractBase>(),
                                QXGetDataType<QXGridBase>()};
  for (const void* type : common) EXPECT_TRUE(view.IsDataType(type) && base.IsDataType(type));
  const void *const grid = QXGetDataType<Grid>(), *own = QXGetDataType<QXMultiGrid<float>>();
  EXPECT_TRUE(view.GetDataType() == QXGetDataType<View>() && view.IsDataType(view.GetDataType()));
  EXPECT_TRUE(base.GetDataType() == QXGetDataType<MultiGrid>() && base.IsDataType(own));
  EXPECT_TRUE(view.IsDataType(grid) && !base.IsDataType(grid) && !view.IsDataType(own));
}

TEST(QXFixedGrid, OwnsItsValuesAndZeroesThemWithTheShape) {
  Grid grid(2, 2, 1, 0, 0, 0, 1, "title");
  EXPECT_EQ(Values(grid), "0 0 0 0 ");
  const float four[] = {1, 2, 3, 4};
  {
    const Reports reports;
    EXPECT_FALSE(grid.SetValues(nullptr, 3) || grid.SetValues(nullptr, 4));
    EXPECT_EQ(reports.GetErrorLog(),
              "level = 4\nAttempting to set grid data with wrong size array\n"
              "Attempting to set grid data with zero pointer\n");
  }
  EXPECT_TRUE(grid.SetValues(four, 4));
  grid.SetData<Grid>("held", grid);
  const Grid copy(grid);
  Grid assigned;
  assigned = copy;
  EXPECT_TRUE(grid.SetDim(2, 2, 1) && Values(grid) == "1 2 3 4 ");
  EXPECT_TRUE(grid.SetDim(1, 2, 2) && Values(grid) == "0 0 0 0 ");
  EXPECT_TRUE(grid.SetXDim(2) && Values(grid) == "0 0 0 0 0 0 0 0 ");
  grid = grid.GetData<Grid>("held");  // which goes with the data it lies in
  EXPECT_TRUE(Values(grid) == "1 2 3 4 " && !grid.HasData("held"));
  EXPECT_EQ(Values(copy) + Values(assigned), "1 2 3 4 1 2 3 4 ");
  EXPECT_TRUE(assigned.GetTitle() == "title" && assigned.HasData("held"));
  assigned.Clear();
  EXPECT_EQ(Values(assigned) + Shape(assigned),
            "0 0 0 0 2x2x1=4 (0 0 0) 1/1 [-1 -1 -0.5, 1 1 0.5] xyzs");
}

TEST(QXFixedMultiGrid, KeepsValuesWhenTheNumberOfGridsChanges) {
  MultiGrid multi(3, 1, 1, 0, 0, 0, 1, "m");
  EXPECT_TRUE(multi.SetNumGrids(2) && multi.SetNumGrids(2) && !multi.SetNumGrids(0));
  Count(*multi.GetGrid(0), 1);
  Count(*multi.GetGrid(1), 4);
  EXPECT_TRUE(multi.SetNumGrids(3) && multi.GetNumGrids() == 3 && !multi.GetGrid(3));
  const MultiGrid copy = multi;
  MultiGrid assigned;
  assigned = multi;
  EXPECT_FALSE(multi.SetNumGrids(0x55555556)) << "3 times that exceeds 32 bits";
  EXPECT_FALSE(multi.SetDim(0x55555556, 1, 1)) << "and so does 3 times that size";
  EXPECT_TRUE(multi.SetNumGrids(1));
  EXPECT_EQ(Values(*multi.GetGrid(0)), "1 2 3 ");
  for (const MultiGrid* each : {&copy, &std::as_const(assigned)})
    EXPECT_EQ(Values(*each->GetGrid(0)) + Values(*each->GetGrid(1)) + Values(*each->GetGrid(2)),
              "1 2 3 4 5 6 0 0 0 ");
  EXPECT_TRUE(assigned.SetDim(1, 1, 3) && Values(*assigned.GetGrid(1)) == "0 0 0 ");
  EXPECT_EQ(Shape(*assigned.GetGrid(1)), Shape(assigned));
}

TEST(QXFixedMultiGrid, PassesGeometryOnToItsViews) {
  MultiGrid multi;
  multi.SetDim(2, 2, 2);
  multi.SetNumGrids(2);
  Grid* view = multi.GetGrid(1);
  EXPECT_TRUE(multi.SetMid(1, 2, 3));
  EXPECT_EQ(Shape(*view), Shape(multi)) << "the same view follows";
  multi.SetTitle("later");
  EXPECT_EQ(view->GetTitle(), "");
  multi.SetSpacing(2);
  EXPECT_EQ(Shape(*multi.GetGrid(1)), Shape(multi));

  // A view keeps to its window; its copies are grids of their own.
  view = multi.GetGrid(0);
  Count(*view, 1);
  EXPECT_TRUE(!view->SetXDim(3) && view->SetDim(8, 1, 1));
  EXPECT_EQ(Values(*view), "0 0 0 0 0 0 0 0 ");
  Count(*view, 1);
  Grid copy = *view;
  const std::unique_ptr<Grid> created(view->CreateCopy());
  EXPECT_TRUE(copy.SetXDim(9) && created->SetXDim(9));
  EXPECT_EQ(Values(*multi.GetGrid(1)), "0 0 0 0 0 0 0 0 ");
  *multi.GetGrid(1) = *view;
  EXPECT_EQ(Values(*multi.GetGrid(1)), "1 2 3 4 5 6 7 8 ");
  const Reports reports;
  *view = copy;
  EXPECT_EQ(Values(*view), "1 2 3 4 5 6 7 8 ");
  EXPECT_EQ(reports.NumMessagesAtLevel(QXErrorLevel::Warning), 1u);
}

}  // namespace
