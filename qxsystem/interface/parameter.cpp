#include <qxsystem/interface/parameter.h>

#include <algorithm>

#include <qxsystem/core/error.h>
#include <qxsystem/core/stliter.h>
#include <qxsystem/core/vectoriter.h>
#include <qxsystem/interface/parameter_private.h>
#include <qxsystem/util/qxstring.h>

namespace QXSystem {
namespace {

QXIterBase<const std::string>* Walk(const std::vector<std::string>& texts) {
  return new QXVectorIter<const std::string>(&texts);
}

QXIterBase<const QXStringPair>* Walk(const std::vector<QXStringPair>& ranges) {
  return new QXVectorIter<const QXStringPair>(&ranges);
}

template <class T>
QXIterBase<const T>* Walk(const std::deque<T>& values) {
  return new QXSTLIter<ConstIterGuts<std::deque<T>>>(&values);
}

std::string At(const std::vector<std::string>& texts, unsigned i) {
  return i < texts.size() ? texts[i] : std::string();
}

// Gives the one word that `text` consists of; false for any other number.
bool OneWord(const std::string& text, std::string& word) {
  std::string_view rest = text;
  const std::string_view first = TakeWord(rest);
  if (first.empty() || !TakeWord(rest).empty()) return false;
  word = first;
  return true;
}

// Whether a text, in any case of letters, matches one of the patterns.
bool MatchesAny(const std::vector<std::string>& patterns, const std::string& text) {
  const std::string lower = QXStringLower(text);
  return std::any_of(patterns.begin(), patterns.end(), [&lower](const std::string& pattern) {
    return QXStringMatch(lower, QXStringLower(pattern));
  });
}

}  // namespace

// ---- QXParameter ----

QXParameter::QXParameter(const std::string& name) {
  SetName(name);
}
QXParameter::~QXParameter() = default;

QXIterBase<const std::string>* QXParameter::GetPrettyLegalValues() const {
  return GetLegalValues();
}
std::string QXParameter::GetPrettyDefault(unsigned i) const {
  return GetStringDefault(i);
}

bool QXParameter::AddValid(std::vector<std::string>& texts, const std::string& text) const {
  if (!IsValidString(text)) return false;
  texts.push_back(text);
  return true;
}

bool QXParameter::SetValid(std::vector<std::string>& texts, const std::string& text) const {
  if (!IsValidString(text)) return false;
  texts = std::vector<std::string>{text};
  return true;
}

bool QXParameter::SetStringValue(const std::string& text) {
  return SetValid(string_values_, text);
}
bool QXParameter::SetStringDefault(const std::string& text) {
  return SetValid(string_defaults_, text);
}
bool QXParameter::AddStringValue(const std::string& text) {
  return AddValid(string_values_, text);
}
bool QXParameter::AddStringDefault(const std::string& text) {
  return AddValid(string_defaults_, text);
}

bool QXParameter::ClearValues() {
  string_values_.clear();
  return true;
}
bool QXParameter::ClearDefaults() {
  string_defaults_.clear();
  return true;
}

bool QXParameter::SetStringValues(const std::string&) {
  return false;
}

bool QXParameter::AddLegalValue(const std::string& text) {
  return AddValid(legal_values_, text);
}
bool QXParameter::AddIllegalValue(const std::string& text) {
  return AddValid(illegal_values_, text);
}
bool QXParameter::AddLegalRange(const std::string& low, const std::string& high) {
  legal_ranges_.emplace_back(low, high);
  return true;
}
bool QXParameter::AddIllegalRange(const std::string& low, const std::string& high) {
  if (!IsValidString(low) || !IsValidString(high)) return false;
  illegal_ranges_.emplace_back(low, high);
  return true;
}

bool QXParameter::IsLegalString(const std::string& text) const {
  if (MatchesAny(illegal_values_, text)) return false;
  return legal_values_.empty() || MatchesAny(legal_values_, text);
}

bool QXParameter::IsSetToString(const std::string& text) const {
  const auto& texts = string_values_.empty() ? string_defaults_ : string_values_;
  return std::find(texts.begin(), texts.end(), text) != texts.end();
}

bool QXParameter::Load() {
  return LoadValue() && LoadDefault();
}
bool QXParameter::IsSet(unsigned i) const {
  return GetHasValue(i) || GetHasDefault(i);
}

bool QXParameter::SetName(const std::string& name) {
  return OneWord(name, name_);
}

bool QXParameter::AddAlias(const std::string& alias) {
  std::string word;
  if (!OneWord(alias, word)) return false;
  aliases_.push_back(std::move(word));
  return true;
}

bool QXParameter::SetBrief(const std::string& brief) {
  brief_ = brief;
  return true;
}
bool QXParameter::AddDetail(const std::string& line) {
  detail_.push_back(line);
  return true;
}
bool QXParameter::SetRequired(bool required) {
  required_ = required;
  return true;
}
bool QXParameter::SetKeyless(unsigned number) {
  keyless_ = number;
  return true;
}
bool QXParameter::SetVisibility(unsigned visibility) {
  visibility_ = visibility;
  return true;
}
bool QXParameter::SetOrderPriority(int priority) {
  order_priority_ = priority;
  return true;
}
bool QXParameter::SetInput(unsigned channel) {
  input_ = channel;
  return true;
}
bool QXParameter::SetOutput(bool output) {
  output_ = output;
  return true;
}
bool QXParameter::SetElement(const std::string& element) {
  element_ = element;
  return true;
}
bool QXParameter::SetCommand(const std::string& command) {
  command_ = command;
  return true;
}
bool QXParameter::SetIsList(bool list) {
  is_list_ = list;
  return true;
}

QXIterBase<const std::string>* QXParameter::GetAliases() const {
  return Walk(aliases_);
}
QXIterBase<const std::string>* QXParameter::GetDetail() const {
  return Walk(detail_);
}
QXIterBase<const std::string>* QXParameter::GetLegalValues() const {
  return Walk(legal_values_);
}
QXIterBase<const std::string>* QXParameter::GetIllegalValues() const {
  return Walk(illegal_values_);
}
QXIterBase<const QXStringPair>* QXParameter::GetLegalRanges() const {
  return Walk(legal_ranges_);
}
QXIterBase<const QXStringPair>* QXParameter::GetIllegalRanges() const {
  return Walk(illegal_ranges_);
}
QXIterBase<const std::string>* QXParameter::GetStringValues() const {
  return Walk(string_values_);
}
QXIterBase<const std::string>* QXParameter::GetStringDefaults() const {
  return Walk(string_defaults_);
}

std::string QXParameter::GetStringValue(unsigned i) const {
  return At(string_values_, i);
}
std::string QXParameter::GetStringDefault(unsigned i) const {
  return At(string_defaults_, i);
}

// ---- QXTypedParameter ----

namespace {

// Makes the typed values anew from their texts; all or none.
template <class T>
bool LoadTexts(const QXTypedParameter<T>& parameter, const std::vector<std::string>& texts,
               std::deque<T>& values) {
  values.clear();
  for (const std::string& text : texts) {
    if (parameter.GetTypedValue(values.emplace_back(), text)) continue;
    values.clear();
    return false;
  }
  return true;
}

template <class T>
bool GetAt(const std::deque<T>& values, unsigned i, T& out) {
  if (i >= values.size()) return false;
  out = values[i];
  return true;
}

}  // namespace

template <class T>
QXTypedParameter<T>::QXTypedParameter(const std::string& name) : QXParameter(name) {}
template <class T>
QXTypedParameter<T>::QXTypedParameter(const QXTypedParameter&) = default;
template <class T>
QXTypedParameter<T>& QXTypedParameter<T>::operator=(const QXTypedParameter&) = default;
template <class T>
QXTypedParameter<T>::~QXTypedParameter() = default;

template <class T>
bool QXTypedParameter<T>::ClearValues() {
  values_.clear();
  return QXParameter::ClearValues();
}

template <class T>
bool QXTypedParameter<T>::ClearDefaults() {
  defaults_.clear();
  return QXParameter::ClearDefaults();
}

template <class T>
bool QXTypedParameter<T>::LoadValue() {
  return LoadTexts(*this, StringValues(), values_);
}

template <class T>
bool QXTypedParameter<T>::LoadDefault() {
  return LoadTexts(*this, StringDefaults(), defaults_);
}

template <class T>
bool QXTypedParameter<T>::GetHasValue(unsigned i) const {
  return i < values_.size();
}

template <class T>
bool QXTypedParameter<T>::GetHasDefault(unsigned i) const {
  return i < defaults_.size();
}

template <class T>
const void* QXTypedParameter<T>::TypedParameterTypeID() const {
  return QXGetDataType<QXTypedParameter<T>>();
}

template <class T>
bool QXTypedParameter<T>::GetValue(T& out, unsigned i) const {
  return GetHasValue(i) && GetAt(values_, i, out);
}

template <class T>
bool QXTypedParameter<T>::GetDefault(T& out, unsigned i) const {
  return GetHasDefault(i) && GetAt(defaults_, i, out);
}

template <class T>
bool QXTypedParameter<T>::GetSetting(T& out, unsigned i) const {
  return GetValue(out, i) || GetDefault(out, i);
}

template <class T>
bool QXTypedParameter<T>::AddValue(const T& value) {
  if (!IsLegal(value)) return false;
  values_.push_back(value);
  std::string text;
  if (GetString(text, values_.back())) AddStringValue(text);
  return true;
}

template <class T>
bool QXTypedParameter<T>::AddDefault(const T& value) {
  if (!IsLegal(value)) return false;
  defaults_.push_back(value);
  std::string text;
  if (GetString(text, defaults_.back())) AddStringDefault(text);
  return true;
}

// What is set may be a value of this very parameter, so it is copied before the
// others go.
template <class T>
bool QXTypedParameter<T>::SetValue(const T& value) {
  if (!IsLegal(value)) return false;
  std::deque<T> fresh(1, value);
  ClearValues();
  values_.swap(fresh);
  std::string text;
  if (GetString(text, values_.back())) SetStringValue(text);
  return true;
}

template <class T>
bool QXTypedParameter<T>::SetDefault(const T& value) {
  if (!IsLegal(value)) return false;
  std::deque<T> fresh(1, value);
  ClearDefaults();
  defaults_.swap(fresh);
  std::string text;
  if (GetString(text, defaults_.back())) SetStringDefault(text);
  return true;
}

template <class T>
QXIterBase<const T>* QXTypedParameter<T>::GetSettings() const {
  QXIter<const T> values = GetValues();
  return values ? values.Release() : GetDefaults();
}

// ---- QXPODParameter ----

namespace {

enum class Membership { Outside, Inside, Invalid };

// Where `value` stands to a range. "inf" is open upward from the other bound and
// "-inf" downward, on whichever side it stands.
template <class T>
Membership InRange(const QXTypedParameter<T>& parameter, const QXStringPair& range,
                   const T& value) {
  const auto isOpen = [](const std::string& bound) { return bound == "inf" || bound == "-inf"; };
  const auto in = [](bool inside) { return inside ? Membership::Inside : Membership::Outside; };
  const bool openFirst = isOpen(range.first);
  const bool openSecond = isOpen(range.second);
  T a{}, b{};
  if ((openFirst && openSecond) || (!openFirst && !parameter.GetTypedValue(a, range.first)) ||
      (!openSecond && !parameter.GetTypedValue(b, range.second)))
    return Membership::Invalid;
  if (openFirst) return in(range.first == "inf" ? b <= value : value <= b);
  if (openSecond) return in(range.second == "inf" ? a <= value : value <= a);
  return in((a <= value && value <= b) || (b <= value && value <= a));
}

// Whether `value` equals one of the list's entries.
template <class T>
bool IsListed(const QXTypedParameter<T>& parameter, const std::vector<std::string>& texts,
              const T& value, const char* kind) {
  for (const std::string& text : texts) {
    T entry{};
    if (!parameter.GetTypedValue(entry, text))
      QXThrow.Error("Cannot interpret %s value %s, of parameter %s", kind, text.c_str(),
                    parameter.GetName().c_str());
    else if (entry == value)
      return true;
  }
  return false;
}

// Where `value` stands to the ranges, up to the first that decides.
template <class T>
Membership InRanges(const QXTypedParameter<T>& parameter, const std::vector<QXStringPair>& ranges,
                    const T& value, const char* kind) {
  for (const QXStringPair& range : ranges) {
    const Membership found = InRange(parameter, range, value);
    if (found == Membership::Invalid)
      QXThrow.Error("Invalid %s range for parameter %s is (%s to %s)", kind,
                    parameter.GetName().c_str(), range.first.c_str(), range.second.c_str());
    if (found != Membership::Outside) return found;
  }
  return Membership::Outside;
}

}  // namespace

template <class T>
QXPODParameter<T>::QXPODParameter(const std::string& name) : QXTypedParameter<T>(name) {}
template <class T>
QXPODParameter<T>::QXPODParameter(const std::string& name, const T& value)
    : QXTypedParameter<T>(name) {
  QXTypedParameter<T>::SetDefault(value);
}
template <class T>
QXPODParameter<T>::QXPODParameter(const QXPODParameter&) = default;
template <class T>
QXPODParameter<T>& QXPODParameter<T>::operator=(const QXPODParameter&) = default;
template <class T>
QXPODParameter<T>::~QXPODParameter() = default;

template <class T>
bool QXPODParameter<T>::SetStringValues(const std::string& list) {
  std::vector<std::string> words;
  QXStringTokenize(words, list, " ,\t\n", /*skipEmpty=*/true);
  std::deque<T> values;
  for (const std::string& word : words)
    if (!this->GetTypedValue(values.emplace_back(), word) || !this->IsLegal(values.back()))
      return false;
  for (std::size_t i = 0; i < values.size(); ++i)
    if (!(i == 0 ? this->SetValue(values[i]) : this->AddValue(values[i]))) return false;
  return !values.empty();
}

template <class T>
bool QXPODParameter<T>::IsLegalString(const std::string& text) const {
  T value{};
  return this->GetTypedValue(value, text) && this->IsLegal(value);
}

template <class T>
bool QXPODParameter<T>::IsSetToString(const std::string& text) const {
  T value{};
  if (!this->GetTypedValue(value, text)) return false;
  for (QXIter<const T> setting = this->GetSettings(); setting; ++setting)
    if (*setting == value) return true;
  return false;
}

template <class T>
bool QXPODParameter<T>::IsValidString(const std::string& text) const {
  T value{};
  return TextForm<T>::Read(value, text);
}

template <class T>
unsigned QXPODParameter<T>::WriteValueAndDefaultBinary(unsigned char* buffer) const {
  return WriteBlocks(buffer, this->values_, this->defaults_);
}

template <class T>
unsigned QXPODParameter<T>::ReadValueAndDefaultBinary(const unsigned char* buffer) {
  return ReadBlocks(buffer, this->values_, this->defaults_);
}

template <class T>
unsigned QXPODParameter<T>::ValueAndDefaultBinarySize() const {
  return BlockSize(this->values_) + BlockSize(this->defaults_);
}

template <class T>
QXIterBase<const T>* QXPODParameter<T>::GetValues() const {
  return Walk(this->values_);
}

template <class T>
QXIterBase<const T>* QXPODParameter<T>::GetDefaults() const {
  return Walk(this->defaults_);
}

template <class T>
bool QXPODParameter<T>::IsLegal(const T& value) const {
  if (IsListed(*this, this->IllegalValues(), value, "illegal")) return false;
  if (InRanges(*this, this->IllegalRanges(), value, "illegal") != Membership::Outside) return false;
  if (this->LegalValues().empty() && this->LegalRanges().empty()) return true;
  return IsListed(*this, this->LegalValues(), value, "legal") ||
         InRanges(*this, this->LegalRanges(), value, "legal") == Membership::Inside;
}

template <class T>
bool QXPODParameter<T>::GetTypedValue(T& out, const std::string& text) const {
  return TextForm<T>::Read(out, text);
}

template <class T>
bool QXPODParameter<T>::GetString(std::string& out, const T& value) const {
  return TextForm<T>::Write(out, value);
}

template class QXTypedParameter<bool>;
template class QXTypedParameter<unsigned int>;
template class QXTypedParameter<int>;
template class QXTypedParameter<float>;
template class QXTypedParameter<double>;
template class QXTypedParameter<std::string>;
template class QXTypedParameter<QXPlatform::qxisstream>;
template class QXPODParameter<bool>;
template class QXPODParameter<unsigned int>;
template class QXPODParameter<int>;
template class QXPODParameter<float>;
template class QXPODParameter<double>;
template class QXPODParameter<std::string>;

}  // namespace QXSystem
