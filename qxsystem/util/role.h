// Roles: named marks on an object, and the set of them that it carries.
#pragma once

#include <memory>
#include <set>
#include <string>

#include <qxsystem/core/export.h>
#include <qxsystem/core/iter.h>
#include <qxsystem/core/tagmap.h>

namespace QXSystem {

/// A mark with a name. Comparing two is comparing two numbers; their order is
/// that in which the process first saw the names, so it may change from run to
/// run.
class QXSYSTEM_API QXRole {
public:
  /// The mark with the empty name.
  QXRole() = default;

  /// The mark of that name, which is interned.
  QXRole(const std::string& name) : tag_(QXGetTag(name)) {}

  /// The tag id of the name, and the name, valid until the process ends.
  unsigned GetTag() const { return tag_; }
  const char* GetName() const { return QXGetTag(tag_); }

  friend bool operator==(QXRole a, QXRole b) { return a.tag_ == b.tag_; }
  friend bool operator!=(QXRole a, QXRole b) { return a.tag_ != b.tag_; }
  friend bool operator<(QXRole a, QXRole b) { return a.tag_ < b.tag_; }

private:
  unsigned tag_ = 0;
};

/// A set of roles, which may be named by text wherever one is asked for. Copies
/// are deep; without roles it costs one pointer.
class QXSYSTEM_API QXRoleSet {
public:
  QXRoleSet();
  virtual ~QXRoleSet();
  QXRoleSet(const QXRoleSet& other);
  QXRoleSet& operator=(const QXRoleSet& other);

  /// Whether the role is there. A name is interned by the question only when
  /// some role was ever added.
  bool HasRole(const QXRole& role) const;
  bool HasRole(const std::string& name) const;

  /// Adds the role, unless it is there. True in both cases.
  bool AddRole(const QXRole& role);
  bool AddRole(const std::string& name);

  /// Removes the role; false when it was not there.
  bool DeleteRole(const QXRole& role);
  bool DeleteRole(const std::string& name);

  /// Removes all roles.
  void ClearRoles();

  unsigned NumRoles() const;

  /// The roles in their order, for the caller to own. The cursor has copies and
  /// outlives changes of the set; without roles it is false at once, never null.
  QXIterBase<const QXRole>* GetRoles() const;

private:
  std::unique_ptr<std::set<QXRole>> roles_;  // null until the first is added
};

/// The roles of an object, as an object of their own.
class QXSYSTEM_API QXRoles : public QXRoleSet {
public:
  QXRoles();
  QXRoles(const QXRoleSet& other);
  ~QXRoles() override;
  QXRoles(const QXRoles& other);
  QXRoles& operator=(const QXRoles& other);
  QXRoles& operator=(const QXRoleSet& other);

  /// A copy, which the caller owns.
  virtual QXRoles* CreateCopy() const;
};

}  // namespace QXSystem
