#include <qxsystem/records/recordjson.h>

#include <cstddef>
#include <limits>
#include <map>
#include <optional>
#include <type_traits>
#include <utility>
#include <vector>

#include <qxsystem/core/error.h>
#include <qxsystem/core/nesting.h>
#include <qxsystem/json/base85.h>
#include <qxsystem/json/json_private.h>
#include <qxsystem/records/metadata.h>
#include <qxsystem/records/types_private.h>

namespace QXDataFlow {
namespace {

using QXSystem::GetJSONArrayAttr;
using QXSystem::GetJSONObjectAttr;
using QXSystem::GetJSONStringAttr;
using QXSystem::JSONOutput;
using QXSystem::QXJSONAttr;
using QXSystem::QXNestingScope;
using QXSystem::QXThrow;
using QXSystem::Writer;
using QXSystem::WriteText;
using rapidjson::SizeType;
using rapidjson::Value;

// The keys of records, of fields and of metadata.
namespace Key {
constexpr const char *Version = "version", *SourceID = "source id", *Fields = "fields";
constexpr const char *Name = "name", *Type = "type", *Index = "idx", *Meta = "meta",
                     *Nullable = "nullable", *Child = "child", *Value = "value";
constexpr const char *Options = "options", *Attributes = "attributes";
}  // namespace Key

constexpr SizeType versionParts = 2;
constexpr SizeType attributeParts = 2;  // name and value
constexpr SizeType rangeParts = 4;      // low, high, direction, inclusivity

// What values of a handler's type are in memory.
template <class T>
T ValueOf(const QXFieldType<T>&);
template <class T>
typename QXVectorFieldType<T>::Value ValueOf(const QXVectorFieldType<T>&);
template <class Handler>
using ValueType = decltype(ValueOf(std::declval<const Handler&>()));

// Whether they are texts that are JSON themselves.
template <class T>
constexpr bool IsJSON = std::is_base_of_v<QXJSONObject, T>;

const QXFieldTypeHandler* UserHandler(const QXFieldBase& field) {
  return QXFieldTypeHandlerRegistry::GetInstance().GetHandler(field.GetTypeName());
}

std::string Text(const Value& value) {
  return {value.GetString(), value.GetStringLength()};
}

// ---- Writing metadata ----

// An array that is left out with its key unless it has an element.
class ArrayWriter {
public:
  ArrayWriter(Writer& writer, const char* key) : writer_(writer), key_(key) {}

  // The writer, for the next element.
  Writer& Next() {
    if (!std::exchange(open_, true)) {
      writer_.Key(key_);
      writer_.StartArray();
    }
    return writer_;
  }

  void End() {
    if (open_) writer_.EndArray();
  }

private:
  Writer& writer_;
  const char* key_;
  bool open_ = false;
};

// The JSON of an attribute's name and its first value; "" for an id without a
// name, and for one that takes no value.
std::string AttributeText(const QXMeta& meta, unsigned id) {
  const std::string name = QXMeta::GetName(id);
  if (name.empty() || QXMetadata::IsOption(id)) return "";
  JSONOutput output;
  Writer& writer = output.GetWriter();
  writer.StartArray();
  WriteText(writer, name);
  if (QXMetadata::TakesAttribute<std::string>(id))
    WriteText(writer, meta.GetStrAttribute(id));
  else if (QXMetadata::TakesAttribute<double>(id))
    QXSystem::WriteDouble(writer, meta.GetFloatAttribute(id));
  else
    writer.Int(meta.GetIntAttribute(id));
  writer.EndArray();
  return output.GetText();
}

void WriteMeta(Writer& writer, const QXMeta& meta) {
  writer.StartObject();
  ArrayWriter options(writer, Key::Options);
  for (const unsigned id : meta.GetOptions())
    if (const std::string name = QXMeta::GetName(id); !name.empty())
      WriteText(options.Next(), name);
  options.End();

  // Every further value of an id shows as the first once more. That a long one
  // stands before many short ones must not make a text of any size of a few
  // bytes; what is left out says nothing new.
  std::size_t room = 64 * 1024;
  std::map<unsigned, std::string> firsts;
  ArrayWriter attributes(writer, Key::Attributes);
  for (const auto& [id, bytes] : meta.GetAttributes()) {
    const auto [place, isFirst] = firsts.try_emplace(id);
    std::string& text = place->second;
    if (isFirst) text = AttributeText(meta, id);
    if (text.empty() || (!isFirst && text.size() > room)) continue;
    if (!isFirst) room -= text.size();
    attributes.Next().RawValue(text.data(), text.size(), rapidjson::kArrayType);
  }
  attributes.End();
  writer.EndObject();
}

// ---- Writing records ----

// What is written of a field, and of a record. It is taken out of a record so that
// this may go before the records in its values are looked at: else each of many
// records in one another would have all further ones in memory.
struct FieldContent {
  QXFieldBase field;
  long index;
  bool isNull;
  std::optional<QXBytes> bytes;
  std::optional<std::map<std::string, QXRecord>> children;
};
struct RecordContent {
  explicit RecordContent(const QXRecord& record);

