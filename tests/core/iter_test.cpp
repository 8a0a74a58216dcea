#include <qxsystem/core/iter.h>

#include <algorithm>
#include <forward_list>
#include <functional>
#include <iterator>
#include <list>
#include <memory>
#include <random>
#include <stdexcept>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include <qxsystem/core/errortest.h>
#include <qxsystem/core/prediter.h>
#include <qxsystem/core/sortediter.h>
#include <qxsystem/core/stliter.h>
#include <qxsystem/core/vectoriter.h>

using namespace QXSystem;

namespace {

using Ints = std::vector<int>;

struct IsOdd : QXUnaryPredicate<int> {
  bool operator()(const int& x) const override { return x % 2 != 0; }
  IsOdd* CreateCopy() const override { return new IsOdd(*this); }
};

struct TensBefore : QXBinaryPredicate<int, int> {
  bool operator()(const int& a, const int& b) const override { return a / 10 < b / 10; }
  TensBefore* CreateCopy() const override { return new TensBefore(*this); }
};

QXIterBase<int>* Over(const Ints& values) {
  return new QXVectorCacheIter<int>(new Ints(values), /*owned=*/true);
}

// Moves a cursor to random places in every way, up to `reach` steps over both
// ends, and looks each time whether it stands where it must.
template <class T>
void ExpectWalks(QXIter<T> it, const Ints& expected, int reach) {
  const int size = static_cast<int>(expected.size());
  int from = 0, to = 0;
  const std::function<void()> moves[] = {
      [&] { it += to - from; },
      [&] { it -= from - to; },
      [&] { to < from ? it -= unsigned(from - to) : it += unsigned(to - from); },
      [&] {
        for (; from < to; ++from) ++it;
        for (; from > to; --from) --it;
      },
      [&] { it.ToFirst() += to; },
      [&] { it.ToLast() -= size - 1 - to; },
      [&] { it = QXIter<T>(it), to = from; }};
  std::mt19937 dice(14);
  for (int step = 0; step < 300; ++step, from = to) {
    to = static_cast<int>(dice() % static_cast<unsigned>(size + 2 * reach)) - reach;
    moves[dice() % std::size(moves)]();
    ASSERT_EQ(bool(it), to >= 0 && to < size) << "at " << to << " of " << size;
    if (!it) continue;
    T* const element = it;
    ASSERT_EQ(*it, expected[static_cast<unsigned>(to)]);
    ASSERT_TRUE(element == &*it && it.operator->() == element);
  }
}

}  // namespace

TEST(QXIter, MovesEveryIndexCursorAlike) {
  for (const Ints& values : {Ints{}, Ints{7}, Ints{31, 5, 12, 18, 10}}) {
    Ints sorted = values;
    std::stable_sort(sorted.begin(), sorted.end(), TensBefore());
    Ints copy = values;
    std::vector<int*> pointers;
    using Shared = std::vector<std::shared_ptr<int>>;
    auto* const shared = new Shared;
    for (int& x : copy) {
      pointers.push_back(&x);
      shared->push_back(std::make_shared<int>(x));
    }
    const std::list<int> list(values.begin(), values.end());
    const std::forward_list<int> single(values.begin(), values.end());

    ExpectWalks<int>(new QXVectorPtrIter<int>(&pointers), values, 3);
    ExpectWalks<const int>(new QXVectorIter<const int>(&values), values, 3);
    ExpectWalks<int>(new QXVectorCacheIter<int>(&copy, false), values, 3);
    ExpectWalks<const int>(new QXCacheIter<const int>(new Ints(values), true), values, 3);
    ExpectWalks<const int>(new QXSTLIter<ConstIterGuts<Ints>>(&values), values, 3);
    ExpectWalks<const int>(new QXSTLIter<ConstIterGuts<std::list<int>>>(&list), values, 3);
    ExpectWalks<const int>(new QXSTLIter<ConstIterGuts<decltype(single)>>(&single), values, 3);
    ExpectWalks<int>(new QXSTLIter<DerefIterGuts<std::vector<int*>>>(&pointers), values, 3);
    ExpectWalks<const int>(new QXSTLCacheIter<ConstDerefIterGuts<Shared>>(shared), values, 3);
    ExpectWalks<int>(new QXSortedIter<int>(Over(values), TensBefore()), sorted, 3);
  }
}

