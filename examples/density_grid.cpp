// The electron density of a model, roughly: every atom a Gaussian of as many
// electrons as it has, on a grid.
//
//   density_grid crambin.pdb crambin.grd
//   density_grid -spacing 0.25 -split -qxb water.qxb water.xyz water.grd
//
// Writes an old-style grid file, reads it again, and tells the highest points, with
// the atoms next to them. With -split there is a grid for every element. The QXB
// file holds the geometry alone. Exit status 1 tells a fault, with its message.

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <new>
#include <numeric>
#include <string>
#include <vector>

#include <qxsystem/core/error.h>
#include <qxsystem/grid/grid.h>
#include <qxsystem/grid/grid_util.h>
#include <qxsystem/grid/qxbgrid.h>
#include <qxsystem/interface/commandline.h>
#include <qxsystem/interface/interface.h>
#include <qxsystem/platform/file.h>
#include <qxsystem/platform/istream.h>
#include <qxsystem/platform/ostream.h>
#include <qxsystem/util/progressstream.h>
#include <qxsystem/util/qxstring.h>

#include "elements.h"
#include "program.h"
#include "structure.h"

using namespace QXPlatform;
using namespace QXSystem;

namespace {

constexpr const char* kVersion = "1.0";

constexpr const char* kInterface = R"(
!BRIEF spreads the electrons of a structure on a grid
!PARAMETER -in 1
  !TYPE string
  !KEYLESS 1
  !REQUIRED true
  !SIMPLE true
  !BRIEF The structure, a PDB or XYZ file; of several models the first
!END
!PARAMETER -out 2
  !TYPE string
  !KEYLESS 2
  !REQUIRED true
  !SIMPLE true
  !BRIEF The grid file to write
!END
!PARAMETER -qxb 3
  !TYPE string
  !BRIEF A QXB file to write the geometry of the grid to
!END
!PARAMETER -spacing 4
  !TYPE double
  !DEFAULT 0.5
  !LEGAL_RANGE 0.01 inf
  !SIMPLE true
  !BRIEF Distance of the points in Angstrom
!END
!PARAMETER -sigma 5
  !TYPE double
  !DEFAULT 0.5
  !LEGAL_RANGE 0.05 10
  !BRIEF Standard deviation of the Gaussians in Angstrom
!END
!PARAMETER -split 6
  !TYPE bool
  !DEFAULT false
  !BRIEF Make a grid for every element
!END
!PARAMETER -top 7
  !TYPE int
  !DEFAULT 5
  !LEGAL_RANGE 0 inf
  !BRIEF How many of the highest points to tell
!END
!PARAMETER -status 8
  !TYPE string
  !BRIEF Keep a file that tells how far the program is
!END
)";

using Grid = QXFixedGrid<float>;
using MultiGrid = QXFixedMultiGrid<float>;
using Point = std::array<double, 3>;

std::string Symbol(unsigned element) {
  return element > 0 ? std::string(GetElement(element).symbol) : "?";
}

Model ReadFirst(const std::string& name) {
  qxifstream in(name);
  if (!in) Fail(name + ": cannot be read");
  StructureReader reader(in);
  Model model;
  if (!reader.Read(model))
    Fail(name + ": " + (reader.Error().empty() ? "no atoms" : reader.Error()));
  if (const auto unknown = std::count(model.elements.begin(), model.elements.end(), 0))
    QXThrow.Warning("%s: %ld atoms of unknown elements have no electrons here", name.c_str(),
                    static_cast<long>(unknown));
  return model;
}

// Beyond so many standard deviations a Gaussian is cut off: what is lost of it is
// a part in 65,000.
constexpr double kReach = 5;

// A grid with room for the whole of all atoms.
void Fit(MultiGrid& grid, const Model& model, double spacing, double sigma) {
  Point low, high;
  low.fill(HUGE_VAL);
  high.fill(-HUGE_VAL);
  for (std::size_t i = 0; i < model.coordinates.size(); ++i) {
    low[i % 3] = std::min<double>(low[i % 3], model.coordinates[i]);
    high[i % 3] = std::max<double>(high[i % 3], model.coordinates[i]);
  }
  unsigned dim[3];
  float mid[3];
  for (std::size_t axis = 0; axis < 3; ++axis) {
    const double points = std::ceil((high[axis] - low[axis] + 2 * kReach * sigma) / spacing);
    if (!(points < 1e9)) Fail("The structure is too large for this spacing");
    dim[axis] = static_cast<unsigned>(points);
    mid[axis] = static_cast<float>((low[axis] + high[axis]) / 2);
  }
  if (!grid.SetSpacing(static_cast<float>(spacing)) || !grid.SetMid(mid[0], mid[1], mid[2]) ||
      !grid.SetDim(dim[0], dim[1], dim[2]))
    Fail("The structure is too large for this spacing");
}

