// Records beside protobuf and msgpack: a record of ten fields, set from plain
// values and written to memory, read from it and got back as plain values; and
// a stream of 10,000 different ones.
//
// The fields are a text, two integers, two floats, a truth value, 100 floats,
// ten texts, 4 KiB of bytes and a record of two fields. Records find them by
// name. The peers:
//
// - Schema is protobuf with a message type made for the record: no names.
// - NamedValues is protobuf with a map of names to values of any type.
// - Msgpack is a map of names to values, from and into the plain values
//   themselves: there is no object to set.
//
// All write into memory that is there already. Stream reading reads every
// record into a new object, which is dropped before the next; what is in it is
// not asked for, and records then don't decode it.
#include <benchmark/benchmark.h>

#include <cstring>
#include <numeric>
#include <string>
#include <string_view>
#include <vector>

#include <qxsystem/platform/istream.h>
#include <qxsystem/platform/ostream.h>
#include <qxsystem/records/recordio.h>

#if __has_include(<msgpack.hpp>)
#include <msgpack.hpp>
#define HAVE_MSGPACK 1
#endif
#if __has_include("record_bench.pb.h")
#include "protobuf_bench.h"

#include "record_bench.pb.h"
#define HAVE_PROTOBUF 1
#endif

namespace {

struct Molecule {
  std::string title;
  long atoms = 0;
  long charge = 0;
  double energy = 0;
  double score = 0;
  bool chiral = false;
  std::vector<double> coordinates;
  std::vector<std::string> names;
  std::vector<unsigned char> image;
  std::string program;
  long run = 0;

  bool operator==(const Molecule& o) const {
    return title == o.title && atoms == o.atoms && charge == o.charge && energy == o.energy &&
           score == o.score && chiral == o.chiral && coordinates == o.coordinates &&
           names == o.names && image == o.image && program == o.program && run == o.run;
  }
};

Molecule Example(int serial) {
  Molecule m;
  m.title = "molecule " + std::to_string(serial);
  m.atoms = 1000 + serial;
  m.charge = -1;
  m.energy = -12.5;
  m.score = 0.75;
  m.chiral = true;
  m.coordinates.resize(100);
  std::iota(m.coordinates.begin(), m.coordinates.end(), serial);
  for (int i = 0; i < 10; ++i) m.names.push_back("residue " + std::to_string(serial + i));
  m.image.assign(4096, static_cast<unsigned char>(serial));
  m.program = "docking";
  m.run = serial;
  return m;
}

class Record {
public:
  using Object = QXDataFlow::QXRecord;

  void Set(Object& record, const Molecule& m) {
    record.SetValue(title, m.title);
    record.SetValue(atoms, m.atoms);
    record.SetValue(charge, m.charge);
    record.SetValue(energy, m.energy);
    record.SetValue(score, m.score);
    record.SetValue(chiral, m.chiral);
    record.SetValue(coordinates, m.coordinates);
    record.SetValue(names, m.names);
    record.SetValue(image, m.image);
    Object inner;
    inner.SetValue(program, m.program);
    inner.SetValue(run, m.run);
    record.SetValue(origin, std::move(inner));
  }
  void Get(const Object& record, Molecule& m) {
    record.GetValue(m.title, title);
    record.GetValue(m.atoms, atoms);
    record.GetValue(m.charge, charge);
    record.GetValue(m.energy, energy);
    record.GetValue(m.score, score);
    record.GetValue(m.chiral, chiral);
    record.GetValue(m.coordinates, coordinates);
    record.GetValue(m.names, names);
    record.GetValue(m.image, image);
    const Object inner = record.GetValue(origin);
    inner.GetValue(m.program, program);
    inner.GetValue(m.run, run);
  }

  void StartWriting() { out.clear(); }
  void Write(const Object& record) { QXDataFlow::QXWriteRecord(out, record, "binary"); }
  std::size_t Size() const { return out.size(); }

  void StartReading() { in.set(out.data(), out.size(), /*copy=*/false); }
  void Read(Object& record) { QXDataFlow::QXReadRecord(record, in, "binary"); }

private:
  const QXDataFlow::QXField<std::string> title{"title"}, program{"program"};
  const QXDataFlow::QXField<long> atoms{"atoms"}, charge{"charge"}, run{"run"};
  const QXDataFlow::QXField<double> energy{"energy"}, score{"score"};
  const QXDataFlow::QXField<bool> chiral{"chiral"};
  const QXDataFlow::QXVectorField<double> coordinates{"coordinates"};
  const QXDataFlow::QXVectorField<std::string> names{"names"};
  const QXDataFlow::QXField<QXDataFlow::QXBytes> image{"image"};
  const QXDataFlow::QXField<QXDataFlow::QXRecord> origin{"origin"};
  QXPlatform::qxosstream out;
  QXPlatform::qxisstream in;
};

#if HAVE_MSGPACK
class Msgpack {
public:
  using Object = Molecule;

