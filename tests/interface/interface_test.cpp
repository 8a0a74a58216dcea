#include <qxsystem/interface/interface.h>

#include "interface/support.h"

using namespace QXSystem;

namespace {

// Of two with one priority, the bytes of the names decide, not the letters.
constexpr char Tree[] = R"(
!PARAMETER z/!TYPE int/!END/!PARAMETER a/!TYPE int/!END/!PARAMETER y -1/!TYPE int/!END
!PARAMETER B/!TYPE int/!END
!CATEGORY X
  !PARAMETER x2/!TYPE int/!END/!PARAMETER x1/!TYPE int/!END
  !CATEGORY XY/!END
  !CATEGORY XX/!PARAMETER xx/!TYPE int/!ALIAS a1/!ALIAS -long/!DEFAULT 5/!END/!END
!END
!CATEGORY A -1
  !PARAMETER a2 -5/!TYPE int/!END/!PARAMETER a1/!TYPE int/!END
!END)";

TEST(QXInterface, WalksAndLooksUpInTheOrdersOfItsTwoKinds) {
  const QXInterface root(Lines(Tree).c_str());
  EXPECT_EQ(Names(root.GetParameters(false)), "y B a z");
  EXPECT_EQ(Names(root.GetInterfaces(false)), "A X");
  EXPECT_EQ(Names(root.GetInterfaces(true)), "X A XY XX");
  EXPECT_EQ(Names(root.GetParameters(true)), "z a y B x1 x2 a2 a1 xx");

  EXPECT_EQ(root.GetParameter("a1")->GetName(), "a1");  // which comes before its namesake
  EXPECT_EQ(root.GetParameter("-long")->GetName(), "xx");
  EXPECT_EQ(root.GetParameter("XX"), nullptr);
  EXPECT_EQ(root.GetInterface("XX")->Parent()->GetName(), "X");
  EXPECT_EQ(root.GetInterface("xx"), nullptr);
  int n = 7;
  unsigned u = 7;
  EXPECT_TRUE(QXGetSetting(root, "xx", n) && n == 5);
  EXPECT_FALSE(QXGetSetting(root, "xx", u) || QXGetSetting(root, "Xx", n) ||
               QXGetSetting(root, "xx", n, 1));
}

TEST(QXInterface, CopiesAndClearsTheTreeWithItsParents) {
  QXInterface root(Lines(Tree).c_str());
  EXPECT_TRUE(root.AddDetail("detail") && root.SetBrief("brief"));
  QXInterface* x = root.GetInterface("X");
  const QXInterface copy(*x);
  EXPECT_EQ(copy.Parent(), nullptr);
  EXPECT_EQ(copy.GetInterface("XX")->Parent(), &copy);
  EXPECT_TRUE(x->Clear());
  EXPECT_EQ(Names(copy.GetParameters(true)), "x2 x1 xx");

  *x = copy;
  EXPECT_EQ(x->Parent(), &root);
  EXPECT_EQ(x->GetInterface("XX")->Parent(), x);
  root = *x;  // from a part of itself
  EXPECT_EQ(root.GetName() + " " + Names(root.GetParameters(true)), "X x2 x1 xx");
  EXPECT_TRUE(root.Clear());
  EXPECT_EQ(root.GetName() + root.GetBrief() + Names(root.GetParameters(true)), "");
}

TEST(QXInterface, DeletesWhateverIsInItsTree) {
  QXInterface root(Lines(Tree).c_str()), other(root);
  EXPECT_FALSE(root.DeleteParameter(*other.GetParameter("z")) || root.DeleteInterface(other));
  EXPECT_TRUE(root.DeleteParameter(*root.GetParameter("xx")) &&
              root.DeleteInterface(*root.GetInterface("XY")) &&
              root.DeleteInterface(*root.GetInterface("A")));
  EXPECT_EQ(Names(root.GetParameters(true)), "z a y B x1 x2");
  EXPECT_EQ(Names(root.GetInterfaces(true)), "X XX");
}

TEST(QXInterface, MakesParametersByTheirClassId) {
  QXInterface root;
  for (const char* id : {"file", "param_file", "string", "double", "float", "bool", "int",
                         "unsigned", "const", "stringExt"})
    EXPECT_EQ(root.AddParameter(id)->ClassID(), id);
  Messages messages;
  EXPECT_EQ(root.AddParameter("bit"), nullptr);  // made in code only
  EXPECT_EQ(messages.At(QXErrorLevel::Warning),
            "QXSimpleFactory.  Unknown classid bit\n"
            "QXInterfaceImpl::AddParamter.  Unknown classid bit\n");
  EXPECT_EQ(root.AddParameter(QXBitParameter("-b", 1, "one"))->ClassID(), "bit");

  messages.Clear();
  constexpr unsigned char text[] = "nonsense";
  char* argv[] = {nullptr};
  const QXInterface a(text), b("!X y"), c(text, 0, argv), d("!X y", 0, argv);
  const std::string told =
      "Configuring interface.  Unable to parse line\n  line : nonsense\n"
      "Problem configuring QXInterface!\n"
      "Probable invalid keyword in interface configuration file\n  line : !X y\n"
      "Problem configuring QXInterface!\n";
  EXPECT_EQ(messages.At(QXErrorLevel::Error), told + told);
}

}  // namespace
