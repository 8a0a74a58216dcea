#include <qxsystem/numerics/regrotation.h>

#include <algorithm>
#include <cmath>
#include <iterator>

#include <qxsystem/core/error.h>

namespace QXMath {
namespace {

constexpr long double Pi = 3.141592653589793238462643383279502884L;

// Ring r lies at z = (rings - 1 - 2 r) / rings. Its pixels start half a step
// off phi = 0 in the first, third, ... ring and at 0 in the others.
struct Grid {
  unsigned rings, perRing, turns;

  constexpr unsigned Size() const { return rings * perRing * turns; }
};
constexpr Grid Grids[] = {{2, 3, 3}, {2, 4, 4}, {3, 3, 5}, {3, 4, 6}, {4, 4, 7}, {4, 5, 8}};

struct SinCos {
  double sin, cos;
};

// Of pi p / q. The functions for double round differently on processors that
// fuse multiply and add, and results would depend on the machine.
SinCos OfPiTimes(unsigned p, unsigned q) {
  const long double angle = Pi * p / q;
  return {static_cast<double>(std::sin(angle)), static_cast<double>(std::cos(angle))};
}

}  // namespace

void QXGenerateRotationMatrix(const double* q, double (*m)[3]) {
  const double c = q[0], x = q[1], y = q[2], z = q[3];
  if (c * c >= 1) {
    for (int row = 0; row < 3; ++row)
      for (int column = 0; column < 3; ++column) m[row][column] = row == column;
    return;
  }
  // Rodrigues' form with cos(angle) = 2 c^2 - 1, sin(angle) = -2 c s and the
  // axis (x, y, z) / s: the s cancels, and with it what is lost near c = 1.
  m[0][0] = 2 * (c * c + x * x) - 1;
  m[0][1] = 2 * (x * y + c * z);
  m[0][2] = 2 * (x * z - c * y);
  m[1][0] = 2 * (x * y - c * z);
  m[1][1] = 2 * (c * c + y * y) - 1;
  m[1][2] = 2 * (y * z + c * x);
  m[2][0] = 2 * (x * z + c * y);
  m[2][1] = 2 * (y * z - c * x);
  m[2][2] = 2 * (c * c + z * z) - 1;
}

unsigned QXNextHealPix(unsigned n) {
  for (const Grid& grid : Grids)
    if (n <= grid.Size()) return grid.Size();
  return Grids[std::size(Grids) - 1].Size();
}

bool QXGetHealPix(unsigned n, double* quaternions) {
  const Grid* grid = std::find_if(std::begin(Grids), std::end(Grids),
                                  [n](const Grid& g) { return g.Size() == n; });
  if (grid == std::end(Grids)) {
    QXSystem::QXThrow.Warning("QXGetHealPix: Bad number of points: %u", n);
    return false;
  }
  double* q = quaternions;
  for (unsigned turn = 0; turn < grid->turns; ++turn) {
    const SinCos half = OfPiTimes(2 * turn + 1, 2 * grid->turns);  // psi / 2
    for (unsigned ring = 0; ring < grid->rings; ++ring) {
      const double z = (grid->rings - 1.0 - 2.0 * ring) / grid->rings;
      const double cosTheta = std::sqrt((1 + z) / 2), sinTheta = std::sqrt((1 - z) / 2);
      for (unsigned pixel = 0; pixel < grid->perRing; ++pixel, q += 4) {
        const SinCos phi = OfPiTimes(2 * pixel + (ring % 2 == 0), grid->perRing);
        q[0] = cosTheta * half.cos;
        q[1] = sinTheta * (phi.cos * half.sin - phi.sin * half.cos);
        q[2] = sinTheta * (phi.cos * half.cos + phi.sin * half.sin);
        q[3] = cosTheta * half.sin;
        const double squares = q[0] * q[0] + q[1] * q[1] + q[2] * q[2] + q[3] * q[3];
        const double scale = std::sqrt(1 / squares);
        for (int k = 0; k < 4; ++k) q[k] *= scale;
      }
    }
  }
  return true;
}

}  // namespace QXMath
