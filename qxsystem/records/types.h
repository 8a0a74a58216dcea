// The kinds of value that a record can hold: how each is named, turned into
// bytes and back, and shown to a person.
//
// There are fifteen built-in types. A user type is a name and a handler object
// in QXFieldTypeHandlerRegistry; records carry its bytes and understand nothing
// of them. docs/record-format.md has the bytes of every type.
#pragma once

#include <limits>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <type_traits>
#include <vector>

#include <qxsystem/core/export.h>

namespace QXDataFlow {

class QXSYSTEM_API QXRecord;  // exported here: what is made of it is exported only then

using QXBytes = std::vector<unsigned char>;

/// An interval of doubles, either end of which may be unbounded.
class QXSYSTEM_API QXRange {
public:
  /// The default range: unbounded on both sides, inclusivity 0.
  QXRange() = default;

  /// An absent bound is unbounded. `inclusivity` is 0 for "[]", 1 "()", 2 "[)",
  /// 3 "(]".
  ///
  /// A NaN bound, and a low bound above the high one, give the default range
  /// and a warning; another inclusivity counts as 0, with a warning. A range
  /// without bounds has inclusivity 0 whatever was asked for.
  QXRange(const std::optional<double>& low, const std::optional<double>& high,
          unsigned inclusivity);

  /// From low, high and inclusivity, the form that `GetAsVector` gives. The
  /// same rules; another number of elements gives the default range and a
  /// warning. The inclusivity is truncated to an integer.
  explicit QXRange(const std::vector<double>& values);

  double GetLow() const { return low_; }
  double GetHigh() const { return high_; }
  unsigned GetInclusivity() const { return inclusivity_; }

  /// Low, high and inclusivity; an unbounded side is an infinity.
  std::vector<double> GetAsVector() const;

  /// "[]", "()", "[)" or "(]".
  std::string GetInclusivityString() const;

  /// The code of such a text; any other gives 0, with a warning.
  static unsigned CheckedInclusivity(const std::string& text);

  /// Whether there is no bound on that side. The largest finite double is one.
  bool IsUnboundedLow() const;
  bool IsUnboundedHigh() const;

  /// Whether there is no bound at all; nothing is said about members.
  bool IsEmpty() const { return IsUnboundedLow() && IsUnboundedHigh(); }

  /// Whether there is a bound, and high is not below low.
  bool IsValid() const { return !IsEmpty() && high_ >= low_; }

  /// Two ranges without bounds are equal; else bounds and inclusivity count.
  bool operator==(const QXRange& other) const;
  bool operator!=(const QXRange& other) const { return !(*this == other); }

private:
  void EnforceInvariant();

  double low_ = -std::numeric_limits<double>::infinity();  // never NaN, nor above high_
  double high_ = std::numeric_limits<double>::infinity();
  unsigned inclusivity_ = 0;  // 0 to 3
};

/// A JSON object, kept as the text it was given as.
class QXSYSTEM_API QXJSONObject {
public:
  /// The empty text, which stands for no object.
  QXJSONObject() = default;

  /// Keeps `text` as it stands. A text that is no JSON object gives warnings,
  /// and the object stays empty; arrays and single values are none.
  explicit QXJSONObject(const std::string& text);

  const std::string& GetString() const { return text_; }

  bool operator==(const QXJSONObject& other) const { return text_ == other.text_; }
  bool operator!=(const QXJSONObject& other) const { return text_ != other.text_; }

private:
  std::string text_;  // a JSON object, or empty
};

/// A JSON object that stands for a link to something else.
class QXSYSTEM_API QXLinkObject : public QXJSONObject {
public:
  QXLinkObject() = default;
  explicit QXLinkObject(const std::string& text);
};

/// What is known of one field type. Handlers have no state.
class QXSYSTEM_API QXFieldTypeHandler {
public:
  virtual ~QXFieldTypeHandler();

  /// A value's bytes as JSON text, which goes into a document as it stands.
  /// For user types; the base gives "", which stands for no value.
  virtual std::string BytesToJSON(const QXBytes& bytes) const;

  /// The bytes of a value given as JSON text, as it stood in a document: an
  /// object or an array serialised, or the content of a string. For user
  /// types; the base gives none.
  virtual QXBytes JSONToBytes(const std::string& json) const;

  /// The bytes of the object at `value`, which is of this type's value type:
  /// what a record stores for an object that it holds in its cache. The base
  /// gives none.
  virtual QXBytes PtrToBytes(const void* value) const;

