#include <qxsystem/records/types.h>

#include <cfloat>
#include <string_view>
#include <utility>

#include <qxsystem/core/error.h>
#include <qxsystem/platform/number.h>
#include <qxsystem/records/codec_private.h>
#include <qxsystem/records/datarecord.h>
#include <qxsystem/records/types_private.h>
#include <qxsystem/util/qxstring.h>

namespace QXDataFlow {
namespace {

using QXPlatform::QXIsRealNaN;
using QXSystem::QXThrow;

constexpr double Unbounded = std::numeric_limits<double>::infinity();

// The forms of a range's inclusivity, by its code.
constexpr const char* Inclusivities[] = {"[]", "()", "[)", "(]"};
constexpr unsigned NumInclusivities = 4;

std::string Number(double value, char format, int precision) {
  std::string text;
  QXSystem::QXNumberToString(value, text, format, precision);
  return text;
}

// An inclusivity that came as a number: truncated, and none of the four where
// that is no unsigned number.
unsigned ToInclusivity(double value) {
  const bool fits = value > -1 && value < 4294967296.0;
  return fits ? static_cast<unsigned>(value) : ~0U;
}

}  // namespace

// ---- Ranges ----

QXRange::QXRange(const std::optional<double>& low, const std::optional<double>& high,
                 unsigned inclusivity) {
  const char* nan = low && QXIsRealNaN(*low)     ? "Lower"
                    : high && QXIsRealNaN(*high) ? "Upper"
                                                 : nullptr;
  if (nan != nullptr) {
    QXThrow.Warning("Invalid value for constructing an QXRange. %s bound cannot be NaN", nan);
    return;
  }
  low_ = low.value_or(-Unbounded);
  high_ = high.value_or(Unbounded);
  inclusivity_ = inclusivity;
  EnforceInvariant();
}

QXRange::QXRange(const std::vector<double>& values) {
  const char* fault = values.size() != 3       ? "Must have a length of 3."
                      : QXIsRealNaN(values[0]) ? "Lower bound cannot be NaN"
                      : QXIsRealNaN(values[1]) ? "Upper bound cannot be NaN"
                                               : nullptr;
  if (fault != nullptr) {
    QXThrow.Warning("Invalid vector for constructing an QXRange. %s", fault);
    return;
  }
  low_ = values[0];
  high_ = values[1];
  inclusivity_ = ToInclusivity(values[2]);
  EnforceInvariant();
}

void QXRange::EnforceInvariant() {
  if (inclusivity_ >= NumInclusivities) {
    QXThrow.Warning("Invalid QXRange inclusivity specified: %u", inclusivity_);
    inclusivity_ = 0;
  } else if (IsEmpty()) {
    inclusivity_ = 0;
  }
  if (low_ > high_) {
    QXThrow.Warning("Invalid QXRange specified, with low value > high value: (" +
                    Number(low_, 'g', 6) + "," + Number(high_, 'g', 6) +
                    ") will default initialize");
    *this = QXRange();
  }
}

std::vector<double> QXRange::GetAsVector() const {
  return {low_, high_, static_cast<double>(inclusivity_)};
}

std::string QXRange::GetInclusivityString() const {
  return Inclusivities[inclusivity_];
}

unsigned QXRange::CheckedInclusivity(const std::string& text) {
  for (unsigned code = 0; code < NumInclusivities; ++code)
    if (text == Inclusivities[code]) return code;
  QXThrow.Warning("Invalid QXRange inclusivity-string specified: " + text);
  return 0;
}

bool QXRange::IsUnboundedLow() const {
  return !(low_ >= -DBL_MAX);
}

bool QXRange::IsUnboundedHigh() const {
  return high_ > DBL_MAX;
}

bool QXRange::operator==(const QXRange& other) const {
  if (IsEmpty() && other.IsEmpty()) return true;
  return low_ == other.low_ && high_ == other.high_ && inclusivity_ == other.inclusivity_;
}

// ---- Encodings of the types that are not plain data ----

// Text: bounds that are absent are "null". The third number says which of both
// is absent, for readers that don't know the word.
void AppendValue(QXBytes& out, const QXRange& value) {
  const bool low = !value.IsUnboundedLow(), high = !value.IsUnboundedHigh();
  AppendValue(out, std::string("[") + (low ? Number(value.GetLow(), 'f', 6) : "null") + "," +
                       (high ? Number(value.GetHigh(), 'f', 6) : "null") + "," +
                       (low == high ? "0.0"
                        : high      ? "1.0"
                                    : "-1.0") +
                       "," + Number(value.GetInclusivity(), 'f', 6) + "]");
}

bool DecodeValue(QXRange& value, const unsigned char* bytes, std::size_t size) {
  value = QXRange();
  if (size < 2) return false;
  const std::string text(reinterpret_cast<const char*>(bytes) + 1, size - 2);
  std::vector<std::string> tokens;
  QXSystem::QXStringTokenize(tokens, text, ",", /*skipEmpty=*/false);
  if (tokens.size() != 4) return false;
  double numbers[4] = {-Unbounded, Unbounded};
  for (std::size_t i = 0; i < 4; ++i)
    if ((i > 1 || tokens[i] != "null") && !QXSystem::QXStringToNumber(tokens[i], numbers[i]))
      return false;
  const double direction = numbers[2];
  if (direction < 0) numbers[1] = Unbounded;
  if (direction > 0) numbers[0] = -Unbounded;
  value = QXRange(std::vector<double>{numbers[0], numbers[1], numbers[3]});
  return value.IsEmpty() || value.IsValid();
}

bool DecodeValue(QXJSONObject& value, const unsigned char* bytes, std::size_t size) {
  value = QXJSONObject();
  if (size == 0) return false;
  value = QXJSONObject(std::string(reinterpret_cast<const char*>(bytes), size));
  return !value.GetString().empty();
}

bool DecodeValue(QXLinkObject& value, const unsigned char* bytes, std::size_t size) {
  return DecodeValue(static_cast<QXJSONObject&>(value), bytes, size);
}

void AppendValue(QXBytes& out, const QXRecord& value) {
  value.ToBytes(out);
}

bool DecodeValue(QXRecord& value, const unsigned char* bytes, std::size_t size) {
  return size != 0 && value.FromBytes(bytes, size);
}

namespace {

const QXRecord* Present(const QXRecord& record) {
  return &record;
}
const QXRecord* Present(const std::optional<QXRecord>& record) {
  return record ? &*record : nullptr;
}

QXRecord& Fill(QXRecord& record) {
  return record;
}
QXRecord& Fill(std::optional<QXRecord>& record) {
  return record.emplace();
}

template <class E>
void AppendRecords(QXBytes& out, const std::vector<E>& records) {
  const std::size_t start = out.size();
  StoreInt(Grow(out, IntSize(records.size())), records.size());
  for (const E& element : records) {
    const std::size_t before = out.size();
    if (const QXRecord* record = Present(element))
      record->ToBytes(out);
    else
      out.push_back(NoneByte);
    if (out.size() == before) return out.resize(start);
  }
}

template <class E>
bool DecodeRecords(std::vector<E>& records, const unsigned char* bytes, std::size_t size) {
  Cursor from(bytes, bytes + size);
  std::size_t count;
  bool isNone;
  if (!from.Length(count, isNone) || count == BadLength) return false;
  if (isNone) count = 0;
  records.reserve(records.size() + count);
  for (; count > 0; --count) {
    const unsigned char* begin = from.At();
    std::string_view tag;
    Cursor payload = from;
    if (!from.Section(tag, payload, isNone, MaxLength)) return false;
    E& element = records.emplace_back();
    // One that is damaged inside stays as far as it was read.
    if (!isNone) Fill(element).FromBytes(begin, static_cast<std::size_t>(from.At() - begin));
  }
  return true;
}

}  // namespace

void AppendVector(QXBytes& out, const std::vector<std::optional<QXRecord>>& records) {
  AppendRecords(out, records);
}
void AppendVector(QXBytes& out, const std::vector<QXRecord>& records) {
  AppendRecords(out, records);
}
bool DecodeVector(std::vector<std::optional<QXRecord>>& values, const unsigned char* bytes,
                  std::size_t size) {
  return DecodeRecords(values, bytes, size);
}
bool DecodeVector(std::vector<QXRecord>& values, const unsigned char* bytes, std::size_t size) {
  return DecodeRecords(values, bytes, size);
}

// ---- Text for display ----

namespace {

std::string FormatValue(long value) {
  return std::to_string(value);
}
std::string FormatValue(double value) {
  return QXIsRealNaN(value) ? "nan" : Number(value, 'f', 12);
}
std::string FormatValue(bool value) {
  return value ? "True" : "False";
}
std::string FormatValue(const std::string& value) {
  return value;
}
std::string FormatValue(const QXBytes& value) {
  return "<Blob of length " + std::to_string(value.size()) + ">";
}
std::string FormatValue(const QXRecord&) {
  return "<QXRecord>";
}
std::string FormatValue(const QXJSONObject& value) {
  return value.GetString();
}
std::string FormatValue(const QXRange& value) {
  std::string low = FormatValue(value.GetLow());
  const std::string high = FormatValue(value.GetHigh());
  const std::string ends = value.GetInclusivityString();
  if (value.IsEmpty()) return "None";
  if (value.IsUnboundedLow()) return (ends[1] == ')' ? "<" : "<=") + high;
  if (value.IsUnboundedHigh()) return (ends[0] == '(' ? ">" : ">=") + low;
  if (value.GetLow() == value.GetHigh()) return low;
  return ends.substr(0, 1) + low + ", " + high + ends.substr(1);
}

template <class T>
std::string FormatElement(const std::optional<T>& value) {
  return value ? FormatValue(*value) : "Null";
}
template <class T>
std::string FormatElement(const T& value) {
  return FormatValue(value);
}

template <class T, class E>
std::string FormatVector(const std::vector<E>& values) {
  if constexpr (std::is_same_v<T, QXRecord>)
    return "[" + std::to_string(values.size()) + (values.size() == 1 ? " record]" : " records]");
  std::string text = "[";
  for (std::size_t i = 0; i < values.size(); ++i)
    text += (i == 0 ? "" : ", ") + FormatElement<T>(values[i]);
  return text + "]";
}

}  // namespace

// ---- Handlers ----

QXFieldTypeHandler::~QXFieldTypeHandler() = default;

std::string QXFieldTypeHandler::BytesToJSON(const QXBytes&) const {
  return "";
}
QXBytes QXFieldTypeHandler::JSONToBytes(const std::string&) const {
  return {};
}
QXBytes QXFieldTypeHandler::PtrToBytes(const void*) const {
  return {};
}
bool QXFieldTypeHandler::IsCacheable() const {
  return false;
}
bool QXFieldTypeHandler::IsPOD() const {
  return false;
}

template <class T>
QXBytes QXFieldType<T>::ToBytes(const T& value) {
  QXBytes bytes;
  AppendValue(bytes, value);
  return bytes;
}

template <class T>
bool QXFieldType<T>::FromBytes(T& value, const QXBytes& bytes) {
  if (DecodeValue(value, bytes.data(), bytes.size())) return true;
  if constexpr (!std::is_same_v<T, QXRecord>) value = T();
  return false;
}

template <class T>
std::string QXFieldType<T>::Format(const T& value) {
  return FormatValue(value);
}

// The other types have no objects that a cache would be worth for.
template <class T>
QXBytes QXFieldType<T>::PtrToBytes(const void* value) const {
  constexpr bool cached = std::is_same_v<T, long> || std::is_same_v<T, std::string> ||
                          std::is_same_v<T, QXBytes> || std::is_same_v<T, QXRecord>;
  return cached ? ToBytes(*static_cast<const T*>(value)) : QXBytes();
}

template <class T>
std::string QXFieldType<T>::GetName() const {
  return std::string(Row<QXFieldType>.name);
}
template <class T>
bool QXFieldType<T>::IsCacheable() const {
  return Row<QXFieldType>.isCacheable;
}
template <class T>
bool QXFieldType<T>::IsPOD() const {
  return Row<QXFieldType>.isPOD;
}

namespace {

template <class T, class E>
QXBytes VectorToBytes(const std::vector<E>& values) {
  QXBytes bytes;
  if constexpr (std::is_same_v<T, QXRecord>)
    AppendVector(bytes, values);
  else
    AppendVector<T>(bytes, values);
  return bytes;
}

template <class T, class E>
bool VectorFromBytes(std::vector<E>& values, const QXBytes& bytes) {
  if constexpr (std::is_same_v<T, QXRecord>)
    return DecodeVector(values, bytes.data(), bytes.size());
  else
    return DecodeVector<T>(values, bytes.data(), bytes.size());
}

}  // namespace

template <class T>
QXBytes QXVectorFieldType<T>::ToBytes(const Value& value) {
  return VectorToBytes<T>(value);
}
template <class T>
QXBytes QXVectorFieldType<T>::ToBytes(const std::vector<T>& value) {
  return VectorToBytes<T>(value);
}
template <class T>
template <class From, class>
QXBytes QXVectorFieldType<T>::ToBytes(const std::vector<From>& value) {
  return VectorToBytes<T>(value);
}

template <class T>
bool QXVectorFieldType<T>::FromBytes(Value& value, const QXBytes& bytes) {
  return VectorFromBytes<T>(value, bytes);
}
template <class T>
bool QXVectorFieldType<T>::FromBytes(std::vector<T>& value, const QXBytes& bytes) {
  return VectorFromBytes<T>(value, bytes);
}

template <class T>
std::string QXVectorFieldType<T>::Format(const Value& value) {
  return FormatVector<T>(value);
}
template <class T>
std::string QXVectorFieldType<T>::Format(const std::vector<T>& value) {
  return FormatVector<T>(value);
}

template <class T>
std::shared_ptr<typename QXVectorFieldType<T>::Value> QXVectorFieldType<T>::GetCopyForCache(
    const Value& value) {
  return std::make_shared<Value>(value);
}

template <class T>
QXBytes QXVectorFieldType<T>::PtrToBytes(const void* value) const {
  constexpr bool cached = std::is_same_v<T, QXRecord>;
  return cached ? ToBytes(*static_cast<const Value*>(value)) : QXBytes();
}
template <class T>
std::string QXVectorFieldType<T>::GetName() const {
  return std::string(Row<QXVectorFieldType>.name);
}
template <class T>
bool QXVectorFieldType<T>::IsPOD() const {
  return Row<QXVectorFieldType>.isPOD;
}

template class QXFieldType<long>;
template class QXFieldType<std::string>;
template class QXFieldType<double>;
template class QXFieldType<QXBytes>;
template class QXFieldType<bool>;
template class QXFieldType<QXRecord>;
template class QXFieldType<QXRange>;
template class QXFieldType<QXJSONObject>;
template class QXFieldType<QXLinkObject>;
template class QXVectorFieldType<long>;
template class QXVectorFieldType<std::string>;
template class QXVectorFieldType<double>;
template class QXVectorFieldType<QXBytes>;
template class QXVectorFieldType<bool>;
template class QXVectorFieldType<QXRecord>;
template QXSYSTEM_API QXBytes QXVectorFieldType<long>::ToBytes(const std::vector<int>&);
template QXSYSTEM_API QXBytes QXVectorFieldType<long>::ToBytes(const std::vector<unsigned>&);
template QXSYSTEM_API QXBytes QXVectorFieldType<double>::ToBytes(const std::vector<float>&);

namespace Types {
const QXFieldType<long> Int;
const QXFieldType<std::string> String;
const QXFieldType<double> Float;
const QXFieldType<QXBytes> Blob;
const QXFieldType<bool> Bool;
const QXVectorFieldType<long> IntVec;
const QXVectorFieldType<std::string> StringVec;
const QXVectorFieldType<double> FloatVec;
const QXVectorFieldType<QXBytes> BlobVec;
const QXVectorFieldType<bool> BoolVec;
const QXFieldType<QXRecord> Record;
const QXVectorFieldType<QXRecord> RecordVec;
const QXFieldType<QXRange> Range;
const QXFieldType<QXJSONObject> JSONObject;
const QXFieldType<QXLinkObject> Link;
}  // namespace Types

// ---- Registries ----

// The registry itself is never destroyed, so that it can be asked during exit,
// but the handlers are.
QXFieldTypeHandlerRegistry& QXFieldTypeHandlerRegistry::GetInstance() {
  static auto& registry = *new QXFieldTypeHandlerRegistry;
  static const struct Reaper {
    ~Reaper() { std::exchange(registry.entries_, {}); }
  } reaper;
  return registry;
}

void QXFieldTypeHandlerRegistry::RegisterHandler(QXFieldTypeHandler* handler, int priority) {
  std::unique_ptr<QXFieldTypeHandler> owned(handler);
  const std::string name = handler->GetName();
  const auto place = entries_.find(name);
  if (place == entries_.end()) {
    if (priority >= 0) entries_[name] = {std::move(owned), priority};
  } else if (place->second.handler.get() == handler) {
    owned.release();
  } else if (priority > place->second.priority) {
    place->second = {std::move(owned), priority};
  }
}

QXFieldTypeHandler* QXFieldTypeHandlerRegistry::GetHandler(const std::string& name) const {
  const auto place = entries_.find(name);
  return place != entries_.end() ? place->second.handler.get() : nullptr;
}

QXWrappedFieldTypeHandler::~QXWrappedFieldTypeHandler() = default;

QXWrappedFieldTypeHandlerRegistry& QXWrappedFieldTypeHandlerRegistry::GetInstance() {
  static auto& registry = *new QXWrappedFieldTypeHandlerRegistry;  // may be asked during exit
  return registry;
}

void QXWrappedFieldTypeHandlerRegistry::RegisterHandler(QXWrappedFieldTypeHandler* handler) {
  handlers_[handler->GetName()] = handler;
}

QXWrappedFieldTypeHandler* QXWrappedFieldTypeHandlerRegistry::GetHandler(
    const std::string& name) const {
  const auto place = handlers_.find(name);
  if (place != handlers_.end()) return place->second;
  QXThrow.Warning("No wrapped handler for " + name);
  QXThrow.Warning("Here are the handlers I have:");
  for (const auto& [known, handler] : handlers_) QXThrow.Warning(known);
  return nullptr;
}

}  // namespace QXDataFlow
