#include <qxsystem/json/json.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <functional>
#include <map>
#include <string_view>
#include <type_traits>
#include <utility>
#include <vector>

#include <qxsystem/core/base_private.h>
#include <qxsystem/core/error.h>
#include <qxsystem/core/nesting.h>
#include <qxsystem/core/tagmap_private.h>
#include <qxsystem/json/json_private.h>
#include <qxsystem/qxb/qxb.h>

namespace QXSystem {

template class QXBaseDataT<JSONString>;

namespace {

using rapidjson::SizeType;
using rapidjson::Value;

constexpr const char* documentVersion = "0.91";
constexpr std::array<const char*, 3> documentKeys = {"qxhint", "type", "version"};

// Data of the binary format that have no place in a document, sorted.
constexpr std::array<std::string_view, 12> leftOut = {
    "CDXAtomNumHydrogens", "Gaussian Grid", "MiniMolTagDataTag", "PDBTagData",
    "PLP Annotation",      "QXStyleList2",  "QXUnknownQXBData",  "QX_unit_cell",
    "ReceptorData",        "SDTagData",     "__rotorTag__",      "snark"};

// The keys of a document that are no data. Data of such names have underscores
// in front: one more in the document than in the object.
class ReservedKeys {
public:
  ReservedKeys(const char* const* names, unsigned long count)
      : begin_(names), end_(names ? names + count : names) {}

  bool Has(std::string_view key) const {
    return std::binary_search(begin_, end_, key, std::less<std::string_view>());
  }

  // Whether `name` behind all its underscores is reserved.
  bool HasBehindUnderscores(std::string_view name) const {
    return Has(name.substr(std::min(name.find_first_not_of('_'), name.size())));
  }

private:
  const char* const* begin_;
  const char* const* end_;
};

// --- writing

void Put(Writer& writer, bool value, bool) {
  writer.Bool(value);
}
void Put(Writer& writer, int value, bool) {
  writer.Int(value);
}
void Put(Writer& writer, double value, bool) {
  WriteDouble(writer, value);
}
void Put(Writer& writer, float value, bool) {
  Put(writer, static_cast<double>(value), false);
}

void Put(Writer& writer, const std::string& value, bool escape) {
  if (!escape) return WriteText(writer, value);
  std::string escaped = value;
  QXEscapeJSON(escaped);
  WriteText(writer, escaped);
}

template <class T>
void Put(Writer& writer, const std::vector<T>& values, bool escape) {
  writer.StartArray();
  for (const auto& value : values) Put(writer, value, escape);
  writer.EndArray(static_cast<SizeType>(values.size()));
}

template <class T>
void PutItem(Writer& writer, const QXBaseData& item, bool escape) {
  Put(writer, static_cast<const QXBaseDataT<T>&>(item).GetValue(), escape);
}

// How the types with a form of their own are written: the hints for several
// items in an array and for one alone, or null, and the function.
struct Form {
  const void* type;
  const char* many;
  const char* one;
  void (*put)(Writer& writer, const QXBaseData& item, bool escape);
};

template <class T>
Form FormOf(const char* many, const char* one) {
  return {QXGetDataType<T>(), many, one, PutItem<T>};
}

const Form* FindForm(const void* type) {
  static const std::array<Form, 10> forms = {
      FormOf<int>("mi", "i"),
      FormOf<float>("mf", "f"),
      FormOf<double>("m", nullptr),
      FormOf<std::string>("m", nullptr),
      FormOf<bool>("m", nullptr),
      FormOf<std::vector<std::string>>(nullptr, nullptr),
      FormOf<std::vector<double>>(nullptr, nullptr),
      FormOf<std::vector<float>>("f", "f"),
      FormOf<std::vector<bool>>(nullptr, nullptr),
      FormOf<std::vector<int>>("i", "i"),
  };
  const auto found =
      std::find_if(forms.begin(), forms.end(), [type](const Form& f) { return f.type == type; });
  return found != forms.end() ? &*found : nullptr;
}

// The items of one name, which share a key: one value, or an array of several.
class KeyWriter {
public:
  KeyWriter(Writer& writer, const std::string& key, bool escape)
      : writer_(writer), key_(key), escape_(escape) {}

