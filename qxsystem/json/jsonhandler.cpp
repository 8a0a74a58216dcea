#include <qxsystem/json/jsonhandler.h>

#include <cstring>
#include <new>
#include <utility>
#include <vector>

#include <qxsystem/core/error.h>
#include <qxsystem/json/json_private.h>

namespace QXSystem {

using rapidjson::Value;

// --- registry

QXJSONHandlerBase::~QXJSONHandlerBase() = default;

void QXJSONHandlerRegistry::AddHandler(QXJSONHandlerBase* handler) {
  byName_[QXGetTag(handler->GetJsonType())] = handler;
  if (const void* type = handler->GetDataType()) byType_[type] = handler;
  if (const void* type = handler->GetVDataType()) byVType_[type] = handler;
}

template <class Key>
static QXJSONHandlerBase* Find(const std::map<Key, QXJSONHandlerBase*>& handlers, const Key& key) {
  const auto found = handlers.find(key);
  return found != handlers.end() ? found->second : nullptr;
}

QXJSONHandlerBase* QXJSONHandlerRegistry::GetByType(const std::string& jsonType) const {
  return QXHasTag(jsonType) ? Find(byName_, QXGetTag(jsonType)) : nullptr;
}

// A literal would be taken for an identity without this one.
QXJSONHandlerBase* QXJSONHandlerRegistry::GetByType(const char* jsonType) const {
  return GetByType(std::string(jsonType ? jsonType : ""));
}

QXJSONHandlerBase* QXJSONHandlerRegistry::GetByType(const void* dataType) const {
  return Find(byType_, dataType);
}

QXJSONHandlerBase* QXJSONHandlerRegistry::GetByVType(const void* dataType) const {
  return Find(byVType_, dataType);
}

QXJSONHandlerRegistry& QXGetJSONHandlerRegistry() {
  static auto& registry = *new QXJSONHandlerRegistry;  // looked up to the end of the process
  return registry;
}

bool QXRegisterJSONHandler(QXJSONHandlerBase* handler) {
  QXGetJSONHandlerRegistry().AddHandler(handler);
  return true;
}

QXJSONHandlerBase* QXGetJSONHandlerByType(const std::string& jsonType) {
  return QXGetJSONHandlerRegistry().GetByType(jsonType);
}

QXJSONHandlerBase* QXGetJSONHandlerByType(const char* jsonType) {
  return QXGetJSONHandlerRegistry().GetByType(jsonType);
}

QXJSONHandlerBase* QXGetJSONHandlerByType(const void* dataType) {
  return QXGetJSONHandlerRegistry().GetByType(dataType);
}

QXJSONHandlerBase* QXGetJSONVHandlerByType(const void* dataType) {
  return QXGetJSONHandlerRegistry().GetByVType(dataType);
}

// --- containers

QXContainerJSONHandler::~QXContainerJSONHandler() = default;

bool QXContainerJSONHandler::Read(QXBase& holder, std::string key, Value& value) {
  QXContainer container;
  if (!ReadContainer(container, value)) return false;
  holder.SetData<QXContainer>(QXGetTag(std::move(key)), std::move(container));
  return true;
}

bool QXContainerJSONHandler::VRead(QXBase& holder, std::string key, Value& value, bool multi) {
  if (!value.IsArray()) return false;
  const unsigned tag = QXGetTag(std::move(key));
  std::vector<QXContainer> list;
  bool first = true;
  for (Value& element : value.GetArray()) {
    QXContainer container;
    if (!ReadContainer(container, element)) return false;
    if (!multi)
      list.push_back(std::move(container));
    else if (std::exchange(first, false))
      holder.SetData<QXContainer>(tag, std::move(container));
    else
      holder.AddData<QXContainer>(tag, std::move(container));
  }
  if (!multi) holder.SetData<std::vector<QXContainer>>(tag, std::move(list));
  return true;
}

void QXContainerJSONHandler::Write(QXBaseData* item, Writer& writer, unsigned int flags) {
  WriteContainer(writer, static_cast<QXBaseDataT<QXContainer>*>(item)->GetValue(), flags);
}

void QXContainerJSONHandler::VWrite(QXBaseData* item, Writer& writer, unsigned int flags) {
  writer.StartArray();
  for (const QXContainer& container :
       static_cast<QXBaseDataT<std::vector<QXContainer>>*>(item)->GetValue())
    WriteContainer(writer, container, flags);
  writer.EndArray();
}

std::string QXContainerJSONHandler::GetJsonType() {
  return JSONContainerType;
}

const void* QXContainerJSONHandler::GetDataType() {
  return QXGetDataType<QXContainer>();
}

const void* QXContainerJSONHandler::GetVDataType() {
  return QXGetDataType<std::vector<QXContainer>>();
}

unsigned int QXContainerJSONHandler::GetFlavor() {
  return 0;
}

QXJSONHandlerBase* QXInitContainerJSONHandler() {
  return new QXContainerJSONHandler;
}

// --- parsing and attributes

bool JSONParseHelper(rapidjson::Document& document, const char* text) {
  return JSONParseHelper(document, std::string(text ? text : ""));
}

bool JSONParseHelper(rapidjson::Document& document, const std::string& text) {
  // The document's memory, so that it lives as long.
  auto* copy = static_cast<char*>(document.GetAllocator().Malloc(text.size() + 1));
  if (!copy) throw std::bad_alloc();
  std::memcpy(copy, text.c_str(), text.size() + 1);
  return ParseObjectInPlace(document, copy, text.size());
}

// `expects` is what the warning says of a value of another type.
template <class Is, class Get>
static auto ReadAttribute(Value& object, const char* key, bool required, const char* expects, Is is,
                          Get get) {
  QXJSONAttr<decltype(get(object))> result;
  const auto report = [&](const char* fault) {
    QXThrow.Warning(std::string("JSON: ") + fault + ", key: " + key);
    result.failed = true;
  };
  const auto member = object.IsObject() ? object.FindMember(key) : Value::MemberIterator();
  if (!object.IsObject() || member == object.MemberEnd()) {
    if (required) report("missing required attribute");
  } else if (!is(member->value)) {
    report(expects);
  } else {
    result.found = true;
    result.value = get(member->value);
  }
  return result;
}

QXJSONAttr<std::string> GetJSONStringAttr(Value& object, const char* key, bool required) {
  return ReadAttribute(
      object, key, required, "expects type of: string", [](Value& v) { return v.IsString(); },
      [](Value& v) { return std::string(v.GetString(), v.GetStringLength()); });
}

QXJSONAttr<bool> GetJSONBoolAttr(Value& object, const char* key, bool required) {
  return ReadAttribute(
      object, key, required, "expects type of: boolean", [](Value& v) { return v.IsBool(); },
      [](Value& v) { return v.GetBool(); });
}

QXJSONAttr<int> GetJSONIntAttr(Value& object, const char* key, bool required) {
  return ReadAttribute(
      object, key, required, "expects type of: integer",
      [](Value& v) { return v.IsInt64() || v.IsUint64(); },
      [](Value& v) {
        return v.IsUint64() ? static_cast<int>(v.GetUint64()) : static_cast<int>(v.GetInt64());
      });
}

QXJSONAttr<unsigned int> GetJSONUnsignedAttr(Value& object, const char* key, bool required) {
  return ReadAttribute(
      object, key, required, "expects type of: unsigned", [](Value& v) { return v.IsUint(); },
      [](Value& v) { return v.GetUint(); });
}

QXJSONAttr<double> GetJSONDoubleAttr(Value& object, const char* key, bool required) {
  return ReadAttribute(
      object, key, required, "expects type of: Double", [](Value& v) { return v.IsNumber(); },
      [](Value& v) { return v.GetDouble(); });
}

QXJSONAttr<Value*> GetJSONObjectAttr(Value& object, const char* key, bool required) {
  return ReadAttribute(
      object, key, required, "must be an object type", [](Value& v) { return v.IsObject(); },
      [](Value& v) { return &v; });
}

QXJSONAttr<Value*> GetJSONArrayAttr(Value& object, const char* key, bool required) {
  return ReadAttribute(
      object, key, required, "must be an array type", [](Value& v) { return v.IsArray(); },
      [](Value& v) { return &v; });
}

}  // namespace QXSystem