TEST(QXIter, TakesMissingContainersForEmptyOnes) {
  const auto expectEmpty = [](auto it) {
    EXPECT_FALSE(it || it.ToLast() || it.ToFirst() || QXIter(it.Copy()));
  };
  expectEmpty(QXVectorPtrIter<int>(nullptr));
  expectEmpty(QXVectorCacheIter<int>(nullptr, true));
  expectEmpty(QXSTLIter<ConstIterGuts<std::list<int>>>(nullptr));
  expectEmpty(QXSTLCacheIter<ConstIterGuts<std::list<int>>>(nullptr));
  expectEmpty(QXPredVectorPtrIter<IsOdd>(nullptr, IsOdd()));
  expectEmpty(QXSortedIter<int>(nullptr, TensBefore()));
}

TEST(QXIter, OwnsItsCursorAsAValue) {
  QXIter<int> a = Over({1, 2, 3});
  ++a;
  QXIter<int> b = a, c = std::move(a);
  ++c;
  EXPECT_FALSE(a);
  EXPECT_TRUE(*b == 2 && *c == 3);
  b = Over({9});
  const QXIter<int> released = b.Release();
  EXPECT_TRUE(*released == 9 && !b);
}

TEST(QXEmptyIter, ReportsEveryRead) {
  QXPushSimpleQXThrowTester reports;
  QXIter<std::string> it(new QXEmptyIter<std::string>), none = nullptr;
  it.ToFirst() += 2;
  const bool valid = it || --it.ToLast() || none;
  EXPECT_FALSE(valid);
  EXPECT_THROW(*it, std::runtime_error);
  QXThrow.SetStrict(false);
  EXPECT_TRUE(it->empty() && none->empty());
  EXPECT_EQ(static_cast<std::string*>(it), &*it);
  EXPECT_EQ(reports.NumMessagesAtLevel(QXErrorLevel::Error), 5u);
  EXPECT_THROW(*QXIter<QXUnaryPredicate<int>>(), std::runtime_error);  // there is none to give
  const std::string log = reports.GetErrorLog();
  EXPECT_EQ(log.substr(log.find("level = 6")), "level = 6\nDereferencing empty iterator\n");
}

TEST(QXPredVectorPtrIter, ShowsOnlyTheHits) {
  for (Ints values : {Ints{}, {2, 4}, {1}, {1, 2}, {2, 1, 4, 6, 3, 8, 5}}) {
    Ints hits;
    std::copy_if(values.begin(), values.end(), std::back_inserter(hits), IsOdd());
    std::vector<int*> pointers;
    for (int& x : values) pointers.push_back(&x);
    ExpectWalks<int>(new QXPredVectorPtrIter<IsOdd>(&pointers, IsOdd()), hits, 1);
  }
}

TEST(QXConcatIter, StepsThroughItsPartsBothWays) {
  const std::vector<Ints> cases[] = {{}, {{}, {}}, {{}, {1, 2}, {}}, {{1}, {}, {}, {2, 3}, {4}}};
  for (const auto& parts : cases) {
    Ints all;
    QXIter<int> it(new QXConcatIter<int>);
    for (const Ints& part : parts) {
      all.insert(all.end(), part.begin(), part.end());
      it.Push(Over(part));
    }
    ExpectWalks(it, all, 1);
  }
}

TEST(QXConcatIter, GrowsByPush) {
  const auto secondOf = [](const Ints& values) { return &++*Over(values); };
  // In the middle it stays, and rewinds the pushed part on entry.
  QXIter<int> it = secondOf({1, 2});
  it.Push(secondOf({3, 4}));
  EXPECT_TRUE(*it == 2 && *++it == 3);
  // At the end it is valid again, at the first element of what was pushed.
  it += 2;
  EXPECT_FALSE(it);
  it.Push(Over({})).Push(nullptr).Push(secondOf({5, 6}));
  EXPECT_TRUE(*it == 5 && *++it == 6);
  // A first part is left where it stands, unless it follows an empty cursor.
  QXConcatIter<int> none;
  EXPECT_EQ(**none.Push(secondOf({7, 8})), 8);
  EXPECT_EQ(*QXIter<int>(new QXEmptyIter<int>).Push(secondOf({7, 8})), 7);
}

TEST(QXSortedIter, SortsStablyOnceAndCopiesWithItsSource) {
  QXIter<int> it(new QXSortedIter<int>(Over({31, 18, 5, 12, 10, 39, 2}), TensBefore()));
  it += 3;
  QXIter<int> copy = it;
  it = nullptr;  // the copy's elements are its own
  EXPECT_EQ(*copy, 12);
  ExpectWalks(copy -= 3, {5, 2, 18, 12, 10, 31, 39}, 3);

  Ints values{30, 20};
  QXSortedIter<int> again(new QXVectorIter<int>(&values), SortedIterCriterion<int>(TensBefore()));
  values[0] = 10;
  EXPECT_EQ(*again, 20);
  again.FillList();
  EXPECT_EQ(*again, 10);
}
