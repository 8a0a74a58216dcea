// Rotations: matrices of unit quaternions, applying them to points, and sets of
// orientations that cover all rotations evenly.
#pragma once

#include <qxsystem/core/export.h>

namespace QXMath {

/// Writes the rotation matrix that belongs to the unit quaternion `q`, scalar
/// first, by the turn of -2 acos(q[0]) about (q[1], q[2], q[3]): the transpose
/// of what most textbooks give. A q[0] of 1 or more in magnitude is the identity.
QXSYSTEM_API void QXGenerateRotationMatrix(const double* q, double (*m)[3]);

/// Turns `count` points, x y z each, in place: v' = R v, `rot` row-major.
template <class T, class R>
void QXGeom3DRotate(T* points, const R* rot, unsigned count) {
  for (T* const end = points + 3ul * count; points != end; points += 3) {
    const R x = points[0], y = points[1], z = points[2];
    points[0] = static_cast<T>(rot[0] * x + rot[1] * y + rot[2] * z);
    points[1] = static_cast<T>(rot[3] * x + rot[4] * y + rot[5] * z);
    points[2] = static_cast<T>(rot[6] * x + rot[7] * y + rot[8] * z);
  }
}

/// The smallest number of orientations, not below `n`, that `QXGetHealPix` can
/// give: 18, 32, 45, 72, 112 or 160; for an `n` above these 160.
QXSYSTEM_API unsigned QXNextHealPix(unsigned n);

/// Writes `n` unit quaternions, scalar first, that spread evenly over all
/// orientations; `quaternions` has room for 4n numbers.
///
/// They are the pixels of a sphere, ring by ring from +z to -z, combined with
/// equal steps of a turn psi, psi running slowest. An `n` other than the six
/// sizes: a warning, false, and nothing is written.
/// Source: Yershova, Jain, LaValle and Mitchell, Int. J. Robotics Research 29
/// (2010) 801-812; pixels by Gorski et al., Astrophys. J. 622 (2005) 759-771.
QXSYSTEM_API bool QXGetHealPix(unsigned n, double* quaternions);

}  // namespace QXMath
