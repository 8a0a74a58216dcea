// Superposition of two point lists by diagonalising a 4 by 4 matrix: the robust
// route, for any input. `qcprms.h` has the fast one, which falls back on this.
//
// Points are x y z each, as double or float; all arithmetic is in double.
#pragma once

#include <qxsystem/core/export.h>

namespace QXMath {

/// The root mean square distance of `n` points `a` and `b` after the best rigid
/// motion of `b` onto `a`; -1 if `n` is 0 or less.
///
/// `w` has a weight per point, or is null. `out`, unless null, receives 12
/// numbers: a proper rotation R, row-major, and a translation t, so that
/// a = R b + t; the identity and zero if there are no points. Weights that add
/// up to 0 give NaN.
/// Method: Kearsley, Acta Cryst. A45 (1989) 208-210.
template <class T>
QXSYSTEM_API double RMSBetweenPoints(const T* a, const T* b, const T* w, int n, double* out);
extern template double RMSBetweenPoints(const double*, const double*, const double*, int, double*);
extern template double RMSBetweenPoints(const float*, const float*, const float*, int, double*);

/// `RMSBetweenPoints` without weights.
QXSYSTEM_API double SimpleRMSBetweenPoints(const double* a, const double* b, unsigned n,
                                           double* out);
QXSYSTEM_API double SimpleRMSBetweenPoints(const float* a, const float* b, unsigned n, double* out);

/// `RMSBetweenPoints` under the name of its family.
QXSYSTEM_API double SimpleRMSBetweenWeightedPoints(const double* a, const double* b,
                                                   const double* w, unsigned n, double* out);
QXSYSTEM_API double SimpleRMSBetweenWeightedPoints(const float* a, const float* b, const float* w,
                                                   unsigned n, double* out);

/// Adds to `m`, diagonal and upper triangle, what a pair of points `p` and `q`
/// contributes, both relative to their centroids. The sum over all pairs is a
/// matrix whose smallest eigenvalue is the least sum of squared distances.
QXSYSTEM_API void QXBuildupMatrix(const double* p, const double* q, double (*m)[4]);

/// The same, the contribution times `w`.
QXSYSTEM_API void QXBuildupWeightedMatrix(const double* p, const double* q, double w,
                                          double (*m)[4]);

}  // namespace QXMath
