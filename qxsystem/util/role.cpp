#include <qxsystem/util/role.h>

#include <vector>

#include <qxsystem/core/vectoriter.h>

namespace QXSystem {

QXRoleSet::QXRoleSet() = default;
QXRoleSet::~QXRoleSet() = default;

QXRoleSet::QXRoleSet(const QXRoleSet& other)
    : roles_(other.roles_ ? std::make_unique<std::set<QXRole>>(*other.roles_) : nullptr) {}

QXRoleSet& QXRoleSet::operator=(const QXRoleSet& other) {
  if (this != &other) roles_ = QXRoleSet(other).roles_;
  return *this;
}

bool QXRoleSet::HasRole(const QXRole& role) const {
  return roles_ && roles_->count(role) != 0;
}
bool QXRoleSet::HasRole(const std::string& name) const {
  return roles_ && HasRole(QXRole(name));
}

bool QXRoleSet::AddRole(const QXRole& role) {
  if (!roles_) roles_ = std::make_unique<std::set<QXRole>>();
  roles_->insert(role);
  return true;
}
bool QXRoleSet::AddRole(const std::string& name) {
  return AddRole(QXRole(name));
}

bool QXRoleSet::DeleteRole(const QXRole& role) {
  return roles_ && roles_->erase(role) != 0;
}
bool QXRoleSet::DeleteRole(const std::string& name) {
  return roles_ && DeleteRole(QXRole(name));
}

void QXRoleSet::ClearRoles() {
  if (roles_) roles_->clear();
}

unsigned QXRoleSet::NumRoles() const {
  return roles_ ? static_cast<unsigned>(roles_->size()) : 0;
}

QXIterBase<const QXRole>* QXRoleSet::GetRoles() const {
  if (!roles_) return new QXEmptyIter<const QXRole>;
  auto copies = std::make_unique<std::vector<QXRole>>(roles_->begin(), roles_->end());
  return new QXVectorCacheIter<const QXRole>(copies.release(), /*owned=*/true);
}

QXRoles::QXRoles() = default;
QXRoles::QXRoles(const QXRoleSet& other) : QXRoleSet(other) {}
QXRoles::~QXRoles() = default;
QXRoles::QXRoles(const QXRoles& other) = default;
QXRoles& QXRoles::operator=(const QXRoles& other) = default;
QXRoles& QXRoles::operator=(const QXRoleSet& other) {
  QXRoleSet::operator=(other);
  return *this;
}

QXRoles* QXRoles::CreateCopy() const {
  return new QXRoles(*this);
}

}  // namespace QXSystem
