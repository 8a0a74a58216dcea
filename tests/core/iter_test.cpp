#include <qxsystem/core/iter.h>

#include <algorithm>
#include <cstdlib>
#include <forward_list>
#include <list>
#include <memory>
#include <random>
#include <set>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include <qxsystem/core/errortest.h>
#include <qxsystem/core/prediter.h>
#include <qxsystem/core/sortediter.h>
#include <qxsystem/core/stliter.h>
#include <qxsystem/core/vectoriter.h>

using namespace QXSystem;

// Not in an unnamed namespace: g++ would then know all cursors over it, which
// are empty and joined ones, and warn that joining only ever leads to joining.
struct Abstract {
  virtual ~Abstract() = default;
  virtual int Get() const = 0;
};

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

template <class T>
std::vector<std::remove_const_t<T>> Forwards(QXIterBase<T>& it) {
  std::vector<std::remove_const_t<T>> seen;
  for (it.ToFirst(); it; ++it) seen.push_back(*it);
  return seen;
}

template <class T>
std::vector<std::remove_const_t<T>> Backwards(QXIterBase<T>& it) {
  std::vector<std::remove_const_t<T>> seen;
  for (it.ToLast(); it; --it) seen.insert(seen.begin(), *it);
  return seen;
}

QXIterBase<int>* Over(const Ints& values) {
  return new QXVectorCacheIter<int>(new Ints(values), /*owned=*/true);
}

QXIter<int> Joined(const std::vector<Ints>& parts) {
  QXIter<int> all(new QXConcatIter<int>);
  for (const Ints& part : parts) all.Push(Over(part));
  return all;
}

// Moves a cursor at random for a while and compares it at each step with what an
// index into `expected` says, counted modulo 2^32.
template <class T>
void ExpectMovesAsAnIndex(QXIter<T> it, const Ints& expected) {
  std::mt19937 dice(4);
  unsigned index = 0;
  for (int step = 0; step < 400; ++step) {
    const unsigned n = dice() % 4;
    const int back = -static_cast<int>(n);
    switch (dice() % 9) {
      case 0:
        ++it, index += 1;
        break;
      case 1:
        --it, index -= 1;
        break;
      case 2:
        it += n, index += n;
        break;
      case 3:
        it -= n, index -= n;
        break;
      case 4:
        it += back, index -= n;
        break;
      case 5:
        it -= back, index += n;
        break;
      case 6:
        it.ToFirst(), index = 0;
        break;
      case 7:
        it.ToLast(), index = static_cast<unsigned>(expected.size()) - 1;
        break;
      case 8:
        it = QXIter<T>(it);
        break;
    }
    ASSERT_EQ(bool(it), index < expected.size()) << "at " << index;
    if (!it) continue;
    ASSERT_EQ(*it, expected[index]);
    ASSERT_EQ(it.operator->(), &*it);
    T* const element = it;
    ASSERT_EQ(element, &*it);
  }
}

}  // namespace

TEST(QXIter, MovesEveryIndexCursorAlike) {
  for (const Ints& values : {Ints{}, Ints{7}, Ints{31, 5, 12, 18, 10}}) {
    Ints sorted = values;
    std::stable_sort(sorted.begin(), sorted.end(), TensBefore());
    Ints copy = values;
    std::vector<int*> pointers;
    std::vector<std::shared_ptr<int>> shared;
    for (int& x : copy) {
      pointers.push_back(&x);
      shared.push_back(std::make_shared<int>(x));
    }
    const std::list<int> list(values.begin(), values.end());
    const std::forward_list<int> forwardList(values.begin(), values.end());
    const std::vector<std::shared_ptr<int>>* const sharedCopy = new auto(shared);

    ExpectMovesAsAnIndex<int>(new QXVectorPtrIter<int>(&pointers), values);
    ExpectMovesAsAnIndex<int>(new QXVectorIter<int>(&values), values);
    ExpectMovesAsAnIndex<const int>(new QXVectorIter<const int>(&values), values);
    ExpectMovesAsAnIndex<int>(new QXVectorCacheIter<int>(&copy, false), values);
    ExpectMovesAsAnIndex<const int>(new QXCacheIter<const int>(new Ints(values), true), values);
    ExpectMovesAsAnIndex<const int>(new QXSTLIter<ConstIterGuts<Ints>>(&values), values);
    ExpectMovesAsAnIndex<const int>(new QXSTLIter<ConstIterGuts<std::list<int>>>(&list), values);
    ExpectMovesAsAnIndex<const int>(
        new QXSTLIter<ConstIterGuts<std::forward_list<int>>>(&forwardList), values);
    ExpectMovesAsAnIndex<int>(new QXSTLIter<DerefIterGuts<std::vector<int*>>>(&pointers), values);
    ExpectMovesAsAnIndex<const int>(
        new QXSTLCacheIter<ConstDerefIterGuts<decltype(shared)>>(sharedCopy), values);
    ExpectMovesAsAnIndex<int>(new QXSortedIter<int>(Over(values), TensBefore()), sorted);
  }
}

