#include <qxsystem/qxb/qxannotate.h>

#include <gtest/gtest.h>

#include <tuple>

#include <qxsystem/util/qxformat.h>

#include "support.h"

using namespace qxbtest;

namespace {

const float p[] = {1, 2, 3}, q[] = {4, 5, 6}, u[] = {7, 8, 9};

// Items as Describe shows them, with whole numbers for floats and children and
// pointers to text in full.
std::string Items(const QXBase& object) {
  std::string text;
  for (QXIter<QXBaseData> item = object.GetDataIter(); item; ++item) {
    text += QXGetTag(item->GetTag()) + std::string("=");
    if (const auto* child = As<QXAnnotation>(*item))
      text += "{ " + Items(*child) + "}";
    else if (const auto* number = As<float>(*item))
      text += std::to_string(static_cast<int>(10 * *number)) + "f";
    else if (float* const* array = As<float*>(*item))
      for (unsigned i = 0; i < item->GetSize(); ++i)
        text += std::to_string(static_cast<int>((*array)[i])) + ",";
    else if (const auto* pointer = As<const char*>(*item))
      text += "->" + std::string(*pointer);
    else
      text += DescribeValue(*item);
    text += " ";
  }
  return text;
}

TEST(QXAnnotation, EveryShapeHasItsItems) {
  const std::tuple<QXAnnotation, const char*, const char*> cases[] = {
      {QXAnnotateSphere("t", p, 1, nullptr), "01", "a=1,2,3, r=10f "},
      {QXAnnotateSphere("t", p, 1, q), "01", "a=1,2,3, r=10f hemi=4,5,6, "},
      {QXAnnotateEllipsoid("t", p, 1, 2, 3, p, q, u), "02",
       "center=1,2,3, a=10f b=20f c=30f d1=1,2,3, d2=4,5,6, d3=7,8,9, "},
      {QXAnnotateBox("t", p, q), "03", "a=1,2,3, e=4,5,6, "},
      {QXAnnotateCylinder("t", p, q, 1, 2), "04", "a=1,2,3, b=4,5,6, r1=10f r2=20f "},
      {QXAnnotateArrow("t", p, q, 1, 2, 3, 4), "05",
       "a=1,2,3, b=4,5,6, p=10f r1=20f r2=30f r3=40f "},
      {QXAnnotateLine("t", p, nullptr), "06", "a=1,2,3, b=0,0,0, "},
      {QXAnnotateSpline("t", p, 1, 2), "08", "c=1,2,3, n=j:01000000 sr=j:02000000 "},
      {QXAnnotateSplineSurface("t", p, 1, 2, 3, 4, 5, 6, 7, 8), "09",
       "c=1,2,3, n=j:01000000 sr=j:02000000 sgr=i:03000000 xr=i:04000000 w=50f t=60f "
       "st=i:07000000 s=i:08000000 "},
      {QXAnnotateTorus("t", p, 1, 2, q), "0A", "a=1,2,3, r1=10f r2=20f d=4,5,6, "},
      {QXAnnotateText("t", p, "text"), "0B", "a=1,2,3, t='text' f=b:00 s=10f z=15f "},
      {QXAnnotateSymbol("t", p, "name"), "0C", "a=1,2,3, t=->name "}};
  for (const auto& [made, type, items] : cases)
    EXPECT_EQ(Items(made),
              "type=i:" + std::string(type) + "000000 title='t' color=c*:FFFFFFFF " + items);
}

TEST(QXAnnotation, GivesDefaultsForWhatIsMissingOrWrong) {
  QXAnnotation a;
  const auto all = [&a] {
    return QXMakeString("%u %u %s %s", a.GetType(), a.GetRenderHint(), a.GetTitle(),
                        a.GetColor().GetText(true).c_str());
  };
  EXPECT_EQ(all(), "0 0  #ffffffff");
  a.SetType(~0u).SetRenderHint(3).SetTitle("title").SetColor(QXColor(1, 2, 3, 4));
  EXPECT_EQ(all(), "4294967295 3 title #01020304");
  EXPECT_FALSE(a.SetTitle(nullptr).HasData("title"));
  Reports reports;
  for (const char* name : {"type", "render", "title", "color"}) {
    a.DeleteData(name);
    a.SetData<double>(name, 1);
  }
  EXPECT_EQ(all(), "0 0  #ffffffff");
  EXPECT_EQ(reports.NumMessagesAtLevel(QXErrorLevel::Warning), 4u);
  a.DeleteData("color");
  a.SetData<char>("color", "abc", 3);
  EXPECT_EQ(a.GetColor(), QXWhite);
}

TEST(QXAnnotation, KeepsChildrenInOrder) {
  QXAnnotation parent;
  const auto titles = [&] {
    std::string text;
    for (QXIter<QXAnnotation> child = parent.GetChildren(); child; ++child)
      text += child->GetTitle() + std::string(",");
    return text;
  };
  EXPECT_EQ(titles(), "");
  for (const char* title : {"a", "b", "c"}) parent.AddChild(QXAnnotation().SetTitle(title));
  EXPECT_EQ(Items(parent), "0={ title='a' } children=i:03000000 1={ title='b' } 2={ title='c' } ");
  EXPECT_EQ(titles(), "a,b,c,");
  parent.DeleteData("1");
  EXPECT_EQ(titles(), "a,,c,") << "an empty one in the place of what is missing";
  parent.AddChild(parent);
  EXPECT_EQ(titles(), "a,,c,,");

  // More children than items are not to be had, nor are names made for them.
  parent.SetData<int>("children", 0x7FFFFFFF);
  EXPECT_EQ(titles(), "a,,c,,");
  EXPECT_FALSE(QXHasTag("4"));
  parent.AddChild(QXAnnotation());
  EXPECT_EQ(parent.GetData<int>("children"), 5);
  parent.SetData<int>("children", -1);
  EXPECT_EQ(titles(), "");
}

TEST(QXAnnotation, RoundTripsWithChildrenThreeDeep) {
  QXBinaryIOHandler filled;
  ASSERT_TRUE(QXInitAnnotationHandlers(filled));
  QXAnnotation root = QXAnnotateSphere("root", p, 1, nullptr);
  QXAnnotation middle = QXAnnotateText("middle", p, "text"), inner = QXAnnotateBox("inner", p, q);
  middle.AddChild(inner.AddChild(QXAnnotateLine("leaf", p, q))).AddChild(inner);
  root.AddChild(middle).SetColor(QXRed).SetRenderHint(2);
  qxosstream out;
  EXPECT_TRUE(QXBinaryWrite<QXAnnotation>(out, root, filled));

  QXAnnotation read, kept;
  qxisstream in(out.str()), again(out.str());
  EXPECT_EQ(QXBinaryRead(in, read, filled), QXBReturn::Success);
  std::string expected = Items(root);
  expected.erase(expected.find("f=b:00 "), 7);  // absence is how a false bool is stored
  EXPECT_EQ(Items(read), expected);

  // With an empty handler the record is kept whole.
  EXPECT_EQ(QXBinaryRead(again, kept, QXBinaryIOHandler()), QXBReturn::Success);
  const QXIter<QXBaseData> item = kept.GetDataIter(QXUnknownQXBDataTagName());
  EXPECT_EQ(
      Written([&](qxostream& to) { return QXBWriteUnknown(to, *As<QXUnknownQXBData>(*item)); }),
      out.str());
}

TEST(QXAnnotation, StoresWhatHasAForm) {
  QXBinaryIOHandler filled;
  ASSERT_TRUE(QXInitAnnotationHandlers(filled));
  const auto written = [&](const QXAnnotation& annotation) {
    return Written([&](qxostream& out) { return QXBinaryWrite(out, annotation, filled); });
  };
  const std::string group = Hex("00 8C 'QXAnnotation'");
  EXPECT_EQ(written(QXAnnotateSymbol(nullptr, p, "gone")),
            Counted(group, Block(Hex("00 84 'type' 01 0C000000 00 85 'color' 06 84 FFFFFFFF"
                                     "00 81 'a' 05 8C 0000803F 00000040 00004040"))));

  // As a value, here a child, it has a tag of its own.
  QXAnnotation parent;
  parent.SetData("0", QXAnnotation().SetType(1));
  const std::string child = Counted(group, Block(Hex("00 84 'type' 01 01000000")));
  const std::string value = Counted(Hex("00 92 'QXBaseQXAnnotation'"), Hex("00 81 '0'") + child);
  EXPECT_EQ(written(parent),
            Counted(group, Block(Counted(Hex("00 81 '0' 60 00 90 '!HandledQXBTag:0' 51"), value))));
}

}  // namespace