  void Set(Object& object, const Molecule& m) { object = m; }
  void Get(const Object& object, Molecule& m) { m = object; }

  void StartWriting() { out.clear(); }
  void Write(const Object& m) {
    Packer to(out);
    to.pack_map(10);
    Put(to, "title", m.title);
    Put(to, "atoms", m.atoms);
    Put(to, "charge", m.charge);
    Put(to, "energy", m.energy);
    Put(to, "score", m.score);
    Put(to, "chiral", m.chiral);
    Put(to, "coordinates", m.coordinates);
    Put(to, "names", m.names);
    Put(to, "image", m.image);
    PutName(to, "origin");
    to.pack_map(2);
    Put(to, "program", m.program);
    Put(to, "run", m.run);
  }
  std::size_t Size() const { return out.size(); }

  void StartReading() { offset = 0; }
  void Read(Object& m) {
    const msgpack::object_handle handle = msgpack::unpack(out.data(), out.size(), offset, Refer);
    ForEach(handle.get(), [&m](std::string_view name, const msgpack::object& value) {
      if (name == "title")
        value.convert(m.title);
      else if (name == "atoms")
        value.convert(m.atoms);
      else if (name == "charge")
        value.convert(m.charge);
      else if (name == "energy")
        value.convert(m.energy);
      else if (name == "score")
        value.convert(m.score);
      else if (name == "chiral")
        value.convert(m.chiral);
      else if (name == "coordinates")
        value.convert(m.coordinates);
      else if (name == "names")
        value.convert(m.names);
      else if (name == "image")
        value.convert(m.image);
      else if (name == "origin")
        ForEach(value, [&m](std::string_view inner, const msgpack::object& v) {
          if (inner == "program")
            v.convert(m.program);
          else if (inner == "run")
            v.convert(m.run);
        });
    });
  }

private:
  using Packer = msgpack::packer<msgpack::sbuffer>;

  static void PutName(Packer& to, std::string_view name) {
    to.pack_str(static_cast<std::uint32_t>(name.size()));
    to.pack_str_body(name.data(), static_cast<std::uint32_t>(name.size()));
  }
  template <class T>
  static void Put(Packer& to, std::string_view name, const T& value) {
    PutName(to, name);
    to.pack(value);
  }
  template <class F>
  static void ForEach(const msgpack::object& map, F call) {
    for (const auto* item = map.via.map.ptr; item != map.via.map.ptr + map.via.map.size; ++item)
      call(std::string_view(item->key.via.str.ptr, item->key.via.str.size), item->val);
  }
  static bool Refer(msgpack::type::object_type, std::size_t, void*) { return true; }

