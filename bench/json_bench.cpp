// JSON of generic data: an object of twelve items, the longest a vector of 3,000
// floats, in 57 KB of text; and Base85 of 1 MiB.
//
// The peers have any JSON value where the library reads vectors of floats.
// RapidJSON is used as the library does, with its writer and the same flags;
// Simdjson keeps its parser; ZeroMQ's Z85 is Base85 with other characters.
#include <benchmark/benchmark.h>

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

struct QXJSON {
  bool Read(const std::string& text) { return QXSystem::QXJSONToBase(object, text); }
  double Last() const {
    return static_cast<double>(object.GetData<std::vector<float>>("coordinates").back());
  }
  std::size_t Write() const { return QXSystem::QXBaseToJSON(object).size(); }

  QXSystem::QXContainer object;
};

struct RapidJSON {
  bool Read(const std::string& text) {
    using namespace rapidjson;
    document = Document();
    document.Parse<kParseFullPrecisionFlag | kParseNanAndInfFlag | kParseIterativeFlag>(
        text.c_str());
    return document.IsObject();
  }
  double Last() const { return document["coordinates"][NumCoordinates - 1].GetDouble(); }
  std::size_t Write() const {
    rapidjson::StringBuffer buffer;
    QXSystem::Writer writer(buffer);
    document.Accept(writer);
    return buffer.GetSize();
  }

  rapidjson::Document document;
};

template <class Subject>
void Read(benchmark::State& state) {
  const QXJSON example{Example()};
  const std::string text = QXSystem::QXBaseToJSON(example.object);
  Subject subject;
  for (auto _ : state) benchmark::DoNotOptimize(subject.Read(text));
  if (subject.Last() != example.Last()) state.SkipWithError("did not read what was written");
}
BENCHMARK_TEMPLATE(Read, QXJSON);
BENCHMARK_TEMPLATE(Read, RapidJSON);

template <class Subject>
void Write(benchmark::State& state) {
  const std::string text = QXSystem::QXBaseToJSON(Example());
  Subject subject;
  subject.Read(text);
  if (subject.Write() != text.size()) state.SkipWithError("did not write what was read");
  for (auto _ : state) benchmark::DoNotOptimize(subject.Write());
}
BENCHMARK_TEMPLATE(Write, QXJSON);
BENCHMARK_TEMPLATE(Write, RapidJSON);

#if HAVE_NLOHMANN
struct Nlohmann {
  bool Read(const std::string& text) {
    document = nlohmann::json::parse(text);
    return document.is_object();
  }
  double Last() const { return document["coordinates"].back().get<double>(); }
  std::size_t Write() const { return document.dump().size(); }

  nlohmann::json document;
};
BENCHMARK_TEMPLATE(Read, Nlohmann);
BENCHMARK_TEMPLATE(Write, Nlohmann);
#endif

#if HAVE_SIMDJSON
struct Simdjson {
  bool Read(const std::string& text) {
    document = parser.parse(text);
    return document.is_object();
  }
  double Last() const { return document["coordinates"].at(NumCoordinates - 1); }

  simdjson::dom::parser parser;
  simdjson::dom::element document;
};
BENCHMARK_TEMPLATE(Read, Simdjson);
#endif

// --- Base85

std::vector<unsigned char> RandomBytes() {
  std::mt19937 random(1);
  std::vector<unsigned char> bytes(1 << 20);
  for (auto& byte : bytes) byte = static_cast<unsigned char>(random());
  return bytes;
}

struct QXBase85 {
  void Encode() { text = QXDataFlow::QXBase85Encode(bytes); }
  void Decode() { decoded = QXDataFlow::QXBase85Decode(text); }

  const std::vector<unsigned char> bytes = RandomBytes();
  std::string text;
  std::vector<unsigned char> decoded;
};

template <class Subject>
void Encode(benchmark::State& state) {
  Subject subject;
  for (auto _ : state) subject.Encode();
}
template <class Subject>
void Decode(benchmark::State& state) {
  Subject subject;
  subject.Encode();
  for (auto _ : state) subject.Decode();
  if (subject.decoded != subject.bytes) state.SkipWithError("did not decode what was encoded");
}
BENCHMARK_TEMPLATE(Encode, QXBase85);
BENCHMARK_TEMPLATE(Decode, QXBase85);

#if HAVE_ZMQ
struct Z85 : QXBase85 {
  void Encode() {
    text.resize(bytes.size() / 4 * 5);
    zmq_z85_encode(text.data(), bytes.data(), bytes.size());
  }
  void Decode() {
    decoded.resize(text.size() / 5 * 4);
    zmq_z85_decode(decoded.data(), text.c_str());
  }
};
BENCHMARK_TEMPLATE(Encode, Z85);
BENCHMARK_TEMPLATE(Decode, Z85);
#endif

}  // namespace
