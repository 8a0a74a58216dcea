// Superposition of two point lists beside RDKit's and Eigen's, on the same
// points: a list, and the list turned, moved and shaken.
#include <benchmark/benchmark.h>

#include <cmath>
#include <random>
#include <vector>

#include <qxsystem/numerics/qcprms.h>
#include <qxsystem/numerics/regrotation.h>
#include <qxsystem/numerics/simplerms.h>

#if __has_include(<Eigen/Geometry>)
#include <Eigen/Geometry>
#define HAVE_EIGEN 1
#endif
#if __has_include(<Numerics/Alignment/AlignPoints.h>)
#include <Numerics/Alignment/AlignPoints.h>
#define HAVE_RDKIT 1
#endif

namespace {

template <class T>
struct Lists {
  explicit Lists(const benchmark::State& state) : n(static_cast<unsigned>(state.range(0))) {
    std::mt19937_64 random(n);
    std::normal_distribution<double> spread(0, 10), noise(0, 0.3);
    const double q[4] = {0.5, -0.1, 0.7, 0.5};
    double rot[3][3];
    QXMath::QXGenerateRotationMatrix(q, rot);
    for (unsigned i = 0; i < n; ++i) {
      double p[3] = {spread(random), spread(random), spread(random)};
      for (const double x : p) a.push_back(static_cast<T>(x));
      QXMath::QXGeom3DRotate(p, rot[0], 1);
      for (const double x : p) b.push_back(static_cast<T>(x + 5 + noise(random)));
    }
  }

  unsigned n;
  std::vector<T> a, b;
};

template <class T>
void Rms(benchmark::State& state) {
  const Lists<T> lists(state);
  for (auto _ : state)
    benchmark::DoNotOptimize(
        QXMath::QXQCPRMSBetweenPoints(lists.a.data(), lists.b.data(), lists.n, nullptr, nullptr));
}

template <class T>
void RmsAndRotation(benchmark::State& state) {
  const Lists<T> lists(state);
  double rot[9], trans[3];
  for (auto _ : state) {
    benchmark::DoNotOptimize(
        QXMath::QXQCPRMSBetweenPoints(lists.a.data(), lists.b.data(), lists.n, rot, trans));
    benchmark::DoNotOptimize(rot);
    benchmark::DoNotOptimize(trans);
  }
}

void RobustRmsAndRotation(benchmark::State& state) {
  const Lists<double> lists(state);
  double out[12];
  for (auto _ : state) {
    benchmark::DoNotOptimize(
        QXMath::SimpleRMSBetweenPoints(lists.a.data(), lists.b.data(), lists.n, out));
    benchmark::DoNotOptimize(out);
  }
}

#define SIZES ->Arg(10)->Arg(100)->Arg(1000)->Arg(10000)
BENCHMARK(Rms<double>)->Name("RMS only/QX") SIZES;
BENCHMARK(RmsAndRotation<double>)->Name("RMS and rotation/QX") SIZES;
BENCHMARK(Rms<float>)->Name("RMS only/QX float") SIZES;
BENCHMARK(RmsAndRotation<float>)->Name("RMS and rotation/QX float") SIZES;
BENCHMARK(RobustRmsAndRotation)->Name("RMS and rotation/QX Jacobi") SIZES;

#if HAVE_RDKIT
// The sum of squares and the motion come together.
void RdkitAlignPoints(benchmark::State& state) {
  const Lists<double> lists(state);
  std::vector<RDGeom::Point3D> a, b;
  for (std::size_t i = 0; i < 3ul * lists.n; i += 3) {
    a.emplace_back(lists.a[i], lists.a[i + 1], lists.a[i + 2]);
    b.emplace_back(lists.b[i], lists.b[i + 1], lists.b[i + 2]);
  }
  RDGeom::Point3DConstPtrVect toA, toB;
  for (unsigned i = 0; i < lists.n; ++i) {
    toA.push_back(&a[i]);
    toB.push_back(&b[i]);
  }
  RDGeom::Transform3D motion;
  for (auto _ : state) {
    benchmark::DoNotOptimize(
        std::sqrt(RDNumeric::Alignments::AlignPoints(toA, toB, motion) / lists.n));
    benchmark::DoNotOptimize(motion);
  }
}
BENCHMARK(RdkitAlignPoints)->Name("RMS only/RDKit") SIZES;
BENCHMARK(RdkitAlignPoints)->Name("RMS and rotation/RDKit") SIZES;
#endif

#if HAVE_EIGEN
// The motion, and then the distance by a pass over the points.
void EigenUmeyama(benchmark::State& state) {
  const Lists<double> lists(state);
  using Points = Eigen::Map<const Eigen::Matrix3Xd>;
  const Points a(lists.a.data(), 3, lists.n), b(lists.b.data(), 3, lists.n);
  for (auto _ : state) {
    const Eigen::Matrix4d motion = Eigen::umeyama(b, a, false);
    const Eigen::Matrix3d rot = motion.topLeftCorner<3, 3>();
    const Eigen::Vector3d trans = motion.topRightCorner<3, 1>();
    const double squares = (a - ((rot * b).colwise() + trans)).squaredNorm();
    benchmark::DoNotOptimize(std::sqrt(squares / lists.n));
    benchmark::DoNotOptimize(&motion);
  }
}
BENCHMARK(EigenUmeyama)->Name("RMS only/Eigen") SIZES;
BENCHMARK(EigenUmeyama)->Name("RMS and rotation/Eigen") SIZES;
#endif

}  // namespace
