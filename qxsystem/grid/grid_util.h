// What is done with whole grids: their extents, and the old-style grid file.
#pragma once

#include <qxsystem/core/export.h>
#include <qxsystem/grid/grid.h>
#include <qxsystem/platform/istream.h>
#include <qxsystem/platform/ostream.h>

namespace QXSystem {

/// Stores the three coordinates of the centre, if all of them are set, and the
/// three edges of the box, if the spacing is set. Does nothing when one of the
/// pointers is null.
QXSYSTEM_API void QXGetCenterAndExtents(const QXGridBase& grid, float* center, float* extents);

// The old-style grid file: twelve numbers of 32 bits, a byte, and the values.
// Byte order is little-endian.
//
//     total           bytes behind this number
//     0
//     grids, kind     number of grids; what the writer says they are
//     xdim ydim zdim
//     xmid ymid zmid  float
//     spacing         float
//     1 / spacing     float
//     't'             a single byte
//     values          float; for each point, x fastest, those of all grids
//
// Title and what was set are not stored.

/// Writes a grid, or all of several, as an old-style grid file. `kind` is stored
/// and nothing else; that of a single grid is 0. False when the target refuses
/// bytes, and, with nothing written, when the total exceeds 32 bits.
QXSYSTEM_API bool QXWriteOldStyleGrid(QXPlatform::qxostream& out, const QXFixedGrid<float>& grid);
QXSYSTEM_API bool QXWriteOldStyleGrid(QXPlatform::qxostream& out,
                                      const QXFixedMultiGrid<float>& grid, unsigned int kind);

/// Reads an old-style grid file into `grid`, which has to be a
/// QXFixedMultiGrid<float>: nothing is consumed for another.
///
/// False when it is damaged or cut short; `grid` is then as it was, unless it
/// was the source that failed half way. A centre or spacing that a grid refuses
/// is left out with the warning of its setter, and a file without values keeps
/// those of `grid`; both are true. What is behind the file stays in the stream.
QXSYSTEM_API bool QXReadOldStyleGrid(QXPlatform::qxistream& in, QXMultiGrid<float>& grid);

}  // namespace QXSystem
