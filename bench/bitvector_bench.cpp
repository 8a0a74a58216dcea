// Bit vectors beside RDKit's and boost's: counting, combining, one fingerprint
// against 100,000 others, and text. A benchmark is called Job<Library>/bits.
#include <benchmark/benchmark.h>

#include <random>
#include <string>
#include <vector>

#include <qxsystem/util/bitvector.h>

#if __has_include(<boost/dynamic_bitset.hpp>)
#include <boost/dynamic_bitset.hpp>
#define HAVE_BOOST 1
#endif
#if __has_include(<DataStructs/BitOps.h>)
#include <DataStructs/BitOps.h>
#include <DataStructs/ExplicitBitVect.h>
#define HAVE_RDKIT 1
#endif

namespace {

using Model = std::vector<bool>;

struct QX {
  using Bits = QXSystem::QXBitVector;
  static Bits Make(const Model& model) {
    Bits bits;
    QXSystem::QXCopyBits(bits, model);
    return bits;
  }
  static unsigned Count(const Bits& a) { return a.CountBits(); }
  static double Tanimoto(const Bits& a, const Bits& b) { return QXSystem::QXTanimoto(a, b); }
  static void Write(std::string& text, const Bits& a) { QXSystem::QXMakeHex(text, a, 0); }
  static void Read(Bits& a, const std::string& text) { QXSystem::QXParseHex(a, text); }
};

#if HAVE_BOOST
struct Boost {
  using Bits = boost::dynamic_bitset<>;
  static Bits Make(const Model& model) {
    Bits bits(model.size());
    for (std::size_t i = 0; i < model.size(); ++i) bits[i] = model[i];
    return bits;
  }
  static unsigned Count(const Bits& a) { return static_cast<unsigned>(a.count()); }
  static double Tanimoto(const Bits& a, const Bits& b) {
    return static_cast<double>((a & b).count()) / static_cast<double>((a | b).count());
  }
};
#endif

#if HAVE_RDKIT
struct RDKit {
  using Bits = ExplicitBitVect;
  static Bits Make(const Model& model) {
    Bits bits(static_cast<unsigned>(model.size()));
    for (unsigned i = 0; i < model.size(); ++i)
      if (model[i]) bits.setBit(i);
    return bits;
  }
  static unsigned Count(const Bits& a) {
    return static_cast<unsigned>(a.dp_bits->count());  // the stored number is no counting
  }
  static double Tanimoto(const Bits& a, const Bits& b) { return TanimotoSimilarity(a, b); }
  static void Write(std::string& text, const Bits& a) { text = BitVectToFPSText(a); }
  static void Read(Bits& a, const std::string& text) { UpdateBitVectFromFPSText(a, text); }
};
#endif

std::vector<Model> Models(const benchmark::State& state, unsigned n) {
  std::mt19937 random(1);
  std::vector<Model> models(n, Model(static_cast<std::size_t>(state.range(0))));
  for (Model& model : models)
    for (std::size_t set = 0; set < model.size() / 20; ++set) model[random() % model.size()] = true;
  return models;
}

template <class Library>
void Tanimoto(benchmark::State& state) {
  std::vector<typename Library::Bits> bits;
  for (const Model& model : Models(state, 100000)) bits.push_back(Library::Make(model));
  for (auto _ : state)
    for (const auto& other : bits) benchmark::DoNotOptimize(Library::Tanimoto(bits[0], other));
}

template <class Library>
void CountBits(benchmark::State& state) {
  const auto bits = Library::Make(Models(state, 1)[0]);
  for (auto _ : state) benchmark::DoNotOptimize(Library::Count(bits));
}

template <class Library>
void AndOr(benchmark::State& state) {
  const auto models = Models(state, 3);
  const auto b = Library::Make(models[1]), c = Library::Make(models[2]);
  auto a = Library::Make(models[0]);
  for (auto _ : state) {
    a &= b;
    a |= c;
    benchmark::DoNotOptimize(a);
    benchmark::ClobberMemory();
  }
}

template <class Library>
void WriteText(benchmark::State& state) {
  const auto bits = Library::Make(Models(state, 1)[0]);
  std::string text;
  for (auto _ : state) {
    Library::Write(text, bits);
    benchmark::DoNotOptimize(text.data());
    benchmark::ClobberMemory();
  }
}

template <class Library>
void ReadText(benchmark::State& state) {
  auto bits = Library::Make(Models(state, 1)[0]);
  std::string text;
  Library::Write(text, bits);
  for (auto _ : state) {
    Library::Read(bits, text);
    benchmark::DoNotOptimize(bits);
    benchmark::ClobberMemory();
  }
}

#define BITS_JOBS(Library)                                                           \
  BENCHMARK(Tanimoto<Library>)->Arg(1024)->Arg(2048)->Unit(benchmark::kMicrosecond); \
  BENCHMARK(CountBits<Library>)->Arg(2048);                                          \
  BENCHMARK(AndOr<Library>)->Arg(2048)
#define TEXT_JOBS(Library)                  \
  BENCHMARK(WriteText<Library>)->Arg(2048); \
  BENCHMARK(ReadText<Library>)->Arg(2048)

BITS_JOBS(QX);
TEXT_JOBS(QX);
#if HAVE_BOOST
BITS_JOBS(Boost);
#endif
#if HAVE_RDKIT
BITS_JOBS(RDKit);
TEXT_JOBS(RDKit);
#endif

}  // namespace
