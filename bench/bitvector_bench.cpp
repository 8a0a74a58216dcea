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

// A few fingerprints, with one bit in twenty set.
template <class Library>
struct Setup {
  Setup(const benchmark::State& state, unsigned n) {
    std::mt19937 random(1);
    for (unsigned i = 0; i < n; ++i) {
      Model model(static_cast<std::size_t>(state.range(0)));
      for (std::size_t k = 0; k < model.size() / 20; ++k) model[random() % model.size()] = true;
      bits.push_back(Library::Make(model));
    }
  }
  std::vector<typename Library::Bits> bits;
  std::string text;
};

#define JOB(Name, Number, Call)           \
  template <class Library>                \
  void Name(benchmark::State& state) {    \
    Setup<Library> s(state, Number);      \
    [[maybe_unused]] auto& bits = s.bits; \
    for (auto _ : state) {                \
      Call;                               \
      benchmark::DoNotOptimize(s);        \
      benchmark::ClobberMemory();         \
    }                                     \
  }
JOB(Tanimoto, 100000,
    for (const auto& b
         : bits) benchmark::DoNotOptimize(Library::Tanimoto(bits[0], b)))
JOB(CountBits, 1, benchmark::DoNotOptimize(Library::Count(bits[0])))
JOB(AndOr, 3, (bits[0] &= bits[1], bits[0] |= bits[2]))
JOB(WriteText, 1, Library::Write(s.text, bits[0]))
JOB(ReadText, 1, if (s.text.empty()) Library::Write(s.text, bits[0]);
    Library::Read(bits[0], s.text))

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
