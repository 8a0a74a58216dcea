// What a program's start costs: the description of 40 parameters in four
// categories, and with it the parse of 30 arguments, beside CLI11 and Boost. A
// benchmark is called <job>/<library>.
#include <benchmark/benchmark.h>

#include <string>
#include <vector>

#include <qxsystem/interface/commandline.h>
#include <qxsystem/interface/interface.h>

#if __has_include(<CLI/CLI.hpp>)
#include <CLI/CLI.hpp>
#define HAVE_CLI11 1
#endif
#if __has_include(<boost/program_options.hpp>)
#include <boost/program_options.hpp>
#define HAVE_BOOST 1
#endif

namespace {

using namespace QXSystem;

// In each category: three numbers with a range, two real ones, three texts, a
// list and a switch, all with a description, most with a default.
constexpr unsigned categories = 4;

std::string Key(const char* kind, unsigned category, unsigned i) {
  return "--" + std::string(kind) + std::to_string(category) + std::to_string(i);
}

std::string Brief(const std::string& key) {
  return "What the program does with " + key.substr(2) + ", in a few words";
}

std::string MakeText() {
  std::string text;
  const auto add = [&text](const std::string& key, const std::string& lines) {
    text += "  !PARAMETER " + key + "\n" + lines + "    !BRIEF " + Brief(key) + "\n  !END\n";
  };
  for (unsigned c = 0; c < categories; ++c) {
    text += "!CATEGORY \"Category " + std::to_string(c) + "\" " + std::to_string(c) + "\n";
    for (unsigned i = 0; i < 3; ++i) {
      add(Key("number", c, i),
          "    !TYPE int\n    !DEFAULT 10\n    !SIMPLE true\n    !LEGAL_RANGE 1 1000\n");
      add(Key("text", c, i), "    !TYPE string\n    !DEFAULT text\n");
    }
    for (unsigned i = 0; i < 2; ++i)
      add(Key("real", c, i), "    !TYPE double\n    !DEFAULT 0.25\n");
    add(Key("list", c, 0), "    !TYPE int\n    !LIST true\n");
    add(Key("switch", c, 0), "    !TYPE bool\n    !DEFAULT false\n");
    text += "!END\n";
  }
  return text;
}

// 30 arguments behind the program's name.
std::vector<std::string> MakeWords() {
  std::vector<std::string> words = {"program"};
  for (unsigned c = 0; c < categories; ++c) {
    words.insert(words.end(), {Key("number", c, 1), "77", Key("text", c, 2), "some/file.name"});
    if (c < 2) words.insert(words.end(), {Key("real", c, 0), "1.5e-3"});
    if (c > 1) words.insert(words.end(), {Key("list", c, 0), "1", "2", "3"});
  }
  words.insert(words.end(), {Key("switch", 0, 0), Key("switch", 1, 0)});
  return words;
}

const std::string text = MakeText();
const std::vector<std::string> words = MakeWords();

std::vector<char*> Pointers(std::vector<std::string>& copy) {
  std::vector<char*> argv;
  for (std::string& word : copy) argv.push_back(word.data());
  argv.push_back(nullptr);
  return argv;
}

constexpr int argc = 31;

void CheckArguments(benchmark::State& state, int sum) {
  if (words.size() != argc || sum != 4 * 77) state.SkipWithError("not what was given");
}

void BuildQX(benchmark::State& state) {
  for (auto _ : state) {
    QXInterface interface(text.c_str());
    benchmark::DoNotOptimize(&interface);
  }
}

void ParseQX(benchmark::State& state) {
  std::vector<std::string> copy = words;
  const std::vector<char*> argv = Pointers(copy);
  for (auto _ : state) {
    QXInterface interface(text.c_str());
    if (!QXParseCommandLine(interface, argc, const_cast<char**>(argv.data()), nullptr, 5, true))
      state.SkipWithError("not parsed");
    int sum = 0;
    for (unsigned c = 0; c < categories; ++c) {
      int number = 0;
      QXGetSetting(interface, Key("number", c, 1), number);
      sum += number;
    }
    CheckArguments(state, sum);
  }
}

BENCHMARK(BuildQX)->Name("build/QX");
BENCHMARK(ParseQX)->Name("build and parse/QX");

// What the values go into, for libraries that write into variables.
struct Values {
  int number[categories][3];
  std::string text[categories][3];
  double real[categories][2];
  std::vector<int> list[categories];
  bool flag[categories];