  // `more` tells that another item follows.
  void Write(QXBaseData& item, bool more) {
    WriteValue(item, more);
    if (!more && inArray_) writer_.EndArray();
  }

  // The hint for what was written, the last item's; null if it needs none.
  const char* GetHint() const { return hint_; }

private:
  // A first item that is left out opens nothing, so that a single value may
  // follow; a last one still ends the array.
  void WriteValue(QXBaseData& item, bool more) {
    const void* const type = item.GetDataType();
    if (const Form* form = FindForm(type)) {
      Open(more, form->many, form->one);
      form->put(writer_, item, escape_);
    } else if (type == QXGetDataType<JSONString>()) {
      const std::string& text = static_cast<QXBaseDataT<JSONString>&>(item).GetValue().GetString();
      if (!IsJSONText(writer_, text, /*levels=*/more && !inArray_)) return;
      Open(more, nullptr, nullptr);
      writer_.RawValue(text.data(), text.size(), rapidjson::kObjectType);
    } else if (QXJSONHandlerBase* handler = QXGetJSONHandlerByType(type)) {
      const QXNestingScope level;
      if (!level) return;
      Open(more, "m", nullptr);
      handler->Write(&item, writer_, handler->GetFlavor());
    } else if (QXJSONHandlerBase* listHandler = QXGetJSONVHandlerByType(type)) {
      const QXNestingScope level;
      if (!level) return;
      Open(more, nullptr, nullptr);
      listHandler->VWrite(&item, writer_, listHandler->GetFlavor());
    } else {
      QXThrow.Warning(
          "JSON: Can not write object with key: %s, no handler for internal generic data type: %p",
          key_.c_str(), type);
    }
  }

  void Open(bool more, const char* many, const char* one) {
    if (!opened_) {
      WriteText(writer_, key_);
      if (more) writer_.StartArray();
      inArray_ = more;
      opened_ = true;
    }
    if (const char* hint = inArray_ ? many : one) hint_ = hint;
  }

  Writer& writer_;
  const std::string& key_;
  const bool escape_;
  bool opened_ = false;
  bool inArray_ = false;
  const char* hint_ = nullptr;
};

bool IsLeftOut(std::string_view name) {
  return name.empty() || std::binary_search(leftOut.begin(), leftOut.end(), name) ||
         QXIsInternalQXBTag(name.data(), name.size());
}

// --- reading

struct Hint {
  bool several = false;  // items, not the elements of one
  char kind = '\0';      // of numbers: 'f', 'i', or neither
};

// The hints of a document, found in logarithmic time.
class Hints {
public:
  explicit Hints(const Value* object) {
    if (!object) return;
    for (const auto& member : object->GetObject())
      if (member.value.IsString())
        hints_.emplace_back(Text(member.name), Parse(Text(member.value)));
    std::stable_sort(hints_.begin(), hints_.end(), KeyLess);
  }

  Hint Get(std::string_view key) const {
    const auto found = std::lower_bound(hints_.begin(), hints_.end(), Entry(key, {}), KeyLess);
    return found != hints_.end() && found->first == key ? found->second : Hint();
  }

private:
  using Entry = std::pair<std::string_view, Hint>;
  static bool KeyLess(const Entry& a, const Entry& b) { return a.first < b.first; }
  static std::string_view Text(const Value& value) {
    return {value.GetString(), value.GetStringLength()};
  }
  static Hint Parse(std::string_view hint) {
    const auto has = [hint](char c) { return hint.find(c) != hint.npos; };
    return {has('m'), has('f') ? 'f' : has('i') ? 'i' : '\0'};
  }