// The values of a Gaussian along one axis, for the points that it reaches.
struct Profile {
  Profile(double center, double sigma, double min, double spacing, unsigned dim) {
    const double at = (center - min) / spacing - 0.5, reach = kReach * sigma / spacing;
    const auto last = static_cast<unsigned>(std::min(std::floor(at + reach), dim - 1.0));
    first = static_cast<unsigned>(std::max(std::ceil(at - reach), 0.0));
    for (unsigned i = first; i <= last; ++i) {
      const double x = (i - at) * spacing / sigma;
      values.push_back(std::exp(-0.5 * x * x));
    }
  }
  unsigned first;
  std::vector<double> values;
};

// Adds a Gaussian with the integral `electrons`.
void AddAtom(Grid& grid, const Point& center, double electrons, double sigma) {
  const double spacing = grid.GetSpacing();
  const Profile x(center[0], sigma, grid.GetXMin(), spacing, grid.GetXDim());
  const Profile y(center[1], sigma, grid.GetYMin(), spacing, grid.GetYDim());
  const Profile z(center[2], sigma, grid.GetZMin(), spacing, grid.GetZDim());
  const double height = electrons / std::pow(2 * M_PI * sigma * sigma, 1.5);
  for (std::size_t k = 0; k < z.values.size(); ++k)
    for (std::size_t j = 0; j < y.values.size(); ++j) {
      const std::size_t row = y.first + j + std::size_t{grid.GetYDim()} * (z.first + k);
      float* values = grid.GetValues() + x.first + grid.GetXDim() * row;
      const double factor = height * z.values[k] * y.values[j];
      for (std::size_t i = 0; i < x.values.size(); ++i)
        values[i] += static_cast<float>(factor * x.values[i]);
    }
}

// Which atoms share a grid.
struct Groups {
  // All of them, or with `split` those of an element.
  Groups(const Model& model, bool split) {
    if (!split) return;
    elements.assign(model.elements.begin(), model.elements.end());
    std::sort(elements.begin(), elements.end());
    elements.erase(std::unique(elements.begin(), elements.end()), elements.end());
  }
  unsigned Count() const {
    return static_cast<unsigned>(std::max<std::size_t>(elements.size(), 1));
  }
  unsigned Of(unsigned element) const {
    const auto place = std::lower_bound(elements.begin(), elements.end(), element);
    return static_cast<unsigned>(place - elements.begin());
  }
  std::string Title(unsigned group) const {
    return elements.empty() ? "all atoms" : Symbol(elements[group]);
  }

  std::vector<unsigned> elements;  // in ascending order; empty for a single group
};

void Spread(MultiGrid& grid, const Model& model, const Groups& groups, double sigma,
            QXTracerBase& tracer) {
  const std::size_t atoms = model.elements.size();
  tracer.Push("Spreading atoms");
  for (std::size_t i = 0; i < atoms && !tracer.Aborted(); ++i) {
    const unsigned element = model.elements[i];
    const auto* xyz = &model.coordinates[3 * i];
    AddAtom(*grid.GetGrid(groups.Of(element)), {xyz[0], xyz[1], xyz[2]}, element, sigma);
    tracer.SetProgress(static_cast<unsigned>(i + 1), static_cast<unsigned>(atoms));
  }
  tracer.Pop();
}

void WriteFiles(const MultiGrid& grid, const std::string& name, const std::string& qxbName) {
  qxofstream out(name);
  const bool written = grid.GetNumGrids() == 1 ? QXWriteOldStyleGrid(out, *grid.GetGrid(0))
                                               : QXWriteOldStyleGrid(out, grid, /*kind=*/1);
  if (!written || !out.close()) Fail(name + ": cannot be written");
  if (qxbName.empty()) return;
  qxofstream qxb(qxbName);
  if (!QXBWriteGridBase(qxb, grid) || !qxb.close()) Fail(qxbName + ": cannot be written");
}

// Fails unless the file holds this grid.
void ReadBack(const MultiGrid& grid, const std::string& name, QXTracerBase& tracer) {
  tracer.Push("Reading the grid");
  qxprogressstream in(new qxifstream(name), /*ownStream=*/true, &tracer, /*ownTracer=*/false);
  MultiGrid read;
  bool same = QXReadOldStyleGrid(in, read) && read.GetNumGrids() == grid.GetNumGrids() &&
              read.GetSize() == grid.GetSize();
  for (unsigned g = 0; same && g < grid.GetNumGrids(); ++g)
    same = std::memcmp(read.GetGrid(g)->GetValues(), grid.GetGrid(g)->GetValues(),
                       sizeof(float) * grid.GetSize()) == 0;
  tracer.Pop();
  if (!same) Fail(name + ": what is read is not what was written");
}

// Where a point of the grid lies.
Point Place(const QXGridBase& grid, std::size_t index) {
  const std::size_t x = grid.GetXDim(), y = grid.GetYDim();
  // To a ten-thousandth, without a negative zero.
  const auto at = [&grid](float min, std::size_t i) {
    const double place = min + (static_cast<double>(i) + 0.5) * grid.GetSpacing();
    return std::round(place * 1e4) / 1e4 + 0.0;
  };
  return {at(grid.GetXMin(), index % x), at(grid.GetYMin(), index / x % y),
          at(grid.GetZMin(), index / x / y)};
}