  std::string source;
  std::vector<FieldContent> fields;
};

RecordContent::RecordContent(const QXRecord& record) : source(record.GetSourceID()) {
  for (QXFieldBase& field : record.GetFields()) {
    const long index = record.GetFieldIdx(field);
    if (index < 0) continue;
    FieldContent content{std::move(field), index, false, std::nullopt, std::nullopt};
    content.isNull = record.IsNA(content.field);
    QXBytes bytes;
    if (record.GetBytes(bytes, content.field)) content.bytes = std::move(bytes);
    if (record.HasChildRecords(content.field))
      content.children = record.GetChildRecords(content.field);
    fields.push_back(std::move(content));
  }
}

// False for a record that lies too deep in others; what was written is of no use
// then.
bool WriteRecord(Writer& writer, RecordContent record);

bool Put(Writer& writer, long value) {
  return writer.Int64(value);
}
bool Put(Writer& writer, double value) {
  QXSystem::WriteDouble(writer, value);
  return true;
}
bool Put(Writer& writer, bool value) {
  return writer.Bool(value);
}
bool Put(Writer& writer, const std::string& value) {
  WriteText(writer, value);
  return true;
}
bool Put(Writer& writer, const QXBytes& value) {
  return Put(writer, QXBase85Encode(value));
}
bool Put(Writer& writer, const QXRange& value) {
  const bool low = !value.IsUnboundedLow(), high = !value.IsUnboundedHigh();
  writer.StartArray();
  low ? Put(writer, value.GetLow()) : writer.Null();
  high ? Put(writer, value.GetHigh()) : writer.Null();
  Put(writer, low == high ? 0.0 : high ? 1.0 : -1.0);
  Put(writer, static_cast<double>(value.GetInclusivity()));
  return writer.EndArray();
}
bool Put(Writer& writer, QXRecord& value) {
  RecordContent content(value);
  value = QXRecord();
  return WriteRecord(writer, std::move(content));
}

template <class T>
bool Put(Writer& writer, std::vector<std::optional<T>>& values) {
  writer.StartArray();
  for (auto& value : values)
    if (!(value ? Put(writer, *value) : writer.Null())) return false;
  return writer.EndArray();
}

// A member "value" whose text is there already.
void PutText(Writer& writer, const std::string& text) {
  if (!QXSystem::IsJSONText(writer, text)) return;
  writer.Key(Key::Value);
  writer.RawValue(text.data(), text.size(), rapidjson::kObjectType);
}

// The functions for single types are kept out of their callers, whose stack
// would have room for the values of all types at once.
template <class Handler>
[[gnu::noinline]] bool WriteBuiltIn(Writer& writer, QXBytes bytes, const Handler&) {
  ValueType<Handler> value{};
  if (!Handler::FromBytes(value, bytes)) value = {};
  QXBytes().swap(bytes);
  if constexpr (IsJSON<ValueType<Handler>>) {
    PutText(writer, value.GetString());
    return true;
  } else {
    writer.Key(Key::Value);
    return Put(writer, value);
  }
}

void WriteUserValue(Writer& writer, const FieldContent& content) {
  const QXFieldTypeHandler* handler = UserHandler(content.field);
  if (handler != nullptr && content.bytes) PutText(writer, handler->BytesToJSON(*content.bytes));
}

bool WriteValue(Writer& writer, FieldContent& content) {
  if (content.isNull) {
    writer.Key(Key::Value);
    return writer.Null();
  }
  bool isWritten = true;
  const auto write = [&](const auto& handler) {
    isWritten = WriteBuiltIn(writer, std::move(content.bytes).value_or(QXBytes()), handler);
  };
  if (!VisitBuiltIn(content.field.GetTypeName(), write)) WriteUserValue(writer, content);
  return isWritten;
}

bool WriteChildren(Writer& writer, FieldContent& content) {
  if (!content.children) return true;
  writer.Key(Key::Child);
  writer.StartObject();
  for (auto& [key, child] : *content.children) {
    WriteText(writer, key);
    if (!Put(writer, child)) return false;
  }
  return writer.EndObject();
}

bool WriteField(Writer& writer, FieldContent& content) {
  const QXFieldBase& field = content.field;
  writer.StartObject();
  writer.Key(Key::Name);
  WriteText(writer, field.GetName());
  writer.Key(Key::Type);
  WriteText(writer, field.GetTypeName());
  writer.Key(Key::Index);
  writer.Int64(content.index);
  if (!field.GetMeta().IsEmpty()) {
    writer.Key(Key::Meta);
    WriteMeta(writer, field.GetMeta());
  }
  if (field.IsNullable()) {
    writer.Key(Key::Nullable);
    writer.Bool(true);
  }
  return WriteChildren(writer, content) && WriteValue(writer, content) && writer.EndObject();
}

bool WriteRecord(Writer& writer, RecordContent record) {
  const QXNestingScope level;
  if (!level) return false;
  writer.StartObject();
  writer.Key(Key::Version);
  writer.StartArray();
  writer.Int(1);
  writer.Int(0);
  writer.EndArray();
  if (!record.source.empty()) {
    writer.Key(Key::SourceID);
    WriteText(writer, record.source);
  }
  writer.Key(Key::Fields);
  writer.StartArray();
  for (FieldContent& field : record.fields)
    if (!WriteField(writer, field)) return false;
  writer.EndArray();
  return writer.EndObject();
}

// ---- Reading metadata ----

// Any integer that has 64 bits.
bool ReadInteger(const Value& value, long& integer) {
  if (!value.IsInt64() && !value.IsUint64()) return false;
  integer = value.IsInt64() ? value.GetInt64() : static_cast<long>(value.GetUint64());
  return true;
}

void ReadAttribute(QXFieldMeta& meta, const Value& pair) {
  if (!pair.IsArray() || pair.Size() != attributeParts || !pair[0].IsString()) return;
  const unsigned id = QXMeta::GetValue(Text(pair[0]));
  const Value& value = pair[1];
  long integer;
  if (QXMetadata::TakesAttribute<std::string>(id)) {
    if (value.IsString()) meta.SetAttribute(id, Text(value));
  } else if (QXMetadata::TakesAttribute<double>(id)) {
    if (value.IsNumber()) meta.SetAttribute(id, value.GetDouble());
  } else if (QXMetadata::TakesAttribute<int>(id)) {
    if (ReadInteger(value, integer)) meta.SetAttribute(id, static_cast<int>(integer));
  }
}

bool ReadMeta(QXFieldMeta& meta, Value& object) {
  const auto options = GetJSONArrayAttr(object, Key::Options, /*required=*/false);
  if (options.found)
    for (const Value& name : options.value->GetArray())
      if (const unsigned id = name.IsString() ? QXMeta::GetValue(Text(name)) : 0)
        meta.SetOption(id);
  const auto attributes = GetJSONArrayAttr(object, Key::Attributes, /*required=*/false);
  if (attributes.found)
    for (const Value& pair : attributes.value->GetArray()) ReadAttribute(meta, pair);
  return !options.failed && !attributes.failed;
}

// ---- Reading records ----

bool ReadRecord(QXRecord& record, Value& document);

// Read an element of a vector; false where it is of another kind.
bool ReadElement(const Value& element, long& value) {
  return ReadInteger(element, value);
}
bool ReadElement(const Value& element, double& value) {
  if (!element.IsNumber()) return false;
  value = element.GetDouble();
  return true;
}
bool ReadElement(const Value& element, bool& value) {
  if (!element.IsBool()) return false;
  value = element.GetBool();
  return true;
}
bool ReadElement(const Value& element, std::string& value) {
  if (!element.IsString()) return false;
  value = Text(element);
  return true;
}
bool ReadElement(const Value& element, QXBytes& value) {
  if (!element.IsString()) return false;
  value = QXBase85Decode(Text(element));
  return true;
}
bool ReadElement(Value& element, QXRecord& value) {
  return element.IsObject() && ReadRecord(value, element);
}

// Read the member "value" of a field; false where it is of another kind.
template <class Found, class T>
bool Take(const QXJSONAttr<Found>& attribute, T& value) {
  value = attribute.value;
  return attribute.found;
}
bool Read(Value& field, long& value) {
  return Take(QXSystem::GetJSONIntAttr(field, Key::Value, /*required=*/true), value);
}
bool Read(Value& field, double& value) {
  return Take(QXSystem::GetJSONDoubleAttr(field, Key::Value, /*required=*/true), value);
}
bool Read(Value& field, bool& value) {
  return Take(QXSystem::GetJSONBoolAttr(field, Key::Value, /*required=*/true), value);
}
bool Read(Value& field, std::string& value) {
  return Take(GetJSONStringAttr(field, Key::Value, /*required=*/true), value);
}
bool Read(Value& field, QXBytes& value) {
  std::string text;
  if (!Read(field, text)) return false;
  value = QXBase85Decode(text);
  return true;
}
bool Read(Value& field, QXRecord& value) {
  const auto document = GetJSONObjectAttr(field, Key::Value, /*required=*/true);
  return document.found && ReadRecord(value, *document.value);
}

// Refused with a warning, and left empty, is what is no object.
template <class T>
std::enable_if_t<IsJSON<T>, bool> Read(Value& field, T& value) {
  value = T(QXSystem::JSONText(field[Key::Value]));
  return true;
}

bool WarnOfElement(const QXFieldTypeHandler& type) {
  QXThrow.Warning("JSON: element of another type than %s needs, key: %s", type.GetName().c_str(),
                  Key::Value);
  return false;
}

// The direction decides over bounds that contradict it.
bool Read(Value& field, QXRange& value) {
  const auto array = GetJSONArrayAttr(field, Key::Value, /*required=*/true);
  if (!array.found) return false;
  constexpr double unbounded = std::numeric_limits<double>::infinity();
  double numbers[rangeParts] = {-unbounded, unbounded};
  const Value& parts = *array.value;
  if (parts.Size() != rangeParts) return WarnOfElement(Types::Range);
  for (SizeType i = 0; i < rangeParts; ++i) {
    const bool isAbsent = i < 2 && parts[i].IsNull();
    if (!isAbsent && !ReadElement(parts[i], numbers[i])) return WarnOfElement(Types::Range);
  }
  const double direction = numbers[2];
  if (direction < 0) numbers[1] = unbounded;
  if (direction > 0) numbers[0] = -unbounded;
  value = QXRange(std::vector<double>{numbers[0], numbers[1], numbers[3]});
  return true;
}

template <class T>
bool Read(Value& field, std::vector<std::optional<T>>& values) {
  const auto array = GetJSONArrayAttr(field, Key::Value, /*required=*/true);
  if (!array.found) return false;
  values.reserve(array.value->Size());
  for (Value& element : array.value->GetArray()) {
    auto& value = values.emplace_back();
    if (!element.IsNull() && !ReadElement(element, value.emplace()))
      return WarnOfElement(QXVectorFieldType<T>());
  }
  return true;
}

template <class Handler>
[[gnu::noinline]] bool ReadBuiltIn(QXRecord& record, const QXFieldBase& field, Value& node,
                                   const Handler&) {
  ValueType<Handler> value{};
  if (!Read(node, value)) return false;
  if constexpr (IsJSON<ValueType<Handler>>)
    if (value.GetString().empty()) return record.AddField(field);
  return record.SetBytes(field, Handler::ToBytes(value));
}

bool ReadUserValue(QXRecord& record, const QXFieldBase& field, const Value& value) {
  const QXFieldTypeHandler* handler = UserHandler(field);
  if (handler == nullptr) return record.AddField(field);
  if (value.IsString()) return record.SetBytes(field, handler->JSONToBytes(Text(value)));
  if (value.IsObject() || value.IsArray())
    return record.SetBytes(field, handler->JSONToBytes(QXSystem::JSONText(value)));
  QXThrow.Warning("Only objects, arrays of objects, and strings allowed for user field types");
  return record.AddField(field);
}

bool ReadValue(QXRecord& record, const QXFieldBase& field, Value& node) {
  const auto member = node.FindMember(Key::Value);
  if (member == node.MemberEnd()) return record.AddField(field);
  if (member->value.IsNull()) return record.SetBytes(field, std::nullopt);
  bool isRead = false;
  const auto read = [&](const auto& handler) {
    isRead = ReadBuiltIn(record, field, node, handler);
  };
  return VisitBuiltIn(field.GetTypeName(), read) ? isRead
                                                 : ReadUserValue(record, field, member->value);
}

void ReadChildren(QXRecord& record, const QXFieldBase& field, Value& object) {
  std::map<std::string, QXRecord> children;
  for (auto& member : object.GetObject()) {
    QXRecord child;
    if (ReadRecord(child, member.value)) children[Text(member.name)] = std::move(child);
  }
  record.SetChildren(field, children);
}

// Adds a field, or nothing if something in it is not as it should be.
void ReadField(QXRecord& record, Value& node) {
  const auto name = GetJSONStringAttr(node, Key::Name, /*required=*/true);
  const auto type = GetJSONStringAttr(node, Key::Type, /*required=*/true);
  const auto index = QXSystem::GetJSONUnsignedAttr(node, Key::Index, /*required=*/true);
  const auto meta = GetJSONObjectAttr(node, Key::Meta, /*required=*/false);
  const auto nullable = QXSystem::GetJSONBoolAttr(node, Key::Nullable, /*required=*/false);
  const auto child = GetJSONObjectAttr(node, Key::Child, /*required=*/false);
  if (name.failed || type.failed || index.failed || meta.failed || nullable.failed || child.failed)
    return;
  QXFieldMeta fieldMeta;
  if (meta.found && !ReadMeta(fieldMeta, *meta.value)) return;
  const QXFieldBase field = MakeFieldBase(name.value, type.value, std::move(fieldMeta),
                                          /*readonly=*/false, nullable.value);
  if (ReadValue(record, field, node) && child.found) ReadChildren(record, field, *child.value);
}

bool ReadRecord(QXRecord& record, Value& document) {
  const QXNestingScope level;
  if (!level) return false;
  const auto version = GetJSONArrayAttr(document, Key::Version, /*required=*/true);
  if (!version.found) return false;
  if (version.value->Size() != versionParts) {
    QXThrow.Warning("JSON: must be an array of %u elements, key: %s", versionParts, Key::Version);
    return false;
  }
  const auto source = GetJSONStringAttr(document, Key::SourceID, /*required=*/false);
  if (source.failed) return false;
  if (source.found) record.SetSourceID(source.value);
  const auto fields = GetJSONArrayAttr(document, Key::Fields, /*required=*/false);
  if (fields.found)
    for (Value& field : fields.value->GetArray()) {
      if (!field.IsObject()) break;
      ReadField(record, field);
    }
  return !fields.failed;
}

}  // namespace

std::string QXRecordToJSON(const QXRecord& record) {
  // Objects in caches that lie too deep in one another have no bytes, and would
  // look as if they were not there.
  if (record.ToBytes().empty()) return "";
  JSONOutput output;
  return WriteRecord(output.GetWriter(), RecordContent(record)) ? output.GetText() : "";
}

bool QXRecordFromJSON(QXRecord& record, const std::string& text) {
  rapidjson::Document document;
  if (!QXSystem::JSONParseHelper(document, text)) return false;
  record.Clear();
  return ReadRecord(record, document);
}

std::string QXFieldMetaToJSON(const QXFieldMeta& meta) {
  JSONOutput output;
  WriteMeta(output.GetWriter(), meta);
  return output.GetText();
}

bool QXFieldMetaFromJSON(QXFieldMeta& meta, const std::string& text, bool clear) {
  rapidjson::Document document;
  if (!QXSystem::JSONParseHelper(document, text)) return false;
  if (clear) meta.Clear();
  return ReadMeta(meta, document);
}

}  // namespace QXDataFlow
