// The text functions beside those of the standard library, Abseil, {fmt} and
// Boost, on 10,000 numbers and on texts of 1 MiB. A benchmark is called
// <job>/<library>.
#include <benchmark/benchmark.h>

#include <charconv>
#include <cstdio>
#include <cstdlib>
#include <random>
#include <string>
#include <vector>

#include <qxsystem/util/qxstring.h>

#if __has_include(<absl/strings/str_format.h>)
#include <absl/strings/numbers.h>
#include <absl/strings/str_cat.h>
#include <absl/strings/str_format.h>
#include <absl/strings/str_split.h>
#define HAVE_ABSL 1
#endif
#if __has_include(<fmt/format.h>)
#define FMT_HEADER_ONLY 1
#include <fmt/format.h>
#include <fmt/printf.h>
#define HAVE_FMT 1
#endif
#if __has_include(<boost/tokenizer.hpp>)
#include <boost/tokenizer.hpp>
#define HAVE_BOOST 1
#endif

namespace {

using namespace QXSystem;
using Texts = std::vector<std::string>;

constexpr std::size_t numbers = 10000;
constexpr std::size_t textSize = 1 << 20;

template <class Run>
bool Add(const char* name, Run run) {
  return benchmark::RegisterBenchmark(name, run) != nullptr;
}

// --- numbers

std::vector<int> MakeInts() {
  std::mt19937 random(1);
  std::vector<int> values(numbers);
  // As many of one digit as of nine.
  for (auto& v : values) v = static_cast<int>(random()) >> (random() % 31);
  return values;
}

std::vector<double> MakeDoubles() {
  std::mt19937_64 random(2);
  std::normal_distribution<double> normal(0.0, 100.0);
  std::vector<double> values(numbers);
  for (auto& v : values) v = normal(random);
  return values;
}

const std::vector<int> ints = MakeInts();
const std::vector<double> doubles = MakeDoubles();

Texts IntTexts() {
  Texts texts;
  for (const int v : ints) texts.push_back(std::to_string(v));
  return texts;
}

Texts DoubleTexts(const char* format) {
  Texts texts;
  char buffer[64];
  for (const double v : doubles) {
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat-nonliteral"
    std::snprintf(buffer, sizeof buffer, format, v);
#pragma GCC diagnostic pop
    texts.emplace_back(buffer);
  }
  return texts;
}

const Texts intTexts = IntTexts();
const Texts shortTexts = DoubleTexts("%.4f");
const Texts longTexts = DoubleTexts("%.17g");

template <class T, class Convert>
bool Read(const char* name, const Texts& texts, Convert convert) {
  return Add(name, [&texts, convert](benchmark::State& state) {
    for (auto _ : state)
      for (const auto& text : texts) {
        T value{};
        if (!convert(text, value)) state.SkipWithError("not a number");
        benchmark::DoNotOptimize(value);
      }
  });
}

template <class T, class Convert>
bool Write(const char* name, const std::vector<T>& values, Convert convert) {
  return Add(name, [&values, convert](benchmark::State& state) {
    std::string text;
    for (auto _ : state)
      for (const T value : values) {
        convert(value, text);
        benchmark::DoNotOptimize(text.data());
        benchmark::ClobberMemory();
      }
  });
}

const auto readOurs = [](const std::string& text, auto& out) {
  return QXStringToNumber(text, out);
};
const auto readCharconv = [](const std::string& text, auto& out) {
  const auto result = std::from_chars(text.data(), text.data() + text.size(), out);
  return result.ec == std::errc() && result.ptr == text.data() + text.size();
};
const auto readStrtol = [](const std::string& text, int& out) {
  char* end;
  out = static_cast<int>(std::strtol(text.c_str(), &end, 10));
  return *end == '\0';
};
const auto readStrtod = [](const std::string& text, double& out) {
  char* end;
  out = std::strtod(text.c_str(), &end);
  return *end == '\0';
};

[[maybe_unused]] const bool added1 =
    Read<int>("text to int/QX", intTexts, readOurs) &&
    Read<int>("text to int/from_chars", intTexts, readCharconv) &&
    Read<int>("text to int/strtol", intTexts, readStrtol) &&
    Read<double>("text to double, 4 decimals/QX", shortTexts, readOurs) &&
    Read<double>("text to double, 4 decimals/from_chars", shortTexts, readCharconv) &&
    Read<double>("text to double, 4 decimals/strtod", shortTexts, readStrtod) &&
    Read<double>("text to double, 17 digits/QX", longTexts, readOurs) &&
    Read<double>("text to double, 17 digits/from_chars", longTexts, readCharconv) &&
    Read<double>("text to double, 17 digits/strtod", longTexts, readStrtod);

const auto writeOurs = [](long v, std::string& out) { QXNumberToString(v, out); };
const auto writeOursFixed = [](double v, std::string& out) { QXNumberToString(v, out, 'f', 6); };
const auto writeStd = [](auto v, std::string& out) { out = std::to_string(v); };

[[maybe_unused]] const bool added2 = Write<int>("int to text/QX", ints, writeOurs) &&
                                     Write<int>("int to text/to_string", ints, writeStd) &&
                                     Write<double>("double to text/QX", doubles, writeOursFixed) &&
                                     Write<double>("double to text/to_string", doubles, writeStd);

#ifdef HAVE_ABSL
const auto readAtoi = [](const std::string& text, int& out) {
  return absl::SimpleAtoi(text, &out);
};
const auto readAtod = [](const std::string& text, double& out) {
  return absl::SimpleAtod(text, &out);
};
const auto writeStrCat = [](int v, std::string& out) { out = absl::StrCat(v); };
const auto writeStrFormat = [](double v, std::string& out) { out = absl::StrFormat("%.6f", v); };
[[maybe_unused]] const bool added3 =
    Read<int>("text to int/absl", intTexts, readAtoi) &&
    Read<double>("text to double, 4 decimals/absl", shortTexts, readAtod) &&
    Read<double>("text to double, 17 digits/absl", longTexts, readAtod) &&
    Write<int>("int to text/absl", ints, writeStrCat) &&
    Write<double>("double to text/absl", doubles, writeStrFormat);
#endif
#ifdef HAVE_FMT
const auto writeFmtInt = [](int v, std::string& out) {
  const fmt::format_int text(v);
  out.assign(text.data(), text.size());
};
const auto writeFmtFixed = [](double v, std::string& out) { out = fmt::format("{:.6f}", v); };
[[maybe_unused]] const bool added4 = Write<int>("int to text/fmt", ints, writeFmtInt) &&
                                     Write<double>("double to text/fmt", doubles, writeFmtFixed);
#endif

// --- texts

// Words of 1 to 12 letters, separated by one blank mostly.
std::string MakeWords() {
  std::mt19937 random(3);
  std::string text;
  while (text.size() < textSize) {
    for (auto letters = 1 + random() % 12; letters > 0; --letters)
      text += static_cast<char>('a' + random() % 26);
    text += random() % 8 == 0 ? '\n' : random() % 8 == 0 ? '\t' : ' ';
    if (random() % 8 == 0) text += ' ';
  }
  return text;
}

// Lines of ten fields: bare words, numbers, and quoted texts with a comma or a
// quote, which is escaped with `escape`.
Texts MakeLines(char escape) {
  std::mt19937 random(4);
  Texts lines;
  for (std::size_t size = 0; size < textSize; size += lines.back().size() + 1) {
    std::string line;
    for (unsigned field = 0; field < 10; ++field) {
      if (field != 0) line += ',';
      switch (random() % 5) {
        case 0:
          line += "\"ring, aromatic\"";
          break;
        case 1:
          line.append("\"5").append(1, escape).append("\" pipe, long\"");
          break;
        case 2:
          line += "CCO";
          break;
        default:
          line += std::to_string(static_cast<double>(random() % 100000) / 16);
          break;
      }
    }
    lines.push_back(line);
  }
  return lines;
}

const std::string words = MakeWords();

template <class Split>
bool Tokenize(const char* name, Split split) {
  return Add(name, [split](benchmark::State& state) {
    Texts tokens;
    for (auto _ : state) {
      split(tokens);
      benchmark::DoNotOptimize(tokens.data());
    }
  });
}

const auto tokenizeOurs = [](Texts& tokens) { QXStringTokenize(tokens, words, " \t\n"); };
const auto tokenizeOursAtBlanks = [](Texts& tokens) {
  QXStringTokenize(tokens, words, " ", /*skipEmpty=*/false);
};
[[maybe_unused]] const bool added5 = Tokenize("tokenize at white space/QX", tokenizeOurs) &&
                                     Tokenize("tokenize at blanks/QX", tokenizeOursAtBlanks);
#ifdef HAVE_ABSL
const auto tokenizeAbsl = [](Texts& tokens) {
  tokens = absl::StrSplit(words, absl::ByAnyChar(" \t\n"), absl::SkipEmpty());
};
const auto tokenizeAbslAtBlanks = [](Texts& tokens) { tokens = absl::StrSplit(words, ' '); };
[[maybe_unused]] const bool added6 = Tokenize("tokenize at white space/absl", tokenizeAbsl) &&
                                     Tokenize("tokenize at blanks/absl", tokenizeAbslAtBlanks);
#endif

template <class Split>
bool Csv(const char* name, char escape, Split split) {
  return Add(name, [lines = MakeLines(escape), split](benchmark::State& state) {
    Texts fields;
    for (auto _ : state)
      for (const auto& line : lines) {
        split(line, fields);
        if (fields.size() != 10) state.SkipWithError("wrong number of fields");
        benchmark::DoNotOptimize(fields.data());
      }
  });
}

const auto csvOurs = [](const std::string& line, Texts& fields) {
  QXStringCSVTokenize(fields, line, ',', '"');
};
[[maybe_unused]] const bool added7 = Csv("CSV/QX", '"', csvOurs);
#ifdef HAVE_BOOST
const auto csvBoost = [](const std::string& line, Texts& fields) {
  using Separator = boost::escaped_list_separator<char>;
  const boost::tokenizer<Separator> tokens(line, Separator('\\', ',', '"'));
  fields.assign(tokens.begin(), tokens.end());
};
[[maybe_unused]] const bool added8 = Csv("CSV/boost", '\\', csvBoost);
#endif

// --- printf

template <class Make>
bool Format(const char* name, Make make) {
  return Add(name, [make](benchmark::State& state) {
    for (auto _ : state)
      for (std::size_t i = 0; i < numbers; ++i) {
        std::string text = make("molecule", ints[i], doubles[i]);
        benchmark::DoNotOptimize(text.data());
      }
  });
}

const auto formatOurs = [](const char* name, int i, double d) {
  return QXMakeString("%s %d %.3f", name, i, d);
};
[[maybe_unused]] const bool added9 = Format("MakeString/QX", formatOurs);
#ifdef HAVE_ABSL
const auto formatAbsl = [](const char* name, int i, double d) {
  return absl::StrFormat("%s %d %.3f", name, i, d);
};
[[maybe_unused]] const bool added10 = Format("MakeString/absl", formatAbsl);
#endif
#ifdef HAVE_FMT
const auto formatFmt = [](const char* name, int i, double d) {
  return fmt::format("{} {} {:.3f}", name, i, d);
};
const auto formatFmtPrintf = [](const char* name, int i, double d) {
  return fmt::sprintf("%s %d %.3f", name, i, d);
};
[[maybe_unused]] const bool added11 =
    Format("MakeString/fmt", formatFmt) && Format("MakeString/fmt_printf", formatFmtPrintf);
#endif

}  // namespace