  std::vector<Entry> hints_;
};

// The number as an `int`, its fraction dropped; false if it is out of range.
bool GetInteger(const Value& number, int& out) {
  if (number.IsInt()) {
    out = number.GetInt();
    return true;
  }
  const double value = number.GetDouble();
  if (!number.IsDouble() || !(value >= -2147483648.0 && value <= 2147483647.999)) return false;
  out = static_cast<int>(value);
  return true;
}

// What reads the elements of an array, by their type.
template <class T>
struct Element {  // numbers
  static constexpr const char* name = "number";
  static bool Is(const Value& value) { return value.IsNumber(); }
  static T Get(const Value& value) { return static_cast<T>(value.GetDouble()); }
};
template <>
struct Element<bool> {
  static constexpr const char* name = "boolean";
  static bool Is(const Value& value) { return value.IsBool(); }
  static bool Get(const Value& value) { return value.GetBool(); }
};
template <>
struct Element<std::string> {
  static constexpr const char* name = "string";
  static bool Is(const Value& value) { return value.IsString(); }
  static std::string Get(const Value& value) {
    return {value.GetString(), value.GetStringLength()};
  }
};

// Reads the value of one key into items of one tag.
class KeyReader {
public:
  KeyReader(QXBase& object, const std::string& key, Hint hint)
      : object_(object), key_(key), tag_(QXGetTag(key)), hint_(hint) {}

  bool Read(Value& value) {
    switch (value.GetType()) {
      case rapidjson::kFalseType:
      case rapidjson::kTrueType:
        Store(value.GetBool());
        return true;
      case rapidjson::kStringType:
        Store(Element<std::string>::Get(value));
        return true;
      case rapidjson::kNumberType:
        StoreNumber(value);
        return true;
      case rapidjson::kObjectType:
        return ReadObject(value);
      case rapidjson::kArrayType:
        return ReadArray(value);
      case rapidjson::kNullType:
        break;
    }
    QXThrow.Warning("JSON: Null value ignored, key: %s", key_.c_str());
    return true;
  }

private:
  // The first item of a tag is set, further ones are added.
  template <class T>
  void Store(T value) {
    if (std::exchange(first_, false))
      object_.SetData<T>(tag_, std::move(value));
    else
      object_.AddData<T>(tag_, std::move(value));
  }

  void StoreNumber(const Value& value) {
    int integer;
    if (hint_.kind == 'f') return Store(Element<float>::Get(value));
    if (hint_.kind == 'i') {
      if (GetInteger(value, integer)) return Store(integer);
      WarnOfRange();
    }
    Store(value.GetDouble());
  }

  bool ReadObject(Value& value) {
    QXJSONHandlerBase* const handler = HandlerOf(TypeOf(value));
    if (!handler) return StoreText(value, "object");
    const QXNestingScope level;
    return level && handler->Read(object_, key_, value);
  }

  // The first element tells what the others are.
  bool ReadArray(Value& array) {
    if (array.Empty()) {
      QXThrow.Warning("JSON: Empty array ignored, key: %s", key_.c_str());
      return true;
    }
    const Value& first = array[0];
    if (first.IsBool()) return ReadElements<bool>(array);
    if (first.IsString()) return ReadElements<std::string>(array);
    if (first.IsNumber() && hint_.kind == 'f') return ReadElements<float>(array);
    if (first.IsNumber() && hint_.kind == 'i') return ReadElements<int>(array);
    if (first.IsNumber()) return ReadElements<double>(array);
    if (first.IsObject()) return ReadObjects(array);
    return StoreText(array, "array");
  }

  bool ReadObjects(Value& array) {
    const Value* const firstType = TypeOf(array[0]);  // a search through all members
    QXJSONHandlerBase* const handler = HandlerOf(firstType);
    const auto alike = [firstType](const Value& element) {
      const Value* const type = TypeOf(element);
      return type && *type == *firstType;
    };
    if (!handler || !std::all_of(array.Begin(), array.End(), alike))
      return StoreText(array, "array of objects");
    const QXNestingScope level;
    return level && handler->VRead(object_, key_, array, hint_.several);
  }

