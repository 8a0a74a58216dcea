#include <qxsystem/interface/options.h>

#include <algorithm>
#include <memory>
#include <set>
#include <unordered_map>
#include <utility>

#include <qxsystem/core/vectoriter.h>
#include <qxsystem/interface/interface_impl_private.h>
#include <qxsystem/util/qxstring.h>

namespace QXSystem {
namespace {

// Copies slot by slot, the null ones too: derived classes know them by number.
template <class T>
std::vector<std::unique_ptr<T>> CopiesOf(const std::vector<T*>& items) {
  std::vector<std::unique_ptr<T>> copies;
  copies.reserve(items.size());
  for (const T* item : items) copies.emplace_back(item ? item->CreateCopy() : nullptr);
  return copies;
}

template <class T>
void Replace(std::vector<T*>& owned, std::vector<std::unique_ptr<T>> by) {
  std::vector<T*> items(by.size());
  for (std::size_t i = 0; i < by.size(); ++i) items[i] = by[i].release();
  items.swap(owned);
  for (T* old : items) delete old;
}

std::vector<QXParameter*> AllParameters(const QXOptions& options) {
  std::vector<QXParameter*> all;
  options.GetParameters(all, /*name=*/"", /*recursive=*/true);
  return all;
}

}  // namespace

// ---- The object ----

QXOptions::QXOptions(const std::string& name) : name_(name) {}
QXOptions::QXOptions(const std::string& name, unsigned long nparam, unsigned long noption)
    : parameters_(nparam), options_(noption), name_(name) {}

QXOptions::QXOptions(const QXOptions& other) : QXOptions(other.name_) {
  *this = other;
}

// What is assigned may be a part of this tree: the old one goes last.
QXOptions& QXOptions::operator=(const QXOptions& other) {
  if (this == &other) return *this;
  auto parameters = CopiesOf(other.parameters_);
  auto options = CopiesOf(other.options_);
  name_ = other.name_;
  brief_ = other.brief_;
  detail_ = other.detail_;
  order_priority_ = other.order_priority_;
  Replace(parameters_, std::move(parameters));
  Replace(options_, std::move(options));
  return *this;
}

QXOptions::~QXOptions() {
  Clear();
}

bool QXOptions::Validate() const {
  return true;
}

bool QXOptions::SetName(const std::string& name) {
  name_ = name;
  return true;
}
bool QXOptions::SetBrief(const std::string& brief) {
  brief_ = brief;
  return true;
}
bool QXOptions::AddDetail(const std::string& line) {
  detail_.push_back(line);
  return true;
}
QXIterBase<const std::string>* QXOptions::GetDetail() const {
  return new QXVectorIter<const std::string>(&detail_);
}
bool QXOptions::SetOrderPriority(int priority) {
  order_priority_ = priority;
  return true;
}

QXParameter* QXOptions::AddParameter(const QXParameter& parameter) {
  return AddCopy(parameters_, parameter);
}

QXOptions* QXOptions::AddOption(const QXOptions& option) {
  return AddCopy(options_, option);
}

bool QXOptions::DeleteParameter(QXParameter& parameter) {
  return Delete(parameters_, parameter) ||
         std::any_of(options_.begin(), options_.end(),
                     [&](QXOptions* child) { return child && child->DeleteParameter(parameter); });
}

bool QXOptions::DeleteOptions(QXOptions& option) {
  return Delete(options_, option) ||
         std::any_of(options_.begin(), options_.end(),
                     [&](QXOptions* child) { return child && child->DeleteOptions(option); });
}

bool QXOptions::Clear() {
  Replace(parameters_, {});
  Replace(options_, {});
  return true;
}

// ---- Looking up ----

void QXOptions::GetParameters(std::vector<QXParameter*>& parameters, const std::string& name,
                              bool recursive) const {
  for (QXParameter* parameter : parameters_)
    if (parameter && (name.empty() || ParamHasName(*parameter, name)))
      parameters.push_back(parameter);
  if (!recursive) return;
  for (const QXOptions* child : options_)
    if (child) child->GetParameters(parameters, name, recursive);
}

QXIterBase<QXParameter>* QXOptions::GetParameters(bool recursive) const {
  return GetParameters(/*name=*/std::string(), recursive);
}

QXIterBase<QXParameter>* QXOptions::GetParameters(const std::string& name, bool recursive) const {
  std::vector<QXParameter*> found;
  GetParameters(found, name, recursive);
  return Walk(recursive ? found : InOrder(found));
}

QXParameter* QXOptions::GetParameter(const std::string& name) const {
  std::vector<QXParameter*> found;
  GetParameters(found, name, /*recursive=*/true);
  return found.empty() ? nullptr : found.front();
}

void QXOptions::GetOptions(std::vector<QXOptions*>& options, bool recursive) const {
  for (QXOptions* child : options_) {
    if (!child) continue;
    options.push_back(child);
    if (recursive) child->GetOptions(options, recursive);
  }
}

QXIterBase<QXOptions>* QXOptions::GetOptions(bool recursive) const {
  std::vector<QXOptions*> found;
  GetOptions(found, recursive);
  return Walk(recursive ? found : InOrder(found));
}

QXOptions* QXOptions::GetOption(const std::string& name) const {
  std::vector<QXOptions*> all;
  GetOptions(all, /*recursive=*/true);
  const auto found = std::find_if(
      all.begin(), all.end(), [&name](const QXOptions* option) { return option->name_ == name; });
  return found == all.end() ? nullptr : *found;
}

bool QXOptions::ParamHasName(const QXParameter& parameter, const std::string& name) {
  return KeysOf(parameter).count(QXStringLower(name)) != 0;
}

// ---- Changing all ----

bool QXOptions::AddParameterSuffix(const std::string& suffix) {
  bool good = true;
  for (QXParameter* parameter : AllParameters(*this))
    good &= parameter->SetName(parameter->GetName() + suffix);
  return good;
}

bool QXOptions::AddParameterPrefix(const std::string& prefix) {
  bool good = true;
  for (QXParameter* parameter : AllParameters(*this)) {
    const std::string& name = parameter->GetName();
    good &= parameter->SetName("-" + prefix + "_" + name.substr(name.empty() ? 0 : 1));
  }
  return good;
}

bool QXOptions::SetParameterVisibility(unsigned visibility) {
  return SetParameterVisibility(/*name=*/"", visibility);
}

bool QXOptions::SetParameterVisibility(const std::string& name, unsigned visibility) {
  std::vector<QXParameter*> found;
  GetParameters(found, name, /*recursive=*/true);
  for (QXParameter* parameter : found) parameter->SetVisibility(visibility);
  return true;
}

bool QXOptions::UpdateValues(const QXOptions& other) {
  const ParameterIndex others(other);
  for (QXParameter* parameter : AllParameters(*this)) {
    const QXParameter* source = others.ParameterWithFullname(parameter->GetName());
    const Texts values = source ? Collect(source->GetStringValues()) : Texts();
    if (values.empty()) continue;
    if (!parameter->SetStringValue(values.front())) return false;
    for (std::size_t i = 1; i < values.size(); ++i)
      if (!parameter->AddStringValue(values[i])) return false;
    if (!parameter->LoadValue()) return false;
  }
  return true;
}

// ---- Names used twice ----

void QXOptions::GetDuplicateParams(std::vector<QXParameter*>& parameters, bool skipHidden) const {
  std::vector<QXParameter*> all = AllParameters(*this);
  if (skipHidden)
    all.erase(std::remove_if(all.begin(), all.end(), [](auto* p) { return IsHidden(*p); }),
              all.end());
  std::unordered_map<std::string, unsigned> owners;  // by key
  for (const QXParameter* parameter : all)
    for (const std::string& key : KeysOf(*parameter)) ++owners[key];
  std::copy_if(all.begin(), all.end(), std::back_inserter(parameters), [&owners](auto* parameter) {
    const std::set<std::string> keys = KeysOf(*parameter);
    return std::any_of(keys.begin(), keys.end(),
                       [&owners](const std::string& key) { return owners[key] > 1; });
  });
}

QXIterBase<QXParameter>* QXOptions::FindDupParameters(bool skipHidden) const {
  std::vector<QXParameter*> found;
  GetDuplicateParams(found, skipHidden);
  return Walk(found);
}

bool QXOptions::HasDupParameters(bool skipHidden) const {
  std::vector<QXParameter*> found;
  GetDuplicateParams(found, skipHidden);
  return !found.empty();
}

}  // namespace QXSystem
