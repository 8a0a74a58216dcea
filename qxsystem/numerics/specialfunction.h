// The error functions.
#pragma once

#include <qxsystem/core/export.h>

namespace QXMath {

/// The complementary error function, to within 8 units of the last digit.
/// NaN gives NaN. The same on every processor, bit for bit.
/// Method: Cody, Math. Comp. 23 (1969) 631-637, with the coefficients of his
/// CALERF (ACM TOMS 715, 1993).
QXSYSTEM_API double QXerfc(double x);

/// The error function, as 1 - QXerfc(x): good to 1e-15 in absolute terms, so
/// that a small `x` loses digits.
QXSYSTEM_API double QXerf(double x);

}  // namespace QXMath
