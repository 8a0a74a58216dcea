// Checking 1 MiB of UTF-8 beside simdjson: plain English, and text of many
// scripts. A benchmark is called Job<Library>.
#include <benchmark/benchmark.h>

#include <random>
#include <string>

#include <qxsystem/util/utfconvert.h>

#if __has_include(<simdjson.h>)
#include <simdjson.h>
#define HAVE_SIMDJSON 1
#endif

namespace {

constexpr std::size_t Size = 1 << 20;

std::string MakeText(bool ascii) {
  const std::string words[] = {"molecule ",
                               "bond ",
                               "the ",
                               "\xC3\xA4ther ",
                               "\xCE\xB2-\xCE\xB3 ",
                               "\xE5\x88\x86\xE5\xAD\x90",
                               "\xE2\x82\xAC",
                               "\xF0\x9F\x98\x80"};
  std::mt19937 random(1);
  std::string text;
  while (text.size() < Size) text += words[random() % (ascii ? 3 : 8)];
  return text;
}

struct QX {
  static bool IsValid(const std::string& text) {
    return QXSystem::QXIsValidUTF8(reinterpret_cast<const unsigned char*>(text.c_str()));
  }
};

#if HAVE_SIMDJSON
struct Simdjson {
  static bool IsValid(const std::string& text) {
    return simdjson::validate_utf8(text.data(), text.size());
  }
};
#endif

template <class Library>
void Validate(benchmark::State& state, bool ascii) {
  const std::string text = MakeText(ascii);
  for (auto _ : state)
    if (!Library::IsValid(text)) state.SkipWithError("valid text refused");
  state.SetBytesProcessed(state.iterations() * static_cast<long>(text.size()));
}
template <class Library>
void Ascii(benchmark::State& state) {
  Validate<Library>(state, true);
}
template <class Library>
void Mixed(benchmark::State& state) {
  Validate<Library>(state, false);
}

BENCHMARK(Ascii<QX>);
BENCHMARK(Mixed<QX>);
#if HAVE_SIMDJSON
BENCHMARK(Ascii<Simdjson>);
BENCHMARK(Mixed<Simdjson>);
#endif

}  // namespace
