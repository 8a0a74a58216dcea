// Superposition of two point lists: the rigid motion that best brings the
// second onto the first, and the root mean square distance that remains.
//
// Points are x y z each, as double or float; all arithmetic is in double, and
// results are the same on every processor, bit for bit. The functions may run
// in parallel. `QXGeom3DRotate` of regrotation.h applies a rotation.
#pragma once

#include <qxsystem/core/export.h>

namespace QXMath {

/// Fits `b` onto `a`, `n` points each, and returns the RMS distance; below
/// 0.001 it is given as 0, and without points as -1.
///
/// `rot` (9 numbers, row-major) and `trans` (3 numbers) receive the motion
/// a = R b + t, R always a proper rotation: a mirror image stays at a distance.
/// If `rot` is null only the distance is computed, and `trans` is not touched.
///
/// One or two points, and any fit in doubt, go to the slower but more robust
/// `SimpleRMSBetweenPoints`, told at Debug or Verbose level. Lists on a line and
/// lists much smaller than 1 across as a rule do when a rotation is asked for.
/// Method: Theobald, Acta Cryst. A61 (2005) 478-480; the rotation as in Liu,
/// Agrafiotis and Theobald, J. Comput. Chem. 31 (2010) 1561-1563.
QXSYSTEM_API double QXQCPRMSBetweenPoints(const double* a, const double* b, unsigned n, double* rot,
                                          double* trans);
QXSYSTEM_API double QXQCPRMSBetweenPoints(const float* a, const float* b, unsigned n, double* rot,
                                          double* trans);

/// The same with the weights `w`, one per point, in the sums and the mean; null
/// weighs all the same. Weights that add up to 0 give NaN.
QXSYSTEM_API double QXQCPRMSBetweenWeightedPoints(const double* a, const double* b, const double* w,
                                                  unsigned n, double* rot, double* trans);
QXSYSTEM_API double QXQCPRMSBetweenWeightedPoints(const float* a, const float* b, const float* w,
                                                  unsigned n, double* rot, double* trans);

}  // namespace QXMath