  int Sum() const {
    int sum = 0;
    for (const auto& n : number) sum += n[1];
    return sum;
  }
};

#ifdef HAVE_CLI11
void Describe(CLI::App& app, Values& values) {
  for (unsigned c = 0; c < categories; ++c) {
    const std::string group = "Category " + std::to_string(c);
    const auto add = [&](const std::string& key, auto& value) {
      return app.add_option(key, value, Brief(key))->capture_default_str()->group(group);
    };
    for (unsigned i = 0; i < 3; ++i) {
      values.number[c][i] = 10;
      add(Key("number", c, i), values.number[c][i])->check(CLI::Range(1, 1000));
      values.text[c][i] = "text";
      add(Key("text", c, i), values.text[c][i]);
    }
    for (unsigned i = 0; i < 2; ++i) {
      values.real[c][i] = 0.25;
      add(Key("real", c, i), values.real[c][i]);
    }
    app.add_option(Key("list", c, 0), values.list[c], Brief(Key("list", c, 0)))->group(group);
    values.flag[c] = false;
    app.add_flag(Key("switch", c, 0), values.flag[c], Brief(Key("switch", c, 0)))->group(group);
  }
}

void BuildCLI11(benchmark::State& state) {
  for (auto _ : state) {
    CLI::App app;
    Values values;
    Describe(app, values);
    benchmark::DoNotOptimize(&app);
  }
}

void ParseCLI11(benchmark::State& state) {
  std::vector<std::string> copy = words;
  const std::vector<char*> argv = Pointers(copy);
  for (auto _ : state) {
    CLI::App app;
    Values values;
    Describe(app, values);
    app.parse(argc, argv.data());
    CheckArguments(state, values.Sum());
  }
}

BENCHMARK(BuildCLI11)->Name("build/CLI11");
BENCHMARK(ParseCLI11)->Name("build and parse/CLI11");
#endif

#ifdef HAVE_BOOST
namespace po = boost::program_options;

void CheckRange(int value) {
  if (value < 1 || value > 1000) throw po::error("out of range");
}

po::options_description Describe(Values& values) {
  po::options_description all;
  for (unsigned c = 0; c < categories; ++c) {
    po::options_description group("Category " + std::to_string(c));
    const auto add = [&group](const std::string& key, const po::value_semantic* value) {
      group.add_options()(key.substr(2).c_str(), value, Brief(key).c_str());
    };
    for (unsigned i = 0; i < 3; ++i) {
      add(Key("number", c, i),
          po::value(&values.number[c][i])->default_value(10)->notifier(CheckRange));
      add(Key("text", c, i), po::value(&values.text[c][i])->default_value("text"));
    }
    for (unsigned i = 0; i < 2; ++i)
      add(Key("real", c, i), po::value(&values.real[c][i])->default_value(0.25));
    add(Key("list", c, 0), po::value(&values.list[c])->multitoken());
    add(Key("switch", c, 0), po::bool_switch(&values.flag[c]));
    all.add(group);
  }
  return all;
}

void BuildBoost(benchmark::State& state) {
  for (auto _ : state) {
    Values values;
    po::options_description all = Describe(values);
    benchmark::DoNotOptimize(&all);
  }
}

void ParseBoost(benchmark::State& state) {
  std::vector<std::string> copy = words;
  const std::vector<char*> argv = Pointers(copy);
  for (auto _ : state) {
    Values values;
    const po::options_description all = Describe(values);
    po::variables_map map;
    po::store(po::parse_command_line(argc, argv.data(), all), map);
    po::notify(map);
    CheckArguments(state, values.Sum());
  }
}

BENCHMARK(BuildBoost)->Name("build/boost");
BENCHMARK(ParseBoost)->Name("build and parse/boost");
#endif

}  // namespace
