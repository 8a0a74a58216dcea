#include <qxsystem/interface/systemnamespace.h>

#include "interface/support.h"

using namespace QXSystem;

namespace {

const std::vector<QXNamespacePrim> Prims = {{"none", 0, ""},
                                            {"a", 1, "first\nand more"},
                                            {"b", 4, ""},
                                            {"top", 0x80000000u, ""},
                                            {"again", 1, ""},
                                            {"x|y", 8, ""},
                                            {"twelve-chars", 6, "two bits"}};
const QXNamespaceInterface Flags(Prims, QXNamespaceKind::Flags, "mode");
const QXNamespaceInterface Constants(Prims, QXNamespaceKind::Constants, "mode");

TEST(QXNamespaceInterface, ReadsNamesAndTheirUnions) {
  const struct {
    const QXNamespaceInterface& names;
    const char* text;
    unsigned value;  // 99: the fallback
    const char* warned;
  } cases[] = {{Flags, "a|b", 5, nullptr},       {Flags, "|b||top|", 0x80000004u, nullptr},
               {Flags, "x|y", 8, nullptr},       {Flags, "", 0, nullptr},
               {Flags, "a|B|c", 99, "B"},        {Flags, "a| b", 99, " b"},
               {Constants, "again", 1, nullptr}, {Constants, "x|y", 8, nullptr},
               {Constants, "a|b", 99, "a|b"},    {Constants, "", 99, ""}};
  for (const auto& c : cases) {
    SCOPED_TRACE(c.text);
    const Messages messages;
    EXPECT_EQ(c.names.GetValue(c.text, 99), c.value);
    EXPECT_EQ(c.names.IsValid(c.text), c.warned == nullptr);
    const std::string line =
        c.warned ? c.warned + std::string(" is not a valid mode expression primitive!\n") : "";
    EXPECT_EQ(messages.At(QXErrorLevel::Warning), line + line);
  }
}

TEST(QXNamespaceInterface, NamesNumbers) {
  const struct {
    const QXNamespaceInterface& names;
    unsigned value;
    const char *name, *warning;
  } cases[] = {{Flags, 1, "a", ""},
               {Flags, 0, "none", ""},
               {Flags, 5, "a|b|again", ""},
               {Flags, 0x80000006u, "b|top|twelve-chars", ""},
               {Flags, 16 + 4, "b", ""},  // what is left over does not count
               {Flags, 2, "?", "2 is not a valid mode value!\n"},
               {Constants, 6, "twelve-chars", ""},
               {Constants, 0x80000001u, "?", "-2147483647 is not a valid mode constant!\n"},
               {QXNamespaceInterface({}, 1, "none"), 5, "?", ""}};
  for (const auto& c : cases) {
    SCOPED_TRACE(c.value);
    const Messages messages;
    EXPECT_EQ(c.names.GetName(c.value, "?"), c.name);
    EXPECT_EQ(messages.At(QXErrorLevel::Warning), c.warning);
  }
}

TEST(QXAddLegalValues, OffersAndDescribesTheNames) {
  QXStringParameter parameter("-mode");
  const QXNamespaceInterface names({{"a", 1, "first\nof two"}, {"longer than twelve", 2, ""}},
                                   QXNamespaceKind::Flags, "mode");
  EXPECT_TRUE(QXAddLegalValues(&parameter, &names, /*details=*/true));
  EXPECT_EQ(All(parameter.GetLegalValues()), (Texts{"a", "longer than twelve"}));
  EXPECT_EQ(All(parameter.GetDetail()),
            (Texts{"Primitive expressions :", "\ta            - first", "of two",
                   "\tlonger than twelve - ",
                   "\tCombined expressions :", "\tCreated by combining primitive tokens with | ",
                   " ", "\ta            - first", "of two"}));

  QXStringParameter constants("-mode");
  EXPECT_TRUE(QXAddDetails(&constants, &Constants));
  EXPECT_EQ(All(constants.GetDetail()),
            (Texts{" ", "\ta            - first", "and more", "\ttwelve-chars - two bits"}));
}

TEST(QXCreateParam, MakesAParameterInOneCall) {
  QXInterface itf;
  QXParameter* list = QXCreateParam(itf, "string", "-l", "-list", "brief", 2);
  EXPECT_EQ(itf.GetParameter("-list"), list);
  EXPECT_TRUE(list->GetIsList() && list->GetVisibility() == 0 && list->GetBrief() == "brief");
  QXParameter* range = QXCreateParamWithRange(itf, "int", "-n", "", "", "9", "1");
  EXPECT_TRUE(range->IsLegalString("5") && !range->IsLegalString("10") && !range->GetIsList());
  EXPECT_EQ(QXCreateStringParam(itf, "-s", "", "")->ClassID(), "string");
  const Messages messages;
  EXPECT_EQ(QXCreateParamWithRange(itf, "text", "-t", "", "", "1", "2"), nullptr);
  EXPECT_NE(messages.At(QXErrorLevel::Warning), "");
}

TEST(QXFileExtension, PassesOverWhatIsSkipped) {
  const struct {
    const char *file, *skip, *ending, *all;
  } cases[] = {{"dir.d/A.Mol.GZ", "", "gz", "mol.gz"},
               {"a.mol.gz", "gz", "mol", "mol.gz"},
               {"a.mol.gz.Z", "GZ,,z", "mol", "mol.gz.z"},
               {"a.gz", "gz", "", "gz"},
               {"mol", "", "", ""},
               {".mol", "gz", "mol", "mol"},
               {"a.", "gz", "", ""},
               {"a.mol. gz", "gz", " gz", "mol. gz"},
               {"a.b/", "", "", ""}};
  for (const auto& c : cases) {
    EXPECT_EQ(QXFileExtension(c.file, c.skip), c.ending) << c.file;
    EXPECT_EQ(QXFileExtensions(c.file), c.all) << c.file;
  }
}

}  // namespace
