// The geometry of grids in the binary object format.
#pragma once

#include <qxsystem/core/export.h>
#include <qxsystem/grid/grid.h>
#include <qxsystem/qxb/qxb.h>

namespace QXSystem {

/// Which parts of a stored geometry somebody had set: the others are defaults,
/// and a reader leaves them out.
namespace QXBGridFlags {
constexpr unsigned char XMid = 0x01;
constexpr unsigned char YMid = 0x02;
constexpr unsigned char ZMid = 0x04;
constexpr unsigned char Spacing = 0x08;
constexpr unsigned char Title = 0x10;
}  // namespace QXBGridFlags

/// Writes title and geometry of `grid` as a record "QXGridBase": the marks of
/// integers and floats, the flags above, the dimensions (unsigned int), the
/// centre and the spacing (float), and the title's length and bytes. Values are
/// no part of it; who stores them does so behind this record.
///
/// False when the target refuses bytes.
QXSYSTEM_API bool QXBWriteGridBase(qxostream& out, const QXGridBase& grid);

}  // namespace QXSystem
