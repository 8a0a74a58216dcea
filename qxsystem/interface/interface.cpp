#include <qxsystem/interface/interface.h>

#include <algorithm>

#include <qxsystem/core/endprocess_private.h>
#include <qxsystem/core/error.h>
#include <qxsystem/core/vectoriter.h>
#include <qxsystem/interface/commandline.h>
#include <qxsystem/interface/commandline_private.h>
#include <qxsystem/interface/interface_impl_private.h>
#include <qxsystem/interface/parameter_concrete.h>
#include <qxsystem/platform/ostream.h>

namespace QXSystem {
namespace {

bool ConfigureOrReport(QXInterface& interface, const char* text) {
  const bool good = QXConfigure(interface, text);
  if (!good) QXThrow.Error("Problem configuring QXInterface!");
  return good;
}

void ConfigureAndParse(QXInterface& interface, const char* text, int argc, char** argv) {
  if (!ConfigureOrReport(interface, text)) return;
  if (QXCheckHelp(interface, argc, argv, /*exitOnEmpty=*/true, QXPlatform::qxerr)) EndAfterAnswer();
  if (!QXParseCommandLine(interface, argc, argv, /*requirements=*/nullptr, QXErrorLevel::Error,
                          /*checkHelp=*/true))
    EndProcess(1);
}

const char* AsChars(const unsigned char* text) {
  return reinterpret_cast<const char*>(text);
}

template <class... Parameters>
void RegisterClasses(QXSimpleFactory<std::string, QXParameter>& factory) {
  (factory.Register(Parameters::StaticClassID(), new QXFactoryWorker<QXParameter, Parameters>),
   ...);
}

}  // namespace

QXInterface::QXInterface() : impl_(std::make_unique<QXInterfaceImpl>()) {}
QXInterface::~QXInterface() = default;

QXInterface::QXInterface(const unsigned char* text) : QXInterface(AsChars(text)) {}
QXInterface::QXInterface(const char* text) : QXInterface() {
  ConfigureOrReport(*this, text);
}
QXInterface::QXInterface(const unsigned char* text, int argc, char** argv)
    : QXInterface(AsChars(text), argc, argv) {}
QXInterface::QXInterface(const char* text, int argc, char** argv) : QXInterface() {
  ConfigureAndParse(*this, text, argc, argv);
}

QXInterface::QXInterface(const QXInterface& other)
    : impl_(std::make_unique<QXInterfaceImpl>(*other.impl_)) {
  for (QXInterface* child : impl_->interfaces) child->SetParent(this);
}

// What is assigned may be a part of this tree: the old one goes last.
QXInterface& QXInterface::operator=(const QXInterface& other) {
  auto copy = std::make_unique<QXInterfaceImpl>(*other.impl_);
  copy->parent = impl_->parent;
  for (QXInterface* child : copy->interfaces) child->SetParent(this);
  impl_.swap(copy);
  return *this;
}

bool QXInterface::SetName(const std::string& name) {
  impl_->name = name;
  return true;
}
const std::string& QXInterface::GetName() const {
  return impl_->name;
}
bool QXInterface::SetBrief(const std::string& brief) {
  impl_->brief = brief;
  return true;
}
const std::string& QXInterface::GetBrief() const {
  return impl_->brief;
}
bool QXInterface::AddDetail(const std::string& line) {
  impl_->detail.push_back(line);
  return true;
}
QXIterBase<const std::string>* QXInterface::GetDetail() const {
  return new QXVectorIter<const std::string>(&impl_->detail);
}
bool QXInterface::SetOrderPriority(int priority) {
  impl_->order_priority = priority;
  return true;
}
int QXInterface::GetOrderPriority() const {
  return impl_->order_priority;
}

QXParameter* QXInterface::AddParameter(const std::string& classid) {
  std::unique_ptr<QXParameter> parameter(Factory().Construct(classid));
  if (!parameter) {
    QXThrow.Warning("QXInterfaceImpl::AddParamter.  Unknown classid %s", classid.c_str());
    return nullptr;
  }
  impl_->parameters.push_back(parameter.get());
  return parameter.release();
}

QXParameter* QXInterface::AddParameter(const QXParameter& parameter) {
  return AddCopy(impl_->parameters, parameter);
}

bool QXInterface::DeleteParameter(QXParameter& parameter) {
  return Delete(impl_->parameters, parameter) ||
         std::any_of(impl_->interfaces.begin(), impl_->interfaces.end(),
                     [&](QXInterface* child) { return child->DeleteParameter(parameter); });
}

QXInterface* QXInterface::AddInterface() {
  auto child = std::make_unique<QXInterface>();
  child->SetParent(this);
  impl_->interfaces.push_back(child.get());
  return child.release();
}

bool QXInterface::DeleteInterface(QXInterface& category) {
  return Delete(impl_->interfaces, category) ||
         std::any_of(impl_->interfaces.begin(), impl_->interfaces.end(),
                     [&](QXInterface* child) { return child->DeleteInterface(category); });
}

namespace {

bool IsNamed(const QXParameter& parameter, const std::string& name) {
  if (parameter.GetName() == name) return true;
  for (QXIter<const std::string> alias = parameter.GetAliases(); alias; ++alias)
    if (*alias == name) return true;
  return false;
}

}  // namespace

QXParameter* QXInterface::GetParameter(const std::string& name) const {
  for (QXParameter* parameter : impl_->parameters)
    if (IsNamed(*parameter, name)) return parameter;
  const SortItfStuff<QXParameter> before;
  QXParameter* found = nullptr;
  impl_->VisitCategories([&](const QXInterface& category) {
    for (QXParameter* parameter : category.impl_->parameters)
      if (IsNamed(*parameter, name) && (!found || before(*parameter, *found))) found = parameter;
    return found != nullptr;
  });
  return found;
}

QXIterBase<QXParameter>* QXInterface::GetParameters(bool recursive) const {
  if (!recursive) return Walk(InOrder(impl_->parameters));
  std::vector<QXParameter*> all = impl_->parameters;
  impl_->VisitCategories([&all](const QXInterface& category) {
    const std::vector<QXParameter*> own = InOrder(category.impl_->parameters);
    all.insert(all.end(), own.begin(), own.end());
    return false;
  });
  return Walk(std::move(all));
}

QXInterface* QXInterface::GetInterface(const std::string& name) const {
  QXInterface* found = nullptr;
  impl_->VisitCategories([&](QXInterface& category) {
    if (category.GetName() == name) found = &category;
    return found != nullptr;
  });
  return found;
}

QXIterBase<QXInterface>* QXInterface::GetInterfaces(bool recursive) const {
  if (!recursive) return Walk(InOrder(impl_->interfaces));
  std::vector<QXInterface*> all;
  impl_->VisitCategories([&all](QXInterface& category) {
    all.push_back(&category);
    return false;
  });
  return Walk(std::move(all));
}

QXInterface* QXInterface::Parent() const {
  return impl_->parent;
}
bool QXInterface::SetParent(QXInterface* parent) {
  impl_->parent = parent;
  return true;
}

bool QXInterface::Clear() {
  impl_->Clear();
  return true;
}

// Never destroyed, so that it answers until the end of the process.
QXSimpleFactory<std::string, QXParameter>& QXInterface::Factory() {
  static auto* const factory = [] {
    auto* made = new QXSimpleFactory<std::string, QXParameter>;
    RegisterClasses<QXFileParameter, QXParamFileParameter, QXStringParameter, QXDoubleParameter,
                    QXFloatParameter, QXBoolParameter, QXIntParameter, QXUIntParameter,
                    QXConstParameter, QXStringExtParameter>(*made);
    return made;
  }();
  return *factory;
}

}  // namespace QXSystem
