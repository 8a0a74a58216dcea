#include <qxsystem/grid/qxbgrid.h>

#include <qxsystem/qxb/qxbwfxn.h>

namespace QXSystem {

namespace {

unsigned char Flags(const QXGridBase& grid) {
  using namespace QXBGridFlags;
  return static_cast<unsigned char>((grid.IsXMidSet() ? XMid : 0) | (grid.IsYMidSet() ? YMid : 0) |
                                    (grid.IsZMidSet() ? ZMid : 0) |
                                    (grid.IsSpacingSet() ? Spacing : 0) |
                                    (grid.IsTitleSet() ? Title : 0));
}

}  // namespace

bool QXBWriteGridBase(qxostream& out, const QXGridBase& grid) {
  unsigned int dim[3];
  float place[4];
  grid.GetDim(dim[0], dim[1], dim[2]);
  grid.GetMid(place[0], place[1], place[2]);
  place[3] = grid.GetSpacing();

  qxosstream payload;
  payload.put(static_cast<unsigned char>(QXBIntEndian()));
  payload.put(static_cast<unsigned char>(QXBFloatEndian()));
  payload.put(Flags(grid));
  payload.write(reinterpret_cast<const unsigned char*>(dim), sizeof dim);
  payload.write(reinterpret_cast<const unsigned char*>(place), sizeof place);
  QXBWriteDataLength(payload, static_cast<unsigned long>(grid.GetTitle().size()));
  payload.write(grid.GetTitle());
  return QXBWriteRecord(out, "QXGridBase", payload.data(), payload.size());
}

}  // namespace QXSystem
