#include <qxsystem/util/role.h>

#include <gtest/gtest.h>

using namespace QXSystem;

namespace {

std::string Names(const QXRoleSet& roles) {
  std::string names;
  for (QXIter<const QXRole> role = roles.GetRoles(); role; ++role)
    names += role->GetName() + std::string(" ");
  return names;
}

TEST(QXRoleSet, HoldsEachRoleOnceInTheOrderOfItsId) {
  const QXRole zinc(std::string("role zinc"));  // older than the next, so ahead of it
  QXRoles roles;
  EXPECT_FALSE(roles.HasRole("role never seen") || roles.DeleteRole("role never seen"));
  EXPECT_FALSE(QXHasTag("role never seen")) << "asking a set without roles interns nothing";
  EXPECT_TRUE(roles.AddRole("role acid") && roles.AddRole(zinc) && roles.AddRole("role acid"));
  EXPECT_EQ(roles.NumRoles(), 2u);
  EXPECT_EQ(Names(roles), "role zinc role acid ");
  EXPECT_TRUE(roles.HasRole(zinc) && roles.HasRole("role acid") && !roles.HasRole("role base"));
  EXPECT_TRUE(roles.DeleteRole("role zinc") && !roles.DeleteRole(zinc));
  EXPECT_EQ(Names(roles), "role acid ");
}

TEST(QXRoleSet, CopiesAndCursorsAreIndependent) {
  QXRoles roles;
  EXPECT_EQ(Names(roles), "");
  roles.AddRole("role one");
  roles.AddRole("role two");
  const std::unique_ptr<QXRoles> copy(roles.CreateCopy());
  QXRoles assigned;
  const QXRoleSet& set = roles;
  assigned = set;
  QXIter<const QXRole> cursor = roles.GetRoles();
  roles.ClearRoles();
  EXPECT_EQ(roles.NumRoles(), 0u);
  EXPECT_EQ(Names(roles), "");
  EXPECT_EQ(Names(*copy) + Names(assigned), "role one role two role one role two ");
  EXPECT_STREQ((++cursor)->GetName(), "role two");
  assigned = QXRoles();
  EXPECT_EQ(assigned.NumRoles(), 0u);
}

}  // namespace
