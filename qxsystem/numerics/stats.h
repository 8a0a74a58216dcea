// Small statistics: the chi-square of a table of counts, what is derived from
// it, and the integer logarithm.
#pragma once

#include <cstdint>

#include <qxsystem/core/export.h>

namespace QXMath {

/// The chi-square statistic of a table of counts, row-major: 0 where rows and
/// columns are independent. A row or column without counts gives NaN, a table
/// without cells 0. The grand total is taken modulo 2^32.
QXSYSTEM_API double QXChiSquare(const unsigned* table, unsigned rows, unsigned cols);

/// Cramer's phi of a chi-square over `n` counts: sqrt(chi2 / n) if `k`, the
/// smaller number of rows and columns, is 1, else sqrt(chi2 / (n (k - 1))) with
/// the product modulo 2^32.
QXSYSTEM_API double QXPhi(double chi2, unsigned k, unsigned n);

/// The same for a table of `rows` by `cols`; 0 if that has only one row or
/// column. The product is rounded to single precision.
QXSYSTEM_API double QXPhi(double chi2, unsigned rows, unsigned cols, unsigned n);

/// The significance level that `chi2` reaches: the smallest p among 0.1, 0.05,
/// 0.025, 0.01, 0.005 and 0.001, in single precision, whose critical value is
/// not above it. 0 if it reaches none.
///
/// The table knows 0 and 1 degrees of freedom, and with 0 any `chi2` that is
/// not negative reaches 0.001. More give a warning and 0.
QXSYSTEM_API double QXMaxp(double chi2, unsigned dof);

/// The integer part of the logarithm to base 2; 0xFFFFFFFF for 0.
QXSYSTEM_API std::uint32_t QXLog2(unsigned long n);

}  // namespace QXMath
