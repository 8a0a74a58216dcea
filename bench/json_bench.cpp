// JSON of generic data beside other JSON libraries: an object of twelve items,
// the longest a vector of 3,000 floats, in 57 KB of text; and Base85 of 1 MiB
// beside ZeroMQ's Z85, which differs in the alphabet only.
//
// The peers write from and read into what they have for any JSON value, while
// the library's values are typed: it writes hints and reads vectors of float.
//
// - RapidJSON, on which the library stands, has its document written by the
//   same writer, and read with the same flags.
// - Simdjson reads into a parser that is kept, as its users are told to do.
#include <benchmark/benchmark.h>

#include <array>
#include <random>
#include <string>
#include <vector>

#include <qxsystem/json/base85.h>
#include <qxsystem/json/jsonhandler.h>

#if __has_include(<nlohmann/json.hpp>)
#include <nlohmann/json.hpp>
#define HAVE_NLOHMANN 1
#endif
#if __has_include(<simdjson.h>)
#include <simdjson.h>
#define HAVE_SIMDJSON 1
#endif
#if __has_include(<zmq.h>)
#include <zmq.h>
#define HAVE_ZMQ 1
#endif

namespace {

constexpr unsigned NumCoordinates = 3000;

QXSystem::QXContainer Example() {
  std::mt19937 random(1);
  std::uniform_real_distribution<float> place(-50, 50);
  std::vector<float> coordinates(NumCoordinates);
  for (float& c : coordinates) c = place(random);
  QXSystem::QXContainer object;
  object.SetData<std::string>("title", "molecule 1");
  object.SetData<std::string>("comment", "docked, best of 20 poses");
  object.SetData<int>("atoms", 1000);
  object.SetData<int>("charge", -1);
  object.SetData<bool>("chiral", true);
  object.SetData<float>("radius", 7.25F);
  object.SetData<double>("energy", -12.5);
  object.SetData<double>("score", 0.75);
  object.SetData<std::vector<int>>("bonds", {1, 2, 3, 4, 5, 6, 7, 8});
  object.SetData<std::vector<double>>("center", {1.5, 2.5, 3.5});
  object.SetData<std::vector<std::string>>("names", {"C1", "C2", "N1"});
  object.SetData<std::vector<float>>("coordinates", coordinates);
  return object;
}

std::string ExampleText() {
  return QXSystem::QXBaseToJSON(Example());
}

struct QXJSON {
  void Read(const std::string& text) {
    object.Clear();
    QXSystem::QXJSONToBase(object, text);
  }
  double Last() const {
    const auto& all = object.GetData<std::vector<float>>("coordinates");
    return static_cast<double>(all[NumCoordinates - 1]);
  }
  std::size_t Write() { return QXSystem::QXBaseToJSON(object).size(); }

  QXSystem::QXContainer object;
};

struct RapidJSON {
  static constexpr unsigned flags = rapidjson::kParseFullPrecisionFlag |
                                    rapidjson::kParseNanAndInfFlag | rapidjson::kParseIterativeFlag;

  void Read(const std::string& text) {
    document = rapidjson::Document();
    document.Parse<flags>(text.c_str());
  }
  double Last() const { return document["coordinates"][NumCoordinates - 1].GetDouble(); }
  std::size_t Write() {
    rapidjson::StringBuffer buffer;
    QXSystem::Writer writer(buffer);
    document.Accept(writer);
    return buffer.GetSize();
  }

  rapidjson::Document document;
};

#if HAVE_NLOHMANN
struct Nlohmann {
  void Read(const std::string& text) { document = nlohmann::json::parse(text); }
  double Last() const { return document["coordinates"][NumCoordinates - 1].get<double>(); }
  std::size_t Write() { return document.dump().size(); }

  nlohmann::json document;
};
#endif

#if HAVE_SIMDJSON
struct Simdjson {
  void Read(const std::string& text) { document = parser.parse(text); }
  double Last() const {
    return document["coordinates"].get_array().at(NumCoordinates - 1).get_double();
  }

  simdjson::dom::parser parser;
  simdjson::dom::element document;
};
#endif

template <class Subject>
void Read(benchmark::State& state) {
  const std::string text = ExampleText();
  const double last =
      static_cast<double>(Example().GetData<std::vector<float>>("coordinates").back());
  Subject subject;
  for (auto _ : state) subject.Read(text);
  if (subject.Last() != last) state.SkipWithError("did not read what was written");
  state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(text.size()));
}

template <class Subject>
void Write(benchmark::State& state) {
  const std::string text = ExampleText();
  Subject subject;
  subject.Read(text);
  if (subject.Write() != text.size()) state.SkipWithError("did not write what was read");
  for (auto _ : state) benchmark::DoNotOptimize(subject.Write());
  state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(text.size()));
}

BENCHMARK_TEMPLATE(Read, QXJSON);
BENCHMARK_TEMPLATE(Read, RapidJSON);
BENCHMARK_TEMPLATE(Write, QXJSON);
BENCHMARK_TEMPLATE(Write, RapidJSON);
#if HAVE_NLOHMANN
BENCHMARK_TEMPLATE(Read, Nlohmann);
BENCHMARK_TEMPLATE(Write, Nlohmann);
#endif
#if HAVE_SIMDJSON
BENCHMARK_TEMPLATE(Read, Simdjson);
#endif

// --- Base85

struct QXBase85 {
  std::string Encode(const std::vector<unsigned char>& bytes) {
    return QXDataFlow::QXBase85Encode(bytes);
  }
  std::vector<unsigned char> Decode(const std::string& text) {
    return QXDataFlow::QXBase85Decode(text);
  }
};

#if HAVE_ZMQ
struct Z85 {
  const std::string& Encode(const std::vector<unsigned char>& bytes) {
    text.resize(bytes.size() / 4 * 5 + 1);
    zmq_z85_encode(text.data(), bytes.data(), bytes.size());
    text.pop_back();
    return text;
  }
  const std::vector<unsigned char>& Decode(const std::string& from) {
    decoded.resize(from.size() / 5 * 4);
    zmq_z85_decode(decoded.data(), from.c_str());
    return decoded;
  }

  std::string text;
  std::vector<unsigned char> decoded;
};
#endif

std::vector<unsigned char> RandomBytes() {
  std::mt19937 random(1);
  std::vector<unsigned char> bytes(1 << 20);
  for (auto& byte : bytes) byte = static_cast<unsigned char>(random());
  return bytes;
}

template <class Subject>
void Encode(benchmark::State& state) {
  const auto bytes = RandomBytes();
  Subject subject;
  for (auto _ : state) benchmark::DoNotOptimize(subject.Encode(bytes));
  state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(bytes.size()));
}

template <class Subject>
void Decode(benchmark::State& state) {
  const auto bytes = RandomBytes();
  Subject subject;
  const std::string text = subject.Encode(bytes);
  if (subject.Decode(text) != bytes) state.SkipWithError("did not decode what was encoded");
  for (auto _ : state) benchmark::DoNotOptimize(subject.Decode(text));
  state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(bytes.size()));
}

BENCHMARK_TEMPLATE(Encode, QXBase85);
BENCHMARK_TEMPLATE(Decode, QXBase85);
#if HAVE_ZMQ
BENCHMARK_TEMPLATE(Encode, Z85);
BENCHMARK_TEMPLATE(Decode, Z85);
#endif

}  // namespace
