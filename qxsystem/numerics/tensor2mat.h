// Eigenvalues and eigenvectors of small symmetric matrices: 4 by 4 by Jacobi
// rotations, and the principal moments and axes of a 3 by 3 tensor.
#pragma once

#include <qxsystem/core/export.h>

namespace QXMath {

/// The smallest magnitude among the eigenvalues of a symmetric 4 by 4 matrix.
///
/// `eigenvalues` receives all four, signed and in no order, `eigenvector` the
/// unit vector that belongs to the result; among equals, that of the lowest
/// index. Only the upper triangle and the diagonal are read, and they are
/// destroyed. NaN in the matrix comes out as some NaN.
/// Method: cyclic Jacobi as in Press et al., Numerical Recipes in C, 2nd
/// edition, section 11.1.
QXSYSTEM_API double QXJacobiReduction(double* eigenvalues, double (*matrix)[4],
                                      double* eigenvector);

/// Whether the six elements off the diagonal of a 3 by 3 matrix are all 0.
QXSYSTEM_API bool MatrixIsDiagonal(const double* m);

/// Writes the three eigenvalues of a symmetric 3 by 3 `tensor` to `pmi`, signed,
/// in descending order of magnitude. The result is 0; if all magnitudes are
/// below 1e-9 a warning and -3.
///
/// Cardano's formula with coefficients below 1e-6 taken as 0, so the tensor
/// should be of a scale well above that. If its discriminant is exactly 0 all
/// three come out as a third of the trace, which is right for three equal
/// moments only.
QXSYSTEM_API int QXPMIFromInertialTensor(double* pmi, const double* tensor);

/// Writes principal axes of `tensor` as the rows of `rot`, a right-handed frame
/// with the axis of the largest moment first, and the moments to `pmi`. The
/// result is 0.
///
/// A diagonal tensor is not reduced: `rot` becomes a copy of it and `pmi` three
/// zeros. With NaN in the tensor: a warning, `rot` the identity, result -4.
/// Rows are 0 where a tensor has no unique axes to offer.
QXSYSTEM_API int QXMakeRotationMatrix(double* pmi, double* rot, const double* tensor);

}  // namespace QXMath
