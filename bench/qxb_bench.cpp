// The binary format beside msgpack and protobuf: an object of twelve items, the
// longest an array of 3,000 floats, written to memory and read from it; one
// object, and a stream of 1,000 different ones.
//
// The library writes and reads named values of any type through a handler, as
// programs do. The peers:
//
// - Msgpack stores a map of names to values, from and into a plain struct.
//   Arrays are `bin`, one copy each way; reading refers to the buffer and finds
//   the struct's members by name.
// - Schema is protobuf with a message type made for the object: no names.
// - NamedValues is protobuf with a map of names to values of any type.
//
// All write into memory that is there already, and read every object into a new
// one, which is dropped before the next.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstring>
#include <memory>
#include <numeric>
#include <string>
#include <string_view>
#include <vector>

#include <qxsystem/qxb/qxbrfxn.h>
#include <qxsystem/qxb/qxbwfxn.h>

#if __has_include(<msgpack.hpp>)
#include <msgpack.hpp>
#define HAVE_MSGPACK 1
#endif
#if __has_include("qxb_bench.pb.h")
#include "protobuf_bench.h"

#include "qxb_bench.pb.h"
#define HAVE_PROTOBUF 1
#endif

namespace {

constexpr unsigned NumCoordinates = 3000;

struct Molecule {
  std::string title;
  std::string comment;
  int atoms = 0;
  int charge = 0;
  bool chiral = false;
  float radius = 0;
  double energy = 0;
  double score = 0;
  std::vector<int> bonds;
  std::vector<double> center;
  std::vector<unsigned char> screen;
  std::unique_ptr<float[]> coordinates;
};

Molecule Example(int serial) {
  Molecule m;
  m.title = "molecule " + std::to_string(serial);
  m.comment = "docked, best of 20 poses";
  m.atoms = 1000 + serial;
  m.charge = -1;
  m.chiral = true;
  m.radius = 7.25F;
  m.energy = -12.5;
  m.score = 0.75;
  m.bonds.resize(40);
  std::iota(m.bonds.begin(), m.bonds.end(), serial);
  m.center = {1.5, 2.5, 3.5};
  m.screen.assign(64, 0xA5);
  m.coordinates.reset(new float[NumCoordinates]);
  std::iota(m.coordinates.get(), m.coordinates.get() + NumCoordinates, static_cast<float>(serial));
  return m;
}

// Every format makes its objects of a Molecule, and shows three items of an
// object for the check that it was read.
struct Shown {
  std::string title;
  int atoms;
  float lastCoordinate;
  bool operator==(const Shown& other) const {
    return title == other.title && atoms == other.atoms && lastCoordinate == other.lastCoordinate;
  }
};

class QXB {
public:
  using Object = QXSystem::QXContainer;

  QXB() {
    handler.SetReadFxn(QXSystem::QXBasePODReadFxn<Object>(), /*asDefault=*/false);
    handler.SetWriteFxn(QXSystem::QXBasePODWriteFxn(), /*asDefault=*/false);
  }

  static Object Make(const Molecule& m) {
    Object object;
    object.SetData<std::string>("title", m.title);
    object.SetData<std::string>("comment", m.comment);
    object.SetData<int>("atoms", m.atoms);
    object.SetData<int>("charge", m.charge);
    object.SetData<bool>("chiral", m.chiral);
    object.SetData<float>("radius", m.radius);
    object.SetData<double>("energy", m.energy);
    object.SetData<double>("score", m.score);
    object.SetData<std::vector<int>>("bonds", m.bonds);
    object.SetData<std::vector<double>>("center", m.center);
    object.SetData<std::vector<unsigned char>>("screen", m.screen);
    object.SetData<float>("coordinates", m.coordinates.get(), NumCoordinates);
    return object;
  }

  static Shown Show(const Object& object) {
    return {object.GetData<std::string>("title"), object.GetData<int>("atoms"),
            object.GetData<float*>("coordinates")[NumCoordinates - 1]};
  }