// Whether no neighbour of a point is higher, and none before it as high.
bool IsPeak(const Grid& grid, std::size_t index) {
  const auto x = static_cast<long>(grid.GetXDim()), y = static_cast<long>(grid.GetYDim()),
             z = static_cast<long>(grid.GetZDim()), at = static_cast<long>(index);
  const long i = at % x, j = at / x % y, k = at / x / y;
  const float* values = grid.GetValues();
  for (long c = std::max(k - 1, 0L); c <= std::min(k + 1, z - 1); ++c)
    for (long b = std::max(j - 1, 0L); b <= std::min(j + 1, y - 1); ++b)
      for (long a = std::max(i - 1, 0L); a <= std::min(i + 1, x - 1); ++a) {
        const long other = a + x * (b + y * c);
        if (values[other] > values[at] || (other < at && values[other] == values[at])) return false;
      }
  return true;
}

std::vector<std::size_t> HighestPeaks(const Grid& grid, std::size_t top) {
  std::vector<std::size_t> peaks;
  for (std::size_t i = 0; i < grid.GetSize(); ++i)
    if (grid.GetValues()[i] > 0 && IsPeak(grid, i)) peaks.push_back(i);
  top = std::min(top, peaks.size());
  std::partial_sort(peaks.begin(), peaks.begin() + static_cast<long>(top), peaks.end(),
                    [values = grid.GetValues()](std::size_t a, std::size_t b) {
                      return values[a] != values[b] ? values[a] > values[b] : a < b;
                    });
  peaks.resize(top);
  return peaks;
}

// The atom next to a place, and its distance.
std::pair<std::size_t, double> Nearest(const Model& model, const Point& place) {
  std::pair<std::size_t, double> nearest = {0, HUGE_VAL};
  for (std::size_t i = 0; i < model.elements.size(); ++i) {
    double square = 0;
    for (std::size_t axis = 0; axis < 3; ++axis)
      square += std::pow(model.coordinates[3 * i + axis] - place[axis], 2);
    if (std::sqrt(square) < nearest.second) nearest = {i, std::sqrt(square)};
  }
  return nearest;
}

void Tell(const Grid& grid, const Model& model, std::size_t top) {
  const double volume = std::pow(grid.GetSpacing(), 3);
  const double electrons =
      volume * std::accumulate(grid.GetValues(), grid.GetValues() + grid.GetSize(), 0.0);
  qxout << QXMakeString("%s: %.1f electrons\n", grid.GetTitle().c_str(), electrons);
  for (const std::size_t peak : HighestPeaks(grid, top)) {
    const Point at = Place(grid, peak);
    const auto [atom, distance] = Nearest(model, at);
    qxout << QXMakeString("  %8.3f at %8.2f %8.2f %8.2f, %.2f from atom %zu, %s\n",
                          static_cast<double>(grid.GetValues()[peak]), at[0], at[1], at[2],
                          distance, atom + 1, Symbol(model.elements[atom]).c_str());
  }
}

void Run(const QXInterface& itf) {
  Progress progress(Setting<std::string>(itf, "-status"));
  QXTracerBase& tracer = progress;
  const auto inName = Setting<std::string>(itf, "-in"), outName = Setting<std::string>(itf, "-out");
  const auto qxbName = Setting<std::string>(itf, "-qxb");
  if (inName == outName) Fail("-in and -out name the same file");
  if (qxbName == inName || qxbName == outName) Fail("-qxb names the same file as -in or -out");
  const auto sigma = Setting<double>(itf, "-sigma");
  const Model model = ReadFirst(inName);
  const Groups groups(model, Setting<bool>(itf, "-split"));

  MultiGrid grid;
  Fit(grid, model, Setting<double>(itf, "-spacing"), sigma);
  if (!grid.SetNumGrids(groups.Count())) Fail("The grids are too large");
  grid.SetTitle(QXFileDetermineName(inName));
  for (unsigned g = 0; g < groups.Count(); ++g) grid.GetGrid(g)->SetTitle(groups.Title(g));
  Spread(grid, model, groups, sigma, tracer);
  WriteFiles(grid, outName, qxbName);
  ReadBack(grid, outName, tracer);

  qxout << QXMakeString("%zu atoms on %u x %u x %u points, %g apart, around %.2f %.2f %.2f\n",
                        model.elements.size(), grid.GetXDim(), grid.GetYDim(), grid.GetZDim(),
                        static_cast<double>(grid.GetSpacing()), static_cast<double>(grid.GetXMid()),
                        static_cast<double>(grid.GetYMid()), static_cast<double>(grid.GetZMid()));
  for (unsigned g = 0; g < groups.Count(); ++g)
    Tell(*grid.GetGrid(g), model, static_cast<std::size_t>(Setting<int>(itf, "-top")));
}

}  // namespace

int main(int argc, char** argv) {
  QXInterface itf(kInterface);
  if (!QXParseCommandLine(itf, kVersion, argc, argv, /*requirements=*/nullptr, QXErrorLevel::Error,
                          /*checkHelp=*/true))
    return 1;
  try {
    Run(itf);
  } catch (const std::bad_alloc&) {
    Fail("Not enough memory for the grid");
  }
  return 0;
}
