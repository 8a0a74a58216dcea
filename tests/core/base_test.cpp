#include <qxsystem/core/base.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <new>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include <qxsystem/core/errortest.h>
#include <qxsystem/core/iter.h>

using namespace QXSystem;

namespace {

constexpr char Mismatch[] = "data type mismatch found when using generic data";

// Counts what its virtual Clear is asked for, and has state beside its items.
struct Derived : QXContainer {
  void Clear() override { ++clears, QXContainer::Clear(); }
  int clears = 0;
};

QXContainer Ints(const char* tag, std::initializer_list<int> values) {
  QXContainer object;
  for (const int value : values) object.AddData<int>(tag, value);
  return object;
}

// The int items as "name value" in order, any other as its name.
std::string Items(QXIterBase<QXBaseData>* cursor) {
  std::string text;
  for (QXIter<QXBaseData> item = cursor; item; ++item) {
    text += QXGetTag(item->GetTag());
    if (item->GetDataType() == QXGetDataType<int>())
      text += std::to_string(static_cast<QXBaseDataT<int>&>(*item).GetValue());
    text += ' ';
  }
  return text;
}
std::string Items(const QXBase& object) {
  return Items(object.GetDataIter());
}

TEST(QXBase, KeepsAnItemOfAnotherTypeAndSaysSo) {
  QXContainer object;
  {
    QXPushQXThrowHasNoMessages silent;
    EXPECT_TRUE(object.SetData<int>("t", 1) && object.AddData<double>("t", 2.0));
    EXPECT_TRUE(object.SetData<int>("t", 3));  // in place
    EXPECT_EQ(object.GetData<const char*>("none"), nullptr);
    EXPECT_EQ(&object.GetData<std::string>("none"), &QXContainer().GetData<std::string>("none"));
  }
  QXPushSimpleQXThrowTester reports;
  const int array[] = {1};
  EXPECT_FALSE(object.SetData<double>("t", 2.0) || object.SetData<unsigned>("t", 2));
  EXPECT_FALSE(object.SetData("t", array, 1));
  EXPECT_EQ(object.GetData<unsigned>("t"), 0u);
  EXPECT_EQ(object.GetData<std::string>("t"), "");
  EXPECT_EQ(reports.NumMessagesAtLevel(QXErrorLevel::Warning), 5u);
  EXPECT_EQ(reports.GetErrorLog().find(Mismatch), std::string("level = 4\n").size());
  EXPECT_EQ(Items(object), "t3 t ");
}

TEST(QXBase, IsAListInWhichTheFirstOfANameWins) {
  QXContainer object = Ints("t", {1, 2});
  object.AddData<int>("u", 3);
  object.AddData<int>("t", 4);
  EXPECT_EQ(object.GetData<int>("t"), 1);
  EXPECT_EQ(Items(object.GetDataIter("t")), "t1 t2 t4 ");
  EXPECT_EQ(Items(object.GetDataIter("v")) + Items(QXContainer().GetDataIter("t")), "");

  const QXBaseDataT<std::string> text(QXGetTag("t"), "text");
  EXPECT_TRUE(object.SetBaseData(&text) && object.AddBaseData(&text));  // sets the first only
  EXPECT_EQ(Items(object), "t t2 u3 t4 t ");
  EXPECT_TRUE(object.DeleteData("t") && !object.DeleteData("t"));
  EXPECT_EQ(Items(object), "u3 ");
  EXPECT_FALSE(QXContainer().DeleteData("t"));

  EXPECT_FALSE(QXHasTag("never seen before") || object.HasData("never seen before"));
  EXPECT_TRUE(QXHasTag("never seen before"));
}

TEST(QXBase, OwnsArraysAndOnlyThose) {
  const float values[] = {1.5f, 2.5f, 3.5f};
  float own[] = {7.5f};
  const unsigned tag = QXGetTag("t");
  QXContainer object;
  const auto shows = [&](std::vector<float> expected) {
    QXIter<QXBaseData> item = object.GetDataIter(tag);
    const float* array = object.GetData<float*>(tag);
    return std::vector<float>(array, array + item->GetSize()) == expected && !++item;
  };
  EXPECT_TRUE(object.SetData(tag, values, 2));
  EXPECT_TRUE(shows({1.5f, 2.5f}));
  EXPECT_NE(object.GetData<float*>(tag), values);
  EXPECT_TRUE(object.SetData<float>(tag, values, 3));
  EXPECT_TRUE(object.SetData<float*>(tag, object.GetData<float*>(tag) + 1, 2));  // of itself
  EXPECT_TRUE(shows({2.5f, 3.5f}));

  // Between an array and a pointer of its type the item changes its kind.
  EXPECT_TRUE(object.SetData<float*>(tag, own));
  EXPECT_EQ(object.GetData<float*>(tag), own);
  EXPECT_TRUE(object.SetData(tag, values, 2));
  EXPECT_TRUE(shows({1.5f, 2.5f}));

  QXContainer copy(object);
  EXPECT_NE(copy.GetData<float*>(tag), object.GetData<float*>(tag));
  EXPECT_EQ(copy.GetData<float*>(tag)[1], 2.5f);

  // No array: nothing is left of an item that is there, a new one has zeros.
  EXPECT_TRUE(object.SetData<float*>(tag, nullptr, 3));
  EXPECT_TRUE(shows({}) && object.GetData<float*>(tag) == nullptr);
  object = QXContainer();
  EXPECT_TRUE(object.SetData<float*>(tag, nullptr, 3));
  EXPECT_TRUE(shows({0, 0, 0}));
  EXPECT_TRUE(object.SetData(tag, values, 0));
  EXPECT_TRUE(shows({}));
  EXPECT_EQ(QXBaseDataT<std::vector<int>>(tag, {1, 2, 3}).GetSize(), 1u);
}

TEST(QXBase, AssignsDeeply) {
  const QXContainer none, ints = Ints("t", {1, 2});
  const std::tuple<QXContainer, QXContainer, const char*> cases[] = {
      {none, none, ""}, {none, ints, "t1 t2 "}, {ints, none, ""}, {ints, Ints("u", {3}), "u3 "}};
  for (const auto& [before, source, items] : cases) {
    QXContainer to(before), from(source), moved(before);
    to = from;
    moved = std::move(from);
    EXPECT_TRUE(Items(to) == items && Items(moved) == items) << items;
    to.AddData<int>("more", 1);
    EXPECT_EQ(Items(source), items);
  }
  Derived derived;
  derived.SetData<int>("t", 1);
  derived = Derived();
  EXPECT_TRUE(derived.clears == 0 && !derived.HasData("t"));
}

TEST(QXBase, AppendsAndReplacesAllItems) {
  QXContainer a = Ints("t", {1, 2});
  a += a;
  EXPECT_EQ(Items(a), "t1 t2 t1 t2 ");
  Derived to;
  to.SetData<int>("u", 5);
  QXCopyBaseData(to, a);
  QXCopyBaseData(to, to);
  EXPECT_TRUE(Items(to) == Items(a) && to.clears == 0);
  QXCopyBaseData(to, QXContainer());
  EXPECT_EQ(Items(to), "");
}

TEST(QXBase, TakesFromItsOwnValues) {
  QXContainer child = Ints("t", {1, 2});
  child.SetData<std::string>("text", "a text that is too long to be held in place");
  QXContainer parent;
  parent.AddData<int>("first", 0);
  parent.SetData<QXContainer>("child", child);
  const auto own = [](const QXContainer& object) -> const QXContainer& {
    return object.GetData<QXContainer>("child");
  };
  const std::string expected = Items(child);
  QXContainer assigned(parent), copied(parent), moved(parent), appended(parent), nested(parent);
  assigned = own(assigned);
  QXCopyBaseData(copied, own(copied));
  moved = std::move(const_cast<QXContainer&>(own(moved)));
  for (const QXContainer* each : {&assigned, &copied, &moved}) EXPECT_EQ(Items(*each), expected);
  appended += own(appended);
  EXPECT_EQ(Items(appended), "first0 child " + expected);
  nested.SetData<QXContainer>("child", own(nested));
  nested.AddBaseData(QXIter<QXBaseData>(nested.GetDataIter("child")).operator->());
  nested.SetBaseData(QXIter<QXBaseData>(nested.GetDataIter("child")).operator->());
  EXPECT_EQ(Items(nested), "first0 child child ");
  EXPECT_EQ(Items(own(nested)), expected);
}

TEST(QXBase, FindsTheFirstItemInListsOfAnyLength) {
  QXContainer object;
  std::vector<std::pair<unsigned, int>> model;
  const auto tag = [](int i) { return QXGetTag("long" + std::to_string(i)); };
  const auto check = [&](const QXContainer& list) {
    for (int i = 0; i < 110; ++i) {
      const auto first = std::find_if(model.begin(), model.end(),
                                      [&](const auto& item) { return item.first == tag(i); });
      ASSERT_EQ(list.HasData(tag(i)), first != model.end()) << i;
      ASSERT_EQ(list.GetData<int>(tag(i)), first != model.end() ? first->second : 0) << i;
    }
  };
  for (int i = 0; i < 200; ++i) {
    object.AddData<int>(tag(i % 100), i + 1);
    model.emplace_back(tag(i % 100), i + 1);
    if (i % 7 == 0) check(object);
  }
  for (int i : {0, 3, 9, 64, 99}) {
    EXPECT_TRUE(object.DeleteData(tag(i)));
    const auto named = [&](const auto& item) { return item.first == tag(i); };
    model.erase(std::remove_if(model.begin(), model.end(), named), model.end());
    check(object);
  }
  QXContainer copy(object), assigned;
  assigned = object;
  check(copy), check(assigned);
  object.Clear();
  object.AddData<int>(tag(1), 5);
  EXPECT_TRUE(object.GetData<int>(tag(1)) == 5 && !object.HasData(tag(2)));
}

// Counts its living copies; the third copy of one cannot be made.
struct Fragile {
  static inline int alive = 0, copies = 0;
  Fragile() { ++alive; }
  Fragile(Fragile&&) noexcept { ++alive; }
  Fragile(const Fragile&) {
    if (++copies == 3) throw std::bad_alloc();
    ++alive;
  }
  Fragile& operator=(const Fragile&) = default;
  ~Fragile() { --alive; }
};

TEST(QXBase, LosesNothingWhenACopyCannotBeMade) {
  QXContainer source, target = Ints("t", {1});
  for (int i = 0; i < 4; ++i) source.AddData<Fragile>("f", Fragile());
  EXPECT_THROW(QXContainer copy(source), std::bad_alloc);
  Fragile::copies = 0;
  EXPECT_THROW(target = source, std::bad_alloc);
  EXPECT_EQ(Fragile::alive, 4);
  EXPECT_EQ(Items(target), "t1 ");
}

TEST(QXBase, KnowsItsClassAndBases) {
  const std::unique_ptr<QXBase> object(Ints("t", {1}).CreateCopy());
  EXPECT_TRUE(object->IsDataType(QXGetDataType<QXContainer>()) &&
              object->IsDataType(QXGetDataType<QXBase>()));
  EXPECT_FALSE(object->IsDataType(QXGetDataType<int>()));
  EXPECT_EQ(Items(*object), "t1 ");
}

}  // namespace