  /// The name of the type.
  virtual std::string GetName() const = 0;

  /// Whether a record keeps the object that it decodes when the value is read.
  virtual bool IsCacheable() const;

  /// Whether a value is plain data: a number, text or bytes, or a vector of
  /// such.
  virtual bool IsPOD() const;

protected:
  constexpr QXFieldTypeHandler() = default;
  QXFieldTypeHandler(const QXFieldTypeHandler&) = default;
  QXFieldTypeHandler& operator=(const QXFieldTypeHandler&) = default;
};

/// The built-in type with values of type T: `long`, `std::string`, `double`,
/// `QXBytes`, `bool`, `QXRecord`, `QXRange`, `QXJSONObject` or `QXLinkObject`.
/// The one object of each class is in the namespace Types.
template <class T>
class QXSYSTEM_API QXFieldType : public QXFieldTypeHandler {
public:
  constexpr QXFieldType() = default;

  /// The bytes of a value.
  static QXBytes ToBytes(const T& value);

  /// The same; empty for an absent value.
  template <class Value, class = std::enable_if_t<std::is_same_v<Value, T>>>
  static std::optional<QXBytes> ToBytes(const std::optional<Value>& value) {
    if (!value) return std::nullopt;
    return ToBytes(*value);
  }

  /// Sets `value` to what the bytes say. False, with the default value, for
  /// bytes that are no value of this type; no bytes are an empty text or blob
  /// and no other value. Of JSON objects the text is checked, of records the
  /// structure.
  static bool FromBytes(T& value, const QXBytes& bytes);

  /// The value as text for display.
  static std::string Format(const T& value);

  /// For the types `long`, `std::string`, `QXBytes` and `QXRecord`, whose
  /// objects records may hold in their caches, `ToBytes`; else nothing.
  QXBytes PtrToBytes(const void* value) const override;
  std::string GetName() const override;
  bool IsCacheable() const override;
  bool IsPOD() const override;
};

/// Whether vectors of From serve as vectors of T, element by element: those of
/// `int` and `unsigned` as `long`, of `float` as `double`.
template <class From, class T>
constexpr bool QXWidens =
    std::is_same_v<T, long> ? std::is_same_v<From, int> || std::is_same_v<From, unsigned>
                            : std::is_same_v<T, double>&& std::is_same_v<From, float>;

/// The built-in type with vectors of optional T as values, where T is `long`,
/// `std::string`, `double`, `QXBytes`, `bool` or `QXRecord`. Plain vectors are
/// taken and given, too.
template <class T>
class QXSYSTEM_API QXVectorFieldType : public QXFieldTypeHandler {
public:
  using Value = std::vector<std::optional<T>>;

  constexpr QXVectorFieldType() = default;

  /// The bytes of a value.
  static QXBytes ToBytes(const Value& value);
  static QXBytes ToBytes(const std::vector<T>& value);

  /// The same from numbers that widen to T.
  template <class From, class = std::enable_if_t<QXWidens<From, T>>>
  static QXBytes ToBytes(const std::vector<From>& value);

  /// The same; empty for an absent value.
  template <class From>
  static std::optional<QXBytes> ToBytes(const std::optional<std::vector<From>>& value) {
    if (!value) return std::nullopt;
    return ToBytes(*value);
  }

  /// Appends the elements to `value`. False for no bytes and for bytes that
  /// are no value of this type; elements in front of the damage are appended
  /// then. A record that cannot be decoded is appended as far as it was read.
  ///
  /// An element of text or bytes that claims more bytes than there are throws
  /// std::length_error.
  static bool FromBytes(Value& value, const QXBytes& bytes);

  /// The same; an absent element becomes a zero value of T.
  static bool FromBytes(std::vector<T>& value, const QXBytes& bytes);

  /// The value as text for display.
  static std::string Format(const Value& value);
  static std::string Format(const std::vector<T>& value);

  /// A new vector with copies of the elements, as a record's cache holds it.
  static std::shared_ptr<Value> GetCopyForCache(const Value& value);