  void StartWriting() { out.clear(); }
  void Write(const Object& object) {
    QXSystem::QXBinaryWrite<QXSystem::QXBase>(out, object, handler);
  }
  std::size_t Size() const { return out.size(); }

  void StartReading() { in.set(out.data(), out.size(), /*copy=*/false); }
  void Read(Object& object) { QXSystem::QXBinaryRead(in, object, handler); }

private:
  QXSystem::QXBinaryIOHandler handler;
  QXSystem::qxosstream out;
  QXSystem::qxisstream in;
};

#if HAVE_MSGPACK
class Msgpack {
public:
  using Object = Molecule;

  static Object Make(const Molecule& m) { return Example(m.atoms - 1000); }

  static Shown Show(const Object& m) {
    return {m.title, m.atoms, m.coordinates[NumCoordinates - 1]};
  }

  void StartWriting() { out.clear(); }
  void Write(const Object& m) {
    msgpack::packer<msgpack::sbuffer> to(out);
    to.pack_map(12);
    Put(to, "title", m.title);
    Put(to, "comment", m.comment);
    Put(to, "atoms", m.atoms);
    Put(to, "charge", m.charge);
    Put(to, "chiral", m.chiral);
    Put(to, "radius", m.radius);
    Put(to, "energy", m.energy);
    Put(to, "score", m.score);
    PutArray(to, "bonds", m.bonds.data(), m.bonds.size());
    PutArray(to, "center", m.center.data(), m.center.size());
    PutArray(to, "screen", m.screen.data(), m.screen.size());
    PutArray(to, "coordinates", m.coordinates.get(), NumCoordinates);
  }
  std::size_t Size() const { return out.size(); }

  void StartReading() { offset = 0; }
  void Read(Object& m) {
    const msgpack::object_handle handle = msgpack::unpack(out.data(), out.size(), offset, Refer);
    const msgpack::object_map& map = handle->via.map;
    for (const msgpack::object_kv* item = map.ptr; item != map.ptr + map.size; ++item) {
      const std::string_view name(item->key.via.str.ptr, item->key.via.str.size);
      const msgpack::object& value = item->val;
      if (name == "title")
        value.convert(m.title);
      else if (name == "comment")
        value.convert(m.comment);
      else if (name == "atoms")
        value.convert(m.atoms);
      else if (name == "charge")
        value.convert(m.charge);
      else if (name == "chiral")
        value.convert(m.chiral);
      else if (name == "radius")
        value.convert(m.radius);
      else if (name == "energy")
        value.convert(m.energy);
      else if (name == "score")
        value.convert(m.score);
      else if (name == "bonds")
        GetVector(value, m.bonds);
      else if (name == "center")
        GetVector(value, m.center);
      else if (name == "screen")
        GetVector(value, m.screen);
      else if (name == "coordinates") {
        m.coordinates.reset(new float[value.via.bin.size / sizeof(float)]);
        std::memcpy(m.coordinates.get(), value.via.bin.ptr, value.via.bin.size);
      }
    }
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
  template <class T>
  static void PutArray(Packer& to, std::string_view name, const T* array, std::size_t n) {
    PutName(to, name);
    to.pack_bin(static_cast<std::uint32_t>(n * sizeof(T)));
    to.pack_bin_body(reinterpret_cast<const char*>(array),
                     static_cast<std::uint32_t>(n * sizeof(T)));
  }
  template <class T>
  static void GetVector(const msgpack::object& value, std::vector<T>& array) {
    array.resize(value.via.bin.size / sizeof(T));
    std::memcpy(array.data(), value.via.bin.ptr, value.via.bin.size);
  }
  static bool Refer(msgpack::type::object_type, std::size_t, void*) { return true; }

  msgpack::sbuffer out;
  std::size_t offset = 0;
};
#endif

#if HAVE_PROTOBUF
struct Schema : Protobuf<qxb_bench::Molecule> {
  static Object Make(const Molecule& m) {
    Object object;
    object.set_title(m.title);
    object.set_comment(m.comment);
    object.set_atoms(m.atoms);
    object.set_charge(m.charge);
    object.set_chiral(m.chiral);
    object.set_radius(m.radius);
    object.set_energy(m.energy);
    object.set_score(m.score);
    object.mutable_bonds()->Add(m.bonds.begin(), m.bonds.end());
    object.mutable_center()->Add(m.center.begin(), m.center.end());
    object.set_screen(m.screen.data(), m.screen.size());
    object.mutable_coordinates()->Add(m.coordinates.get(), m.coordinates.get() + NumCoordinates);
    return object;
  }

