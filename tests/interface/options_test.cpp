#include <qxsystem/interface/options.h>

#include <qxsystem/core/error.h>
#include <qxsystem/interface/interface_opts.h>

#include "interface/support.h"

using namespace QXSystem;

namespace {

class Options : public QXOptions {
public:
  using QXOptions::QXOptions;
  Options* CreateCopy() const override { return new Options(*this); }

  // For the tests: what a derived class may do.
  Options& Int(const std::string& name, int value, const std::string& alias = "") {
    QXIntParameter parameter(name, value);
    parameter.AddAlias(alias);
    AddParameter(parameter);
    return *this;
  }
  void Fill(std::size_t slot, const std::string& name) {
    parameters_[slot] = new QXIntParameter(name, 1);
  }
};

// Dock { -z -a } with Fit { -n (-cycles) -m } with Deep { -d }, and At { -N }.
Options Dock() {
  Options fit("Fit", 3, 2), deep("Deep"), at("At"), dock("Dock");
  fit.Fill(1, "-m");  // slots 0 and 2 stay null, and so do two children
  fit.Int("-n", 10, "-cycles").AddOption(deep.Int("-d", 3));
  dock.Int("-z", 26).Int("-a", 1).AddOption(fit);
  dock.AddOption(at.Int("-N", 7));
  return dock;
}

int Value(const QXOptions& options, const std::string& name) {
  int value = -1;
  QXGetSetting(options, name, value);
  return value;
}

TEST(QXOptions, WalksAndFindsWhatIsBelow) {
  const Options dock = Dock();
  EXPECT_EQ(Names(dock.GetParameters(true)), "-z -a -m -n -d -N");
  EXPECT_EQ(Names(dock.GetParameters(false)), "-a -z");
  EXPECT_EQ(Names(dock.GetParameters("-N", true)), "-n -N");
  EXPECT_EQ(Names(dock.GetParameters("-n", false)), "");
  EXPECT_EQ(Names(dock.GetOptions(true)), "Fit Deep At");
  EXPECT_EQ(Names(dock.GetOptions(false)), "At Fit");
  EXPECT_EQ(dock.GetParameter("-CYCLES")->GetName(), "-n");
  EXPECT_TRUE(dock.HasOption("Deep") && !dock.HasOption("deep") && !dock.HasParameter("n"));
  double other;
  EXPECT_FALSE(QXGetSetting(dock, "-d", other));
  EXPECT_TRUE(dock.Validate());
}

TEST(QXOptions, CopiesDeeplyAndDeletesAnywhere) {
  Options dock = Dock();
  const Options copy = dock;
  EXPECT_FALSE(dock.DeleteParameter(*copy.GetParameter("-d")));
  EXPECT_FALSE(dock.DeleteOptions(*copy.GetOption("Deep")));
  EXPECT_TRUE(dock.DeleteParameter(*dock.GetParameter("-d")));
  EXPECT_TRUE(dock.DeleteOptions(*dock.GetOption("Deep")));
  EXPECT_EQ(Names(dock.GetOptions(true)), "Fit At");
  EXPECT_EQ(Names(copy.GetParameters(true)), "-z -a -m -n -d -N");

  static_cast<QXOptions&>(dock) = *dock.GetOption("Fit");  // a part of itself
  EXPECT_EQ(dock.GetName() + " " + Names(dock.GetParameters(true)), "Fit -m -n");
  dock.SetBrief("brief");
  EXPECT_TRUE(dock.Clear());
  EXPECT_EQ(Names(dock.GetParameters(true)) + dock.GetBrief(), "brief");
}

TEST(QXOptions, RenamesAndHidesInOneGo) {
  Options dock = Dock();
  QXOptions* fit = dock.GetOption("Fit");
  EXPECT_TRUE(fit->AddParameterPrefix("a") && dock.AddParameterSuffix("1"));
  EXPECT_EQ(Names(dock.GetParameters(true)), "-z1 -a1 -a_m1 -a_n1 -a_d1 -N1");
  EXPECT_EQ(fit->GetParameter("-cycles")->GetName(), "-a_n1");
  EXPECT_FALSE(dock.AddParameterSuffix(" x"));  // two words
  EXPECT_EQ(Names(dock.GetParameters(false)), "-a1 -z1");

  dock.SetParameterVisibility(QXVisibility::Simple);
  dock.SetParameterVisibility("-Cycles", QXVisibility::Hidden);
  for (QXIter<QXParameter> p = dock.GetParameters(true); p; ++p)
    EXPECT_EQ(p->GetVisibility(), p->GetName() == "-a_n1" ? 2u : 0u) << p->GetName();
}

TEST(QXOptions, FindsNamesThatAreUsedTwice) {
  Options dock = Dock();
  EXPECT_EQ(Names(dock.FindDupParameters(false)), "-n -N");
  dock.SetParameterVisibility("-m", QXVisibility::Hidden);
  dock.Int("-x", 1, "-X").Int("-y", 2, "-M");  // its own alias is no other one
  EXPECT_EQ(Names(dock.FindDupParameters(false)), "-y -m -n -N");
  EXPECT_EQ(Names(dock.FindDupParameters(true)), "-n -N");
  dock.GetOption("At")->Clear();
  EXPECT_TRUE(dock.HasDupParameters(false) && !dock.HasDupParameters(true));
}

TEST(QXOptions, TakesValuesOverByName) {
  Options dock = Dock(), other("Other");
  other.Int("-CYCLES", 1).Int("-z", 2).Int("-unknown", 3);
  other.GetParameter("-cycles")->SetStringValue("99");
  EXPECT_TRUE(dock.UpdateValues(other));  // "-n" is not the name over there, "-z" has no value
  EXPECT_EQ(Value(dock, "-n"), 10);
  other.GetParameter("-cycles")->SetName("-N");
  EXPECT_TRUE(dock.UpdateValues(other));
  EXPECT_EQ(Value(dock, "-n") * 100 + Value(dock, "-z"), 9926);

  QXStringParameter list("-z");
  list.AddStringValue("4");
  list.AddStringValue("four");
  other.Clear();
  other.AddParameter(list);
  EXPECT_FALSE(dock.UpdateValues(other));
}

TEST(QXConfigureItf, MakesCategoriesOfChildren) {
  Options dock = Dock();
  dock.GetOption("At")->SetOrderPriority(3);
  dock.SetBrief("brief");
  dock.AddDetail("detail");
  QXInterface itf;
  ASSERT_TRUE(QXConfigureItf(itf, dock));
  EXPECT_EQ(itf.GetName() + itf.GetBrief() + All(itf.GetDetail())[0], "Dockbriefdetail");
  EXPECT_EQ(Names(itf.GetInterfaces(false)), "Fit At");
  EXPECT_EQ(itf.GetInterface("Deep")->Parent()->GetName(), "Fit");
  EXPECT_EQ(Names(itf.GetInterface("Fit")->GetParameters(false)), "-m -n");
}

TEST(QXUpdateOpts, GoesWithTheCategoriesOrWithoutThem) {
  const std::string text = Describe(R"(-z int
!CATEGORY Unknown
-a int
!CATEGORY At
-n int
!END
!END
!CATEGORY Fit
-n int
!END
)");
  QXInterface itf(text.c_str());
  for (QXIter<QXParameter> p = itf.GetParameters(true); p; ++p)
    ASSERT_TRUE(p->GetName() == "-z" || (p->SetStringValue("55") && p->Load()));
  Options dock = Dock();
  dock.GetParameter("-z")->SetStringValue("8");
  ASSERT_TRUE(dock.GetParameter("-z")->Load() && QXUpdateOpts(dock, itf));
  EXPECT_EQ(Value(dock, "-z"), 8);   // without a value there
  EXPECT_EQ(Value(dock, "-a"), 55);  // from a category that is not here
  EXPECT_EQ(Value(*dock.GetOption("At"), "-N"), 55);
  EXPECT_EQ(Value(*dock.GetOption("Fit"), "-n"), 55);

  Options other("Other");
  other.AddParameter(QXBoolParameter("-a"));  // 55 is none
  EXPECT_FALSE(QXUpdateOpts(other, itf));

  // A child comes before a grandchild of the same name.
  Options outer("Outer"), first("First"), same("Same");
  first.AddOption(same.Int("-s", 1));
  outer.AddOption(first);
  outer.AddOption(same.Int("-t", 2));
  QXInterface view;
  ASSERT_TRUE(QXConfigureItf(view, outer));
  ASSERT_TRUE(view.GetParameter("-t")->SetStringValue("9") && view.GetParameter("-t")->Load());
  EXPECT_TRUE(QXUpdateOpts(outer, view));
  EXPECT_EQ(Value(outer, "-t"), 9);
}

TEST(QXConfigureOpts, ParsesAndFills) {
  const Messages messages;  // errors are not strict
  Options dock = Dock();
  char words[] = "-CYCLES\0003";
  char* argv[] = {words, words, words + 8};
  EXPECT_EQ(QXConfigureOpts(dock, 2, argv, /*write=*/false), QXOptsStatus::Failure);
  EXPECT_EQ(QXConfigureOpts(dock, 3, argv, /*write=*/false), QXOptsStatus::Done);
  EXPECT_EQ(Value(dock, "-m") * 100 + Value(*dock.GetOption("Fit"), "-n"), 103);
  EXPECT_EQ(QXConfigureOpts(dock, 3, argv, /*write=*/false), QXOptsStatus::Failure);  // is set
}

}  // namespace
