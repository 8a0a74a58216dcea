#include <qxsystem/interface/interface.h>

#include <gtest/gtest.h>

#include <qxsystem/core/errortest.h>
#include <qxsystem/interface/parameter_concrete.h>

#include "interface/support.h"

using namespace QXSystem;

namespace {

void Add(QXInterface& interface, const std::string& name, int priority = 0) {
  QXParameter* parameter = interface.AddParameter("int");
  ASSERT_TRUE(parameter->SetName(name) && parameter->SetOrderPriority(priority));
}

QXInterface* AddCategory(QXInterface& parent, const std::string& name, int priority = 0) {
  QXInterface* category = parent.AddInterface();
  category->SetName(name);
  category->SetOrderPriority(priority);
  return category;
}

// Root { z a y } with X { x2 x1 XX { xx } } and A(-1) { a2 a1 }, XY beside XX.
void Fill(QXInterface& root) {
  Add(root, "z");
  Add(root, "a");
  Add(root, "y", -1);
  QXInterface* x = AddCategory(root, "X");
  Add(*x, "x2");
  Add(*x, "x1");
  AddCategory(*x, "XY");
  Add(*AddCategory(*x, "XX"), "xx");
  QXInterface* a = AddCategory(root, "A", -1);
  Add(*a, "a2", -5);
  Add(*a, "a1");
}

TEST(QXInterface, WalksInTheOrdersOfItsTwoKinds) {
  QXInterface root;
  Fill(root);
  EXPECT_EQ(Names(root.GetParameters(false)), "y a z");
  EXPECT_EQ(Names(root.GetInterfaces(false)), "A X");
  EXPECT_EQ(Names(root.GetInterfaces(true)), "X A XY XX");
  EXPECT_EQ(Names(root.GetParameters(true)), "z a y x1 x2 a2 a1 xx");

  QXInterface bytes;
  for (const char* name : {"-a", "-B", "-\xE9", "-1"}) Add(bytes, name);
  EXPECT_EQ(Names(bytes.GetParameters(false)), "-1 -B -a -\xE9");  // bytes, not letters
}

TEST(QXInterface, LooksUpByExactNameAndAlias) {
  QXInterface root;
  Fill(root);
  int n = 7;
  unsigned u = 7;
  EXPECT_TRUE(root.AddParameter(QXIntParameter("n", 5)) && QXGetSetting(root, "n", n) && n == 5);
  EXPECT_FALSE(QXGetSetting(root, "n", u) || QXGetSetting(root, "N", n) ||
               QXGetSetting(root, "n", n, 1));
  EXPECT_EQ(root.GetParameter("xx")->GetName(), "xx");
  EXPECT_EQ(root.GetParameter("XX"), nullptr);
  root.GetParameter("xx")->AddAlias("a1");  // but "a1" itself comes first
  EXPECT_EQ(root.GetParameter("a1")->GetName(), "a1");
  root.GetParameter("xx")->AddAlias("-long");
  EXPECT_EQ(root.GetParameter("-long")->GetName(), "xx");
  EXPECT_EQ(root.GetInterface("XX")->Parent()->GetName(), "X");
  EXPECT_EQ(root.GetInterface("xx"), nullptr);
}

TEST(QXInterface, CopiesTheTreeWithItsParents) {
  QXInterface root;
  Fill(root);
  root.AddDetail("detail");
  QXInterface* x = root.GetInterface("X");
  const QXInterface copy(*x);
  EXPECT_EQ(copy.Parent(), nullptr);
  EXPECT_EQ(copy.GetInterface("XX")->Parent(), &copy);
  x->Clear();
  EXPECT_EQ(Names(copy.GetParameters(true)), "x2 x1 xx");

  *x = copy;
  EXPECT_EQ(x->Parent(), &root);
  EXPECT_EQ(x->GetInterface("XX")->Parent(), x);
  root = *x;  // from a part of itself
  EXPECT_EQ(root.GetName() + " " + Names(root.GetParameters(true)), "X x2 x1 xx");
}

TEST(QXInterface, DeletesWhateverIsInItsTree) {
  QXInterface root, other;
  Fill(root);
  Add(other, "z");
  EXPECT_FALSE(root.DeleteParameter(*other.GetParameter("z")));
  EXPECT_FALSE(root.DeleteInterface(other));
  EXPECT_TRUE(root.DeleteParameter(*root.GetParameter("xx")));
  EXPECT_TRUE(root.DeleteInterface(*root.GetInterface("XY")));
  EXPECT_TRUE(root.DeleteInterface(*root.GetInterface("A")));
  EXPECT_EQ(Names(root.GetParameters(true)), "z a y x1 x2");
  EXPECT_EQ(Names(root.GetInterfaces(true)), "X XX");
  root.SetBrief("brief");
  EXPECT_TRUE(root.Clear());
  EXPECT_FALSE(QXIter<QXParameter>(root.GetParameters(true)));
  EXPECT_EQ(root.GetBrief(), "");
}

TEST(QXInterface, MakesParametersByTheirClassId) {
  QXInterface root;
  for (const char* id : {"file", "param_file", "string", "double", "float", "bool", "int",
                         "unsigned", "const", "stringExt"}) {
    ASSERT_NE(root.AddParameter(id), nullptr) << id;
    EXPECT_EQ(root.GetParameter("")->ClassID(), id);
    EXPECT_TRUE(root.DeleteParameter(*root.GetParameter("")));
  }
  const Messages messages;
  EXPECT_EQ(root.AddParameter("bit"), nullptr);  // made in code only
  EXPECT_EQ(messages.At(QXErrorLevel::Warning),
            "QXSimpleFactory.  Unknown classid bit\n"
            "QXInterfaceImpl::AddParamter.  Unknown classid bit\n");
  QXBitParameter bit("-b", 1, "one");
  EXPECT_EQ(root.AddParameter(bit)->ClassID(), "bit");
}

TEST(QXInterface, ReportsATextAtFault) {
  const Messages messages;
  char* argv[] = {nullptr};
  const QXInterface a("nonsense"), b(reinterpret_cast<const unsigned char*>("!X y"), 0, argv);
  EXPECT_EQ(messages.At(QXErrorLevel::Error),
            "Configuring interface.  Unable to parse line\n  line : nonsense\n"
            "Problem configuring QXInterface!\n"
            "Probable invalid keyword in interface configuration file\n  line : !X y\n"
            "Problem configuring QXInterface!\n");
}

}  // namespace