  // As items what stands before an element of another kind is kept; a vector
  // needs them all.
  template <class T>
  bool ReadElements(const Value& array) {
    const auto wrong = std::find_if_not(array.Begin(), array.End(), Element<T>::Is);
    if (hint_.several)
      std::for_each(array.Begin(), wrong, [this](const Value& e) { StoreElement<T>(e); });
    else if (wrong == array.End())
      StoreVector<T>(array);
    if (wrong == array.End()) return true;
    QXThrow.Warning("JSON: Heterogenous array of data found, key: %s, expected type: %s",
                    key_.c_str(), Element<T>::name);
    return false;
  }

  template <class T>
  void StoreElement(const Value& value) {
    if constexpr (std::is_same_v<T, bool> || std::is_same_v<T, std::string>)
      Store(Element<T>::Get(value));
    else
      StoreNumber(value);
  }

  template <class T>
  void StoreVector(const Value& array) {
    if constexpr (std::is_same_v<T, int>) {
      int ignored;
      const auto fits = [&](const Value& e) { return GetInteger(e, ignored); };
      if (!std::all_of(array.Begin(), array.End(), fits)) {
        WarnOfRange();
        return StoreVector<double>(array);
      }
    }
    std::vector<T> values;
    values.reserve(array.Size());
    for (const Value& e : array.GetArray()) values.push_back(Element<T>::Get(e));
    Store(std::move(values));
  }

  bool StoreText(const Value& value, const char* what) {
    QXThrow.Warning("JSON: Can not read JSON %s with key: %s, stored as JSONString", what,
                    key_.c_str());
    Store(JSONString(JSONText(value)));
    return true;
  }

  // There may be one warning for each of many elements, so a key that is longer
  // than what a report shows must not cost its whole length every time.
  void WarnOfRange() const {
    QXThrow.Warning("JSON: Numeric value out of range for integer, key: %s, ignoring hint",
                    key_.substr(0, 8191).c_str());
  }

  // The "type" of an object; null if it has none that is a text.
  static const Value* TypeOf(const Value& value) {
    if (!value.IsObject()) return nullptr;
    const auto type = value.FindMember("type");
    return type != value.MemberEnd() && type->value.IsString() ? &type->value : nullptr;
  }

  static QXJSONHandlerBase* HandlerOf(const Value* type) {
    return type ? QXGetJSONHandlerByType(Element<std::string>::Get(*type)) : nullptr;
  }