  static Shown Show(const Object& object) {
    return {object.title(), object.atoms(), object.coordinates(NumCoordinates - 1)};
  }
};

struct NamedValues : Protobuf<qxb_bench::NamedValues> {
  static Object Make(const Molecule& m) {
    Object object;
    auto& values = *object.mutable_values();
    values["title"].set_text(m.title);
    values["comment"].set_text(m.comment);
    values["atoms"].set_int_value(m.atoms);
    values["charge"].set_int_value(m.charge);
    values["chiral"].set_bool_value(m.chiral);
    values["radius"].set_float_value(m.radius);
    values["energy"].set_double_value(m.energy);
    values["score"].set_double_value(m.score);
    values["bonds"].mutable_ints()->mutable_values()->Add(m.bonds.begin(), m.bonds.end());
    values["center"].mutable_doubles()->mutable_values()->Add(m.center.begin(), m.center.end());
    values["screen"].set_bytes_value(m.screen.data(), m.screen.size());
    values["coordinates"].mutable_floats()->mutable_values()->Add(
        m.coordinates.get(), m.coordinates.get() + NumCoordinates);
    return object;
  }

  static Shown Show(const Object& object) {
    const auto& values = object.values();
    return {values.at("title").text(), values.at("atoms").int_value(),
            values.at("coordinates").floats().values(NumCoordinates - 1)};
  }
};
#endif

template <class Format>
std::vector<typename Format::Object> Objects(std::int64_t count) {
  std::vector<typename Format::Object> objects;
  for (int serial = 0; serial < count; ++serial) objects.push_back(Format::Make(Example(serial)));
  return objects;
}

template <class Format>
void WriteAll(Format& format, const std::vector<typename Format::Object>& objects) {
  format.StartWriting();
  for (const auto& object : objects) format.Write(object);
}

template <class Format>
void Write(benchmark::State& state) {
  Format format;
  const auto objects = Objects<Format>(state.range(0));
  WriteAll(format, objects);
  for (auto _ : state) {
    WriteAll(format, objects);
    benchmark::ClobberMemory();
  }
  state.counters["size"] = static_cast<double>(format.Size());
}

template <class Format>
void Read(benchmark::State& state) {
  Format format;
  const auto objects = Objects<Format>(state.range(0));
  WriteAll(format, objects);
  format.StartReading();
  for (const auto& written : objects) {
    typename Format::Object object;
    format.Read(object);
    if (!(Format::Show(object) == Format::Show(written))) state.SkipWithError("read wrongly");
  }
  for (auto _ : state) {
    format.StartReading();
    for (std::size_t i = 0; i < objects.size(); ++i) {
      typename Format::Object object;
      format.Read(object);
      benchmark::DoNotOptimize(object);
    }
  }
}

#define BENCH_FORMAT(Format)                   \
  BENCHMARK(Write<Format>)->Arg(1)->Arg(1000); \
  BENCHMARK(Read<Format>)->Arg(1)->Arg(1000)

BENCH_FORMAT(QXB);
#if HAVE_MSGPACK
BENCH_FORMAT(Msgpack);
#endif
#if HAVE_PROTOBUF
BENCH_FORMAT(Schema);
BENCH_FORMAT(NamedValues);
#endif

}  // namespace
