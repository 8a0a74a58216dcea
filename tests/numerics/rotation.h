// What the tests of rotations share.
#pragma once

#include <gtest/gtest.h>

/// Expects `r`, row-major, to be a rotation that does not mirror: such a matrix is
/// that of its own cofactors.
inline void ExpectProper(const double* r, double tolerance = 1e-14) {
  for (int i = 0; i < 9; ++i) {
    const double *p = r + (i / 3 + 1) % 3 * 3, *q = r + (i / 3 + 2) % 3 * 3;
    const int k = (i + 1) % 3, l = (i + 2) % 3;
    EXPECT_NEAR(r[i], p[k] * q[l] - p[l] * q[k], tolerance);
  }
}
