#include <qxsystem/interface/interface_impl_private.h>

#include <algorithm>
#include <memory>
#include <utility>

#include <qxsystem/core/error.h>
#include <qxsystem/interface/parameter_private.h>
#include <qxsystem/util/qxstring.h>

namespace QXSystem {

// ---- QXInterfaceImpl ----

QXInterfaceImpl::QXInterfaceImpl() = default;

QXInterfaceImpl::QXInterfaceImpl(const QXInterfaceImpl& other) : QXInterfaceImpl() {
  name = other.name;
  brief = other.brief;
  detail = other.detail;
  order_priority = other.order_priority;
  parameters.reserve(other.parameters.size());
  for (const QXParameter* parameter : other.parameters) AddCopy(parameters, *parameter);
  interfaces.reserve(other.interfaces.size());
  for (const QXInterface* child : other.interfaces) interfaces.push_back(new QXInterface(*child));
}

QXInterfaceImpl::~QXInterfaceImpl() {
  Clear();
}

void QXInterfaceImpl::Clear() {
  for (QXParameter* parameter : parameters) delete parameter;
  for (QXInterface* child : interfaces) delete child;
  parameters.clear();
  interfaces.clear();
  name.clear();
  brief.clear();
  detail.clear();
}

// ---- Looking parameters up ----

std::set<std::string> KeysOf(const QXParameter& parameter) {
  std::set<std::string> keys = {QXStringLower(parameter.GetName())};
  for (QXIter<const std::string> alias = parameter.GetAliases(); alias; ++alias)
    keys.insert(QXStringLower(*alias));
  return keys;
}

ParameterIndex::ParameterIndex(QXIter<QXParameter> parameter) {
  for (; parameter; ++parameter)
    for (const std::string& key : KeysOf(*parameter)) parameters_.emplace(key, &*parameter);
  parameters_.erase(std::string());
}

QXParameter* ParameterIndex::ParameterWithFullname(const std::string& key) const {
  const auto found = parameters_.find(QXStringLower(key));
  return found == parameters_.end() ? nullptr : found->second;
}

namespace {

// The fewest insertions, deletions and replacements of a character that make
// `b` of `a`. Method: Wagner, Fischer, J. ACM 21 (1974) 168-173.
std::size_t EditDistance(const std::string& a, const std::string& b) {
  std::vector<std::size_t> row(b.size() + 1);
  for (std::size_t j = 0; j < row.size(); ++j) row[j] = j;
  for (std::size_t i = 0; i < a.size(); ++i) {
    std::size_t diagonal = std::exchange(row[0], i + 1);
    for (std::size_t j = 0; j < b.size(); ++j) {
      const std::size_t replaced = diagonal + (a[i] != b[j]);
      diagonal = row[j + 1];
      row[j + 1] = std::min({replaced, diagonal + 1, row[j] + 1});
    }
  }
  return row.back();
}

}  // namespace

void ParameterIndex::Suggest(const std::string& key) const {
  if (QXThrow.GetLevel() > QXErrorLevel::Verbose || key.size() > 64) return;
  const std::string lower = QXStringLower(key);
  const std::string* nearest = nullptr;
  std::size_t best = lower.size() / 3 + 1;  // more changes than that make another word
  for (const auto& [known, parameter] : parameters_) {
    if (known.size() > lower.size() + best) continue;
    const std::size_t distance = EditDistance(lower, known);
    // Of two that are as near, the same one every time.
    if (distance > best || (nearest && distance == best && *nearest < known)) continue;
    nearest = &known;
    best = distance;
  }
  if (nearest) QXThrow.Verbose("Did you mean %s instead of %s?", nearest->c_str(), key.c_str());
}

// ---- What parameters are set to ----

Texts Collect(QXIter<const std::string> text) {
  Texts texts;
  for (; text; ++text) texts.push_back(*text);
  return texts;
}

Texts PrettyDefaults(const QXParameter& parameter) {
  Texts defaults = Collect(parameter.GetStringDefaults());
  for (unsigned i = 0; i < defaults.size(); ++i) defaults[i] = parameter.GetPrettyDefault(i);
  return defaults;
}

std::size_t FindUnloadable(QXParameter& probe, const Texts& texts) {
  const auto bad = std::find_if(texts.begin(), texts.end(), [&probe](const std::string& text) {
    return !probe.SetStringValue(text) || !probe.LoadValue();
  });
  return static_cast<std::size_t>(bad - texts.begin());
}

std::size_t LoadAdded(QXParameter& parameter, const Texts& texts) {
  if (parameter.Load()) return texts.size();
  if (!parameter.LoadDefault()) return 0;
  const std::unique_ptr<QXParameter> probe(parameter.CreateCopy());
  const std::size_t good = FindUnloadable(*probe, texts);
  return good < texts.size() ? good : 0;  // if all are: it was a value from before
}

std::vector<Fault> AssignTexts(QXParameter& parameter, const Texts& texts, bool replace) {
  std::vector<Fault> faults;
  Texts added;
  for (const std::string& text : texts) {
    const bool first = replace && faults.empty();
    const bool good = parameter.IsLegalString(text) &&
                      (first ? parameter.SetStringValue(text) : parameter.AddStringValue(text));
    faults.push_back(good ? Fault::None : Fault::NotLegal);
    if (good) added.push_back(text);
  }
  std::size_t loaded = added.empty() ? 0 : LoadAdded(parameter, added);
  for (Fault& fault : faults) {
    if (fault == Fault::NotLegal) continue;
    if (loaded == 0)
      fault = Fault::NotLoaded;
    else
      --loaded;
  }
  return faults;
}

std::string LegalList(const QXParameter& parameter, bool pretty) {
  std::string list;
  const auto addValues = [&list](const char* label, QXIter<const std::string> value) {
    for (; value; ++value) list += label + *value;
  };
  const auto addRanges = [&list](const char* label, QXIter<const QXStringPair> range) {
    for (; range; ++range) list += label + range->first + " to " + range->second;
  };
  addValues("\n  Legal value : ",
            pretty ? parameter.GetPrettyLegalValues() : parameter.GetLegalValues());
  addRanges("\n  Legal Range : ", parameter.GetLegalRanges());
  addValues("\n  Illegal value : ", parameter.GetIllegalValues());
  addRanges("\n  Illegal Range : ", parameter.GetIllegalRanges());
  return list;
}

// ---- Text ----

std::string QuoteBlanks(const std::string& text) {
  return text.find_first_of(" \t") == std::string::npos ? text : '"' + text + '"';
}

std::string SettingText(const QXParameter& parameter, const std::string& text) {
  const void* type = parameter.TypedParameterTypeID();
  const bool real = type == QXGetDataType<QXTypedParameter<float>>() ||
                    type == QXGetDataType<QXTypedParameter<double>>();
  return QuoteBlanks(real ? QXTrimToSigFigs(text) : text);
}

Line::Line(std::string_view text) : raw(text) {
  for (; size < 4; ++size) {
    const std::string_view word = TakeWord(text);
    if (word.empty()) return;
    if (size == 0) behind = text;
    if (size < 3) words[size] = word;
  }
}

bool LineSource::Next(Line& line) {
  std::string_view raw;
  if (back_)
    line = *back_;
  else if (Read(raw))
    line = Line(raw);
  else
    return false;
  back_.reset();
  return true;
}

// Lines end as those of a stream do: a carriage return counts only in front of a
// line feed.
bool LineSource::Read(std::string_view& raw) {
  if (in_) {
    const bool more = in_->getline(read_.emplace_back());
    raw = read_.back();
    return more;
  }
  if (text_.empty()) return false;
  const std::size_t end = text_.find('\n');
  raw = text_.substr(0, end);
  text_.remove_prefix(end == text_.npos ? text_.size() : end + 1);
  if (end != text_.npos && !raw.empty() && raw.back() == '\r') raw.remove_suffix(1);
  return true;
}

}  // namespace QXSystem