  /// `ToBytes` for `QXRecord`; else nothing.
  QXBytes PtrToBytes(const void* value) const override;
  std::string GetName() const override;
  bool IsPOD() const override;
};

extern template class QXFieldType<long>;
extern template class QXFieldType<std::string>;
extern template class QXFieldType<double>;
extern template class QXFieldType<QXBytes>;
extern template class QXFieldType<bool>;
extern template class QXFieldType<QXRecord>;
extern template class QXFieldType<QXRange>;
extern template class QXFieldType<QXJSONObject>;
extern template class QXFieldType<QXLinkObject>;
extern template class QXVectorFieldType<long>;
extern template class QXVectorFieldType<std::string>;
extern template class QXVectorFieldType<double>;
extern template class QXVectorFieldType<QXBytes>;
extern template class QXVectorFieldType<bool>;
extern template class QXVectorFieldType<QXRecord>;

/// The handlers of the built-in types, usable in static initialisers.
namespace Types {
extern QXSYSTEM_API const QXFieldType<long> Int;
extern QXSYSTEM_API const QXFieldType<std::string> String;
extern QXSYSTEM_API const QXFieldType<double> Float;
extern QXSYSTEM_API const QXFieldType<QXBytes> Blob;
extern QXSYSTEM_API const QXFieldType<bool> Bool;
extern QXSYSTEM_API const QXVectorFieldType<long> IntVec;
extern QXSYSTEM_API const QXVectorFieldType<std::string> StringVec;
extern QXSYSTEM_API const QXVectorFieldType<double> FloatVec;
extern QXSYSTEM_API const QXVectorFieldType<QXBytes> BlobVec;
extern QXSYSTEM_API const QXVectorFieldType<bool> BoolVec;
extern QXSYSTEM_API const QXFieldType<QXRecord> Record;
extern QXSYSTEM_API const QXVectorFieldType<QXRecord> RecordVec;
extern QXSYSTEM_API const QXFieldType<QXRange> Range;
extern QXSYSTEM_API const QXFieldType<QXJSONObject> JSONObject;
extern QXSYSTEM_API const QXFieldType<QXLinkObject> Link;
}  // namespace Types

/// The handlers of user types, by type name. One for the process; it has no
/// lock, so register at start-up and only look up once threads run.
class QXSYSTEM_API QXFieldTypeHandlerRegistry {
public:
  static QXFieldTypeHandlerRegistry& GetInstance();

  QXFieldTypeHandlerRegistry(const QXFieldTypeHandlerRegistry&) = delete;
  QXFieldTypeHandlerRegistry& operator=(const QXFieldTypeHandlerRegistry&) = delete;

  /// Takes `handler`, which must not be null, over. It is registered under its
  /// name if none is there, or one of a lower priority, which is then deleted;
  /// and deleted itself if there is one of the same or a higher priority. The
  /// first handler for a name needs a priority of at least 0. The registered
  /// handler given again changes nothing.
  ///
  /// Do not use `handler` afterwards: it may be gone. What stays registered is
  /// deleted at process exit.
  void RegisterHandler(QXFieldTypeHandler* handler, int priority);

  /// The handler for a name, null where there is none. It stays ours.
  QXFieldTypeHandler* GetHandler(const std::string& name) const;

private:
  QXFieldTypeHandlerRegistry() = default;
  ~QXFieldTypeHandlerRegistry() = default;

  struct Entry {
    std::unique_ptr<QXFieldTypeHandler> handler;
    int priority;
  };
  std::map<std::string, Entry> entries_;
};

/// A handler that a language wrapper provides.
class QXSYSTEM_API QXWrappedFieldTypeHandler : public QXFieldTypeHandler {
public:
  ~QXWrappedFieldTypeHandler() override;
};

/// The handlers of language wrappers, by type name. One for the process; the
/// handlers belong to the wrappers. It has no lock, like the other registry.
class QXSYSTEM_API QXWrappedFieldTypeHandlerRegistry {
public:
  static QXWrappedFieldTypeHandlerRegistry& GetInstance();

  QXWrappedFieldTypeHandlerRegistry(const QXWrappedFieldTypeHandlerRegistry&) = delete;
  QXWrappedFieldTypeHandlerRegistry& operator=(const QXWrappedFieldTypeHandlerRegistry&) = delete;

  /// Registers `handler`, which must not be null and must outlive its use, in
  /// the place of any other of its name.
  void RegisterHandler(QXWrappedFieldTypeHandler* handler);

  /// The handler for a name. Where there is none, null, with warnings that
  /// list the names there are.
  QXWrappedFieldTypeHandler* GetHandler(const std::string& name) const;

  bool HasHandler(const std::string& name) const { return handlers_.count(name) != 0; }

private:
  QXWrappedFieldTypeHandlerRegistry() = default;
  ~QXWrappedFieldTypeHandlerRegistry() = default;

  std::map<std::string, QXWrappedFieldTypeHandler*> handlers_;
};

}  // namespace QXDataFlow