  msgpack::sbuffer out;
  std::size_t offset = 0;
};
#endif

#if HAVE_PROTOBUF
template <class Repeated, class T>
void CopyOut(const Repeated& values, std::vector<T>& out) {
  out.assign(values.begin(), values.end());
}

struct Schema : Protobuf<record_bench::Molecule> {
  void Set(Object& object, const Molecule& m) {
    object.set_title(m.title);
    object.set_atoms(m.atoms);
    object.set_charge(m.charge);
    object.set_energy(m.energy);
    object.set_score(m.score);
    object.set_chiral(m.chiral);
    object.mutable_coordinates()->Add(m.coordinates.begin(), m.coordinates.end());
    for (const std::string& name : m.names) object.add_names(name);
    object.set_image(m.image.data(), m.image.size());
    object.mutable_origin()->set_program(m.program);
    object.mutable_origin()->set_run(m.run);
  }
  void Get(const Object& object, Molecule& m) {
    m.title = object.title();
    m.atoms = object.atoms();
    m.charge = object.charge();
    m.energy = object.energy();
    m.score = object.score();
    m.chiral = object.chiral();
    CopyOut(object.coordinates(), m.coordinates);
    CopyOut(object.names(), m.names);
    CopyOut(object.image(), m.image);
    m.program = object.origin().program();
    m.run = object.origin().run();
  }
};

struct NamedValues : Protobuf<record_bench::NamedValues> {
  void Set(Object& object, const Molecule& m) {
    auto& values = *object.mutable_values();
    values["title"].set_text(m.title);
    values["atoms"].set_int_value(m.atoms);
    values["charge"].set_int_value(m.charge);
    values["energy"].set_double_value(m.energy);
    values["score"].set_double_value(m.score);
    values["chiral"].set_bool_value(m.chiral);
    values["coordinates"].mutable_doubles()->mutable_values()->Add(m.coordinates.begin(),
                                                                   m.coordinates.end());
    auto& names = *values["names"].mutable_texts();
    for (const std::string& name : m.names) names.add_values(name);
    values["image"].set_bytes_value(m.image.data(), m.image.size());
    auto& inner = *values["origin"].mutable_record()->mutable_values();
    inner["program"].set_text(m.program);
    inner["run"].set_int_value(m.run);
  }
  void Get(const Object& object, Molecule& m) {
    const auto& values = object.values();
    m.title = values.at("title").text();
    m.atoms = values.at("atoms").int_value();
    m.charge = values.at("charge").int_value();
    m.energy = values.at("energy").double_value();
    m.score = values.at("score").double_value();
    m.chiral = values.at("chiral").bool_value();
    CopyOut(values.at("coordinates").doubles().values(), m.coordinates);
    CopyOut(values.at("names").texts().values(), m.names);
    CopyOut(values.at("image").bytes_value(), m.image);
    const auto& inner = values.at("origin").record().values();
    m.program = inner.at("program").text();
    m.run = inner.at("run").int_value();
  }
};
#endif

template <class Format>
void SetAndWrite(benchmark::State& state) {
  Format format;
  const Molecule m = Example(7);
  for (auto _ : state) {
    typename Format::Object object;
    format.Set(object, m);
    format.StartWriting();
    format.Write(object);
    benchmark::ClobberMemory();
  }
  state.counters["size"] = static_cast<double>(format.Size());
}

template <class Format>
void ReadAndGet(benchmark::State& state) {
  Format format;
  const Molecule m = Example(7);
  typename Format::Object written;
  format.Set(written, m);
  format.StartWriting();
  format.Write(written);
  for (auto _ : state) {
    typename Format::Object object;
    format.StartReading();
    format.Read(object);
    Molecule got;
    format.Get(object, got);
    benchmark::DoNotOptimize(got);
    if (got.run != m.run) state.SkipWithError("read wrongly");
  }
  Molecule got;
  format.Get(written, got);
  if (!(got == m)) state.SkipWithError("set or got wrongly");
}

constexpr int StreamLength = 10000;

template <class Format>
std::vector<typename Format::Object> Objects(Format& format) {
  std::vector<typename Format::Object> objects(StreamLength);
  int serial = 0;
  for (auto& object : objects) format.Set(object, Example(serial++));
  return objects;
}

template <class Format>
void WriteAll(Format& format, const std::vector<typename Format::Object>& objects) {
  format.StartWriting();
  for (const auto& object : objects) format.Write(object);
}

template <class Format>
void StreamWrite(benchmark::State& state) {
  Format format;
  const auto objects = Objects(format);
  WriteAll(format, objects);
  for (auto _ : state) {
    WriteAll(format, objects);
    benchmark::ClobberMemory();
  }
  state.counters["size"] = static_cast<double>(format.Size());
}

template <class Format>
void StreamRead(benchmark::State& state) {
  Format format;
  WriteAll(format, Objects(format));
  format.StartReading();
  for (int serial = 0; serial < StreamLength; ++serial) {
    typename Format::Object object;
    format.Read(object);
    Molecule got;
    format.Get(object, got);
    if (!(got == Example(serial))) state.SkipWithError("read wrongly");
  }
  for (auto _ : state) {
    format.StartReading();
    for (int serial = 0; serial < StreamLength; ++serial) {
      typename Format::Object object;
      format.Read(object);
      benchmark::DoNotOptimize(object);
    }
  }
}

#define BENCH_FORMAT(Format)                                     \
  BENCHMARK(SetAndWrite<Format>);                                \
  BENCHMARK(ReadAndGet<Format>);                                 \
  BENCHMARK(StreamWrite<Format>)->Unit(benchmark::kMillisecond); \
  BENCHMARK(StreamRead<Format>)->Unit(benchmark::kMillisecond)

BENCH_FORMAT(Record);
#if HAVE_MSGPACK
BENCH_FORMAT(Msgpack);
#endif
#if HAVE_PROTOBUF
BENCH_FORMAT(Schema);
BENCH_FORMAT(NamedValues);
#endif

}  // namespace