TEST(QXIter, StepsBackByTheLeastOfInts) {
  const Ints values{1, 2};
  QXVectorIter<int> it(&values);
  it += -2147483647 - 1;
  it -= -2147483647 - 1;
  it -= 2147483648u;
  it += -2147483647 - 1;
  EXPECT_TRUE(it && *it == 1);
}

TEST(QXIter, TakesMissingContainersForEmptyOnes) {
  const auto expectEmpty = [](auto it) {
    EXPECT_FALSE(it);
    EXPECT_FALSE(it.ToLast());
    EXPECT_FALSE(it.ToFirst());
    EXPECT_FALSE(QXIter(it.Copy()));
  };
  expectEmpty(QXVectorPtrIter<int>(nullptr));
  expectEmpty(QXVectorIter<int>(nullptr));
  expectEmpty(QXVectorCacheIter<int>(nullptr, true));
  expectEmpty(QXSTLIter<ConstIterGuts<std::set<int>>>(nullptr));
  expectEmpty(QXSTLCacheIter<ConstIterGuts<std::set<int>>>(nullptr));
  expectEmpty(QXPredVectorPtrIter<IsOdd>(nullptr, IsOdd()));
  expectEmpty(QXSortedIter<int>(nullptr, TensBefore()));
}

TEST(QXIter, OwnsItsCursorAsAValue) {
  QXIter<int> empty, null = nullptr;
  EXPECT_FALSE(empty || null);
  QXIter<int> a = Over({1, 2, 3});
  ++a;
  QXIter<int> b = a, c = std::move(a);
  ++c;
  EXPECT_FALSE(a);
  EXPECT_EQ(*b, 2);
  EXPECT_EQ(*c, 3);
  swap(b, c);
  EXPECT_EQ(*b, 3);
  b = Over({9});
  EXPECT_EQ(*b, 9);
  const QXIter<int> released = b.Release();
  EXPECT_TRUE(released && !b);
  empty.Push(Over({4}));
  EXPECT_EQ(*empty, 4);
}

TEST(QXEmptyIter, IsFalseWhereverItIsMoved) {
  QXEmptyIter<int> it;
  ++it, --it, it += 2, it -= 2u, it.ToFirst(), it.ToLast();
  const bool valid = it;
  EXPECT_FALSE(valid);
  EXPECT_FALSE(QXIter(it.Copy()));
}

TEST(QXEmptyIter, ReportsEveryRead) {
  QXPushSimpleQXThrowTester reports;
  const QXIter<std::string> it(new QXEmptyIter<std::string>), none;
  EXPECT_THROW(*it, std::runtime_error);
  QXThrow.SetStrict(false);
  EXPECT_EQ(*it, "");
  EXPECT_TRUE(none->empty());
  const std::string* const text = it;
  EXPECT_EQ(text, &*it);
  EXPECT_EQ(reports.NumMessagesAtLevel(QXErrorLevel::Error), 5u);
  EXPECT_THROW(*QXIter<Abstract>(), std::runtime_error);
  EXPECT_EQ(reports.GetErrorLog().substr(reports.GetErrorLog().find("level = 6")),
            "level = 6\nDereferencing empty iterator\n");
}

TEST(QXPredVectorPtrIter, ShowsOnlyTheHits) {
  const struct {
    Ints values, hits;
  } cases[] = {{{}, {}},      {{2}, {}},     {{2, 4}, {}},     {{1}, {1}},
               {{1, 2}, {1}}, {{2, 1}, {1}}, {{1, 3}, {1, 3}}, {{2, 1, 4, 6, 3, 8}, {1, 3}}};
  for (auto c : cases) {
    SCOPED_TRACE(testing::PrintToString(c.values));
    std::vector<int*> pointers;
    for (int& x : c.values) pointers.push_back(&x);
    QXPredVectorPtrIter<IsOdd> it(&pointers, IsOdd());
    ASSERT_EQ(bool(it), !c.hits.empty());
    if (it) {
      EXPECT_EQ(*it, c.hits[0]);
    }
    EXPECT_EQ(Forwards(it), c.hits);
    --it;  // back over the end
    EXPECT_EQ(bool(it), !c.hits.empty());
    EXPECT_EQ(Backwards(it), c.hits);
    ++it;  // and over the beginning
    EXPECT_EQ(bool(it), !c.hits.empty());
    if (c.hits.size() < 2) continue;
    it.ToFirst() += 1;
    EXPECT_EQ(*it, c.hits[1]);
    QXIter<int> copy = it.Copy();
    copy -= 1u;
    EXPECT_EQ(*copy, c.hits[0]);
    EXPECT_EQ(*it, c.hits[1]);
    EXPECT_EQ(*(it += -1), c.hits[0]);
    EXPECT_EQ(*(it -= -1), c.hits[1]);
  }
}

