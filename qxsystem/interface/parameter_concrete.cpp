#include <qxsystem/interface/parameter_concrete.h>

#include <algorithm>
#include <memory>

#include <qxsystem/core/error.h>
#include <qxsystem/core/stliter.h>
#include <qxsystem/core/vectoriter.h>
#include <qxsystem/interface/parameter_private.h>
#include <qxsystem/platform/file.h>
#include <qxsystem/util/qxstring.h>

namespace QXSystem {

using QXPlatform::qxisstream;

namespace {

// All of an open file; false when there is nothing to be read. What tells no size, such
// as a pipe, may go on for ever, as some devices do: there is a limit to patience.
bool ReadWholeFile(QXPlatform::qxifstream& in, std::string& bytes) {
  constexpr std::size_t most = std::size_t{1} << 28;
  if (in.size() >= 0) return in.read(bytes) > 0;
  return in.read(bytes, most + 1) > 0 && bytes.size() <= most;
}

}  // namespace

// ---- Truth values and numbers ----

QXBoolParameter::QXBoolParameter(const std::string& name) : QXNamedParameter(name) {}
QXBoolParameter::QXBoolParameter(const std::string& name, bool value)
    : QXNamedParameter(name, value) {}
std::string QXBoolParameter::StaticClassID() {
  return "bool";
}
bool QXBoolParameter::AddLegalValue(const std::string&) {
  return false;
}
bool QXBoolParameter::AddIllegalValue(const std::string&) {
  return false;
}
bool QXBoolParameter::AddLegalRange(const std::string&, const std::string&) {
  return false;
}
bool QXBoolParameter::AddIllegalRange(const std::string&, const std::string&) {
  return false;
}

QXIntParameter::QXIntParameter(const std::string& name) : QXNamedParameter(name) {}
QXIntParameter::QXIntParameter(const std::string& name, int value)
    : QXNamedParameter(name, value) {}
std::string QXIntParameter::StaticClassID() {
  return "int";
}

QXUIntParameter::QXUIntParameter(const std::string& name) : QXNamedParameter(name) {}
QXUIntParameter::QXUIntParameter(const std::string& name, unsigned int value)
    : QXNamedParameter(name, value) {}
std::string QXUIntParameter::StaticClassID() {
  return "unsigned";
}

QXFloatParameter::QXFloatParameter(const std::string& name) : QXNamedParameter(name) {}
QXFloatParameter::QXFloatParameter(const std::string& name, float value)
    : QXNamedParameter(name, value) {}
std::string QXFloatParameter::StaticClassID() {
  return "float";
}

QXDoubleParameter::QXDoubleParameter(const std::string& name) : QXNamedParameter(name) {}
QXDoubleParameter::QXDoubleParameter(const std::string& name, double value)
    : QXNamedParameter(name, value) {}
std::string QXDoubleParameter::StaticClassID() {
  return "double";
}

// ---- Texts ----

QXStringParameter::QXStringParameter(const std::string& name) : QXNamedParameter(name) {}
QXStringParameter::QXStringParameter(const std::string& name, const std::string& value)
    : QXNamedParameter(name, value) {}
std::string QXStringParameter::StaticClassID() {
  return "string";
}
bool QXStringParameter::AddLegalRange(const std::string&, const std::string&) {
  return false;
}
bool QXStringParameter::AddIllegalRange(const std::string&, const std::string&) {
  return false;
}
bool QXStringParameter::IsLegalString(const std::string& text) const {
  return IsLegal(text);
}
bool QXStringParameter::IsLegal(const std::string& text) const {
  // The parent's asks IsLegal again.  NOLINTNEXTLINE(bugprone-parent-virtual-call)
  return QXParameter::IsLegalString(text);
}

QXStringExtParameter::QXStringExtParameter(const std::string& name) : QXNamedParameter(name) {}
QXStringExtParameter::QXStringExtParameter(const std::string& name, const std::string& value)
    : QXNamedParameter(name, value) {}
std::string QXStringExtParameter::StaticClassID() {
  return "stringExt";
}

bool QXStringExtParameter::IsLegal(const std::string& text) const {
  if (QXStringParameter::IsLegal(text)) return true;
  const QXPlatform::QXFile file(text);
  if (file.Exists() && file.Size() != 0) return true;
  QXThrow.Warning("%s file %s does not exist or is empty.", GetName().c_str(), text.c_str());
  return false;
}

bool QXStringExtParameter::GetTypedValue(std::string& out, const std::string& text) const {
  if (QXStringParameter::IsLegal(text)) {
    out = text;
    return true;
  }
  QXPlatform::qxifstream in(text);
  return in && ReadWholeFile(in, out);
}

// ---- Numbers with names ----

QXConstParameter::QXConstParameter(const std::string& name) : QXNamedParameter(name) {}
QXConstParameter::QXConstParameter(const std::string& name, unsigned value, const std::string& key)
    : QXNamedParameter(name) {
  AddLegalEntry(value, key);
  QXUIntParameter::SetDefault(value);
}
std::string QXConstParameter::StaticClassID() {
  return "const";
}

bool QXConstParameter::AddLegalEntry(unsigned value, const std::string& key) {
  if (!QXUIntParameter::AddLegalValue(std::to_string(value))) return false;
  const std::string lower = QXStringLower(key);
  NameNumber(lower, value);
  return AddLegalValue(lower);
}

void QXConstParameter::NameNumber(const std::string& key, unsigned number) {
  const auto [entry, isNew] = keys_.emplace(key, number);
  if (!isNew && entry->second != number) {
    entry->second = number;
    named_.clear();  // the old number may have lost its only name
    for (const auto& [name, value] : keys_) named_.insert(value);
    nameless_ = 0;
  }
  named_.insert(number);
}

bool QXConstParameter::AddLegalValue(const std::string& text) {
  unsigned number;
  const std::string key = QXStringLower(text);
  if (QXStringToNumber(text, number) || keys_.count(key))
    return QXUIntParameter::AddLegalValue(text);
  for (; nameless_ < LegalValues().size(); ++nameless_) {
    if (!QXStringToNumber(LegalValues()[nameless_], number) || named_.count(number)) continue;
    NameNumber(key, number);
    return QXUIntParameter::AddLegalValue(text);
  }
  return false;
}

unsigned QXConstParameter::GetKeyIndex(const std::string& key) const {
  const auto found = keys_.find(QXStringLower(key));
  return found == keys_.end() ? m_invalidKey : found->second;
}

QXIterBase<const std::string>* QXConstParameter::GetPrettyLegalValues() const {
  if (keys_.empty()) return QXUIntParameter::GetPrettyLegalValues();
  auto names = std::make_unique<std::vector<std::string>>();
  for (const auto& entry : keys_) names->push_back(entry.first);
  return new QXVectorCacheIter<const std::string>(names.release(), /*owned=*/true);
}

std::string QXConstParameter::GetPrettyDefault(unsigned i) const {
  unsigned value;
  if (GetDefault(value, i))
    for (const auto& [key, number] : keys_)
      if (number == value) return key;
  return QXUIntParameter::GetPrettyDefault(i);
}

bool QXConstParameter::IsValidString(const std::string& text) const {
  unsigned value;
  return QXStringToNumber(text, value) || GetMask(text, value);
}

bool QXConstParameter::IsLegalString(const std::string& text) const {
  unsigned value;
  return (QXStringToNumber(text, value) && IsLegal(value)) || GetMask(text, value);
}

bool QXConstParameter::GetTypedValue(unsigned int& out, const std::string& text) const {
  return QXStringToNumber(text, out) || GetMask(text, out);
}

bool QXConstParameter::AddValue(const std::string& key) {
  unsigned value;
  return GetMask(key, value) && AddValue(value);
}
bool QXConstParameter::AddDefault(const std::string& key) {
  unsigned value;
  return GetMask(key, value) && AddDefault(value);
}
bool QXConstParameter::SetValue(const std::string& key) {
  unsigned value;
  return GetMask(key, value) && SetValue(value);
}
bool QXConstParameter::SetDefault(const std::string& key) {
  unsigned value;
  return GetMask(key, value) && SetDefault(value);
}

bool QXConstParameter::GetMask(const std::string& text, unsigned& out) const {
  const auto found = keys_.find(QXStringLower(text));
  if (found == keys_.end()) return false;
  out = found->second;
  return true;
}

// ---- Flags ----

QXBitParameter::QXBitParameter(const std::string& name) : QXNamedParameter(name) {}
QXBitParameter::QXBitParameter(const std::string& name, unsigned value, const std::string& key)
    : QXNamedParameter(name, value, key) {}
std::string QXBitParameter::StaticClassID() {
  return "bit";
}

bool QXBitParameter::IsLegalString(const std::string& text) const {
  unsigned value;
  return (QXStringToNumber(text, value) && IsValidMask(value)) || GetMask(text, value);
}

// Each typed setter is tried, and once more after a combination of the named
// bits has become a legal value.
bool QXBitParameter::AddValue(const unsigned int& value) {
  return QXUIntParameter::AddValue(value) || (Allow(value) && QXUIntParameter::AddValue(value));
}
bool QXBitParameter::AddDefault(const unsigned int& value) {
  return QXUIntParameter::AddDefault(value) || (Allow(value) && QXUIntParameter::AddDefault(value));
}
bool QXBitParameter::SetValue(const unsigned int& value) {
  return QXUIntParameter::SetValue(value) || (Allow(value) && QXUIntParameter::SetValue(value));
}
bool QXBitParameter::SetDefault(const unsigned int& value) {
  return QXUIntParameter::SetDefault(value) || (Allow(value) && QXUIntParameter::SetDefault(value));
}

bool QXBitParameter::Allow(unsigned value) {
  if (!IsValidMask(value)) return false;
  const std::string text = std::to_string(value);
  QXBitParameter probe(*this);  // what is illegal stays so, and must leave no trace
  return probe.AddLegalValue(text) && probe.IsLegal(value) && AddLegalValue(text);
}

bool QXBitParameter::GetMask(const std::string& text, unsigned& out) const {
  out = 0;
  std::vector<std::string> names;
  QXStringTokenize(names, text, ",", /*skipEmpty=*/true);
  unsigned all = 0;
  for (const std::string& name : names) {
    unsigned bits;
    if (!QXConstParameter::GetMask(name, bits)) return false;
    all |= bits;
  }
  out = all;
  return true;
}

bool QXBitParameter::IsValidMask(unsigned value) const {
  return std::any_of(Keys().begin(), Keys().end(),
                     [value](const auto& entry) { return (entry.second & value) != 0; });
}

// ---- Files ----

QXFileParameter::QXFileParameter(const std::string& name) : QXNamedParameter(name) {}
std::string QXFileParameter::StaticClassID() {
  return "file";
}
bool QXFileParameter::AddLegalValue(const std::string&) {
  return false;
}
bool QXFileParameter::AddIllegalValue(const std::string&) {
  return false;
}
bool QXFileParameter::AddLegalRange(const std::string&, const std::string&) {
  return false;
}
bool QXFileParameter::AddIllegalRange(const std::string&, const std::string&) {
  return false;
}

unsigned QXFileParameter::WriteValueAndDefaultBinary(unsigned char* buffer) const {
  return WriteBlocks(buffer, values_, defaults_);
}
unsigned QXFileParameter::ReadValueAndDefaultBinary(const unsigned char* buffer) {
  return ReadBlocks(buffer, values_, defaults_);
}
unsigned QXFileParameter::ValueAndDefaultBinarySize() const {
  return BlockSize(values_) + BlockSize(defaults_);
}

bool QXFileParameter::IsValidString(const std::string&) const {
  return true;
}
bool QXFileParameter::IsLegal(const qxisstream&) const {
  return true;
}

QXIterBase<const qxisstream>* QXFileParameter::GetValues() const {
  return new QXSTLIter<ConstIterGuts<std::deque<qxisstream>>>(&values_);
}
QXIterBase<const qxisstream>* QXFileParameter::GetDefaults() const {
  return new QXSTLIter<ConstIterGuts<std::deque<qxisstream>>>(&defaults_);
}

bool QXFileParameter::GetTypedValue(qxisstream& out, const std::string& name) const {
  QXPlatform::qxifstream in(name);
  const long size = in ? in.size() : 0;
  std::string bytes;
  if (size == 0 || !ReadWholeFile(in, bytes)) return false;
  return (size < 0 || bytes.size() >= static_cast<std::size_t>(size)) && out.set(bytes);
}
bool QXFileParameter::GetString(std::string&, const qxisstream&) const {
  return false;
}

QXParamFileParameter::QXParamFileParameter(const std::string& name) : QXNamedParameter(name) {}
std::string QXParamFileParameter::StaticClassID() {
  return "param_file";
}

}  // namespace QXSystem
