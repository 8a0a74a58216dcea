// The encodings of values. The first byte chooses one of the fifteen types; a
// value that was decoded from the others is encoded, decoded and encoded as the
// same, and a record says the same of it.

#include "record_fuzz.h"

namespace {

template <class Handler, class Value>
bool Decode(const Handler&, Value& value, const QXBytes& bytes) {
  try {
    return Handler::FromBytes(value, bytes);
  } catch (const std::length_error&) {
    return false;
  }
}

template <class T>
void Check(const QXFieldType<T>& handler, const QXField<T>& field, const QXBytes& bytes) {
  T value{}, again{}, got{};
  QXRecord record;
  record.SetBytes(field, bytes);
  const bool isValue = Decode(handler, value, bytes);
  REQUIRE(record.GetValue(got, field) == isValue);
  const QXBytes encoded = handler.ToBytes(value);
  REQUIRE(!isValue || handler.ToBytes(got) == encoded);
  REQUIRE(!isValue || handler.Format(got) == handler.Format(value));
  // Links to nothing have no bytes.
  const bool isNothing =
      encoded.empty() && !std::is_same_v<T, std::string> && !std::is_same_v<T, QXBytes>;
  REQUIRE(handler.FromBytes(again, encoded) == !isNothing);
  REQUIRE(handler.ToBytes(again) == encoded);
  QXRecord set;
  set.SetValue(field, value);
  REQUIRE(set.GetBytes(field) == encoded);
}

template <class T>
void Check(const QXVectorFieldType<T>& handler, const QXVectorField<T>& field,
           const QXBytes& bytes) {
  std::vector<std::optional<T>> values, again;
  std::vector<T> plain, plainAgain;
  const bool isValue = Decode(handler, values, bytes);
  REQUIRE(Decode(handler, plain, bytes) == isValue);
  REQUIRE(plain.size() == values.size());
  const QXBytes encoded = handler.ToBytes(values), plainEncoded = handler.ToBytes(plain);
  REQUIRE(handler.FromBytes(again, encoded) && handler.ToBytes(again) == encoded);
  REQUIRE(handler.FromBytes(plainAgain, plainEncoded));
  REQUIRE(handler.ToBytes(plainAgain) == plainEncoded);
  REQUIRE(handler.Format(values) == handler.Format(again));
  QXRecord record;
  record.SetValue(field, values);
  REQUIRE(record.GetBytes(field) == encoded);
  record.SetValue(field, plain);
  REQUIRE(record.GetBytes(field) == plainEncoded);
}

template <class T>
QXFieldType<T> HandlerOf(const QXField<T>&) {
  return {};
}
template <class T>
QXVectorFieldType<T> HandlerOf(const QXVectorField<T>&) {
  return {};
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size == 0) return 0;
  const QXBytes bytes(data + 1, data + size);
  unsigned type = *data % 15U;
  ForEveryField("v", [&](const auto& field) {
    if (type-- == 0) Check(HandlerOf(field), field, bytes);
  });
  return 0;
}