TEST(QXConcatIter, StepsThroughItsPartsBothWays) {
  const std::vector<Ints> cases[] = {{},
                                     {{}},
                                     {{}, {}},
                                     {{1}},
                                     {{}, {1}},
                                     {{1}, {}},
                                     {{}, {1, 2}, {}},
                                     {{1}, {}, {}, {2, 3}},
                                     {{}, {1, 2}, {}, {3}, {}, {}, {4}, {}}};
  std::mt19937 dice(14);
  for (const auto& parts : cases) {
    SCOPED_TRACE(testing::PrintToString(parts));
    Ints all;
    for (const Ints& part : parts) all.insert(all.end(), part.begin(), part.end());
    const int size = static_cast<int>(all.size());
    QXIter<int> it = Joined(parts);
    int place = 0;
    // One step over either end comes back with one step.
    for (int step = 0; step < 300; ++step) {
      ASSERT_EQ(bool(it), place >= 0 && place < size) << "at " << place;
      if (it) {
        ASSERT_EQ(*it, all[static_cast<unsigned>(place)]);
      }
      const int to = static_cast<int>(dice() % static_cast<unsigned>(size + 2)) - 1;
      const unsigned distance = static_cast<unsigned>(std::abs(to - place));
      switch (size ? dice() % 5 : 3 + dice() % 2) {
        case 0:
          it += to - place, place = to;
          break;
        case 1:
          it -= place - to, place = to;
          break;
        case 2:
          to < place ? it -= distance : it += distance;
          place = to;
          break;
        case 3:
          it.ToFirst(), place = 0;
          break;
        case 4:
          it.ToLast(), place = size - 1;
          break;
      }
      if (step % 10 == 0) it = QXIter<int>(it);
    }
  }
}

TEST(QXConcatIter, GrowsByPush) {
  // Onto a cursor in the middle: it stays; the pushed part is rewound on entry.
  QXIter<int> it = Over({1, 2, 3});
  ++it;
  QXIterBase<int>* part = Over({4, 5});
  ++*part;
  it.Push(part);
  EXPECT_EQ(*it, 2);
  it += 2;
  EXPECT_EQ(*it, 4);
  // Onto an exhausted one: it is valid again, at the first of what was pushed.
  it += 2;
  EXPECT_FALSE(it);
  it.Push(Over({})).Push(Over({6})).Push(Over({7}));
  EXPECT_EQ(*it, 6);
  QXIter<int> copy = it;
  ++copy;
  EXPECT_EQ(*it, 6);
  EXPECT_EQ(*copy, 7);
  it.Push(nullptr);
  it.ToFirst() += 6;
  EXPECT_EQ(*it, 7);

  // Without parts, and onto plain exhausted and empty cursors.
  part = Over({8, 9});
  ++*part;
  QXConcatIter<int> none;
  none.Push(part);
  EXPECT_EQ(*none, 9) << "a first part is left where it stands";
  QXIter<int> empty(new QXEmptyIter<int>);
  part = Over({8, 9});
  ++*part;
  EXPECT_EQ(*empty.Push(part), 8);
}

TEST(QXSortedIter, SortsStablyAndCopiesWithItsSource) {
  QXIter<int> it(new QXSortedIter<int>(Over({31, 18, 5, 12, 10, 39, 2}), TensBefore()));
  it += 3u;
  QXIter<int> copy = it;
  it = nullptr;  // the copy's elements are its own
  EXPECT_EQ(*copy, 12);
  EXPECT_EQ(Forwards(*std::unique_ptr<QXIterBase<int>>(copy.Copy())),
            (Ints{5, 2, 18, 12, 10, 31, 39}));
}

TEST(QXSortedIter, SortsAgainWhenAsked) {
  Ints values{30, 20};
  const SortedIterCriterion<const int> order{
      []() -> const QXBinaryPredicate<const int, const int>& {
        struct Less : QXBinaryPredicate<const int, const int> {
          bool operator()(const int& a, const int& b) const override { return a < b; }
          Less* CreateCopy() const override { return new Less(*this); }
        };
        static const Less less;
        return less;
      }()};
  QXSortedIter<const int> it(new QXVectorIter<const int>(&values), order);
  EXPECT_EQ(*it, 20);
  values[0] = 10;
  EXPECT_EQ(Forwards(it), (Ints{20, 10}));
  it.FillList();
  EXPECT_EQ(Forwards(it), (Ints{10, 20}));
}
