#include <qxsystem/records/field.h>

#include <gtest/gtest.h>

#include "support.h"

using namespace recordtest;

namespace {

// Ids of the catalogue.
constexpr unsigned Description = 0x02000001, Author = 0x02000002, FlagsID = 0x04000001,
                   Hidden = 0x06000001, Precision = 0x06020002, ErrorsFor = 0x07000002,
                   LigandFor = 0x07010005, KT = 0x08020009, Angstrom = 0x08030005,
                   Seconds = 0x08040001, Lower = 0x09000001;

TEST(Meta, HoldsOptionsOnceAndOneUnit) {
  QXFieldMeta meta;
  meta.SetOption(Hidden).SetOption(Angstrom).SetOption(FlagsID).SetOption(Hidden).SetOption(0);
  EXPECT_EQ(meta.GetOptions(), (std::vector<unsigned>{FlagsID, Hidden, Angstrom}));
  meta.SetOption(KT);
  EXPECT_EQ(meta.GetOptions(), (std::vector<unsigned>{FlagsID, Hidden, KT}));
  meta.SetOptions({Seconds, 0x99, Angstrom, Seconds});
  EXPECT_EQ(meta.GetOptions(), (std::vector<unsigned>{0x99, FlagsID, Hidden, Seconds}));
  meta.RemoveOption(Hidden).RemoveOption(1);
  EXPECT_TRUE(meta.HasOption(0x99) && !meta.HasOption(Hidden));
}

TEST(Meta, HoldsAttributesInTheOrderOfTheirBytes) {
  QXFieldMeta meta;
  meta.AddAttribute(Author, std::string("z"))
      .AddAttribute(Description, std::string("bb"))
      .AddAttribute(Description, std::string("c"))
      .AddAttribute(Description, std::string("c"));
  EXPECT_EQ(meta.GetAttribute<std::string>(Description, 0), "c");
  EXPECT_EQ(meta.GetStrAttribute(Description, 2), "bb");
  EXPECT_EQ(meta.GetStrAttribute(Description, 3), "");
  EXPECT_EQ(meta.GetAttributes(Description).size(), 3u);
  EXPECT_EQ(meta.GetAttributes(0).size(), 4u);
  EXPECT_TRUE(meta.HasAttribute(Description, std::string("bb")) && !meta.HasAttribute(Lower));
  meta.RemoveAttribute(Description, std::string("c"));
  EXPECT_EQ(meta.GetAttributeBytes(Description), (std::vector<QXBytes>{Bytes("02'bb'")}));

  meta.SetAttribute(Precision, 300).SetAttribute(Precision, -1).SetAttribute(Lower, 0.5);
  EXPECT_EQ(meta.GetAttributeBytes(Precision), (std::vector<QXBytes>{Bytes("81FF")}));
  EXPECT_EQ(meta.GetIntAttribute(Precision), -1);
  EXPECT_EQ(meta.GetFloatAttribute(Lower), 0.5);
  EXPECT_TRUE(meta.HasAttribute(Precision, -1) && !meta.HasAttribute(Lower, 1));
  // What an id does not take is left out.
  meta.SetAttribute(Precision, 0.5).AddAttribute(Description, 7).AddAttribute(Hidden, 7);
  EXPECT_EQ(meta.GetAttributes().size(), 4u);
  EXPECT_EQ(meta.GetIntAttribute(Precision), -1);

  // Attributes as they are: in this order, and whatever they are.
  meta.SetAttributes({{Lower, Bytes("01")}, {Author, Bytes("FF")}, {Author, Bytes("05'a'")}});
  EXPECT_EQ(meta.GetAttributes().front().first, Lower);
  EXPECT_EQ(meta.GetFloatAttribute(Lower), 0.0);
  EXPECT_EQ(meta.GetStrAttribute(Author, 0) + meta.GetStrAttribute(Author, 1), "");
  meta.Clear();
  EXPECT_TRUE(meta.IsEmpty());
}

TEST(Meta, MergesAndCompares) {
  QXFieldMeta one, other;
  one.SetOption(Angstrom).AddAttribute(Author, std::string("a"));
  other.SetOption(KT)
      .AddAttribute(Author, std::string("b"))
      .AddAttribute(Author, std::string("cc"))
      .SetAttribute(Lower, 1.0);
  EXPECT_FALSE(other.IsSubsetOf(one));
  EXPECT_TRUE(QXFieldMeta().IsSubsetOf(one));
  one.Merge(other);
  EXPECT_EQ(one.GetOptions(), std::vector<unsigned>{KT});
  EXPECT_EQ(one.GetAttributeBytes(Author), (std::vector<QXBytes>{Bytes("02'cc'")}));
  EXPECT_FALSE(other.IsSubsetOf(one));  // "b" did not survive
  other.RemoveAttribute(Author, std::string("b"));
  EXPECT_TRUE(other.IsSubsetOf(one) && one.IsSubsetOf(other));
  QXMeta& base = one;
  base = QXFieldMeta().SetOption(Hidden);
  EXPECT_TRUE(one.HasOption(Hidden) && !one.HasAttribute(Author));
}

TEST(Meta, NamesIds) {
  EXPECT_EQ(QXMeta::GetName(Angstrom), "Units.Length.Ang");
  EXPECT_EQ(QXMeta::GetName(0x07000001), "");
  EXPECT_EQ(QXMeta::GetValue("Units::Length::Ang"), Angstrom);
  EXPECT_EQ(QXMeta::GetValue("Flags.ID"), FlagsID);
  EXPECT_EQ(QXMeta::GetValue("Flags.IsSchema"), 0u);
  EXPECT_EQ(QXRecordMeta::GetName(0x1000001), "Flags.ID");
  EXPECT_EQ(QXRecordMeta::GetName(0x1000003), "Flags.IsSchema");
  EXPECT_EQ(QXRecordMeta::GetName(FlagsID), "");
  const auto& names = QXMetadata::GetMetaConstants();
  EXPECT_EQ(names.size(), 198u);
  for (const auto& [id, name] : names) EXPECT_EQ(QXMeta::GetValue(name), id);
}

TEST(Metadata, SaysWhatIdsTake) {
  const struct {
    unsigned id;
    bool takesInt, takesFloat, takesString;
    unsigned perRecord, perField;
  } cases[] = {
      {Description, false, false, true, 0, 0},   {QXRecordMeta::SourceID, false, false, true, 0, 0},
      {FlagsID, false, false, false, ~0U, 0},    {0x05010001, false, false, false, ~0U, 0},
      {0x05010002, false, false, false, 0, 0},   {Hidden, false, false, false, 0, 0},
      {Precision, true, false, false, 0, 0},     {0x07010003, false, false, true, 0, 0},
      {0x07020001, false, false, false, 0, 0},   {Angstrom, false, false, false, 0, 0xFF000000},
      {0x08000000, false, false, false, 0, ~0U}, {Lower, false, true, false, 0, 0},
      {0x0A000001, false, false, false, 0, 0},   {0, false, false, false, 0, 0}};
  for (const auto& c : cases) {
    SCOPED_TRACE(c.id);
    EXPECT_EQ(QXMetadata::TakesAttribute<int>(c.id), c.takesInt);
    EXPECT_EQ(QXMetadata::TakesAttribute<double>(c.id), c.takesFloat);
    EXPECT_EQ(QXMetadata::TakesAttribute<std::string>(c.id), c.takesString);
    EXPECT_EQ(QXMetadata::IsOption(c.id), !c.takesInt && !c.takesFloat && !c.takesString);
    EXPECT_EQ(QXMetadata::QXGetMetaPerRecordMask(c.id), c.perRecord);
    EXPECT_EQ(QXMetadata::QXGetMetaPerFieldMask(c.id), c.perField);
  }
}

TEST(FieldMeta, KnowsRelations) {
  QXFieldMeta meta;
  meta.AddRelation(ErrorsFor, QXField<double>("mass"))
      .AddRelation(LigandFor, QXField<double>("mass"))
      .AddRelation(ErrorsFor, QXField<double>("age"))
      .AddRelation(Description, QXField<double>("no relation"))
      .AddRelation(0x07020001, QXField<double>("no text"))
      .SetAttribute(Lower, 1.5)
      .SetAttribute(Description, std::string("mass"));
  EXPECT_EQ(meta.GetFieldRelations("mass"), (std::vector<unsigned>{ErrorsFor, LigandFor}));
  EXPECT_EQ(meta.GetRelatedFields(), (std::vector<std::string>{"age", "mass"}));
}

TEST(Field, HasTypeNameAndFlags) {
  QXField<long> field("a", QXFieldMeta().SetOption(Hidden), /*readonly=*/true, /*nullable=*/false);
  field.SetMetaMatch(true);
  field.SetName("b");
  const QXFieldBase copy = field;
  EXPECT_TRUE(copy.IsValid() && copy.IsMetaMatch() && copy.IsReadonly() && !copy.IsNullable());
  EXPECT_TRUE(copy.GetMeta().HasOption(Hidden));
  EXPECT_EQ(copy.GetName() + copy.GetTypeName(), "bInt");
  EXPECT_FALSE(QXFieldBase().IsValid() || QXFieldBase("x").IsValid());

  EXPECT_TRUE(MakeFieldBase("u", "a:b:T", {}, /*readonly=*/false, /*nullable=*/true).IsNullable());
  EXPECT_EQ(MakeFieldBase("u", ":T").GetTypeName(), "T");
}

}  // namespace
