#include <qxsystem/interface/systemnamespace.h>

#include <algorithm>
#include <utility>

#include <qxsystem/core/error.h>
#include <qxsystem/core/vectoriter.h>
#include <qxsystem/interface/interface.h>
#include <qxsystem/platform/file.h>
#include <qxsystem/util/qxstring.h>

namespace QXSystem {

QXNamespaceInterface::QXNamespaceInterface(std::vector<QXNamespacePrim> primitives, unsigned kind,
                                           std::string name)
    : primitives_(std::move(primitives)), kind_(kind), name_(std::move(name)) {}

QXIterBase<const QXNamespacePrim>* QXNamespaceInterface::GetPrimitives() const {
  return new QXVectorIter<const QXNamespacePrim>(&primitives_);
}

const QXNamespacePrim* QXNamespaceInterface::Find(const std::string& name) const {
  const auto found = std::find_if(primitives_.begin(), primitives_.end(),
                                  [&name](const QXNamespacePrim& p) { return p.name == name; });
  return found == primitives_.end() ? nullptr : &*found;
}

// The name as it stands comes first: it may hold a "|".
bool QXNamespaceInterface::Combine(const std::string& text, unsigned& value) const {
  std::vector<std::string> tokens = {text};
  if (kind_ != QXNamespaceKind::Constants && !Find(text)) QXStringTokenize(tokens, text, "|");
  value = 0;
  for (const std::string& token : tokens) {
    const QXNamespacePrim* primitive = Find(token);
    if (!primitive) {
      QXThrow.Warning("%s is not a valid %s expression primitive!", token.c_str(), name_.c_str());
      return false;
    }
    value |= primitive->value;
  }
  return true;
}

bool QXNamespaceInterface::IsValid(const std::string& text) const {
  unsigned value;
  return Combine(text, value);
}

unsigned QXNamespaceInterface::GetValue(const std::string& text, unsigned fallback) const {
  unsigned value;
  return Combine(text, value) ? value : fallback;
}

std::string QXNamespaceInterface::GetName(unsigned value, const std::string& fallback) const {
  if (primitives_.empty()) return fallback;
  for (const QXNamespacePrim& primitive : primitives_)
    if (primitive.value == value) return primitive.name;
  if (kind_ == QXNamespaceKind::Constants) {
    QXThrow.Warning("%i is not a valid %s constant!", static_cast<int>(value), name_.c_str());
    return fallback;
  }
  std::vector<std::string> names;
  for (const QXNamespacePrim& primitive : primitives_)
    if (primitive.value != 0 && (value & primitive.value) == primitive.value)
      names.push_back(primitive.name);
  std::string joined = QXStringJoin(names, "|");
  if (!joined.empty()) return joined;
  QXThrow.Warning("%i is not a valid %s value!", static_cast<int>(value), name_.c_str());
  return fallback;
}

// ---- Parameters ----

bool QXAddLegalValues(QXParameter* parameter, const QXNamespaceInterface* names, bool details) {
  for (QXIter<const QXNamespacePrim> p = names->GetPrimitives(); p; ++p)
    parameter->AddLegalValue(p->name);
  if (details) QXAddDetails(parameter, names);
  return true;
}

bool QXAddDetails(QXParameter* parameter, const QXNamespaceInterface* names) {
  const auto add = [parameter](const std::string& text) {
    std::vector<std::string> lines;
    QXStringTokenize(lines, text, "\n", /*skipEmpty=*/false);
    for (const std::string& line : lines) parameter->AddDetail(line);
  };
  const auto addPrimitive = [&add](const QXNamespacePrim& primitive) {
    const std::string& name = primitive.name;
    const std::size_t blanks = name.size() < 12 ? 12 - name.size() : 0;
    add("\t" + name + std::string(blanks, ' ') + " - " + primitive.description);
  };
  if (names->GetKind() != QXNamespaceKind::Constants) {
    add("Primitive expressions :");
    for (QXIter<const QXNamespacePrim> p = names->GetPrimitives(); p; ++p) addPrimitive(*p);
    add("\tCombined expressions :");
    add("\tCreated by combining primitive tokens with | ");
  }
  add(" ");
  for (QXIter<const QXNamespacePrim> p = names->GetPrimitives(); p; ++p)
    if (!p->description.empty()) addPrimitive(*p);
  return true;
}

QXParameter* QXCreateParam(QXInterface& interface, const std::string& type, const std::string& name,
                           const std::string& alias, const std::string& brief, unsigned list) {
  QXParameter* parameter = interface.AddParameter(type);
  if (!parameter) return nullptr;
  parameter->SetName(name);
  parameter->AddAlias(alias);
  parameter->SetVisibility(QXVisibility::Simple);
  parameter->SetBrief(brief);
  if (list != 0) parameter->SetIsList(true);
  return parameter;
}

QXParameter* QXCreateParamWithRange(QXInterface& interface, const std::string& type,
                                    const std::string& name, const std::string& alias,
                                    const std::string& brief, const std::string& low,
                                    const std::string& high) {
  QXParameter* parameter = QXCreateParam(interface, type, name, alias, brief, /*list=*/0);
  if (parameter) parameter->AddLegalRange(low, high);
  return parameter;
}

QXParameter* QXCreateStringParam(QXInterface& interface, const std::string& name,
                                 const std::string& alias, const std::string& brief) {
  return QXCreateParam(interface, "string", name, alias, brief, /*list=*/0);
}

// ---- File names ----

std::string QXFileExtension(const std::string& file, const std::string& skip) {
  std::vector<std::string> parts, skipped;
  QXStringTokenize(parts, QXPlatform::QXFileDetermineName(QXStringLower(file)), ".",
                   /*skipEmpty=*/false);
  QXStringTokenize(skipped, QXStringLower(skip), ",");
  for (std::size_t i = parts.size() - 1; i > 0; --i)
    if (std::find(skipped.begin(), skipped.end(), parts[i]) == skipped.end()) return parts[i];
  return "";
}

std::string QXFileExtensions(const std::string& file) {
  const std::string name = QXPlatform::QXFileDetermineName(QXStringLower(file));
  const std::size_t dot = name.find('.');
  return dot == std::string::npos ? "" : name.substr(dot + 1);
}

}  // namespace QXSystem
