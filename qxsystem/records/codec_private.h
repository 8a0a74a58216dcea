// The encodings of values, for all fifteen built-in types. A value alone is
// barer than an element of a vector: it knows its length from outside and needs
// no mark for none.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

#include <qxsystem/records/encoding_private.h>
#include <qxsystem/records/types.h>

namespace QXDataFlow {

// ---- Values alone ----

inline std::size_t ValueSize(long value) {
  return IntValueBytes(value);
}
inline std::size_t ValueSize(double) {
  return sizeof(double);
}
inline std::size_t ValueSize(bool) {
  return 1;
}
inline std::size_t ValueSize(const std::string& value) {
  return value.size();
}
inline std::size_t ValueSize(const QXBytes& value) {
  return value.size();
}
inline std::size_t ValueSize(const QXJSONObject& value) {
  return value.GetString().size();
}

inline void StoreValue(unsigned char* at, long value) {
  StoreIntValue(at, value, IntValueBytes(value));
}
inline void StoreValue(unsigned char* at, double value) {
  StoreBits(at, value);
}

/// 0 for true and 1 for false, unlike bools in vectors.
inline void StoreValue(unsigned char* at, bool value) {
  *at = value ? 0 : 1;
}
inline void StoreValue(unsigned char* at, const std::string& value) {
  StoreBytes(at, value.data(), value.size());
}
inline void StoreValue(unsigned char* at, const QXBytes& value) {
  StoreBytes(at, value.data(), value.size());
}
inline void StoreValue(unsigned char* at, const QXJSONObject& value) {
  StoreValue(at, value.GetString());
}

template <class T>
void AppendValue(QXBytes& out, const T& value) {
  StoreValue(Grow(out, ValueSize(value)), value);
}
void AppendValue(QXBytes& out, const QXRange& value);

/// Appends nothing for a record that has no bytes, being nested too deep.
void AppendValue(QXBytes& out, const QXRecord& value);

/// Set `value` to what the bytes say. False, with a `value` that says nothing,
/// for bytes that are no such value.
inline bool DecodeValue(long& value, const unsigned char* bytes, std::size_t size) {
  if (size == 0 || size > sizeof value) return false;
  value = LoadIntValue(bytes, size);
  return true;
}
inline bool DecodeValue(double& value, const unsigned char* bytes, std::size_t size) {
  if (size != sizeof value) return false;
  value = LoadBits<double>(bytes);
  return true;
}
inline bool DecodeValue(bool& value, const unsigned char* bytes, std::size_t size) {
  if (size != 1) return false;
  value = *bytes == 0;
  return true;
}
inline bool DecodeValue(std::string& value, const unsigned char* bytes, std::size_t size) {
  value.assign(reinterpret_cast<const char*>(bytes), size);
  return true;
}
inline bool DecodeValue(QXBytes& value, const unsigned char* bytes, std::size_t size) {
  value.assign(bytes, bytes + size);
  return true;
}
bool DecodeValue(QXRange& value, const unsigned char* bytes, std::size_t size);
bool DecodeValue(QXJSONObject& value, const unsigned char* bytes, std::size_t size);
bool DecodeValue(QXLinkObject& value, const unsigned char* bytes, std::size_t size);
bool DecodeValue(QXRecord& value, const unsigned char* bytes, std::size_t size);

// ---- Elements of vectors ----

inline std::size_t ElementSize(long value) {
  return IntSize(value);
}
inline std::size_t ElementSize(double) {
  return sizeof(double);
}
inline std::size_t ElementSize(bool) {
  return 1;
}
inline std::size_t ElementSize(const std::string& value) {
  return TextSize(value.size());
}
inline std::size_t ElementSize(const QXBytes& value) {
  return TextSize(value.size());
}

inline unsigned char* StoreElement(unsigned char* at, long value) {
  return StoreInt(at, value);
}
inline unsigned char* StoreElement(unsigned char* at, double value) {
  return StoreBits(at, value);
}
inline unsigned char* StoreElement(unsigned char* at, bool value) {
  *at = value ? 1 : 0;
  return at + 1;
}
inline unsigned char* StoreElement(unsigned char* at, const std::string& value) {
  return StoreText(at, value);
}
inline unsigned char* StoreElement(unsigned char* at, const QXBytes& value) {
  return StoreText(at, value.data(), value.size());
}

/// The fewest bytes that an element takes.
template <class T>
constexpr std::size_t MinElementSize = std::is_same_v<T, double> ? sizeof(double) : 1;

template <class T>
std::size_t ElementSize(const std::optional<T>& value) {
  return value ? ElementSize(*value) : MinElementSize<T>;
}
template <class T>
unsigned char* StoreElement(unsigned char* at, const std::optional<T>& value) {
  if (value) return StoreElement(at, *value);
  if constexpr (std::is_same_v<T, double>) return StoreBits(at, NoneFloat);
  *at = NoneByte;
  return at + 1;
}

/// Read an element; its value stands in the source.
inline bool ReadElement(Cursor& from, long& value, bool& isNone) {
  return from.Int(value, isNone);
}
inline bool ReadElement(Cursor& from, double& value, bool& isNone) {
  return from.Float(value, isNone);
}
inline bool ReadElement(Cursor& from, bool& value, bool& isNone) {
  return from.Bool(value, isNone);
}
inline bool ReadElement(Cursor& from, std::string_view& value, bool& isNone) {
  return from.TextOrThrow(value, isNone);
}

/// What an element of type T is read as, and its value made of that.
template <class T>
struct Element {
  using Read = T;
  static T Value(T value) { return value; }
};
template <>
struct Element<std::string> {
  using Read = std::string_view;
  static std::string Value(std::string_view text) { return std::string(text); }
};
template <>
struct Element<QXBytes> {
  using Read = std::string_view;
  static QXBytes Value(std::string_view text) { return QXBytes(text.begin(), text.end()); }
};

// ---- Vectors ----

/// The elements are T, optional T or numbers that widen to T.
template <class T, class E>
using StoredAs = std::conditional_t<std::is_arithmetic_v<E>, T, const E&>;

template <class T, class E>
std::size_t VectorSize(const std::vector<E>& values) {
  std::size_t size = IntSize(values.size());
  if constexpr (std::is_same_v<T, double>) return size + values.size() * sizeof(double);
  for (StoredAs<T, E> value : values) size += ElementSize(value);
  return size;
}

template <class T, class E>
void StoreVector(unsigned char* at, const std::vector<E>& values) {
  at = StoreInt(at, values.size());
  if constexpr (std::is_same_v<E, double>) {
    StoreBytes(at, values.data(), values.size() * sizeof(double));
  } else {
    for (StoredAs<T, E> value : values) at = StoreElement(at, value);
  }
}

template <class T, class E>
void AppendVector(QXBytes& out, const std::vector<E>& values) {
  StoreVector<T>(Grow(out, VectorSize<T>(values)), values);
}

/// The same for records; nothing when one of them is nested too deep.
void AppendVector(QXBytes& out, const std::vector<std::optional<QXRecord>>& records);
void AppendVector(QXBytes& out, const std::vector<QXRecord>& records);

/// Appends the elements to `values`, which are T or optional T. False at damage,
/// with the elements in front of it.
template <class T, class E>
bool DecodeVector(std::vector<E>& values, const unsigned char* bytes, std::size_t size) {
  Cursor from(bytes, bytes + size);
  std::size_t count;
  if (!from.Count(count, MinElementSize<T>)) return false;
  if constexpr (std::is_same_v<E, double>) {
    const std::size_t first = values.size();
    values.resize(first + count);
    double* const added = values.data() + first;
    StoreBytes(reinterpret_cast<unsigned char*>(added), from.At(), count * sizeof(double));
    // NaNs are few; looking for any is quicker than for one of certain bits.
    std::size_t nans = 0;
    for (std::size_t i = 0; i < count; ++i) nans += added[i] != added[i];
    for (std::size_t i = 0; nans != 0 && i < count; ++i)
      if (__builtin_bit_cast(std::uint64_t, added[i]) == NoneFloat) added[i] = 0.0;
    return true;
  } else {
    values.reserve(values.size() + count);
    for (; count > 0; --count) {
      typename Element<T>::Read read;
      bool isNone;
      if (!ReadElement(from, read, isNone)) return false;
      if (isNone)
        values.emplace_back();
      else
        values.emplace_back(Element<T>::Value(read));
    }
    return true;
  }
}
bool DecodeVector(std::vector<std::optional<QXRecord>>& values, const unsigned char* bytes,
                  std::size_t size);
bool DecodeVector(std::vector<QXRecord>& values, const unsigned char* bytes, std::size_t size);

}  // namespace QXDataFlow