  QXBase& object_;
  const std::string& key_;
  const unsigned tag_;
  const Hint hint_;
  bool first_ = true;
};

}  // namespace

void QXGenBaseDataJSON(Writer& writer, const QXBase& object, const char* const* reserved,
                       unsigned long count, unsigned int flags) {
  const auto* const stored = QXBaseAccess::Items(object);
  if (!stored) return;
  auto items = *stored;
  std::stable_sort(items.begin(), items.end(), [](const QXBaseData* a, const QXBaseData* b) {
    return a->GetTag() < b->GetTag();
  });

  const ReservedKeys reservedKeys(reserved, count);
  const bool escape = flags & QXJSONFlag::Escape;
  std::map<std::string, const char*> hints;
  for (auto next = items.begin(); next != items.end();) {
    const auto first = next;
    const unsigned tag = (*first)->GetTag();
    next = std::find_if(first, items.end(), [&](const auto* i) { return i->GetTag() != tag; });
    const std::string_view name = NameOfTag(tag);
    if (IsLeftOut(name)) continue;

    std::string key(name);
    if (reservedKeys.HasBehindUnderscores(name)) key.insert(0, 1, '_');
    if (escape) QXEscapeJSON(key);
    KeyWriter values(writer, key, escape);
    for (auto item = first; item != next; ++item) values.Write(**item, /*more=*/item + 1 != next);
    if (const char* hint = values.GetHint()) hints[key] = hint;
  }

  if (hints.empty()) return;
  writer.Key("qxhint");
  writer.StartObject();
  for (const auto& [key, hint] : hints) {
    WriteText(writer, key);
    writer.String(hint);
  }
  writer.EndObject();
}

bool QXParseBaseDataJSON(QXBase& object, Value& value, const char* const* reserved,
                         unsigned long count) {
  if (!value.IsObject()) {
    QXThrow.Warning("JSON: data must be in an object");
    return false;
  }
  const auto stored = GetJSONObjectAttr(value, "qxhint", /*required=*/false);
  if (stored.failed) return false;
  const Hints hints(stored.value);
  const ReservedKeys reservedKeys(reserved, count);
  for (auto& member : value.GetObject()) {
    std::string key = Element<std::string>::Get(member.name);
    if (reservedKeys.Has(key)) continue;
    const Hint hint = hints.Get(key);
    if (key.compare(0, 1, "_") == 0 && reservedKeys.HasBehindUnderscores(key)) key.erase(0, 1);
    if (!KeyReader(object, key, hint).Read(member.value)) return false;
  }
  return true;
}

void WriteContainer(Writer& writer, const QXBase& object, unsigned int flags) {
  writer.StartObject();
  writer.Key("type");
  writer.String(JSONContainerType);
  writer.Key("version");
  writer.String(documentVersion);
  QXGenBaseDataJSON(writer, object, documentKeys.data(), documentKeys.size(), flags);
  writer.EndObject();
}

bool ReadContainer(QXBase& object, Value& value) {
  const auto version = GetJSONStringAttr(value, "version", /*required=*/true);
  return version.found && compatibleJSONVersion(version.value) &&
         QXParseBaseDataJSON(object, value, documentKeys.data(), documentKeys.size());
}

std::string QXBaseToJSON(const QXBase& object, unsigned int flags) {
  JSONOutput output;
  WriteContainer(output.GetWriter(), object, flags);
  return output.GetText();
}

bool QXJSONToBase(QXBase& object, std::string text) {
  // The memory of this function is used up first: most texts then need none that
  // the heap would take from the system and give back each time.
  alignas(std::max_align_t) char scratch[0xF000];
  rapidjson::MemoryPoolAllocator<> memory(scratch, sizeof scratch);
  rapidjson::Document document(&memory);
  if (!ParseObjectInPlace(document, text.data(), text.size())) return false;
  const auto type = GetJSONStringAttr(document, "type", /*required=*/false);
  if (type.failed) return false;

  object.Clear();
  if (!type.found)
    return QXParseBaseDataJSON(object, document, documentKeys.data(), documentKeys.size());
  if (type.value == JSONContainerType) return ReadContainer(object, document);
  if (QXJSONHandlerBase* handler = QXGetJSONHandlerByType(type.value))
    return handler->Read(object, type.value, document);
  QXThrow.Warning("JSON: Unrecognized type: %s", type.value.c_str());
  return false;
}

void QXEscapeJSON(std::string& text) {
  if (text.find_first_of("<>") == text.npos) return;
  std::string escaped;
  for (const char c : text) {
    if (c == '<')
      escaped += "&lt;";
    else if (c == '>')
      escaped += "&gt;";
    else
      escaped += c;
  }
  text = std::move(escaped);
}

void QXUnescapeJSON(std::string& text) {
  std::size_t kept = 0;
  for (std::size_t i = 0; i < text.size(); ++i) {
    char c = text[i];
    if (c == '&' && (text.compare(i, 4, "&lt;") == 0 || text.compare(i, 4, "&gt;") == 0)) {
      c = text[i + 1] == 'l' ? '<' : '>';
      i += 3;
    }
    text[kept++] = c;
  }
  text.resize(kept);
}

bool compatibleJSONVersion(const std::string& version) {
  if (version.substr(0, version.find('.')) == "0") return true;
  QXThrow.Warning("JSON: document version %s, not compatible with current reader version: %s",
                  version.c_str(), documentVersion);
  return false;
}

double QXTruncate(double value, int factor) {
  constexpr double noFraction = 4503599627370496;  // 2^52: doubles from here on are integers
  const double scaled = value * factor;
  if (std::isinf(scaled)) return value;
  return (std::fabs(scaled) < noFraction ? std::floor(scaled) : scaled) / factor;
}

}  // namespace QXSystem
