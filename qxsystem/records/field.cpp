#include <qxsystem/records/field.h>

#include <algorithm>
#include <set>

#include <qxsystem/records/encoding_private.h>
#include <qxsystem/records/metadata_private.h>
#include <qxsystem/records/types_private.h>

namespace QXDataFlow {
namespace {

using namespace QXMetadata;

// ---- Encoded values of attributes ----

QXBytes Encode(const std::string& value) {
  QXBytes bytes;
  StoreText(Grow(bytes, TextSize(value.size())), value);
  return bytes;
}
QXBytes Encode(double value) {
  QXBytes bytes;
  StoreBits(Grow(bytes, sizeof value), value);
  return bytes;
}
QXBytes Encode(int value) {
  QXBytes bytes;
  StoreInt(Grow(bytes, IntSize(long{value})), long{value});
  return bytes;
}

template <class T>
T Decode(const QXBytes& bytes) {
  Cursor from(bytes);
  bool isNone;
  if constexpr (std::is_same_v<T, std::string>) {
    std::string_view text;
    return std::string(from.Text(text, isNone) ? text : "");
  } else if constexpr (std::is_same_v<T, double>) {
    double value;
    return from.Float(value, isNone) ? value : 0.0;
  } else {
    long value;
    return from.Int(value, isNone) ? static_cast<int>(value) : 0;
  }
}

// Names in the code of other languages have "::" between their parts.
std::string WithDots(std::string_view name) {
  std::string dotted;
  for (std::size_t i = 0; i < name.size(); ++i) {
    const bool isPair = name.substr(i, 2) == "::";
    dotted += isPair ? '.' : name[i];
    if (isPair) ++i;
  }
  return dotted;
}

template <class Attributes, class Keep>
void EraseUnless(Attributes& attributes, Keep keep) {
  attributes.erase(std::remove_if(attributes.begin(), attributes.end(),
                                  [&](const auto& item) { return !keep(item); }),
                   attributes.end());
}

}  // namespace

// ---- Metadata ----

QXMeta& QXMeta::operator=(const QXMeta& other) {
  options_ = other.options_;
  attributes_ = other.attributes_;
  return *this;
}

QXMeta::~QXMeta() = default;

QXMeta& QXMeta::SetOption(unsigned id) {
  return QXMeta::SetOptions({id});
}

// The ids are added as if one after the other: of those that exclude each other
// the last one stays.
QXMeta& QXMeta::SetOptions(const std::vector<unsigned>& ids) {
  struct Slot {
    unsigned mask, value;
    bool Holds(unsigned id) const { return (id & mask) == value; }
  };
  std::vector<Slot> taken;
  const auto isTaken = [&](unsigned id) {
    return std::any_of(taken.begin(), taken.end(), [id](Slot slot) { return slot.Holds(id); });
  };
  std::vector<unsigned> added;
  for (auto id = ids.rbegin(); id != ids.rend(); ++id) {
    if (*id == 0 || isTaken(*id)) continue;
    if (const unsigned mask = QXGetMetaPerFieldMask(*id)) taken.push_back({mask, *id & mask});
    added.push_back(*id);
  }
  EraseUnless(options_, [&](unsigned id) { return !isTaken(id); });
  options_.insert(options_.end(), added.begin(), added.end());
  std::sort(options_.begin(), options_.end());
  options_.erase(std::unique(options_.begin(), options_.end()), options_.end());
  return *this;
}

QXMeta& QXMeta::RemoveOption(unsigned id) {
  EraseUnless(options_, [id](unsigned option) { return option != id; });
  return *this;
}

template <class V>
QXMeta& QXMeta::Put(unsigned id, const V& value, bool replace) {
  if (!TakesAttribute<V>(id)) return *this;
  if (replace) QXMeta::RemoveAttribute(id);
  if (!std::is_sorted(attributes_.begin(), attributes_.end()))
    std::sort(attributes_.begin(), attributes_.end());
  Attribute added(id, Encode(value));
  attributes_.insert(std::upper_bound(attributes_.begin(), attributes_.end(), added),
                     std::move(added));
  return *this;
}

QXMeta& QXMeta::SetAttribute(unsigned id, const std::string& value) {
  return Put(id, value, /*replace=*/true);
}
QXMeta& QXMeta::SetAttribute(unsigned id, const double& value) {
  return Put(id, value, /*replace=*/true);
}
QXMeta& QXMeta::SetAttribute(unsigned id, const int& value) {
  return Put(id, value, /*replace=*/true);
}
QXMeta& QXMeta::AddAttribute(unsigned id, const std::string& value) {
  return Put(id, value, /*replace=*/false);
}
QXMeta& QXMeta::AddAttribute(unsigned id, const double& value) {
  return Put(id, value, /*replace=*/false);
}
QXMeta& QXMeta::AddAttribute(unsigned id, const int& value) {
  return Put(id, value, /*replace=*/false);
}

QXMeta& QXMeta::RemoveAttribute(unsigned id) {
  EraseUnless(attributes_, [id](const Attribute& attribute) { return attribute.first != id; });
  return *this;
}

QXMeta& QXMeta::RemoveBytes(unsigned id, const QXBytes& bytes) {
  EraseUnless(attributes_, [&](const Attribute& attribute) {
    return attribute.first != id || attribute.second != bytes;
  });
  return *this;
}
QXMeta& QXMeta::RemoveAttribute(unsigned id, const std::string& value) {
  return RemoveBytes(id, Encode(value));
}
QXMeta& QXMeta::RemoveAttribute(unsigned id, const double& value) {
  return RemoveBytes(id, Encode(value));
}
QXMeta& QXMeta::RemoveAttribute(unsigned id, const int& value) {
  return RemoveBytes(id, Encode(value));
}

void QXMeta::Clear() {
  options_.clear();
  attributes_.clear();
}

bool QXMeta::HasOption(unsigned id) const {
  return std::binary_search(options_.begin(), options_.end(), id);
}

// Attributes that were set as they are need not be in order.
const QXBytes* QXMeta::Find(unsigned id, unsigned index) const {
  for (const Attribute& attribute : attributes_)
    if (attribute.first == id && index-- == 0) return &attribute.second;
  return nullptr;
}

bool QXMeta::HasAttribute(unsigned id) const {
  return Find(id, 0) != nullptr;
}

bool QXMeta::HasBytes(const Attribute& attribute) const {
  return std::find(attributes_.begin(), attributes_.end(), attribute) != attributes_.end();
}
bool QXMeta::HasAttribute(unsigned id, const std::string& value) const {
  return HasBytes({id, Encode(value)});
}
bool QXMeta::HasAttribute(unsigned id, const double& value) const {
  return HasBytes({id, Encode(value)});
}
bool QXMeta::HasAttribute(unsigned id, const int& value) const {
  return HasBytes({id, Encode(value)});
}

template <class T>
T QXMeta::GetAttribute(unsigned id, unsigned index) const {
  const QXBytes* bytes = Find(id, index);
  return bytes != nullptr ? Decode<T>(*bytes) : T();
}
template int QXMeta::GetAttribute<int>(unsigned, unsigned) const;
template double QXMeta::GetAttribute<double>(unsigned, unsigned) const;
template std::string QXMeta::GetAttribute<std::string>(unsigned, unsigned) const;

int QXMeta::GetIntAttribute(unsigned id, unsigned index) const {
  return GetAttribute<int>(id, index);
}
double QXMeta::GetFloatAttribute(unsigned id, unsigned index) const {
  return GetAttribute<double>(id, index);
}
std::string QXMeta::GetStrAttribute(unsigned id, unsigned index) const {
  return GetAttribute<std::string>(id, index);
}

std::vector<QXMeta::Attribute> QXMeta::GetAttributes(unsigned id) const {
  std::vector<Attribute> attributes;
  for (const Attribute& attribute : attributes_)
    if (id == 0 || attribute.first == id) attributes.push_back(attribute);
  return attributes;
}

std::vector<QXBytes> QXMeta::GetAttributeBytes(unsigned id) const {
  std::vector<QXBytes> values;
  for (const Attribute& attribute : attributes_)
    if (attribute.first == id) values.push_back(attribute.second);
  return values;
}

void QXMeta::SetAttributes(std::vector<Attribute> attributes) {
  attributes_ = std::move(attributes);
}

void QXMeta::Merge(const QXMeta& other) {
  if (&other == this) return;
  QXMeta::SetOptions(other.options_);
  if (other.attributes_.empty()) return;
  std::map<unsigned, const QXBytes*> last;
  for (const Attribute& attribute : other.attributes_) last[attribute.first] = &attribute.second;
  EraseUnless(attributes_,
              [&](const Attribute& attribute) { return last.count(attribute.first) == 0; });
  for (const auto& [id, bytes] : last) attributes_.emplace_back(id, *bytes);
  std::sort(attributes_.begin(), attributes_.end());
}

bool QXMeta::IsSubsetOf(const QXMeta& other) const {
  return std::includes(other.options_.begin(), other.options_.end(), options_.begin(),
                       options_.end()) &&
         std::all_of(attributes_.begin(), attributes_.end(),
                     [&](const Attribute& attribute) { return other.HasBytes(attribute); });
}

std::string QXMeta::GetName(unsigned id) {
  const auto* row =
      std::lower_bound(std::begin(MetaNames), std::end(MetaNames), id,
                       [](const MetaName& name, unsigned key) { return name.id < key; });
  return row != std::end(MetaNames) && row->id == id ? WithDots(row->name) : "";
}

unsigned QXMeta::GetValue(const std::string& name) {
  const std::string dotted = WithDots(name);
  for (const MetaName& row : MetaNames)
    if (row.name == dotted) return row.id;
  return 0;
}

QXFieldMeta::~QXFieldMeta() = default;
QXRecordMeta::~QXRecordMeta() = default;

// ---- Relations ----

namespace {

// The ids of the group Relations alone have field names as values; a text of
// another group is none, and a number would read as a text of any length.
bool IsRelation(unsigned id) {
  return (id & 0xFF000000) == 0x07000000 && TakesAttribute<std::string>(id);
}

}  // namespace

QXFieldMeta& QXFieldMeta::AddRelation(unsigned id, const QXFieldBase& field) {
  return IsRelation(id) ? AddAttribute(id, field.GetName()) : *this;
}

std::vector<unsigned> QXFieldMeta::GetFieldRelations(const std::string& name) const {
  std::vector<unsigned> ids;
  for (const auto& [id, bytes] : GetAttributes())
    if (IsRelation(id) && Decode<std::string>(bytes) == name) ids.push_back(id);
  return ids;
}

std::vector<std::string> QXFieldMeta::GetRelatedFields() const {
  std::set<std::string> names;
  for (const auto& [id, bytes] : GetAttributes())
    if (IsRelation(id)) names.insert(Decode<std::string>(bytes));
  return {names.begin(), names.end()};
}

std::string QXRecordMeta::GetName(unsigned id) {
  switch (id) {
    case SourceID:
      return "Flags.ID";
    case 0x1000002:
      return "Flags.Annotation";
    case 0x1000003:
      return "Flags.IsSchema";
    default:
      return "";
  }
}

// ---- Fields ----

QXFieldBase::QXFieldBase() = default;
QXFieldBase::QXFieldBase(const QXFieldBase&) = default;
QXFieldBase::QXFieldBase(QXFieldBase&&) noexcept = default;
QXFieldBase& QXFieldBase::operator=(const QXFieldBase&) = default;
QXFieldBase& QXFieldBase::operator=(QXFieldBase&&) noexcept = default;
QXFieldBase::~QXFieldBase() = default;

QXFieldBase::QXFieldBase(std::string name, QXFieldMeta meta, bool readonly, bool nullable)
    : QXFieldBase("", "", std::move(name), std::move(meta), readonly, nullable) {}

QXFieldBase::QXFieldBase(std::string type, std::string typeNamespace, std::string name,
                         QXFieldMeta meta, bool readonly, bool nullable)
    : type_(std::move(type)),
      typeNamespace_(std::move(typeNamespace)),
      name_(std::move(name)),
      nullable_(nullable),
      readonly_(readonly),
      meta_(std::move(meta)) {}

std::string QXFieldBase::GetTypeName() const {
  return typeNamespace_.empty() ? type_ : typeNamespace_ + ":" + type_;
}

TypeName SplitTypeName(std::string_view type) {
  const std::size_t colon = type.rfind(':');
  if (colon == std::string_view::npos ||
      QXFieldTypeHandlerRegistry::GetInstance().GetHandler(std::string(type)) != nullptr)
    return {"", type};
  return {type.substr(0, colon), type.substr(colon + 1)};
}

QXFieldBase MakeFieldBase(const std::string& name, const std::string& type, QXFieldMeta meta,
                          bool readonly, bool nullable) {
  const TypeName split = SplitTypeName(type);
  return {
      std::string(split.type), std::string(split.space), name, std::move(meta), readonly, nullable};
}

template <class T>
QXField<T>::QXField(const std::string& name, QXFieldMeta meta, bool readonly, bool nullable)
    : QXFieldBase(std::string(Row<QXFieldType<T>>.name), "", name, std::move(meta), readonly,
                  nullable) {}

template <class T>
QXVectorField<T>::QXVectorField(const std::string& name, QXFieldMeta meta, bool readonly,
                                bool nullable)
    : QXFieldBase(std::string(Row<QXVectorFieldType<T>>.name), "", name, std::move(meta), readonly,
                  nullable) {}

template class QXField<long>;
template class QXField<std::string>;
template class QXField<double>;
template class QXField<QXBytes>;
template class QXField<bool>;
template class QXField<QXRecord>;
template class QXField<QXRange>;
template class QXField<QXJSONObject>;
template class QXField<QXLinkObject>;
template class QXVectorField<long>;
template class QXVectorField<std::string>;
template class QXVectorField<double>;
template class QXVectorField<QXBytes>;
template class QXVectorField<bool>;
template class QXVectorField<QXRecord>;

}  // namespace QXDataFlow
